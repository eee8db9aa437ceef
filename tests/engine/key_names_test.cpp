#include "engine/catalog/key_names.hpp"

#include <gtest/gtest.h>

namespace kap::engine {
namespace {

constexpr const char* kKeyedTable =
    "CREATE TABLE main.\"t\" (\"a\" \"int\" NOT NULL, \"b, c\" \"int\", \"d\" \"int\", "
    "CONSTRAINT \"PK of t\" PRIMARY KEY (\"a\", \"d\"), CONSTRAINT \"UQ_t_1\" UNIQUE (\"b, c\"))";

TEST(KeyNames, FindsTheKeyOverTheseColumns) {
    EXPECT_EQ(keyName(kKeyedTable, {"a", "d"}), "PK of t");
    EXPECT_EQ(keyName(kKeyedTable, {"b, c"}), "UQ_t_1");
}

TEST(KeyNames, ColumnsOfNoKeyHaveNone) {
    EXPECT_EQ(keyName(kKeyedTable, {"a"}), "");
    EXPECT_EQ(keyName(kKeyedTable, {"d", "a"}), "");
}

TEST(KeyNames, AKeyWithoutANameHasNone) {
    EXPECT_EQ(keyName("CREATE TABLE t (a PRIMARY KEY, UNIQUE (b))", {"b"}), "");
}

TEST(KeyNames, WordsThatTheDialectDoesNotKnowHaveNone) {
    EXPECT_EQ(keyName("CREATE TABLE t (a DEFAULT `x', CONSTRAINT k UNIQUE (a))", {"a"}), "");
    EXPECT_EQ(keyName("CREATE TABLE t (a, CONSTRAINT k UNIQUE (a", {"b"}), "");
    EXPECT_EQ(keyName("", {"a"}), "");
}

}  // namespace
}  // namespace kap::engine
