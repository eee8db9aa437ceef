#pragma once

#include <cstdint>
#include <vector>

#include <kaputil/ado/property.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

class Command;

// A typed value that goes with a command, comes back from it, or both.
class KAPUTIL_EXPORT Parameter final : public DescribedObject {
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
    // Bits of ParameterAttributesEnum; adParamSigned unless assigned. They are kept for who asks:
    // every parameter takes Null and negative numbers.
    [[nodiscard]] std::int32_t Attributes() const { return attributes_; }
    void setAttributes(std::int32_t value) { attributes_ = value; }
    // Providers tell nothing more of a parameter.
    [[nodiscard]] Ref<ado::Properties> Properties() const;
    // Adds a piece to a long text or binary; the first one takes the place of the value.
    void AppendChunk(const Variant& data);
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
    std::int32_t attributes_ = static_cast<std::int32_t>(ParameterAttributesEnum::adParamSigned);
    bool appending_ = false;  // the value is one of pieces
    Variant value_;
};

// The parameters of a command, in the order of its marks or of its procedure's parameters.
class KAPUTIL_EXPORT Parameters final : public DescribedObject {
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
    // Takes those that the database tells of the command's procedure, the return value first; of a
    // text there is one for each mark. Raises 3709 without an open connection, -2147217900 for a
    // procedure that the database does not know.
    void Refresh();

private:
    [[nodiscard]] std::size_t positionOf(const Variant& index) const;

    friend class Command;
    std::vector<Ref<Parameter>> parameters_;
    Command* command_ = nullptr;  // whose they are, as long as it lives
};

}  // namespace kap::ado
