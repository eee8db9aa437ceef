#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::test {
namespace {

// BULK INSERT with format files: a table of its own, a file of rows and one that tells of it.
class BulkFormats : public testing::Test {
protected:
    BulkFormats() : connection_(open(folder_.database())) {
        connection_->Execute(
            u"CREATE TABLE t (id int, nome varchar(10) DEFAULT 'senza', note varchar(20))");
    }

    void writeRows(const std::string& content) const { write(data(), content); }
    void writeFormat(const std::string& content) const { write(format(), content); }
    void load(const std::string& options = "") const {
        connection_->Execute(String("BULK INSERT t FROM '" + data() + "' WITH (FORMATFILE = '" +
                                    format() + "'" + (options.empty() ? "" : ", " + options) +
                                    ")"));
    }
    // "1|a|x;2|b|NULL".
    [[nodiscard]] std::string rows() const {
        return shown(valueOf(
            connection_,
            u"SELECT isnull(STRING_AGG(convert(varchar(10), id) + '|' + isnull(nome, 'NULL') + "
            u"'|' + isnull(note, 'NULL'), ';') WITHIN GROUP (ORDER BY id), '') FROM t"));
    }
    [[nodiscard]] std::string failure() const {
        try {
            load();
        } catch (const std::exception& error) {
            return error.what();
        }
        return "none";
    }

    Ref<ado::Connection>& connection() { return connection_; }

private:
    [[nodiscard]] std::string data() const { return folder_.file("dati.txt"); }
    [[nodiscard]] std::string format() const { return folder_.file("dati.fmt"); }
    static void write(const std::string& file, const std::string& content) {
        std::ofstream(file, std::ios::binary) << content;
    }

    TemporaryFolder folder_;
    Ref<ado::Connection> connection_;
};

TEST_F(BulkFormats, PutFieldsIntoColumnsInAnotherOrder) {
    writeRows("uno;1;x\r\ndue;2;y\r\n");
    writeFormat(
        "9.0\r\n3\r\n"
        "1 SQLCHAR 0 10 \";\"    2 nome Latin1_General_CI_AS\r\n"
        "2 SQLCHAR 0 7  \";\"    1 id   \"\"\r\n"
        "3 SQLCHAR 0 20 \"\\r\\n\" 3 note Latin1_General_CI_AS\r\n");
    load();
    EXPECT_EQ(rows(), "String 1|uno|x;2|due|y");
}

TEST_F(BulkFormats, PassOverFieldsAndLeaveColumnsToTheirDefaults) {
    writeRows("1,scarto,a\n2,altro,b\n");
    writeFormat(
        "13.0\n3\n1 SQLCHAR 0 7 \",\" 1 id \"\"\n2 SQLCHAR 0 9 \",\" 0 niente \"\"\n"
        "3 SQLCHAR 0 9 \"\\n\" 3 note \"\"\n");
    load();
    EXPECT_EQ(rows(), "String 1|senza|a;2|senza|b");
    load("FIRSTROW = 2, LASTROW = 2");
    EXPECT_EQ(rows(), "String 1|senza|a;2|senza|b;2|senza|b");
}

TEST_F(BulkFormats, TakeFieldsOfAFixedLength) {
    writeRows("1perch\xC3\xA9 x\n2due   y\n");
    writeFormat(
        "9.0\n3\n1 SQLCHAR 0 1 \"\" 1 id \"\"\n2 SQLCHAR 0 6 \"\" 2 nome \"\"\n"
        "3 SQLCHAR 0 2 \"\\n\" 3 note \"\"\n");
    load();
    EXPECT_EQ(rows(), "String 1|perch\xC3\xA9| x;2|due   |y");
}

TEST_F(BulkFormats, ReadWideText) {
    writeRows(std::string("1\0;\0\xE8\0\n\0", 8));
    writeFormat(
        "9.0\n2\n1 SQLNCHAR 0 14 \";\\0\" 1 id \"\"\n2 SQLNCHAR 0 20 \"\\n\\0\" 2 nome \"\"\n");
    load();
    EXPECT_EQ(rows(), "String 1|\xC3\xA8|NULL");
}

TEST_F(BulkFormats, AreXmlAsWell) {
    writeRows("uno & due<1\nx<2\n");
    writeFormat(
        "<?xml version=\"1.0\"?>\n<BCPFORMAT xmlns=\"urn:a\" xmlns:xsi='urn:b'>\n<RECORD>\n"
        "<FIELD ID=\"1\" xsi:type=\"CharTerm\" TERMINATOR=\"&lt;\" MAX_LENGTH=\"20\"/>\n"
        "<FIELD ID=\"2\" xsi:type='CharTerm' TERMINATOR='\\n'/>\n</RECORD>\n<ROW>\n"
        "<COLUMN SOURCE=\"2\" NAME=\"id\" xsi:type=\"SQLINT\"/>\n"
        "<COLUMN SOURCE=\"1\" NAME=\"note\" xsi:type=\"SQLVARYCHAR\"/>\n</ROW>\n</BCPFORMAT>\n");
    load();
    EXPECT_EQ(rows(), "String 1|senza|uno & due;2|senza|x");
}

TEST_F(BulkFormats, TellWhatIsWrongWithThem) {
    writeRows("1\n");
    EXPECT_NE(failure().find("does not exist"), std::string::npos);
    writeFormat("9.0\nx\n");
    EXPECT_NE(failure().find("Invalid number of columns"), std::string::npos);
    writeFormat("9.0\n2\n1 SQLCHAR 0 7 \",\" 1 id \"\"\n");
    EXPECT_NE(failure().find("Invalid number of columns"), std::string::npos);
    writeFormat("9.0\n1\n2 SQLCHAR 0 7 \"\\n\" 1 id \"\"\n");
    EXPECT_NE(failure().find("Invalid column number"), std::string::npos);
    writeFormat("9.0\n1\n1 CHAR 0 7 \"\\n\" 1 id \"\"\n");
    EXPECT_NE(failure().find("Invalid data type for column number 1"), std::string::npos);
    writeFormat("9.0\n1\n1 SQLCHAR 3 7 \"\\n\" 1 id \"\"\n");
    EXPECT_NE(failure().find("Invalid prefix for column number 1"), std::string::npos);
    writeFormat("9.0\n1\n1 SQLCHAR 0 x \"\\n\" 1 id \"\"\n");
    EXPECT_NE(failure().find("Invalid column length for column number 1"), std::string::npos);
    writeFormat("9.0\n1\n1 SQLCHAR 0 0 \"\" 1 id \"\"\n");
    EXPECT_NE(failure().find("Invalid column terminator for column number 1"), std::string::npos);
    writeFormat("9.0\n1\n1 SQLCHAR 0 7 \"\\n\" 4 id \"\"\n");
    EXPECT_NE(failure().find("Invalid destination table column number for source column 1"),
              std::string::npos);
    EXPECT_EQ(rows(), "String ");
}

TEST_F(BulkFormats, RefuseFieldsThatAreNoTexts) {
    writeRows("1\n");
    writeFormat("9.0\n1\n1 SQLINT 0 4 \"\" 1 id \"\"\n");
    EXPECT_NE(failure().find("BULK INSERT of fields of type SQLINT"), std::string::npos);
    writeFormat("9.0\n1\n1 SQLCHAR 2 4 \"\\n\" 1 id \"\"\n");
    EXPECT_NE(failure().find("BULK INSERT of fields with prefixes"), std::string::npos);
    writeFormat("<BCPFORMAT><FIELD ID=\"1\" xsi:type=\"NativeFixed\" LENGTH=\"4\"/></BCPFORMAT>");
    EXPECT_NE(failure().find("NativeFixed"), std::string::npos);
}

TEST_F(BulkFormats, KeepTheBatchesBeforeTheOneThatFails) {
    connection()->Execute(u"ALTER TABLE t ADD CONSTRAINT positivo CHECK (id > 0)");
    writeRows("1\n2\n3\n-4\n5\n");
    writeFormat("9.0\n1\n1 SQLCHAR 0 7 \"\\n\" 1 id \"\"\n");
    EXPECT_NE(failure().find("positivo"), std::string::npos);
    EXPECT_EQ(rows(), "String ");
    EXPECT_ANY_THROW(load("BATCHSIZE = 2"));
    EXPECT_EQ(rows(), "String 1|senza|NULL;2|senza|NULL");
    connection()->Execute(u"BEGIN TRAN");
    EXPECT_ANY_THROW(load("BATCHSIZE = 1"));
    connection()->Execute(u"IF @@TRANCOUNT > 0 ROLLBACK");
    EXPECT_EQ(rows(), "String 1|senza|NULL;2|senza|NULL");
}

}  // namespace
}  // namespace kap::test
