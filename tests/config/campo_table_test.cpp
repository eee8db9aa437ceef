// A field and its row of the configuration table.
#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "config/sample_tree.hpp"
#include "support/recording_database.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::addRow;
using test::openConfiguration;
using test::raisedBy;
using test::rowsOf;
using test::sampleFields;
using test::sampleRoot;

template <class Action>
std::int32_t raises(Action&& action) {
    return raisedBy([&] {
        action();
        return 0;
    });
}

const std::vector<std::string> kColumns = {"Gruppo", "Applicazione", "Procedura", "Modulo",
                                           "Campo",  "Valore",       "Flag"};

TEST(FieldStatements, SelectTheRowOfTheGroup) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setActiveConnection(database.connection());
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValore(u"3");
    database.answer(kColumns, {});
    field->Update();
    ASSERT_EQ(database.statements().size(), 1U);
    EXPECT_EQ(database.statements()[0],
              " SELECT * FROM KAP_CFG  WHERE Gruppo='UFFICIO' and Applicazione='Vendite' and "
              "Procedura='Ordini' and Modulo='Stampa' and Campo='Copie'");
    EXPECT_EQ(database.writtenRows(),
              std::vector<std::string>{
                  "insert T Gruppo=UFFICIO Applicazione=Vendite Procedura=Ordini Modulo=Stampa "
                  "Campo=Copie Valore=3 Flag=0"});
}

TEST(FieldStatements, DeleteTheRowOfTheGroup) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setActiveConnection(database.connection());
    root->setNomeTabella(u"ABC_KAP_CFG");
    database.answerNothing();
    sampleFields(root)->Add(u"Copie")->ResetDefault(true);
    ASSERT_EQ(database.statements().size(), 1U);
    EXPECT_EQ(database.statements()[0],
              " DELETE ABC_KAP_CFG  WHERE Gruppo='UFFICIO' and Applicazione='Vendite' and "
              "Procedura='Ordini' and Modulo='Stampa' and Campo='Copie'");
}

// Deliberate: names are not escaped.
TEST(FieldStatements, HoldNamesAsTheyAre) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setActiveConnection(database.connection());
    root->setGruppo(u"L'UFFICIO");
    database.answerNothing();
    sampleFields(root)->Add(u" Copie ")->ResetDefault(true);
    EXPECT_EQ(database.statements()[0],
              " DELETE KAP_CFG  WHERE Gruppo='L'UFFICIO' and Applicazione='Vendite' and "
              "Procedura='Ordini' and Modulo='Stampa' and Campo=' Copie '");
}

TEST(FieldStatements, TakeTheirPartsFromThePath) {
    test::RecordingDatabase database;
    const auto root = make<CFG_Applicazioni>();
    root->setGruppo(u"G");
    root->setActiveConnection(database.connection());
    const auto field =
        root->Add(u"A\\B")->Procedure()->Add(u"P")->Moduli()->Add(u"M")->Campi()->Add(u"C");
    database.answerNothing();
    field->ResetDefault(true);
    EXPECT_EQ(database.statements()[0],
              " DELETE KAP_CFG  WHERE Gruppo='G' and Applicazione='A' and Procedura='B' and "
              "Modulo='P' and Campo='M'");
}

TEST(FieldStatements, AreNotSentForAResetInMemory) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setActiveConnection(database.connection());
    sampleFields(root)->Add(u"Copie")->ResetDefault(false);
    EXPECT_TRUE(database.statements().empty());
}

TEST(FieldInTheTable, IsAddedOnceAndChangedAfterwards) {
    const auto connection = openConfiguration();
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValore(u"3");
    field->Update();
    EXPECT_EQ(rowsOf(connection), "UFFICIO Vendite Ordini Stampa Copie=3/0\n");
    EXPECT_TRUE(field->Personalizzato());
    field->setValore(u"4");
    field->setFlag(u"1");
    field->Update();
    EXPECT_EQ(rowsOf(connection), "UFFICIO Vendite Ordini Stampa Copie=4/1\n");
}

TEST(FieldInTheTable, IsWrittenWithItsDefaultsWhenNothingIsSet) {
    const auto connection = openConfiguration();
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValoreDefault(u"1");
    field->Update();
    EXPECT_EQ(rowsOf(connection), "UFFICIO Vendite Ordini Stampa Copie=1/0\n");
    EXPECT_FALSE(field->Personalizzato());
}

TEST(FieldInTheTable, KeepsWhatOtherColumnsHold) {
    const auto connection = openConfiguration();
    addRow(connection, "UFFICIO", "Copie", "1");
    connection->Execute(u"UPDATE KAP_CFG SET Note = 'nota'");
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValore(u"2");
    field->Update();
    EXPECT_EQ(test::valueOf(connection, u"SELECT Note FROM KAP_CFG").as<String>(), u"nota");
    EXPECT_EQ(rowsOf(connection), "UFFICIO Vendite Ordini Stampa Copie=2/0\n");
}

TEST(FieldInTheTable, ChangesOnlyTheFirstOfSeveralRows) {
    const auto connection = openConfiguration();
    addRow(connection, "UFFICIO", "Copie", "1");
    addRow(connection, "UFFICIO", "Copie", "2");
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValore(u"3");
    field->Update();
    EXPECT_EQ(rowsOf(connection),
              "UFFICIO Vendite Ordini Stampa Copie=2/0\n"
              "UFFICIO Vendite Ordini Stampa Copie=3/0\n");
}

TEST(FieldInTheTable, DeletesOnlyTheRowOfItsGroup) {
    const auto connection = openConfiguration();
    addRow(connection, "DEFAULT", "Copie", "1");
    addRow(connection, "UFFICIO", "Copie", "2");
    addRow(connection, "UFFICIO", "Stampante", "HP");
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValore(u"2");
    field->ResetDefault(true);
    EXPECT_EQ(rowsOf(connection),
              "DEFAULT Vendite Ordini Stampa Copie=1/0\n"
              "UFFICIO Vendite Ordini Stampa Stampante=HP/0\n");
    EXPECT_EQ(field->Valore(), u"");
    EXPECT_FALSE(field->Personalizzato());
}

TEST(FieldInTheTable, IsGoneAlsoWhenItsDefaultIsNotAllowed) {
    const auto connection = openConfiguration();
    addRow(connection, "UFFICIO", "Copie", "2");
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"Copie");
    field->setValore(u"2");
    field->setValoreDefault(u"9");
    field->setValoriConsentiti(u"1|2");
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), errors::kObjectError);
    EXPECT_EQ(rowsOf(connection), "");
    EXPECT_EQ(field->Valore(), u"2");
    EXPECT_TRUE(field->Personalizzato());
}

TEST(FieldInTheTable, FailsOnANameWithAnApostrophe) {
    const auto connection = openConfiguration();
    const auto root = sampleRoot();
    root->setActiveConnection(connection);
    const auto field = sampleFields(root)->Add(u"L'altro");
    field->setValore(u"1");
    EXPECT_EQ(raises([&] { field->Update(); }), ado::errors::kCommandText);
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), ado::errors::kCommandText);
    EXPECT_EQ(rowsOf(connection), "");
}

TEST(FieldInTheTable, PassesTheDatabasesErrorsOn) {
    const auto root = sampleRoot();
    root->setActiveConnection(test::openMemory());
    const auto field = sampleFields(root)->Add(u"Copie");
    EXPECT_EQ(raises([&] { field->Update(); }), test::unknownTableNumber());
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), test::unknownTableNumber());
    root->setActiveConnection({});
    EXPECT_EQ(raises([&] { field->Update(); }), ado::errors::kInvalidConnection);
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), ado::errors::kInvalidConnection);
    root->setActiveConnection(make<ado::Connection>());
    EXPECT_EQ(raises([&] { field->Update(); }), ado::errors::kInvalidConnection);
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), ado::errors::kInvalidConnection);
}

TEST(FieldInTheTable, NeedsEveryParentUpToTheRoot) {
    const auto root = sampleRoot();
    root->setActiveConnection(openConfiguration());
    const auto field = sampleFields(root)->Add(u"Copie");
    root->Item(u"Vendite")->setParent({});
    EXPECT_EQ(raises([&] { field->Update(); }), errors::kObjectNotSet);
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), errors::kObjectNotSet);
}

TEST(FieldInTheTable, NeedsAllFivePartsOfThePath) {
    const auto root = sampleRoot();
    root->setActiveConnection(openConfiguration());
    const auto field = sampleFields(root)->Add(u"Copie");
    // A collection in the place of the module: the root is seven steps away, but a name is missing.
    const auto procedure = root->Item(u"Vendite")->Procedure()->Item(u"Ordini");
    const auto between = make<CFG_Campi>();
    between->setParent(Ref<Object>(procedure->Moduli()));
    field->Parent()->setParent(Ref<Object>(between));
    EXPECT_EQ(field->Path(), u"UFFICIO\\Vendite\\Ordini\\Copie");
    EXPECT_EQ(raises([&] { field->Update(); }), errors::kSubscriptOutOfRange);
    EXPECT_EQ(raises([&] { field->ResetDefault(true); }), errors::kSubscriptOutOfRange);
}

}  // namespace
}  // namespace kap
