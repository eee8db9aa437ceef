#include <kaputil/host/text_export.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/platform/message_box.hpp>

#include "drivers/text/text_driver.hpp"
#include "support/database.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"
#include "support/text_files.hpp"

namespace kap::host {
namespace {

using test::contentOf;
using test::raisedBy;

class TextExport : public testing::Test {
protected:
    TextExport() {
        platform::setMessageLog(messages_.file("messaggi.log"));
        std::filesystem::create_directory(folder_.file("scambio"));
    }
    ~TextExport() override { platform::setMessageLog(std::nullopt); }

    bool exportQuery(const std::string& query, bool newSchema = true) {
        return EsportaTXT(String(query), connection_, u"EXPORT.TXT", path_, newSchema);
    }
    [[nodiscard]] Ref<ado::Connection> connection() const { return ado::connectionOf(connection_); }
    [[nodiscard]] std::string content() const {
        return contentOf(folder_.file("scambio/EXPORT.TXT"));
    }
    [[nodiscard]] std::string schema() const {
        return contentOf(folder_.file("scambio/SCHEMA.INI"));
    }
    void putSchema(const std::string& lines) const {
        test::putFile(folder_.file("scambio/Schema.ini"), "[EXPORT.TXT]\r\n" + lines);
    }
    [[nodiscard]] std::string logged() const {
        const std::string log = contentOf(messages_.file("messaggi.log"));
        return log.substr(std::min(log.find('\t'), log.size()));
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
    test::TemporaryFolder messages_;
    Variant connection_{test::openMemory()};
    std::string moment_ = test::momentType(connection());
    String path_ = folder_.file("scambio");
};

constexpr const char* kFixedKeys =
    "[EXPORT.TXT]\r\nColNameHeader=False\r\nFormat=FixedLength\r\nMaxScanRows=25\r\n"
    "CharacterSet=OEM\r\nCurrencyDigits=3\r\n";

TEST_F(TextExport, DescribesEveryTypeAndWritesTheRows) {
    KAP_NEEDS_DIALECT(connection(), "there are no types of money and small numbers");
    EXPECT_TRUE(exportQuery(
        "SELECT CAST('Rossi' AS varchar(10)) AS NOME, CAST('x' AS char(3)) AS SIGLA, "
        "CAST(12 AS smallint) AS RIGA, CAST(1234 AS int) AS CODICE, CAST(2.5 AS real) AS PESO, "
        "CAST(1.25 AS float) AS MISURA, CAST(9.5 AS money) AS PREZZO, CAST(7 AS tinyint) AS N, "
        "CAST('2003-12-25' AS datetime) AS GIORNO"));
    EXPECT_EQ(schema(), std::string(kFixedKeys) +
                            "col1=NOME Char Width 10\r\ncol2=SIGLA Char Width 3\r\n"
                            "col3=RIGA Short Width 2\r\ncol4=CODICE Integer Width 4\r\n"
                            "col5=PESO Single Width 4\r\ncol6=MISURA Float Width 8\r\n"
                            "col7=PREZZO Currency Width 8\r\ncol8=N Byte Width 1\r\n"
                            "col9=GIORNO Date Width 18\r\n");
    EXPECT_EQ(content(), "Rossi     x  121234 2,5    1,25   9,500725/12/2003        \r\n");
}

TEST_F(TextExport, PutsTheSizeOfALongTextBehindItsType) {
    EXPECT_TRUE(exportQuery("SELECT CAST('x' AS varchar(300)) AS \"NOTE\""));
    EXPECT_TRUE(schema().ends_with("col1=NOTE LongChar300 Width 300\r\n")) << schema();
    EXPECT_EQ(content(), "x" + std::string(299, ' ') + "\r\n");
}

TEST_F(TextExport, TakesATextOfTheUsualSizeForOne) {
    KAP_NEEDS_DIALECT(connection(), "a text of 255 characters is announced as an endless one");
    EXPECT_TRUE(exportQuery("SELECT CAST('x' AS varchar(255)) AS NOTE"));
    EXPECT_TRUE(schema().ends_with("col1=NOTE Char Width 255\r\n")) << schema();
}

TEST_F(TextExport, GivesTheFolderItsBackslash) {
    EXPECT_TRUE(exportQuery("SELECT 1 AS A"));
    EXPECT_EQ(path_, String(folder_.file("scambio") + "\\"));
    EXPECT_TRUE(exportQuery("SELECT 1 AS A"));
    EXPECT_EQ(path_, String(folder_.file("scambio") + "\\"));
}

TEST_F(TextExport, BeginsWithAnEmptyFile) {
    EXPECT_TRUE(exportQuery("SELECT 1 AS A UNION ALL SELECT 2"));
    EXPECT_TRUE(exportQuery("SELECT 3 AS A"));
    EXPECT_EQ(content(), "   3\r\n");
    EXPECT_TRUE(exportQuery("SELECT 3 AS A WHERE 1 = 0"));
    EXPECT_EQ(content(), "");
}

TEST_F(TextExport, LeavesTheColumnsOfAnEarlierExportInTheSchema) {
    EXPECT_TRUE(exportQuery("SELECT 1 AS \"A\", 2 AS \"B\""));
    EXPECT_TRUE(exportQuery("SELECT 3 AS \"C\""));
    EXPECT_EQ(schema(),
              std::string(kFixedKeys) + "col1=C Integer Width 4\r\ncol2=B Integer Width 4\r\n");
    EXPECT_EQ(content(), "   3    \r\n");
}

TEST_F(TextExport, WritesAFieldIntoEveryColumnOfItsName) {
    EXPECT_TRUE(exportQuery("SELECT 1 AS A, 2 AS B"));
    EXPECT_TRUE(exportQuery("SELECT 3 AS B"));
    EXPECT_EQ(content(), "   3   3\r\n");
    EXPECT_TRUE(exportQuery("SELECT 1 AS A, 2 AS A"));
    EXPECT_EQ(content(), "   2   2\r\n");
}

TEST_F(TextExport, DescribesAFieldByItsNameTypeAndSize) {
    EXPECT_TRUE(exportQuery("SELECT CAST('x' AS varchar(50)) AS \"NOME\""));
    EXPECT_EQ(schema(), std::string(kFixedKeys) + "col1=NOME Char Width 50\r\n");
}

TEST_F(TextExport, WritesATimeThatIsTooLongForItsColumnToTheMinute) {
    EXPECT_TRUE(exportQuery("SELECT CAST('2003-12-25 9:11:12' AS " + moment_ + ") AS A, " +
                            "CAST('2003-12-25 10:11:12' AS " + moment_ + ") AS B"));
    EXPECT_EQ(content(), "25/12/2003 9:11:1225/12/2003 10:11  \r\n");
}

TEST_F(TextExport, WritesTheEuroSignAloneAsEur) {
    EXPECT_TRUE(
        exportQuery("SELECT CAST('€' AS varchar(5)) AS A, CAST('€' AS varchar(2)) AS B, "
                    "CAST('€' AS varchar(1)) AS C"));
    EXPECT_EQ(content(), "EUR  EUE\r\n");
}

TEST_F(TextExport, TellsWhichCharactersTheFileCannotHold) {
    const auto told = [&](const char* query) {
        try {
            exportQuery(query);
        } catch (const AutomationError& error) {
            EXPECT_EQ(error.number(), ado::errors::kTruncated);
            return error.description().utf8();
        }
        return std::string("nothing");
    };
    EXPECT_EQ(told("SELECT CAST('a' AS varchar(9)) AS \"NOTE\" UNION ALL "
                   "SELECT CAST('“5 €” “x”' AS varchar(9))"),
              "Riga 2, colonna NOTE: caratteri che il file non può contenere: “€”");
    EXPECT_EQ(content(), "a        \r\n");
    // Without its line in Schema.ini the column would be left out of the file.
    EXPECT_EQ(raisedBy([&] { return exportQuery("SELECT 1 AS \"Ω\""); }), errors::kInvalidArgument);
}

TEST_F(TextExport, DescribesItsColumnsInTheEncodingOfProgramsOnWindows) {
    EXPECT_TRUE(exportQuery("SELECT CAST('perché' AS varchar(8)) AS \"Città\""));
    EXPECT_EQ(schema(), std::string(kFixedKeys) + "col1=Citt\xE0 Char Width 8\r\n");
    EXPECT_EQ(content(), "perch\x82  \r\n");
}

TEST_F(TextExport, WritesNullLikeTheEuroSign) {
    // Nulls of texts were replaced by the opening; whole numbers and dates keep theirs.
    EXPECT_TRUE(exportQuery("SELECT CAST(NULL AS int) AS A, CAST(NULL AS " + moment_ + ") AS B, " +
                            "CAST(NULL AS varchar(3)) AS C"));
    EXPECT_EQ(content(), " EUREUR                  \r\n");
}

TEST_F(TextExport, UsesASchemaThatIsThereAsItStands) {
    const std::string lines =
        "Format=Delimited(;)\r\nCharacterSet=UTF-8\r\nCol1=vuota Char\r\nCol2=nome Char\r\n";
    putSchema(lines);
    EXPECT_TRUE(exportQuery("SELECT 'però' AS NOME, 12 AS ALTRO", false));
    EXPECT_EQ(contentOf(folder_.file("scambio/Schema.ini")), "[EXPORT.TXT]\r\n" + lines);
    EXPECT_EQ(content(), "\"vuota\";\"nome\"\r\n;\"per\xC3\xB2\"\r\n");
}

TEST_F(TextExport, TellsThatTheSchemaIsMissing) {
    EXPECT_FALSE(exportQuery("SELECT 1 AS A", false));
    EXPECT_EQ(logged(), "\twarning\tEsportazione File di Testo\tImpossibile Trovare il File " +
                            folder_.file("scambio") + "\\Schema.ini\n");
    EXPECT_EQ(content(), "");
}

TEST_F(TextExport, TellsATypeThatItCannotDescribe) {
    KAP_NEEDS_DIALECT(connection(), "a bit is a text of bits there");
    EXPECT_FALSE(
        exportQuery("SELECT 1 AS A, CAST(1 AS bit) AS ATTIVO, CAST('x' AS varchar(3)) AS C"));
    EXPECT_EQ(logged(), "\terror\ttest_host\tTipo non Previsto 11 Nel campo ATTIVO\n");
    EXPECT_EQ(schema(), std::string(kFixedKeys) +
                            "col1=A Integer Width 4\r\ncol2=ATTIVO Integer Width 2\r\n");
    EXPECT_EQ(content(), "");
}

TEST_F(TextExport, NamesTheRowAndTheColumnOfAValueThatDoesNotFit) {
    EXPECT_EQ(
        raisedBy([&] { return exportQuery("SELECT 1 AS \"CODICE\" UNION ALL SELECT 12345"); }),
        ado::errors::kTruncated);
    EXPECT_EQ(content(), "   1\r\n");
    try {
        exportQuery("SELECT 1 AS \"CODICE\" UNION ALL SELECT 12345");
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.description().utf8(),
                  "Riga 2, colonna CODICE: \"12345\" non sta in 4 caratteri.");
    }
}

TEST_F(TextExport, PassesOnTheErrorsOfFilesAndQueries) {
    path_ = folder_.file("manca");
    EXPECT_EQ(raisedBy([&] { return exportQuery("SELECT 1 AS A"); }), errors::kPathNotFound);
    path_ = folder_.file("scambio");
    EXPECT_EQ(raisedBy([&] { return exportQuery("SELECT * FROM Inesistente"); }),
              test::unknownTableNumber());
}

TEST_F(TextExport, LeavesTheRowsThatWereToldInTheFileWhenTheProgressIsBrokenOff) {
    const auto breakOff = [](std::int64_t done, std::int64_t /*all*/) {
        if (done == 2) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(EsportaTXT(u"SELECT 1 AS A UNION ALL SELECT 2 UNION ALL SELECT 3", connection_,
                            u"EXPORT.TXT", path_, true, breakOff),
                 std::runtime_error);
    EXPECT_EQ(content(), "   1\r\n   2\r\n");
}

TEST_F(TextExport, TellsItsProgress) {
    std::string told;
    EXPECT_TRUE(EsportaTXT(u"SELECT 1 AS A UNION ALL SELECT 2", connection_, u"EXPORT.TXT", path_,
                           true, [&](std::int64_t done, std::int64_t all) {
                               told += std::to_string(done) + "/" + std::to_string(all) + " ";
                           }));
    EXPECT_EQ(told, "1/2 2/2 ");
}

// Not all of them are ever here at once: how many there are is known when the last ones have come.
TEST_F(TextExport, PassesRowsOnWindowByWindow) {
    const auto database = test::open("Provider=KapLocal;Data Source=" + folder_.file("molte.db"));
    database->Execute(
        u"CREATE TABLE Righe (N int PRIMARY KEY, T varchar(5));"
        u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 5000) "
        u"INSERT INTO Righe SELECT n, NULL FROM c OPTION (MAXRECURSION 0)");
    std::int64_t unknown = 0;
    std::string last;
    EXPECT_TRUE(EsportaTXT(u"SELECT N, T FROM Righe ORDER BY N", Variant(database), u"EXPORT.TXT",
                           path_, true, [&](std::int64_t done, std::int64_t all) {
                               unknown += all == 0 ? 1 : 0;
                               last = std::to_string(done) + "/" + std::to_string(all);
                           }));
    EXPECT_GT(unknown, 2500);
    EXPECT_EQ(last, "5000/5000");
    const std::string lines = content();
    std::size_t at = 0;
    for (int row = 1; row <= 5000; ++row) {
        const std::size_t end = lines.find("\r\n", at);
        ASSERT_NE(end, std::string::npos);
        const std::string number = std::to_string(row);
        EXPECT_EQ(lines.substr(at, end - at),
                  std::string(4 - number.size(), ' ') + number + "     ");
        at = end + 2;
    }
    EXPECT_EQ(at, lines.size());
}

class TextSource : public TextExport {
protected:
    [[nodiscard]] Ref<ado::Connection> open() const {
        ado::text_files::TextDriver::offer();
        return test::open("Driver={Microsoft Text Driver (*.txt; *.csv)};Dbq=" +
                          folder_.file("scambio"));
    }
};

TEST_F(TextSource, TakesRowsAndNothingElse) {
    putSchema("Format=FixedLength\r\nColNameHeader=False\r\nCol1=A Char Width 3\r\n");
    test::putFile(folder_.file("scambio/EXPORT.TXT"), "");
    const auto rows = test::openLive(open(), u"select * from [export.txt] where 1=0");
    rows->AddNew(u"A", u"x");
    rows->Update();
    EXPECT_EQ(content(), "x  \r\n");
    EXPECT_EQ(raisedBy([&] {
                  rows->Delete();
                  return 0;
              }),
              ado::errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { return open()->Execute(u"SELECT * FROM EXPORT.TXT"); }),
              ado::errors::kCommandText);
    EXPECT_EQ(raisedBy([&] { return open()->BeginTrans(); }), ado::errors::kFeatureNotAvailable);
}

TEST_F(TextSource, IsAFolderThatIsThere) {
    ado::text_files::TextDriver::offer();
    EXPECT_EQ(raisedBy([&] {
                  return test::open("Driver={Microsoft Text Driver (*.txt; *.csv)};Dbq=" +
                                    folder_.file("manca"));
              }),
              ado::errors::kLogin);
}

}  // namespace
}  // namespace kap::host
