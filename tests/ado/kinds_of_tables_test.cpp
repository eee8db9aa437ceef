// Recordsets that write to whatever can stand for a table in a query, and to rows that no plain key
// finds.
#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::raisedBy;
using test::shown;

class KindsOfTables : public testing::Test {
protected:
    void SetUp() override {
        if (test::OtherServer::given() != nullptr && test::OtherServer::given()->isPostgres()) {
            GTEST_SKIP() << "the server does not speak Transact-SQL";
        }
        connection_ = test::openMemory();
    }
    // Each batch is sent by itself, as a view or a schema must be.
    void run(std::initializer_list<const char16_t*> batches) const {
        for (const char16_t* batch : batches) {
            connection_->Execute(batch);
        }
    }
    [[nodiscard]] std::string value(const char16_t* query) const {
        return shown(test::valueOf(connection_, query));
    }
    // Changes, deletes and adds rows of a table that has Id and Nome, and the rows 1 and 2; `table`
    // is how the query names it, and `base` where the rows are.
    void writes(const String& table, const String& base) const {
        const auto rows = openLive(connection_, u"SELECT * FROM " + table + u" ORDER BY Id");
        rows->Update(u"nOmE", u"Neri");
        EXPECT_EQ(value((u"SELECT Nome FROM " + base + u" WHERE Id = 1").units().c_str()),
                  "String Neri");
        rows->Update(u"Nome", u"Verdi");
        rows->MoveNext();
        rows->Delete();
        rows->AddNew();
        rows->Fields()->Item(u"id")->setValue(3);
        rows->Fields()->Item(u"NOME")->setValue(u"Gialli");
        rows->Update();
        const auto left = connection_->Execute(u"SELECT Id, Nome FROM " + base + u" ORDER BY Id");
        EXPECT_EQ(shown(fieldOf(left, 0)) + shown(fieldOf(left, 1)), "Long 1String Verdi");
        left->MoveNext();
        EXPECT_EQ(shown(fieldOf(left, 0)) + shown(fieldOf(left, 1)), "Long 3String Gialli");
        left->MoveNext();
        EXPECT_TRUE(left->Eof());
    }

    Ref<Connection> connection_;
};

constexpr const char16_t* kSoci =
    u"CREATE TABLE Soci (Id int NOT NULL PRIMARY KEY, Nome varchar(20))";
constexpr const char16_t* kTwo =
    u"INSERT INTO Soci VALUES (1, 'Rossi') INSERT INTO Soci VALUES (2, 'Bo')";

TEST_F(KindsOfTables, AViewOfATableIsWrittenThrough) {
    run({kSoci, kTwo, u"CREATE VIEW Elenco AS SELECT Nome, Id FROM Soci"});
    writes(u"Elenco", u"Soci");
}

TEST_F(KindsOfTables, NamesAreFoundInAnotherCase) {
    run({kSoci, kTwo});
    writes(u"SOCI", u"Soci");
}

TEST_F(KindsOfTables, ATableOfAnotherSchemaIsNotThatOfTheUsualOne) {
    run({kSoci, kTwo, u"CREATE SCHEMA storico",
         u"CREATE TABLE storico.Soci (Id int NOT NULL PRIMARY KEY, Nome varchar(20))",
         u"INSERT INTO storico.Soci SELECT Id, Nome FROM Soci"});
    writes(u"storico.Soci", u"storico.Soci");
    EXPECT_EQ(value(u"SELECT Nome FROM Soci WHERE Id = 1"), "String Rossi");
}

TEST_F(KindsOfTables, ASynonymIsItsTable) {
    run({kSoci, kTwo});
    try {
        run({u"CREATE SYNONYM Amici FOR dbo.Soci"});
    } catch (const AutomationError& error) {
        GTEST_SKIP() << "the server has no synonyms: " << error.what();
    }
    writes(u"Amici", u"Soci");
}

TEST_F(KindsOfTables, ATemporaryTableIsWrittenAsAnyOther) {
    run({u"CREATE TABLE #soci (Id int NOT NULL PRIMARY KEY, Nome varchar(20))",
         u"INSERT INTO #soci VALUES (1, 'Rossi') INSERT INTO #soci VALUES (2, 'Bo')"});
    writes(u"#soci", u"#soci");
}

TEST_F(KindsOfTables, RowsWhoseKeyMayBeNullAreFoundByAllTheirColumns) {
    run({u"CREATE TABLE t (a int NULL, b varchar(10) NULL, c int NULL)",
         u"CREATE UNIQUE INDEX ut ON t (a)",
         u"INSERT INTO t VALUES (NULL, NULL, 1) INSERT INTO t VALUES (2, 'x', 2)"});
    const auto rows = openLive(connection_, u"SELECT * FROM t ORDER BY c");
    rows->Update(u"c", 7);
    rows->Update(u"b", u"uno");
    EXPECT_EQ(value(u"SELECT b FROM t WHERE a IS NULL AND c = 7"), "String uno");
    EXPECT_EQ(value(u"SELECT b FROM t WHERE a = 2"), "String x");
    rows->Delete();
    EXPECT_EQ(value(u"SELECT COUNT(*) FROM t"), "Long 1");
}

TEST_F(KindsOfTables, AComputedColumnIsNotWritten) {
    run({u"CREATE TABLE t (Id int NOT NULL PRIMARY KEY, a int, doppio AS a * 2)",
         u"INSERT INTO t (Id, a) VALUES (1, 4)"});
    const auto rows = openLive(connection_, u"SELECT * FROM t");
    rows->Update(u"a", 6);
    EXPECT_EQ(value(u"SELECT doppio FROM t"), "Long 12");
    EXPECT_NE(raisedBy([&] {
                  rows->Fields()->Item(u"doppio")->setValue(5);
                  rows->Update();
              }),
              0);
}

TEST_F(KindsOfTables, AnIdentityIsReadBackAndFindsItsRow) {
    run({u"CREATE TABLE t (Id int IDENTITY(10,5) PRIMARY KEY, a varchar(10) DEFAULT 'x')"});
    const auto rows = openLive(connection_, u"SELECT * FROM t");
    for (const char* expected : {"Long 10", "Long 15"}) {
        rows->AddNew();
        rows->Update();
        EXPECT_EQ(shown(fieldOf(rows, u"Id")), expected);
        rows->Update(u"a", u"y");
    }
    EXPECT_EQ(value(u"SELECT COUNT(*) FROM t WHERE a = 'y'"), "Long 2");
}

TEST_F(KindsOfTables, TextsWithoutALimitAreWrittenWhole) {
    run(
        {u"CREATE TABLE t (Id int NOT NULL PRIMARY KEY, a varchar(max), b nvarchar(max), c text, d "
         u"varbinary(max))",
         u"INSERT INTO t (Id, a) VALUES (1, 'x')"});
    constexpr std::size_t kLong = 100000;
    const String text(std::u16string(kLong, u'à'));
    const auto rows = openLive(connection_, u"SELECT * FROM t");
    for (const char16_t* column : {u"a", u"b", u"c"}) {
        rows->Update(column, text);
        EXPECT_EQ(fieldOf(rows, column).as<String>().size(), kLong);
    }
    const auto fresh = openLive(connection_, u"SELECT * FROM t");
    for (const char16_t* column : {u"a", u"b", u"c"}) {
        EXPECT_EQ(fieldOf(fresh, column).as<String>(), text);
    }
    fresh->Update(u"b", u"corto");
    EXPECT_EQ(value(u"SELECT b FROM t"), "String corto");
}

}  // namespace
}  // namespace kap::ado
