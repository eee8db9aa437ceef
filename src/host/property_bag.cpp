#include <kaputil/host/property_bag.hpp>

#include <algorithm>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "automation/late_bound.hpp"
#include "base/unicode.hpp"

namespace kap {
namespace {

bool assigns(InvokeKind kind) {
    return mayBe(kind, InvokeKind::LetOrSet);
}

// Whether a call gives the property what it takes, a value to assign and nothing else.
bool isPlain(InvokeKind kind, const Arguments& arguments) {
    return arguments.positional.size() == (assigns(kind) ? 1U : 0U) && arguments.named.empty();
}

[[noreturn]] void refuse() {
    throw AutomationError(errors::kMemberNotFound);
}

}  // namespace

PropertyBag::PropertyBag(String className, String defaultProperty)
    : className_(std::move(className)), defaultProperty_(std::move(defaultProperty)) {}

const PropertyBag::Property* PropertyBag::find(std::u16string_view name) const {
    const auto found = std::ranges::find_if(properties_, [&](const Property& property) {
        return unicode::sameName(property.name, name);
    });
    return found == properties_.end() ? nullptr : &*found;
}

const Variant& PropertyBag::get(std::u16string_view name) const {
    const Property* property = find(name);
    if (property == nullptr) {
        refuse();
    }
    return property->value;
}

void PropertyBag::put(std::u16string_view name, Variant value) {
    if (const Property* property = find(name)) {
        properties_[static_cast<std::size_t>(property - properties_.data())].value =
            std::move(value);
        return;
    }
    properties_.push_back({name, std::move(value)});
}

void PropertyBag::onAssigned(std::function<void(const String& name)> action) {
    assigned_ = std::move(action);
}

std::optional<std::int32_t> PropertyBag::memberId(std::u16string_view name) const {
    const Property* property = find(name);
    if (property == nullptr) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(property - properties_.data()) + 1;
}

Variant PropertyBag::invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) {
    if (member == kDefaultMember && !defaultProperty_.empty()) {
        return invoke(defaultProperty_, kind, arguments);
    }
    if (member < 1 || static_cast<std::size_t>(member) > properties_.size()) {
        refuse();
    }
    return invoke(properties_[static_cast<std::size_t>(member) - 1], kind, arguments);
}

Variant PropertyBag::invoke(std::u16string_view member, InvokeKind kind,
                            const Arguments& arguments) {
    if (assigns(kind) && isPlain(kind, arguments) && find(member) == nullptr) {
        properties_.push_back({member, {}});
    }
    const auto id = memberId(member);
    if (!id) {
        refuse();
    }
    return invoke(*id, kind, arguments);
}

Variant PropertyBag::invoke(Property& property, InvokeKind kind, const Arguments& arguments) {
    if (!isPlain(kind, arguments)) {
        const Variant held = property.value;  // a copy: what is called may add properties
        return late::invokeDefault(held, kind, arguments);
    }
    if (!assigns(kind)) {
        return property.value;
    }
    property.value = arguments.positional.front();
    if (assigned_) {
        assigned_(String(property.name));  // a copy: the action may add properties
    }
    return {};
}

}  // namespace kap
