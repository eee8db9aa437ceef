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

    // `all` is 0 as long as nobody knows it: then how much is done is shown alone.
    void show(std::int64_t done, std::int64_t all);

private:
    void showCount(std::int64_t done);
    void clear();

    std::ostream& out_;
    std::size_t width_;  // of the terminal; 0: none
    std::string unit_;
    int shown_ = -1;       // thousandths, or thousands
    bool counts_ = false;  // they are thousands
};

}  // namespace kap::cli
