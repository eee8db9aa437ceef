#include <gtest/gtest.h>

#include "translated_database.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

struct ExpressionCase {
    const char* expression;
    const char* type;
    const char* value;
};

class TypedExpression : public ::testing::TestWithParam<ExpressionCase> {};

TEST_P(TypedExpression, HasTheServersTypeAndValue) {
    static testing::TranslatedDatabase database;
    const std::string query = std::string("SELECT ") + GetParam().expression;
    const std::string columns = database.columns(query);
    EXPECT_EQ(columns.substr(1, columns.rfind(' ') - 1), GetParam().type) << query;
    EXPECT_EQ(database.run(query), GetParam().value) << query;
}

INSTANTIATE_TEST_SUITE_P(
    Literals, TypedExpression,
    ::testing::Values(
        ExpressionCase{"NULL", "int", "NULL"}, ExpressionCase{"2147483647", "int", "2147483647"},
        ExpressionCase{"2147483648", "numeric(10,0)", "2147483648"},
        ExpressionCase{"-1", "int", "-1"}, ExpressionCase{"1.50", "numeric(3,2)", "1.50"},
        ExpressionCase{".5", "numeric(1,1)", "0.5"}, ExpressionCase{"1e3", "float", "1000"},
        ExpressionCase{"1e", "float", "1"}, ExpressionCase{"$1234.56", "money", "1234.5600"},
        ExpressionCase{"'abc'", "varchar(3)", "abc"}, ExpressionCase{"''", "varchar(1)", ""},
        ExpressionCase{"N'è'", "nvarchar(1)", "è"},
        ExpressionCase{"0x0aF", "varbinary(2)", "0x00AF"},
        ExpressionCase{"0x", "varbinary(1)", "0x"}));

INSTANTIATE_TEST_SUITE_P(
    Arithmetic, TypedExpression,
    ::testing::Values(ExpressionCase{"7 / 2", "int", "3"}, ExpressionCase{"-7 / 2", "int", "-3"},
                      ExpressionCase{"7 % 4", "int", "3"}, ExpressionCase{"-7 % 4", "int", "-3"},
                      ExpressionCase{"cast(1 as tinyint) + 1", "int", "2"},
                      ExpressionCase{"cast(1 as tinyint) + cast(1 as tinyint)", "tinyint", "2"},
                      ExpressionCase{"cast(1 as bigint) * 3000000", "bigint", "3000000"},
                      ExpressionCase{"6 & 3", "int", "2"}, ExpressionCase{"6 | 3", "int", "7"},
                      ExpressionCase{"6 ^ 3", "int", "5"}, ExpressionCase{"~5", "int", "-6"},
                      ExpressionCase{"~cast(5 as tinyint)", "tinyint", "250"},
                      ExpressionCase{"~cast(1 as bit)", "bit", "0"},
                      ExpressionCase{"-cast(5 as tinyint)", "smallint", "-5"},
                      // Decimals: the scale of sums, products and quotients.
                      ExpressionCase{"1.5 + 2.25", "numeric(4,2)", "3.75"},
                      ExpressionCase{"1.5 - 2.25", "numeric(4,2)", "-0.75"},
                      ExpressionCase{"1.5 * 2.25", "numeric(6,3)", "3.375"},
                      ExpressionCase{"1.0 / 3", "numeric(7,6)", "0.333333"},
                      ExpressionCase{"2.0 / 3", "numeric(7,6)", "0.666666"},
                      ExpressionCase{"7.5 % 2", "numeric(2,1)", "1.5"},
                      ExpressionCase{"cast(1 as decimal(18,4)) * cast(2.5 as decimal(18,4))",
                                     "numeric(37,8)", "2.50000000"},
                      ExpressionCase{"cast(0.00005 as decimal(18,5)) * cast(0.1 as decimal(18,5))",
                                     "numeric(37,10)", "0.0000050000"},
                      ExpressionCase{"cast(0.00005 as decimal(18,5)) * cast(0.01 as decimal(18,5))",
                                     "numeric(37,10)", "0.0000005000"},
                      ExpressionCase{"-1.50", "numeric(3,2)", "-1.50"},
                      // Money keeps four decimals: products are rounded, quotients cut.
                      ExpressionCase{"$2 / 3", "money", "0.6666"},
                      ExpressionCase{"$1.5 * $1.5", "money", "2.2500"},
                      ExpressionCase{"$0.0001 * $0.5", "money", "0.0001"},
                      ExpressionCase{"$1 + 1", "money", "2.0000"},
                      ExpressionCase{"$10 / $4", "money", "2.5000"},
                      ExpressionCase{"$1.5 + 1.25", "numeric(20,4)", "2.7500"},
                      ExpressionCase{"10 / $4", "money", "2.5000"},
                      ExpressionCase{"1e0 / 4", "float", "0.25"},
                      ExpressionCase{"cast(1 as real) + cast(2 as real)", "real", "3"},
                      ExpressionCase{"cast(0.1 as real) * 3e0", "float", "0.3"},
                      ExpressionCase{"NULL + 1", "int", "NULL"}));

INSTANTIATE_TEST_SUITE_P(
    Mixed, TypedExpression,
    ::testing::Values(
        ExpressionCase{"'a' + 'bc'", "varchar(3)", "abc"},
        ExpressionCase{"'a' + N'bc'", "nvarchar(3)", "abc"},
        ExpressionCase{"'a' + NULL", "varchar(2)", "NULL"}, ExpressionCase{"'1' + 1", "int", "2"},
        ExpressionCase{"'5' * 2", "int", "10"},
        ExpressionCase{"cast('a' as char(3)) + '|'", "varchar(4)", "a  |"},
        ExpressionCase{"0x01 + 0x0002", "varbinary(3)", "0x010002"},
        ExpressionCase{"cast('20240131' as datetime) + 1", "datetime", "2024-02-01 00:00:00.000"},
        ExpressionCase{"cast('20240131' as datetime) - 0.5", "datetime", "2024-01-30 12:00:00.000"},
        ExpressionCase{"cast('20240131' as datetime) - '20240130'", "datetime",
                       "1900-01-02 00:00:00.000"},
        ExpressionCase{"CASE WHEN 1 = 1 THEN 1 ELSE 2.5 END", "numeric(11,1)", "1.0"},
        ExpressionCase{"CASE 'B' WHEN 'a' THEN 1 WHEN 'b ' THEN 2 END", "int", "2"},
        ExpressionCase{"CASE WHEN NULL = NULL THEN 1 END", "int", "NULL"},
        ExpressionCase{"CASE WHEN 1 = 2 THEN 'ab' ELSE N'abc' END", "nvarchar(3)", "abc"},
        ExpressionCase{"(SELECT 5)", "int", "5"},
        ExpressionCase{"(SELECT 5 WHERE 1 = 2)", "int", "NULL"}));

struct Truth {
    const char* condition;
    const char* expected;
};

class Condition : public ::testing::TestWithParam<Truth> {};

TEST_P(Condition, HasTheServersTruth) {
    static testing::TranslatedDatabase database;
    const std::string condition = GetParam().condition;
    EXPECT_EQ(database.run("SELECT CASE WHEN " + condition + " THEN 'true' WHEN NOT (" + condition +
                           ") THEN 'false' ELSE 'unknown' END"),
              GetParam().expected)
        << condition;
}

INSTANTIATE_TEST_SUITE_P(
    Comparisons, Condition,
    ::testing::Values(
        Truth{"'abc' = 'ABC  '", "true"}, Truth{"'e' = 'è'", "false"}, Truth{"'a' < 'B'", "true"},
        Truth{"'5' = 5", "true"}, Truth{"'05' = 5", "true"}, Truth{"5.00 = 5", "true"},
        Truth{"1.5 > 1", "true"}, Truth{"$1.5 = 1.5", "true"}, Truth{"1e0 = 1", "true"},
        Truth{"0.5 = 5e-1", "true"}, Truth{"NULL = NULL", "unknown"}, Truth{"NULL <> 1", "unknown"},
        Truth{"1 IS NULL", "false"}, Truth{"NULL IS NULL", "true"},
        Truth{"NULL IS NOT NULL", "false"},
        Truth{"cast('20240131' as datetime) = '2024-01-31'", "true"},
        Truth{"cast('20240131' as datetime) > cast('20240130' as date)", "true"},
        Truth{"cast('20240131 10:00' as smalldatetime) = cast('20240131 10:00' as datetime)",
              "true"},
        Truth{"2 BETWEEN 1 AND 3", "true"}, Truth{"2.5 BETWEEN 1 AND 2", "false"},
        Truth{"'b' BETWEEN 'A' AND 'C'", "true"}, Truth{"NULL BETWEEN 1 AND 2", "unknown"},
        Truth{"2 NOT BETWEEN 1 AND 3", "false"}, Truth{"2 IN (1, '2', 3.0)", "true"},
        Truth{"'b' IN ('A', 'B ')", "true"}, Truth{"2 NOT IN (1, NULL)", "unknown"},
        Truth{"2 IN (SELECT 2.0)", "true"}, Truth{"'B' IN (SELECT 'b ')", "true"},
        Truth{"EXISTS (SELECT 1 WHERE 1 = 2)", "false"}, Truth{"cast(1 as bit) = 'true'", "true"},
        Truth{"0x01 < 0x02", "true"},
        Truth{"cast('6f9619ff-8b86-d011-b42d-00c04fc964ff' as uniqueidentifier) = "
              "'6F9619FF-8B86-D011-B42D-00C04FC964FF'",
              "true"},
        Truth{"cast(9000000000000 as decimal(18,0)) > cast(1 as decimal(18,10))", "true"},
        Truth{"cast(0.1 as decimal(9,4)) < 99999999999999999.0", "true"}));

struct ExpressionRefusal {
    const char* expression;
    const char* error;
};

class RefusedExpression : public ::testing::TestWithParam<ExpressionRefusal> {};

TEST_P(RefusedExpression, HasTheServersNumberAndText) {
    static testing::TranslatedDatabase database;
    EXPECT_EQ(database.error(std::string("SELECT ") + GetParam().expression), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedExpression,
    ::testing::Values(
        ExpressionRefusal{"1 / 0", "8134: Divide by zero error encountered."},
        ExpressionRefusal{"1 % 0", "8134: Divide by zero error encountered."},
        ExpressionRefusal{"1.0 / 0", "8134: Divide by zero error encountered."},
        ExpressionRefusal{"1e0 / 0", "8134: Divide by zero error encountered."},
        ExpressionRefusal{
            "2147483647 + 1",
            "8115: Arithmetic overflow error converting expression to data type int."},
        ExpressionRefusal{
            "cast(200 as tinyint) + cast(100 as tinyint)",
            "8115: Arithmetic overflow error converting expression to data type tinyint."},
        ExpressionRefusal{
            "cast(9223372036854775807 as bigint) + 1",
            "8115: Arithmetic overflow error converting expression to data type bigint."},
        ExpressionRefusal{
            "99999999999999999999999999999999999999 * 10",
            "8115: Arithmetic overflow error converting expression to data type numeric."},
        ExpressionRefusal{
            "1e308 * 10",
            "8115: Arithmetic overflow error converting expression to data type float."},
        ExpressionRefusal{
            "1 + 'a'",
            "245: Conversion failed when converting the varchar value 'a' to data type int."},
        ExpressionRefusal{"'a' - 'b'",
                          "8117: Operand data type varchar is invalid for subtract operator."},
        ExpressionRefusal{
            "1.5 & 1", "402: The data types numeric and int are incompatible in the '&' operator."},
        ExpressionRefusal{
            "1e0 % 2",
            "402: The data types float and int are incompatible in the modulo operator."},
        ExpressionRefusal{"cast(1 as bit) + cast(1 as bit)",
                          "402: The data types bit and bit are incompatible in the add operator."},
        ExpressionRefusal{"cast('20240101' as date) + 1",
                          "206: Operand type clash: date is incompatible with int"},
        ExpressionRefusal{"getdate() * 2",
                          "8117: Operand data type datetime is invalid for multiply operator."},
        ExpressionRefusal{"-'a'", "8117: Operand data type varchar is invalid for minus operator."},
        ExpressionRefusal{
            "1 WHERE cast('a' as text) = 'a'",
            "402: The data types text and varchar are incompatible in the equal to operator."},
        ExpressionRefusal{
            "isnull(1, getdate())",
            "257: Implicit conversion from data type datetime to int is not allowed. Use the "
            "CONVERT "
            "function to run this query."},
        ExpressionRefusal{"isnull(newid(), 5)",
                          "206: Operand type clash: int is incompatible with uniqueidentifier"},
        ExpressionRefusal{
            "cast(getdate() as uniqueidentifier)",
            "529: Explicit conversion from data type datetime to uniqueidentifier is not allowed."},
        ExpressionRefusal{
            "CASE WHEN 1 = 1 THEN NULL END",
            "8133: At least one of the result expressions in a CASE specification must be an "
            "expression other than the NULL constant."},
        ExpressionRefusal{
            "(SELECT 1, 2)",
            "116: Only one expression can be specified in the select list when the subquery is not "
            "introduced with EXISTS."},
        ExpressionRefusal{"@x", "137: Must declare the scalar variable \"@x\"."},
        ExpressionRefusal{"@@nothing", "137: Must declare the scalar variable \"@@nothing\"."},
        ExpressionRefusal{
            "convert(varchar(9), getdate(), 999)",
            "281: 999 is not a valid style number when converting from datetime to a character "
            "string."}));

TEST(TranslateExpression, KnowsTheLineOfAnError) {
    testing::TranslatedDatabase database;
    try {
        database.run("SELECT 1,\n\n  cast('x' as int)");
        FAIL();
    } catch (const tsql::ServerError& error) {
        EXPECT_EQ(error.line(), 3);
    }
}

TEST(TranslateExpression, AcceptsLongChainsAndLists) {
    testing::TranslatedDatabase database;
    std::string chain = "1 = 2";
    std::string list = "0";
    for (int i = 0; i < 3000; ++i) {
        chain += " OR 1 = 2";
        list += ", 0";
    }
    EXPECT_EQ(database.run("SELECT 5 WHERE " + chain + " OR 1 = 1"), "5");
    EXPECT_EQ(database.run("SELECT 5 WHERE 1 IN (" + list + ", 1)"), "5");
}

TEST(TranslateExpression, AcceptsLongSumsOfEveryKind) {
    testing::TranslatedDatabase database;
    const auto repeated = [](std::string first, const std::string& more) {
        for (int i = 0; i < 150; ++i)
            first += more;
        return "SELECT " + first;
    };
    EXPECT_EQ(database.run(repeated("1", " + 1")), "151");
    EXPECT_EQ(database.run(repeated("1", " - 1")), "-149");
    EXPECT_EQ(database.run(repeated("1.5", " + 0.25")), "39.00");
    EXPECT_EQ(database.run(repeated("$1", " + $0.01")), "2.5000");
    EXPECT_EQ(database.run(repeated("1e0", " + 0.5e0")), "76");
    EXPECT_EQ(database.run("SELECT len(" + repeated("'a'", " + 'bc'").substr(7) + ")"), "301");
    EXPECT_EQ(database.run(
                  "SELECT len(" +
                  repeated("replace('a', 'a', 'b')", " + replace('a', 'a', 'b')").substr(7) + ")"),
              "151");
}

TEST(TranslateExpression, ChecksEveryStepOfASum) {
    testing::TranslatedDatabase database;
    EXPECT_EQ(database.error("SELECT 2147483647 + 1 - 1"),
              "8115: Arithmetic overflow error converting expression to data type int.");
    EXPECT_EQ(database.error("SELECT 2147483647 + 1 + cast(1 as bigint)"),
              "8115: Arithmetic overflow error converting expression to data type int.");
    EXPECT_EQ(
        database.run("SELECT 1 - 2 - (3 - 4), 1 + 1.5 + 0.25, 7 - 0.5 - 1, $1 + 1 + 0.5 - $2"),
        "0|2.75|5.5|0.5000");
    EXPECT_EQ(database.columns("SELECT cast(1 as decimal(18,10)) + cast(1 as decimal(18,10)) a"),
              "a numeric(19,10) notnull");
    EXPECT_EQ(database.run("SELECT cast(1.5 as decimal(18,10)) + cast(1 as decimal(18,10))"),
              "2.5000000000");
}

TEST(TranslateExpression, CutsJoinedTextsAtTheLongest) {
    testing::TranslatedDatabase database;
    EXPECT_EQ(database.run("SELECT len(replicate('a', 5000) + replicate('b', 5000) + 'c')"),
              "8000");
}

}  // namespace
}  // namespace kap::engine
