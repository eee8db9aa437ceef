#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>

#include "config/sample_tree.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::sampleFields;
using test::sampleRoot;

// The error that an action raises as "NUMBER|SOURCE|DESCRIPTION".
template <class Action>
std::string errorOf(Action&& action) {
    try {
        static_cast<void>(action());
    } catch (const AutomationError& error) {
        return std::to_string(error.number()) + "|" + error.source().utf8() + "|" +
               error.description().utf8();
    }
    return "none";
}

// What a collection enumerates, by name.
std::string names(const Ref<Collection>& collection) {
    std::string all;
    for (const Variant& element : collection->elements()) {
        all += (all.empty() ? "" : " ") +
               test::call(*element.as<Ref<Object>>(), u"Nome").as<String>().utf8();
    }
    return all;
}

TEST(ConfigurationRoot, BeginsWithTheUsualTableAndNothingElse) {
    const auto root = make<CFG_Applicazioni>();
    EXPECT_EQ(root->NomeTabella(), u"KAP_CFG");
    EXPECT_EQ(root->Gruppo(), u"");
    EXPECT_EQ(root->Path(), u"");
    EXPECT_EQ(root->Count(), 0);
    EXPECT_FALSE(root->ActiveConnection());
}

TEST(ConfigurationRoot, SharesTheConnectionItIsGiven) {
    const auto root = make<CFG_Applicazioni>();
    const auto connection = make<ado::Connection>();
    root->setActiveConnection(connection);
    EXPECT_EQ(root->ActiveConnection(), connection);
    root->setActiveConnection({});
    EXPECT_FALSE(root->ActiveConnection());
    EXPECT_EQ(connection->State(), ado::ObjectStateEnum::adStateClosed);
}

TEST(ConfigurationRoot, AddsAnApplicationOfAName) {
    const auto root = make<CFG_Applicazioni>();
    const auto application = root->Add(u"Vendite");
    EXPECT_EQ(application->Nome(), u"Vendite");
    EXPECT_EQ(application->Parent(), root);
    EXPECT_EQ(application->Procedure()->Count(), 0);
    EXPECT_EQ(root->Add(12)->Nome(), u"12");
    EXPECT_EQ(root->Count(), 2);
}

TEST(ConfigurationRoot, AdoptsAnApplicationWithAllThatItHolds) {
    const auto application = make<CFG_Applicazione>();
    application->setNome(u"Vendite");
    const auto field =
        application->Procedure()->Add(u"Ordini")->Moduli()->Add(u"Stampa")->Campi()->Add(u"Copie");
    EXPECT_EQ(field->Path(), u"Vendite\\Ordini\\Stampa\\Copie");

    const auto root = make<CFG_Applicazioni>();
    root->setGruppo(u"G");
    EXPECT_EQ(root->Add(Variant(application)), application);
    EXPECT_EQ(root->Item(u"VENDITE"), application);
    EXPECT_EQ(field->Path(), u"G\\Vendite\\Ordini\\Stampa\\Copie");
}

TEST(ConfigurationRoot, LeavesAnApplicationThatItRefusesItsNewParent) {
    const auto first = sampleRoot();
    const auto second = sampleRoot();
    const auto application = first->Item(u"Vendite");
    EXPECT_EQ(raisedBy([&] { return second->Add(Variant(application)); }), errors::kDuplicateKey);
    EXPECT_EQ(application->Parent(), second);
    EXPECT_EQ(second->Count(), 1);
    EXPECT_NE(second->Item(u"Vendite"), application);
}

TEST(ConfigurationRoot, RefusesWhatHasNoName) {
    const auto root = make<CFG_Applicazioni>();
    EXPECT_EQ(raisedBy([&] { return root->Add(Variant::null()); }), errors::kInvalidUseOfNull);
    EXPECT_EQ(raisedBy([&] { return root->Add(Variant(Ref<Object>())); }), errors::kObjectNotSet);
    EXPECT_EQ(root->Count(), 0);
}

TEST(ConfigurationNodes, KnowTheirParents) {
    const auto root = sampleRoot();
    const auto application = root->Item(u"Vendite");
    const auto procedure = application->Procedure()->Item(u"Ordini");
    const auto module = procedure->Moduli()->Item(u"Stampa");
    const auto field = module->Campi()->Add(u"Copie");
    EXPECT_EQ(field->Parent(), module->Campi());
    EXPECT_EQ(module->Campi()->Parent(), Ref<Object>(module));
    EXPECT_EQ(module->Parent(), procedure->Moduli());
    EXPECT_EQ(procedure->Moduli()->Parent(), Ref<Object>(procedure));
    EXPECT_EQ(procedure->Parent(), Ref<Object>(application->Procedure()));
    EXPECT_EQ(application->Procedure()->Parent(), Ref<Object>(application));
    EXPECT_EQ(application->Parent(), root);
}

TEST(ConfigurationNodes, HaveTheirCollectionsFromTheBeginning) {
    const auto module = make<CFG_Modulo>();
    EXPECT_EQ(module->Campi()->Parent(), Ref<Object>(module));
    const auto procedure = make<CFG_Procedura>();
    EXPECT_EQ(procedure->Moduli()->Parent(), Ref<Object>(procedure));
    const auto application = make<CFG_Applicazione>();
    EXPECT_EQ(application->Procedure()->Parent(), Ref<Object>(application));
    EXPECT_FALSE(make<CFG_Campi>()->Parent());
    EXPECT_EQ(module->Nome(), u"");
}

TEST(ConfigurationNodes, KeepTheParentOfACollectionThatReplacesTheirs) {
    const auto module = make<CFG_Modulo>();
    const auto other = make<CFG_Modulo>();
    module->setCampi(other->Campi());
    EXPECT_EQ(module->Campi()->Parent(), Ref<Object>(other));
    module->setCampi({});
    EXPECT_FALSE(module->Campi());
}

TEST(ConfigurationCollections, FindElementsIgnoringCase) {
    const auto root = sampleRoot();
    EXPECT_EQ(root->Item(u"VENDITE")->Nome(), u"Vendite");
    EXPECT_EQ(root->Item(u"vendite")->Procedure()->Item(u"ORDINI")->Nome(), u"Ordini");
    const auto accented = root->Add(u"Qualità");
    EXPECT_EQ(root->Item(u"QUALITÀ"), accented);
    EXPECT_EQ(raisedBy([&] { return root->Item(u"Qualita"); }), errors::kObjectError);
}

TEST(ConfigurationCollections, RefuseANameThatIsThereInAnyCase) {
    const auto root = sampleRoot();
    EXPECT_EQ(raisedBy([&] { return root->Add(u"vendite"); }), errors::kDuplicateKey);
    const auto fields = sampleFields(root);
    const auto first = fields->Add(u"Copie");
    EXPECT_EQ(raisedBy([&] { return fields->Add(u"COPIE"); }), errors::kDuplicateKey);
    EXPECT_EQ(fields->Count(), 1);
    EXPECT_EQ(fields->Item(u"Copie"), first);
}

TEST(ConfigurationCollections, GoOnFindingARenamedElementByItsOldName) {
    const auto root = sampleRoot();
    const auto application = root->Item(u"Vendite");
    application->setNome(u"Acquisti");
    EXPECT_EQ(root->Item(u"Vendite"), application);
    EXPECT_EQ(application->Path(), u"UFFICIO\\Acquisti");
}

TEST(ConfigurationCollections, RefuseToDeleteAMissingName) {
    const auto root = sampleRoot();
    EXPECT_EQ(raisedBy([&] {
                  root->Delete(u"Acquisti");
                  return 0;
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] {
                  sampleFields(root)->Delete(u"Copie");
                  return 0;
              }),
              errors::kInvalidArgument);
}

TEST(ConfigurationCollections, TellWhereANameIsMissing) {
    const auto root = sampleRoot();
    EXPECT_EQ(errorOf([&] { return sampleFields(root)->Item(u"X"); }),
              "-2147221503||CFG   UFFICIO\\Vendite\\Ordini\\Stampa\\X  non  trovato");
    const auto procedures = root->Item(u"Vendite")->Procedure();
    EXPECT_EQ(errorOf([&] { return procedures->Item(u"X"); }),
              "-2147221503||CFG   UFFICIO\\Vendite\\X  non  trovato");
    EXPECT_EQ(errorOf([&] { return procedures->Item(u"Ordini")->Moduli()->Item(u""); }),
              "-2147221503||CFG   UFFICIO\\Vendite\\Ordini\\  non  trovato");
    EXPECT_EQ(errorOf([&] { return root->Item(u"X"); }),
              "-2147221503||CFG   UFFICIO\\X  non  trovato");
    root->setGruppo(u"");
    EXPECT_EQ(errorOf([&] { return root->Item(u"X"); }), "-2147221503||CFG   \\X  non  trovato");
}

TEST(ConfigurationCollections, CannotTellWhereWithoutAParent) {
    EXPECT_EQ(raisedBy([] { return make<CFG_Campi>()->Item(u"X"); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([] { return make<CFG_Moduli>()->Item(u"X"); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([] { return make<CFG_Procedure>()->Item(u"X"); }), errors::kObjectNotSet);
}

TEST(ConfigurationCollections, EnumerateInTheOrderOfAdding) {
    const auto fields = sampleFields(sampleRoot());
    for (const char16_t* name : {u"C", u"A", u"D", u"B"}) {
        fields->Add(name);
    }
    EXPECT_EQ(names(fields->Collezione()), "C A D B");
    fields->Delete(u"A");
    EXPECT_EQ(names(fields->Collezione()), "C D B");
    fields->Add(u"A");
    EXPECT_EQ(names(fields->Collezione()), "C D B A");
}

TEST(ConfigurationCollections, HandOutTheLiveCollection) {
    const auto fields = sampleFields(sampleRoot());
    const auto live = fields->Collezione();
    EXPECT_EQ(fields->Collezione(), live);
    const auto field = make<CFG_Campo>();
    live->Add(Variant(field), u"Copie");
    EXPECT_EQ(fields->Item(u"copie"), field);
    EXPECT_FALSE(field->Parent());
    EXPECT_EQ(fields->Count(), 1);
    live->Remove(1);
    EXPECT_EQ(fields->Count(), 0);
}

TEST(ConfigurationCollections, DoNotFindWhatIsNoElementOfTheirs) {
    const auto fields = sampleFields(sampleRoot());
    fields->Collezione()->Add(u"testo", u"Copie");
    fields->Collezione()->Add(Variant(make<CFG_Modulo>()), u"Modulo");
    EXPECT_EQ(raisedBy([&] { return fields->Item(u"Copie"); }), errors::kObjectError);
    EXPECT_EQ(raisedBy([&] { return fields->Item(u"Modulo"); }), errors::kObjectError);
    EXPECT_EQ(fields->Count(), 2);
}

TEST(ConfigurationCollections, CountUpToTheLargestInteger) {
    const auto fields = make<CFG_Campi>();
    for (std::int32_t i = 0; i < 32'767; ++i) {
        fields->Collezione()->Add(i);
    }
    EXPECT_EQ(fields->Count(), 32'767);
    fields->Collezione()->Add(0);
    EXPECT_EQ(raisedBy([&] { return fields->Count(); }), errors::kOverflow);
}

TEST(MenuName, CanNeverBeSet) {
    const auto procedure = make<CFG_Procedura>();
    EXPECT_EQ(procedure->NomeMenu(), u"");
    EXPECT_EQ(errorOf([&] {
                  procedure->setNomeMenu(u"File");
                  return 0;
              }),
              "28||Out of stack space");
    EXPECT_EQ(procedure->NomeMenu(), u"");
}

}  // namespace
}  // namespace kap
