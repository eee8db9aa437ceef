#include "drivers/odbc/known_queries.hpp"

#include <algorithm>

#include "base/ascii.hpp"

namespace kap::ado::odbc {
namespace {

constexpr std::size_t kLongestKept = 4000;
constexpr std::size_t kMostKept = 200;

// Whether a digit behind this letter belongs to a name: a1, @2, #3.
bool isOfName(char letter) {
    return isAsciiDigit(letter) || (letter >= 'a' && letter <= 'z') ||
           (letter >= 'A' && letter <= 'Z') || letter == '_' || letter == '@' || letter == '#' ||
           letter == '$' || static_cast<unsigned char>(letter) >= 0x80;
}

// Where what begins with a quote or bracket ends; a doubled sign begins the next one at once.
std::size_t endOfQuoted(std::string_view text, std::size_t start) {
    const char close = text[start] == '[' ? ']' : text[start];
    const std::size_t end = text.find(close, start + 1);
    return end == std::string_view::npos ? text.size() : end + 1;
}

}  // namespace

std::string KnownQueries::shapeOf(std::string_view text) {
    std::string shape;
    shape.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char letter = text[i];
        if (letter == '\'') {
            i = endOfQuoted(text, i);
            // A doubled quote is part of the same text.
            if (!shape.ends_with('\'')) {
                shape += '\'';
            }
        } else if (letter == '"' || letter == '[') {
            const std::size_t end = endOfQuoted(text, i);
            shape += text.substr(i, end - i);
            i = end;
        } else if (isAsciiDigit(letter) && (shape.empty() || !isOfName(shape.back()))) {
            i = std::min(text.find_first_not_of("0123456789", i), text.size());
            shape += '0';
        } else {
            shape += letter;
            ++i;
        }
    }
    return shape;
}

KnownQuery& KnownQueries::of(std::string_view text) {
    const auto known = [&] {
        KnownQuery query;
        query.analysis = analyse(text);
        query.oneResult = query.analysis.isOneQuery;
        return query;
    };
    // Where comments or other ways of quoting are, a constant may not be one.
    const bool plain = text.find_first_of("\\$") == std::string_view::npos &&
                       text.find("--") == std::string_view::npos &&
                       text.find("/*") == std::string_view::npos;
    if (!plain || text.size() > kLongestKept) {
        notKept_ = known();
        return notKept_;
    }
    std::string shape = shapeOf(text);
    const auto found = queries_.find(shape);
    if (found != queries_.end()) {
        return found->second;
    }
    if (queries_.size() >= kMostKept) {
        queries_.clear();
    }
    return queries_.emplace(std::move(shape), known()).first->second;
}

}  // namespace kap::ado::odbc
