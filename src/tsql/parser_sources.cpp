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
    TableSourcePtr left = pivoted(sourcePrimary());
    JoinKind kind = JoinKind::Inner;
    for (int joins = 0; joinKind(kind); ++joins) {
        const int line = peek().line;
        if (joins >= kMaxQueries) throw nestedTooDeeply(line);
        Join join{kind, std::move(left), nullptr, nullptr};
        const bool conditional =
            kind != JoinKind::Cross && kind != JoinKind::CrossApply && kind != JoinKind::OuterApply;
        // "a JOIN b JOIN c ON ... ON ..." nests to the right: b's own joins come before its ON.
        join.right = conditional ? joinedSource() : sourcePrimary();
        int below = std::max(join.left->depth, join.right->depth);
        if (conditional) {
            expectKeyword("ON");
            join.condition = condition();
            below = std::max(below, join.condition->depth);
        }
        if (below >= kMaxNesting) throw nestedTooDeeply(line);
        left =
            pivoted(std::make_unique<TableSource>(TableSource{std::move(join), line, below + 1}));
    }
    return left;
}

bool Parser::joinKind(JoinKind& kind) {
    static constexpr std::array<std::pair<const char*, JoinKind>, 3> kOuter{
        {{"LEFT", JoinKind::Left}, {"RIGHT", JoinKind::Right}, {"FULL", JoinKind::Full}}};
    if (atKeyword("CROSS") || atKeyword("OUTER")) {
        if (atKeyword("APPLY", 1)) {
            kind = atKeyword("CROSS") ? JoinKind::CrossApply : JoinKind::OuterApply;
            next();
            next();
            return true;
        }
        if (!acceptKeyword("CROSS")) return false;
        expectKeyword("JOIN");
        kind = JoinKind::Cross;
        return true;
    }
    kind = JoinKind::Inner;
    for (const auto& [word, outer] : kOuter) {
        if (!acceptKeyword(word)) continue;
        acceptKeyword("OUTER");
        joinHint();
        expectKeyword("JOIN");
        kind = outer;
        return true;
    }
    if (acceptKeyword("INNER")) {
        joinHint();
        expectKeyword("JOIN");
        return true;
    }
    return acceptKeyword("JOIN");
}

TableSourcePtr Parser::sourcePrimary() {
    if (atOperator("(")) return bracketedSource();
    if (atBulkRowset()) return bulkRowset();
    refuseServersSource();
    return namedSource();
}

TableSourcePtr Parser::bracketedSource() {
    const Level level(*this);
    const int line = peek().line;
    if (!atQuery()) {
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
    // The first servers wrote "::" before the functions of their own.
    if (acceptOperator(":")) expectOperator(":");
    NamedTable table{tableName(), ""};
    if (atOperator("(") && !atTableHint(1)) return functionSource(std::move(table.name), line);
    tableHints(HintsStand::Anywhere);
    if (atKeyword("FOR") && atKeyword("SYSTEM_TIME", 1)) refuse("FOR SYSTEM_TIME");
    table.alias = optionalTableAlias();
    // HOLDLOCK alone is how the first servers wrote it.
    if (!acceptKeyword("HOLDLOCK")) tableHints(HintsStand::Anywhere);
    if (acceptKeyword("TABLESAMPLE")) {
        table.sample = tableSample();
        tableHints(HintsStand::Anywhere);
    }
    return std::make_unique<TableSource>(TableSource{std::move(table), line, 1});
}

// f(a, DEFAULT) AS x (columns).
TableSourcePtr Parser::functionSource(ObjectName name, int line) {
    FunctionTable function;
    function.name = std::move(name);
    expectOperator("(");
    const std::size_t draws = draws_;
    if (!atOperator(")")) function.arguments = functionArguments();
    refuseDraws(draws, Message::DrawAsTableArgument);
    expectOperator(")");
    if (atKeyword("WITH") && atOperator("(", 1)) {
        if (!equalsIgnoringCase(function.name.text(), "openjson")) {
            refuse(function.name.text() + " WITH");
        }
        function.jsonColumns = jsonColumns();
    }
    function.alias = optionalTableAlias();
    if (!function.alias.empty()) function.columnAliases = optionalColumnAliases();
    const int below = deepest(function.arguments);
    if (below >= kMaxNesting) throw nestedTooDeeply(line);
    return std::make_unique<TableSource>(TableSource{std::move(function), line, below + 1});
}

std::vector<std::string> Parser::optionalColumnAliases() {
    return atOperator("(") ? nameList() : std::vector<std::string>();
}

std::string Parser::optionalTableAlias() {
    if (acceptKeyword("AS")) return name();
    return atAlias() ? name() : std::string();
}

}  // namespace kap::tsql
