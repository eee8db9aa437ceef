#include "engine/sqlite/statement_pool.hpp"

#include <gtest/gtest.h>

namespace kap::engine {
namespace {

TEST(StatementPool, KeepsStatementsByTheirText) {
    const Database database(":memory:", SQLITE_OPEN_READWRITE);
    StatementPool pool(database.handle());
    const auto first = pool.get("SELECT 1");
    EXPECT_EQ(pool.get("SELECT 1"), first);
    EXPECT_NE(pool.get("SELECT 2"), first);
}

TEST(StatementPool, GivesNobodyAStatementThatIsBeingRun) {
    const Database database(":memory:", SQLITE_OPEN_READWRITE);
    StatementPool pool(database.handle());
    const auto first = pool.get("SELECT 1 UNION ALL SELECT 2");
    ASSERT_TRUE(first->step());
    EXPECT_NE(pool.get("SELECT 1 UNION ALL SELECT 2"), first);
    first->reset();
    EXPECT_EQ(pool.get("SELECT 1 UNION ALL SELECT 2"), first);
}

}  // namespace
}  // namespace kap::engine
