#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/mail/draft.hpp"

extern char** environ;

namespace kap::platform::mail {
namespace {

// The desktop's own command for opening a file; it starts the program and ends.
constexpr const char* kCommand = "xdg-open";
// How long it may take until it counts as done: on some desktops it is the program itself.
constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kLook{10};

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr && *value != '\0';
}

bool hasScreen() {
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

// Commands that outlasted the patience; their ends are taken note of later, lest they stay.
class Lasting {
public:
    static Lasting& instance() {
        static Lasting lasting;
        return lasting;
    }
    void add(pid_t command) {
        const std::lock_guard lock(guard_);
        std::erase_if(commands_, [](pid_t one) { return waitpid(one, nullptr, WNOHANG) != 0; });
        commands_.push_back(command);
    }

private:
    std::mutex guard_;
    std::vector<pid_t> commands_;
};

class FileActions {
public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void toNowhere(int descriptor, int flags) {
        posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", flags, 0);
    }
    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

// Starts the command with the file as its only argument; 0 when it cannot be started.
pid_t start(const std::filesystem::path& file) {
    FileActions actions;
    actions.toNowhere(STDIN_FILENO, O_RDONLY);
    actions.toNowhere(STDOUT_FILENO, O_WRONLY);
    actions.toNowhere(STDERR_FILENO, O_WRONLY);
    std::string command = kCommand;
    std::string argument = std::filesystem::absolute(file).string();
    const std::array<char*, 3> arguments = {command.data(), argument.data(), nullptr};
    pid_t started = 0;
    return posix_spawnp(&started, kCommand, actions.get(), nullptr, arguments.data(), environ) == 0
               ? started
               : 0;
}

bool succeeds(pid_t command) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < end) {
        int status = 0;
        const pid_t ended = waitpid(command, &status, WNOHANG);
        if (ended == command) {
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
        if (ended < 0 && errno != EINTR) {
            return errno == ECHILD;  // the host program takes note of all ends itself
        }
        std::this_thread::sleep_for(kLook);
    }
    Lasting::instance().add(command);
    return true;
}

}  // namespace

bool openOnDesktop(const std::filesystem::path& file) {
    if (!hasScreen()) {
        return false;
    }
    const pid_t command = start(file);
    return command > 0 && succeeds(command);
}

}  // namespace kap::platform::mail
