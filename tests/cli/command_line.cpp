#include "cli/command_line.hpp"
#include "support/build_folders.hpp"
#include "support/text_files.hpp"

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

extern char** environ;

namespace kap::tests {
namespace {

using test::contentOf;

std::string nameOfVariable(const std::string& variable) {
    return variable.substr(0, variable.find('='));
}

}  // namespace

std::vector<std::string> environmentWith(const std::vector<std::string>& variables) {
    std::map<std::string, std::string> byName;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        byName[nameOfVariable(*entry)] = *entry;
    }
    byName["KAPUTIL_LOCALE"] = "KAPUTIL_LOCALE=it-IT";
    static const Folder home;  // what a command keeps for its user
    byName["KAPUTIL_HOME"] = "KAPUTIL_HOME=" + home.path();
    byName["KAPUTIL"] = std::string("KAPUTIL=") + test::kCommandLine;
    for (const std::string& variable : variables) {
        byName[nameOfVariable(variable)] = variable;
    }
    std::vector<std::string> all;
    for (const auto& [name, variable] : byName) {
        all.push_back(variable);
    }
    return all;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

namespace {

void require(int error, const char* what) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), what);
    }
}

int exitCodeOf(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "waitpid");
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// All that comes out of a terminal until its last user has gone; the line ends it made are undone.
std::string readTerminal(int terminal) {
    std::string all;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        all.append(buffer, static_cast<std::size_t>(count));
    }
    close(terminal);
    std::erase(all, '\r');
    return all;
}

}  // namespace

Folder::Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "kaputil-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    path_ = name;
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string Folder::file(const std::string& name, const std::string& content) const {
    const std::string path = *this / name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

std::string connectionTo(const std::string& file) {
    return "Provider=KapLocal;Data Source=" + file;
}

namespace {

Outcome run(std::vector<std::string> command, const std::string& input,
            const std::vector<std::string>& variables) {
    const Folder folder;
    const std::string in = folder.file("in", input);
    const std::string out = folder / "out";
    const std::string err = folder / "err";

    posix_spawn_file_actions_t actions;
    require(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
    const int create = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), create, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), create, 0600);

    const std::string program = command.front();
    auto environment = environmentWith(variables);
    pid_t process = 0;
    const int error = posix_spawn(&process, program.c_str(), &actions, nullptr,
                                  pointersTo(command).data(), pointersTo(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    require(error, program.c_str());

    Outcome result;
    result.exitCode = exitCodeOf(process);
    result.out = contentOf(out);
    result.err = contentOf(err);
    return result;
}

}  // namespace

Outcome kaputil(const std::vector<std::string>& arguments, const std::string& input,
                const std::vector<std::string>& variables) {
    std::vector<std::string> command = {test::kCommandLine};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(std::move(command), input, variables);
}

Outcome kaputilOnTerminal(unsigned short columns, const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {test::kCommandLine};
    command.insert(command.end(), arguments.begin(), arguments.end());
    auto environment = environmentWith({"NO_COLOR="});
    const auto words = pointersTo(command);
    const auto variables = pointersTo(environment);
    winsize size{};
    size.ws_row = 40;
    size.ws_col = columns;
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0) {
        execve(words.front(), words.data(), variables.data());
        _exit(127);
    }
    if (process < 0) {
        throw std::system_error(errno, std::generic_category(), "forkpty");
    }
    Outcome result;
    result.out = readTerminal(terminal);
    result.exitCode = exitCodeOf(process);
    return result;
}

Outcome shell(const std::string& line) {
    return run({"/bin/sh", "-c", line}, {}, {});
}

}  // namespace kap::tests
