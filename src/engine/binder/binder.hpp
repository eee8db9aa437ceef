#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/binder/bound_expression.hpp"
#include "engine/binder/constants.hpp"
#include "engine/binder/name_scope.hpp"
#include "engine/binder/scope.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/query_tree.hpp"
#include "engine/values/convert.hpp"
#include "tsql/server_error.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// One column of a bound query.
struct OutputColumn {
    std::string name;  // empty for an expression without alias
    BoundExpression value;
};

// A query with its columns.
struct BoundQuery {
    sql::Query tree;
    std::vector<OutputColumn> columns;
    // Of FOR XML and FOR JSON: where each column is from.
    struct Origin {
        std::size_t source = 0;        // its place in FROM; as many as there are: from none
        const Table* table = nullptr;  // null where the source is a query
    };
    std::vector<Origin> origins = {};
};

// Where a query stands.
enum class QueryPlace {
    Whole,       // the statement itself: columns are read by position
    InsertRows,  // the rows of an INSERT: columns are named c1, c2..., and their order counts
    Nested,      // within another query: columns are named c1, c2..., and ORDER BY needs TOP
};

// FROM with what it brings into scope.
struct BoundSource {
    sql::From from;
    std::vector<Source> sources;
};

// Gives names their columns and expressions their types, and makes trees of expressions, of
// queries and of what they read: nothing here is text of SQLite.
//
// One class, one source file for each part of the language: bind_constants.cpp,
// bind_expressions.cpp, bind_operators.cpp, bind_comparisons.cpp, bind_conditions.cpp,
// bind_functions.cpp and its tables, bind_string_agg.cpp, bind_sequences.cpp, bind_windows.cpp,
// bind_system_values.cpp, bind_queries.cpp, bind_rows_as_text.cpp, bind_unions.cpp,
// bind_selects.cpp, bind_groups.cpp, bind_order.cpp, bind_sources.cpp, bind_apply.cpp,
// bind_table_functions.cpp, bind_json_rows.cpp, bind_pivots.cpp, bind_samples.cpp,
// bind_common_tables.cpp,
// bind_views.cpp, bind_cursors.cpp. All throw tsql::ServerError with a line.
class Binder {
public:
    explicit Binder(const NameScope& names, Constants constants = Constants::InText)
        : names_(names), schema_(names.schema()), constantsStand_(constants) {}

    [[nodiscard]] const NameScope& names() const { return names_; }
    [[nodiscard]] const Catalogue& catalogue() const { return names_.catalogue(); }
    // The slots of the variables that stand in what was bound.
    [[nodiscard]] const std::vector<int>& usedVariables() const { return usedVariables_; }
    [[nodiscard]] BoundValues boundValues() const;
    void noteSchema() const { readsSchema_ = true; }
    void noteMoment() const { readsMoment_ = true; }
    // Whether a subquery or a stored function was bound, which may read the table being written.
    [[nodiscard]] bool readsOtherRows() const { return readsOtherRows_; }
    // From now on variables are asked for their value again for each row.
    void readVariablesPerRow() { variablesPerRow_ = true; }

    // Expressions and conditions.
    [[nodiscard]] BoundExpression value(const tsql::Expression& expression, Scope& scope);
    [[nodiscard]] sql::Expression condition(const tsql::Expression& expression, Scope& scope);

    // The value of a computed column, as its definition is to hold it.
    [[nodiscard]] BoundExpression computedValue(const tsql::Expression& expression, Scope& scope);
    [[nodiscard]] bool bindsComputedColumn() const { return computedColumn_; }

    // Brings a value to a type as the server does by itself. Errors 206 and 257 when it does not,
    // and those of convert() for a literal.
    [[nodiscard]] BoundExpression convertTo(const BoundExpression& value,
                                            const tsql::TypeSpec& type, int line) const;
    // CAST and CONVERT. Error 529.
    [[nodiscard]] BoundExpression castTo(const BoundExpression& value, const tsql::TypeSpec& type,
                                         int style, int line) const;
    // The same by `function`, kap_convert or kap_try_convert, when the statement runs.
    [[nodiscard]] BoundExpression castCall(const fn::Function& function,
                                           const BoundExpression& value, const tsql::TypeSpec& type,
                                           sql::Expression style, int line) const;
    // A value on its way into a column of that type; `written` is the literal that it is.
    [[nodiscard]] sql::Expression stored(const BoundExpression& value, const tsql::TypeSpec& type,
                                         int line, const WrittenLiteral& written = {}) const;

    // The constant that a literal is.
    [[nodiscard]] static BoundExpression literal(const tsql::Literal& literal, int line);

    // Operators, on bound operands.
    [[nodiscard]] static BoundExpression negated(const BoundExpression& operand, int line);
    [[nodiscard]] BoundExpression bitwiseNot(const BoundExpression& operand, int line) const;
    [[nodiscard]] BoundExpression arithmetic(tsql::BinaryOperator op, BoundExpression left,
                                             BoundExpression right, int line) const;
    // `leftWritten` and `rightWritten` are the literals that the sides are.
    [[nodiscard]] sql::Expression compared(tsql::ComparisonOperator op, const BoundExpression& left,
                                           const BoundExpression& right, int line,
                                           const WrittenLiteral& leftWritten = {},
                                           const WrittenLiteral& rightWritten = {}) const;
    // Values brought to one type in which SQLite's own comparison is the server's.
    [[nodiscard]] std::vector<BoundExpression> comparable(std::vector<BoundExpression> values,
                                                          const char* operation, int line) const;

    // Queries.
    [[nodiscard]] BoundQuery query(const tsql::Query& query, Scope* outer, QueryPlace place);
    // A query whose values are computed row by row in the order of its rows.
    [[nodiscard]] BoundQuery valuesInOrder(const tsql::Query& query);
    [[nodiscard]] BoundSource from(const std::vector<tsql::TableSourcePtr>& sources, Scope& scope);
    // The same for a statement that writes rows of one of its sources: see rowNumberOf().
    [[nodiscard]] BoundSource targetFrom(const std::vector<tsql::TableSourcePtr>& sources,
                                         Scope& scope);
    // A stored table, a temporary one, or one of the script. Error 208 when there is none.
    [[nodiscard]] BoundSource storedTable(const tsql::ObjectName& name,
                                          const std::string& alias) const;
    // A table or view by its name, as a source.
    [[nodiscard]] BoundSource namedSource(const tsql::ObjectName& name,
                                          const std::string& alias = {}) {
        const Restored numbers(needsRowNumbers_, true);
        return namedTable({name, alias});
    }
    // Errors 1011 and 1013 when two sources have one name.
    static void checkNames(const std::vector<Source>& sources, int line);
    // How many rows TOP lets through. `readsOuter` becomes true where columns of a query around
    // say how many; null where none may.
    [[nodiscard]] sql::Expression limit(const tsql::TopClause& top, Scope& scope,
                                        bool* readsOuter = nullptr);
    // The same for TOP PERCENT of so many rows.
    [[nodiscard]] sql::Expression percentLimit(const tsql::TopClause& top, sql::Expression count,
                                               Scope& scope);
    // What WITH defines for what follows, which may name these tables as long as the binder lives.
    // The one that is the target of UPDATE or DELETE brings the numbers of the rows of the table
    // behind it; so does the view that is the target, which stands among them.
    [[nodiscard]] std::vector<sql::CommonTable> commonTables(
        const std::vector<tsql::CommonTable>& tables, Scope* outer,
        const tsql::ObjectName* target = nullptr);
    // The query of a cursor through which rows may be written: where it allows that, the numbers
    // of the rows of its tables follow its columns, and `tables` names these tables.
    [[nodiscard]] BoundQuery cursorQuery(const tsql::Query& query,
                                         std::vector<std::string>& tables);
    // How often a common table may read itself; 0: no limit.
    void limitRecursion(int levels) { maxRecursion_ = levels; }
    // The table behind that common table, and the column that holds the numbers of its rows.
    struct CommonTarget {
        const Table* table = nullptr;
        std::size_t rowNumber = 0;  // its place among the columns
        // What the columns are in the table behind; null for those that are computed.
        std::vector<std::pair<std::string, const Column*>> columns;
        std::string view;  // its stored name; empty for a common table of the statement
        // Each answers a row when something written does not show in a view that wants it to.
        std::vector<sql::QueryTree> checks;
    };
    [[nodiscard]] const CommonTarget& commonTarget() const { return commonTarget_; }
    // The column that an assignment means. Errors: 207, and 4406 for one that a view computes.
    [[nodiscard]] const Column& targetColumn(const Table& table,
                                             const tsql::ObjectName& name) const;
    // Which columns a statement writes, where its target turns out to be a view of several tables.
    void writesColumns(std::vector<std::string> names) { writtenColumns_ = std::move(names); }
    // The table that a view shows as it is, for INSERT: like the target of UPDATE, without rows.
    void insertThrough(const View& view, const tsql::ObjectName& name);
    // The name under which a common table or a view that is written stands among the sources.
    [[nodiscard]] std::string commonNameFor(const tsql::ObjectName& target) const;
    // The common table as a source, when it is the target: under a name of the statement, or its
    // own when that is empty.
    [[nodiscard]] std::optional<BoundSource> targetSource(const tsql::ObjectName& target,
                                                          const std::string& shown = {}) const;
    // The values of a select list over sources that stand in `scope`.
    [[nodiscard]] std::vector<OutputColumn> itemValues(const std::vector<tsql::SelectItem>& items,
                                                       Scope& scope);

    // A stored table as a source of columns under a name.
    [[nodiscard]] static Source tableSource(const Table& table, const std::string& name);
    // The same for a place where columns stand without their table: its own definition.
    [[nodiscard]] static Source ownColumns(const Table& table);

private:
    struct BoundSelect;

    // bind_constants.cpp
    // How often a literal was met, and how often it went into a constant whose source is known.
    struct LiteralUse {
        int met = 0;
        int bound = 0;
    };
    void met(const tsql::Literal& literal);
    [[nodiscard]] sql::Expression addConstant(const Value& value,
                                              const ConstantSource& source) const;
    [[nodiscard]] sql::Expression operand(const BoundExpression& value,
                                          const ConstantSource& source = {}) const;
    [[nodiscard]] sql::Expression storedConstant(const BoundExpression& value,
                                                 const ConstantSource& source) const;
    // The source, with its literal, if `constant` follows from it.
    [[nodiscard]] ConstantSource checkedSource(ConstantSource source, const WrittenLiteral& written,
                                               const BoundExpression& constant) const;
    // The source of a literal that has become `operand` beside a value that was `before`.
    [[nodiscard]] ConstantSource comparedSource(const WrittenLiteral& written,
                                                const BoundExpression& literal,
                                                const BoundExpression& operand,
                                                const BoundExpression& before,
                                                const BoundExpression& after) const;
    [[nodiscard]] bool bindsToo(const BoundExpression& value) const;
    [[nodiscard]] bool isFull() const {
        return constants_.size() == static_cast<std::size_t>(kMostConstants);
    }
    [[nodiscard]] static sql::Expression parameter(std::size_t constant);

    // bind_expressions.cpp
    [[nodiscard]] BoundExpression node(const tsql::Literal& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::ColumnReference& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::VariableReference& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::UnaryExpression& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::BinaryExpression& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression operated(tsql::BinaryOperator op, BoundExpression left,
                                           BoundExpression right, int line) const;
    [[nodiscard]] BoundExpression node(const tsql::CaseExpression& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::CastExpression& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::FunctionCall& node, int line, Scope& scope);
    [[nodiscard]] BoundExpression node(const tsql::ScalarSubquery& node, int line, Scope& scope);
    template <typename Predicate>
    [[nodiscard]] BoundExpression node(const Predicate& node, int line, Scope& scope);
    [[nodiscard]] std::optional<BoundExpression> groupedValue(const tsql::Expression& expression,
                                                              Scope& scope);
    [[nodiscard]] sql::Expression caseSubject(const tsql::CaseExpression& node,
                                              std::vector<sql::Expression>& whens, int line,
                                              Scope& scope);

    // bind_operators.cpp
    [[nodiscard]] BoundExpression exactArithmetic(tsql::BinaryOperator op,
                                                  const BoundExpression& left,
                                                  const BoundExpression& right, int line) const;
    [[nodiscard]] BoundExpression wholeArithmetic(tsql::BinaryOperator op,
                                                  const BoundExpression& left,
                                                  const BoundExpression& right,
                                                  const tsql::TypeSpec& type) const;
    [[nodiscard]] BoundExpression decimalArithmetic(tsql::BinaryOperator op,
                                                    const BoundExpression& left,
                                                    const BoundExpression& right) const;
    [[nodiscard]] BoundExpression floatArithmetic(tsql::BinaryOperator op,
                                                  const BoundExpression& left,
                                                  const BoundExpression& right, int line) const;
    [[nodiscard]] BoundExpression dateArithmetic(tsql::BinaryOperator op,
                                                 const BoundExpression& left,
                                                 const BoundExpression& right, int line) const;
    [[nodiscard]] BoundExpression joined(BoundExpression left, const BoundExpression& right,
                                         int line) const;

    // bind_groups.cpp
    [[nodiscard]] std::optional<BoundExpression> groupedOfSets(const tsql::Expression& expression,
                                                               Scope& scope);
    [[nodiscard]] std::optional<BoundExpression> groupingCall(const tsql::FunctionCall& call,
                                                              int line, Scope& scope);
    [[nodiscard]] static std::vector<sql::Expression> groupingSets(
        const tsql::Select& select, Scope& scope, const std::vector<BoundExpression>& groups);

    // bind_views.cpp
    [[nodiscard]] std::vector<sql::CommonTable> targetView(const View& view,
                                                           const tsql::ObjectName& name);
    [[nodiscard]] const Table& writtenTable(const View& view, int line,
                                            const std::vector<Source>& sources) const;

    // bind_conditions.cpp
    [[nodiscard]] sql::Expression test(const tsql::UnaryExpression& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::Comparison& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::LogicalExpression& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::BetweenPredicate& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::QuantifiedComparison& node, int line,
                                       Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::InPredicate& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::LikePredicate& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::NullPredicate& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::ExistsPredicate& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression test(const tsql::CurrentOfPredicate& node, int line,
                                       Scope& scope);
    template <typename Value>
    [[nodiscard]] sql::Expression test(const Value& node, int line, Scope& scope);
    [[nodiscard]] sql::Expression inQuery(const tsql::InPredicate& node, int line, Scope& scope);

    // bind_functions.cpp
    [[nodiscard]] BoundExpression aggregate(const tsql::FunctionCall& call, int line, Scope& scope);
    [[nodiscard]] BoundExpression total(const BoundExpression& argument, bool distinct,
                                        std::string_view function, int line) const;
    [[nodiscard]] BoundExpression average(const BoundExpression& argument, bool distinct,
                                          int line) const;
    // The average that a sum and a count are.
    [[nodiscard]] static BoundExpression quotient(const BoundExpression& sum,
                                                  const sql::Expression& count);
    [[nodiscard]] BoundExpression statistics(const std::string& name,
                                             const BoundExpression& argument, bool distinct,
                                             int line) const;

    // bind_string_agg.cpp
    [[nodiscard]] BoundExpression joinedTexts(const tsql::FunctionCall& call, int line,
                                              Scope& scope);

    [[nodiscard]] BoundExpression storedFunction(const tsql::FunctionCall& call, int line,
                                                 Scope& scope);
    [[nodiscard]] BoundExpression defaultArgument(const Function& function, std::size_t parameter,
                                                  int line);

    // bind_sequences.cpp
    [[nodiscard]] BoundExpression nextValue(const tsql::FunctionCall& call, int line, Scope& scope);

    // bind_windows.cpp
    [[nodiscard]] BoundExpression windowed(const tsql::FunctionCall& call, int line, Scope& scope);
    [[nodiscard]] BoundExpression percentile(const tsql::FunctionCall& call,
                                             const sql::Expression& window, int line, Scope& scope);
    [[nodiscard]] BoundExpression windowAggregate(const tsql::FunctionCall& call,
                                                  const sql::Expression& window, int line,
                                                  Scope& scope);
    [[nodiscard]] sql::Expression windowOf(const tsql::Window& window, int line, Scope& scope);

    // bind_system_values.cpp
    [[nodiscard]] const fn::Function& systemCall() const;
    [[nodiscard]] std::optional<BoundExpression> systemFunction(const tsql::FunctionCall& call,
                                                                int line, Scope& scope);

    // bind_common_tables.cpp
    struct CommonName {
        std::string name;
        std::vector<OutputColumn> columns;
        // Of a table that reads itself, while it is being bound: the name under which the term at
        // hand reads it.
        std::string readAs;
        int reads = 0;
        // How deep within queries it is bound when it is known to read itself.
        std::optional<int> recursiveAt = std::nullopt;
        int depth = 0;                              // levels of queries in it
        bool isView = false;                        // one that is written through
        const tsql::CommonTable* syntax = nullptr;  // of one that a statement defines
    };
    [[nodiscard]] sql::CommonTable commonTable(const tsql::CommonTable& table, Scope* outer);
    [[nodiscard]] sql::CommonTable boundCommonTable(const tsql::CommonTable& table, Scope* outer);
    [[nodiscard]] sql::CommonTable recursiveTable(const tsql::CommonTable& table, CommonName own,
                                                  Scope* outer);
    [[nodiscard]] std::vector<OutputColumn> commonColumns(const tsql::CommonTable& table,
                                                          std::vector<OutputColumn> columns);
    [[nodiscard]] sql::CommonTable targetTable(const tsql::CommonTable& table, Scope* outer);
    [[nodiscard]] const Table* table(const tsql::ObjectName& name) const {
        return findTable(name, names_, schema_);
    }
    [[nodiscard]] const View* view(const tsql::ObjectName& name) const {
        return findView(name, names_, schema_);
    }
    [[nodiscard]] tsql::ObjectName commonNameOf(const tsql::ObjectName& name) const;
    [[nodiscard]] const CommonName* findCommon(const tsql::ObjectName& name) const;
    [[nodiscard]] CommonName* findCommon(const tsql::ObjectName& name);

    // bind_queries.cpp
    [[nodiscard]] BoundQuery body(const tsql::Query& query, Scope* outer, QueryPlace place);
    // The depth of queries in one another, unless it is more than can be followed.
    static int checkedDepth(int depth, int line);
    void limitRows(const tsql::Query& query, Scope* outer, BoundQuery& bound);
    [[nodiscard]] static sql::Select nestedSelect(BoundSelect& select);

    // bind_rows_as_text.cpp
    [[nodiscard]] static std::vector<BoundQuery::Origin> originsOf(
        const std::vector<OutputColumn>& columns, const Scope& scope);
    static void levelsOf(const tsql::Query& query, const BoundQuery& bound, RowFormat& format);
    [[nodiscard]] static BoundQuery rowsAsText(const tsql::Query& query, BoundQuery bound,
                                               QueryPlace place);

    // bind_unions.cpp
    [[nodiscard]] BoundSelect term(const tsql::QueryTerm& term,
                                   const std::vector<tsql::OrderItem>& orderBy, Scope* outer);
    [[nodiscard]] BoundQuery unionQuery(const tsql::Query& query,
                                        const std::vector<tsql::OrderItem>& orderBy, Scope* outer);
    [[nodiscard]] static std::vector<OutputColumn> unify(std::vector<BoundSelect>& terms,
                                                         tsql::SetOperator joinedBy, int line,
                                                         const Binder& binder);
    // The trees of SELECTs, which are taken out of them, with their items.
    [[nodiscard]] static sql::Compound unionOf(std::vector<BoundSelect>& terms,
                                               const tsql::Query& query);
    [[nodiscard]] static sql::Select selectOf(BoundSelect& select);
    static void checkOwnNames(const std::vector<OutputColumn>& columns, const std::string& alias,
                              int line);

    // bind_selects.cpp
    [[nodiscard]] BoundSelect select(const tsql::Select& select,
                                     const std::vector<tsql::OrderItem>& orderBy, Scope* outer,
                                     int line);
    void selectItems(const tsql::Select& select, BoundSelect& bound, int line);
    void addItem(const tsql::SelectItem& item, Scope& scope, std::vector<OutputColumn>& items);
    void grouping(const tsql::Select& select, BoundSelect& bound);
    [[nodiscard]] sql::Expression percentLimit(const tsql::TopClause& top, BoundSelect& bound);

    // bind_order.cpp
    // ORDER BY of a query around the one whose list is `columns`, to which it adds what it needs.
    [[nodiscard]] static std::vector<sql::OrderTerm> orderedBy(const BoundSelect& select,
                                                               std::vector<sql::Item>& columns);
    void orderRows(const std::vector<tsql::OrderItem>& items, BoundSelect& bound);
    [[nodiscard]] static std::vector<sql::OrderTerm> unionOrder(
        const std::vector<tsql::OrderItem>& items, const std::vector<OutputColumn>& columns);

    // bind_sources.cpp
    [[nodiscard]] BoundSource source(const tsql::TableSource& source, Scope& scope);
    [[nodiscard]] BoundSource bracketedSource(const tsql::TableSource& source, Scope& scope);
    // bind_samples.cpp
    [[nodiscard]] BoundSource sampledTable(const tsql::NamedTable& named);
    [[nodiscard]] double sampleSize(const tsql::TableSample& sample, const Table& table, int line);
    [[nodiscard]] BoundSource namedTable(const tsql::NamedTable& table);
    [[nodiscard]] BoundSource commonSource(const CommonName& common, const std::string& name) const;
    [[nodiscard]] std::optional<BoundSource> viewSource(const tsql::NamedTable& table);
    [[nodiscard]] std::optional<BoundSource> systemSource(const tsql::NamedTable& table) const;
    [[nodiscard]] static BoundSource querySource(BoundQuery bound,
                                                 const std::vector<std::string>& columnNames,
                                                 const std::string& name, int line);
    [[nodiscard]] BoundSource derivedTable(const tsql::DerivedTable& table, int line, Scope& scope);
    [[nodiscard]] BoundSource join(const tsql::Join& join, int line, Scope& scope);

    // bind_apply.cpp
    [[nodiscard]] BoundSource apply(const tsql::Join& join, int line, Scope& scope);
    [[nodiscard]] BoundSource appliedSource(const tsql::TableSource& source, Scope& beside,
                                            GivenValues& given);
    [[nodiscard]] std::vector<sql::CommonTable> commonTablesAgain(std::size_t count, int line);
    [[nodiscard]] static BoundSource givenRows(BoundSource source,
                                               std::vector<sql::CommonTable> with,
                                               const GivenValues& given, int line);

    // bind_table_functions.cpp
    [[nodiscard]] BoundSource functionTable(const tsql::FunctionTable& call, int line,
                                            Scope& scope);
    [[nodiscard]] std::vector<BoundExpression> functionArguments(const tsql::FunctionTable& call,
                                                                 const Function& function, int line,
                                                                 Scope& scope);
    [[nodiscard]] BoundQuery inlineRows(const Function& function,
                                        std::vector<BoundExpression> arguments, int line);
    [[nodiscard]] BoundQuery splitText(const tsql::FunctionTable& call, int line, Scope& scope);

    // bind_collations.cpp
    [[nodiscard]] static BoundQuery collationRows();

    // bind_json_rows.cpp
    [[nodiscard]] BoundQuery jsonRows(const tsql::FunctionTable& call, int line, Scope& scope);
    [[nodiscard]] BoundQuery jsonColumns(const tsql::FunctionTable& call, sql::Call opened,
                                         int line) const;

    // bind_pivots.cpp
    [[nodiscard]] BoundSource pivotTable(const tsql::PivotTable& pivot, int line, Scope& scope);
    [[nodiscard]] BoundSource unpivotTable(const tsql::UnpivotTable& unpivot, int line,
                                           Scope& scope);

    // What the parameters of a function that stands as its query are.
    struct ParameterValues {
        std::vector<std::pair<std::string, BoundExpression>> values;
        std::size_t givenAround = 0;  // how many of `givenTo_` there were when they were bound
    };
    [[nodiscard]] BoundExpression givenThrough(BoundExpression value, std::size_t first) const;

    const NameScope& names_;
    std::vector<GivenValues*> givenTo_;  // the queries being bound that are given values
    std::optional<ParameterValues> parameters_;
    int openFunctions_ = 0;  // whose queries are being bound
    std::string schema_;     // where names without one are looked for first
    std::vector<CommonName> commonNames_;
    CommonTarget commonTarget_;
    std::vector<std::string> writtenColumns_;
    int maxRecursion_ = tsql::kMaxRecursion;
    std::vector<const View*> openViews_;  // being read, to refuse one that reads itself
    std::size_t viewsRead_ = 0;
    std::vector<int> usedVariables_;
    Constants constantsStand_;
    mutable std::vector<Value> constants_;
    mutable std::vector<ConstantSource> sources_;                   // of the constants, one each
    mutable std::unordered_map<std::size_t, LiteralUse> literals_;  // by their tokens
    mutable bool readsSchema_ = false;
    mutable bool readsMoment_ = false;
    bool drawsNumbers_ = false;
    bool variablesPerRow_ = false;
    bool readsOtherRows_ = false;
    int queryDepth_ = 0;            // queries being bound within each other
    int deepestRead_ = 0;           // levels of queries below the one that is being bound
    int windowsBound_ = 0;          // functions with OVER, so far
    bool computedColumn_ = false;   // its definition is being bound
    bool needsRowNumbers_ = false;  // of the tables in FROM, for a statement that writes them
    bool withinBrackets_ = false;   // a join in a join is being bound
};

}  // namespace kap::engine
