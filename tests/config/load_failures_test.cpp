// How a load ends that cannot be finished, and that the next one works.
#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "config/sample_tree.hpp"
#include "support/prepared_tables.hpp"
#include "support/recording_database.hpp"

namespace kap {
namespace {

using test::addRow;
using test::openConfiguration;
using test::sampleFields;
using test::sampleRoot;

// The table keeps no order of its own within a group: the tests that look at what was loaded before
// a failure have it among the group's rows, behind a default row.
class FailedLoad : public testing::Test {
protected:
    FailedLoad() {
        root_->setActiveConnection(connection_);
        sampleFields(root_)->Add(u"Copie")->setValoreDefault(u"1");
        addRow(connection_, "DEFAULT", "Copie", "2");
    }

    void addRowOf(const std::string& place, const std::string& value = "v") {
        connection_->Execute(
            "INSERT INTO KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag) "
            "VALUES ('UFFICIO', 'Vendite', " +
            place + ", '" + value + "', '0')");
    }

    // The error of a load: "NUMBER DESCRIPTION", or "loaded".
    std::string load() {
        try {
            root_->CaricaCfgPersonalizzati();
        } catch (const AutomationError& error) {
            return std::to_string(error.number()) + " " + error.description().utf8();
        }
        return "loaded";
    }
    std::int32_t loadError() {
        try {
            root_->CaricaCfgPersonalizzati();
        } catch (const AutomationError& error) {
            return error.number();
        }
        return 0;
    }

    [[nodiscard]] std::string copies() const {
        const auto field = sampleFields(root_)->Item(u"Copie");
        return field->Valore().utf8() + " " + field->Gruppo().utf8();
    }

    // The rows that came before the failure are loaded; without its row the next load works.
    void expectPartlyLoadedAndNextWorking() {
        EXPECT_EQ(copies(), "2 DEFAULT");
        connection_->Execute(u"DELETE FROM KAP_CFG WHERE Gruppo = 'UFFICIO'");
        EXPECT_EQ(load(), "loaded");
        EXPECT_EQ(copies(), "2 DEFAULT");
        EXPECT_EQ(sampleFields(root_)->Count(), 1);
    }

    Ref<ado::Connection> connection_ = openConfiguration();
    Ref<CFG_Applicazioni> root_ = sampleRoot();
};

TEST_F(FailedLoad, OnARowForAFieldThatIsNotDeclared) {
    addRowOf("'Ordini', 'Stampa', 'Altro'");
    EXPECT_EQ(load(), "-2147221503 CFG   UFFICIO\\Vendite\\Ordini\\Stampa\\Altro  non  trovato");
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnARowForAModuleThatIsNotDeclared) {
    addRowOf("'Ordini', 'Video', 'Copie'");
    EXPECT_EQ(load(), "-2147221503 CFG   UFFICIO\\Vendite\\Ordini\\Video  non  trovato");
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnARowForAProcedureThatIsNotDeclared) {
    addRowOf("'Bolle', 'Stampa', 'Copie'");
    EXPECT_EQ(load(), "-2147221503 CFG   UFFICIO\\Vendite\\Bolle  non  trovato");
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnARunTimeFieldOfAModuleThatIsNotDeclared) {
    addRowOf("'Ordini', 'Video', 'Nuovo'", "<ADD_RUNTIME></ADD_RUNTIME>");
    EXPECT_EQ(load(), "-2147221503 CFG   UFFICIO\\Vendite\\Ordini\\Video  non  trovato");
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnAValueThatIsRefused) {
    sampleFields(root_)->Item(u"Copie")->setValoriConsentiti(u"1|2|3");
    addRow(connection_, "UFFICIO", "Copie", "9");
    EXPECT_EQ(load(), "-2147221503 Valore 9 non consentito su CFG Copie");
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnAFlagThatIsRefusedBehindItsValue) {
    addRow(connection_, "UFFICIO", "Copie", "3", "9");
    EXPECT_EQ(load(), "-2147221503 Valore 9 non consentito su CFG Copie");
    EXPECT_EQ(copies(), "3 DEFAULT");
    connection_->Execute(u"DELETE FROM KAP_CFG WHERE Gruppo = 'UFFICIO'");
    EXPECT_EQ(load(), "loaded");
    EXPECT_EQ(copies(), "2 DEFAULT");
}

TEST_F(FailedLoad, OnASecondRowForARunTimeField) {
    addRow(connection_, "DEFAULT", "Nuovo", "<ADD_RUNTIME></ADD_RUNTIME>");
    addRow(connection_, "UFFICIO", "Nuovo", "<ADD_RUNTIME>1</ADD_RUNTIME>");
    EXPECT_EQ(loadError(), errors::kDuplicateKey);
    EXPECT_EQ(sampleFields(root_)->Item(u"Nuovo")->Gruppo(), u"DEFAULT");
    connection_->Execute(u"DELETE FROM KAP_CFG WHERE Campo = 'Nuovo'");
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnNullInAColumn) {
    for (const char* column : {"Valore", "Flag", "Procedura", "Modulo", "Campo"}) {
        addRow(connection_, "UFFICIO", "Copie", "3");
        kap::test::prepare(connection_, String("UPDATE KAP_CFG SET ") + String(column).view() +
                                            u" = NULL WHERE Gruppo = 'UFFICIO'");
        EXPECT_EQ(loadError(), errors::kInvalidUseOfNull) << column;
        connection_->Execute(u"DELETE FROM KAP_CFG WHERE Gruppo = 'UFFICIO'");
        EXPECT_EQ(load(), "loaded");
    }
}

TEST(FailedLoadOfRows, OnNullInTheGroupBehindValueAndFlag) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setActiveConnection(database.connection());
    const auto field = sampleFields(root)->Add(u"Copie");
    database.answer(
        {"Ordina", "Gruppo", "Applicazione", "Procedura", "Modulo", "Campo", "Valore", "Flag"},
        {{"1", std::nullopt, "Vendite", "Ordini", "Stampa", "Copie", "3", "1"}});
    try {
        root->CaricaCfgPersonalizzati();
        ADD_FAILURE() << "nothing was raised";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kInvalidUseOfNull);
    }
    EXPECT_EQ(field->Valore(), u"3");
    EXPECT_EQ(field->Flag(), u"1");
    EXPECT_EQ(field->Gruppo(), u"");
}

TEST_F(FailedLoad, OnAMarkThatIsNeverClosed) {
    addRow(connection_, "UFFICIO", "Copie", "<ADD_RUNTIME>");
    EXPECT_EQ(loadError(), errors::kInvalidArgument);
    expectPartlyLoadedAndNextWorking();
}

TEST_F(FailedLoad, OnAModuleThatIsNotDeclaredBeforeTheValueIsLookedAt) {
    connection_->Execute(
        u"INSERT INTO KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag) "
        u"VALUES ('UFFICIO', 'Vendite', 'Ordini', 'ZZ', 'Copie', '<ADD_RUNTIME>', '0')");
    EXPECT_EQ(load(), "-2147221503 CFG   UFFICIO\\Vendite\\Ordini\\ZZ  non  trovato");
}

TEST_F(FailedLoad, WithoutAnyApplication) {
    root_->Delete(u"Vendite");
    EXPECT_EQ(loadError(), ado::errors::kCommandText);
    root_->Add(u"Vendite")
        ->Procedure()
        ->Add(u"Ordini")
        ->Moduli()
        ->Add(u"Stampa")
        ->Campi()
        ->Add(u"Copie");
    EXPECT_EQ(load(), "loaded");
    EXPECT_EQ(copies(), "2 DEFAULT");
}

TEST_F(FailedLoad, WithoutAConnection) {
    sampleFields(root_)->Item(u"Copie")->setValore(u"7");
    root_->setActiveConnection({});
    EXPECT_EQ(loadError(), ado::errors::kInvalidConnection);
    EXPECT_EQ(copies(), "1 ");  // the tree was reset before
    root_->setActiveConnection(connection_);
    EXPECT_EQ(load(), "loaded");
    EXPECT_EQ(copies(), "2 DEFAULT");
}

TEST_F(FailedLoad, OnAConnectionThatIsClosed) {
    root_->setActiveConnection(make<ado::Connection>());
    EXPECT_EQ(loadError(), ado::errors::kInvalidConnection);
}

TEST_F(FailedLoad, OnATableThatIsNotThere) {
    root_->setNomeTabella(u"MANCA_CFG");
    EXPECT_EQ(loadError(), test::unknownTableNumber());
    root_->setNomeTabella(u"KAP_CFG");
    EXPECT_EQ(load(), "loaded");
}

TEST_F(FailedLoad, OnAnApplicationWithAnApostrophe) {
    root_->Add(u"L'altra");
    EXPECT_EQ(loadError(), ado::errors::kCommandText);
    root_->Delete(u"L'altra");
    EXPECT_EQ(load(), "loaded");
}

TEST_F(FailedLoad, OnATreeThatLacksACollection) {
    root_->Item(u"Vendite")->setProcedure({});
    EXPECT_EQ(loadError(), errors::kObjectNotSet);
}

TEST_F(FailedLoad, OnAnElementOfAnotherClass) {
    sampleFields(root_)->Collezione()->Add(u"testo", u"Testo");
    EXPECT_EQ(loadError(), errors::kTypeMismatch);
    sampleFields(root_)->Collezione()->Remove(u"Testo");
    EXPECT_EQ(load(), "loaded");
}

TEST_F(FailedLoad, OnADefaultThatIsNotAllowed) {
    sampleFields(root_)->Item(u"Copie")->setValoriConsentiti(u"2|3");
    EXPECT_EQ(load(), "-2147221503 Valore 1 non consentito su CFG Copie");
}

}  // namespace
}  // namespace kap
