#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/executor/kept_tables.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/script/simple_values.hpp"
#include "engine/sqlite/time_limit.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/message_text.hpp"

// The statements that have no SQL of their own: variables, messages, transactions.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr TypeSpec kText{SqlType::NVarChar, tsql::kMaxLength};
constexpr TypeSpec kInt{SqlType::Int};

CompiledValue& valueAt(Instruction& instruction, std::size_t index) {
    if (instruction.values.size() <= index) instruction.values.resize(index + 1);
    return instruction.values[index];
}

// The time of day of an instant.
std::int64_t millisecondsOfDay(double instant) {
    constexpr double kDay = 24.0 * 60 * 60 * 1000;
    return std::llround((instant - std::floor(instant)) * kDay);
}

// "00:00:05", "0:30": what WAITFOR waits.
std::int64_t timeOfDay(const std::string& text, int line) {
    const ServerError wrong(tsql::Message::WrongTimeString, {text}, line);
    double instant = 0;
    try {
        instant = parseDate(text, SqlType::DateTime, 0);
    } catch (const ServerError&) {
        throw wrong;
    }
    if (std::floor(instant) != kServerEpochDay) throw wrong;
    return millisecondsOfDay(instant);
}

}  // namespace

// --- Values

SystemNumbers ScriptRunner::systemNumbers() const {
    return {state_.error, state_.rowCount, transactions_.depth(), state_.fetchStatus};
}

Value ScriptRunner::evaluate(Frame& frame, Instruction& instruction, std::size_t index,
                             const tsql::Expression& expression, const TypeSpec& type) {
    if (auto known = simpleValue(expression, type, frame, systemNumbers())) {
        return std::move(*known);
    }
    return statements_.value(valueAt(instruction, index), [&] {
        return translateValue(expression, type, frame.program.names());
    });
}

Value ScriptRunner::evaluateAny(Frame& frame, Instruction& instruction, std::size_t index,
                                const tsql::Expression& expression, TypeSpec& type) {
    CompiledValue& compiled = valueAt(instruction, index);
    Value value = statements_.value(
        compiled, [&] { return translateValue(expression, frame.program.names()); });
    type = compiled.plan->type;
    return value;
}

std::string ScriptRunner::textOf(Frame& frame, Instruction& instruction, std::size_t index,
                                 const tsql::Expression& expression) {
    const auto* literal = std::get_if<tsql::Literal>(&expression.node);
    if (literal != nullptr && (literal->kind == tsql::LiteralKind::Text ||
                               literal->kind == tsql::LiteralKind::NationalText)) {
        return literal->text;
    }
    TypeSpec type;
    const Value value = evaluateAny(frame, instruction, index, expression, type);
    const Value text = convert(value, type, kText, Overlength::Cut);
    const auto* found = std::get_if<std::string>(&text);
    return found == nullptr ? std::string() : *found;
}

bool ScriptRunner::test(Frame& frame, Instruction& instruction) {
    if (const auto known = simpleCondition(*instruction.condition, frame, systemNumbers())) {
        state_.error = 0;
        state_.rowCount = 0;
        return *known;
    }
    const Value value = statements_.value(valueAt(instruction, 0), [&] {
        return translateCondition(*instruction.condition, frame.program.names());
    });
    state_.error = 0;
    state_.rowCount = 0;
    return wholeOr(value, 0) != 0;
}

void ScriptRunner::declareVariables(Frame& frame, Instruction& instruction,
                                    const tsql::DeclareStatement& node) {
    for (std::size_t i = 0; i < node.variables.size(); ++i) {
        const tsql::DeclaredVariable& variable = node.variables[i];
        if (variable.initial == nullptr) continue;
        const Variable& declared = *frame.program.names().variable(variable.name);
        frame.values[static_cast<std::size_t>(declared.slot)] =
            evaluate(frame, instruction, i, *variable.initial, declared.type);
        state_.error = 0;
        state_.rowCount = 1;
    }
    for (const tsql::CreateTableStatement& table : node.tables) {
        declareTable(frame, table);
    }
    // One that holds a cursor keeps it when its declaration is passed again.
    for (const std::string& name : node.cursors)
        frame.cursors.try_emplace(asciiLower(name));
}

// The rows of a table variable lie in a temporary table whose name belongs to the program.
void ScriptRunner::declareTable(Frame& frame, const tsql::CreateTableStatement& node) {
    NameScope& names = frame.program.names();
    const std::string& name = node.table.last();
    const std::string stored =
        name + "/" + plain::text(static_cast<std::int64_t>(frame.program.serial()));
    // Passing its declaration again, in a loop, does nothing.
    const bool passed = std::ranges::any_of(
        frame.localTables, [&](const VariableTable& each) { return each.name == stored; });
    if (passed) return;
    TableBuilder builder(names, stored);
    builder.add(node);
    CreateTablePlan made = builder.plan();
    Transactions::WriteScope scope(transactions_);
    // SQLite drops no table while a query stands at its rows, such as one that calls the function
    // whose table this is: it is used again.
    if (hasTemporaryTable(stored)) {
        PreparedStatement(connection_.handle(), "DELETE FROM temp." + sqlName(stored)).run();
        counters_.remove({stored, true});
    } else {
        for (const std::string& sql : made.sql) {
            PreparedStatement(connection_.handle(), sql).run();
        }
    }
    counters_.add(made.created);
    scope.keep();
    if (names.localTable(name) == nullptr) {
        names.addLocalTable({name, made.created.table});
    }
    // A table variable is its script's own, also in the batch of a client.
    frame.localTables.push_back({stored, std::move(made.sql), std::move(made.created)});
}

bool ScriptRunner::hasTemporaryTable(const std::string& stored) {
    PreparedStatement look(connection_.handle(),
                           "SELECT 1 FROM temp.sqlite_schema WHERE type = 'table' AND name = ?1");
    look.bind(1, std::string_view(stored));
    return look.step();
}

void ScriptRunner::giveTable(const Frame& frame, const tsql::Argument* argument,
                             const tsql::CreateTableStatement& table, Frame& called, int line) {
    declareTable(called, table);
    const std::string& own = table.table.last();
    const Table& given = *called.program.names().localTable(own);
    called.program.names().setReadOnly(own);
    if (argument == nullptr || argument->value == nullptr) return;
    const auto* variable = std::get_if<tsql::VariableReference>(&argument->value->node);
    const Table* source =
        variable == nullptr ? nullptr : frame.program.names().localTable(variable->name);
    if (source == nullptr || source->columns.size() != given.columns.size()) {
        throw ServerError(tsql::Message::OperandTypeClash, {"int", own}, line);
    }
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < given.columns.size(); ++i) {
        if (given.columns[i].computed) continue;
        names += (names.empty() ? "" : ", ") + sqlName(given.columns[i].name);
        values += (values.empty() ? "" : ", ") + sqlName(source->columns[i].name);
    }
    PreparedStatement(connection_.handle(), "INSERT INTO temp." + sqlName(given.name) + " (" +
                                                names + ") SELECT " + values + " FROM temp." +
                                                sqlName(source->name) + " ORDER BY rowid")
        .run();
}

void ScriptRunner::assign(Frame& frame, Instruction& instruction,
                          const tsql::AssignStatement& node) {
    const Variable* variable = frame.program.names().variable(node.variable);
    if (variable == nullptr) {
        throw ServerError(tsql::Message::UndeclaredVariable, {node.variable}, instruction.line);
    }
    frame.values[static_cast<std::size_t>(variable->slot)] =
        evaluate(frame, instruction, 0, *node.value, variable->type);
}

void ScriptRunner::setVariable(Frame& frame, const std::string& name, const Value& value,
                               const TypeSpec& type, int line) {
    const Variable* variable = frame.program.names().variable(name);
    if (variable == nullptr) {
        throw ServerError(tsql::Message::UndeclaredVariable, {name}, line);
    }
    frame.values[static_cast<std::size_t>(variable->slot)] =
        convert(value, type, variable->type, Overlength::Cut);
}

// --- Messages

void ScriptRunner::note(const std::string& text) {
    report(ServerError(0, text, state_.frames.empty() ? 0 : 1, 0));
}

void ScriptRunner::print(Frame& frame, Instruction& instruction, const tsql::PrintStatement& node) {
    report(ServerError(0, textOf(frame, instruction, 0, *node.value), instruction.line, 0));
}

void ScriptRunner::raiseError(Frame& frame, Instruction& instruction,
                              const tsql::RaiserrorStatement& node) {
    const int kOwnNumber = tsql::numberOf(tsql::Message::RaisedByClient);
    TypeSpec type;
    const Value message = evaluateAny(frame, instruction, 0, *node.message, type);
    if (node.severity == nullptr) {
        // The older form: a number and its text.
        const auto number = static_cast<int>(wholeOr(message, kOwnNumber));
        const std::string text = node.arguments.empty()
                                     ? std::string()
                                     : textOf(frame, instruction, 1, *node.arguments.front());
        RaisedError raised = raisedBy(ServerError(number, text, instruction.line), 0);
        raised.reported = true;
        throw raised;
    }
    const int severity =
        static_cast<int>(wholeOr(evaluate(frame, instruction, 1, *node.severity, kInt), 0));
    const int state =
        static_cast<int>(wholeOr(evaluate(frame, instruction, 2, *node.state, kInt), 1));
    std::vector<MessageArgument> arguments;
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
        TypeSpec argumentType;
        const Value value =
            evaluateAny(frame, instruction, 3 + i, *node.arguments[i], argumentType);
        const bool number = tsql::isInteger(argumentType.type);
        const Value text = convert(value, argumentType, kText, Overlength::Cut);
        arguments.push_back(
            {isNull(text) ? "" : std::get<std::string>(text), number, isNull(text)});
    }
    int number = kOwnNumber;
    std::string text;
    if (tsql::isText(type.type)) {
        const Value shown = convert(message, type, kText, Overlength::Cut);
        text = messageText(isNull(shown) ? "" : std::get<std::string>(shown), arguments);
    } else {
        const std::int64_t wanted = wholeOr(message, 0);
        const ServerError unknown(tsql::Message::UnknownRaisedNumber,
                                  {plain::text(wanted), plain::text(severity), plain::text(state)});
        number = unknown.number();
        text = unknown.message();
    }
    const ServerError error(number, text, instruction.line, severity, state);
    if (severity <= ado::ServerMessage::kInformation) {
        report(error);
        return;
    }
    RaisedError raised = raisedBy(error, instruction.line);
    raised.reported = true;
    throw raised;
}

void ScriptRunner::throwError(Frame& frame, Instruction& instruction,
                              const tsql::ThrowStatement& node) {
    if (node.number == nullptr) {
        if (frame.handled.empty()) {
            throw ServerError(tsql::Message::RethrowOutsideCatch, {}, instruction.line);
        }
        RaisedError again = frame.handled.back();
        again.thrown = true;
        throw again;
    }
    const auto number =
        static_cast<int>(wholeOr(evaluate(frame, instruction, 0, *node.number, kInt), 0));
    constexpr int kFirstOwn = 50000;
    if (number < kFirstOwn) {
        throw ServerError(tsql::Message::ThrowNumberOutOfRange, {plain::text(number)},
                          instruction.line);
    }
    const int state =
        static_cast<int>(wholeOr(evaluate(frame, instruction, 2, *node.state, kInt), 1));
    RaisedError raised = raisedBy(ServerError(number, textOf(frame, instruction, 1, *node.message),
                                              instruction.line, 16, state),
                                  instruction.line);
    raised.thrown = true;
    throw raised;
}

void ScriptRunner::wait(Frame& frame, Instruction& instruction, const tsql::WaitStatement& node) {
    const std::string text = textOf(frame, instruction, 0, *node.time);
    std::int64_t time = timeOfDay(text, instruction.line);
    if (node.until) {
        constexpr std::int64_t kDay = 24LL * 60 * 60 * 1000;
        time = (time - millisecondsOfDay(localInstant()) + kDay) % kDay;
    }
    TimeLimit::wait(connection_.handle(), std::chrono::milliseconds(time));
}

// --- Transactions

void ScriptRunner::transaction(Frame& frame, const tsql::TransactionStatement& node) {
    std::string name = node.name;
    if (!node.variable.empty()) {
        const Variable* variable = frame.program.names().variable(node.variable);
        if (variable == nullptr) {
            throw ServerError(tsql::Message::UndeclaredVariable, {node.variable});
        }
        const Value text = convert(frame.values[static_cast<std::size_t>(variable->slot)],
                                   variable->type, kText, Overlength::Cut);
        name = isNull(text) ? "" : std::get<std::string>(text);
    }
    switch (node.action) {
        case tsql::TransactionAction::Begin:
            if (transactions_.depth() == 0) state_.transactionName = name;
            transactions_.begin();
            return;
        case tsql::TransactionAction::Commit:
            if (state_.doomed) {
                throw ServerError(tsql::Message::UncommittableTransaction);
            }
            transactions_.commit();
            return;
        case tsql::TransactionAction::Save:
            transactions_.save(name);
            return;
        case tsql::TransactionAction::Rollback:
            rollBack(name);
            return;
    }
}

void ScriptRunner::rollBack(const std::string& name) {
    const bool whole =
        name.empty() || (transactions_.depth() > 0 && sameName(name, state_.transactionName) &&
                         !transactions_.hasSavePoint(name));
    if (state_.insertingExecuted) throw ServerError(tsql::Message::RollbackInInsertExec);
    const TimeLimit::Pause all;
    KeptTables kept(connection_.database(), counters_, state_.frames);
    if (whole) {
        transactions_.rollback();
        state_.doomed = false;
        kept.putBack();
        return;
    }
    if (transactions_.depth() > 0 && transactions_.hasSavePoint(name)) {
        transactions_.rollbackTo(name);
        kept.putBack();
        return;
    }
    throw ServerError(tsql::Message::UnknownSavepoint, {name});
}

// --- The database

// There is one database in a file; the other names that a script uses for it are taken as given.
void ScriptRunner::database(const tsql::DatabaseStatement& node, int line) {
    switch (node.action) {
        case tsql::DatabaseAction::Use:
            catalogue_.setDatabaseName(node.name);
            note("Changed database context to '" + node.name + "': the one database of this file.");
            return;
        case tsql::DatabaseAction::Create:
            note("CREATE DATABASE '" + node.name + "': it is the one database of this file.");
            return;
        case tsql::DatabaseAction::Alter:
            note("ALTER DATABASE has no effect on a database of one file.");
            return;
        case tsql::DatabaseAction::Drop:
            break;
    }
    catalogue_.refresh();
    if (!catalogue_.tables().empty()) {
        throw ServerError(tsql::Message::CannotDropOpenDatabase, {node.name}, line);
    }
    note("DROP DATABASE '" + node.name + "': the database of this file is empty.");
}

}  // namespace kap::engine
