#pragma once

#include <cstddef>
#include <streambuf>
#include <string>

#include "cli/output/terminal.hpp"

namespace kap::cli {

// Where the output of one command of the shell goes: onto the terminal when it fits on the screen,
// else through the program that the variable PAGER names, "less" unless it does (empty: none). The
// pager begins to show while the output is still coming; when it is left before the end, writing
// fails.
class PagedOutput final : public std::streambuf {
public:
    explicit PagedOutput(const Terminal& terminal);
    ~PagedOutput() override;
    PagedOutput(const PagedOutput&) = delete;
    PagedOutput& operator=(const PagedOutput&) = delete;

    // Shows what there is, and waits until the pager is left.
    void finish();

protected:
    int_type overflow(int_type unit) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;

private:
    enum class Way : unsigned char { Kept, Pager, Direct, Left };

    bool put(const char* text, std::size_t count);
    void chooseWay();
    bool sendToPager(const char* text, std::size_t count);
    void endPager();

    const std::size_t mostLines_;
    const std::string command_;
    Way way_ = Way::Kept;
    std::string kept_;  // what is not shown yet, or may not have been
    std::size_t lines_ = 0;
    int pipe_ = -1;
    int process_ = -1;
    bool isReading_ = false;  // the pager has read something
};

// Shows a text like that.
void showPaged(const std::string& text, const Terminal& terminal);

}  // namespace kap::cli
