#include "drivers/late_bound/late_bound_rows.hpp"

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "automation/late_bound.hpp"
#include "data/cell_value.hpp"
#include "data/value_type.hpp"

namespace kap::ado::late_bound {
namespace {

bool has(std::int32_t attributes, FieldAttributeEnum one) {
    return (attributes & static_cast<std::int32_t>(one)) != 0;
}

ColumnInfo columnOf(const Variant& field) {
    ColumnInfo column;
    column.name = convert::toString(late::get(field, u"Name")).utf8();
    column.type = static_cast<DataTypeEnum>(convert::toLong(late::get(field, u"Type")));
    column.definedSize = convert::toLong(late::get(field, u"DefinedSize"));
    column.precision = convert::toByte(late::get(field, u"Precision"));
    column.numericScale = convert::toByte(late::get(field, u"NumericScale"));
    if (!isColumnType(column.type)) {
        column.type = DataTypeEnum::adVarWChar;  // what it reads as
    }
    const std::int32_t attributes = convert::toLong(late::get(field, u"Attributes"));
    column.nullable = has(attributes, FieldAttributeEnum::adFldIsNullable);
    column.fixedLength = has(attributes, FieldAttributeEnum::adFldFixed);
    column.isLong = has(attributes, FieldAttributeEnum::adFldLong);
    column.rowVersion = has(attributes, FieldAttributeEnum::adFldRowVersion);
    // Whether it can be written is not asked: rows that are only read say no of every column.
    return column;
}

std::vector<ColumnInfo> columnsOf(const Variant& recordset) {
    const Variant fields = late::get(recordset, u"Fields");
    const std::int32_t count = convert::toLong(late::get(fields, u"Count"));
    std::vector<ColumnInfo> columns;
    columns.reserve(static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i) {
        columns.push_back(columnOf(late::call(fields, u"Item", {i})));
    }
    return columns;
}

// Rows come in one piece: an array with a row for each field and a column for each record.
void append(const Array& records, const std::vector<ColumnInfo>& columns,
            std::vector<ColumnStore>& rows) {
    const std::int32_t firstField = records.lowerBound(1);
    for (std::int32_t record = records.lowerBound(2); record <= records.upperBound(2); ++record) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::int32_t indexes[] = {firstField + static_cast<std::int32_t>(i), record};
            ado::append(rows[i], toCell(columns[i], records.at(indexes)));
        }
    }
}

}  // namespace

Result resultOf(const Variant& recordset) {
    Result result;
    const std::int32_t state = convert::toLong(late::get(recordset, u"State"));
    if ((state & static_cast<std::int32_t>(ObjectStateEnum::adStateOpen)) == 0) {
        return result;
    }
    result.columns = columnsOf(recordset);
    result.rows.resize(result.columns.size());
    if (!convert::toBoolean(late::get(recordset, u"EOF"))) {
        const Variant records = late::call(recordset, u"GetRows");
        append(records.as<Array>(), result.columns, result.rows);
    }
    return result;
}

}  // namespace kap::ado::late_bound
