#include "drivers/odbc/row_changer.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "data/cell_value.hpp"
#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/local_transaction.hpp"
#include "drivers/odbc/result_reader.hpp"
#include "drivers/odbc/values.hpp"

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
    const auto found = std::ranges::find_if(
        values, [&](const ColumnValue& value) { return equalsIgnoringCase(value.column, column); });
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
Value inScale(const ColumnInfo& column, Value value, std::uint8_t scale) {
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
        Value value = databaseValue(result.columns[i], result.rows[i], 0);
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

ChangeOutcome OdbcRowChanger::apply(const RowChange& change, std::chrono::seconds timeout) {
    const Target target = targetOf(change, timeout);
    return change.kind == RowChange::Kind::Read ? read(change, target, timeout)
                                                : write(change, target, timeout);
}

OdbcRowChanger::Target OdbcRowChanger::targetOf(const RowChange& change,
                                                std::chrono::seconds timeout) {
    const auto found = tables_.find(change.table);
    const TableName table =
        found == tables_.end() ? TableName{{}, {}, change.table} : found->second;
    std::string name = dialect().quoted(table.name);
    if (!table.schema.empty() || !table.catalog.empty()) {
        name.insert(0, (table.schema.empty() ? "" : dialect().quoted(table.schema)) + ".");
    }
    if (!table.catalog.empty()) {
        name.insert(0, dialect().quoted(table.catalog) + ".");
    }
    return {table, std::move(name), catalogue_.facts(table, timeout)};
}

ChangeOutcome OdbcRowChanger::read(const RowChange& change, const Target& target,
                                   std::chrono::seconds timeout) {
    ParameterizedText query = selectOf(change.readBack, target);
    addCriteria(pointersTo(change.criteria), target, query.text, query.values);
    const std::vector<Result> results = run(query, timeout);
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

ChangeOutcome OdbcRowChanger::write(const RowChange& change, const Target& target,
                                    std::chrono::seconds timeout) {
    const bool alone = change.kind == RowChange::Kind::Insert || holdsKey(change, target.facts);
    if (!alone && connection_->inTransaction()) {
        requireOneRow(change, target, timeout);  // what the client has open cannot be undone
    }
    const ServerDialect::Answer answer = dialect().answerTo(change, target.facts);
    LocalTransaction transaction(*connection_, !alone || answer == ServerDialect::Answer::Counted);
    ChangeOutcome outcome = answered(answer, change, target, timeout);
    if (outcome.rowsTouched > 1) {
        throw tooManyRows();
    }
    transaction.commit();
    return outcome;
}

ChangeOutcome OdbcRowChanger::answered(ServerDialect::Answer answer, const RowChange& change,
                                       const Target& target, std::chrono::seconds timeout) {
    switch (answer) {
        case ServerDialect::Answer::Returned:
            break;
        case ServerDialect::Answer::Selected:
            return selected(change, target, timeout);
        case ServerDialect::Answer::Counted:
            return counted(change, target, timeout);
    }
    try {
        return returned(change, target, timeout);
    } catch (const DriverError& error) {
        const bool refused = std::ranges::any_of(
            error.messages(),
            [&](const ServerMessage& message) { return dialect().refusesToReturn(message); });
        if (!refused) {
            throw;
        }
    }
    catalogue_.noteTriggers(target.table);
    return selected(change, target, timeout);
}

ChangeOutcome OdbcRowChanger::returned(const RowChange& change, const Target& target,
                                       std::chrono::seconds timeout) {
    Writing writing = this->writing(change, target);
    const std::vector<Result> results =
        run({dialect().returning(writing.row), std::move(writing.values)}, timeout);
    ChangeOutcome outcome;
    const auto rows =
        std::ranges::find_if(results, [](const Result& result) { return !result.columns.empty(); });
    if (rows != results.end()) {
        outcome.rowsTouched = rowsOf(*rows);
        if (outcome.rowsTouched == 1) {
            takeReadBack(change, *rows, outcome);
        }
    }
    return outcome;
}

// Triggers may have answered with counts and rows of their own: ours come last.
ChangeOutcome OdbcRowChanger::selected(const RowChange& change, const Target& target,
                                       std::chrono::seconds timeout) {
    Writing writing = this->writing(change, target);
    std::optional<ParameterizedText> second = readingBack(change, target);
    const bool own = !connection_->inTransaction();
    ParameterizedText query{
        dialect().selecting(writing.row, second ? second->text : std::string(), own),
        std::move(writing.values)};
    if (second) {
        std::ranges::move(second->values, std::back_inserter(query.values));
    }
    std::vector<Result> results;
    try {
        results = run(query, timeout);
    } catch (const DriverError&) {
        if (own && !connection_->isLost()) {
            undo(timeout);
        }
        throw;
    }
    std::erase_if(results, [](const Result& result) { return result.columns.empty(); });
    const std::size_t ours = second ? 2 : 1;
    if (results.size() < ours || rowsOf(results[results.size() - ours]) != 1) {
        throw driverError(errors::kUnspecified, "HY000",
                          "The database server does not say how many rows it has written.");
    }
    ChangeOutcome outcome;
    outcome.rowsTouched = results[results.size() - ours].rows.front().integer(0);
    if (second && outcome.rowsTouched == 1 && rowsOf(results.back()) == 1) {
        takeReadBack(change, results.back(), outcome);
    }
    return outcome;
}

ChangeOutcome OdbcRowChanger::counted(const RowChange& change, const Target& target,
                                      std::chrono::seconds timeout) {
    Writing writing = this->writing(change, target);
    std::vector<Result> results =
        run({ServerDialect::writing(writing.row), std::move(writing.values)}, timeout);
    ChangeOutcome outcome;
    for (const Result& result : results) {
        outcome.rowsTouched = result.rowsAffected.value_or(outcome.rowsTouched);
    }
    const std::optional<ParameterizedText> second = readingBack(change, target);
    if (second && outcome.rowsTouched == 1) {
        results = run(*second, timeout);
        if (!results.empty() && rowsOf(results.back()) == 1) {
            takeReadBack(change, results.back(), outcome);
        }
    }
    return outcome;
}

// Nothing tells the rows of a table without key apart but their values.
void OdbcRowChanger::requireOneRow(const RowChange& change, const Target& target,
                                   std::chrono::seconds timeout) {
    ParameterizedText query;
    query.text = "SELECT COUNT(*) FROM " + target.name;
    addCriteria(pointersTo(change.criteria), target, query.text, query.values);
    const std::vector<Result> results = run(query, timeout);
    const bool one = !results.empty() && rowsOf(results.front()) == 1 &&
                     results.front().rows.front().integer(0) <= 1;
    if (!one) {
        throw tooManyRows();
    }
}

std::vector<Result> OdbcRowChanger::run(const ParameterizedText& query,
                                        std::chrono::seconds timeout) {
    PreparedStatements::InUse statement = prepared_.of(query.text, timeout);
    std::vector<Result> results;
    {
        ParameterBinding parameters(*connection_, statement.handle);
        for (const ColumnValue* value : query.values) {
            parameters.add(value->type, value->numericScale, value->value);
        }
        ResultColumns columns(*connection_, catalogue_, tables_);
        ResultReader reader(connection_, columns, timeout);
        // Drivers tell where the columns of their answers come from, or it does not matter.
        KnownQuery& known = queries_.of(query.text);
        known.analysis = {};
        known.oneResult = true;
        const SQLRETURN code = PreparedStatements::run(statement, query.text);
        reader.readAll(code, statement.handle, known, results);
        if (reader.failed()) {
            throw DriverError(std::move(reader.messages()), kErrorSource);
        }
        prepared_.giveBack(query.text, std::move(statement));
    }
    return results;
}

// What a text of several statements has left open.
void OdbcRowChanger::undo(std::chrono::seconds timeout) {
    const std::string text = dialect().undoing();
    if (text.empty()) {
        return;
    }
    try {
        (void)run({text, {}}, timeout);
    } catch (const DriverError&) {
        connection_->giveUp();  // nothing must make it last
    }
}

OdbcRowChanger::Writing OdbcRowChanger::writing(const RowChange& change,
                                                const Target& target) const {
    Writing made;
    made.row.kind = change.kind;
    made.row.table = target.name;
    made.row.answer = quoted(change.readBack);
    for (const ColumnValue& value : change.values) {
        const TableFacts::Column* fact = target.facts.find(value.column);
        made.row.columns.push_back(dialect().quoted(value.column));
        made.row.marks.push_back(fact == nullptr ? "?" : dialect().mark(fact->type));
        made.values.push_back(&value);
    }
    if (change.kind != RowChange::Kind::Insert) {
        addCriteria(pointersTo(change.criteria), target, made.row.criteria, made.values);
    }
    return made;
}

// The statement that reads the row which the one before it has written; nothing when the row cannot
// be told, or nothing of it is wanted.
std::optional<ParameterizedText> OdbcRowChanger::readingBack(const RowChange& change,
                                                             const Target& target) const {
    if (change.kind == RowChange::Kind::Delete || change.readBack.empty()) {
        return std::nullopt;
    }
    ParameterizedText query = selectOf(change.readBack, target);
    const auto identity = std::ranges::find_if(target.facts.columns, &TableFacts::Column::identity);
    const std::string given = dialect().lastIdentity();
    if (change.kind == RowChange::Kind::Insert && identity != target.facts.columns.end() &&
        !given.empty()) {
        query.text += " WHERE " + dialect().quoted(identity->name) + " = " + given;
        return query;
    }
    std::vector<const ColumnValue*> key;
    for (const std::string& part : target.facts.key) {
        const ColumnValue* value = valueOf(change.values, part);
        key.push_back(value != nullptr ? value : valueOf(change.criteria, part));
    }
    if (key.empty() || std::ranges::find(key, nullptr) != key.end()) {
        return std::nullopt;
    }
    addCriteria(key, target, query.text, query.values);
    return query;
}

std::vector<std::string> OdbcRowChanger::quoted(const std::vector<std::string>& names) const {
    std::vector<std::string> made;
    made.reserve(names.size());
    for (const std::string& name : names) {
        made.push_back(dialect().quoted(name));
    }
    return made;
}

ParameterizedText OdbcRowChanger::selectOf(const std::vector<std::string>& names,
                                           const Target& target) const {
    std::string list;
    for (const std::string& name : quoted(names)) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return {"SELECT " + (list.empty() ? "1" : list) + " FROM " + target.name, {}};
}

void OdbcRowChanger::addCriteria(const std::vector<const ColumnValue*>& criteria,
                                 const Target& target, std::string& text,
                                 std::vector<const ColumnValue*>& values) const {
    const char* joint = " WHERE ";
    for (const ColumnValue* value : criteria) {
        const TableFacts::Column* fact = target.facts.find(value->column);
        const std::string name = dialect().quoted(value->column);
        text += joint;
        joint = " AND ";
        if (std::holds_alternative<std::monostate>(value->value)) {
            text += name + " IS NULL";
            continue;
        }
        const Comparison comparison =
            dialect().comparison(name, fact == nullptr ? AnnouncedType{} : fact->type);
        text += comparison.text;
        values.insert(values.end(), static_cast<std::size_t>(comparison.marks), value);
    }
}

}  // namespace kap::ado::odbc
