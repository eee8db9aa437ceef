#include <kaputil/ado/connection.hpp>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <kaputil/ado/events.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "ado/background.hpp"
#include "ado/connection_notices.hpp"
#include "ado/counted.hpp"
#include "ado/gradual_rows.hpp"
#include "ado/later_execution.hpp"
#include "ado/request_builder.hpp"
#include "ado/results.hpp"
#include "ado/row_cursor.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"
#include "drivers/driver_registry.hpp"
#include "drivers/late_bound/foreign_connection.hpp"
#include "drivers/late_bound/late_bound_session.hpp"

namespace kap::ado {
namespace {

constexpr std::int32_t kNothingToCommit = 3902;
constexpr std::int32_t kNothingToRollBack = 3903;

}  // namespace

Connection::Connection()
    : errors_(make<ado::Errors>()), inBackground_(std::make_unique<InBackground>()) {}

Connection::~Connection() {
    inBackground_.reset();  // it uses the rest until it has ended
}

const ClassDescription& Connection::events() const {
    return ConnectionEvents::classDescription();
}

// Another maker's object refuses by itself what its state does not allow.
void Connection::requireClosed() const {
    requireSettled();
    if (!foreign_ && session_ != nullptr) {
        fail::objectOpen();
    }
}

void Connection::requireOpen() const {
    requireSettled();
    if (session_ == nullptr) {
        fail::objectClosed();
    }
}

String Connection::ConnectionString() const {
    return foreign_ ? late_bound::connectionStringOf(foreign_) : connectionString_;
}

void Connection::setConnectionString(const String& value) {
    if (foreign_) {
        late_bound::setConnectionString(foreign_, value);
        return;
    }
    requireClosed();
    connectionString_ = value;
    keys_ = value;
}

void Connection::Open(const String& connectionString, const String& userId, const String& password,
                      std::int32_t options) {
    if (foreign_) {
        late_bound::open(foreign_, connectionString, userId, password, options);
        return;
    }
    requireClosed();
    Opening wanted{connectionString, userId, password, options};
    if (options == static_cast<std::int32_t>(ConnectOptionEnum::adAsyncConnect)) {
        openLater(wanted);
        return;
    }
    if (!isObserved()) {
        openAs(connectionString, userId, password);
        return;
    }
    if (connectionString.empty()) {
        wanted.connectionString = keys_;
    }
    ConnectionNotices(*this).aroundOpening(wanted, [&](const Opening& told) {
        openAs(told.connectionString, told.userId, told.password);
    });
}

void Connection::openAs(const String& connectionString, const String& userId,
                        const String& password) {
    const Opening wanted{connectionString, userId, password};
    const ado::ConnectionString keys = prepared(wanted);
    std::shared_ptr<Session> session;
    reporting(
        [&] { session = driverFor(keys).open(keys, std::chrono::seconds(connectionTimeout_)); });
    opened(wanted);
    session_ = std::move(session);  // last: what cannot be finished leaves it closed
}

Ref<Connection> Connection::openAnother() const {
    auto other = make<Connection>();
    other->cursorLocation_ = cursorLocation_;
    other->commandTimeout_ = commandTimeout_;
    other->connectionTimeout_ = connectionTimeout_;
    other->provider_ = provider_;
    other->mode_ = mode_;
    other->Open(foreign_ ? late_bound::connectionStringOf(foreign_) : keys_);
    return other;
}

// A connection string with what the properties say and it does not.
String Connection::completed(const String& text) const {
    const auto keys = ado::ConnectionString::parse(text.utf8());
    String all = text;
    if (!provider_.empty() && !keys.find("Provider")) {
        all += u";Provider=" + provider_.units();
    }
    if (mode_ == ConnectModeEnum::adModeRead && !keys.find("Mode")) {
        all += u";Mode=Read";
    }
    return all;
}

void Connection::Close() {
    if (foreign_) {
        late_bound::close(foreign_);
        session_ =
            std::make_shared<late_bound::LateBoundSession>(foreign_);  // without transactions
        return;
    }
    endBackground();
    requireOpen();
    if (transactionBegun_ && session_->transactionDepth() > 0) {
        fail::inTransaction();
    }
    closeRecordsets();
    session_.reset();
    if (isObserved()) {
        ConnectionNotices(*this).disconnected();
    }
}

void Connection::closeRecordsets() {
    std::vector<Ref<Recordset>> open(recordsets_.begin(), recordsets_.end());
    for (const Ref<Recordset>& recordset : open) {
        recordset->closeWithConnection();
    }
}

ObjectStateEnum Connection::State() const {
    settle();
    if (inBackground_->doing == ObjectStateEnum::adStateConnecting) {
        return ObjectStateEnum::adStateConnecting;
    }
    const bool open = foreign_ ? late_bound::isOpen(foreign_) : session_ != nullptr;
    if (!open) {
        return ObjectStateEnum::adStateClosed;
    }
    constexpr auto kOpen = static_cast<std::int32_t>(ObjectStateEnum::adStateOpen);
    constexpr auto kExecuting = static_cast<std::int32_t>(ObjectStateEnum::adStateExecuting);
    const bool executing =
        running_ > 0 || inBackground_->doing == ObjectStateEnum::adStateExecuting;
    return static_cast<ObjectStateEnum>(kOpen | (executing ? kExecuting : 0));
}

void Connection::Cancel() const {
    if (const auto running = background()) {
        running->cancel();
    } else if (running_ > 0) {
        session_->cancel();
    }
    if (const auto rows = rowsInBackground()) {
        rows->cancel();
    }
}

std::int32_t Connection::CommandTimeout() const {
    return foreign_ ? late_bound::commandTimeoutOf(foreign_).value_or(commandTimeout_)
                    : commandTimeout_;
}

void Connection::run(Request& request, Reply& reply) {
    if (request.table) {
        request.text = "SELECT * FROM " + session()->quotedName(request.text);
        request.table = false;
    }
    working([&](Session& used) { used.execute(request, reply); });
    tell(reply.messages);
}

void Connection::working(const std::function<void(Session&)>& work) {
    reporting([&] {
        const std::shared_ptr<Session> used = session();
        const Counted running(running_);
        work(*used);
    });
}

// What has been printed while nothing failed.
void Connection::tell(const std::vector<ServerMessage>& printed) {
    if (printed.empty()) {
        return;
    }
    report(printed, {});
    if (isObserved()) {
        ConnectionNotices(*this).informed();
    }
}

std::optional<Result> Connection::nextOf(ResultSource& script) {
    std::optional<Result> result;
    std::vector<ServerMessage> printed;
    working([&](Session&) { result = script.next(printed); });
    tell(printed);
    return result;
}

Ref<Recordset> Connection::Execute(const String& commandText, ByRef<Variant> recordsAffected,
                                   std::int32_t options) {
    requireOpen();
    if (runsLater(options)) {
        *recordsAffected = std::int32_t{-1};
        return executeLater(commandText, options);
    }
    const Ref<Connection> self(this);
    Execution execution{commandText, CursorTypeEnum::adOpenForwardOnly,
                        LockTypeEnum::adLockReadOnly, options};
    executing(self, execution, [&] {
        requireOpen();
        const auto request =
            std::make_shared<Request>(requestFor(execution.source(), execution.options));
        request->timeout = std::chrono::seconds(CommandTimeout());
        const bool noRecords = wantsNoRecords(execution.options);
        auto records = noRecords ? make<Recordset>() : recordsetFor(self);
        if (!noRecords) {
            comeAsNeeded(*request, records->isReadOnce(), execution.options);
        }
        Reply reply;
        run(*request, reply);
        execution.rowsAffected = rowsWritten(reply.results);
        if (!noRecords) {
            ado::answer(*records, request, std::move(reply));
        }
        execution.recordset = std::move(records);
    });
    *recordsAffected = execution.rowsAffected;
    return execution.recordset;
}

Ref<Recordset> Connection::OpenSchema(SchemaEnum queryType, const Variant& restrictions,
                                      const Variant& /*schemaId: of providers' own rowsets*/) {
    requireOpen();
    const SchemaRestrictions wanted = restrictionsOf(queryType, restrictions);
    Result result;
    working([&](Session& used) { result = used.schema(queryType, wanted); });
    return answer(std::move(result));
}

std::int32_t Connection::BeginTrans() {
    requireOpen();
    std::int32_t level = 0;
    const auto begin = [&] {
        if (isolationChosen_ && session()->transactionDepth() == 0) {
            session_->setIsolation(isolationLevel_);
        }
        session()->begin();
        level = session_->transactionDepth();
        transactionBegun_ = true;
    };
    inTransaction(
        *this, u"BeginTransComplete", [&] { reporting(begin); },
        [&] { return EventCalls::Values{level}; });
    return level;
}

// A database's own word for it is another in each.
void Connection::endingTransaction(const std::function<void()>& end, XactAttributeEnum retaining) {
    reporting([&] {
        try {
            end();
        } catch (const DriverError& error) {
            const std::int32_t number = error.messages().front().nativeNumber;
            if (number == kNothingToCommit || number == kNothingToRollBack) {
                fail::noTransaction();
            }
            throw;
        }
        const bool goesOn = (attributes_ & static_cast<std::int32_t>(retaining)) != 0;
        if (goesOn && session_->transactionDepth() == 0) {
            session_->begin();
        }
        transactionBegun_ = session_->transactionDepth() > 0;
    });
}

void Connection::CommitTrans() {
    requireOpen();
    inTransaction(*this, u"CommitTransComplete", [&] {
        endingTransaction([&] { session()->commit(); }, XactAttributeEnum::adXactCommitRetaining);
    });
}

void Connection::RollbackTrans() {
    requireOpen();
    inTransaction(*this, u"RollbackTransComplete", [&] {
        endingTransaction([&] { session()->rollback(); }, XactAttributeEnum::adXactAbortRetaining);
    });
}

std::shared_ptr<Session> Connection::session() const {
    requireSettled();
    if (const auto rows = rowsInBackground()) {
        rows->waitForAll();
    }
    if (session_ == nullptr) {
        fail::invalidConnection();
    }
    return session_;
}

void Connection::reporting(const std::function<void()>& work) {
    try {
        work();
    } catch (const DriverError& error) {
        report(error.messages(), error.source());
        error.raise();
    }
}

void Connection::report(const std::vector<ServerMessage>& messages, const String& source) {
    std::vector<Ref<Error>> reported;
    reported.reserve(messages.size());
    for (const ServerMessage& message : messages) {
        reported.push_back(make<Error>(
            Error::Details{message.isError() ? message.number : 0, message.nativeNumber,
                           displayText(message.text), source, message.state, message.line}));
    }
    errors_->assign(std::move(reported));
}

void Connection::raiseAll(const std::vector<DriverError>& failures) {
    std::vector<ServerMessage> messages;
    for (const DriverError& failure : failures) {
        messages.insert(messages.end(), failure.messages().begin(), failure.messages().end());
    }
    report(messages, failures.front().source());
    failures.front().raise();
}

Ref<Connection> Connection::through(const Ref<Object>& foreign) {
    auto connection = make<Connection>();
    connection->session_ = std::make_shared<late_bound::LateBoundSession>(foreign);
    connection->foreign_ = foreign;
    return connection;
}

Variant Connection::clientsObject() {
    return foreign_ ? Variant(foreign_) : Variant(Ref<Connection>(this));
}

bool isConnection(const Variant& value) {
    if (!value.isObject() || !value.as<Ref<Object>>()) {
        return false;
    }
    const Ref<Object>& object = value.as<Ref<Object>>();
    return dynamic_cast<const Connection*>(object.get()) != nullptr ||
           late_bound::isConnection(*object);
}

Ref<Connection> connectionOf(const Variant& value) {
    if (value.isNull() || value.isEmpty()) {
        return {};
    }
    if (!value.isObject()) {
        auto opened = make<Connection>();
        opened->Open(convert::toString(value));
        return opened;
    }
    const Ref<Object>& object = value.as<Ref<Object>>();
    if (!object) {
        return {};
    }
    if (!isConnection(value)) {
        fail::invalidArgument();
    }
    auto* own = dynamic_cast<Connection*>(object.get());
    Ref<Connection> connection =
        own == nullptr ? Connection::through(object) : Ref<Connection>(own);
    if (connection->State() == ObjectStateEnum::adStateClosed) {
        fail::invalidConnection();
    }
    return connection;
}

}  // namespace kap::ado
