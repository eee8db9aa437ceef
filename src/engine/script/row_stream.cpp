#include "engine/script/row_stream.hpp"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <new>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "data/cell_value.hpp"
#include "engine/script/script_runner.hpp"

namespace kap::engine {
namespace {

constexpr std::int64_t kRowsAtOnce = 1024;
constexpr std::chrono::milliseconds kLongestRead{50};

// A row that failed may have left values in some of the stores.
void keepWholeRows(std::vector<ado::ColumnStore>& rows) {
    const std::size_t whole = std::ranges::min_element(rows, {}, &ado::ColumnStore::size)->size();
    for (ado::ColumnStore& store : rows) {
        store.truncate(whole);
    }
}

}  // namespace

RowStream::RowStream(ScriptRunner& runner, std::shared_ptr<Program> program,
                     std::shared_ptr<Frame> frame, std::unique_ptr<StandingRows> rows,
                     std::chrono::seconds timeout)
    : runner_(&runner),
      program_(std::move(program)),
      frame_(std::move(frame)),
      standing_(std::move(rows)),
      columns_(standing_->columns()),
      reader_(columns_),
      timeout_(timeout) {}

RowStream::~RowStream() {
    if (runner_ != nullptr) {
        const std::lock_guard lock(runner_->journal().guard());
        finish();
    }
}

void RowStream::stand() {
    const std::lock_guard lock(runner_->journal().guard());
    runner_->journal().begin(*this);
}

// Nothing holds the state of the database any more.
void RowStream::finish() noexcept {
    if (standing_ != nullptr) {
        runner_->journal().end();
        runner_->finishedStanding(standing_->count());
        standing_.reset();
    }
}

void RowStream::raiseFailure() {
    if (outOfMemory_) {
        throw std::bad_alloc();
    }
    if (failure_) {
        raised_ = true;
        throw *failure_;
    }
}

// True when there are others behind the rows that have come.
bool RowStream::read(std::vector<ado::ColumnStore>& rows, bool all, Wait wait) {
    const auto start = std::chrono::steady_clock::now();
    bool more = true;
    const auto takeRows = [&] {
        for (std::int64_t count = 1; more; ++count) {
            reader_.read(standing_->statement(), rows);
            more = standing_->next();
            if (!all && (count >= kRowsAtOnce ||
                         std::chrono::steady_clock::now() - start >= kLongestRead)) {
                break;
            }
        }
    };
    try {
        const auto limit = wait == Wait::Limited ? timeout_ : std::chrono::seconds(0);
        failure_ = runner_->during(*frame_, limit, undone_, takeRows);
    } catch (const std::bad_alloc&) {
        outOfMemory_ = true;
    }
    if (!more || outOfMemory_ || failure_) {
        finish();
        keepWholeRows(rows);
    }
    raiseFailure();
    return more;
}

void RowStream::takeAhead(std::vector<ado::ColumnStore>& rows) {
    if (ahead_.empty()) {
        return;
    }
    if (rows.front().size() == 0) {
        std::ranges::swap_ranges(rows, ahead_);
    } else {
        for (std::size_t column = 0; column < ahead_.size(); ++column) {
            for (std::size_t row = 0; row < ahead_[column].size(); ++row) {
                append(rows[column], databaseValue(columns_[column], ahead_[column], row));
            }
        }
    }
    ahead_.clear();
}

void RowStream::fetch(std::vector<ado::ColumnStore>& rows) {
    if (runner_ == nullptr) {
        raiseFailure();
        return;
    }
    const std::lock_guard lock(runner_->journal().guard());
    takeAhead(rows);
    raiseFailure();
    if (standing_ != nullptr) {
        static_cast<void>(read(rows, /*all=*/true, Wait::Limited));
    }
}

bool RowStream::fetchSome(std::vector<ado::ColumnStore>& rows) {
    if (runner_ == nullptr) {
        raiseFailure();
        return false;
    }
    const std::lock_guard lock(runner_->journal().guard());
    const bool wasAhead = !ahead_.empty();
    takeAhead(rows);
    if (wasAhead && (failure_ || outOfMemory_)) {
        return true;  // behind the rows that came till then
    }
    raiseFailure();
    const std::size_t before = rows.front().size();
    try {
        return standing_ != nullptr && read(rows, /*all=*/false, Wait::Limited);
    } catch (const ado::DriverError&) {
        if (rows.front().size() > before) {
            raised_ = false;
            return true;  // it is raised behind them
        }
        throw;
    }
}

void RowStream::passOver() {
    if (runner_ == nullptr) {
        return;
    }
    const std::lock_guard lock(runner_->journal().guard());
    ahead_.clear();
    if (standing_ != nullptr) {
        try {
            failure_ = runner_->during(*frame_, timeout_, undone_, [&] {
                while (standing_->next()) {
                }
            });
        } catch (const std::bad_alloc&) {
            outOfMemory_ = true;
        }
        finish();
    }
    undone_ = false;
    if (!raised_) {
        raiseFailure();
    }
}

void RowStream::takeRest() noexcept {
    try {
        if (standing_ != nullptr) {
            ahead_.resize(columns_.size());
            static_cast<void>(read(ahead_, /*all=*/true, Wait::Endless));
        }
    } catch (const ado::DriverError&) {
        raised_ = false;  // it has been kept
    } catch (const std::bad_alloc&) {
        outOfMemory_ = true;
        finish();
    }
}

void RowStream::readAhead() {
    const std::lock_guard lock(runner_->journal().guard());
    takeRest();
    if (std::exchange(undone_, false)) {
        raiseFailure();
    }
}

bool RowStream::stands() {
    if (runner_ == nullptr) {
        return false;
    }
    const std::lock_guard lock(runner_->journal().guard());
    return standing_ != nullptr;
}

void RowStream::drop() {
    const std::lock_guard lock(runner_->journal().guard());
    if (standing_ != nullptr) {
        finish();
        failure_.emplace(std::vector<ado::ServerMessage>{
            {0, ado::errors::kObjectClosed, "08003",
             "The connection was closed before all rows had been fetched."}});
    }
    frame_.reset();
    program_.reset();
    runner_ = nullptr;
}

}  // namespace kap::engine
