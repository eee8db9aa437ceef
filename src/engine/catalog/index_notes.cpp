#include "engine/catalog/index_notes.hpp"

#include <utility>

#include "base/quoting.hpp"
#include "engine/catalog/table_text.hpp"
#include "engine/catalog/tables.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

constexpr std::string_view kNoteOpens = "/*~";
constexpr std::string_view kNoteCloses = "*/";
constexpr std::string_view kIgnores = " ignore_dup_key";
constexpr std::string_view kIncludes = " include ";

// A name that ends no comment, whatever it is.
std::string encoded(const std::string& name) {
    std::string text;
    for (const char letter : name) {
        if (letter == '*') {
            text += "%2A";
        } else if (letter == '%') {
            text += "%25";
        } else {
            text += letter;
        }
    }
    return text;
}

// "[a], [b]".
std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        if (!text.empty()) text += ", ";
        text += inBrackets(encoded(name));
    }
    return text;
}

std::string decoded(const std::string& name) {
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const std::string code = name.substr(i, 3);
        const bool coded = code == "%2A" || code == "%25";
        text += coded ? (code == "%2A" ? '*' : '%') : name[i];
        if (coded) i += 2;
    }
    return text;
}

}  // namespace

std::string commentOf(const IndexNotes& notes) {
    if (!notes.ignoresDuplicates && notes.included.empty()) return {};
    std::string text = " " + std::string(kNoteOpens);
    if (notes.ignoresDuplicates) text += kIgnores;
    if (!notes.included.empty()) text += std::string(kIncludes) + listed(notes.included);
    return text + " " + std::string(kNoteCloses);
}

IndexNotes notesOf(std::string_view createIndex) {
    IndexNotes notes;
    const std::size_t start = createIndex.find(kNoteOpens);
    if (start == std::string_view::npos) return notes;
    const std::size_t end = createIndex.find(kNoteCloses, start);
    if (end == std::string_view::npos) return notes;
    const std::string_view text =
        createIndex.substr(start + kNoteOpens.size(), end - start - kNoteOpens.size());
    const std::size_t includes = text.find(kIncludes);
    notes.ignoresDuplicates = text.substr(0, includes).find(kIgnores) != std::string_view::npos;
    if (includes == std::string_view::npos) return notes;
    try {
        for (const std::string& name : tsql::parseNames(text.substr(includes + kIncludes.size())))
            notes.included.push_back(decoded(name));
    } catch (const tsql::ServerError&) {
        notes.included.clear();  // another program's comment
    }
    return notes;
}

std::string withIncludedRenamed(const std::string& createIndex, std::string_view before,
                                const std::string& after) {
    IndexNotes notes = notesOf(createIndex);
    const std::string comment = commentOf(notes);
    const std::size_t at = createIndex.find(comment);
    if (notes.included.empty() || at == std::string::npos) return createIndex;
    for (std::string& name : notes.included) {
        if (sameName(name, before)) name = after;
    }
    return std::string(createIndex).replace(at, comment.size(), commentOf(notes));
}

std::vector<std::string> conflictTargetsOfKeys(std::string_view createTable) {
    std::vector<std::string> targets;
    const TableText text(createTable);
    for (const TableText::Element& element : text.elements()) {
        if (!element.isKey()) continue;
        if (auto target = conflictTarget(element.text)) targets.push_back(std::move(*target));
    }
    return targets;
}

bool keyIgnores(std::string_view createTable, std::string_view key) {
    TableText text(createTable);
    const TableText::Element* element = text.constraint(key);
    return element != nullptr && notesOf(element->text).ignoresDuplicates;
}

std::optional<std::string> conflictTarget(std::string_view createIndex) {
    if (!notesOf(createIndex).ignoresDuplicates) return std::nullopt;
    // The columns stand in brackets behind the table's name, which is quoted.
    bool quoted = false;
    for (std::size_t i = 0; i < createIndex.size(); ++i) {
        if (createIndex[i] == '"') quoted = !quoted;
        if (!quoted && createIndex[i] == '(') return std::string(createIndex.substr(i));
    }
    return std::nullopt;
}

}  // namespace kap::engine
