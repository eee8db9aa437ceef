#include <algorithm>
#include <string>

#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/pattern.hpp"
#include "engine/values/text_collation.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

// LIKE, PATINDEX, CHARINDEX and REPLACE where COLLATE says what matches. Each is told it as its
// first argument.
namespace kap::engine {

namespace {

std::u16string unitsAt(const Arguments& arguments, int index) {
    return matchingUnits(arguments.text(index), unpackMatching(arguments.integer(0)));
}

// kap_like_as(matching, text, pattern) and with an escape
Value likeAs(const Arguments& arguments) {
    char16_t escape = 0;
    constexpr int kEscape = 3;
    if (arguments.count() > kEscape) {
        const std::u16string units = unitsAt(arguments, kEscape);
        if (units.size() != 1) {
            throw tsql::ServerError(tsql::Message::InvalidEscapeCharacter,
                                    {arguments.text(kEscape)});
        }
        escape = units.front();
    }
    return std::int64_t{matchesPattern(unitsAt(arguments, 1), unitsAt(arguments, 2), escape)};
}

// kap_patindex_as(matching, pattern, text)
Value patternIndexAs(const Arguments& arguments) {
    return static_cast<std::int64_t>(patternPlace(unitsAt(arguments, 1), unitsAt(arguments, 2)));
}

// kap_charindex_as(matching, what, text, start)
Value charIndexAs(const Arguments& arguments) {
    const std::u16string what = unitsAt(arguments, 1);
    const std::u16string text = unitsAt(arguments, 2);
    const std::int64_t start = std::max(arguments.integer(3), std::int64_t{1});
    if (what.empty() || start > static_cast<std::int64_t>(text.size())) return std::int64_t{0};
    const std::size_t found = text.find(what, static_cast<std::size_t>(start) - 1);
    return found == std::u16string::npos ? std::int64_t{0} : static_cast<std::int64_t>(found) + 1;
}

// kap_replace_as(matching, text, what, by)
Value replaceAs(const Arguments& arguments) {
    const std::u16string text = toUnits(arguments.text(1));
    const std::u16string searched = unitsAt(arguments, 1);
    const std::u16string what = unitsAt(arguments, 2);
    const std::u16string by = toUnits(arguments.text(3));
    if (what.empty() || searched.size() != text.size()) return std::string(arguments.text(1));
    std::u16string result;
    std::size_t written = 0;
    for (std::size_t found = searched.find(what); found != std::u16string::npos;
         found = searched.find(what, written)) {
        result += text.substr(written, found - written) + by;
        written = found + what.size();
    }
    return fromUnits(result + text.substr(written));
}

}  // namespace

void registerCollatedFunctions(Registrar& registrar) {
    constexpr int kFour = 4;
    registrar.scalar("kap_like_as", 3, likeAs);
    registrar.scalar("kap_like_as", kFour, likeAs);
    registrar.scalar("kap_patindex_as", 3, patternIndexAs);
    registrar.scalar("kap_charindex_as", kFour, charIndexAs);
    registrar.scalar("kap_replace_as", kFour, replaceAs);
}

}  // namespace kap::engine
