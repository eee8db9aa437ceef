#include "cli/output/progress_bar.hpp"

#include <algorithm>
#include <ostream>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

namespace kap::cli {
namespace {

constexpr std::size_t kWidest = 40;

}  // namespace

ProgressBar::ProgressBar(std::ostream& out, const Terminal& terminal, std::string unit)
    : out_(out), width_(terminal.width()), unit_(std::move(unit)) {}

ProgressBar::~ProgressBar() {
    if (shown_ >= 0) {
        clear();
        out_.flush();
    }
}

void ProgressBar::clear() {
    out_ << '\r' << std::string(width_ > 0 ? width_ - 1 : 0, ' ') << '\r';
}

// Drawn again only when it looks different: a terminal is slower than the work.
void ProgressBar::show(std::int64_t done, std::int64_t all) {
    constexpr int kSteps = 1000;
    if (width_ == 0) {
        return;
    }
    if (all <= 0) {
        showCount(done);
        return;
    }
    if (std::exchange(counts_, false)) {
        shown_ = -1;
    }
    const int now = static_cast<int>(done * kSteps / all);
    if (now == shown_) {
        return;
    }
    shown_ = now;
    const std::string text = " " + plain::text(now / 10) + "%  " + plain::text(done) + " " + unit_;
    const std::size_t room = width_ - 1 > text.size() + 2 ? width_ - 1 - text.size() - 2 : 0;
    const std::size_t bar = std::min(room, kWidest);
    const std::size_t full = bar * static_cast<std::size_t>(now) / kSteps;
    out_ << '\r' << '[' << std::string(full, '#') << std::string(bar - full, '.') << ']' << text
         << std::flush;
}

void ProgressBar::showCount(std::int64_t done) {
    constexpr std::int64_t kStep = 1000;
    const int now = static_cast<int>(done / kStep);
    if (counts_ && now == shown_) {
        return;
    }
    counts_ = true;
    shown_ = now;
    out_ << '\r' << plain::text(done) << ' ' << unit_ << std::flush;
}

}  // namespace kap::cli
