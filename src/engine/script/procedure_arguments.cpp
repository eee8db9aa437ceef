#include "engine/script/procedure_arguments.hpp"

#include <algorithm>

#include "base/ascii.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

std::size_t placeOfArgument(const tsql::ExecuteStatement& call, std::size_t argument,
                            std::span<const char* const> parameters, const std::string& procedure,
                            int line) {
    const std::string& name = call.arguments[argument].name;
    std::size_t place = argument;
    if (!name.empty()) {
        const auto found = std::ranges::find_if(
            parameters, [&](const char* parameter) { return equalsIgnoringCase(parameter, name); });
        if (found == parameters.end()) {
            throw tsql::ServerError(tsql::Message::NoParameterOfProcedure, {name, procedure}, line);
        }
        place = static_cast<std::size_t>(found - parameters.begin());
    }
    if (place < parameters.size()) return place;
    throw tsql::ServerError(tsql::Message::TooManyArguments, {procedure}, line);
}

}  // namespace kap::engine
