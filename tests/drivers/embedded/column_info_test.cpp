#include "engine/executor/column_info.hpp"

#include <array>

#include <gtest/gtest.h>

#include "drivers/embedded/session_support.hpp"

namespace kap::ado::embedded {
namespace {

struct Expected {
    const char* column;
    int type;
    int size;
    int precision;
    int scale;
    bool fixed;
    bool isLong;
};

constexpr const char* kTable =
    "CREATE TABLE t (c_bit bit, c_tinyint tinyint, c_smallint smallint, c_int int, "
    "c_bigint bigint, c_decimal decimal(12,3), c_numeric numeric(5,0), c_money money, "
    "c_smallmoney smallmoney, c_float float, c_real real, c_date date, c_datetime datetime, "
    "c_smalldatetime smalldatetime, c_char char(5), c_varchar varchar(20), c_nchar nchar(7), "
    "c_nvarchar nvarchar(30), c_text text, c_ntext ntext, c_binary binary(6), "
    "c_varbinary varbinary(40), c_image image, c_varcharmax varchar(max), "
    "c_nvarcharmax nvarchar(max), c_varbinarymax varbinary(max), c_guid uniqueidentifier, "
    "c_version timestamp)";

constexpr auto kExpected = std::to_array<Expected>({
    {"c_bit", 11, 2, 255, 255, true, false},
    {"c_tinyint", 17, 1, 3, 255, true, false},
    {"c_smallint", 2, 2, 5, 255, true, false},
    {"c_int", 3, 4, 10, 255, true, false},
    {"c_bigint", 20, 8, 19, 255, true, false},
    {"c_decimal", 131, 19, 12, 3, true, false},
    {"c_numeric", 131, 19, 5, 0, true, false},
    {"c_money", 6, 8, 19, 255, true, false},
    {"c_smallmoney", 6, 8, 10, 255, true, false},
    {"c_float", 5, 8, 15, 255, true, false},
    {"c_real", 4, 4, 7, 255, true, false},
    {"c_date", 133, 6, 10, 255, true, false},
    {"c_datetime", 135, 16, 23, 3, true, false},
    {"c_smalldatetime", 135, 16, 16, 0, true, false},
    {"c_char", 129, 5, 255, 255, true, false},
    {"c_varchar", 200, 20, 255, 255, false, false},
    {"c_nchar", 130, 7, 255, 255, true, false},
    {"c_nvarchar", 202, 30, 255, 255, false, false},
    {"c_text", 201, 2147483647, 255, 255, false, true},
    {"c_ntext", 203, 1073741823, 255, 255, false, true},
    {"c_binary", 128, 6, 255, 255, true, false},
    {"c_varbinary", 204, 40, 255, 255, false, false},
    {"c_image", 205, 2147483647, 255, 255, false, true},
    {"c_varcharmax", 201, 2147483647, 255, 255, false, true},
    {"c_nvarcharmax", 203, 1073741823, 255, 255, false, true},
    {"c_varbinarymax", 205, 2147483647, 255, 255, false, true},
    {"c_guid", 72, 16, 255, 255, true, false},
    {"c_version", 128, 8, 255, 255, true, false},
});

TEST(ColumnInfo, DescribesEveryTypeAsTheServersProviderDoes) {
    const auto session = test::openSession(":memory:column-types");
    const Result result = session->execute(std::string(kTable) + "; SELECT * FROM t").back();
    ASSERT_EQ(result.columns.size(), kExpected.size());
    for (std::size_t i = 0; i < kExpected.size(); ++i) {
        const ColumnInfo& column = result.columns[i];
        const Expected& expected = kExpected.at(i);
        SCOPED_TRACE(expected.column);
        EXPECT_EQ(column.name, expected.column);
        EXPECT_EQ(static_cast<int>(column.type), expected.type);
        EXPECT_EQ(column.definedSize, expected.size);
        EXPECT_EQ(column.precision, expected.precision);
        EXPECT_EQ(column.numericScale, expected.scale);
        EXPECT_EQ(column.fixedLength, expected.fixed);
        EXPECT_EQ(column.isLong, expected.isLong);
        EXPECT_EQ(column.baseTable, "t");
        EXPECT_EQ(column.baseColumn, expected.column);
    }
}

TEST(ColumnInfo, MarksKeysIdentitiesAndRowVersions) {
    const auto session = test::openSession(":memory:column-marks");
    const Result result =
        session
            ->execute(
                "CREATE TABLE t (id int IDENTITY PRIMARY KEY, name varchar(10) NOT NULL, "
                "version timestamp); SELECT id, name, version, name + 'x' AS more FROM t")
            .back();
    EXPECT_TRUE(result.columns[0].key);
    EXPECT_TRUE(result.columns[0].identity);
    EXPECT_FALSE(result.columns[0].writable());
    EXPECT_FALSE(result.columns[1].key);
    EXPECT_FALSE(result.columns[1].nullable);
    EXPECT_TRUE(result.columns[1].writable());
    EXPECT_TRUE(result.columns[2].rowVersion);
    EXPECT_FALSE(result.columns[2].writable());
    EXPECT_EQ(result.columns[3].name, "more");
    EXPECT_EQ(result.columns[3].baseColumn, "");
    EXPECT_FALSE(result.columns[3].writable());
}

TEST(ColumnInfo, AKeyOfWhichAPartIsMissingIsNoKey) {
    const auto session = test::openSession(":memory:column-keys");
    (void)session->execute("CREATE TABLE t (a int, b int, c int, PRIMARY KEY (a, b))");
    const Result part = session->execute("SELECT a, c FROM t").back();
    EXPECT_FALSE(part.columns[0].key);
    const Result whole = session->execute("SELECT b, c, a FROM t").back();
    EXPECT_TRUE(whole.columns[0].key);
    EXPECT_FALSE(whole.columns[1].key);
    EXPECT_TRUE(whole.columns[2].key);
}

}  // namespace
}  // namespace kap::ado::embedded
