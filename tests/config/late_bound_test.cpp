// The configuration as programs see it that know names only.
#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/config/cfg_stampa.hpp>

#include "config/sample_tree.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::raisedBy;
using test::shown;

// object(name): the default member with an argument.
Ref<Object> at(const Ref<Object>& object, const char16_t* name) {
    std::vector<Variant> arguments = {name};
    return object->invoke(kDefaultMember, InvokeKind::MethodOrGet, Arguments{arguments, {}})
        .as<Ref<Object>>();
}

Ref<Object> objectIn(const Variant& value) {
    return value.as<Ref<Object>>();
}

TEST(LateBoundConfiguration, IsReachedThroughAChainOfDefaultMembers) {
    const Ref<Object> root = make<CFG_Applicazioni>();
    const auto application = objectIn(call(*root, u"Add", {u"Vendite"}));
    const auto procedure =
        objectIn(call(*objectIn(call(*application, u"Procedure")), u"Add", {u"Ordini"}));
    const auto module = objectIn(call(*objectIn(call(*procedure, u"Moduli")), u"Add", {u"Stampa"}));
    const auto field = objectIn(call(*objectIn(call(*module, u"Campi")), u"Add", {u"Copie"}));
    test::invoke(*field, u"Valore", InvokeKind::Let, {3});

    const auto found = at(at(at(at(root, u"Vendite"), u"Ordini"), u"Stampa"), u"Copie");
    EXPECT_EQ(found, field);
    EXPECT_EQ(shown(call(*found, u"Valore")), "String 3");
    EXPECT_EQ(raisedBy([&] { return at(at(root, u"Vendite"), u"X"); }), errors::kObjectError);
}

TEST(LateBoundConfiguration, GivesTheCollectionBelowAsTheDefaultMember) {
    const auto root = test::sampleRoot();
    const auto application = root->Item(u"Vendite");
    EXPECT_EQ(objectIn(application->defaultValue()), Ref<Object>(application->Procedure()));
    const auto procedure = application->Procedure()->Item(u"Ordini");
    EXPECT_EQ(objectIn(procedure->defaultValue()), Ref<Object>(procedure->Moduli()));
    const auto module = procedure->Moduli()->Item(u"Stampa");
    EXPECT_EQ(objectIn(module->defaultValue()), Ref<Object>(module->Campi()));
    EXPECT_EQ(raisedBy([] { return make<CFG_Campo>()->defaultValue(); }), errors::kTypeMismatch);
}

TEST(LateBoundConfiguration, AdoptsAnApplicationObject) {
    const Ref<Object> root = make<CFG_Applicazioni>();
    const Ref<Object> application = make<CFG_Applicazione>();
    test::invoke(*application, u"Nome", InvokeKind::Let, {u"Vendite"});
    EXPECT_EQ(objectIn(call(*root, u"Add", {Variant(application)})), application);
    EXPECT_EQ(objectIn(call(*application, u"Parent")), root);
    EXPECT_EQ(shown(call(*root, u"Count")), "Integer 1");
}

TEST(LateBoundConfiguration, EnumeratesTheLiveCollection) {
    const Ref<Object> root = test::sampleRoot();
    call(*root, u"Add", {u"Acquisti"});
    const auto collection = objectIn(call(*root, u"Collezione"));
    EXPECT_EQ(collection->elements().size(), 2U);
    EXPECT_EQ(shown(call(*objectIn(call(*collection, u"Item", {2})), u"Nome")), "String Acquisti");
    call(*root, u"Delete", {u"VENDITE"});
    EXPECT_EQ(shown(call(*collection, u"Count")), "Long 1");
}

TEST(LateBoundConfiguration, AssignsObjectsByReferenceOnly) {
    const auto module = make<CFG_Modulo>();
    const auto fields = make<CFG_Campi>();
    test::invoke(*module, u"Campi", InvokeKind::Set, {Variant(fields)});
    EXPECT_EQ(module->Campi(), fields);
    EXPECT_EQ(raisedBy([&] {
                  return test::invoke(*module, u"Campi", InvokeKind::Set,
                                      {Variant(make<CFG_Moduli>())});
              }),
              errors::kTypeMismatch);
    EXPECT_EQ(
        raisedBy([&] { return test::invoke(*module, u"Campi", InvokeKind::Let, {u"testo"}); }),
        errors::kMemberNotFound);
}

TEST(LateBoundConfiguration, RefusesAMenuName) {
    const auto procedure = make<CFG_Procedura>();
    EXPECT_EQ(
        raisedBy([&] { return test::invoke(*procedure, u"NomeMenu", InvokeKind::Let, {u"File"}); }),
        errors::kOutOfStack);
    EXPECT_EQ(shown(call(*procedure, u"NomeMenu")), "String ");
}

TEST(LateBoundConfiguration, ConvertsWhatIsAssigned) {
    const auto field = make<CFG_Campo>();
    test::invoke(*field, u"Obbligatorio", InvokeKind::Let, {u"True"});
    EXPECT_TRUE(field->Obbligatorio());
    call(*field, u"ResetDefault", {false});
    EXPECT_FALSE(call(*field, u"Personalizzato").as<bool>());
    const auto print = make<CFG_Stampa>();
    call(*print, u"Init", {Variant(field)});
    test::invoke(*print, u"Copie", InvokeKind::Let, {2});
    EXPECT_EQ(shown(call(*field, u"Valore")), "String <COPIE>2</COPIE>");
}

}  // namespace
}  // namespace kap
