#include "engine/values/convert.hpp"

#include <gtest/gtest.h>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/dates.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

struct ConversionCase {
    Value value;
    const char* from;
    const char* to;
    Value expected;
    int style = 0;
};

class Conversion : public ::testing::TestWithParam<ConversionCase> {};

TEST_P(Conversion, GivesTheServersValue) {
    const ConversionCase& c = GetParam();
    EXPECT_TRUE(convert(c.value, tsql::parseType(c.from), tsql::parseType(c.to), Overlength::Cut,
                        c.style) == c.expected)
        << c.from << " to " << c.to << " gave "
        << sqlLiteral(convert(c.value, tsql::parseType(c.from), tsql::parseType(c.to),
                              Overlength::Cut, c.style));
}

Value whole(std::int64_t value) {
    return value;
}
Value text(const char* value) {
    return std::string(value);
}
Value bytes(const std::string& value) {
    return Blob{value};
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Conversion,
    ::testing::Values(ConversionCase{{}, "int", "varchar(5)", {}},
                      ConversionCase{whole(7), "int", "decimal(9,2)", whole(700)},
                      ConversionCase{whole(12345), "decimal(9,3)", "decimal(9,2)", whole(1235)},
                      ConversionCase{whole(-12345), "decimal(9,3)", "decimal(9,2)", whole(-1235)},
                      ConversionCase{whole(1299), "decimal(9,2)", "int", whole(12)},
                      ConversionCase{whole(-1299), "decimal(9,2)", "int", whole(-12)},
                      ConversionCase{whole(25000), "money", "int", whole(3)},
                      ConversionCase{whole(123456), "money", "decimal(9,2)", whole(1235)},
                      ConversionCase{whole(5), "int", "money", whole(50000)},
                      ConversionCase{whole(5), "int", "bit", whole(1)},
                      ConversionCase{whole(0), "decimal(5,2)", "bit", whole(0)},
                      ConversionCase{whole(150), "decimal(5,2)", "float", 1.5},
                      ConversionCase{2.9, "float", "int", whole(2)},
                      ConversionCase{-2.9, "float", "int", whole(-2)},
                      ConversionCase{2.345, "float", "decimal(9,2)", whole(235)},
                      ConversionCase{1.23456, "float", "money", whole(12346)},
                      ConversionCase{0.1, "float", "real", static_cast<double>(0.1F)},
                      ConversionCase{whole(1), "int", "datetime", 3.0},
                      ConversionCase{3.5, "datetime", "float", 1.5},
                      ConversionCase{3.5, "datetime", "int", whole(2)}));

INSTANTIATE_TEST_SUITE_P(
    Texts, Conversion,
    ::testing::Values(ConversionCase{text(" -12 "), "varchar(9)", "int", whole(-12)},
                      ConversionCase{text(""), "varchar(9)", "int", whole(0)},
                      ConversionCase{text("1.235"), "varchar(9)", "decimal(9,2)", whole(124)},
                      ConversionCase{text("$1,234.5"), "varchar(9)", "money", whole(12345000)},
                      ConversionCase{text("TRUE"), "varchar(9)", "bit", whole(1)},
                      ConversionCase{text("1e3"), "varchar(9)", "float", 1000.0},
                      ConversionCase{text("abc"), "varchar(3)", "char(5)", text("abc  ")},
                      ConversionCase{text("abcdef"), "varchar(6)", "varchar(3)", text("abc")},
                      ConversionCase{text("èèèè"), "varchar(6)", "varchar(3)", text("èèè")},
                      ConversionCase{whole(42), "int", "varchar(5)", text("42")},
                      ConversionCase{whole(123456), "int", "varchar(5)", text("*")},
                      ConversionCase{whole(-50), "decimal(5,3)", "varchar(9)", text("-0.050")},
                      ConversionCase{whole(12345678), "money", "varchar(20)", text("1234.57")},
                      ConversionCase{whole(12345678), "money", "varchar(20)", text("1,234.57"), 1},
                      ConversionCase{whole(12345678), "money", "varchar(20)", text("1234.5678"), 2},
                      ConversionCase{1.0 / 3, "float", "varchar(20)", text("0.333333")},
                      ConversionCase{1e15, "float", "varchar(20)", text("1e+015")},
                      ConversionCase{1e-7, "float", "varchar(20)", text("1e-007")},
                      ConversionCase{1.5, "float", "varchar(30)", text("1.5000000e+000"), 1},
                      ConversionCase{text("6f9619ff-8b86-d011-b42d-00c04fc964ff"), "varchar(40)",
                                     "uniqueidentifier",
                                     text("6F9619FF-8B86-D011-B42D-00C04FC964FF")},
                      ConversionCase{text("{6F9619FF-8B86-D011-B42D-00C04FC964FF}"), "varchar(40)",
                                     "uniqueidentifier",
                                     text("6F9619FF-8B86-D011-B42D-00C04FC964FF")}));

INSTANTIATE_TEST_SUITE_P(
    Bytes, Conversion,
    ::testing::Values(
        ConversionCase{whole(258), "int", "binary(4)", bytes(std::string("\0\0\1\2", 4))},
        ConversionCase{whole(258), "int", "varbinary(2)", bytes("\1\2")},
        ConversionCase{whole(-1), "int", "binary(8)", bytes(std::string(8, '\xFF'))},
        ConversionCase{bytes("\1\2"), "varbinary(2)", "int", whole(258)},
        ConversionCase{bytes("\1\2\3"), "varbinary(3)", "binary(5)",
                       bytes(std::string("\1\2\3\0\0", 5))},
        ConversionCase{bytes("\1\2\3"), "varbinary(3)", "binary(2)", bytes("\1\2")},
        ConversionCase{text("aé"), "varchar(2)", "varbinary(5)", bytes("a\xE9")},
        ConversionCase{text("a"), "nvarchar(2)", "varbinary(5)", bytes(std::string("a\0", 2))},
        ConversionCase{bytes("a\xE9"), "varbinary(2)", "varchar(5)", text("aé")},
        ConversionCase{bytes("\x0A\xFF"), "varbinary(2)", "varchar(9)", text("0x0AFF"), 1},
        ConversionCase{bytes("\x0A\xFF"), "varbinary(2)", "varchar(9)", text("0AFF"), 2},
        ConversionCase{text("0x0AfF"), "varchar(9)", "varbinary(2)", bytes("\x0A\xFF"), 1},
        ConversionCase{text("0AfF"), "varchar(9)", "varbinary(2)", bytes("\x0A\xFF"), 2}));

struct ConversionRefusal {
    Value value;
    const char* from;
    const char* to;
    int number;
    const char* message;
    Overlength overlength = Overlength::Cut;
};

class RefusedConversion : public ::testing::TestWithParam<ConversionRefusal> {};

TEST_P(RefusedConversion, HasTheServersNumberAndText) {
    const ConversionRefusal& c = GetParam();
    try {
        const Value value =
            convert(c.value, tsql::parseType(c.from), tsql::parseType(c.to), c.overlength);
        FAIL() << c.from << " to " << c.to << " gave " << sqlLiteral(value);
    } catch (const tsql::ServerError& error) {
        EXPECT_EQ(error.number(), c.number);
        EXPECT_EQ(error.message(), c.message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedConversion,
    ::testing::Values(
        ConversionRefusal{
            text("x"), "varchar(1)", "int", 245,
            "Conversion failed when converting the varchar value 'x' to data type int."},
        ConversionRefusal{
            text("1.5"), "nvarchar(3)", "int", 245,
            "Conversion failed when converting the nvarchar value '1.5' to data type int."},
        ConversionRefusal{
            text("x"), "varchar(1)", "bit", 245,
            "Conversion failed when converting the varchar value 'x' to data type bit."},
        ConversionRefusal{
            text("9999999999"), "varchar(10)", "int", 248,
            "The conversion of the varchar value '9999999999' overflowed an int column."},
        ConversionRefusal{
            text("300"), "varchar(3)", "tinyint", 244,
            "The conversion of the varchar value '300' overflowed an INT1 column. Use a larger "
            "integer column."},
        ConversionRefusal{
            text("40000"), "varchar(5)", "smallint", 244,
            "The conversion of the varchar value '40000' overflowed an INT2 column. Use a larger "
            "integer column."},
        ConversionRefusal{text("x"), "varchar(1)", "bigint", 8114,
                          "Error converting data type varchar to bigint."},
        ConversionRefusal{text(""), "varchar(1)", "decimal(5,2)", 8114,
                          "Error converting data type varchar to numeric."},
        ConversionRefusal{text("x"), "varchar(1)", "float", 8114,
                          "Error converting data type varchar to float."},
        ConversionRefusal{text("nan"), "varchar(3)", "float", 8114,
                          "Error converting data type varchar to float."},
        ConversionRefusal{
            text("x"), "varchar(1)", "money", 235,
            "Cannot convert a char value to money. The char value has incorrect syntax."},
        ConversionRefusal{text("1000"), "varchar(4)", "decimal(5,2)", 8115,
                          "Arithmetic overflow error converting varchar to data type numeric."},
        ConversionRefusal{whole(1000), "int", "decimal(5,2)", 8115,
                          "Arithmetic overflow error converting int to data type numeric."},
        ConversionRefusal{whole(300), "int", "tinyint", 220,
                          "Arithmetic overflow error for data type tinyint, value = 300."},
        ConversionRefusal{whole(-1), "int", "tinyint", 220,
                          "Arithmetic overflow error for data type tinyint, value = -1."},
        ConversionRefusal{whole(3000000000), "bigint", "int", 8115,
                          "Arithmetic overflow error converting expression to data type int."},
        ConversionRefusal{1e30, "float", "decimal(18,2)", 8115,
                          "Arithmetic overflow error converting float to data type numeric."},
        ConversionRefusal{1e300, "float", "real", 8115,
                          "Arithmetic overflow error converting expression to data type real."},
        ConversionRefusal{whole(123456), "int", "nvarchar(3)", 8115,
                          "Arithmetic overflow error converting expression to data type nvarchar."},
        ConversionRefusal{whole(123456), "decimal(9,2)", "varchar(3)", 8115,
                          "Arithmetic overflow error converting numeric to data type varchar."},
        ConversionRefusal{
            whole(123456789), "money", "varchar(3)", 234,
            "There is insufficient result space to convert a money value to varchar."},
        ConversionRefusal{
            text("x"), "varchar(1)", "uniqueidentifier", 8169,
            "Conversion failed when converting from a character string to uniqueidentifier."},
        ConversionRefusal{text("abcd"), "varchar(4)", "varchar(3)", 8152,
                          "String or binary data would be truncated.", Overlength::Refuse},
        ConversionRefusal{bytes("abcd"), "varbinary(4)", "varbinary(3)", 8152,
                          "String or binary data would be truncated.", Overlength::Refuse},
        ConversionRefusal{1.5, "float", "varbinary(8)", 529,
                          "Explicit conversion from data type float to varbinary is not allowed."},
        ConversionRefusal{
            1.0, "datetime", "smalldatetime", 242,
            "The conversion of a datetime data type to a smalldatetime data type resulted in an "
            "out-of-range value."}));

TEST(Convert, CutsBlanksAtTheEndOfATextThatIsStored) {
    const Value value = convert(text("abc   "), {tsql::SqlType::VarChar, 6},
                                {tsql::SqlType::VarChar, 4}, Overlength::Refuse);
    EXPECT_TRUE(value == text("abc "));
}

struct DateCase {
    const char* text;
    const char* expected;
    int style = 0;
};

class DateText : public ::testing::TestWithParam<DateCase> {};

TEST_P(DateText, IsReadAsTheServerReadsIt) {
    constexpr int kFullStyle = 121;
    const double instant = parseDate(GetParam().text, tsql::SqlType::DateTime, GetParam().style);
    EXPECT_EQ(dateText(instant, tsql::SqlType::DateTime, kFullStyle), GetParam().expected)
        << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    All, DateText,
    ::testing::Values(DateCase{"20240131", "2024-01-31 00:00:00.000"},
                      DateCase{"240131", "2024-01-31 00:00:00.000"},
                      DateCase{"2024-01-31", "2024-01-31 00:00:00.000"},
                      DateCase{"2024/1/31", "2024-01-31 00:00:00.000"},
                      DateCase{"2024-01-31 10:20", "2024-01-31 10:20:00.000"},
                      DateCase{"2024-01-31T10:20:30", "2024-01-31 10:20:30.000"},
                      DateCase{"2024-01-31 10:20:30.5", "2024-01-31 10:20:30.500"},
                      DateCase{"2024-01-31 10:20:30.998", "2024-01-31 10:20:30.997"},
                      DateCase{"2024-01-31 23:59:59.999", "2024-02-01 00:00:00.000"},
                      DateCase{"20240131 10:20:30:005", "2024-01-31 10:20:30.007"},
                      DateCase{"1/31/2024", "2024-01-31 00:00:00.000"},
                      DateCase{"31/1/2024", "2024-01-31 00:00:00.000", 103},
                      DateCase{"31.1.24", "2024-01-31 00:00:00.000", 4},
                      DateCase{"1/31/49", "2049-01-31 00:00:00.000"},
                      DateCase{"1/31/50", "1950-01-31 00:00:00.000"},
                      DateCase{"Jan 5 2024", "2024-01-05 00:00:00.000"},
                      DateCase{"January 5, 2024", "2024-01-05 00:00:00.000"},
                      DateCase{"5 jan 2024 3:07PM", "2024-01-05 15:07:00.000"},
                      DateCase{"20240105 12am", "2024-01-05 00:00:00.000"},
                      DateCase{"10:30", "1900-01-01 10:30:00.000"},
                      DateCase{"", "1900-01-01 00:00:00.000"},
                      DateCase{"2024", "2024-01-01 00:00:00.000"},
                      DateCase{"17530101", "1753-01-01 00:00:00.000"},
                      DateCase{"99991231", "9999-12-31 00:00:00.000"}));

class BadDateText : public ::testing::TestWithParam<DateCase> {};

TEST_P(BadDateText, IsRefused) {
    try {
        (void)parseDate(GetParam().text, tsql::SqlType::DateTime, 0);
        FAIL() << GetParam().text;
    } catch (const tsql::ServerError& error) {
        EXPECT_EQ(plain::text(error.number()) + ": " + error.message(), GetParam().expected);
    }
}

constexpr const char* kNoDate =
    "241: Conversion failed when converting date and/or time from character string.";
constexpr const char* kOutOfRange =
    "242: The conversion of a varchar data type to a datetime data type resulted in an "
    "out-of-range value.";

INSTANTIATE_TEST_SUITE_P(
    All, BadDateText,
    ::testing::Values(DateCase{"abc", kNoDate}, DateCase{"2024-", kNoDate},
                      DateCase{"2024-01-01 x", kNoDate}, DateCase{"20240101 10", kNoDate},
                      DateCase{"1/2", kNoDate}, DateCase{"2024-01-01T", kNoDate},
                      DateCase{"99999999999999999999", kNoDate}, DateCase{"20240230", kOutOfRange},
                      DateCase{"31/1/2024", kOutOfRange}, DateCase{"20240101 25:00", kOutOfRange},
                      DateCase{"17521231", kOutOfRange}));

struct StyleCase {
    int style;
    const char* expected;
};

class DateStyle : public ::testing::TestWithParam<StyleCase> {};

TEST_P(DateStyle, WritesTheDate) {
    const double instant = parseDate("2024-03-05 15:04:06.123", tsql::SqlType::DateTime, 0);
    EXPECT_EQ(dateText(instant, tsql::SqlType::DateTime, GetParam().style), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, DateStyle,
    ::testing::Values(
        StyleCase{0, "Mar  5 2024  3:04PM"}, StyleCase{100, "Mar  5 2024  3:04PM"},
        StyleCase{1, "03/05/24"}, StyleCase{101, "03/05/2024"}, StyleCase{102, "2024.03.05"},
        StyleCase{3, "05/03/24"}, StyleCase{103, "05/03/2024"}, StyleCase{104, "05.03.2024"},
        StyleCase{5, "05-03-24"}, StyleCase{105, "05-03-2024"}, StyleCase{106, "05 Mar 2024"},
        StyleCase{107, "Mar 05, 2024"}, StyleCase{108, "15:04:06"},
        StyleCase{109, "Mar  5 2024  3:04:06:123PM"}, StyleCase{10, "03-05-24"},
        StyleCase{110, "03-05-2024"}, StyleCase{111, "2024/03/05"}, StyleCase{12, "240305"},
        StyleCase{112, "20240305"}, StyleCase{113, "05 Mar 2024 15:04:06:123"},
        StyleCase{120, "2024-03-05 15:04:06"}, StyleCase{121, "2024-03-05 15:04:06.123"},
        StyleCase{126, "2024-03-05T15:04:06.123"}));

TEST(Dates, GivesOneDoubleToOneInstantHoweverItIsReached) {
    const double direct = parseDate("2024-03-05 15:04", tsql::SqlType::DateTime, 0);
    EXPECT_EQ(direct, parseDate("2024-03-05 15:04", tsql::SqlType::SmallDateTime, 0));
    EXPECT_EQ(direct, roundedTo(direct + 1e-10, tsql::SqlType::DateTime));
}

TEST(Dates, RoundsToTheMinuteAndTheDay) {
    EXPECT_EQ(dateText(parseDate("2024-03-05 15:04:29.998", tsql::SqlType::SmallDateTime, 0),
                       tsql::SqlType::SmallDateTime, 120),
              "2024-03-05 15:04:00");
    EXPECT_EQ(dateText(parseDate("2024-03-05 15:04:30", tsql::SqlType::SmallDateTime, 0),
                       tsql::SqlType::SmallDateTime, 120),
              "2024-03-05 15:05:00");
    EXPECT_EQ(parseDate("2024-03-05 23:59", tsql::SqlType::Date, 0), 45356.0);
}

TEST(Dates, CountsFromTheEndOf1899) {
    EXPECT_EQ(parseDate("19000101", tsql::SqlType::DateTime, 0), 2.0);
    EXPECT_EQ(parseDate("18991229 12:00", tsql::SqlType::DateTime, 0), -0.5);
}

TEST(Value, PacksEveryTypeIntoANumber) {
    for (const char* type :
         {"bit", "decimal(38,10)", "varchar(8000)", "nvarchar(max)", "uniqueidentifier"}) {
        EXPECT_EQ(tsql::typeText(unpackType(packType(tsql::parseType(type)))), type);
    }
}

TEST(Value, WritesLiteralsThatSqliteReadsBack) {
    EXPECT_EQ(sqlLiteral(text("it's")), "'it''s'");
    EXPECT_EQ(sqlLiteral(1.0), "1.0");
    EXPECT_EQ(sqlLiteral(1e300), "1e+300");
    EXPECT_EQ(sqlLiteral(whole(-5)), "-5");
    EXPECT_EQ(sqlLiteral(bytes("\x0A")), "X'0A'");
    EXPECT_EQ(sqlLiteral(std::string("a\0b", 3)), "CAST(X'610062' AS TEXT)");
    EXPECT_EQ(sqlName("a\"b"), "\"a\"\"b\"");
}

}  // namespace
}  // namespace kap::engine
