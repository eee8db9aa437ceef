#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ado/driver.hpp"
#include "ado/odbc/abilities.hpp"
#include "ado/odbc/connect_text.hpp"
#include "ado/odbc/handles.hpp"

namespace kap::ado::odbc {

class PendingRows;

// The connection itself, shared by the session and by the results that are still being read.
class Link {
public:
    // Raises DriverError kLogin when there is no connection within the time that the text gives.
    explicit Link(const ConnectText& text);
    ~Link();
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    [[nodiscard]] SQLHDBC handle() const noexcept { return connection_.get(); }
    [[nodiscard]] const Abilities& abilities() const noexcept { return abilities_; }

    // A new statement. Where the driver has but one result open at a time, what is left of an
    // earlier one is read first. Raises at once when the connection has been lost.
    [[nodiscard]] Handle newStatement(std::chrono::seconds timeout);

    // Raises what the handle reports when a call has failed.
    void check(SQLRETURN code, const Handle& handle);
    // What a failed call reports; remembers when it says that the connection is lost.
    [[nodiscard]] std::vector<ServerMessage> failure(const Handle& handle);

    [[nodiscard]] bool isLost() const noexcept { return lost_; }

    void setAutoCommit(bool on);
    void endTransaction(bool commit);

    // The rows that a result still has to read: one that is being read, of this connection.
    void reading(const std::shared_ptr<PendingRows>& rows);
    // Ends what is being read: the rows that were not fetched are lost.
    void endReading();

private:
    void requireAlive() const;
    void makeWay();

    Handle connection_;
    Abilities abilities_;
    bool lost_ = false;
    bool connected_ = false;
    std::vector<std::weak_ptr<PendingRows>> reading_;
};

}  // namespace kap::ado::odbc
