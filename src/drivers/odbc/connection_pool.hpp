#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <mutex>

#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// The connections that clients have closed and others may go on with: those of the process that are
// blank (see OdbcConnection::isBlank) and whose string asks for it. For any thread.
class ConnectionPool {
public:
    [[nodiscard]] static ConnectionPool& shared();

    // A connection: one that was kept and still answers, or a new one. Raises what OdbcConnection
    // raises.
    [[nodiscard]] std::shared_ptr<OdbcConnection> open(const ConnectText& text);
    // Nobody needs it any more: it is kept, or closed.
    void close(const ConnectText& text, std::shared_ptr<OdbcConnection> connection) noexcept;

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Kept {
        ConnectText text;
        std::shared_ptr<OdbcConnection> connection;
        Time since;
    };
    [[nodiscard]] std::shared_ptr<OdbcConnection> take(const ConnectText& text);
    [[nodiscard]] std::list<Kept> takeStale(Time now);

    std::mutex mutex_;
    std::list<Kept> kept_;  // the last used first
};

}  // namespace kap::ado::odbc
