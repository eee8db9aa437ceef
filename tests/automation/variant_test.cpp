#include <kaputil/automation/variant.hpp>

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include <kaputil/automation/array.hpp>

#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;

TEST(Variant, IsEmptyWhenNew) {
    EXPECT_TRUE(Variant().isEmpty());
    EXPECT_EQ(Variant().type(), VarType::Empty);
}

TEST(Variant, HasTheTypeOfWhatItWasMadeFrom) {
    const std::pair<Variant, VarType> cases[] = {
        {Variant::null(), VarType::Null},
        {Variant::missing(), VarType::Error},
        {true, VarType::Boolean},
        {std::uint8_t{1}, VarType::Byte},
        {std::int16_t{1}, VarType::Integer},
        {1, VarType::Long},
        {1.0F, VarType::Single},
        {1.0, VarType::Double},
        {Currency{1}, VarType::Currency},
        {Date{1}, VarType::Date},
        {Decimal(1), VarType::Decimal},
        {String(u"x"), VarType::String},
        {u"x", VarType::String},
        {"x", VarType::String},
        {Array::ofVariants({}), VarType::Array},
        {Ref<Object>(), VarType::Object},
    };
    for (const auto& [value, type] : cases) {
        EXPECT_EQ(typeName(value.type()), typeName(type));
    }
}

TEST(Variant, IsSmallAndMovesWithoutThrowing) {
    EXPECT_LE(sizeof(Variant), 24U);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<Variant>);
}

TEST(Variant, IsNotMadeFromIntegersWithoutAnAutomationType) {
    EXPECT_FALSE((std::is_constructible_v<Variant, std::int64_t>));
    EXPECT_FALSE((std::is_constructible_v<Variant, std::uint32_t>));
    EXPECT_FALSE((std::is_constructible_v<Variant, int*>));
    EXPECT_TRUE((std::is_constructible_v<Variant, std::int32_t>));
}

TEST(Variant, SharesTextBetweenCopies) {
    const Variant first(u"un testo abbastanza lungo");
    const Variant second = first;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(&first.as<String>(), &second.as<String>());
}

TEST(Variant, KeepsItsValueWhenTheCopyIsAssigned) {
    Variant first(u"uno");
    const Variant second = first;
    first = u"due";
    EXPECT_EQ(second.as<String>(), u"uno");
    EXPECT_EQ(first.as<String>(), u"due");
}

TEST(Variant, GivesOnlyTheExactType) {
    EXPECT_EQ(Variant(7).as<std::int32_t>(), 7);
    EXPECT_EQ(raisedBy([] { return Variant(7).as<std::int16_t>(); }), 13);
    EXPECT_EQ(raisedBy([] { return Variant().as<String>(); }), 13);
}

TEST(Variant, GivesACopyOfWhatATemporaryHolds) {
    const String& text = Variant(u"un testo abbastanza lungo").as<String>();
    EXPECT_EQ(text, u"un testo abbastanza lungo");
}

}  // namespace
}  // namespace kap
