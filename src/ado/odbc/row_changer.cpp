#include "ado/odbc/row_changer.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/ado/error_numbers.hpp>

#include "ado/cell_value.hpp"
#include "ado/odbc/diagnostics.hpp"
#include "ado/odbc/result_reader.hpp"
#include "ado/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

std::vector<const ColumnValue*> pointersTo(const std::vector<ColumnValue>& values) {
    std::vector<const ColumnValue*> pointers;
    pointers.reserve(values.size());
    for (const ColumnValue& value : values) {
        pointers.push_back(&value);
    }
    return pointers;
}

const ColumnValue* valueOf(const std::vector<ColumnValue>& values, const std::string& column) {
    const auto found = std::ranges::find(values, column, &ColumnValue::column);
    return found == values.end() ? nullptr : &*found;
}

// Whether the criteria name the table's whole key: then they fit one row at most.
bool holdsKey(const RowChange& change, const TableFacts& facts) {
    return !facts.key.empty() && std::ranges::all_of(facts.key, [&](const std::string& part) {
        return valueOf(change.criteria, part) != nullptr;
    });
}

DriverError tooManyRows() {
    return driverError(errors::kUnspecified, "21000",
                       "Key column information is insufficient or incorrect. Too many rows were "
                       "affected by update.");
}

// A decimal may come back with other decimals than the record's column has.
CellValue inScale(const ColumnInfo& column, CellValue value, std::uint8_t scale) {
    const auto* digits = std::get_if<std::int64_t>(&value);
    if (digits == nullptr || column.type != DataTypeEnum::adNumeric ||
        column.numericScale == scale) {
        return value;
    }
    const auto other = decimalOf(decimalText(*digits, column.numericScale));
    const auto same = other ? scaled(*other, scale) : std::nullopt;
    if (!same) {
        refuseValue(column, "it got more decimals than the records that are open have");
    }
    return *same;
}

void takeReadBack(const RowChange& change, const Result& result, ChangeOutcome& outcome) {
    for (std::size_t i = 0; i < change.readBack.size(); ++i) {
        CellValue value = databaseValue(result.columns[i], result.rows[i], 0);
        if (i < change.readBackScales.size()) {
            value = inScale(result.columns[i], std::move(value), change.readBackScales[i]);
        }
        outcome.readBack.push_back(std::move(value));
    }
}

std::int64_t rowsOf(const Result& result) {
    return result.rows.empty() ? 0 : static_cast<std::int64_t>(result.rows.front().size());
}

}  // namespace

ChangeOutcome RowChanger::apply(const RowChange& change, std::chrono::seconds timeout) {
    const Target target = targetOf(change, timeout);
    return change.kind == RowChange::Kind::Read ? read(change, target, timeout)
                                                : write(change, target, timeout);
}

RowChanger::Target RowChanger::targetOf(const RowChange& change, std::chrono::seconds timeout) {
    const auto found = tables_.find(change.table);
    const TableName table =
        found == tables_.end() ? TableName{{}, {}, change.table} : found->second;
    const Abilities& abilities = link_->abilities();
    std::string name = abilities.quoted(table.name);
    if (!table.schema.empty()) {
        name.insert(0, abilities.quoted(table.schema) + ".");
    }
    return {std::move(name), catalogue_.facts(table, timeout)};
}

ChangeOutcome RowChanger::read(const RowChange& change, const Target& target,
                               std::chrono::seconds timeout) {
    Command command;
    command.text = "SELECT " + columnList(change.readBack) + " FROM " + target.name;
    addCriteria(pointersTo(change.criteria), target, command);
    const std::vector<Result> results = run(command, timeout);
    ChangeOutcome outcome;
    outcome.rowsTouched = results.empty() ? 0 : rowsOf(results.front());
    if (outcome.rowsTouched > 1) {
        throw tooManyRows();
    }
    if (outcome.rowsTouched == 1) {
        takeReadBack(change, results.front(), outcome);
    }
    return outcome;
}

ChangeOutcome RowChanger::write(const RowChange& change, const Target& target,
                                std::chrono::seconds timeout) {
    if (change.kind != RowChange::Kind::Insert && !holdsKey(change, target.facts)) {
        requireOneRow(change, target, timeout);
    }
    const Abilities& abilities = link_->abilities();
    Command command = writing(change, target);
    const bool wantsRow = !change.readBack.empty();
    std::optional<Command> second;
    if (abilities.returning) {
        command.text += " RETURNING " + (wantsRow ? columnList(change.readBack) : "1");
    } else if (wantsRow) {
        second = readingBack(change, target);
    }
    if (second && abilities.batches) {
        command.text += "; " + second->text;
        std::ranges::move(second->values, std::back_inserter(command.values));
        second.reset();
    }
    std::vector<Result> results = run(command, timeout);
    ChangeOutcome outcome;
    for (const Result& result : results) {
        if (result.columns.empty()) {
            outcome.rowsTouched += result.rowsAffected.value_or(0);
        } else if (abilities.returning) {
            outcome.rowsTouched += rowsOf(result);
        }
    }
    if (second && outcome.rowsTouched == 1) {
        results = run(*second, timeout);
    }
    if (outcome.rowsTouched > 1) {
        throw tooManyRows();
    }
    if (wantsRow && !results.empty() && rowsOf(results.back()) == 1) {
        takeReadBack(change, results.back(), outcome);
    }
    return outcome;
}

// Nothing tells the rows of a table without key apart but their values.
void RowChanger::requireOneRow(const RowChange& change, const Target& target,
                               std::chrono::seconds timeout) {
    Command command;
    command.text = "SELECT COUNT(*) FROM " + target.name;
    addCriteria(pointersTo(change.criteria), target, command);
    const std::vector<Result> results = run(command, timeout);
    const bool one = !results.empty() && rowsOf(results.front()) == 1 &&
                     results.front().rows.front().integer(0) <= 1;
    if (!one) {
        throw tooManyRows();
    }
}

std::vector<Result> RowChanger::run(const Command& command, std::chrono::seconds timeout) {
    Handle statement = link_->newStatement(timeout);
    ParameterBinding parameters(*link_, statement);
    for (const ColumnValue* value : command.values) {
        parameters.add(value->type, value->numericScale, value->value);
    }
    const std::u16string text = String(command.text).units();
    ResultColumns columns(*link_, catalogue_, tables_);
    ResultReader reader(link_, columns, false, timeout);
    std::vector<Result> results;
    const SQLRETURN code =
        SQLExecDirectW(statement.get(), wide(text), static_cast<SQLINTEGER>(text.size()));
    // Drivers tell where the columns of their answers come from, or it does not matter.
    KnownQuery& known = queries_.of(command.text);
    known.analysis = {};
    known.oneResult = true;
    reader.readAll(code, statement, known, results);
    if (reader.failed()) {
        throw DriverError(std::move(reader.messages()), kErrorSource);
    }
    return results;
}

Command RowChanger::writing(const RowChange& change, const Target& target) const {
    Command command;
    switch (change.kind) {
        case RowChange::Kind::Insert:
            command.text = "INSERT INTO " + target.name;
            addValues(change, target, command);
            return command;
        case RowChange::Kind::Update:
            command.text = "UPDATE " + target.name + " SET ";
            addValues(change, target, command);
            break;
        default:
            command.text = "DELETE FROM " + target.name;
    }
    addCriteria(pointersTo(change.criteria), target, command);
    return command;
}

void RowChanger::addValues(const RowChange& change, const Target& target, Command& command) const {
    const bool insert = change.kind == RowChange::Kind::Insert;
    std::string names;
    std::string marks;
    for (const ColumnValue& value : change.values) {
        const std::string name = link_->abilities().quoted(value.column);
        const std::string own = mark(target, value.column);
        names += (names.empty() ? "" : ", ") + name + (insert ? "" : " = " + own);
        marks += (marks.empty() ? "" : ", ") + own;
        command.values.push_back(&value);
    }
    if (insert && names.empty()) {
        command.text += " DEFAULT VALUES";
    } else {
        command.text += insert ? " (" + names + ") VALUES (" + marks + ")" : names;
    }
}

// The statement that reads the row which the one before it has written; nothing when the row cannot
// be told.
std::optional<Command> RowChanger::readingBack(const RowChange& change,
                                               const Target& target) const {
    if (change.kind == RowChange::Kind::Delete) {
        return std::nullopt;
    }
    const Abilities& abilities = link_->abilities();
    Command command;
    command.text = "SELECT " + columnList(change.readBack) + " FROM " + target.name;
    const auto identity = std::ranges::find_if(target.facts.columns, &TableFacts::Column::identity);
    if (change.kind == RowChange::Kind::Insert && identity != target.facts.columns.end() &&
        !abilities.identity.empty()) {
        command.text += " WHERE " + abilities.quoted(identity->name) + " = " + abilities.identity;
        return command;
    }
    std::vector<const ColumnValue*> key;
    for (const std::string& part : target.facts.key) {
        const ColumnValue* value = valueOf(change.values, part);
        key.push_back(value != nullptr ? value : valueOf(change.criteria, part));
    }
    if (key.empty() || std::ranges::find(key, nullptr) != key.end()) {
        return std::nullopt;
    }
    addCriteria(key, target, command);
    return command;
}

std::string RowChanger::columnList(const std::vector<std::string>& names) const {
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + link_->abilities().quoted(name);
    }
    return list.empty() ? "1" : list;
}

std::string RowChanger::mark(const Target& target, const std::string& column) const {
    const TableFacts::Column* fact = target.facts.find(column);
    return fact == nullptr ? "?" : link_->abilities().markFor(fact->type.name);
}

void RowChanger::addCriteria(const std::vector<const ColumnValue*>& criteria, const Target& target,
                             Command& command) const {
    const char* joint = " WHERE ";
    for (const ColumnValue* value : criteria) {
        const TableFacts::Column* fact = target.facts.find(value->column);
        const std::string name = link_->abilities().quoted(value->column);
        command.text += joint;
        joint = " AND ";
        if (std::holds_alternative<std::monostate>(value->value)) {
            command.text += name + " IS NULL";
            continue;
        }
        command.text +=
            fact == nullptr ? name + " = ?" : link_->abilities().comparison(name, fact->type.name);
        command.values.push_back(value);
    }
}

}  // namespace kap::ado::odbc
