#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "cli/command_line.hpp"
#include "support/build_folders.hpp"
#include "support/text_files.hpp"

// What is made from the table of commands: pages for man, completion for zsh and fish.
namespace kap::tests {
namespace {

namespace fs = std::filesystem;

// The long options that the help of a command names.
std::set<std::string> optionsOf(const std::string& command) {
    std::set<std::string> options;
    const std::string help = kaputil({command, "--help"}).out;
    for (std::size_t at = help.find("\n  "); at != std::string::npos;
         at = help.find("\n  ", at + 1)) {
        const std::size_t name = help.find("--", at);
        if (name != std::string::npos && name < help.find('\n', at + 1) && name - at < 20) {
            options.insert(help.substr(name, help.find_first_of(" ,\n", name) - name));
        }
    }
    return options;
}

TEST(ManualCommand, DescribesEveryOptionOfACommand) {
    const std::string page = kaputil({"manual", "import", "--language", "en"}).out;
    EXPECT_TRUE(page.starts_with(".TH \"KAPUTIL-IMPORT\" 1")) << page;
    EXPECT_TRUE(contains(page, "kaputil\\-import \\- Bring the rows of a file into a table"))
        << page;
    for (const std::string& option : optionsOf("import")) {
        std::string escaped;
        for (const char unit : option) {
            escaped += unit == '-' ? "\\-" : std::string(1, unit);
        }
        EXPECT_TRUE(contains(page, escaped)) << option;
    }
    EXPECT_TRUE(contains(page, "KAPUTIL_PASSWORD_FILE")) << page;
    EXPECT_TRUE(contains(kaputil({"manual", "config"}).out, "kaputil config diff")) << page;
    EXPECT_EQ(kaputil({"manual", "improt"}).err,
              "kaputil: there is no command improt; did you mean import?\n");
}

TEST(ManualCommand, WritesAPageACommand) {
    const Folder folder;
    EXPECT_EQ(kaputil({"manual", "--folder", folder / "man1"}).exitCode, 0);
    const std::string all = test::contentOf(folder / "man1/kaputil.1");
    EXPECT_TRUE(contains(all, ".BR kaputil\\-sql (1)")) << all;
    for (const char* command : {"sql", "import", "config", "completion"}) {
        EXPECT_TRUE(fs::exists(folder / (std::string("man1/kaputil-") + command + ".1")))
            << command;
    }
    for (const char* name : {"CSQL", "StdFunctions", "Recordset", "MailItem"}) {
        EXPECT_TRUE(fs::exists(folder / (std::string("man1/kaputil-") + name + ".3"))) << name;
    }
}

TEST(ManualCommand, DescribesAClassWithItsMembers) {
    const std::string page = kaputil({"manual", "csql", "--language", "en"}).out;
    EXPECT_TRUE(page.starts_with(".TH \"KAPUTIL-CSQL\" 3")) << page;
    EXPECT_TRUE(contains(page, ".SH AddTmp\n.PP\nFunction AddTmp() As String\n")) << page;
    EXPECT_TRUE(contains(page, "\\fB3709 (\\-2146824579)\\fR\nThe connection is not open."))
        << page;
    EXPECT_TRUE(contains(kaputil({"manual", "CSQL", "--language", "it"}).out,
                         "La connessione non è aperta."));
}

// Shows every page in a language by man; each must have this heading.
void expectPagesThatManReads(const char* language, const char* heading) {
    const Folder folder;
    EXPECT_EQ(kaputil({"manual", "--folder", folder.path(), "--language", language}).exitCode, 0);
    for (const auto& page : fs::directory_iterator(folder.path())) {
        const Outcome run =
            shell("LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings=w -l '" + page.path().string() + "'");
        EXPECT_EQ(run.exitCode, 0) << page;
        EXPECT_EQ(run.err, "") << page;
        EXPECT_TRUE(contains(run.out, heading)) << page;
    }
}

TEST(ManualCommand, IsReadByManWithoutComplaint) {
    if (shell("command -v man && command -v groff").exitCode != 0) {
        GTEST_SKIP() << "there is no man";
    }
    expectPagesThatManReads("en", "SYNOPSIS");
    expectPagesThatManReads("it", "SINTASSI");
}

TEST(ManualCommand, WritesPagesOnCommandsInTheLanguageThatIsGiven) {
    const Folder folder;
    EXPECT_EQ(kaputil({"manual", "--folder", folder.path(), "--language", "it"}).exitCode, 0);
    const std::string page = test::contentOf(folder / "kaputil-import.1");
    EXPECT_TRUE(contains(page, ".SH NOME\nkaputil\\-import \\- Porta le righe di un file")) << page;
    EXPECT_TRUE(contains(page, ".SH OPZIONI\n")) << page;
    EXPECT_TRUE(
        contains(page, "\\fB\\-\\-table NOME\\fR\nLa tabella, che deve già esserci. Obbligatorio."))
        << page;
    EXPECT_TRUE(contains(page, ".SH AMBIENTE\n")) << page;
    EXPECT_EQ(kaputil({"manual", "import"}).out, page) << "it is that of the user";
    EXPECT_TRUE(contains(test::contentOf(folder / "kaputil.1"), ".SH COMANDI\n"));
    EXPECT_TRUE(contains(test::contentOf(folder / "kaputil-CSQL.3"), ".SH SINTASSI\n"));
}

TEST(CompletionCommand, OffersCommandsActionsAndOptionsInZsh) {
    const std::string script = kaputil({"completion", "zsh", "--language", "en"}).out;
    EXPECT_TRUE(script.starts_with("#compdef kaputil\n")) << script;
    EXPECT_TRUE(contains(script, "'import:Bring the rows of a file into a table")) << script;
    EXPECT_TRUE(contains(script, "--encoding[How the file holds letters")) << script;
    EXPECT_TRUE(contains(script, ":(utf-8 utf-16 1252 850)'")) << script;
    EXPECT_TRUE(contains(script, "'diff:Show where groups differ.'")) << script;
    EXPECT_TRUE(contains(script, "'::name:_kaputil_names'")) << script;
    EXPECT_TRUE(contains(script, "_kaputil_names StdFunctions'")) << script;
    if (shell("command -v zsh").exitCode == 0) {
        const Folder folder;
        const Outcome run = shell("zsh -n '" + folder.file("_kaputil", script) + "'");
        EXPECT_EQ(run.exitCode, 0) << run.err;
    }
}

TEST(CompletionCommand, OffersCommandsActionsAndOptionsInFish) {
    const std::string script = kaputil({"completion", "fish", "--language", "en"}).out;
    EXPECT_TRUE(contains(script, "-n __fish_use_subcommand -a import -d 'Bring the rows"))
        << script;
    EXPECT_TRUE(contains(script,
                         "-n '__fish_seen_subcommand_from import' -l encoding -x -a "
                         "'utf-8 utf-16 1252 850' -d"))
        << script;
    if (shell("command -v fish").exitCode == 0) {
        const Folder folder;
        const std::string file = folder.file("kaputil.fish", script);
        const auto offered = [&](const std::string& typed) {
            return shell("PATH=$(dirname " + std::string(test::kCommandLine) +
                         "):$PATH fish --no-config -c 'source " + file + "; complete -C \"" +
                         typed + "\"'")
                .out;
        };
        EXPECT_TRUE(contains(offered("kaputil imp"), "import")) << offered("kaputil imp");
        EXPECT_TRUE(contains(offered("kaputil config di"), "diff"));
        EXPECT_TRUE(contains(offered("kaputil import --enc"), "--encoding"));
        EXPECT_TRUE(contains(offered("kaputil classes CProp"), "CProprieta\n"));
        EXPECT_TRUE(contains(offered("kaputil classes CProprieta.Le"), "CProprieta.Leggi\n"));
        EXPECT_TRUE(contains(offered("kaputil call KapRo"), "KapRound\n"));
    }
    EXPECT_EQ(kaputil({"completion", "tcsh"}).exitCode, 2);
}

TEST(CompletionCommand, DescribesInTheLanguageThatIsGiven) {
    EXPECT_TRUE(contains(kaputil({"completion", "zsh", "--language", "it"}).out,
                         "'import:Porta le righe di un file in una tabella"));
    EXPECT_TRUE(contains(kaputil({"completion", "fish", "--language", "it"}).out,
                         "-a import -d 'Porta le righe di un file in una tabella"));
}

}  // namespace
}  // namespace kap::tests
