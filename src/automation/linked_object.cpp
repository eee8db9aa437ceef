#include <kaputil/automation/linked_object.hpp>

#include <utility>

#include "automation/link_group.hpp"

namespace kap {

// In a group still: the constructor of the object has failed.
LinkedObject::~LinkedObject() {
    if (group_ != nullptr) {
        group_->memberHasFailed(*this);
    }
}

void LinkedObject::onFirstReference() const noexcept {
    made_ = true;
    if (group_ != nullptr) {
        group_->memberIsReferenced();
    }
}

void LinkedObject::onLastReferenceGone() const noexcept {
    if (group_ == nullptr) {
        destroy();
    } else {
        group_->memberIsDropped();
    }
}

namespace link {

void joined(LinkedObject& from, LinkedObject& to) {
    LinkGroup::unite(from, to);
}

void joinedNew(LinkedObject& from, LinkedObject& made) {
    LinkGroup::uniteWithNew(from, made);
}

void cut(LinkedObject& from) {
    LinkGroup::ofMember(from).linkIsCut();
}

}  // namespace link

void AnyLink::set(LinkedObject& owner, const Variant& value) {
    if (value.isObject()) {
        if (auto* linked = dynamic_cast<LinkedObject*>(value.as<Ref<Object>>().get())) {
            link(owner, *linked);
            return;
        }
    }
    replace(owner, nullptr, value);
}

void AnyLink::link(LinkedObject& owner, LinkedObject& target) {
    kap::link::joined(owner, target);
    replace(owner, &target, Variant());
}

void AnyLink::replace(LinkedObject& owner, LinkedObject* linked, const Variant& value) {
    const bool cuts = linked_ != nullptr;
    // What is let go of may end and call back; everything is in its place by then.
    const Variant before = std::exchange(value_, value);
    linked_ = linked;
    if (cuts) {
        kap::link::cut(owner);
    }
}

Variant AnyLink::get() const {
    return linked_ == nullptr ? value_ : Variant(Ref<Object>(linked_));
}

}  // namespace kap
