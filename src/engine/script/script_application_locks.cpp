#include <array>
#include <chrono>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/script/procedure_arguments.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/time_limit.hpp"

// sp_getapplock and sp_releaseapplock.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

using Owner = ApplicationLocks::Owner;

std::optional<Owner> ownerNamed(const std::string& name) {
    if (equalsIgnoringCase(name, "session")) return Owner::Session;
    if (equalsIgnoringCase(name, "transaction")) return Owner::Transaction;
    return std::nullopt;
}

// The texts of a call's arguments by its parameters, whose places they have when they are not
// named; absent: none was given, or NULL.
std::vector<std::optional<std::string>> byParameter(const tsql::ExecuteStatement& call,
                                                    const std::vector<std::string>& texts,
                                                    std::span<const char* const> parameters,
                                                    const std::string& procedure, int line) {
    std::vector<std::optional<std::string>> result(parameters.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::size_t place = placeOfArgument(call, i, parameters, procedure, line);
        const auto* value = call.arguments[i].value.get();
        const auto* literal = value == nullptr ? nullptr : std::get_if<tsql::Literal>(&value->node);
        const bool absent =
            value == nullptr || (literal != nullptr && literal->kind == tsql::LiteralKind::Null);
        if (!absent) result[place] = texts[i];
    }
    return result;
}

}  // namespace

// The number goes to the caller also when the call was wrong.
void ScriptRunner::returnNumber(Frame& frame, const tsql::ExecuteStatement& node, int number,
                                int line) {
    if (node.resultVariable.empty()) return;
    setVariable(frame, node.resultVariable, std::int64_t{number}, {SqlType::Int}, line);
}

void ScriptRunner::takeApplicationLock(Frame& frame, Instruction& instruction,
                                       const tsql::ExecuteStatement& node) {
    static constexpr std::array kParameters{"@Resource", "@LockMode", "@LockOwner", "@LockTimeout",
                                            "@DbPrincipal"};
    const int line = instruction.line;
    const std::string procedure = "sp_getapplock";
    const auto given =
        byParameter(node, textArguments(frame, instruction, node), kParameters, procedure, line);
    const auto resource = resourceOf(frame, node, procedure, given[0], line);
    const auto mode = ApplicationLocks::modeNamed(given[1].value_or(""));
    const auto owner = ownerNamed(given[2].value_or("Transaction"));
    const auto timeout = plain::readInt(given[3].value_or(plain::text(state_.lockTimeout)));
    if (!mode || !owner || !timeout) wrongLockCall(frame, node, procedure, line);
    if (*owner == Owner::Transaction && transactions_.depth() == 0) {
        returnNumber(frame, node, ApplicationLocks::kWrongCall, line);
        RaisedError raised = raisedBy(
            ServerError(tsql::Message::RaisedByClient,
                        {"You attempted to acquire a transactional application lock without an "
                         "active transaction."},
                        line),
            line);
        raised.reported = true;
        throw raised;
    }
    constexpr std::chrono::milliseconds kMoment{10};
    const int answer =
        applicationLocks_.take(resource, *mode, *owner, std::chrono::milliseconds(*timeout),
                               [&] { TimeLimit::wait(connection_.handle(), kMoment); });
    returnNumber(frame, node, answer, line);
}

void ScriptRunner::releaseApplicationLock(Frame& frame, Instruction& instruction,
                                          const tsql::ExecuteStatement& node) {
    static constexpr std::array kParameters{"@Resource", "@LockOwner", "@DbPrincipal"};
    const int line = instruction.line;
    const std::string procedure = "sp_releaseapplock";
    const auto given =
        byParameter(node, textArguments(frame, instruction, node), kParameters, procedure, line);
    const auto resource = resourceOf(frame, node, procedure, given[0], line);
    const auto owner = ownerNamed(given[1].value_or("Transaction"));
    if (!owner) wrongLockCall(frame, node, procedure, line);
    if (applicationLocks_.giveBack(resource, *owner)) {
        returnNumber(frame, node, ApplicationLocks::kGranted, line);
        return;
    }
    returnNumber(frame, node, ApplicationLocks::kWrongCall, line);
    throw ServerError(tsql::Message::ApplicationLockNotHeld,
                      {given[2].value_or("public"), resource}, line);
}

// Names are told apart by their letters as they are, 255 of them.
std::string ScriptRunner::resourceOf(Frame& frame, const tsql::ExecuteStatement& node,
                                     const std::string& procedure,
                                     const std::optional<std::string>& given, int line) {
    constexpr std::size_t kLongest = 255;
    if (!given || given->empty()) wrongLockCall(frame, node, procedure, line);
    return given->substr(0, kLongest);
}

void ScriptRunner::wrongLockCall(Frame& frame, const tsql::ExecuteStatement& node,
                                 const std::string& procedure, int line) {
    returnNumber(frame, node, ApplicationLocks::kWrongCall, line);
    throw ServerError(tsql::Message::WrongProcedureCall, {procedure}, line);
}

}  // namespace kap::engine
