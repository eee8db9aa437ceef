// Queries that are left standing at their rows when their request has ended.
#include <algorithm>
#include <system_error>
#include <utility>

#include "engine/plan/translator.hpp"
#include "engine/script/row_stream.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {
namespace {

bool onlyReads(const Instruction& instruction) {
    if (instruction.operation != Operation::Statement) {
        return true;
    }
    const auto& node = instruction.statement->node;
    return isPlainQuery(*instruction.statement) ||
           std::holds_alternative<tsql::DeclareStatement>(node) ||
           std::holds_alternative<tsql::AssignStatement>(node) ||
           std::holds_alternative<tsql::SetOptionStatement>(node);
}

}  // namespace

// The last statement's rows are left standing; the script has ended with it.
bool ScriptRunner::mayStream(const ado::Request& request, Program& program) const {
    using Streaming = ado::Request::Streaming;
    const std::vector<Instruction>& code = program.code();
    return request.streaming != Streaming::Never && !code.empty() &&
           code.back().operation == Operation::Statement && isPlainQuery(*code.back().statement) &&
           (request.streaming == Streaming::Always || std::ranges::all_of(code, onlyReads)) &&
           journal_.allows();
}

bool ScriptRunner::isLastQuery(const Frame& frame, std::size_t at) const {
    return at + 1 == frame.program.code().size() && frame.localTables.empty() &&
           frame.handlers.empty() && !state_.showPlan;
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
        if (reachOfRaised(raised) == tsql::ErrorReach::Transaction) {
            rollBackAll();
        }
    };
    connection_.errorSlot().error.reset();
    state_.frames.push_back(&frame);
    bool interrupted = false;
    try {
        try {
            work();
        } catch (const SqliteError& error) {
            failed(raisedBy(error, Instruction()));
        } catch (const tsql::ServerError& error) {
            failed(raisedBy(error, 0));
        } catch (const RaisedError& raised) {
            failed(raised);
        }
    } catch (const BatchEnded& ended) {
        interrupted = ended.interrupted;
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
}

void ScriptRunner::dropStanding() {
    if (const auto rows = standing_.lock()) {
        rows->drop();
    }
    standing_.reset();
}

}  // namespace kap::engine
