#include "drivers/late_bound/statement_text.hpp"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "base/quoting.hpp"
#include "data/cell_value.hpp"
#include "data/row_statement.hpp"
#include "data/value_type.hpp"

namespace kap::ado::late_bound {
namespace {

// Without '-' in its day a date is read the same under every date format.
std::string dateText(Date date) {
    std::string made = plain::isoDateTime(date);
    std::erase(made, '-');
    return "'" + made + "'";
}

std::string literal(const RowColumn& given, const Value& value) {
    ColumnInfo column;
    column.type = given.type;
    column.numericScale = given.numericScale;
    const Variant held = toVariant(column, value);
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

// A column and what it is said to hold.
struct Held {
    const RowColumn* column;
    const Value* value;
};

std::vector<Held> heldIn(const std::vector<RowColumn>& columns, const std::vector<Value>& values) {
    std::vector<Held> held;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        held.push_back({&columns[i], &values[i]});
    }
    return held;
}

// Long texts and binaries cannot be compared.
std::string condition(const std::vector<Held>& criteria) {
    std::string made;
    for (const auto& [column, value] : criteria) {
        if (isLongType(column->type) && !isNull(*value)) {
            continue;
        }
        made += made.empty() ? " WHERE " : " AND ";
        made +=
            name(column->name) + (isNull(*value) ? " IS NULL" : " = " + literal(*column, *value));
    }
    return made;
}

bool names(const std::vector<RowColumn>& columns, const std::string& column) {
    return std::ranges::find(columns, column, &RowColumn::name) != columns.end();
}

// What the row holds after the change: what was written, and what was there where nothing was. A
// column that is only read back is the database's own, and has changed.
std::vector<Held> afterwards(const RowChange& change) {
    const RowPlan& plan = *change.plan;
    std::vector<Held> held = heldIn(plan.criteria(), change.criteria);
    std::erase_if(held, [&](const Held& each) {
        const std::string& column = each.column->name;
        const bool onlyRead =
            plan.kind() == RowPlan::Kind::Update && names(plan.readBack(), column);
        return onlyRead || names(plan.values(), column);
    });
    std::ranges::copy(heldIn(plan.values(), change.values), std::back_inserter(held));
    return held;
}

}  // namespace

std::string textLiteral(const std::string& text) {
    return nationalConstant(text);
}

std::string writingText(const RowChange& change) {
    const RowPlan& plan = *change.plan;
    RowStatement row{plan.kind(), plan.table()};
    for (const auto& [column, value] : heldIn(plan.values(), change.values)) {
        row.columns.push_back(name(column->name));
        row.values.push_back(literal(*column, *value));
    }
    row.criteria = condition(heldIn(plan.criteria(), change.criteria));
    return textOf(row);
}

std::string readingText(const RowChange& change) {
    RowStatement row{RowPlan::Kind::Read, change.plan->table()};
    for (const RowColumn& column : change.plan->readBack()) {
        row.answer.push_back(name(column.name));
    }
    row.criteria = condition(afterwards(change));
    return textOf(row);
}

}  // namespace kap::ado::late_bound
