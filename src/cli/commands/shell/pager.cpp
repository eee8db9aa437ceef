#include "cli/commands/shell/pager.hpp"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace kap::cli {
namespace {

std::string pagerCommand() {
    const char* chosen = std::getenv("PAGER");
    if (chosen != nullptr) {
        return chosen;
    }
    return std::getenv("LESS") == nullptr ? "less -SRFX" : "less";
}

// Lines that leave room for the prompt behind them.
std::size_t linesThatFit(const Terminal& terminal) {
    constexpr std::size_t kForThePrompt = 2;
    if (terminal.height() == 0) {
        return std::numeric_limits<std::size_t>::max();
    }
    return std::max(terminal.height(), kForThePrompt) - kForThePrompt;
}

#ifndef _WIN32

// Starts a line of shell that reads from a pipe; the pipe's other end, -1 when it does not start.
// Ctrl-C is the program's own, whatever is done about it here.
int startReader(const std::string& command, int& process) {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return -1;
    }
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[0], STDIN_FILENO);
    posix_spawnattr_t signals;
    posix_spawnattr_init(&signals);
    sigset_t none;
    sigemptyset(&none);
    sigset_t usual;
    sigemptyset(&usual);
    sigaddset(&usual, SIGINT);
    sigaddset(&usual, SIGPIPE);
    posix_spawnattr_setsigmask(&signals, &none);
    posix_spawnattr_setsigdefault(&signals, &usual);
    posix_spawnattr_setflags(&signals, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::string words[] = {"sh", "-c", command};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    const int error = ::posix_spawn(&process, "/bin/sh", &files, &signals, arguments, environ);
    posix_spawnattr_destroy(&signals);
    posix_spawn_file_actions_destroy(&files);
    ::close(ends[0]);
    if (error != 0) {
        ::close(ends[1]);
        return -1;
    }
    return ends[1];
}

#endif

}  // namespace

PagedOutput::PagedOutput(const Terminal& terminal)
    : mostLines_(linesThatFit(terminal)), command_(pagerCommand()) {
    std::cout.flush();
}

PagedOutput::~PagedOutput() {
    finish();
}

PagedOutput::int_type PagedOutput::overflow(int_type unit) {
    const char single = traits_type::to_char_type(unit);
    return put(&single, 1) ? unit : traits_type::eof();
}

std::streamsize PagedOutput::xsputn(const char* text, std::streamsize count) {
    return put(text, static_cast<std::size_t>(count)) ? count : 0;
}

bool PagedOutput::put(const char* text, std::size_t count) {
    switch (way_) {
        case Way::Kept:
            kept_.append(text, count);
            lines_ += static_cast<std::size_t>(std::count(text, text + count, '\n'));
            if (lines_ > mostLines_) {
                chooseWay();
            }
            return way_ != Way::Left;
        case Way::Pager:
            return sendToPager(text, count);
        case Way::Direct:
            return static_cast<bool>(
                std::cout.write(text, static_cast<std::streamsize>(count)).flush());
        case Way::Left:
            break;
    }
    return false;
}

#ifdef _WIN32

void PagedOutput::chooseWay() {
    way_ = Way::Direct;
    std::cout << kept_ << std::flush;
    kept_.clear();
}

bool PagedOutput::sendToPager(const char* /*text*/, std::size_t /*count*/) {
    return false;
}

void PagedOutput::endPager() {}

#else

void PagedOutput::chooseWay() {
    pipe_ = command_.empty() ? -1 : startReader(command_, process_);
    const std::string first = std::exchange(kept_, {});
    if (pipe_ >= 0) {
        way_ = Way::Pager;
        static_cast<void>(sendToPager(first.data(), first.size()));
        return;
    }
    way_ = Way::Direct;
    std::cout << first << std::flush;
}

// What was sent is kept until it is more than a pipe holds: then there is a pager that reads it.
bool PagedOutput::sendToPager(const char* text, std::size_t count) {
    constexpr std::size_t kMoreThanAPipeHolds = std::size_t{256} * 1024;
    if (!isReading_) {
        kept_.append(text, count);
        isReading_ = kept_.size() > kMoreThanAPipeHolds;
    }
    while (count > 0) {
        const ssize_t sent = ::write(pipe_, text, count);
        if (sent >= 0) {
            text += sent;
            count -= static_cast<std::size_t>(sent);
        } else if (errno != EINTR) {
            endPager();
            return way_ == Way::Direct;
        }
    }
    if (isReading_) {
        kept_.clear();
    }
    return true;
}

// A pager that could not be started has shown nothing.
void PagedOutput::endPager() {
    constexpr int kNotFound = 127;
    ::close(std::exchange(pipe_, -1));
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    way_ = Way::Left;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound && !isReading_) {
        way_ = Way::Direct;
        std::cout << kept_ << std::flush;
    }
    kept_.clear();
}

#endif

void PagedOutput::finish() {
    if (way_ == Way::Pager) {
        endPager();
    } else if (way_ == Way::Kept) {
        std::cout << kept_ << std::flush;
        kept_.clear();
    }
    way_ = Way::Left;
}

void showPaged(const std::string& text, const Terminal& terminal) {
    PagedOutput output(terminal);
    output.sputn(text.data(), static_cast<std::streamsize>(text.size()));
    output.finish();
}

}  // namespace kap::cli
