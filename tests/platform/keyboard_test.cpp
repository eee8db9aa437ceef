#include <kaputil/platform/keyboard.hpp>

// Before the window system's header, which takes words that it uses for its own.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <X11/keysym.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <vector>

#include <kaputil/platform/message_box.hpp>

#include "support/scoped_variable.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

// A screen that nobody sees, for one test.
class VirtualDisplay {
public:
    VirtualDisplay() {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) {
            return;
        }
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const std::string number = std::to_string(ends[1]);
        std::vector<std::string> words = {"Xvfb", "-displayfd", number, "-nolisten", "tcp"};
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        if (posix_spawnp(&server_, "Xvfb", &actions, nullptr, arguments.data(), environ) != 0) {
            server_ = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        readName(ends[0]);
        close(ends[0]);
    }
    ~VirtualDisplay() {
        if (server_ > 0) {
            kill(server_, SIGTERM);
            waitpid(server_, nullptr, 0);
        }
    }
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    // ":7"; empty when there is no such server.
    [[nodiscard]] const std::string& name() const { return name_; }

private:
    void readName(int end) {
        std::string number;
        char digit = 0;
        while (read(end, &digit, 1) == 1 && digit != '\n') {
            number.push_back(digit);
        }
        if (!number.empty()) {
            name_ = ":" + number;
        }
    }

    pid_t server_ = -1;
    std::string name_;
};

// The window system's functions, loaded as the library loads them.
template <class Function>
Function* find(const char* name) {
    static void* const library = dlopen("libX11.so.6", RTLD_NOW);
    return library == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(library, name));
}
#define X11(name) (*find<decltype(::name)>(#name))

// A window that has the keyboard and notes what it receives.
class RecordingWindow {
public:
    explicit RecordingWindow(const std::string& display)
        : display_(X11(XOpenDisplay)(display.c_str())) {
        if (display_ == nullptr) {
            return;
        }
        window_ = X11(XCreateSimpleWindow)(display_, X11(XDefaultRootWindow)(display_), 0, 0, 100,
                                           100, 0, 0, 0);
        X11(XSelectInput)(display_, window_, KeyPressMask | KeyReleaseMask | ExposureMask);
        X11(XMapWindow)(display_, window_);
        XEvent event{};
        do {
            X11(XNextEvent)(display_, &event);
        } while (event.type != Expose);
        X11(XSetInputFocus)(display_, window_, RevertToNone, CurrentTime);
        X11(XSync)(display_, False);
    }
    ~RecordingWindow() {
        if (display_ != nullptr) {
            X11(XCloseDisplay)(display_);
        }
    }
    RecordingWindow(const RecordingWindow&) = delete;
    RecordingWindow& operator=(const RecordingWindow&) = delete;

    [[nodiscard]] bool isOpen() const { return display_ != nullptr; }

    // "+Tab -Tab": keys pressed and released, in their order.
    [[nodiscard]] std::string received() {
        X11(XSync)(display_, False);
        std::string text;
        while (X11(XPending)(display_) > 0) {
            XEvent event{};
            X11(XNextEvent)(display_, &event);
            if (event.type == KeyPress || event.type == KeyRelease) {
                const KeySym symbol = X11(XLookupKeysym)(&event.xkey, 0);
                text += std::string(text.empty() ? "" : " ") +
                        (event.type == KeyPress ? "+" : "-") + X11(XKeysymToString)(symbol);
            }
        }
        return text;
    }

private:
    Display* display_;
    Window window_ = 0;
};

std::string pressed(RecordingWindow& window, const std::vector<VirtualKey>& keys) {
    pressTogether(keys);
    return window.received();
}

TEST(Keyboard, GivesARealWindowItsKeys) {
    const VirtualDisplay screen;
    ASSERT_FALSE(screen.name().empty()) << "Xvfb cannot be started";
    const test::ScopedVariable display("DISPLAY", screen.name());
    RecordingWindow window(screen.name());
    ASSERT_TRUE(window.isOpen());
    using enum VirtualKey;
    EXPECT_EQ(pressed(window, {Tab}), "+Tab -Tab");
    EXPECT_EQ(pressed(window, {Shift, Tab}), "+Shift_L +Tab -Tab -Shift_L");
    EXPECT_EQ(pressed(window, {Control, Home}), "+Control_L +Home -Home -Control_L");
    EXPECT_EQ(pressed(window, {Control, End}), "+Control_L +End -End -Control_L");
    EXPECT_EQ(pressed(window, {Control, PageUp}), "+Control_L +Prior -Prior -Control_L");
    EXPECT_EQ(pressed(window, {PageDown}), "+Next -Next");
    EXPECT_EQ(pressed(window, {Up}), "+Up -Up");
    EXPECT_EQ(pressed(window, {Down}), "+Down -Down");
    EXPECT_EQ(pressed(window, {Alt, C}), "+Alt_L +c -c -Alt_L");
}

TEST(Keyboard, OnlyWarnsWithoutAScreen) {
    const test::TemporaryFolder folder;
    const test::ScopedVariable display("DISPLAY", std::nullopt);
    setMessageLog(folder.file("messaggi.log"));
    EXPECT_NO_THROW(pressTogether(std::vector{VirtualKey::Tab}));
    setMessageLog(std::nullopt);
    const std::string log = test::contentOf(folder.file("messaggi.log"));
    EXPECT_NE(log.find("\twarning\ttest_platform\tNessun tasto inviato: non c'\xC3\xA8 uno "
                       "schermo\n"),
              std::string::npos)
        << log;
}

}  // namespace
}  // namespace kap::platform
