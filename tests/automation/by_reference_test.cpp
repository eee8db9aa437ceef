// What late-bound members leave in the caller's variables.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include <kaputil/automation/by_ref.hpp>

#include "automation/class_builder.hpp"
#include "automation/same_value.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::shown;

// Members that assign their parameters, some of them, or none, and then end well or badly.
class Assigner final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription kDescription =
            ClassBuilder<Assigner>(u"Assigner", u"5", u"6")
                .method<&Assigner::leave>(u"Leave", {u"Text", u"Number", u"Truth", u"Any"})
                .method<&Assigner::leaveObject>(u"LeaveObject", {u"Thing"})
                .method<&Assigner::assignSame>(u"AssignSame", {u"Number"})
                .method<&Assigner::failAfterwards>(u"FailAfterwards",
                                                   {u"Number", u"Text", u"Other", u"Any"})
                .method<&Assigner::throwAfterwards>(u"ThrowAfterwards", {u"Number"})
                .property<&Assigner::text>(u"Value")
                .build(u"Value");
        return kDescription;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    std::int32_t leave(ByRef<String> text, ByRef<std::int16_t> number, ByRef<bool> truth,
                       ByRef<Variant> /*any*/) {
        return static_cast<std::int32_t>(text->size()) + *number + (*truth ? 100 : 0);
    }
    void leaveObject(ByRef<Ref<Object>> /*thing*/) {}
    void assignSame(ByRef<std::int16_t> number) { *number = 5; }
    std::int32_t failAfterwards(ByRef<std::int16_t> number, ByRef<String> text,
                                ByRef<String> /*other*/, ByRef<Variant> any) {
        *number = 3;
        *text += u"!";
        *any = u"assigned";
        throw AutomationError(errors::kInvalidArgument);
    }
    void throwAfterwards(ByRef<std::int16_t> number) {
        *number = 3;
        throw std::runtime_error("no error of automation");
    }
    [[nodiscard]] String text() const { return u"12"; }
};

Variant callWith(std::u16string_view member, std::vector<Variant>& arguments) {
    return make<Assigner>()->invoke(member, InvokeKind::Method, Arguments{arguments, {}});
}

TEST(ByReferenceCalls, LeaveTheTypesOfVariablesThatTheMemberDoesNotAssign) {
    std::vector<Variant> arguments = {5, u"7", 2.0, std::uint8_t{1}};
    EXPECT_EQ(shown(callWith(u"Leave", arguments)), "Long 108");
    EXPECT_EQ(shown(arguments[0]), "Long 5");
    EXPECT_EQ(shown(arguments[1]), "String 7");
    EXPECT_EQ(shown(arguments[2]), "Double 2");
    EXPECT_EQ(shown(arguments[3]), "Byte 1");
}

TEST(ByReferenceCalls, LeaveAnObjectThatStandsForItsValue) {
    const Variant object = make<Assigner>();
    std::vector<Variant> arguments = {object, object, object, object};
    EXPECT_EQ(shown(callWith(u"Leave", arguments)), "Long 114");
    for (const Variant& argument : arguments) {
        EXPECT_TRUE(isSameValue(argument, object));
    }
    std::vector<Variant> thing = {object};
    callWith(u"LeaveObject", thing);
    EXPECT_TRUE(isSameValue(thing[0], object));
}

TEST(ByReferenceCalls, LeaveNamedVariablesAloneToo) {
    Variant text = 5;
    Variant number = u"7";
    Variant other = false;
    Variant any;
    const Arguments::Named named[] = {
        {u"Any", &any}, {u"Number", &number}, {u"Text", &text}, {u"Truth", &other}};
    make<Assigner>()->invoke(u"Leave", InvokeKind::Method, Arguments{{}, named});
    EXPECT_EQ(shown(text), "Long 5");
    EXPECT_EQ(shown(number), "String 7");
    EXPECT_EQ(shown(any), "Empty");
}

TEST(ByReferenceCalls, KeepWhatTheMemberAssignedBeforeItRaised) {
    std::vector<Variant> arguments = {-1, 5, 6, Variant()};
    EXPECT_EQ(raisedBy([&] { return callWith(u"FailAfterwards", arguments); }), 5);
    EXPECT_EQ(shown(arguments[0]), "Integer 3");
    EXPECT_EQ(shown(arguments[1]), "String 5!");
    EXPECT_EQ(shown(arguments[2]), "Long 6");
    EXPECT_EQ(shown(arguments[3]), "String assigned");
}

TEST(ByReferenceCalls, KeepItWhateverWasThrown) {
    std::vector<Variant> arguments = {-1};
    EXPECT_THROW(callWith(u"ThrowAfterwards", arguments), std::runtime_error);
    EXPECT_EQ(shown(arguments[0]), "Integer 3");
}

TEST(ByReferenceCalls, GiveOneVariableForTwoParametersWhatWasAssigned) {
    Variant both = 1;
    Variant other = u"x";
    Variant any;
    const Arguments::Named named[] = {
        {u"Number", &both}, {u"Text", &other}, {u"Other", &other}, {u"Any", &any}};
    EXPECT_EQ(raisedBy([&] {
                  return make<Assigner>()->invoke(u"FailAfterwards", InvokeKind::Method,
                                                  Arguments{{}, named});
              }),
              5);
    EXPECT_EQ(shown(other), "String x!");
}

TEST(SameValue, HasTypeAndContentInCommon) {
    EXPECT_TRUE(isSameValue(Variant(5), Variant(5)));
    EXPECT_FALSE(isSameValue(Variant(5), Variant(std::int16_t{5})));
    EXPECT_TRUE(isSameValue(Variant(u"a"), Variant(u"a")));
    EXPECT_FALSE(isSameValue(Variant(u"a"), Variant(u"A")));
    EXPECT_TRUE(isSameValue(Variant(), Variant()));
    EXPECT_FALSE(isSameValue(Variant(), Variant::null()));
    EXPECT_FALSE(isSameValue(Variant(*Decimal::parse("1.0")), Variant(Decimal(1))));
    EXPECT_TRUE(isSameValue(Variant(Currency{5}), Variant(Currency{5})));
    EXPECT_FALSE(isSameValue(Variant(Date{1.5}), Variant(Date{2.5})));
}

TEST(SameValue, ComparesNumbersBitByBit) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(isSameValue(Variant(nan), Variant(nan)));
    EXPECT_FALSE(isSameValue(Variant(0.0), Variant(-0.0)));
    EXPECT_FALSE(isSameValue(Variant(0.0F), Variant(-0.0F)));
    EXPECT_FALSE(isSameValue(Variant(Date{0.0}), Variant(Date{-0.0})));
}

TEST(SameValue, OfArraysAndObjectsIsTheSharedOne) {
    const Variant array = Array::ofVariants({1, 2});
    EXPECT_TRUE(isSameValue(array, Variant(array)));
    EXPECT_FALSE(isSameValue(array, Variant(Array::ofVariants({1, 2}))));
    EXPECT_FALSE(isSameValue(Variant(make<Assigner>()), Variant(make<Assigner>())));
}

}  // namespace
}  // namespace kap
