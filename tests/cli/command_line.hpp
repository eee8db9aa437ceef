#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kap::tests {

// What a run of the command line left behind.
struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// Runs `kaputil` with these arguments and gives it `input` to read. It speaks Italian whatever the
// environment says and keeps what it keeps for its user in a folder of the tests, unless
// `variables`
// ("NAME=value") say otherwise.
Outcome kaputil(const std::vector<std::string>& arguments, const std::string& input = {},
                const std::vector<std::string>& variables = {});

// Runs `kaputil` on a terminal of so many columns. What it prints is all in `out`.
Outcome kaputilOnTerminal(unsigned short columns, const std::vector<std::string>& arguments);

// Runs a line of shell, in which $KAPUTIL is the command line.
Outcome shell(const std::string& line);

// The environment of a run, changed by `variables`, and texts as the system takes lists of them.
std::vector<std::string> environmentWith(const std::vector<std::string>& variables);
std::vector<char*> pointersTo(std::vector<std::string>& texts);

[[nodiscard]] inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// A folder for one test, removed with it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] std::string operator/(const std::string& name) const {
        return (path_ / name).string();
    }
    [[nodiscard]] std::string path() const { return path_.string(); }
    // Makes a file and gives back its path.
    [[nodiscard]] std::string file(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path path_;
};

// The connection string of a database file.
[[nodiscard]] std::string connectionTo(const std::string& file);

}  // namespace kap::tests
