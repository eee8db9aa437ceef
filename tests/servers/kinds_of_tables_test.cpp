// Recordsets that write to whatever can stand for a table of PostgreSQL in a query, and to rows
// that no plain key finds.
#include <gtest/gtest.h>

#include <kaputil/automation/string.hpp>

#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class ServerKindsOfTables : public test::ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        if (!IsSkipped()) {
            run("CREATE TABLE soci (id int PRIMARY KEY, nome varchar(20));"
                "INSERT INTO soci VALUES (1, 'Rossi'), (2, 'Bo')");
        }
    }
    // Changes, deletes and adds rows of something that has them, named as the query names it.
    void writes(const std::string& table, const std::string& base) const {
        const auto rows = live("SELECT * FROM " + table + " ORDER BY id");
        rows->Update(u"NOME", u"Neri");
        EXPECT_EQ(value("SELECT nome FROM " + base + " WHERE id = 1"), "String Neri");
        rows->Update(u"Nome", u"Verdi");
        rows->MoveNext();
        rows->Delete();
        rows->AddNew();
        rows->Fields()->Item(u"Id")->setValue(3);
        rows->Fields()->Item(u"Nome")->setValue(u"Gialli");
        rows->Update();
        EXPECT_EQ(value("SELECT string_agg(id || nome, ' ' ORDER BY id) FROM " + base),
                  "String 1Verdi 3Gialli");
    }
};

TEST_F(ServerKindsOfTables, AViewOfATableIsWrittenThrough) {
    run("CREATE VIEW elenco AS SELECT nome, id FROM soci");
    writes("elenco", "soci");
}

TEST_F(ServerKindsOfTables, NamesAreFoundInAnotherCase) {
    writes("SOCI", "soci");
}

TEST_F(ServerKindsOfTables, ATemporaryTableHidesTheOneBehindIt) {
    run("CREATE TEMPORARY TABLE soci (id int PRIMARY KEY, nome varchar(20));"
        "INSERT INTO soci VALUES (1, 'Rossi'), (2, 'Bo')");
    writes("soci", "soci");
    EXPECT_EQ(value("SELECT nome FROM public.soci WHERE id = 1"), "String Rossi");
}

TEST_F(ServerKindsOfTables, RowsWhoseKeyMayBeNullAreFoundByAllTheirColumns) {
    run("CREATE TABLE t (a int, b varchar(10), c int); CREATE UNIQUE INDEX ut ON t (a);"
        "INSERT INTO t VALUES (NULL, NULL, 1), (NULL, 'y', 2)");
    const auto rows = live("SELECT * FROM t ORDER BY c");
    rows->Update(u"c", 7);
    rows->Update(u"b", u"uno");
    EXPECT_EQ(value("SELECT b FROM t WHERE c = 7"), "String uno");
    EXPECT_EQ(value("SELECT b FROM t WHERE c = 2"), "String y");
    rows->Delete();
    EXPECT_EQ(value("SELECT 'x' || count(*) FROM t"), "String x1");
}

TEST_F(ServerKindsOfTables, AComputedColumnIsReadBackAndNotWritten) {
    run("CREATE TABLE t (id int PRIMARY KEY, a int, doppio int GENERATED ALWAYS AS (a * 2) STORED);"
        "INSERT INTO t (id, a) VALUES (1, 4)");
    const auto rows = live("SELECT * FROM t");
    rows->Update(u"a", 6);
    EXPECT_EQ(shown(fieldOf(rows, u"doppio")), "Long 12");
    EXPECT_NE(raisedBy([&] {
                  rows->Fields()->Item(u"doppio")->setValue(5);
                  rows->Update();
              }),
              0);
}

TEST_F(ServerKindsOfTables, TextsWithoutALimitAreWrittenWhole) {
    run("CREATE TABLE t (id int PRIMARY KEY, a text, b varchar); INSERT INTO t VALUES (1)");
    constexpr std::size_t kLong = 100000;
    const String text(std::u16string(kLong, u'à'));
    const auto rows = live("SELECT * FROM t");
    rows->Update(u"a", text);
    rows->Update(u"b", text);
    const auto fresh = live("SELECT * FROM t");
    EXPECT_EQ(fieldOf(fresh, u"a").as<String>(), text);
    EXPECT_EQ(fieldOf(fresh, u"b").as<String>(), text);
    fresh->Update(u"b", u"corto");
    EXPECT_EQ(value("SELECT b FROM t"), "String corto");
}

}  // namespace
}  // namespace kap::ado
