#include "drivers/odbc/odbc_connection.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {
namespace {

void hidePassword(std::string& text, const std::string& password) {
    constexpr std::string_view kHidden = "***";
    if (password.empty()) {
        return;
    }
    for (std::size_t at = text.find(password); at != std::string::npos;
         at = text.find(password, at + kHidden.size())) {
        text.replace(at, password.size(), kHidden);
    }
}

// Whatever a database is not opened for, clients know it by one number; that the time is up has its
// own.
DriverError connectError(std::vector<ServerMessage> messages, const std::string& password) {
    for (ServerMessage& message : messages) {
        hidePassword(message.text, password);
        if (message.isError() && message.number != errors::kTimeout) {
            message.number = errors::kLogin;
        }
    }
    return DriverError(std::move(messages), kErrorSource);
}

std::vector<ServerMessage> noAnswer() {
    ServerMessage message;
    message.number = errors::kTimeout;
    message.state = "HYT00";
    message.text =
        "The database server has not answered in time. The connection to it has been given up: "
        "close it and open it again.";
    return {std::move(message)};
}

// The interface's name of a level; 0: it has none.
SQLULEN isolationOf(IsolationLevelEnum level) {
    switch (level) {
        case IsolationLevelEnum::adXactReadUncommitted:
            return SQL_TXN_READ_UNCOMMITTED;
        case IsolationLevelEnum::adXactReadCommitted:
            return SQL_TXN_READ_COMMITTED;
        case IsolationLevelEnum::adXactRepeatableRead:
            return SQL_TXN_REPEATABLE_READ;
        case IsolationLevelEnum::adXactSerializable:
            return SQL_TXN_SERIALIZABLE;
        default:
            return 0;
    }
}

void limitStatement(const Handle& statement, std::chrono::seconds timeout) {
    SQLSetStmtAttrW(statement.get(), SQL_ATTR_QUERY_TIMEOUT,
                    asPointer(static_cast<SQLULEN>(timeout.count())), SQL_IS_UINTEGER);
}

constexpr const char* kLost = "The connection to the database server has been lost";
constexpr const char* kCancelled = "The operation has been cancelled.";
constexpr const char* kOpenAgain = "Close it and open it again.";

// What the server has been asked to keep itself is its own affair for so long.
constexpr std::chrono::milliseconds kGrace(3000);
constexpr std::chrono::milliseconds kEndTime(5000);

}  // namespace

OdbcConnection::OdbcConnection(const ConnectText& text)
    : line_(text.port), watchdog_([this] { line_.cut(); }), handle_(SQL_HANDLE_DBC, environment()) {
    const auto limited = limit(text.timeout);
    connect(text);
    DriverTraits driver = DriverTraits::of(handle_.get());
    driver.concurrent = driver.concurrent && !text.oneResult;
    dialect_ = dialectOf(std::move(driver));
    line_.find([this] { (void)exchangeSomething(); });
    if (watchdog_.hasFired()) {
        SQLDisconnect(handle_.get());
        throw connectError(noAnswer(), text.password);
    }
    connected_ = true;
}

void OdbcConnection::connect(const ConnectText& text) {
    if (text.timeout.count() > 0) {
        SQLSetConnectAttrW(handle_.get(), SQL_ATTR_LOGIN_TIMEOUT,
                           asPointer(static_cast<SQLULEN>(text.timeout.count())), SQL_IS_UINTEGER);
    }
    const String keys(text.text);
    const std::u16string units(keys.view());
    const SQLRETURN code = SQLDriverConnectW(handle_.get(), nullptr, wide(units),
                                             static_cast<SQLSMALLINT>(units.size()), nullptr, 0,
                                             nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(code)) {
        throw connectError(
            watchdog_.hasFired() ? noAnswer() : diagnosticsOf(SQL_HANDLE_DBC, handle_.get()),
            text.password);
    }
}

// A query that every server understands; what it answers does not matter.
bool OdbcConnection::exchangeSomething() {
    const Handle statement(SQL_HANDLE_STMT, handle_.get());
    std::u16string text = u"SELECT 1";
    return SQL_SUCCEEDED(
        SQLExecDirectW(statement.get(), wide(text), static_cast<SQLINTEGER>(text.size())));
}

bool OdbcConnection::isBlank() const {
    return !leftState_ && !inTransaction_ && !isolation_ && !isLost() &&
           std::ranges::none_of(reading_, [](const auto& each) { return !each.expired(); });
}

bool OdbcConnection::answers() {
    if (isLost()) {
        return false;
    }
    const auto limited = endLimit();
    return line_.isFound() ? !hasEnded() : exchangeSomething();
}

bool OdbcConnection::hasEnded() {
    switch (line_.look()) {
        case ServerLine::Sight::Ended:
            return true;
        case ServerLine::Sight::Spoken: {
            const auto limited = endLimit();
            return !exchangeSomething();
        }
        case ServerLine::Sight::Quiet:
            break;
    }
    return false;
}

OdbcConnection::~OdbcConnection() {
    if (connected_) {
        const auto limited = endLimit();
        // What a client has left open is undone; there is nobody to tell a failure to.
        SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
        SQLDisconnect(handle_.get());
    }
}

Watchdog::Limit OdbcConnection::limit(std::chrono::seconds timeout) {
    return {watchdog_, timeout.count() > 0 ? timeout + kGrace : std::chrono::milliseconds(0)};
}

Watchdog::Limit OdbcConnection::endLimit() {
    return {watchdog_, kEndTime};
}

Handle OdbcConnection::newStatement(std::chrono::seconds timeout) {
    requireAlive();
    makeWay();
    progress();
    Handle statement(SQL_HANDLE_STMT, handle_.get());
    limitStatement(statement, timeout);
    return statement;
}

void OdbcConnection::renew(const Handle& statement, std::chrono::seconds timeout) {
    requireAlive();
    makeWay();
    progress();
    limitStatement(statement, timeout);
}

void OdbcConnection::requireAlive() const {
    if (isLost()) {
        throw driverError(errors::kUnspecified, "08S01", std::string(kLost) + ". " + kOpenAgain);
    }
}

void OdbcConnection::requireNotCancelled() const {
    if (cancelling_.isWanted()) {
        throw driverError(errors::kOperationCancelled, "HY008", kCancelled);
    }
}

void OdbcConnection::check(SQLRETURN code, const Handle& handle) {
    if (!SQL_SUCCEEDED(code)) {
        throw DriverError(failure(handle), kErrorSource);
    }
}

std::vector<ServerMessage> OdbcConnection::failure(const Handle& handle) {
    if (watchdog_.hasFired()) {
        lost_ = true;
        return noAnswer();
    }
    std::vector<ServerMessage> messages = diagnosticsOf(handle.kind(), handle.get());
    SQLUINTEGER dead = SQL_CD_FALSE;
    const SQLRETURN code = SQLGetConnectAttrW(handle_.get(), SQL_ATTR_CONNECTION_DEAD, &dead,
                                              SQL_IS_UINTEGER, nullptr);
    const bool said = std::ranges::any_of(messages, [](const ServerMessage& message) {
        return message.isError() && saysConnectionLost(message.state);
    });
    lost_ = lost_ || said || (SQL_SUCCEEDED(code) && dead == SQL_CD_TRUE);
    if (lost_) {
        tellOfLoss(messages);
        return messages;
    }
    for (ServerMessage& message : messages) {
        if (!message.isError()) {
            continue;
        }
        if (cancelling_.isWanted()) {
            message.number = errors::kOperationCancelled;
        } else {
            dialect_->refine(message);
        }
    }
    return messages;
}

// Drivers say it in many ways: clients are told it in one, with the driver's words behind.
void OdbcConnection::tellOfLoss(std::vector<ServerMessage>& messages) const {
    const auto first = std::ranges::find_if(messages, &ServerMessage::isError);
    const auto told = std::ranges::find_if(messages, [](const ServerMessage& message) {
        return message.isError() && saysConnectionLost(message.state);
    });
    ServerMessage& loss = told == messages.end() ? *first : *told;
    loss.text = std::string(kLost) + " (" + loss.text + "). " + kOpenAgain;
    loss.state = "08S01";
    std::rotate(messages.begin(), messages.begin() + (&loss - messages.data()),
                messages.begin() + (&loss - messages.data()) + 1);
    for (ServerMessage& message : messages) {
        if (message.isError()) {
            message.number = errors::kUnspecified;
        }
    }
}

void OdbcConnection::setIsolation(IsolationLevelEnum level) {
    if (level == IsolationLevelEnum::adXactUnspecified) {
        return;
    }
    const SQLULEN wanted = isolationOf(level);
    if (wanted == 0 || (dialect_->driver().isolationLevels & wanted) == 0) {
        throw driverError(errors::kFeatureNotAvailable, "HYC00",
                          "The database server has no transactions of this isolation level.");
    }
    if (isolation_ == wanted) {
        return;
    }
    makeWay();
    requireAlive();
    check(SQLSetConnectAttrW(handle_.get(), SQL_ATTR_TXN_ISOLATION, asPointer(wanted),
                             SQL_IS_UINTEGER),
          handle_);
    isolation_ = wanted;
}

void OdbcConnection::setAutoCommit(bool on) {
    makeWay();
    requireAlive();
    check(
        SQLSetConnectAttrW(handle_.get(), SQL_ATTR_AUTOCOMMIT,
                           asPointer(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), SQL_IS_UINTEGER),
        handle_);
    inTransaction_ = !on;
}

void OdbcConnection::endTransaction(bool commit) {
    makeWay();
    requireAlive();
    const SQLRETURN code =
        SQLEndTran(SQL_HANDLE_DBC, handle_.get(), commit ? SQL_COMMIT : SQL_ROLLBACK);
    if (SQL_SUCCEEDED(code)) {
        return;
    }
    std::vector<ServerMessage> messages = failure(handle_);
    if (commit && isLost()) {
        messages.front().text += " Whether the transaction has been committed is not known.";
    }
    throw DriverError(std::move(messages), kErrorSource);
}

void OdbcConnection::reading(const std::shared_ptr<Unread>& unread) {
    std::erase_if(reading_, [](const auto& each) { return each.expired(); });
    reading_.push_back(unread);
}

void OdbcConnection::makeWay() {
    if (dialect_->driver().concurrent) {
        return;
    }
    for (const auto& each : std::exchange(reading_, {})) {
        if (const auto unread = each.lock()) {
            unread->readAhead();
        }
    }
}

void OdbcConnection::endReading() {
    for (const auto& each : std::exchange(reading_, {})) {
        if (const auto unread = each.lock()) {
            unread->drop();
        }
    }
}

}  // namespace kap::ado::odbc
