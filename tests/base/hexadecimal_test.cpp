#include "base/hexadecimal.hpp"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace kap::hex {
namespace {

TEST(Hexadecimal, GivesTwoDigitsForEachByte) {
    EXPECT_EQ("", ofBytes(std::string_view()));
    EXPECT_EQ("00FF0A", ofBytes(std::string_view("\0\xFF\n", 3)));
    EXPECT_EQ("7f", ofBytes(std::array<std::uint8_t, 1>{0x7F}, Case::Lower));
}

TEST(Hexadecimal, PadsNumbersButNeverCutsThem) {
    EXPECT_EQ("0", ofNumber(0, Case::Lower));
    EXPECT_EQ("", ofNumber(0, Case::Lower, 0));
    EXPECT_EQ("00ab", ofNumber(0xAB, Case::Lower, 4));
    EXPECT_EQ("12345", ofNumber(0x12345, Case::Upper, 4));
    EXPECT_EQ("FFFFFFFFFFFFFFFF", ofNumber(std::numeric_limits<std::uint64_t>::max(), Case::Upper));
}

TEST(Hexadecimal, ReadsDigitsOfEitherCaseAndNothingElse) {
    for (std::uint64_t value = 0; value < 16; ++value) {
        for (const Case letters : {Case::Lower, Case::Upper}) {
            EXPECT_EQ(static_cast<int>(value),
                      valueOf(static_cast<unsigned char>(digit(value, letters))));
        }
    }
    for (const char32_t other : {U'/', U':', U'@', U'G', U'`', U'g', U'\0', U'\u0661'}) {
        EXPECT_EQ(-1, valueOf(other));
    }
}

}  // namespace
}  // namespace kap::hex
