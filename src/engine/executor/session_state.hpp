#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/executor/cursors.hpp"
#include "engine/executor/program.hpp"
#include "engine/executor/standing_rows.hpp"
#include "engine/values/date_settings.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

// An error with the place that it was raised in.
struct RaisedError {
    tsql::ServerError error;
    std::string procedure;  // empty: the batch
    std::size_t level = 0;  // the number of frames that were running
    bool thrown = false;    // by THROW, which ends the batch
    bool reported = false;  // by RAISERROR, which ends nothing
    bool dooms = false;     // where it was raised it ends the transaction
};

// A trigger that is running.
struct FiringTrigger {
    std::string table;
    std::uint8_t event = 0;
    std::vector<std::string> columns;  // that an UPDATE assigns
    bool insteadOf = false;

    // An INSERT assigns every column.
    [[nodiscard]] bool assigns(std::string_view column) const {
        return event == tsql::kOnInsert ||
               std::ranges::any_of(columns,
                                   [&](const std::string& name) { return sameName(name, column); });
    }
};

// The temporary table that holds the rows of a table variable.
struct VariableTable {
    std::string name;
    std::vector<std::string> sql;  // that makes it
    TableDefinition definition;
};

// An open TRY block.
struct Handler {
    std::size_t target = 0;   // where its CATCH block begins
    std::size_t handled = 0;  // the number of errors that were being handled around it
};

// A program that is running: the values of its variables, and what is the call's own.
struct Frame {
    explicit Frame(Program& ran) : program(ran), values(ran.names().variables().size()) {}

    // The stored name of the module; empty for a batch.
    [[nodiscard]] std::string procedure() const {
        return program.module == nullptr ? std::string() : program.module->object.name;
    }

    Program& program;
    std::vector<Value> values;  // by slot
    std::optional<std::int64_t> scopeIdentity;
    std::vector<Handler> handlers;       // the innermost last
    std::vector<RaisedError> handled;    // by the CATCH blocks that are running
    std::vector<std::string> ownTables;  // temporary tables that end with it
    std::vector<VariableTable> localTables;
    Cursors cursors;  // LOCAL ones, and those of variables
    std::optional<FiringTrigger> trigger;
    std::optional<Value> returned;
    bool streams = false;      // its last query may be left standing at its rows
    bool oneByOne = false;     // it stands still behind each query, until the next is asked for
    std::size_t at = 0;        // where it goes on when it stands still; 0: it does not
    bool ended = false;        // an error in the rows of a query has ended it
    bool keepsTables = false;  // the batch of a client: its temporary tables are the connection's
};

// Where nobody has set another, and what 0 stands for.
inline constexpr std::int64_t kDefaultTextSize = 4096;

// Of SET TRANSACTION ISOLATION LEVEL, by the server's numbers. Readers see one state of the file at
// each level, and writers come one after the other: it is told, and changes nothing.
enum class IsolationLevel : std::uint8_t {
    Unspecified,
    ReadUncommitted,
    ReadCommitted,
    RepeatableRead,
    Serializable,
    Snapshot,
};

// What SET has set.
struct SessionSettings {
    IsolationLevel isolation = IsolationLevel::ReadCommitted;
    bool noCount = false;
    bool abortOnError = false;
    bool quotedNames = true;
    bool showPlan = false;  // statements are explained and not run
    DateSettings dates;
    std::int32_t lockTimeout = -1;
    std::int64_t textSize = kDefaultTextSize;
    WriteSettings writes;
};

// What a connection remembers from one statement to the next.
struct SessionState : SessionSettings {
    std::int32_t error = 0;
    std::int64_t rowCount = 0;
    std::optional<Blob> context;  // of SET CONTEXT_INFO, which outlives the procedure that says it
    // Of sp_set_session_context: a text or null for each key.
    struct ContextValue {
        Value value;
        bool readOnly = false;
    };
    std::map<std::string, ContextValue> sessionContext;
    std::optional<std::int64_t> identity;
    std::optional<std::int64_t> batchIdentity;  // of the client's batches, which are one scope
    // The numbers that the statement at hand has drawn of sequences OVER an order, by their names.
    std::map<std::string, std::vector<std::int64_t>, std::less<>> rankedNumbers;
    std::int32_t fetchStatus = 0;
    std::int32_t cursorRows = 0;  // of the cursor that was opened last; -1: not known ahead
    // What the server says behind the error that is being raised.
    std::optional<tsql::ServerError> followUp;
    std::int64_t offeredRows = 0;    // to indexes that ignore duplicates
    bool duplicatesIgnored = false;  // by the statement at hand
    bool insertingExecuted = false;  // the results of the call that is running go into a table
    // A transaction in which an error was caught that allows no more than rolling back.
    bool doomed = false;

    // What is running, the innermost last.
    std::vector<Frame*> frames;
    int openTries = 0;            // in all frames
    std::string capturing;        // the captureKey() of the table whose rows are being caught
    std::string transactionName;  // of the outermost BEGIN TRANSACTION

    // Whether the query that is run next may be left standing at its rows; and the one that was.
    bool mayStand = false;
    std::unique_ptr<StandingRows> standing;

    [[nodiscard]] Frame& frame() const { return *frames.back(); }
};

}  // namespace kap::engine
