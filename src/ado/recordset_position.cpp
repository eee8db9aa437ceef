// Where a recordset stands: movements, positions, pages and bookmarks.
#include <cmath>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/argument_value.hpp"
#include "ado/counted.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/row_cursor.hpp"
#include "data/failures.hpp"

namespace kap::ado {

void Recordset::requireScrolling() const {
    if (opened().options().forwardOnly) {
        fail::notAvailable(
            u"Current Recordset does not support bookmarks. This may be a limitation of the "
            u"provider or of the selected cursortype.");
    }
}

bool Recordset::fetches() const {
    return cursor_ != nullptr && connection_ && !cursor_->table().complete();
}

void Recordset::reportingFetch(const std::function<void()>& work) {
    const Ref<Connection> connection = connection_;
    const Counted running(connection->running_);
    connection->reporting(work);
}

bool Recordset::Bof() const {
    return opened().bof();
}

bool Recordset::Eof() const {
    return opened().eof();
}

std::int32_t Recordset::RecordCount() const {
    if (opened().options().forwardOnly) {
        return -1;
    }
    return static_cast<std::int32_t>(cursor_->count());
}

std::int32_t Recordset::AbsolutePosition() const {
    return opened().absolutePosition();
}

void Recordset::setAbsolutePosition(std::int32_t value) {
    savePending();
    requireScrolling();
    if (value < 1 || static_cast<std::size_t>(value) > cursor_->count()) {
        fail::invalidArgument();
    }
    moving(*this, EventReasonEnum::adRsnMove,
           [&] { opened().moveToPosition(static_cast<std::size_t>(value)); });
}

void Recordset::setPageSize(std::int32_t value) {
    if (value < 1) {
        fail::invalidArgument();
    }
    pageSize_ = value;
}

std::int32_t Recordset::PageCount() const {
    const std::int32_t records = RecordCount();
    return records < 0 ? records : records / pageSize_ + (records % pageSize_ == 0 ? 0 : 1);
}

std::int32_t Recordset::AbsolutePage() const {
    const std::int32_t position = AbsolutePosition();
    return position < 1 ? position : (position - 1) / pageSize_ + 1;
}

void Recordset::setAbsolutePage(std::int32_t value) {
    requireScrolling();
    if (value < 1 || value > PageCount()) {
        fail::invalidArgument();
    }
    setAbsolutePosition((value - 1) * pageSize_ + 1);
}

// Bookmarks are the rows' numbers from 1, as Doubles: a Long is a value of BookmarkEnum.
Variant Recordset::Bookmark() const {
    requireScrolling();
    return static_cast<double>(cursor_->recordNumber() + 1);
}

std::size_t Recordset::rowOfBookmark(const Variant& bookmark) const {
    const Variant value = argumentValue(bookmark);
    if (value.isEmpty() || value.isMissing()) {
        fail::invalidArgument();
    }
    if (value.type() != VarType::Double) {
        fail::badBookmark();
    }
    const auto number = value.as<double>();
    const auto rows = static_cast<double>(opened().table().size());
    if (!(number >= 1 && number <= rows) || number != std::floor(number)) {
        fail::badBookmark();
    }
    return static_cast<std::size_t>(number) - 1;
}

void Recordset::setBookmark(const Variant& value) {
    savePending();
    requireScrolling();
    moving(*this, EventReasonEnum::adRsnMove, [&] { opened().goTo(rowOfBookmark(value)); });
}

CompareEnum Recordset::CompareBookmarks(const Variant& bookmark1, const Variant& bookmark2) const {
    requireScrolling();
    const auto first = cursor_->placeOf(rowOfBookmark(bookmark1));
    const auto second = cursor_->placeOf(rowOfBookmark(bookmark2));
    if (!first || !second) {
        return CompareEnum::adCompareNotComparable;
    }
    if (first == second) {
        return CompareEnum::adCompareEqual;
    }
    return first < second ? CompareEnum::adCompareLessThan : CompareEnum::adCompareGreaterThan;
}

void Recordset::MoveFirst() {
    savePending();
    moving(*this, EventReasonEnum::adRsnMoveFirst, [&] {
        if (opened().hasPassedRows()) {
            runAgain();
        }
        cursor_->moveFirst();
    });
}

void Recordset::MoveLast() {
    savePending();
    moving(*this, EventReasonEnum::adRsnMoveLast, [&] { opened().moveLast(); });
}

void Recordset::MoveNext() {
    savePending();
    if (!isObserved() && !opened().fetchesNext()) {
        cursor_->move(1);
        return;
    }
    moving(*this, EventReasonEnum::adRsnMoveNext, [&] { opened().move(1); });
}

void Recordset::MovePrevious() {
    savePending();
    moving(*this, EventReasonEnum::adRsnMovePrevious, [&] { opened().move(-1); });
}

void Recordset::Move(std::int32_t numRecords, const Variant& start) {
    savePending();
    moving(*this, EventReasonEnum::adRsnMove, [&] {
        moveTo(start);
        cursor_->move(numRecords);
    });
}

// To where a movement or a search begins.
void Recordset::moveTo(const Variant& start) {
    requireOpen();
    if (start.isMissing()) {
        return;
    }
    if (start.type() == VarType::Double) {
        requireScrolling();
        cursor_->goTo(rowOfBookmark(start));
        return;
    }
    const Variant plain = argumentValue(start);
    if (plain.isString() || plain.isNull() || plain.isArray()) {
        fail::invalidArgument();
    }
    switch (static_cast<BookmarkEnum>(convert::toLong(plain))) {
        case BookmarkEnum::adBookmarkCurrent:
            break;
        case BookmarkEnum::adBookmarkFirst:
            if (cursor_->hasPassedRows()) {
                runAgain();
            }
            cursor_->moveFirst();
            break;
        case BookmarkEnum::adBookmarkLast:
            cursor_->moveLast();
            break;
        default:
            fail::invalidArgument();
    }
}

}  // namespace kap::ado
