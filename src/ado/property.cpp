#include <kaputil/ado/property.hpp>

#include <algorithm>
#include <utility>

#include <kaputil/automation/convert.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "data/failures.hpp"

namespace kap::ado {

Property::Property(Details details) : details_(std::move(details)) {}

Property::~Property() = default;

const ClassDescription& Property::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Property>(u"Property", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b52",
                               u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b42")
            .property<&Property::Attributes>(u"Attributes")
            .property<&Property::Name>(u"Name")
            .property<&Property::Type>(u"Type")
            .property<&Property::Value, &Property::setValue>(u"Value")
            .build(u"Value");
    return description;
}

std::int32_t Property::Attributes() const {
    const auto bits = [](PropertyAttributesEnum attribute) {
        return static_cast<std::int32_t>(attribute);
    };
    return bits(PropertyAttributesEnum::adPropOptional) | bits(PropertyAttributesEnum::adPropRead) |
           (details_.write ? bits(PropertyAttributesEnum::adPropWrite) : 0);
}

void Property::setValue(const Variant& value) {
    if (!details_.write) {
        fail::illegalOperation();
    }
    details_.write(convert::plainValue(value));
}

Properties::Properties(std::vector<Property::Details> details) {
    properties_.reserve(details.size());
    for (Property::Details& one : details) {
        properties_.push_back(make<Property>(std::move(one)));
    }
}

Properties::~Properties() = default;

const ClassDescription& Properties::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Properties>(u"Properties", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b53",
                                 u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b43")
            .property<&Properties::Count>(u"Count")
            .property<&Properties::Item>(u"Item", {u"Index"})
            .method<&Properties::Refresh>(u"Refresh")
            .build(u"Item");
    return description;
}

std::int32_t Properties::Count() const {
    return static_cast<std::int32_t>(properties_.size());
}

Ref<Property> Properties::Item(const Variant& index) const {
    const Variant plain = convert::plainValue(index);
    if (plain.isString()) {
        const auto found = std::ranges::find_if(properties_, [&](const Ref<Property>& each) {
            return unicode::sameName(each->Name(), plain.as<String>());
        });
        if (found == properties_.end()) {
            fail::itemNotFound();
        }
        return *found;
    }
    if (plain.isNull()) {
        fail::itemNotFound();
    }
    const std::int32_t position = convert::toLong(plain);
    if (position < 0 || static_cast<std::size_t>(position) >= properties_.size()) {
        fail::itemNotFound();
    }
    return properties_[static_cast<std::size_t>(position)];
}

}  // namespace kap::ado
