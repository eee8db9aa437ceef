#include "tsql/bulk_terminator.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

std::string bytesOfDigits(std::string_view text, int line) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::size_t kBase = 16;
    if (text.size() % 2 != 0) throw syntaxError(std::string(text), line);
    std::string result;
    for (std::size_t i = 2; i < text.size(); i += 2) {
        const std::string pair = asciiLower(text.substr(i, 2));
        const std::size_t high = kDigits.find(pair[0]);
        const std::size_t low = kDigits.find(pair[1]);
        if (high == std::string_view::npos || low == std::string_view::npos) {
            throw syntaxError(std::string(text), line);
        }
        result += static_cast<char>(high * kBase + low);
    }
    return result;
}

}  // namespace

std::string bulkTerminator(std::string_view text, int line) {
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        return bytesOfDigits(text, line);
    }
    static constexpr std::array kEscapes = std::to_array<std::pair<char, char>>(
        {{'t', '\t'}, {'n', '\n'}, {'r', '\r'}, {'0', '\0'}, {'\\', '\\'}});
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto* const escape =
            text[i] != '\\' || i + 1 == text.size()
                ? kEscapes.end()
                : std::ranges::find(kEscapes, text[i + 1], &std::pair<char, char>::first);
        if (escape != kEscapes.end()) ++i;
        result += escape == kEscapes.end() ? text[i] : escape->second;
    }
    return result;
}

}  // namespace kap::tsql
