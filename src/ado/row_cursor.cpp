#include "ado/row_cursor.hpp"

#include <algorithm>
#include <compare>
#include <utility>

#include "ado/cell_order.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

std::int32_t positionCode(PositionEnum position) {
    return static_cast<std::int32_t>(position);
}

struct SortKey {
    std::size_t column;
    bool descending;
};

std::vector<SortKey> sortKeys(const RowTable& table, const std::vector<SortName>& names) {
    std::vector<SortKey> keys;
    for (const SortName& name : names) {
        const auto column = table.find(String(name.column).view());
        if (!column) {
            fail::itemNotFound();
        }
        keys.push_back({*column, name.descending});
    }
    return keys;
}

}  // namespace

RowCursor::RowCursor(std::shared_ptr<RowTable> table, Options options)
    : table_(std::move(table)),
      plans_(table_->columns()),
      view_(table_),
      options_(std::move(options)) {
    if (table_->size() > table_->deletedCount()) {
        moveFirst();
    }
}

bool RowCursor::bof() const noexcept {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return false;
    }
    return position_ < 0 || (position_ >= end() && view_.count() == 0);
}

// A deleted record stays current until the next movement, so it is neither end.
bool RowCursor::eof() const noexcept {
    if (editMode_ == EditModeEnum::adEditAdd) {
        return false;
    }
    return position_ >= end() || (position_ < 0 && view_.count() == 0);
}

std::size_t RowCursor::count() {
    if (table_->isGradual()) {
        table_->takeReady();
    } else {
        table_->fetchAll();
    }
    view_.takeNewRows();
    return view_.count() + (editMode_ == EditModeEnum::adEditAdd ? 1 : 0);
}

std::int32_t RowCursor::absolutePosition() const noexcept {
    if (options_.forwardOnly) {
        return positionCode(PositionEnum::adPosUnknown);
    }
    if (editMode_ == EditModeEnum::adEditAdd) {
        return static_cast<std::int32_t>(view_.count() + 1);
    }
    if (bof()) {
        return positionCode(view_.count() == 0 ? PositionEnum::adPosUnknown
                                               : PositionEnum::adPosBOF);
    }
    if (eof()) {
        return positionCode(PositionEnum::adPosEOF);
    }
    const auto place = static_cast<std::size_t>(position_);
    if (!view_.shows(place)) {
        return positionCode(PositionEnum::adPosUnknown);
    }
    return static_cast<std::int32_t>(view_.countBefore(place) + 1);
}

void RowCursor::moveFirst() {
    view_.takeNewRows();
    if (view_.count() == 0) {
        fail::noCurrentRecord();
    }
    position_ = -1;
    move(1);
}

void RowCursor::moveLast() {
    while (table_->isReadOnce() && !table_->complete()) {
        static_cast<void>(table_->nextWindow());
    }
    table_->fetchAll();
    view_.takeNewRows();
    if (view_.count() == 0) {
        fail::noCurrentRecord();
    }
    position_ = end();
    for (bool shown = false; !shown; shown = view_.shows(static_cast<std::size_t>(position_))) {
        --position_;
    }
}

void RowCursor::requireBackward() const {
    if (options_.forwardOnly) {
        fail::cannotFetchBackward();
    }
}

// Has the rows come that a movement needs. Those that are read once make place for the next ones;
// the position then counts from where these begin.
void RowCursor::fetchFor(std::int64_t records) {
    while (!table_->complete() && records >= end() - position_) {
        if (table_->isGradual()) {
            if (!table_->waitForSome()) {
                return;
            }
            view_.takeNewRows();
            continue;
        }
        if (!table_->isReadOnce()) {
            table_->fetchAll();
            return;
        }
        const std::int64_t passed = end();
        if (table_->nextWindow()) {
            position_ -= passed;
        }
    }
}

void RowCursor::move(std::int64_t records) {
    if (records < 0) {
        requireBackward();
    } else {
        fetchFor(records);
    }
    view_.takeNewRows();
    const bool nowhereToGo = (records > 0 && position_ >= end()) || (records < 0 && position_ < 0);
    if (nowhereToGo || (bof() && eof())) {
        fail::noCurrentRecord();
    }
    if (!view_.hasGaps()) {
        const bool beyond = records > end() - position_;
        position_ = beyond ? end() : std::max<std::int64_t>(position_ + records, -1);
        return;
    }
    const std::int64_t step = records < 0 ? -1 : 1;
    std::int64_t target = position_;
    for (std::int64_t left = records; left != 0 && target + step >= -1 && target + step <= end();) {
        target += step;
        const bool inside = target >= 0 && target < end();
        left -= inside && !view_.shows(static_cast<std::size_t>(target)) ? 0 : step;
    }
    position_ = target;
}

void RowCursor::moveToPosition(std::size_t position) {
    requireBackward();
    moveFirst();
    if (position > 1) {
        move(static_cast<std::int64_t>(position) - 1);
    }
}

std::size_t RowCursor::rowsLeft(std::size_t wanted) {
    while (table_->isReadOnce() && !table_->complete() &&
           static_cast<std::size_t>(end() - std::max<std::int64_t>(position_, 0)) < wanted) {
        table_->fetchMore();
    }
    if (!table_->isReadOnce()) {
        table_->fetchAll();
    }
    view_.takeNewRows();
    const auto place = static_cast<std::size_t>(std::clamp<std::int64_t>(position_, 0, end()));
    return view_.count() - view_.countBefore(place);
}

std::size_t RowCursor::currentPlaceRow() const {
    if (position_ < 0 || position_ >= end()) {
        fail::noCurrentRecord();
    }
    return view_.row(static_cast<std::size_t>(position_));
}

std::size_t RowCursor::currentRow() const {
    const std::size_t row = currentPlaceRow();
    if (table_->isDeleted(row)) {
        fail::deletedRow();
    }
    return row;
}

void RowCursor::goTo(std::size_t row) {
    table_->fetchAll();
    view_.takeNewRows();
    const auto place = view_.placeOf(row);
    if (!place) {
        fail::badBookmark();
    }
    position_ = static_cast<std::int64_t>(*place);
}

std::vector<std::size_t> RowCursor::rowsShown() {
    table_->fetchAll();
    view_.takeNewRows();
    std::vector<std::size_t> rows;
    for (std::size_t place = 0; place < view_.size(); ++place) {
        if (view_.shows(place)) {
            rows.push_back(view_.row(place));
        }
    }
    return rows;
}

void RowCursor::search(const RowTest& test, std::int64_t skip, SearchDirectionEnum direction) {
    if (table_->isReadOnce()) {
        searchOnce(test, skip);
        return;
    }
    table_->fetchAll();
    if (skip != 0) {
        move(skip * static_cast<std::int64_t>(direction));
    }
    const std::int64_t step = direction == SearchDirectionEnum::adSearchBackward ? -1 : 1;
    std::int64_t place = std::clamp<std::int64_t>(position_, step < 0 ? -1 : 0, end());
    for (; place >= 0 && place < end(); place += step) {
        const auto at = static_cast<std::size_t>(place);
        if (view_.shows(at) && test(view_.row(at))) {
            break;
        }
    }
    position_ = place;
}

// Through rows that make place for others.
void RowCursor::searchOnce(const RowTest& test, std::int64_t skip) {
    if (skip != 0) {
        move(skip);
    }
    while (!eof() && !test(currentRow())) {
        move(1);
    }
}

void RowCursor::arrange(RowFilter filter, const std::vector<SortName>& sort) {
    table_->fetchAll();
    std::function<void(std::vector<std::size_t>&)> sorted;
    if (!sort.empty()) {
        sorted = [this, keys = sortKeys(*table_, sort)](std::vector<std::size_t>& rows) {
            std::ranges::stable_sort(rows, [&](std::size_t left, std::size_t right) {
                for (const SortKey& key : keys) {
                    const auto order =
                        compareCells(columns()[key.column], table_->store(key.column), left, right);
                    if (std::is_neq(order)) {
                        return key.descending ? std::is_gt(order) : std::is_lt(order);
                    }
                }
                return false;
            });
        };
    }
    view_.arrange(std::move(filter), sorted);
    position_ = view_.count() == 0 ? -1 : 0;
    if (position_ == 0 && !view_.shows(0)) {
        move(1);
    }
}

}  // namespace kap::ado
