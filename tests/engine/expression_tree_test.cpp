#include "engine/sqlite/expression_tree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "engine/sqlite/query_tree.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "platform/stack.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using sql::Expression;

std::vector<Expression> conditions(int count) {
    std::vector<Expression> result;
    result.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        result.push_back(sql::equal(sql::column("a"), sql::number(i)));
    return result;
}

// SELECT number
sql::QueryTree queryOf(int number) {
    return sql::one(sql::number(number), {});
}

// How deep brackets stand in one another.
int depthOf(const std::string& text) {
    int depth = 0;
    int deepest = 0;
    for (const char letter : text) {
        if (letter == '(') deepest = std::max(deepest, ++depth);
        if (letter == ')') --depth;
    }
    return deepest;
}

TEST(ExpressionTree, IsEqualToOneOfTheSameShape) {
    const auto make = [](std::int64_t number) {
        return sql::call(fn::kUpper, sql::equal(sql::column("t", "a"), sql::number(number)));
    };
    EXPECT_EQ(make(1), make(1));
    EXPECT_NE(make(1), make(2));
    EXPECT_FALSE(make(1).isSame(make(1)));
    EXPECT_NE(sql::column("t", "a"), sql::column("a"));
    EXPECT_NE(sql::number(1), sql::text("1"));
    EXPECT_NE(sql::call(fn::kUpper, sql::column("a")), sql::call(fn::kLower, sql::column("a")));
    EXPECT_NE(Expression(), sql::null());
    EXPECT_EQ(Expression(), Expression());
}

TEST(ExpressionTree, TellsAQueryFromAnother) {
    EXPECT_EQ(Expression(sql::Subquery{queryOf(1)}), Expression(sql::Subquery{queryOf(1)}));
    EXPECT_NE(Expression(sql::Subquery{queryOf(1)}), Expression(sql::Subquery{queryOf(2)}));
    EXPECT_NE(Expression(sql::Subquery{queryOf(1)}), Expression(sql::Exists{queryOf(1)}));
}

TEST(ExpressionTree, IsSharedByItsCopies) {
    const Expression first = sql::call(fn::kLen, sql::column("a"));
    Expression second = first;
    EXPECT_TRUE(first.isSame(second));
    const Expression third = std::move(second);
    EXPECT_TRUE(first.isSame(third));
    EXPECT_FALSE(second);  // NOLINT(bugprone-use-after-move): what is moved from is none
}

TEST(ExpressionTree, GivesUpItsContentsWhereNobodyElseHoldsThem) {
    Expression alone = sql::Chain{sql::ChainOperator::Join, {sql::text("a"), sql::text("b")}};
    const Expression* const part = alone.as<sql::Chain>()->parts.data();
    const sql::Chain taken = std::move(alone).take<sql::Chain>();
    EXPECT_EQ(part, taken.parts.data());

    Expression shared = taken;
    const Expression other = shared;
    const sql::Chain copy = std::move(shared).take<sql::Chain>();
    EXPECT_EQ(taken, copy);
    EXPECT_EQ("('a' || 'b')", sqlOf(other));
}

TEST(ExpressionTree, FindsWhatStandsInIt) {
    const Expression tree = sql::when(sql::isNull(sql::column("a")),
                                      sql::call(fn::kLen, sql::column("b")), sql::number(1));
    const auto holds = [&](const char* name) {
        return sql::contains(tree, [&](const sql::Kind& kind) {
            const auto* column = std::get_if<sql::Column>(&kind);
            return column != nullptr && column->name == name;
        });
    };
    EXPECT_TRUE(holds("a"));
    EXPECT_TRUE(holds("b"));
    EXPECT_FALSE(holds("c"));
}

TEST(ExpressionTree, EndsHoweverDeepItIs) {
    constexpr int kDepth = 1000000;
    Expression tree = sql::column("a");
    for (int i = 0; i < kDepth; ++i)
        tree = sql::negation(std::move(tree));
    const Expression half = tree.as<sql::Unary>()->operand;
    tree = {};
    EXPECT_TRUE(half);
}

TEST(ExpressionTree, IsRefusedByTheWriterWhereTheStackEnds) {
    platform::learnStack();
    constexpr int kDepth = 1000000;
    Expression tree = sql::column("a");
    for (int i = 0; i < kDepth; ++i)
        tree = sql::negation(std::move(tree));
    Expression other = sql::column("b");
    for (int i = 0; i < kDepth; ++i)
        other = sql::negation(std::move(other));
    try {
        (void)sqlOf(tree);
        ADD_FAILURE() << "was written";
    } catch (const tsql::ServerError& error) {
        EXPECT_EQ(8631, error.number());
    }
    try {
        (void)(tree == other);
        ADD_FAILURE() << "was compared";
    } catch (const tsql::ServerError& error) {
        EXPECT_EQ(8631, error.number());
    }
}

TEST(SqlWriter, WritesNamesAndConstants) {
    EXPECT_EQ("\"a b\".\"c\"\"d\"", sqlOf(sql::column("a b", "c\"d")));
    EXPECT_EQ("\"t\".rowid", sqlOf(sql::Column{"t", "rowid", true}));
    EXPECT_EQ("NULL", sqlOf(sql::null()));
    EXPECT_EQ("-5", sqlOf(sql::number(-5)));
    EXPECT_EQ("(-9223372036854775807 - 1)",
              sqlOf(sql::number(std::numeric_limits<std::int64_t>::min())));
    EXPECT_EQ("'it''s'", sqlOf(sql::text("it's")));
    EXPECT_EQ("1.0", sqlOf(sql::Constant{1.0}));
    EXPECT_EQ("X'00FF'", sqlOf(sql::Constant{Blob{std::string("\0\xFF", 2)}}));
    EXPECT_EQ("?65", sqlOf(sql::Parameter{65}));
    EXPECT_EQ("count(*)", sqlOf(sql::call(fn::kCount, sql::Star())));
    EXPECT_EQ("count(DISTINCT \"a\")", sqlOf(sql::Call{fn::kCount, {sql::column("a")}, true}));
}

TEST(SqlWriter, NeverBeginsAComment) {
    const Expression minus = sql::Unary{sql::UnaryOperator::Minus, sql::Constant{-1.5}};
    EXPECT_EQ("(- -1.5)", sqlOf(minus));
    EXPECT_EQ("(-(- -1.5))", sqlOf(sql::Unary{sql::UnaryOperator::Minus, minus}));
}

TEST(SqlWriter, BringsTheTermsOfASumToOneScale) {
    const tsql::TypeSpec type{tsql::SqlType::Decimal, 0, 10, 2};
    const std::string packed = std::to_string(packType(type));
    sql::Sum sum{type, 2, {{false, sql::column("a"), 2}, {true, sql::column("b"), 0}}};
    EXPECT_EQ("kap_subtract(\"a\", kap_scale(\"b\", 2), " + packed + ")", sqlOf(sum));
    sum.terms.push_back({false, sql::number(5), 0});
    EXPECT_EQ("kap_accumulate(" + packed + ", '+-+', \"a\", kap_scale(\"b\", 2), 500)", sqlOf(sum));
}

TEST(SqlWriter, WritesLongConditionsWithFewBrackets) {
    constexpr int kCount = 10000;
    for (const sql::ChainOperator op : {sql::ChainOperator::And, sql::ChainOperator::Or}) {
        const std::string text = sqlOf(sql::Chain{op, conditions(kCount)});
        EXPECT_LE(depthOf(text), 16);
        EXPECT_NE(std::string::npos, text.find("(\"a\" = 9999)"));
    }
    EXPECT_EQ("(\"a\" = 0)", sqlOf(sql::allOf(conditions(1))));
    EXPECT_EQ("((\"a\" = 0) AND (\"a\" = 1))", sqlOf(sql::allOf(conditions(2))));
}

TEST(SqlWriter, WritesJoinedTextsFlatAndManyOfThemAsHalves) {
    const auto depthOfJoined = [](std::size_t count) {
        return depthOf(sqlOf(sql::Chain{sql::ChainOperator::Join,
                                        std::vector<Expression>(count, sql::column("a"))}));
    };
    EXPECT_EQ(1, depthOfJoined(64));
    EXPECT_EQ(10, depthOfJoined(1000));
}

TEST(SqlWriter, WritesWindows) {
    const Expression sum = sql::call(fn::kSum, sql::column("a"));
    EXPECT_EQ("sum(\"a\") OVER ()", sqlOf(sql::Over{sum, sql::Window()}));
    EXPECT_EQ(
        "sum(\"a\") OVER (PARTITION BY \"b\" ORDER BY \"c\" DESC, \"d\" ROWS UNBOUNDED "
        "PRECEDING)",
        sqlOf(sql::Over{sum, sql::Window{{sql::column("b")},
                                         {{sql::column("c"), true}, {sql::column("d")}},
                                         "ROWS UNBOUNDED PRECEDING"}}));
    EXPECT_EQ("sum(\"a\") OVER (ORDER BY \"c\")",
              sqlOf(sql::Over{sum, sql::Window{{}, {{sql::column("c")}}, ""}}));
}

TEST(SqlWriter, WritesConditions) {
    const Expression a = sql::column("a");
    EXPECT_EQ("(\"a\" NOT IN (1, 2))", sqlOf(sql::In{a, {sql::number(1), sql::number(2)}, true}));
    EXPECT_EQ("(\"a\" IN (SELECT 1))", sqlOf(sql::InQuery{a, queryOf(1)}));
    EXPECT_EQ("(\"a\" NOT BETWEEN 1 AND 2)",
              sqlOf(sql::Between{a, sql::number(1), sql::number(2), true}));
    EXPECT_EQ("(NOT EXISTS (SELECT 1))", sqlOf(sql::negation(sql::Exists{queryOf(1)})));
    EXPECT_EQ("(CASE \"a\" WHEN 1 THEN 2 ELSE 3 END)",
              sqlOf(sql::Case{a, {{sql::number(1), sql::number(2)}}, sql::number(3)}));
}

}  // namespace
}  // namespace kap::engine
