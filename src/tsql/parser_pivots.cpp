#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// PIVOT and UNPIVOT behind a source of FROM.
namespace kap::tsql {

TableSourcePtr Parser::pivoted(TableSourcePtr source) {
    for (int pivots = 0; atKeyword("PIVOT") || atKeyword("UNPIVOT"); ++pivots) {
        const Level level(*this);
        const int line = peek().line;
        if (pivots >= kMaxQueries) throw nestedTooDeeply(line);
        Select all;
        all.items.push_back({StarItem{}, line});
        const int below = source->depth;
        if (below >= kMaxNesting) throw nestedTooDeeply(line);
        all.from.push_back(std::move(source));
        auto rows = std::make_unique<Query>();
        rows->line = line;
        rows->depth = below + 1;
        rows->terms.push_back({std::move(all), SetOperator::Union, line});
        const bool isPivot = atKeyword("PIVOT");
        next();
        expectOperator("(");
        source =
            isPivot ? pivotSource(std::move(rows), line) : unpivotSource(std::move(rows), line);
        source->depth = below + 1;
    }
    return source;
}

// The rows are known by their columns alone.
ObjectName Parser::plainColumn() {
    const ObjectName name = objectName();
    return {{name.last()}, name.line};
}

// (aggregate(value) FOR column IN ([a], [b])) AS x: each name is a column with
// aggregate(CASE WHEN column = name THEN value END).
TableSourcePtr Parser::pivotSource(QueryPtr rows, int line) {
    PivotTable pivot;
    pivot.rows = std::move(rows);
    const ObjectName aggregate = objectName();
    expectOperator("(");
    if (!acceptOperator("*")) pivot.value = plainColumn();
    expectOperator(")");
    expectKeyword("FOR");
    pivot.column = plainColumn();
    expectKeyword("IN");
    pivot.names = nameList();
    expectOperator(")");
    acceptKeyword("AS");
    pivot.alias = name();
    pivot.columnAliases = optionalColumnAliases();
    for (const std::string& each : pivot.names) {
        CaseExpression chosen;
        CaseBranch branch;
        branch.when =
            make(Comparison{ComparisonOperator::Equal, make(ColumnReference{pivot.column}, line),
                            make(Literal{LiteralKind::NationalText, each}, line)},
                 line, 1);
        branch.then = pivot.value.parts.empty() ? make(Literal{LiteralKind::Integer, "1"}, line)
                                                : make(ColumnReference{pivot.value}, line);
        chosen.branches.push_back(std::move(branch));
        FunctionCall call{aggregate, {}};
        constexpr int kBelow = 3;
        call.arguments.push_back(make(std::move(chosen), line, kBelow));
        pivot.aggregates.push_back(make(std::move(call), line, kBelow + 1));
    }
    return std::make_unique<TableSource>(TableSource{std::move(pivot), line, 1});
}

// (value FOR name IN (a, b)) AS x.
TableSourcePtr Parser::unpivotSource(QueryPtr rows, int line) {
    UnpivotTable unpivot;
    unpivot.rows = std::move(rows);
    unpivot.value = name();
    expectKeyword("FOR");
    unpivot.name = name();
    expectKeyword("IN");
    unpivot.columns = nameList();
    expectOperator(")");
    acceptKeyword("AS");
    unpivot.alias = name();
    unpivot.columnAliases = optionalColumnAliases();
    return std::make_unique<TableSource>(TableSource{std::move(unpivot), line, 1});
}

}  // namespace kap::tsql
