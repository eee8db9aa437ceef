#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <kaputil/ado/property.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

class RowCursor;
struct ColumnInfo;

// One column of a recordset, and its value in the current record. Once the recordset has been
// closed or the column has been taken from it every member raises 3420.
class KAPUTIL_EXPORT Field final : public DescribedObject {
public:
    Field(std::shared_ptr<RowCursor> cursor, std::size_t ordinal);
    ~Field() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The value in the current record: Integer, Long, Byte, Single, Double, Currency, Decimal (also
    // for big integers), Date, Boolean, String, an array of bytes, or Null; Empty in a new record
    // of a recordset made by hand until it is assigned. Raises 3021 when there is no current
    // record.
    [[nodiscard]] Variant Value() const;
    // Changes the pending record; the database is written by Recordset.Update. Raises 3251 in a
    // read-only recordset, 3421 when the value does not convert to the field's type, -2147217887
    // when it does not fit.
    void setValue(const Variant& value);
    // What the database held when the record was read or last written.
    [[nodiscard]] Variant OriginalValue() const;
    // What it held when the record was last compared with it (Recordset.Resync with
    // adResyncUnderlyingValues); else the original value.
    [[nodiscard]] Variant UnderlyingValue() const;

    // A long text or binary in pieces. AppendChunk puts the first piece in the place of the value
    // and adds the following ones, until the record is saved or the field assigned. GetChunk gives
    // the next `size` characters or bytes of the current record's value, fewer at its end, and then
    // Null. Both raise 3219 for a field that is not long.
    void AppendChunk(const Variant& data);
    [[nodiscard]] Variant GetChunk(std::int32_t size);

    [[nodiscard]] String Name() const;
    // What a column of a recordset made by hand is like can be assigned before it is opened, its
    // type, size and attributes here and the digits below; 3219 afterwards, and of any other
    // recordset.
    [[nodiscard]] DataTypeEnum Type() const;
    // Raises 3001 for a type that a column cannot have.
    void setType(DataTypeEnum value);
    // Characters or bytes that the column can hold; the width of the type for the others.
    [[nodiscard]] std::int32_t DefinedSize() const;
    // Raises 3001 for less than one.
    void setDefinedSize(std::int32_t value);
    // Characters or bytes of the current value.
    [[nodiscard]] std::int32_t ActualSize() const;
    // Digits of a number in all, and of a decimal after the point; 255: the type has none. Those of
    // a recordset made by hand can be assigned before its first record; a decimal has up to 18, and
    // more raise 3001.
    [[nodiscard]] std::uint8_t Precision() const;
    void setPrecision(std::uint8_t value);
    [[nodiscard]] std::uint8_t NumericScale() const;
    void setNumericScale(std::uint8_t value);
    // Bits of FieldAttributeEnum. Of a column made by hand those that it was given, or what follows
    // from its type.
    [[nodiscard]] std::int32_t Attributes() const;
    void setAttributes(std::int32_t value);

    // adFieldOK: what could not be read or written raised an error.
    [[nodiscard]] FieldStatusEnum Status() const;
    // BASETABLENAME, BASECOLUMNNAME, KEYCOLUMN, ISAUTOINCREMENT and the others that providers have.
    [[nodiscard]] Ref<ado::Properties> Properties() const;

    // The text of the current value as it is kept, in UTF-8, valid until the recordset changes;
    // raises 13 when the field is of another type or Null.
    [[nodiscard]] std::string_view utf8Value() const;

private:
    friend class Fields;
    [[nodiscard]] RowCursor& cursor() const;
    void assign(const Variant& value);
    [[nodiscard]] ColumnInfo& unopened() const;
    [[nodiscard]] ColumnInfo& unfilled(std::uint8_t digits) const;
    void requireLong() const;
    void follow(std::shared_ptr<RowCursor> cursor, std::size_t ordinal);

    std::shared_ptr<RowCursor> cursor_;  // unset: of no recordset any more
    std::size_t ordinal_;
    bool appending_ = false;                  // the pending value is one of pieces
    std::optional<std::size_t> chunkRecord_;  // the record of which pieces are being read
    std::size_t chunkStart_ = 0;
};

// The columns of a recordset, in the order of the query.
//
// A recordset that is made by hand gets its columns here before it is opened:
//
//     auto recordset = kap::make<kap::ado::Recordset>();
//     recordset->Fields()->Append(u"Codice", DataTypeEnum::adVarChar, 20);
//     recordset->Open();
//     recordset->AddNew(u"Codice", u"A12");
class KAPUTIL_EXPORT Fields final : public DescribedObject {
public:
    Fields();
    ~Fields() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count() const;
    // A field by position from 0 or by name (a text, compared ignoring case); raises 3265 when
    // there is none.
    [[nodiscard]] Ref<Field> Item(const Variant& index) const;
    [[nodiscard]] std::vector<Variant> elements() override;

    // Adds a column: its data type, for texts and binaries the characters or bytes that it holds,
    // and bits of FieldAttributeEnum, of which adFldFixed and adFldLong count. Raises 3219 once the
    // recordset is open or has a connection, 3367 for a name that is taken, 3001 for an empty one,
    // a type that a column cannot have, a text or binary without size, and a value: there is no
    // record yet that could have one.
    void Append(const String& name, DataTypeEnum type, std::int32_t definedSize = 0,
                FieldAttributeEnum attributes = FieldAttributeEnum::adFldUnspecified,
                const Variant& fieldValue = Variant::missing());
    // Has no effect: the columns are those of the query.
    void Refresh() {}
    // Those of a record that is a resource, which no driver has: raise 3251.
    void Update();
    void CancelUpdate();
    void Resync(ResyncEnum resyncValues = ResyncEnum::adResyncAllValues);
    // Takes a column away again; raises 3219 once the recordset is open, 3265 when there is none.
    void Delete(const Variant& index);

private:
    [[nodiscard]] std::size_t positionOf(const Variant& index) const;
    [[nodiscard]] const Ref<Field>& at(std::size_t position) const;
    // Tells the fields from this one on that they are those of `cursor_`.
    void followFrom(std::size_t first);
    void requireUnopened() const;

    friend class Recordset;
    // Of another cursor from now on. A field that a client holds stays that of its column when the
    // columns are the same.
    void show(std::shared_ptr<RowCursor> cursor, bool open);
    // There are none any more.
    void hide();

    std::shared_ptr<RowCursor> cursor_;
    mutable std::vector<Ref<Field>> fields_;  // one each column; unset: nobody has asked for it yet
    bool open_ = false;
    bool connected_ = false;  // the columns are going to be a query's
};

}  // namespace kap::ado
