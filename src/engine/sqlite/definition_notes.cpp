#include "engine/sqlite/definition_notes.hpp"

#include "base/quoting.hpp"

namespace kap::engine {
namespace {

// "[a], [b]".
std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        if (!text.empty()) text += ", ";
        text += inBrackets(withoutStars(name));
    }
    return text;
}

}  // namespace

std::string withoutStars(std::string_view text) {
    std::string safe;
    for (const char letter : text) {
        if (letter == '*') {
            safe += "%2A";
        } else if (letter == '%') {
            safe += "%25";
        } else {
            safe += letter;
        }
    }
    return safe;
}

std::string withStars(std::string_view safe) {
    std::string text;
    for (std::size_t i = 0; i < safe.size(); ++i) {
        const std::string_view code = safe.substr(i, 3);
        if (code == "%2A" || code == "%25") {
            text += code == "%2A" ? '*' : '%';
            i += 2;
        } else {
            text += safe[i];
        }
    }
    return text;
}

std::string sourceComment(std::string_view source) {
    std::string text = " ";
    text += kSourceOpens;
    text += withoutStars(source);
    text += kCommentCloses;
    return text;
}

std::string notesComment(const sql::IndexNotes& notes) {
    if (!notes.ignoresDuplicates && notes.included.empty()) return {};
    std::string text = " ";
    text += kNotesOpen;
    if (notes.ignoresDuplicates) text += kIgnoresNote;
    if (!notes.included.empty()) {
        text += kIncludesNote;
        text += listed(notes.included);
    }
    text += ' ';
    text += kCommentCloses;
    return text;
}

}  // namespace kap::engine
