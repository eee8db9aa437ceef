#include "bench/figures.hpp"

#include <array>
#include <cstdio>

namespace kap::bench {

std::string formatted(const char* format, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

std::string figure(double value, const std::string& unit) {
    if (unit != "ns") {
        return (value < 100 ? formatted("%.2f", value) : counted(value)) + " " + unit;
    }
    if (value < 1e3) return formatted("%.1f ns", value);
    if (value < 1e6) return formatted("%.2f us", value / 1e3);
    if (value < 1e9) return formatted("%.2f ms", value / 1e6);
    return formatted("%.2f s", value / 1e9);
}

std::string ratioText(double ratio, const std::optional<Interval>& interval) {
    std::string text = formatted("%.2f", ratio);
    if (interval) {
        text += " (" + formatted("%.2f", interval->low) + " to " +
                formatted("%.2f", interval->high) + ")";
    }
    return text;
}

std::string aimText(const Aim& aim) {
    const bool atMost = aim.direction == Aim::Direction::AtMost;
    return (atMost ? "<= " : ">= ") + formatted("%.2f", aim.ratio);
}

std::string counted(double value) {
    constexpr std::size_t kGroup = 3;
    std::string text = formatted("%.0f", value);
    for (std::size_t at = text.size(); at > kGroup; at -= kGroup)
        text.insert(at - kGroup, ",");
    return text;
}

}  // namespace kap::bench
