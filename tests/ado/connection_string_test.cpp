#include "data/connection_string.hpp"

#include <gtest/gtest.h>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

namespace kap::ado {
namespace {

std::string valueOf(std::string_view text, std::string_view key) {
    return ConnectionString::parse(text).find(key).value_or("(none)");
}

std::string refusalOf(std::string_view text) {
    try {
        (void)ConnectionString::parse(text);
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kInvalidArgument);
        return error.description().utf8();
    }
    return "(accepted)";
}

TEST(ConnectionString, ReadsPairsBetweenSemicolons) {
    const ConnectionString keys = ConnectionString::parse("Provider=KapLocal;Data Source=a.db");
    ASSERT_EQ(keys.pairs().size(), 2U);
    EXPECT_EQ(keys.pairs()[0].key, "Provider");
    EXPECT_EQ(keys.pairs()[0].value, "KapLocal");
    EXPECT_EQ(keys.pairs()[1].key, "Data Source");
    EXPECT_EQ(keys.pairs()[1].value, "a.db");
}

TEST(ConnectionString, FindsKeysIgnoringCase) {
    EXPECT_EQ(valueOf("data SOURCE=a.db", "Data Source"), "a.db");
}

TEST(ConnectionString, DropsBlanksAroundKeysAndValues) {
    EXPECT_EQ(valueOf("  Mode =\t Read  ; ", "Mode"), "Read");
}

TEST(ConnectionString, KeepsBlanksInsideAValue) {
    EXPECT_EQ(valueOf("Data Source=my company.db;", "Data Source"), "my company.db");
}

TEST(ConnectionString, TheLastValueOfAKeyCounts) {
    EXPECT_EQ(valueOf("Mode=Read;mode=ReadWrite", "Mode"), "ReadWrite");
}

TEST(ConnectionString, PassesOverEmptyPlaces) {
    EXPECT_EQ(ConnectionString::parse(";;Mode=Read;;").pairs().size(), 1U);
}

TEST(ConnectionString, AnEmptyTextHasNoPairs) {
    EXPECT_TRUE(ConnectionString::parse("").pairs().empty());
}

TEST(ConnectionString, AValueMayBeEmpty) {
    EXPECT_EQ(valueOf("Password=;Mode=Read", "Password"), "");
}

TEST(ConnectionString, QuotedValuesHoldSemicolonsAndBlanks) {
    EXPECT_EQ(valueOf("Data Source=\" a;b \";Mode=Read", "Data Source"), " a;b ");
    EXPECT_EQ(valueOf("Data Source='a;b'", "Data Source"), "a;b");
}

TEST(ConnectionString, ADoubledQuoteInsideStandsForOne) {
    EXPECT_EQ(valueOf("Data Source='l''azienda.db'", "Data Source"), "l'azienda.db");
    EXPECT_EQ(valueOf("Data Source=\"say \"\"a\"\"\"", "Data Source"), "say \"a\"");
}

TEST(ConnectionString, AnEqualsSignMayStandInAValue) {
    EXPECT_EQ(valueOf("Data Source=a=b.db", "Data Source"), "a=b.db");
}

TEST(ConnectionString, ASemicolonMayStandInBraces) {
    const std::string text = "Driver={Text (*.txt; *.csv)} ;Dbq=/srv";
    EXPECT_EQ(valueOf(text, "Driver"), "Text (*.txt; *.csv)");
    EXPECT_EQ(valueOf(text, "Dbq"), "/srv");
}

TEST(ConnectionString, RefusesBracesThatAreNotClosed) {
    EXPECT_EQ(refusalOf("Driver={Text"),
              "The connection string cannot be read at character 8: a brace is not closed. "
              "Write it as Key=Value;Key=Value.");
    EXPECT_EQ(refusalOf("Driver={Text}x"),
              "The connection string cannot be read at character 14: after a value in braces only "
              "';' may stand. Write it as Key=Value;Key=Value.");
}

TEST(ConnectionString, AMissingKeyIsNotFound) {
    EXPECT_FALSE(ConnectionString::parse("Mode=Read").find("Provider").has_value());
}

TEST(ConnectionString, RefusesANameWithoutAnEqualsSign) {
    EXPECT_EQ(refusalOf("Mode=Read;Provider"),
              "The connection string cannot be read at character 11: 'Provider' has no '=' after "
              "it. Write it as Key=Value;Key=Value.");
}

TEST(ConnectionString, RefusesAnEqualsSignWithoutAName) {
    EXPECT_EQ(refusalOf("=x"),
              "The connection string cannot be read at character 1: there is no name before '='. "
              "Write it as Key=Value;Key=Value.");
}

TEST(ConnectionString, RefusesAQuotedValueThatIsNotClosed) {
    EXPECT_EQ(refusalOf("Data Source='a.db"),
              "The connection string cannot be read at character 13: a quoted value is not closed. "
              "Write it as Key=Value;Key=Value.");
}

TEST(ConnectionString, RefusesTextAfterAQuotedValue) {
    EXPECT_EQ(refusalOf("Data Source='a'b"),
              "The connection string cannot be read at character 16: after a quoted value only ';' "
              "may stand. Write it as Key=Value;Key=Value.");
}

TEST(ConnectionString, IsShownWithoutPasswords) {
    EXPECT_EQ(ConnectionString::shown("Provider=P;Password=geheim;Data Source=a"),
              "Provider=P;Data Source=a");
    EXPECT_EQ(ConnectionString::shown("pwd = \"a;\"\"b\" ; Data Source=a"), " Data Source=a");
    EXPECT_EQ(ConnectionString::shown("Data Source=a;PWD={x;y}"), "Data Source=a;");
    EXPECT_EQ(ConnectionString::shown("Password=a;Mode=Read;Password=b"), "Mode=Read;");
    EXPECT_EQ(ConnectionString::shown("Password=a;Persist Security Info=False"),
              "Persist Security Info=False");
    EXPECT_EQ(ConnectionString::shown("Extended Properties='DSN=x;PWD=a';Mode=Read"),
              "Extended Properties=\"DSN=x;\";Mode=Read");
}

TEST(ConnectionString, IsShownAsItIsWhereNothingIsToBeHidden) {
    for (const char* text :
         {"", "Provider=KapLocal; Data Source = a.db ", "Extended Properties='DSN=x';",
          "Password=geheim;Persist Security Info=True", "pwd=a;persist security info=YES"}) {
        EXPECT_EQ(ConnectionString::shown(text), text);
    }
}

}  // namespace
}  // namespace kap::ado
