#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The words of a line of a script, as Basic writes it.
namespace kap {

enum class ScriptTokenKind : std::uint8_t { Word, Number, Text, Sign, Comment };

struct ScriptToken {
    ScriptTokenKind kind = ScriptTokenKind::Sign;
    std::string text;   // a text without its quotes, a comment without its mark
    bool apart = true;  // something blank is in front of it

    [[nodiscard]] bool isSign(std::string_view sign) const {
        return kind == ScriptTokenKind::Sign && text == sign;
    }
    [[nodiscard]] bool isWord(std::string_view word) const {
        return kind == ScriptTokenKind::Word && text == word;
    }
};

// Raises std::invalid_argument for a text that does not end and for a sign that is none of the
// language.
[[nodiscard]] std::vector<ScriptToken> scriptTokens(std::string_view line);

}  // namespace kap
