#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tsql/syntax.hpp"

// The statements of the dialect, as the parser reads them.
// length: a list of plain nodes, which is looked through as one
namespace kap::tsql {

struct Statement;
using StatementPtr = std::unique_ptr<Statement>;
using Script = std::vector<Statement>;

// --- Data

struct SelectStatement {
    QueryPtr query;
};

// A value of an INSERT row or an assignment; a null `value` is the keyword DEFAULT.
struct ValueOrDefault {
    ExpressionPtr value;
};

// OUTPUT items [INTO table (columns)].
struct OutputClause {
    std::vector<SelectItem> items;
    std::optional<ObjectName> into;
    std::vector<std::string> columns;
};

// A value for a parameter of a procedure.
struct Argument {
    std::string name;     // "@name"; empty: by position
    ExpressionPtr value;  // null: DEFAULT
    bool output = false;
};

// A column of WITH RESULT SETS.
struct ResultSetColumn {
    std::string name;
    TypeSpec type;
    bool nullable = true;
};

// WITH RESULT SETS: what a call's results are to be shown as. A set is told by its columns, or by
// an object that has such columns.
struct ResultSets {
    enum class Kind { Undefined, None, Listed };
    struct Set {
        std::vector<ResultSetColumn> columns;
        ObjectName object;  // of AS OBJECT and AS TYPE; without parts when there are `columns`
        bool isType = false;
    };
    Kind kind = Kind::Undefined;
    std::vector<Set> sets;  // of Listed
};

// EXEC procedure arguments; EXEC ('text'); EXEC sp_executesql.
struct ExecuteStatement {
    std::string resultVariable;     // of EXEC @r = p; empty when not given
    ObjectName procedure;           // without parts when `text` is given
    int number = 1;                 // of EXEC p;2
    std::string procedureVariable;  // of EXEC @name; empty when not given
    ExpressionPtr text;             // of EXEC (text)
    std::vector<Argument> arguments;
    std::optional<ResultSets> resultSets;
};

struct InsertStatement {
    std::vector<CommonTable> commonTables;
    std::optional<TopClause> top;
    ObjectName table;
    std::vector<std::string> columns;  // empty when not given
    std::optional<OutputClause> output;
    std::vector<std::vector<ValueOrDefault>> rows;  // of VALUES
    QueryPtr query;                                 // of INSERT ... SELECT
    std::unique_ptr<ExecuteStatement> execute;      // of INSERT ... EXEC
    bool defaultValues = false;
};

// column = value, @variable = value, @variable = column = value.
struct Assignment {
    ObjectName column;     // without parts when only a variable is assigned
    std::string variable;  // empty when only a column is assigned
    ValueOrDefault value;
};

struct UpdateStatement {
    std::vector<CommonTable> commonTables;
    ObjectName table;  // a table, or an alias of FROM
    std::optional<TopClause> top;
    std::vector<Assignment> assignments;
    std::optional<OutputClause> output;
    std::vector<TableSourcePtr> from;
    ExpressionPtr where;
    int maxRecursion = kMaxRecursion;  // of OPTION (MAXRECURSION n); 0 is no limit
};

struct DeleteStatement {
    std::vector<CommonTable> commonTables;
    ObjectName table;  // a table, or an alias of FROM
    std::optional<TopClause> top;
    std::optional<OutputClause> output;
    std::vector<TableSourcePtr> from;
    ExpressionPtr where;
    int maxRecursion = kMaxRecursion;  // of OPTION (MAXRECURSION n); 0 is no limit
};

// WHEN [NOT] MATCHED [BY SOURCE] [AND condition] THEN action.
struct MergeAction {
    enum class When { Matched, NotMatched, NotMatchedBySource };
    When when = When::Matched;
    ExpressionPtr condition;  // of AND; null when not given
    // What is done: a DELETE has no parts of its own. Their tables are the target's.
    std::variant<UpdateStatement, InsertStatement, DeleteStatement> action;
    int line = 1;
};

struct MergeStatement {
    std::vector<CommonTable> commonTables;
    std::optional<TopClause> top;
    ObjectName table;
    std::string alias;                   // empty when not given
    std::vector<TableSourcePtr> source;  // of USING: one
    ExpressionPtr condition;
    std::vector<MergeAction> actions;
    std::optional<OutputClause> output;
    int maxRecursion = kMaxRecursion;  // of OPTION (MAXRECURSION n); 0 is no limit
};

struct TruncateStatement {
    ObjectName table;
};

// --- Tables

struct IdentityOption {
    ExpressionPtr seed;  // null when not given
    ExpressionPtr increment;
};

struct DefaultOption {
    std::string constraintName;  // empty when not given
    ExpressionPtr value;
    std::string text;         // as written
    bool withValues = false;  // rows that are there get it, too, when the column is added
};

struct KeyConstraint {
    std::string name;  // empty when not given
    bool primary = false;
    std::vector<std::string> columns;
    bool ignoresDuplicates = false;  // WITH IGNORE_DUP_KEY
    int line = 1;
};

enum class ReferenceAction { None, Cascade, SetNull, SetDefault };

struct ForeignKey {
    std::string name;  // empty when not given
    std::vector<std::string> columns;
    ObjectName parent;
    std::vector<std::string> parentColumns;  // empty: the parent's primary key
    ReferenceAction onDelete = ReferenceAction::None;
    ReferenceAction onUpdate = ReferenceAction::None;
    int line = 1;
};

struct CheckConstraint {
    std::string name;  // empty when not given
    ExpressionPtr condition;
    std::string column;  // the column it stands behind; empty for one of the table
    std::string text;    // as written
    int line = 1;
};

struct ColumnDefinition {
    std::string name;
    TypeSpec type;
    std::optional<bool> nullable;  // absent when neither NULL nor NOT NULL is said
    std::optional<IdentityOption> identity;
    std::optional<DefaultOption> defaultValue;
    ExpressionPtr computed;    // of name AS expression
    std::string computedText;  // as written
    std::string collation;     // that COLLATE names; empty: none
    int line = 1;
};

struct IndexColumn {
    std::string name;
    bool descending = false;
};

struct CreateIndexStatement {
    std::string name;
    ObjectName table;
    bool unique = false;
    std::vector<IndexColumn> columns;
    std::vector<std::string> included;
    bool ignoresDuplicates = false;  // WITH IGNORE_DUP_KEY
    ExpressionPtr where;
    std::string whereText;  // as written
};

// What stands between the brackets of CREATE TABLE, or behind ADD.
struct TableElements {
    std::vector<ColumnDefinition> columns;
    std::vector<KeyConstraint> keys;  // of columns and of the table alike
    std::vector<ForeignKey> foreignKeys;
    std::vector<CheckConstraint> checks;
    // ADD [CONSTRAINT name] DEFAULT value FOR column: definitions without a type.
    std::vector<std::pair<std::string, DefaultOption>> defaults;
    std::vector<CreateIndexStatement> indexes;  // within CREATE TABLE, without their table's name
};

struct CreateTableStatement : TableElements {
    ObjectName table;
};

struct AlterTableStatement {
    enum class Action { Add, AlterColumn, DropColumns, DropConstraints, Constraints, Triggers };
    Action action = Action::Add;
    ObjectName table;
    TableElements added;             // of Add
    ColumnDefinition column;         // of AlterColumn
    std::vector<std::string> names;  // of the columns, constraints or triggers; empty: ALL
    bool enable = true;              // of Constraints and Triggers
    bool withCheck = false;          // the rows that are there must hold to a constraint that is
                                     //< switched on again
    bool withoutCheck = false;       // ... need not hold to one that is added
    bool ifExists = false;
};

// --- Views, procedures, functions, triggers: their text is kept as it was written

struct CreateViewStatement {
    ObjectName name;
    std::vector<std::string> columns;
    QueryPtr query;
    std::string text;
    bool replace = false;  // ALTER, or CREATE OR ALTER
    bool mustExist = false;
    bool checksRows = false;  // WITH CHECK OPTION
};

struct ParameterDefinition {
    std::string name;  // with its @
    TypeSpec type;
    ExpressionPtr defaultValue;  // null when not given
    bool output = false;
    std::shared_ptr<const CreateTableStatement> table;  // of a table-valued one, under its name
    bool readOnly = false;
    bool cursor = false;  // CURSOR VARYING OUTPUT
};

enum class ModuleKind { Procedure, Function, Trigger };

// What a trigger is fired by, as bits.
using TriggerEvents = std::uint8_t;
inline constexpr TriggerEvents kOnInsert = 1;
inline constexpr TriggerEvents kOnUpdate = 2;
inline constexpr TriggerEvents kOnDelete = 4;

// A stored procedure, a function or a trigger.
struct CreateModuleStatement {
    ModuleKind kind = ModuleKind::Procedure;
    ObjectName name;
    int number = 1;  // of CREATE PROCEDURE p;2
    std::vector<ParameterDefinition> parameters;
    TypeSpec returns;                                         // of a scalar function
    std::shared_ptr<const Query> rows;                        // of RETURNS TABLE AS RETURN query
    std::shared_ptr<const CreateTableStatement> returnTable;  // of RETURNS @name TABLE (...)
    ObjectName table;                                         // of a trigger
    TriggerEvents events = 0;                                 // of a trigger
    bool insteadOf = false;                                   // of a trigger
    std::shared_ptr<Script> body;                             // null when there are `rows`
    std::string text;
    bool replace = false;
    bool mustExist = false;
};

enum class ObjectKind {
    Table,
    View,
    Procedure,
    Function,
    Trigger,
    Index,
    Type,
    Schema,
    Sequence,
    Synonym,
    Default,
    Rule,
};

struct DropStatement {
    ObjectKind kind = ObjectKind::Table;
    std::vector<ObjectName> names;  // an index: table.index
    bool ifExists = false;
};

// CREATE SCHEMA name with what is made in it at once: tables and views, whose names have the schema
// before them.
struct CreateSchemaStatement {
    std::string name;
    Script elements;
};

// ALTER SCHEMA name TRANSFER object.
struct AlterSchemaStatement {
    std::string schema;
    ObjectName object;
    bool isType = false;
};

// CREATE TYPE name FROM type; CREATE TYPE name AS TABLE (...).
struct CreateTypeStatement {
    ObjectName name;
    TypeSpec type;
    std::optional<bool> nullable;
    std::shared_ptr<const CreateTableStatement> table;  // null for a name of another type
    std::string tableText;                              // its columns with the brackets, as written
};

// MINVALUE 1, NO MINVALUE.
struct SequenceLimit {
    std::optional<std::int64_t> value;
    bool none = false;  // it is that of the type
};

// CREATE SEQUENCE and ALTER SEQUENCE: what is not said has no value.
struct SequenceStatement {
    ObjectName name;
    bool alters = false;
    std::optional<TypeSpec> type;
    std::optional<std::int64_t> start;  // of START WITH and RESTART WITH
    bool restarts = false;
    std::optional<std::int64_t> increment;
    SequenceLimit minimum;
    SequenceLimit maximum;
    std::optional<bool> cycles;
    std::optional<bool> caches;
    std::optional<std::int64_t> cacheSize;
};

// CREATE SYNONYM name FOR object.
struct CreateSynonymStatement {
    ObjectName name;
    ObjectName target;
};

// CREATE DEFAULT name AS value, CREATE RULE name AS condition of one variable: what sp_bindefault
// and sp_bindrule give to columns and types.
struct CreateRuleStatement {
    ObjectName name;
    bool isDefault = false;
    std::string text;  // of the value or the condition, as written
};

// --- Variables and control of flow

struct DeclaredVariable {
    std::string name;
    TypeSpec type;
    ExpressionPtr initial;  // null when not given
    int line = 1;
};

struct DeclareStatement {
    std::vector<DeclaredVariable> variables;
    std::vector<CreateTableStatement> tables;  // their names start with @
    std::vector<std::string> cursors;          // variables that hold cursors
};

// SET @variable = value.
struct AssignStatement {
    std::string variable;
    ExpressionPtr value;
};

// SET option ON.
struct SetOptionStatement {
    std::vector<std::string> options;  // in upper case
    std::string value;                 // a word in upper case, or a number or a text
    ExpressionPtr number;              // of SET ROWCOUNT @n, SET CONTEXT_INFO 0x01
    ObjectName table;                  // of IDENTITY_INSERT
};

struct IfStatement {
    ExpressionPtr condition;
    StatementPtr then;
    StatementPtr otherwise;  // null when not given
};

struct WhileStatement {
    ExpressionPtr condition;
    StatementPtr body;
};

struct BlockStatement {
    Script statements;
};

struct TryStatement {
    Script body;
    Script handler;
};

struct BreakStatement {};
struct ContinueStatement {};

struct GotoStatement {
    std::string label;
};

struct LabelStatement {
    std::string label;
};

struct ReturnStatement {
    ExpressionPtr value;  // null when not given
};

struct PrintStatement {
    ExpressionPtr value;
};

struct RaiserrorStatement {
    ExpressionPtr message;  // a text or a number
    ExpressionPtr severity;
    ExpressionPtr state;
    std::vector<ExpressionPtr> arguments;
    bool setError = false;
};

struct ThrowStatement {
    ExpressionPtr number;  // null: the error that is being handled
    ExpressionPtr message;
    ExpressionPtr state;
};

struct WaitStatement {
    ExpressionPtr time;
    bool until = false;  // WAITFOR TIME
};

enum class TransactionAction { Begin, Commit, Rollback, Save };

struct TransactionStatement {
    TransactionAction action;
    std::string name;      // empty when not given
    std::string variable;  // that holds the name; empty when not given
};

// --- Cursors

enum class CursorKind { Unsaid, Static, Keyset, Dynamic, FastForward };

struct DeclareCursorStatement {
    std::string name;  // of a variable when it starts with @
    CursorKind kind = CursorKind::Unsaid;
    bool scroll = false;
    bool local = false;     // it ends with the batch or module that declares it
    bool readOnly = false;  // READ_ONLY, STATIC, INSENSITIVE, FAST_FORWARD, FOR READ ONLY
    std::vector<std::string> updatable;  // of FOR UPDATE OF; empty: all columns
    std::shared_ptr<Statement> query;    // a SelectStatement
};

// SET @cursor = CURSOR FOR query; SET @cursor = another one.
struct AssignCursorStatement {
    std::string variable;
    std::string source;  // a cursor or a variable; empty when there is a definition
    std::shared_ptr<DeclareCursorStatement> definition;
};

enum class CursorAction { Open, Close, Deallocate };

struct CursorStatement {
    CursorAction action;
    std::string name;  // of a variable when it starts with @
    bool global = false;
};

struct FetchStatement {
    enum class Direction { Next, Prior, First, Last, Absolute, Relative };
    Direction direction = Direction::Next;
    ExpressionPtr distance;  // of ABSOLUTE and RELATIVE
    std::string cursor;      // a variable when it starts with @
    bool global = false;
    std::vector<std::string> into;
};

// --- The database

enum class DatabaseAction { Use, Create, Alter, Drop };

// USE, CREATE DATABASE...: there is one database in a file.
struct DatabaseStatement {
    DatabaseAction action;
    std::string name;
};

// BACKUP DATABASE name TO DISK = 'file'.
struct BackupStatement {
    ExpressionPtr file;
    bool replace = false;  // WITH INIT or FORMAT
};

// DBCC CHECKDB.
struct CheckStatement {};

// BULK INSERT table FROM 'file' WITH (options).
struct BulkInsertStatement {
    ObjectName table;
    std::string file;
    std::string fieldTerminator = "\t";
    std::string rowTerminator = "\n";
    std::string codePage;   // in upper case; empty: what the file shows
    bool wideText = false;  // UTF-16
    char quote = '\0';      // around fields of CSV
    std::int64_t firstRow = 1;
    std::int64_t lastRow = 0;  // 0: the last one of the file
    std::int64_t maxErrors = 10;
    std::int64_t batchSize = 0;  // rows of one transaction; 0: all of them
    std::string formatFile;      // empty: each column of the table is a field
    bool keepsNulls = false;
    bool keepsIdentity = false;
    bool firesTriggers = false;
};

// DBCC USEROPTIONS.
struct ShowOptionsStatement {};

// DBCC CHECKIDENT (table [, NORESEED | RESEED [, value]]).
struct CheckIdentityStatement {
    ObjectName table;
    bool reseeds = true;   // not NORESEED
    ExpressionPtr value;   // the new one; null when not given
    bool quietly = false;  // WITH NO_INFOMSGS
};

// A statement without meaning on one file: it is taken, and says so.
struct NoEffectStatement {
    std::string what;
};

struct Statement {
    using Node = std::variant<
        SelectStatement, InsertStatement, UpdateStatement, DeleteStatement, MergeStatement,
        TruncateStatement, CreateTableStatement, AlterTableStatement, CreateIndexStatement,
        CreateViewStatement, CreateModuleStatement, DropStatement, CreateSchemaStatement,
        AlterSchemaStatement, CreateTypeStatement, CreateRuleStatement, SequenceStatement,
        CreateSynonymStatement, DeclareStatement, AssignStatement, SetOptionStatement, IfStatement,
        WhileStatement, BlockStatement, TryStatement, BreakStatement, ContinueStatement,
        GotoStatement, LabelStatement, ReturnStatement, PrintStatement, RaiserrorStatement,
        ThrowStatement, WaitStatement, TransactionStatement, ExecuteStatement,
        DeclareCursorStatement, AssignCursorStatement, CursorStatement, FetchStatement,
        DatabaseStatement, BackupStatement, CheckStatement, BulkInsertStatement,
        ShowOptionsStatement, CheckIdentityStatement, NoEffectStatement>;
    Node node;
    int line = 1;
};

}  // namespace kap::tsql
