#include "engine/values/text_collation.hpp"

#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "base/unicode.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

// Those whose letters stand in the order of ours.
constexpr std::array<std::string_view, 8> kOwnLetters{
    "LATIN1_GENERAL_",           "LATIN1_GENERAL_90_",        "LATIN1_GENERAL_100_",
    "LATIN1_GENERAL_140_",       "SQL_LATIN1_GENERAL_CP1_",   "SQL_LATIN1_GENERAL_CP437_",
    "SQL_LATIN1_GENERAL_CP850_", "SQL_LATIN1_GENERAL_CP1252_"};

// What stands behind the language: case and accents, and what Latin letters know nothing of.
struct CollationEnding {
    std::string_view text;
    TextMatching matching;
};

constexpr std::array<CollationEnding, 6> kEndings{{{"CI_AS", {false, true, false}},
                                                   {"CS_AS", {true, true, false}},
                                                   {"CI_AI", {false, false, false}},
                                                   {"CS_AI", {true, false, false}},
                                                   {"BIN", {true, true, true}},
                                                   {"BIN2", {true, true, true}}}};

std::string_view withoutSuffixes(std::string_view name) {
    bool found = true;
    while (found) {
        found = false;
        for (const std::string_view suffix : {"_KS", "_WS", "_SC", "_UTF8", "_VSS"}) {
            if (!name.ends_with(suffix)) continue;
            name.remove_suffix(suffix.size());
            found = true;
        }
    }
    return name;
}

const CollationEnding* endingOf(std::string_view name) {
    const auto* found = std::ranges::find_if(kEndings, [&](const CollationEnding& ending) {
        return name.size() > ending.text.size() && name.ends_with(ending.text) &&
               name[name.size() - ending.text.size() - 1] == '_';
    });
    return found == kEndings.end() ? nullptr : found;
}

const char* nameInSqlite(TextMatching matching) {
    if (matching.binary) return "KAP_BIN";
    if (matching.cases) return matching.accents ? "KAP_CS" : "KAP_CS_AI";
    return "KAP_CI_AI";
}

// The letter without its marks, where both are one unit.
char16_t baseLetter(char16_t unit) {
    return unit < 0x80 ? unit : withoutMarks(unit);
}

}  // namespace

std::shared_ptr<const TextCollation> textCollation(std::string_view name, int line) {
    const std::string whole = asciiUpper(name);
    const std::string_view upper = withoutSuffixes(whole);
    if (upper == "DATABASE_DEFAULT" || upper == "CATALOG_DEFAULT") return nullptr;
    const CollationEnding* ending = endingOf(upper);
    if (ending == nullptr) throw ServerError(tsql::Message::InvalidCollation, {name}, line);
    const TextMatching matching = ending->matching;
    if (!matching.cases && matching.accents) return nullptr;
    const std::string_view language = upper.substr(0, upper.size() - ending->text.size());
    if (std::ranges::find(kOwnLetters, language) == kOwnLetters.end() && !matching.binary) {
        throw tsql::unsupported("COLLATE " + std::string(name), line);
    }
    return std::make_shared<const TextCollation>(
        TextCollation{std::string(name), matching, nameInSqlite(matching)});
}

std::u16string matchingUnits(std::string_view text, TextMatching matching) {
    std::u16string units = matching.cases ? toUnits(text) : foldedUnits(text);
    if (matching.accents) return units;
    std::ranges::transform(units, units.begin(), baseLetter);
    return units;
}

int packMatching(TextMatching matching) {
    return (matching.cases ? 1 : 0) + (matching.accents ? 2 : 0) + (matching.binary ? 4 : 0);
}

TextMatching unpackMatching(std::int64_t packed) {
    const auto bits = static_cast<unsigned>(packed);
    return {(bits & 1U) != 0, (bits & 2U) != 0, (bits & 4U) != 0};
}

const std::vector<CollationName>& collationNames() {
    static const std::vector<CollationName> kNames{
        {"Latin1_General_BIN", "Latin1-General, binary sort"},
        {"Latin1_General_BIN2", "Latin1-General, binary code point comparison sort"},
        {"Latin1_General_CI_AI",
         "Latin1-General, case-insensitive, accent-insensitive, "
         "kanatype-insensitive, width-insensitive"},
        {"Latin1_General_CI_AS",
         "Latin1-General, case-insensitive, accent-sensitive, "
         "kanatype-insensitive, width-insensitive"},
        {"Latin1_General_CS_AI",
         "Latin1-General, case-sensitive, accent-insensitive, "
         "kanatype-insensitive, width-insensitive"},
        {"Latin1_General_CS_AS",
         "Latin1-General, case-sensitive, accent-sensitive, "
         "kanatype-insensitive, width-insensitive"},
    };
    return kNames;
}

}  // namespace kap::engine
