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
    select.from = sql::from(sql::TableName{sql::Database::Main, "t", "x"});
    select.where = above("a", 1);
    select.groups = {sql::column("a"), sql::column("b")};
    select.having = above("b", 2);
    select.order = {{sql::column("a"), true}, {sql::column("b"), false}};
    select.limit = sql::number(3);
    select.offset = sql::number(4);
    EXPECT_EQ(sqlOf(sql::Query{select}),
              "SELECT DISTINCT \"a\" AS \"c1\", count(*) FROM main.\"t\" AS \"x\" WHERE (\"a\" > "
              "1) GROUP BY "
              "\"a\", \"b\" HAVING (\"b\" > 2) ORDER BY \"a\" DESC, \"b\" LIMIT 3 OFFSET 4");
}

TEST(QueryWriter, LeavesOutClausesThatAreNotThere) {
    EXPECT_EQ(sqlOf(sql::Query{selectColumn("a")}), "SELECT \"a\"");
}

TEST(QueryWriter, DoublesQuotesInTheNamesOfItems) {
    sql::Select select;
    select.items.push_back({sql::number(1), "a\"b"});
    EXPECT_EQ(sqlOf(sql::Query{select}), "SELECT 1 AS \"a\"\"b\"");
}

TEST(QueryWriter, JoinsQueriesByTheirOperatorsAndOrdersTheWhole) {
    sql::Compound compound;
    compound.terms.push_back({sql::SetOperator::Union, selectColumn("a")});
    compound.terms.push_back({sql::SetOperator::UnionAll, selectColumn("b")});
    compound.terms.push_back({sql::SetOperator::Except, selectColumn("c")});
    compound.terms.push_back({sql::SetOperator::Intersect, selectColumn("d")});
    compound.terms.push_back({sql::SetOperator::Union, selectColumn("e")});
    compound.order = {{sql::number(1), true}};
    EXPECT_EQ(sqlOf(sql::Query{compound}),
              "SELECT \"a\" UNION ALL SELECT \"b\" EXCEPT SELECT \"c\" INTERSECT SELECT \"d\" "
              "UNION SELECT \"e\" ORDER BY 1 DESC");
}

TEST(QueryWriter, ReadsTheRowsOfAQueryWithinBrackets) {
    sql::Compound inner;
    inner.terms.push_back({sql::SetOperator::Union, selectColumn("a")});
    inner.terms.push_back({sql::SetOperator::UnionAll, selectColumn("b")});
    sql::Select outer = sql::allColumns(sql::from(sql::Derived{sql::Query{std::move(inner)}}));
    outer.where = above("a", 1);
    EXPECT_EQ(sqlOf(sql::Query{outer}),
              "SELECT * FROM (SELECT \"a\" UNION ALL SELECT \"b\") WHERE (\"a\" > 1)");
}

sql::From table(const std::string& name) {
    return sql::from(sql::TableName{sql::Database::None, name});
}

sql::QueryTree rowsOf(const std::string& name) {
    return sql::one(sql::column("a"), table(name));
}

TEST(QueryWriter, JoinsSourcesAndPutsThoseOfAJoinIntoBrackets) {
    sql::From right = table("b");
    sql::join(right, sql::JoinOperator::Full, table("c"), above("x", 2));
    sql::From from = table("a");
    sql::join(from, sql::JoinOperator::Left, std::move(right), above("x", 1));
    sql::join(from, sql::JoinOperator::Inner, table("d"), sql::number(1));
    sql::join(from, sql::JoinOperator::Right, table("e"), sql::number(1));
    sql::join(from, sql::JoinOperator::Cross, table("f"));
    EXPECT_EQ(sqlOf(from),
              "\"a\" LEFT JOIN (\"b\" FULL JOIN \"c\" ON (\"x\" > 2)) ON (\"x\" > 1) JOIN \"d\" ON "
              "1 RIGHT JOIN \"e\" ON 1 CROSS JOIN \"f\"");
}

TEST(QueryWriter, WritesEveryKindOfSource) {
    sql::Values values{{{sql::number(1), sql::text("a")}, {sql::number(2), sql::null()}}};
    sql::From from = sql::from(sql::Derived{sql::Query{std::move(values)}, "v"});
    sql::join(from, sql::JoinOperator::Cross,
              sql::from(sql::RowsOf{sql::call(fn::kRowsOfFunction, 7), "f"}));
    sql::join(from, sql::JoinOperator::Cross,
              sql::from(sql::TableName{sql::Database::Temporary, "#t"}));
    EXPECT_EQ(sqlOf(from),
              "(VALUES (1, 'a'), (2, NULL)) AS \"v\" CROSS JOIN kap_rows_by(7) AS \"f\" CROSS JOIN "
              "temp.\"#t\"");
}

TEST(QueryWriter, DefinesCommonTablesBeforeTheQuery) {
    sql::Query query{sql::allColumns(table("b"))};
    query.with = {{"a", {"c1", "c2"}, rowsOf("t")}, {"b", {"c1"}, rowsOf("a")}};
    EXPECT_EQ(
        sqlOf(query),
        "WITH RECURSIVE \"a\" (\"c1\", \"c2\") AS (SELECT \"a\" FROM \"t\"), \"b\" (\"c1\") AS "
        "(SELECT \"a\" FROM \"a\") SELECT * FROM \"b\"");
}

TEST(QueryWriter, WritesQueriesWithinExpressions) {
    EXPECT_EQ(sqlOf(sql::Subquery{rowsOf("t")}), "(SELECT \"a\" FROM \"t\")");
    EXPECT_EQ(sqlOf(sql::Exists{rowsOf("t")}), "EXISTS (SELECT \"a\" FROM \"t\")");
    EXPECT_EQ(sqlOf(sql::InQuery{sql::number(1), rowsOf("t"), true}),
              "(1 NOT IN (SELECT \"a\" FROM \"t\"))");
}

TEST(QueryWriter, QuotesAQueryThatAFunctionRuns) {
    const sql::Expression text = sql::QueryText{sql::one(sql::text("it's"), table("t"))};
    EXPECT_EQ(sqlOf(text), "'SELECT ''it''''s'' FROM \"t\"'");
}

TEST(WriteWriter, InsertsRowsOfValuesOrOfAQuery) {
    sql::Values values{{{sql::number(1)}, {sql::text("x")}}};
    sql::Insert insert{{sql::Database::Main, "t"}, {"a"}, sql::Query{std::move(values)}};
    EXPECT_EQ(sqlOf(sql::Write{insert}), "INSERT INTO main.\"t\" (\"a\") VALUES (1), ('x')");
    insert.columns = {"a", "b\"c"};
    insert.rows = sql::Query{sql::allColumns(table("u"))};
    insert.ignored = {"(\"a\")", "(\"b\") WHERE 1"};
    EXPECT_EQ(
        sqlOf(sql::Write{insert}),
        "INSERT INTO main.\"t\" (\"a\", \"b\"\"c\") SELECT * FROM \"u\" ON CONFLICT (\"a\") DO "
        "NOTHING ON CONFLICT (\"b\") WHERE 1 DO NOTHING");
}

TEST(WriteWriter, InsertsDefaults) {
    const sql::Insert insert{{sql::Database::Temporary, "#t"}, {}, sql::DefaultValues()};
    EXPECT_EQ(sqlOf(sql::Write{insert}), "INSERT INTO temp.\"#t\" DEFAULT VALUES");
}

TEST(WriteWriter, UpdatesATableAloneOrBesideOthers) {
    sql::Update update{{sql::Database::Main, "t", "x"}, {{"a", sql::number(1)}}};
    EXPECT_EQ(sqlOf(sql::Write{update}), "UPDATE main.\"t\" AS \"x\" SET \"a\" = 1");
    update.assignments.push_back({"b", sql::column("u", "c")});
    update.from = table("u");
    update.where = above("a", 2);
    EXPECT_EQ(
        sqlOf(sql::Write{update}),
        "UPDATE main.\"t\" AS \"x\" SET \"a\" = 1, \"b\" = \"u\".\"c\" FROM \"u\" WHERE (\"a\" "
        "> 2)");
}

TEST(WriteWriter, DeletesAndDefinesCommonTablesBefore) {
    sql::Write write{sql::Delete{{sql::Database::Main, "t"}}};
    EXPECT_EQ(sqlOf(write), "DELETE FROM main.\"t\"");
    write = {sql::Delete{{sql::Database::Main, "t"}, above("a", 1)}, {{"b", {"c1"}, rowsOf("u")}}};
    EXPECT_EQ(sqlOf(write),
              "WITH RECURSIVE \"b\" (\"c1\") AS (SELECT \"a\" FROM \"u\") DELETE FROM main.\"t\" "
              "WHERE (\"a\" > 1)");
}

TEST(QueryTree, IsEqualToOneThatIsWrittenAlike) {
    EXPECT_EQ(rowsOf("t"), rowsOf("t"));
    EXPECT_NE(rowsOf("t"), rowsOf("u"));
    EXPECT_NE(rowsOf("t"), sql::QueryTree());
    EXPECT_EQ(sql::Expression(sql::Subquery{rowsOf("t")}),
              sql::Expression(sql::Subquery{rowsOf("t")}));
    sql::From joined = table("t");
    sql::join(joined, sql::JoinOperator::Cross, table("u"));
    EXPECT_NE(sql::QueryTree(sql::allColumns(joined)), sql::QueryTree(sql::allColumns(table("t"))));
}

}  // namespace
}  // namespace kap::engine
