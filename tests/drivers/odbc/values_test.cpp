#include "drivers/odbc/values.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/odbc/decimal_column.hpp"
#include "support/seed.hpp"
#include "support/shown.hpp"

namespace kap::ado::odbc {
namespace {

std::string shownDecimal(std::string_view text) {
    const auto number = decimalOf(text);
    return number ? std::to_string(number->digits) + " / " + std::to_string(number->scale)
                  : "refused";
}

TEST(OdbcDecimals, AreTakenApart) {
    EXPECT_EQ(shownDecimal("12.50"), "125 / 1");
    EXPECT_EQ(shownDecimal("-0.05"), "-5 / 2");
    EXPECT_EQ(shownDecimal(".5"), "5 / 1");
    EXPECT_EQ(shownDecimal("+7"), "7 / 0");
    EXPECT_EQ(shownDecimal("7."), "7 / 0");
    EXPECT_EQ(shownDecimal("-9223372036854775808"), "-9223372036854775808 / 0");
    for (const char* wrong : {"9223372036854775808", "NaN", "", "-", ".", "1e5", "1.2.3", "12 "}) {
        EXPECT_EQ(shownDecimal(wrong), "refused") << wrong;
    }
}

TEST(OdbcDecimals, GetAnotherScaleOnlyWithoutLoss) {
    EXPECT_EQ(scaled({125, 1}, 2), 1250);
    EXPECT_EQ(scaled({125, 2}, 1), std::nullopt);
    EXPECT_EQ(scaled({0, 5}, 0), 0);
    EXPECT_EQ(scaled({std::numeric_limits<std::int64_t>::max(), 0}, 1), std::nullopt);
}

TEST(OdbcDecimals, AreWrittenWithTheirPoint) {
    EXPECT_EQ(decimalText(-5, 2), "-0.05");
    EXPECT_EQ(decimalText(1234500, 4), "123.4500");
    EXPECT_EQ(decimalText(12, 0), "12");
    EXPECT_EQ(decimalText(0, 3), "0.000");
}

TEST(OdbcDecimals, AreShortenedToWhatTheySay) {
    EXPECT_EQ(shortestDecimal("+007.50"), "7.5");
    EXPECT_EQ(shortestDecimal("-.5"), "-0.5");
    EXPECT_EQ(shortestDecimal("100"), "100");
    EXPECT_EQ(shortestDecimal("12."), "12");
    EXPECT_EQ(shortestDecimal("-0.00"), "0");
}

ColumnInfo wideColumn() {
    ColumnInfo column;
    column.name = "Totale";
    column.type = DataTypeEnum::adNumeric;
    column.precision = 38;
    column.numericScale = 2;
    column.wideDecimal = true;
    return column;
}

TEST(OdbcDecimals, AWideColumnKeepsEveryDigitAndItsScaleGrows) {
    ColumnInfo column = wideColumn();
    ColumnStore store;
    for (const char* text : {"1.50", "2.123456789", "-79228162514264337593543950335"}) {
        appendDecimal(text, column, store);
    }
    EXPECT_EQ(store.bytes(0), "1.5");
    EXPECT_EQ(store.bytes(1), "2.123456789");
    EXPECT_EQ(store.bytes(2), "-79228162514264337593543950335");
    EXPECT_EQ(column.numericScale, 9);
}

TEST(OdbcDecimals, AWideColumnRefusesWhatWouldBeRounded) {
    ColumnInfo column = wideColumn();
    ColumnStore store;
    for (const char* text : {"79228162514264337593543950336", "0.12345678901234567890123456789",
                             "123456789012345678901234567.123", "NaN", ""}) {
        EXPECT_EQ(test::raisedBy([&] {
                      appendDecimal(text, column, store);
                      return 0;
                  }),
                  errors::kMultipleStep)
            << text;
    }
    EXPECT_EQ(store.size(), 0U);
}

TEST(OdbcDecimals, AnAnnouncedScaleIsKept) {
    ColumnInfo column;
    column.type = DataTypeEnum::adNumeric;
    column.precision = 10;
    column.numericScale = 2;
    ColumnStore store;
    EXPECT_EQ(test::raisedBy([&] {
                  appendDecimal("1.234", column, store);
                  return 0;
              }),
              errors::kMultipleStep);
    EXPECT_EQ(store.size(), 0U);
}

TEST(OdbcDates, KeepMicrosecondsThereAndBack) {
    std::mt19937 random(test::randomSeed());
    for (int i = 0; i < 20000; ++i) {
        SQL_TIMESTAMP_STRUCT stamp{};
        stamp.year = static_cast<SQLSMALLINT>(1990 + random() % 80);
        stamp.month = static_cast<SQLUSMALLINT>(1 + random() % 12);
        stamp.day = static_cast<SQLUSMALLINT>(1 + random() % 28);
        stamp.hour = static_cast<SQLUSMALLINT>(random() % 24);
        stamp.minute = static_cast<SQLUSMALLINT>(random() % 60);
        stamp.second = static_cast<SQLUSMALLINT>(random() % 60);
        stamp.fraction = static_cast<SQLUINTEGER>(random() % 1000000 * 1000);
        const auto days = daysOf(stamp);
        ASSERT_TRUE(days);
        const SQL_TIMESTAMP_STRUCT back = stampOf(*days, 6);
        ASSERT_TRUE(back.year == stamp.year && back.month == stamp.month && back.day == stamp.day &&
                    back.hour == stamp.hour && back.minute == stamp.minute &&
                    back.second == stamp.second && back.fraction == stamp.fraction)
            << stamp.year << '-' << stamp.month << '-' << stamp.day << ' ' << stamp.hour << ':'
            << stamp.minute << ':' << stamp.second << '.' << stamp.fraction;
    }
}

TEST(OdbcDates, RoundToTheColumnsDecimals) {
    EXPECT_EQ(stampOf(0.5 + 0.0006 / 86400, 3).fraction, 1000000U);
    EXPECT_EQ(stampOf(0.5 + 0.0006 / 86400, 6).fraction, 600000U);
    const SQL_TIMESTAMP_STRUCT midnight = stampOf(1.0 - 0.0001 / 86400, 3);
    EXPECT_EQ(midnight.day, 31);
    EXPECT_EQ(midnight.hour, 0);
    EXPECT_EQ(stampOf(-0.25, 3).hour, 18);
}

TEST(OdbcDates, RefuseWhatIsNoDay) {
    EXPECT_FALSE(daysOf(SQL_DATE_STRUCT{2003, 2, 29}));
    EXPECT_FALSE(daysOf(SQL_DATE_STRUCT{50, 1, 1}));
    EXPECT_EQ(daysOf(SQL_DATE_STRUCT{1899, 12, 30}), 0.0);
}

TEST(OdbcDates, TimesOfADayAreTexts) {
    EXPECT_EQ(daysOfClock("12:00:00"), 0.5);
    EXPECT_EQ(clockText(0.75), "18:00:00");
    EXPECT_EQ(clockText(0.5 + 0.25 / 86400), "12:00:00.250000");
    EXPECT_FALSE(daysOfClock("mezzogiorno"));
}

TEST(OdbcTexts, HalfAPairIsRefused) {
    std::string text = "x";
    EXPECT_TRUE(appendUtf8(text, u"a€\xD83D\xDD29", 4));
    EXPECT_EQ(text, "xa€\xF0\x9F\x94\xA9");
    EXPECT_FALSE(appendUtf8(text, u"a\xD83D", 2));
}

}  // namespace
}  // namespace kap::ado::odbc
