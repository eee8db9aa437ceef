#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace kap {

// The lines of a program that is written: statements within each other by four blanks, and behind
// them what is said of them.
class CodeLines {
protected:
    // What a comment begins with, and what stands behind a statement that holds others.
    CodeLines(std::string_view comment, std::string_view opening)
        : comment_(comment), opening_(opening) {}

    void put(std::string_view statement, std::string_view comment = {}) {
        std::string line(static_cast<std::size_t>(depth_) * 4, ' ');
        line += statement;
        if (!comment.empty()) {
            line += statement.empty() ? "" : "  ";
            line += comment_;
            line += comment;
        }
        text_ += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    void begin(const std::string& statement, std::string_view comment) {
        put(statement + opening_, comment);
        ++depth_;
    }
    void end() { --depth_; }

    void clear() { text_.clear(); }
    [[nodiscard]] std::string take() { return std::exchange(text_, {}); }

private:
    std::string comment_;
    std::string opening_;
    std::string text_;
    int depth_ = 0;
};

}  // namespace kap
