#include <gtest/gtest.h>

#include <random>

#include "support/seed.hpp"
#include "translated_database.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

// Makes expressions and queries at random: most are refused, the others must run.
class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::string value(int depth) {
        if (depth == 0) return pick(kAtoms);
        switch (below(9)) {
            case 0:
            case 1:
                return "(" + value(depth - 1) + " " + pick(kOperators) + " " + value(depth - 1) +
                       ")";
            case 2:
                return pick(kUnary) + value(depth - 1);
            case 3:
                return std::string(pick(kOneArgument)) + "(" + value(depth - 1) + ")";
            case 4:
                return std::string(pick(kTwoArguments)) + "(" + value(depth - 1) + ", " +
                       value(depth - 1) + ")";
            case 5:
                return "CASE WHEN " + condition(depth - 1) + " THEN " + value(depth - 1) +
                       " ELSE " + value(depth - 1) + " END";
            case 6:
                return "CAST(" + value(depth - 1) + " AS " + pick(kTypes) + ")";
            case 7:
                return "(SELECT " + value(depth - 1) + ")";
            default:
                return pick(kAtoms);
        }
    }

    std::string condition(int depth) {
        switch (below(6)) {
            case 0:
                return value(depth) + " IN (" + value(depth) + ", " + value(depth) + ")";
            case 1:
                return value(depth) + " BETWEEN " + value(depth) + " AND " + value(depth);
            case 2:
                return value(depth) + " IS NULL";
            case 3:
                return value(depth) + " LIKE " + value(depth);
            case 4:
                return value(depth) + " IN (SELECT " + value(depth) + " FROM t u)";
            default:
                return value(depth) + pick(kComparisons) + value(depth);
        }
    }

    std::string statement() {
        switch (below(6)) {
            case 0:
                return "SELECT DISTINCT TOP 3 " + value(2) + " AS x FROM t WHERE " + condition(1) +
                       " ORDER BY x";
            case 1:
                return "SELECT " + value(2) + " UNION SELECT " + value(1) + " FROM t";
            case 2:
                return "SELECT max(" + value(1) + "), sum(" + value(1) + "), avg(" + value(1) +
                       ") FROM t GROUP BY " + value(1);
            case 3:
                return "UPDATE t SET " + std::string(pick(kColumns)) + " = " + value(2) +
                       " WHERE " + condition(1);
            case 4:
                return "INSERT INTO t (a, s) SELECT " + value(1) + ", " + value(1);
            default:
                return "SELECT " + value(3) + " FROM t";
        }
    }

private:
    static constexpr const char* kAtoms[] = {
        "a",    "m",    "n",        "f",    "s",   "c",    "d",   "dd",    "b",    "v",
        "g",    "1",    "0",        "2.50", "1e2", "$3.5", "'7'", "'abc'", "N'è'", "'2024-01-31'",
        "0x0A", "NULL", "getdate()"};
    static constexpr const char* kColumns[] = {"a", "m",  "n", "f", "s", "c",
                                               "d", "dd", "b", "v", "g"};
    static constexpr const char* kOperators[] = {"+", "-", "*", "/", "%", "&", "|", "^"};
    static constexpr const char* kComparisons[] = {" = ", " <> ", " < ", " >= "};
    static constexpr const char* kUnary[] = {"-", "~", "+"};
    static constexpr const char* kOneArgument[] = {
        "abs",   "len",    "upper", "year",  "isnumeric", "ceiling",   "space",
        "ltrim", "isdate", "sqrt",  "ascii", "reverse",   "datalength"};
    static constexpr const char* kTwoArguments[] = {"isnull", "coalesce", "nullif",   "left",
                                                    "round",  "power",    "charindex"};
    static constexpr const char* kTypes[] = {"int",        "bit",      "decimal(9,2)", "money",
                                             "float",      "real",     "date",         "datetime",
                                             "varchar(8)", "nchar(3)", "varbinary(4)", "tinyint"};

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    template <std::size_t kSize>
    std::string pick(const char* const (&choices)[kSize]) {
        return choices[below(kSize)];
    }

    std::mt19937 random_;
};

TEST(TranslateRobustness, RunsOrRefusesWhateverIsWritten) {
    Generator generator(kap::test::randomSeed());
    testing::TranslatedDatabase database;
    database.run(
        "CREATE TABLE t (a int, m money, n decimal(9,3), f float, s varchar(20), c char(4), d "
        "datetime, dd date, b bit, "
        "v varbinary(8), g uniqueidentifier) INSERT t VALUES (1, 2.5, 3.125, 0.5, 'x', 'ab', "
        "'20240131', '20240229', 1, "
        "0x01, newid()), (NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL)");
    int ran = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::string statement = generator.statement();
        SCOPED_TRACE(statement);
        try {
            database.run(statement);
            ++ran;
        } catch (const tsql::ServerError& error) {
            EXPECT_GT(error.number(), 0);
        }
    }
    EXPECT_GT(ran, 200);
}

}  // namespace
}  // namespace kap::engine
