#include <optional>

#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/pattern.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

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

// The blanks at the end of a text, which match nothing at all, too.
std::size_t endWithoutBlanks(std::u16string_view text) {
    return text.find_last_not_of(u' ') + 1;  // 0 when there is nothing else
}

enum class Match : std::uint8_t {
    Yes,
    No,      // it does not begin here
    NoMore,  // nor anywhere behind: what stands behind a % is not in the rest of the text
};

// Whether the text from `position` on matches; `blanks` is where the blanks at its end begin.
Match matchFrom(std::u16string_view text, std::size_t position, std::size_t blanks,
                std::u16string_view pattern, char16_t escape);

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
        throw tsql::ServerError(tsql::Message::InvalidEscapeCharacter, {text});
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
    return static_cast<std::int64_t>(
        patternPlace(foldedUnits(arguments.text(0)), foldedUnits(arguments.text(1))));
}

Match matchFrom(std::u16string_view text, std::size_t position, std::size_t blanks,
                std::u16string_view pattern, char16_t escape) {
    // After a mismatch the last % takes one unit more: earlier ones never need to.
    std::size_t element = 0;
    std::optional<std::size_t> afterAny;
    std::size_t anyStart = 0;
    while (true) {
        if (element < pattern.size() && pattern[element] == u'%' && escape != u'%') {
            afterAny = ++element;
            anyStart = position;
            if (element == pattern.size()) return Match::Yes;
            continue;
        }
        if (element == pattern.size() && position >= blanks) return Match::Yes;
        if (position < text.size() && element < pattern.size()) {
            if (const auto next = matchUnit(text[position], pattern, element, escape)) {
                element = *next;
                ++position;
                continue;
            }
        }
        if (!afterAny) return Match::No;
        if (anyStart >= text.size()) return Match::NoMore;
        position = ++anyStart;
        element = *afterAny;
    }
}

}  // namespace

bool matchesPattern(std::u16string_view text, std::u16string_view pattern, char16_t escape) {
    return matchFrom(text, 0, endWithoutBlanks(text), pattern, escape) == Match::Yes;
}

std::size_t patternPlace(std::u16string_view pattern, std::u16string_view text) {
    const bool anywhere = !pattern.empty() && pattern.front() == u'%';
    const std::u16string_view rest = pattern.substr(anywhere ? 1 : 0);
    const std::size_t last = anywhere ? text.size() : 0;
    const std::size_t blanks = endWithoutBlanks(text);
    for (std::size_t start = 0; start <= last; ++start) {
        const Match match = matchFrom(text, start, blanks, rest, 0);
        if (match == Match::Yes) return start + 1;
        if (match == Match::NoMore) break;
    }
    return 0;
}

void registerPatternFunctions(Registrar& registrar) {
    registrar.scalar("kap_like", 2, like);
    registrar.scalar("kap_like", 3, like);
    registrar.scalar("kap_patindex", 2, patternIndex);
}

}  // namespace kap::engine
