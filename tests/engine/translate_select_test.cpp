#include <gtest/gtest.h>

#include "translated_database.hpp"

namespace kap::engine {
namespace {

class TranslateSelect : public ::testing::Test {
protected:
    TranslateSelect() {
        database_.run(
            "CREATE TABLE Clienti (Codice varchar(10) NOT NULL PRIMARY KEY, Nome nvarchar(30) "
            "NULL, Sconto "
            "decimal(5,2) NULL, AggID timestamp) "
            "INSERT INTO Clienti (Codice, Nome, Sconto) VALUES ('C1', 'Rossi', 10), ('c2', 'Èlia', "
            "2.5), "
            "('C3', NULL, NULL) "
            "CREATE TABLE Righe (Id int IDENTITY(1,1) NOT NULL, Cliente varchar(10), Qta int, "
            "Prezzo money, Data "
            "datetime, Note text) "
            "INSERT INTO Righe (Cliente, Qta, Prezzo, Data) VALUES ('c1', 2, 10.5, '20240131'), "
            "('C1', 3, 1, "
            "'20240229'), ('C2', 1, NULL, '20250101'), ('X', 5, 7, NULL)");
    }

    std::string run(const std::string& sql) { return database_.run(sql); }
    std::string error(const std::string& sql) { return database_.error(sql); }

    testing::TranslatedDatabase database_;
};

TEST_F(TranslateSelect, ReadsAllColumnsWithTheirMetadata) {
    EXPECT_EQ(run("SELECT * FROM Clienti WHERE Codice = 'c1'"),
              "C1|Rossi|10.00|0x0000000000000001");
    const auto columns = database_.planOf<QueryPlan>("SELECT * FROM dbo.CLIENTI").columns;
    ASSERT_EQ(columns.size(), 4U);
    EXPECT_EQ(columns[0].name, "Codice");
    EXPECT_EQ(columns[0].baseTable, "Clienti");
    EXPECT_EQ(columns[0].baseColumn, "Codice");
    EXPECT_TRUE(columns[0].key);
    EXPECT_FALSE(columns[0].nullable);
    EXPECT_TRUE(columns[1].nullable);
    EXPECT_TRUE(columns[3].rowVersion);
    EXPECT_TRUE(database_.planOf<QueryPlan>("SELECT Id FROM Righe").columns[0].identity);
}

TEST_F(TranslateSelect, NamesColumnsAsTheTableSpellsThemUnlessAliased) {
    EXPECT_EQ(
        database_.columns("SELECT CODICE, codice AS Cod, 1, x = nome FROM clienti"),
        "Codice varchar(10) notnull, Cod varchar(10) notnull,  int notnull, x nvarchar(30) null");
    EXPECT_EQ(
        database_.planOf<QueryPlan>("SELECT codice AS Cod FROM clienti").columns[0].baseColumn,
        "Codice");
    EXPECT_EQ(database_.planOf<QueryPlan>("SELECT codice + '' FROM clienti").columns[0].baseColumn,
              "");
}

TEST_F(TranslateSelect, ComparesTextsIgnoringCaseAndTrailingBlanks) {
    EXPECT_EQ(run("SELECT Codice FROM Clienti WHERE codice = 'C2   ' AND upper(nome) = 'èLIA '"),
              "c2");
}

TEST_F(TranslateSelect, ComparesNumbersWithQuotedNumbersAsNumbers) {
    EXPECT_EQ(run("SELECT Id FROM Righe WHERE Qta BETWEEN '2' AND '10' AND year(Data) = '2024' "
                  "ORDER BY Id"),
              "1\n2");
    EXPECT_EQ(run("SELECT Id FROM Righe WHERE (isnull(Cliente,'')='X' or isnull(Cliente,'0')='0')"),
              "4");
}

TEST_F(TranslateSelect, KeepsAnIndexUsableNextToALiteralOfAnotherScale) {
    const std::string sql =
        database_.planOf<QueryPlan>("SELECT Id FROM Righe WHERE Qta = 5.00 AND Prezzo > 3").sql;
    EXPECT_NE(sql.find("\"Righe\".\"Qta\" = 5)"), std::string::npos) << sql;
    EXPECT_NE(sql.find("\"Righe\".\"Prezzo\" > 30000)"), std::string::npos) << sql;
}

TEST_F(TranslateSelect, TakesTheFirstRows) {
    EXPECT_EQ(run("SELECT TOP 2 Id FROM Righe ORDER BY Id DESC"), "4\n3");
    EXPECT_EQ(run("SELECT TOP (1 + 1) Id FROM Righe ORDER BY Id"), "1\n2");
    EXPECT_EQ(run("SELECT TOP 0 Id FROM Righe"), "");
    EXPECT_EQ(run("SELECT TOP 30 PERCENT Id FROM Righe ORDER BY Id"), "1\n2");
    EXPECT_EQ(error("SELECT TOP (-1) Id FROM Righe"),
              "127: A TOP N or FETCH rowcount value may not be negative.");
    EXPECT_EQ(error("SELECT TOP ('a') Id FROM Righe"),
              "1060: The number of rows provided for a TOP or FETCH clauses row count parameter "
              "must be an integer.");
}

TEST_F(TranslateSelect, JoinsTables) {
    const std::string order = " ORDER BY c.Codice, r.Id";
    EXPECT_EQ(
        run("SELECT c.Codice, r.Id FROM Clienti c INNER JOIN Righe r ON r.Cliente = c.Codice" +
            order),
        "C1|1\nC1|2\nc2|3");
    EXPECT_EQ(run("SELECT c.Codice, r.Id FROM Clienti c LEFT JOIN Righe r ON r.Cliente = c.Codice" +
                  order),
              "C1|1\nC1|2\nc2|3\nC3|NULL");
    EXPECT_EQ(
        run("SELECT c.Codice, r.Id FROM Clienti c RIGHT JOIN Righe r ON r.Cliente = c.Codice" +
            order),
        "NULL|4\nC1|1\nC1|2\nc2|3");
    EXPECT_EQ(run("SELECT c.Codice, r.Id FROM Clienti c FULL JOIN Righe r ON r.Cliente = c.Codice" +
                  order),
              "NULL|4\nC1|1\nC1|2\nc2|3\nC3|NULL");
    EXPECT_EQ(run("SELECT count(*) FROM Clienti CROSS JOIN Righe"), "12");
    EXPECT_EQ(run("SELECT count(*) FROM Clienti, Righe WHERE Cliente = Codice"), "3");
}

TEST_F(TranslateSelect, JoinsTextsThatDifferInTrailingBlanks) {
    run("CREATE TABLE A (x char(5)) CREATE TABLE B (y varchar(9), n int) INSERT A VALUES ('a'), "
        "('b'), ('c') INSERT B "
        "VALUES ('A', 1), ('b  ', 2), ('C        ', 3)");
    EXPECT_EQ(run("SELECT n FROM A, B WHERE x = y ORDER BY n"), "1\n2\n3");
    EXPECT_EQ(run("SELECT n FROM A JOIN B ON y = x WHERE n > 0 ORDER BY n"), "1\n2\n3");
}

TEST_F(TranslateSelect, BindsJoinsCloserThanCommas) {
    EXPECT_EQ(
        run("SELECT count(*) FROM Clienti x, Clienti c RIGHT JOIN Righe r ON r.Cliente = c.Codice"),
        "12");
    EXPECT_EQ(run("SELECT count(*) FROM Clienti x LEFT JOIN (Clienti c JOIN Righe r ON r.Cliente = "
                  "c.Codice) ON "
                  "x.Codice = c.Codice AND r.Qta = 3"),
              "3");
    EXPECT_EQ(error("SELECT 1 FROM Clienti x, Clienti c JOIN Righe r ON r.Cliente = x.Codice"),
              "4104: The multi-part identifier \"x.Codice\" could not be bound.");
}

TEST_F(TranslateSelect, MakesTheColumnsOfOuterJoinsNullable) {
    EXPECT_EQ(database_.columns(
                  "SELECT c.Codice, r.Id FROM Clienti c LEFT JOIN Righe r ON r.Cliente = c.Codice"),
              "Codice varchar(10) notnull, Id int null");
}

TEST_F(TranslateSelect, GroupsAndAggregates) {
    EXPECT_EQ(run("SELECT Cliente, count(*), sum(Qta), min(Data), avg(Qta) FROM Righe GROUP BY "
                  "Cliente HAVING "
                  "count(*) > 0 ORDER BY 3 DESC, Cliente"),
              "c1|2|5|2024-01-31 00:00:00.000|2\nX|1|5|NULL|5\nC2|1|1|2025-01-01 00:00:00.000|1");
    EXPECT_EQ(run("SELECT count(Prezzo), sum(Prezzo), avg(Prezzo), max(Cliente) FROM Righe"),
              "3|18.5000|6.1666|X");
    EXPECT_EQ(run("SELECT sum(Qta), count(*), max(Id) FROM Righe WHERE 1 = 2"), "NULL|0|NULL");
    EXPECT_EQ(run("SELECT count(DISTINCT Cliente), sum(DISTINCT 2) FROM Righe"), "3|2");
    EXPECT_EQ(run("SELECT year(Data), count(*) FROM Righe GROUP BY year(Data) ORDER BY year(Data)"),
              "NULL|1\n2024|2\n2025|1");
    EXPECT_EQ(run("SELECT year(Data) + 1 FROM Righe GROUP BY year(Data) ORDER BY 1"),
              "NULL\n2025\n2026");
    EXPECT_EQ(run("SELECT count(*) FROM Righe HAVING count(*) > 10"), "");
    EXPECT_EQ(run("SELECT 1 FROM Righe HAVING count(*) > 1"), "1");
}

TEST_F(TranslateSelect, GivesAggregatesTheServersTypes) {
    EXPECT_EQ(
        database_.columns("SELECT count(*) a, sum(Qta) b, sum(Prezzo) c, avg(Qta) d FROM Righe"),
        "a int notnull, b int null, c money null, d int null");
    EXPECT_EQ(database_.columns("SELECT sum(Sconto) a, avg(Sconto) b, count_big(*) c FROM Clienti"),
              "a numeric(38,2) null, b numeric(38,6) null, c bigint notnull");
    EXPECT_EQ(run("SELECT sum(Sconto), avg(Sconto) FROM Clienti"), "12.50|6.250000");
}

TEST_F(TranslateSelect, RefusesWhatGroupingLeavesUndefined) {
    EXPECT_EQ(error("SELECT Cliente, Qta FROM Righe GROUP BY Cliente"),
              "8120: Column 'Righe.Qta' is invalid in the select list because it is not contained "
              "in either an "
              "aggregate function or the GROUP BY clause.");
    EXPECT_EQ(error("SELECT *, count(*) FROM Righe").substr(0, 5), "8120:");
    EXPECT_EQ(error("SELECT Cliente FROM Righe GROUP BY Cliente HAVING Qta > 1"),
              "8121: Column 'Righe.Qta' is invalid in the HAVING clause because it is not "
              "contained in either an "
              "aggregate function or the GROUP BY clause.");
    EXPECT_EQ(error("SELECT Cliente FROM Righe GROUP BY Cliente ORDER BY Qta"),
              "8127: Column \"Righe.Qta\" is invalid in the ORDER BY clause because it is not "
              "contained in either an "
              "aggregate function or the GROUP BY clause.");
    EXPECT_EQ(error("SELECT 1 FROM Righe WHERE count(*) > 1").substr(0, 4), "147:");
    EXPECT_EQ(error("SELECT sum(count(*)) FROM Righe"),
              "130: Cannot perform an aggregate function on an expression containing an aggregate "
              "or a subquery.");
    EXPECT_EQ(error("SELECT 1 FROM Righe GROUP BY 1"),
              "164: Each GROUP BY expression must contain at least one column that is not an outer "
              "reference.");
    EXPECT_EQ(error("SELECT sum(Cliente) FROM Righe"),
              "8117: Operand data type varchar is invalid for sum operator.");
}

TEST_F(TranslateSelect, OrdersByAliasPositionAndExpression) {
    EXPECT_EQ(run("SELECT Codice AS Nome FROM Clienti ORDER BY Nome DESC"), "C3\nc2\nC1");
    EXPECT_EQ(run("SELECT Codice FROM Clienti ORDER BY len(isnull(Nome, '')), Codice"),
              "C3\nc2\nC1");
    EXPECT_EQ(run("SELECT lower(Codice) FROM Clienti ORDER BY 1 DESC"), "c3\nc2\nc1");
    EXPECT_EQ(run("SELECT Nome FROM Clienti ORDER BY Nome"), "NULL\nÈlia\nRossi");
    EXPECT_EQ(error("SELECT Codice FROM Clienti ORDER BY 2"),
              "108: The ORDER BY position number 2 is out of range of the number of items in the "
              "select list.");
    EXPECT_EQ(error("SELECT Codice FROM Clienti ORDER BY 'a'"),
              "408: A constant expression was encountered in the ORDER BY list, position 1.");
    EXPECT_EQ(
        error("SELECT DISTINCT Codice FROM Clienti ORDER BY Nome"),
        "145: ORDER BY items must appear in the select list if SELECT DISTINCT is specified.");
    EXPECT_EQ(error("SELECT Note FROM Righe ORDER BY Note").substr(0, 4), "306:");
}

TEST_F(TranslateSelect, DropsRepeatedRowsIgnoringCase) {
    EXPECT_EQ(run("SELECT DISTINCT upper(Cliente) FROM Righe ORDER BY 1"), "C1\nC2\nX");
    EXPECT_EQ(run("SELECT count(*) FROM (SELECT DISTINCT Cliente FROM Righe) AS d"), "3");
}

TEST_F(TranslateSelect, UnitesQueriesInACommonType) {
    EXPECT_EQ(run("SELECT '°°°' as Tipo, Id AS Numero FROM Righe WHERE Id = 1 UNION SELECT Codice, "
                  "7 FROM Clienti "
                  "WHERE Codice = 'C1' ORDER BY Numero DESC"),
              "C1|7\n°°°|1");
    EXPECT_EQ(run("SELECT count(*) FROM (SELECT 'a' UNION SELECT 'A ' UNION ALL SELECT 'a') d (x)"),
              "2");
    EXPECT_EQ(run("SELECT 1 UNION SELECT 2.5 ORDER BY 1"), "1.0\n2.5");
    EXPECT_EQ(database_.columns("SELECT 1 AS a UNION SELECT 2.5"), "a numeric(11,1) notnull");
    EXPECT_EQ(run("SELECT NULL UNION ALL SELECT 5"), "NULL\n5");
    EXPECT_EQ(run("SELECT TOP 1 Id FROM Righe UNION ALL SELECT 9"), "1\n9");
    EXPECT_EQ(error("SELECT 1 UNION SELECT 1, 2"),
              "205: All queries combined using a UNION, INTERSECT or EXCEPT operator must have an "
              "equal number of "
              "expressions in their target lists.");
    EXPECT_EQ(error("SELECT Codice FROM Clienti UNION SELECT 'x' ORDER BY Nome"),
              "104: ORDER BY items must appear in the select list if the statement contains a "
              "UNION, INTERSECT or "
              "EXCEPT operator.");
}

TEST_F(TranslateSelect, OrdersAUnionInBrackets) {
    EXPECT_EQ(run(" (  SELECT '0' as Ordina ,* FROM  Clienti  WHERE Codice='C3'  UNION  SELECT '1' "
                  "as Ordina ,* FROM  "
                  "Clienti  WHERE Codice='C1' and Nome IN ('Rossi','x') )  ORDER BY Ordina "),
              "0|C3|NULL|NULL|0x0000000000000003\n1|C1|Rossi|10.00|0x0000000000000001");
    EXPECT_EQ(run("(SELECT 1) UNION (SELECT 2 UNION ALL SELECT 2) ORDER BY 1 DESC"), "2\n1");
}

TEST_F(TranslateSelect, ReadsFromDerivedTables) {
    EXPECT_EQ(run("SELECT d.Tot * 2 FROM (SELECT Cliente, sum(Qta) AS Tot FROM Righe GROUP BY "
                  "Cliente) d WHERE "
                  "d.Cliente = 'C1'"),
              "10");
    EXPECT_EQ(run("SELECT x, y FROM (SELECT 1, 'a') AS d (x, y)"), "1|a");
    EXPECT_EQ(run("SELECT * FROM (SELECT TOP 1 Id FROM Righe ORDER BY Id DESC) d"), "4");
    EXPECT_EQ(error("SELECT * FROM (SELECT 1) d"),
              "8155: No column name was specified for column 1 of 'd'.");
    EXPECT_EQ(error("SELECT * FROM (SELECT 1 a, 2 A) d"),
              "8156: The column 'A' was specified multiple times for 'd'.");
    EXPECT_EQ(error("SELECT * FROM (SELECT 1, 2) d (x)"),
              "8158: 'd' has more columns than were specified in the column list.");
    EXPECT_EQ(error("SELECT * FROM (SELECT Id FROM Righe ORDER BY Id) d").substr(0, 5), "1033:");
}

TEST_F(TranslateSelect, ReadsSubqueries) {
    EXPECT_EQ(run("SELECT Codice, (SELECT count(*) FROM Righe WHERE Cliente = Codice) FROM Clienti "
                  "ORDER BY 1"),
              "C1|2\nc2|1\nC3|0");
    EXPECT_EQ(run("SELECT Codice FROM Clienti c WHERE EXISTS (SELECT * FROM Righe r WHERE "
                  "r.Cliente = c.Codice AND "
                  "Qta > 2)"),
              "C1");
    EXPECT_EQ(run("SELECT Codice FROM Clienti WHERE Codice NOT IN (SELECT Cliente FROM Righe) "
                  "ORDER BY 1"),
              "C3");
    EXPECT_EQ(run("SELECT Id FROM Righe WHERE Prezzo = (SELECT max(Prezzo) FROM Righe)"), "1");
    EXPECT_EQ(error("SELECT Id FROM Righe WHERE Id = (SELECT Id FROM Righe)"),
              "512: Subquery returned more than 1 value. This is not permitted when the subquery "
              "follows =, !=, <, "
              "<= , >, >= or when the subquery is used as an expression.");
}

TEST_F(TranslateSelect, RefusesUnknownAndAmbiguousNames) {
    EXPECT_EQ(error("SELECT * FROM Nulla"), "208: Invalid object name 'Nulla'.");
    EXPECT_EQ(error("SELECT * FROM altri.Clienti"), "208: Invalid object name 'altri.Clienti'.");
    EXPECT_EQ(error("SELECT Boh FROM Clienti"), "207: Invalid column name 'Boh'.");
    EXPECT_EQ(error("SELECT c.Boh FROM Clienti c"), "207: Invalid column name 'Boh'.");
    EXPECT_EQ(error("SELECT Clienti.Nome FROM Clienti c"),
              "4104: The multi-part identifier \"Clienti.Nome\" could not be bound.");
    EXPECT_EQ(error("SELECT Nome FROM Clienti a, Clienti b"), "209: Ambiguous column name 'Nome'.");
    EXPECT_EQ(error("SELECT 1 FROM Clienti, Clienti"),
              "1013: The objects \"Clienti\" and \"Clienti\" in the FROM clause have the same "
              "exposed names. Use "
              "correlation names to distinguish them.");
    EXPECT_EQ(error("SELECT 1 FROM Clienti a, Righe a"),
              "1011: The correlation name 'a' is specified multiple times in a FROM clause.");
    EXPECT_EQ(error("SELECT x.* FROM Clienti"),
              "107: The column prefix 'x' does not match with a table name or alias name used in "
              "the query.");
    EXPECT_EQ(error("SELECT *"), "263: Must specify table to select from.");
}

TEST_F(TranslateSelect, SelectsWithoutATable) {
    EXPECT_EQ(run("SELECT 1 AS A, 'b' WHERE 1 = 1"), "1|b");
    EXPECT_EQ(run("SELECT count(*)"), "1");
}

}  // namespace
}  // namespace kap::engine
