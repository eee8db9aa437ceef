#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;

// A database with a counter of invoices that has gaps, reservations and a document too many, and
// one of delivery notes that is as it should be.
class NumbersCommand : public testing::Test {
protected:
    NumbersCommand() {
        const Outcome made = kaputil(
            {"sql", "--connection", connection(), "--command",
             "CREATE TABLE vtx_TabDoc (Codice varchar(3), TipoProg varchar(5));"
             "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
             "GestProvv int, PRIMARY KEY (Codice, Anno));"
             "CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, "
             "Stato varchar(1));"
             "CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int);"
             "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT'), ('NCR', 'FAT'), ('DDT', 'BOL');"
             "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 12, 0, 0), ('BOL', 2025, 2, 7, 1), "
             "('BOL', 2024, 0, NULL, 1);"
             "INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 7, 'U'), ('FAT', 2025, 14, ''), "
             "('FAT', 2025, 15, 'D'), ('FAT', 2025, 16, 'M');"
             "INSERT INTO mag_TDocumenti VALUES (2025, 'FAI', 2), (2025, 'NCR', 3), "
             "(2025, 'FAI', 5), (2025, 'FAI', 9), (2025, 'FAI', 10), (2025, 'FAI', 13), "
             "(2025, 'DDT', 1), (2025, 'DDT', 2), (2024, 'FAI', 1)"});
        EXPECT_EQ(made.exitCode, 0) << made.err;
    }

    [[nodiscard]] std::string connection() const { return connectionTo(folder_ / "a.db"); }
    [[nodiscard]] Outcome numbers(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"numbers", "--connection", connection()});
        return kaputil(arguments);
    }

private:
    Folder folder_;
};

TEST_F(NumbersCommand, ShowsEveryCounterWithWhatIsAmiss) {
    const Outcome run = numbers({});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "BOL 2024  definitive 0, provisional Null\n"
              "BOL 2025  definitive 2, provisional 7\n"
              "  numbers   2 used\n"
              "FAT 2024  no such counter\n"
              "  outside   1 beyond the counter\n"
              "  1         beyond the counter: FAI 1\n"
              "FAT 2025  definitive 12, provisional 0\n"
              "  numbers   5 used, 1 reserved, 6 missing\n"
              "  outside   3 reserved ahead, 1 beyond the counter\n"
              "  reserved  7  taken\n"
              "            14  untouched\n"
              "            15  read\n"
              "            16  taken for the accounts\n"
              "  1         missing: before FAI 2\n"
              "  4         missing: between NCR 3 and FAI 5\n"
              "  6         missing: between FAI 5 and reservation 7 (taken)\n"
              "  7         reservation without use: reservation 7 (taken)\n"
              "  8         missing: between reservation 7 (taken) and FAI 9\n"
              "  11-12     missing: between FAI 10 and FAI 13\n"
              "  13        beyond the counter: FAI 13\n"
              "  14        reservation expired: reservation 14 (untouched)\n"
              "  15        reservation expired: reservation 15 (read)\n"
              "  16        reservation without use: reservation 16 (taken for the accounts)\n");
}

TEST_F(NumbersCommand, ShowsOneCounterOrOneYear) {
    EXPECT_EQ(numbers({"--counter", "bol"}).out,
              "BOL 2024  definitive 0, provisional Null\n"
              "BOL 2025  definitive 2, provisional 7\n"
              "  numbers   2 used\n");
    EXPECT_EQ(numbers({"--year", "2024", "--counter", "BOL"}).out,
              "BOL 2024  definitive 0, provisional Null\n");
    EXPECT_EQ(numbers({"--counter", "L'ALTRO"}).out, "No counters.\n");
}

TEST_F(NumbersCommand, ShowsEveryNumberOrAPartOfThem) {
    EXPECT_EQ(
        numbers({"--counter", "FAT", "--year", "2025", "--register", "--from", "3", "--to", "11"})
            .out,
        "FAT 2025  definitive 12, provisional 0\n"
        "  numbers   5 used, 1 reserved, 6 missing\n"
        "  outside   3 reserved ahead, 1 beyond the counter\n"
        "          3  used         NCR 3\n"
        "          4  missing\n"
        "          5  used         FAI 5\n"
        "          6  missing\n"
        "          7  reserved     reservation 7 (taken)\n"
        "          8  missing\n"
        "          9  used         FAI 9\n"
        "         10  used         FAI 10\n"
        "         11  missing\n"
        "  4         missing: between NCR 3 and FAI 5\n"
        "  6         missing: between FAI 5 and reservation 7 (taken)\n"
        "  7         reservation without use: reservation 7 (taken)\n"
        "  8         missing: between reservation 7 (taken) and FAI 9\n"
        "  11        missing: between FAI 10 and FAI 13\n");
    const Outcome run = numbers({"--from", "5", "--to", "4"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: --from 5 lies behind --to 4\n");
}

TEST_F(NumbersCommand, PrintsOneJsonObjectForPrograms) {
    const json all =
        json::parse(numbers({"--counter", "FAT", "--year", "2025", "--json"}).out)["counters"];
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0]["counter"], "FAT");
    EXPECT_EQ(all[0]["year"], 2025);
    EXPECT_EQ(all[0]["definitive"], 12);
    EXPECT_EQ(all[0]["totals"]["missing"], 6);
    EXPECT_FALSE(all[0].contains("register"));
    EXPECT_EQ(all[0]["reservations"][0],
              json::parse(R"({"kind": "reservation", "number": 7, "code": "U",
                              "state": "taken"})"));
    EXPECT_EQ(all[0]["anomalies"][1],
              json::parse(R"({"kind": "missing", "first": 4, "last": 4, "carriers": [
                  {"kind": "document", "number": 3, "type": "NCR", "date": null,
                   "registered": false},
                  {"kind": "document", "number": 5, "type": "FAI", "date": null,
                   "registered": false}]})"));
}

TEST_F(NumbersCommand, PrintsTheWholeRegisterForSpreadsheets) {
    const Outcome run = numbers({"--counter", "FAT", "--year", "2025", "--csv", "--to", "4"});
    EXPECT_EQ(run.out,
              "counter,year,first,last,state,anomalies,carrier,type,date,registered\r\n"
              "FAT,2025,1,1,missing,missing,,,,\r\n"
              "FAT,2025,2,2,used,,document,FAI,,0\r\n"
              "FAT,2025,3,3,used,,document,NCR,,0\r\n"
              "FAT,2025,4,4,missing,missing,,,,\r\n");
}

TEST_F(NumbersCommand, TellsSpreadsheetsOfATypeThatChangedItsCounterAlsoBehindTheLastNumber) {
    const Outcome changed = kaputil(
        {"sql", "--connection", connection()},
        "ALTER TABLE mag_TDocumenti ADD MC_Registrazione varchar(10) NULL\nGO\n"
        "UPDATE mag_TDocumenti SET MC_Registrazione = 'M1' WHERE Tipo = 'FAI' AND Numero = 13\n"
        "CREATE TABLE con_MovConD (Protocollo int, Anno smallint, Registro varchar(5))\n"
        "INSERT INTO con_MovConD VALUES (13, 2025, 'FAT')\n"
        "INSERT INTO vtx_TabPro VALUES ('FA2', 2025, 0, 0, 0)\n"
        "UPDATE vtx_TabDoc SET TipoProg = 'FA2' WHERE Codice = 'FAI'\n");
    ASSERT_EQ(changed.exitCode, 0) << changed.err;
    const Outcome run = numbers({"--counter", "FA2", "--year", "2025", "--csv"});
    EXPECT_TRUE(
        run.out.ends_with("FA2,2025,10,10,beyond,beyond,document,FAI,,0\r\n"
                          "FA2,2025,13,13,,counterChanged,,,,\r\n"))
        << run.out;
}

TEST_F(NumbersCommand, FailsOnAnomaliesWhereItIsToldTo) {
    EXPECT_EQ(numbers({"--fail-on", "anomalies"}).exitCode, 4);
    EXPECT_EQ(numbers({"--fail-on", "anomalies", "--counter", "BOL"}).exitCode, 0);
    EXPECT_EQ(numbers({"--fail-on", "gaps"}).exitCode, 2);
}

TEST_F(NumbersCommand, MakesOnePageThatStandsByItself) {
    const Outcome run = numbers({"--html"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("<!DOCTYPE html>\n<html lang=\"it\">")) << run.out;
    EXPECT_TRUE(contains(run.out, "<h1>Registro dei numeri dei documenti</h1>"));
    EXPECT_TRUE(contains(run.out, "id=\"c-FAT-2025\""));
    EXPECT_TRUE(contains(run.out, "<title>11–12: mancanti</title>"));
    EXPECT_TRUE(contains(run.out, "tra FAI 10 e FAI 13"));
    EXPECT_TRUE(contains(run.out, "Nessun numero in questo anno."));
    EXPECT_FALSE(contains(run.out, "<script"));
    EXPECT_FALSE(contains(run.out, "http"));
    EXPECT_TRUE(contains(numbers({"--html", "--language", "en"}).out,
                         "<h1>Register of document numbers</h1>"));
    EXPECT_EQ(numbers({"--html", "--csv"}).exitCode, 2);
    EXPECT_EQ(numbers({"--html", "--language", "fr"}).exitCode, 2);
}

TEST_F(NumbersCommand, APageTellsTextsAsTheyAre) {
    const Outcome made = kaputil({"sql", "--connection", connection(), "--command",
                                  "INSERT INTO vtx_TabPro VALUES ('<&\">', 2025, 1, 0, 0)"});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    EXPECT_TRUE(contains(numbers({"--html"}).out, "&lt;&amp;&quot;&gt; 2025"));
}

TEST_F(NumbersCommand, WritesAFileWholeOrNotAtAll) {
    const Folder folder;
    const Outcome run = numbers({"--html", "--output", folder / "r.html"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "The register is in " + (folder / "r.html") + "\n");
    const Outcome refused = numbers({"--html", "--output", folder / "none/r.html"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(contains(refused.err, "cannot write ")) << refused.err;
    EXPECT_TRUE(contains(shell("ls " + folder.path()).out, "r.html\n"));
}

TEST_F(NumbersCommand, MakesNoDatabaseThatIsNotThere) {
    const Folder folder;
    for (const char* command : {"numbers", "describe"}) {
        const Outcome run = kaputil({command, "--connection", connectionTo(folder / "none.db")});
        EXPECT_EQ(run.exitCode, 3) << run.out;
        EXPECT_TRUE(contains(run.err, "none.db")) << run.err;
    }
    EXPECT_EQ(shell("ls " + folder.path()).out, "");
}

TEST_F(NumbersCommand, RefusesAYearThatIsNone) {
    const Outcome run = numbers({"--year", "questo"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("--year"), std::string::npos) << run.err;
}

TEST(NumbersCommandWithoutTables, TellsTheDatabasesError) {
    const Outcome run = kaputil({"numbers", "--connection", connectionTo(":memory:")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("vtx_TabPro"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace kap::tests
