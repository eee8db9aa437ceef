// A database that moves to a server, and back.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <kaputil/data/error_numbers.hpp>

#include "cli/command_line.hpp"
#include "server.hpp"
#include "support/killed_copies.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado {
namespace {

using tests::kaputil;
using tests::Outcome;

class ServerCopy : public test::ServerTest {
protected:
    [[nodiscard]] static Outcome copy(const std::string& from, const std::string& to,
                                      std::vector<std::string> more = {}) {
        std::vector<std::string> words = {"copy", "--from", from, "--to", to};
        words.insert(words.end(), more.begin(), more.end());
        return kaputil(words);
    }
    // The lines that tell the tables' checksums, in lower case and in order.
    static std::string sortedLines(std::string text) {
        std::vector<std::string> lines;
        for (std::size_t end = 0; (end = text.find('\n')) != std::string::npos;) {
            std::string line = text.substr(0, end);
            for (char& letter : line) {
                letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
            }
            lines.push_back(line);
            text.erase(0, end + 1);
        }
        std::sort(lines.begin(), lines.end());
        std::string all;
        for (const std::string& line : lines) {
            all += line + "\n";
        }
        return all;
    }

    test::TemporaryFolder folder_;
};

TEST_F(ServerCopy, TheSampleCompanyMovesThereAndBack) {
    ASSERT_EQ(kaputil({"demo", "--database", folder_.file("azienda.db")}).exitCode, 0);
    const Outcome there = copy(folder_.database(), database_->connection());
    EXPECT_EQ(there.exitCode, 0) << there.out << there.err;
    EXPECT_NE(there.out.find("Clienti  "), std::string::npos) << there.out;
    EXPECT_EQ(there.out.find("DIFFERENT"), std::string::npos) << there.out;
    const Outcome back = copy(database_->connection(), folder_.database("ritorno.db"));
    EXPECT_EQ(back.exitCode, 0) << back.out << back.err;
    EXPECT_EQ(sortedLines(there.out), sortedLines(back.out));
    EXPECT_EQ(copy(folder_.database(), database_->connection()).exitCode, 1);
}

TEST_F(ServerCopy, TakesEveryTypeWithIdentitiesAndKeys) {
    const auto source = test::open(folder_.database());
    source->Execute(
        u"CREATE TABLE Tutto (Id int IDENTITY(1,1) PRIMARY KEY, A varchar(20), B char(5), C money, "
        u"D decimal(9,3), E datetime, F bit, G float, H real, I text, J varbinary(20), K date, "
        u"L smallint, M bigint, N uniqueidentifier, AggID timestamp);"
        u"INSERT INTO Tutto (A, B, C, D, E, F, G, H, I, J, K, L, M, N) VALUES "
        u"('L''è {?} \\x', 'ab', 1234.5678, -0.125, '2003-12-31 18:30:15.250', 1, 0.1, 0.1, "
        u"'lungo', 0x00FF10, '2004-02-29', -3, 9007199254740993, "
        u"'6F9619FF-8B86-D011-B42D-00C04FC964FF');"
        u"INSERT INTO Tutto (A) VALUES (NULL)");
    const Outcome there = copy(folder_.database(), database_->connection());
    EXPECT_EQ(there.exitCode, 0) << there.out << there.err;
    const Outcome back = copy(database_->connection(), folder_.database("ritorno.db"));
    EXPECT_EQ(back.exitCode, 0) << back.out << back.err;
    EXPECT_EQ(sortedLines(there.out), sortedLines(back.out));
    run("INSERT INTO tutto (a) VALUES ('nuovo')");
    EXPECT_EQ(value("SELECT max(id) FROM tutto"), "Long 3");
}

TEST_F(ServerCopy, GoesOnWhereItWasInterrupted) {
    const auto source = test::open(folder_.database());
    source->Execute(
        u"CREATE TABLE Grande (Id int PRIMARY KEY, Testo varchar(40));"
        u"DECLARE @i int; SET @i = 0; BEGIN TRANSACTION; WHILE @i < 5000 BEGIN SET @i = @i + 1; "
        u"INSERT INTO Grande VALUES (@i, 'riga ' + CONVERT(varchar(10), @i)) END; COMMIT");
    // As an interrupted copy has left it.
    run("CREATE TABLE kap_copy (tabella varchar(128) NOT NULL PRIMARY KEY, righe int NOT NULL);"
        "CREATE TABLE grande (id integer NOT NULL PRIMARY KEY, testo varchar(40));"
        "INSERT INTO grande SELECT i, 'riga ' || i FROM generate_series(1, 2000) i;"
        "INSERT INTO kap_copy VALUES ('grande', 2000)");
    const Outcome again = copy(folder_.database(), database_->connection());
    EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
    EXPECT_EQ(value("SELECT count(*) FROM grande"), "Decimal 5000");
    EXPECT_EQ(test::raisedBy([&] { return query("SELECT * FROM kap_copy"); }),
              errors::kUnknownObject);
}

TEST_F(ServerCopy, GoesOnBehindProgramsThatWereKilled) {
    test::fillForKilledCopies(*test::open(folder_.database()));
    const std::string back = folder_.database("ritorno.db");
    EXPECT_TRUE(test::copiesThoughKilled(folder_.database(), database_->connection()));
    EXPECT_TRUE(test::copiesThoughKilled(database_->connection(), back));
    EXPECT_EQ(value("SELECT 'x' || count(*) || ' ' || sum(prezzo) FROM righe"),
              "String x25000 78165625.0000");
    run("INSERT INTO testate (nome) VALUES ('nuova')");
    EXPECT_EQ(value("SELECT max(id) FROM testate"), "Long 25007");
    EXPECT_EQ(test::shown(test::valueOf(test::open(back), u"SELECT COUNT(*) FROM Righe")),
              "Long 25000");
}

TEST_F(ServerCopy, TakesTheTablesOfOtherSchemas) {
    const auto source = test::open(folder_.database());
    for (const char16_t* batch :
         {u"CREATE SCHEMA Storico", u"CREATE TABLE Clienti (Id int PRIMARY KEY, Nome varchar(20))",
          u"CREATE TABLE Storico.Clienti (Id int IDENTITY(10,1) PRIMARY KEY, Nome varchar(20) NOT "
          u"NULL DEFAULT 'vecchio', AggID timestamp)",
          u"CREATE TABLE Storico.Note (Cliente int CONSTRAINT FK_sc REFERENCES Storico.Clienti)",
          u"CREATE INDEX ix_nome ON Clienti (Nome)",
          u"CREATE INDEX ix_nome ON Storico.Clienti (Nome)",
          u"INSERT INTO Clienti VALUES (1, 'Rossi')", u"INSERT INTO Storico.Clienti DEFAULT VALUES",
          u"INSERT INTO Storico.Note VALUES (10)"}) {
        source->Execute(batch);
    }
    const Outcome there = copy(folder_.database(), database_->connection());
    EXPECT_EQ(there.exitCode, 0) << there.out << there.err;
    EXPECT_EQ(there.err, "");
    run("INSERT INTO storico.clienti (nome) VALUES ('nuovo')");
    EXPECT_EQ(value("SELECT max(id) FROM storico.clienti WHERE aggid IS NOT NULL"), "Long 11");
    EXPECT_EQ(test::raisedBy([&] { run("INSERT INTO storico.note VALUES (9)"); }),
              errors::kIntegrity);
    EXPECT_EQ(value("SELECT 'x' || count(*) FROM pg_indexes WHERE indexname = 'ix_nome'"),
              "String x2");
    run("DELETE FROM storico.clienti WHERE id = 11");
    const Outcome back = copy(database_->connection(), folder_.database("ritorno.db"));
    EXPECT_EQ(back.exitCode, 0) << back.out << back.err;
    EXPECT_EQ(back.err, "");
    EXPECT_EQ(sortedLines(there.out), sortedLines(back.out));
    const auto returned = test::open(folder_.database("ritorno.db"));
    EXPECT_EQ(test::shown(test::valueOf(returned, u"SELECT nome FROM storico.clienti")),
              "String vecchio");
    EXPECT_EQ(test::raisedBy([&] { returned->Execute(u"INSERT INTO storico.note VALUES (9)"); }),
              errors::kIntegrity);
}

TEST_F(ServerCopy, TakesATableOfAnotherSchemaByItsName) {
    const auto source = test::open(folder_.database());
    source->Execute(u"CREATE SCHEMA storico");
    source->Execute(u"CREATE TABLE storico.A (x int); CREATE TABLE A (y int)");
    const Outcome one =
        copy(folder_.database(), database_->connection(), {"--table", "STORICO.A", "--json"});
    EXPECT_EQ(one.exitCode, 0) << one.err;
    EXPECT_EQ(
        one.out,
        "{\"table\":\"storico.A\",\"rows\":0,\"checksum\":\"0000000000000000\",\"equal\":true}"
        "\n");
}

TEST_F(ServerCopy, TellsADifference) {
    test::open(folder_.database())
        ->Execute(u"CREATE TABLE T (Id int PRIMARY KEY); INSERT INTO T VALUES (1)");
    run("CREATE TABLE kap_copy (tabella varchar(128) NOT NULL PRIMARY KEY, righe int NOT NULL);"
        "CREATE TABLE t (id integer NOT NULL PRIMARY KEY); INSERT INTO t VALUES (7);"
        "INSERT INTO kap_copy VALUES ('t', 1)");
    const Outcome different = copy(folder_.database(), database_->connection());
    EXPECT_EQ(different.exitCode, 1);
    EXPECT_NE(different.out.find("DIFFERENT: the source has 1 rows"), std::string::npos)
        << different.out;
}

TEST_F(ServerCopy, TakesOnlyTheTablesThatAreNamed) {
    test::open(folder_.database())->Execute(u"CREATE TABLE A (x int); CREATE TABLE B (y int)");
    const Outcome one =
        copy(folder_.database(), database_->connection(), {"--table", "A", "--json"});
    EXPECT_EQ(one.exitCode, 0) << one.err;
    EXPECT_EQ(one.out,
              "{\"table\":\"A\",\"rows\":0,\"checksum\":\"0000000000000000\",\"equal\":true}\n");
}

TEST_F(ServerCopy, SaysWhatIsWrong) {
    test::open(folder_.database())->Close();
    EXPECT_EQ(copy(folder_.database(), "Driver={Gibts nicht}").exitCode, 3);
    EXPECT_EQ(kaputil({"copy", "--from", folder_.database()}).exitCode, 2);
    const Outcome unknown = copy(folder_.database(), database_->connection(), {"--table", "Nix"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("Nix"), std::string::npos) << unknown.err;
    EXPECT_EQ(copy(folder_.database("manca.db"), database_->connection()).exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists(folder_.file("manca.db")));
}

// Two tables with everything that can tie them together.
constexpr const char16_t* kTied =
    u"CREATE TABLE Righe (Id int IDENTITY(1,1) PRIMARY KEY, Doc int NOT NULL, Voce varchar(5));"
    u"CREATE TABLE Voci (Codice varchar(5) NOT NULL CONSTRAINT uq_voci UNIQUE, Nome varchar(20) "
    u"DEFAULT 'l''una', Aperta bit NOT NULL DEFAULT 1, Prezzo money DEFAULT -1.5, Sconto "
    u"decimal(5,2) DEFAULT 2.25, Data datetime DEFAULT getdate());"
    u"CREATE TABLE Doc (Numero int PRIMARY KEY, Serie varchar(3) NOT NULL DEFAULT 'A');"
    u"ALTER TABLE Righe ADD CONSTRAINT fk_doc FOREIGN KEY (Doc) REFERENCES Doc (Numero) ON DELETE "
    u"CASCADE;"
    u"ALTER TABLE Righe ADD CONSTRAINT fk_voce FOREIGN KEY (Voce) REFERENCES Voci (Codice);"
    u"CREATE INDEX ix_righe ON Righe (Doc DESC, Voce);"
    u"INSERT INTO Doc VALUES (1, 'B'); INSERT INTO Voci (Codice) VALUES ('x');"
    u"INSERT INTO Righe (Doc, Voce) VALUES (1, 'x')";

class ServerCopyOfRelations : public ServerCopy {
protected:
    void SetUp() override {
        ServerCopy::SetUp();
        if (!IsSkipped()) {
            source_ = test::open(folder_.database());
            source_->Execute(kTied);
        }
    }
    // Each row of a query, its cells with '|' between.
    [[nodiscard]] static std::string rowsOf(const Ref<Connection>& connection,
                                            const std::string& query) {
        std::string all;
        const auto rows = make<Recordset>();
        rows->Open(Variant(query), Variant(connection));
        for (; !rows->Eof(); rows->MoveNext()) {
            for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
                all += (i == 0 ? "" : "|") + test::shown(test::fieldOf(rows, i));
            }
            all += "\n";
        }
        return all;
    }
    static std::int32_t refusal(const Ref<Connection>& connection, const std::string& script) {
        return test::raisedBy([&] { return connection->Execute(String(script)); });
    }

    Ref<Connection> source_;
};

TEST_F(ServerCopyOfRelations, TakesKeysAndIndexesThereAndBack) {
    const Outcome there = copy(folder_.database(), database_->connection());
    EXPECT_EQ(there.exitCode, 0) << there.out << there.err;
    EXPECT_EQ(there.err, "");
    EXPECT_EQ(refusal(connection_, "INSERT INTO voci (codice) VALUES ('x')"), errors::kIntegrity);
    EXPECT_EQ(refusal(connection_, "INSERT INTO righe (doc) VALUES (9)"), errors::kIntegrity);
    EXPECT_EQ(refusal(connection_, "UPDATE righe SET voce = 'y'"), errors::kIntegrity);
    EXPECT_EQ(value("SELECT pg_get_indexdef('ix_righe'::regclass)"),
              "String CREATE INDEX ix_righe ON public.righe USING btree (doc DESC, voce)");
    const Outcome back = copy(database_->connection(), folder_.database("ritorno.db"));
    EXPECT_EQ(back.exitCode, 0) << back.out << back.err;
    EXPECT_EQ(back.err, "");
    const auto returned = test::open(folder_.database("ritorno.db"));
    EXPECT_EQ(refusal(returned, "INSERT INTO voci (codice) VALUES ('x')"), errors::kIntegrity);
    EXPECT_EQ(refusal(returned, "UPDATE righe SET voce = 'y'"), errors::kIntegrity);
    returned->Execute(u"DELETE FROM doc");
    EXPECT_EQ(rowsOf(returned, "SELECT * FROM righe"), "");
    connection_->Execute(u"DELETE FROM doc");
    EXPECT_EQ(rowsOf(connection_, "SELECT * FROM righe"), "");
}

TEST_F(ServerCopyOfRelations, TakesDefaultsThereAndBack) {
    const std::string query = "SELECT nome, aperta, prezzo, sconto FROM voci WHERE codice = 'n'";
    source_->Execute(
        u"INSERT INTO Voci (Codice) VALUES ('n'); DELETE FROM Voci WHERE Codice = 'n'");
    EXPECT_EQ(copy(folder_.database(), database_->connection()).exitCode, 0);
    run("INSERT INTO voci (codice) VALUES ('n')");
    EXPECT_EQ(value("SELECT nome FROM voci WHERE codice = 'n'"), "String l'una");
    EXPECT_EQ(value("SELECT aperta::int FROM voci WHERE codice = 'n'"), "Long 1");
    EXPECT_EQ(value("SELECT (prezzo * 10)::int FROM voci WHERE codice = 'n'"), "Long -15");
    EXPECT_EQ(value("SELECT (sconto * 100)::int FROM voci WHERE codice = 'n'"), "Long 225");
    EXPECT_EQ(value("SELECT (now() - data < interval '1 hour')::int FROM voci WHERE codice = 'n'"),
              "Long 1");
    run("DELETE FROM voci WHERE codice = 'n'");
    EXPECT_EQ(copy(database_->connection(), folder_.database("ritorno.db")).exitCode, 0);
    const auto returned = test::open(folder_.database("ritorno.db"));
    for (const auto& each : {source_, returned}) {
        each->Execute(u"INSERT INTO voci (codice) VALUES ('n')");
    }
    EXPECT_EQ(rowsOf(returned, query), rowsOf(source_, query));
}

TEST_F(ServerCopyOfRelations, NamesWhatStaysBehind) {
    source_->Execute(u"CREATE VIEW Aperte AS SELECT Codice FROM Voci WHERE Aperta = 1");
    source_->Execute(u"CREATE PROCEDURE Chiudi AS UPDATE Voci SET Aperta = 0");
    source_->Execute(u"CREATE TRIGGER Segna ON Voci AFTER INSERT AS RETURN");
    source_->Execute(u"CREATE TABLE Altro (a int PRIMARY KEY, b varchar(20) DEFAULT suser_name())");
    const Outcome there = copy(folder_.database(), database_->connection());
    EXPECT_EQ(there.exitCode, 0) << there.out << there.err;
    for (const char* line :
         {"The view Aperte stays behind: it is written in its database's dialect.\n",
          "The procedure Chiudi stays behind: it is written in its database's dialect.\n",
          "The trigger Segna stays behind: it is written in its database's dialect.\n",
          "The default of Altro.b stays behind: "}) {
        EXPECT_NE(there.err.find(line), std::string::npos) << there.err;
    }
}

TEST_F(ServerCopyOfRelations, AnInterruptedCopyAddsOnlyWhatIsMissing) {
    EXPECT_EQ(copy(folder_.database(), database_->connection()).exitCode, 0);
    run("CREATE TABLE kap_copy (tabella varchar(128) NOT NULL PRIMARY KEY, righe int NOT NULL);"
        "INSERT INTO kap_copy VALUES ('doc', 1), ('voci', 1), ('righe', 1);"
        "ALTER TABLE righe DROP CONSTRAINT fk_doc; DROP INDEX ix_righe");
    const Outcome again = copy(folder_.database(), database_->connection());
    EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
    EXPECT_EQ(again.err, "");
    EXPECT_EQ(value("SELECT count(*) FROM pg_constraint WHERE contype = 'f'"), "Decimal 2");
    EXPECT_EQ(value("SELECT count(*) FROM pg_indexes WHERE indexname = 'ix_righe'"), "Decimal 1");
}

TEST_F(ServerCopyOfRelations, FillsTablesInTheOrderOfTheirForeignKeys) {
    // Somebody has made the tables beforehand.
    run("CREATE TABLE doc (numero int PRIMARY KEY, serie varchar(3) NOT NULL);"
        "CREATE TABLE voci (codice varchar(5) NOT NULL UNIQUE, nome varchar(20), aperta boolean "
        "NOT NULL, prezzo numeric(19,4), sconto numeric(5,2), data timestamp(3));"
        "CREATE TABLE righe (id int PRIMARY KEY GENERATED BY DEFAULT AS IDENTITY, doc int NOT NULL "
        "REFERENCES doc, voce varchar(5) REFERENCES voci (codice))");
    const Outcome there = copy(folder_.database(), database_->connection());
    EXPECT_EQ(there.exitCode, 0) << there.out << there.err;
    EXPECT_EQ(value("SELECT count(*) FROM righe"), "Decimal 1");
}

}  // namespace
}  // namespace kap::ado
