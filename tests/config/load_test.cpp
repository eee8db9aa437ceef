#include <gtest/gtest.h>

#include "config/sample_tree.hpp"
#include "support/prepared_tables.hpp"
#include "support/recording_database.hpp"

namespace kap {
namespace {

using test::addRow;
using test::openConfiguration;
using test::rowsOf;
using test::sampleFields;
using test::sampleRoot;

const std::vector<std::string> kLoadedColumns = {"Ordina", "Gruppo", "Applicazione", "Procedura",
                                                 "Modulo", "Campo",  "Valore",       "Flag"};

// What a field holds: "VALUE/FLAG GROUP customised".
std::string shownField(const Ref<CFG_Campo>& field) {
    return field->Valore().utf8() + "/" + field->Flag().utf8() + " " + field->Gruppo().utf8() +
           (field->Personalizzato() ? " customised" : "");
}

// The sample tree on a database of its own, with the declared fields Copie (default 1) and
// Stampante.
class Load : public testing::Test {
protected:
    Load() {
        root_->setActiveConnection(connection_);
        sampleFields(root_)->Add(u"Copie")->setValoreDefault(u"1");
        sampleFields(root_)->Add(u"Stampante");
    }

    [[nodiscard]] std::string field(const String& name) const {
        return shownField(sampleFields(root_)->Item(name));
    }

    Ref<ado::Connection> connection_ = openConfiguration();
    Ref<CFG_Applicazioni> root_ = sampleRoot();
};

TEST(LoadStatement, ReadsTheDefaultsBeforeTheGroupsRows) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->Add(u"Acquisti");
    root->setActiveConnection(database.connection());
    database.answer(kLoadedColumns, {});
    root->CaricaCfgPersonalizzati();
    ASSERT_EQ(database.statements().size(), 1U);
    EXPECT_EQ(database.statements()[0],
              " (  SELECT '0' as Ordina ,* FROM  KAP_CFG  WHERE Gruppo='DEFAULT' and Applicazione "
              "IN ('Vendite','Acquisti') UNION  SELECT '1' as Ordina ,* FROM  KAP_CFG  WHERE "
              "Gruppo='UFFICIO' and Applicazione IN ('Vendite','Acquisti') )  ORDER BY Ordina ");
}

TEST(LoadStatement, ReadsOnlyTheDefaultsForNoGroupAndForTheirOwn) {
    for (const char16_t* group : {u"", u"DEFAULT"}) {
        test::RecordingDatabase database;
        const auto root = sampleRoot();
        root->setGruppo(group);
        root->setNomeTabella(u"ABC_CFG");
        root->setActiveConnection(database.connection());
        database.answer(kLoadedColumns, {});
        root->CaricaCfgPersonalizzati();
        ASSERT_EQ(database.statements().size(), 1U);
        EXPECT_EQ(database.statements()[0],
                  " (  SELECT '0' as Ordina ,* FROM  ABC_CFG  WHERE Gruppo='DEFAULT' and "
                  "Applicazione IN ('Vendite') )  ORDER BY Ordina ");
    }
}

// Deliberate: the reserved name is compared exactly, and a group "default" is one like any other.
TEST(LoadStatement, ReadsTheGroupWithTheReservedNameInOtherLetters) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setGruppo(u"default");
    root->setActiveConnection(database.connection());
    database.answer(kLoadedColumns, {});
    root->CaricaCfgPersonalizzati();
    EXPECT_NE(database.statements()[0].find(" UNION "), std::string::npos);
}

TEST(LoadStatement, HoldsNamesAsTheyAre) {
    test::RecordingDatabase database;
    const auto root = make<CFG_Applicazioni>();
    root->Add(u"L'Altra");
    root->setActiveConnection(database.connection());
    database.answer(kLoadedColumns, {});
    root->CaricaCfgPersonalizzati();
    EXPECT_EQ(database.statements()[0],
              " (  SELECT '0' as Ordina ,* FROM  KAP_CFG  WHERE Gruppo='DEFAULT' and Applicazione "
              "IN ('L'Altra') )  ORDER BY Ordina ");
}

TEST(LoadStatement, IsOneForTheWholeTree) {
    test::RecordingDatabase database;
    const auto root = sampleRoot();
    root->setActiveConnection(database.connection());
    const auto fields = sampleFields(root);
    std::vector<test::RecordingDatabase::Row> rows;
    for (int i = 0; i < 500; ++i) {
        const std::string name = "C" + std::to_string(i);
        fields->Add(name);
        rows.push_back({"0", "DEFAULT", "Vendite", "Ordini", "Stampa", name, "v" + name, "1"});
    }
    database.answer(kLoadedColumns, rows);
    root->CaricaCfgPersonalizzati();
    EXPECT_EQ(database.statements().size(), 1U);
    EXPECT_EQ(shownField(fields->Item(u"C499")), "vC499/1 DEFAULT customised");
}

TEST_F(Load, LetsTheGroupsRowWinOverTheDefaultRow) {
    addRow(connection_, "UFFICIO", "Copie", "3", "1");
    addRow(connection_, "DEFAULT", "Copie", "2");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "3/1 UFFICIO customised");
}

TEST_F(Load, CustomisesByADefaultRowToo) {
    addRow(connection_, "DEFAULT", "Copie", "2");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "2/0 DEFAULT customised");
}

TEST_F(Load, LeavesFieldsWithoutARowAtTheirDefaults) {
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "1/0 ");
    EXPECT_EQ(field(u"Stampante"), "/0 ");
}

TEST_F(Load, ResetsWhatNoRowHoldsAnyMore) {
    addRow(connection_, "UFFICIO", "Copie", "3", "1");
    root_->CaricaCfgPersonalizzati();
    connection_->Execute(u"DELETE FROM KAP_CFG");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "1/0 ");
}

TEST_F(Load, ResetsWhatTheProgramAssigned) {
    sampleFields(root_)->Item(u"Copie")->setValore(u"7");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "1/0 ");
}

TEST_F(Load, IgnoresOtherGroups) {
    addRow(connection_, "NEGOZIO", "Copie", "5");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "1/0 ");
}

TEST_F(Load, ReadsOnlyDefaultRowsWithoutAGroup) {
    addRow(connection_, "DEFAULT", "Copie", "2");
    addRow(connection_, "UFFICIO", "Copie", "3");
    for (const char16_t* group : {u"", u"DEFAULT"}) {
        root_->setGruppo(group);
        root_->CaricaCfgPersonalizzati();
        EXPECT_EQ(field(u"Copie"), "2/0 DEFAULT customised");
    }
}

TEST_F(Load, NeverReadsRowsOfApplicationsOutsideTheTree) {
    connection_->Execute(
        u"INSERT INTO KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag) "
        u"VALUES ('DEFAULT', 'Magazzino', 'X', 'Y', 'Z', '1', '0')");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "1/0 ");
}

TEST_F(Load, FindsNamesIgnoringCase) {
    KAP_NEEDS_DIALECT(connection_, "texts are compared with their case");
    connection_->Execute(
        u"INSERT INTO KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag) "
        u"VALUES ('ufficio', 'VENDITE', 'ordini', 'STAMPA', 'copie', '9', '0')");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "9/0 ufficio customised");
    EXPECT_EQ(sampleFields(root_)->Item(u"Copie")->Nome(), u"Copie");
}

TEST_F(Load, MakesTheFieldsThatWereAddedAtRunTime) {
    addRow(connection_, "UFFICIO", "Conferma",
           "<TITOLO>Conferma</TITOLO><ADD_RUNTIME></ADD_RUNTIME>", "1");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Conferma"),
              "<TITOLO>Conferma</TITOLO><ADD_RUNTIME></ADD_RUNTIME>/1 UFFICIO customised");
    EXPECT_EQ(sampleFields(root_)->Item(u"Conferma")->Path(),
              u"UFFICIO\\Vendite\\Ordini\\Stampa\\Conferma");
    EXPECT_EQ(sampleFields(root_)->Count(), 3);
}

TEST_F(Load, MakesThemAnewEveryTime) {
    addRow(connection_, "UFFICIO", "Uno", "<ADD_RUNTIME>1</ADD_RUNTIME>");
    addRow(connection_, "UFFICIO", "Due", "<ADD_RUNTIME>1</ADD_RUNTIME>");
    addRow(connection_, "UFFICIO", "Tre", "<ADD_RUNTIME>1</ADD_RUNTIME>");
    root_->CaricaCfgPersonalizzati();
    const auto before = sampleFields(root_)->Item(u"Uno");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(sampleFields(root_)->Count(), 5);
    EXPECT_NE(sampleFields(root_)->Item(u"Uno"), before);
    EXPECT_EQ(before->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa\\Uno");
    connection_->Execute(u"DELETE FROM KAP_CFG WHERE Campo = 'Due'");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(sampleFields(root_)->Count(), 4);
}

// A reset field has lost the mark that says that it is not the program's.
TEST_F(Load, KeepsAFieldMadeAtRunTimeThatWasReset) {
    addRow(connection_, "UFFICIO", "Uno", "<ADD_RUNTIME>1</ADD_RUNTIME>");
    root_->CaricaCfgPersonalizzati();
    sampleFields(root_)->Item(u"Uno")->ResetDefault(true);
    EXPECT_EQ(rowsOf(connection_), "");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Uno"), "/0 ");
}

TEST_F(Load, RemovesAFieldWhoseValueWasMarkedMeanwhile) {
    sampleFields(root_)->Item(u"Stampante")->setValore(u"<ADD_RUNTIME></ADD_RUNTIME>");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(sampleFields(root_)->Count(), 1);
}

TEST_F(Load, ResetsEveryFieldOfAModuleWhoseNeighboursGo) {
    for (int i = 0; i < 10; ++i) {
        addRow(connection_, "DEFAULT", "R" + std::to_string(i), "<ADD_RUNTIME></ADD_RUNTIME>");
    }
    root_->CaricaCfgPersonalizzati();
    sampleFields(root_)->Add(u"Ultimo")->setValore(u"x");
    connection_->Execute(u"DELETE FROM KAP_CFG");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(sampleFields(root_)->Count(), 3);
    EXPECT_EQ(field(u"Ultimo"), "/0 ");
}

TEST_F(Load, ChecksWhatItReadsAgainstTheLists) {
    sampleFields(root_)->Item(u"Copie")->setValoriConsentiti(u"1|2|3");
    addRow(connection_, "DEFAULT", "Copie", "<nessuno>");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "/0 DEFAULT customised");
}

TEST_F(Load, ReadsTextsOfAnyLanguage) {
    addRow(connection_, "DEFAULT", "Stampante", "Città – 東京 🖨");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Stampante"), "Città – 東京 🖨/0 DEFAULT customised");
}

TEST_F(Load, ReadsATableWithMoreColumnsInAnyOrder) {
    kap::test::prepare(
        connection_,
        u"CREATE TABLE ALTRA_CFG (Id int identity PRIMARY KEY, Flag varchar(10), "
        u"Valore varchar(max), Campo varchar(30), Modulo varchar(30), Procedura varchar(30), "
        u"Applicazione varchar(30), Gruppo varchar(30), AggID timestamp);"
        u"INSERT INTO ALTRA_CFG (Flag, Valore, Campo, Modulo, Procedura, Applicazione, Gruppo) "
        u"VALUES ('1', '8', 'Copie', 'Stampa', 'Ordini', 'Vendite', 'DEFAULT')");
    root_->setNomeTabella(u"ALTRA_CFG");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "8/1 DEFAULT customised");
}

// The whole way round: declared, loaded, changed, saved, loaded again, reset.
TEST_F(Load, BringsBackWhatAFieldSaved) {
    root_->CaricaCfgPersonalizzati();
    sampleFields(root_)->Item(u"Copie")->setValore(u"4");
    sampleFields(root_)->Item(u"Copie")->Update();
    const auto other = sampleRoot();
    other->setActiveConnection(connection_);
    sampleFields(other)->Add(u"Copie")->setValoreDefault(u"1");
    other->CaricaCfgPersonalizzati();
    EXPECT_EQ(shownField(sampleFields(other)->Item(u"Copie")), "4/0 UFFICIO customised");
    sampleFields(other)->Item(u"Copie")->ResetDefault(true);
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ(field(u"Copie"), "1/0 ");
    EXPECT_EQ(rowsOf(connection_), "");
}

}  // namespace
}  // namespace kap
