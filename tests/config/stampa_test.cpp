#include <kaputil/config/cfg_stampa.hpp>

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>

#include "config/sample_tree.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;

struct View {
    Ref<CFG_Campo> field = make<CFG_Campo>();
    Ref<CFG_Stampa> print = make<CFG_Stampa>();
};

View viewOf(const String& value) {
    View view;
    view.field->setValore(value);
    view.print->Init(view.field);
    return view;
}

TEST(PrintConfiguration, HasItsDefaultsOnAFieldWhoseValueIsEmpty) {
    const View view = viewOf(u"");
    EXPECT_EQ(view.print->Titolo(), u"");
    EXPECT_EQ(view.print->EMail(), u"0");
    EXPECT_EQ(view.print->EsportaReport(), u"0");
    EXPECT_TRUE(view.print->InElenco());
    EXPECT_EQ(view.print->Sigla(), u"");
    EXPECT_EQ(view.print->CodiceBreve(), u"");
    EXPECT_EQ(view.print->ClasseEsterna(), u"");
    EXPECT_EQ(view.print->Stampante(), u"");
    EXPECT_EQ(view.print->Layout(), u"");
    EXPECT_EQ(view.print->Vidsta(), u"V");
    EXPECT_EQ(view.print->Copie(), u"1");
    EXPECT_EQ(view.print->OrigineCarta(), u"");
    EXPECT_FALSE(view.print->AddRunTime());
}

TEST(PrintConfiguration, ReadsEachAttributeFromTheFieldsValue) {
    const View view = viewOf(
        u"<TITOLO>Conferma</TITOLO><EMAIL>1</EMAIL><ESPORTAREPORT>2</ESPORTAREPORT>"
        u"<INELENCO>1</INELENCO><SIGLA>CO</SIGLA><CODICEBREVE>c1</CODICEBREVE>"
        u"<CLASSEESTERNA>X.Y</CLASSEESTERNA><STAMPANTE>HP</STAMPANTE><LAYOUT>a.rpt</LAYOUT>"
        u"<VIDSTA>S</VIDSTA><COPIE>3</COPIE><ORIGINECARTA>2</ORIGINECARTA>");
    EXPECT_EQ(view.print->Titolo(), u"Conferma");
    EXPECT_EQ(view.print->EMail(), u"1");
    EXPECT_EQ(view.print->EsportaReport(), u"2");
    EXPECT_TRUE(view.print->InElenco());
    EXPECT_EQ(view.print->Sigla(), u"CO");
    EXPECT_EQ(view.print->CodiceBreve(), u"c1");
    EXPECT_EQ(view.print->ClasseEsterna(), u"X.Y");
    EXPECT_EQ(view.print->Stampante(), u"HP");
    EXPECT_EQ(view.print->Layout(), u"a.rpt");
    EXPECT_EQ(view.print->Vidsta(), u"S");
    EXPECT_EQ(view.print->Copie(), u"3");
    EXPECT_EQ(view.print->OrigineCarta(), u"2");
}

TEST(PrintConfiguration, WritesEachAttributeIntoTheFieldsValue) {
    const View view = viewOf(u"");
    view.print->setTitolo(u"Conferma");
    EXPECT_EQ(view.field->Valore(), u"<TITOLO>Conferma</TITOLO>");
    view.print->setEMail(u"1");
    view.print->setEsportaReport(u"2");
    view.print->setInElenco(true);
    view.print->setSigla(u"CO");
    view.print->setCodiceBreve(u"c1");
    view.print->setClasseEsterna(u"X.Y");
    view.print->setStampante(u"HP");
    view.print->setLayout(u"a.rpt");
    view.print->setVidsta(u"S");
    view.print->setCopie(u"3");
    view.print->setOrigineCarta(u"2");
    EXPECT_EQ(view.field->Valore(),
              u"<TITOLO>Conferma</TITOLO><EMAIL>1</EMAIL><ESPORTAREPORT>2</ESPORTAREPORT>"
              u"<INELENCO>1</INELENCO><SIGLA>CO</SIGLA><CODICEBREVE>c1</CODICEBREVE>"
              u"<CLASSEESTERNA>X.Y</CLASSEESTERNA><STAMPANTE>HP</STAMPANTE>"
              u"<LAYOUT>a.rpt</LAYOUT><VIDSTA>S</VIDSTA><COPIE>3</COPIE>"
              u"<ORIGINECARTA>2</ORIGINECARTA>");
    view.print->setTitolo(u"Altra");
    EXPECT_TRUE(view.field->Valore().view().starts_with(u"<TITOLO>Altra</TITOLO><EMAIL>"));
}

TEST(PrintConfiguration, CustomisesTheField) {
    View view;
    view.print->Init(view.field);
    EXPECT_FALSE(view.field->Personalizzato());
    view.print->setTitolo(u"Conferma");
    EXPECT_TRUE(view.field->Personalizzato());
}

TEST(PrintConfiguration, KeepsTheListingAsZeroOrOne) {
    const View view = viewOf(u"");
    view.print->setInElenco(false);
    EXPECT_FALSE(view.print->InElenco());
    EXPECT_EQ(view.field->Valore(), u"<INELENCO>0</INELENCO>");
    view.print->setInElenco(true);
    EXPECT_EQ(view.field->Valore(), u"<INELENCO>1</INELENCO>");
    EXPECT_TRUE(view.print->InElenco());
    EXPECT_FALSE(viewOf(u"<INELENCO>si</INELENCO>").print->InElenco());
    EXPECT_TRUE(viewOf(u"<INELENCO></INELENCO>").print->InElenco());
}

TEST(PrintConfiguration, BeginsItsDefaultsWithScreenAndOneCopy) {
    View view;
    view.field->setValoreDefault(u"<TITOLO>vecchio</TITOLO>");
    view.print->InitDefault(view.field);
    EXPECT_EQ(view.field->ValoreDefault(), u"<VIDSTA>V</VIDSTA><COPIE>1</COPIE>");
    EXPECT_EQ(view.print->Vidsta(), u"V");
    EXPECT_EQ(view.print->Copie(), u"1");
    EXPECT_EQ(view.print->Titolo(), u"");
}

TEST(PrintConfiguration, WritesDefaultsInDefaultMode) {
    View view;
    view.print->InitDefault(view.field);
    view.print->setLayout(u"a.rpt");
    EXPECT_EQ(view.field->ValoreDefault(),
              u"<VIDSTA>V</VIDSTA><COPIE>1</COPIE><LAYOUT>a.rpt</LAYOUT>");
    EXPECT_FALSE(view.field->Personalizzato());
    EXPECT_EQ(view.field->Valore(), u"<VIDSTA>V</VIDSTA><COPIE>1</COPIE><LAYOUT>a.rpt</LAYOUT>");
}

TEST(PrintConfiguration, WritesTheFlagOfItsMode) {
    View view;
    view.print->InitDefault(view.field);
    view.print->setFlag(u"1");
    EXPECT_EQ(view.print->Flag(), u"<non definito>");
    EXPECT_EQ(view.field->Flag(), u"1");
    EXPECT_EQ(view.print->Flag(), u"1");
    EXPECT_FALSE(view.field->Personalizzato());
    view.print->Init(view.field);
    view.print->setFlag(u"0");
    EXPECT_EQ(view.field->Flag(), u"0");
    EXPECT_TRUE(view.field->Personalizzato());
}

TEST(PrintConfiguration, PassesNameAndNoteOn) {
    const View view = viewOf(u"");
    view.field->setNome(u"Conferma");
    view.print->setNote(u"nota");
    EXPECT_EQ(view.print->Nome(), u"Conferma");
    EXPECT_EQ(view.field->Note(), u"nota");
    EXPECT_EQ(view.print->Note(), u"nota");
    EXPECT_EQ(view.field->Valore(), u"");
}

TEST(PrintConfiguration, TellsWhetherItWasAddedAtRunTime) {
    EXPECT_TRUE(viewOf(u"<ADD_RUNTIME></ADD_RUNTIME>").print->AddRunTime());
    EXPECT_TRUE(viewOf(u"<COPIE>1</COPIE><ADD_RUNTIME>x</ADD_RUNTIME>").print->AddRunTime());
    EXPECT_FALSE(viewOf(u"ADD_RUNTIME").print->AddRunTime());
}

TEST(PrintConfiguration, KeepsAnAttributeThatTheFieldRefuses) {
    View view;
    view.field->setNome(u"Stampa");
    view.field->setValoriConsentiti(u"<COPIE>1</COPIE>|<COPIE>2</COPIE>");
    view.field->setValore(u"<COPIE>1</COPIE>");
    view.print->Init(view.field);
    view.print->setCopie(u"2");
    EXPECT_EQ(view.field->Valore(), u"<COPIE>2</COPIE>");
    try {
        view.print->setCopie(u"3");
        ADD_FAILURE() << "nothing was raised";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kObjectError);
        EXPECT_EQ(error.description(), u"Valore <COPIE>3</COPIE> non consentito su CFG Stampa");
    }
    EXPECT_EQ(view.print->Copie(), u"3");
    EXPECT_EQ(view.field->Valore(), u"<COPIE>2</COPIE>");
}

TEST(PrintConfiguration, SeesWhatOthersChangeAtTheNextInit) {
    const View view = viewOf(u"<COPIE>1</COPIE>");
    view.field->setValore(u"<COPIE>9</COPIE>");
    EXPECT_EQ(view.print->Copie(), u"1");
    view.print->Init(view.field);
    EXPECT_EQ(view.print->Copie(), u"9");
}

TEST(PrintConfiguration, TakesTheDefaultOfAFieldThatWasNeverSet) {
    View view;
    view.field->setValoreDefault(u"<COPIE>5</COPIE>");
    view.print->Init(view.field);
    EXPECT_EQ(view.print->Copie(), u"5");
    EXPECT_FALSE(view.field->Personalizzato());
}

TEST(PrintConfiguration, MakesItselfAFieldWhereThereIsNone) {
    const auto print = make<CFG_Stampa>();
    EXPECT_EQ(print->Nome(), u"<non definito>");
    const auto made = print->CFGCampo();
    EXPECT_EQ(print->CFGCampo(), made);
    print->setTitolo(u"x");
    EXPECT_EQ(made->Valore(), u"<TITOLO>x</TITOLO>");
    const auto other = make<CFG_Stampa>();
    other->Init({});
    EXPECT_EQ(other->CFGCampo()->Nome(), u"<non definito>");
}

TEST(PrintConfiguration, AttachesNothingByAssignment) {
    const auto print = make<CFG_Stampa>();
    const auto field = make<CFG_Campo>();
    EXPECT_EQ(raisedBy([&] {
                  print->setCFGCampo(field);
                  return 0;
              }),
              errors::kMemberNotFound);
    EXPECT_NE(print->CFGCampo(), field);
    EXPECT_EQ(raisedBy([&] {
                  return test::invoke(*print, u"CFGCampo", InvokeKind::Set, {Variant(field)});
              }),
              errors::kMemberNotFound);
}

// A print layout of a user: added, saved, found again by the next load.
TEST(PrintConfiguration, OfAUserComesBackWithTheNextLoad) {
    const auto connection = test::openConfiguration();
    const auto root = test::sampleRoot();
    root->setActiveConnection(connection);
    {
        const auto field = test::sampleFields(root)->Add(u"Conferma");
        field->setValore(u"<ADD_RUNTIME></ADD_RUNTIME>");
        const auto print = make<CFG_Stampa>();
        print->Init(field);
        print->setTitolo(u"Conferma d\u2019ordine");
        print->setCopie(u"2");
        field->Update();
    }
    root->CaricaCfgPersonalizzati();
    const auto print = make<CFG_Stampa>();
    print->Init(test::sampleFields(root)->Item(u"Conferma"));
    EXPECT_TRUE(print->AddRunTime());
    EXPECT_EQ(print->Titolo(), u"Conferma d\u2019ordine");
    EXPECT_EQ(print->Copie(), u"2");
}

}  // namespace
}  // namespace kap
