#include <kaputil/util/values.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"
#include "support/shown.hpp"

namespace kap::util {
namespace {

using test::raisedBy;
using test::shown;

class Values : public testing::Test {
private:
    LocaleScope italian_{"it-IT"};
};

// An object without members.
class Bare final : public Object {
public:
    [[nodiscard]] String className() const override { return u"Bare"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return std::nullopt;
    }
    using Object::invoke;
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override {
        throw AutomationError(errors::kMemberNotFound);
    }
};

// An object that stands for a value.
class Holder final : public Object {
public:
    explicit Holder(Variant value) : value_(std::move(value)) {}
    [[nodiscard]] String className() const override { return u"Field"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return kDefaultMember;
    }
    using Object::invoke;
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override { return value_; }

private:
    Variant value_;
};

std::string yearNow() {
    return std::to_string(convert::takeApart(localNow())->date.year);
}

TEST_F(Values, CountsNullEmptyAndSpacesAsBlank) {
    EXPECT_TRUE(kapEmpty(Variant::null()));
    EXPECT_TRUE(kapEmpty(Variant()));
    EXPECT_TRUE(kapEmpty(u""));
    EXPECT_TRUE(kapEmpty(u"  "));
    EXPECT_TRUE(kapEmpty(make<Holder>(Variant::null())));
}

TEST_F(Values, DoesNotCountZeroFalseOrADateAsBlank) {
    EXPECT_FALSE(kapEmpty(0));
    EXPECT_FALSE(kapEmpty(u" 0 "));
    EXPECT_FALSE(kapEmpty(false));
    EXPECT_FALSE(kapEmpty(Date{0}));
    EXPECT_FALSE(kapEmpty(u"\t"));
    EXPECT_FALSE(kapEmpty(make<Holder>(u"x")));
}

TEST_F(Values, RefusesToCallAValueWithoutTextBlank) {
    EXPECT_EQ(raisedBy([] { return kapEmpty(Array::ofVariants({})); }), 13);
    EXPECT_EQ(raisedBy([] { return kapEmpty(make<Bare>()); }), 13);
    EXPECT_EQ(raisedBy([] { return kapEmpty(Ref<Object>()); }), 91);
}

TEST_F(Values, MakesAnIntegerZeroOfWhatIsNoNumber) {
    for (const char16_t* type : {u"Double", u"Single", u"Integer", u"Numeric", u"boh"}) {
        EXPECT_EQ(shown(kapVal(u"abc", type)), "Integer 0");
        EXPECT_EQ(shown(kapVal(Variant::null(), type)), "Integer 0");
        EXPECT_EQ(shown(kapVal(Date{1}, type)), "Integer 0");
        EXPECT_EQ(shown(kapVal(u"", type)), "Integer 0");
    }
}

TEST_F(Values, MakesAZeroOfTheTypeAskedForOfEmpty) {
    EXPECT_EQ(shown(kapVal(Variant())), "Double 0");
    EXPECT_EQ(shown(kapVal(Variant(), u"Single")), "Single 0");
    EXPECT_EQ(shown(kapVal(Variant(), u"Integer")), "Double 0");
    EXPECT_EQ(shown(kapVal(Variant(), u"Numeric")), "Empty");
}

TEST_F(Values, ConvertsToTheTypeNamedInAnyCase) {
    EXPECT_EQ(shown(kapVal(u"3,5", u"double")), "Double 3,5");
    EXPECT_EQ(shown(kapVal(u"3,5")), "Double 3,5");
    EXPECT_EQ(shown(kapVal(3.5, u"sInGlE")), "Single 3,5");
    EXPECT_EQ(shown(kapVal(true)), "Double -1");
}

TEST_F(Values, ReadsAnIntegerFromTheFrontOfTheText) {
    EXPECT_EQ(shown(kapVal(3.5, u"INTEGER")), "Double 3");
    EXPECT_EQ(shown(kapVal(12.7, u"Integer")), "Double 12");
    EXPECT_EQ(shown(kapVal(u"12,7", u"Integer")), "Double 12");
    EXPECT_EQ(shown(kapVal(u"1.234", u"Integer")), "Double 1,234");
    EXPECT_EQ(shown(kapVal(true, u"Integer")), "Double 0");  // "Vero" begins with no digit
}

TEST_F(Values, KeepsTheFractionOfAnIntegerWherePointsAreDecimal) {
    const LocaleScope american("en-US");
    EXPECT_EQ(shown(kapVal(12.7, u"Integer")), "Double 12.7");
    EXPECT_EQ(shown(kapVal(u"3,500", u"Double")), "Double 3500");
}

TEST_F(Values, MakesASingleOfAnUnknownType) {
    EXPECT_EQ(shown(kapVal(3.5, u"Currency")), "Single 3,5");
    EXPECT_EQ(shown(kapVal(u"2", u"")), "Single 2");
}

TEST_F(Values, LeavesTheTypeOfANumberThatIsNumericDecimalOrFloat) {
    EXPECT_EQ(shown(kapVal(Currency{35000}, u"NUMERIC")), "Currency 3,5");
    EXPECT_EQ(shown(kapVal(std::int16_t{3}, u"decimal")), "Integer 3");
    EXPECT_EQ(shown(kapVal(u"3,5", u"Float")), "String 3,5");
}

TEST_F(Values, OverflowsWhenANumberIsTooLargeForSingle) {
    EXPECT_EQ(raisedBy([] { return kapVal(u"1E39", u"Single"); }), 6);
    EXPECT_EQ(raisedBy([] { return kapVal(1e39, u"boh"); }), 6);
}

TEST_F(Values, DoublesQuotes) {
    EXPECT_EQ(kapApice(u"L'Aquila"), u"L''Aquila");
    EXPECT_EQ(kapApice(u"''"), u"''''");
    EXPECT_EQ(kapApice(u"Roma"), u"Roma");
    EXPECT_EQ(kapApice(3.5), u"3,5");
}

TEST_F(Values, MakesBlanksEmptyAndKeepsTheSpacesOfOtherTexts) {
    EXPECT_EQ(kapApice(u"   "), u"");
    EXPECT_EQ(kapApice(Variant::null()), u"");
    EXPECT_EQ(kapApice(Variant()), u"");
    EXPECT_EQ(kapApice(u"  d'oro "), u"  d''oro ");
}

TEST_F(Values, RefusesToQuoteAnArray) {
    EXPECT_EQ(raisedBy([] { return kapApice(Array::ofVariants({})); }), 13);
}

TEST_F(Values, TurnsADayFirstDateIntoYearMonthDay) {
    EXPECT_EQ(shown(DtoSQL(u"25/12/03")), "String 2003-12-25");
    EXPECT_EQ(shown(DtoSQL(u"251203")), "String 2003-12-25");
    EXPECT_EQ(shown(DtoSQL(u"25/12/2003")), "String 2003-12-25");
    EXPECT_EQ(shown(DtoSQL(u"25122003")), "String 2003-12-25");
    EXPECT_EQ(shown(DtoSQL(u"  010203")), "String 2003-02-01");
    EXPECT_EQ(shown(DtoSQL(Date{37980})), "String 2003-12-25");
}

TEST_F(Values, TakesThisYearWhenADateHasNone) {
    const std::string before = yearNow();
    const std::string withSeparator = shown(DtoSQL(u"01/02"));
    const std::string without = shown(DtoSQL(u"0102"));
    const std::string after = yearNow();
    EXPECT_TRUE(withSeparator == "String " + before + "-02-01" ||
                withSeparator == "String " + after + "-02-01");
    EXPECT_TRUE(without == "String " + before + "-02-01" ||
                without == "String " + after + "-02-01");
}

TEST_F(Values, PutsTwoDigitYearsUpTo70IntoThe2000s) {
    EXPECT_EQ(shown(DtoSQL(u"01/02/00")), "String 2000-02-01");
    EXPECT_EQ(shown(DtoSQL(u"01/02/70")), "String 2070-02-01");
    EXPECT_EQ(shown(DtoSQL(u"01/02/71")), "String 1971-02-01");
    EXPECT_EQ(shown(DtoSQL(u"01/02/99")), "String 1999-02-01");
}

TEST_F(Values, MakesEmptyTextOfWhatIsNoDate) {
    EXPECT_EQ(shown(DtoSQL(u"31/02/2003")), "String ");
    EXPECT_EQ(shown(DtoSQL(u"1/2/2003")), "String ");
    EXPECT_EQ(shown(DtoSQL(u"abc")), "String ");
    EXPECT_EQ(shown(DtoSQL(u"/")), "String ");
    EXPECT_EQ(shown(DtoSQL(Variant::null())), "String ");
    EXPECT_EQ(shown(DtoSQL(Variant())), "String ");
    EXPECT_EQ(shown(DtoSQL(u"   ")), "String ");
}

TEST_F(Values, WritesADateAsTheLocaleReadsIt) {
    const LocaleScope american("en-US");
    EXPECT_EQ(shown(DtoSQL(u"25/12/2003")), "String 2003-12-25");
    EXPECT_EQ(shown(DtoSQL(u"31/02/2003")), "String ");
}

Variant bytes(std::vector<std::uint8_t> values) {
    return Array::ofBytes(std::move(values));
}

TEST_F(Values, ReadsTheEightBytesOfARowVersion) {
    EXPECT_EQ(TSToHex(bytes({0, 0, 0, 0, 0, 0, 0x07, 0xD1})), u"2001");
    EXPECT_EQ(TSToHex(bytes({0, 0, 0, 0, 0, 0, 0, 0})), u"0");
    EXPECT_EQ(TSToHex(bytes({0, 0, 0, 0, 0, 0, 0, 1, 9, 9})), u"1");
    EXPECT_EQ(TSToHex(make<Holder>(bytes({1, 0, 0, 0, 0, 0, 0, 0}))), u"72057594037927936");
}

TEST_F(Values, ReadsARowVersionWithoutSign) {
    EXPECT_EQ(TSToHex(bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})),
              u"18446744073709551615");
    EXPECT_EQ(TSToHex(bytes({0x80, 0, 0, 0, 0, 0, 0, 0})), u"9223372036854775808");
}

TEST_F(Values, ReadsTheLowBytesOfATextsCharacters) {
    EXPECT_EQ(TSToHex(u"\u0100\u0200\u0300\u0400\u0500\u0600\u0700\u0800"), u"0");
    EXPECT_EQ(TSToHex(u"\u0100\u0100\u0100\u0100\u0100\u0100\u0107\u01D1rest"), u"2001");
    EXPECT_EQ(TSToHex(u"00000000"), u"3472328296227680304");
}

TEST_F(Values, RefusesARowVersionOfFewerThanEightCharacters) {
    EXPECT_EQ(raisedBy([] { return TSToHex(u"1234567"); }), 5);
    EXPECT_EQ(raisedBy([] { return TSToHex(Variant()); }), 5);
    EXPECT_EQ(raisedBy([] { return TSToHex(bytes({1, 2, 3})); }), 5);
    EXPECT_EQ(raisedBy([] { return TSToHex(Variant::null()); }), 94);
    EXPECT_EQ(raisedBy([] { return TSToHex(Array::ofVariants({1})); }), 13);
}

}  // namespace
}  // namespace kap::util
