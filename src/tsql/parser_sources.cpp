#include <algorithm>
#include <array>
#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

std::vector<TableSourcePtr> Parser::fromClause() {
    std::vector<TableSourcePtr> sources;
    expectKeyword("FROM");
    do {
        sources.push_back(joinedSource());
        deepest_ = std::max(deepest_, sources.back()->depth);
    } while (acceptOperator(","));
    return sources;
}

TableSourcePtr Parser::joinedSource() {
    const Level level(*this);
    TableSourcePtr left = sourcePrimary();
    JoinKind kind = JoinKind::Inner;
    while (joinKind(kind)) {
        const int line = peek().line;
        Join join{kind, std::move(left), nullptr, nullptr};
        // "a JOIN b JOIN c ON ... ON ..." nests to the right: b's own joins come before its ON.
        join.right = kind == JoinKind::Cross ? sourcePrimary() : joinedSource();
        int below = std::max(join.left->depth, join.right->depth);
        if (kind != JoinKind::Cross) {
            expectKeyword("ON");
            join.condition = condition();
            below = std::max(below, join.condition->depth);
        }
        if (below >= kMaxNesting) throw nestedTooDeeply(line);
        left = std::make_unique<TableSource>(TableSource{std::move(join), line, below + 1});
    }
    return left;
}

bool Parser::joinKind(JoinKind& kind) {
    static constexpr std::array<std::pair<const char*, JoinKind>, 3> kOuter{
        {{"LEFT", JoinKind::Left}, {"RIGHT", JoinKind::Right}, {"FULL", JoinKind::Full}}};
    if (atKeyword("CROSS") || atKeyword("OUTER")) {
        if (atKeyword("APPLY", 1)) refuse("APPLY");
        if (!acceptKeyword("CROSS")) return false;
        expectKeyword("JOIN");
        kind = JoinKind::Cross;
        return true;
    }
    kind = JoinKind::Inner;
    for (const auto& [word, outer] : kOuter) {
        if (!acceptKeyword(word)) continue;
        acceptKeyword("OUTER");
        expectKeyword("JOIN");
        kind = outer;
        return true;
    }
    if (acceptKeyword("INNER")) {
        expectKeyword("JOIN");
        return true;
    }
    return acceptKeyword("JOIN");
}

TableSourcePtr Parser::sourcePrimary() {
    if (atOperator("(")) return bracketedSource();
    for (const char* function : {"OPENQUERY", "OPENROWSET", "OPENDATASOURCE", "OPENXML"}) {
        refuseKeyword(function, function);
    }
    return namedSource();
}

// "((SELECT 1 AS a) UNION SELECT 2)" is a query, "((SELECT 1 AS a) AS x JOIN t ON 1=1)" a joined
// source in brackets: what follows the inner brackets tells.
bool Parser::queryFillsBrackets() const {
    if (!atQuery()) return false;
    if (!atOperator("(", 1)) return true;
    std::size_t ahead = 1;
    int open = 0;
    do {
        if (peek(ahead).kind == TokenKind::End) return true;
        if (atOperator("(", ahead)) ++open;
        if (atOperator(")", ahead)) --open;
        ++ahead;
    } while (open > 0);
    return atOperator(")", ahead) || atKeyword("UNION", ahead) || atKeyword("EXCEPT", ahead) ||
           atKeyword("INTERSECT", ahead) || atKeyword("ORDER", ahead);
}

TableSourcePtr Parser::bracketedSource() {
    const Level level(*this);
    const int line = peek().line;
    if (!queryFillsBrackets()) {
        if (atKeyword("VALUES", 1)) {
            DerivedTable rows;
            rows.query = valuesQuery();
            acceptKeyword("AS");
            rows.alias = name();
            rows.columnAliases = nameList();
            return std::make_unique<TableSource>(TableSource{std::move(rows), line, 2});
        }
        expectOperator("(");
        TableSourcePtr inner = joinedSource();
        expectOperator(")");
        return inner;
    }
    DerivedTable derived;
    derived.query = bracketedQuery();
    acceptKeyword("AS");
    derived.alias = name();
    if (atOperator("(")) derived.columnAliases = nameList();
    const int below = derived.query->depth;
    if (below >= kMaxNesting) throw nestedTooDeeply(line);
    return std::make_unique<TableSource>(TableSource{std::move(derived), line, below + 1});
}

// (VALUES (1, 'a'), (2, 'b')) is a query of one SELECT a row.
QueryPtr Parser::valuesQuery() {
    auto result = std::make_unique<Query>();
    result->line = next().line;
    expectKeyword("VALUES");
    do {
        const int line = peek().line;
        Select row;
        expectOperator("(");
        do {
            row.items.push_back({ExpressionItem{value(), ""}, line});
        } while (acceptOperator(","));
        expectOperator(")");
        result->terms.push_back({std::move(row), SetOperator::UnionAll, line});
    } while (acceptOperator(","));
    expectOperator(")");
    result->depth = deepest_ + 1;
    return result;
}

TableSourcePtr Parser::namedSource() {
    const int line = peek().line;
    NamedTable table{tableName(), ""};
    if (atOperator("(") && !atKeyword("NOLOCK", 1)) refuse("table function " + table.name.text());
    tableHints();
    table.alias = optionalTableAlias();
    tableHints();
    refuseKeyword("PIVOT", "PIVOT");
    refuseKeyword("UNPIVOT", "UNPIVOT");
    refuseKeyword("TABLESAMPLE", "TABLESAMPLE");
    return std::make_unique<TableSource>(TableSource{std::move(table), line, 1});
}

std::string Parser::optionalTableAlias() {
    if (acceptKeyword("AS")) return name();
    return atName() ? name() : std::string();
}

// WITH (NOLOCK), (NOLOCK): locking is the database's own business here, so hints are read and have
// no effect.
void Parser::tableHints() {
    static constexpr std::array kHints{
        "NOLOCK",        "READUNCOMMITTED", "UPDLOCK",  "REPEATABLEREAD", "SERIALIZABLE",
        "READCOMMITTED", "TABLOCK",         "TABLOCKX", "PAGLOCK",        "ROWLOCK",
        "NOWAIT",        "READPAST",        "XLOCK",    "HOLDLOCK",       "READCOMMITTEDLOCK"};
    const bool with = atKeyword("WITH") && atOperator("(", 1);
    if (with) {
        next();
    } else if (!atOperator("(") || !atKeyword("NOLOCK", 1)) {
        return;
    }
    expectOperator("(");
    do {
        const bool known = std::any_of(kHints.begin(), kHints.end(),
                                       [this](const char* hint) { return atKeyword(hint); });
        if (!known) refuse("table hint " + peek().text);
        next();
    } while (acceptOperator(",") || !atOperator(")"));
    expectOperator(")");
}

}  // namespace kap::tsql
