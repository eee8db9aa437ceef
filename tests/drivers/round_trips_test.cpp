// How often the record members ask the server.
#include <gtest/gtest.h>

#include <kaputil/core/cproprieta.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/numbering/document_numbers.hpp>

#include "replay.hpp"
#include "support/shown.hpp"

namespace kap::db {
namespace {

using test::shown;

const std::string kFacts = R"(
facts t
fact id int key 1
fact nome nvarchar(20)
fact AggID timestamp
)";
const std::string kRead = R"(
> SELECT * FROM t WHERE id = 1
columns id int, nome nvarchar(20), AggID timestamp(8)
row 1 | Rossi | 00000000000007D1
)";
const std::string kUpdate = R"(
> UPDATE "t" SET "id" = ?, "nome" = ? OUTPUT inserted."id", inserted."nome", inserted."AggID" WHERE
  "id" = ? AND "AggID" = ? AND "id" = ? AND "nome" = ?
? int 1
? nvarchar Neri
? int 1
? varbinary 00000000000007D1
? int 1
? nvarchar Rossi
columns id int, nome nvarchar(20), AggID timestamp(8)
row 1 | Neri | 00000000000007D2
)";
const std::string kDelete = R"(
> DELETE FROM "t" OUTPUT 1 WHERE "id" = ? AND "AggID" = ?
? int 1
? varbinary 00000000000007D1
columns n int
row 1
)";

TEST(RoundTrips, AreOneToReadTwoToWriteAndOneMoreForATableTheFirstTime) {
    test::Replay replay(kFacts + kRead + kRead + kRead + kUpdate +
                        "> INSERT INTO log VALUES (1)\ncount 1\n" + kRead + kDelete);
    Variant connection(replay.open());
    Variant text;
    EXPECT_EQ(replay.roundTrips(), 0);  // nothing is asked by opening
    EXPECT_TRUE(DB_Read(connection, u"SELECT * FROM t WHERE id = 1", text));
    EXPECT_EQ(replay.roundTrips(), 2);
    EXPECT_TRUE(DB_Read(connection, u"SELECT * FROM t WHERE id = 1", text));
    EXPECT_EQ(replay.roundTrips(), 1);
    auto record = make<CProprieta>();
    record->Scrivi(u"", text);
    record->Scrivi(u"nome", u"Neri");
    auto error = make<CErrore>();
    EXPECT_TRUE(DB_Update(connection, u"SELECT * FROM t WHERE id = 1", record->Leggi(), *error));
    EXPECT_EQ(replay.roundTrips(), 2);
    ado::connectionOf(connection)->Execute(u"INSERT INTO log VALUES (1)");
    EXPECT_EQ(replay.roundTrips(), 1);  // and it has forgotten no table
    EXPECT_TRUE(DB_Delete(connection, u"SELECT * FROM t WHERE id = 1", text, *error));
    EXPECT_EQ(replay.roundTrips(), 2);
}

const std::string kCounterFacts = R"(
facts vtx_TabPro
fact Codice varchar(5) key 1
fact Anno smallint key 2
fact n_Def int
fact GestProvv int
)";

std::string counterWritten(const std::string& query, int from) {
    return "> " + query +
           "\ncolumns Codice varchar(5), Anno smallint, n_Def int, GestProvv int\nrow FAT | 2025 "
           "| " +
           std::to_string(from) +
           " | 0\n> UPDATE \"vtx_TabPro\" SET \"n_Def\" = ? OUTPUT inserted.\"n_Def\" WHERE "
           "\"Codice\" "
           "= "
           "? AND \"Anno\" = ? AND \"n_Def\" = ?\n? int " +
           std::to_string(from + 1) + "\n? nvarchar FAT\n? smallint 2025\n? int " +
           std::to_string(from) + "\ncolumns n_Def int\nrow " + std::to_string(from + 1) + "\n";
}

const char* const kByCode = "SELECT TOP 1 * FROM vtx_TabPro WHERE Codice='FAT' AND Anno = 2025";
const char* const kByType = "SELECT * FROM vtx_TabPro WHERE Codice = 'FAT' AND ANNO = 2025";
const std::string kTypeRow = R"(
> SELECT * FROM vtx_TabDoc WHERE CODICE ='FAI'
columns Codice varchar(3), TipoProg varchar(5)
row FAI | FAT
)";

TEST(RoundTrips, AreTwoForANumberByItsCounterAndThreeByTheTypeOfDocument) {
    const std::string documentFacts =
        "facts vtx_TabDoc\nfact Codice varchar(3) key 1\nfact TipoProg "
        "varchar(5)\n";
    test::Replay replay(kCounterFacts + counterWritten(kByCode, 7) + counterWritten(kByCode, 8) +
                        documentFacts + kTypeRow + counterWritten(kByType, 9) + kTypeRow +
                        counterWritten(kByType, 10));
    Variant connection(replay.open());
    Ref<CErrore> error;
    const auto take = [&](const char16_t* type, const char16_t* code) {
        return shown(numbering::Progressivi(type, u"D", u"S", 2025, 0, connection, code,
                                            u"vtx_TabDoc", 0, error));
    };
    EXPECT_EQ(take(u"", u"FAT"), "Long 8");
    EXPECT_EQ(replay.roundTrips(), 3);  // the first time
    EXPECT_EQ(take(u"", u"FAT"), "Long 9");
    EXPECT_EQ(replay.roundTrips(), 2);
    EXPECT_EQ(take(u"FAI", u"°°°"), "Long 10");
    EXPECT_EQ(replay.roundTrips(), 4);
    EXPECT_EQ(take(u"FAI", u"°°°"), "Long 11");
    EXPECT_EQ(replay.roundTrips(), 3);
}

}  // namespace
}  // namespace kap::db
