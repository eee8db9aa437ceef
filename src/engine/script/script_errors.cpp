#include <algorithm>
#include <utility>

#include "engine/catalog/object_names.hpp"
#include "engine/executor/violations.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/time_limit.hpp"

// What an error ends: a statement, a procedure, the batch, the transaction; and which CATCH block
// takes it up.
namespace kap::engine {
namespace {

constexpr int kLeastCaught = 11;
constexpr int kMostCaught = 19;

// A definition that fails because of one of its parts is said to fail, too.
std::optional<tsql::ServerError> endOfDefinition(int number) {
    switch (number) {
        case 1767:
        case 1769:
        case 1770:
        case 1776:
        case 1778:
        case 1785:
            return tsql::ServerError(tsql::Message::ConstraintNotCreated);
        case 3728:
            return tsql::ServerError(tsql::Message::ConstraintNotDropped);
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<tsql::ServerError> ScriptRunner::takeFollowUp(int number) {
    if (state_.followUp) return std::exchange(state_.followUp, std::nullopt);
    return endOfDefinition(number);
}

RaisedError ScriptRunner::raisedBy(const tsql::ServerError& error, int line) const {
    return {error.at(line),
            state_.frames.empty() ? "" : std::string(bareName(state_.frame().procedure())),
            state_.frames.size()};
}

tsql::ServerError ScriptRunner::databaseFileChanged() const {
    return {tsql::Message::DatabaseFileChanged, {connection_.place().name}};
}

RaisedError ScriptRunner::raisedBy(const SqliteError& error, const Instruction& instruction) {
    const bool locked = error.primaryCode() == SQLITE_BUSY;
    if (error.primaryCode() == SQLITE_INTERRUPT ||
        (locked && TimeLimit::isOver(connection_.handle()))) {
        throw BatchEnded{true};
    }
    WriteContext context;
    if (instruction.compiled.plan != nullptr) context = contextOf(*instruction.compiled.plan);
    return raisedBy(explained(connection_, catalogue_, error, context), instruction.line);
}

tsql::ErrorReach ScriptRunner::reachOfRaised(const RaisedError& raised) const {
    if (raised.thrown) {
        return state_.abortOnError ? tsql::ErrorReach::Transaction : tsql::ErrorReach::Batch;
    }
    // That a call has left another number of transactions is told and ends nothing.
    constexpr int kTransactionCount = 266;
    if (raised.reported || raised.error.number() == kTransactionCount) {
        return tsql::ErrorReach::Statement;
    }
    if (raised.dooms) {
        return tsql::ErrorReach::Transaction;
    }
    if (state_.abortOnError) {
        return tsql::ErrorReach::Transaction;
    }
    return tsql::reachOf(raised.error.number());
}

// Gives the place to go on at, or ends more than the statement.
std::size_t ScriptRunner::handle(Frame& frame, const RaisedError& raised, std::size_t at) {
    const tsql::ErrorReach reach = reachOfRaised(raised);
    const int severity = raised.error.severity();
    const bool caught = severity >= kLeastCaught && severity <= kMostCaught;
    // What made no sense in this scope is not for its own handlers, but for those of a caller.
    const bool ofThisScope =
        reach == tsql::ErrorReach::Scope && raised.level == state_.frames.size();
    const bool own = !frame.handlers.empty() && !ofThisScope;
    // Of two messages a handler sees the second.
    RaisedError last = raised;
    const auto followUp = takeFollowUp(raised.error.number());
    if (followUp) last.error = followUp->at(raised.error.line());
    if (caught && own) {
        state_.error = last.error.number();
        state_.doomed =
            transactions_.depth() > 0 && (state_.doomed || reach == tsql::ErrorReach::Transaction);
        const Handler handler = frame.handlers.back();
        leave(frame, {1, frame.handled.size() - handler.handled});
        frame.handled.push_back(last);
        return handler.target;
    }
    if (caught && state_.openTries > static_cast<int>(frame.handlers.size())) {
        last.dooms = reach == tsql::ErrorReach::Transaction;  // by the settings of this scope
        throw last;                                           // for a handler of a caller
    }
    report(raised);
    if (followUp) report(last);
    switch (reach) {
        case tsql::ErrorReach::Statement:
            return at + 1;
        case tsql::ErrorReach::Scope:
            throw ScopeEnded();
        case tsql::ErrorReach::Transaction:
            rollBackAll();
            throw BatchEnded();
        case tsql::ErrorReach::Batch:
            break;
    }
    throw BatchEnded();
}

// TRY blocks that are left take up no more errors, and CATCH blocks have done with theirs.
void ScriptRunner::leave(Frame& frame, const LeftBlocks& blocks) {
    for (std::size_t i = 0; i < blocks.tries; ++i) {
        frame.handlers.pop_back();
        --state_.openTries;
    }
    for (std::size_t i = 0; i < blocks.catches; ++i) {
        frame.handled.pop_back();
    }
}

void ScriptRunner::report(const RaisedError& raised) {
    report(raised.error);
    state_.error = raised.error.number();
    state_.rowCount = 0;
}

void ScriptRunner::report(const tsql::ServerError& message) {
    messages_->push_back(serverMessage(message));
}

// Rows that an index has already were left out.
void ScriptRunner::tellIgnored(int line) {
    if (!std::exchange(state_.duplicatesIgnored, false)) return;
    report(tsql::ServerError(tsql::Message::DuplicateIgnored, {}, line));
}

void ScriptRunner::rollBackAll() {
    state_.doomed = false;
    if (transactions_.depth() > 0) {
        transactions_.rollback();
    }
}

}  // namespace kap::engine
