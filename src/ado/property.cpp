#include <kaputil/ado/property.hpp>

#include <algorithm>
#include <utility>

#include <kaputil/automation/convert.hpp>

#include "ado/element_index.hpp"
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
    return properties_[elementAt(index, properties_.size(), [&](const String& name) {
        const auto found = std::ranges::find_if(properties_, [&](const Ref<Property>& each) {
            return unicode::sameName(each->Name(), name);
        });
        return static_cast<std::size_t>(found - properties_.begin());
    })];
}

}  // namespace kap::ado
