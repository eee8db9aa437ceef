#include <kaputil/core/cproprieta.hpp>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::callNamed;
using test::raisedBy;
using test::shown;

TEST(CProprietaDispatch, CallsMembersByNameIgnoringCase) {
    const auto bag = make<CProprieta>();
    call(*bag, u"SCRIVI", {u"Codice", 12});
    EXPECT_EQ(shown(call(*bag, u"leggi", {u"codice"})), "String 12");
    EXPECT_EQ(shown(call(*bag, u"count")), "Integer 1");
    EXPECT_EQ(shown(call(*bag, u"NomeProprieta", {1})), "String CODICE");
    EXPECT_EQ(shown(call(*bag, u"Elimina", {u"codice"})), "Empty");
    EXPECT_EQ(shown(call(*bag, u"Leggi")), "String ");
}

TEST(CProprietaDispatch, NumbersItsMethodsInInterfaceOrder) {
    const auto bag = make<CProprieta>();
    EXPECT_EQ(bag->memberId(u"Elimina"), 0x60030000);
    EXPECT_EQ(bag->memberId(u"leggi"), 0x60030001);
    EXPECT_EQ(bag->memberId(u"Scrivi"), 0x60030002);
    EXPECT_EQ(bag->memberId(u"Count"), 0x60030003);
    EXPECT_EQ(bag->memberId(u"NomeProprieta"), 0x60030004);
    EXPECT_EQ(bag->memberId(u"Altro"), std::nullopt);
}

TEST(CProprietaDispatch, CallsMembersByIdentifier) {
    const auto bag = make<CProprieta>();
    std::vector<Variant> arguments = {u"a", u"1"};
    bag->invoke(0x60030002, InvokeKind::Method, Arguments{arguments, {}});
    EXPECT_EQ(shown(bag->invoke(0x60030003, InvokeKind::Method, Arguments{})), "Integer 1");
}

TEST(CProprietaDispatch, TakesNamedArguments) {
    const auto bag = make<CProprieta>();
    callNamed(*bag, u"Scrivi", {{u"sValore", u"x"}, {u"SNOMEPROPRIETA", u"a"}});
    EXPECT_EQ(shown(callNamed(*bag, u"Leggi", {{u"sNomeProprieta", u"a"}})), "String x");
}

TEST(CProprietaDispatch, ReadsTheWholeTextWhenTheNameIsLeftOut) {
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"a", 1);
    EXPECT_EQ(shown(call(*bag, u"Leggi")), "String <A>1</A>");
    EXPECT_EQ(shown(call(*bag, u"Leggi", {Variant::missing()})), "String <A>1</A>");
}

TEST(CProprietaDispatch, RefusesMissingSurplusAndUnknown) {
    const auto bag = make<CProprieta>();
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"Scrivi", {u"a"}); }), 449);
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"Scrivi", {Variant::missing(), u"x"}); }), 449);
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"Elimina", {u"a", u"b"}); }), 450);
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"Count", {1}); }), 450);
    EXPECT_EQ(raisedBy([&] { return callNamed(*bag, u"Leggi", {{u"nome", u"a"}}); }), 448);
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"Altro"); }), 438);
    EXPECT_EQ(raisedBy([&] { return bag->invoke(7, InvokeKind::Method, Arguments{}); }), 438);
}

TEST(CProprietaDispatch, HasNoDefaultMember) {
    const auto bag = make<CProprieta>();
    EXPECT_EQ(raisedBy([&] { return bag->defaultValue(); }), 13);
}

TEST(CProprietaDispatch, ConvertsArgumentsToTheTypesOfItsParameters) {
    const auto bag = make<CProprieta>();
    call(*bag, u"Scrivi", {12, 5});
    EXPECT_EQ(shown(call(*bag, u"NomeProprieta", {u"1"})), "String 12");
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"NomeProprieta", {u"uno"}); }), 13);
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"NomeProprieta", {40000}); }), 6);
    EXPECT_EQ(raisedBy([&] { return call(*bag, u"Elimina", {Variant::null()}); }), 94);
}

TEST(CProprietaDispatch, LeavesArgumentsByReferenceAsTheyWere) {
    const auto bag = make<CProprieta>();
    std::vector<Variant> arguments = {7, 8};
    bag->invoke(u"Scrivi", InvokeKind::Method, Arguments{arguments, {}});
    EXPECT_EQ(shown(arguments[0]), "Long 7");
    EXPECT_EQ(shown(arguments[1]), "Long 8");
}

TEST(CProprietaDispatch, DescribesItself) {
    const ClassDescription& description = CProprieta::classDescription();
    EXPECT_EQ(description.name, u"CProprieta");
    EXPECT_EQ(description.classId, u"80368bd9-a134-4db3-b976-3eff993d4529");
    EXPECT_EQ(description.interfaceId, u"47799a54-02c1-4447-9acc-eb0cc14f0d34");
    EXPECT_EQ(description.instancing, Instancing::Creatable);
    EXPECT_EQ(description.create()->className(), u"CProprieta");
    const MemberDescription* read = description.find(u"Leggi");
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->result, VarType::Variant);
    EXPECT_EQ(read->parameters[0].type, VarType::Variant);
    EXPECT_TRUE(read->parameters[0].byReference);
    EXPECT_EQ(description.find(u"Count")->result, VarType::Integer);
}

}  // namespace
}  // namespace kap
