#include "ado/row_view.hpp"

#include <algorithm>
#include <utility>

namespace kap::ado {

bool RowView::accepts(std::size_t row) const {
    return !filter_.accepts || filter_.accepts(row);
}

void RowView::arrange(RowFilter filter,
                      const std::function<void(std::vector<std::size_t>&)>& sorted) {
    filter_ = std::move(filter);
    order_.clear();
    hidden_.clear();
    hiddenCount_ = 0;
    count_.reset();
    known_ = table_->size();
    arranged_ = filter_.accepts || sorted;
    if (!arranged_) {
        return;
    }
    for (std::size_t row = 0; row < known_; ++row) {
        if ((filter_.showsDeleted || !table_->isDeleted(row)) && accepts(row)) {
            order_.push_back(row);
        }
    }
    if (sorted) {
        sorted(order_);
    }
}

void RowView::rowChanged(std::size_t place) {
    if (!filter_.accepts) {
        return;
    }
    hidden_.resize(order_.size());
    const bool hide = !accepts(row(place));
    if (hidden_[place] != hide) {
        hidden_[place] = hide;
        hiddenCount_ = hide ? hiddenCount_ + 1 : hiddenCount_ - 1;
        count_.reset();
    }
}

void RowView::makeRoom() {
    if (arranged_) {
        if (order_.size() == order_.capacity()) {
            order_.reserve(2 * order_.size() + 1);
        }
        hidden_.reserve(order_.size() + 1);
    }
}

// A new row is shown at the end even when the filter refuses it: it is the current one until the
// next movement.
void RowView::takeNewRows() {
    if (!arranged_) {
        return;
    }
    for (; known_ < table_->size(); ++known_) {
        order_.push_back(known_);
        count_.reset();
        if (!accepts(known_)) {
            hidden_.resize(order_.size());
            hidden_.back() = true;
            ++hiddenCount_;
        }
    }
}

bool RowView::shows(std::size_t place) const noexcept {
    if (place < hidden_.size() && hidden_[place]) {
        return false;
    }
    return filter_.showsDeleted || !table_->isDeleted(row(place));
}

std::size_t RowView::count() const noexcept {
    if (!hasGaps()) {
        return size();
    }
    if (!count_ || countedAt_ != table_->generation()) {
        count_ = countBefore(size());
        countedAt_ = table_->generation();
    }
    return *count_;
}

std::size_t RowView::countBefore(std::size_t place) const noexcept {
    if (!hasGaps()) {
        return place;
    }
    std::size_t shown = 0;
    for (std::size_t i = 0; i < place; ++i) {
        shown += shows(i) ? 1U : 0U;
    }
    return shown;
}

std::optional<std::size_t> RowView::placeOf(std::size_t row) const {
    std::size_t place = row;
    if (arranged_) {
        place = static_cast<std::size_t>(std::ranges::find(order_, row) - order_.begin());
    }
    return place < size() && shows(place) ? std::optional(place) : std::nullopt;
}

}  // namespace kap::ado
