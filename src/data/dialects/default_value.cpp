#include "data/dialects/default_value.hpp"

#include <algorithm>
#include <array>

#include "base/ascii.hpp"

namespace kap::ado {
namespace {

// Where the text or bracket that begins the text ends; 0: there is none, or no end of it.
std::size_t endOfFirst(std::string_view text) {
    int depth = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\'') {
            quoted = !quoted;
        } else if (!quoted && text[i] == '(') {
            ++depth;
        } else if (!quoted && text[i] == ')') {
            --depth;
        }
        const bool doubled = !quoted && text.substr(i, 2) == "''";
        if (!quoted && depth == 0 && !doubled) {
            return i + 1;
        }
    }
    return 0;
}

// "((1))" is "1", "'x'::character varying" is "'x'".
std::string_view bare(std::string_view text) {
    for (;;) {
        text = kap::trimmed(text, " ");
        const bool bracket = text.starts_with('(');
        if (!bracket && !text.starts_with('\'')) {
            const std::size_t type = text.find("::");
            return type == std::string_view::npos ? text : kap::trimmed(text.substr(0, type), " ");
        }
        const std::size_t end = endOfFirst(text);
        const std::string_view rest = kap::trimmed(text.substr(end), " ");
        if (end == 0 || !(rest.empty() || rest.starts_with("::"))) {
            return text;
        }
        text = text.substr(0, end);
        if (!bracket) {
            return text;
        }
        text = text.substr(1, text.size() - 2);
    }
}

// "CAST('-1.5' AS numeric)" is "-1.5": so does a server keep numbers below nothing, and rounds
// none of them by that.
std::string_view withoutCast(std::string_view text) {
    constexpr std::string_view kCast = "cast(";
    if (!equalsIgnoringCase(text.substr(0, kCast.size()), kCast)) {
        return text;
    }
    const std::string_view inside = text.substr(kCast.size());
    const std::size_t end = inside.starts_with('\'') ? endOfFirst(inside) : 0;
    const std::string type = asciiLower(kap::trimmed(inside.substr(end), " "));
    const bool number = type == "as numeric)" || type == "as int)" || type == "as bigint)";
    return end != 0 && number ? inside.substr(1, end - 2) : text;
}

bool isPlainNumber(std::string_view text) {
    text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    const auto points = std::ranges::count(text, '.');
    return points <= 1 && std::ranges::any_of(text, isDigit) &&
           std::ranges::all_of(text, [&](char letter) { return letter == '.' || isDigit(letter); });
}

// What stands between the quotes.
std::string unquoted(std::string_view text) {
    std::string made;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        made += text[i];
        i += text[i] == '\'' ? 1U : 0U;  // doubled
    }
    return made;
}

template <std::size_t kCount>
bool isOneOf(const std::array<std::string_view, kCount>& words, const std::string& word) {
    return std::ranges::find(words, word) != words.end();
}

}  // namespace

DefaultValue readDefault(std::string_view text) {
    using Kind = DefaultValue::Kind;
    constexpr std::array<std::string_view, 8> kNow = {
        "getdate()",      "kap_now()",           "current_timestamp", "now()",
        "localtimestamp", "current_timestamp()", "sysdatetime()",     "statement_timestamp()"};
    constexpr std::array<std::string_view, 4> kIdentifier = {
        "newid()", "kap_newid()", "gen_random_uuid()", "uuid_generate_v4()"};
    std::string_view plain = withoutCast(bare(text));
    if (plain.starts_with("N'") || plain.starts_with("n'")) {
        plain.remove_prefix(1);
    }
    const std::string word = asciiLower(plain);
    // A column that counts by a sequence has become an identity.
    if (word.empty() || word == "null" || word.starts_with("nextval(")) {
        return {};
    }
    if (word == "true" || word == "false") {
        return {Kind::Constant, word == "true" ? "1" : "0"};
    }
    if (isPlainNumber(plain)) {
        return {Kind::Constant, std::string(plain)};
    }
    if (plain.starts_with('\'') && endOfFirst(plain) == plain.size()) {
        return {Kind::Constant, unquoted(plain)};
    }
    if (isOneOf(kNow, word)) {
        return {Kind::Now, {}};
    }
    if (isOneOf(kIdentifier, word)) {
        return {Kind::Identifier, {}};
    }
    return {Kind::Other, std::string(text)};
}

}  // namespace kap::ado
