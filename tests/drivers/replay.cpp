#include "replay.hpp"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "drivers/odbc/server_dialect.hpp"
#include "drivers/odbc/table_facts.hpp"
#include "support/build_folders.hpp"

namespace kap::test {
namespace {

std::vector<std::string> wordsOfLine(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

bool holdsWord(const std::vector<std::string>& words, const char* word) {
    return std::ranges::find(words, word) != words.end();
}

std::string factsQueryLine(const std::string& table) {
    ado::odbc::TableName name;
    name.name = table;
    const std::size_t point = table.find('.');
    if (point != std::string::npos) {
        name.schema = table.substr(0, point);
        name.name = table.substr(point + 1);
    }
    return "> " + ado::odbc::makeTransactDialect({})->factsQuery(name) +
           "\ncolumns a nvarchar(128), b nvarchar(128), c int, d int, e int, f int, g int, h int, "
           "i "
           "int, j int";
}

// "fact codice varchar(10) key 1"
std::string factRow(const std::vector<std::string>& words, bool triggers) {
    const std::string type = words[2].substr(0, words[2].find('('));
    const std::size_t open = words[2].find('(');
    const std::string size =
        open == std::string::npos ? "0" : words[2].substr(open + 1, words[2].size() - open - 2);
    const auto key = std::ranges::find(words, "key");
    const bool binary = type == "timestamp" || type == "varbinary";
    const auto flag = [](bool set) { return set ? " | 1" : " | 0"; };
    return "row " + words[1] + " | " + type + " | " + size + " | " +
           (type == "datetime2" ? size : "0") + flag(key == words.end()) +
           flag(holdsWord(words, "identity")) + flag(holdsWord(words, "generated")) + " | " +
           (key == words.end() ? "0" : *(key + 1)) + flag(triggers) + flag(binary);
}

std::string expanded(const std::string& traffic) {
    std::istringstream lines(traffic);
    std::string made;
    bool triggers = false;
    for (std::string line; std::getline(lines, line);) {
        const std::vector<std::string> words = wordsOfLine(line);
        if (!words.empty() && words.front() == "facts") {
            triggers = holdsWord(words, "triggers");
            line = factsQueryLine(words[1]);
        } else if (!words.empty() && words.front() == "fact") {
            line = factRow(words, triggers);
        }
        made += line + "\n";
    }
    return made;
}

}  // namespace

Replay::Replay(const std::string& traffic) : file_(folder_.file("traffic")) {
    std::ofstream(file_) << expanded(traffic);
    connection_ =
        "Driver=" + std::string(test::kTestPrograms) + "/kaputil_replay.so;Traffic=" + file_;
}

Replay::~Replay() {
    std::istringstream lines(log());
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("!")) {
            ADD_FAILURE() << line;
        }
    }
}

int Replay::roundTrips() {
    std::istringstream lines(log());
    int all = 0;
    for (std::string line; std::getline(lines, line);) {
        all += line.starts_with("> ") ? 1 : 0;
    }
    const int since = all - counted_;
    counted_ = all;
    return since;
}

std::string Replay::log() const {
    std::ifstream stream(file_ + ".log");
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace kap::test
