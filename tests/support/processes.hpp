#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/build_folders.hpp"

namespace kap::test {

// Starts one of the folder's test programs with these arguments.
inline pid_t startProgram(const std::string& name, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), std::string(kTestPrograms) + "/" + name);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        execv(pointers.front(), pointers.data());
        _exit(127);
    }
    return child;
}

// Waits for its end; whether it ended with exit code 0.
inline bool succeeds(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace kap::test
