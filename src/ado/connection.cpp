#include <kaputil/ado/connection.hpp>

#include <algorithm>
#include <utility>
#include <vector>

#include <kaputil/ado/error_numbers.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/frame/error.hpp>

#include "ado/driver.hpp"
#include "ado/failures.hpp"
#include "ado/row_cursor.hpp"
#include "frame/class_builder.hpp"
#include "tsql/script_split.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado {
namespace {

Variant countOf(const std::vector<Result>& results) {
    std::int64_t rows = 0;
    bool counted = false;
    for (const Result& result : results) {
        if (result.rowsAffected && result.columns.empty()) {
            rows += *result.rowsAffected;
            counted = true;
        }
    }
    return counted ? static_cast<std::int32_t>(rows) : -1;
}

String withLogin(const String& keys, const String& userId, const String& password) {
    String all = keys;
    if (!userId.empty()) {
        all += u";User ID=\"" + userId.units() + u"\"";
    }
    if (!password.empty()) {
        all += u";Password=\"" + password.units() + u"\"";
    }
    return all;
}

}  // namespace

Connection::Connection() : errors_(make<ado::Errors>()) {}

Connection::~Connection() = default;

const ClassDescription& Connection::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Connection>(u"Connection", u"", u"")
            .summary(u"An open session with a database.")
            .property<&Connection::ConnectionString, &Connection::setConnectionString>(
                u"ConnectionString", u"The keys that say which database to open.")
            .property<&Connection::CursorLocation, &Connection::setCursorLocation>(
                u"CursorLocation", u"Where the cursors of Execute's recordsets live.")
            .property<&Connection::Errors>(u"Errors", u"The errors of the last failed operation.")
            .property<&Connection::State>(u"State", u"0 closed, 1 open.")
            .method<&Connection::BeginTrans>(u"BeginTrans", {},
                                             u"Begins a transaction; gives the nesting level.")
            .method<&Connection::Close>(u"Close", {}, u"Closes the database.")
            .method<&Connection::CommitTrans>(u"CommitTrans", {}, u"Commits the transaction.")
            .method<&Connection::Execute>(
                u"Execute",
                {u"CommandText", Parameter(u"RecordsAffected").otherwise(Variant::missing()),
                 Parameter(u"Options").otherwise(-1)},
                u"Runs a script.")
            .method<&Connection::Open>(
                u"Open",
                {Parameter(u"ConnectionString").otherwise(u""), Parameter(u"UserID").otherwise(u""),
                 Parameter(u"Password").otherwise(u""), Parameter(u"Options").otherwise(-1)},
                u"Opens the database.")
            .method<&Connection::RollbackTrans>(u"RollbackTrans", {}, u"Undoes the transaction.")
            .build(u"ConnectionString");
    return description;
}

void Connection::setConnectionString(const String& value) {
    if (session_ != nullptr) {
        fail::objectOpen();
    }
    connectionString_ = value;
}

void Connection::Open(const String& connectionString, const String& userId, const String& password,
                      std::int32_t /*options: no asynchronous opening*/) {
    if (session_ != nullptr) {
        fail::objectOpen();
    }
    if (!connectionString.empty()) {
        connectionString_ = connectionString;
    }
    reporting([&] {
        const auto keys =
            ado::ConnectionString::parse(withLogin(connectionString_, userId, password).utf8());
        session_ = driverFor(keys).open(keys);
    });
}

void Connection::Close() {
    if (session_ == nullptr) {
        fail::objectClosed();
    }
    session_.reset();
}

ObjectStateEnum Connection::State() const {
    return session_ == nullptr ? ObjectStateEnum::adStateClosed : ObjectStateEnum::adStateOpen;
}

Ref<Recordset> Connection::Execute(const String& commandText, ByRef<Variant> recordsAffected,
                                   std::int32_t options) {
    if (session_ == nullptr) {
        fail::objectClosed();
    }
    std::vector<Result> results;
    reporting([&] { results = session_->execute(commandText.utf8()); });
    recordsAffected.get() = countOf(results);
    const bool noRecords =
        options >= 0 &&
        (options & static_cast<std::int32_t>(ExecuteOptionEnum::adExecuteNoRecords)) != 0;
    const auto rows =
        std::ranges::find_if(results, [](const Result& result) { return !result.columns.empty(); });
    return noRecords || rows == results.end() ? make<Recordset>() : answer(std::move(*rows));
}

void Connection::executeAll(const String& script, std::vector<Ref<Recordset>>& answers) {
    if (session_ == nullptr) {
        fail::objectClosed();
    }
    Request request;
    request.text = script.utf8();
    Reply reply;
    const auto handOver = [&] {
        for (Result& result : reply.results) {
            answers.push_back(answer(std::move(result)));
        }
    };
    try {
        reporting([&] { session_->execute(request, reply); });
    } catch (const AutomationError&) {
        handOver();
        throw;
    }
    handOver();
}

std::vector<ScriptBatch> Connection::batchesOf(const String& script) {
    std::vector<ScriptBatch> batches;
    reporting([&] {
        try {
            for (const tsql::Batch& batch : tsql::splitScript(script.utf8())) {
                batches.push_back({batch.text, batch.firstLine, batch.count});
            }
        } catch (const tsql::ServerError& error) {
            throw DriverError(
                {{error.number(), errors::kCommandText, "42000", error.message(), error.line()}});
        }
    });
    return batches;
}

// A statement's answer: its rows, or a closed recordset that tells how many rows it wrote.
Ref<Recordset> Connection::answer(Result result) {
    auto recordset = make<Recordset>();
    recordset->rowsAffected_ = result.rowsAffected;
    if (!result.columns.empty()) {
        recordset->adopt(
            std::make_shared<RowCursor>(std::move(result),
                                        RowCursor::Options{cursorLocation_, /*readOnly=*/true}),
            Ref<Connection>(this));
    }
    return recordset;
}

std::int32_t Connection::BeginTrans() {
    std::int32_t level = 0;
    reporting([&] {
        session()->begin();
        level = session_->transactionDepth();
    });
    return level;
}

void Connection::CommitTrans() {
    reporting([&] { session()->commit(); });
}

void Connection::RollbackTrans() {
    reporting([&] { session()->rollback(); });
}

void Connection::setCursorLocation(CursorLocationEnum value) {
    if (value != CursorLocationEnum::adUseServer && value != CursorLocationEnum::adUseClient) {
        fail::invalidArgument();
    }
    cursorLocation_ = value;
}

std::shared_ptr<Session> Connection::session() const {
    if (session_ == nullptr) {
        fail::invalidConnection();
    }
    return session_;
}

void Connection::reporting(const std::function<void()>& work) {
    try {
        work();
    } catch (const DriverError& error) {
        report(error);
        throw;
    }
}

void Connection::report(const DriverError& error) {
    std::vector<Ref<Error>> reported;
    for (const ServerMessage& message : error.messages()) {
        reported.push_back(
            make<Error>(Error::Details{message.number, message.nativeNumber, message.text,
                                       error.source(), message.state, message.line}));
    }
    errors_->assign(std::move(reported));
}

}  // namespace kap::ado
