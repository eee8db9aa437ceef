#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ado/row_table.hpp"

namespace kap::ado {

// Which rows a cursor shows.
struct RowFilter {
    std::function<bool(std::size_t row)> accepts;  // empty: every row
    bool showsDeleted = false;                     // also rows deleted but not yet written
};

// The rows of a table as one cursor sees them: in an order of its own, without those that its
// filter refuses. A place is a position in that order; a row that was deleted, or that the filter
// refuses since it was changed, keeps its place and is passed over.
class RowView {
public:
    explicit RowView(std::shared_ptr<RowTable> table) : table_(std::move(table)) {}

    // Takes on a filter and an order. `sorted` orders rows given to it; empty: as fetched.
    void arrange(RowFilter filter, const std::function<void(std::vector<std::size_t>&)>& sorted);
    // Judges the row at a place again, which has been changed.
    void rowChanged(std::size_t place);
    // Makes room for one more row, so that finding a place for it needs no memory.
    void makeRoom();
    // Finds a place for rows added to the table since.
    void takeNewRows();

    // The places, passed-over ones included.
    [[nodiscard]] std::size_t size() const noexcept {
        return arranged_ ? order_.size() : table_->size();
    }
    [[nodiscard]] std::size_t row(std::size_t place) const noexcept {
        return arranged_ ? order_[place] : place;
    }
    [[nodiscard]] bool shows(std::size_t place) const noexcept;
    // Whether any place is passed over.
    [[nodiscard]] bool hasGaps() const noexcept {
        return hiddenCount_ > 0 || (table_->deletedCount() > 0 && !filter_.showsDeleted);
    }
    // The rows shown, in all and before a place.
    [[nodiscard]] std::size_t count() const noexcept;
    [[nodiscard]] std::size_t countBefore(std::size_t place) const noexcept;
    // Where a row stands; nullopt when it is not shown.
    [[nodiscard]] std::optional<std::size_t> placeOf(std::size_t row) const;
    [[nodiscard]] bool isFiltered() const noexcept { return static_cast<bool>(filter_.accepts); }

private:
    [[nodiscard]] bool accepts(std::size_t row) const;

    std::shared_ptr<RowTable> table_;
    RowFilter filter_;
    bool arranged_ = false;  // `order_` counts; else every row stands where it was fetched
    std::vector<std::size_t> order_;
    std::size_t known_ = 0;     // rows of the table that have been given a place
    std::vector<bool> hidden_;  // by place; empty until the filter refuses a row it had accepted
    std::size_t hiddenCount_ = 0;
    mutable std::optional<std::size_t> count_;
    mutable std::uint64_t countedAt_ = 0;  // the table's generation
};

}  // namespace kap::ado
