#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <kaputil/ado/enumerations.hpp>
#include <kaputil/frame/class_description.hpp>

namespace kap::ado {

class RowCursor;

// One column of a recordset, and its value in the current record.
class Field final : public DescribedObject {
public:
    Field(std::shared_ptr<RowCursor> cursor, std::size_t ordinal);
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The value in the current record: Integer, Long, Byte, Single, Double, Currency, Decimal (also
    // for big integers), Date, Boolean, String, an array of bytes, or Null. Raises 3021 when there
    // is no current record.
    [[nodiscard]] Variant Value() const;
    // Changes the pending record; the database is written by Recordset.Update. Raises 3251 in a
    // read-only recordset, 3421 when the value does not convert to the field's type, -2147217887
    // when it does not fit.
    void setValue(const Variant& value);
    // What the database held when the record was read or last written.
    [[nodiscard]] Variant OriginalValue() const;

    [[nodiscard]] String Name() const;
    [[nodiscard]] DataTypeEnum Type() const;
    // Characters or bytes that the column can hold; the width of the type for the others.
    [[nodiscard]] std::int32_t DefinedSize() const;
    // Characters or bytes of the current value.
    [[nodiscard]] std::int32_t ActualSize() const;
    [[nodiscard]] std::uint8_t Precision() const;
    [[nodiscard]] std::uint8_t NumericScale() const;
    // Bits of FieldAttributeEnum.
    [[nodiscard]] std::int32_t Attributes() const;

    // The text of the current value as it is kept, in UTF-8, valid until the recordset changes;
    // raises 13 when the field is of another type or Null.
    [[nodiscard]] std::string_view utf8Value() const;

private:
    std::shared_ptr<RowCursor> cursor_;
    std::size_t ordinal_;
};

// The columns of a recordset, in the order of the query.
class Fields final : public DescribedObject {
public:
    explicit Fields(std::shared_ptr<RowCursor> cursor);
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count() const;
    // A field by position from 0 or by name (a text, compared ignoring case); raises 3265 when
    // there is none.
    [[nodiscard]] Ref<Field> Item(const Variant& index) const;
    [[nodiscard]] std::vector<Variant> elements() override {
        return {fields_.begin(), fields_.end()};
    }

private:
    std::shared_ptr<RowCursor> cursor_;
    std::vector<Ref<Field>> fields_;
};

}  // namespace kap::ado
