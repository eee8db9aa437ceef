// What a check of a database finds that was changed past the library.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <filesystem>
#include <string>

#include <kaputil/automation/error.hpp>

#include "support/database.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

class DamagedValues : public testing::Test {
protected:
    DamagedValues() {
        test::open(database())
            ->Execute(
                u"CREATE TABLE T (i int, s smallint, t tinyint, b bit, g bigint, m money, "
                u"sm smallmoney, d decimal(4,1), f float, r real, dt datetime, sd smalldatetime, "
                u"dy date, c char(3), v varchar(3), n nvarchar(max), x text, vb varbinary(2), "
                u"im image, u uniqueidentifier, AggID timestamp)"
                u"INSERT INTO T (i) VALUES (NULL)"
                u"INSERT INTO T (i, s, t, b, g, m, sm, d, f, r, dt, sd, dy, c, v, n, x, vb, im, u) "
                u"VALUES (-2147483648, 32767, 255, 1, 9223372036854775807, 922337203685477.5807, "
                u"-214748.3648, -999.9, 1, 0.5, '17530101', '20790606', '17530101', 'è', 'àèì', "
                u"'lungo', '', 0x0102, 0x, NEWID())"
                u"INSERT INTO T (dt, sd, dy, f) VALUES ('9999-12-31T23:59:59', '19000101', "
                u"'99991231', 1e300)");
        test::open(database())->Execute(u"CREATE VIEW V AS SELECT i FROM T");
    }

    [[nodiscard]] std::string database() const { return folder_.database("a.db"); }
    // Changes the file as a program does that knows nothing of the dialect.
    void change(const std::string& sql) const {
        sqlite3* opened = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_open(folder_.file("a.db").c_str(), &opened));
        EXPECT_EQ(SQLITE_OK, sqlite3_exec(opened, sql.c_str(), nullptr, nullptr, nullptr))
            << sqlite3_errmsg(opened);
        sqlite3_close(opened);
    }
    void restore(const std::string& bytes) const {
        for (const char* beside : {"a.db-wal", "a.db-shm"}) {
            std::filesystem::remove(folder_.file(beside));
        }
        test::putFile(folder_.file("a.db"), bytes);
    }
    // What the check says first; empty: nothing.
    [[nodiscard]] std::string found() const {
        try {
            test::open(database())->Execute(u"DBCC CHECKDB");
            return {};
        } catch (const AutomationError& error) {
            return error.what();
        }
    }

    test::TemporaryFolder folder_;
};

TEST_F(DamagedValues, AreNoneInASoundDatabase) {
    EXPECT_EQ("", found());
}

TEST_F(DamagedValues, AreFoundByTheTypeOfTheirColumn) {
    for (const auto& [column, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"i", "'x'"},
             {"i", "2147483648"},
             {"s", "40000"},
             {"t", "-1"},
             {"b", "2"},
             {"g", "x'01'"},
             {"m", "0.5"},
             {"sm", "4000000000"},
             {"d", "10000"},
             {"f", "'x'"},
             {"r", "x'00'"},
             {"r", "0.1"},
             {"r", "1e300"},
             {"dt", "-60000"},
             {"dt", "38000.0000001"},
             {"sd", "1"},
             {"sd", "38000.0001"},
             {"dy", "3000000"},
             {"dy", "38000.5"},
             {"c", "'abcd'"},
             {"c", "'ab'"},
             {"v", "'abcd'"},
             {"v", "CAST(x'E9' AS TEXT)"},
             {"n", "x'41'"},
             {"x", "CAST(x'C3' AS TEXT)"},
             {"vb", "x'010203'"},
             {"im", "'x'"},
             {"u", "'x'"},
             {"u", "'5F32E5E6-2CED-4690-A97C-9855CBB5C31G'"},
             {"AggID", "x'01'"},
             {"AggID", "x'7FFFFFFFFFFFFFFF'"}}) {
        const std::string before = test::contentOf(folder_.file("a.db"));
        change(std::string("UPDATE T SET ") + column + " = " + value + " WHERE rowid = 1");
        EXPECT_NE(std::string::npos, found().find("table 'T'")) << column << " " << value;
        restore(before);
    }
    EXPECT_EQ("", found());
}

TEST_F(DamagedValues, AreFoundInStoredTexts) {
    change("UPDATE kap_objects SET text = 'CREATE VIEW V AS SELEC i FROM T'");
    EXPECT_NE(std::string::npos, found().find("'V'"));
}

// Nor does anything of that kind end a program.
TEST_F(DamagedValues, AreFoundInObjectsWhoseTextIsThatOfAnother) {
    const std::string before = test::contentOf(folder_.file("a.db"));
    for (const char* damage :
         {"name = 'W'", "kind = 1", "kind = 3", "kind = 99",
          "text = 'CREATE VIEW W AS SELECT i FROM T'", "text = 'SELECT i FROM T'", "text = ''",
          "kind = 5, parent = 'U'", "text = text || ' ; ' || text"}) {
        SCOPED_TRACE(damage);
        change(std::string("UPDATE kap_objects SET ") + damage);
        EXPECT_NE("", found());
        const auto connection = test::open(database());
        for (const char16_t* use : {u"SELECT * FROM V", u"SELECT * FROM V", u"EXEC V"}) {
            EXPECT_THROW(connection->Execute(use), AutomationError);
        }
        restore(before);
    }
}

TEST_F(DamagedValues, AreFoundInCountersOfOtherTables) {
    test::open(database())->Execute(u"CREATE TABLE N (Numero int IDENTITY(5, 5), B int)");
    const std::string before = test::contentOf(folder_.file("a.db"));
    ASSERT_EQ("", found());
    for (const char* damage :
         {"owner = 'M' WHERE owner = 'N'", "identity_column = 'C' WHERE owner = 'N'",
          "identity_type = 'inr' WHERE owner = 'N'", "increment = 0 WHERE owner = 'N'"}) {
        SCOPED_TRACE(damage);
        change(std::string("UPDATE kap_counters SET ") + damage);
        EXPECT_NE(std::string::npos, found().find("counter of"));
        restore(before);
    }
}

TEST_F(DamagedValues, StopABackupWhenTheFileItselfIsNotWhole) {
    const auto connection = test::open(database());
    connection->Execute(u"CREATE TABLE P (A int PRIMARY KEY, B varchar(10))");
    connection->Execute(u"CREATE INDEX I ON P (B) INSERT INTO P VALUES (1, 'uno'), (2, 'due')");
    const auto backup = [&](const std::string& name) {
        connection->Execute(String("BACKUP DATABASE a TO DISK = '" + folder_.file(name) + "'"));
    };
    const auto expectNothingUnfinished = [&] {
        for (const auto& entry : std::filesystem::directory_iterator(folder_.file(""))) {
            EXPECT_EQ(std::string::npos, entry.path().string().find(".part")) << entry.path();
        }
    };
    backup("buona.db");
    expectNothingUnfinished();
    EXPECT_EQ(2, test::valueOf(test::open(folder_.database("buona.db")), u"SELECT COUNT(*) FROM P")
                     .as<std::int32_t>());
    // An entry of the index is lost.
    change(
        "PRAGMA writable_schema = ON; CREATE TABLE I2 (x); UPDATE sqlite_schema SET rootpage = "
        "(SELECT rootpage FROM sqlite_schema WHERE name = 'I2') WHERE name = 'I'; "
        "DELETE FROM sqlite_schema WHERE name = 'I2'");
    EXPECT_THROW(backup("cattiva.db"), AutomationError);
    EXPECT_FALSE(std::filesystem::exists(folder_.file("cattiva.db")));
    expectNothingUnfinished();
}

}  // namespace
}  // namespace kap
