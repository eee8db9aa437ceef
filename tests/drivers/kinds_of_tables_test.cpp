// What recordsets ask of a Transact-SQL server for names that stand for something else than a plain
// table of the usual schema, and for rows that are not found by a plain key.
#include <gtest/gtest.h>

#include "replay.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

// Opens the query and changes the column `nome` of its first row.
void changesTheName(const std::string& traffic, const char16_t* query) {
    test::Replay replay(traffic);
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, query);
    rows->Update(u"nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String NERI");
}

// A synonym stands for its table: the facts are that one's, and what is written names the synonym.
TEST(ReplayedKindsOfTables, ASynonymIsWrittenByTheKeyOfItsTable) {
    changesTheName(R"(
facts Soci
fact id int key 1
fact nome nvarchar(20)
> SELECT * FROM Soci
columns id int, nome nvarchar(20)
row 1 | Rossi
> UPDATE "Soci" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
)",
                   u"SELECT * FROM Soci");
}

TEST(ReplayedKindsOfTables, ATableOfAnotherSchemaIsNamedWithIt) {
    changesTheName(R"(
facts storico.Clienti
fact id int key 1
fact nome nvarchar(20)
> SELECT * FROM storico.Clienti
columns id int, nome nvarchar(20)
row 1 | Rossi
> UPDATE "storico"."Clienti" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
)",
                   u"SELECT * FROM storico.Clienti");
}

// Two tables of one name are two tables.
TEST(ReplayedKindsOfTables, TablesOfOneNameInTwoSchemasAreKeptApart) {
    test::Replay replay(R"(
facts storico.Clienti
fact id int key 1
fact nome nvarchar(20)
> SELECT nome, id FROM storico.Clienti
columns nome nvarchar(20), id int
row Rossi | 1
facts Clienti
fact codice int key 1
fact nome nvarchar(20)
> SELECT nome, codice FROM Clienti
columns nome nvarchar(20), codice int
row Bianchi | 8
> UPDATE "Clienti" SET "nome" = ? OUTPUT inserted."nome" WHERE "codice" = ? AND "nome" = ?
? nvarchar Neri
? int 8
? nvarchar Bianchi
columns nome nvarchar(20)
row Neri
> UPDATE "storico"."Clienti" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Verdi
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
row Verdi
)");
    const auto connection = replay.open();
    const auto old = test::openLive(connection, u"SELECT nome, id FROM storico.Clienti");
    const auto now = test::openLive(connection, u"SELECT nome, codice FROM Clienti");
    now->Update(u"nome", u"Neri");
    old->Update(u"nome", u"Verdi");
}

TEST(ReplayedKindsOfTables, ATemporaryTableIsDescribedByTheDatabaseThatHoldsIt) {
    changesTheName(R"(
facts #prova
fact id int key 1
fact nome nvarchar(20)
> SELECT * FROM #prova
columns id int, nome nvarchar(20)
row 1 | Rossi
> UPDATE "#prova" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
)",
                   u"SELECT * FROM #prova");
}

// Some servers tell nothing of temporary tables: their rows are found by all that was read. They
// are asked again, for the table may have been made meanwhile.
TEST(ReplayedKindsOfTables, ATemporaryTableIsWrittenOfWhichTheServerTellsNothing) {
    const std::string written = R"(
columns id int, nome nvarchar(20)
row 1 | Rossi
facts #prova
> !autocommit off
> UPDATE "#prova" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ? AND
  "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
> !commit
> !autocommit on
)";
    for (const char* query :
         {"SELECT * FROM #prova", "SELECT id, nome FROM #prova", "SELECT p.* FROM #prova p"}) {
        changesTheName("facts #prova\n> " + std::string(query) + written,
                       String(query).units().c_str());
    }
}

// A star beside other things: only what the table has is known by its names.
TEST(ReplayedKindsOfTables, AnExpressionIsNoColumnOfATableThatIsNotToldOf) {
    test::Replay replay(R"(
facts #prova
> SELECT id + 1 AS dopo, p.* FROM #prova p
columns dopo int, id int, nome nvarchar(20)
row 2 | 1 | Rossi
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT id + 1 AS dopo, p.* FROM #prova p");
    EXPECT_NE(raisedBy([&] { rows->Fields()->Item(0)->setValue(5); }), 0);
    EXPECT_EQ(raisedBy([&] { rows->Fields()->Item(2)->setValue(u"Neri"); }), 0);
}

// What the catalogue writes otherwise than the query is known by its own name.
TEST(ReplayedKindsOfTables, NamesInAnotherCaseAreThoseOfTheTable) {
    changesTheName(R"(
facts SOCI
fact Id int key 1
fact Nome nvarchar(20)
> SELECT * FROM SOCI
columns Id int, Nome nvarchar(20)
row 1 | Rossi
> UPDATE "SOCI" SET "Nome" = ? OUTPUT inserted."Nome" WHERE "Id" = ? AND "Nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns Nome nvarchar(20)
row NERI
)",
                   u"SELECT * FROM SOCI");
}

// A view has no key: its row is the one that holds all that was read, and must be the only one.
TEST(ReplayedKindsOfTables, ARowOfAViewIsFoundByAllItsColumns) {
    changesTheName(R"(
facts Elenco
fact nome nvarchar(20)
fact id int
> SELECT * FROM Elenco
columns nome nvarchar(20), id int
row Rossi | 1
> !autocommit off
> UPDATE "Elenco" SET "nome" = ? OUTPUT inserted."nome" WHERE "nome" = ? AND "id" = ? AND
  "nome" = ?
? nvarchar Neri
? nvarchar Rossi
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
> !commit
> !autocommit on
)",
                   u"SELECT * FROM Elenco");
}

// A unique index of columns that may be Null is no key.
TEST(ReplayedKindsOfTables, ANullIsComparedAsOne) {
    changesTheName(R"(
facts t
fact codice int
fact nome nvarchar(20)
> SELECT * FROM t
columns codice int, nome nvarchar(20)
row NULL | NULL
> !autocommit off
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "codice" IS NULL AND "nome"
  IS NULL AND "nome" IS NULL
? nvarchar Neri
columns nome nvarchar(20)
row NERI
> !commit
> !autocommit on
)",
                   u"SELECT * FROM t");
}

// A datetime keeps three hundredths of a second: 10:00:00.003, .007, .010.
TEST(ReplayedKindsOfTables, AKeyOfOddMillisecondsIsComparedAsItsColumnKeepsIt) {
    changesTheName(R"(
facts Letture
fact quando datetime key 1
fact nome nvarchar(20)
> SELECT * FROM Letture
columns quando datetime(3), nome nvarchar(20)
row 2025-03-31 10:00:00.007 | Rossi
> UPDATE "Letture" SET "nome" = ? OUTPUT inserted."nome" WHERE "quando" = CAST(? AS datetime) AND
  "nome" = ?
? nvarchar Neri
? datetime 2025-03-31 10:00:00.007000
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
)",
                   u"SELECT * FROM Letture");
}

// What the server computes is never written, and comes back with the row.
TEST(ReplayedKindsOfTables, AComputedColumnComesBackWithTheRow) {
    test::Replay replay(R"(
facts t
fact id int key 1
fact nome nvarchar(20)
fact lungo int generated
> SELECT * FROM t
columns id int, nome nvarchar(20), lungo int
row 1 | Rossi | 5
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome", inserted."lungo" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns nome nvarchar(20), lungo int
row Neri | 4
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Update(u"nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"lungo")), "Long 4");
    EXPECT_NE(raisedBy([&] { rows->Fields()->Item(u"lungo")->setValue(5); }), 0);
}

}  // namespace
}  // namespace kap::ado
