#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <kaputil/automation/by_ref.hpp>

#include "automation/class_builder.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::callNamed;
using test::invoke;
using test::raisedBy;
using test::shown;

enum class Colour : std::int32_t { Red = 1, Green = 2 };

// A shelf of numbered items: its default member takes an argument.
class Shelf final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription kDescription =
            ClassBuilder<Shelf>(u"Shelf", u"1", u"2")
                .property<&Shelf::item>(u"Item", {Parameter(u"Index")})
                .build(u"Item");
        return kDescription;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }
    [[nodiscard]] std::int32_t item(std::int32_t index) const { return index * 10; }
};

// A client's own object, which no table describes.
class Undescribed final : public Object {
public:
    [[nodiscard]] String className() const override { return u"Undescribed"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return std::nullopt;
    }
    using Object::invoke;
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override { return {}; }
};

// One member of each shape that a class may have.
class Sample final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription kDescription =
            ClassBuilder<Sample>(u"Sample", u"3", u"4")
                .method<&Sample::join>(u"Join", {u"First", Parameter(u"Second").otherwise(u"!")})
                .method<&Sample::advance>(u"Advance", {u"Counter", Parameter(u"Step").otherwise(1)})
                .method<&Sample::fill>(u"Fill", {u"Target"})
                .method<&Sample::optionalOut>(u"OptionalOut",
                                              {Parameter(u"Target").otherwise(std::int16_t{-1})})
                .method<&Sample::swap>(u"Swap", {u"Shelf", u"Other"})
                .property<&Sample::value, &Sample::setValue>(u"Value")
                .property<&Sample::shelf, &Sample::setShelf>(u"Shelf")
                .property<&Sample::colour, &Sample::setColour>(u"Colour")
                .property<&Sample::constant>(u"Constant")
                .build(u"Value");
        return kDescription;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String join(const String& first, const String& second) const {
        return first + second;
    }
    bool advance(ByRef<std::int16_t> counter, std::int32_t step) {
        *counter = static_cast<std::int16_t>(*counter + step);
        return true;
    }
    void fill(ByRef<Variant> target) { *target = u"filled"; }
    [[nodiscard]] std::int16_t optionalOut(ByRef<std::int16_t> target) {
        const std::int16_t given = *target;
        *target = 7;
        return given;
    }
    void swap(ByRef<Ref<Shelf>> shelf, const Ref<Object>& /*other*/) { std::swap(shelf_, *shelf); }
    [[nodiscard]] Variant value() const { return value_; }
    void setValue(const Variant& value) { value_ = value; }
    [[nodiscard]] Ref<Shelf> shelf() const { return shelf_; }
    void setShelf(const Ref<Shelf>& shelf) { shelf_ = shelf; }
    [[nodiscard]] Colour colour() const { return colour_; }
    void setColour(Colour colour) { colour_ = colour; }
    [[nodiscard]] std::int32_t constant() const { return 42; }

private:
    Variant value_ = 5;
    Ref<Shelf> shelf_ = make<Shelf>();
    Colour colour_ = Colour::Red;
};

TEST(Dispatch, CoercesArgumentsAndFillsInDefaults) {
    const auto sample = make<Sample>();
    EXPECT_EQ(shown(call(*sample, u"join", {1, 2})), "String 12");
    EXPECT_EQ(shown(call(*sample, u"JOIN", {u"a"})), "String a!");
    EXPECT_EQ(shown(call(*sample, u"Join", {u"a", Variant::missing()})), "String a!");
}

TEST(Dispatch, PlacesNamedArgumentsIgnoringCase) {
    const auto sample = make<Sample>();
    EXPECT_EQ(shown(callNamed(*sample, u"Join", {{u"SECOND", u"b"}, {u"first", u"a"}})),
              "String ab");
    EXPECT_EQ(raisedBy([&] { return callNamed(*sample, u"Join", {{u"Second", u"b"}}); }), 449);
    EXPECT_EQ(raisedBy([&] { return callNamed(*sample, u"Join", {{u"Third", u"b"}}); }), 448);
}

TEST(Dispatch, MixesPositionalAndNamedArguments) {
    const auto sample = make<Sample>();
    std::vector<Variant> positional = {u"a"};
    Variant second = u"b";
    const Arguments::Named named[] = {{u"Second", &second}};
    EXPECT_EQ(shown(sample->invoke(u"Join", InvokeKind::Method, Arguments{positional, named})),
              "String ab");
    const Arguments::Named twice[] = {{u"First", &second}};
    EXPECT_EQ(raisedBy([&] {
                  return sample->invoke(u"Join", InvokeKind::Method, Arguments{positional, twice});
              }),
              450);
}

TEST(Dispatch, WritesByReferenceArgumentsBack) {
    const auto sample = make<Sample>();
    std::vector<Variant> arguments = {u"3", 2};
    EXPECT_EQ(shown(sample->invoke(u"Advance", InvokeKind::Method, Arguments{arguments, {}})),
              "Boolean " + convert::toString(true).utf8());
    EXPECT_EQ(shown(arguments[0]), "Integer 5");
    EXPECT_EQ(shown(arguments[1]), "Long 2");
    Variant counter = std::int16_t{1};
    const Arguments::Named named[] = {{u"Counter", &counter}};
    sample->invoke(u"Advance", InvokeKind::Method, Arguments{{}, named});
    EXPECT_EQ(shown(counter), "Integer 2");
}

TEST(Dispatch, LetsAMemberFillTheCallersVariable) {
    const auto sample = make<Sample>();
    std::vector<Variant> arguments(1);
    sample->invoke(u"Fill", InvokeKind::Method, Arguments{arguments, {}});
    EXPECT_EQ(shown(arguments[0]), "String filled");
}

TEST(Dispatch, PassesADefaultByReferenceThatGoesNowhere) {
    const auto sample = make<Sample>();
    EXPECT_EQ(shown(call(*sample, u"OptionalOut")), "Integer -1");
    EXPECT_EQ(shown(call(*sample, u"OptionalOut")), "Integer -1");
}

TEST(Dispatch, LeavesByReferenceArgumentsAloneWhenTheyDoNotConvert) {
    const auto sample = make<Sample>();
    std::vector<Variant> arguments = {u"tre"};
    EXPECT_EQ(raisedBy([&] {
                  return sample->invoke(u"Advance", InvokeKind::Method, Arguments{arguments, {}});
              }),
              13);
    EXPECT_EQ(shown(arguments[0]), "String tre");
}

TEST(Dispatch, ReadsAndAssignsProperties) {
    const auto sample = make<Sample>();
    invoke(*sample, u"Value", InvokeKind::Let, {u"x"});
    EXPECT_EQ(shown(invoke(*sample, u"value", InvokeKind::Get)), "String x");
    invoke(*sample, u"Value", InvokeKind::LetOrSet, {2});
    EXPECT_EQ(shown(invoke(*sample, u"value", InvokeKind::MethodOrGet)), "Long 2");
    invoke(*sample, u"Colour", InvokeKind::Let, {u"2"});
    EXPECT_EQ(shown(invoke(*sample, u"Colour", InvokeKind::Get)), "Long 2");
}

TEST(Dispatch, AssignsObjectsOfTheClassOnly) {
    const auto sample = make<Sample>();
    const auto other = make<Shelf>();
    invoke(*sample, u"Shelf", InvokeKind::Set, {other});
    EXPECT_EQ(sample->shelf(), other);
    EXPECT_EQ(
        raisedBy([&] { return invoke(*sample, u"Shelf", InvokeKind::Set, {make<Sample>()}); }), 13);
    EXPECT_EQ(raisedBy([&] { return invoke(*sample, u"Shelf", InvokeKind::Set, {1}); }), 13);
    invoke(*sample, u"Shelf", InvokeKind::Set, {Ref<Object>()});
    EXPECT_FALSE(sample->shelf());
}

TEST(Dispatch, RefusesWhatAMemberIsNot) {
    const auto sample = make<Sample>();
    EXPECT_EQ(raisedBy([&] { return invoke(*sample, u"Constant", InvokeKind::Let, {1}); }), 438);
    EXPECT_EQ(raisedBy([&] { return invoke(*sample, u"Shelf", InvokeKind::Let, {1}); }), 438);
    EXPECT_EQ(raisedBy([&] { return invoke(*sample, u"Join", InvokeKind::Get, {u"a"}); }), 438);
    EXPECT_EQ(raisedBy([&] { return invoke(*sample, u"Nothing", InvokeKind::Get); }), 438);
    EXPECT_EQ(raisedBy([&] { return invoke(*sample, u"Value", InvokeKind::Let); }), 449);
    EXPECT_EQ(raisedBy([&] { return call(*sample, u"Join", {1, 2, 3}); }), 450);
    EXPECT_EQ(raisedBy([&] { return call(*sample, u"Join"); }), 449);
}

TEST(Dispatch, HandsArgumentsOnToTheDefaultMemberOfAResult) {
    const auto sample = make<Sample>();
    EXPECT_EQ(shown(call(*sample, u"Shelf", {3})), "Long 30");
    EXPECT_EQ(raisedBy([&] { return call(*sample, u"Constant", {3}); }), 450);
    sample->setShelf({});
    EXPECT_EQ(raisedBy([&] { return call(*sample, u"Shelf", {3}); }), 91);
}

TEST(Dispatch, ConvertsAnObjectThroughItsDefaultMember) {
    const auto inner = make<Sample>();
    const auto outer = make<Sample>();
    outer->setValue(inner);
    EXPECT_EQ(convert::toLong(outer), 5);
    EXPECT_EQ(convert::toString(outer), u"5");
    EXPECT_TRUE(convert::isNumeric(outer));
    EXPECT_EQ(shown(convert::plainValue(outer)), "Long 5");
    inner->setValue(Variant::null());
    EXPECT_EQ(raisedBy([&] { return convert::toLong(outer); }), 94);
    inner->setValue(Ref<Object>());
    EXPECT_EQ(raisedBy([&] { return convert::toLong(outer); }), 91);
}

TEST(Dispatch, HasNoValueInAnObjectWhoseDefaultMemberNeedsArguments) {
    const auto shelf = make<Shelf>();
    EXPECT_EQ(raisedBy([&] { return convert::toString(shelf); }), 13);
}

TEST(Dispatch, NumbersMembersByKindAndTheDefaultMemberZero) {
    const auto sample = make<Sample>();
    EXPECT_EQ(sample->memberId(u"Join"), 0x60030000);
    EXPECT_EQ(sample->memberId(u"Advance"), 0x60030001);
    EXPECT_EQ(sample->memberId(u"value"), 0);
    EXPECT_EQ(sample->memberId(u"Shelf"), 0x68030001);
    EXPECT_EQ(sample->memberId(u"Missing"), std::nullopt);
}

TEST(Dispatch, DescribesParametersFromTheSignature) {
    const MemberDescription* advance = Sample::classDescription().find(u"advance");
    ASSERT_NE(advance, nullptr);
    ASSERT_EQ(advance->parameters.size(), 2U);
    EXPECT_EQ(advance->parameters[0].type, VarType::Integer);
    EXPECT_TRUE(advance->parameters[0].byReference);
    EXPECT_FALSE(advance->parameters[0].defaultValue);
    EXPECT_EQ(advance->parameters[1].type, VarType::Long);
    EXPECT_FALSE(advance->parameters[1].byReference);
    EXPECT_EQ(shown(*advance->parameters[1].defaultValue), "Long 1");
    EXPECT_EQ(advance->result, VarType::Boolean);
    EXPECT_EQ(Sample::classDescription().find(u"Fill")->result, VarType::Empty);
}

TEST(Dispatch, DescribesTheClassesOfObjects) {
    const MemberDescription* shelf = Sample::classDescription().find(u"Shelf");
    ASSERT_NE(shelf->resultClass, nullptr);
    EXPECT_EQ(&shelf->resultClass(), &Shelf::classDescription());
    EXPECT_EQ(Sample::classDescription().find(u"Join")->resultClass, nullptr);
    const MemberDescription* swap = Sample::classDescription().find(u"Swap");
    ASSERT_EQ(swap->parameters.size(), 2U);
    ASSERT_NE(swap->parameters[0].objectClass, nullptr);
    EXPECT_EQ(&swap->parameters[0].objectClass(), &Shelf::classDescription());
    EXPECT_EQ(swap->parameters[1].objectClass, nullptr);
}

TEST(Dispatch, TellsWhetherAnObjectIsDescribed) {
    const auto sample = make<Sample>();
    EXPECT_EQ(descriptionOf(*sample), &Sample::classDescription());
    EXPECT_EQ(descriptionOf(*make<Undescribed>()), nullptr);
}

TEST(Dispatch, TellsWhatACallMayBe) {
    EXPECT_TRUE(mayBe(InvokeKind::MethodOrGet, InvokeKind::Get));
    EXPECT_FALSE(mayBe(InvokeKind::Method, InvokeKind::Get));
    EXPECT_TRUE(mayBe(InvokeKind::Set, InvokeKind::LetOrSet));
}

TEST(Dispatch, RefusesAMemberWithMoreParametersThanACallCanCarry) {
    ClassDescription description;
    description.add(u"Most", MemberKind::Method).parameters.resize(15);
    EXPECT_NO_THROW(description.complete(u""));
    description.add(u"TooMany", MemberKind::Method).parameters.resize(16);
    EXPECT_THROW(description.complete(u""), std::logic_error);
}

TEST(ByRef, TakesAVariableOrAValue) {
    const auto sample = make<Sample>();
    std::int16_t counter = 1;
    sample->advance(counter, 2);
    EXPECT_EQ(counter, 3);
    EXPECT_TRUE(sample->advance(std::int16_t{1}, 2));
}

}  // namespace
}  // namespace kap
