#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "engine/binder/constants.hpp"
#include "engine/catalog/table_definition.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/server_errors.hpp"
#include "tsql/type_spec.hpp"

// What SQLite is to run for one statement of the dialect.
//
// There is a plan for each kind of statement, which holds what that kind needs and nothing else.
// Texts call the functions that registerFunctions() provides and, in writes, kap_rowversion() and
// kap_identity('table'), which the session provides. Values are in storage form: see value.hpp.
namespace kap::engine {

// What a result says about one of its columns.
struct ResultColumn {
    std::string name;  // empty for an expression without alias
    tsql::TypeSpec type;
    bool nullable = true;
    std::string baseTable;   // empty for an expression
    std::string baseColumn;  // empty for an expression
    bool key = false;        // part of the base table's primary key
    bool identity = false;
    bool rowVersion = false;
    bool computed = false;  // from other columns of the row
};

// A query that answers rows.
struct QueryPlan {
    std::string sql;
    std::vector<ResultColumn> columns;
    // Of a cursor: the tables whose row numbers are the last of `columns`.
    std::vector<std::string> rowTables;
};

// SELECT @a = ..., @b = ...: the values of its rows go into variables.
struct AssignmentPlan {
    struct Target {
        int slot = 0;  // of the variable
        tsql::TypeSpec type;
    };
    std::string sql;
    std::vector<Target> targets;  // one for each column of the rows
};

enum class Verb : std::uint8_t { Insert, Update, Delete, Merge };

// What a statement writes.
struct WriteTarget {
    std::string table;       // in the catalogue's spelling; a view of a trigger that fires instead
    bool temporary = false;  // it lives in SQLite's "temp" schema
    int firingLevel = 0;     // how often its triggers were running when the plan was made
    // The event of what has a trigger that fires instead of the statement unless this trigger is
    // running; 0: there is none.
    std::uint8_t insteadOfEvent = 0;
    std::string relation;  // the stored name of that table or view
};

// What a write does beside writing: its rows are caught for triggers and for OUTPUT.
struct Capture {
    bool forTriggers = false;
    std::uint8_t event = 0;             // a TriggerEvents
    std::string outputSql;              // reads the rows of OUTPUT; empty: none
    bool outputInto = false;            // `outputSql` writes them into a table
    std::vector<ResultColumn> columns;  // of OUTPUT without INTO
    // Each answers a row when something written does not show in a view that wants it to.
    std::vector<std::string> checks;
};

// An INSERT, UPDATE or DELETE in one text.
struct WritePlan {
    Verb verb = Verb::Insert;
    WriteTarget target;
    std::string sql;
    std::optional<Capture> capture;
    std::vector<std::string> columns;  // that an UPDATE assigns
    bool ignoresDuplicates = false;    // rows that an index has already are left out
    bool positioned = false;           // WHERE CURRENT OF: it must find its row
};

// One action of a MERGE on the rows that were found for it.
struct MergeStep {
    std::uint8_t event = 0;            // a TriggerEvents
    std::string sql;                   // writes them
    std::string keep;                  // sets what was caught of them aside
    std::vector<std::string> columns;  // that an UPDATE assigns
};

// Triggers that fire instead of the actions of one kind.
struct MergeFiring {
    std::uint8_t event = 0;            // a TriggerEvents
    std::vector<std::string> fill;     // puts the rows where the triggers look for them
    std::vector<std::string> columns;  // that an UPDATE assigns
};

// A MERGE, or an UPDATE or DELETE whose OUTPUT reads other tables: every row and its new values
// are found first, so that no action sees what another one has written.
struct MergePlan {
    Verb verb = Verb::Merge;
    WriteTarget target;
    std::optional<Capture> capture;
    bool positioned = false;          // as of a WritePlan
    std::vector<std::string> make;    // the tables of found and of written rows
    std::vector<std::string> find;    // the rows of each action
    std::string repeated;             // answers a row when a row of the target was found twice;
                                      //< empty where that is no error
    std::string limit;                // of TOP: leaves so many of the found rows; empty without
    std::vector<MergeStep> steps;     // deletes, then updates, then inserts
    std::vector<std::string> refill;  // the caught rows of one event: ?1 is the action's name
    std::vector<std::string> remove;  // the tables
    // Where triggers fire instead there are no steps; they see rows of this form.
    std::vector<MergeFiring> firings;
    Table shape;
};

// A statement that a trigger fires instead of.
struct InsteadPlan {
    Verb verb = Verb::Insert;
    WriteTarget target;
    Table shape;                       // the table, or the columns of the view
    std::vector<std::string> columns;  // that an UPDATE assigns
    std::vector<std::string> make;     // what the rows are found with
    std::vector<std::string> fill;     // puts the rows where the trigger looks for them; the last
                                       //< one writes as many as there are
    std::vector<std::string> remove;
};

// CREATE TABLE. Each text is prepared when the one before it has been run.
struct CreateTablePlan {
    TableDefinition created;
    std::vector<std::string> sql;
};

// SELECT ... INTO makes a table and fills it.
struct SelectIntoPlan {
    CreateTablePlan table;
    std::string fill;
};

struct CreateIndexPlan {
    std::string table;
    bool temporary = false;
    std::string index;             // as the statement names it
    std::vector<std::string> sql;  // the index, and the one beside it over nulls
};

struct DropTablesPlan {
    std::vector<DroppedTable> dropped;
    std::vector<std::string> sql;
};

// An index to drop.
struct DroppedIndex {
    std::string table;  // that it belongs to
    std::string name;   // in the file
    std::string shown;  // as the statement names it
    bool temporary = false;
};

struct DropIndexesPlan {
    std::vector<DroppedIndex> dropped;
    bool optional = false;  // IF EXISTS: what is dropped may be missing
    std::vector<std::string> sql;
};

// All rows of a table go, and its identity begins anew.
struct TruncatePlan {
    std::string table;
    bool temporary = false;
    std::vector<std::string> sql;
};

// One statement, ready for SQLite. Who works on plans visits them with a case for each kind, so
// that a kind which somebody has forgotten does not compile.
struct StatementPlan {
    using Kind = std::variant<QueryPlan, AssignmentPlan, WritePlan, MergePlan, InsteadPlan,
                              CreateTablePlan, SelectIntoPlan, CreateIndexPlan, DropTablesPlan,
                              DropIndexesPlan, TruncatePlan>;
    Kind kind;
    BoundValues values;
};

// The value of an expression of a script, or whether a condition holds.
struct ValuePlan {
    tsql::TypeSpec type;
    std::optional<Value> constant;  // known already; else `sql` answers it
    std::string sql;
    BoundValues values;
};

// An UPDATE that looks at keys only when all rows have their new values.
struct SteppedUpdatePlan {
    std::string pack;          // packs the new values into the rows (kap_pack)
    std::string unpackCaught;  // unpacks them in the rows that a capture holds
    std::string unpack;        // and in the table
    BoundValues values;
};

// INSERT, UPDATE, DELETE or MERGE.
[[nodiscard]] const char* nameOf(Verb verb);
// What a failure of the statement is told with.
[[nodiscard]] WriteContext contextOf(const StatementPlan& plan);

}  // namespace kap::engine
