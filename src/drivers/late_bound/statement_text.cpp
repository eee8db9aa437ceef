#include "drivers/late_bound/statement_text.hpp"

#include <algorithm>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "base/quoting.hpp"
#include "data/cell_value.hpp"
#include "data/value_type.hpp"

namespace kap::ado::late_bound {
namespace {

// Without '-' in its day a date is read the same under every date format.
std::string dateText(Date date) {
    std::string made = plain::isoDateTime(date);
    std::erase(made, '-');
    return "'" + made + "'";
}

std::string literal(const ColumnValue& value) {
    ColumnInfo column;
    column.type = value.type;
    column.numericScale = value.numericScale;
    const Variant held = toVariant(column, value.value);
    switch (held.type()) {
        case VarType::Null:
        case VarType::Empty:
            return "NULL";
        case VarType::Boolean:
            return held.as<bool>() ? "1" : "0";
        case VarType::Single:
            return plain::shortest(held.as<float>());
        case VarType::Double:
            return plain::shortest(held.as<double>());
        case VarType::Date:
            return dateText(held.as<Date>());
        case VarType::Array:
            return "0x" + hex::ofBytes(held.as<Array>().bytes());
        case VarType::String:
            return textLiteral(held.as<String>().utf8());
        default:
            return convert::toDecimal(held).plainText();
    }
}

std::string name(const std::string& column) {
    std::string made = "[";
    for (const char byte : column) {
        made += byte;
        if (byte == ']') {
            made += ']';
        }
    }
    return made + "]";
}

bool isNull(const ColumnValue& value) {
    return std::holds_alternative<std::monostate>(value.value);
}

// Long texts and binaries cannot be compared.
std::string condition(const std::vector<ColumnValue>& criteria) {
    std::string made;
    for (const ColumnValue& value : criteria) {
        if (isLongType(value.type) && !isNull(value)) {
            continue;
        }
        made += made.empty() ? " WHERE " : " AND ";
        made += name(value.column) + (isNull(value) ? " IS NULL" : " = " + literal(value));
    }
    return made;
}

const ColumnValue* find(const std::vector<ColumnValue>& values, const std::string& column) {
    const auto found =
        std::ranges::find_if(values, [&](const ColumnValue& one) { return one.column == column; });
    return found == values.end() ? nullptr : &*found;
}

// What the row holds after the change: what was written, and what was there where nothing was. A
// column that is only read back is the database's own, and has changed.
std::vector<ColumnValue> afterwards(const RowChange& change) {
    std::vector<ColumnValue> held;
    for (const ColumnValue& value : change.criteria) {
        const bool onlyRead =
            change.kind == RowChange::Kind::Update &&
            std::ranges::find(change.readBack, value.column) != change.readBack.end();
        if (find(change.values, value.column) == nullptr && !onlyRead) {
            held.push_back(value);
        }
    }
    held.insert(held.end(), change.values.begin(), change.values.end());
    return held;
}

std::string insertion(const RowChange& change) {
    std::string columns;
    std::string values;
    for (const ColumnValue& value : change.values) {
        const char* separator = columns.empty() ? "" : ", ";
        columns += separator + name(value.column);
        values += separator + literal(value);
    }
    if (columns.empty()) {
        return "INSERT INTO " + change.table + " DEFAULT VALUES";
    }
    return "INSERT INTO " + change.table + " (" + columns + ") VALUES (" + values + ")";
}

std::string update(const RowChange& change) {
    std::string assignments;
    for (const ColumnValue& value : change.values) {
        assignments +=
            (assignments.empty() ? "" : ", ") + name(value.column) + " = " + literal(value);
    }
    return "UPDATE " + change.table + " SET " + assignments + condition(change.criteria);
}

}  // namespace

std::string textLiteral(const std::string& text) {
    return nationalConstant(text);
}

std::string writingText(const RowChange& change) {
    switch (change.kind) {
        case RowChange::Kind::Insert:
            return insertion(change);
        case RowChange::Kind::Update:
            return update(change);
        default:
            return "DELETE FROM " + change.table + condition(change.criteria);
    }
}

std::string readingText(const RowChange& change) {
    std::string columns;
    for (const std::string& column : change.readBack) {
        columns += (columns.empty() ? "" : ", ") + name(column);
    }
    return "SELECT " + (columns.empty() ? "1" : columns) + " FROM " + change.table +
           condition(afterwards(change));
}

}  // namespace kap::ado::late_bound
