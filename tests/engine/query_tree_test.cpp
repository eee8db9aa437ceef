#include "engine/sqlite/query_tree.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "engine/sqlite/sql_writer.hpp"

namespace kap::engine {
namespace {

sql::Select selectColumn(const std::string& name) {
    sql::Select select;
    select.items.push_back({sql::column(name), ""});
    return select;
}

sql::Expression above(const std::string& column, int bound) {
    return sql::Binary{sql::BinaryOperator::Greater, sql::column(column), sql::number(bound)};
}

TEST(QueryWriter, WritesTheClausesInSqlitesOrder) {
    sql::Select select;
    select.distinct = true;
    select.items.push_back({sql::column("a"), "c1"});
    select.items.push_back({sql::call(fn::kCount, sql::Star()), ""});
    select.from.text = "\"t\"";
    select.where = above("a", 1);
    select.groups = {sql::column("a"), sql::column("b")};
    select.having = above("b", 2);
    select.order = {{sql::column("a"), true}, {sql::column("b"), false}};
    select.limit = sql::number(3);
    select.offset = sql::number(4);
    EXPECT_EQ(sqlOf(select),
              "SELECT DISTINCT \"a\" AS \"c1\", count(*) FROM \"t\" WHERE (\"a\" > 1) GROUP BY "
              "\"a\", \"b\" HAVING (\"b\" > 2) ORDER BY \"a\" DESC, \"b\" LIMIT 3 OFFSET 4");
}

TEST(QueryWriter, LeavesOutClausesThatAreNotThere) {
    EXPECT_EQ(sqlOf(selectColumn("a")), "SELECT \"a\"");
}

TEST(QueryWriter, DoublesQuotesInTheNamesOfItems) {
    sql::Select select;
    select.items.push_back({sql::number(1), "a\"b"});
    EXPECT_EQ(sqlOf(select), "SELECT 1 AS \"a\"\"b\"");
}

TEST(QueryWriter, JoinsQueriesByTheirOperatorsAndOrdersTheWhole) {
    sql::Compound compound;
    compound.terms.push_back({sql::SetOperator::Union, selectColumn("a")});
    compound.terms.push_back({sql::SetOperator::UnionAll, selectColumn("b")});
    compound.terms.push_back({sql::SetOperator::Except, selectColumn("c")});
    compound.terms.push_back({sql::SetOperator::Intersect, selectColumn("d")});
    compound.terms.push_back({sql::SetOperator::Union, selectColumn("e")});
    compound.order = {{sql::number(1), true}};
    EXPECT_EQ(sqlOf(compound),
              "SELECT \"a\" UNION ALL SELECT \"b\" EXCEPT SELECT \"c\" INTERSECT SELECT \"d\" "
              "UNION SELECT \"e\" ORDER BY 1 DESC");
}

TEST(QueryWriter, ReadsTheRowsOfAQueryWithinBrackets) {
    sql::Compound inner;
    inner.terms.push_back({sql::SetOperator::Union, selectColumn("a")});
    inner.terms.push_back({sql::SetOperator::UnionAll, selectColumn("b")});
    sql::Select outer;
    outer.items.push_back({sql::Star(), ""});
    outer.from = sql::fromQuery(std::move(inner));
    outer.where = above("a", 1);
    EXPECT_EQ(sqlOf(outer),
              "SELECT * FROM (SELECT \"a\" UNION ALL SELECT \"b\") WHERE (\"a\" > 1)");
}

}  // namespace
}  // namespace kap::engine
