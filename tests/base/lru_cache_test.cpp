#include "base/lru_cache.hpp"

#include <gtest/gtest.h>

namespace kap {
namespace {

TEST(LruCache, FindsWhatWasInserted) {
    LruCache<int> cache(2);
    cache.insert("a", 1);
    ASSERT_NE(cache.find("a"), nullptr);
    EXPECT_EQ(*cache.find("a"), 1);
    EXPECT_EQ(cache.find("b"), nullptr);
}

TEST(LruCache, DropsWhatWasNotUsedForLongest) {
    LruCache<int> cache(2);
    cache.insert("a", 1);
    cache.insert("b", 2);
    ASSERT_NE(cache.find("a"), nullptr);
    cache.insert("c", 3);
    EXPECT_NE(cache.find("a"), nullptr);
    EXPECT_EQ(cache.find("b"), nullptr);
    EXPECT_NE(cache.find("c"), nullptr);
    EXPECT_EQ(cache.size(), 2U);
}

TEST(LruCache, ShortTextsStayFindableWhenOthersCome) {
    LruCache<int> cache(100);
    for (int i = 0; i < 100; ++i) {
        cache.insert(std::to_string(i), i);
    }
    for (int i = 0; i < 100; ++i) {
        ASSERT_NE(cache.find(std::to_string(i)), nullptr) << i;
        EXPECT_EQ(*cache.find(std::to_string(i)), i);
    }
}

}  // namespace
}  // namespace kap
