#include <gtest/gtest.h>

#include "translated_database.hpp"

namespace kap::ado::embedded {
namespace {

struct Case {
    const char* expression;
    const char* expected;
};

// What an expression gives, or the error it ends in.
std::string valueOf(const std::string& expression) {
    static testing::TranslatedDatabase database;
    const std::string query = "SELECT " + expression;
    const std::string answer = database.error(query);
    constexpr std::string_view kNoError = "no error: ";
    return answer.compare(0, kNoError.size(), kNoError) == 0 ? answer.substr(kNoError.size())
                                                             : answer;
}

class FunctionCase : public ::testing::TestWithParam<Case> {};

TEST_P(FunctionCase, GivesTheServersAnswer) {
    EXPECT_EQ(valueOf(GetParam().expression), GetParam().expected) << GetParam().expression;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FunctionCase,
    ::testing::Values(
        Case{"len('abc  ')", "3"}, Case{"len('')", "0"}, Case{"len(NULL)", "NULL"},
        Case{"len(N'è😀')", "3"}, Case{"datalength('abc  ')", "5"}, Case{"datalength(N'ab')", "4"},
        Case{"datalength(1)", "4"}, Case{"upper('città')", "CITTÀ"}, Case{"lower('ÀB')", "àb"},
        Case{"ltrim('  a ') + '|'", "a |"}, Case{"rtrim('  a ') + '|'", "  a|"},
        Case{"substring('abcdef', 2, 3)", "bcd"}, Case{"substring('abc', 0, 2)", "a"},
        Case{"substring('abc', 5, 2)", ""},
        Case{"substring('abc', 1, -1)",
             "537: Invalid length parameter passed to the LEFT or SUBSTRING function."},
        Case{"left('abc', 2)", "ab"}, Case{"left('abc', 9)", "abc"}, Case{"right('abc', 2)", "bc"},
        Case{"right('abc', 0)", ""},
        Case{"left('abc', -1)",
             "537: Invalid length parameter passed to the LEFT or SUBSTRING function."},
        Case{"replace('aXbx', 'x', '--')", "a--b--"}, Case{"replace('abc', '', 'z')", "abc"},
        Case{"stuff('abcdef', 2, 3, 'zz')", "azzef"}, Case{"stuff('abc', 4, 1, 'z')", "NULL"},
        Case{"stuff('abc', 2, 1, NULL)", "ac"}, Case{"charindex('C', 'abcabc')", "3"},
        Case{"charindex('c', 'abcabc', 4)", "6"}, Case{"charindex('z', 'abc')", "0"},
        Case{"patindex('%[0-9]%', 'abc5')", "4"}, Case{"patindex('a%', 'abc')", "1"},
        Case{"reverse('abc')", "cba"}, Case{"replicate('ab', 3)", "ababab"},
        Case{"replicate('ab', -1)", "NULL"}, Case{"'[' + space(3) + ']'", "[   ]"},
        Case{"str(12.345, 6, 2)", " 12.35"}, Case{"str(123.4)", "       123"},
        Case{"str(12345, 3)", "***"}, Case{"str(12.345, 4, 3)", "12.3"}, Case{"char(65)", "A"},
        Case{"char(300)", "NULL"}, Case{"ascii('A')", "65"}, Case{"ascii('')", "NULL"},
        Case{"nchar(8364)", "€"}, Case{"unicode(N'€')", "8364"}, Case{"len(newid())", "36"},
        Case{"substring(0x010203, 2, 1)", "0x02"}, Case{"upper(5)", "5"}, Case{"len(12.50)", "5"}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, FunctionCase,
    ::testing::Values(
        Case{"abs(-2.5)", "2.5"}, Case{"abs($-2)", "2.0000"}, Case{"abs(-3)", "3"},
        Case{"abs(-1.5e0)", "1.5"}, Case{"sign(-7)", "-1"}, Case{"sign(0.0)", "0.0"},
        Case{"ceiling(2.1)", "3"}, Case{"ceiling(-2.1)", "-2"}, Case{"floor(2.9)", "2"},
        Case{"floor(-2.1)", "-3"}, Case{"ceiling($2.1)", "3.0000"}, Case{"floor(1.9e0)", "1"},
        Case{"round(2.345, 2)", "2.350"}, Case{"round(-2.345, 2)", "-2.350"},
        Case{"round(2.349, 2, 1)", "2.340"}, Case{"round(1250, -2)", "1300"},
        Case{"round(5, -2)", "0"}, Case{"round(2.5e0, 0)", "3"},
        Case{"round($1.00555, 4)", "1.0056"}, Case{"power(2, 10)", "1024"},
        Case{"power(2, 0.5)", "1"}, Case{"power(2e0, 0.5)", "1.41421"}, Case{"sqrt(16)", "4"},
        Case{"square(3)", "9"}, Case{"exp(0)", "1"}, Case{"log(1)", "0"}, Case{"log10(1000)", "3"},
        Case{"sqrt(-1)", "3623: An invalid floating point operation occurred."},
        Case{"log(0)", "3623: An invalid floating point operation occurred."},
        Case{"isnumeric('12.5')", "1"}, Case{"isnumeric('abc')", "0"}, Case{"isnumeric('')", "0"},
        Case{"isnumeric('1e5')", "1"}, Case{"isnumeric('$12')", "1"}, Case{"isnumeric(NULL)", "0"},
        Case{"isnumeric(5)", "1"}, Case{"round('2.5', 0)", "3"}));

INSTANTIATE_TEST_SUITE_P(
    Dates, FunctionCase,
    ::testing::Values(
        Case{"year('20240229')", "2024"}, Case{"month('20240229')", "2"},
        Case{"day('20240229')", "29"}, Case{"datepart(quarter, '20240531')", "2"},
        Case{"datepart(dayofyear, '20240301')", "61"}, Case{"datepart(week, '20240107')", "2"},
        Case{"datepart(weekday, '20240107')", "1"},
        Case{"datepart(hour, '20240101 13:14:15.123')", "13"},
        Case{"datepart(ms, '20240101 13:14:15.123')", "123"},
        Case{"datename(month, '20240229')", "February"},
        Case{"datename(dw, '20240229')", "Thursday"}, Case{"datename(year, '20240229')", "2024"},
        Case{"dateadd(month, 1, '20240131')", "2024-02-29 00:00:00.000"},
        Case{"dateadd(year, -1, '20240229')", "2023-02-28 00:00:00.000"},
        Case{"dateadd(day, 1, '20231231 10:00')", "2024-01-01 10:00:00.000"},
        Case{"dateadd(hour, -1, '20240101')", "2023-12-31 23:00:00.000"},
        Case{"dateadd(ms, 5, '20240101')", "2024-01-01 00:00:00.007"},
        Case{"dateadd(year, 8000, '20240101')",
             "517: Adding a value to a 'datetime' column caused an overflow."},
        Case{"datediff(year, '20231231', '20240101')", "1"},
        Case{"datediff(month, '20240131', '20240301')", "2"},
        Case{"datediff(day, '20240101 23:59', '20240102')", "1"},
        Case{"datediff(week, '20240106', '20240107')", "1"},
        Case{"datediff(minute, '20240101', '20240102')", "1440"},
        Case{"datediff(day, '20240102', '20240101')", "-1"},
        Case{"datediff(ms, '19000101', '20240101')",
             "535: The datediff function resulted in an overflow. The number of dateparts "
             "separating "
             "two date/time instances is too large. Try to use datediff with a less precise "
             "datepart."},
        Case{"datepart(nonsense, '20240101')",
             "155: 'nonsense' is not a recognized datepart option."},
        Case{"isdate('20240229')", "1"}, Case{"isdate('20230229')", "0"}, Case{"isdate('x')", "0"},
        Case{"year(cast('20240101' as date))", "2024"},
        Case{"dateadd(day, 1, cast('20240101' as date))", "2024-01-02"},
        Case{"datediff(day, getdate(), current_timestamp)", "0"}));

INSTANTIATE_TEST_SUITE_P(
    General, FunctionCase,
    ::testing::Values(
        Case{"isnull(NULL, 5)", "5"}, Case{"isnull('ab', 'xyz')", "ab"},
        Case{"isnull(cast(NULL as varchar(2)), 'xyz')", "xy"},
        Case{"isnull(cast(NULL as int), '7')", "7"}, Case{"coalesce(NULL, NULL, 3)", "3"},
        Case{"coalesce(1, 2.5)", "1.0"},
        Case{
            "coalesce(NULL, NULL)",
            "4127: At least one of the arguments to COALESCE must be an expression that is not the "
            "NULL constant."},
        Case{"nullif(1, 1)", "NULL"}, Case{"nullif('a', 'A ')", "NULL"}, Case{"nullif(1, 2)", "1"},
        Case{"foo(1)", "195: 'foo' is not a recognized built-in function name."},
        Case{"isnull(1)", "174: The isnull function requires 2 argument(s)."},
        Case{"round(1)", "189: The round function requires 2 to 3 arguments."},
        Case{"dbo.f(1)",
             "4121: Cannot find either column \"dbo\" or the user-defined function or aggregate "
             "\"dbo.f\", or the name is ambiguous."}));

class LikeCase : public ::testing::TestWithParam<Case> {};

TEST_P(LikeCase, MatchesAsTheServer) {
    const std::string expression = GetParam().expression;
    EXPECT_EQ(valueOf("CASE WHEN " + expression + " THEN 'yes' ELSE 'no' END"), GetParam().expected)
        << expression;
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, LikeCase,
    ::testing::Values(
        Case{"'abc' LIKE 'A%'", "yes"}, Case{"'abc' LIKE '%B%'", "yes"},
        Case{"'abc' LIKE 'b%'", "no"}, Case{"'abc' LIKE 'a_c'", "yes"},
        Case{"'abc' LIKE 'a_'", "no"}, Case{"'abc' LIKE '[a-c]bc'", "yes"},
        Case{"'abc' LIKE '[^a-c]bc'", "no"}, Case{"'a]c' LIKE 'a[]]c'", "yes"},
        Case{"'a-c' LIKE 'a[x-]c'", "yes"}, Case{"'50%' LIKE '50!%' ESCAPE '!'", "yes"},
        Case{"'505' LIKE '50!%' ESCAPE '!'", "no"}, Case{"'a_c' LIKE 'a[_]c'", "yes"},
        Case{"'abc' LIKE 'a[_]c'", "no"}, Case{"'abc  ' LIKE 'abc'", "yes"},
        Case{"'abc' LIKE 'abc '", "no"}, Case{"'' LIKE '%'", "yes"},
        Case{"'città' LIKE '%À'", "yes"}, Case{"'citta' LIKE '%à'", "no"},
        Case{"'abc' LIKE '[abc'", "no"}, Case{"NULL LIKE 'a'", "no"},
        Case{"'abc' NOT LIKE 'x%'", "yes"}, Case{"'aXbXc' LIKE 'a%X%c'", "yes"},
        Case{"123 LIKE '12%'", "yes"},
        Case{"'a' LIKE 'a' ESCAPE 'xy'",
             "506: The invalid escape character \"xy\" was specified in a LIKE predicate."}));

TEST(Functions, MatchesALongPatternInReasonableTime) {
    const std::string pattern = "%a%a%a%a%a%a%a%a%a%a%a%a%b";
    EXPECT_EQ(valueOf("CASE WHEN '" + std::string(4000, 'a') + "' LIKE '" + pattern +
                      "' THEN 1 ELSE 0 END"),
              "0");
}

TEST(Functions, GivesOneInstantToAllRowsOfAStatement) {
    testing::TranslatedDatabase database;
    database.run(
        "CREATE TABLE t (a int, d datetime DEFAULT getdate()) INSERT INTO t (a) VALUES (1), (2), "
        "(3)");
    EXPECT_EQ(database.run("SELECT count(DISTINCT getdate()) FROM t"), "1");
    EXPECT_EQ(database.run("SELECT count(d) FROM t WHERE d <= getdate()"), "3");
}

TEST(Functions, MakesIdentifiersThatDiffer) {
    EXPECT_EQ(valueOf("CASE WHEN newid() = newid() THEN 'same' ELSE 'other' END"), "other");
}

}  // namespace
}  // namespace kap::ado::embedded
