#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "cli/command_line.hpp"

// A wrong name of a database is an error that names the file, and makes none.
namespace kap::tests {
namespace {

constexpr const char* kSelect = "SELECT 1 AS A";

// What each command needs beside the database in order to begin its work; "FILE" is a file that is
// there. A command that opens a database and is not here fails the test below.
const std::map<std::string, std::vector<std::string>>& wordsOfCommands() {
    static const std::map<std::string, std::vector<std::string>> words = {
        {"sql", {"--command", "SELECT * FROM Clienti"}},
        {"batch", {"FILE"}},
        {"config groups", {}},
        {"config show", {"--group", "G"}},
        {"config declared", {"--declaration", "FILE"}},
        {"config diff", {"A", "B"}},
        {"config export", {"--group", "G"}},
        {"config import", {"--group", "G"}},
        {"export", {"--query", kSelect, "--name", "x.txt"}},
        {"import", {"--table", "Clienti", "FILE"}},
        {"numbers", {}},
        {"copy", {"--to", "Provider=KapLocal;Data Source=:memory:"}},
        {"describe", {}},
    };
    return words;
}

// The words at the beginning of the lines below "Subcommands:" in a help.
std::vector<std::string> commandsIn(const std::string& help) {
    std::vector<std::string> names;
    std::istringstream lines(help);
    bool below = false;
    for (std::string line; std::getline(lines, line);) {
        below = below && !line.empty();
        if (below && line.starts_with("  ") && line.size() > 2 && line[2] != ' ') {
            names.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
        below = below || line.starts_with("Subcommands:");
    }
    return names;
}

std::vector<std::string> splitWords(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

std::string helpOf(const std::string& command) {
    std::vector<std::string> words = splitWords(command);
    words.emplace_back("--help");
    return kaputil(words, {}, {"KAPUTIL_LOCALE=en-US"}).out;
}

// Every command of the table, and the actions of those that have some.
std::vector<std::string> allCommands() {
    std::vector<std::string> all;
    for (const std::string& command : commandsIn(helpOf(""))) {
        const std::vector<std::string> actions = commandsIn(helpOf(command));
        for (const std::string& action : actions) {
            all.push_back(command + " " + action);
        }
        if (actions.empty()) {
            all.push_back(command);
        }
    }
    return all;
}

TEST(DatabaseAccess, NoCommandMakesADatabaseThatItOnlyReads) {
    int tried = 0;
    for (const std::string& command : allCommands()) {
        const std::string help = helpOf(command);
        const bool copies = contains(help, "--from DATABASE");
        if (!copies && !contains(help, "--connection DATABASE")) {
            EXPECT_FALSE(contains(help, "--connection")) << command;
            continue;
        }
        const auto words = wordsOfCommands().find(command);
        ASSERT_NE(words, wordsOfCommands().end()) << command;
        const Folder folder;
        std::vector<std::string> arguments = splitWords(command);
        for (const std::string& word : words->second) {
            arguments.push_back(word == "FILE" ? folder.file("f.txt", "DELETE FROM Clienti\n")
                                               : word);
        }
        arguments.insert(arguments.end(),
                         {copies ? "--from" : "--connection", folder / "sbagliato.db"});
        const Outcome run = kaputil(arguments);
        EXPECT_EQ(run.exitCode, 3) << command << ": " << run.out << run.err;
        EXPECT_TRUE(contains(run.err, "sbagliato.db")) << command << ": " << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder / "sbagliato.db")) << command;
        ++tried;
    }
    EXPECT_EQ(tried, static_cast<int>(wordsOfCommands().size()));
}

TEST(DatabaseAccess, ScriptsThatMakeNothingNeedTheirDatabase) {
    for (const char* script : {"SELECT 1", "DELETE FROM T", "INSERT INTO T VALUES ('CREATE')",
                               "PRINT 'EXEC x'", "-- CREATE TABLE T (A int)\nSELECT 1",
                               "/* EXEC */ UPDATE T SET [create] = 1", "SELECT \"into\" FROM T"}) {
        const Folder folder;
        const Outcome run = kaputil({"sql", "--connection", folder / "a.db", "--command", script});
        EXPECT_EQ(run.exitCode, 3) << script << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder / "a.db")) << script;
    }
}

TEST(DatabaseAccess, ScriptsThatMakeSomethingMakeTheDatabase) {
    for (const char* script :
         {"CREATE TABLE T (A int)", "SELECT 1 AS A INTO T", "EXEC ('CREATE TABLE T (A int)')"}) {
        const Folder folder;
        const Outcome run = kaputil({"sql", "--connection", folder / "a.db", "--command", script});
        EXPECT_EQ(run.exitCode, 0) << script << run.err;
        EXPECT_TRUE(std::filesystem::exists(folder / "a.db")) << script;
    }
}

TEST(DatabaseAccess, CheckBackupAndPlanNeedTheDatabase) {
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{"--check"},
          {"--backup", "copy.db"},
          {"--plan", "--command", "CREATE TABLE T (A int)"}}) {
        const Folder folder;
        std::vector<std::string> words = {"sql", "--connection", folder / "a.db"};
        words.insert(words.end(), more.begin(), more.end());
        EXPECT_EQ(kaputil(words).exitCode, 3) << more.front();
        EXPECT_FALSE(std::filesystem::exists(folder / "a.db")) << more.front();
    }
}

}  // namespace
}  // namespace kap::tests
