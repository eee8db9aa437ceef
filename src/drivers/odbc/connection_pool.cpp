#include "drivers/odbc/connection_pool.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace kap::ado::odbc {
namespace {

// What nobody has wanted for so long is closed when connections are opened or closed next.
constexpr std::chrono::seconds kIdle(60);

bool same(const ConnectText& one, const ConnectText& other) {
    return one.text == other.text && one.oneResult == other.oneResult;
}

bool isWorthKeeping(const ConnectText& text, OdbcConnection& connection,
                    std::chrono::steady_clock::time_point now) {
    const Pooling& rules = text.pooling;
    const bool old = rules.lifetime.count() > 0 && now - connection.opened() >= rules.lifetime;
    return rules.wanted && !old && connection.isBlank() && !connection.hasEnded();
}

}  // namespace

ConnectionPool& ConnectionPool::shared() {
    // Never destroyed: objects that outlive every function's statics may still close connections.
    static auto* const pool = new ConnectionPool();
    return *pool;
}

std::shared_ptr<OdbcConnection> ConnectionPool::open(const ConnectText& text) {
    while (text.pooling.wanted) {
        std::shared_ptr<OdbcConnection> connection = take(text);
        if (!connection) {
            break;
        }
        if (connection->answers()) {
            return connection;
        }
    }
    return std::make_shared<OdbcConnection>(text);
}

// Called when objects end: what prevents keeping a connection lets it be closed.
void ConnectionPool::close(const ConnectText& text,
                           std::shared_ptr<OdbcConnection> connection) noexcept {
    // Closing takes the server's time: not while others wait here.
    std::list<Kept> stale;
    try {
        const auto now = std::chrono::steady_clock::now();
        const bool kept = isWorthKeeping(text, *connection, now) && connection.use_count() == 1;
        std::list<Kept> mine;
        if (kept) {
            mine.push_back({text, std::move(connection), now});
        }
        const std::lock_guard lock(mutex_);
        stale = takeStale(now);
        const auto alike =
            std::ranges::count_if(kept_, [&](const Kept& each) { return same(each.text, text); });
        if (alike < text.pooling.most) {
            kept_.splice(kept_.begin(), mine);
        } else {
            stale.splice(stale.begin(), mine);
        }
    } catch (const std::exception&) {
        connection.reset();
    }
}

std::shared_ptr<OdbcConnection> ConnectionPool::take(const ConnectText& text) {
    std::list<Kept> stale;
    const std::lock_guard lock(mutex_);
    stale = takeStale(std::chrono::steady_clock::now());
    const auto found =
        std::ranges::find_if(kept_, [&](const Kept& each) { return same(each.text, text); });
    if (found == kept_.end()) {
        return nullptr;
    }
    std::shared_ptr<OdbcConnection> connection = std::move(found->connection);
    kept_.erase(found);
    return connection;
}

std::list<ConnectionPool::Kept> ConnectionPool::takeStale(Time now) {
    std::list<Kept> stale;
    for (auto each = kept_.begin(); each != kept_.end();) {
        const auto next = std::next(each);
        if (now - each->since >= kIdle) {
            stale.splice(stale.end(), kept_, each);
        }
        each = next;
    }
    return stale;
}

}  // namespace kap::ado::odbc
