#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// Sources that are no whole tables: TABLESAMPLE, and OPENROWSET of a file.
namespace kap::tsql {

// [SYSTEM] (size [PERCENT | ROWS]) [REPEATABLE (seed)]
std::optional<TableSample> Parser::tableSample() {
    TableSample sample;
    acceptKeyword("SYSTEM");
    expectOperator("(");
    sample.size = sampleNumber();
    if (acceptKeyword("ROWS")) {
        sample.rows = true;
    } else {
        acceptKeyword("PERCENT");
    }
    expectOperator(")");
    if (acceptKeyword("REPEATABLE")) {
        expectOperator("(");
        sample.seed = sampleNumber();
        expectOperator(")");
    }
    return sample;
}

ExpressionPtr Parser::sampleNumber() {
    if (peek().kind == TokenKind::Variable || peek().kind == TokenKind::Parameter) {
        throw ServerError(Message::VariableInSample, {}, peek().line);
    }
    return value();
}

bool Parser::atBulkRowset() const {
    return atKeyword("OPENROWSET") && atOperator("(", 1) && atKeyword("BULK", 2);
}

// OPENROWSET(BULK 'file', SINGLE_CLOB) AS x: one row of one column.
TableSourcePtr Parser::bulkRowset() {
    const int line = next().line;
    expectOperator("(");
    next();
    if (peek().kind != TokenKind::Text && peek().kind != TokenKind::NationalText) unexpected();
    ExpressionPtr file = literal(LiteralKind::NationalText);
    expectOperator(",");
    const std::string kind = asciiUpper(peek().text);
    if (kind != "SINGLE_CLOB" && kind != "SINGLE_NCLOB" && kind != "SINGLE_BLOB") {
        refuse("OPENROWSET(BULK ...) with " + kind);
    }
    next();
    expectOperator(")");
    Select row;
    ExpressionPtr kindText = make(Literal{LiteralKind::Text, kind}, line);
    row.items.push_back(
        {ExpressionItem{invoked(kBulkFile, line, std::move(file), std::move(kindText)),
                        "BulkColumn"},
         line});
    DerivedTable derived;
    derived.query = std::make_unique<Query>();
    derived.query->line = line;
    derived.query->terms.push_back({std::move(row), SetOperator::UnionAll, line});
    derived.query->depth = 3;
    derived.alias = optionalTableAlias();
    if (derived.alias.empty()) throw ServerError(Message::BulkWithoutName, {}, line);
    derived.columnAliases = optionalColumnAliases();
    return std::make_unique<TableSource>(TableSource{std::move(derived), line, 4});
}

}  // namespace kap::tsql
