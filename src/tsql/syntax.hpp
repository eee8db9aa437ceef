#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tsql/type_spec.hpp"

// The syntax tree of the dialect: what a script says, before any name is looked up.
//
// Every node is a plain value owned by its parent. A node kind is a struct; Expression,
// TableSource and Statement hold one of theirs in a variant, so a new kind is a new struct and the
// compiler lists every place that must know of it.
namespace kap::tsql {

struct Expression;
struct Query;
struct TableSource;
// Ends chains of operators, which nothing bounds, step by step instead of by recursion.
struct ExpressionDeleter {
    ExpressionDeleter() = default;
    // What std::make_unique answers is taken, too.
    // NOLINTNEXTLINE(google-explicit-constructor)
    ExpressionDeleter(std::default_delete<Expression> /*usual*/) noexcept {}
    void operator()(Expression* expression) const noexcept;
};
using ExpressionPtr = std::unique_ptr<Expression, ExpressionDeleter>;
using QueryPtr = std::unique_ptr<Query>;
using TableSourcePtr = std::unique_ptr<TableSource>;

// One to four names separated by points: table, schema.table, table.column, schema.table.column.
// Those before the last one may be empty: database..table.
struct ObjectName {
    std::vector<std::string> parts;
    int line = 1;

    [[nodiscard]] const std::string& last() const { return parts.back(); }
    // The parts joined again with points, as messages show them.
    [[nodiscard]] std::string text() const;
};

// --- Expressions
// ---------------------------------------------------------------------------------------------------

inline constexpr std::size_t kNoToken = static_cast<std::size_t>(-1);

enum class LiteralKind { Null, Integer, Decimal, Float, Money, Text, NationalText, Binary };

// A constant; `text` is its value without quotes or signs (hexadecimal digits for Binary).
struct Literal {
    LiteralKind kind = LiteralKind::Null;
    std::string text;
    // Its place among the tokens of the script, where it was asked for; kNoToken where no token
    // stands for it.
    std::size_t token = kNoToken;
};

struct ColumnReference {
    ObjectName name;
};

// @name or @@name; "?1", "?2"... for the marks of a request's parameters.
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

// a *= b keeps the rows of a's table, a =* b those of b's.
enum class OldOuterJoin { None, KeepsLeft, KeepsRight };

struct Comparison {
    ComparisonOperator op;
    ExpressionPtr left;
    ExpressionPtr right;
    OldOuterJoin outer = OldOuterJoin::None;
};

enum class LogicalOperator { And, Or };

// a AND b AND c...: a chain of any length is one flat node.
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

// value > ANY (query), value > ALL (query).
struct QuantifiedComparison {
    ComparisonOperator op;
    ExpressionPtr value;
    QueryPtr query;
    bool all = false;
};

struct InPredicate {
    ExpressionPtr value;
    std::vector<ExpressionPtr> list;  // empty when `query` is given
    QueryPtr query;
    bool negated = false;
};

struct LikePredicate {
    ExpressionPtr value;
    ExpressionPtr pattern;
    ExpressionPtr escape;  // null when not given
    bool negated = false;
};

struct NullPredicate {
    ExpressionPtr value;
    bool negated = false;
};

struct ExistsPredicate {
    QueryPtr query;
};

// CURRENT OF cursor: the row of an UPDATE or DELETE on which the cursor stands.
struct CurrentOfPredicate {
    std::string cursor;
    std::vector<std::string> columns;  // that the statement assigns
};

struct CaseBranch {
    ExpressionPtr when;
    ExpressionPtr then;
};

struct CaseExpression {
    ExpressionPtr subject;  // null in the searched form, whose branches hold conditions
    std::vector<CaseBranch> branches;
    ExpressionPtr otherwise;  // null when not given
};

// CAST(value AS type) and CONVERT(type, value [, style]).
struct CastExpression {
    ExpressionPtr value;
    TypeSpec type;
    ExpressionPtr style;  // null when not given
    bool tries = false;   // TRY_CAST and TRY_CONVERT: null instead of an error
};

struct OrderItem {
    ExpressionPtr value;
    bool descending = false;
};

// OVER (PARTITION BY ... ORDER BY ... ROWS BETWEEN ...).
struct Window {
    std::vector<ExpressionPtr> partitionBy;
    std::vector<OrderItem> orderBy;
    std::string frame;  // the words of ROWS or RANGE; empty when not given
};

struct FunctionCall {
    ObjectName name;
    std::vector<ExpressionPtr> arguments;
    bool distinct = false;  // COUNT(DISTINCT x)
    bool star = false;      // COUNT(*)
    std::optional<Window> over = std::nullopt;
    std::vector<OrderItem> within = {};  // of WITHIN GROUP (ORDER BY ...)
};

// What `date AT TIME ZONE name` is called as a function of both.
inline constexpr const char* kAtTimeZone = "at time zone";
// ... and of column.WRITE(...).
inline constexpr const char* kWriteMethod = "method WRITE";

// What NEXT VALUE FOR name [OVER (ORDER BY ...)] is called as a function of the sequence, whose
// name stands as a column's.
inline constexpr const char* kNextValue = "next value for";

// DEFAULT as an argument of a stored function: the value that the function has for the parameter.
struct DefaultArgument {};

struct ScalarSubquery {
    QueryPtr query;
};

struct Expression {
    using Node =
        std::variant<Literal, ColumnReference, VariableReference, UnaryExpression, BinaryExpression,
                     Comparison, LogicalExpression, BetweenPredicate, QuantifiedComparison,
                     InPredicate, LikePredicate, NullPredicate, ExistsPredicate, CurrentOfPredicate,
                     CaseExpression, CastExpression, FunctionCall, DefaultArgument, ScalarSubquery>;
    Node node;
    int line = 1;
    int depth = 1;  // levels of operators below, kept within the parser's limit

    // True for what is a condition and not a value: comparisons, AND, NOT, IN...
    [[nodiscard]] bool isPredicate() const;
};

// --- Queries
// -------------------------------------------------------------------------------------------------------

// The right side of an APPLY may read the columns of the left one.
enum class JoinKind { Inner, Left, Right, Full, Cross, CrossApply, OuterApply };

// TABLESAMPLE (size PERCENT) REPEATABLE (seed).
struct TableSample {
    ExpressionPtr size;
    bool rows = false;   // the size is a number of rows
    ExpressionPtr seed;  // null when not given
};

// A table, a view, or a table variable (its name starts with @).
struct NamedTable {
    ObjectName name;
    std::string alias;  // empty when not given
    std::optional<TableSample> sample = std::nullopt;
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
    ExpressionPtr condition;  // null for CROSS and APPLY
};

// One column of OPENJSON(...) WITH (name type 'path' AS JSON).
struct JsonColumn {
    std::string name;
    TypeSpec type;
    std::optional<std::string> path;  // absent: the member of the column's name
    bool asJson = false;
    int line = 1;
};

// f(a, b): the rows of a function that returns a table.
struct FunctionTable {
    ObjectName name;
    std::vector<ExpressionPtr> arguments;
    std::string alias;  // empty when not given
    std::vector<std::string> columnAliases;
    std::vector<JsonColumn> jsonColumns = {};  // of OPENJSON; empty when not given
};

// rows PIVOT (aggregate(value) FOR column IN ([a], [b])): a column for each name, with the
// aggregate over the rows in which `column` is that name; the rows are grouped by what is left.
struct PivotTable {
    QueryPtr rows;  // SELECT * FROM what stands before
    ObjectName column;
    ObjectName value;                // of the aggregate; without parts for count(*)
    std::vector<std::string> names;  // of the new columns
    std::vector<ExpressionPtr> aggregates;
    std::string alias;
    std::vector<std::string> columnAliases;
};

// rows UNPIVOT (value FOR name IN (a, b)): a row for each of the columns that is not null.
struct UnpivotTable {
    QueryPtr rows;
    std::string value;
    std::string name;
    std::vector<std::string> columns;
    std::string alias;
    std::vector<std::string> columnAliases;
};

struct TableSource {
    std::variant<NamedTable, DerivedTable, Join, FunctionTable, PivotTable, UnpivotTable> node;
    int line = 1;
    int depth = 1;
};

// *, or table.* when `qualifier` has parts.
struct StarItem {
    ObjectName qualifier;
};

struct ExpressionItem {
    ExpressionPtr value;
    std::string alias;  // empty when not given
};

// SELECT @variable = value.
struct AssignmentItem {
    std::string variable;
    ExpressionPtr value;
};

struct SelectItem {
    std::variant<StarItem, ExpressionItem, AssignmentItem> node;
    int line = 1;
};

struct TopClause {
    ExpressionPtr count;
    bool percent = false;
    bool withTies = false;
};

struct Select {
    bool distinct = false;
    std::optional<TopClause> top;
    std::vector<SelectItem> items;
    std::optional<ObjectName> into;    // the table to make
    std::vector<TableSourcePtr> from;  // the comma-separated sources
    ExpressionPtr where;
    std::vector<ExpressionPtr> groupBy;
    // Of ROLLUP, CUBE and GROUPING SETS: which of `groupBy` each set has; empty: one set of all.
    std::vector<std::vector<std::size_t>> groupingSets;
    ExpressionPtr having;
};

enum class SetOperator { Union, UnionAll, Except, Intersect };

// One arm of a query: a SELECT, or a query in brackets.
struct QueryTerm {
    std::variant<Select, QueryPtr> node;
    SetOperator joinedBy =
        SetOperator::Union;  // how it follows the term before it; unused in the first
    int line = 1;
};

// WITH name (columns) AS (query).
struct CommonTable {
    std::string name;
    std::vector<std::string> columns;  // empty: as the query names them
    QueryPtr query;
};

// How often a common table may read itself when the statement does not say so.
inline constexpr int kMaxRecursion = 100;

// FOR XML and FOR JSON: what the rows of a query become as one text.
struct RowsAsText {
    enum class Language { Xml, Json };
    enum class Mode { Raw, Auto, Path };
    Language language = Language::Xml;
    Mode mode = Mode::Auto;
    std::optional<std::string> rowName;  // of RAW('name') and PATH('name')
    std::optional<std::string> root;
    bool elements = false;      // ELEMENTS: no attributes
    bool marksNulls = false;    // ELEMENTS XSINIL, INCLUDE_NULL_VALUES
    bool binary = false;        // BINARY BASE64
    bool typed = false;         // TYPE: the text is XML to what is around it
    bool withoutArray = false;  // WITHOUT_ARRAY_WRAPPER
    int line = 1;
};

// What OPENROWSET(BULK 'file', SINGLE_CLOB) is called as a function of the file and the word.
inline constexpr const char* kBulkFile = "openrowset bulk";

// What `xml.value('path', 'type')` is called as a function of XML and path.
inline constexpr const char* kXmlValue = "xml value";

// Terms joined from left to right, then ordered. INTERSECT, which binds tighter, has been put into
// a term of its own by the parser.
struct Query {
    std::vector<CommonTable> commonTables;
    std::vector<QueryTerm> terms;
    std::vector<OrderItem> orderBy;
    ExpressionPtr offset;              // of OFFSET n ROWS; null when not given
    ExpressionPtr fetch;               // of FETCH NEXT n ROWS ONLY; null when not given
    int maxRecursion = kMaxRecursion;  // of OPTION (MAXRECURSION n); 0 is no limit
    std::optional<RowsAsText> asText;  // of FOR XML and FOR JSON
    int line = 1;
    int depth = 1;
};

}  // namespace kap::tsql
