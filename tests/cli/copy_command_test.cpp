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

// A database with everything that the dialect can say of tables, and programs that need each other
// in another order than that of their names.
class CopyOfEverything : public CopyCommandLine {
protected:
    CopyOfEverything() {
        for (const char* batch :
             {"CREATE TABLE P (Cod varchar(5) NOT NULL PRIMARY KEY, N int)",
              "CREATE FUNCTION dbo.F(@x int) RETURNS int AS BEGIN RETURN @x * 2 END",
              "CREATE TABLE R (Id int IDENTITY(100,5) CONSTRAINT PK_mia PRIMARY KEY, A varchar(20) "
              "NOT NULL CONSTRAINT DF_a DEFAULT 'x', B decimal(9,2) CONSTRAINT CK_b CHECK (B > 0), "
              "C AS B * 2, D nvarchar(50), CONSTRAINT UQ_d UNIQUE (D), E datetime DEFAULT "
              "dateadd(day, 1, getdate()), G AS dbo.F(Id), H money DEFAULT -1.5, I datetime "
              "DEFAULT '20031231', Cod varchar(5) CONSTRAINT FK_cod REFERENCES P ON DELETE "
              "CASCADE, J int DEFAULT dbo.F(3) CHECK (J LIKE '%*/%' OR J > 3), AggID timestamp)",
              "CREATE VIEW V2 AS SELECT Id, A FROM R", "CREATE VIEW V1 AS SELECT Id FROM V2",
              "ALTER VIEW V1 AS SELECT Id, A FROM V2",
              "CREATE PROCEDURE Leggi @x int AS SELECT * FROM V1 WHERE Id = @x",
              "CREATE TRIGGER Segna ON P AFTER INSERT AS UPDATE P SET N = 7 FROM P JOIN inserted i "
              "ON i.Cod = P.Cod",
              "CREATE TRIGGER Ferma ON P AFTER DELETE AS RETURN", "DISABLE TRIGGER Ferma ON P",
              "ALTER TABLE R WITH NOCHECK ADD CONSTRAINT CK_e CHECK (A <> 'brutto')",
              "ALTER TABLE R NOCHECK CONSTRAINT CK_e", "CREATE INDEX ix_b ON R (B DESC)",
              "CREATE UNIQUE INDEX ix_f ON R (A) WHERE B = 7",
              "INSERT INTO P VALUES ('a', 1) UPDATE P SET N = 1",
              "INSERT INTO R (A, B, Cod) VALUES ('uno', 1.5, 'a') INSERT INTO R (A, D) VALUES "
              "('brutto', 'due') INSERT INTO R (A, D) VALUES ('tre', 'tre') DELETE FROM R WHERE A "
              "= 'tre'"}) {
            const Outcome run = sql("da.db", batch);
            EXPECT_EQ(run.exitCode, 0) << run.err << batch;
        }
    }
    // What the database says of itself, behind the size of its file.
    [[nodiscard]] std::string described(const std::string& file) const {
        const Outcome run = kaputil({"describe", "--connection", connectionTo(folder_ / file)});
        return run.out.substr(run.out.find('\n'));
    }
    [[nodiscard]] std::string answer(const std::string& script) const {
        const Outcome run = sql("a.db", script);
        return run.out + run.err;
    }
};

TEST_F(CopyOfEverything, DescribesItselfAsItsSource) {
    const Outcome run = copy();
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(described("a.db"), described("da.db"));
    const std::string views =
        "SELECT name, definition, is_disabled FROM sys.check_constraints SELECT name, definition "
        "FROM sys.default_constraints SELECT name, is_disabled FROM sys.triggers SELECT name, "
        "filter_definition FROM sys.indexes SELECT name, definition FROM sys.computed_columns "
        "SELECT o.name, m.definition FROM sys.sql_modules m JOIN sys.objects o ON o.object_id = "
        "m.object_id ORDER BY 1 SELECT name, seed_value, increment_value FROM sys.identity_columns";
    EXPECT_EQ(answer(views), sql("da.db", views).out);
}

TEST_F(CopyOfEverything, GoesOnWithTheNextIdentity) {
    EXPECT_EQ(copy().exitCode, 0);
    EXPECT_NE(answer("INSERT INTO R (D) VALUES ('q') SELECT SCOPE_IDENTITY()").find("115"),
              std::string::npos);
}

TEST_F(CopyOfEverything, HoldsToWhatItsSourceHoldsTo) {
    EXPECT_EQ(copy().exitCode, 0);
    EXPECT_NE(answer("UPDATE R SET B = -1").find("CK_b"), std::string::npos);
    EXPECT_NE(answer("UPDATE R SET D = 'due'").find("UQ_d"), std::string::npos);
    EXPECT_NE(answer("UPDATE R SET Cod = 'z'").find("FK_cod"), std::string::npos);
    EXPECT_NE(answer("INSERT INTO P VALUES ('b', 1) SELECT N FROM P WHERE Cod = 'b'").find("7"),
              std::string::npos);
    EXPECT_NE(
        answer("INSERT INTO R (A, D) VALUES ('brutto', 'q') SELECT J, G FROM R WHERE Id = 115")
            .find("6  230"),
        std::string::npos);
}

TEST_F(CopyOfEverything, OfOneTableTakesWhatBelongsToIt) {
    const Outcome run = copy({"--table", "P"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const std::string objects =
        answer("SELECT name FROM sys.objects WHERE type IN ('U', 'V', 'P', 'TR', 'FN')");
    EXPECT_NE(objects.find("Segna"), std::string::npos) << objects;
    EXPECT_EQ(objects.find("V1"), std::string::npos) << objects;
}

TEST_F(CopyCommandLine, GoesOnInTheOrderOfTheKeyAndTellsADifference) {
    sql("da.db",
        "CREATE TABLE K (A varchar(3) NOT NULL, B int NOT NULL, C int, PRIMARY KEY (A, B)) "
        "DECLARE @i int SET @i = 0 WHILE @i < 300 BEGIN SET @i = @i + 1 INSERT INTO K VALUES "
        "(CHAR(65 + @i % 20), @i, @i) END");
    sql("a.db",
        "CREATE TABLE KAP_COPY (Tabella varchar(128) NOT NULL PRIMARY KEY, Righe int NOT NULL) "
        "CREATE TABLE K (A varchar(3) NOT NULL, B int NOT NULL, C int, PRIMARY KEY (A, B)) "
        "INSERT INTO K VALUES ('A', 20, 20) INSERT INTO K VALUES ('A', 40, 40) INSERT INTO "
        "KAP_COPY VALUES ('K', 2)");
    const Outcome run = copy();
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("K  300 rows"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace kap::tests
