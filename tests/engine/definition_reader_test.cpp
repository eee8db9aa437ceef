#include "engine/catalog/definition_reader.hpp"

#include <gtest/gtest.h>

#include "engine/sqlite/definition_writer.hpp"

namespace kap::engine {
namespace {

std::string tableAgain(std::string_view text) {
    const auto table = readTable(text);
    return table ? sqlOf(*table) : "unreadable";
}

std::string constraintAgain(std::string_view text) {
    const auto constraint = readConstraint(text);
    return constraint ? sqlOf(*constraint) : "unreadable";
}

std::string indexAgain(std::string_view text) {
    const auto index = readIndex(text);
    return index ? sqlOf(*index) : "unreadable";
}

TEST(DefinitionReader, ReadsWhatTheWriterWrites) {
    for (const char* text :
         {"CREATE TABLE \"t\" (\"a\" \"int\" NOT NULL)",
          "CREATE TABLE \"my \"\"t\"\"\" (\"a]\" \"nvarchar(max)\" COLLATE KAP_CI NOT NULL "
          "CONSTRAINT \"DF\" DEFAULT ('x, (' /*='x, ('*/), \"b\" \"int\" DEFAULT (kap_now()))",
          "CREATE TABLE \"t\" (\"a\" \"int\", \"b\" \"int\" GENERATED ALWAYS AS (kap_add(\"a\", 1) "
          "/*=a + 1*/) VIRTUAL)",
          "CREATE TABLE \"t\" (\"a\" \"int\", CONSTRAINT \"k\" PRIMARY KEY (\"a\", \"b, c\" /*~ "
          "ignore_dup_key */), CONSTRAINT \"u\" UNIQUE (\"a\"), CONSTRAINT \"c\" CHECK ((\"a\" > "
          "0) "
          "/*=a > 0*/), CONSTRAINT \"f\" FOREIGN KEY (\"a\") REFERENCES \"p\" (\"x\", \"y\") ON "
          "DELETE SET NULL ON UPDATE CASCADE)",
          "CREATE TABLE \"t\" (\"row\" INTEGER PRIMARY KEY, \"v\")"}) {
        EXPECT_EQ(tableAgain(text), text);
    }
}

TEST(DefinitionReader, KnowsThePartsOfAColumn) {
    auto table = readTable(
        "CREATE TABLE t (a varchar(3) DEFAULT -5 NOT NULL, \"b\" \"money\" CONSTRAINT d DEFAULT "
        "(15000 /*=1.5*/), c AS (a || b))");
    ASSERT_TRUE(table);
    const sql::ColumnDefinition* a = findColumn(*table, "A");
    ASSERT_NE(a, nullptr);
    EXPECT_TRUE(a->notNull);
    EXPECT_EQ(a->defaultValue->value.value.as<sql::Definition>()->text, "-5");
    const sql::ColumnDefinition* b = findColumn(*table, "b");
    EXPECT_EQ(b->type, "money");
    EXPECT_EQ(b->defaultValue->name, "d");
    EXPECT_EQ(b->defaultValue->value.source, "1.5");
    EXPECT_TRUE(findColumn(*table, "c")->computed);
    EXPECT_EQ(findColumn(*table, "d"), nullptr);
}

TEST(DefinitionReader, KeepsWhatOnlySqliteKnows) {
    EXPECT_EQ(
        tableAgain("CREATE TABLE t(id INTEGER PRIMARY KEY AUTOINCREMENT, a varchar(3) DEFAULT "
                   "5 CHECK (a > 0) REFERENCES p(x) ON DELETE SET DEFAULT NOT DEFERRABLE NOT "
                   "NULL, b double precision UNIQUE ON CONFLICT IGNORE COLLATE nocase, c int "
                   "NOT NULL ON CONFLICT FAIL, d int GENERATED ALWAYS AS (a) STORED) STRICT"),
        "CREATE TABLE \"t\" (\"id\" INTEGER PRIMARY KEY AUTOINCREMENT, \"a\" varchar(3) CHECK "
        "(a > 0) REFERENCES p(x) ON DELETE SET DEFAULT NOT DEFERRABLE NOT NULL DEFAULT (5), "
        "\"b\" double precision UNIQUE ON CONFLICT IGNORE COLLATE nocase, \"c\" int NOT NULL "
        "ON CONFLICT FAIL, \"d\" int GENERATED ALWAYS AS (a) STORED) STRICT");
    EXPECT_EQ(constraintAgain("CONSTRAINT k UNIQUE (a DESC, b) ON CONFLICT REPLACE"),
              "CONSTRAINT \"k\" UNIQUE (a DESC, b) ON CONFLICT REPLACE");
    EXPECT_EQ(constraintAgain("FOREIGN KEY (a) REFERENCES p ON DELETE RESTRICT DEFERRABLE"),
              "FOREIGN KEY (\"a\") REFERENCES \"p\" ON DELETE NO ACTION ON UPDATE NO ACTION ON "
              "DELETE RESTRICT DEFERRABLE");
}

TEST(DefinitionReader, ADefaultThatIsANameIsAText) {
    EXPECT_EQ(
        tableAgain("CREATE TABLE t (a DEFAULT x, b DEFAULT \"y'\", c DEFAULT X'41', d DEFAULT "
                   "NULL, e DEFAULT CURRENT_TIMESTAMP)"),
        "CREATE TABLE \"t\" (\"a\" DEFAULT ('x'), \"b\" DEFAULT ('y'''), \"c\" DEFAULT "
        "(X'41'), \"d\" DEFAULT (NULL), \"e\" DEFAULT (CURRENT_TIMESTAMP))");
}

TEST(DefinitionReader, ReadsIndexes) {
    for (const char* text :
         {"CREATE UNIQUE INDEX \"t.i\" ON \"t\" (\"a\", \"b\" DESC) /*~ ignore_dup_key include "
          "[c%2A] */",
          "CREATE INDEX \"t.i\" ON \"t\" (\"a\") WHERE (\"a\" > 0) /*=a > 0*/"}) {
        EXPECT_EQ(indexAgain(text), text);
    }
    const std::string nulls =
        "CREATE INDEX \"i\" ON \"t\" ((\"a\" IS NULL), (ifnull(\"a\", 0) COLLATE KAP_CI) DESC)";
    EXPECT_EQ(indexAgain("CREATE INDEX main.\"i\" ON t (\"a\" IS NULL, ifnull(\"a\", 0) COLLATE "
                         "KAP_CI DESC)"),
              nulls);
    EXPECT_EQ(indexAgain(nulls), nulls);
}

TEST(DefinitionReader, RefusesWhatItCannotRead) {
    for (const char* text : {"", "CREATE", "CREATE VIEW v AS SELECT 1", "CREATE TABLE t",
                             "CREATE TABLE t (a", "CREATE TABLE t (a DEFAULT `x`)",
                             "CREATE VIRTUAL TABLE t USING fts5(a)", "CREATE TABLE t (a,, b)"}) {
        EXPECT_EQ(tableAgain(text), "unreadable") << text;
        EXPECT_EQ(indexAgain(text), "unreadable") << text;
    }
    EXPECT_EQ(constraintAgain("a int"), "unreadable");
    EXPECT_EQ(constraintAgain(""), "unreadable");
}

}  // namespace
}  // namespace kap::engine
