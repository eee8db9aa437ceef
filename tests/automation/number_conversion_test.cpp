#include <kaputil/automation/convert.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "support/shown.hpp"

namespace kap::convert {
namespace {

using test::raisedBy;
using test::shown;

class NumberConversion : public testing::Test {
private:
    LocaleScope italian_{"it-IT"};
};

struct TextCase {
    const char* text;
    const char* expected;  // empty: no number
};

std::string readAsDouble(const char* text) {
    const Variant value(text);
    EXPECT_EQ(isNumeric(value), raisedBy([&] { return toDouble(value); }) == 0) << text;
    return isNumeric(value) ? plain::general(toDouble(value), 15) : "";
}

// A blank before a number changes nothing but how it is read.
TEST_F(NumberConversion, ReadsPlainNumbersAsWithABlankBeforeThem) {
    for (const char* text : {"0",
                             "-0",
                             "7",
                             "-7",
                             "3,5",
                             "-3,5",
                             ",5",
                             "-,5",
                             "5,",
                             "-",
                             "",
                             "1,2,3",
                             "1x",
                             "x1",
                             "1,x",
                             "123456789012345",
                             "1234567890123456",
                             "12345678901234,5",
                             "123456789012345,6",
                             "999999999999999",
                             "0,00000000000001",
                             "1.000",
                             "1.000,5",
                             "1/2",
                             "1:2",
                             "1;2",
                             "12 "}) {
        EXPECT_EQ(readAsDouble(text), readAsDouble((" " + std::string(text)).c_str())) << text;
    }
}

TEST_F(NumberConversion, ReadsNumbersAsItaliansWriteThem) {
    const TextCase cases[] = {
        {"12", "12"},
        {"3,5", "3.5"},
        {"1.234,5", "1234.5"},
        {"1.234", "1234"},
        {"-3,5", "-3.5"},
        {"3,5-", "-3.5"},
        {"+3", "3"},
        {"  7  ", "7"},
        {"(3,5)", "-3.5"},
        {",5", "0.5"},
        {"5,", "5"},
        {"1E3", "1000"},
        {"1,5e-2", "0.015"},
        {"\xE2\x82\xAC 12,50", "12.5"},
        {"12,50 \xE2\x82\xAC", "12.5"},
        {"&HFF", "255"},
        {"&h10", "16"},
        {"&O17", "15"},
    };
    for (const TextCase& one : cases) {
        EXPECT_EQ(readAsDouble(one.text), one.expected) << one.text;
    }
}

TEST_F(NumberConversion, RefusesTextsThatAreNoNumber) {
    for (const char* text : {"", "   ", "abc", "1a", "3,5,5", "1E", "--1", "-1-", "1 2x", "&H",
                             "&HG", "(1", "1)", "1e+", "$5", "."}) {
        EXPECT_EQ(readAsDouble(text), "") << text;
        EXPECT_EQ(raisedBy([&] { return toDouble(Variant(text)); }), 13) << text;
    }
}

TEST_F(NumberConversion, ReadsNumbersAsAmericansWriteThem) {
    const LocaleScope american("en-US");
    const TextCase cases[] = {
        {"3.5", "3.5"}, {"1,234.5", "1234.5"}, {"$12.50", "12.5"}, {"3,5", "35"}, {"3.5.5", ""},
    };
    for (const TextCase& one : cases) {
        EXPECT_EQ(readAsDouble(one.text), one.expected) << one.text;
    }
}

TEST_F(NumberConversion, PrintsNumbersUnderTheLocale) {
    const std::pair<Variant, const char*> cases[] = {
        {std::uint8_t{255}, "255"},
        {std::int16_t{-32768}, "-32768"},
        {std::numeric_limits<std::int32_t>::min(), "-2147483648"},
        {0.1, "0,1"},
        {1.0 / 3.0, "0,333333333333333"},
        {-2.5, "-2,5"},
        {-0.0, "0"},
        {1e15, "1E+15"},
        {123456789012345.0, "123456789012345"},
        {1e-5, "1E-05"},
        {0.0001, "0,0001"},
        {1e300, "1E+300"},
        {0.1F, "0,1"},
        {1234567.0F, "1234567"},
        {3.1415927F, "3,141593"},
        {Currency{12345}, "1,2345"},
        {Currency{-5000}, "-0,5"},
        {Currency{std::numeric_limits<std::int64_t>::max()}, "922337203685477,5807"},
        {Decimal(12345, 2), "123,45"},
        {true, "Vero"},
        {false, "Falso"},
        {Variant(), ""},
        {u"x", "x"},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(toString(value).utf8(), expected);
    }
}

TEST_F(NumberConversion, PrintsNumbersAndBooleansInEnglish) {
    const LocaleScope american("en-US");
    EXPECT_EQ(toString(0.5), u"0.5");
    EXPECT_EQ(toString(Currency{12345}), u"1.2345");
    EXPECT_EQ(toString(true), u"True");
    EXPECT_EQ(toString(false), u"False");
}

TEST_F(NumberConversion, RoundsWholeNumbersHalfToEven) {
    const std::pair<Variant, std::int32_t> cases[] = {
        {0.5, 0},
        {1.5, 2},
        {2.5, 2},
        {-0.5, 0},
        {-1.5, -2},
        {-2.5, -2},
        {2.5000001, 3},
        {2.4999999, 2},
        {u"2,5", 2},
        {u"3,5", 4},
        {2.5F, 2},
        {Currency{25000}, 2},
        {Currency{-35000}, -4},
        {Decimal(25, 1), 2},
        {Decimal(2500001, 6), 3},
        {Date{2.5}, 2},
        {true, -1},
        {Variant(), 0},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(toLong(value), expected) << shown(value);
        EXPECT_EQ(toInteger(value), expected) << shown(value);
    }
}

TEST_F(NumberConversion, OverflowsOutsideTheRangeOfTheTarget) {
    EXPECT_EQ(toInteger(32767.4), 32767);
    EXPECT_EQ(toInteger(-32768.5), -32768);
    EXPECT_EQ(toByte(255.4), 255);
    EXPECT_EQ(toLong(u"-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(raisedBy([] { return toInteger(32767.5); }), 6);
    EXPECT_EQ(raisedBy([] { return toInteger(u"32768"); }), 6);
    EXPECT_EQ(raisedBy([] { return toByte(-1); }), 6);
    EXPECT_EQ(raisedBy([] { return toByte(256); }), 6);
    EXPECT_EQ(raisedBy([] { return toLong(2147483647.5); }), 6);
    EXPECT_EQ(raisedBy([] { return toLong(std::numeric_limits<double>::quiet_NaN()); }), 6);
    EXPECT_EQ(raisedBy([] { return toSingle(1e39); }), 6);
    EXPECT_EQ(raisedBy([] { return toDouble(u"1E400"); }), 6);
    EXPECT_EQ(raisedBy([] { return toCurrency(1e15); }), 6);
    EXPECT_EQ(raisedBy([] { return toDecimal(1e29); }), 6);
    EXPECT_EQ(toDouble(u"1E-400"), 0.0);
}

TEST_F(NumberConversion, MakesTrueOfEveryBitOfItsType) {
    EXPECT_EQ(toByte(true), 255);
    EXPECT_EQ(toInteger(true), -1);
    EXPECT_EQ(toDouble(true), -1.0);
    EXPECT_EQ(toDecimal(true).plainText(), "-1");
}

TEST_F(NumberConversion, RoundsRealAmountsByTheirExactValue) {
    EXPECT_EQ(toCurrency(2.00005).scaled, 20000);  // a little less than the half
    EXPECT_EQ(toCurrency(0.00005).scaled, 1);      // a little more
    EXPECT_EQ(toCurrency(0.5 / 8192).scaled, 1);
    EXPECT_EQ(toCurrency(922337203685477.5).scaled, 9223372036854775000);
    EXPECT_EQ(raisedBy([] { return toCurrency(922337203685478.0); }), 6);
    EXPECT_EQ(raisedBy([] { return toCurrency(std::numeric_limits<double>::quiet_NaN()); }), 6);
}

TEST_F(NumberConversion, ReadsATextUpToItsFirstNul) {
    EXPECT_EQ(toDouble(String(std::u16string_view(u"12\0x", 4))), 12.0);
}

TEST_F(NumberConversion, ReadsAsManyDigitsAsCount) {
    EXPECT_EQ(toDouble(String(std::u16string(100000, u'0') + u"1")), 1.0);
    EXPECT_EQ(toDouble(String(u"0," + std::u16string(300, u'0') + u"25")), 25e-302);
    EXPECT_EQ(toDecimal(String(u"0," + std::u16string(60, u'3'))).plainText(),
              "0.3333333333333333333333333333");
    EXPECT_EQ(raisedBy([] { return toDouble(String(std::u16string(400, u'9'))); }), 6);
}

TEST_F(NumberConversion, ReadsHexadecimalAsTheBitsOfTheTarget) {
    EXPECT_EQ(toInteger(u"&HFFFF"), -1);
    EXPECT_EQ(toLong(u"&HFFFFFFFF"), -1);
    EXPECT_EQ(toByte(u"&HFF"), 255);
    EXPECT_EQ(raisedBy([] { return toInteger(u"&H10000"); }), 6);
    EXPECT_EQ(toDecimal(u"&H00000000000007D1"), Decimal(2001));
    EXPECT_EQ(toDecimal(u"&HFFFFFFFFFFFFFFFF").plainText(), "18446744073709551615");
}

TEST_F(NumberConversion, RoundsCurrencyToFourDecimalsHalfToEven) {
    EXPECT_EQ(toCurrency(u"1,23455").scaled, 12346);
    EXPECT_EQ(toCurrency(u"1,23445").scaled, 12344);
    EXPECT_EQ(toCurrency(1.5).scaled, 15000);
    EXPECT_EQ(toCurrency(true).scaled, -10000);
    EXPECT_EQ(toCurrency(u"922337203685477,5807").scaled, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(raisedBy([] { return toCurrency(u"922337203685477,5808"); }), 6);
}

TEST_F(NumberConversion, KeepsEveryDigitOfADecimalText) {
    EXPECT_EQ(toString(toDecimal(u"12345678901234567890,12345")), u"12345678901234567890,12345");
    EXPECT_EQ(toDecimal(u"1E3"), Decimal(1000));
    EXPECT_EQ(toDecimal(u"-1,5E-2"), Decimal(-15, 3));
    EXPECT_EQ(toDecimal(Currency{12345}), Decimal(12345, 4));
}

TEST_F(NumberConversion, ReadsTruthInTheLocaleAndInEnglish) {
    EXPECT_TRUE(toBoolean(u"Vero"));
    EXPECT_TRUE(toBoolean(u"VERO"));
    EXPECT_TRUE(toBoolean(u"true"));
    EXPECT_FALSE(toBoolean(u"falso"));
    EXPECT_FALSE(toBoolean(u"False"));
    EXPECT_TRUE(toBoolean(u"2"));
    EXPECT_FALSE(toBoolean(u"0"));
    EXPECT_TRUE(toBoolean(0.1));
    EXPECT_FALSE(toBoolean(Variant()));
    EXPECT_EQ(raisedBy([] { return toBoolean(u"forse"); }), 13);
    EXPECT_EQ(raisedBy([] { return toBoolean(u""); }), 13);
}

TEST_F(NumberConversion, RefusesNullArraysAndUnsetObjects) {
    const Variant array = Array::ofVariants({1});
    const Variant unset = Ref<Object>();
    EXPECT_EQ(raisedBy([] { return toString(Variant::null()); }), 94);
    EXPECT_EQ(raisedBy([] { return toLong(Variant::null()); }), 94);
    EXPECT_EQ(raisedBy([] { return toDecimal(Variant::null()); }), 94);
    EXPECT_EQ(raisedBy([] { return toBoolean(Variant::null()); }), 94);
    EXPECT_EQ(raisedBy([&] { return toString(array); }), 13);
    EXPECT_EQ(raisedBy([&] { return toDouble(array); }), 13);
    EXPECT_EQ(raisedBy([&] { return toLong(unset); }), 91);
    EXPECT_EQ(raisedBy([&] { return toString(unset); }), 91);
    EXPECT_EQ(raisedBy([&] { return plainValue(unset); }), 91);
    EXPECT_EQ(raisedBy([] { return toString(Variant::missing()); }), 13);
}

TEST_F(NumberConversion, TestsWhatIsNumeric) {
    EXPECT_TRUE(isNumeric(1));
    EXPECT_TRUE(isNumeric(true));
    EXPECT_TRUE(isNumeric(Variant()));
    EXPECT_TRUE(isNumeric(Currency{1}));
    EXPECT_FALSE(isNumeric(Variant::null()));
    EXPECT_FALSE(isNumeric(Date{1}));
    EXPECT_FALSE(isNumeric(Variant::missing()));
    EXPECT_FALSE(isNumeric(Array::ofVariants({1})));
    EXPECT_FALSE(isNumeric(Ref<Object>()));
    EXPECT_FALSE(isNumeric(u"1E400"));
}

TEST_F(NumberConversion, ConvertsToTheTypeNamedByItsCode) {
    EXPECT_EQ(shown(changeType(u"12", VarType::Integer)), "Integer 12");
    EXPECT_EQ(shown(changeType(12, VarType::String)), "String 12");
    EXPECT_EQ(shown(changeType(1.5, VarType::Currency)), "Currency 1,5");
    EXPECT_EQ(shown(changeType(2, VarType::Byte)), "Byte 2");
    EXPECT_EQ(shown(changeType(u"0,5", VarType::Single)), "Single 0,5");
    EXPECT_EQ(shown(changeType(0, VarType::Boolean)), "Boolean Falso");
    EXPECT_EQ(shown(changeType(7, VarType::Variant)), "Long 7");
    EXPECT_EQ(raisedBy([] { return changeType(7, VarType::Object); }), 13);
    EXPECT_EQ(raisedBy([] { return changeType(7, VarType::Array); }), 13);
}

TEST(LeadingNumber, ReadsWhatStandsInFrontWhateverTheLocale) {
    const std::pair<const char16_t*, double> cases[] = {
        {u"12,7", 12}, {u"12.7", 12.7},     {u"  -3.5 kg", -3.5}, {u"1 234", 1234}, {u"abc", 0},
        {u"", 0},      {u"1.2.3", 1.2},     {u"1e3x", 1000},      {u"1e", 1},       {u"1e+2", 100},
        {u"+5", 5},    {u"5-3", 5},         {u"&HFF", 255},       {u"&HFFFF", -1},  {u"&O17", 15},
        {u"&HZ", 0},   {u"&H10000", 65536}, {u".5", 0.5},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(leadingNumber(text), expected) << String(text).utf8();
    }
}

}  // namespace
}  // namespace kap::convert
