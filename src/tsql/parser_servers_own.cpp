#include <array>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// What only a server has: statements and clauses that are known, and refused by name.
namespace kap::tsql {

namespace {

using Phrase = std::array<std::string_view, 3>;

// How statements begin that are not here, with as many words as tell them from others.
constexpr auto kServersStatements = std::to_array<Phrase>({
    {"ADD", "COUNTER", "SIGNATURE"},
    {"ADD", "SENSITIVITY", "CLASSIFICATION"},
    {"ADD", "SIGNATURE", ""},
    {"BEGIN", "ATOMIC", ""},
    {"BEGIN", "CONVERSATION", "TIMER"},
    {"BEGIN", "DIALOG", ""},
    {"CLOSE", "ALL", "SYMMETRIC"},
    {"CLOSE", "MASTER", "KEY"},
    {"CLOSE", "SYMMETRIC", "KEY"},
    {"DUMP", "", ""},
    {"END", "CONVERSATION", ""},
    {"GET", "CONVERSATION", "GROUP"},
    {"INSERT", "BULK", ""},
    {"LINENO", "", ""},
    {"LOAD", "", ""},
    {"MOVE", "CONVERSATION", ""},
    {"OPEN", "MASTER", "KEY"},
    {"OPEN", "SYMMETRIC", "KEY"},
    {"RECEIVE", "*", ""},
    {"RECEIVE", "TOP", ""},
    {"SEND", "ON", "CONVERSATION"},
    {"WITH", "CHANGE_TRACKING_CONTEXT", ""},
});

// Sources of rows that are called like functions, and take no values like those.
constexpr auto kServersSources = std::to_array<std::string_view>({
    "CHANGETABLE",
    "CONTAINSTABLE",
    "FREETEXTTABLE",
    "OPENDATASOURCE",
    "OPENQUERY",
    "OPENROWSET",
    "OPENXML",
    "PREDICT",
    "SEMANTICKEYPHRASETABLE",
    "SEMANTICSIMILARITYDETAILSTABLE",
    "SEMANTICSIMILARITYTABLE",
});

constexpr auto kServersPredicates =
    std::to_array<std::string_view>({"CONTAINS", "FREETEXT", "MATCH"});

// Their arguments are pairs, or have words behind them.
constexpr auto kServersBuilders = std::to_array<std::string_view>(
    {"JSON_ARRAY", "JSON_ARRAYAGG", "JSON_OBJECT", "JSON_OBJECTAGG"});

constexpr auto kServersTables = std::to_array<std::string_view>({"EDGE", "FILETABLE", "NODE"});

constexpr auto kServersColumns = std::to_array<std::string_view>(
    {"ENCRYPTED", "FILESTREAM", "GENERATED", "HIDDEN", "MASKED", "SPARSE"});

std::string joinedWords(const Phrase& phrase) {
    std::string result;
    for (const std::string_view word : phrase) {
        if (word.empty()) break;
        if (!result.empty()) result += ' ';
        result += word;
    }
    return result;
}

}  // namespace

bool Parser::atWord(std::string_view word, std::size_t ahead) const {
    return equalsIgnoringCase(peek(ahead).text, word) && peek(ahead).kind != TokenKind::QuotedName;
}

void Parser::refuseServersStatement() const {
    for (const Phrase& phrase : kServersStatements) {
        if (!atKeyword(phrase[0])) continue;
        std::size_t words = 1;
        while (words < phrase.size() && !phrase[words].empty() && atWord(phrase[words], words))
            ++words;
        const bool whole = words == phrase.size() || phrase[words].empty();
        // "BEGIN dialog:" has a label.
        if (whole && !atOperator(":", words)) refuse(joinedWords(phrase));
    }
}

void Parser::refuseServersSource() const {
    for (const std::string_view source : kServersSources) {
        if (atKeyword(source) && atOperator("(", 1) && !atTableHint(2)) {
            refuse(std::string(source));
        }
    }
}

// INSERT OPENQUERY(...): the other words may be names of tables there.
void Parser::refuseServersTarget() const {
    for (const char* source : {"OPENDATASOURCE", "OPENQUERY", "OPENROWSET"})
        refuseKeyword(source, source);
}

void Parser::refuseServersPredicate() const {
    if (!atOperator("(", 1)) return;
    for (const std::string_view predicate : kServersPredicates) {
        if (atKeyword(predicate)) refuse(std::string(predicate));
    }
}

void Parser::refuseServersBuilder() const {
    for (const std::string_view builder : kServersBuilders) {
        if (atKeyword(builder) && atOperator("(", 1)) refuse(std::string(builder));
    }
}

// CREATE TABLE t (...) AS NODE, t AS FILETABLE.
void Parser::refuseServersTable() const {
    if (!atKeyword("AS")) return;
    for (const std::string_view table : kServersTables) {
        if (atKeyword(table, 1)) refuse("CREATE TABLE AS " + std::string(table));
    }
}

void Parser::refuseServersColumn() const {
    for (const std::string_view option : kServersColumns) {
        if (atKeyword(option)) refuse(std::string(option));
    }
}

// What stands beside the data, CREATE DATABASE AUDIT SPECIFICATION and the like.
void Parser::refuseServersDatabase(const char* action) const {
    static constexpr std::array<Phrase, 4> kParts{{{"AUDIT", "SPECIFICATION", ""},
                                                   {"ENCRYPTION", "KEY", ""},
                                                   {"SCOPED", "CREDENTIAL", ""},
                                                   {"EVENT", "SESSION", ""}}};
    for (const Phrase& part : kParts) {
        if (atKeyword(part[0]) && atKeyword(part[1], 1)) {
            refuse(std::string(action) + " DATABASE " + joinedWords(part));
        }
    }
}

}  // namespace kap::tsql
