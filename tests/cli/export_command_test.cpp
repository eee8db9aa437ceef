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
    EXPECT_TRUE(run.err.starts_with("error -2147221503: Impossibile Trovare il File ")) << run.err;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "scambio/EXPORT.TXT"));
    EXPECT_NE(contentOf(folder_ / "messaggi.log").find("Impossibile Trovare il File"),
              std::string::npos);
}

TEST_F(ExportCommandTest, LeavesNoPartOfAFileAndTheOneOfBefore) {
    const std::string failing = "SELECT 1 AS CODICE UNION ALL SELECT 12345";
    EXPECT_EQ(kaputil(words(failing)).exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "scambio/EXPORT.TXT"));
    ASSERT_EQ(kaputil(words("SELECT 1 AS CODICE")).exitCode, 0);
    const std::string before = content();
    EXPECT_EQ(kaputil(words(failing)).exitCode, 1);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(kaputil(words("SELECT 22 AS CODICE")).exitCode, 0);
    EXPECT_NE(content(), before);
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "scambio")) {
        EXPECT_NE(entry.path().extension(), ".before");
    }
}

constexpr const char* kWide =
    "SELECT CAST(-2147483648 AS int) AS CODICE, CAST(12345678901 AS bigint) AS GRANDE, "
    "CAST(-1234567890.1234 AS decimal(18,4)) AS LORDO, N'Niccol\xC3\xB2' AS NOME, "
    "CAST('20250331 10:30:59' AS datetime) AS DATA, CAST(-922337203685477.5807 AS money) AS "
    "IMPORTO, CAST(1 AS bit) AS ATTIVO, CAST('lungo' AS text) AS NOTE";

TEST_F(ExportCommandTest, MakesColumnsIntoWhichEveryValueFits) {
    EXPECT_EQ(kaputil(words(kWide)).exitCode, 1);
    const Outcome run = kaputil(words(kWide, {"--fit"}));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(content(),
              "-2147483648"
              "12345678901         "
              "-1234567890,1234     "
              "Niccol\x95"
              "31/03/2025 10:30:59    "
              "-922337203685477,5807"
              "1"
              "lungo\r\n");
    // Fewer columns leave nothing of those before.
    EXPECT_EQ(kaputil(words("SELECT 10000 AS A", {"--fit"})).exitCode, 0);
    EXPECT_EQ(content(), "      10000\r\n");
}

TEST_F(ExportCommandTest, WritesCommaSeparatedValues) {
    const Outcome run =
        kaputil(words("SELECT 10000 AS A, N'a,b' AS B UNION ALL SELECT 2, NULL", {"--csv"}));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "2 rows written to EXPORT.TXT\n");
    EXPECT_EQ(content(), "A,B\r\n10000,\"a,b\"\r\n2,\r\n");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "scambio/SCHEMA.INI"));
    EXPECT_EQ(kaputil(words("SELECT 1 AS A UNION ALL SELECT 1/0", {"--csv"})).exitCode, 1);
    EXPECT_EQ(content(), "A,B\r\n10000,\"a,b\"\r\n2,\r\n");
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "scambio")) {
        EXPECT_NE(entry.path().extension(), ".part");
    }
}

TEST_F(ExportCommandTest, TellsTheFieldThatCannotBeDescribed) {
    const Outcome run = kaputil(words("SELECT CAST(1 AS bit) AS ATTIVO"));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("Nel campo ATTIVO"), std::string::npos) << run.err;
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
