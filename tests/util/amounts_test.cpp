#include <kaputil/util/amounts.hpp>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/message_box.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::util {
namespace {

using test::raisedBy;
using test::shown;

class Amounts : public testing::Test {
protected:
    void SetUp() override {
        connection_ = Variant(database_);
        database_->Execute(
            u"CREATE TABLE vtx_TabVal (Codice varchar(10), Dec_Imp smallint NULL);"
            u"INSERT INTO vtx_TabVal VALUES ('EUR', 2), ('LIT', 0), ('NUL', NULL), ('USD', 3)");
    }
    void TearDown() override { platform::setMessageLog(std::nullopt); }

    Ref<ado::Connection> database_ = test::openMemory();
    Variant connection_;

private:
    LocaleScope italian_{"it-IT"};
};

double rounded(double number, std::int16_t decimals, const char16_t* mode) {
    return KapRound(number, decimals, mode).as<double>();
}

TEST_F(Amounts, RoundsToNearestHalvesAwayFromZero) {
    EXPECT_EQ(rounded(2.5, 0, u"A"), 3);
    EXPECT_EQ(rounded(-2.5, 0, u"A"), -3);
    EXPECT_EQ(rounded(-0.5, 0, u"A"), -1);
    EXPECT_EQ(rounded(2.675, 2, u"A"), 2.68);
    EXPECT_EQ(rounded(2.4999999999, 0, u"A"), 3);
    EXPECT_EQ(rounded(2.4999999, 0, u"A"), 2);
    EXPECT_EQ(rounded(1.239, 2, u"A"), 1.24);
    EXPECT_EQ(rounded(1234, -1, u"A"), 1230);
    EXPECT_EQ(rounded(0, 2, u"A"), 0);
}

TEST_F(Amounts, RoundsDownTowardZero) {
    EXPECT_EQ(rounded(1.239, 2, u"I"), 1.23);
    EXPECT_EQ(rounded(-1.239, 2, u"I"), -1.23);
    EXPECT_EQ(rounded(1299, -2, u"I"), 1200);
}

TEST_F(Amounts, RoundsUpAwayFromZero) {
    EXPECT_EQ(rounded(2, 0, u"S"), 2);
    EXPECT_EQ(rounded(2.1, 0, u"S"), 3);
    EXPECT_EQ(rounded(-2.1, 0, u"S"), -3);
    EXPECT_EQ(rounded(1.239, 2, u"S"), 1.24);
    EXPECT_EQ(rounded(0, 2, u"S"), 0);
}

TEST_F(Amounts, RaisesByOneStepWhatHasItsDecimalsAlready) {
    EXPECT_EQ(rounded(1.25, 2, u"S"), 1.26);
    EXPECT_EQ(rounded(1.23, 2, u"S"), 1.24);
}

TEST_F(Amounts, TakesTheModeInAnyCaseAndNoOther) {
    EXPECT_EQ(rounded(2.1, 0, u"s"), 3);
    EXPECT_EQ(shown(KapRound(2.1, 0, u"x")), "Integer -1");
    EXPECT_EQ(shown(KapRound(u"abc", 0, u"")), "Integer -1");
    EXPECT_EQ(shown(KapRound(2.6)), "Double 3");
}

TEST_F(Amounts, RoundsWhatConvertsToANumber) {
    EXPECT_EQ(shown(KapRound(u"2,675", 2)), "Double 2,68");
    EXPECT_EQ(shown(KapRound(Variant(), 2)), "Double 0");
    EXPECT_EQ(raisedBy([] { return KapRound(u"abc"); }), 13);
    EXPECT_EQ(raisedBy([] { return KapRound(Variant::null()); }), 94);
}

TEST_F(Amounts, OverflowsBeyondTheLargestNumber) {
    EXPECT_EQ(raisedBy([] { return KapRound(1e300, 100); }), 6);
    EXPECT_EQ(raisedBy([] { return KapRound(1, 400); }), 6);
    EXPECT_EQ(raisedBy([] { return KapRound(1, -400); }), 6);
}

TEST_F(Amounts, ValuesALineWithItsDiscounts) {
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 10, 3, Variant(10), 0, 0, Variant(5))),
              "Double 25,65");
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 10, 3)), "Double 30");
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 9.99, 7, Variant(2), Variant(3), Variant(4))),
              "Double 63,82");
}

TEST_F(Amounts, ValuesWithTheDecimalsOfTheCurrency) {
    EXPECT_EQ(shown(CalcVal(connection_, u"LIT", 10.3, 3)), "Double 31");
    EXPECT_EQ(shown(CalcVal(connection_, u"NUL", 10.3, 3)), "Double 31");
    EXPECT_EQ(shown(CalcVal(connection_, u"USD", 1.0005, 1)), "Double 1,001");
}

TEST_F(Amounts, LimitsTheFirstTwoDiscountsInTheCallersVariables) {
    Variant first(150);
    Variant second(u"100");
    Variant third(10);
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 1000000, 1, first, second, third)), "Double 0,01");
    EXPECT_EQ(shown(first), "Double 99,99");
    EXPECT_EQ(shown(second), "Double 99,99");
    EXPECT_EQ(shown(third), "Long 10");
}

TEST_F(Amounts, LeavesTheThirdAndTheHeaderDiscountUnlimited) {
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 10, 1, 0, 0, Variant(150))), "Double -5");
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 10, 1, 0, 0, Variant(100))), "Double 0");
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 10, 1, 0, 0, 0, Variant(100))), "Double 0");
}

TEST_F(Amounts, TakesNegativeDiscountsAsSurcharges) {
    EXPECT_EQ(shown(CalcVal(connection_, u"EUR", 10, 1, Variant(-10))), "Double 11");
}

TEST_F(Amounts, TellsOfACurrencyThatIsNotThere) {
    const test::TemporaryFolder folder;
    platform::setMessageLog(folder.file("messaggi.log"));
    EXPECT_TRUE(CalcVal(connection_, u"XXX", 10, 1).isEmpty());
    std::ifstream file(folder.file("messaggi.log"));
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(content.ends_with("\ttest_util\tValuta XXX non trovata!\n")) << content;
}

TEST_F(Amounts, LetsErrorsThrough) {
    EXPECT_EQ(raisedBy([&] { return CalcVal(connection_, u"EUR", 1, 1, Variant::null()); }), 94);
    EXPECT_EQ(raisedBy([&] { return CalcVal(connection_, u"EUR", 1, 1, Variant(u"abc")); }), 13);
    EXPECT_EQ(raisedBy([&] { return CalcVal(connection_, u"EUR", 1e200, 1e200); }), 6);
    // Quotes in the code are deliberately not doubled.
    EXPECT_NE(raisedBy([&] { return CalcVal(connection_, u"L'EUR", 1, 1); }), 0);
}

TEST_F(Amounts, TakesAConnectionString) {
    const test::TemporaryFolder folder;
    test::open(folder.database())
        ->Execute(
            u"CREATE TABLE vtx_TabVal (Codice varchar(10), Dec_Imp smallint);"
            u"INSERT INTO vtx_TabVal VALUES ('EUR', 1)");
    EXPECT_EQ(shown(CalcVal(Variant(folder.database()), u"EUR", 1.25, 1)), "Double 1,3");
}

}  // namespace
}  // namespace kap::util
