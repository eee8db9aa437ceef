#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/lru_cache.hpp"
#include "data/driver.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/executor/application_locks.hpp"
#include "engine/executor/cursors.hpp"
#include "engine/executor/engine_context.hpp"
#include "engine/executor/execution_context.hpp"
#include "engine/executor/program.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/executor/statement_runner.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/script/simple_values.hpp"
#include "engine/script/statement_shapes.hpp"
#include "engine/sqlite/file_connection.hpp"
#include "engine/sqlite/journal_watch.hpp"
#include "engine/sqlite/row_functions.hpp"
#include "engine/sqlite/server_errors.hpp"
#include "tsql/script_reader.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

class RowStream;
class ScriptRest;

// Runs scripts of the dialect: reads them, lays them out as programs, follows their flow, and keeps
// what it has made by the script's text, so that running a script again costs little more than
// running prepared SQL.
//
// One class, a file for each part: script_runner.cpp requests and the flow, script_ahead.cpp what
// is looked at before a script begins, script_reading.cpp which statements are known by their
// shapes, script_errors.cpp what errors do, script_dispatch.cpp which part runs which statement,
// script_statements.cpp variables, messages and transactions,
// script_settings.cpp SET, script_calls.cpp procedures and dynamic SQL, script_procedures.cpp
// temporary and numbered ones, script_result_sets.cpp WITH RESULT SETS, script_insert_exec.cpp
// INSERT ... EXEC, system_procedures.cpp the server's own, script_modules.cpp functions and
// triggers, script_definitions.cpp what is stored by its text, script_schemas.cpp schemas,
// script_sequences.cpp sequences and synonyms, script_cursors.cpp cursors, script_streaming.cpp
// queries whose rows come as they are needed, script_administration.cpp plans, copies and checks,
// script_space.cpp what is in how much of the file.
class ScriptRunner final : public TriggerHost {
public:
    explicit ScriptRunner(const EngineContext& engine);

    ~ScriptRunner() override;

    // Raises DriverError with every message when one of them is an error.
    void run(ado::Request& request, ado::Reply& reply);

    // Before anything else is done on the connection: takes the rest of a query that stands at its
    // rows, and of its script, into memory. Raises DriverError when that has undone the open
    // transaction.
    void makeWay();
    // The connection ends, and with it such a query.
    void dropStanding();
    [[nodiscard]] JournalWatch& journal() noexcept { return journal_; }
    // Runs `work`, which goes on with such a query, as its request did, and gives the error that it
    // ended with. `undone`: that has undone the open transaction.
    [[nodiscard]] std::optional<ado::DriverError> during(Frame& frame, std::chrono::seconds timeout,
                                                         bool& undone,
                                                         const std::function<void()>& work);
    // So many rows it has had.
    void finishedStanding(std::int64_t count) noexcept;
    // Lets a script that stands still go on to its next query, or to its end, once it has passed
    // over the rows of the one before.
    void goOn(const std::shared_ptr<Program>& program, const std::shared_ptr<Frame>& frame,
              std::chrono::seconds timeout, std::vector<ado::Result>& results,
              std::vector<ado::ServerMessage>& messages);
    [[nodiscard]] bool inTransaction() const { return transactions_.depth() > 0; }

    // Calls a stored function with values of its parameters' types.
    [[nodiscard]] Value call(std::string_view function, std::vector<Value> arguments);
    // The rows of one that fills a table.
    [[nodiscard]] GivenRows rowsOf(std::string_view function, std::vector<Value> arguments);
    void fire(const Table& table, const FiringTrigger& trigger,
              std::vector<ado::Result>& results) override;
    std::string ownerOfGlobalTables() override;
    // For a change that is no statement of a script: catches its rows and fires triggers.
    [[nodiscard]] ExecutionContext& execution() noexcept { return execution_; }
    // Runs `work`, which may fire triggers, as a request of its own, and collects what is reported.
    // False when it ended before its end.
    template <typename Work>
    [[nodiscard]] bool collect(std::vector<ado::ServerMessage>& messages, const Work& work) {
        const Restored before(messages_);
        messages_ = &messages;
        try {
            work();
            return true;
        } catch (const RaisedError& raised) {
            report(raised);
        } catch (const tsql::ServerError& error) {
            report(error);
        } catch (const BatchEnded& ended) {
            if (ended.interrupted) messages.push_back(interruption());
        } catch (const ScopeEnded&) {
        }
        if (state_.doomed) rollBackAll();
        return false;
    }
    // Why what was running has been interrupted.
    [[nodiscard]] ado::ServerMessage interruption() const {
        return connection_.cancelled() ? cancelMessage() : timeoutMessage();
    }
    // Raises DriverError with all messages when one of them is an error.
    static void raiseIfFailed(const std::vector<ado::ServerMessage>& messages);

    // The cursor that a name means in what is running, or null.
    [[nodiscard]] const Cursor* findCursor(const std::string& name) const;
    // The locks that applications take by name.
    [[nodiscard]] ApplicationLocks& applicationLocks() noexcept { return applicationLocks_; }
    // What CURSOR_STATUS('local', name) tells.
    [[nodiscard]] std::int64_t cursorStatus(std::string_view kind, const std::string& name) const;
    // The number of the row of a table on which a cursor stands, for a statement that writes these
    // columns. Errors 16916, 16917, 16929, 16931, 16932 and 16933.
    [[nodiscard]] Value currentRow(const std::string& name, const std::string& table,
                                   const std::vector<std::string>& written) const;

private:
    // Ends everything that was sent; what happened is among the messages.
    struct BatchEnded {
        bool interrupted = false;  // by the time limit, which nothing has told yet
    };
    // Ends the batch, procedure or trigger that is running.
    struct ScopeEnded {};

    // Counts a program as running for as long as it lives, and ends what is the call's own.
    class Running;
    // Which member runs which statement.
    class Dispatch;

    // script_runner.cpp
    // Runs `work` as a request does, within its time, and collects what is reported.
    template <typename Work>
    void asRequest(std::chrono::seconds timeout, std::vector<ado::ServerMessage>& messages,
                   const Work& work);
    void runRequest(ado::Request& request, ado::Reply& reply);
    void runProcedure(ado::Request& request, ado::Reply& reply);
    [[nodiscard]] std::shared_ptr<Program> programOf(
        std::string_view script, const std::vector<tsql::DeclaredVariable>& parameters);
    // `level` is that of the rows that a trigger looks at.
    [[nodiscard]] std::shared_ptr<Program> programOf(const std::shared_ptr<const Module>& module,
                                                     int level = 0);
    void runFrame(Frame& frame, std::vector<ado::Result>& results);
    // The same with what is done before the first statement and behind the last one.
    void runFrame(Frame& frame, std::vector<ado::Result>& results,
                  const std::function<void()>& before, const std::function<void()>& behind);
    // script_modules.cpp
    void runFunction(Frame& frame, const std::function<void()>& before,
                     const std::function<void()>& behind);
    [[nodiscard]] GivenRows rowsOfVariable(const Frame& frame, const std::string& name);
    [[nodiscard]] std::size_t step(Frame& frame, std::size_t at, std::vector<ado::Result>& results);
    void finishRequest(std::vector<ado::ServerMessage>& messages);

    // script_dispatch.cpp
    // Gives the place to go on at.
    [[nodiscard]] std::size_t runStatement(Frame& frame, Instruction& instruction, std::size_t at,
                                           std::vector<ado::Result>& results);
    void runPlanned(Frame& frame, Instruction& instruction, std::vector<ado::Result>& results);
    void returnValue(Frame& frame, Instruction& instruction, const tsql::ReturnStatement& node);

    // script_reading.cpp
    [[nodiscard]] ReadScript read(std::string_view script, const tsql::ParseOptions& options);
    [[nodiscard]] std::optional<StatementShapes::Found> recognise(tsql::ScriptReader& reader,
                                                                  tsql::Script& parsed);
    [[nodiscard]] std::shared_ptr<const StatementShape> learn(std::span<const tsql::Token> tokens,
                                                              std::size_t first,
                                                              tsql::Statement& statement);

    // script_streaming.cpp
    [[nodiscard]] bool mayStream(const ado::Request& request, Program& program) const;
    [[nodiscard]] static bool mayStopBetween(const ado::Request& request, Program& program);
    [[nodiscard]] bool mayBeLeft(const Frame& frame) const;
    void leave(const std::shared_ptr<Program>& program, const std::shared_ptr<Frame>& frame,
               ado::Reply& reply, std::chrono::seconds timeout);
    void leaveStanding(const std::shared_ptr<Program>& program, const std::shared_ptr<Frame>& frame,
                       ado::Result& result, std::chrono::seconds timeout);

    // script_ahead.cpp
    void checkAhead(Program& program);
    void checkColumns(const tsql::CreateModuleStatement& node, const std::string& name,
                      const std::string& table);
    void checkAhead(Instruction& instruction, const NameScope& names);

    // script_errors.cpp
    [[nodiscard]] RaisedError raisedBy(const tsql::ServerError& error, int line) const;
    [[nodiscard]] RaisedError raisedBy(const SqliteError& error, const Instruction& instruction);
    [[nodiscard]] std::size_t handle(Frame& frame, const RaisedError& raised, std::size_t at);
    [[nodiscard]] tsql::ErrorReach reachOfRaised(const RaisedError& raised) const;
    void leave(Frame& frame, const LeftBlocks& blocks);
    [[nodiscard]] std::optional<tsql::ServerError> takeFollowUp(int number);
    void report(const RaisedError& raised);
    void report(const tsql::ServerError& message);
    [[nodiscard]] tsql::ServerError databaseFileChanged() const;
    void rollBackAll();
    void rollBackWithoutMemory() noexcept;

    // script_statements.cpp
    [[nodiscard]] SystemNumbers systemNumbers() const;
    [[nodiscard]] Value evaluate(Frame& frame, Instruction& instruction, std::size_t part,
                                 const tsql::Expression& expression, const tsql::TypeSpec& type);
    [[nodiscard]] Value evaluateAny(Frame& frame, Instruction& instruction, std::size_t part,
                                    const tsql::Expression& expression, tsql::TypeSpec& type);
    [[nodiscard]] std::string textOf(Frame& frame, Instruction& instruction, std::size_t part,
                                     const tsql::Expression& expression);
    [[nodiscard]] bool test(Frame& frame, Instruction& instruction);
    void declareVariables(Frame& frame, Instruction& instruction,
                          const tsql::DeclareStatement& node);
    void declareTable(Frame& frame, const tsql::CreateTableStatement& table);
    [[nodiscard]] bool hasTemporaryTable(const std::string& stored);
    // Gives a called program a table that it may only read: the rows of the caller's variable, or
    // none.
    void giveTable(const Frame& frame, const tsql::Argument* argument,
                   const tsql::CreateTableStatement& table, Frame& called, int line);
    void assign(Frame& frame, Instruction& instruction, const tsql::AssignStatement& node);
    // script_settings.cpp
    void setOption(Frame& frame, Instruction& instruction, const tsql::SetOptionStatement& node);
    void setContext(const Value& value);
    void setIdentityInsert(const NameScope& names, const tsql::SetOptionStatement& node, int line);
    void setNumber(const std::string& option, std::int64_t number, int line);
    void setSwitch(const std::string& option, bool on, int line);
    void print(Frame& frame, Instruction& instruction, const tsql::PrintStatement& node);
    void raiseError(Frame& frame, Instruction& instruction, const tsql::RaiserrorStatement& node);
    void throwError(Frame& frame, Instruction& instruction, const tsql::ThrowStatement& node);
    void wait(Frame& frame, Instruction& instruction, const tsql::WaitStatement& node);
    void transaction(Frame& frame, const tsql::TransactionStatement& node);
    void rollBack(const std::string& name);
    void database(const tsql::DatabaseStatement& node, int line);
    void note(const std::string& text);
    void tellIgnored(int line);

    // script_calls.cpp
    void execute(Frame& frame, Instruction& instruction, const tsql::ExecuteStatement& node,
                 std::vector<ado::Result>& results);
    void executeCall(Frame& frame, Instruction& instruction, const tsql::ExecuteStatement& node,
                     std::vector<ado::Result>& results);
    // script_result_sets.cpp
    [[nodiscard]] std::vector<std::vector<ResultColumn>> promised(const tsql::ResultSets& sets,
                                                                  const Frame& frame, int line);
    void keepPromise(const std::vector<std::vector<ResultColumn>>& promised,
                     std::vector<ado::Result>& given, int line) const;
    // script_insert_exec.cpp
    void insertExecuted(Frame& frame, Instruction& instruction, const tsql::InsertStatement& node,
                        std::vector<ado::Result>& results);
    [[nodiscard]] std::int64_t mostRows(Frame& frame, Instruction& instruction,
                                        const tsql::InsertStatement& node);
    void insertRows(Frame& frame, const tsql::InsertStatement& node,
                    std::span<const ado::Result* const> given, std::int64_t most,
                    std::vector<ado::Result>& results);
    void executeText(const std::string& text, int line, std::vector<ado::Result>& results);
    [[nodiscard]] tsql::ObjectName procedureName(Frame& frame, Instruction& instruction,
                                                 const tsql::ExecuteStatement& node);
    // Error 266 when another number of transactions is open now.
    void requireDepth(int before, int line) const;
    void executeModule(Frame& frame, Instruction& instruction, const tsql::ExecuteStatement& node,
                       const std::shared_ptr<const Module>& module,
                       std::vector<ado::Result>& results);
    [[nodiscard]] Value argumentValue(Frame& frame, Instruction& instruction, std::size_t part,
                                      const tsql::Expression& value, const tsql::TypeSpec& type);
    void bindArguments(Frame& frame, Instruction& instruction, const tsql::ExecuteStatement& node,
                       const Module& module, Frame& called);
    void runCalled(Frame& called, std::vector<ado::Result>& results);
    void setVariable(Frame& frame, const std::string& name, const Value& value,
                     const tsql::TypeSpec& type, int line);

    // system_procedures.cpp
    // `name` is in lower case. False when it is none of those that are here.
    [[nodiscard]] bool executeSystem(Frame& frame, Instruction& instruction,
                                     const tsql::ExecuteStatement& node, const std::string& name,
                                     std::vector<ado::Result>& results);
    void executeSql(Frame& frame, Instruction& instruction, const tsql::ExecuteStatement& node,
                    std::vector<ado::Result>& results);
    [[nodiscard]] std::vector<std::string> textArguments(Frame& frame, Instruction& instruction,
                                                         const tsql::ExecuteStatement& node);
    void addType(const std::vector<std::string>& arguments, int line);
    void dropType(const std::vector<std::string>& arguments, int line);
    void renameObject(const std::vector<std::string>& arguments, int line);
    void renameByName(const tsql::ObjectName& name, const std::string& object,
                      const std::string& newName, int line);
    void renameStored(StoredKind kind, const std::string& stored, const std::string& object,
                      const std::string& newName, int line);
    void refuseRename(const Table& table, const std::string& object, int line);
    // script_space.cpp
    void spaceUsed(const std::vector<std::string>& arguments, int line,
                   std::vector<ado::Result>& results);
    void spaceOfTable(const std::string& name, int line, std::vector<ado::Result>& results);
    void helpText(const std::vector<std::string>& arguments, int line,
                  std::vector<ado::Result>& results);

    // trigger_procedures.cpp
    void setDatabaseSetting(std::string_view setting, bool on);
    // script_compatibility.cpp
    void setCompatibilityLevel(const std::string& text, int line);
    void compatibilityLevel(const std::vector<std::string>& arguments, int line);
    // False when it says nothing of triggers.
    [[nodiscard]] bool configureTriggers(const std::string& procedure,
                                         const std::vector<std::string>& arguments);
    void setTriggerOrder(const std::vector<std::string>& arguments, int line);
    void setSessionContext(Frame& frame, Instruction& instruction,
                           const tsql::ExecuteStatement& node);

    // catalogue_procedures.cpp
    [[nodiscard]] bool executeCatalogue(Frame& frame, Instruction& instruction,
                                        const tsql::ExecuteStatement& node, const std::string& name,
                                        std::vector<ado::Result>& results);

    // script_definitions.cpp
    void createView(const tsql::CreateViewStatement& node, int line);
    void createModule(const tsql::CreateModuleStatement& node, int line);
    // script_procedures.cpp
    void createTemporary(const tsql::CreateModuleStatement& node, int line);
    void storeNumbered(const tsql::CreateModuleStatement& node, const std::string& group, int line);
    [[nodiscard]] std::shared_ptr<const Module> calledModule(const tsql::ObjectName& name,
                                                             int number, const Frame& frame);
    void checkRows(const tsql::CreateModuleStatement& node, const std::string& name, int line);
    void createType(const tsql::CreateTypeStatement& node, int line);

    // script_rules.cpp
    void createRule(const tsql::CreateRuleStatement& node, int line);
    void refuseBoundRule(StoredKind kind, const std::string& stored, const std::string& shown,
                         int line) const;
    [[nodiscard]] bool bindRule(const std::string& procedure,
                                const std::vector<std::string>& arguments, int line,
                                std::vector<ado::Result>& results);
    // A column that a default or a rule is bound to.
    struct RuledColumn {
        const Table* table = nullptr;
        const Column* column = nullptr;
    };
    [[nodiscard]] RuledColumn ruledColumn(const std::string& name, int line) const;
    [[nodiscard]] const StoredObject& requireRule(StoredKind kind, const std::string& name,
                                                  int line) const;
    [[nodiscard]] const ConstraintInfo* boundConstraint(
        const std::vector<ConstraintInfo>& constraints, const RuledColumn& place,
        const char* type) const;
    void store(StoredObject object, bool replace, bool mustExist, int line);
    void refuseUsedFunction(const char* action, const std::string& stored, const std::string& shown,
                            int line) const;
    [[nodiscard]] std::string newModuleName(const tsql::ObjectName& name, const char* kind,
                                            int line) const;
    void dropStored(const tsql::DropStatement& node, int line);
    void alterTable(Frame& frame, const tsql::AlterTableStatement& node, int line);

    // script_schemas.cpp
    void createSchema(const tsql::CreateSchemaStatement& node, int line,
                      std::vector<ado::Result>& results);
    void makeSchema(const tsql::CreateSchemaStatement& node, int line,
                    std::vector<ado::Result>& results);
    void dropSchema(const tsql::DropStatement& node, int line);
    void transferObject(const tsql::AlterSchemaStatement& node, int line);

    // script_sequences.cpp
    void defineSequence(const tsql::SequenceStatement& node, int line);
    void createSynonym(const tsql::CreateSynonymStatement& node, int line);
    void drawRange(Frame& frame, Instruction& instruction, const tsql::ExecuteStatement& node);

    // script_bulk_insert.cpp
    void bulkInsert(Frame& frame, const tsql::BulkInsertStatement& node, int line,
                    std::vector<ado::Result>& results);
    struct BulkRow;
    void makeBulkRow(BulkRow& row, const std::vector<const Column*>& columns,
                     const std::vector<bool>& given, const Frame& frame,
                     const tsql::BulkInsertStatement& node, int line);
    [[nodiscard]] bool bulkValues(const std::vector<const Column*>& columns,
                                  const std::vector<std::optional<std::string>>& fields,
                                  const tsql::BulkInsertStatement& node, std::int64_t row,
                                  std::vector<Value>& values, std::vector<bool>& given, int line);

    // script_application_locks.cpp
    void takeApplicationLock(Frame& frame, Instruction& instruction,
                             const tsql::ExecuteStatement& node);
    void releaseApplicationLock(Frame& frame, Instruction& instruction,
                                const tsql::ExecuteStatement& node);
    [[nodiscard]] std::string resourceOf(Frame& frame, const tsql::ExecuteStatement& node,
                                         const std::string& procedure,
                                         const std::optional<std::string>& given, int line);
    [[noreturn]] void wrongLockCall(Frame& frame, const tsql::ExecuteStatement& node,
                                    const std::string& procedure, int line);
    void returnNumber(Frame& frame, const tsql::ExecuteStatement& node, int number, int line);

    // session_views.cpp
    [[nodiscard]] SystemRows sessionRows() const;
    void showOptions(std::vector<ado::Result>& results);

    // script_identities.cpp
    void checkIdentity(Frame& frame, Instruction& instruction,
                       const tsql::CheckIdentityStatement& node);

    // script_administration.cpp
    void explain(Frame& frame, Instruction& instruction, std::vector<ado::Result>& results);
    void backup(const std::string& file, bool replace, int line);
    void checkDatabase();

    // script_cursors.cpp
    void declareCursor(Frame& frame, const tsql::DeclareCursorStatement& node, int line);
    [[nodiscard]] std::shared_ptr<Cursor> newCursor(Frame& frame,
                                                    const tsql::DeclareCursorStatement& node);
    void assignCursor(Frame& frame, const tsql::AssignCursorStatement& node, int line);
    void openCursor(Cursor& cursor, int line);
    [[nodiscard]] std::shared_ptr<Cursor> cursorNamed(const std::string& name,
                                                      bool global = false) const;
    // CURSOR VARYING OUTPUT parameters, before the call and behind it.
    void takeCursors(const Frame& frame, const tsql::ExecuteStatement& node,
                     const tsql::CreateModuleStatement& module, Frame& called, int line) const;
    static void giveCursors(Frame& frame, const tsql::ExecuteStatement& node,
                            const tsql::CreateModuleStatement& module, const Frame& called);
    void useCursor(Frame& frame, const tsql::CursorStatement& node, int line);
    void fetch(Frame& frame, Instruction& instruction, const tsql::FetchStatement& node,
               std::vector<ado::Result>& results);
    [[nodiscard]] std::shared_ptr<Cursor> requireCursor(const std::string& name, bool global,
                                                        int line) const;
    [[nodiscard]] std::int64_t fetchTarget(Frame& frame, Instruction& instruction,
                                           const tsql::FetchStatement& node, const Cursor& cursor);

    // Global temporary tables (script_global_tables.cpp).
    void dropGlobalTables(const std::vector<std::string>& names);
    void dropAbandonedTables();
    void dropOwnGlobalTables() noexcept;

    FileConnection& connection_;
    SchemaCatalogue& catalogue_;
    Counters& counters_;
    Transactions& transactions_;
    SessionState& state_;
    ExecutionContext execution_;
    StatementRunner statements_;
    Cursors cursors_;
    ApplicationLocks applicationLocks_;
    std::string globalOwner_;  // what the session is known by as the maker of global tables
    bool lookedForAbandoned_ = false;
    std::vector<ado::ServerMessage>* messages_ = nullptr;  // of the request that is running
    LruCache<std::shared_ptr<Program>> kept_;
    StatementShapes shapes_;
    std::map<std::string, std::shared_ptr<Program>> modulePrograms_;
    std::weak_ptr<RowStream> standing_;  // the query that stands at its rows
    std::weak_ptr<ScriptRest> stopped_;  // the script that stands still behind it
    JournalWatch journal_;
};

}  // namespace kap::engine
