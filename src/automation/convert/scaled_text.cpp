#include "automation/convert/scaled_text.hpp"

namespace kap::plain {

// From the last digit to the first, with as many zeros as the first place before the point needs.
ScaledText::ScaledText(std::int64_t units, std::size_t scale, char point) noexcept {
    constexpr unsigned kTen = 10;
    const auto bits = static_cast<std::uint64_t>(units);
    std::uint64_t left = units < 0 ? 0 - bits : bits;
    const auto write = [&] {
        room_[--begin_] = static_cast<char>('0' + left % kTen);
        left /= kTen;
    };
    for (std::size_t i = 0; i < scale; ++i)
        write();
    if (scale > 0) room_[--begin_] = point;
    do {
        write();
    } while (left != 0);
    if (units < 0) room_[--begin_] = '-';
}

}  // namespace kap::plain
