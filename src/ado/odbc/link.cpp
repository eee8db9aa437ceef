#include "ado/odbc/link.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/ado/error_numbers.hpp>

#include "ado/odbc/diagnostics.hpp"
#include "ado/odbc/pending_rows.hpp"
#include "frame/unicode.hpp"

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

}  // namespace

Link::Link(const ConnectText& text) : connection_(SQL_HANDLE_DBC, environment()) {
    if (text.timeout.count() > 0) {
        SQLSetConnectAttrW(connection_.get(), SQL_ATTR_LOGIN_TIMEOUT,
                           asPointer(static_cast<SQLULEN>(text.timeout.count())), SQL_IS_UINTEGER);
    }
    const String keys(text.text);
    const std::u16string units(keys.view());
    const SQLRETURN code = SQLDriverConnectW(connection_.get(), nullptr, wide(units),
                                             static_cast<SQLSMALLINT>(units.size()), nullptr, 0,
                                             nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(code)) {
        throw connectError(diagnosticsOf(SQL_HANDLE_DBC, connection_.get()), text.password);
    }
    connected_ = true;
    abilities_ = Abilities::of(connection_.get());
    abilities_.concurrent = abilities_.concurrent && !text.oneResult;
}

Link::~Link() {
    if (connected_) {
        // What a client has left open is undone; there is nobody to tell a failure to.
        SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_ROLLBACK);
        SQLDisconnect(connection_.get());
    }
}

Handle Link::newStatement(std::chrono::seconds timeout) {
    requireAlive();
    makeWay();
    Handle statement(SQL_HANDLE_STMT, connection_.get());
    if (timeout.count() > 0) {
        SQLSetStmtAttrW(statement.get(), SQL_ATTR_QUERY_TIMEOUT,
                        asPointer(static_cast<SQLULEN>(timeout.count())), SQL_IS_UINTEGER);
    }
    return statement;
}

void Link::requireAlive() const {
    if (lost_) {
        throw driverError(errors::kUnspecified, "08S01",
                          "The connection to the database server has been lost. Close it and open "
                          "it again.");
    }
}

void Link::check(SQLRETURN code, const Handle& handle) {
    if (!SQL_SUCCEEDED(code)) {
        throw DriverError(failure(handle), kErrorSource);
    }
}

std::vector<ServerMessage> Link::failure(const Handle& handle) {
    std::vector<ServerMessage> messages = diagnosticsOf(handle.kind(), handle.get());
    SQLUINTEGER dead = SQL_CD_FALSE;
    const SQLRETURN code = SQLGetConnectAttrW(connection_.get(), SQL_ATTR_CONNECTION_DEAD, &dead,
                                              SQL_IS_UINTEGER, nullptr);
    const bool said = std::ranges::any_of(messages, [](const ServerMessage& message) {
        return message.isError() && saysConnectionLost(message.state);
    });
    lost_ = lost_ || said || (SQL_SUCCEEDED(code) && dead == SQL_CD_TRUE);
    if (lost_ && !said) {
        for (ServerMessage& message : messages) {
            if (message.isError()) {
                message.number = errors::kUnspecified;
            }
        }
    }
    return messages;
}

void Link::setAutoCommit(bool on) {
    makeWay();
    requireAlive();
    check(
        SQLSetConnectAttrW(connection_.get(), SQL_ATTR_AUTOCOMMIT,
                           asPointer(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), SQL_IS_UINTEGER),
        connection_);
}

void Link::endTransaction(bool commit) {
    makeWay();
    requireAlive();
    check(SQLEndTran(SQL_HANDLE_DBC, connection_.get(), commit ? SQL_COMMIT : SQL_ROLLBACK),
          connection_);
}

void Link::reading(const std::shared_ptr<PendingRows>& rows) {
    std::erase_if(reading_, [](const auto& each) { return each.expired(); });
    reading_.push_back(rows);
}

void Link::makeWay() {
    if (abilities_.concurrent) {
        return;
    }
    for (const auto& each : std::exchange(reading_, {})) {
        if (const auto rows = each.lock()) {
            rows->readAhead();
        }
    }
}

void Link::endReading() {
    for (const auto& each : std::exchange(reading_, {})) {
        if (const auto rows = each.lock()) {
            rows->drop();
        }
    }
}

}  // namespace kap::ado::odbc
