#include "drivers/embedded/row_changer.hpp"

#include <string>
#include <utility>
#include <vector>

#include "engine/executor/stored_value.hpp"
#include "engine/executor/violations.hpp"
#include "engine/sqlite/written_row.hpp"
#include "engine/values/value.hpp"

namespace kap::ado::embedded {
namespace {

constexpr std::size_t kKeptCommands = 200;

using tsql::ServerError;

tsql::TriggerEvents eventOf(RowPlan::Kind kind) {
    switch (kind) {
        case RowPlan::Kind::Insert:
            return tsql::kOnInsert;
        case RowPlan::Kind::Update:
            return tsql::kOnUpdate;
        default:
            return tsql::kOnDelete;
    }
}

void bind(engine::PreparedStatement& statement, const engine::RowChangePlan& made,
          const RowChange& change) {
    int place = 0;
    for (std::size_t i = 0; i < made.values.size(); ++i) {
        statement.bind(++place, engine::storedValue(change.plan->values()[i], change.values[i],
                                                    made.values[i]));
    }
    for (std::size_t i = 0; i < made.criteria.size(); ++i) {
        const Value& value = change.criteria[i];
        const engine::Column& column = made.criteria[i];
        statement.bind(++place, engine::isTold(column.type)
                                    ? engine::storedValue(change.plan->criteria()[i], value, column)
                                    : value);
    }
}

// A value that was read back, as clients get it. RETURNING gives one as it was bound, before the
// column has made it a float, and a float may be kept as a whole number.
Value toldCell(Value value, const tsql::TypeSpec& type) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    if (whole != nullptr && engine::storedAs(type) == Storage::Real) {
        value = static_cast<double>(*whole);
    }
    return engine::toldValue(value, type);
}

std::vector<Value> answerOf(const engine::PreparedStatement& statement,
                            const std::vector<engine::Column>& columns) {
    std::vector<Value> answer;
    answer.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        answer.push_back(toldCell(statement.value(static_cast<int>(i)), columns[i].type));
    }
    return answer;
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
      kept_{LruCache<Command>(kKeptCommands), LruCache<Command>(kKeptCommands)} {}

ChangeOutcome EmbeddedRowChanger::apply(const RowChange& change) {
    connection_.errorSlot().error.reset();
    try {
        return change.plan->kind() == RowPlan::Kind::Read ? read(change) : write(change);
    } catch (const engine::SqliteError& error) {
        throw explained(connection_, catalogue_, error, engine::contextOf(*change.plan));
    }
}

ChangeOutcome EmbeddedRowChanger::write(const RowChange& change) {
    engine::Transactions::WriteScope scope(transactions_);
    scripts_.execution().captures.removeStale();
    const tsql::TriggerEvents event = eventOf(change.plan->kind());
    const engine::Table& table = tableOf(*change.plan);
    if ((table.insteadOfEvents & event) != 0) {
        throw tsql::unsupported("a row of a recordset over a table with an INSTEAD OF trigger", 0);
    }
    if (scripts_.execution().fires(table, event)) {
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
    ChangeOutcome outcome = outcomeOf(writeNamingKeys(change, table), change, table);
    scope.keep();
    return outcome;
}

// The row is known by its number afterwards, whatever the triggers have made of it.
ChangeOutcome EmbeddedRowChanger::writeWithTriggers(const RowChange& change,
                                                    const engine::Table& table) {
    Written written;
    std::vector<std::string> columns;
    for (const RowColumn& column : change.plan->values()) {
        columns.push_back(column.name);
    }
    scripts_.execution().withTriggers(
        table, {table.name, eventOf(change.plan->kind()), std::move(columns)},
        [&] { written = writeNamingKeys(change, table); });
    return outcomeOf(std::move(written), change, table);
}

EmbeddedRowChanger::Written EmbeddedRowChanger::writeNamingKeys(const RowChange& change,
                                                                const engine::Table& table) {
    Command& command = commandFor(*change.plan, table, Form::Change);
    Written written;
    namingForeignKey(
        connection_, catalogue_, [&] { return engine::contextOf(*change.plan); },
        [&] { written = writeOnce(change, table, command); });
    return written;
}

EmbeddedRowChanger::Written EmbeddedRowChanger::writeOnce(const RowChange& change,
                                                          const engine::Table& table,
                                                          Command& command) {
    const engine::WrittenRow row(connection_.handle(), table.name);
    const engine::ResetGuard guard(command.statement);
    bind(command.statement, command.plan, change);
    Written written;
    while (command.statement.step()) {
        written.answer = answerOf(command.statement, command.plan.answer);
    }
    written.rows = connection_.database().changes();
    written.number = row.number();
    if (written.rows > 1) {
        throw engine::tooManyRows();
    }
    return written;
}

ChangeOutcome EmbeddedRowChanger::outcomeOf(Written written, const RowChange& change,
                                            const engine::Table& table) {
    ChangeOutcome outcome;
    outcome.rowsTouched = written.rows;
    const std::size_t wanted = change.plan->readBack().size();
    if (written.rows == 0 || wanted == 0) {
        return outcome;
    }
    outcome.readBack = std::move(written.answer);
    if (!written.number) {
        return outcome;
    }
    Command& command = commandFor(*change.plan, table, Form::ReadingAgain);
    const engine::ResetGuard guard(command.statement);
    command.statement.bind(1, *written.number);
    outcome.readBack = command.statement.step() ? answerOf(command.statement, command.plan.answer)
                                                : std::vector<Value>(wanted);
    return outcome;
}

ChangeOutcome EmbeddedRowChanger::read(const RowChange& change) {
    const engine::Transactions::ReadScope scope(transactions_);
    Command& command = commandFor(*change.plan, tableOf(*change.plan), Form::Change);
    const engine::ResetGuard guard(command.statement);
    bind(command.statement, command.plan, change);
    ChangeOutcome outcome;
    while (command.statement.step()) {
        if (++outcome.rowsTouched > 1) {
            throw engine::tooManyRows();
        }
        outcome.readBack = answerOf(command.statement, command.plan.answer);
    }
    return outcome;
}

const engine::Table& EmbeddedRowChanger::tableOf(const RowPlan& plan) const {
    const engine::Table* table = catalogue_.find(plan.table());
    if (table == nullptr) {
        throw ServerError(tsql::Message::InvalidObject, {plan.table()});
    }
    return *table;
}

EmbeddedRowChanger::Command& EmbeddedRowChanger::commandFor(const RowPlan& plan,
                                                            const engine::Table& table, Form form) {
    LruCache<Command>& kept = kept_.at(static_cast<std::size_t>(form));
    Command* known = kept.find(plan.key());
    if (known == nullptr) {
        return kept.insert(plan.key(), make(plan, table, form));
    }
    if (known->generation != catalogue_.generation()) {
        *known = make(plan, table, form);
    }
    return *known;
}

EmbeddedRowChanger::Command EmbeddedRowChanger::make(const RowPlan& plan,
                                                     const engine::Table& table, Form form) const {
    Command made;
    if (form == Form::ReadingAgain) {
        made.plan = translateReadingAgain(plan, table);
    } else {
        const bool numbered = connection_.database().hasRowNumbers(table.name, table.temporary);
        made.plan = translateRowChange(
            plan, table, numbered ? engine::WrittenRows::Silent : engine::WrittenRows::Answering);
    }
    made.statement = {connection_.handle(), made.plan.sql, engine::StatementLife::Kept};
    made.generation = catalogue_.generation();
    return made;
}

}  // namespace kap::ado::embedded
