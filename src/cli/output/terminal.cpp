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

struct ScreenSize {
    std::size_t width;
    std::size_t height;
};
constexpr ScreenSize kUsualSize{80, 24};

#ifdef _WIN32
bool isScreen() {
    return _isatty(1) != 0;
}

ScreenSize screenSize() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &screen) == FALSE) {
        return kUsualSize;
    }
    return {static_cast<std::size_t>(screen.srWindow.Right - screen.srWindow.Left + 1),
            static_cast<std::size_t>(screen.srWindow.Bottom - screen.srWindow.Top + 1)};
}
#else
bool isScreen() {
    return isatty(STDOUT_FILENO) == 1;
}

ScreenSize screenSize() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        return kUsualSize;
    }
    return {size.ws_col, size.ws_row};
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
        const ScreenSize size = screenSize();
        terminal.width_ = size.width;
        terminal.height_ = size.height;
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
