#include "drivers/text/line_writer.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::ado::text_files {
namespace {

class TextLine : public testing::Test {
protected:
    // A writer by these lines of a section.
    [[nodiscard]] LineWriter writer(const std::string& lines) const {
        test::putFile(folder_.file("schema.INI"),
                      "[altro.txt]\r\nCol1=X Char\r\n[Prova.txt]\r\n" + lines);
        return LineWriter(readSchema(folder_.file(""), u"PROVA.TXT"));
    }
    [[nodiscard]] std::string refusal(const std::string& lines) const {
        try {
            static_cast<void>(writer(lines));
        } catch (const AutomationError& error) {
            return error.description().utf8();
        }
        return "";
    }
    // One value in a column of this type, ten characters wide.
    [[nodiscard]] std::string value(const std::string& type, const char16_t* text,
                                    const std::string& more = "") const {
        const LineWriter one = writer("Format=FixedLength\r\nCharacterSet=UTF-8\r\n" + more +
                                      "\r\nCol1=V " + type + " Width 10\r\n");
        return one.line({String(text)}, 1);
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
};

TEST_F(TextLine, PutsTextsAndDatesLeftAndNumbersRight) {
    EXPECT_EQ(value("Char", u"Rossi"), "Rossi     \r\n");
    EXPECT_EQ(value("Date", u"25/12/2003"), "25/12/2003\r\n");
    EXPECT_EQ(value("Integer", u"12"), "        12\r\n");
    EXPECT_EQ(value("Float", u"2,5"), "       2,5\r\n");
    EXPECT_EQ(value("Bit", u"Vero"), "1         \r\n");
    EXPECT_EQ(value("Bit", u"Falso"), "0         \r\n");
}

TEST_F(TextLine, KnowsEveryType) {
    for (const char* type : {"Byte", "short", "INTEGER", "Long", "Single", "Float", "Double"}) {
        EXPECT_EQ(value(type, u"12"), "        12\r\n") << type;
    }
    EXPECT_EQ(value("Currency", u"12"), "     12,00\r\n");
    for (const char* type :
         {"Char", "Text", "Memo", "LongChar", "LongChar300", "Date", "DateTime"}) {
        EXPECT_EQ(value(type, u"x"), "x         \r\n") << type;
    }
}

TEST_F(TextLine, WritesNumbersWithTheDigitsAndTheSymbolOfTheSchema) {
    EXPECT_EQ(value("Float", u"2,345", "NumberDigits=2\r\nDecimalSymbol=."), "      2.35\r\n");
    EXPECT_EQ(value("Float", u"-0,5", "NumberDigits=0"), "        -1\r\n");
    EXPECT_EQ(value("Currency", u"12,5", "CurrencyDigits=3\r\nCurrencySymbol=E"), "   E12,500\r\n");
    EXPECT_EQ(value("Currency", u"12,5", "CurrencyDigits=0\r\nDecimalSymbol=."), "        13\r\n");
}

TEST_F(TextLine, WritesDatesInTheFormatOfTheSchema) {
    EXPECT_EQ(value("Date", u"25/12/2003 9:05:00", "DateTimeFormat=yyyymmdd"), "20031225  \r\n");
    const LineWriter wide = writer("Format=FixedLength\r\nCol1=V Date Width 19\r\n");
    EXPECT_EQ(wide.line({u"25/12/2003 09:05:07"}, 1), "25/12/2003 9:05:07 \r\n");
    EXPECT_EQ(wide.line({u"25/12/2003 19:05:07"}, 1), "25/12/2003 19:05:07\r\n");
}

TEST_F(TextLine, LeavesWhatIsNoNumberOrDateAsItStands) {
    for (const char* type : {"Integer", "Float", "Currency"}) {
        EXPECT_EQ(value(type, u"EUR"), "       EUR\r\n") << type;
    }
    EXPECT_EQ(value("Date", u"EUR"), "EUR       \r\n");
}

TEST_F(TextLine, FillsColumnsWithoutAValue) {
    const LineWriter both =
        writer("Format=FixedLength\r\nCol1=A Char Width 3\r\nCol2=B Integer Width 4\r\n");
    EXPECT_EQ(both.line({std::nullopt, u"7"}, 1), "      7\r\n");
    EXPECT_EQ(both.line({u"abc", std::nullopt}, 1), "abc    \r\n");
}

TEST_F(TextLine, NamesRowAndColumnOfAValueThatDoesNotFit) {
    const LineWriter one = writer("Format=FixedLength\r\nCol1=NOME Char Width 3\r\n");
    EXPECT_EQ(test::raisedBy([&] { return one.line({u"abcd"}, 12); }), ado::errors::kTruncated);
    try {
        static_cast<void>(one.line({u"abcd"}, 12));
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.description().utf8(),
                  "Riga 12, colonna NOME: \"abcd\" non sta in 3 caratteri.");
    }
    try {
        static_cast<void>(one.line({u"a\nb"}, 13));
        FAIL();
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.description().utf8(), "Riga 13, colonna NOME: il testo va a capo.");
    }
}

TEST_F(TextLine, SeparatesDelimitedValuesAndQuotesTexts) {
    const std::string columns = "CharacterSet=UTF-8\r\nCol1=A Char\r\nCol2=B Integer\r\n";
    const std::vector<std::optional<String>> row = {u"il \"primo\"", u"12"};
    EXPECT_EQ(writer("Format=CSVDelimited\r\n" + columns).line(row, 1),
              "\"il \"\"primo\"\"\",12\r\n");
    EXPECT_EQ(writer(columns).line(row, 1), "\"il \"\"primo\"\"\",12\r\n");
    EXPECT_EQ(writer("Format=TabDelimited\r\n" + columns).line(row, 1),
              "\"il \"\"primo\"\"\"\t12\r\n");
    EXPECT_EQ(writer("Format=Delimited(;)\r\n" + columns).line({{}, u"1"}, 1), ";1\r\n");
}

TEST_F(TextLine, WritesTheNamesOfTheColumnsFirst) {
    EXPECT_EQ(writer("Col1=Nome Cliente Char\r\nCol2=\"Data\" Date\r\n").beginning(),
              "\"Nome Cliente\",\"Data\"\r\n");
    EXPECT_EQ(
        writer("Format=FixedLength\r\nCol1=Nome Char Width 6\r\nCol2=Codice Short Width 2\r\n")
            .beginning(),
        "Nome  Co\r\n");
    EXPECT_EQ(writer("ColNameHeader=False\r\nCol1=A Char\r\n").beginning(), "");
}

TEST_F(TextLine, WritesInTheCharacterSetOfTheSchema) {
    const std::string rest = "\r\nFormat=FixedLength\r\nColNameHeader=False\r\nCol1=A Char Width 2";
    const std::vector<std::optional<String>> row = {u"è€"};
    EXPECT_EQ(writer("CharacterSet=OEM" + rest).line({u"è "}, 1), "\x8A \r\n");
    EXPECT_EQ(test::raisedBy([&] { return writer("CharacterSet=OEM" + rest).line(row, 1); }),
              ado::errors::kTruncated);
    EXPECT_EQ(writer("CharacterSet=ANSI" + rest).line(row, 1), "\xE8\x80\r\n");
    EXPECT_EQ(writer("CharacterSet=UTF-8" + rest).line(row, 1), "\xC3\xA8\xE2\x82\xAC\r\n");
    EXPECT_EQ(writer("CharacterSet=Unicode" + rest).line(row, 1),
              std::string("\xE8\0\xAC\x20\r\0\n\0", 8));
    EXPECT_EQ(writer("CharacterSet=Unicode" + rest).beginning(), "\xFF\xFE");
}

TEST_F(TextLine, RefusesASchemaThatCannotBeUsed) {
    const std::string front = "Schema.ini, sezione [PROVA.TXT]: il valore di ";
    EXPECT_EQ(refusal("Format=Libero\r\nCol1=A Char\r\n"), front + "Format non \xC3\xA8 valido.");
    EXPECT_EQ(refusal("CharacterSet=EBCDIC\r\nCol1=A Char\r\n"),
              front + "CharacterSet non \xC3\xA8 valido.");
    EXPECT_EQ(refusal("CurrencyDigits=tre\r\nCol1=A Char\r\n"),
              front + "CurrencyDigits non \xC3\xA8 valido.");
    EXPECT_EQ(refusal("Col1=A Colore\r\n"), front + "Col1 non \xC3\xA8 valido.");
    EXPECT_EQ(refusal("Col1=Char\r\n"), front + "Col1 non \xC3\xA8 valido.");
    EXPECT_EQ(refusal("Format=FixedLength\r\nCol1=A Char\r\n"),
              front + "Col1 non \xC3\xA8 valido.");
    EXPECT_EQ(refusal("Format=FixedLength\r\n"),
              "Schema.ini non descrive le colonne di PROVA.TXT.");
}

}  // namespace
}  // namespace kap::ado::text_files
