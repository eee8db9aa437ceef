#include "drivers/odbc/diagnostics.hpp"

#include <string>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "data/sql_states.hpp"

namespace kap::ado::odbc {
namespace {

TEST(OdbcErrors, EachStateHasItsNumber) {
    struct Case {
        const char* state;
        std::int32_t number;
    };
    const Case cases[] = {
        {"42S02", errors::kUnknownObject},    {"42P01", errors::kUnknownObject},
        {"3F000", errors::kUnknownObject},    {"23000", errors::kIntegrity},
        {"23505", errors::kIntegrity},        {"44000", errors::kIntegrity},
        {"40001", errors::kConcurrency},      {"40P01", errors::kConcurrency},
        {"HYT00", errors::kTimeout},          {"HYT01", errors::kTimeout},
        {"57014", errors::kTimeout},          {"28000", errors::kLogin},
        {"08S01", errors::kUnspecified},      {"08001", errors::kUnspecified},
        {"57P01", errors::kUnspecified},      {"22001", errors::kTruncated},
        {"22003", errors::kTruncated},        {"22018", errors::kDataTypeMismatch},
        {"22P02", errors::kDataTypeMismatch}, {"HYC00", errors::kFeatureNotAvailable},
        {"HY000", errors::kUnspecified},      {"IM002", errors::kUnspecified},
        {"42000", errors::kCommandText},      {"42S22", errors::kCommandText},
        {"22012", errors::kCommandText},      {"", errors::kCommandText}};
    for (const Case& each : cases) {
        EXPECT_EQ(numberOfState(each.state), each.number) << each.state;
    }
}

TEST(OdbcErrors, KnowWhenTheConnectionIsGone) {
    for (const char* state : {"08S01", "08003", "57P01", "01002"}) {
        EXPECT_TRUE(saysConnectionLost(state)) << state;
    }
    for (const char* state : {"42000", "01000", "57014", "HYT00", ""}) {
        EXPECT_FALSE(saysConnectionLost(state)) << state;
    }
}

TEST(OdbcErrors, DropTheNamesOfDriversInFront) {
    EXPECT_EQ(withoutOrigin("[FreeTDS][SQL Server]Invalid object name 't'."),
              "Invalid object name 't'.");
    EXPECT_EQ(withoutOrigin("[unixODBC][Driver Manager] x [y]"), "x [y]");
    EXPECT_EQ(withoutOrigin("ERROR: no [brackets]"), "ERROR: no [brackets]");
    EXPECT_EQ(withoutOrigin("[not closed"), "[not closed");
    EXPECT_EQ(withoutOrigin(""), "");
    EXPECT_EQ(withoutOrigin("[Microsoft][ODBC Driver 17 for SQL Server]Text is cut"),
              "Text is cut");
    EXPECT_EQ(withoutOrigin("[Microsoft][SQL Native Client][SQL Server]Invalid object name 't'."),
              "Invalid object name 't'.");
    EXPECT_EQ(withoutOrigin("[ma-3.1.7][10.5.9-MariaDB]No table"), "No table");
    EXPECT_EQ(withoutOrigin("[unixODBC][SQLite]no such table: t (1)"), "no such table: t (1)");
}

TEST(OdbcErrors, KeepWhatTheServersTextBeginsWith) {
    const char* const texts[] = {"[x] not allowed",   "[dbo].[Conti] is closed",
                                 "[1][2][3][4] four", "[unixODBC] said a trigger",
                                 "[not closed",       "  two blanks",
                                 "no brackets"};
    const char* const origins[] = {
        "[Microsoft][ODBC Driver 17 for SQL Server][SQL Server]",
        "[unixODBC][Microsoft][ODBC Driver 17 for SQL Server][SQL Server]",
        "[unixODBC][FreeTDS][SQL Server]",
        "[FreeTDS][SQL Server]",
        "[MySQL][ODBC 8.0(w) Driver][mysqld-8.0.19]",
        "[unixODBC][ma-3.1.7][10.5.9-MariaDB]",
        "[SQLite]",
        "[Oracle][ODBC][Ora]"};
    for (const std::string text : texts) {
        for (const std::string origin : origins) {
            // One blank is the manager's, as in "[unixODBC][Driver Manager] text".
            const std::string shown = text.starts_with(' ') ? text.substr(1) : text;
            EXPECT_EQ(withoutOrigin(origin + text), shown) << origin;
        }
    }
    EXPECT_EQ(withoutOrigin("  two blanks"), "  two blanks");
}

}  // namespace
}  // namespace kap::ado::odbc
