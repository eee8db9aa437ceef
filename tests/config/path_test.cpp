#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/core/cproprieta.hpp>

#include "config/sample_tree.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::sampleFields;
using test::sampleRoot;

TEST(Path, JoinsTheNamesFromTheGroupDown) {
    const auto root = sampleRoot();
    const auto application = root->Item(u"Vendite");
    const auto procedure = application->Procedure()->Item(u"Ordini");
    const auto module = procedure->Moduli()->Item(u"Stampa");
    const auto field = module->Campi()->Add(u"Copie");
    EXPECT_EQ(root->Path(), u"UFFICIO");
    EXPECT_EQ(application->Path(), u"UFFICIO\\Vendite");
    EXPECT_EQ(procedure->Path(), u"UFFICIO\\Vendite\\Ordini");
    EXPECT_EQ(module->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa");
    EXPECT_EQ(field->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa\\Copie");
}

TEST(Path, IsTheNameOfANodeAlone) {
    const auto module = make<CFG_Modulo>();
    module->setNome(u"Stampa");
    EXPECT_EQ(module->Path(), u"Stampa");
    EXPECT_EQ(module->Campi()->Add(u"Copie")->Path(), u"Stampa\\Copie");
    EXPECT_EQ(make<CFG_Campo>()->Path(), u"<non definito>");
    EXPECT_EQ(make<CFG_Applicazione>()->Path(), u"");
}

TEST(Path, BeginsBelowTheCut) {
    const auto root = sampleRoot();
    const auto field = sampleFields(root)->Add(u"Copie");
    root->Item(u"Vendite")->Procedure()->setParent({});
    EXPECT_EQ(field->Path(), u"Ordini\\Stampa\\Copie");
    root->Item(u"Vendite")->Procedure()->Item(u"Ordini")->setParent({});
    EXPECT_EQ(field->Path(), u"Ordini\\Stampa\\Copie");
    sampleFields(root)->setParent({});
    EXPECT_EQ(field->Path(), u"Copie");
}

TEST(Path, EscapesNothing) {
    const auto root = make<CFG_Applicazioni>();
    root->setGruppo(u"G\\H");
    EXPECT_EQ(root->Add(u"A\\B")->Path(), u"G\\H\\A\\B");
    EXPECT_EQ(root->Add(u"")->Path(), u"G\\H\\");
}

TEST(Path, IsKeptByANodeThatWasDeleted) {
    const auto root = sampleRoot();
    const auto fields = sampleFields(root);
    const auto field = fields->Add(u"Copie");
    fields->Delete(u"Copie");
    EXPECT_EQ(field->Parent(), fields);
    EXPECT_EQ(field->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa\\Copie");
    root->Delete(u"Vendite");
    EXPECT_EQ(field->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa\\Copie");
}

TEST(Path, PassesOverWhatIsNoNode) {
    const auto root = sampleRoot();
    const auto field = sampleFields(root)->Add(u"Copie");
    sampleFields(root)->setParent(Ref<Object>(root));
    EXPECT_EQ(field->Path(), u"UFFICIO\\Copie");
    sampleFields(root)->setParent(Ref<Object>(make<CProprieta>()));
    EXPECT_EQ(field->Path(), u"Copie");
}

TEST(Path, OfParentsThatGoRoundIsAnError) {
    const auto module = make<CFG_Modulo>();
    const auto fields = make<CFG_Campi>();
    fields->setParent(Ref<Object>(fields));
    const auto field = fields->Add(u"Copie");
    EXPECT_EQ(raisedBy([&] { return field->Path(); }), 14);
    const auto procedure = make<CFG_Procedura>();
    procedure->setParent(Ref<Object>(procedure));
    EXPECT_EQ(raisedBy([&] { return procedure->Path(); }), 14);
    procedure->setParent({});
    fields->setParent({});
}

}  // namespace
}  // namespace kap
