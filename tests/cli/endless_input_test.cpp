// Files and pipes that have no end, or hardly one: they are read up to what a script or a table may
// have, and then refused in words that say so.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

class EndlessInput : public testing::Test {
protected:
    // A file of that many bytes, which take no room on the disk.
    [[nodiscard]] std::string sparse(const std::string& name, std::uintmax_t bytes) const {
        const std::string file = folder_.file(name, "");
        std::filesystem::resize_file(file, bytes);
        return file;
    }
    static void expectRefused(const Outcome& run, const std::string& reason) {
        EXPECT_EQ(2, run.exitCode);
        EXPECT_TRUE(contains(run.err, reason)) << run.err.substr(0, 400);
        EXPECT_EQ("", run.out);
    }
    // A script in a database in memory.
    [[nodiscard]] Outcome sql(const std::string& script) const {
        return kaputil({"sql", "--connection", connectionTo(":memory:"), "--file",
                        folder_.file("script.sql", script)});
    }

    Folder folder_;
};

constexpr std::uintmax_t kGigabyte = std::uintmax_t{1} << 30U;

TEST_F(EndlessInput, IsRefusedAsAScript) {
    const std::string connection = connectionTo(":memory:");
    for (const std::string& file : {sparse("lungo.sql", 3 * kGigabyte), std::string("/dev/zero")}) {
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"sql", "--connection", connection, "--file", file},
              std::vector<std::string>{"registry", "import", file}}) {
            expectRefused(kaputil(command),
                          "cannot read " + file + ": it has more than the 256 MB");
        }
    }
}

TEST_F(EndlessInput, IsRefusedFromAPipe) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const std::string command = "$KAPUTIL sql --connection '" + connectionTo(":memory:") + "'";
    expectRefused(shell("yes 'SELECT 1' > " + pipe + " & " + command + " --file " + pipe),
                  "cannot read " + pipe + ": it has more than the 256 MB");
    expectRefused(shell("yes 'SELECT 1' | " + command),
                  "cannot read standard input: it has more than the 256 MB");
}

TEST_F(EndlessInput, IsRefusedAsRows) {
    const std::string database = connectionTo(folder_ / "a.db");
    ASSERT_EQ(
        0,
        kaputil({"sql", "--connection", database, "--command", "CREATE TABLE T (A int)"}).exitCode);
    const std::string file = sparse("lungo.csv", 3 * kGigabyte);
    expectRefused(kaputil({"import", "--connection", database, "--table", "T", file}),
                  "cannot read " + file + ": it has more than the 2048 MB");
}

TEST_F(EndlessInput, IsRefusedAsAListOfConnectionsOrAPassword) {
    const std::vector<std::string> command = {
        "sql", "--connection", "Driver={manca};Server=s;UID=u", "--command", "SELECT 1"};
    const std::string list = folder_ / "connections";
    const std::vector<std::string> named = {"sql", "--connection", "nome", "--command", "SELECT 1"};
    const std::vector<std::string> home = {"KAPUTIL_HOME=" + folder_.path()};
    ASSERT_EQ(0, mkfifo(list.c_str(), 0600));
    expectRefused(kaputil(named, "", home), "cannot read " + list + ": it is no file");
    std::filesystem::remove(list);
    ASSERT_EQ(list, sparse("connections", 3 * kGigabyte));
    expectRefused(kaputil(named, "", home), "cannot read " + list + ": it has more than the 1 MB");
    expectRefused(kaputil(command, "", {"KAPUTIL_PASSWORD_FILE=/dev/zero"}),
                  "its first line is too long");
}

TEST_F(EndlessInput, IsNotMadeOfVariablesAndFiles) {
    const std::string value(1 << 20, 'x');
    std::string script = ":setvar a " + value + "\n";
    for (int i = 0; i < 300; ++i) {
        script += "$(a)\n";
    }
    expectRefused(sql(script), "the script has more than 256 MB with its variables and files");
    std::string itself;
    for (int i = 0; i < 100; ++i) {
        itself += ":r " + folder_ / "script.sql" + "\n";
    }
    expectRefused(sql(itself), ":r");
    const std::string empty = folder_.file("vuoto.sql", "");
    std::string many;
    for (int i = 0; i < 1001; ++i) {
        many += ":r " + empty + "\n";
    }
    expectRefused(sql(many), "a script includes at most 1000 files with :r");
}

// A reader that looks back, or ahead, at every line would not end.
TEST_F(EndlessInput, IsReadOnceForItsVariables) {
    constexpr int kLines = 300'000;
    std::string lines;
    std::string marks = ":setvar a 1\nSELECT '";
    for (int i = 0; i < kLines; ++i) {
        lines += ":on error exit\n";
        marks += "$(";
    }
    EXPECT_EQ(0, sql(lines + "SELECT 1 AS A\n").exitCode);
    EXPECT_EQ(0, sql(marks + "a)'\n").exitCode);
}

}  // namespace
}  // namespace kap::tests
