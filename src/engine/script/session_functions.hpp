#pragma once

#include <deque>
#include <string>
#include <vector>

#include "engine/binder/system_values.hpp"
#include "engine/executor/engine_context.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/file_connection.hpp"

struct sqlite3_context;
struct sqlite3_value;

namespace kap::engine {

// The SQL functions by which translated statements ask their session: kap_system for what it tells
// of itself, kap_variable and kap_assign for variables that change from row to row, kap_call for
// stored functions, kap_capturing for the triggers that catch written rows, kap_current_row for the
// row of a cursor, kap_next_value and its kin for the numbers of sequences, kap_offered for
// rows that an index may leave out.
class SessionFunctions {
public:
    SessionFunctions(const EngineContext& engine, ScriptRunner& scripts);
    SessionFunctions(const SessionFunctions&) = delete;
    SessionFunctions& operator=(const SessionFunctions&) = delete;

private:
    using Arguments = std::vector<Value>;
    using Member = Value (SessionFunctions::*)(const Arguments&);

    struct Entry {
        SessionFunctions* self;
        Member member;
    };

    // Functions of one member: SQLite lets the definition of a computed column call those only that
    // it believes to be `steady`.
    void provide(const char* name, int count, Member member, bool steady = false);
    static void called(sqlite3_context* context, int count, sqlite3_value** values);

    [[nodiscard]] Value system(const Arguments& arguments);
    [[nodiscard]] Value variable(const Arguments& arguments);
    [[nodiscard]] Value assign(const Arguments& arguments);
    [[nodiscard]] Value first(const Arguments& arguments);
    [[nodiscard]] Value offered(const Arguments& arguments);
    [[nodiscard]] Value call(const Arguments& arguments);
    [[nodiscard]] Value capturing(const Arguments& arguments);
    [[nodiscard]] Value currentRow(const Arguments& arguments);
    // session_files.cpp
    void provideFiles();
    [[nodiscard]] Value wholeFile(const Arguments& arguments);
    // session_sequences.cpp
    void provideSequences();
    [[nodiscard]] Value nextValue(const Arguments& arguments);
    [[nodiscard]] Value sameValue(const Arguments& arguments);
    [[nodiscard]] Value rankedValue(const Arguments& arguments);
    [[nodiscard]] const Sequence& sequence(const std::string& name) const;
    [[nodiscard]] GivenRows rowsBy(const std::string& function, const Arguments& arguments);
    [[nodiscard]] static GivenRows rowsOfJson(const Arguments& arguments);

    // What kap_system answers, by groups.
    [[nodiscard]] Value ofStatement(SystemValue value, const Arguments& arguments);
    [[nodiscard]] Value ofError(SystemValue value) const;
    [[nodiscard]] std::int64_t options() const;
    [[nodiscard]] Value ofServer(SystemValue value, const Arguments& arguments) const;
    [[nodiscard]] Value nameOfObject(std::int64_t id) const;
    [[nodiscard]] Value ofSchema(SystemValue value, const Arguments& arguments) const;
    // session_names.cpp
    [[nodiscard]] Value ofNames(SystemValue value, const Arguments& arguments) const;
    [[nodiscard]] Value triggerLevel(std::optional<std::int64_t> id) const;
    [[nodiscard]] Value schemaNumber(const std::string& name) const;
    [[nodiscard]] Value schemaName(std::int64_t id) const;
    // session_locks.cpp
    [[nodiscard]] Value ofLocks(SystemValue value, const Arguments& arguments) const;
    // session_properties.cpp
    [[nodiscard]] Value ofProperties(SystemValue value, const Arguments& arguments) const;
    [[nodiscard]] Value sessionProperty(const std::string& property) const;
    [[nodiscard]] Value columnsUpdated() const;
    [[nodiscard]] const FiringTrigger& firingTrigger(const char* asked) const;
    [[nodiscard]] Value columnUpdated(const std::string& column) const;

    FileConnection& connection_;
    SchemaCatalogue& catalogue_;
    Counters& counters_;
    Transactions& transactions_;
    SessionState& state_;
    ScriptRunner& scripts_;
    std::deque<Entry> entries_;  // SQLite keeps the addresses
};

}  // namespace kap::engine
