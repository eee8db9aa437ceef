#include "engine/catalog/index_notes.hpp"

#include <utility>
#include <variant>

#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/definition_notes.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
sql::IndexNotes notesOf(std::string_view createIndex) {
    sql::IndexNotes notes;
    const std::size_t start = createIndex.find(kNotesOpen);
    if (start == std::string_view::npos) return notes;
    const std::size_t end = createIndex.find(kCommentCloses, start);
    if (end == std::string_view::npos) return notes;
    const std::string_view text =
        createIndex.substr(start + kNotesOpen.size(), end - start - kNotesOpen.size());
    const std::size_t includes = text.find(kIncludesNote);
    notes.ignoresDuplicates = text.substr(0, includes).find(kIgnoresNote) != std::string_view::npos;
    if (includes == std::string_view::npos) return notes;
    try {
        for (const std::string& name :
             tsql::parseNames(text.substr(includes + kIncludesNote.size())))
            notes.included.push_back(withStars(name));
    } catch (const tsql::ServerError&) {
        notes.included.clear();  // another program's comment
    }
    return notes;
}

std::vector<std::string> conflictTargetsOfKeys(std::string_view createTable) {
    std::vector<std::string> targets;
    const auto table = readTable(createTable);
    if (!table) return targets;
    for (const sql::Constraint& constraint : table->constraints) {
        if (!std::holds_alternative<sql::KeyConstraint>(constraint.kind)) continue;
        if (auto target = conflictTarget(sqlOf(constraint))) targets.push_back(std::move(*target));
    }
    return targets;
}

bool keyIgnores(std::string_view createTable, std::string_view key) {
    auto table = readTable(createTable);
    const sql::Constraint* constraint = table ? findConstraint(*table, key) : nullptr;
    const auto* found =
        constraint != nullptr ? std::get_if<sql::KeyConstraint>(&constraint->kind) : nullptr;
    return found != nullptr && found->notes.ignoresDuplicates;
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
