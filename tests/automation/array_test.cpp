#include <kaputil/automation/array.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::shown;

TEST(Array, HasTheBoundsThatItWasMadeWith) {
    Array array = Array::withBounds(-1, 1);
    EXPECT_EQ(array.lowerBound(), -1);
    EXPECT_EQ(array.upperBound(), 1);
    EXPECT_EQ(array.size(), 3U);
    EXPECT_EQ(shown(array.at(-1)), "Empty");
    array.put(1, u"x");
    EXPECT_EQ(shown(array.at(1)), "String x");
}

TEST(Array, RefusesAnUpperBoundBelowTheLower) {
    EXPECT_EQ(raisedBy([] { return Array::withBounds(1, 0); }), 9);
}

TEST(Array, RefusesIndexesOutsideItsBounds) {
    Array array = Array::withBounds(1, 2);
    EXPECT_EQ(raisedBy([&] { return array.at(0); }), 9);
    EXPECT_EQ(raisedBy([&] { return array.at(3); }), 9);
    EXPECT_EQ(raisedBy([&] { return array.put(3, 1), 0; }), 9);
    EXPECT_EQ(raisedBy([&] { return array.lowerBound(2); }), 9);
    EXPECT_EQ(raisedBy([&] { return array.at(std::array<std::int32_t, 2>{1, 1}); }), 9);
}

TEST(Array, VariesItsLeftmostIndexFastest) {
    Array array({{0, 2}, {1, 3}}, VarType::Variant);
    array.put(std::array<std::int32_t, 2>{1, 3}, 7);
    EXPECT_EQ(array.size(), 6U);
    EXPECT_EQ(array.upperBound(2), 3);
    EXPECT_EQ(shown(array.at(std::array<std::int32_t, 2>{1, 3})), "Long 7");
    EXPECT_EQ(shown(array.at(std::array<std::int32_t, 2>{0, 3})), "Empty");
}

TEST(Array, ConvertsWhatIsPutIntoATypedOne) {
    Array bytes = Array::ofBytes({1, 2, 3});
    bytes.put(0, u"255");
    EXPECT_EQ(shown(bytes.at(0)), "Byte 255");
    EXPECT_EQ(bytes.bytes(), (std::vector<std::uint8_t>{255, 2, 3}));
    EXPECT_EQ(raisedBy([&] { return bytes.put(0, 256), 0; }), 6);
    Array longs = Array::withBounds(0, 1, VarType::Long);
    longs.put(0, u"12");
    EXPECT_EQ(shown(longs.at(0)), "Long 12");
}

TEST(Array, HasBytesOnlyWhenItsElementsAreBytes) {
    EXPECT_EQ(raisedBy([] { return Array::ofVariants({1}).bytes().size(); }), 13);
}

TEST(Array, CountsFromZeroWhenMadeFromElements) {
    const Array array = Array::ofVariants({u"a", 2});
    EXPECT_EQ(array.lowerBound(), 0);
    EXPECT_EQ(array.upperBound(), 1);
    EXPECT_EQ(Array::ofVariants({}).upperBound(), -1);
}

}  // namespace
}  // namespace kap
