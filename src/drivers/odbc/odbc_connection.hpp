#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/cancelling.hpp"
#include "drivers/odbc/connect_text.hpp"
#include "drivers/odbc/handles.hpp"
#include "drivers/odbc/server_dialect.hpp"
#include "drivers/odbc/server_line.hpp"
#include "drivers/odbc/watchdog.hpp"

namespace kap::ado::odbc {

// What a statement has still to give. Where only one can be open at a time it is in the way of the
// next.
class Unread {
public:
    Unread() = default;
    Unread(const Unread&) = delete;
    Unread& operator=(const Unread&) = delete;
    virtual ~Unread() = default;

    // Reads everything that is left; a failure is raised by whoever asks for what it stands in the
    // place of.
    virtual void readAhead() = 0;
    // Ends the reading: nothing can be fetched any more.
    virtual void drop() = 0;
};

// The connection itself, shared by the session and by the results that are still being read.
class OdbcConnection {
public:
    // Raises DriverError: kTimeout when there is no connection within the time that the text gives,
    // kLogin for every other reason.
    explicit OdbcConnection(const ConnectText& text);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    [[nodiscard]] SQLHDBC handle() const noexcept { return handle_.get(); }
    // What differs from server to server, and from driver to driver.
    [[nodiscard]] const ServerDialect& dialect() const noexcept { return *dialect_; }

    // How long the server may be silent while the object lives; 0: as long as it likes. A server
    // that does not answer in time, and not soon after either, is given up: the connection is lost.
    [[nodiscard]] Watchdog::Limit limit(std::chrono::seconds timeout);
    // How long it may be silent when something ends whose outcome nobody waits for.
    [[nodiscard]] Watchdog::Limit endLimit();
    // The server has answered: it has its time anew.
    void progress() { watchdog_.progress(); }

    // What can be ended from another thread.
    [[nodiscard]] Cancelling& cancelling() noexcept { return cancelling_; }
    // Raises kOperationCancelled when what runs has been told to end.
    void requireNotCancelled() const;

    // A new statement. Where the driver has but one result open at a time, what is left of an
    // earlier one is read first. Raises at once when the connection has been lost.
    [[nodiscard]] Handle newStatement(std::chrono::seconds timeout);
    // The same for a statement of this connection that is going to be run again.
    void renew(const Handle& statement, std::chrono::seconds timeout);

    // Raises what the handle reports when a call has failed.
    void check(SQLRETURN code, const Handle& handle);
    // What a failed call reports; remembers when it says that the connection is lost.
    [[nodiscard]] std::vector<ServerMessage> failure(const Handle& handle);

    [[nodiscard]] bool isLost() const noexcept { return lost_ || watchdog_.hasFired(); }

    // Something that another user of the connection would meet has been left on it.
    void leaveState() noexcept { leftState_ = true; }
    // Whether it could be another one without anybody's noticing: nothing has been left on it, no
    // transaction is open and no result is being read.
    [[nodiscard]] bool isBlank() const;
    // Whether the server has ended the connection while nobody used it.
    [[nodiscard]] bool hasEnded();
    [[nodiscard]] std::chrono::steady_clock::time_point opened() const noexcept { return opened_; }
    // Whether the server still answers, asked at no cost where that can be told.
    [[nodiscard]] bool answers();

    // Nothing is to be sent any more: what the server has open, it undoes.
    void giveUp() noexcept { lost_ = true; }

    void setIsolation(IsolationLevelEnum level);
    void setAutoCommit(bool on);
    // Whether what is written lasts only when the transaction ends well.
    [[nodiscard]] bool inTransaction() const noexcept { return inTransaction_; }
    void endTransaction(bool commit);

    // Something of this connection that is being read.
    void reading(const std::shared_ptr<Unread>& unread);
    // Ends what is being read: what has not been fetched is lost.
    void endReading();

private:
    void requireAlive() const;
    void makeWay();
    void connect(const ConnectText& text);
    bool exchangeSomething();
    void tellOfLoss(std::vector<ServerMessage>& messages) const;

    ServerLine line_;
    Watchdog watchdog_;
    Cancelling cancelling_;
    Handle handle_;
    std::unique_ptr<const ServerDialect> dialect_;
    const std::chrono::steady_clock::time_point opened_ = std::chrono::steady_clock::now();
    bool lost_ = false;
    bool leftState_ = false;
    bool inTransaction_ = false;
    // The level that the connection has been given; unset: the server's own.
    std::optional<SQLULEN> isolation_;
    bool connected_ = false;
    std::vector<std::weak_ptr<Unread>> reading_;
};

}  // namespace kap::ado::odbc
