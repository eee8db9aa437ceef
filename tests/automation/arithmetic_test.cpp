#include <kaputil/automation/arithmetic.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>

#include "support/shown.hpp"

namespace kap::arithmetic {
namespace {

using test::raisedBy;
using test::shown;

class Arithmetic : public testing::Test {
    LocaleScope italian_{"it-IT"};
};

constexpr std::int16_t kMaxInteger = std::numeric_limits<std::int16_t>::max();
constexpr std::int32_t kMaxLong = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMinLong = std::numeric_limits<std::int32_t>::min();

Variant integer(int value) {
    return static_cast<std::int16_t>(value);
}

TEST_F(Arithmetic, GoesOnInTheNextWiderTypeWhenAResultOutgrowsItsOwn) {
    EXPECT_EQ(shown(add(std::uint8_t{200}, std::uint8_t{100})), "Integer 300");
    EXPECT_EQ(shown(add(kMaxInteger, integer(1))), "Long 32768");
    EXPECT_EQ(shown(add(kMaxLong, integer(1))), "Double 2147483648");
    EXPECT_EQ(shown(subtract(std::uint8_t{1}, std::uint8_t{2})), "Integer -1");
    EXPECT_EQ(shown(multiply(integer(1000), integer(1000))), "Long 1000000");
    EXPECT_EQ(shown(negate(kMinLong)), "Double 2147483648");
    EXPECT_EQ(shown(integerDivide(kMinLong, integer(-1))), "Double 2147483648");
    EXPECT_EQ(shown(modulo(kMinLong, integer(-1))), "Long 0");
    EXPECT_EQ(shown(multiply(3e38F, 10.0F)), "Double 3,00000000549776E+39");
}

TEST_F(Arithmetic, GivesTheWiderTypeOfTheOperands) {
    EXPECT_EQ(shown(add(Variant(), integer(2))), "Integer 2");
    EXPECT_EQ(shown(add(true, integer(2))), "Integer 1");
    EXPECT_EQ(shown(add(1.5F, integer(2))), "Single 3,5");
    EXPECT_EQ(shown(add(1.5F, 2)), "Double 3,5");
    EXPECT_EQ(shown(add(Currency{15000}, 2.5)), "Currency 4");
    EXPECT_EQ(shown(multiply(Currency{15000}, 2.5)), "Double 3,75");
    EXPECT_EQ(shown(add(Decimal(15, 1), 2.5)), "Decimal 4");
    EXPECT_EQ(shown(add(Date{37980}, integer(1))), "Date 26/12/2003");
    EXPECT_EQ(shown(subtract(Date{37980}, Date{37979})), "Double 1");
    EXPECT_EQ(shown(multiply(Date{2}, integer(3))), "Double 6");
}

TEST_F(Arithmetic, ReadsTextsUnderTheUsersLocale) {
    EXPECT_EQ(shown(multiply(u"1,5", integer(2))), "Double 3");
    EXPECT_EQ(shown(subtract(u"12", u"2")), "Double 10");
    EXPECT_EQ(raisedBy([] { return multiply(u"abc", 2); }), 13);
    EXPECT_EQ(raisedBy([] { return multiply(u"", 2); }), 13);
}

TEST_F(Arithmetic, JoinsTwoTexts) {
    EXPECT_EQ(shown(add(u"12", u"3")), "String 123");
    EXPECT_EQ(shown(add(u"12", Variant())), "String 12");
    EXPECT_EQ(shown(concatenate(integer(1), 2.5)), "String 12,5");
    EXPECT_EQ(shown(concatenate(u"a", Variant::null())), "String a");
    EXPECT_TRUE(concatenate(Variant::null(), Variant::null()).isNull());
}

TEST_F(Arithmetic, GivesNullForNull) {
    EXPECT_TRUE(add(Variant::null(), 1).isNull());
    EXPECT_TRUE(multiply(u"abc", Variant::null()).isNull());
    EXPECT_TRUE(divide(Variant::null(), 0).isNull());
    EXPECT_TRUE(negate(Variant::null()).isNull());
    EXPECT_FALSE(compare(Variant::null(), 1).has_value());
}

TEST_F(Arithmetic, DividesExactlyWhereItCan) {
    EXPECT_EQ(shown(divide(integer(7), integer(2))), "Double 3,5");
    EXPECT_EQ(shown(divide(1.5F, integer(2))), "Single 0,75");
    EXPECT_EQ(shown(divide(Currency{10000}, Currency{30000})), "Double 0,333333333333333");
    EXPECT_EQ(shown(divide(Decimal(1), Decimal(3))), "Decimal 0,3333333333333333333333333333");
    EXPECT_EQ(shown(divide(Decimal(2), Decimal(3))), "Decimal 0,6666666666666666666666666667");
    EXPECT_EQ(shown(integerDivide(-7.5, integer(2))), "Long -4");
    EXPECT_EQ(shown(modulo(integer(-7), integer(2))), "Integer -1");
}

TEST_F(Arithmetic, RefusesToDivideByZero) {
    EXPECT_EQ(raisedBy([] { return divide(1, 0); }), 11);
    EXPECT_EQ(raisedBy([] { return divide(0, 0.0); }), 6);
    EXPECT_EQ(raisedBy([] { return divide(Decimal(1), Variant()); }), 11);
    EXPECT_EQ(raisedBy([] { return integerDivide(1, 0.4); }), 11);
    EXPECT_EQ(raisedBy([] { return modulo(0, 0); }), 11);
}

TEST_F(Arithmetic, OverflowsBeyondTheWidestType) {
    EXPECT_EQ(raisedBy([] { return multiply(1e200, 1e200); }), 6);
    EXPECT_EQ(raisedBy([] { return power(10, 400); }), 6);
    EXPECT_EQ(
        raisedBy([] { return multiply(Decimal(10000000000000000), Decimal(10000000000000000)); }),
        6);
    EXPECT_EQ(raisedBy([] { return add(Currency{std::numeric_limits<std::int64_t>::max()}, 1); }),
              6);
    EXPECT_EQ(raisedBy([] { return add(Date{2958465}, 1); }), 6);
    EXPECT_EQ(raisedBy([] { return power(-8, 0.5); }), 5);
}

TEST_F(Arithmetic, KeepsAmountsExact) {
    EXPECT_EQ(shown(multiply(Currency{30000}, Currency{12345})), "Currency 3,7035");
    EXPECT_EQ(shown(multiply(Currency{5}, Currency{1000})), "Currency 0");  // half of a step: even
    EXPECT_EQ(shown(subtract(Decimal(1), Decimal(9, 1))), "Decimal 0,1");
    EXPECT_EQ(shown(add(*Decimal::parse("79228162514264337593543950334"), Decimal(1))),
              "Decimal 79228162514264337593543950335");
}

TEST_F(Arithmetic, ComparesByValue) {
    EXPECT_EQ(compare(integer(2), 10.0), -1);
    EXPECT_EQ(compare(Currency{10000}, Decimal(10, 1)), 0);
    EXPECT_EQ(compare(u"150", 99.99), 1);
    EXPECT_EQ(compare(u"9", 10), -1);
    EXPECT_EQ(compare(u"9", u"10"), 1);
    EXPECT_EQ(compare(Variant(), u""), 0);
    EXPECT_EQ(compare(Variant(), integer(0)), 0);
    EXPECT_EQ(compare(Decimal(-1), 1e300), -1);
    EXPECT_EQ(raisedBy([] { return compare(u"abc", 1); }), 13);
}

TEST_F(Arithmetic, RefusesWhatIsNoValue) {
    EXPECT_EQ(raisedBy([] { return add(Variant(Array::ofVariants({Variant(1)})), 1); }), 13);
    EXPECT_EQ(raisedBy([] { return add(Variant::missing(), 1); }), 13);
    EXPECT_EQ(raisedBy([] { return add(Ref<Object>(), 1); }), 91);
}

}  // namespace
}  // namespace kap::arithmetic
