#include "platform/loaded_library.hpp"

#include <gtest/gtest.h>

#include <cstddef>

#include <kaputil/automation/error.hpp>

namespace kap::platform {
namespace {

using LengthOfText = std::size_t(const char*);

constexpr LoadedLibrary kStandard("libc.so.6");
constexpr LoadedLibrary kMissing("libkaputil_of_nobody.so.9");

TEST(LoadedLibrary, IsThereOrNot) {
    EXPECT_TRUE(kStandard.isThere());
    EXPECT_FALSE(kMissing.isThere());
}

TEST(LoadedLibrary, GivesFunctionsThatAreCalledLikeTheirOwn) {
    static constinit const LoadedFunction<LengthOfText> length(kStandard, "strlen");
    EXPECT_EQ(length("conto"), 5U);
    LengthOfText* const same = length;
    EXPECT_EQ(same("riga"), 4U);
}

std::int32_t errorOf(const LoadedLibrary& library, const char* name) {
    try {
        static_cast<void>(library.find(name));
    } catch (const AutomationError& error) {
        EXPECT_FALSE(error.description().view().empty());
        return error.number();
    }
    return 0;
}

TEST(LoadedLibrary, SaysWhatIsMissing) {
    EXPECT_EQ(errorOf(kMissing, "strlen"), errors::kCannotCreateObject);
    EXPECT_EQ(errorOf(kStandard, "no_function_of_this_name"), errors::kCannotCreateObject);
}

}  // namespace
}  // namespace kap::platform
