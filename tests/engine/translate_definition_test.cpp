#include <gtest/gtest.h>

#include "translated_database.hpp"

namespace kap::engine {
namespace {

TEST(TranslateDefinition, WritesEveryTypeAsTheDialectSpellsIt) {
    testing::TranslatedDatabase database;
    const std::string types =
        "a bit, b tinyint, c smallint, d int, e bigint, f decimal(18,4), g numeric(9,2), h money, "
        "i smallmoney, j "
        "float, k real, l date, m datetime, n smalldatetime, o char(5), p varchar(20), q nchar(6), "
        "r nvarchar(max), s "
        "text, u ntext, v binary(3), w varbinary(max), x image, y timestamp, z uniqueidentifier";
    const auto created = database.planOf<CreateTablePlan>("CREATE TABLE t (" + types + ")");
    EXPECT_EQ(created.sql[0],
              "CREATE TABLE main.\"t\" (\"a\" \"bit\", \"b\" \"tinyint\", \"c\" \"smallint\", "
              "\"d\" \"int\", \"e\" "
              "\"bigint\", \"f\" \"decimal(18,4)\", \"g\" \"numeric(9,2)\", \"h\" \"money\", \"i\" "
              "\"smallmoney\", "
              "\"j\" \"float\", \"k\" \"real\", \"l\" \"date\", \"m\" \"datetime\", \"n\" "
              "\"smalldatetime\", \"o\" "
              "\"char(5)\" COLLATE KAP_CI, \"p\" \"varchar(20)\" COLLATE KAP_CI, \"q\" "
              "\"nchar(6)\" COLLATE KAP_CI, "
              "\"r\" \"nvarchar(max)\" COLLATE KAP_CI, \"s\" \"text\" COLLATE KAP_CI, \"u\" "
              "\"ntext\" COLLATE KAP_CI, "
              "\"v\" \"binary(3)\", \"w\" \"varbinary(max)\", \"x\" \"image\", \"y\" \"timestamp\" "
              "NOT NULL, \"z\" "
              "\"uniqueidentifier\")");
    database.run("CREATE TABLE t (" + types + ")");
    EXPECT_EQ(database.run("SELECT count(*) FROM t"), "0");
}

TEST(TranslateDefinition, StoresEveryTypeAndReadsItBack) {
    testing::TranslatedDatabase database;
    database.run(
        "CREATE TABLE t (a bit, b tinyint, e bigint, f decimal(18,4), h money, j float, k real, l "
        "date, m datetime, n "
        "smalldatetime, o char(5), q nchar(3), r nvarchar(max), v binary(3), w varbinary(9), z "
        "uniqueidentifier) "
        "INSERT t VALUES (1, 255, 9000000000000000000, 12345.6789, $-0.0001, 2, 0.1, '20240131', "
        "'20240131', "
        "'20240131 10:20:40', 'ab', N'è', 'long', 0x01, 0x0102, "
        "'6f9619ff-8b86-d011-b42d-00c04fc964ff')");
    EXPECT_EQ(database.run("SELECT * FROM t"),
              "1|255|9000000000000000000|12345.6789|-0.0001|2|0.1|2024-01-31|2024-01-31 "
              "00:00:00.000|2024-01-31 "
              "10:21:00.000|ab   |è  |long|0x010000|0x0102|6F9619FF-8B86-D011-B42D-00C04FC964FF");
    EXPECT_EQ(
        database.run(
            "SELECT count(*) FROM t WHERE m = '20240131' AND l = '2024-01-31' AND o = 'AB' AND f = "
            "12345.6789 AND k = cast(0.1 as real) AND v = 0x010000"),
        "1");
}

TEST(TranslateDefinition, DescribesTheTable) {
    testing::TranslatedDatabase database;
    const auto created = database.planOf<CreateTablePlan>(
        "CREATE TABLE dbo.Righe (Id int IDENTITY(5,-2) NOT NULL, Doc varchar(8), Riga smallint, "
        "Nota varchar(9) NULL "
        "DEFAULT 'x', CONSTRAINT PK_R PRIMARY KEY NONCLUSTERED (Doc, Riga), UNIQUE (Nota))");
    const TableDefinition& definition = created.created;
    EXPECT_EQ(definition.table.name, "Righe");
    EXPECT_EQ(definition.table.columns[0].identity, (Identity{5, -2}));
    EXPECT_EQ(definition.table.columns[1].keyOrdinal, 1);
    EXPECT_EQ(definition.table.columns[2].keyOrdinal, 2);
    EXPECT_FALSE(definition.table.columns[1].nullable);
    EXPECT_TRUE(definition.table.columns[3].nullable);
    EXPECT_EQ(definition.table.columns[3].defaultSql, "'x'");
    ASSERT_EQ(definition.keys.size(), 2U);
    EXPECT_EQ(definition.keys[0].name, "PK_R");
    EXPECT_TRUE(definition.keys[0].primary);
    EXPECT_EQ(definition.keys[1].name, "UQ_Righe_1");
}

TEST(TranslateDefinition, StoresDefaultsInStorageForm) {
    testing::TranslatedDatabase database;
    const auto columns = database
                             .planOf<CreateTablePlan>(
                                 "CREATE TABLE t (a money DEFAULT 1.5, b decimal(9,3) DEFAULT '2', "
                                 "c datetime DEFAULT "
                                 "'19000101', d char(3) DEFAULT 'a', e datetime DEFAULT "
                                 "(getdate()), f int DEFAULT NULL)")
                             .created.table.columns;
    EXPECT_EQ(columns[0].defaultSql, "15000");
    EXPECT_EQ(columns[1].defaultSql, "2000");
    EXPECT_EQ(columns[2].defaultSql, "2.0");
    EXPECT_EQ(columns[3].defaultSql, "'a  '");
    EXPECT_EQ(columns[4].defaultSql, "kap_now()");
    EXPECT_EQ(columns[5].defaultSql, "NULL");
}

TEST(TranslateDefinition, DropsTables) {
    testing::TranslatedDatabase database;
    database.run("CREATE TABLE a (x int) CREATE TABLE #b (x int) DROP TABLE A, #b");
    EXPECT_EQ(database.error("SELECT * FROM a"), "208: Invalid object name 'a'.");
    EXPECT_EQ(database.error("DROP TABLE a"),
              "3701: Cannot drop the table 'a', because it does not exist or you do not have "
              "permission.");
    EXPECT_EQ(database.error("DROP TABLE IF EXISTS a"), "no error: ");
}

TEST(TranslateDefinition, QuotesOddNames) {
    testing::TranslatedDatabase database;
    database.run(
        "CREATE TABLE [my \"table\"] ([a]]b] int, [order by] varchar(3), rowid int) INSERT [my "
        "\"table\"] "
        "VALUES (1, 'x', 9) UPDATE u SET rowid = 8 FROM [my \"table\"] u");
    EXPECT_EQ(database.run("SELECT [a]]b], [order by], rowid FROM [my \"table\"]"), "1|x|8");
}

struct DefinitionRefusal {
    const char* columns;
    const char* error;
};

class RefusedDefinition : public ::testing::TestWithParam<DefinitionRefusal> {};

TEST_P(RefusedDefinition, HasTheServersNumberAndText) {
    testing::TranslatedDatabase database;
    database.run("CREATE TABLE Gia (x int)");
    EXPECT_EQ(database.error(std::string("CREATE TABLE ") + GetParam().columns), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedDefinition,
    ::testing::Values(
        DefinitionRefusal{"gia (x int)",
                          "2714: There is already an object named 'gia' in the database."},
        DefinitionRefusal{"sqlite_x (x int)",
                          "2714: There is already an object named 'sqlite_x' in the database."},
        DefinitionRefusal{
            "altri.t (x int)",
            "2760: The specified schema name \"altri\" either does not exist or you do not "
            "have permission to "
            "use it."},
        DefinitionRefusal{
            "t (a int, A int)",
            "2705: Column names in each table must be unique. Column name 'A' in table 't' is "
            "specified more "
            "than once."},
        DefinitionRefusal{"t (a int PRIMARY KEY, b int PRIMARY KEY)",
                          "8110: Cannot add multiple PRIMARY KEY constraints to table 't'."},
        DefinitionRefusal{
            "t (a int NULL PRIMARY KEY)",
            "8111: Cannot define PRIMARY KEY constraint on nullable column in table 't'."},
        DefinitionRefusal{"t (a int, PRIMARY KEY (b))",
                          "1911: Column name 'b' does not exist in the target table or view."},
        DefinitionRefusal{
            "t (a varchar(5) IDENTITY)",
            "2749: Identity column 'a' must be of data type int, bigint, smallint, tinyint, or "
            "decimal or "
            "numeric with a scale of 0, and constrained to be nonnullable."},
        DefinitionRefusal{
            "t (a int NULL IDENTITY)",
            "8147: Could not create IDENTITY attribute on nullable column 'a', table 't'."},
        DefinitionRefusal{
            "t (a int IDENTITY, b int IDENTITY)",
            "2744: Multiple identity columns specified for table 't'. Only one identity column "
            "per table is "
            "allowed."},
        DefinitionRefusal{"t (a int IDENTITY(1, 0))",
                          "2752: Identity column 'a' contains invalid SEED or INCREMENT."},
        DefinitionRefusal{
            "t (a int IDENTITY DEFAULT 5)",
            "1754: Defaults cannot be created on columns with an IDENTITY attribute. Table "
            "'t', column 'a'."},
        DefinitionRefusal{
            "t (a timestamp, b rowversion)",
            "2738: A table can only have one timestamp column. Because table 't' already has "
            "one, the column "
            "'b' cannot be added."},
        DefinitionRefusal{
            "t (a timestamp DEFAULT 0)",
            "1755: Defaults cannot be created on columns of data type timestamp. Table 't', "
            "column 'a'."},
        DefinitionRefusal{
            "t (a int DEFAULT b)",
            "128: The name \"b\" is not permitted in this context. Valid expressions are "
            "constants, constant "
            "expressions, and (in some contexts) variables. Column names are not permitted."},
        DefinitionRefusal{
            "t (a int DEFAULT (SELECT 1))",
            "1046: Subqueries are not allowed in this context. Only scalar expressions are "
            "allowed."},
        DefinitionRefusal{
            "t (a int DEFAULT 'x')",
            "245: Conversion failed when converting the varchar value 'x' to data type int."}));

}  // namespace
}  // namespace kap::engine
