#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

constexpr const char* kPrices =
    "CREATE TABLE Prezzi (Codice int NOT NULL PRIMARY KEY, Nome varchar(20) NULL, Prezzo money) "
    "INSERT INTO Prezzi (Codice, Nome, Prezzo) VALUES (7, 'Vite', 0.125), (120, NULL, 12.5)";

Outcome sqlOn(const std::string& file, const std::string& script,
              const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"sql", "--connection", connectionTo(file), "--command",
                                          script};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return kaputil(arguments);
}

Outcome sqlInMemory(const std::string& script, const std::vector<std::string>& more = {}) {
    return sqlOn(":memory:", script, more);
}

std::vector<nlohmann::json> jsonLinesOf(const std::string& text) {
    std::vector<nlohmann::json> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start);
        lines.push_back(nlohmann::json::parse(text.substr(start, end - start)));
        start = end + 1;
    }
    return lines;
}

TEST(SqlCommand, PrintsRowsAsATableWithNumbersAtTheRight) {
    const Outcome run = sqlInMemory(std::string(kPrices) + " SELECT * FROM Prezzi ORDER BY Codice");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "(2 rows affected)\n"
              "\n"
              "Codice  Nome   Prezzo\n"
              "------  ----  -------\n"
              "     7  Vite   0.1250\n"
              "   120  NULL  12.5000\n"
              "(2 rows)\n");
}

TEST(SqlCommand, PrintsWhatTheScriptPrintsBesideTheResults) {
    const Outcome run = sqlInMemory("PRINT 'ciao' SELECT 1 AS a RAISERROR ('nota', 10, 1)");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "a\n-\n1\n(1 row)\n");
    EXPECT_EQ(run.err, "ciao\nnota\n");
}

TEST(SqlCommand, PrintsRowsAsCommaSeparatedValues) {
    const Outcome run = sqlInMemory(
        "CREATE TABLE V (A int, B varchar(30), C money, D decimal(10,3), E float, F datetime, "
        "G bit, H varbinary(4), I date, J bigint, L real) "
        "INSERT INTO V VALUES (-7, 'Rossi, \"Mario\"', -0.125, -1.5, 0.1, '20250331 10:30:00', 1, "
        "0x0A1B, '20250331', 9007199254740993, 0.5), "
        "(NULL, '', NULL, 0.001, 1e300, NULL, 0, NULL, NULL, -5, NULL) "
        "SELECT * FROM V SELECT 1 AS [a,b]",
        {"--csv"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "A,B,C,D,E,F,G,H,I,J,L\r\n"
              "-7,\"Rossi, \"\"Mario\"\"\",-0.1250,-1.500,0.1,2025-03-31 10:30:00,1,0x0A1B,"
              "2025-03-31,9007199254740993,0.5\r\n"
              ",\"\",,0.001,1e+300,,0,,,-5,\r\n"
              "\n"
              "\"a,b\"\r\n"
              "1\r\n");
}

TEST(SqlCommand, PrintsEveryDigitOfLongDecimalsAndTimes) {
    const Outcome run = sqlInMemory(
        "SELECT CAST(99999999999999999999999999999999999999 AS decimal(38,0)) AS a, "
        "CAST(-0.5 AS decimal(38,20)) AS b, "
        "CAST('2021-02-03 04:05:06.1234567 +02:00' AS datetimeoffset) AS c",
        {"--csv"});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "a,b,c\r\n99999999999999999999999999999999999999,-0.50000000000000000000,"
              "2021-02-03 04:05:06.1234567 +02:00\r\n");
}

TEST(SqlCommand, RowsArePrintedAsTheyCome) {
    const Folder folder;
    const std::string file = folder / "grande.db";
    ASSERT_EQ(sqlOn(file,
                    "CREATE TABLE T (N int PRIMARY KEY) "
                    "; WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 20000) "
                    "INSERT INTO T SELECT n FROM c OPTION (MAXRECURSION 0)")
                  .exitCode,
              0);
    const Outcome all = sqlOn(file, "SELECT N FROM T ORDER BY N", {"--csv"});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_TRUE(all.out.ends_with("\r\n19999\r\n20000\r\n"));
    // An endless query of which nobody reads more.
    const Outcome some = shell("$KAPUTIL sql --connection '" + connectionTo(file) +
                               "' --csv --command \"SELECT A.N FROM T AS A CROSS JOIN T AS B CROSS "
                               "JOIN T AS C CROSS JOIN T AS D\" | head -3");
    EXPECT_EQ(some.out, "N\r\n1\r\n1\r\n");
}

TEST(SqlCommand, TellsWhatFailsBehindTheFirstRows) {
    const Folder folder;
    const std::string file = folder / "grande.db";
    ASSERT_EQ(sqlOn(file,
                    "CREATE TABLE T (N int PRIMARY KEY) "
                    "; WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 5000) "
                    "INSERT INTO T SELECT n FROM c OPTION (MAXRECURSION 0)")
                  .exitCode,
              0);
    const std::string query = "SELECT N, 1 / (4000 - N) AS D FROM T ORDER BY N";
    const Outcome csv = sqlOn(file, query, {"--csv"});
    EXPECT_EQ(csv.exitCode, 1);
    EXPECT_TRUE(csv.out.starts_with("N,D\r\n1,0\r\n"));
    EXPECT_TRUE(contains(csv.err, "8134")) << csv.err;
    const Outcome broken = sqlOn(file, query, {"--json"});
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_EQ(jsonLinesOf(broken.out).front()["complete"], false);
    EXPECT_GT(jsonLinesOf(broken.out).front()["rows"].size(), 100U);
}

TEST(SqlCommand, PrintsMessagesAsJson) {
    const Outcome run = sqlInMemory("PRINT 'ciao'", {"--json"});
    EXPECT_EQ(run.err, "{\"message\":\"ciao\"}\n");
}

TEST(SqlCommand, TellsEveryErrorOfABatch) {
    const Outcome run = sqlInMemory("SELECT 1/0\nRAISERROR ('ancora', 16, 1)");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "error 8134, line 1: Divide by zero error encountered.\n"
              "error 50000, line 2: ancora\n");
}

TEST(SqlCommand, GoesOnBehindAFailedBatchWhenToldSo) {
    const std::string script = "SELECT 1/0\nGO\nSELECT 2 AS b";
    EXPECT_EQ(sqlInMemory(script).out.find('b'), std::string::npos);
    const Outcome run = sqlInMemory(script, {"--keep-going"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("b\n-\n2\n"), std::string::npos) << run.out;
}

TEST(SqlCommand, ExplainsAPlanAndWritesNothing) {
    const Folder folder;
    const std::string file = folder / "a.db";
    sqlOn(file, kPrices);
    const Outcome run = sqlOn(file, "DELETE FROM Prezzi WHERE Codice = 7", {"--plan"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("SEARCH Prezzi USING INDEX"), std::string::npos) << run.out;
    EXPECT_NE(sqlOn(file, "SELECT count(*) AS n FROM Prezzi").out.find("2\n"), std::string::npos);
}

TEST(SqlCommand, CopiesADatabaseThatIsInUse) {
    const Folder folder;
    const std::string file = folder / "a.db";
    const std::string copy = folder / "copy.db";
    sqlOn(file, kPrices);
    const Outcome run = kaputil({"sql", "--connection", connectionTo(file), "--backup", copy});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(sqlOn(copy, "SELECT count(*) AS n FROM Prezzi").out.find("2\n"), std::string::npos);
    const Outcome again = kaputil({"sql", "--connection", connectionTo(file), "--backup", copy});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.err.find("the file is there already"), std::string::npos) << again.err;
}

TEST(SqlCommand, ChecksADatabase) {
    const Folder folder;
    const std::string file = folder / "a.db";
    sqlOn(file, kPrices);
    const Outcome run = kaputil({"sql", "--connection", connectionTo(file), "--check"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err,
              "CHECKDB found 0 allocation errors and 0 consistency errors in database 'a'.\n");
}

TEST(SqlCommand, ReadsScriptsInUtf16) {
    const Folder folder;
    const std::string text("\xFF\xFES\0E\0L\0E\0C\0T\0 \0'\0\xF2\0'\0 \0A\0S\0 \0x\0", 32);
    const std::string script = folder.file("script.sql", text);
    const Outcome run =
        kaputil({"sql", "--connection", connectionTo(":memory:"), "--file", script});
    EXPECT_EQ(run.out, "x\n-\n\xC3\xB2\n(1 row)\n") << run.err;
}

TEST(SqlCommand, SaysOneRowOfOneRow) {
    const Outcome run = sqlInMemory(
        std::string(kPrices) + " DELETE FROM Prezzi WHERE Codice = 7 SELECT Codice FROM Prezzi");
    EXPECT_EQ(run.out,
              "(2 rows affected)\n"
              "\n"
              "(1 row affected)\n"
              "\n"
              "Codice\n"
              "------\n"
              "   120\n"
              "(1 row)\n");
}

TEST(SqlCommand, PrintsTheColumnsOfAnEmptyResult) {
    const Outcome run = sqlInMemory(
        "CREATE TABLE Vuota (Codice int, Nome varchar(20)) SELECT Codice, Nome FROM Vuota");
    EXPECT_EQ(run.out,
              "Codice  Nome\n"
              "------  ----\n"
              "(0 rows)\n");
}

TEST(SqlCommand, PrintsNothingForStatementsThatGiveNothing) {
    const Outcome run = sqlInMemory("CREATE TABLE Vuota (Codice int)");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "");
}

TEST(SqlCommand, AlignsTextsThatHoldAccents) {
    const Outcome run = sqlInMemory(
        "SELECT 'Forlì' AS Localita, 'FC' AS Prov UNION ALL "
        "SELECT 'Cesena', 'FC'");
    EXPECT_EQ(run.out,
              "Localita  Prov\n"
              "--------  ----\n"
              "Forlì     FC\n"
              "Cesena    FC\n"
              "(2 rows)\n");
}

TEST(SqlCommand, ShowsControlCharactersAsPictures) {
    const Outcome run = sqlInMemory("SELECT 'a\nb\x1b[31m' AS Testo");
    EXPECT_EQ(run.out,
              "Testo\n"
              "--------\n"
              "a␊b␛[31m\n"
              "(1 row)\n");
}

TEST(SqlCommand, PrintsDatesBitsBytesAndDecimalsInOneFormEverywhere) {
    const Outcome run = sqlInMemory(
        "CREATE TABLE T (D datetime, B bit, V varbinary(4), N decimal(9, 2), F float) "
        "INSERT INTO T VALUES ('20250331 10:30:00', 1, 0x0A1B, 1234.5, 0.1) SELECT * FROM T");
    EXPECT_EQ(run.out,
              "(1 row affected)\n"
              "\n"
              "D                    B  V             N    F\n"
              "-------------------  -  ------  -------  ---\n"
              "2025-03-31 10:30:00  1  0x0A1B  1234.50  0.1\n"
              "(1 row)\n");
}

TEST(SqlCommand, PrintsTheSameInEveryLanguage) {
    const std::string script = "SELECT CAST(1234.5 AS money) AS Prezzo";
    const std::vector<std::string> arguments = {"sql", "--connection", connectionTo(":memory:"),
                                                "--command", script};
    const Outcome italian = kaputil(arguments, {}, {"KAPUTIL_LOCALE=it-IT"});
    const Outcome american = kaputil(arguments, {}, {"KAPUTIL_LOCALE=en-US"});
    EXPECT_EQ(italian.out, american.out);
    EXPECT_EQ(italian.exitCode, 0);
}

TEST(SqlCommand, KeepsTheDataInTheFile) {
    const Folder folder;
    EXPECT_EQ(sqlOn(folder / "a.db", kPrices).exitCode, 0);
    EXPECT_EQ(sqlOn(folder / "a.db", "SELECT Nome FROM Prezzi WHERE Codice = 7").out,
              "Nome\n"
              "----\n"
              "Vite\n"
              "(1 row)\n");
}

TEST(SqlCommand, RunsAFileBatchByBatch) {
    const Folder folder;
    const std::string script = folder.file("s.sql",
                                           "CREATE TABLE T (A int)\n"
                                           "GO\n"
                                           "INSERT INTO T (A) VALUES (1)\n"
                                           "go 3\n"
                                           "SELECT COUNT(*) AS Quanti FROM T\n");
    const Outcome run =
        kaputil({"sql", "--connection", connectionTo(":memory:"), "--file", script});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out,
              "(1 row affected)\n\n(1 row affected)\n\n(1 row affected)\n\n"
              "Quanti\n"
              "------\n"
              "     3\n"
              "(1 row)\n");
}

TEST(SqlCommand, ReadsTheScriptFromStandardInput) {
    const Outcome run =
        kaputil({"sql", "--connection", connectionTo(":memory:")}, "SELECT 1 AS Uno\nGO\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "Uno\n---\n  1\n(1 row)\n");
}

TEST(SqlCommand, AcceptsAByteOrderMarkAndCarriageReturns) {
    const Folder folder;
    const std::string script =
        folder.file("s.sql", "\xEF\xBB\xBFSELECT 1 AS Uno\r\nGO\r\nSELECT 2 AS Due\r\n");
    const Outcome run =
        kaputil({"sql", "--connection", connectionTo(":memory:"), "--file", script});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "Uno\n---\n  1\n(1 row)\n\nDue\n---\n  2\n(1 row)\n");
}

TEST(SqlCommand, PrintsAJsonObjectForEveryResult) {
    const Outcome run = sqlInMemory(
        std::string(kPrices) + " SELECT Codice, Nome, Prezzo FROM Prezzi ORDER BY Codice",
        {"--json"});
    EXPECT_EQ(run.exitCode, 0);
    const auto results = jsonLinesOf(run.out);
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0], nlohmann::json::parse(R"({"columns":[],"rows":[],"rowsAffected":2})"));
    EXPECT_EQ(results[1]["columns"],
              nlohmann::json::parse(R"([{"name":"Codice","type":"int","size":4},
                                        {"name":"Nome","type":"varchar","size":20},
                                        {"name":"Prezzo","type":"money","size":8}])"));
    EXPECT_EQ(results[1]["rows"],
              nlohmann::json::parse(R"([{"Codice":7,"Nome":"Vite","Prezzo":"0.1250"},
                                       {"Codice":120,"Nome":null,"Prezzo":"12.5000"}])"));
    EXPECT_EQ(results[1]["rowsAffected"], nullptr);
}

TEST(SqlCommand, GivesAColumnOneTypeInJson) {
    const Outcome run = sqlInMemory(
        "CREATE TABLE T (N decimal(28, 4), B bigint, S smallint, F float, Q bit) "
        "INSERT INTO T VALUES (123456789012345.6789, 9007199254740993, 42, 0.5, 0), "
        "(1, 1, 1, 1, 1) SELECT * FROM T",
        {"--json"});
    const auto results = jsonLinesOf(run.out);
    ASSERT_EQ(results.size(), 2U) << run.err;
    EXPECT_EQ(results[1]["rows"], nlohmann::json::parse(R"([
                  {"N":"123456789012345.6789","B":"9007199254740993","S":42,"F":0.5,"Q":false},
                  {"N":"1.0000","B":"1","S":1,"F":1,"Q":true}])"));
}

TEST(SqlCommand, WritesDatesAndBytesAsTextInJson) {
    const Outcome run = sqlInMemory(
        "CREATE TABLE T (D datetime, V varbinary(4)) "
        "INSERT INTO T VALUES ('20250331', 0xFF) SELECT * FROM T",
        {"--json"});
    const auto results = jsonLinesOf(run.out);
    ASSERT_EQ(results.size(), 2U) << run.err;
    EXPECT_EQ(results[1]["rows"],
              nlohmann::json::parse(R"([{"D":"2025-03-31 00:00:00","V":"0xFF"}])"));
}

TEST(SqlCommand, GivesEachColumnANameOfItsOwnInJson) {
    const Outcome run = sqlInMemory("SELECT 1 AS a, 2 AS a, 3, 4 AS a_2", {"--json"});
    EXPECT_EQ(jsonLinesOf(run.out).at(0)["rows"],
              nlohmann::json::parse(R"([{"a":1,"a_2":2,"column3":3,"a_2_2":4}])"));
}

constexpr const char* kOddRows =
    "SELECT 1 AS N, 'a|b' AS Testo UNION ALL SELECT NULL, 'c' + CHAR(9) + CHAR(10) + '\\<' "
    "SELECT CAST(2.5 AS money) AS Importo";

TEST(SqlCommand, PrintsAnObjectForEachRow) {
    EXPECT_EQ(sqlInMemory(kOddRows, {"--json-lines"}).out,
              "{\"N\":1,\"Testo\":\"a|b\"}\n"
              "{\"N\":null,\"Testo\":\"c\\t\\n\\\\<\"}\n"
              "{\"Importo\":\"2.5000\"}\n");
}

TEST(SqlCommand, PrintsTabsBetweenValues) {
    EXPECT_EQ(sqlInMemory(kOddRows, {"--tsv"}).out,
              "N\tTesto\n1\ta|b\n\tc\\t\\n\\\\<\n\nImporto\n2.5000\n");
}

TEST(SqlCommand, PrintsTablesAsMarkdownHasThem) {
    EXPECT_EQ(sqlInMemory(kOddRows, {"--markdown"}).out,
              "| N | Testo |\n| ---: | --- |\n| 1 | a\\|b |\n|  | c\xE2\x90\x89<br>\\\\&lt; |\n"
              "\n| Importo |\n| ---: |\n| 2.5000 |\n");
}

TEST(SqlCommand, PrintsOnePageForBrowsers) {
    const std::string page = sqlInMemory(kOddRows, {"--html", "--language", "en"}).out;
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">")) << page;
    EXPECT_TRUE(page.ends_with("</body>\n</html>\n")) << page;
    EXPECT_TRUE(contains(page, "<tr><td class=\"n\">1</td><td>a|b</td></tr>\n")) << page;
    EXPECT_TRUE(contains(page, "<td class=\"soft\">NULL</td>")) << page;
    EXPECT_TRUE(contains(page, "\\&lt;</td>")) << page;
    EXPECT_TRUE(contains(page, ">2 rows</p>")) << page;
    EXPECT_FALSE(contains(page, "http")) << page;
    EXPECT_TRUE(sqlInMemory("PRINT 'x'", {"--html"}).out.ends_with("</html>\n"));
}

// A wide character takes two columns of a terminal, a mark that combines with another one none.
TEST(SqlCommand, LaysColumnsOutAsATerminalCountsThem) {
    EXPECT_EQ(sqlInMemory("SELECT N'\xE6\xBC\xA2\xE5\xAD\x97' AS a, 1 AS b UNION ALL "
                          "SELECT N'e\xCC\x81', 2")
                  .out,
              "a     b\n----  -\n\xE6\xBC\xA2\xE5\xAD\x97  1\ne\xCC\x81     2\n(2 rows)\n");
}

// What editors on Windows save without a mark.
TEST(SqlCommand, ReadsScriptsOfCodePages) {
    const Folder folder;
    const auto answer = [&](const std::string& script, const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"sql",
                                          "--connection",
                                          connectionTo(":memory:"),
                                          "--file",
                                          folder.file("s.sql", script),
                                          "--csv"};
        words.insert(words.end(), more.begin(), more.end());
        return kaputil(words).out;
    };
    EXPECT_EQ(answer("SELECT N'citt\xE0' AS a\n"), "a\r\ncitt\xC3\xA0\r\n");
    EXPECT_EQ(answer("SELECT N'citt\x85' AS a\n", {"--encoding", "850"}), "a\r\ncitt\xC3\xA0\r\n");
}

TEST(SqlCommand, PutsVariablesIntoScripts) {
    const Folder folder;
    const std::string other = folder.file("altro.sql", "SELECT '$(NOME)' AS Altro\nGO\n");
    const std::string script =
        folder.file("s.sql",
                    ":setvar Tabella Clienti\r\n:setvar testo \"due parole\"\n"
                    "CREATE TABLE $(TABELLA) (A varchar(20))\nGO\n"
                    ":on error exit\n"
                    "INSERT INTO $(tabella) VALUES ('$(Testo)'), ('$(ignoto) $(')\nGO\n"
                    "SELECT '\n:setvar testo x\n' AS Due, A FROM Clienti\nGO\n"
                    ":r \"" +
                        other + "\"\nSELECT 1/0\n");
    const Outcome run = kaputil({"sql", "--connection", connectionTo(":memory:"), "--file", script,
                                 "--tsv", "--variable", "nome=Rossi"});
    EXPECT_EQ(run.out,
              "Due\tA\n\\n:setvar testo x\\n\tdue parole\n"
              "\\n:setvar testo x\\n\t$(ignoto) $(\n\nAltro\nRossi\n");
    EXPECT_TRUE(contains(run.err, "error 8134")) << run.err;
    EXPECT_EQ(
        kaputil({"sql", "--connection", ":memory:", "--command", "SELECT 1", "--variable", "senza"})
            .err,
        "kaputil: a variable is given as NAME=VALUE\n");
}

TEST(SqlCommand, TellsErrorsAsJsonBesideRowsInJson) {
    const Outcome run = sqlInMemory("SELECT 1 AS a SELECT 1/0 AS b", {"--json-lines"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.out.starts_with("{\"a\":1}\n")) << run.out;
    EXPECT_EQ(nlohmann::json::parse(run.err).at("error").at("native"), 8134) << run.err;
}

TEST(SqlCommand, TakesOneFormOfItsAnswers) {
    EXPECT_EQ(sqlInMemory("SELECT 1", {"--json", "--tsv"}).exitCode, 2);
}

}  // namespace
}  // namespace kap::tests
