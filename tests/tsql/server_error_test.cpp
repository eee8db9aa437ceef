#include "tsql/server_error.hpp"

#include <gtest/gtest.h>

#include <string>

namespace kap::tsql {
namespace {

TEST(ServerErrors, ShortenAMessageThatQuotesALongText) {
    const std::string whole(2047, 'x');
    EXPECT_EQ(whole, ServerError(105, whole).message());
    EXPECT_EQ(std::string(2044, 'x') + "...", ServerError(105, whole + "x").message());
}

TEST(ServerErrors, ShortenBetweenCharacters) {
    std::string text;
    for (int i = 0; i < 2047; ++i) {
        text += "è";
    }
    EXPECT_EQ(text, ServerError(105, text).message());
    EXPECT_EQ(text.substr(0, 2 * 2044) + "...", ServerError(105, text + "è").message());
}

}  // namespace
}  // namespace kap::tsql
