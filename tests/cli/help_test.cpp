#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "cli/command_line.hpp"

// The help is in the language that the user reads, all of it.
namespace kap::tests {
namespace {

// Each is asked for once: the tests go over all commands in both languages.
const std::string& helpIn(const std::string& locale, std::vector<std::string> command) {
    static std::map<std::pair<std::string, std::vector<std::string>>, std::string> known;
    std::string& help = known[{locale, command}];
    if (help.empty()) {
        command.emplace_back("--help");
        help = kaputil(command, {}, {"KAPUTIL_LOCALE=" + locale}).out;
    }
    return help;
}

std::vector<std::string> linesOfHelp(const std::string& help) {
    std::vector<std::string> lines;
    std::istringstream in(help);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The words behind which a line of help goes on with what they mean.
std::vector<std::string> namesBelow(const std::string& help, const std::string& heading) {
    std::vector<std::string> names;
    bool below = false;
    for (const std::string& line : linesOfHelp(help)) {
        below = below ? !line.empty() : line == heading + ":";
        if (below && line.starts_with("  ") && line[2] != ' ') {
            names.push_back(line.substr(2, line.find_first_of(" ,", 2) - 2));
        }
    }
    return names;
}

// The command line itself, every command, and their actions.
std::vector<std::vector<std::string>> everyCommand() {
    std::vector<std::vector<std::string>> commands = {{}};
    for (const std::string& name : namesBelow(helpIn("en", {}), "Subcommands")) {
        commands.push_back({name});
        for (const std::string& action : namesBelow(helpIn("en", {name}), "Subcommands")) {
            commands.push_back({name, action});
        }
    }
    return commands;
}

TEST(Help, IsInTheLanguageOfTheUser) {
    const std::string italian = helpIn("it", {"import"});
    EXPECT_TRUE(
        italian.starts_with("Porta le righe di un file in una tabella, tutte o nessuna.\n"
                            "Uso: kaputil import [OPZIONI] [FILE]\n"))
        << italian;
    EXPECT_TRUE(contains(italian, "\nArgomenti:\n  FILE ")) << italian;
    EXPECT_TRUE(contains(italian, "\nOpzioni:\n  -h,--help                   Stampa questo aiuto"))
        << italian;
    EXPECT_TRUE(contains(italian, "  --table NOME OBBLIGATORIO ")) << italian;
    const std::string english = helpIn("en", {"import"});
    EXPECT_TRUE(
        english.starts_with("Bring the rows of a file into a table, all of them or none.\n"
                            "Usage: kaputil import [OPTIONS] [FILE]\n"))
        << english;
    EXPECT_TRUE(contains(english, "  --table NAME REQUIRED ")) << english;
}

TEST(Help, ListsCommandsAndVariablesInTheLanguageOfTheUser) {
    const std::string italian = helpIn("it", {});
    EXPECT_TRUE(
        italian.starts_with("La riga di comando di KAP Utility.\n"
                            "Uso: kaputil [OPZIONI] [COMANDO]\n"))
        << italian;
    EXPECT_EQ(namesBelow(italian, "Comandi"), namesBelow(helpIn("en", {}), "Subcommands"));
    EXPECT_EQ(namesBelow(italian, "Variabili"), namesBelow(helpIn("en", {}), "Variables"));
    EXPECT_GT(namesBelow(italian, "Comandi").size(), 10U);
}

TEST(Help, FollowsTheVariablesOfLanguagesLikeEveryProgram) {
    const auto firstLine = [](const std::vector<std::string>& variables) {
        std::vector<std::string> all = {
            "KAPUTIL_LOCALE=", "LC_ALL=", "LC_MESSAGES=", "LANG=", "LC_NUMERIC="};
        all.insert(all.end(), variables.begin(), variables.end());
        return linesOfHelp(kaputil({"--help"}, {}, all).out).front();
    };
    const std::string italian = "La riga di comando di KAP Utility.";
    const std::string english = "The command line of KAP Utility.";
    EXPECT_EQ(firstLine({}), italian);
    EXPECT_EQ(firstLine({"LANG=en_US.UTF-8"}), english);
    EXPECT_EQ(firstLine({"LANG=it_IT.UTF-8"}), italian);
    EXPECT_EQ(firstLine({"LANG=it_IT.UTF-8", "LC_MESSAGES=en_US.UTF-8"}), english);
    EXPECT_EQ(firstLine({"LANG=en_US.UTF-8", "LC_MESSAGES=it_IT.UTF-8"}), italian);
    EXPECT_EQ(firstLine({"LANG=en_US.UTF-8", "LC_NUMERIC=it_IT.UTF-8"}), english);
    EXPECT_EQ(firstLine({"LC_MESSAGES=it_IT.UTF-8", "LC_ALL=en_GB.UTF-8"}), english);
    EXPECT_EQ(firstLine({"LC_ALL=en_GB.UTF-8", "KAPUTIL_LOCALE=it-IT"}), italian);
}

TEST(Help, NamesTheSameOptionsInBothLanguages) {
    for (const std::vector<std::string>& command : everyCommand()) {
        const std::string italian = helpIn("it", command);
        const std::vector<std::string> options = namesBelow(helpIn("en", command), "Options");
        EXPECT_FALSE(options.empty());
        EXPECT_EQ(namesBelow(italian, "Opzioni"), options) << italian;
    }
}

// What is said in one language alone shows as a line that both helps have.
TEST(Help, LeavesNothingUntranslated) {
    const std::set<std::string> alike = {
        "",
        "  -- message: Addebito fallito",
        "  UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1",
        "  GO",
        "  UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2",
        "  kaputil call KapRound 2.675 2",
        "  kaputil call CProprieta.Scrivi Codice 12 + Leggi codice",
        "  true false null empty missing",
        "  '#2003-12-25#'  '#2003-12-25 10:30:00#'",
        "                      integer: long: single: currency: decimal: date: boolean: byte:",
        "  [Vendite\\Documenti\\Testata]",
        "  ScontoMassimo = 25",
        "      flag = 1",
        "                         (XDG_CONFIG_HOME, XDG_DATA_HOME)",
        "  --encoding utf-8|utf-16|1252|850",
    };
    for (const std::vector<std::string>& command : everyCommand()) {
        const std::vector<std::string> english = linesOfHelp(helpIn("en", command));
        for (const std::string& line : linesOfHelp(helpIn("it", command))) {
            EXPECT_TRUE(alike.contains(line) || std::ranges::find(english, line) == english.end())
                << line;
        }
    }
}

}  // namespace
}  // namespace kap::tests
