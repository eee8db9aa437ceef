#include "cli/typed_password.hpp"

#ifdef _WIN32
#include <conio.h>
#include <io.h>

#include <iostream>
#else
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace kap::cli {

#ifdef _WIN32

std::optional<std::string> typedPassword(const std::string& question) {
    if (_isatty(0) == 0) {
        return std::nullopt;
    }
    std::cerr << question << std::flush;
    std::string password;
    for (int key = _getch(); key != '\r'; key = _getch()) {
        constexpr int kBreak = 3;
        if (key == kBreak) {
            return std::nullopt;
        }
        if (key == '\b') {
            password.resize(password.empty() ? 0 : password.size() - 1);
        } else {
            password.push_back(static_cast<char>(key));
        }
    }
    std::cerr << '\n';
    return password;
}

#else

namespace {

// The terminal without its echo, which comes back whatever happens.
class Silence {
public:
    explicit Silence(int terminal) : terminal_(terminal) {
        if (tcgetattr(terminal_, &before_) == 0) {
            termios silent = before_;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            changed_ = tcsetattr(terminal_, TCSAFLUSH, &silent) == 0;
        }
    }
    ~Silence() {
        if (changed_) {
            tcsetattr(terminal_, TCSAFLUSH, &before_);
        }
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    [[nodiscard]] bool works() const noexcept { return changed_; }

private:
    int terminal_;
    termios before_{};
    bool changed_ = false;
};

bool say(int terminal, const std::string& text) {
    return ::write(terminal, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

std::optional<std::string> lineFrom(int terminal) {
    std::string line;
    char unit = 0;
    while (::read(terminal, &unit, 1) == 1) {
        if (unit == '\n') {
            return line;
        }
        line.push_back(unit);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> typedPassword(const std::string& question) {
    const int terminal = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (terminal < 0) {
        return std::nullopt;
    }
    std::optional<std::string> line;
    {
        const Silence silence(terminal);
        if (silence.works() && say(terminal, question)) {
            line = lineFrom(terminal);
            static_cast<void>(say(terminal, "\n"));
        }
    }
    ::close(terminal);
    return line;
}

#endif

}  // namespace kap::cli
