#include <algorithm>
#include <iterator>

#include "cli/commands/numbers/numbers_output.hpp"

namespace kap::cli {
namespace {

// Cuts a range to the numbers asked for; false when nothing of it is left.
template <class Range>
bool cut(Range& range, std::int64_t from, std::int64_t to) {
    range.first = std::max(range.first, from);
    range.last = std::min(range.last, to);
    return range.first <= range.last;
}

}  // namespace

std::vector<numbering::RegisterLine> NumbersView::linesOf(
    const numbering::NumberRegister& one) const {
    std::vector<numbering::RegisterLine> lines = numbering::linesOf(one);
    std::erase_if(lines, [this](numbering::RegisterLine& line) { return !cut(line, from, to); });
    return lines;
}

void NumbersView::cutAnomalies() {
    for (numbering::NumberRegister& one : registers) {
        std::erase_if(one.anomalies,
                      [this](numbering::Anomaly& anomaly) { return !cut(anomaly, from, to); });
    }
}

std::vector<numbering::Carrier> NumbersView::reservationsOf(
    const numbering::NumberRegister& one) const {
    std::vector<numbering::Carrier> found;
    std::ranges::copy_if(one.carriers, std::back_inserter(found), [this](const auto& carrier) {
        return carrier.kind == numbering::CarrierKind::Reservation && carrier.number >= from &&
               carrier.number <= to;
    });
    return found;
}

}  // namespace kap::cli
