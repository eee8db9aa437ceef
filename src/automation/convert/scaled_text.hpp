#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kap::plain {

// The text of units / 10^scale, at most kMostScale digits behind the point: "-12.50" for -1250 with
// scale 2, the number as it is with scale 0. It stands in room of its own, for those who write a
// million of them.
class ScaledText {
public:
    static constexpr std::size_t kMostScale = 38;

    explicit ScaledText(std::int64_t units, std::size_t scale = 0, char point = '.') noexcept;

    [[nodiscard]] std::string_view view() const noexcept {
        return {room_.data() + begin_, room_.size() - begin_};
    }

private:
    // A sign, a zero, the point, and the digits.
    std::array<char, kMostScale + 3> room_;
    std::size_t begin_ = kMostScale + 3;
};

}  // namespace kap::plain
