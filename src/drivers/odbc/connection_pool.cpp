#include "drivers/odbc/connection_pool.hpp"

#include <algorithm>
#include <utility>

namespace kap::ado::odbc {
namespace {

// What nobody has wanted for so long is closed when connections are opened or closed next.
constexpr std::chrono::seconds kIdle(60);

bool same(const ConnectText& one, const ConnectText& other) {
    return one.text == other.text && one.oneResult == other.oneResult;
}

}  // namespace

ConnectionPool& ConnectionPool::shared() {
    // Never destroyed: objects that outlive every function's statics may still close connections.
    static auto* const pool = new ConnectionPool();
    return *pool;
}

std::shared_ptr<Link> ConnectionPool::open(const ConnectText& text) {
    while (text.pooling.wanted) {
        std::shared_ptr<Link> link = take(text);
        if (!link) {
            break;
        }
        if (link->answers()) {
            return link;
        }
    }
    return std::make_shared<Link>(text);
}

void ConnectionPool::close(const ConnectText& text, std::shared_ptr<Link> link) {
    const auto now = std::chrono::steady_clock::now();
    const Pooling& rules = text.pooling;
    const bool old = rules.lifetime.count() > 0 && now - link->opened() >= rules.lifetime;
    const bool kept =
        rules.wanted && !old && link.use_count() == 1 && link->isBlank() && !link->hasEnded();
    // Closing takes the server's time: not while others wait here.
    std::list<Kept> stale;
    const std::lock_guard lock(mutex_);
    stale = takeStale(now);
    if (!kept) {
        return;
    }
    const auto alike =
        std::ranges::count_if(kept_, [&](const Kept& each) { return same(each.text, text); });
    if (alike < rules.most) {
        kept_.push_front({text, std::move(link), now});
    }
}

std::shared_ptr<Link> ConnectionPool::take(const ConnectText& text) {
    std::list<Kept> stale;
    const std::lock_guard lock(mutex_);
    stale = takeStale(std::chrono::steady_clock::now());
    const auto found =
        std::ranges::find_if(kept_, [&](const Kept& each) { return same(each.text, text); });
    if (found == kept_.end()) {
        return nullptr;
    }
    std::shared_ptr<Link> link = std::move(found->link);
    kept_.erase(found);
    return link;
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
