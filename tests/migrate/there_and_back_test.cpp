// A database that moves to another one that speaks Transact-SQL, and back: to another file, or to
// the server that the tests were told to use.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"
#include "migrate/database_copy.hpp"
#include "support/database.hpp"
#include "support/killed_copies.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::migrate {
namespace {

class ThereAndBack : public testing::Test {
protected:
    void SetUp() override {
        if (test::OtherServer::given() != nullptr && test::OtherServer::given()->isPostgres()) {
            GTEST_SKIP() << "the server does not speak Transact-SQL";
        }
        there_ = test::OtherServer::given() != nullptr ? test::memoryDatabase()
                                                       : folder_.database("la.db");
    }
    // The checksums of the tables that have arrived.
    std::map<std::string, std::string> copy(const std::string& from, const std::string& to) {
        const auto source = test::open(from);
        const auto target = test::open(to);
        std::map<std::string, std::string> sums;
        told_.clear();
        const bool whole =
            DatabaseCopy(*source, {})
                .run(*target, {.tell = [&](const std::string& left) { told_ += left + "\n"; },
                               .begins = [](const std::string& /*table*/) {},
                               .progress = [](std::int64_t /*done*/, std::int64_t /*all*/) {},
                               .ends =
                                   [&](const std::string& table, const CopyOutcome& outcome) {
                                       // A server may keep names in lower case.
                                       sums[asciiLower(table)] = std::to_string(outcome.rows) +
                                                                 " " + outcome.target.text();
                                   }});
        EXPECT_TRUE(whole);
        return sums;
    }
    // There and back; every table has the same sum both ways.
    void moves() {
        const auto there = copy(here_, there_);
        EXPECT_EQ(told_, "");
        EXPECT_FALSE(there.empty());
        EXPECT_EQ(copy(there_, back_), there);
        if (!onServer_) {
            EXPECT_EQ(told_, "");
        }
    }
    void make(std::initializer_list<const char16_t*> batches) const {
        const auto source = test::open(here_);
        for (const char16_t* batch : batches) {
            source->Execute(batch);
        }
    }
    static std::string answer(const std::string& database, const std::string& query) {
        std::string all;
        const auto rows = test::open(database)->Execute(String(query));
        for (; !rows->Eof(); rows->MoveNext()) {
            for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
                all += (i == 0 ? "" : " | ") + test::shown(test::fieldOf(rows, i));
            }
            all += "\n";
        }
        return all;
    }
    // What a server writes otherwise than it was given, as names and expressions, may differ.
    void expectSameWords(const std::string& query) const {
        if (!onServer_) {
            expectSame(query);
        }
    }
    void expectSame(const std::string& query) const {
        EXPECT_EQ(answer(back_, query), answer(here_, query)) << query;
    }
    static bool refuses(const std::string& database, const std::string& script) {
        return test::raisedBy([&] { return test::open(database)->Execute(String(script)); }) != 0;
    }

    test::TemporaryFolder folder_;
    std::string here_ = folder_.database("qui.db");
    std::string back_ = folder_.database("ritorno.db");
    std::string there_;
    std::string told_;
    bool onServer_ = test::OtherServer::given() != nullptr;
};

TEST_F(ThereAndBack, KeepsTypesIdentitiesAndDefaults) {
    make(
        {u"CREATE TABLE Tutto (Id int IDENTITY(100,5) CONSTRAINT PK_tutto PRIMARY KEY, A "
         u"varchar(20) NOT NULL CONSTRAINT DF_a DEFAULT 'l''una', B char(5), C money DEFAULT -1.5, "
         u"D decimal(9,3), E datetime, F bit NOT NULL DEFAULT 1, G float, H real, I text, J "
         u"varbinary(20), K date, L smallint, M bigint, N uniqueidentifier, O nvarchar(30), P "
         u"varchar(max), Q datetime2(6), R time(3), S tinyint, T smallmoney, U numeric(28,6), V "
         u"datetime DEFAULT dateadd(day, 1, getdate()), AggID timestamp)",
         u"INSERT INTO Tutto (A, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, Q, R, S, T, U) "
         u"VALUES "
         u"('L''è {?} \\x', 'ab', 1234.5678, -0.125, '2003-12-31 18:30:15.247', 0, 0.1, 0.1, "
         u"'lungo', 0x00FF10, '2004-02-29', -3, 9007199254740993, "
         u"'6F9619FF-8B86-D011-B42D-00C04FC964FF', N'日本 €', '', '2003-12-31 18:30:15.123456', "
         u"'23:59:59.999', 255, -7.25, 1234567890123456789012.654321)",
         u"INSERT INTO Tutto (V) VALUES (NULL)", u"INSERT INTO Tutto (V) VALUES ('20250101')",
         u"DELETE FROM Tutto WHERE Id = 110"});
    moves();
    expectSameWords(
        "SELECT c.name, y.name, c.max_length, c.precision, c.scale, c.is_nullable, c.is_identity "
        "FROM sys.columns c JOIN sys.types y ON y.user_type_id = c.user_type_id WHERE c.object_id "
        "= object_id('Tutto') ORDER BY c.column_id");
    expectSame("SELECT A, B, C, D, E, F, G, H, K, L, M, N, O, P, S, T, U FROM Tutto ORDER BY Id");
    for (const std::string& database : {there_, back_}) {
        test::open(database)->Execute(u"INSERT INTO Tutto (A) VALUES ('nuovo')");
        EXPECT_EQ(answer(database, "SELECT Id FROM Tutto WHERE A = 'nuovo' AND C = -1.5 AND F = 1"),
                  "Long 115\n");
        if (database == there_ || !onServer_) {
            EXPECT_EQ(answer(database, "SELECT Id FROM Tutto WHERE A = 'nuovo' AND V > getdate()"),
                      "Long 115\n");
        }
    }
}

TEST_F(ThereAndBack, KeepsKeysChecksAndIndexes) {
    make({u"CREATE TABLE P (Cod varchar(5) NOT NULL CONSTRAINT PK_p PRIMARY KEY, N int)",
          u"CREATE TABLE R (Id int NOT NULL CONSTRAINT PK_r PRIMARY KEY, Cod varchar(5) CONSTRAINT "
          u"FK_cod REFERENCES P ON DELETE CASCADE, B decimal(9,2) CONSTRAINT CK_b CHECK (B > 0), C "
          u"AS B * 2, D nvarchar(50) NOT NULL CONSTRAINT UQ_d UNIQUE)",
          u"CREATE INDEX ix_data ON R (B, Id)", u"CREATE INDEX ix_data ON P (N)",
          u"INSERT INTO P VALUES ('a', 1)",
          u"INSERT INTO R (Id, Cod, B, D) VALUES (1, 'a', 1.5, 'uno')"});
    moves();
    for (const std::string& database : {there_, back_}) {
        EXPECT_TRUE(refuses(database, "INSERT INTO P VALUES ('a', 2)"));
        EXPECT_TRUE(refuses(database, "UPDATE R SET B = -1"));
        EXPECT_TRUE(refuses(database, "UPDATE R SET Cod = 'z'"));
        EXPECT_TRUE(refuses(database, "INSERT INTO R (Id, D) VALUES (2, 'uno')"));
        EXPECT_EQ(answer(database, "SELECT C FROM R").substr(0, 9), "Decimal 3");
    }
    expectSameWords("SELECT name FROM sys.foreign_keys");
    expectSameWords("SELECT name, definition FROM sys.check_constraints");
    expectSameWords("SELECT name, is_unique FROM sys.indexes WHERE name IS NOT NULL ORDER BY name");
    test::open(back_)->Execute(u"DELETE FROM P");
    EXPECT_EQ(answer(back_, "SELECT * FROM R"), "");
}

TEST_F(ThereAndBack, KeepsViewsAndModules) {
    make({u"CREATE TABLE P (Cod varchar(5) NOT NULL PRIMARY KEY, N int)",
          u"CREATE FUNCTION dbo.F(@x int) RETURNS int AS BEGIN RETURN @x * 2 END",
          u"CREATE VIEW V2 AS SELECT Cod, dbo.F(N) AS N FROM P",
          u"CREATE VIEW V1 AS SELECT Cod, N FROM V2",
          u"CREATE PROCEDURE Leggi @x varchar(5) AS SELECT N FROM V1 WHERE Cod = @x",
          u"CREATE TRIGGER Segna ON P AFTER INSERT AS UPDATE P SET N = 7 FROM P JOIN inserted i ON "
          u"i.Cod = P.Cod",
          u"INSERT INTO P VALUES ('a', 1)", u"UPDATE P SET N = 4"});
    moves();
    for (const std::string& database : {there_, back_}) {
        EXPECT_EQ(answer(database, "EXEC Leggi 'a'"), "Long 8\n");
        test::open(database)->Execute(u"INSERT INTO P VALUES ('b', 1)");
        EXPECT_EQ(answer(database, "EXEC Leggi 'b'"), "Long 14\n");
    }
    test::open(here_)->Execute(u"INSERT INTO P VALUES ('b', 1)");
    expectSame("SELECT Cod, N FROM V1 ORDER BY Cod");
}

TEST_F(ThereAndBack, KeepsTablesOfOtherSchemas) {
    make({u"CREATE SCHEMA storico", u"CREATE SCHEMA [della ditta]",
          u"CREATE TABLE Clienti (Id int NOT NULL PRIMARY KEY, Nome varchar(20))",
          u"CREATE TABLE storico.Clienti (Id int IDENTITY(10,1) CONSTRAINT PK_sc PRIMARY KEY, Nome "
          u"varchar(20) NOT NULL DEFAULT 'vecchio', AggID timestamp)",
          u"CREATE TABLE [della ditta].[a.b] (Cliente int CONSTRAINT FK_sc REFERENCES "
          u"storico.Clienti, Ora datetime DEFAULT dateadd(day, 1, getdate()))",
          u"CREATE TABLE [c.d] (a int NOT NULL PRIMARY KEY)",
          u"CREATE INDEX ix_nome ON Clienti (Nome)",
          u"CREATE INDEX ix_nome ON storico.Clienti (Nome)",
          u"CREATE VIEW storico.Nomi AS SELECT Nome FROM storico.Clienti",
          u"INSERT INTO Clienti VALUES (1, 'Rossi')", u"INSERT INTO storico.Clienti DEFAULT VALUES",
          u"INSERT INTO [della ditta].[a.b] (Cliente) VALUES (10)",
          u"INSERT INTO [c.d] VALUES (3)"});
    moves();
    for (const std::string& database : {there_, back_}) {
        EXPECT_EQ(answer(database, "SELECT Nome FROM Clienti"), "String Rossi\n");
        EXPECT_EQ(answer(database, "SELECT Nome FROM storico.Nomi"), "String vecchio\n");
        EXPECT_TRUE(refuses(database, "INSERT INTO [della ditta].[a.b] (Cliente) VALUES (11)"));
        test::open(database)->Execute(u"INSERT INTO storico.Clienti (Nome) VALUES ('nuovo')");
        EXPECT_EQ(answer(database, "SELECT Id FROM storico.Clienti WHERE Nome = 'nuovo'"),
                  "Long 11\n");
    }
}

TEST_F(ThereAndBack, GoesOnBehindProgramsThatWereKilled) {
    test::fillForKilledCopies(*test::open(here_));
    EXPECT_TRUE(test::copiesThoughKilled(here_, there_));
    EXPECT_TRUE(test::copiesThoughKilled(there_, back_));
    for (const std::string& database : {there_, back_}) {
        EXPECT_EQ(answer(database, "SELECT COUNT(*), SUM(Prezzo) FROM Righe"),
                  answer(here_, "SELECT COUNT(*), SUM(Prezzo) FROM Righe"));
        EXPECT_TRUE(refuses(database, "SELECT * FROM KAP_COPY"));
        test::open(database)->Execute(u"INSERT INTO Testate (Nome) VALUES ('nuova')");
        EXPECT_EQ(answer(database, "SELECT MAX(Id) FROM Testate"), "Long 25007\n");
    }
}

}  // namespace
}  // namespace kap::migrate
