#include <kaputil/core/cproprieta.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/class_builder.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::shown;

// An object with a default member that gives the value it was made with.
class Holder final : public Object {
public:
    Holder(const char16_t* className, Variant value) : className_(className), value_(value) {}

    [[nodiscard]] String className() const override { return className_; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return kDefaultMember;
    }
    using Object::invoke;
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override { return value_; }

private:
    String className_;
    Variant value_;
};

Ref<CProprieta> bagOf(const char16_t* text) {
    auto bag = make<CProprieta>();
    bag->Scrivi(u"", text);
    return bag;
}

std::string whole(const Ref<CProprieta>& bag) {
    return bag->Leggi().as<String>().utf8();
}

TEST(CProprieta, IsEmptyWhenNew) {
    const auto bag = make<CProprieta>();
    EXPECT_EQ(bag->Count(), 0);
    EXPECT_EQ(shown(bag->Leggi()), "String ");
    EXPECT_EQ(shown(bag->Leggi(u"X")), "Null");
    EXPECT_EQ(bag->NomeProprieta(1), u"");
}

TEST(CProprieta, WritesPropertiesAsTaggedTextInOrderOfFirstWriting) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"Codice", 12);
    bag->Scrivi(u"descr", u"Abc");
    EXPECT_EQ(whole(bag), "<CODICE>12</CODICE><DESCR>Abc</DESCR>");
    EXPECT_EQ(bag->Count(), 2);
    EXPECT_EQ(bag->NomeProprieta(2), u"DESCR");
    EXPECT_EQ(shown(bag->Leggi(u"Descr")), "String Abc");
}

TEST(CProprieta, RewritesAPropertyWhateverTheCaseOfItsName) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"a", 1);
    bag->Scrivi(u"A", 2);
    EXPECT_EQ(whole(bag), "<A>2</A>");
}

TEST(CProprieta, UpperCasesAccentedNames) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"citt\u00E0", u"Forl\u00EC");
    EXPECT_EQ(bag->NomeProprieta(1), u"CITT\u00C0");
    EXPECT_EQ(shown(bag->Leggi(u"CITT\u00C0")), "String Forl\xC3\xAC");
}

TEST(CProprieta, KeepsThePlaceOfARewrittenProperty) {
    const auto bag = bagOf(u"<A>1</A><B>2</B><C>3</C>");
    bag->Scrivi(u"B", u"due");
    EXPECT_EQ(whole(bag), "<A>1</A><B>due</B><C>3</C>");
}

TEST(CProprieta, ReadsAnEmptyValueAsEmptyTextNotNull) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"A", u"");
    EXPECT_EQ(whole(bag), "<A></A>");
    EXPECT_EQ(shown(bag->Leggi(u"A")), "String ");
}

TEST(CProprieta, WritesNullAndEmptyAsEmptyText) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"N", Variant::null());
    bag->Scrivi(u"E", Variant());
    EXPECT_EQ(whole(bag), "<N></N><E></E>");
}

TEST(CProprieta, WritesTheTextOfOtherTypesUnderTheLocale) {
    const LocaleScope italian("it-IT");
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"D", 3.5);
    bag->Scrivi(u"B", true);
    bag->Scrivi(u"C", Currency{12345});
    EXPECT_EQ(whole(bag), "<D>3,5</D><B>Vero</B><C>1,2345</C>");
}

TEST(CProprieta, ReturnsTheWholeTextOnlyForDefaultInCapitals) {
    const auto bag = bagOf(u"<DEFAULT>d</DEFAULT>");
    EXPECT_EQ(shown(bag->Leggi()), "String <DEFAULT>d</DEFAULT>");
    EXPECT_EQ(shown(bag->Leggi(u"DEFAULT")), "String <DEFAULT>d</DEFAULT>");
    EXPECT_EQ(shown(bag->Leggi(u"default")), "String d");
    EXPECT_EQ(shown(bag->Leggi(std::int16_t{1})), "String d");
}

TEST(CProprieta, TakesANumberAsAPositionAndATextAsAName) {
    const auto bag = bagOf(u"<A>uno</A><B>due</B><2>tre</2>");
    EXPECT_EQ(shown(bag->Leggi(2)), "String due");
    EXPECT_EQ(shown(bag->Leggi(u"2")), "String tre");
}

TEST(CProprieta, RoundsAPositionHalfToEven) {
    const auto bag = bagOf(u"<A>uno</A><B>due</B><C>tre</C><D>quattro</D>");
    EXPECT_EQ(shown(bag->Leggi(2.5)), "String due");
    EXPECT_EQ(shown(bag->Leggi(3.5)), "String quattro");
    EXPECT_EQ(shown(bag->Leggi(Currency{14999})), "String uno");
}

TEST(CProprieta, ReadsNothingAtAPositionWithoutAName) {
    const auto bag = bagOf(u"<A>uno</A>");
    EXPECT_EQ(shown(bag->Leggi(0)), "Null");
    EXPECT_EQ(shown(bag->Leggi(Variant())), "Null");
    EXPECT_EQ(shown(bag->Leggi(true)), "Null");
}

TEST(CProprieta, TakesTheNameThatADatabaseFieldHolds) {
    const auto bag = bagOf(u"<COD>uno</COD><2>due</2>");
    EXPECT_EQ(shown(bag->Leggi(make<Holder>(u"Field", u"cod"))), "String uno");
    EXPECT_EQ(shown(bag->Leggi(make<Holder>(u"Field", 2))), "String due");
    EXPECT_EQ(shown(bag->Leggi(make<Holder>(u"Field", u"DEFAULT"))),
              "String <COD>uno</COD><2>due</2>");
    EXPECT_EQ(shown(bag->Leggi(make<Holder>(u"Field", Variant::null()))), "Null");
}

TEST(CProprieta, TakesAnyOtherObjectAsAPosition) {
    const auto bag = bagOf(u"<A>uno</A><B>due</B>");
    EXPECT_EQ(shown(bag->Leggi(make<Holder>(u"Counter", 2))), "String due");
    EXPECT_EQ(shown(bag->Leggi(make<Holder>(u"Counter", u"2"))), "String due");
}

TEST(CProprieta, WritesTheValueOfADatabaseFieldAndItsNullAsEmptyText) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"A", make<Holder>(u"Field", u"valore"));
    bag->Scrivi(u"B", make<Holder>(u"Field", Variant::null()));
    EXPECT_EQ(whole(bag), "<A>valore</A><B></B>");
}

TEST(CProprieta, FillsEveryEmptyOccurrenceWhenAPropertyIsRewritten) {
    const auto bag = bagOf(u"<A></A>x<A></A>");
    bag->Scrivi(u"A", 5);
    EXPECT_EQ(whole(bag), "<A>5</A>x<A>5</A>");
}

TEST(CProprieta, LeavesADuplicateThatHoldsAValue) {
    const auto bag = bagOf(u"<A>1</A><A>2</A><A></A>");
    bag->Scrivi(u"A", 5);
    EXPECT_EQ(whole(bag), "<A>5</A><A>2</A><A>5</A>");
}

TEST(CProprieta, CountsAClosingMarkInsideAValueAndShiftsLaterPositions) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"A", u"1</x>");
    bag->Scrivi(u"B", 2);
    EXPECT_EQ(bag->Count(), 3);
    EXPECT_EQ(bag->NomeProprieta(1), u"x");
    EXPECT_EQ(bag->NomeProprieta(2), u"A");
    EXPECT_EQ(bag->NomeProprieta(3), u"B");
    EXPECT_EQ(shown(bag->Leggi(u"A")), "String 1</x>");
}

TEST(CProprieta, NamesALooseClosingMarkByTheTextUpToTheNextAngle) {
    const auto bag = bagOf(u"<A>b </ c</A>");
    EXPECT_EQ(bag->Count(), 2);
    EXPECT_EQ(bag->NomeProprieta(1), u" c</A");
    EXPECT_EQ(bag->NomeProprieta(2), u"A");
}

TEST(CProprieta, StoresAPropertyStringWithOtherNamesAsAValue) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"P", u"<X>1</X><Y>2</Y>");
    bag->Scrivi(u"Q", u"<X>3</X>");
    EXPECT_EQ(shown(bag->Leggi(u"P")), "String <X>1</X><Y>2</Y>");
    EXPECT_EQ(shown(bag->Leggi(u"Q")), "String <X>3</X>");
    EXPECT_EQ(shown(bag->Leggi(u"X")), "String 1");
    bag->Scrivi(u"P", u"<Z>4</Z>");
    EXPECT_EQ(shown(bag->Leggi(u"P")), "String <Z>4</Z>");
    EXPECT_EQ(shown(bag->Leggi(u"X")), "String 3");
    EXPECT_EQ(whole(bag), "<P><Z>4</Z></P><Q><X>3</X></Q>");
}

TEST(CProprieta, EndsAValueAtTheFirstClosingTagOfItsName) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"A", u"1<A>2</A>3");
    EXPECT_EQ(whole(bag), "<A>1<A>2</A>3</A>");
    EXPECT_EQ(shown(bag->Leggi(u"A")), "String 1<A>2");
}

TEST(CProprieta, HasNoNameAtPositionZeroAndBelow) {
    const auto bag = bagOf(u"<A>1</A>");
    EXPECT_EQ(bag->NomeProprieta(0), u"");
    EXPECT_EQ(bag->NomeProprieta(-1), u"");
    EXPECT_EQ(bag->NomeProprieta(-32768), u"");
}

TEST(CProprieta, CyclesThroughPositionsBeyondTheLast) {
    const auto bag = bagOf(u"<A>1</A><B>2</B>");
    EXPECT_EQ(bag->NomeProprieta(3), u"");
    EXPECT_EQ(bag->NomeProprieta(4), u"A");
    EXPECT_EQ(bag->NomeProprieta(5), u"B");
    EXPECT_EQ(bag->NomeProprieta(6), u"");
    EXPECT_EQ(bag->NomeProprieta(32767), u"A");
    EXPECT_EQ(shown(bag->Leggi(4)), "String 1");
}

TEST(CProprieta, RemovesAProperty) {
    const auto bag = bagOf(u"<A>1</A><B>2</B><C>3</C>");
    bag->Elimina(u"b");
    EXPECT_EQ(whole(bag), "<A>1</A><C>3</C>");
    EXPECT_EQ(bag->Count(), 2);
    EXPECT_EQ(bag->NomeProprieta(2), u"C");
    EXPECT_EQ(shown(bag->Leggi(u"B")), "Null");
}

TEST(CProprieta, RemovesOnlyTheFirstOccurrence) {
    const auto bag = bagOf(u"<A>1</A>x<A>2</A>");
    bag->Elimina(u"A");
    EXPECT_EQ(whole(bag), "x<A>2</A>");
    EXPECT_EQ(shown(bag->Leggi(u"A")), "String 2");
}

TEST(CProprieta, RemovesNothingWhenThePropertyIsAbsent) {
    const auto bag = bagOf(u"<A>1</A>");
    bag->Elimina(u"B");
    EXPECT_EQ(whole(bag), "<A>1</A>");
}

TEST(CProprieta, FindsATagThatARemovalBringsTogether) {
    const auto bag = bagOf(u"<<A>1</A>B>2</B>");
    EXPECT_EQ(shown(bag->Leggi(u"B")), "Null");
    bag->Elimina(u"A");
    EXPECT_EQ(shown(bag->Leggi(u"B")), "String 2");
}

TEST(CProprieta, RemovingAPropertyNeverClosedKeepsTheTextFromTheLengthOfItsClosingTag) {
    const auto bag = bagOf(u"12345<AB>67");
    bag->Elimina(u"AB");
    EXPECT_EQ(whole(bag),
              "12345"
              "5<AB>67");
}

TEST(CProprieta, RefusesToReadOrWriteAPropertyNeverClosed) {
    const auto bag = bagOf(u"<A>1<B>2</B>");
    EXPECT_EQ(raisedBy([&] { return bag->Leggi(u"A"); }), 5);
    EXPECT_EQ(raisedBy([&] { return bag->Scrivi(u"A", 2), 0; }), 5);
    EXPECT_EQ(whole(bag), "<A>1<B>2</B>");
    EXPECT_EQ(shown(bag->Leggi(u"B")), "String 2");
}

TEST(CProprieta, RefusesToReadAPropertyClosedBeforeItIsOpened) {
    const auto bag = bagOf(u"</A>x<A>1</A>");
    EXPECT_EQ(raisedBy([&] { return bag->Leggi(u"A"); }), 5);
}

TEST(CProprieta, WritesAPropertyClosedBeforeItIsOpenedByTheFirstClosingTag) {
    const auto bag = bagOf(u"</A>x<A>1</A>");
    bag->Scrivi(u"A", 2);
    EXPECT_EQ(whole(bag), "</A>x<A>2</A>x<A>1</A>");
}

TEST(CProprieta, RefusesANameWithoutAnEnd) {
    EXPECT_EQ(raisedBy([] { return bagOf(u"a</b")->NomeProprieta(1); }), 5);
    EXPECT_EQ(raisedBy([] { return bagOf(u"a</")->NomeProprieta(1); }), 5);
    EXPECT_EQ(raisedBy([] { return bagOf(u"a</b")->Leggi(1); }), 5);
}

TEST(CProprieta, RefusesANullAsTheWholeText) {
    const auto bag = bagOf(u"<A>1</A>");
    EXPECT_EQ(raisedBy([&] { return bag->Scrivi(u"", Variant::null()), 0; }), 94);
    EXPECT_EQ(whole(bag), "<A>1</A>");
}

TEST(CProprieta, TakesAnEmptyValueAsTheWholeText) {
    const auto bag = bagOf(u"<A>1</A>");
    bag->Scrivi(u"", Variant());
    EXPECT_EQ(whole(bag), "");
    EXPECT_EQ(bag->Count(), 0);
}

TEST(CProprieta, RefusesANullPosition) {
    EXPECT_EQ(raisedBy([] { return bagOf(u"<A>1</A>")->Leggi(Variant::null()); }), 94);
}

TEST(CProprieta, RefusesAPositionOutside16Bits) {
    EXPECT_EQ(raisedBy([] { return bagOf(u"<A>1</A>")->Leggi(32768); }), 6);
}

TEST(CProprieta, RefusesAValueWithoutText) {
    const auto bag = make<CProprieta>();
    EXPECT_EQ(raisedBy([&] { return bag->Scrivi(u"A", Array::ofVariants({1})), 0; }), 13);
    EXPECT_EQ(raisedBy([&] { return bag->Scrivi(u"A", Ref<Object>()), 0; }), 91);
    EXPECT_EQ(whole(bag), "");
}

TEST(CProprieta, CountsUpTo32767MarksAndOverflowsBeyond) {
    std::u16string text;
    for (int i = 0; i < 32767; ++i) {
        text += u"</";
    }
    const auto bag = bagOf(text.c_str());
    EXPECT_EQ(bag->Count(), 32767);
    bag->Scrivi(u"A", 1);
    EXPECT_EQ(raisedBy([&] { return bag->Count(); }), 6);
    EXPECT_EQ(shown(bag->Leggi(u"A")), "String 1");
}

TEST(CProprieta, CopiesAWholeBagThroughTheEmptyNameAndDefault) {
    const auto from = bagOf(u"<A>1</A><B>2</B>");
    const auto to = bagOf(u"<C>3</C>");
    to->Scrivi(u"", from->Leggi());
    EXPECT_EQ(whole(to), "<A>1</A><B>2</B>");
    EXPECT_EQ(shown(to->Leggi(u"C")), "Null");
}

TEST(CProprieta, FindsNamesThatHoldAngles) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"a<b", 1);
    bag->Scrivi(u"/c", 2);
    EXPECT_EQ(whole(bag),
              "<A<B>1</A<B><"
              "/C>2<//C>");
    EXPECT_EQ(shown(bag->Leggi(u"A<B")), "String 1");
    EXPECT_EQ(shown(bag->Leggi(u"/C")), "String 2");
    bag->Scrivi(u"/C", 3);
    bag->Elimina(u"a<b");
    EXPECT_EQ(whole(bag), "</C>3<//C>");
}

TEST(CProprieta, KeepsThePositionsWhileValuesAreRewrittenInALoop) {
    const auto bag = bagOf(u"<A>1</A><B>2</B><C>3</C>");
    for (std::int16_t position = 1; position <= bag->Count(); ++position) {
        bag->Scrivi(bag->NomeProprieta(position), u"x");
    }
    EXPECT_EQ(whole(bag), "<A>x</A><B>x</B><C>x</C>");
}

TEST(CProprieta, EmptiesABagByRemovingItsFirstPropertyUntilNoneIsLeft) {
    const auto bag = bagOf(u"<A>1</A><B>2</B><C>3</C>");
    std::string removed;
    while (bag->Count() > 0) {
        const String name = bag->NomeProprieta(1);
        removed += name.utf8();
        bag->Elimina(name);
    }
    EXPECT_EQ(removed, "ABC");
    EXPECT_EQ(whole(bag), "");
}

}  // namespace
}  // namespace kap
