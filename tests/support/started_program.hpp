#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/build_folders.hpp"

namespace kap::test {

// A program of the tests in a process of its own, which counts what it has done on its output, one
// number a line, until it is killed.
class StartedProgram {
public:
    StartedProgram(const std::string& name, std::vector<std::string> arguments) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        arguments.insert(arguments.begin(), std::string(kTestPrograms) + "/" + name);
        std::vector<char*> words;
        for (std::string& argument : arguments)
            words.push_back(argument.data());
        words.push_back(nullptr);
        process_ = fork();
        if (process_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execv(words.front(), words.data());
            _exit(127);
        }
        close(ends[1]);
        reports_ = ends[0];
    }
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;
    ~StartedProgram() { close(reports_); }

    // Ends the process where it stands, and gives the last number that it has reported.
    int kill() {
        ::kill(process_, SIGKILL);
        int status = 0;
        waitpid(process_, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the program ended by itself: " << status;
        std::string text;
        std::array<char, 4096> bytes{};
        for (ssize_t read = 0; (read = ::read(reports_, bytes.data(), bytes.size())) > 0;) {
            text.append(bytes.data(), static_cast<std::size_t>(read));
        }
        // The last line may have been cut off.
        const std::size_t end = text.rfind('\n');
        if (end == std::string::npos) return 0;
        const std::size_t start = text.rfind('\n', end == 0 ? 0 : end - 1);
        return std::atoi(text.c_str() + (start == std::string::npos ? 0 : start + 1));
    }

private:
    pid_t process_ = -1;
    int reports_ = -1;
};

// How often a test kills: a few times, or as often as KAPUTIL_KILL_ROUNDS says.
inline int killRounds() {
    const char* wanted = std::getenv("KAPUTIL_KILL_ROUNDS");
    constexpr int kFew = 6;
    return wanted == nullptr ? kFew : std::atoi(wanted);
}

}  // namespace kap::test
