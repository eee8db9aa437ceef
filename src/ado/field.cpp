#include <kaputil/ado/field.hpp>

#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "ado/hand_made_column.hpp"
#include "ado/row_cursor.hpp"
#include "automation/class_builder.hpp"
#include "data/cell_value.hpp"
#include "data/failures.hpp"
#include "data/value_type.hpp"

namespace kap::ado {

Field::Field(std::shared_ptr<RowCursor> cursor, std::size_t ordinal)
    : cursor_(std::move(cursor)), ordinal_(ordinal) {}

Field::~Field() = default;

RowCursor& Field::cursor() const {
    if (cursor_ == nullptr) {
        fail::objectNotValid();
    }
    return *cursor_;
}

void Field::follow(std::shared_ptr<RowCursor> cursor, std::size_t ordinal) {
    cursor_ = std::move(cursor);
    ordinal_ = ordinal;
    appending_ = false;
    chunkRecord_.reset();
}

const ClassDescription& Field::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Field>(u"Field", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b16",
                            u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b26")
            .property<&Field::ActualSize>(u"ActualSize")
            .property<&Field::Attributes, &Field::setAttributes>(u"Attributes")
            .property<&Field::DefinedSize, &Field::setDefinedSize>(u"DefinedSize")
            .property<&Field::Name>(u"Name")
            .property<&Field::NumericScale, &Field::setNumericScale>(u"NumericScale")
            .property<&Field::OriginalValue>(u"OriginalValue")
            .property<&Field::Precision, &Field::setPrecision>(u"Precision")
            .property<&Field::Type, &Field::setType>(u"Type")
            .property<&Field::UnderlyingValue>(u"UnderlyingValue")
            .property<&Field::Value, &Field::setValue>(u"Value")
            .method<&Field::AppendChunk>(u"AppendChunk", {u"Data"})
            .method<&Field::GetChunk>(u"GetChunk", {u"Length"})
            .property<&Field::Properties>(u"Properties")
            .property<&Field::Status>(u"Status")
            .build(u"Value");
    return description;
}

Variant Field::Value() const {
    return cursor().value(ordinal_);
}

void Field::setValue(const Variant& value) {
    if (cursor().observer() != nullptr) {
        const std::shared_ptr<FieldObserver> observer = cursor().observer();
        observer->assigning(ordinal_, [&] { assign(value); });
    } else {
        assign(value);
    }
}

void Field::assign(const Variant& value) {
    cursor().assign(ordinal_, value);
    appending_ = false;
    chunkRecord_.reset();
}

Variant Field::OriginalValue() const {
    return cursor().originalValue(ordinal_);
}

Variant Field::UnderlyingValue() const {
    return cursor().underlyingValue(ordinal_);
}

String Field::Name() const {
    return cursor().columns()[ordinal_].name;
}

DataTypeEnum Field::Type() const {
    return cursor().columns()[ordinal_].type;
}

std::int32_t Field::DefinedSize() const {
    return cursor().columns()[ordinal_].definedSize;
}

std::int32_t Field::ActualSize() const {
    const Variant value = Value();
    if (value.isNull() || value.isEmpty()) {
        return 0;
    }
    const DataTypeEnum type = Type() == DataTypeEnum::adVariant ? dataTypeOf(value) : Type();
    switch (storageOf(type)) {
        case Storage::Text:
            return static_cast<std::int32_t>(value.as<String>().size());
        case Storage::Binary:
            return static_cast<std::int32_t>(value.as<Array>().size());
        case Storage::Integer:
        case Storage::Real:
            break;
    }
    return Type() == DataTypeEnum::adVariant ? widthOf(type) : DefinedSize();
}

std::uint8_t Field::Precision() const {
    return cursor().columns()[ordinal_].precision;
}

std::uint8_t Field::NumericScale() const {
    return cursor().columns()[ordinal_].numericScale;
}

// The column of a recordset made by hand that has not been opened.
ColumnInfo& Field::unopened() const {
    if (!cursor().table().isDraft()) {
        fail::illegalOperation();
    }
    return cursor().table().column(ordinal_);
}

// The same when it has no record yet: its numbers may still get other digits.
ColumnInfo& Field::unfilled(std::uint8_t digits) const {
    if (!cursor().table().isMadeByHand() || cursor().table().size() > 0) {
        fail::illegalOperation();
    }
    ColumnInfo& column = cursor().table().column(ordinal_);
    if (isDecimalType(column.type) && digits > kWidestDecimal) {
        fail::invalidArgument();
    }
    return column;
}

void Field::setPrecision(std::uint8_t value) {
    unfilled(value).precision = value;
}

void Field::setNumericScale(std::uint8_t value) {
    unfilled(value).numericScale = value;
}

void Field::setType(DataTypeEnum value) {
    ColumnInfo& column = unopened();
    describeByHand(column, value, column.definedSize, column.givenAttributes);
}

void Field::setDefinedSize(std::int32_t value) {
    ColumnInfo& column = unopened();
    if (value < 1) {
        fail::invalidArgument();
    }
    column.definedSize = widthOf(column.type) > 0 ? widthOf(column.type) : value;
}

void Field::setAttributes(std::int32_t value) {
    ColumnInfo& column = unopened();
    describeByHand(column, column.type, column.definedSize, attributesGiven(value));
}

std::int32_t Field::Attributes() const {
    return cursor().attributes(ordinal_);
}

std::string_view Field::utf8Value() const {
    if (storageOf(Type()) != Storage::Text || Type() == DataTypeEnum::adVariant) {
        throw AutomationError(kap::errors::kTypeMismatch);
    }
    return cursor().bytes(ordinal_);
}

}  // namespace kap::ado
