#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/data/enumerations.hpp>

#include "data/column_store.hpp"
#include "data/connection_string.hpp"
#include "data/row_change.hpp"
#include "data/value.hpp"

// What stands between the data-access objects and a database. A driver knows its database; it knows
// nothing of recordsets, Variants or clients. Texts are UTF-8.
namespace kap::ado {

// Everything that a result tells about one of its columns.
struct ColumnInfo {
    std::string name;
    DataTypeEnum type = DataTypeEnum::adEmpty;
    std::int32_t definedSize = 0;
    std::uint8_t precision = 255;
    std::uint8_t numericScale = 255;  // decimals: also the scale of the stored whole number
    bool nullable = true;
    bool fixedLength = false;
    bool isLong = false;  // text, ntext, image
    // The base column behind it; empty for an expression.
    std::string baseTable;
    std::string baseColumn;
    bool key = false;  // part of the base table's primary key, and the result has all parts
    bool identity = false;
    bool rowVersion = false;
    bool generated = false;  // computed by the database from other columns of the row
    // A decimal of more digits than a word holds: kept as its plain text, without zeros at its end.
    bool wideDecimal = false;
    // The type as the embedded engine has it, packed; 0: the column is another driver's.
    std::int64_t engineType = 0;
    // Of a column made by hand: the bits of FieldAttributeEnum that its maker gave it.
    std::optional<std::int32_t> givenAttributes = {};

    [[nodiscard]] bool writable() const noexcept {
        return !baseColumn.empty() && !identity && !rowVersion && !generated;
    }
};

// The rows of a result that the database still has to send.
class RowSource {
public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    // Appends all that is left to the stores. Raises DriverError when the connection fails
    // meanwhile; what came till then may have been appended, to every store alike.
    virtual void fetch(std::vector<ColumnStore>& rows) = 0;
    // The same with the next rows, some hundreds of them or fewer when they come slowly; false when
    // none are left behind them.
    [[nodiscard]] virtual bool fetchSome(std::vector<ColumnStore>& rows) {
        fetch(rows);
        return false;
    }
    // The same with those that have come, of a source that does not wait for them.
    [[nodiscard]] virtual bool fetchReady(std::vector<ColumnStore>& rows) {
        return fetchSome(rows);
    }
};

// What one statement of a script answered: rows, or a count of rows written, or neither.
struct Result {
    std::vector<ColumnInfo> columns;  // empty: no rows
    std::vector<ColumnStore> rows;    // one store a column
    std::optional<std::int64_t> rowsAffected;
    // Of a driver that answers before every row is there; unset: the rows are all. A result with
    // any row at all has its first one in the stores.
    std::shared_ptr<RowSource> rest;
};

// An error or message of the database itself.
struct ServerMessage {
    std::int32_t nativeNumber = 0;  // the server's own
    std::int32_t number = 0;        // the data-access code that clients compare
    std::string state;              // SQLSTATE
    std::string text;
    std::int32_t line = 0;
    std::int32_t severity = 16;  // up to kInformation nothing has failed

    static constexpr std::int32_t kInformation = 10;
    [[nodiscard]] bool isError() const noexcept { return severity > kInformation; }
};

// A message's text as clients are shown it: it may quote bytes of a damaged file, which must not
// hide it.
[[nodiscard]] String displayText(const std::string& utf8);

// Thrown by a driver: every message of the failed call, in the database's order. The first error
// among them is what the client sees raised.
class DriverError : public AutomationError {
public:
    explicit DriverError(std::vector<ServerMessage> messages, String source = {});
    // For the exception that is being handled, which somebody else's object has raised: known by
    // that one's number and description, and it is what the client catches.
    DriverError(const AutomationError& handled, std::vector<ServerMessage> messages);

    [[nodiscard]] const std::vector<ServerMessage>& messages() const noexcept { return messages_; }
    // Throws what the client is to catch.
    [[noreturn]] void raise() const;

private:
    std::vector<ServerMessage> messages_;
    std::exception_ptr handled_;
};

// A typed value that goes with a request, comes back from it, or both.
struct RequestParameter {
    std::string name;  // "@name"; empty: known by its place
    DataTypeEnum type = DataTypeEnum::adVarWChar;
    std::int32_t size = 0;  // characters of text, bytes of binary; 0: as long as the value
    std::uint8_t precision = 0;
    std::uint8_t numericScale = 0;
    ParameterDirectionEnum direction = ParameterDirectionEnum::adParamInput;
    Value value;  // monostate is Null; replaced when the direction says so
};

// What is sent to the database at once.
struct Request {
    std::string text;        // a script in the dialect, or a name
    bool procedure = false;  // the text is a procedure's name, and the parameters are its own
    std::vector<RequestParameter> parameters;  // of the marks "?" in the script, in their order
    std::chrono::seconds timeout{0};           // 0: no limit
    bool table = false;  // the text is a table's name, for the connection to make a query of
    // Whether rows may come as they are needed, for somebody who reads them once, from the first to
    // the last: never; where the request only reads, so that it can be run again for who wants to
    // start again; always.
    enum class Streaming : std::uint8_t { Never, OfReading, Always };
    Streaming streaming = Streaming::Never;
    // Whether a script that only reads may stand still behind a query, for somebody who takes its
    // results one after the other.
    bool oneByOne = false;
    // Whether the recordset fetches its rows in the background, and then whether who needs one that
    // has not come waits for it.
    enum class Fetching : std::uint8_t { WhenNeeded, Background, NonBlocking };
    Fetching fetching = Fetching::WhenNeeded;
};

// The results that a request has still to answer.
class ResultSource {
public:
    ResultSource() = default;
    ResultSource(const ResultSource&) = delete;
    ResultSource& operator=(const ResultSource&) = delete;
    virtual ~ResultSource() = default;

    // Lets the request go on to its next result; unset when it has ended. Rows of the result before
    // that have not been fetched are lost. What was printed meanwhile is appended to `messages`.
    // Raises DriverError with every message when one of them is an error; the next call goes on
    // behind it, where the error has not ended the request.
    [[nodiscard]] virtual std::optional<Result> next(std::vector<ServerMessage>& messages) = 0;
};

// What came back.
struct Reply {
    std::vector<Result> results;
    std::vector<ServerMessage> messages;  // what the script printed, and its warnings
    // Of a request whose results are taken one by one: those behind the first; unset: there are
    // none, or all are here.
    std::shared_ptr<ResultSource> rest = {};
};

// What a database says of itself; empty where it says nothing.
struct Product {
    std::string name;
    std::string version;
    std::string server;
    std::string user;
};

// Which rows of a schema rowset are wanted: a value for each of the rowset's restriction columns,
// in their standard order; unset: any.
using SchemaRestrictions = std::vector<std::optional<std::string>>;

// One open database connection.
class Session {
public:
    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    virtual ~Session() = default;

    // Runs a request and appends what each of its statements answered to `reply`. Whether an error
    // ends a statement, the script or the transaction is the database's affair; when any was
    // reported, DriverError with all messages is raised at the end. What was answered till then
    // stands in the reply. Parameters that come back are written into the request.
    virtual void execute(Request& request, Reply& reply) = 0;
    // The same for a script without parameters.
    [[nodiscard]] std::vector<Result> execute(std::string_view script) {
        Request request;
        request.text = script;
        Reply reply;
        execute(request, reply);
        return std::move(reply.results);
    }

    // Ends what execute() runs, or fetching its rows, which then raise -2146824576; may be called
    // from any thread while the session is there. Where the driver cannot, nothing happens.
    virtual void cancel() noexcept {}

    // Writes one row, with its own transaction when none is open. More than one row touched is an
    // error of the change's criteria: nothing is written.
    virtual ChangeOutcome apply(const RowChange& change) = 0;

    // Describes what is in the database, gathered with SchemaRows. Raises kFeatureNotAvailable
    // unless the driver has something to tell.
    [[nodiscard]] virtual Result schema(SchemaEnum kind, const SchemaRestrictions& wanted);

    [[nodiscard]] virtual Product product() { return {}; }

    // How far the transactions that begin from now on are kept apart. Raises kFeatureNotAvailable
    // for a level that the database does not have. Unless a driver says otherwise its transactions
    // see nothing of each other, which is what every level asks for at most.
    virtual void setIsolation(IsolationLevelEnum /*level*/) {}

    // A table's name as it must stand in a script, whatever it holds.
    [[nodiscard]] virtual std::string quotedName(std::string_view name) const;

    // For work that reads a row, writes it, and is made again when somebody else was faster: waits
    // until it is this connection's turn among those that write, and keeps the others behind it for
    // as long as the object lives. Locks nothing. Null where there is no such order, and within a
    // transaction.
    [[nodiscard]] virtual std::shared_ptr<void> precedence() { return nullptr; }

    virtual void begin() = 0;
    virtual void commit() = 0;
    // Ends every level; with an open transaction it does not fail.
    virtual void rollback() = 0;
    [[nodiscard]] virtual int transactionDepth() const = 0;
};

// Opens a database; raises when the keys are not the driver's or the database cannot be opened.
class Driver {
public:
    virtual ~Driver() = default;
    // `timeout` limits how long a server may take, unless the keys say otherwise; 0: no limit.
    [[nodiscard]] virtual std::unique_ptr<Session> open(
        const ConnectionString& keys,
        std::chrono::seconds timeout = std::chrono::seconds(0)) const = 0;
};

}  // namespace kap::ado
