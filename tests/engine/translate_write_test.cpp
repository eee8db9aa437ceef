#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "translated_database.hpp"

namespace kap::engine {
namespace {

class TranslateWrite : public ::testing::Test {
protected:
    TranslateWrite() {
        database_.run(
            "CREATE TABLE T (Id int IDENTITY(1,1) PRIMARY KEY, Codice char(4) NOT NULL, Nome "
            "varchar(6) DEFAULT 'n/d', "
            "Qta decimal(7,2) DEFAULT (1 + 0.5), Attivo bit, Data datetime, Ver timestamp)");
    }

    std::string run(const std::string& sql) { return database_.run(sql); }
    std::string error(const std::string& sql) { return database_.error(sql); }

    testing::TranslatedDatabase database_;
};

TEST_F(TranslateWrite, InsertsWithDefaultsIdentityAndRowVersion) {
    run("INSERT INTO T (Codice) VALUES ('a')");
    EXPECT_EQ(run("SELECT * FROM T"), "1|a   |n/d|1.50|NULL|NULL|0x0000000000000001");
}

TEST_F(TranslateWrite, InsertsSeveralRowsWithDefaultAsAValue) {
    run("INSERT T (Codice, Nome, Qta) VALUES ('a', DEFAULT, 2), ('b', NULL, DEFAULT)");
    EXPECT_EQ(run("SELECT Id, Codice, Nome, Qta, Ver FROM T ORDER BY Id"),
              "1|a   |n/d|2.00|0x0000000000000001\n2|b   |NULL|1.50|0x0000000000000002");
}

TEST_F(TranslateWrite, BindsConstantsSoThatStatementsShareATextOrWritesThemIntoIt) {
    for (const auto& [one, other] : {
             std::pair("INSERT INTO T (Codice, Qta) VALUES ('a', 1)",
                       "INSERT INTO T (Codice, Qta) VALUES ('b', -2.5)"),
             std::pair("UPDATE T SET Nome = 'x' WHERE Id = 1 AND Qta > 0.5",
                       "UPDATE T SET Nome = 'y z' WHERE Id = 22 AND Qta > 7.25"),
             std::pair("DELETE T WHERE Data BETWEEN '20240101' AND '20240131' AND Nome LIKE 'x%'",
                       "DELETE T WHERE Data BETWEEN '20250201' AND '20250228' AND Nome LIKE '%y'"),
         }) {
        const StatementPlan first = database_.plan(one, Constants::Bound);
        const StatementPlan second = database_.plan(other, Constants::Bound);
        const std::string& shared = std::get<WritePlan>(first.kind).sql;
        EXPECT_EQ(shared, std::get<WritePlan>(second.kind).sql);
        EXPECT_NE(first.values.constants, second.values.constants);
        const StatementPlan inText = database_.plan(one);
        EXPECT_NE(std::get<WritePlan>(inText.kind).sql, shared);
        EXPECT_TRUE(inText.values.constants.empty());
    }
}

TEST_F(TranslateWrite, InsertsWithoutAColumnList) {
    run("INSERT INTO T VALUES ('a', 'x', '2.345', 5, '31 dec 2024', DEFAULT)");
    EXPECT_EQ(run("SELECT Codice, Nome, Qta, Attivo, Data FROM T"),
              "a   |x|2.35|1|2024-12-31 00:00:00.000");
}

TEST_F(TranslateWrite, InsertsTheRowsOfAQueryInItsOrder) {
    run("INSERT INTO T (Codice, Qta) VALUES ('b', 1), ('a', 2)");
    run("INSERT INTO T (Codice, Qta) SELECT rtrim(Codice) + 'x', Qta * 2 FROM T ORDER BY Codice");
    EXPECT_EQ(run("SELECT Id, Codice, Qta FROM T ORDER BY Id"),
              "1|b   |1.00\n2|a   |2.00\n3|ax  |4.00\n4|bx  |2.00");
    run("INSERT INTO T (Codice) SELECT 'u' UNION ALL SELECT 'v'");
    EXPECT_EQ(run("SELECT count(*) FROM T"), "6");
}

TEST_F(TranslateWrite, InsertsDefaultValues) {
    run("CREATE TABLE D (A int DEFAULT 7, B varchar(5) DEFAULT 'x') INSERT D DEFAULT VALUES");
    EXPECT_EQ(run("SELECT * FROM D"), "7|x");
    run("CREATE TABLE V (Id int IDENTITY(1,1), A int NULL) INSERT INTO V DEFAULT VALUES");
    EXPECT_EQ(run("SELECT A FROM V"), "NULL");
}

TEST_F(TranslateWrite, UpdatesOnlyTheRowsMeantAndTheirVersions) {
    run("INSERT T (Codice) VALUES ('a'), ('b')");
    run("UPDATE T SET Nome = 'xx', Qta = Qta * 2 WHERE Codice = 'B'");
    EXPECT_EQ(run("SELECT Codice, Nome, Qta, Ver FROM T ORDER BY Id"),
              "a   |n/d|1.50|0x0000000000000001\nb   |xx|3.00|0x0000000000000003");
    run("UPDATE T SET Nome = DEFAULT, Qta = DEFAULT, Data = NULL");
    EXPECT_EQ(run("SELECT DISTINCT Nome, Qta FROM T"), "n/d|1.50");
}

TEST_F(TranslateWrite, UpdatesFromOtherTables) {
    run("INSERT T (Codice, Qta) VALUES ('a', 1), ('b', 2) CREATE TABLE P (Cod varchar(4), Q int) "
        "INSERT P VALUES "
        "('A', 10), ('z', 20)");
    run("UPDATE T SET Qta = P.Q FROM P WHERE P.Cod = T.Codice");
    EXPECT_EQ(run("SELECT Codice, Qta FROM T ORDER BY Id"), "a   |10.00\nb   |2.00");
    run("UPDATE x SET Qta = x.Qta + p.Q, Nome = 'k' FROM T x INNER JOIN P p ON p.Cod = x.Codice");
    EXPECT_EQ(run("SELECT Codice, Qta, Nome FROM T ORDER BY Id"), "a   |20.00|k\nb   |2.00|n/d");
    run("UPDATE T SET Qta = y.Qta FROM T JOIN T y ON y.Id = T.Id - 1");
    EXPECT_EQ(run("SELECT Qta FROM T ORDER BY Id"), "20.00\n20.00");
}

TEST_F(TranslateWrite, UpdatesAndDeletesTheFirstRows) {
    run("INSERT T (Codice) VALUES ('a'), ('b'), ('c')");
    run("UPDATE TOP (2) T SET Nome = 'x'");
    EXPECT_EQ(run("SELECT count(*) FROM T WHERE Nome = 'x'"), "2");
    run("DELETE TOP (1) FROM T");
    EXPECT_EQ(run("SELECT count(*) FROM T"), "2");
}

TEST_F(TranslateWrite, DeletesInEveryForm) {
    run("INSERT T (Codice) VALUES ('a'), ('b'), ('c'), ('d') CREATE TABLE P (Cod varchar(4)) "
        "INSERT P VALUES ('C')");
    run("DELETE FROM T WHERE Codice = 'a'");
    run("DELETE T WHERE Codice = 'b'");
    run(" DELETE T FROM T INNER JOIN P ON P.Cod = T.Codice");
    EXPECT_EQ(run("SELECT Codice FROM T"), "d   ");
    run("DELETE x FROM T x WHERE x.Codice = 'd'");
    EXPECT_EQ(run("SELECT count(*) FROM T"), "0");
    run("INSERT T (Codice) VALUES ('a') DELETE T");
    EXPECT_EQ(run("SELECT count(*) FROM T"), "0");
}

TEST_F(TranslateWrite, KeepsTemporaryTablesApart) {
    run("CREATE TABLE #T (A int) INSERT #T VALUES (1) INSERT INTO #T SELECT A + 1 FROM #T");
    run("UPDATE #T SET A = A * 10 DELETE #T WHERE A = 10");
    EXPECT_EQ(run("SELECT #T.A FROM #T"), "20");
    const auto created = database_.planOf<CreateTablePlan>("CREATE TABLE #U (A int)");
    EXPECT_TRUE(created.created.table.temporary);
}

TEST_F(TranslateWrite, PadsAndCutsTextsToTheirColumns) {
    run("INSERT T (Codice, Nome) VALUES ('ab', 'abcdef   ')");
    EXPECT_EQ(run("SELECT datalength(Codice), datalength(Nome) FROM T"), "4|6");
    EXPECT_EQ(error("INSERT T (Codice) VALUES ('abcde')"),
              "8152: String or binary data would be truncated.");
    EXPECT_EQ(error("UPDATE T SET Nome = Nome + 'x'"),
              "8152: String or binary data would be truncated.");
    EXPECT_EQ(error("INSERT T (Codice) SELECT 'abcde'"),
              "8152: String or binary data would be truncated.");
    EXPECT_EQ(run("SELECT count(*) FROM T"), "1");
}

TEST_F(TranslateWrite, ChecksTheRangeOfNumbers) {
    EXPECT_EQ(error("INSERT T (Codice, Qta) VALUES ('a', 100000)"),
              "8115: Arithmetic overflow error converting int to data type numeric.");
    EXPECT_EQ(error("INSERT T (Codice, Qta) VALUES ('a', 'x')"),
              "8114: Error converting data type varchar to numeric.");
    EXPECT_EQ(error("INSERT T (Codice, Data) VALUES ('a', 'x')"),
              "241: Conversion failed when converting date and/or time from character string.");
}

struct WriteRefusal {
    const char* sql;
    const char* error;
};

class RefusedWrite : public TranslateWrite, public ::testing::WithParamInterface<WriteRefusal> {};

TEST_P(RefusedWrite, HasTheServersNumberAndText) {
    EXPECT_EQ(error(GetParam().sql), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedWrite,
    ::testing::Values(
        WriteRefusal{"INSERT Nulla VALUES (1)", "208: Invalid object name 'Nulla'."},
        WriteRefusal{"INSERT T (Boh) VALUES (1)", "207: Invalid column name 'Boh'."},
        WriteRefusal{
            "INSERT T (Codice, Nome) VALUES ('a')",
            "109: There are more columns in the INSERT statement than values specified in the "
            "VALUES clause. "
            "The number of values in the VALUES clause must match the number of columns "
            "specified in the "
            "INSERT statement."},
        WriteRefusal{
            "INSERT T (Codice) VALUES ('a', 'b')",
            "110: There are fewer columns in the INSERT statement than values specified in the "
            "VALUES clause. "
            "The number of values in the VALUES clause must match the number of columns "
            "specified in the "
            "INSERT statement."},
        WriteRefusal{
            "INSERT T VALUES ('a')",
            "213: Column name or number of supplied values does not match table definition."},
        WriteRefusal{
            "INSERT T SELECT 'a'",
            "213: Column name or number of supplied values does not match table definition."},
        WriteRefusal{
            "INSERT T (Codice) SELECT 'a', 1",
            "121: The select list for the INSERT statement contains more items than the insert "
            "list. The "
            "number of SELECT values must match the number of INSERT columns."},
        WriteRefusal{"INSERT T (Id, Codice) VALUES (1, 'a')",
                     "544: Cannot insert explicit value for identity column in table 'T' when "
                     "IDENTITY_INSERT is set "
                     "to OFF."},
        WriteRefusal{
            "INSERT T (Codice, Ver) VALUES ('a', 0x01)",
            "273: Cannot insert an explicit value into a timestamp column. Use INSERT with a "
            "column list to "
            "exclude the timestamp column, or insert a DEFAULT into the timestamp column."},
        WriteRefusal{
            "INSERT T (Codice) VALUES (Nome)",
            "128: The name \"Nome\" is not permitted in this context. Valid expressions are "
            "constants, "
            "constant expressions, and (in some contexts) variables. Column names are not "
            "permitted."},
        WriteRefusal{
            "INSERT T (Codice) VALUES ('a'), ('b', 1)",
            "10709: The number of columns for each row in a table value constructor must be "
            "the same."},
        WriteRefusal{"UPDATE T SET Ver = 1", "272: Cannot update a timestamp column."},
        WriteRefusal{"UPDATE T SET Id = 1", "8102: Cannot update identity column 'Id'."},
        WriteRefusal{"UPDATE T SET Boh = 1", "207: Invalid column name 'Boh'."},
        WriteRefusal{"UPDATE T SET Nome = Boh", "207: Invalid column name 'Boh'."},
        WriteRefusal{"UPDATE T SET Qta = sum(Qta)",
                     "157: An aggregate may not appear in the set list of an UPDATE statement."},
        WriteRefusal{"UPDATE T SET Data = cast('20240101' as date) + 1",
                     "206: Operand type clash: date is incompatible with int"},
        WriteRefusal{
            "UPDATE T SET Qta = getdate()",
            "257: Implicit conversion from data type datetime to decimal is not allowed. Use "
            "the CONVERT "
            "function to run this query."},
        WriteRefusal{"UPDATE x SET Nome = 'a' FROM T a", "208: Invalid object name 'x'."},
        WriteRefusal{"DELETE Nulla", "208: Invalid object name 'Nulla'."},
        WriteRefusal{
            "DELETE T WHERE count(*) > 1",
            "147: An aggregate may not appear in the WHERE clause unless it is in a subquery "
            "contained in a "
            "HAVING clause or a select list, and the column being aggregated is an outer "
            "reference."}));

TEST_F(TranslateWrite, RefusesAColumnGivenTwice) {
    EXPECT_EQ(error("INSERT T (Nome, NOME) VALUES (1, 2)").substr(0, 60),
              "264: The column name 'NOME' is specified more than once in t");
    EXPECT_EQ(error("UPDATE T SET Nome = 'a', nome = 'b'").substr(0, 60),
              "264: The column name 'nome' is specified more than once in t");
}

TEST_F(TranslateWrite, SaysWhatItWritesAndWhere) {
    EXPECT_TRUE(std::holds_alternative<QueryPlan>(database_.plan("SELECT 1").kind));
    EXPECT_EQ(database_.planOf<WritePlan>("DELETE T").verb, Verb::Delete);
    const auto update = database_.planOf<WritePlan>("UPDATE t SET Nome = 'a', qta = 1");
    EXPECT_EQ(update.verb, Verb::Update);
    EXPECT_EQ(update.target.table, "T");
    EXPECT_FALSE(update.target.temporary);
    EXPECT_EQ(update.columns, (std::vector<std::string>{"Nome", "qta"}));
    const auto context = contextOf(database_.plan("UPDATE t SET Nome = 'a'"));
    EXPECT_EQ(context.verb, "UPDATE");
    EXPECT_EQ(context.table, "T");
}

}  // namespace
}  // namespace kap::engine
