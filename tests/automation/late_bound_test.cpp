// Calling members of objects whose class a program does not know.
#include <kaputil/automation/late_bound.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/collection.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

namespace kap {
namespace {

std::string listed(const std::vector<Variant>& values) {
    std::string all;
    for (const Variant& value : values) {
        all += convert::toString(value).utf8() + ";";
    }
    return all;
}

template <class Call>
std::int32_t lateErrorOf(Call call) {
    try {
        call();
    } catch (const AutomationError& error) {
        return error.number();
    }
    return 0;
}

TEST(LateBoundCalls, CallMethodsAndReadAndAssignProperties) {
    const Variant towns = make<Collection>();
    late::call(towns, u"add", {u"Bari", u"BA"});
    EXPECT_EQ(convert::toString(late::call(towns, u"Item", {u"ba"})), u"Bari");
    EXPECT_EQ(convert::toLong(late::get(towns, u"Count")), 1);
    EXPECT_EQ(lateErrorOf([&] { late::call(towns, u"Manca"); }), errors::kMemberNotFound);
    EXPECT_EQ(lateErrorOf([&] { late::let(towns, u"Manca", 1); }), errors::kMemberNotFound);
}

TEST(LateBoundCalls, RefuseWhatIsNoObject) {
    EXPECT_EQ(lateErrorOf([] { late::call(12, u"Count"); }), errors::kObjectRequired);
    EXPECT_EQ(lateErrorOf([] { late::call(Ref<Object>(), u"Count"); }), errors::kObjectNotSet);
    EXPECT_EQ(lateErrorOf([] { static_cast<void>(late::elements(u"Bari")); }),
              errors::kTypeMismatch);
    EXPECT_EQ(lateErrorOf([] { static_cast<void>(late::elements(Ref<Object>())); }),
              errors::kObjectNotSet);
}

TEST(LateBoundElements, AreThoseOfCollectionsAndOfArraysInTheirOrder) {
    const auto towns = make<Collection>();
    towns->Add(u"Bari");
    towns->Add(u"Milano");
    EXPECT_EQ(listed(late::elements(towns)), "Bari;Milano;");

    Array fromOne = Array::withBounds(1, 3);
    for (std::int32_t i = 1; i <= 3; ++i) {
        fromOne.put(i, i * 10);
    }
    EXPECT_EQ(listed(late::elements(fromOne)), "10;20;30;");
    EXPECT_EQ(listed(late::elements(Array::ofVariants({}))), "");
}

TEST(LateBoundElements, OfSeveralDimensionsRunTheLeftmostIndexFirst) {
    Array table({{0, 2}, {5, 3}}, VarType::Variant);
    for (std::int32_t row = 0; row < 2; ++row) {
        for (std::int32_t column = 5; column < 8; ++column) {
            table.put(std::array{row, column}, column * 10 + row);
        }
    }
    EXPECT_EQ(listed(late::elements(table)), "50;51;60;61;70;71;");
}

}  // namespace
}  // namespace kap
