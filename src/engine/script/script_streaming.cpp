// Queries that are left standing at their rows when their request has ended, and scripts that stand
// still behind them.
#include <algorithm>
#include <system_error>
#include <utility>
#include <variant>

#include "engine/plan/statement_kinds.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/row_stream.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_rest.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {
namespace {

// Those that change variables and options of the session only.
template <typename Node>
concept SettingStatement =
    OneOf<Node, tsql::DeclareStatement, tsql::AssignStatement, tsql::SetOptionStatement>;

// Those that write, define, call or tell something: nothing of theirs may wait for rows to be read.
template <typename Node>
concept ActingStatement = FlowStatement<Node> ||
    OneOf<Node, tsql::InsertStatement, tsql::UpdateStatement, tsql::DeleteStatement,
          tsql::MergeStatement, tsql::TruncateStatement, tsql::CreateTableStatement,
          tsql::CreateIndexStatement, tsql::DropStatement, tsql::AlterTableStatement,
          tsql::CreateViewStatement, tsql::CreateModuleStatement, tsql::CreateSchemaStatement,
          tsql::AlterSchemaStatement, tsql::CreateTypeStatement, tsql::CreateRuleStatement,
          tsql::SequenceStatement, tsql::CreateSynonymStatement, tsql::ReturnStatement,
          tsql::PrintStatement, tsql::RaiserrorStatement, tsql::ThrowStatement, tsql::WaitStatement,
          tsql::TransactionStatement, tsql::ExecuteStatement, tsql::DeclareCursorStatement,
          tsql::AssignCursorStatement, tsql::CursorStatement, tsql::FetchStatement,
          tsql::DatabaseStatement, tsql::BackupStatement, tsql::CheckStatement,
          tsql::BulkInsertStatement, tsql::ShowOptionsStatement, tsql::CheckIdentityStatement,
          tsql::NoEffectStatement>;

// A statement that stands in neither list does not compile.
struct OnlyReads {
    bool operator()(const tsql::SelectStatement& statement) const {
        return tableMadeBy(statement) == nullptr;
    }
    template <SettingStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return true;
    }
    template <ActingStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return false;
    }
};

bool onlyReads(const Instruction& instruction) {
    return instruction.operation != Operation::Statement ||
           std::visit(OnlyReads(), instruction.statement->node);
}

bool setsOption(const Instruction& instruction) {
    return instruction.operation == Operation::Statement &&
           std::holds_alternative<tsql::SetOptionStatement>(instruction.statement->node);
}

}  // namespace

// The last statement's rows are left standing, with which the script has ended; or those of a query
// behind which it stands still.
bool ScriptRunner::mayStream(const ado::Request& request, Program& program) const {
    using Streaming = ado::Request::Streaming;
    const std::vector<Instruction>& code = program.code();
    return request.streaming != Streaming::Never && !code.empty() &&
           code.back().operation == Operation::Statement && isPlainQuery(*code.back().statement) &&
           (request.streaming == Streaming::Always || std::ranges::all_of(code, onlyReads)) &&
           journal_.allows();
}

// Who takes the results one by one may leave the rest of them, so that nothing but queries may come
// behind the first.
bool ScriptRunner::mayStopBetween(const ado::Request& request, Program& program) {
    const std::vector<Instruction>& code = program.code();
    const auto first = std::ranges::find_if(code, [](const Instruction& one) {
        return one.operation == Operation::Statement && isPlainQuery(*one.statement);
    });
    return request.oneByOne && first != code.end() && std::ranges::all_of(code, onlyReads) &&
           std::none_of(first, code.end(), setsOption) &&
           std::ranges::all_of(request.parameters, [](const ado::RequestParameter& parameter) {
               return parameter.direction == ado::ParameterDirectionEnum::adParamInput;
           });
}

// What would end with the call is not left behind, nor a block of TRY.
bool ScriptRunner::mayBeLeft(const Frame& frame) const {
    return frame.localTables.empty() && frame.handlers.empty() && !state_.showPlan;
}

void ScriptRunner::leave(const std::shared_ptr<Program>& program,
                         const std::shared_ptr<Frame>& frame, ado::Reply& reply,
                         std::chrono::seconds timeout) {
    if (state_.standing != nullptr) {
        leaveStanding(program, frame, reply.results.back(), timeout);
    }
    if (frame->at > 0) {
        auto rest = std::make_shared<ScriptRest>(*this, program, frame, timeout);
        stopped_ = rest;
        reply.rest = std::move(rest);
    }
}

void ScriptRunner::goOn(const std::shared_ptr<Program>& program,
                        const std::shared_ptr<Frame>& frame, std::chrono::seconds timeout,
                        std::vector<ado::Result>& results,
                        std::vector<ado::ServerMessage>& messages) {
    if (const auto rows = standing_.lock()) {
        standing_.reset();
        rows->passOver();
    }
    if (frame->ended || frame->at == 0) {
        frame->at = 0;
        return;
    }
    state_.standing.reset();
    try {
        asRequest(timeout, messages, [&] {
            runFrame(*frame, results);
            if (state_.standing != nullptr) {
                leaveStanding(program, frame, results.back(), timeout);
            }
        });
    } catch (const SqliteError& error) {
        throw driverError(serverError(error, connection_.place()));
    }
}

void ScriptRunner::leaveStanding(const std::shared_ptr<Program>& program,
                                 const std::shared_ptr<Frame>& frame, ado::Result& result,
                                 std::chrono::seconds timeout) {
    auto rows =
        std::make_shared<RowStream>(*this, program, frame, std::move(state_.standing), timeout);
    result.rest = rows;
    standing_ = rows;
    try {
        rows->stand();
    } catch (const std::system_error&) {
        rows->readAhead();
    }
}

void ScriptRunner::finishedStanding(std::int64_t count) noexcept {
    state_.rowCount = count;
}

std::optional<ado::DriverError> ScriptRunner::during(Frame& frame, std::chrono::seconds timeout,
                                                     bool& undone,
                                                     const std::function<void()>& work) {
    std::vector<ado::ServerMessage> messages;
    const Restored before(messages_);
    messages_ = &messages;
    connection_.forgetCancel();
    const TimeLimit limit(connection_.handle(), timeout, &connection_.cancelled());
    const DateSettingsScope dates(state_.dates);
    const bool inTransaction = transactions_.depth() > 0;
    const auto failed = [&](const RaisedError& raised) {
        report(raised);
        const tsql::ErrorReach reach = reachOfRaised(raised);
        frame.ended = reach != tsql::ErrorReach::Statement;
        if (reach == tsql::ErrorReach::Transaction) {
            rollBackAll();
        }
    };
    connection_.errorSlot().error.reset();
    state_.frames.push_back(&frame);
    bool interrupted = false;
    try {
        try {
            work();
            if (!connection_.isSound()) throw databaseFileChanged();
        } catch (const SqliteError& error) {
            failed(raisedBy(error, Instruction()));
        } catch (const tsql::ServerError& error) {
            failed(raisedBy(error, 0));
        } catch (const RaisedError& raised) {
            failed(raised);
        }
    } catch (const BatchEnded& ended) {
        interrupted = ended.interrupted;
        frame.ended = true;
    } catch (...) {
        state_.frames.pop_back();
        throw;
    }
    state_.frames.pop_back();
    if (interrupted) {
        messages.push_back(interruption());
        if (state_.abortOnError) rollBackAll();
    }
    undone = inTransaction && transactions_.depth() == 0;
    if (std::ranges::none_of(messages, &ado::ServerMessage::isError)) {
        return std::nullopt;
    }
    return ado::DriverError(std::move(messages), kErrorSource);
}

void ScriptRunner::makeWay() {
    if (const auto rows = standing_.lock()) {
        standing_.reset();
        rows->readAhead();
    }
    if (const auto rest = stopped_.lock()) {
        stopped_.reset();
        rest->readAhead();
    }
}

void ScriptRunner::dropStanding() {
    if (const auto rows = standing_.lock()) {
        rows->drop();
    }
    standing_.reset();
    if (const auto rest = stopped_.lock()) {
        rest->drop();
    }
    stopped_.reset();
}

}  // namespace kap::engine
