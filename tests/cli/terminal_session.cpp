#include "cli/terminal_session.hpp"

#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "cli/command_line.hpp"
#include "support/build_folders.hpp"

namespace kap::tests {
namespace {

// Far longer than anything takes, on a machine under load, too: only a test that fails waits it.
constexpr int kPatienceInMilliseconds = 120'000;

}  // namespace

TerminalSession::TerminalSession(const std::vector<std::string>& arguments,
                                 const std::vector<std::string>& variables, unsigned short columns,
                                 unsigned short lines) {
    std::vector<std::string> command = {test::kCommandLine};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<std::string> changed = {"NO_COLOR=1", "TERM=xterm", "PAGER=cat"};
    changed.insert(changed.end(), variables.begin(), variables.end());
    auto environment = environmentWith(changed);
    const auto words = pointersTo(command);
    const auto settings = pointersTo(environment);
    winsize size{};
    size.ws_row = lines;
    size.ws_col = columns;
    process_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (process_ == 0) {
        execve(words.front(), words.data(), settings.data());
        _exit(127);
    }
    if (process_ < 0) {
        throw std::system_error(errno, std::generic_category(), "forkpty");
    }
}

TerminalSession::~TerminalSession() {
    if (exitCode_ == -1) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    close(terminal_);
}

void TerminalSession::type(const std::string& keys) const {
    ASSERT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

bool TerminalSession::isReady(int milliseconds) const {
    pollfd waiting{terminal_, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) == 1;
}

bool TerminalSession::readMore() {
    if (!isReady(kPatienceInMilliseconds)) {
        ADD_FAILURE() << "nothing comes any more; on the screen: " << unread_;
        return false;
    }
    char buffer[4096];
    const ssize_t count = read(terminal_, buffer, sizeof buffer);
    if (count <= 0) {
        ended_ = true;
        return false;
    }
    unread_.append(buffer, static_cast<std::size_t>(count));
    std::erase(unread_, '\r');
    return true;
}

std::string TerminalSession::waitFor(const std::string& text) {
    while (unread_.find(text) == std::string::npos) {
        if (!readMore()) {
            ADD_FAILURE() << "\"" << text << "\" does not come; on the screen: " << unread_;
            return {};
        }
    }
    const std::size_t end = unread_.find(text) + text.size();
    std::string seen = unread_.substr(0, end);
    unread_.erase(0, end);
    return seen;
}

std::string TerminalSession::seenWithin(int milliseconds) {
    while (!ended_ && isReady(milliseconds) && readMore()) {
    }
    return std::exchange(unread_, {});
}

std::string TerminalSession::rest() {
    while (!ended_ && readMore()) {
    }
    return std::exchange(unread_, {});
}

int TerminalSession::exitCode() {
    if (exitCode_ == -1) {
        (void)rest();
        int status = 0;
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return exitCode_;
}

}  // namespace kap::tests
