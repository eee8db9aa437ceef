#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tsql/type_spec.hpp"

/// The syntax tree of the dialect: what a script says, before any name is looked up.
///
/// Every node is a plain value owned by its parent. A node kind is a struct; Expression,
/// TableSource and Statement hold one of theirs in a variant, so a new kind is a new struct and the
/// compiler lists every place that must know of it.
namespace kap::tsql {

struct Expression;
struct Query;
struct TableSource;
using ExpressionPtr = std::unique_ptr<Expression>;
using QueryPtr = std::unique_ptr<Query>;
using TableSourcePtr = std::unique_ptr<TableSource>;

/// One to four names separated by points: table, owner.table, table.column, owner.table.column.
struct ObjectName {
    std::vector<std::string> parts;
    int line = 1;

    [[nodiscard]] const std::string& last() const { return parts.back(); }
    /// The parts joined again with points, as messages show them.
    [[nodiscard]] std::string text() const;
};

// --- Expressions
// ---------------------------------------------------------------------------------------------------

enum class LiteralKind { Null, Integer, Decimal, Float, Money, Text, NationalText, Binary };

/// A constant; `text` is its value without quotes or signs (hexadecimal digits for Binary).
struct Literal {
    LiteralKind kind = LiteralKind::Null;
    std::string text;
};

struct ColumnReference {
    ObjectName name;
};

/// @name or @@name.
struct VariableReference {
    std::string name;
};

enum class UnaryOperator { Plus, Minus, BitNot, Not };

struct UnaryExpression {
    UnaryOperator op;
    ExpressionPtr operand;
};

enum class BinaryOperator { Add, Subtract, Multiply, Divide, Modulo, BitAnd, BitOr, BitXor };

struct BinaryExpression {
    BinaryOperator op;
    ExpressionPtr left;
    ExpressionPtr right;
};

enum class ComparisonOperator { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

struct Comparison {
    ComparisonOperator op;
    ExpressionPtr left;
    ExpressionPtr right;
};

enum class LogicalOperator { And, Or };

/// a AND b AND c...: a chain of any length is one flat node.
struct LogicalExpression {
    LogicalOperator op;
    std::vector<ExpressionPtr> operands;
};

struct BetweenPredicate {
    ExpressionPtr value;
    ExpressionPtr low;
    ExpressionPtr high;
    bool negated = false;
};

struct InPredicate {
    ExpressionPtr value;
    std::vector<ExpressionPtr> list;  ///< empty when `query` is given
    QueryPtr query;
    bool negated = false;
};

struct LikePredicate {
    ExpressionPtr value;
    ExpressionPtr pattern;
    ExpressionPtr escape;  ///< null when not given
    bool negated = false;
};

struct NullPredicate {
    ExpressionPtr value;
    bool negated = false;
};

struct ExistsPredicate {
    QueryPtr query;
};

struct CaseBranch {
    ExpressionPtr when;
    ExpressionPtr then;
};

struct CaseExpression {
    ExpressionPtr subject;  ///< null in the searched form, whose branches hold conditions
    std::vector<CaseBranch> branches;
    ExpressionPtr otherwise;  ///< null when not given
};

/// CAST(value AS type) and CONVERT(type, value [, style]).
struct CastExpression {
    ExpressionPtr value;
    TypeSpec type;
    ExpressionPtr style;  ///< null when not given
};

struct FunctionCall {
    ObjectName name;
    std::vector<ExpressionPtr> arguments;
    bool distinct = false;  ///< COUNT(DISTINCT x)
    bool star = false;      ///< COUNT(*)
};

struct ScalarSubquery {
    QueryPtr query;
};

struct Expression {
    using Node = std::variant<Literal, ColumnReference, VariableReference, UnaryExpression,
                              BinaryExpression, Comparison, LogicalExpression, BetweenPredicate,
                              InPredicate, LikePredicate, NullPredicate, ExistsPredicate,
                              CaseExpression, CastExpression, FunctionCall, ScalarSubquery>;
    Node node;
    int line = 1;
    int depth = 1;  ///< levels of operators below, kept within the parser's limit

    /// True for what is a condition and not a value: comparisons, AND, NOT, IN...
    [[nodiscard]] bool isPredicate() const;
};

// --- Queries
// -------------------------------------------------------------------------------------------------------

enum class JoinKind { Inner, Left, Right, Full, Cross };

struct NamedTable {
    ObjectName name;
    std::string alias;  ///< empty when not given
};

struct DerivedTable {
    QueryPtr query;
    std::string alias;
    std::vector<std::string> columnAliases;
};

struct Join {
    JoinKind kind;
    TableSourcePtr left;
    TableSourcePtr right;
    ExpressionPtr condition;  ///< null for CROSS
};

struct TableSource {
    std::variant<NamedTable, DerivedTable, Join> node;
    int line = 1;
    int depth = 1;
};

/// *, or table.* when `qualifier` has parts.
struct StarItem {
    ObjectName qualifier;
};

struct ExpressionItem {
    ExpressionPtr value;
    std::string alias;  ///< empty when not given
};

struct SelectItem {
    std::variant<StarItem, ExpressionItem> node;
    int line = 1;
};

struct TopClause {
    ExpressionPtr count;
    bool percent = false;
};

struct Select {
    bool distinct = false;
    std::optional<TopClause> top;
    std::vector<SelectItem> items;
    std::vector<TableSourcePtr> from;  ///< the comma-separated sources
    ExpressionPtr where;
    std::vector<ExpressionPtr> groupBy;
    ExpressionPtr having;
};

struct OrderItem {
    ExpressionPtr value;
    bool descending = false;
};

enum class SetOperator { Union, UnionAll };

/// One arm of a query: a SELECT, or a query in brackets.
struct QueryTerm {
    std::variant<Select, QueryPtr> node;
    SetOperator joinedBy =
        SetOperator::Union;  ///< how it follows the term before it; unused in the first
    int line = 1;
};

/// Terms joined from left to right, then ordered.
struct Query {
    std::vector<QueryTerm> terms;
    std::vector<OrderItem> orderBy;
    int line = 1;
    int depth = 1;
};

// --- Data statements
// -----------------------------------------------------------------------------------------------

struct SelectStatement {
    QueryPtr query;
};

/// A value of an INSERT row or an assignment; a null `value` is the keyword DEFAULT.
struct ValueOrDefault {
    ExpressionPtr value;
};

struct InsertStatement {
    ObjectName table;
    std::vector<std::string> columns;               ///< empty when not given
    std::vector<std::vector<ValueOrDefault>> rows;  ///< of VALUES
    QueryPtr query;                                 ///< of INSERT ... SELECT
    bool defaultValues = false;
};

struct Assignment {
    ObjectName column;
    ValueOrDefault value;
};

struct UpdateStatement {
    ObjectName table;  ///< a table, or an alias of FROM
    std::optional<TopClause> top;
    std::vector<Assignment> assignments;
    std::vector<TableSourcePtr> from;
    ExpressionPtr where;
};

struct DeleteStatement {
    ObjectName table;  ///< a table, or an alias of FROM
    std::optional<TopClause> top;
    std::vector<TableSourcePtr> from;
    ExpressionPtr where;
};

// --- Definition statements
// -----------------------------------------------------------------------------------------

struct IdentityOption {
    ExpressionPtr seed;  ///< null when not given
    ExpressionPtr increment;
};

struct DefaultOption {
    std::string constraintName;  ///< empty when not given
    ExpressionPtr value;
};

struct KeyConstraint {
    std::string name;  ///< empty when not given
    bool primary = false;
    std::vector<std::string> columns;
    int line = 1;
};

struct ColumnDefinition {
    std::string name;
    TypeSpec type;
    std::optional<bool> nullable;  ///< absent when neither NULL nor NOT NULL is said
    std::optional<IdentityOption> identity;
    std::optional<DefaultOption> defaultValue;
    int line = 1;
};

struct CreateTableStatement {
    ObjectName table;
    std::vector<ColumnDefinition> columns;
    std::vector<KeyConstraint> keys;  ///< of columns and of the table alike
};

struct DropTableStatement {
    std::vector<ObjectName> tables;
    bool ifExists = false;
};

enum class TransactionAction { Begin, Commit, Rollback };

struct TransactionStatement {
    TransactionAction action;
    std::string name;  ///< empty when not given
};

struct Statement {
    using Node = std::variant<SelectStatement, InsertStatement, UpdateStatement, DeleteStatement,
                              CreateTableStatement, DropTableStatement, TransactionStatement>;
    Node node;
    int line = 1;
};

using Script = std::vector<Statement>;

}  // namespace kap::tsql
