#include <kaputil/automation/collection.hpp>

#include <cstdlib>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"

namespace kap {

// The elements by key. The keys are those that the elements hold.
class Collection::Keys : public std::unordered_map<std::u16string_view, Elements::iterator,
                                                   unicode::NameHash, unicode::NameEqual> {};

Collection::Collection() : keys_(std::make_unique<Keys>()) {}

Collection::~Collection() = default;

const ClassDescription& Collection::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Collection>(u"Collection", u"", u"")
            .method<&Collection::Item>(u"Item", {u"Index"})
            .method<&Collection::Add>(u"Add",
                                      {u"Item", Parameter(u"Key").otherwise(Variant::missing()),
                                       Parameter(u"Before").otherwise(Variant::missing()),
                                       Parameter(u"After").otherwise(Variant::missing())})
            .property<&Collection::Count>(u"Count")
            .method<&Collection::Remove>(u"Remove", {u"Index"})
            .build(u"Item");
    return description;
}

Variant Collection::Item(const Variant& index) const {
    return find(index)->item.get();
}

Collection::Elements::iterator Collection::find(const Variant& index) const {
    if (!index.isString()) {
        return at(convert::toLong(index));
    }
    const auto found = keys_->find(index.as<String>().view());
    if (found == keys_->end()) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return found->second;
}

Collection::Elements::iterator Collection::at(std::int32_t position) const {
    const std::int32_t count = Count();
    if (position < 1 || position > count) {
        throw AutomationError(errors::kSubscriptOutOfRange);
    }
    if (nearPosition_ == 0 || position < nearPosition_ / 2) {
        near_ = elements_.begin();
        nearPosition_ = 1;
    }
    if (count - position < std::abs(position - nearPosition_)) {
        near_ = std::prev(elements_.end());
        nearPosition_ = count;
    }
    std::advance(near_, position - nearPosition_);
    nearPosition_ = position;
    return near_;
}

void Collection::Add(const Variant& item, const Variant& key, const Variant& before,
                     const Variant& after) {
    if (!before.isMissing() && !after.isMissing()) {
        throw AutomationError(errors::kInvalidArgument);
    }
    auto place = elements_.end();
    if (!before.isMissing()) {
        place = find(before);
    } else if (!after.isMissing()) {
        place = std::next(find(after));
    }
    Elements made(1);
    if (!key.isMissing()) {
        made.front().key = key.as<String>();
        if (contains(*made.front().key)) {
            throw AutomationError(errors::kDuplicateKey);
        }
    }
    made.front().item.set(*this, item);
    if (made.front().key) {
        keys_->emplace(made.front().key->view(), made.begin());
    }
    if (place != elements_.end()) {
        nearPosition_ = 0;
    }
    elements_.splice(place, made);
}

std::int32_t Collection::Count() const {
    return static_cast<std::int32_t>(elements_.size());
}

void Collection::Remove(const Variant& index) {
    const auto found = find(index);
    if (found->key) {
        keys_->erase(found->key->view());
    }
    Elements removed;
    removed.splice(removed.end(), elements_, found);
    nearPosition_ = 0;
    removed.front().item.clear(*this);
}

std::vector<Variant> Collection::elements() {
    std::vector<Variant> all;
    all.reserve(elements_.size());
    for (const Element& element : elements_) {
        all.push_back(element.item.get());
    }
    return all;
}

bool Collection::contains(std::u16string_view key) const {
    return keys_->contains(key);
}

LinkedObject* Collection::findLinked(std::u16string_view key) const {
    const auto found = keys_->find(key);
    return found == keys_->end() ? nullptr : found->second->item.linked();
}

void Collection::collectLinks(std::vector<LinkedObject*>& links) const {
    for (const Element& element : elements_) {
        links.push_back(element.item.linked());
    }
}

}  // namespace kap
