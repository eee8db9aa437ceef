#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tsql/parser.hpp"
#include "tsql/syntax.hpp"
#include "tsql/token.hpp"

namespace kap::tsql {

/// The recursive-descent parser. One class, one room (source file) for each part of the language:
/// parser.cpp the tokens, parser_expressions.cpp, parser_predicates.cpp, parser_queries.cpp,
/// parser_sources.cpp, parser_data.cpp, parser_definitions.cpp, parser_types.cpp,
/// parser_scripts.cpp.
class Parser {
public:
    explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

    Script script();
    TypeSpec wholeType();

private:
    // Where an expression stands decides whether brackets in it may hold a condition.
    enum class Place { Value, Condition };

    // Counts the nesting of rules while it lives.
    class Level {
    public:
        explicit Level(Parser& parser);
        ~Level() { --parser_.nesting_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        Parser& parser_;
    };

    // Tokens.
    [[nodiscard]] const Token& peek(std::size_t ahead = 0) const;
    const Token& next();
    [[nodiscard]] bool atEnd() const { return peek().kind == TokenKind::End; }
    [[nodiscard]] bool atKeyword(std::string_view word, std::size_t ahead = 0) const;
    [[nodiscard]] bool atOperator(std::string_view symbol, std::size_t ahead = 0) const;
    bool acceptKeyword(std::string_view word);
    bool acceptOperator(std::string_view symbol);
    void expectKeyword(std::string_view word);
    void expectOperator(std::string_view symbol);
    [[noreturn]] void unexpected() const;
    [[noreturn]] void refuse(const std::string& construct) const;
    void refuseKeyword(std::string_view word, const char* construct) const;
    [[nodiscard]] bool atName(std::size_t ahead = 0) const;
    std::string name();
    ObjectName objectName();
    std::vector<std::string> nameList();

    // Expressions.
    ExpressionPtr make(Expression::Node node, int line, int below = 0);
    static int deepest(const std::vector<ExpressionPtr>& expressions);
    ExpressionPtr value();
    ExpressionPtr condition();
    ExpressionPtr logical(LogicalOperator op, Place place);
    ExpressionPtr disjunction(Place place);
    ExpressionPtr negation(Place place);
    ExpressionPtr predicate(Place place);
    ExpressionPtr sum(Place place);
    ExpressionPtr product(Place place);
    ExpressionPtr signedValue(Place place);
    ExpressionPtr primary(Place place);
    ExpressionPtr literal(LiteralKind kind);
    ExpressionPtr bracketed(Place place);
    ExpressionPtr wordExpression();
    ExpressionPtr nameOrCall();
    ExpressionPtr call(ObjectName name);
    ExpressionPtr caseExpression();
    ExpressionPtr castCall();
    ExpressionPtr convertCall();
    std::vector<ExpressionPtr> valueList();

    // Predicates.
    ExpressionPtr comparison(ExpressionPtr left, ComparisonOperator op);
    ExpressionPtr negatablePredicate(ExpressionPtr left);
    ExpressionPtr betweenPredicate(ExpressionPtr left, bool negated);
    ExpressionPtr inPredicate(ExpressionPtr left, bool negated);
    ExpressionPtr likePredicate(ExpressionPtr left, bool negated);
    ExpressionPtr nullPredicate(ExpressionPtr left);
    ExpressionPtr existsPredicate();

    // Queries.
    [[nodiscard]] bool atQuery() const;
    QueryPtr query();
    QueryPtr bracketedQuery();
    QueryTerm queryTerm();
    Select select();
    TopClause topClause();
    SelectItem selectItem();
    std::string optionalItemAlias();
    void selectTail(Select& select);
    void refuseQueryEnding() const;
    std::vector<OrderItem> orderItems();
    std::vector<TableSourcePtr> fromClause();
    TableSourcePtr joinedSource();
    TableSourcePtr sourcePrimary();
    [[nodiscard]] bool queryFillsBrackets() const;
    TableSourcePtr bracketedSource();
    TableSourcePtr namedSource();
    bool joinKind(JoinKind& kind);
    std::string optionalTableAlias();
    void tableHints();

    // Data statements.
    Statement::Node insertStatement();
    ValueOrDefault valueOrDefault();
    Statement::Node updateStatement();
    Statement::Node deleteStatement();
    std::optional<TopClause> optionalTop();

    // Definition statements.
    Statement::Node createStatement();
    Statement::Node dropStatement();
    void fileGroup();
    void tableElement(CreateTableStatement& table);
    void tableConstraint(CreateTableStatement& table);
    void columnDefinition(CreateTableStatement& table);
    bool columnOption(ColumnDefinition& column, CreateTableStatement& table);
    IdentityOption identityOption();
    KeyConstraint keyConstraint(std::string name);

    // Types. `owner` is the column's name, or empty outside CREATE TABLE; `ordinal` its place
    // from 1.
    TypeSpec type(const std::string& owner, int ordinal);
    TypeSpec sizedType(TypeSpec spec, const std::string& owner, int ordinal);
    void decimalSize(TypeSpec& spec, const std::string& owner, int ordinal);
    void lengthSize(TypeSpec& spec, const std::string& owner);
    int sizeNumber();

    // Scripts.
    Statement statement();
    Statement::Node transactionStatement(TransactionAction action);
    [[noreturn]] void unknownStatement();

    std::vector<Token> tokens_;
    std::size_t position_ = 0;
    int nesting_ = 0;  // of the rules being read
    int deepest_ = 0;  // depth of the deepest expression or source made in the present query
};

}  // namespace kap::tsql
