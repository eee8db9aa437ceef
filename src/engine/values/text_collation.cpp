#include "engine/values/text_collation.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "base/ascii.hpp"
#include "base/unicode.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

// The languages whose collations a server has, as it spells them. Behind each may stand the number
// of a version: Latin1_General_100.
constexpr auto kLanguages = std::to_array<std::string_view>({
    "Albanian",
    "Arabic",
    "Assamese",
    "Azeri_Cyrillic",
    "Azeri_Latin",
    "Bashkir",
    "Bengali",
    "Bosnian_Cyrillic",
    "Bosnian_Latin",
    "Breton",
    "Chinese_Hong_Kong_Stroke",
    "Chinese_PRC",
    "Chinese_PRC_Stroke",
    "Chinese_Simplified_Pinyin",
    "Chinese_Simplified_Stroke_Order",
    "Chinese_Taiwan_Bopomofo",
    "Chinese_Taiwan_Stroke",
    "Chinese_Traditional_Bopomofo",
    "Chinese_Traditional_Pinyin",
    "Chinese_Traditional_Stroke_Count",
    "Chinese_Traditional_Stroke_Order",
    "Corsican",
    "Croatian",
    "Cyrillic_General",
    "Czech",
    "Danish_Greenlandic",
    "Danish_Norwegian",
    "Dari",
    "Divehi",
    "Estonian",
    "Finnish_Swedish",
    "French",
    "Frisian",
    "Georgian_Modern_Sort",
    "German_PhoneBook",
    "Greek",
    "Hebrew",
    "Hungarian",
    "Hungarian_Technical",
    "Icelandic",
    "Indic_General",
    "Japanese",
    "Japanese_Bushu_Kakusu",
    "Japanese_Unicode",
    "Japanese_XJIS",
    "Kazakh",
    "Khmer",
    "Korean",
    "Korean_Wansung",
    "Lao",
    "Latin1_General",
    "Latvian",
    "Lithuanian",
    "Macedonian_FYROM",
    "Maltese",
    "Maori",
    "Mapudungan",
    "Modern_Spanish",
    "Mohawk",
    "Nepali",
    "Norwegian",
    "Pashto",
    "Persian",
    "Polish",
    "Romanian",
    "Romansh",
    "Sami_Norway",
    "Sami_Sweden_Finland",
    "Serbian_Cyrillic",
    "Serbian_Latin",
    "Slovak",
    "Slovenian",
    "Syriac",
    "Tamazight",
    "Tatar",
    "Thai",
    "Tibetan",
    "Traditional_Spanish",
    "Turkish",
    "Turkmen",
    "Uighur",
    "Ukrainian",
    "Upper_Sorbian",
    "Urdu",
    "Uzbek_Latin",
    "Vietnamese",
    "Welsh",
    "Yakut",
    "SQL_1xCompat_CP850",
    "SQL_AltDiction_CP1253",
    "SQL_AltDiction_CP850",
    "SQL_AltDiction_Pref_CP850",
    "SQL_Croatian_CP1250",
    "SQL_Czech_CP1250",
    "SQL_Danish_Pref_CP1",
    "SQL_EBCDIC037_CP1",
    "SQL_EBCDIC273_CP1",
    "SQL_EBCDIC280_CP1",
    "SQL_Estonian_CP1257",
    "SQL_Hungarian_CP1250",
    "SQL_Icelandic_Pref_CP1",
    "SQL_Latin1_General_CP1",
    "SQL_Latin1_General_CP1250",
    "SQL_Latin1_General_CP1251",
    "SQL_Latin1_General_CP1252",
    "SQL_Latin1_General_CP1253",
    "SQL_Latin1_General_CP1254",
    "SQL_Latin1_General_CP1255",
    "SQL_Latin1_General_CP1256",
    "SQL_Latin1_General_CP1257",
    "SQL_Latin1_General_CP437",
    "SQL_Latin1_General_CP850",
    "SQL_Latin1_General_Pref_CP1",
    "SQL_Latin1_General_Pref_CP437",
    "SQL_Latin1_General_Pref_CP850",
    "SQL_Latvian_CP1257",
    "SQL_Lithuanian_CP1257",
    "SQL_Polish_CP1250",
    "SQL_Romanian_CP1250",
    "SQL_Scandinavian_CP850",
    "SQL_Scandinavian_Pref_CP850",
    "SQL_Slovak_CP1250",
    "SQL_Slovenian_CP1250",
    "SQL_SwedishPhone_Pref_CP1",
    "SQL_SwedishStd_Pref_CP1",
    "SQL_Ukrainian_CP1251",
});

constexpr auto kVersions = std::to_array<std::string_view>({"", "_90", "_100", "_140", "_160"});

// Those whose letters stand in the order of ours.
constexpr auto kOwnLetters = std::to_array<std::string_view>(
    {"Latin1_General", "SQL_Latin1_General_CP1", "SQL_Latin1_General_CP437",
     "SQL_Latin1_General_CP850", "SQL_Latin1_General_CP1252"});

// What stands behind the language: case and accents, and what Latin letters know nothing of.
struct CollationEnding {
    std::string_view text;
    TextMatching matching;
    int style;
};

constexpr std::array<CollationEnding, 6> kEndings{{{"_CI_AS", {false, true, false}, 196609},
                                                   {"_CS_AS", {true, true, false}, 196608},
                                                   {"_CI_AI", {false, false, false}, 196611},
                                                   {"_CS_AI", {true, false, false}, 196610},
                                                   {"_BIN", {true, true, true}, 0},
                                                   {"_BIN2", {true, true, true}, 0}}};

// Behind it: kinds of kana, widths, letters beyond 16 bits, and how they are kept.
constexpr auto kSuffixes = std::to_array<std::string_view>({"_KS", "_WS", "_SC", "_VSS", "_UTF8"});

// A name taken apart and in the server's spelling.
struct CollationWords {
    std::string_view language;
    std::string name;
    const CollationEnding* ending;
};

bool startsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && equalsIgnoringCase(text.substr(0, start.size()), start);
}

// What is behind the language: a version, an ending and suffixes; nothing else.
std::optional<CollationWords> readBehind(std::string_view language, std::string_view rest) {
    std::string name(language);
    for (const std::string_view version : kVersions) {
        if (version.empty() || !startsWith(rest, version)) continue;
        name += version;
        rest.remove_prefix(version.size());
        break;
    }
    const CollationEnding* found = nullptr;
    for (const CollationEnding& ending : kEndings) {
        const bool longer = found == nullptr || ending.text.size() > found->text.size();
        if (startsWith(rest, ending.text) && longer) found = &ending;
    }
    if (found == nullptr) return std::nullopt;
    name += found->text;
    rest.remove_prefix(found->text.size());
    for (const std::string_view suffix : kSuffixes) {
        if (!startsWith(rest, suffix)) continue;
        name += suffix;
        rest.remove_prefix(suffix.size());
    }
    if (!rest.empty()) return std::nullopt;
    return CollationWords{language, std::move(name), found};
}

std::optional<CollationWords> wordsOf(std::string_view name) {
    for (const std::string_view language : kLanguages) {
        if (!startsWith(name, language)) continue;
        if (auto words = readBehind(language, name.substr(language.size()))) return words;
    }
    return std::nullopt;
}

// Whether its order is one of ours.
bool isHere(const CollationWords& words) {
    const TextMatching& matching = words.ending->matching;
    return matching.binary || (!matching.cases && matching.accents) ||
           std::ranges::find(kOwnLetters, words.language) != kOwnLetters.end();
}

// Trees hold views of the names, so that none may end.
std::shared_ptr<const TextCollation> kept(const CollationWords& words) {
    static std::mutex guard;
    static std::map<std::string, std::shared_ptr<const TextCollation>, std::less<>> all;
    const std::lock_guard lock(guard);
    std::shared_ptr<const TextCollation>& found = all[words.name];
    if (found == nullptr) {
        found = std::make_shared<const TextCollation>(
            TextCollation{words.name, words.ending->matching});
    }
    return found;
}

// The letter without its marks, where both are one unit.
char16_t baseLetter(char16_t unit) {
    return unit < 0x80 ? unit : withoutMarks(unit);
}

}  // namespace

std::shared_ptr<const TextCollation> textCollation(std::string_view name, int line) {
    if (equalsIgnoringCase(name, "database_default") ||
        equalsIgnoringCase(name, "catalog_default")) {
        return nullptr;
    }
    const auto words = wordsOf(name);
    if (!words) throw ServerError(tsql::Message::InvalidCollation, {name}, line);
    const TextMatching& matching = words->ending->matching;
    if (!matching.cases && matching.accents) return nullptr;
    if (!isHere(*words)) throw tsql::unsupported("COLLATE " + std::string(name), line);
    return kept(*words);
}

std::shared_ptr<const TextCollation> knownCollation(std::string_view name) {
    const auto words = wordsOf(name);
    return words && isHere(*words) ? kept(*words) : nullptr;
}

std::optional<int> comparisonStyle(std::string_view name) {
    const auto words = wordsOf(name);
    return words ? std::optional(words->ending->style) : std::nullopt;
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
