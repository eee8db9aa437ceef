#include <gtest/gtest.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

class ImportCommandTest : public testing::Test {
protected:
    ImportCommandTest() {
        sql("CREATE TABLE Articoli (Codice int NOT NULL PRIMARY KEY, Nome varchar(10) NULL, "
            "Prezzo decimal(10,2) NULL, Peso float NULL, Data datetime NULL, Attivo bit NULL, "
            "Note varchar(20) NOT NULL DEFAULT 'n')");
    }

    Outcome sql(const std::string& script) const {
        return kaputil({"sql", "--connection", file_, "--json", "--command", script});
    }
    [[nodiscard]] nlohmann::json rowsOf(const std::string& query) const {
        return nlohmann::json::parse(sql(query).out).at("rows");
    }
    Outcome import(const std::string& content, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {"import",   "--connection",
                                          file_,      "--table",
                                          "Articoli", folder_.file("in.csv", content)};
        words.insert(words.end(), more.begin(), more.end());
        return kaputil(words);
    }
    // What is in the table, row by row, with '|' between the values.
    [[nodiscard]] std::string rows() const {
        std::string all;
        for (const auto& row :
             rowsOf("SELECT CONVERT(varchar(10), Codice) + '|' + ISNULL(Nome, 'NULL') + '|' + "
                    "ISNULL(CONVERT(varchar(20), Prezzo), 'NULL') + '|' + "
                    "ISNULL(CONVERT(varchar(20), Data, 120), 'NULL') + '|' + Note AS Riga "
                    "FROM Articoli ORDER BY Codice")) {
            all += row.at("Riga").get<std::string>() + "\n";
        }
        return all;
    }
    void expectRows(const Outcome& run, const std::string& expected) const {
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(rows(), expected);
    }

    Folder folder_;
    std::string file_ = folder_ / "a.db";
};

TEST_F(ImportCommandTest, BringsTheRowsOfAFileIntoTheColumnsThatItsFirstLineNames) {
    const Outcome run = import(
        "nome,CODICE,Prezzo,Data,Note\r\n"
        "Vite,1,0.5,2025-03-31 10:30,x\r\n"
        "\"Dado, \"\"M8\"\"\",2,-12.25,20250401,\"due\"\r\n");
    expectRows(run,
               "1|Vite|0.50|2025-03-31 10:30:00|x\n"
               "2|Dado, \"M8\"|-12.25|2025-04-01 00:00:00|due\n");
    EXPECT_EQ(run.out, "2 rows imported into Articoli\n");
}

TEST_F(ImportCommandTest, FindsTheDelimiter) {
    for (const char* delimiter : {";", "\t", "|"}) {
        const std::string d = delimiter;
        expectRows(import("Codice" + d + "Nome" + d + "Note\n1" + d + "a,b" + d + "x\n"),
                   "1|a,b|NULL|NULL|x\n");
        sql("DELETE FROM Articoli");
    }
    expectRows(import("Codice:Nome:Note\n1:a,b;c:x\n", {"--delimiter", ":"}),
               "1|a,b;c|NULL|NULL|x\n");
}

TEST_F(ImportCommandTest, ReadsNumbersAndDatesOfACountry) {
    expectRows(import("Codice;Prezzo;Data;Note\n1.234;1.234,5;31/03/2025 8:05;x\n2;-7;1-4-99;y\n",
                      {"--locale", "it-IT"}),
               "2|NULL|-7.00|1999-04-01 00:00:00|y\n"
               "1234|NULL|1234.50|2025-03-31 08:05:00|x\n");
    sql("DELETE FROM Articoli");
    expectRows(
        import("Codice,Prezzo,Data,Note\n1,\"1,234.5\",3/31/2025,x\n", {"--locale", "en-US"}),
        "1|NULL|1234.50|2025-03-31 00:00:00|x\n");
}

TEST_F(ImportCommandTest, FindsTheEncoding) {
    const std::string header = "Codice,Nome,Note\n";
    const std::string expected = "1|citt\xC3\xA0|NULL|NULL|x\n";
    expectRows(import(header + "1,citt\xC3\xA0,x\n"), expected);
    sql("DELETE FROM Articoli");
    expectRows(import("\xEF\xBB\xBF" + header + "1,citt\xC3\xA0,x\n"), expected);
    sql("DELETE FROM Articoli");
    expectRows(import(header + "1,citt\xE0,x\n"), expected);
    sql("DELETE FROM Articoli");
    expectRows(import(header + "1,citt\x85,x\n", {"--encoding", "850"}), expected);
    sql("DELETE FROM Articoli");
    std::string wide = "\xFF\xFE";
    for (const char unit : header + "1,citt") {
        wide += std::string(1, unit) + '\0';
    }
    expectRows(import(wide + std::string("\xE0\0,\0x\0\n\0", 8)), expected);
}

TEST_F(ImportCommandTest, RefusesBytesThatTheEncodingDoesNotHave) {
    const Outcome run = import("Codice,Note\n1,citt\xE0\n", {"--encoding", "utf-8"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(contains(run.err, "in.csv, line 2: not UTF-8")) << run.err;
}

TEST_F(ImportCommandTest, TakesNothingForNullAndTwoQuotesForAnEmptyText) {
    expectRows(import("Codice,Nome,Prezzo,Note\n1,,,\n2,\"\",,x\n"),
               "1|NULL|NULL|NULL|\n2||NULL|NULL|x\n");
    sql("DELETE FROM Articoli");
    expectRows(import("Codice,Nome,Note\n1,NULL,x\n2,\"NULL\",y\n3,,z\n", {"--null", "NULL"}),
               "1|NULL|NULL|NULL|x\n2|NULL|NULL|NULL|y\n3||NULL|NULL|z\n");
    EXPECT_EQ(rowsOf("SELECT COUNT(*) AS N FROM Articoli WHERE Nome IS NULL").at(0).at("N"), 1);
}

TEST_F(ImportCommandTest, TakesColumnsByTheirOrder) {
    expectRows(import("7,Vite,1,2.5,20250101,1,x\n", {"--no-header"}),
               "7|Vite|1.00|2025-01-01 00:00:00|x\n");
    expectRows(import("quanto,che cosa,n\n1,Dado,x\n", {"--columns", "Codice, Nome,Note"}),
               "1|Dado|NULL|NULL|x\n7|Vite|1.00|2025-01-01 00:00:00|x\n");
}

TEST_F(ImportCommandTest, KeepsLinesWithinQuotes) {
    const Outcome run = import("Codice,Nome,Note\n1,\"a\nb\",x\n2,c,d,e\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "row 2 (line 4): has 4 values where 3 are expected\nNothing was imported.\n");
}

TEST_F(ImportCommandTest, TellsEveryErrorWithItsRowAndColumnAndWritesNothing) {
    const Outcome run = import(
        "Codice,Nome,Prezzo,Data,Attivo,Note\n"
        "1,Vite,0.5,20250331,1,x\n"
        "due,Dado,1,2,20250230,1,x\n"
        "3,Dado,1.2.3,31/12/2025,forse,x\n"
        "4,\"Dado\"x,1,20250101,1,x\n"
        "5,Un nome troppo lungo,1,20250101,1,x\n"
        "1,Doppio,1,20250101,1,x\n"
        "7,Dado,12345678901.5,20250101,1,x\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    const std::string expected =
        "row 2 (line 3): has 7 values where 6 are expected\n"
        "row 3 (line 4), column Prezzo: \"1.2.3\" is no number\n"
        "row 3 (line 4), column Data: \"31/12/2025\" is no date\n"
        "row 3 (line 4), column Attivo: \"forse\" is neither yes (1) nor no (0)\n"
        "row 4 (line 5), column Nome: \"Dado\" has a quote that does not end it\n"
        "row 5 (line 6), column Nome: String or binary data would be truncated";
    EXPECT_TRUE(run.err.starts_with(expected)) << run.err;
    EXPECT_TRUE(contains(run.err, "row 6 (line 7): Violation of PRIMARY KEY constraint"))
        << run.err;
    EXPECT_TRUE(contains(run.err, "row 7 (line 8), column Prezzo: Arithmetic overflow")) << run.err;
    EXPECT_TRUE(contains(run.err, "\nNothing was imported.\n")) << run.err;
    EXPECT_EQ(rows(), "");
}

TEST_F(ImportCommandTest, StopsTellingAtTheLimit) {
    std::string content = "Codice,Note\n";
    for (int i = 0; i < 10; ++i) {
        content += "x,y\n";
    }
    const Outcome run = import(content, {"--max-errors", "2"});
    EXPECT_EQ(run.err,
              "row 1 (line 2), column Codice: \"x\" is no number\n"
              "row 2 (line 3), column Codice: \"x\" is no number\n"
              "That is as many errors as are told. Nothing was imported.\n");
}

TEST_F(ImportCommandTest, TellsErrorsAsJson) {
    const Outcome run = import("Codice,Note\nx,y\n", {"--json"});
    EXPECT_EQ(nlohmann::json::parse(run.err),
              nlohmann::json::parse(R"({"error":{"row":1,"line":2,"column":"Codice",
                                    "description":"\"x\" is no number"}})"));
    EXPECT_EQ(import("Codice,Note\n1,y\n", {"--json"}).out,
              "{\"table\":\"Articoli\",\"rows\":1,\"kept\":true}\n");
}

TEST_F(ImportCommandTest, ChecksWithoutKeeping) {
    const Outcome run = import("Codice,Note\n1,y\n", {"--dry-run"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "1 row could be imported into Articoli\n");
    EXPECT_EQ(rows(), "");
}

TEST_F(ImportCommandTest, ReadsStandardInput) {
    const Outcome run =
        kaputil({"import", "--connection", file_, "--table", "Articoli"}, "Codice,Note\n1,y\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(rows(), "1|NULL|NULL|NULL|y\n");
}

TEST_F(ImportCommandTest, RunsTriggersAndNumbersRows) {
    sql("CREATE TABLE Righe (N int IDENTITY(10,1), Testo varchar(10))");
    sql("CREATE TRIGGER t ON Righe AFTER INSERT AS UPDATE Righe SET Testo = Testo + '!'");
    const Outcome run =
        kaputil({"import", "--connection", file_, "--table", "Righe"}, "Testo\na\nb\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const Outcome read = sql("SELECT CONVERT(varchar(9), N) + Testo AS R FROM Righe ORDER BY N");
    EXPECT_TRUE(contains(read.out, "10a!")) << read.out;
    EXPECT_TRUE(contains(read.out, "11b!")) << read.out;
}

TEST_F(ImportCommandTest, SaysWhatIsWrongWithItsArguments) {
    const auto fault = [&](const Outcome& run) {
        EXPECT_EQ(run.exitCode, 2);
        return run.err;
    };
    EXPECT_TRUE(contains(fault(import("Codicce,Note\n1,x\n")), "did you mean Codice?"));
    EXPECT_TRUE(contains(fault(import("Codice,codice\n1,x\n")), "named twice"));
    EXPECT_TRUE(contains(fault(import("")), "the file is empty"));
    EXPECT_TRUE(contains(fault(import("Codice\n1\n", {"--locale", "xx-YY"})), "xx-YY"));
    EXPECT_TRUE(contains(fault(import("Codice\n1\n", {"--delimiter", "ab"})), "one character"));
    EXPECT_TRUE(contains(fault(import("Codice\n1\n", {"--encoding", "latin"})), "--encoding"));
    const Outcome missing =
        kaputil({"import", "--connection", file_, "--table", "Manca"}, "A\n1\n");
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(contains(missing.err, "Invalid object name 'Manca'")) << missing.err;
    EXPECT_TRUE(contains(fault(kaputil({"import", "--connection", file_, "--table", "Articoli",
                                        folder_ / "manca.csv"})),
                         "manca.csv"));
}

}  // namespace
}  // namespace kap::tests
