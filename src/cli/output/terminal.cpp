#include "cli/output/terminal.hpp"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

#include <cstdlib>

namespace kap::cli {
namespace {

constexpr std::size_t kUsualWidth = 80;

#ifdef _WIN32
bool isScreen() {
    return _isatty(1) != 0;
}

std::size_t screenWidth() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &screen) == FALSE) {
        return kUsualWidth;
    }
    return static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}
#else
bool isScreen() {
    return isatty(STDOUT_FILENO) == 1;
}

std::size_t screenWidth() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return kUsualWidth;
    }
    return size.ws_col;
}
#endif

std::string_view codeOf(Style style) {
    switch (style) {
        case Style::Bold:
            return "1";
        case Style::Dim:
            return "2";
        case Style::Red:
            return "31";
        case Style::Green:
            return "32";
        case Style::Yellow:
            return "33";
        case Style::Magenta:
            return "35";
        case Style::Cyan:
            return "36";
    }
    return "0";
}

}  // namespace

Terminal Terminal::ofStandardOutput() {
    Terminal terminal;
    if (isScreen()) {
        const char* noColour = std::getenv("NO_COLOR");
        terminal.coloured_ = noColour == nullptr || *noColour == '\0';
        terminal.width_ = screenWidth();
    }
    return terminal;
}

std::string Terminal::styled(Style style, std::string_view text) const {
    if (!coloured_ || text.empty()) {
        return std::string(text);
    }
    return "\x1b[" + std::string(codeOf(style)) + "m" + std::string(text) + "\x1b[0m";
}

}  // namespace kap::cli
