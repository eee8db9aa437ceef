#include "ado/embedded/script/time_limit.hpp"

#include <algorithm>
#include <thread>

#include "ado/embedded/sqlite.hpp"

namespace kap::ado::embedded {
namespace {

// Steps of SQLite's machine between two looks at the clock: some tens of microseconds.
constexpr int kStepsBetweenLooks = 4000;
constexpr std::chrono::milliseconds kLongestNap{20};

}  // namespace

thread_local TimeLimit* TimeLimit::current = nullptr;

TimeLimit::TimeLimit(sqlite3* connection, std::chrono::seconds limit)
    : connection_(connection),
      end_(std::chrono::steady_clock::now() + limit),
      limited_(limit.count() > 0),
      outer_(current) {
    if (limited_) {
        current = this;
        sqlite3_progress_handler(connection_, kStepsBetweenLooks, &TimeLimit::called, this);
    }
}

TimeLimit::~TimeLimit() {
    if (limited_) {
        sqlite3_progress_handler(connection_, 0, nullptr, nullptr);
        current = outer_;
    }
}

bool TimeLimit::look() noexcept {
    passed_ = passed_ || std::chrono::steady_clock::now() >= end_;
    return passed_;
}

int TimeLimit::called(void* self) {
    return static_cast<TimeLimit*>(self)->look() ? 1 : 0;
}

void TimeLimit::check(sqlite3* connection) {
    if (current != nullptr && current->connection_ == connection && current->look()) {
        throw SqliteError(SQLITE_INTERRUPT, "interrupted", 0);
    }
}

void TimeLimit::wait(sqlite3* connection, std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (true) {
        check(connection);
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return;
        }
        std::this_thread::sleep_for(std::min(left, kLongestNap));
    }
}

}  // namespace kap::ado::embedded
