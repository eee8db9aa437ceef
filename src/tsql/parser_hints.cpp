#include <algorithm>
#include <array>
#include <string_view>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// Hints: how the server is to go about a table or a query. That is the database's own business
// here, so they are read, refused where nobody knows them, and have no effect; only how deep a
// query may recurse is not a matter of speed.
namespace kap::tsql {

namespace {

constexpr std::array kTableHints =
    std::to_array<std::string_view>({"NOLOCK",          "READUNCOMMITTED",
                                     "UPDLOCK",         "REPEATABLEREAD",
                                     "ROWLOCK",         "SERIALIZABLE",
                                     "READCOMMITTED",   "TABLOCK",
                                     "TABLOCKX",        "PAGLOCK",
                                     "NOWAIT",          "READPAST",
                                     "XLOCK",           "HOLDLOCK",
                                     "SNAPSHOT",        "READCOMMITTEDLOCK",
                                     "NOEXPAND",        "FASTFIRSTROW",
                                     "FORCESCAN",       "FORCESEEK",
                                     "INDEX",           "KEEPIDENTITY",
                                     "KEEPDEFAULTS",    "IGNORE_CONSTRAINTS",
                                     "IGNORE_TRIGGERS", "SPATIAL_WINDOW_MAX_CELLS"});

// The words of OPTION: a hint is one of these in a row, and what it takes behind them.
struct QueryHint {
    std::string_view first;
    std::string_view second;  // empty: the first stands alone
    bool takes = false;       // a value, or something in brackets
};

constexpr std::array kQueryHints = std::to_array<QueryHint>({
    {"HASH", "GROUP"},
    {"ORDER", "GROUP"},
    {"CONCAT", "UNION"},
    {"HASH", "UNION"},
    {"MERGE", "UNION"},
    {"LOOP", "JOIN"},
    {"MERGE", "JOIN"},
    {"HASH", "JOIN"},
    {"EXPAND", "VIEWS"},
    {"FAST", "", true},
    {"FORCE", "ORDER"},
    {"FORCE", "EXTERNALPUSHDOWN"},
    {"DISABLE", "EXTERNALPUSHDOWN"},
    {"FORCE", "SCALEOUTEXECUTION"},
    {"DISABLE", "SCALEOUTEXECUTION"},
    {"DISABLE_OPTIMIZED_PLAN_FORCING", ""},
    {"IGNORE_NONCLUSTERED_COLUMNSTORE_INDEX", ""},
    {"KEEP", "PLAN"},
    {"KEEPFIXED", "PLAN"},
    {"LABEL", "", true},
    {"MAX_GRANT_PERCENT", "", true},
    {"MIN_GRANT_PERCENT", "", true},
    {"MAXDOP", "", true},
    {"MAXRECURSION", "", true},
    {"NO_PERFORMANCE_SPOOL", ""},
    {"OPTIMIZE", "FOR", true},
    {"PARAMETERIZATION", "SIMPLE"},
    {"PARAMETERIZATION", "FORCED"},
    {"QUERYTRACEON", "", true},
    {"RECOMPILE", ""},
    {"ROBUST", "PLAN"},
    {"TABLE", "HINT", true},
    {"USE", "HINT", true},
    {"USE", "PLAN", true},
});

}  // namespace

bool Parser::atTableHint(std::size_t ahead) const {
    return std::ranges::any_of(kTableHints,
                               [&](std::string_view hint) { return atKeyword(hint, ahead); });
}

// WITH (NOLOCK), and (NOLOCK) without the word, where columns cannot be meant.
void Parser::tableHints(HintsStand stand) {
    if (atKeyword("WITH") && atOperator("(", 1)) {
        next();
    } else if (stand == HintsStand::BehindWith || !atOperator("(") || !atTableHint(1)) {
        return;
    }
    expectOperator("(");
    do {
        tableHint();
    } while (acceptOperator(",") || !atOperator(")"));
    expectOperator(")");
}

void Parser::tableHint() {
    if (!atTableHint()) {
        if (peek().kind != TokenKind::Word && peek().kind != TokenKind::QuotedName) unexpected();
        throw ServerError(Message::UnknownTableHint, {peek().text}, peek().line);
    }
    next();
    if (acceptOperator("=") && !atOperator("(")) {
        if (!atName() && peek().kind != TokenKind::Integer) unexpected();
        next();
    }
    if (atOperator("(")) skipBrackets();
}

void Parser::skipBrackets() {
    int open = 0;
    do {
        if (atEnd()) unexpected();
        if (atOperator("(")) ++open;
        if (atOperator(")")) --open;
        next();
    } while (open > 0);
}

// INNER HASH JOIN: the way to join stands before the word JOIN.
void Parser::joinHint() {
    for (const char* way : {"LOOP", "HASH", "MERGE", "REMOTE"}) {
        if (!atKeyword(way) || !atKeyword("JOIN", 1)) continue;
        next();
        return;
    }
}

// OPTION (...), or nothing: how often a common table may read itself.
int Parser::queryHints() {
    int maxRecursion = kMaxRecursion;
    if (!acceptKeyword("OPTION")) return maxRecursion;
    expectOperator("(");
    do {
        if (const auto most = queryHint()) maxRecursion = *most;
    } while (acceptOperator(","));
    expectOperator(")");
    return maxRecursion;
}

std::optional<int> Parser::queryHint() {
    const auto* const hint = std::ranges::find_if(kQueryHints, [&](const QueryHint& each) {
        return atKeyword(each.first) && (each.second.empty() || atKeyword(each.second, 1));
    });
    if (hint == kQueryHints.end()) {
        // A word that begins a hint of two is right; what follows it is not.
        const bool begins = std::ranges::any_of(
            kQueryHints, [&](const QueryHint& each) { return atKeyword(each.first); });
        if (begins) next();
        unexpected();
    }
    const bool recursion = hint->first == "MAXRECURSION";
    next();
    if (!hint->second.empty()) next();
    if (!hint->takes) return std::nullopt;
    if (recursion) return recursionLimit();
    acceptOperator("=");
    if (atOperator("(")) {
        skipBrackets();
    } else if (atOperator(",") || atOperator(")") || atEnd()) {
        unexpected();
    } else {
        next();
    }
    return std::nullopt;
}

int Parser::recursionLimit() {
    constexpr int kDeepest = 32767;
    if (peek().kind != TokenKind::Integer) unexpected();
    const Token& token = next();
    const auto limit = plain::readInt(token.text);
    if (limit && *limit <= kDeepest) return *limit;
    throw ServerError(Message::MaxRecursionTooLarge, {token.text}, token.line);
}

}  // namespace kap::tsql
