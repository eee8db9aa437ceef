#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/object.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// An object with the properties that a C++ program gives it, for members that take forms, text
// boxes or other late-bound objects.
//
//     auto form = kap::make<kap::PropertyBag>(u"Form");
//     form->put(u"Top", 0);
//     f->TrovaTop(kap::Variant(form), 100);
//
// Names are compared ignoring case. By late binding the properties are read and assigned (with a
// plain value or a reference); one that is not there is made by assigning it, and raises 438 when
// it is read. Arguments for a property are for the default member of the object that it holds, and
// raise 450 when it holds none.
class KAPUTIL_EXPORT PropertyBag final : public Object {
public:
    // `className` is what the object says it is; `defaultProperty` names the property that stands
    // for the object where a plain value is wanted, none when it is empty.
    explicit PropertyBag(String className = u"PropertyBag", String defaultProperty = {});

    // The value of a property; raises 438 when there is none.
    [[nodiscard]] const Variant& get(std::u16string_view name) const;
    void put(std::u16string_view name, Variant value);

    // Called after each late-bound assignment, with the property's name: a program moves its window
    // here.
    void onAssigned(std::function<void(const String& name)> action);

    [[nodiscard]] String className() const override { return className_; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override;
    Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) override;
    Variant invoke(std::u16string_view member, InvokeKind kind,
                   const Arguments& arguments) override;

private:
    struct Property {
        String name;
        Variant value;
    };
    [[nodiscard]] const Property* find(std::u16string_view name) const;
    Variant invoke(Property& property, InvokeKind kind, const Arguments& arguments);

    String className_;
    String defaultProperty_;
    std::vector<Property> properties_;  // their identifiers are their positions from 1
    std::function<void(const String&)> assigned_;
};

}  // namespace kap
