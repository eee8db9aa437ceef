#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace kap::tests {

// `kaputil` on a terminal of its own, with which a test talks as a person would.
class TerminalSession {
public:
    // `variables` ("NAME=value") change the environment.
    explicit TerminalSession(const std::vector<std::string>& arguments,
                             const std::vector<std::string>& variables = {},
                             unsigned short columns = 80, unsigned short lines = 40);
    ~TerminalSession();
    TerminalSession(const TerminalSession&) = delete;
    TerminalSession& operator=(const TerminalSession&) = delete;

    // Types these keys.
    void type(const std::string& keys) const;
    // Waits until the text is on the screen behind what was waited for before, and gives back what
    // came up to its end. Fails the test when the program ends before, or does not go on.
    std::string waitFor(const std::string& text);
    // What comes until nothing has come for so many milliseconds.
    std::string seenWithin(int milliseconds);
    // Everything up to the program's end, and its exit code.
    std::string rest();
    [[nodiscard]] int exitCode();

private:
    bool readMore();
    bool isReady(int milliseconds) const;

    int terminal_ = -1;
    pid_t process_ = 0;
    int exitCode_ = -1;
    bool ended_ = false;
    std::string unread_;
};

}  // namespace kap::tests
