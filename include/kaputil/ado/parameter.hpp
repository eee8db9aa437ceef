#pragma once

#include <cstdint>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

// A typed value that goes with a command, comes back from it, or both.
class Parameter final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String Name() const { return name_; }
    void setName(const String& value) { name_ = value; }
    // adEmpty until it is set. Raises 3001 for a type that a value cannot have.
    [[nodiscard]] DataTypeEnum Type() const { return type_; }
    void setType(DataTypeEnum value);
    // The characters of a text, the bytes of a binary; 0: as many as the value has.
    [[nodiscard]] std::int32_t Size() const { return size_; }
    void setSize(std::int32_t value);
    [[nodiscard]] ParameterDirectionEnum Direction() const { return direction_; }
    void setDirection(ParameterDirectionEnum value);
    // Digits of a decimal in all and after the point; with precision 0 both follow the value.
    [[nodiscard]] std::uint8_t Precision() const { return precision_; }
    void setPrecision(std::uint8_t value) { precision_ = value; }
    [[nodiscard]] std::uint8_t NumericScale() const { return numericScale_; }
    void setNumericScale(std::uint8_t value) { numericScale_ = value; }
    // Raises 3421 when the value does not convert to the type, -2147217887 when it does not fit.
    [[nodiscard]] Variant Value() const { return value_; }
    void setValue(const Variant& value);

private:
    friend class Command;

    String name_;
    DataTypeEnum type_ = DataTypeEnum::adEmpty;
    std::int32_t size_ = 0;
    ParameterDirectionEnum direction_ = ParameterDirectionEnum::adParamInput;
    std::uint8_t precision_ = 0;
    std::uint8_t numericScale_ = 0;
    Variant value_;
};

// The parameters of a command, in the order of its marks or of its procedure's parameters.
class Parameters final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count() const;
    // A parameter by position from 0 or by name, compared ignoring case; raises 3265 when there is
    // none.
    [[nodiscard]] Ref<Parameter> Item(const Variant& index) const;
    [[nodiscard]] std::vector<Variant> elements() override {
        return {parameters_.begin(), parameters_.end()};
    }
    // Raises 3708 for a parameter without type.
    void Append(const Ref<Parameter>& parameter);
    void Delete(const Variant& index);
    // Raises 3251: a database does not tell a procedure's parameters; they have to be appended.
    void Refresh();

private:
    [[nodiscard]] std::size_t positionOf(const Variant& index) const;

    std::vector<Ref<Parameter>> parameters_;
};

}  // namespace kap::ado
