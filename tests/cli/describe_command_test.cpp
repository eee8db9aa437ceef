#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;

class DescribeCommand : public testing::Test {
protected:
    DescribeCommand() {
        const Outcome made = kaputil(
            {"sql", "--connection", connection(), "--file",
             folder_.file("s.sql",
                          "CREATE TABLE Clienti (Codice int IDENTITY NOT NULL PRIMARY KEY, "
                          "Nome varchar(30) NULL, Fido money NOT NULL DEFAULT 0, "
                          "CONSTRAINT CK_Fido CHECK (Fido >= 0))\n"
                          "CREATE TABLE Ordini (Numero int NOT NULL PRIMARY KEY, Cliente int NOT "
                          "NULL CONSTRAINT FK_Cliente REFERENCES Clienti (Codice), "
                          "Padre int NULL REFERENCES Ordini (Numero), Sconto decimal(5,2) NULL)\n"
                          "CREATE INDEX IX_Cliente ON Ordini (Cliente, Sconto)\n"
                          "CREATE TABLE Note (Testo varchar(max) NULL)\n"
                          "INSERT INTO Clienti (Nome) VALUES ('Rossi'), ('Verdi')\n"
                          "GO\n"
                          "CREATE TRIGGER TR_Ordini ON Ordini FOR INSERT AS PRINT '<x>'\n"
                          "GO\n"
                          "CREATE VIEW Grandi AS SELECT Nome FROM Clienti WHERE Fido > 10\n"
                          "GO\n"
                          "CREATE PROCEDURE Saluta AS PRINT 'ciao'\n")});
        EXPECT_EQ(made.exitCode, 0) << made.err;
    }

    [[nodiscard]] std::string connection() const { return connectionTo(folder_ / "a.db"); }
    [[nodiscard]] Outcome describe(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"describe", "--connection", connection()});
        return kaputil(arguments);
    }

private:
    Folder folder_;
};

TEST_F(DescribeCommand, ShowsTablesWithAllThatBelongsToThem) {
    const Outcome run = describe({});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (const char* part :
         {"Clienti  2 rows\n", "  Codice  int          not null, identity\n",
          "  Nome    varchar(30)\n", "refers FK_Cliente (Cliente) to Clienti (Codice)\n",
          "index IX_Cliente (Cliente, Sconto)\n", "check CK_Fido ", "trigger TR_Ordini\n",
          "decimal(5,2)", "varchar(max)", "procedure Saluta\n", "view Grandi\n"}) {
        EXPECT_TRUE(contains(run.out, part)) << part << "\n" << run.out;
    }
}

TEST_F(DescribeCommand, ShowsOneTable) {
    const Outcome run = describe({"--table", "clienti"});
    EXPECT_TRUE(contains(run.out, " bytes\n\nClienti  2 rows\n")) << run.out;
    EXPECT_FALSE(contains(run.out, "Ordini"));
    const Outcome none = describe({"--table", "Fatture"});
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_EQ(none.err, "kaputil: there is no table Fatture\n");
}

TEST_F(DescribeCommand, PrintsOneJsonObjectForPrograms) {
    const json all = json::parse(describe({"--json"}).out);
    ASSERT_EQ(all["tables"].size(), 3U);
    EXPECT_GT(all["bytes"], 0);
    EXPECT_EQ(all["tables"][0]["name"], "Clienti");
    EXPECT_EQ(all["tables"][0]["rows"], 2);
    EXPECT_EQ(all["tables"][2]["foreignKeys"][0]["table"], "Clienti");
    EXPECT_EQ(all["modules"][0]["kind"], "procedure");
}

TEST_F(DescribeCommand, DrawsWhoRefersToWhom) {
    const Outcome run = describe({"--html"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(contains(run.out, "<svg class=\"relations\""));
    EXPECT_TRUE(contains(run.out, "<title>Ordini → Clienti</title>"));
    EXPECT_TRUE(contains(run.out, "0 ↻</text>"));
    EXPECT_FALSE(contains(run.out, "<a href=\"#t-Note\"><rect")) << "it refers to nobody";
    EXPECT_TRUE(contains(run.out, "PRINT '&lt;x&gt;'"));
    EXPECT_FALSE(contains(run.out, "<script"));
    EXPECT_TRUE(
        contains(describe({"--html", "--language", "en"}).out, "Description of the database"));
}

TEST_F(DescribeCommand, DrawsTablesThatReferToEachOtherInACircle) {
    const Outcome made = kaputil(
        {"sql", "--connection", connection(), "--command",
         "CREATE TABLE A (Id int PRIMARY KEY, B int NULL); CREATE TABLE B (Id int PRIMARY KEY, A "
         "int NULL REFERENCES A (Id)); ALTER TABLE A ADD FOREIGN KEY (B) REFERENCES B (Id)"});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const Outcome run = describe({"--html"});
    EXPECT_TRUE(contains(run.out, "<title>A → B</title>"));
    EXPECT_TRUE(contains(run.out, "<title>B → A</title>"));
}

}  // namespace
}  // namespace kap::tests
