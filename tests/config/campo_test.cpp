#include <kaputil/config/cfg_campo.hpp>

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>

#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;

// The description of the error that an assignment raises, with number and source when they are not
// the usual ones; empty when it is accepted.
template <class Action>
std::string refusal(Action&& action) {
    try {
        action();
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), -2147221503);
        EXPECT_EQ(error.source(), u"");
        return error.description().utf8();
    }
    return {};
}

std::string refusalOfValue(const Ref<CFG_Campo>& field, const String& value) {
    return refusal([&] { field->setValore(value); });
}

std::string refusalOfFlag(const Ref<CFG_Campo>& field, const String& flag) {
    return refusal([&] { field->setFlag(flag); });
}

Ref<CFG_Campo> fieldAllowing(const String& values) {
    auto field = make<CFG_Campo>();
    field->setNome(u"Copie");
    field->setValoriConsentiti(values);
    return field;
}

TEST(ConfigurationField, BeginsWithNothingSet) {
    const auto field = make<CFG_Campo>();
    EXPECT_EQ(field->Nome(), u"<non definito>");
    EXPECT_EQ(field->Note(), u"");
    EXPECT_EQ(field->ValoriConsentiti(), u"");
    EXPECT_EQ(field->FlagConsentiti(), u"0|1");
    EXPECT_EQ(field->Gruppo(), u"");
    EXPECT_EQ(field->ValoreDefault(), u"<nessuno>");
    EXPECT_FALSE(field->Obbligatorio());
    EXPECT_FALSE(field->Personalizzato());
    EXPECT_FALSE(field->Parent());
}

TEST(ConfigurationField, ReadsItsDefaultsWhenNothingIsSet) {
    const auto field = make<CFG_Campo>();
    EXPECT_EQ(field->FlagDefault(), u"<non definito>");
    EXPECT_EQ(field->Valore(), u"<nessuno>");
    EXPECT_EQ(field->Flag(), u"0");
    EXPECT_EQ(field->FlagDefault(), u"0");
    EXPECT_FALSE(field->Personalizzato());
}

TEST(ConfigurationField, KeepsTheDefaultThatWasReadFirst) {
    const auto field = make<CFG_Campo>();
    field->setValoreDefault(u"uno");
    EXPECT_EQ(field->Valore(), u"uno");
    field->setValoreDefault(u"due");
    EXPECT_EQ(field->Valore(), u"uno");
    const auto other = make<CFG_Campo>();
    other->setFlagDefault(u"1");
    EXPECT_EQ(other->Flag(), u"1");
    other->setFlagDefault(u"0");
    EXPECT_EQ(other->Flag(), u"1");
}

// Deliberate: what is read is the flag, what is written the default flag.
TEST(ConfigurationField, ReadsTheStoredFlagAsItsDefaultFlag) {
    const auto field = make<CFG_Campo>();
    field->setFlagDefault(u"1");
    EXPECT_EQ(field->FlagDefault(), u"<non definito>");
    field->setFlag(u"0");
    EXPECT_EQ(field->FlagDefault(), u"0");
    field->ResetDefault(false);
    EXPECT_EQ(field->FlagDefault(), u"1");
}

TEST(ConfigurationField, IsCustomisedByAnyAssignment) {
    const auto field = make<CFG_Campo>();
    field->setValore(u"3");
    EXPECT_TRUE(field->Personalizzato());
    EXPECT_EQ(field->Valore(), u"3");
    const auto flagged = make<CFG_Campo>();
    flagged->setFlag(u"1");
    EXPECT_TRUE(flagged->Personalizzato());
    const auto same = make<CFG_Campo>();
    same->setValore(same->Valore());
    EXPECT_TRUE(same->Personalizzato());
}

TEST(ConfigurationField, TakesWhatIsAllowedAndRefusesTheRest) {
    const auto field = fieldAllowing(u"A|B");
    EXPECT_EQ(refusalOfValue(field, u"A"), "");
    EXPECT_TRUE(field->Personalizzato());
    EXPECT_EQ(refusalOfValue(field, u"C"), "Valore C non consentito su CFG Copie");
    EXPECT_EQ(field->Valore(), u"A");
    EXPECT_EQ(refusalOfValue(field, u"a"), "Valore a non consentito su CFG Copie");
}

TEST(ConfigurationField, StaysAsItWasWhenItRefuses) {
    const auto field = fieldAllowing(u"A|B");
    EXPECT_EQ(refusalOfValue(field, u"C"), "Valore C non consentito su CFG Copie");
    EXPECT_FALSE(field->Personalizzato());
    EXPECT_EQ(field->Valore(), u"<nessuno>");
}

// Deliberate: a text anywhere in the list is allowed.
TEST(ConfigurationField, TakesAnyPartOfTheList) {
    for (const char16_t* text : {u"0", u"1", u"|", u"0|1", u"1|", u"|0", u"|0|1", u"0|1|", u""}) {
        EXPECT_EQ(refusalOfFlag(make<CFG_Campo>(), text), "") << String(text).utf8();
    }
    for (const char16_t* text : {u"2", u"01", u"|0|1|", u" 0", u"||"}) {
        EXPECT_EQ(refusalOfFlag(make<CFG_Campo>(), text),
                  "Valore " + String(text).utf8() + " non consentito su CFG <non definito>");
    }
}

TEST(ConfigurationField, StoresNoneAsEmptyOnlyWhereThereIsAList) {
    const auto listed = fieldAllowing(u"A|B");
    listed->setValore(u"<nessuno>");
    EXPECT_EQ(listed->Valore(), u"");
    EXPECT_TRUE(listed->Personalizzato());
    const auto open = fieldAllowing(u"");
    open->setValore(u"<nessuno>");
    EXPECT_EQ(open->Valore(), u"<nessuno>");
    const auto flagged = make<CFG_Campo>();
    flagged->setFlag(u"<nessuno>");
    EXPECT_EQ(flagged->Flag(), u"");
}

TEST(ConfigurationField, ReadsTheDefaultWhenTheMarkItselfIsAssigned) {
    const auto field = make<CFG_Campo>();
    field->setValoreDefault(u"uno");
    field->setValore(u"<non definito>");
    EXPECT_TRUE(field->Personalizzato());
    EXPECT_EQ(field->Valore(), u"uno");
    field->setValore(u"<NON DEFINITO>");
    EXPECT_EQ(field->Valore(), u"<NON DEFINITO>");
}

TEST(ConfigurationField, DoesNotCheckAgainWhatItHolds) {
    const auto field = make<CFG_Campo>();
    field->setValore(u"C");
    field->setValoriConsentiti(u"A|B");
    EXPECT_EQ(field->Valore(), u"C");
}

TEST(ConfigurationField, GoesBackToItsDefaults) {
    const auto field = fieldAllowing(u"A|B");
    field->setValoreDefault(u"B");
    field->setFlagDefault(u"1");
    field->setValore(u"A");
    field->setFlag(u"0");
    field->setGruppo(u"UFFICIO");
    field->ResetDefault(false);
    EXPECT_EQ(field->Valore(), u"B");
    EXPECT_EQ(field->Flag(), u"1");
    EXPECT_EQ(field->Gruppo(), u"");
    EXPECT_FALSE(field->Personalizzato());
}

TEST(ConfigurationField, BecomesEmptyWhenItHasNoDefault) {
    const auto field = make<CFG_Campo>();
    field->setValore(u"A");
    field->ResetDefault(false);
    EXPECT_EQ(field->Valore(), u"");
    EXPECT_EQ(field->Flag(), u"0");
}

TEST(ConfigurationField, KeepsValueAndMarkWhenItsDefaultIsNotAllowed) {
    const auto field = fieldAllowing(u"A|B");
    field->setValoreDefault(u"C");
    field->setValore(u"A");
    field->setGruppo(u"UFFICIO");
    EXPECT_EQ(refusal([&] { field->ResetDefault(false); }), "Valore C non consentito su CFG Copie");
    EXPECT_EQ(field->Valore(), u"A");
    EXPECT_EQ(field->Gruppo(), u"UFFICIO");
    EXPECT_TRUE(field->Personalizzato());
}

TEST(ConfigurationField, KeepsItsFlagAndMarkWhenTheDefaultFlagIsNotAllowed) {
    const auto field = fieldAllowing(u"A|B");
    field->setValoreDefault(u"B");
    field->setFlagDefault(u"9");
    field->setFlag(u"1");
    EXPECT_EQ(refusal([&] { field->ResetDefault(false); }), "Valore 9 non consentito su CFG Copie");
    EXPECT_EQ(field->Flag(), u"1");
    EXPECT_TRUE(field->Personalizzato());
}

TEST(ConfigurationField, StoresItsOtherProperties) {
    const auto field = make<CFG_Campo>();
    field->setNote(u"nota");
    field->setObbligatorio(true);
    field->setGruppo(u"G");
    field->setFlagConsentiti(u"");
    EXPECT_EQ(field->Note(), u"nota");
    EXPECT_TRUE(field->Obbligatorio());
    EXPECT_EQ(field->Gruppo(), u"G");
    EXPECT_EQ(refusalOfFlag(field, u"X"), "");
}

TEST(ConfigurationField, CannotReachATableOutsideATree) {
    const auto alone = make<CFG_Campo>();
    EXPECT_EQ(raisedBy([&] {
                  alone->Update();
                  return 0;
              }),
              errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] {
                  alone->ResetDefault(true);
                  return 0;
              }),
              errors::kObjectNotSet);
    EXPECT_FALSE(alone->Personalizzato());
}

}  // namespace
}  // namespace kap
