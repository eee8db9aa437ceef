#include <gtest/gtest.h>

#include <filesystem>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

class CopyCommandLine : public testing::Test {
protected:
    CopyCommandLine() {
        sql("da.db", "CREATE TABLE T (A int PRIMARY KEY); INSERT INTO T VALUES (1)");
    }

    Outcome sql(const std::string& file, const std::string& script) const {
        return kaputil({"sql", "--connection", connectionTo(folder_ / file), "--command", script});
    }
    [[nodiscard]] Outcome copy(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {"copy", "--from", connectionTo(folder_ / "da.db"), "--to",
                                          connectionTo(folder_ / "a.db")};
        words.insert(words.end(), more.begin(), more.end());
        return kaputil(words);
    }
    [[nodiscard]] std::string targetTables() const {
        return sql("a.db", "SELECT name FROM sysobjects WHERE type = 'U' ORDER BY name").out;
    }

    Folder folder_;
};

TEST_F(CopyCommandLine, CopiesAFileIntoAnother) {
    const Outcome run = copy();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(targetTables().find("T"), std::string::npos);
    EXPECT_EQ(targetTables().find("KAP_COPY"), std::string::npos);
}

TEST_F(CopyCommandLine, OfATableThatIsNotThereMakesNoFile) {
    const Outcome run = copy({"--table", "Manca"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("Manca"), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "a.db"));
}

TEST_F(CopyCommandLine, ThatIsRefusedLeavesTheTargetAsItWas) {
    sql("a.db", "CREATE TABLE T (A int); INSERT INTO T VALUES (5)");
    const std::string before = targetTables();
    const Outcome run = copy();
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("with rows in it"), std::string::npos) << run.err;
    EXPECT_EQ(targetTables(), before);
}

}  // namespace
}  // namespace kap::tests
