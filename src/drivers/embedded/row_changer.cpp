#include "drivers/embedded/row_changer.hpp"

#include <cstddef>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/statements.hpp"
#include "engine/values/value.hpp"

namespace kap::ado::embedded {
namespace {

constexpr std::size_t kKeptStatements = 200;

using tsql::ServerError;

const engine::Column& columnOf(const engine::Table& table, const std::string& name) {
    const engine::Column* column = table.find(name);
    if (column == nullptr) {
        throw ServerError(tsql::Message::InvalidColumn, {name});
    }
    return *column;
}

// What the database sets itself cannot be assigned.
void requireAssignable(const RowChange& change, const engine::Table& table,
                       const engine::Column& column) {
    const bool insert = change.kind == RowChange::Kind::Insert;
    if (column.isRowVersion()) {
        throw insert ? ServerError(tsql::Message::TimestampNotInsertable)
                     : ServerError(tsql::Message::TimestampNotUpdatable);
    }
    if (column.computed) {
        throw ServerError(tsql::Message::ColumnNotModifiable, {column.name});
    }
    if (column.identity) {
        throw insert ? ServerError(tsql::Message::IdentityInsertOff, {table.shown()})
                     : ServerError(tsql::Message::IdentityNotUpdatable, {column.name});
    }
}

std::string parameter(std::size_t number) {
    return "?" + plain::text(static_cast<std::int64_t>(number));
}

std::string target(const engine::Table& table) {
    return std::string(table.temporary ? "temp." : "main.") + engine::sqlName(table.name);
}

std::string columnList(const std::vector<std::string>& names, const engine::Table& table) {
    std::string list;
    for (const std::string& name : names) {
        const engine::Column& column = columnOf(table, name);
        const std::string sql = engine::sqlName(column.name);
        // RETURNING gives a value as it was bound, before the column has made it a float.
        const bool real = engine::storedAs(column.type) == Storage::Real;
        list += (list.empty() ? "" : ", ") + (real ? "CAST(" + sql + " AS REAL)" : sql);
    }
    return list.empty() ? "1" : list;
}

// A value that was read back, as clients get it; a column without a name is a row's number.
Value toldColumn(const engine::Table& table, const std::string& name, Value value) {
    return name.empty() ? std::move(value) : engine::toldValue(value, columnOf(table, name).type);
}

const char* verbOf(RowChange::Kind kind) {
    switch (kind) {
        case RowChange::Kind::Insert:
            return "INSERT";
        case RowChange::Kind::Update:
            return "UPDATE";
        case RowChange::Kind::Delete:
            return "DELETE";
        default:
            return "";
    }
}

tsql::TriggerEvents eventOf(RowChange::Kind kind) {
    switch (kind) {
        case RowChange::Kind::Insert:
            return tsql::kOnInsert;
        case RowChange::Kind::Update:
            return tsql::kOnUpdate;
        default:
            return tsql::kOnDelete;
    }
}

}  // namespace

EmbeddedRowChanger::EmbeddedRowChanger(engine::FileConnection& connection,
                                       engine::SchemaCatalogue& catalogue,
                                       engine::Transactions& transactions,
                                       engine::ScriptRunner& scripts)
    : connection_(connection),
      catalogue_(catalogue),
      transactions_(transactions),
      scripts_(scripts),
      kept_(kKeptStatements) {}

ChangeOutcome EmbeddedRowChanger::apply(const RowChange& change) {
    connection_.errorSlot().error.reset();
    try {
        return change.kind == RowChange::Kind::Read ? read(change) : write(change);
    } catch (const engine::SqliteError& error) {
        throw explained(connection_, catalogue_, error, {verbOf(change.kind), change.table, {}});
    }
}

ChangeOutcome EmbeddedRowChanger::write(const RowChange& change) {
    engine::Transactions::WriteScope scope(transactions_);
    scripts_.execution().captures.removeStale();
    const engine::Table& table = tableOf(change);
    if ((table.insteadOfEvents & eventOf(change.kind)) != 0) {
        throw tsql::unsupported("a row of a recordset over a table with an INSTEAD OF trigger", 0);
    }
    if (scripts_.execution().fires(table, eventOf(change.kind))) {
        std::vector<ServerMessage> messages;
        ChangeOutcome outcome;
        const bool whole = scripts_.collect(
            messages, [&] { outcome = writeWithTriggers(change, engine::Table(table)); });
        if (whole) {
            scope.keep();
        }
        engine::ScriptRunner::raiseIfFailed(messages);
        if (!whole) {
            throw ServerError(tsql::Message::ErrorInTrigger);
        }
        return outcome;
    }
    RowStatement command = commandFor(change, table, columnList(change.readBack, table));
    ChangeOutcome outcome = runNamingKeys(change, table, command);
    scope.keep();
    return outcome;
}

// The row is known by its number afterwards, whatever the triggers have made of it.
ChangeOutcome EmbeddedRowChanger::writeWithTriggers(const RowChange& change,
                                                    const engine::Table& table) {
    RowChange numbered = change;
    numbered.readBack = {""};
    RowStatement command = commandFor(change, table, engine::rowNumberName(table));
    ChangeOutcome outcome;
    std::vector<std::string> columns;
    for (const ColumnValue& value : change.values) {
        columns.push_back(value.column);
    }
    scripts_.execution().withTriggers(table, {table.name, eventOf(change.kind), std::move(columns)},
                                      [&] { outcome = runNamingKeys(numbered, table, command); });
    readAgain(change, table, outcome);
    return outcome;
}

void EmbeddedRowChanger::readAgain(const RowChange& change, const engine::Table& table,
                                   ChangeOutcome& outcome) {
    if (outcome.readBack.empty()) {
        return;
    }
    const auto row = std::get<std::int64_t>(outcome.readBack.front());
    outcome.readBack.assign(change.readBack.size(), Value());
    engine::PreparedStatement look(connection_.handle(),
                                   "SELECT " + columnList(change.readBack, table) + " FROM " +
                                       target(table) + " WHERE " + engine::rowNumberName(table) +
                                       " = ?1");
    look.bind(1, row);
    if (!look.step()) {
        return;
    }
    for (std::size_t i = 0; i < change.readBack.size(); ++i) {
        outcome.readBack[i] =
            toldColumn(table, change.readBack[i], look.value(static_cast<int>(i)));
    }
}

ChangeOutcome EmbeddedRowChanger::runNamingKeys(const RowChange& change, const engine::Table& table,
                                                RowStatement& command) {
    try {
        return run(change, table, command);
    } catch (const engine::SqliteError& error) {
        if (error.code() != SQLITE_CONSTRAINT_FOREIGNKEY) {
            throw;
        }
        throw engine::ForeignKeySearch(connection_, catalogue_)
            .find({verbOf(change.kind), change.table, {}},
                  [&] { (void)run(change, table, command); });
    }
}

ChangeOutcome EmbeddedRowChanger::read(const RowChange& change) {
    const engine::Transactions::ReadScope scope(transactions_);
    const engine::Table& table = tableOf(change);
    RowStatement command = commandFor(change, table, columnList(change.readBack, table));
    return run(change, table, command);
}

const engine::Table& EmbeddedRowChanger::tableOf(const RowChange& change) const {
    const engine::Table* table = catalogue_.find(change.table);
    if (table == nullptr) {
        throw ServerError(tsql::Message::InvalidObject, {change.table});
    }
    return *table;
}

ChangeOutcome EmbeddedRowChanger::run(const RowChange& change, const engine::Table& table,
                                      RowStatement& command) {
    engine::PreparedStatement& statement = prepared(command.sql);
    const engine::ResetGuard guard(statement);
    for (std::size_t i = 0; i < command.values.size(); ++i) {
        statement.bind(static_cast<int>(i + 1), command.values[i]);
    }
    ChangeOutcome outcome;
    while (statement.step()) {
        if (++outcome.rowsTouched > 1) {
            throw engine::tooManyRows();
        }
        for (std::size_t i = 0; i < change.readBack.size(); ++i) {
            outcome.readBack.push_back(
                toldColumn(table, change.readBack[i], statement.value(static_cast<int>(i))));
        }
    }
    return outcome;
}

engine::PreparedStatement& EmbeddedRowChanger::prepared(const std::string& sql) {
    if (engine::PreparedStatement* found = kept_.find(sql)) {
        return *found;
    }
    return kept_.insert(sql, {connection_.handle(), sql, engine::StatementLife::Kept});
}

// Every command answers a row for each row that it touches.
EmbeddedRowChanger::RowStatement EmbeddedRowChanger::commandFor(const RowChange& change,
                                                                const engine::Table& table,
                                                                const std::string& columns) {
    RowStatement command;
    switch (change.kind) {
        case RowChange::Kind::Insert:
            command = insertion(change, table);
            command.sql += " RETURNING " + columns;
            return command;
        case RowChange::Kind::Update:
            command = update(change, table);
            addCriteria(change, table, command);
            command.sql += " RETURNING " + columns;
            return command;
        case RowChange::Kind::Delete:
            command.sql = "DELETE FROM " + target(table);
            addCriteria(change, table, command);
            command.sql += " RETURNING " + columns;
            return command;
        case RowChange::Kind::Read:
            break;
    }
    command.sql = "SELECT " + columns + " FROM " + target(table);
    addCriteria(change, table, command);
    command.sql += " LIMIT 2";
    return command;
}

EmbeddedRowChanger::RowStatement EmbeddedRowChanger::insertion(const RowChange& change,
                                                               const engine::Table& table) {
    RowStatement command;
    std::string names;
    std::string values;
    const auto add = [&](const engine::Column& column, const std::string& value) {
        names += (names.empty() ? "" : ", ") + engine::sqlName(column.name);
        values += (values.empty() ? "" : ", ") + value;
    };
    for (const ColumnValue& value : change.values) {
        const engine::Column& column = columnOf(table, value.column);
        requireAssignable(change, table, column);
        command.values.push_back(engine::storedValue(value, column));
        add(column, parameter(command.values.size()));
    }
    for (const engine::Column& column : table.columns) {
        if (column.identity) {
            add(column, "kap_identity(" + engine::sqlText(table.name) + ")");
        } else if (column.isRowVersion()) {
            add(column, "kap_rowversion()");
        }
    }
    command.sql = "INSERT INTO " + target(table);
    command.sql += names.empty() ? " DEFAULT VALUES" : " (" + names + ") VALUES (" + values + ")";
    return command;
}

std::string EmbeddedRowChanger::insertionSql(const RowChange& change, const engine::Table& table) {
    return insertion(change, table).sql;
}

EmbeddedRowChanger::RowStatement EmbeddedRowChanger::update(const RowChange& change,
                                                            const engine::Table& table) {
    RowStatement command;
    std::string assignments;
    const auto add = [&](const engine::Column& column, const std::string& value) {
        assignments +=
            (assignments.empty() ? "" : ", ") + engine::sqlName(column.name) + " = " + value;
    };
    for (const ColumnValue& value : change.values) {
        const engine::Column& column = columnOf(table, value.column);
        requireAssignable(change, table, column);
        command.values.push_back(engine::storedValue(value, column));
        add(column, parameter(command.values.size()));
    }
    for (const engine::Column& column : table.columns) {
        if (column.isRowVersion()) {
            add(column, "kap_rowversion()");
        }
    }
    command.sql = "UPDATE " + target(table) + " SET " + assignments;
    return command;
}

// A text is first compared as its column does, which an index can serve, and then exactly.
void EmbeddedRowChanger::addCriteria(const RowChange& change, const engine::Table& table,
                                     RowStatement& command) {
    const char* joint = " WHERE ";
    for (const ColumnValue& value : change.criteria) {
        const engine::Column& column = columnOf(table, value.column);
        command.values.push_back(engine::isTold(column.type) ? engine::storedValue(value, column)
                                                             : value.value);
        const std::string name = engine::sqlName(column.name);
        const std::string number = parameter(command.values.size());
        command.sql += joint + name + " IS " + number;
        if (engine::storedAs(column.type) == Storage::Text) {
            command.sql += " AND " + name + " COLLATE BINARY IS " + number;
        }
        joint = " AND ";
    }
}

}  // namespace kap::ado::embedded
