#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

// What a provider tells of a connection, a command, a recordset or a field beyond their members,
// and lets be chosen.
class KAPUTIL_EXPORT Property final : public DescribedObject {
public:
    // Without `write` the value can only be read.
    struct Details {
        String name;
        DataTypeEnum type = DataTypeEnum::adBSTR;
        std::function<Variant()> read;
        std::function<void(const Variant&)> write = {};
    };

    explicit Property(Details details);
    ~Property() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String Name() const { return details_.name; }
    [[nodiscard]] DataTypeEnum Type() const { return details_.type; }
    // Bits of PropertyAttributesEnum.
    [[nodiscard]] std::int32_t Attributes() const;
    [[nodiscard]] Variant Value() const { return details_.read(); }
    // Raises 3219 when it can only be read, and what the property's own object raises.
    void setValue(const Variant& value);

private:
    Details details_;
};

// The properties of one object, as they are when they are asked for.
class KAPUTIL_EXPORT Properties final : public DescribedObject {
public:
    explicit Properties(std::vector<Property::Details> details);
    ~Properties() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count() const;
    // A property by position from 0 or by name, compared ignoring case; raises 3265 when there is
    // none.
    [[nodiscard]] Ref<Property> Item(const Variant& index) const;
    [[nodiscard]] std::vector<Variant> elements() override {
        return {properties_.begin(), properties_.end()};
    }
    // Every value is asked for when it is read, so there is nothing to refresh.
    void Refresh() {}

private:
    std::vector<Ref<Property>> properties_;
};

}  // namespace kap::ado
