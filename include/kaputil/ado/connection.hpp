#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

#include <kaputil/ado/error.hpp>
#include <kaputil/ado/property.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/event_source.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

class Background;
struct BackgroundTask;
class ConnectionString;
class DriverError;
class GradualRows;
struct InBackground;
struct LaterExecution;
struct Opening;
class Recordset;
class ResultSource;
class Session;
struct Reply;
struct Request;
struct Result;
struct ServerMessage;

// One batch of a script file: what is sent at once.
struct ScriptBatch {
    String text;
    std::int32_t firstLine = 1;  // the line of the file on which the text begins
    std::int32_t count = 1;      // how many times it is run
};

// An open session with a database.
//
//     auto connection = kap::make<kap::ado::Connection>();
//     connection->Open(u"Provider=KapLocal;Data Source=azienda.db");
//     connection->Execute(u"UPDATE Clienti SET Localita = 'Bari' WHERE Codice = 12");
//
// The connection string is a list of `key=value` pairs separated by ';'. `Provider=KapLocal` is the
// embedded one-file database; its keys are
//
//     Data Source    the file, made when it is missing, or :memory: or :memory:NAME for a database
//                    that lives as long as this process has it open
//     Mode           ReadWrite (default) or Read
//     Lock Timeout   seconds to wait for another program's lock, 30 by default
//     Synchronous    Full (default: committed is on disk), Normal, Off
//
// Its events are those of ConnectionEvents, in <kaputil/ado/events.hpp>.
class KAPUTIL_EXPORT Connection final : public DescribedObject, public EventSource {
public:
    Connection();
    ~Connection() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] const ClassDescription& events() const override;

    // A connection that works through another maker's, which stays its client's: the string, the
    // state and the time limit are that one's, and opening and closing opens and closes it. C++
    // only.
    [[nodiscard]] static Ref<Connection> through(const Ref<Object>& foreign);
    // The object that the client knows: another maker's, or this connection itself.
    [[nodiscard]] Variant clientsObject();

    // The string given to Open, or to be used by it. Once the connection has been opened the string
    // shows no password any more, unless it says "Persist Security Info=True"; the connection keeps
    // it to be opened again. Raises 3705 when assigned while open.
    [[nodiscard]] String ConnectionString() const;
    void setConnectionString(const String& value);

    // Opens the database. Every argument may be left out: the string then is the property's.
    // Raises 3705 when it is open already, 3706 for an unknown provider, and the driver's errors.
    void Open(const String& connectionString = {}, const String& userId = {},
              const String& password = {}, std::int32_t options = -1);
    // Raises 3704 when it is not open, 3246 while a transaction is that BeginTrans has begun; one
    // that a script has begun is rolled back. The recordsets on the connection are closed, and what
    // is being edited in them is lost; those that have been disconnected stay.
    void Close();
    // A second connection to the same database, opened as this one was, with its login. C++ only.
    [[nodiscard]] Ref<Connection> openAnother() const;
    [[nodiscard]] ObjectStateEnum State() const;

    // Runs a script, or what `options` say (adCmdTable, adCmdStoredProc; adExecuteNoRecords throws
    // the rows away). The result are the first rows, forward only and read only, or a closed
    // recordset when there are none; what follows is for its NextRecordset. `recordsAffected`
    // receives the number of rows that the statements wrote, as a Long. When the script fails, the
    // first error is raised and Errors has every message; what a successful script printed is
    // there, too. A script that only reads is run no further than to its first rows: NextRecordset
    // lets it go on, and raises what fails there. With adAsyncExecute the call comes back at once.
    Ref<Recordset> Execute(const String& commandText,
                           ByRef<Variant> recordsAffected = Variant::missing(),
                           std::int32_t options = -1);

    // Runs a script and appends every statement's answer in order: its rows, or a closed recordset
    // that tells how many rows it wrote. When a statement fails, the answers of those before it are
    // there. Rows that are read once, from the first to the last, may come as they are needed, and
    // reading them may fail. C++ only.
    enum class Reading : std::uint8_t { Freely, Once };
    void executeAll(const String& script, std::vector<Ref<Recordset>>& answers,
                    Reading reading = Reading::Freely);
    // The same one after the other: each answer is handed over as soon as it is there, and what a
    // script that only reads has still to answer is run when `take` has come back. Rows that it has
    // not read by then are lost. What fails is raised when the script has ended, with every message
    // in Errors; what `take` raises, at once.
    void executeEach(const String& script, const std::function<void(Recordset&)>& take,
                     Reading reading = Reading::Freely);

    // Cuts the text of a script file at its GO lines, each of which may name a count ("GO 5").
    // Raises -2147217900 for a count that is not a whole number. C++ only.
    [[nodiscard]] std::vector<ScriptBatch> batchesOf(const String& script);

    // Transactions; the result of BeginTrans is the new nesting level. Ending one that has not been
    // begun raises -2147168242.
    std::int32_t BeginTrans();
    void CommitTrans();
    void RollbackTrans();

    [[nodiscard]] Ref<ado::Errors> Errors() const { return errors_; }

    // Describes what is in the database: its tables (adSchemaTables), their columns, primary keys
    // and indexes, or the types that columns can have (adSchemaProviderTypes). `restrictions` is an
    // array of values that the rowset's restriction columns must have, Empty for any:
    //
    //     adSchemaTables       catalog, schema, table, type (TABLE or VIEW)
    //     adSchemaColumns      catalog, schema, table, column
    //     adSchemaPrimaryKeys  catalog, schema, table
    //     adSchemaIndexes      catalog, schema, index, type, table
    //     adSchemaProviderTypes  data type, best match
    //
    // Raises 3704 when it is not open, 3251 for a description that the database does not have, 3001
    // for more restrictions than that.
    [[nodiscard]] Ref<Recordset> OpenSchema(SchemaEnum queryType,
                                            const Variant& restrictions = Variant::missing(),
                                            const Variant& schemaId = Variant::missing());

    // Seconds that a script may run, 30 by default, and that opening may take, 15; 0: no limit.
    // Running longer ends in the timeout error (-2147217871). Opening a file takes no time that
    // could be limited: the latter is for database servers.
    [[nodiscard]] std::int32_t CommandTimeout() const;
    void setCommandTimeout(std::int32_t seconds);
    [[nodiscard]] std::int32_t ConnectionTimeout() const { return connectionTimeout_; }
    void setConnectionTimeout(std::int32_t seconds);
    // The provider's name: that of the connection string, or the one to use when that has none; by
    // default MSDASQL, which is ODBC.
    // Raises 3705 when assigned while open.
    [[nodiscard]] String Provider() const;
    void setProvider(const String& value);
    // What the connection is for: adModeRead opens the database for reading only, where the
    // connection string says nothing. Raises 3705 when assigned while open.
    [[nodiscard]] ConnectModeEnum Mode() const { return mode_; }
    void setMode(ConnectModeEnum value);
    // The database that the connection string names (Initial Catalog or Database); assigning
    // changes to another database of the same server (USE).
    [[nodiscard]] String DefaultDatabase() const;
    void setDefaultDatabase(const String& value);
    // How far transactions are kept apart: adXactReadCommitted unless assigned. What is assigned
    // holds from the next BeginTrans on, which raises 3251 for a level that the server does not
    // have. Transactions of the embedded database see nothing of each other before they are
    // committed, which is what every level asks for at most.
    [[nodiscard]] IsolationLevelEnum IsolationLevel() const { return isolationLevel_; }
    void setIsolationLevel(IsolationLevelEnum value);
    // The version of the data-access objects whose behaviour clients find here.
    [[nodiscard]] String Version() const { return u"2.8"; }
    // Ends what is run in the background, or by another thread, which raises -2146824576 there.
    // This and State are the only members for another thread.
    void Cancel() const;

    // Where the cursors of recordsets that Execute makes live: adUseServer by default.
    [[nodiscard]] CursorLocationEnum CursorLocation() const { return cursorLocation_; }
    void setCursorLocation(CursorLocationEnum value);

    // What follows the end of a transaction, as bits of XactAttributeEnum: with
    // adXactCommitRetaining the next one begins at once after CommitTrans, with
    // adXactAbortRetaining after RollbackTrans. Raises 3001 for any other bit.
    [[nodiscard]] std::int32_t Attributes() const { return attributes_; }
    void setAttributes(std::int32_t value);
    // What the provider tells ("DBMS Name", "DBMS Version", "Server Name" and others), and before
    // the connection is opened lets be chosen ("Data Source", "Initial Catalog", "User ID",
    // "Password", "Extended Properties", "Persist Security Info", "Prompt").
    [[nodiscard]] Ref<ado::Properties> Properties();

    // For the recordsets on this connection: the session, alive for as long as the connection is
    // open. Raises 3709 when it is not.
    [[nodiscard]] std::shared_ptr<Session> session() const;
    // Runs `work`; the errors of a driver go into Errors before they are raised.
    void reporting(const std::function<void()>& work);
    // Runs a request; what it printed goes into Errors.
    void run(Request& request, Reply& reply);
    // Has a script that stands still behind a result go on to the next one; unset when it has none.
    [[nodiscard]] std::optional<Result> nextOf(ResultSource& script);
    // Runs what the execution asks for in the background. `request` makes what is sent of what the
    // sinks have made of it; `take` takes what came back, and `around`, when it is set, calls what
    // takes it, both on this thread, when the connection is next asked for anything. Raises 3711
    // while something else is run in the background.
    void runLater(const std::shared_ptr<LaterExecution>& later,
                  const std::function<Request(const LaterExecution&)>& request,
                  const std::function<void(LaterExecution&)>& take,
                  const std::function<void(const std::function<void()>&)>& around = {});
    // Whether a call runs without its client's waiting for it: as the options say, and unless the
    // connection is another maker's.
    [[nodiscard]] bool runsLater(std::int32_t options) const;
    // Takes what came of a call that has ended in the background.
    void settle() const;
    // Rows that come in the background: everything else on the connection waits for them.
    void fetching(const std::shared_ptr<GradualRows>& rows);
    // Puts all of these failures into Errors and raises the first.
    [[noreturn]] void raiseAll(const std::vector<DriverError>& failures);

private:
    std::atomic<int> running_{0};  // requests that are being run
    friend class Recordset;
    // Has the database work, which Cancel ends; reports what fails.
    void working(const std::function<void(Session&)>& work);
    void closeRecordsets();
    void requireSettled() const;
    [[nodiscard]] std::shared_ptr<Background> background() const;
    [[nodiscard]] std::shared_ptr<GradualRows> rowsInBackground() const;
    void begin(ObjectStateEnum doing, const BackgroundTask& task);
    void endBackground();
    void openLater(Opening& wanted);
    Ref<Recordset> executeLater(const String& commandText, std::int32_t options);
    void conclude(LaterExecution& later, const std::function<void()>& outcome,
                  const std::function<void(LaterExecution&)>& take);
    void openAs(const String& connectionString, const String& userId, const String& password);
    [[nodiscard]] ado::ConnectionString prepared(const Opening& wanted);
    void opened(const Opening& wanted);
    void endingTransaction(const std::function<void()>& end, XactAttributeEnum retaining);
    [[nodiscard]] Variant keyValue(const char* name, const char* otherName) const;
    void setKey(const char* name, const Variant& value);
    void executeEach(const String& script, std::vector<Ref<Recordset>>& answers, Reading reading);
    void runEach(const String& script, const std::function<void(Recordset&)>& take,
                 Reading reading);
    void report(const std::vector<ServerMessage>& messages, const String& source);
    void tell(const std::vector<ServerMessage>& printed);
    [[nodiscard]] Ref<Recordset> answer(Result result, Reading reading = Reading::Freely);
    [[nodiscard]] String completed(const String& text) const;
    void requireClosed() const;
    void requireOpen() const;

    String connectionString_;  // as clients are shown it
    String keys_;              // the same with the login that it was opened with
    std::shared_ptr<Session> session_;
    Ref<Object> foreign_;  // another maker's connection behind the session
    Ref<ado::Errors> errors_;
    std::unordered_set<Recordset*> recordsets_;  // the open ones on it, which keep it alive
    CursorLocationEnum cursorLocation_ = CursorLocationEnum::adUseServer;
    std::int32_t commandTimeout_ = 30;
    std::int32_t connectionTimeout_ = 15;
    std::int32_t attributes_ = 0;
    std::int32_t prompt_ = static_cast<std::int32_t>(ConnectPromptEnum::adPromptNever);
    String provider_;
    String database_;
    ConnectModeEnum mode_ = ConnectModeEnum::adModeUnknown;
    IsolationLevelEnum isolationLevel_ = IsolationLevelEnum::adXactReadCommitted;
    bool isolationChosen_ = false;
    bool transactionBegun_ = false;  // by BeginTrans
    std::unique_ptr<InBackground> inBackground_;
};

// Whether a value is a connection: one of the library's, or of another maker whose object has the
// members of one.
[[nodiscard]] KAPUTIL_EXPORT bool isConnection(const Variant& value);

// The connection that a client names: an object, also of another maker, or a connection string,
// which is opened; unset for Null, Empty and an unset object. Raises 3001 for another object, 3709
// for a connection that is not open.
[[nodiscard]] KAPUTIL_EXPORT Ref<Connection> connectionOf(const Variant& value);

}  // namespace kap::ado
