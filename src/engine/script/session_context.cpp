#include <array>
#include <string>
#include <string_view>

#include "engine/script/script_runner.hpp"
#include "engine/values/convert.hpp"
#include "tsql/server_error.hpp"

// sp_set_session_context: what SESSION_CONTEXT(key) tells for the rest of the session.
namespace kap::engine {

namespace {

// Which of key, value and read_only an argument gives.
std::size_t contextParameter(const tsql::Argument& argument, std::size_t place, int line) {
    static constexpr std::array<std::string_view, 3> kParameters{"@key", "@value", "@read_only"};
    for (std::size_t i = 0; !argument.name.empty() && i < kParameters.size(); ++i) {
        if (sameName(argument.name, kParameters[i])) return i;
    }
    if (!argument.name.empty() || place >= kParameters.size()) {
        throw tsql::ServerError(tsql::Message::TooManyArguments, {"sp_set_session_context"}, line);
    }
    return place;
}

}  // namespace

void ScriptRunner::setSessionContext(Frame& frame, Instruction& instruction,
                                     const tsql::ExecuteStatement& node) {
    constexpr tsql::TypeSpec kText{tsql::SqlType::NVarChar, 4000};
    constexpr tsql::TypeSpec kVariant{tsql::SqlType::SqlVariant};
    const int line = instruction.line;
    std::array<Value, 3> given;
    std::array<bool, 3> isGiven{};
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
        const tsql::Argument& argument = node.arguments[i];
        const std::size_t place = contextParameter(argument, i, line);
        isGiven[place] = true;
        if (argument.value == nullptr) continue;
        tsql::TypeSpec type;
        const Value value = evaluateAny(frame, instruction, i, *argument.value, type);
        given[place] = convert(value, type, place == 1 ? kVariant : kText, Overlength::Cut);
    }
    for (const std::size_t needed : {std::size_t{0}, std::size_t{1}}) {
        if (isGiven[needed] && (needed == 1 || !isNull(given[0]))) continue;
        throw tsql::ServerError(tsql::Message::ParameterNotSupplied,
                                {"sp_set_session_context", needed == 0 ? "@key" : "@value"}, line);
    }
    const std::string& key = std::get<std::string>(given[0]);
    SessionState::ContextValue& kept = state_.sessionContext[key];
    if (kept.readOnly) throw tsql::ServerError(tsql::Message::SessionKeyReadOnly, {key}, line);
    kept.value = given[1];
    kept.readOnly = !isNull(given[2]) && std::get<std::string>(given[2]) != "0";
}

}  // namespace kap::engine
