#include "engine/sqlite/time_limit.hpp"

#include <algorithm>
#include <thread>

#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {
namespace {

// Steps of SQLite's machine between two looks at the clock: some tens of microseconds.
constexpr int kStepsBetweenLooks = 4000;
constexpr std::chrono::milliseconds kLongestNap{20};

}  // namespace

thread_local TimeLimit* TimeLimit::current = nullptr;
thread_local TimeLimit::Fuse* TimeLimit::fuse = nullptr;
thread_local int TimeLimit::pauses = 0;

TimeLimit::Fuse::Fuse(int steps, std::int64_t looks) noexcept
    : steps_(steps), looks_(looks), outer_(fuse) {
    fuse = this;
}

TimeLimit::Fuse::~Fuse() {
    fuse = outer_;
}

TimeLimit::TimeLimit(sqlite3* connection, std::chrono::seconds limit,
                     const std::atomic<bool>* cancelled)
    : connection_(connection),
      end_(std::chrono::steady_clock::now() + limit),
      timed_(limit.count() > 0),
      cancelled_(cancelled),
      limited_(timed_ || cancelled != nullptr),
      outer_(current) {
    if (limited_) {
        current = this;
        const int steps = fuse == nullptr ? kStepsBetweenLooks : fuse->steps_;
        sqlite3_progress_handler(connection_, steps, &TimeLimit::called, this);
    }
}

TimeLimit::~TimeLimit() {
    if (limited_) {
        sqlite3_progress_handler(connection_, 0, nullptr, nullptr);
        current = outer_;
    }
}

bool TimeLimit::look() noexcept {
    if (!passed_ && timed_) {
        passed_ = fuse == nullptr ? std::chrono::steady_clock::now() >= end_ : --fuse->looks_ < 0;
    }
    passed_ = passed_ || (cancelled_ != nullptr && *cancelled_);
    return passed_;
}

int TimeLimit::called(void* self) {
    return pauses == 0 && static_cast<TimeLimit*>(self)->look() ? 1 : 0;
}

bool TimeLimit::isOver(sqlite3* connection) noexcept {
    return current != nullptr && current->connection_ == connection && current->look();
}

void TimeLimit::forgive(sqlite3* connection) noexcept {
    if (current != nullptr && current->connection_ == connection) {
        current->passed_ = false;
    }
}

void TimeLimit::check(sqlite3* connection) {
    if (isOver(connection)) {
        throw SqliteError(SQLITE_INTERRUPT, "interrupted", 0);
    }
}

std::chrono::milliseconds TimeLimit::left(sqlite3* connection,
                                          std::chrono::milliseconds most) noexcept {
    if (current == nullptr || current->connection_ != connection || !current->timed_ ||
        fuse != nullptr) {
        return most;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(
        current->end_ - std::chrono::steady_clock::now());
    return std::min(std::max(left, std::chrono::milliseconds(0)), most);
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

}  // namespace kap::engine
