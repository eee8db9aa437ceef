#include <kaputil/automation/decimal.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace kap {
namespace {

constexpr const char* kLargest = "79228162514264337593543950335";

std::string parsed(const char* text) {
    const auto value = Decimal::parse(text);
    return value ? value->plainText() : "none";
}

struct TextCase {
    const char* given;
    const char* expected;
};

TEST(Decimal, ReadsAndPrintsPlainText) {
    const TextCase cases[] = {
        {"0", "0"},
        {"-0", "0"},
        {"12", "12"},
        {"-12.50", "-12.5"},
        {"007", "7"},
        {".5", "0.5"},
        {"5.", "5"},
        {"0.0001", "0.0001"},
        {"100.00", "100"},
        {kLargest, kLargest},
        {"-79228162514264337593543950335", "-79228162514264337593543950335"},
        {"0.0000000000000000000000000001", "0.0000000000000000000000000001"},
        {"7.9228162514264337593543950335", "7.9228162514264337593543950335"},
    };
    for (const TextCase& one : cases) {
        EXPECT_EQ(parsed(one.given), one.expected) << one.given;
    }
}

TEST(Decimal, RoundsDigitsThatDoNotFitHalfToEven) {
    const TextCase cases[] = {
        {"0.00000000000000000000000000005", "0"},
        {"0.00000000000000000000000000015", "0.0000000000000000000000000002"},
        {"0.000000000000000000000000000051", "0.0000000000000000000000000001"},
        {"7922816251426433759354395033.55", "7922816251426433759354395034"},
        {"1.23456789012345678901234567891", "1.2345678901234567890123456789"},
        {"79228162514264337593543950335.4", kLargest},
        {"7922816251426433759354395033.56", "7922816251426433759354395034"},
    };
    for (const TextCase& one : cases) {
        EXPECT_EQ(parsed(one.given), one.expected) << one.given;
    }
}

TEST(Decimal, RefusesWhatDoesNotFitAndWhatIsNoNumber) {
    for (const char* text : {"79228162514264337593543950336", "79228162514264337593543950335.5", "",
                             "-", ".", "1e5", "1.2.3", "+1", " 1", "abc"}) {
        EXPECT_EQ(parsed(text), "none") << text;
    }
}

TEST(Decimal, KeepsTheScaleThatItWasGiven) {
    EXPECT_EQ(Decimal(12345, 4).plainText(), "1.2345");
    EXPECT_EQ(Decimal(-5, 1).plainText(), "-0.5");
    EXPECT_EQ(Decimal(150, 2).scale(), 2);
    EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::min()).plainText(),
              "-9223372036854775808");
    EXPECT_EQ(Decimal::fromUnsigned(~std::uint64_t{0}).plainText(), "18446744073709551615");
}

TEST(Decimal, EqualsTheSameValueOfAnotherScale) {
    EXPECT_EQ(Decimal(10, 1), Decimal(1));
    EXPECT_EQ(Decimal(0, 5), Decimal());
    EXPECT_FALSE(Decimal(11, 1) == Decimal(1));
}

struct DoubleCase {
    double given;
    const char* expected;
};

TEST(Decimal, TakesFifteenDigitsOfADouble) {
    const DoubleCase cases[] = {
        {0.1, "0.1"},
        {-2.5, "-2.5"},
        {1.0 / 3.0, "0.333333333333333"},
        {123456789012345678.0, "123456789012346000"},
        {1e28, "10000000000000000000000000000"},
        {1e-10, "0.0000000001"},
        {1e-40, "0"},
    };
    for (const DoubleCase& one : cases) {
        const auto value = Decimal::fromDouble(one.given);
        ASSERT_TRUE(value) << one.given;
        EXPECT_EQ(value->plainText(), one.expected);
    }
}

TEST(Decimal, RefusesADoubleOutOfRange) {
    EXPECT_FALSE(Decimal::fromDouble(1e29));
    EXPECT_FALSE(Decimal::fromDouble(-7.93e28));
    EXPECT_FALSE(Decimal::fromDouble(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(Decimal::fromDouble(std::numeric_limits<double>::quiet_NaN()));
}

struct ScaleCase {
    const char* given;
    int scale;
    std::optional<std::int64_t> expected;
};

TEST(Decimal, ScalesHalfToEven) {
    const ScaleCase cases[] = {
        {"2.5", 0, 2},
        {"3.5", 0, 4},
        {"-2.5", 0, -2},
        {"2.51", 0, 3},
        {"2.4999", 0, 2},
        {"1.23455", 4, 12346},
        {"1.23445", 4, 12344},
        {"12", 4, 120000},
        {"0.00005", 4, 0},
        {"9223372036854775807", 0, std::numeric_limits<std::int64_t>::max()},
        {"-9223372036854775808", 0, std::numeric_limits<std::int64_t>::min()},
        {"9223372036854775808", 0, std::nullopt},
        {"922337203685477.5808", 4, std::nullopt},
        {kLargest, 4, std::nullopt},
    };
    for (const ScaleCase& one : cases) {
        EXPECT_EQ(Decimal::parse(one.given)->scaledTo(one.scale), one.expected) << one.given;
    }
}

}  // namespace
}  // namespace kap
