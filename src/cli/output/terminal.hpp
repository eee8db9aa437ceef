#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kap::cli {

// How texts can be made to stand out on a terminal.
enum class Style : unsigned char { Bold, Dim, Red, Green, Yellow, Magenta, Cyan };

// What the place that output goes to is capable of.
class Terminal {
public:
    // The standard output: colours and a width when it is a terminal, except that no colours are
    // used when the variable NO_COLOR is set.
    [[nodiscard]] static Terminal ofStandardOutput();
    // Neither: for files, pipes and tests.
    [[nodiscard]] static Terminal plain() { return {}; }

    // The text in a style, or as it is without colours.
    [[nodiscard]] std::string styled(Style style, std::string_view text) const;

    [[nodiscard]] bool isColoured() const noexcept { return coloured_; }

    // Columns of the screen; 0 when there is no screen and lines may be as long as they are.
    [[nodiscard]] std::size_t width() const noexcept { return width_; }
    // Lines of the screen; 0 when there is none.
    [[nodiscard]] std::size_t height() const noexcept { return height_; }

private:
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    bool coloured_ = false;
};

}  // namespace kap::cli
