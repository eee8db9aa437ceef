#include "ado/row_table.hpp"

#include <algorithm>
#include <utility>

#include "data/cell_value.hpp"

namespace kap::ado {
namespace {

// Bytes of what a database sets in a column itself: a row version, a default.
constexpr std::size_t kSetByDatabase = 32;

}  // namespace

std::shared_ptr<RowTable> RowTable::madeByHand() {
    auto table = std::make_shared<RowTable>(Result{});
    table->madeByHand_ = true;
    table->draft_ = true;
    return table;
}

std::optional<std::size_t> RowTable::find(std::u16string_view name) const {
    if (byName_.empty()) {
        auto all = byName_;
        for (std::size_t i = 0; i < columns().size(); ++i) {
            all.emplace(String(columns()[i].name).units(), i);
        }
        byName_ = std::move(all);
    }
    const auto found = byName_.find(name);
    return found == byName_.end() ? std::nullopt : std::optional(found->second);
}

void RowTable::fetchAll() {
    if (complete()) {
        return;
    }
    result_.rest->fetch(result_.rows);
    received(/*more=*/false);
}

// Rows have come; none are left behind them unless `more` says so.
void RowTable::received(bool more) {
    ++generation_;
    if (!more) {
        result_.rest.reset();
    }
    limit(limit_);
    for (std::size_t column = 0; column < nullsReplaced_.size(); ++column) {
        if (nullsReplaced_[column]) {
            result_.rows[column].replaceNulls();
        }
    }
}

void RowTable::fetchMore() {
    if (!complete()) {
        received(result_.rest->fetchSome(result_.rows));
    }
}

void RowTable::comeGradually(std::shared_ptr<RowSource> rows, bool waits) {
    result_.rest = std::move(rows);
    gradual_ = true;
    waits_ = waits;
}

bool RowTable::takeReady() {
    const std::size_t before = size();
    if (!complete()) {
        received(result_.rest->fetchReady(result_.rows));
    }
    return size() > before;
}

bool RowTable::waitForSome() {
    if (!waits_) {
        return takeReady();
    }
    const std::size_t before = size();
    while (!complete() && size() == before) {
        fetchMore();
    }
    return size() > before;
}

bool RowTable::nextWindow() {
    window_.resize(columns().size());
    bool more = !complete();
    bool came = false;
    while (more && !came) {
        for (ColumnStore& column : window_) {
            column.clear();
        }
        more = result_.rest->fetchSome(window_);
        came = window_.front().size() > 0;
    }
    if (!came) {
        result_.rest.reset();
        return false;
    }
    passed_ += size();
    // The stores keep their places, to which tests of rows hold on.
    std::ranges::swap_ranges(result_.rows, window_);
    received(more);
    return true;
}

bool RowTable::startAgain(Result& result) {
    const auto sameName = [](const ColumnInfo& left, const ColumnInfo& right) {
        return left.name == right.name && left.type == right.type;
    };
    if (!std::ranges::equal(columns(), result.columns, sameName)) {
        return false;
    }
    result_.columns = std::move(result.columns);
    std::ranges::swap_ranges(result_.rows, result.rows);
    result_.rest = std::move(result.rest);
    passed_ = 0;
    received(!complete());
    return true;
}

std::vector<std::size_t> RowTable::rowsKept() {
    fetchAll();
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < size(); ++row) {
        if (!isDeleted(row) || pending(row) != nullptr) {
            rows.push_back(row);
        }
    }
    return rows;
}

void RowTable::limit(std::size_t rows) {
    limit_ = rows;
    if (rows == 0 || passed_ + size() < rows) {
        return;
    }
    result_.rest.reset();
    for (ColumnStore& column : result_.rows) {
        column.truncate(rows - passed_);
    }
}

void RowTable::setDeleted(std::size_t row, bool deleted) {
    if (isDeleted(row) == deleted) {
        return;
    }
    deleted_.resize(size());
    deleted_[row] = deleted;
    deletedCount_ = deleted ? deletedCount_ + 1 : deletedCount_ - 1;
    ++generation_;
}

void RowTable::makeRoom(const PendingValues& values, std::size_t rows) {
    for (std::size_t column = 0; column < columns().size(); ++column) {
        const Storage storage = storageOf(columns()[column].type);
        const bool hasBytes = storage == Storage::Text || storage == Storage::Binary;
        makeRoom(column, values, rows, hasBytes ? kSetByDatabase : 0);
    }
}

void RowTable::makeRoom(std::size_t column, const PendingValues& values, std::size_t rows,
                        std::size_t besides) {
    const bool given = column < values.size() && values[column].has_value();
    const auto* bytes = given ? bytesOf(*values[column]) : nullptr;
    result_.rows[column].makeRoom(rows, (bytes != nullptr ? bytes->size() : 0) + besides);
}

void RowTable::makeRoomForDeletion() {
    deleted_.reserve(size());
}

void RowTable::put(std::size_t row, const PendingValues& values) {
    for (std::size_t column = 0; column < values.size(); ++column) {
        makeRoom(column, values, 0, 0);
    }
    for (std::size_t column = 0; column < values.size(); ++column) {
        if (values[column]) {
            ado::put(result_.rows[column], row, *values[column]);
        }
    }
}

void RowTable::append(const PendingValues& values) {
    const Value null;
    for (std::size_t column = 0; column < columns().size(); ++column) {
        makeRoom(column, values, 1, 0);
    }
    for (std::size_t column = 0; column < columns().size(); ++column) {
        ado::append(result_.rows[column], values[column] ? *values[column] : null);
    }
    ++generation_;
}

void RowTable::replaceNulls(std::size_t column) {
    if (!once_) {
        fetchAll();
    }
    result_.rows[column].replaceNulls();
    nullsReplaced_.resize(columns().size());
    nullsReplaced_[column] = true;
}

void RowTable::revert(std::size_t row) {
    const auto waiting = pending_.find(row);
    const PendingValues& original = waiting->second.original;
    put(row, original);
    for (std::size_t column = 0; column < nullsReplaced_.size(); ++column) {
        if (nullsReplaced_[column] && original[column] == Value{}) {
            result_.rows[column].setReplacedNull(row);
        }
    }
    setDeleted(row, waiting->second.kind == PendingRow::Kind::New);
    pending_.erase(waiting);
}

Value RowTable::original(std::size_t row, std::size_t column) const {
    const PendingRow* waiting = pending(row);
    if (waiting != nullptr && waiting->original[column]) {
        return *waiting->original[column];
    }
    return databaseValue(columns()[column], result_.rows[column], row);
}

Value RowTable::underlying(std::size_t row, std::size_t column) const {
    const auto found = underlying_.find(row);
    if (found != underlying_.end() && found->second[column]) {
        return *found->second[column];
    }
    return original(row, column);
}

void RowTable::setUnderlying(std::size_t row, PendingValues values) {
    underlying_.insert_or_assign(row, std::move(values));
}

const PendingRow* RowTable::pending(std::size_t row) const noexcept {
    const auto found = pending_.find(row);
    return found == pending_.end() ? nullptr : &found->second;
}

bool RowTable::isNew(std::size_t row) const noexcept {
    const PendingRow* waiting = pending(row);
    return madeByHand_ || (waiting != nullptr && waiting->kind == PendingRow::Kind::New);
}

std::int32_t RowTable::status(std::size_t row) const {
    if (const PendingRow* waiting = pending(row)) {
        constexpr RecordStatusEnum kByKind[] = {RecordStatusEnum::adRecModified,
                                                RecordStatusEnum::adRecNew,
                                                RecordStatusEnum::adRecDeleted};
        return static_cast<std::int32_t>(kByKind[static_cast<std::size_t>(waiting->kind)]) |
               waiting->failure;
    }
    if (isDeleted(row)) {
        return static_cast<std::int32_t>(RecordStatusEnum::adRecDBDeleted);
    }
    const bool written = std::ranges::find(affected_, row) != affected_.end();
    return static_cast<std::int32_t>(written ? RecordStatusEnum::adRecOK
                                             : RecordStatusEnum::adRecUnmodified);
}

void RowTable::addColumn(ColumnInfo column) {
    result_.columns.push_back(std::move(column));
    result_.rows.emplace_back();
    byName_.clear();
}

void RowTable::removeColumn(std::size_t column) {
    result_.columns.erase(result_.columns.begin() + static_cast<std::ptrdiff_t>(column));
    result_.rows.pop_back();
    byName_.clear();
}

std::size_t RowTable::memory() const noexcept {
    std::size_t bytes = 0;
    for (const ColumnStore& store : result_.rows) {
        bytes += store.memory();
    }
    return bytes;
}

}  // namespace kap::ado
