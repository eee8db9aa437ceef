#include <gtest/gtest.h>

#include <filesystem>

#include "cli/command_line.hpp"
#include "cli/terminal_session.hpp"

// How a command is told its database: a file, a name, a variable, a connection string.
namespace kap::tests {
namespace {

namespace fs = std::filesystem;

class ConnectionNames : public testing::Test {
protected:
    ConnectionNames() {
        kaputil({"sql", "--connection", connectionTo(file_), "--command",
                 "CREATE TABLE T (A int) INSERT INTO T VALUES (42)"});
    }

    // The exit code and the texts of reading the table with `given` as its database.
    [[nodiscard]] Outcome read(const std::string& given,
                               std::vector<std::string> variables = {}) const {
        std::vector<std::string> words = {"sql", "--command", "SELECT A FROM T"};
        if (!given.empty()) {
            words.insert(words.end(), {"--connection", given});
        }
        variables.insert(variables.begin(), "KAPUTIL_HOME=" + folder_.path());
        return kaputil(words, {}, variables);
    }
    void expectFound(const std::string& given, std::vector<std::string> variables = {}) const {
        const Outcome run = read(given, std::move(variables));
        EXPECT_EQ(run.exitCode, 0) << given << ": " << run.err;
        EXPECT_TRUE(contains(run.out, "42")) << run.out;
    }
    void list(const std::string& lines) const { (void)folder_.file("connections", lines); }
    void onlyForMe(const std::string& name) const {
        fs::permissions(folder_ / name, fs::perms::owner_read | fs::perms::owner_write);
    }

    Folder folder_;
    std::string file_ = folder_ / "prova.db";
};

TEST_F(ConnectionNames, TakesAFile) {
    expectFound(file_);
}

TEST_F(ConnectionNames, TakesAFileWithAnythingInItsName) {
    const std::string odd = folder_ / "a; b = \"c\" 'd'.db";
    fs::copy_file(file_, odd);
    expectFound(odd);
}

TEST_F(ConnectionNames, TakesANameOfTheList) {
    list("# my own\n\nprova = " + file_ + "\r\nAltra = " + connectionTo(file_) + "\n");
    expectFound("prova");
    expectFound("ALTRA");
}

TEST_F(ConnectionNames, FindsTheListAmongTheUsersSettings) {
    fs::create_directories(folder_ / "config/kaputil");
    (void)folder_.file("config/kaputil/connections", "prova = " + file_ + "\n");
    expectFound("prova", {"KAPUTIL_HOME=", "XDG_CONFIG_HOME=" + folder_ / "config"});
}

TEST_F(ConnectionNames, TakesWhatTheVariableSays) {
    list("prova = " + file_ + "\n");
    expectFound("", {"KAPUTIL_CONNECTION=" + file_});
    expectFound("", {"KAPUTIL_CONNECTION=prova"});
    expectFound(file_, {"KAPUTIL_CONNECTION=altro.db"});
}

TEST_F(ConnectionNames, SuggestsANameForAMistake) {
    list("produzione = " + file_ + "\n");
    const Outcome run = read("produzoine");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "did you mean produzione?")) << run.err;
}

TEST_F(ConnectionNames, TellsTheLineOfTheListThatIsWrong) {
    list("prova = " + file_ + "\nqualcosa\n");
    const Outcome run = read("prova");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "connections, line 2: a line is")) << run.err;
}

TEST_F(ConnectionNames, RefusesAListWithPasswordsThatOthersRead) {
    list("server = Driver={x};Server=s;UID=u;PWD=p\nprova = " + file_ + "\n");
    fs::permissions(folder_ / "connections", fs::perms(0644));
    const Outcome run = read("prova");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "chmod 600")) << run.err;
    EXPECT_FALSE(contains(run.err, "PWD")) << run.err;
    onlyForMe("connections");
    expectFound("prova");
}

TEST_F(ConnectionNames, TakesPasswordsFromAVariableOrAFileOfItsOwner) {
    (void)folder_.file("segreto", "parola\n");
    const std::string server = "Driver={manca};Server=s;UID=u";
    fs::permissions(folder_ / "segreto", fs::perms(0640));
    Outcome run = read(server, {"KAPUTIL_PASSWORD_FILE=" + folder_ / "segreto"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "chmod 600")) << run.err;
    onlyForMe("segreto");
    run = read(server, {"KAPUTIL_PASSWORD_FILE=" + folder_ / "segreto"});
    EXPECT_EQ(run.exitCode, 3) << run.err;  // no such driver
    run = read(server, {"KAPUTIL_PASSWORD_FILE=" + folder_ / "manca"});
    EXPECT_EQ(run.exitCode, 2);
    run = read(server, {"KAPUTIL_PASSWORD=parola"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_FALSE(contains(run.err, "parola")) << run.err;
}

TEST_F(ConnectionNames, AsksForAPasswordThatNobodyHasGiven) {
    TerminalSession terminal(
        {"sql", "--connection", "Driver={manca};Server=magazzino;UID=u", "--command", "SELECT 1"});
    terminal.waitFor("Password for magazzino: ");
    terminal.type("segreta\n");
    EXPECT_FALSE(contains(terminal.rest(), "segreta"));
    EXPECT_EQ(terminal.exitCode(), 3);
}

TEST_F(ConnectionNames, TellsTheVariablesInTheHelp) {
    const std::string help = kaputil({"--help"}).out;
    for (const char* variable : {"KAPUTIL_CONNECTION", "KAPUTIL_PASSWORD", "KAPUTIL_PASSWORD_FILE",
                                 "KAPUTIL_LOCALE", "KAPUTIL_HOME", "NO_COLOR", "PAGER"}) {
        EXPECT_TRUE(contains(help, variable)) << variable;
    }
}

}  // namespace
}  // namespace kap::tests
