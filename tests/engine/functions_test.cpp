#include <gtest/gtest.h>

#include "translated_database.hpp"

namespace kap::engine {
namespace {

struct EvaluatedCase {
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

class FunctionCase : public ::testing::TestWithParam<EvaluatedCase> {};

TEST_P(FunctionCase, GivesTheServersAnswer) {
    EXPECT_EQ(valueOf(GetParam().expression), GetParam().expected) << GetParam().expression;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FunctionCase,
    ::testing::Values(
        EvaluatedCase{"len('abc  ')", "3"}, EvaluatedCase{"len('')", "0"},
        EvaluatedCase{"len(NULL)", "NULL"}, EvaluatedCase{"len(N'è😀')", "3"},
        EvaluatedCase{"datalength('abc  ')", "5"}, EvaluatedCase{"datalength(N'ab')", "4"},
        EvaluatedCase{"datalength(1)", "4"}, EvaluatedCase{"upper('città')", "CITTÀ"},
        EvaluatedCase{"lower('ÀB')", "àb"}, EvaluatedCase{"ltrim('  a ') + '|'", "a |"},
        EvaluatedCase{"rtrim('  a ') + '|'", "  a|"},
        EvaluatedCase{"substring('abcdef', 2, 3)", "bcd"},
        EvaluatedCase{"substring('abc', 0, 2)", "a"}, EvaluatedCase{"substring('abc', 5, 2)", ""},
        EvaluatedCase{"substring('abc', 1, -1)",
                      "537: Invalid length parameter passed to the LEFT or SUBSTRING function."},
        EvaluatedCase{"left('abc', 2)", "ab"}, EvaluatedCase{"left('abc', 9)", "abc"},
        EvaluatedCase{"right('abc', 2)", "bc"}, EvaluatedCase{"right('abc', 0)", ""},
        EvaluatedCase{"left('abc', -1)",
                      "537: Invalid length parameter passed to the LEFT or SUBSTRING function."},
        EvaluatedCase{"replace('aXbx', 'x', '--')", "a--b--"},
        EvaluatedCase{"replace('abc', '', 'z')", "abc"},
        EvaluatedCase{"stuff('abcdef', 2, 3, 'zz')", "azzef"},
        EvaluatedCase{"stuff('abc', 4, 1, 'z')", "NULL"},
        EvaluatedCase{"stuff('abc', 2, 1, NULL)", "ac"},
        EvaluatedCase{"charindex('C', 'abcabc')", "3"},
        EvaluatedCase{"charindex('c', 'abcabc', 4)", "6"},
        EvaluatedCase{"charindex('z', 'abc')", "0"},
        EvaluatedCase{"patindex('%[0-9]%', 'abc5')", "4"},
        EvaluatedCase{"patindex('a%', 'abc')", "1"}, EvaluatedCase{"reverse('abc')", "cba"},
        EvaluatedCase{"replicate('ab', 3)", "ababab"}, EvaluatedCase{"replicate('ab', -1)", "NULL"},
        EvaluatedCase{"'[' + space(3) + ']'", "[   ]"},
        EvaluatedCase{"str(12.345, 6, 2)", " 12.35"}, EvaluatedCase{"str(123.4)", "       123"},
        EvaluatedCase{"str(12345, 3)", "***"}, EvaluatedCase{"str(12.345, 4, 3)", "12.3"},
        EvaluatedCase{"char(65)", "A"}, EvaluatedCase{"char(300)", "NULL"},
        EvaluatedCase{"ascii('A')", "65"}, EvaluatedCase{"ascii('')", "NULL"},
        EvaluatedCase{"nchar(8364)", "€"}, EvaluatedCase{"unicode(N'€')", "8364"},
        EvaluatedCase{"len(newid())", "36"}, EvaluatedCase{"substring(0x010203, 2, 1)", "0x02"},
        EvaluatedCase{"upper(5)", "5"}, EvaluatedCase{"len(12.50)", "5"}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, FunctionCase,
    ::testing::Values(
        EvaluatedCase{"abs(-2.5)", "2.5"}, EvaluatedCase{"abs($-2)", "2.0000"},
        EvaluatedCase{"abs(-3)", "3"}, EvaluatedCase{"abs(-1.5e0)", "1.5"},
        EvaluatedCase{"sign(-7)", "-1"}, EvaluatedCase{"sign(0.0)", "0.0"},
        EvaluatedCase{"ceiling(2.1)", "3"}, EvaluatedCase{"ceiling(-2.1)", "-2"},
        EvaluatedCase{"floor(2.9)", "2"}, EvaluatedCase{"floor(-2.1)", "-3"},
        EvaluatedCase{"ceiling($2.1)", "3.0000"}, EvaluatedCase{"floor(1.9e0)", "1"},
        EvaluatedCase{"round(2.345, 2)", "2.350"}, EvaluatedCase{"round(-2.345, 2)", "-2.350"},
        EvaluatedCase{"round(2.349, 2, 1)", "2.340"}, EvaluatedCase{"round(1250, -2)", "1300"},
        EvaluatedCase{"round(5, -2)", "0"}, EvaluatedCase{"round(2.5e0, 0)", "3"},
        EvaluatedCase{"round($1.00555, 4)", "1.0056"}, EvaluatedCase{"power(2, 10)", "1024"},
        EvaluatedCase{"power(2, 0.5)", "1"}, EvaluatedCase{"power(2e0, 0.5)", "1.41421"},
        EvaluatedCase{"sqrt(16)", "4"}, EvaluatedCase{"square(3)", "9"},
        EvaluatedCase{"exp(0)", "1"}, EvaluatedCase{"log(1)", "0"},
        EvaluatedCase{"log10(1000)", "3"},
        EvaluatedCase{"sqrt(-1)", "3623: An invalid floating point operation occurred."},
        EvaluatedCase{"log(0)", "3623: An invalid floating point operation occurred."},
        EvaluatedCase{"isnumeric('12.5')", "1"}, EvaluatedCase{"isnumeric('abc')", "0"},
        EvaluatedCase{"isnumeric('')", "0"}, EvaluatedCase{"isnumeric('1e5')", "1"},
        EvaluatedCase{"isnumeric('$12')", "1"}, EvaluatedCase{"isnumeric(NULL)", "0"},
        EvaluatedCase{"isnumeric(5)", "1"}, EvaluatedCase{"round('2.5', 0)", "3"}));

INSTANTIATE_TEST_SUITE_P(
    Dates, FunctionCase,
    ::testing::Values(
        EvaluatedCase{"year('20240229')", "2024"}, EvaluatedCase{"month('20240229')", "2"},
        EvaluatedCase{"day('20240229')", "29"}, EvaluatedCase{"datepart(quarter, '20240531')", "2"},
        EvaluatedCase{"datepart(dayofyear, '20240301')", "61"},
        EvaluatedCase{"datepart(week, '20240107')", "2"},
        EvaluatedCase{"datepart(weekday, '20240107')", "1"},
        EvaluatedCase{"datepart(hour, '20240101 13:14:15.123')", "13"},
        EvaluatedCase{"datepart(ms, '20240101 13:14:15.123')", "123"},
        EvaluatedCase{"datename(month, '20240229')", "February"},
        EvaluatedCase{"datename(dw, '20240229')", "Thursday"},
        EvaluatedCase{"datename(year, '20240229')", "2024"},
        EvaluatedCase{"dateadd(month, 1, '20240131')", "2024-02-29 00:00:00.000"},
        EvaluatedCase{"dateadd(year, -1, '20240229')", "2023-02-28 00:00:00.000"},
        EvaluatedCase{"dateadd(day, 1, '20231231 10:00')", "2024-01-01 10:00:00.000"},
        EvaluatedCase{"dateadd(hour, -1, '20240101')", "2023-12-31 23:00:00.000"},
        EvaluatedCase{"dateadd(ms, 5, '20240101')", "2024-01-01 00:00:00.007"},
        EvaluatedCase{"dateadd(year, 8000, '20240101')",
                      "517: Adding a value to a 'datetime' column caused an overflow."},
        EvaluatedCase{"datediff(year, '20231231', '20240101')", "1"},
        EvaluatedCase{"datediff(month, '20240131', '20240301')", "2"},
        EvaluatedCase{"datediff(day, '20240101 23:59', '20240102')", "1"},
        EvaluatedCase{"datediff(week, '20240106', '20240107')", "1"},
        EvaluatedCase{"datediff(minute, '20240101', '20240102')", "1440"},
        EvaluatedCase{"datediff(day, '20240102', '20240101')", "-1"},
        EvaluatedCase{
            "datediff(ms, '19000101', '20240101')",
            "535: The datediff function resulted in an overflow. The number of dateparts "
            "separating "
            "two date/time instances is too large. Try to use datediff with a less precise "
            "datepart."},
        EvaluatedCase{"datepart(nonsense, '20240101')",
                      "155: 'nonsense' is not a recognized datepart option."},
        EvaluatedCase{"isdate('20240229')", "1"}, EvaluatedCase{"isdate('20230229')", "0"},
        EvaluatedCase{"isdate('x')", "0"}, EvaluatedCase{"year(cast('20240101' as date))", "2024"},
        EvaluatedCase{"dateadd(day, 1, cast('20240101' as date))", "2024-01-02"},
        EvaluatedCase{"datediff(day, getdate(), current_timestamp)", "0"}));

INSTANTIATE_TEST_SUITE_P(
    General, FunctionCase,
    ::testing::Values(
        EvaluatedCase{"isnull(NULL, 5)", "5"}, EvaluatedCase{"isnull('ab', 'xyz')", "ab"},
        EvaluatedCase{"isnull(cast(NULL as varchar(2)), 'xyz')", "xy"},
        EvaluatedCase{"isnull(cast(NULL as int), '7')", "7"},
        EvaluatedCase{"coalesce(NULL, NULL, 3)", "3"}, EvaluatedCase{"coalesce(1, 2.5)", "1.0"},
        EvaluatedCase{
            "coalesce(NULL, NULL)",
            "4127: At least one of the arguments to COALESCE must be an expression that is not the "
            "NULL constant."},
        EvaluatedCase{"nullif(1, 1)", "NULL"}, EvaluatedCase{"nullif('a', 'A ')", "NULL"},
        EvaluatedCase{"nullif(1, 2)", "1"},
        EvaluatedCase{"foo(1)", "195: 'foo' is not a recognized built-in function name."},
        EvaluatedCase{"isnull(1)", "174: The isnull function requires 2 argument(s)."},
        EvaluatedCase{"round(1)", "189: The round function requires 2 to 3 arguments."},
        EvaluatedCase{
            "dbo.f(1)",
            "4121: Cannot find either column \"dbo\" or the user-defined function or aggregate "
            "\"dbo.f\", or the name is ambiguous."}));

class LikeCase : public ::testing::TestWithParam<EvaluatedCase> {};

TEST_P(LikeCase, MatchesAsTheServer) {
    const std::string expression = GetParam().expression;
    EXPECT_EQ(valueOf("CASE WHEN " + expression + " THEN 'yes' ELSE 'no' END"), GetParam().expected)
        << expression;
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, LikeCase,
    ::testing::Values(
        EvaluatedCase{"'abc' LIKE 'A%'", "yes"}, EvaluatedCase{"'abc' LIKE '%B%'", "yes"},
        EvaluatedCase{"'abc' LIKE 'b%'", "no"}, EvaluatedCase{"'abc' LIKE 'a_c'", "yes"},
        EvaluatedCase{"'abc' LIKE 'a_'", "no"}, EvaluatedCase{"'abc' LIKE '[a-c]bc'", "yes"},
        EvaluatedCase{"'abc' LIKE '[^a-c]bc'", "no"}, EvaluatedCase{"'a]c' LIKE 'a[]]c'", "yes"},
        EvaluatedCase{"'a-c' LIKE 'a[x-]c'", "yes"},
        EvaluatedCase{"'50%' LIKE '50!%' ESCAPE '!'", "yes"},
        EvaluatedCase{"'505' LIKE '50!%' ESCAPE '!'", "no"},
        EvaluatedCase{"'a_c' LIKE 'a[_]c'", "yes"}, EvaluatedCase{"'abc' LIKE 'a[_]c'", "no"},
        EvaluatedCase{"'abc  ' LIKE 'abc'", "yes"}, EvaluatedCase{"'abc' LIKE 'abc '", "no"},
        EvaluatedCase{"'' LIKE '%'", "yes"}, EvaluatedCase{"'città' LIKE '%À'", "yes"},
        EvaluatedCase{"'citta' LIKE '%à'", "no"}, EvaluatedCase{"'abc' LIKE '[abc'", "no"},
        EvaluatedCase{"NULL LIKE 'a'", "no"}, EvaluatedCase{"'abc' NOT LIKE 'x%'", "yes"},
        EvaluatedCase{"'aXbXc' LIKE 'a%X%c'", "yes"}, EvaluatedCase{"123 LIKE '12%'", "yes"},
        EvaluatedCase{
            "'a' LIKE 'a' ESCAPE 'xy'",
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
}  // namespace kap::engine
