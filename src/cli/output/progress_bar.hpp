#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "cli/output/terminal.hpp"

namespace kap::cli {

// A line that shows how much of a long work is done, drawn over itself. Where there is no terminal
// it shows nothing.
class ProgressBar {
public:
    ProgressBar(std::ostream& out, const Terminal& terminal, std::string unit);
    // Leaves an empty line behind for what is printed next.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::int64_t done, std::int64_t all);

private:
    void clear();

    std::ostream& out_;
    std::size_t width_;  // of the terminal; 0: none
    std::string unit_;
    int shown_ = -1;  // thousandths
};

}  // namespace kap::cli
