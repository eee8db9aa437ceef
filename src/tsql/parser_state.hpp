#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ascii.hpp"
#include "tsql/messages.hpp"
#include "tsql/parser.hpp"
#include "tsql/statements.hpp"
#include "tsql/token.hpp"

namespace kap::tsql {

// The recursive-descent parser: one class, and a source file for each part of the language.
//
//     parser.cpp               tokens, names, errors
//     parser_scripts.cpp       batches, and which statement begins here
//     parser_flow.cpp          BEGIN, IF, WHILE, TRY, GOTO; parser_cursors.cpp cursors
//     parser_settings.cpp      SET
//     parser_calls.cpp         EXEC and its arguments
//     parser_escapes.cpp       what stands in braces; parser_escaped_calls.cpp {fn name(...)}
//     parser_queries.cpp       SELECT; parser_sources.cpp FROM, parser_pivots.cpp PIVOT,
//                              parser_groups.cpp GROUP BY, parser_group_all.cpp its ALL,
//                              parser_old_joins.cpp *= and =*, parser_samples.cpp TABLESAMPLE,
//                              parser_windows.cpp OVER, parser_hints.cpp the hints,
//                              parser_rows_as_text.cpp FOR XML and FOR JSON
//     parser_expressions.cpp   expressions; parser_predicates.cpp conditions
//     parser_data.cpp          INSERT, UPDATE, DELETE; parser_merge.cpp MERGE,
//                              parser_bulk.cpp BULK INSERT
//     parser_tables.cpp        CREATE and ALTER TABLE; parser_types.cpp the types of columns
//     parser_definitions.cpp   other CREATE, ALTER and DROP; parser_schemas.cpp schemas,
//                              parser_sequences.cpp sequences and synonyms
//     parser_modules.cpp       procedures, functions, triggers
//     parser_servers_own.cpp   what only a server has
class Parser {
public:
    Parser(std::string_view source, std::vector<Token> tokens, const ParseOptions& options)
        : source_(source), options_(options), tokens_(std::move(tokens)) {}

    Script script();
    // What script() is made of; see ScriptReader.
    [[nodiscard]] bool atNextStatement();
    Statement nextStatement();
    void pass(std::size_t tokens) {
        first_ = false;
        position_ += tokens;
    }
    [[nodiscard]] const std::vector<Token>& tokens() const { return tokens_; }
    [[nodiscard]] std::size_t position() const { return position_; }

    TypeSpec wholeType();
    ObjectName wholeName();
    CreateTableStatement wholeTableBody(const std::string& name);
    SequenceStatement wholeSequence();
    std::vector<std::string> wholeNames();
    std::vector<ParameterDefinition> wholeParameters();

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

    // Tokens. Every rule asks these of every token, so they stand here for the compiler to join.
    [[nodiscard]] const Token& peek(std::size_t ahead = 0) const {
        return tokens_[std::min(position_ + ahead, tokens_.size() - 1)];
    }
    const Token& next() {
        const Token& token = tokens_[position_];
        if (position_ + 1 < tokens_.size()) ++position_;
        return token;
    }
    [[nodiscard]] bool atEnd() const { return peek().kind == TokenKind::End; }
    [[nodiscard]] bool atKeyword(std::string_view word, std::size_t ahead = 0) const {
        const Token& token = peek(ahead);
        // Most words differ in their length or their first letter.
        return token.kind == TokenKind::Word && token.text.size() == word.size() &&
               ((token.text.front() ^ word.front()) & ~0x20) == 0 &&
               equalsIgnoringCase(token.text, word);
    }
    [[nodiscard]] bool atOperator(std::string_view symbol, std::size_t ahead = 0) const {
        const Token& token = peek(ahead);
        return token.kind == TokenKind::Operator && token.text.size() == symbol.size() &&
               token.text.front() == symbol.front() && token.text.back() == symbol.back();
    }
    bool acceptKeyword(std::string_view word) {
        const bool found = atKeyword(word);
        if (found) next();
        return found;
    }
    bool acceptOperator(std::string_view symbol) {
        const bool found = atOperator(symbol);
        if (found) next();
        return found;
    }
    void expectKeyword(std::string_view word);
    void expectOperator(std::string_view symbol);
    [[noreturn]] void unexpected() const;
    [[noreturn]] void refuse(const std::string& construct) const;
    void refuseKeyword(std::string_view word, const char* construct) const;
    // What only a server has: error 40517 where it stands here.
    [[nodiscard]] bool atWord(std::string_view word, std::size_t ahead) const;
    void refuseServersStatement() const;
    void refuseServersSource() const;
    void refuseServersTarget() const;
    void refuseServersPredicate() const;
    void refuseServersBuilder() const;
    void refuseServersTable() const;
    void refuseServersColumn() const;
    void refuseServersDatabase(const char* action) const;
    [[nodiscard]] bool atName(std::size_t ahead = 0) const;
    // A name that is no label: behind what may have an alias the next statement may begin with one.
    [[nodiscard]] bool atAlias() const { return atName() && !atLabel(); }
    [[nodiscard]] bool atLabel() const {
        return atName() && atOperator(":", 1) && !atOperator(":", 2);
    }
    std::string name();
    ObjectName objectName();
    std::string partOfName();
    ObjectName tableName();
    ObjectName writtenName();
    std::string variable();
    std::string parameterMark();  // the name of the variable that holds its value
    std::string newVariable();
    void checkDeclared(const Token& variable) const;
    // What was written from that token on, up to the last one read.
    [[nodiscard]] std::string sourceText(std::size_t from) const;
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
    ExpressionPtr collated(ExpressionPtr text);
    void collation();
    ExpressionPtr caseExpression();
    ExpressionPtr typeAsValue(int line);
    ExpressionPtr parseCall();
    ExpressionPtr identityCall();
    ExpressionPtr nextValue();
    // NEXT VALUE FOR stands in what was read since there were so many of them.
    void refuseDraws(std::size_t before, Message message) const;
    void refuseDrawsOf(const ObjectName& function, std::size_t before) const;
    void refuseDraws(const Query& query, std::size_t before, std::size_t unordered) const;
    ExpressionPtr castCall();
    static ExpressionPtr tried(ExpressionPtr cast);
    ExpressionPtr escaped();
    ExpressionPtr escapedText(const TypeSpec& type, int line);
    ExpressionPtr escapedCall();
    ExpressionPtr escapedFunction(std::string_view name, int line);
    ExpressionPtr escapedInterval(const char* function, int line);
    ExpressionPtr escapedConversion(int line);
    ExpressionPtr nowAsText(bool time, int line);
    // A call of a function with these values.
    template <typename... Values>
    ExpressionPtr invoked(const char* name, int line, Values... values) {
        FunctionCall result{ObjectName{{name}, line}, {}};
        (result.arguments.push_back(std::move(values)), ...);
        const int below = deepest(result.arguments);
        return make(std::move(result), line, below);
    }
    ExpressionPtr timeOfToday(ExpressionPtr time, int line);
    ExpressionPtr iifCall();
    ExpressionPtr trimCall();
    ExpressionPtr chooseCall();
    ExpressionPtr convertCall();
    std::vector<ExpressionPtr> valueList();
    std::vector<ExpressionPtr> functionArguments();

    // Predicates.
    void requireOldOuterJoins() const;
    // parser_old_joins.cpp
    void joinOldWay(Select& select);
    ExpressionPtr allOf(std::vector<ExpressionPtr> conditions);
    ExpressionPtr comparison(ExpressionPtr left, ComparisonOperator op);
    ExpressionPtr oldOuterJoin(ExpressionPtr left, OldOuterJoin outer);
    ExpressionPtr quantified(ExpressionPtr left, ComparisonOperator op, int line);
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
    QueryTerm intersection();
    std::vector<CommonTable> commonTables();
    void queryEnding(Query& query);
    void rowLimits(Query& query);

    // Rows as XML and JSON.
    [[nodiscard]] bool atRowsAsText() const;
    RowsAsText rowsAsText();
    void rowsAsTextOption(RowsAsText& rows);
    std::optional<std::string> optionalBracketedText();
    static void refuseRowsAsText(const Query& query, const char* statement);
    static void checkRowsAsText(const Query& query);
    ExpressionPtr xmlMethod(ExpressionPtr xml);
    ExpressionPtr xmlMethodOfColumn(FunctionCall call, int line);
    [[nodiscard]] static bool isXmlMethod(const FunctionCall& call);
    TypeSpec typeInText();
    TypeSpec typeOfText(const std::string& text, int line);
    std::vector<JsonColumn> jsonColumns();

    Select select();
    TopClause topClause();
    SelectItem selectItem();
    std::string optionalItemAlias();
    void selectTail(Select& select);

    // Groups. A grouping is the sets that one element of GROUP BY stands for.
    using GroupSet = std::vector<std::size_t>;
    using Grouping = std::vector<GroupSet>;
    void groupByClause(Select& select);
    // parser_group_all.cpp
    void groupAll(Select& select, std::size_t where);
    void filterAggregates(ExpressionPtr& expression, std::size_t where);
    void filterAggregate(FunctionCall& call, std::size_t where);
    ExpressionPtr conditionAt(std::size_t start);
    Grouping grouping(Select& select);
    std::vector<GroupSet> groupElements(Select& select);
    GroupSet groupElement(Select& select);
    std::size_t groupExpression(Select& select);
    std::vector<OrderItem> orderItems();
    std::vector<TableSourcePtr> fromClause();
    TableSourcePtr joinedSource();
    TableSourcePtr sourcePrimary();
    TableSourcePtr bracketedSource();
    QueryPtr valuesQuery();
    TableSourcePtr namedSource();
    std::optional<TableSample> tableSample();
    [[nodiscard]] bool atBulkRowset() const;
    TableSourcePtr bulkRowset();
    ExpressionPtr sampleNumber();
    TableSourcePtr functionSource(ObjectName name, int line);
    TableSourcePtr pivoted(TableSourcePtr source);
    ObjectName plainColumn();
    TableSourcePtr pivotSource(QueryPtr rows, int line);
    TableSourcePtr unpivotSource(QueryPtr rows, int line);
    std::vector<std::string> optionalColumnAliases();
    bool joinKind(JoinKind& kind);
    std::string optionalTableAlias();

    // Windows. The places of a frame's edges, in their order.
    enum class FramePlace { Start, Before, Current, Behind, End };
    struct FrameEdge {
        FramePlace place;
        std::string text;
    };
    Window window();
    std::string windowFrame();
    FrameEdge frameEdge();

    // Hints.
    enum class HintsStand { Anywhere, BehindWith };
    [[nodiscard]] bool atTableHint(std::size_t ahead = 0) const;
    void tableHints(HintsStand stand);
    void tableHint();
    void joinHint();
    int queryHints();
    std::optional<int> queryHint();
    int recursionLimit();
    void skipBrackets();

    // Data statements.
    InsertStatement insertStatement();
    void insertRows(InsertStatement& insert);
    ValueOrDefault valueOrDefault();
    UpdateStatement updateStatement();
    Assignment assignment();
    ExpressionPtr writtenPart(ObjectName& column);
    DeleteStatement deleteStatement();
    ExpressionPtr writtenRows(const std::vector<Assignment>& assignments);
    std::optional<TopClause> optionalTop();
    std::optional<OutputClause> outputClause();
    Statement::Node withStatement();
    // "= value", and "+= value" as target + value.
    ExpressionPtr assignedValue(const std::function<Expression::Node()>& target);

    // BULK INSERT.
    Statement::Node bulkInsert();
    void bulkOption(BulkInsertStatement& bulk);
    bool bulkNumber(BulkInsertStatement& bulk, const std::string& option);
    bool bulkText(BulkInsertStatement& bulk, const std::string& option);
    std::string bulkWord();

    // MERGE.
    MergeStatement mergeStatement();
    MergeAction mergeAction(const MergeStatement& merge);
    MergeAction::When mergeWhen();
    InsertStatement mergeInsert();

    // Tables.
    Statement::Node createTable();
    void tableBody(TableElements& table);
    void fileGroup();
    void tableOptions();
    void tableElement(TableElements& table);
    bool atTableConstraint() const;
    void tableConstraint(TableElements& table);
    void columnDefinition(TableElements& table);
    void computedColumn(ColumnDefinition& column);
    bool columnOption(ColumnDefinition& column, TableElements& table);
    IdentityOption identityOption();
    KeyConstraint keyConstraint(std::string name);
    void keyColumns(KeyConstraint& key);
    ForeignKey foreignKey(std::string name);
    ReferenceAction referenceAction();
    CheckConstraint checkConstraint(std::string name);
    DefaultOption defaultOption(std::string name);
    bool indexOptions();  // true: duplicates are ignored
    void keyOptions(KeyConstraint& key);
    Statement::Node alterTable();
    void alterAdd(AlterTableStatement& alter);
    void alterDrop(AlterTableStatement& alter);
    Statement::Node columnProperty(const AlterTableStatement& alter);
    Statement::Node triggerSwitch();
    bool alterSwitch(AlterTableStatement& alter);

    // Other definitions.
    Statement::Node createStatement();
    Statement::Node alterStatement();
    Statement::Node dropStatement();
    Statement::Node dropIndex(bool ifExists);
    Statement::Node createIndex();
    void indexBody(CreateIndexStatement& index);
    CreateIndexStatement indexOfTable(const std::string& column);
    Statement::Node createType();
    Statement::Node createRule();
    std::string ruleVariable() const;
    Statement::Node createSequence();
    Statement::Node alterSequence();
    void sequenceOptions(SequenceStatement& sequence);
    bool sequenceOption(SequenceStatement& sequence, std::vector<std::string>& said);
    bool sequenceLimit(const char* word, SequenceLimit& limit, std::vector<std::string>& said);
    bool sequenceSwitch(const char* word, std::optional<bool>& choice,
                        std::vector<std::string>& said);
    void sayOnce(const char* argument, std::vector<std::string>& said) const;
    std::int64_t sequenceNumber(const char* argument);
    Statement::Node createSynonym();
    Statement::Node createSchema();
    Statement schemaElement(const std::string& schema);
    Statement::Node alterSchema();
    Statement::Node databaseStatement(DatabaseAction action);

    // Views, procedures, functions, triggers.
    enum class Making { Create, Alter, CreateOrAlter };
    bool atModule(std::size_t ahead = 0) const;
    Statement::Node module(Making making);
    Statement::Node createView(Making making);
    CreateViewStatement viewDefinition();
    CreateModuleStatement moduleOf(ModuleKind kind, Making making);
    Statement::Node createProcedure(Making making);
    Statement::Node createFunction(Making making);
    void tableFunction(CreateModuleStatement& function);
    Statement::Node createTrigger(Making making);
    std::vector<ParameterDefinition> parameterDefinitions();
    void cursorParameter(ParameterDefinition& parameter);
    void moduleOptions();
    void requireFirst(const char* what) const;
    std::shared_ptr<Script> restOfBatch();

    // Types. `owner` is the column's name, or empty outside CREATE TABLE; `ordinal` its place
    // from 1.
    TypeSpec type(const std::string& owner, int ordinal);
    // The table type whose name stands here, as the table of that name; null when it is none.
    std::shared_ptr<CreateTableStatement> tableType(const std::string& owner);
    TypeSpec sizedType(TypeSpec spec, const std::string& owner, int ordinal);
    void decimalSize(TypeSpec& spec, const std::string& owner, int ordinal);
    void fractionSize(TypeSpec& spec);
    void lengthSize(TypeSpec& spec, const std::string& owner);
    int sizeNumber();

    // Control of flow.
    Statement::Node declareStatement();
    Statement::Node declareCursor(std::string name);
    Statement::Node ifStatement();
    Statement::Node whileStatement();
    Statement::Node beginStatement();
    Statement::Node tryStatement();
    Script statementsUntilEnd();
    StatementPtr subStatement();
    void delayedDurability();
    Statement::Node returnStatement();
    Statement::Node raiserrorStatement();
    Statement::Node throwStatement();
    Statement::Node waitStatement();
    [[nodiscard]] bool isCursorVariable(const std::string& name) const;
    std::string cursorName();
    void cursorDefinition(DeclareCursorStatement& cursor);
    Statement::Node assignCursor(std::string variable);
    void cursorOptions(DeclareCursorStatement& cursor);
    void cursorOption(DeclareCursorStatement& cursor, std::vector<std::string>& said);
    void refuseCursorOption(std::string_view option, const std::vector<std::string>& said) const;
    void cursorPurpose(DeclareCursorStatement& cursor);
    Statement::Node openCursor(CursorAction action);
    Statement::Node fetchStatement();

    // Settings, and what has no meaning on one file.
    Statement::Node setStatement();
    Statement::Node setOption();
    Statement::Node backupStatement();
    Statement::Node checkIdentity();
    Statement::Node noEffect(std::string what);
    void skipStatement();

    // Calls of procedures.
    ExecuteStatement executeStatement();
    ExecuteStatement procedureCall();
    void arguments(ExecuteStatement& call);
    void callOptions(ExecuteStatement& call);
    int procedureNumber();
    ResultSets resultSets();
    ResultSetColumn resultSetColumn(int ordinal);
    Argument argument();
    ExpressionPtr argumentValue();

    // Scripts.
    [[nodiscard]] bool atStatement() const;
    Statement statement();
    Statement statementOfSeveral();
    std::optional<Statement::Node> dataStatement();
    std::optional<Statement::Node> flowStatement();
    std::optional<Statement::Node> databaseWideStatement();
    Statement::Node transactionStatement(TransactionAction action);
    [[noreturn]] void unknownStatement();

    std::string_view source_;
    const ParseOptions& options_;
    std::vector<Token> tokens_;
    std::size_t position_ = 0;
    std::vector<std::string> declared_;  // variables, so far
    std::vector<std::string> cursorVariables_;
    int nesting_ = 0;   // of the rules being read
    int oldJoins_ = 0;  // how many *= and =* were read
    int deepest_ = 0;   // depth of the deepest expression or source made in the present query
    int loops_ = 0;     // WHILE around the present statement
    int queries_ = 0;   // around the present place
    // NEXT VALUE FOR, so far: all, those without OVER, and the line of the last one.
    std::size_t draws_ = 0;
    std::size_t unorderedDraws_ = 0;
    int drawLine_ = 1;
    bool allGroups_ = false;          // of the GROUP BY that was read last
    std::size_t allGroupsWhere_ = 0;  // where the condition of a GROUP BY ALL began; 0: none
    bool inDefault_ = false;          // of a column
    bool orderRefused_ = false;       // of NEXT VALUE FOR
    bool first_ = true;               // no statement has been read
    bool inTrigger_ = false;
    bool aliasNullable_ = true;  // of the alias type that was read last
};

}  // namespace kap::tsql
