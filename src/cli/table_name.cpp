#include "cli/table_name.hpp"

#include <string_view>

namespace kap::cli {
namespace {

bool beginsName(char unit) {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || unit == '_' ||
           unit == '#' || unit == '@' || static_cast<unsigned char>(unit) >= 0x80;
}

bool isInName(char unit) {
    return beginsName(unit) || (unit >= '0' && unit <= '9') || unit == '$';
}

// Where a part in brackets or quotes ends, behind its mark; npos when it does not. The mark stands
// twice for itself.
std::size_t endOfQuotedPart(std::string_view text) {
    const char mark = text.front() == '[' ? ']' : '"';
    for (std::size_t end = text.find(mark, 1); end != std::string_view::npos;
         end = text.find(mark, end + 2)) {
        if (end + 1 >= text.size() || text[end + 1] != mark) {
            return end == 1 ? std::string_view::npos : end + 1;
        }
    }
    return std::string_view::npos;
}

// The length of the part at the beginning; npos when there is none.
std::size_t namePartLength(std::string_view text) {
    if (text.empty()) {
        return std::string_view::npos;
    }
    if (text.front() == '[' || text.front() == '"') {
        return endOfQuotedPart(text);
    }
    if (!beginsName(text.front())) {
        return std::string_view::npos;
    }
    std::size_t length = 1;
    while (length < text.size() && isInName(text[length])) {
        ++length;
    }
    return length;
}

}  // namespace

std::string tableNameFault(const std::string& name) {
    constexpr int kMostParts = 4;
    std::string fault = "\"" + name + "\" is no table's name; an unusual one needs [ and ]";
    std::string_view rest = name;
    for (int part = 0; part < kMostParts; ++part) {
        const std::size_t length = namePartLength(rest);
        if (length == std::string_view::npos) {
            return fault;
        }
        rest.remove_prefix(length);
        if (rest.empty()) {
            return {};
        }
        if (rest.front() != '.') {
            return fault;
        }
        rest.remove_prefix(1);
    }
    return fault;
}

}  // namespace kap::cli
