#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "cli/command_line.hpp"
#include "cli/terminal_session.hpp"
#include "support/text_files.hpp"

// The shell as a person in front of a terminal finds it.
namespace kap::tests {
namespace {

class ShellTest : public testing::Test {
protected:
    ShellTest() {
        kaputil({"sql", "--connection", file_, "--command",
                 "CREATE TABLE Clienti (Codice int NOT NULL PRIMARY KEY, Nome varchar(20)) "
                 "INSERT INTO Clienti VALUES (1, 'Rossi'), (2, 'Bianchi')"});
    }
    [[nodiscard]] std::vector<std::string> variables() const {
        return {"KAPUTIL_HOME=" + folder_.path()};
    }

    Folder folder_;
    std::string file_ = folder_ / "azienda.db";
};

TEST_F(ShellTest, RunsAStatementThatEndsWithASemicolon) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("SELECT Nome FROM Clienti\n");
    shell.waitFor(".......> ");
    shell.type("ORDER BY Codice;\n");
    shell.waitFor("Nome\n-------\nRossi\nBianchi\n(2 rows)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, EndsAProgramWithGoAlone) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("CREATE PROCEDURE p AS\nSELECT 'uno; due' AS A;\nGO\n");
    shell.waitFor("azienda> ");
    shell.type("EXEC p;\n");
    shell.waitFor("uno; due\n(1 row)\n");
    shell.type("BEGIN\nPRINT 'a';\nPRINT 'b';\nEND;\n");
    shell.waitFor("a\nb\n");
    shell.type("SELECT 'x;\n");
    shell.type("y' AS T;\n");
    shell.waitFor("(1 row)\n");
    shell.type("exit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ShowsAnOpenTransactionInThePrompt) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("BEGIN TRAN;\n");
    shell.waitFor("azienda*> ");
    shell.type("DELETE FROM Clienti;\n");
    shell.waitFor("(2 rows affected)\n");
    shell.waitFor("azienda*> ");
    shell.type("ROLLBACK;\n");
    shell.waitFor("azienda> ");
    shell.type("\x04");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, CancelsAStatementAndKeepsTheSession) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("CREATE TABLE #t (A int); INSERT INTO #t VALUES (42);\n");
    shell.waitFor("azienda> ");
    for (const char* endless :
         {"DECLARE @n int SET @n = 0 WHILE 1 = 1 SET @n = @n % 7 + 1;",
          "WITH r AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM r WHERE n < 2000000000) "
          "SELECT MAX(n) FROM r OPTION (MAXRECURSION 0);",
          "WAITFOR DELAY '00:30:00';"}) {
        const std::string statement = endless;
        shell.type(statement + "\n");
        shell.waitFor(statement.substr(statement.size() - 8) + "\n");
        // Until the statement runs the key is the line editor's, and does nothing.
        std::string seen;
        for (int i = 0; i < 200 && !contains(seen, "Cancelled."); ++i) {
            shell.type("\x03");
            seen += shell.seenWithin(100);
        }
        EXPECT_TRUE(contains(seen, "Cancelled.")) << endless << seen;
    }
    shell.type("SELECT A AS Ancora FROM #t;\n");
    shell.waitFor("42\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, GivesUpALineThatIsTyped) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("SELECT 1 AS\n");
    shell.waitFor(".......> ");
    shell.type("qualcosa\x03");
    shell.waitFor("^C");
    shell.waitFor("azienda> ");
    shell.type("SELECT 2 AS B;\n");
    shell.waitFor("2\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, CompletesWordsTablesAndColumns) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("SEL\tNom\tFROM Cl\tWHERE Codice = 2;\n");
    shell.waitFor("Bianchi\n(1 row)\n");
    shell.type(":tab\t\n");
    shell.waitFor("Clienti");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, RemembersTheStatementsOfBefore) {
    {
        TerminalSession shell({"sql", file_}, variables());
        shell.waitFor("azienda> ");
        shell.type("SELECT 40\n + 2 AS Risposta;\n");
        shell.waitFor("42\n(1 row)\n");
        shell.type(":quit\n");
        EXPECT_EQ(shell.exitCode(), 0);
    }
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("\x1b[A\x1b[A\n");
    shell.waitFor("42\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
    EXPECT_EQ(std::filesystem::status(folder_ / "history").permissions(),
              std::filesystem::perms(0600));
}

TEST_F(ShellTest, DescribesWhatIsThere) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type(":tables\n");
    shell.waitFor("Clienti");
    shell.waitFor("azienda> ");
    shell.type(":describe clienti\n");
    shell.waitFor("Nome");
    shell.waitFor("azienda> ");
    shell.type(":indexes\n");
    shell.waitFor("primary key (Codice)");
    shell.type("CREATE PROC conta AS SELECT 1\nGO\n:procs\n");
    shell.waitFor("conta  PROCEDURE");
    shell.type(":descrive X\n");
    shell.waitFor("did you mean :describe?");
    shell.type(":describe Client\n");
    shell.waitFor("did you mean Clienti?");
    shell.type(":help\n");
    shell.waitFor("le tabelle e le viste");
    shell.waitFor("esce, come Ctrl-D");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ShowsRowsInOtherForms) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type(":mode vertical\nSELECT * FROM Clienti WHERE Codice = 1;\n");
    shell.waitFor("-- row 1\nCodice  1\nNome    Rossi\n(1 row)\n");
    shell.type(":mode csv\nSELECT * FROM Clienti WHERE Codice = 1;\n");
    shell.waitFor("Codice,Nome\n1,Rossi\n");
    shell.type(":mode table\n:timing on\nSELECT 1 AS A;\n");
    shell.waitFor("Time: ");
    shell.type(":timing off\n:plan on\nSELECT * FROM Clienti;\n");
    shell.waitFor("SCAN Clienti");
    shell.type(":plan off\nSELECT COUNT(*) AS N FROM Clienti;\n");
    shell.waitFor("2\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, BringsRowsInAndOut) {
    (void)folder_.file("nuovi.csv", "Codice;Nome\n3;Verdi\n");
    (void)folder_.file("s.sql", "SELECT 'dal file' AS F\n");
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type(":import Clienti " + folder_ / "nuovi.csv" + "\n");
    shell.waitFor("1 row imported into Clienti");
    shell.type(":export " + folder_ / "tutti.tsv" + " SELECT Nome FROM Clienti ORDER BY 1\n");
    shell.waitFor("The rows are in");
    EXPECT_EQ(test::contentOf(folder_ / "tutti.tsv"), "Nome\nBianchi\nRossi\nVerdi\n");
    shell.type(":r " + folder_ / "s.sql" + "\n");
    shell.waitFor("dal file\n(1 row)\n");
    shell.type(":r " + folder_ / "manca.sql" + "\n");
    shell.waitFor("No such file");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ShowsLongResultsThroughThePager) {
    std::vector<std::string> settings = variables();
    settings.emplace_back("PAGER=sed 's/^/| /'");
    TerminalSession shell({"sql", file_}, settings, 80, 7);
    shell.waitFor("azienda> ");
    shell.type("SELECT 1 AS A UNION ALL SELECT 2 UNION ALL SELECT 3;\n");
    shell.waitFor("| A\n| -\n| 1\n| 2\n| 3\n| (3 rows)\n");
    shell.type("SELECT 4 AS A;\n");
    shell.waitFor("A\n-\n4\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ShowsRowsThroughThePagerWhileTheyCome) {
    std::vector<std::string> settings = variables();
    settings.emplace_back("PAGER=head -3");
    TerminalSession shell({"sql", file_}, settings, 80, 24);
    shell.waitFor("azienda> ");
    shell.type(":mode csv\n");
    shell.waitFor("azienda> ");
    // More rows than anybody waits for; the pager has enough of them at once.
    shell.type(
        "WITH n AS (SELECT 1 AS a UNION ALL SELECT a + 1 FROM n WHERE a < 2000000000)\n"
        "SELECT a FROM n OPTION (MAXRECURSION 0);\n");
    shell.waitFor("a\n1\n2\n");
    shell.waitFor("azienda> ");
    shell.type(":mode table\nSELECT 5 AS B;\n");
    shell.waitFor("5\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ShowsResultsWhereThePagerIsMissing) {
    std::vector<std::string> settings = variables();
    settings.emplace_back("PAGER=kaputil-manca 2> /dev/null");
    TerminalSession shell({"sql", file_}, settings, 80, 5);
    shell.waitFor("azienda> ");
    shell.type("SELECT 1 AS A UNION ALL SELECT 2 UNION ALL SELECT 3;\n");
    shell.waitFor("A\n-\n1\n2\n3\n(3 rows)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ColoursWhatIsTyped) {
    std::vector<std::string> settings = variables();
    settings.emplace_back("NO_COLOR=");
    TerminalSession shell({"sql", file_}, settings);
    shell.waitFor("azienda> ");
    shell.type("SELECT 'uno', 2 -- e poi");
    shell.waitFor("\x1b[35mSELECT\x1b[0m \x1b[32m'uno'\x1b[0m, \x1b[36m2\x1b[0m \x1b[2m-- e poi");
    shell.type("\n AS Due;\n");
    shell.waitFor("(1 row)\n");
    // Within a text nothing is a key word.
    shell.type("SELECT 'a\n");
    shell.waitFor(".......> ");
    shell.type("FROM b' AS C");
    shell.waitFor("\x1b[32mFROM b'\x1b[0m \x1b[35mAS\x1b[0m C");
    shell.type(";\n");
    shell.waitFor("(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, PutsVariablesIntoStatements) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type(":setvar tabella Clienti\nSELECT COUNT(*) AS N FROM $(Tabella);\n");
    shell.waitFor("2\n(1 row)\n");
    shell.type(":setvar\n");
    shell.waitFor("TABELLA = Clienti\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(ShellTest, ObeysItsCommandsInTheMiddleOfAStatement) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("SELECT Nome FROM Clienti\n:mode csv\nWHERE Codice = 2;\n");
    shell.waitFor("Nome\nBianchi\n");
    shell.type("SELECT '\n:quit\n' AS T;\n");
    shell.waitFor("T\n\"\n:quit\n\"\n");
    shell.type("SELECT\n:quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

// The same work in front of screens of two widths, for users of two countries.
class ShellScreens : public ShellTest,
                     public testing::WithParamInterface<std::tuple<int, const char*>> {};

TEST_P(ShellScreens, ShowWhatIsTypedAndFound) {
    const auto [columns, locale] = GetParam();
    std::vector<std::string> settings = variables();
    settings.push_back(std::string("KAPUTIL_LOCALE=") + locale);
    settings.emplace_back("LC_ALL=C");  // letters of several bytes do not depend on it
    TerminalSession shell({"sql", file_}, settings, static_cast<unsigned short>(columns), 40);
    shell.waitFor("azienda> ");
    shell.type("SELECT N'citt\xC3\xA0 \xE6\xBC\xA2' AS [Et\xC3\xA0], 1 AS N;\n");
    shell.waitFor("Et\xC3\xA0       N\n--------  -\ncitt\xC3\xA0 \xE6\xBC\xA2  1\n(1 row)\n");
    // Longer than the narrow screen, and corrected in its first word.
    shell.type(
        "SELCT 'una riga che non sta in ottanta colonne ma in duecento' AS Lunga, 12345.5 AS "
        "Numero, 2 AS Due;\x01\x1b[C\x1b[C\x1b[C"
        "E\n");
    shell.waitFor("12345.5    2\n(1 row)\n");
    const std::size_t kept = columns == 80 ? 40 : 100;
    shell.type("SELECT REPLICATE('x', 150) AS T;\n");
    shell.waitFor("\n" + std::string(kept - 1, 'x') + "\xE2\x80\xA6\n(1 row)\n");
    // Values are written alike in every country; a file is read as its country writes.
    shell.type("CREATE TABLE P (Prezzo decimal(9,2));\n");
    shell.waitFor("azienda> ");
    const bool italian = std::string(locale) == "it-IT";
    const std::string file =
        folder_.file("p.csv", italian ? "Prezzo\n\"1.234,5\"\n" : "Prezzo\n\"1,234.5\"\n");
    shell.type(":import P " + file + " " + locale + "\n");
    shell.waitFor("1 row imported into P\n");
    shell.type("SELECT Prezzo FROM P;\n");
    shell.waitFor("1234.50\n(1 row)\n");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

INSTANTIATE_TEST_SUITE_P(WidthsAndCountries, ShellScreens,
                         testing::Combine(testing::Values(80, 200),
                                          testing::Values("it-IT", "en-US")));

TEST_F(ShellTest, AsksBeforeItMakesADatabase) {
    {
        TerminalSession shell({"sql", folder_ / "nuovo.db"}, variables());
        shell.waitFor("Make a new database? [y/N] ");
        shell.type("\n");
        EXPECT_EQ(shell.exitCode(), 3);
        EXPECT_FALSE(std::filesystem::exists(folder_ / "nuovo.db"));
    }
    TerminalSession shell({"sql", folder_ / "nuovo.db"}, variables());
    shell.waitFor("[y/N] ");
    shell.type("y\n");
    shell.waitFor("nuovo> ");
    shell.type("CREATE TABLE T (A int);\n");
    shell.waitFor("nuovo> ");
    shell.type(":tables\n");
    shell.waitFor("T  ");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
    EXPECT_TRUE(std::filesystem::exists(folder_ / "nuovo.db"));
}

TEST_F(ShellTest, TellsErrorsAndGoesOn) {
    TerminalSession shell({"sql", file_}, variables());
    shell.waitFor("azienda> ");
    shell.type("SELECT * FROM Manca;\n");
    shell.waitFor("error 208, line 1: Invalid object name 'Manca'.\n");
    shell.type("SELECT 1/0;\n");
    shell.waitFor("error 8134");
    shell.waitFor("azienda> ");
    shell.type(":quit\n");
    EXPECT_EQ(shell.exitCode(), 0);
}

}  // namespace
}  // namespace kap::tests
