#include "engine/values/split_text.hpp"

#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

std::vector<std::string> splitText(std::string_view text, std::string_view separator) {
    if (unitLength(separator) != 1) throw tsql::ServerError(tsql::Message::WrongSeparator);
    std::vector<std::string> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + separator.size());
    }
}

}  // namespace kap::engine
