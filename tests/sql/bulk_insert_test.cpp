#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::test {
namespace {

// A table of its own and a file beside the database.
class BulkInsert : public testing::Test {
protected:
    BulkInsert() : connection_(open(folder_.database())) {
        connection_->Execute(
            u"CREATE TABLE t (id int NOT NULL, nome varchar(10) DEFAULT 'senza', prezzo money)");
    }

    void write(const std::string& content) const {
        std::ofstream(file(), std::ios::binary) << content;
    }
    [[nodiscard]] std::string file() const { return folder_.file("dati.txt"); }
    void load(const std::string& options) const {
        connection_->Execute(String("BULK INSERT t FROM '" + file() + "'" +
                                    (options.empty() ? "" : " WITH (" + options + ")")));
    }
    // "1|a|2.00;2|b|NULL".
    [[nodiscard]] std::string rows() const {
        return text(
            "SELECT isnull(STRING_AGG(convert(varchar(10), id) + '|' + isnull(nome, 'NULL') + '|' "
            "+ isnull(convert(varchar(20), prezzo), 'NULL'), ';') WITHIN GROUP (ORDER BY id), '') "
            "FROM t");
    }
    [[nodiscard]] std::string text(const std::string& query) const {
        return shown(valueOf(connection_, String(query)));
    }
    [[nodiscard]] std::string failure(const std::string& options) const {
        try {
            load(options);
        } catch (const std::exception& error) {
            return error.what();
        }
        return "none";
    }

    TemporaryFolder folder_;
    Ref<ado::Connection> connection_;
};

TEST_F(BulkInsert, ReadsTabsAndEndsOfLinesOfEitherKind) {
    write("1\ta\t2.50\r\n2\tb\t\n3\tc\t4");
    load("");
    EXPECT_EQ(rows(), "String 1|a|2.50;2|b|NULL;3|c|4.00");
}

TEST_F(BulkInsert, ReadsOtherTerminatorsAndSomeOfTheRows) {
    write("id;nome;prezzo|1;a;1|2;b;2|3;c;3|");
    load("FIELDTERMINATOR = ';', ROWTERMINATOR = '|', FIRSTROW = 2, LASTROW = 3, TABLOCK");
    EXPECT_EQ(rows(), "String 1|a|1.00;2|b|2.00");
    connection_->Execute(u"DELETE FROM t");
    write("1,a,1\n2,b,2\n");
    load("FIELDTERMINATOR = ',', ROWTERMINATOR = '0x0a', BATCHSIZE = 1");
    EXPECT_EQ(rows(), "String 1|a|1.00;2|b|2.00");
}

TEST_F(BulkInsert, GivesEmptyFieldsTheirDefaultsUnlessNullsAreKept) {
    write("1,,5\n");
    load("FIELDTERMINATOR = ','");
    EXPECT_EQ(rows(), "String 1|senza|5.00");
    connection_->Execute(u"DELETE FROM t");
    load("FIELDTERMINATOR = ',', KEEPNULLS");
    EXPECT_EQ(rows(), "String 1|NULL|5.00");
}

TEST_F(BulkInsert, ReadsQuotedFieldsOfCsv) {
    write("1,\"a, \"\"b\"\"\",\"7\"\n2,\"\",\n");
    load("FORMAT = 'CSV'");
    EXPECT_EQ(rows(), "String 1|a, \"b\"|7.00;2||NULL");
}

TEST_F(BulkInsert, ReadsTheLettersOfItsCodePage) {
    write("1\tperch\xE9\t1\n");
    load("CODEPAGE = '1252'");
    write("2\tperch\xC3\xA9\t1\n");
    load("CODEPAGE = '65001'");
    write(
        std::string("3\0\t\0\xE9\0\t\0"
                    "1\0\n\0",
                    12));
    load("DATAFILETYPE = 'widechar'");
    EXPECT_EQ(rows(), "String 1|perch\u00E9|1.00;2|perch\u00E9|1.00;3|\u00E9|1.00");
}

TEST_F(BulkInsert, TellsWhichFieldIsNotOfItsCodePage) {
    write("1\ta\t1\n2\tperch\xE9\t2\n3\tc\t3\n");
    EXPECT_NE(failure("CODEPAGE = '65001'")
                  .find("invalid character for the specified codepage) for row 2, column 2 (nome)"),
              std::string::npos);
    EXPECT_EQ(rows(), "String 1|a|1.00;3|c|3.00");
}

// A row would have no end, and the file none either.
TEST_F(BulkInsert, RefusesRowsWithoutAnEnd) {
    write("1\ta\t1\n");
    EXPECT_NE(failure("ROWTERMINATOR = ''").find("ROWTERMINATOR"), std::string::npos);
    EXPECT_NE(failure("ROWTERMINATOR = '', FIELDTERMINATOR = ''").find("ROWTERMINATOR"),
              std::string::npos);
    EXPECT_EQ(rows(), "String ");
}

TEST_F(BulkInsert, EndsWhenItsTimeIsOver) {
    std::string many;
    for (int i = 0; i < 200'000; ++i) {
        many += "1\ta\t1\n";
    }
    write(many);
    connection_->setCommandTimeout(1);
    EXPECT_NE(failure("").find("imeout"), std::string::npos);
    connection_->setCommandTimeout(0);
    EXPECT_EQ(rows(), "String ");
}

TEST_F(BulkInsert, TellsWhichFieldsCannotBeReadAndLeavesTheirRowsOut) {
    write("1\ta\t1\nx\tb\t2\n3\ttoo long a name\t3\n4\td\t4\n");
    EXPECT_NE(failure("").find("row 2, column 1 (id)"), std::string::npos);
    EXPECT_EQ(rows(), "String 1|a|1.00;4|d|4.00");
    connection_->Execute(u"DELETE FROM t");
    EXPECT_NE(failure("FIRSTROW = 3").find("(truncation) for row 3, column 2 (nome)"),
              std::string::npos);
    connection_->Execute(u"DELETE FROM t");
    EXPECT_NE(failure("MAXERRORS = 1"), "none");
    EXPECT_EQ(rows(), "String ");
}

TEST_F(BulkInsert, RefusesFilesThatAreNotThereOrEndTooEarly) {
    EXPECT_NE(failure("").find("does not exist"), std::string::npos);
    write("1\ta\t1\n2\tb");
    EXPECT_NE(failure("").find("unexpected end of file"), std::string::npos);
    EXPECT_EQ(rows(), "String ");
    EXPECT_NE(failure("DATAFILETYPE = 'native'").find("DATAFILETYPE"), std::string::npos);
    EXPECT_NE(failure("ERRORFILE = 'x'").find("ERRORFILE"), std::string::npos);
}

TEST_F(BulkInsert, KeepsIdentitiesAndFiresTriggersWhenItIsTold) {
    connection_->Execute(
        u"DROP TABLE t CREATE TABLE t (id int IDENTITY(1, 1), nome varchar(10), prezzo money) "
        u"CREATE TABLE log (n int)");
    connection_->Execute(u"CREATE TRIGGER tr ON t AFTER INSERT AS INSERT INTO log VALUES (1)");
    write("50\ta\t1\n60\tb\t2\n");
    load("");
    EXPECT_EQ(rows(), "String 1|a|1.00;2|b|2.00");
    EXPECT_EQ(text("SELECT count(*) FROM log"), "Long 0");
    load("KEEPIDENTITY, FIRE_TRIGGERS");
    EXPECT_EQ(rows(), "String 1|a|1.00;2|b|2.00;50|a|1.00;60|b|2.00");
    EXPECT_EQ(text("SELECT count(*) FROM log"), "Long 2");
}

TEST_F(BulkInsert, ChecksConstraintsAndKeepsAllRowsOrNone) {
    connection_->Execute(u"ALTER TABLE t ADD CONSTRAINT positivo CHECK (prezzo > 0)");
    write("1\ta\t1\n2\tb\t-1\n");
    EXPECT_NE(failure("").find("positivo"), std::string::npos);
    EXPECT_EQ(rows(), "String ");
}

// OPENROWSET(BULK ...): one row of one column, whose type says how the bytes are read.
TEST_F(BulkInsert, AWholeFileIsOneValue) {
    write("prezzo \xC3\xA8 5\r\n");
    const std::string from = " FROM OPENROWSET(BULK '" + file() + "', ";
    EXPECT_EQ(text("SELECT BulkColumn" + from + "SINGLE_CLOB) AS x"),
              "String prezzo \xC3\xA8 5\r\n");
    EXPECT_EQ(text("SELECT len(x.c)" + from + "single_clob) AS x (c)"), "Decimal 12");
    EXPECT_EQ(text("SELECT convert(varchar(40), BulkColumn, 2)" + from + "SINGLE_BLOB) x"),
              "String 7072657A7A6F20C3A820350D0A");
    EXPECT_EQ(text("SELECT count(*) FROM t RIGHT JOIN OPENROWSET(BULK N'" + file() +
                   "', SINGLE_BLOB) AS x ON t.id = datalength(x.BulkColumn)"),
              "Long 1");
    connection_->Execute(
        String("UPDATE t SET nome = 'x'; INSERT INTO t (id, nome) SELECT 7, "
               "left(BulkColumn, 6)" +
               from + "SINGLE_CLOB) AS f"));
    EXPECT_EQ(rows(), "String 7|prezzo|NULL");
    // What is in the file counts when the statement runs.
    write("z");
    EXPECT_EQ(text("SELECT BulkColumn" + from + "SINGLE_CLOB) AS x"), "String z");
}

TEST_F(BulkInsert, AWholeWideFileIsOneValue) {
    write(
        std::string("\xFF\xFE"
                    "a\0\xE8\0",
                    6));
    EXPECT_EQ(text("SELECT BulkColumn FROM OPENROWSET(BULK '" + file() + "', SINGLE_NCLOB) AS x"),
              "String a\xC3\xA8");
    const auto failureOf = [&](const std::string& query) {
        try {
            (void)text(query);
        } catch (const std::exception& error) {
            return std::string(error.what());
        }
        return std::string("none");
    };
    EXPECT_NE(failureOf("SELECT 1 FROM OPENROWSET(BULK '" + file() + "', SINGLE_CLOB)")
                  .find("correlation name"),
              std::string::npos);
    EXPECT_NE(failureOf("SELECT * FROM OPENROWSET(BULK '" + file() + ".no', SINGLE_CLOB) AS x")
                  .find("does not exist"),
              std::string::npos);
    write("narrow");
    EXPECT_NE(failureOf("SELECT * FROM OPENROWSET(BULK '" + file() + "', SINGLE_NCLOB) AS x")
                  .find("SINGLE_NCLOB requires a UNICODE"),
              std::string::npos);
}

}  // namespace
}  // namespace kap::test
