#include <gtest/gtest.h>

#include <filesystem>

#include "cli/command_line.hpp"
#include "support/text_files.hpp"

namespace kap::tests {
namespace {

using test::contentOf;

class ExportCommandTest : public testing::Test {
protected:
    ExportCommandTest() { std::filesystem::create_directory(folder_ / "scambio"); }

    [[nodiscard]] std::vector<std::string> words(const std::string& query,
                                                 std::vector<std::string> more = {}) const {
        std::vector<std::string> all = {
            "export",     "--connection",  connectionTo(":memory:"), "--query",
            query,        "--folder",      folder_ / "scambio",      "--name",
            "EXPORT.TXT", "--message-log", folder_ / "messaggi.log"};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    [[nodiscard]] std::string content() const { return contentOf(folder_ / "scambio/EXPORT.TXT"); }

    Folder folder_;
};

TEST_F(ExportCommandTest, WritesTheRowsAndTellsHowMany) {
    const Outcome run = kaputil(words("SELECT 'Rossi' AS NOME UNION ALL SELECT 'Bianchi'"));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "2 rows written to EXPORT.TXT\n");
    EXPECT_EQ(content(), "Rossi  \r\nBianchi\r\n");
}

TEST_F(ExportCommandTest, PrintsOneObjectForPrograms) {
    const Outcome run = kaputil(words("SELECT 1 AS A", {"--json"}));
    EXPECT_EQ(run.out,
              "{\"folder\":\"" + folder_ / "scambio" + "\",\"file\":\"EXPORT.TXT\",\"rows\":1}\n");
}

TEST_F(ExportCommandTest, ShowsOnATerminalHowFarItIs) {
    const Outcome run = kaputilOnTerminal(60, words("SELECT 1 AS A UNION ALL SELECT 2"));
    EXPECT_NE(run.out.find("[####################....................] 50%  1 rows"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("2 rows written to EXPORT.TXT"), std::string::npos) << run.out;
}

TEST_F(ExportCommandTest, UsesTheSchemaThatIsThere) {
    const std::string schema = folder_.path() + "/scambio/Schema.ini";
    test::putFile(schema, "[EXPORT.TXT]\r\nFormat=TabDelimited\r\nCol1=A Integer\r\n");
    EXPECT_EQ(kaputil(words("SELECT 1 AS A", {"--keep-schema"})).exitCode, 0);
    EXPECT_EQ(content(), "\"A\"\r\n1\r\n");
}

TEST_F(ExportCommandTest, SaysWhatIsWrong) {
    const Outcome wide = kaputil(words("SELECT 12345 AS CODICE"));
    EXPECT_EQ(wide.exitCode, 1);
    EXPECT_EQ(wide.err,
              "error -2147217833: Riga 1, colonna CODICE: \"12345\" non sta in 4 caratteri.\n");
    const Outcome unknown = kaputil(words("SELECT * FROM Inesistente"));
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("Invalid object name 'Inesistente'."), std::string::npos)
        << unknown.err;
}

TEST_F(ExportCommandTest, TellsThatNothingWasWritten) {
    const Outcome run = kaputil(words("SELECT 1 AS A", {"--keep-schema"}));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "kaputil: nothing was written; the message log says why\n");
    EXPECT_NE(contentOf(folder_ / "messaggi.log").find("Impossibile Trovare il File"),
              std::string::npos);
}

TEST_F(ExportCommandTest, RefusesAFolderInTheName) {
    const Outcome run = kaputil({"export", "--connection", connectionTo(":memory:"), "--query",
                                 "SELECT 1 AS A", "--name", "../x.txt"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: the file's name has no folder; that is what --folder is for\n");
}

TEST_F(ExportCommandTest, TellsADatabaseThatCannotBeOpened) {
    const Outcome run = kaputil({"export", "--connection", "Provider=Manca", "--query",
                                 "SELECT 1 AS A", "--name", "x.txt"});
    EXPECT_EQ(run.exitCode, 3);
}

}  // namespace
}  // namespace kap::tests
