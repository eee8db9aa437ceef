#include "tsql/messages.hpp"

#include <gtest/gtest.h>

#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

TEST(Messages, AreWrittenWithTheirArguments) {
    EXPECT_EQ(textOf(Message::InvalidColumn, {"Prezzo"}), "Invalid column name 'Prezzo'.");
    EXPECT_EQ(textOf(Message::OperandTypeClash, {"date", "int"}),
              "Operand type clash: date is incompatible with int");
    EXPECT_EQ(textOf(Message::DivideByZero, {}), "Divide by zero error encountered.");
}

TEST(Messages, TakeArgumentsAsTheyAre) {
    EXPECT_EQ(textOf(Message::InvalidColumn, {"%1 100%"}), "Invalid column name '%1 100%'.");
    EXPECT_EQ(textOf(Message::OperandTypeClash, {"%2", "%1"}),
              "Operand type clash: %2 is incompatible with %1");
}

TEST(Messages, LeaveAPlaceAloneThatHasNoArgument) {
    EXPECT_EQ(textOf(Message::InvalidColumn, {}), "Invalid column name '%1'.");
}

TEST(Messages, BecomeErrorsWithAllThatIsKnownOfThem) {
    const ServerError error(Message::NullRefused, {"a", "t", "INSERT"}, 7);
    EXPECT_EQ(error.number(), 515);
    EXPECT_EQ(error.severity(), 16);
    EXPECT_EQ(error.state(), 2);
    EXPECT_EQ(error.line(), 7);
    EXPECT_EQ(error.withState(9).state(), 9);
    EXPECT_EQ(error.withState(9).message(), error.message());
}

TEST(Messages, TellHowFarANumberReaches) {
    EXPECT_EQ(reachOf(numberOf(Message::DivideByZero)), ErrorReach::Statement);
    EXPECT_EQ(reachOf(numberOf(Message::InvalidObject)), ErrorReach::Scope);
    EXPECT_EQ(reachOf(numberOf(Message::LockTimeout)), ErrorReach::Batch);
    EXPECT_EQ(reachOf(numberOf(Message::ConversionFailed)), ErrorReach::Transaction);
    EXPECT_EQ(reachOf(0), ErrorReach::Statement);
    EXPECT_EQ(reachOf(49999), ErrorReach::Statement);
    EXPECT_EQ(reachOf(2147483647), ErrorReach::Statement);
}

TEST(Messages, TellTheSqlStateOfANumber) {
    EXPECT_STREQ(stateOf(208), "42S02");
    EXPECT_STREQ(stateOf(2627), "23000");
    EXPECT_STREQ(stateOf(517), "42000");
    EXPECT_STREQ(stateOf(0), "42000");
    EXPECT_EQ(findMessage(0), nullptr);
    EXPECT_EQ(findMessage(12345), nullptr);
    ASSERT_NE(findMessage(40517), nullptr);
    EXPECT_EQ(findMessage(40517)->number, 40517);
}

}  // namespace
}  // namespace kap::tsql
