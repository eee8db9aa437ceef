#include "cli/commands/shell/statement_colours.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "base/ascii.hpp"
#include "cli/commands/shell/key_words.hpp"

namespace kap::cli {
namespace {

bool isInColouredWord(char unit) {
    return isAsciiLetter(unit) || isAsciiDigit(unit) || unit == '_' || unit == '@' || unit == '#' ||
           static_cast<unsigned char>(unit) >= 0x80;
}

bool isKeyWord(std::string_view word) {
    return std::ranges::any_of(kKeyWords, [&](std::string_view key) {
        // "GETDATE()" is completed with its brackets.
        return equalsIgnoringCase(key.substr(0, key.find('(')), word);
    });
}

// A piece of a statement that has one colour.
struct ColouredPiece {
    std::size_t length = 0;
    std::optional<Style> style;
};

std::size_t lengthTo(std::string_view text, std::string_view end, std::size_t from) {
    const std::size_t found = text.find(end, from);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

ColouredPiece firstPiece(std::string_view text) {
    const char unit = text.front();
    if (text.starts_with("--")) {
        return {std::min(text.find('\n'), text.size()), Style::Dim};
    }
    if (text.starts_with("/*")) {
        return {lengthTo(text, "*/", 2), Style::Dim};
    }
    if (unit == '\'') {
        return {lengthTo(text, "'", 1), Style::Green};
    }
    if (unit == '[' || unit == '"') {
        return {lengthTo(text, unit == '[' ? "]" : "\"", 1), std::nullopt};
    }
    if (!isInColouredWord(unit)) {
        return {1, std::nullopt};
    }
    const auto* const end = std::ranges::find_if_not(text, &isInColouredWord);
    const auto length = static_cast<std::size_t>(end - text.begin());
    if (isAsciiDigit(unit)) {
        return {length, Style::Cyan};
    }
    if (unit == '@') {
        return {length, Style::Yellow};
    }
    return {length,
            isKeyWord(text.substr(0, length)) ? std::optional(Style::Magenta) : std::nullopt};
}

}  // namespace

std::string colouredLine(std::string_view before, std::string_view line, const Terminal& terminal) {
    const std::string statement = std::string(before) + std::string(line);
    std::string_view rest = statement;
    std::string coloured;
    for (std::size_t at = 0; at < statement.size();) {
        const ColouredPiece piece = firstPiece(rest);
        const std::size_t end = at + piece.length;
        if (end > before.size()) {  // the line's own part of it
            const std::size_t begin = std::max(at, before.size());
            const std::string_view text = std::string_view(statement).substr(begin, end - begin);
            coloured += piece.style ? terminal.styled(*piece.style, text) : std::string(text);
        }
        rest.remove_prefix(piece.length);
        at = end;
    }
    return coloured;
}

}  // namespace kap::cli
