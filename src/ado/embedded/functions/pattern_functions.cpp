#include <optional>

#include "ado/embedded/functions/function_support.hpp"
#include "ado/embedded/functions/pattern.hpp"
#include "ado/embedded/functions/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::embedded {

namespace {

struct SetMatch {
    bool matched;
    std::size_t next;  // behind the set
};

// A set that starts behind its opening bracket; nothing when it is not closed.
std::optional<SetMatch> matchSet(char16_t unit, std::u16string_view pattern, std::size_t position,
                                 char16_t escape) {
    const bool negated = position < pattern.size() && pattern[position] == u'^';
    if (negated) ++position;
    bool matched = false;
    for (bool first = true; position < pattern.size(); first = false) {
        if (pattern[position] == u']' && !first) return SetMatch{matched != negated, position + 1};
        if (escape != 0 && pattern[position] == escape && position + 1 < pattern.size()) ++position;
        const char16_t low = pattern[position++];
        char16_t high = low;
        const bool isRange = position + 1 < pattern.size() && pattern[position] == u'-' &&
                             pattern[position + 1] != u']';
        if (isRange) {
            high = pattern[position + 1];
            position += 2;
        }
        matched = matched || (low <= unit && unit <= high);
    }
    return std::nullopt;
}

bool onlyBlanks(std::u16string_view text) {
    return text.find_first_not_of(u' ') == std::u16string_view::npos;
}

// Matches one unit against one element of the pattern; the element's end, or nothing when they do
// not match.
std::optional<std::size_t> matchUnit(char16_t unit, std::u16string_view pattern,
                                     std::size_t position, char16_t escape) {
    const char16_t element = pattern[position];
    if (escape != 0 && element == escape && position + 1 < pattern.size()) {
        if (pattern[position + 1] != unit) return std::nullopt;
        return position + 2;
    }
    if (element == u'_') return position + 1;
    if (element == u'[') {
        const auto set = matchSet(unit, pattern, position + 1, escape);
        if (set && set->matched) return set->next;
        return std::nullopt;
    }
    if (element != unit) return std::nullopt;
    return position + 1;
}

char16_t escapeOf(std::string_view text) {
    const std::u16string units = foldedUnits(text);
    if (units.size() != 1) {
        throw tsql::ServerError(506, "The invalid escape character \"" + std::string(text) +
                                         "\" was specified in a LIKE predicate.");
    }
    return units.front();
}

// kap_like(text, pattern) and kap_like(text, pattern, escape)
Value like(const Arguments& arguments) {
    const char16_t escape = arguments.count() > 2 ? escapeOf(arguments.text(2)) : char16_t{0};
    return std::int64_t{
        matchesPattern(foldedUnits(arguments.text(0)), foldedUnits(arguments.text(1)), escape)};
}

// kap_patindex(pattern, text): where the part between the outer % starts.
Value patternIndex(const Arguments& arguments) {
    const std::u16string pattern = foldedUnits(arguments.text(0));
    const std::u16string text = foldedUnits(arguments.text(1));
    const bool anywhere = !pattern.empty() && pattern.front() == u'%';
    const std::u16string_view rest = std::u16string_view(pattern).substr(anywhere ? 1 : 0);
    const std::size_t last = anywhere ? text.size() : 0;
    for (std::size_t start = 0; start <= last; ++start) {
        if (matchesPattern(std::u16string_view(text).substr(start), rest)) {
            return static_cast<std::int64_t>(start) + 1;
        }
    }
    return std::int64_t{0};
}

}  // namespace

bool matchesPattern(std::u16string_view text, std::u16string_view pattern, char16_t escape) {
    // After a mismatch the last % takes one unit more: earlier ones never need to.
    std::size_t position = 0;
    std::size_t element = 0;
    std::optional<std::size_t> afterAny;
    std::size_t anyStart = 0;
    while (true) {
        if (element < pattern.size() && pattern[element] == u'%' && escape != u'%') {
            afterAny = ++element;
            anyStart = position;
            if (element == pattern.size()) return true;
            continue;
        }
        if (element == pattern.size() && onlyBlanks(text.substr(position))) return true;
        if (position < text.size() && element < pattern.size()) {
            if (const auto next = matchUnit(text[position], pattern, element, escape)) {
                element = *next;
                ++position;
                continue;
            }
        }
        if (!afterAny || anyStart >= text.size()) return false;
        position = ++anyStart;
        element = *afterAny;
    }
}

void registerPatternFunctions(Registrar& registrar) {
    registrar.scalar("kap_like", 2, like);
    registrar.scalar("kap_like", 3, like);
    registrar.scalar("kap_patindex", 2, patternIndex);
}

}  // namespace kap::ado::embedded
