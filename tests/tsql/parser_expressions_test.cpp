#include <gtest/gtest.h>

#include <cstddef>

#include "support/thread_stack.hpp"
#include "tree_text.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

using testing::parsed;

std::string value(const std::string& sql) {
    const std::string tree = parsed("SELECT " + sql);
    return tree.substr(8, tree.size() - 9);
}

std::string condition(const std::string& sql) {
    const std::string tree = parsed("SELECT 1 WHERE " + sql);
    return tree.substr(17, tree.size() - 19);
}

TEST(ParserExpressions, BindsProductsBeforeSums) {
    EXPECT_EQ(value("a + b * c"), "(+ a (* b c))");
}

TEST(ParserExpressions, GroupsFromTheLeft) {
    EXPECT_EQ(value("a - b - c"), "(- (- a b) c)");
}

TEST(ParserExpressions, PutsBitwiseOperatorsOnTheLevelOfSums) {
    EXPECT_EQ(value("a & b + c | d ^ e"), "(^ (| (+ (& a b) c) d) e)");
}

TEST(ParserExpressions, ReadsSignsAndBrackets) {
    EXPECT_EQ(value("-(a + ~b) * +c"), "(* (- (+ a (~ b))) (+ c))");
}

TEST(ParserExpressions, ReadsNamesOfUpToFourParts) {
    EXPECT_EQ(value("[a].[b c].d.e"), "a.b c.d.e");
    EXPECT_EQ(value("db..t"), "db..t");
}

TEST(ParserExpressions, ReadsEveryLiteral) {
    EXPECT_EQ(value("NULL, 1, 2.5, 1e3, $5, 'x', N'y', 0xAB"), "NULL 1 2.5 1e3 $5 'x' N'y' 0xAB");
}

TEST(ParserExpressions, ReadsVariables) {
    EXPECT_EQ(value("@x + @@rowcount"), "(+ @x @@rowcount)");
}

TEST(ParserExpressions, ReadsFunctionCalls) {
    EXPECT_EQ(value("isnull(a, 0), getdate(), left(b, 2), coalesce(a, b, c)"),
              "(isnull a 0) (getdate) (left b 2) (coalesce a b c)");
}

TEST(ParserExpressions, ReadsAggregates) {
    EXPECT_EQ(value("COUNT(*), COUNT(DISTINCT a), SUM(ALL b)"),
              "(COUNT *) (COUNT distinct a) (SUM b)");
}

TEST(ParserExpressions, ReadsCurrentTimestampAsTheDateFunction) {
    EXPECT_EQ(value("CURRENT_TIMESTAMP"), "(GETDATE)");
}

TEST(ParserExpressions, ReadsCastAndConvert) {
    EXPECT_EQ(value("CAST(a AS varchar(20)), CONVERT(decimal(9,2), b), CONVERT(char(8), c, 112)"),
              "(cast a varchar(20)) (cast b decimal(9,2)) (cast c char(8) 112)");
}

TEST(ParserExpressions, GivesACastToTextThirtyCharacters) {
    EXPECT_EQ(value("CAST(a AS varchar)"), "(cast a varchar(30))");
}

TEST(ParserExpressions, ReadsBothFormsOfCase) {
    EXPECT_EQ(value("CASE a WHEN 1 THEN 'x' ELSE 'y' END"), "(case a (when 1 'x') (else 'y'))");
    EXPECT_EQ(value("CASE WHEN a > 1 OR b = 2 THEN 1 END"), "(case (when (or (> a 1) (= b 2)) 1))");
}

TEST(ParserExpressions, BindsNotBeforeAndBeforeOr) {
    EXPECT_EQ(condition("NOT a = 1 AND b = 2 OR c = 3"),
              "(or (and (not (= a 1)) (= b 2)) (= c 3))");
}

TEST(ParserExpressions, KeepsChainsFlat) {
    EXPECT_EQ(condition("a=1 OR b=2 OR c=3 OR d=4"), "(or (= a 1) (= b 2) (= c 3) (= d 4))");
}

TEST(ParserExpressions, ReadsEveryComparison) {
    EXPECT_EQ(condition("a<>1 AND a!=1 AND a<1 AND a<=1 AND a>1 AND a>=1 AND a!<1 AND a!>1"),
              "(and (<> a 1) (<> a 1) (< a 1) (<= a 1) (> a 1) (>= a 1) (>= a 1) (<= a 1))");
}

TEST(ParserExpressions, ReadsEveryPredicate) {
    EXPECT_EQ(condition("a BETWEEN 1 AND 2 AND b NOT IN (1, 2) AND c LIKE 'x%' ESCAPE '!'"),
              "(and (between a 1 2) (not (in b (list 1 2))) (like c 'x%' '!'))");
    EXPECT_EQ(condition("a IS NULL OR b IS NOT NULL OR c NOT BETWEEN 1 AND 2"),
              "(or (isnull a) (not (isnull b)) (not (between c 1 2)))");
}

TEST(ParserExpressions, TellsBracketedConditionsFromBracketedValues) {
    EXPECT_EQ(condition("(a = 1 OR (b + 1) * 2 = 3) AND ((c)) = 4"),
              "(and (or (= a 1) (= (* (+ b 1) 2) 3)) (= c 4))");
}

TEST(ParserExpressions, ReadsSubqueries) {
    EXPECT_EQ(condition("a = (SELECT 1) AND b IN (SELECT 2) AND EXISTS (SELECT 3)"),
              "(and (= a (select 1)) (in b (select 2)) (exists (select 3)))");
    EXPECT_EQ(condition("a IN ((SELECT 1))"), "(in a (query (select 1)))");
}

struct ExpressionRefusal {
    const char* sql;
    int number;
    const char* message;
};

class RefusedExpression : public ::testing::TestWithParam<ExpressionRefusal> {};

TEST_P(RefusedExpression, NamesWhatIsWrong) {
    try {
        (void)parseScript(GetParam().sql);
        FAIL() << "no error for " << GetParam().sql;
    } catch (const ServerError& error) {
        EXPECT_EQ(error.number(), GetParam().number) << GetParam().sql;
        EXPECT_EQ(error.message(), GetParam().message) << GetParam().sql;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Parser, RefusedExpression,
    ::testing::Values(
        ExpressionRefusal{"SELECT 1 = 1", 102, "Incorrect syntax near '='."},
        ExpressionRefusal{"SELECT (a = 1)", 102, "Incorrect syntax near '='."},
        ExpressionRefusal{"SELECT 1 +", 102, "Incorrect syntax near '+'."},
        ExpressionRefusal{"SELECT FROM t", 156, "Incorrect syntax near the keyword 'FROM'."},
        ExpressionRefusal{"SELECT a FROM t WHERE a = from", 156,
                          "Incorrect syntax near the keyword 'from'."},
        ExpressionRefusal{"SELECT 1 WHERE (a = 1) = 2", 102, "Incorrect syntax near '='."},
        ExpressionRefusal{"SELECT 1 WHERE NOT 1", 102, "Incorrect syntax near '1'."},
        ExpressionRefusal{"SELECT 1 WHERE a = 1 AND b", 102, "Incorrect syntax near 'b'."},
        ExpressionRefusal{"SELECT 1 WHERE a = EXISTS (SELECT 1)", 156,
                          "Incorrect syntax near the keyword 'EXISTS'."},
        ExpressionRefusal{"SELECT 1 WHERE a IN ()", 102, "Incorrect syntax near ')'."},
        ExpressionRefusal{"SELECT 1 WHERE EXISTS (1)", 102, "Incorrect syntax near '1'."},
        ExpressionRefusal{"SELECT CASE END", 156, "Incorrect syntax near the keyword 'END'."},
        ExpressionRefusal{"SELECT f(1", 102, "Incorrect syntax near '1'."},
        ExpressionRefusal{
            "SELECT 1 WHERE a GROUP BY b", 4145,
            "An expression of non-boolean type specified in a context where a condition is "
            "expected, near 'GROUP'."},
        ExpressionRefusal{"SELECT CAST(a AS nonsense)", 243,
                          "Type nonsense is not a defined system type."},
        ExpressionRefusal{
            "SELECT CAST(a AS xml)", 40517,
            "Keyword or statement option 'xml' is not supported in this version of the "
            "database."},
        ExpressionRefusal{"SELECT a COLLATE 'x'", 102, "Incorrect syntax near 'x'."},
        ExpressionRefusal{
            "SELECT (SELECT 1 FOR XML PATH, TYPE).exist('x')", 40517,
            "Keyword or statement option 'the xml method exist' is not supported in this version "
            "of the database."},
        ExpressionRefusal{
            "SELECT a.b.c.d.e", 117,
            "The object name 'a.b.c.d.e' contains more than the maximum number of prefixes. "
            "The maximum is 3."}));

TEST(ParserExpressions, AcceptsAnInListOfThousandsOfValues) {
    std::string list = "0";
    for (int i = 1; i < 5000; ++i)
        list += ", 1";
    EXPECT_EQ(parseScript("SELECT 1 WHERE a IN (" + list + ")").size(), 1U);
}

TEST(ParserExpressions, AcceptsAChainOfThousandsOfConditions) {
    std::string chain = "a = 0";
    for (int i = 1; i < 5000; ++i)
        chain += " OR a = 1";
    EXPECT_EQ(parseScript("SELECT 1 WHERE " + chain).size(), 1U);
}

void expectTooDeep(const std::string& sql) {
    try {
        (void)parseScript(sql);
        FAIL() << "accepted";
    } catch (const ServerError& error) {
        EXPECT_EQ(error.number(), 191);
        EXPECT_EQ(error.message(),
                  "Some part of your SQL statement is nested too deeply. Rewrite the query or "
                  "break it up into smaller queries.");
    }
}

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

TEST(ParserExpressions, RefusesBracketsNestedTooDeeply) {
    expectTooDeep("SELECT " + repeated("(", 100000) + "1");
    expectTooDeep("SELECT 1 WHERE " + repeated("(", 100000) + "1");
}

TEST(ParserExpressions, RefusesSignsNestedTooDeeply) {
    expectTooDeep("SELECT " + repeated("- ", 100000) + "1");
}

TEST(ParserExpressions, RefusesNotNestedTooDeeply) {
    expectTooDeep("SELECT 1 WHERE " + repeated("NOT ", 100000) + "1 = 1");
}

TEST(ParserExpressions, RefusesChainsOfOperatorsTooLong) {
    expectTooDeep("SELECT 1" + repeated(" + 1", 100000));
}

TEST(ParserExpressions, MeasuresDepthThroughSubqueriesAndCases) {
    const std::string chain = repeated(" + 1", 800);
    expectTooDeep("SELECT (SELECT (SELECT 1" + chain + ")" + chain + ")");
    expectTooDeep("SELECT CASE WHEN 1 = 1 THEN CASE WHEN 1 = 1 THEN 1" + chain + " END" + chain +
                  " END");
    expectTooDeep("SELECT * FROM (SELECT 1" + chain +
                  " AS a) AS t WHERE EXISTS (SELECT * FROM (SELECT (SELECT 1" + chain + ")" +
                  chain + " AS b) AS u)");
}

// The limit is one of depth; a stack that ends before it has an error of its own.
TEST(ParserExpressions, RefusesSubqueriesNestedTooDeeply) {
    constexpr std::size_t kAmpleStack = std::size_t{64} * 1024 * 1024;
    inThreadOf(kAmpleStack, [] {
        expectTooDeep(repeated("SELECT * FROM (", 100000));
        expectTooDeep(repeated("SELECT (", 100000));
        expectTooDeep("SELECT " + repeated("CASE WHEN 1 = 1 THEN ", 100000));
        expectTooDeep("SELECT " + repeated("f(", 100000));
        expectTooDeep("SELECT * FROM " + repeated("(", 100000));
        expectTooDeep("SELECT * FROM t" + repeated(" JOIN t", 100000));
        expectTooDeep("SELECT * FROM t" + repeated(" CROSS JOIN t", 100000));
    });
}

}  // namespace
}  // namespace kap::tsql
