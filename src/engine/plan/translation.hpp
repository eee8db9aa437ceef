#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/binder/constants.hpp"
#include "engine/catalog/table_definition.hpp"
#include "engine/catalog/tables.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

enum class StatementKind {
    Select,
    Assign,  // the values of its rows go into variables
    Insert,
    Update,
    Delete,
    Merge,
    Define,  // changes the schema
};

// INSERT, UPDATE, DELETE or MERGE; empty for what writes no rows.
[[nodiscard]] inline const char* verbOf(StatementKind kind) {
    switch (kind) {
        case StatementKind::Insert:
            return "INSERT";
        case StatementKind::Update:
            return "UPDATE";
        case StatementKind::Delete:
            return "DELETE";
        case StatementKind::Merge:
            return "MERGE";
        default:
            return "";
    }
}

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

// One action of a MERGE on the rows that were found for it.
struct MergeStep {
    std::uint8_t event = 0;            // a TriggerEvents
    std::string sql;                   // writes them
    std::string keep;                  // sets what was caught of them aside
    std::vector<std::string> columns;  // that an UPDATE assigns
};

// A MERGE, or an UPDATE or DELETE whose OUTPUT reads other tables: every row and its new values
// are found first, so that no action sees what another one has written.
struct MergePlan {
    std::vector<std::string> make;    // the tables of found and of written rows
    std::vector<std::string> find;    // the rows of each action
    std::string repeated;             // answers a row when a row of the target was found twice;
                                      //< empty where that is no error
    std::string limit;                // of TOP: leaves so many of the found rows; empty without
    std::vector<MergeStep> steps;     // deletes, then updates, then inserts
    std::vector<std::string> refill;  // the caught rows of one event: ?1 is the action's name
    std::vector<std::string> remove;  // the tables
};

// A statement that a trigger fires instead of.
struct InsteadPlan {
    Table shape;  // the table, or the columns of the view
    std::uint8_t event = 0;
    std::vector<std::string> columns;  // that an UPDATE assigns
    std::vector<std::string> make;     // what the rows are found with
    std::vector<std::string> fill;     // puts the rows where the trigger looks for them; the last
                                       //< one writes as many as there are
    std::vector<std::string> remove;
};

// An index to drop.
struct DroppedIndex {
    std::string name;   // in the file
    std::string shown;  // as the statement names it
    bool temporary = false;
};

// One statement of the dialect, ready for SQLite.
//
// `sql` is run in order, in one transaction; all but the last return no rows. It calls the
// functions that registerFunctions() provides and, in writes, kap_rowversion() and
// kap_identity('table'), which the session provides. Values are in storage form: see value.hpp.
struct Translation {
    StatementKind kind = StatementKind::Select;
    std::vector<std::string> sql;
    std::vector<ResultColumn> columns;  // of a Select
    bool writes = false;
    std::string table;       // the table written, in the catalogue's spelling
    bool temporary = false;  // the table written lives in SQLite's "temp" schema
    std::optional<TableDefinition> created;
    std::vector<DroppedTable> dropped;
    std::vector<DroppedIndex> dropsIndexes;
    bool fills = false;                   // `created` is filled by the last of `sql`
    bool optional = false;                // IF EXISTS: what is dropped may be missing
    std::vector<int> variables;           // their slots; see parameterOf()
    std::vector<Value> constants;         // the first parameters of `sql`
    std::vector<ConstantSource> sources;  // of the constants, one each
    std::vector<int> assigned;            // of an Assign: the slot that each column goes to
    std::optional<Capture> capture;
    std::shared_ptr<const MergePlan> merge;
    std::shared_ptr<const InsteadPlan> instead;
    // The event of what has a trigger that fires instead, which `instead` is for unless this
    // trigger is running; 0: there is none.
    std::uint8_t insteadOfEvent = 0;
    std::string relation;  // the stored name of that table or view
    int captureLevel = 0;  // of the table written, when the statement was made
    // Of a cursor: the tables whose row numbers are the last of `columns`.
    std::vector<std::string> rowTables;
    bool positioned = false;         // WHERE CURRENT OF: it must find its row
    std::optional<Value> constant;   // of an Assign of one column: its value, known already
    bool readsSchema = false;        // the text holds what the schema was when it was made
    bool ofTheMoment = false;        // the text holds what another statement may have changed
    bool ignoresDuplicates = false;  // rows that an index has already are left out
    bool drawsNumbers = false;       // of sequences: also a query writes their counters then
    int line = 1;                    // of the statement, within the script
};

}  // namespace kap::engine
