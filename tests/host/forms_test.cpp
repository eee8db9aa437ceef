#include <gtest/gtest.h>

#include <kaputil/automation/collection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/host/property_bag.hpp>
#include <kaputil/host/services.hpp>

#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap::host {
namespace {

using test::raisedBy;
using test::shown;

Ref<PropertyBag> form(const Variant& top, const Variant& left = 0, const Variant& width = 0,
                      const Variant& height = 0, const Variant& tag = u"") {
    auto made = make<PropertyBag>(u"Form");
    made->put(u"Top", top);
    made->put(u"Left", left);
    made->put(u"Width", width);
    made->put(u"Height", height);
    made->put(u"Tag", tag);
    return made;
}

Ref<PropertyBag> textBox(const Variant& text) {
    auto made = make<PropertyBag>(u"TextBox", u"Text");
    made->put(u"Text", text);
    return made;
}

// "Left Top Width Height".
std::string place(const PropertyBag& bag) {
    std::string text;
    for (const char16_t* name : {u"Left", u"Top", u"Width", u"Height"}) {
        text += convert::toString(bag.get(name)).utf8() + " ";
    }
    return text;
}

TEST(FormTop, IsBelowTheBarsOfTheParent) {
    EXPECT_EQ(TrovaTop(form(1000), 100), 2030);
    EXPECT_EQ(TrovaTop(form(std::int16_t{-1000}), std::int16_t{70}), 0);
    EXPECT_EQ(TrovaTop(form(10.5F), 0), 940);  // half to even, like every conversion
}

TEST(FormTop, RaisesBeyondTheRangeOfAnInteger) {
    EXPECT_EQ(TrovaTop(form(std::int16_t{31837}), 0), 32767);
    EXPECT_EQ(raisedBy([] { return TrovaTop(form(std::int16_t{31838}), 0); }), errors::kOverflow);
}

TEST(FormTop, PassesOnTheErrorsOfWhatIsNoForm) {
    EXPECT_EQ(raisedBy([] { return TrovaTop(make<PropertyBag>(), 0); }), errors::kMemberNotFound);
    EXPECT_EQ(raisedBy([] { return TrovaTop(u"form", 0); }), errors::kObjectRequired);
    EXPECT_EQ(raisedBy([] { return TrovaTop(Ref<Object>(), 0); }), errors::kObjectNotSet);
}

TEST(FormPlace, FillsTheParentFromTheGivenTop) {
    const auto child = form(0);
    PosizionaForm(child, form(1000, 200, 9000, 6000), 100);
    EXPECT_EQ(place(*child), "260 100 8940 6900 ");
}

TEST(FormPlace, LeavesRoomForTheBarsOfAnExtendedParent) {
    const auto child = form(0);
    PosizionaForm(child, form(1000, 200, 9000, 6000, u"altro [MDIExtender] testo"), 100);
    EXPECT_EQ(place(*child), "260 1030 8940 6570 ");
}

TEST(FormPlace, ComparesTheTagExactly) {
    for (const Variant& tag :
         {Variant(u"[mdiextender]"), Variant(u"MDIExtender"), Variant::null(), Variant()}) {
        const auto child = form(0);
        PosizionaForm(child, form(0, 0, 0, 0, tag), 100);
        EXPECT_EQ(shown(child->get(u"Top")), "Integer 100");
    }
}

TEST(FormPlace, CountsTheHeightFromTheTopThatTheFormTook) {
    const auto child = form(0);
    child->onAssigned([&](const String& name) {
        if (name == String(u"Top")) {
            child->put(u"Top", 150);  // as a form may that rounds to its grid
        }
    });
    PosizionaForm(child, form(0, 0, 0, 1000), 100);
    EXPECT_EQ(shown(child->get(u"Height")), "Long 850");
    child->onAssigned({});
}

TEST(FormPlace, RaisesWhenTheTopOfAnExtendedParentIsBeyondTheRange) {
    const auto parent = form(0, 0, 0, 0, u"[MDIExtender]");
    const auto child = form(0);
    PosizionaForm(child, parent, 31837);
    EXPECT_EQ(shown(child->get(u"Top")), "Integer 32767");
    EXPECT_EQ(raisedBy([&] {
                  PosizionaForm(child, parent, 31838);
                  return 0;
              }),
              errors::kOverflow);
}

TEST(Repeat, PutsTheOtherFieldsValueInPlaceOfADot) {
    const auto target = textBox(u"  .  ");
    Ripeti(textBox(u"Rossi"), target);
    EXPECT_EQ(shown(target->get(u"Text")), "String Rossi");
}

TEST(Repeat, TakesAPlainValueToo) {
    const auto target = textBox(u".");
    Ripeti(12, target);
    EXPECT_EQ(shown(target->get(u"Text")), "Long 12");
}

TEST(Repeat, LeavesAnyOtherTextAlone) {
    for (const Variant& text : {Variant(u".."), Variant(u""), Variant(u"\t."), Variant::null()}) {
        const auto target = textBox(text);
        Ripeti(textBox(u"Rossi"), target);
        EXPECT_EQ(shown(target->get(u"Text")), shown(text));
    }
}

TEST(PropertyBagTest, IsReadAndAssignedByNameIgnoringCase) {
    const auto bag = form(5);
    EXPECT_EQ(shown(test::call(*bag, u"TOP")), "Long 5");
    test::invoke(*bag, u"top", InvokeKind::Let, {7});
    EXPECT_EQ(shown(bag->get(u"Top")), "Long 7");
    EXPECT_EQ(bag->className(), u"Form");
}

TEST(PropertyBagTest, MakesAPropertyByAssigningIt) {
    const auto bag = make<PropertyBag>();
    EXPECT_EQ(raisedBy([&] { return test::call(*bag, u"Nuova"); }), errors::kMemberNotFound);
    test::invoke(*bag, u"Nuova", InvokeKind::Let, {u"x"});
    test::invoke(*bag, u"Oggetto", InvokeKind::Set, {make<PropertyBag>()});
    EXPECT_EQ(shown(test::call(*bag, u"nuova")), "String x");
    EXPECT_EQ(shown(bag->get(u"Oggetto")), "Object");
    EXPECT_EQ(bag->memberId(u"OGGETTO"), 2);
    EXPECT_EQ(bag->memberId(u"Manca"), std::nullopt);
}

TEST(PropertyBagTest, StandsForItsDefaultProperty) {
    EXPECT_EQ(shown(textBox(u"Rossi")->defaultValue()), "String Rossi");
    EXPECT_EQ(raisedBy([] { return form(0)->defaultValue(); }), errors::kTypeMismatch);
}

TEST(PropertyBagTest, HandsArgumentsOnToTheObjectInAProperty) {
    const auto towns = make<Collection>();
    towns->Add(textBox(u"Bari"), u"BA");
    const auto bag = make<PropertyBag>();
    bag->put(u"Citta", towns);
    EXPECT_EQ(shown(test::call(*bag, u"Citta", {u"BA"}).as<Ref<Object>>()->defaultValue()),
              "String Bari");
    test::invoke(*bag, u"citta", InvokeKind::Let, {u"BA", u"Trani"});
    EXPECT_EQ(shown(towns->Item(1).as<Ref<Object>>()->defaultValue()), "String Trani");
    EXPECT_EQ(raisedBy([&] {
                  return test::invoke(*bag, u"Manca", InvokeKind::Let, {1, 2});
              }),
              errors::kMemberNotFound);
    EXPECT_EQ(bag->memberId(u"Manca"), std::nullopt);
}

TEST(PropertyBagTest, RefusesArgumentsOfAProperty) {
    const auto bag = form(0);
    EXPECT_EQ(raisedBy([&] { return test::call(*bag, u"Top", {1}); }),
              errors::kWrongNumberOfArguments);
    EXPECT_EQ(raisedBy([&] { return test::invoke(*bag, u"Top", InvokeKind::Let); }),
              errors::kWrongNumberOfArguments);
}

}  // namespace
}  // namespace kap::host
