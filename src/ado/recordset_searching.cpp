// Which records a recordset shows, in which order, and the search for one.
#include <unordered_set>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/argument_value.hpp"
#include "ado/criteria.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/row_cursor.hpp"
#include "base/unicode.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

using RowSet = std::unordered_set<std::size_t>;

RowFilter inSet(RowSet rows) {
    return {[rows = std::move(rows)](std::size_t row) { return rows.contains(row); }};
}

RowFilter groupFilter(RowTable& table, FilterGroupEnum group) {
    switch (group) {
        case FilterGroupEnum::adFilterNone:
            return {};
        case FilterGroupEnum::adFilterFetchedRecords:
            return {[](std::size_t) { return true; }};
        case FilterGroupEnum::adFilterPendingRecords:
            return {[&table](std::size_t row) { return table.pending(row) != nullptr; },
                    /*showsDeleted=*/true};
        case FilterGroupEnum::adFilterAffectedRecords: {
            RowFilter filter = inSet({table.affected().begin(), table.affected().end()});
            filter.showsDeleted = true;
            return filter;
        }
        case FilterGroupEnum::adFilterPredicate:
            break;
        case FilterGroupEnum::adFilterConflictingRecords:
            return {[&table](std::size_t row) {
                        const PendingRow* waiting = table.pending(row);
                        return waiting != nullptr && waiting->failure != 0;
                    },
                    /*showsDeleted=*/true};
    }
    fail::invalidArgument();
}

}  // namespace

void Recordset::Find(const String& criteria, std::int32_t skipRecords,
                     SearchDirectionEnum searchDirection, const Variant& start) {
    savePending();
    if (searchDirection != SearchDirectionEnum::adSearchForward &&
        searchDirection != SearchDirectionEnum::adSearchBackward) {
        fail::invalidArgument();
    }
    const CriteriaNode wanted = parseCriteria(criteria.utf8());
    if (wanted.kind != CriteriaNode::Kind::Comparison) {
        fail::invalidArgument(u"Find takes one comparison; Filter takes several.");
    }
    moving(*this, EventReasonEnum::adRsnMove, [&] {
        const RowTest test = rowTest(opened().table(), wanted);
        moveTo(start);
        if (cursor_->bof() || cursor_->eof()) {
            fail::noCurrentRecord();
        }
        if (searchDirection == SearchDirectionEnum::adSearchBackward) {
            requireScrolling();
        }
        cursor_->search(test, skipRecords, searchDirection);
    });
}

void Recordset::setFilter(const Variant& value) {
    Variant given = argumentValue(value);
    if (given.isEmpty() || given.isNull() || given.isMissing()) {
        fail::invalidArgument();
    }
    if (given.isString() && unicode::trim(given.as<String>().view()).empty()) {
        given = u"";
    }
    if (cursor_ == nullptr) {
        filter_ = std::move(given);
        return;
    }
    savePending();
    moving(*this, EventReasonEnum::adRsnMove, [&] {
        requireOpen();
        if (cursor_->hasPassedRows()) {
            runAgain();
        }
        const Variant previous = std::exchange(filter_, std::move(given));
        try {
            rearrange();
        } catch (const AutomationError&) {
            filter_ = previous;
            throw;
        }
    });
}

void Recordset::requireSortable() const {
    if (cursorLocation_ != CursorLocationEnum::adUseClient) {
        fail::notAvailable(
            u"Current Recordset cannot be sorted: its CursorLocation is not adUseClient.");
    }
}

void Recordset::setSort(const String& value) {
    requireSortable();
    if (cursor_ == nullptr) {
        sort_ = value;
        return;
    }
    savePending();
    moving(*this, EventReasonEnum::adRsnMove, [&] {
        requireOpen();
        const String previous = std::exchange(sort_, value);
        try {
            rearrange();
        } catch (const AutomationError&) {
            sort_ = previous;
            throw;
        }
    });
}

// Brings the filter and the order into force.
void Recordset::rearrange() {
    RowTable& table = cursor_->table();
    RowFilter filter;
    if (filter_.isArray()) {
        RowSet rows;
        const Array& bookmarks = filter_.as<Array>();
        for (std::int32_t i = bookmarks.lowerBound(); i <= bookmarks.upperBound(); ++i) {
            rows.insert(rowOfBookmark(bookmarks.at(i)));
        }
        filter = inSet(std::move(rows));
    } else if (!filter_.isString()) {
        filter = groupFilter(table, static_cast<FilterGroupEnum>(convert::toLong(filter_)));
    } else if (!filter_.as<String>().empty()) {
        filter = {rowTest(table, parseCriteria(filter_.as<String>().utf8()))};
    }
    std::vector<SortName> sort;
    if (!unicode::trim(sort_.view()).empty()) {
        sort = parseSort(sort_.utf8());
    }
    cursor_->arrange(std::move(filter), sort);
}

}  // namespace kap::ado
