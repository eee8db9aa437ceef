#include "ado/gradual_rows.hpp"

#include <utility>

#include "data/failures.hpp"
#include "data/value.hpp"

namespace kap::ado {

GradualRows::GradualRows(std::shared_ptr<RowSource> source, const std::vector<ColumnInfo>& columns)
    : source_(std::move(source)), here_(columns.size()) {
    holdsBytes_.reserve(columns.size());
    for (const ColumnInfo& column : columns) {
        const Storage storage = storageOf(column.type);
        holdsBytes_.push_back(storage == Storage::Text || storage == Storage::Binary ||
                              column.wideDecimal);
    }
    thread_.start([this] { run(); });
}

GradualRows::~GradualRows() {
    const std::lock_guard lock(guard_);
    stopped_ = true;
}

void GradualRows::run() noexcept {
    std::vector<ColumnStore> rows(holdsBytes_.size());
    for (bool more = true; more;) {
        std::exception_ptr failure;
        try {
            for (ColumnStore& column : rows) {
                column.clear();
            }
            more = source_->fetchSome(rows);
        } catch (...) {
            failure = std::current_exception();
            more = false;
        }
        const std::lock_guard lock(guard_);
        try {
            appendEach(here_, rows);
        } catch (...) {
            failure = std::current_exception();
            more = false;
        }
        failure_ = failure_ ? failure_ : failure;
        more = more && !stopped_;
        over_ = !more;
        changed_.notify_all();
    }
}

// Without memory for all of them no column has any.
void GradualRows::appendEach(std::vector<ColumnStore>& to,
                             const std::vector<ColumnStore>& from) const {
    const std::size_t before = to.front().size();
    try {
        for (std::size_t column = 0; column < to.size(); ++column) {
            to[column].appendAll(from[column], holdsBytes_[column]);
        }
    } catch (...) {
        for (ColumnStore& column : to) {
            column.truncate(before);
        }
        throw;
    }
}

// Whether others are to come.
bool GradualRows::take(std::vector<ColumnStore>& rows, Wanted wanted) {
    std::unique_lock lock(guard_);
    if (thread_.isHere()) {
        changed_.wait(lock, [&] {
            return over_ || wanted == Wanted::WhatIsHere ||
                   (wanted == Wanted::Something && here_.front().size() > 0);
        });
    } else {
        over_ = true;  // in a process that was forked off
    }
    const bool any = here_.front().size() > 0;
    if (any) {
        appendEach(rows, here_);
        for (ColumnStore& column : here_) {
            column.clear();
        }
    }
    if (any && wanted != Wanted::All && (failure_ || cancelled_)) {
        return true;  // it is raised behind them
    }
    if (failure_) {
        std::rethrow_exception(failure_);
    }
    if (cancelled_) {
        fail::operationCancelled();
    }
    return !over_;
}

void GradualRows::fetch(std::vector<ColumnStore>& rows) {
    static_cast<void>(take(rows, Wanted::All));
}

bool GradualRows::fetchSome(std::vector<ColumnStore>& rows) {
    return take(rows, Wanted::Something);
}

bool GradualRows::fetchReady(std::vector<ColumnStore>& rows) {
    return take(rows, Wanted::WhatIsHere);
}

void GradualRows::waitForAll() {
    std::unique_lock lock(guard_);
    if (thread_.isHere()) {
        changed_.wait(lock, [this] { return over_; });
    }
}

void GradualRows::cancel() {
    const std::lock_guard lock(guard_);
    cancelled_ = !over_;
    stopped_ = true;
}

}  // namespace kap::ado
