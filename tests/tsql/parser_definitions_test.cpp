#include <gtest/gtest.h>

#include "tree_text.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

using testing::parsed;

TEST(ParserDefinitions, ReadsEveryType) {
    EXPECT_EQ(
        parsed("CREATE TABLE t (a bit, b tinyint, c smallint, d int, e bigint, f decimal, g "
               "numeric(9,2), h money, i smallmoney, j float, k real, l date, m datetime, n "
               "smalldatetime, o char(5), p varchar(20), q nchar(6), r nvarchar(max), s text, "
               "u ntext, v binary(3), w varbinary(max), x image, y timestamp, z "
               "uniqueidentifier)"),
        "(create t (a bit) (b tinyint) (c smallint) (d int) (e bigint) (f decimal(18,0)) (g "
        "numeric(9,2)) (h money) (i smallmoney) (j float) (k real) (l date) (m datetime) (n "
        "smalldatetime) (o char(5)) (p varchar(20)) (q nchar(6)) (r nvarchar(max)) (s text) "
        "(u ntext) (v binary(3)) (w varbinary(max)) (x image) (y timestamp) (z "
        "uniqueidentifier))");
}

TEST(ParserDefinitions, AppliesTheDefaultsOfTypes) {
    EXPECT_EQ(parsed("CREATE TABLE t (a char, b varchar, c binary, d decimal(5), e float(24), f "
                     "float(25), g integer, h dec(4,1), i double precision, j rowversion)"),
              "(create t (a char(1)) (b varchar(1)) (c binary(1)) (d decimal(5,0)) (e real) (f "
              "float) (g int) (h decimal(4,1)) (i float) (j timestamp))");
}

TEST(ParserDefinitions, ReadsEveryColumnOption) {
    EXPECT_EQ(parsed("CREATE TABLE dbo.t (a int IDENTITY(1,1) NOT NULL PRIMARY KEY, b int NULL "
                     "DEFAULT 0, c varchar(3) CONSTRAINT df DEFAULT ('x') NOT NULL, d int IDENTITY "
                     "CONSTRAINT u UNIQUE NONCLUSTERED, e bigint IDENTITY(-5, -1))"),
              "(create dbo.t (a int notnull (identity 1 1)) (b int null (default 0)) (c varchar(3) "
              "notnull (default df 'x')) (d int (identity)) (e bigint (identity (- 5) (- 1))) "
              "(primary a) (unique u: d))");
}

TEST(ParserDefinitions, ReadsOptionsOfAColumnInAnyOrder) {
    EXPECT_EQ(parsed("CREATE TABLE u (a int REFERENCES t(a) NOT NULL)"),
              parsed("CREATE TABLE u (a int NOT NULL REFERENCES t(a))"));
    EXPECT_EQ(parsed("CREATE TABLE u (a int REFERENCES t(a) ON DELETE CASCADE NOT FOR REPLICATION "
                     "NOT NULL CHECK NOT FOR REPLICATION (a > 0) DEFAULT 1)"),
              parsed("CREATE TABLE u (a int DEFAULT 1 NOT NULL CHECK (a > 0) REFERENCES t(a) ON "
                     "DELETE CASCADE)"));
    EXPECT_EQ(parsed("CREATE TABLE u (a int CHECK (a > 0) NOT NULL UNIQUE DEFAULT 0)"),
              parsed("CREATE TABLE u (a int UNIQUE DEFAULT 0 NOT NULL CHECK (a > 0))"));
}

TEST(ParserDefinitions, ReadsWhereATableLies) {
    EXPECT_EQ(parsed("CREATE TABLE t (a int) WITH (DATA_COMPRESSION = PAGE)"),
              parsed("CREATE TABLE t (a int)"));
    EXPECT_EQ(parsed("CREATE TABLE t (a int) ON ps (a) TEXTIMAGE_ON [PRIMARY] WITH "
                     "(DATA_COMPRESSION = ROW ON PARTITIONS (1, 2), MEMORY_OPTIMIZED = ON)"),
              parsed("CREATE TABLE t (a int)"));
}

TEST(ParserDefinitions, ReadsTableKeys) {
    EXPECT_EQ(parsed("CREATE TABLE t (a int, b int, CONSTRAINT pk PRIMARY KEY CLUSTERED (a ASC, b "
                     "DESC) ON [PRIMARY], UNIQUE (b),) ON [PRIMARY]"),
              "(create t (a int) (b int) (primary pk: a b) (unique b))");
}

TEST(ParserDefinitions, LetsTimestampStandWithoutAName) {
    EXPECT_EQ(parsed("CREATE TABLE t (a int, timestamp)"),
              "(create t (a int) (timestamp timestamp))");
    EXPECT_EQ(parsed("CREATE TABLE t (timestamp NOT NULL, b int)"),
              "(create t (timestamp timestamp notnull) (b int))");
    EXPECT_EQ(parsed("CREATE TABLE t (timestamp int)"), "(create t (timestamp int))");
}

TEST(ParserDefinitions, ReadsDrops) {
    EXPECT_EQ(parsed("DROP TABLE a, dbo.b"), "(drop a dbo.b)");
    EXPECT_EQ(parsed("DROP TABLE IF EXISTS #c"), "(drop ifexists #c)");
}

TEST(ParserDefinitions, ReadsBackTheTextOfEveryType) {
    for (const char* text : {"bit", "decimal(18,4)", "varchar(20)", "nvarchar(max)", "timestamp",
                             "varbinary(max)", "float", "uniqueidentifier"}) {
        EXPECT_EQ(typeText(parseType(text)), text);
    }
}

struct Refusal {
    const char* column;
    int number;
    const char* message;
};

class RefusedColumn : public ::testing::TestWithParam<Refusal> {};

TEST_P(RefusedColumn, NamesWhatIsWrong) {
    try {
        (void)parseScript(std::string("CREATE TABLE t (") + GetParam().column + ")");
        FAIL() << "no error for " << GetParam().column;
    } catch (const ServerError& error) {
        EXPECT_EQ(error.number(), GetParam().number) << GetParam().column;
        EXPECT_EQ(error.message(), GetParam().message) << GetParam().column;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Parser, RefusedColumn,
    ::testing::Values(
        Refusal{"a", 102, "Incorrect syntax near ')'."},
        Refusal{"a varchar(8001)", 131,
                "The size (8001) given to the column 'a' exceeds the maximum allowed for any data "
                "type (8000)."},
        Refusal{"a nvarchar(4001)", 2717,
                "The size (4001) given to the column 'a' exceeds the maximum allowed (4000)."},
        Refusal{"a varchar(0)", 1001, "Length or precision specification 0 is invalid."},
        Refusal{"a decimal(39)", 2750,
                "Column, parameter, or variable #1: Specified column precision 39 is greater than "
                "the maximum precision of 38."},
        Refusal{"a decimal(4,5)", 183,
                "The scale (5) for column 'a' must be within the range 0 to 4."},
        Refusal{"a float(54)", 2750,
                "Column, parameter, or variable #1: Specified column precision 54 is greater than "
                "the maximum precision of 53."},
        Refusal{"x int, a int(4)", 2716,
                "Column, parameter, or variable #2: Cannot specify a column width on data type "
                "int."},
        Refusal{"a nonsense", 2715,
                "Column, parameter, or variable #1: Cannot find data type nonsense."},
        Refusal{"a int SPARSE", 40517,
                "Keyword or statement option 'SPARSE' is not supported in this version of the "
                "database."}));

}  // namespace
}  // namespace kap::tsql
