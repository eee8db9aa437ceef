#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/command_line.hpp"

namespace kap::tests {
namespace {

using nlohmann::json;

// A database with two accounts.
class BatchCommand : public testing::Test {
protected:
    BatchCommand() {
        (void)sql(
            "CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo int NOT NULL) "
            "INSERT INTO Conti VALUES (1, 100), (2, 50)");
    }

    [[nodiscard]] Outcome sql(const std::string& script) const {
        return kaputil({"sql", "--json", "--connection", connection(), "--command", script});
    }
    [[nodiscard]] std::string connection() const { return connectionTo(folder_ / "a.db"); }
    [[nodiscard]] Outcome batch(const std::string& statements,
                                std::vector<std::string> options = {}) const {
        options.insert(options.begin(),
                       {"batch", folder_.file("b.sql", statements), "--connection", connection()});
        return kaputil(options);
    }
    [[nodiscard]] std::string balances() const {
        json rows = json::array();
        const Outcome read = sql("SELECT Codice, Saldo FROM Conti ORDER BY Codice");
        const json answer = json::parse(read.out);
        for (const json& row : answer["rows"]) {
            rows.push_back({row["Codice"], row["Saldo"]});
        }
        return rows.dump();
    }

    Folder folder_;
};

constexpr const char* kTransfer =
    "-- message: Addebito fallito\n"
    "UPDATE Conti SET Saldo = Saldo - 30 WHERE Codice = 1\n"
    "GO\n"
    "UPDATE Conti SET Saldo = Saldo + 30 WHERE Codice = 2\n";

TEST_F(BatchCommand, RunsTheStatementsOfAFile) {
    const Outcome run = batch(kTransfer);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "2 statements executed.\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(balances(), "[[1,70],[2,80]]");
}

TEST_F(BatchCommand, RunsAStatementAsOftenAsTold) {
    EXPECT_EQ(batch("UPDATE Conti SET Saldo = Saldo + 1 WHERE Codice = 1\nGO 3\n").out,
              "3 statements executed.\n");
    EXPECT_EQ(balances(), "[[1,103],[2,50]]");
}

TEST_F(BatchCommand, PrintsTheScriptInsteadOfRunningIt) {
    const Outcome run = kaputil({"batch", folder_.file("b.sql", kTransfer), "--dry-run"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "sp_executesql N' DECLARE @ERRORE_NUMERO int \r\n"
              " DECLARE @ERRORE_DESC varchar(100) \r\n"
              " SET NOCOUNT ON \r\n"
              " BEGIN TRANSACTION \r\n"
              "SET @ERRORE_DESC=''Addebito fallito''\r\n"
              "UPDATE Conti SET Saldo = Saldo - 30 WHERE Codice = 1\r\n"
              "SET @ERRORE_NUMERO=@@error\r\n"
              "if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              "\r\n"
              "SET @ERRORE_DESC=''KAP: Errore Esecuzione Command''\r\n"
              "UPDATE Conti SET Saldo = Saldo + 30 WHERE Codice = 2\r\n"
              "SET @ERRORE_NUMERO=@@error\r\n"
              "if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              "\r\n"
              "\r\n"
              "\r\n"
              "COMMIT TRANSACTION\r\n"
              "GOTO end_script\r\n"
              "\r\n"
              "on_error:\r\n"
              "RAISERROR (@ERRORE_DESC,16,1)\r\n"
              "ROLLBACK TRANSACTION\r\n"
              "\r\n"
              "end_script:\r\n"
              " SET NOCOUNT OFF \r\n"
              "'\n");
}

constexpr const char* kRefused =
    "-- Giroconto\n"
    "UPDATE Conti SET Saldo = 0\n"
    "GO\n"
    "\n"
    "-- message: L'inserimento è fallito\n"
    "INSERT INTO Conti\n"
    "VALUES (2, 7)\n"
    "GO\n"
    "UPDATE Conti SET Saldo = 1\n";

TEST_F(BatchCommand, TellsOfTheStatementThatFailedAndChangesNothing) {
    const Outcome run = batch(kRefused);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "error 2627, line 6: Violation of PRIMARY KEY constraint 'PK_Conti'. Cannot insert "
              "duplicate key in object 'dbo.Conti'.\n"
              "error 50000: L'inserimento è fallito\n"
              "in the statement of line 6:\n"
              "    INSERT INTO Conti\n"
              "    VALUES (2, 7)\n"
              "Nothing was changed.\n");
    EXPECT_EQ(balances(), "[[1,100],[2,50]]");
}

TEST_F(BatchCommand, ShowsTheBeginningOfALongStatementThatFailed) {
    std::string statement = "INSERT INTO Conti VALUES (2, 7)\n";
    for (int line = 2; line <= 50; ++line) {
        statement += "-- riga " + std::to_string(line) + "\n";
    }
    const std::string err = batch(statement).err;
    EXPECT_TRUE(err.find("    -- riga 20\n    ... (30 more lines)\nNothing was changed.\n") !=
                std::string::npos)
        << err;
}

TEST_F(BatchCommand, TellsProgramsOfTheStatementThatFailed) {
    const std::string err = batch(kRefused, {"--json"}).err;
    const std::string last = err.substr(err.rfind('\n', err.size() - 2) + 1);
    const json statement = {{"line", 6},
                            {"message", "L'inserimento è fallito"},
                            {"text", "INSERT INTO Conti\nVALUES (2, 7)"}};
    EXPECT_EQ(json::parse(last), json({{"statement", statement}}));
}

TEST_F(BatchCommand, TellsProgramsHowManyStatementsRan) {
    EXPECT_EQ(batch(kTransfer, {"--json"}).out, "{\"statements\":2}\n");
}

TEST_F(BatchCommand, TellsTheLineOfAStatementThatCannotBeRead) {
    const Outcome run = batch("UPDATE Conti SET Saldo = 0\nGO\nUPDATE Conti\nSELECT FROM\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("line 4"), std::string::npos) << run.err;
    EXPECT_EQ(balances(), "[[1,100],[2,50]]");
}

TEST_F(BatchCommand, RunsAFileWithoutStatements) {
    EXPECT_EQ(batch("\n").out, "0 statements executed.\n");
}

TEST_F(BatchCommand, RefusesAMessageWithoutAStatement) {
    const Outcome run = batch("SELECT 1\nGO\n\n-- message: Solo\n");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err,
              "kaputil: " + folder_ / "b.sql" + ", line 4: a message without a statement\n");
}

TEST_F(BatchCommand, NeedsAConnection) {
    const Outcome run = kaputil({"batch", folder_.file("b.sql", kTransfer)});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "kaputil: --connection is required, or the variable KAPUTIL_CONNECTION\n");
}

TEST_F(BatchCommand, TellsWhenTheFileOrTheDatabaseIsNotThere) {
    EXPECT_EQ(kaputil({"batch", folder_ / "manca.sql", "--dry-run"}).exitCode, 2);
    EXPECT_EQ(kaputil({"batch", folder_.file("b.sql", kTransfer), "--connection",
                       connectionTo(folder_ / "manca/a.db")})
                  .exitCode,
              3);
}

}  // namespace
}  // namespace kap::tests
