#include <limits>
#include <utility>

#include <kaputil/ado/field.hpp>
#include <kaputil/frame/convert.hpp>

#include "ado/failures.hpp"
#include "ado/row_cursor.hpp"
#include "ado/value_type.hpp"
#include "frame/class_builder.hpp"

namespace kap::ado {
namespace {

constexpr std::uint8_t kWidestDecimal = 18;

bool hasBit(FieldAttributeEnum attributes, FieldAttributeEnum bit) {
    return attributes != FieldAttributeEnum::adFldUnspecified &&
           (static_cast<std::int32_t>(attributes) & static_cast<std::int32_t>(bit)) != 0;
}

ColumnInfo columnMadeByHand(const String& name, DataTypeEnum type, std::int32_t definedSize,
                            FieldAttributeEnum attributes) {
    ColumnInfo column;
    column.name = name.utf8();
    column.baseColumn = column.name;  // of no table, but it can be written
    column.type = type;
    column.isLong = isLongType(type) || hasBit(attributes, FieldAttributeEnum::adFldLong);
    column.fixedLength = widthOf(type) > 0 || hasBit(attributes, FieldAttributeEnum::adFldFixed);
    column.definedSize = widthOf(type) > 0 ? widthOf(type) : definedSize;
    if (type == DataTypeEnum::adNumeric || type == DataTypeEnum::adDecimal) {
        column.precision = kWidestDecimal;
        column.numericScale = 0;
    }
    if (column.definedSize <= 0) {
        if (!column.isLong) {
            fail::invalidArgument();
        }
        column.definedSize = std::numeric_limits<std::int32_t>::max();
    }
    return column;
}

}  // namespace

Fields::Fields(std::shared_ptr<RowCursor> cursor, bool open)
    : cursor_(std::move(cursor)), open_(open) {
    fields_.reserve(cursor_->columns().size());
    for (std::size_t i = 0; i < cursor_->columns().size(); ++i) {
        fields_.push_back(make<Field>(cursor_, i));
    }
}

const ClassDescription& Fields::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Fields>(u"Fields", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b17",
                             u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b27")
            .summary(u"The columns of a recordset, in the order of the query.")
            .property<&Fields::Count>(u"Count", u"How many there are.")
            .property<&Fields::Item>(u"Item", u"A field by position from 0 or by name.", {u"Index"})
            .method<&Fields::Append>(u"Append",
                                     {u"Name", u"Type", kap::Parameter(u"DefinedSize").otherwise(0),
                                      kap::Parameter(u"Attrib").otherwise(-1)},
                                     u"Adds a column to a recordset made by hand.")
            .method<&Fields::Delete>(u"Delete", {u"Index"},
                                     u"Takes a column from a recordset made by hand.")
            .build(u"Item");
    return description;
}

std::int32_t Fields::Count() const {
    return static_cast<std::int32_t>(fields_.size());
}

Ref<Field> Fields::Item(const Variant& index) const {
    return fields_[positionOf(index)];
}

std::size_t Fields::positionOf(const Variant& index) const {
    if (index.isString()) {
        const auto found = cursor_->find(index.as<String>());
        if (!found) {
            fail::itemNotFound();
        }
        return *found;
    }
    if (index.isObject()) {  // a field or text box that holds the name or position
        return positionOf(index.as<Ref<Object>>() ? index.as<Ref<Object>>()->defaultValue()
                                                  : Variant::null());
    }
    const std::int32_t position = convert::toLong(index);
    if (position < 0 || static_cast<std::size_t>(position) >= fields_.size()) {
        fail::itemNotFound();
    }
    return static_cast<std::size_t>(position);
}

void Fields::requireUnopened() const {
    if (open_) {
        fail::illegalOperation();
    }
}

void Fields::Append(const String& name, DataTypeEnum type, std::int32_t definedSize,
                    FieldAttributeEnum attributes) {
    requireUnopened();
    if (name.empty() || cursor_->find(name) || !isColumnType(type)) {
        fail::invalidArgument();
    }
    cursor_->table().addColumn(columnMadeByHand(name, type, definedSize, attributes));
    fields_.push_back(make<Field>(cursor_, fields_.size()));
}

void Fields::Delete(const Variant& index) {
    requireUnopened();
    cursor_->table().removeColumn(positionOf(index));
    // Fields are views on a position: the last one has none any more.
    fields_.pop_back();
}

}  // namespace kap::ado
