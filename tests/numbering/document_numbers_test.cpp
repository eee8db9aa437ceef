#include <kaputil/numbering/document_numbers.hpp>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "numbering/company.hpp"
#include "support/recording_database.hpp"

namespace kap::numbering::test {
namespace {

constexpr const char* kNoCounter = "Tipo progressivo (FAT/2024) NON trovato in tabella!";

TEST(DocumentNumbers, AreOnlyLookedAtInReadMode) {
    const Company company;
    company.counter("41");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({}), "Long 42");
    EXPECT_EQ(caller.progressivi({}), "Long 42");
    EXPECT_EQ(company.definitive(), "Long 41");
}

TEST(DocumentNumbers, AreTakenOneAfterTheOther) {
    const Company company;
    company.counter("41");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.mode = "S"}), "Long 42");
    EXPECT_EQ(caller.progressivi({.mode = "S"}), "Long 43");
    EXPECT_EQ(company.definitive(), "Long 43");
}

TEST(DocumentNumbers, AreThoseOfTheYear) {
    const Company company;
    company.counter("41");
    company.run("INSERT INTO vtx_TabPro VALUES ('FAT', 2026, 3, 0, 0)");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.mode = "S", .year = 2026}), "Long 4");
    EXPECT_EQ(company.value("SELECT n_Def FROM vtx_TabPro WHERE Anno = 2025"), "Long 41");
}

TEST(DocumentNumbers, PassOverThoseInUse) {
    const Company company;
    company.counter("41");
    company.document(42);
    company.document(43, "NCR");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.handling = 1}), "Long 44");
    EXPECT_EQ(caller.progressivi({.handling = 0}), "Long 42");
    company.reserve(44);
    company.entry(45);
    company.invoice(46);
    EXPECT_EQ(caller.progressivi({.handling = 1}), "Long 46");
}

// The year of the search is the row's own when a number is stored.
TEST(DocumentNumbers, PassOverThoseInUseAlsoBelowZero) {
    const Company company;
    company.counter("41");
    company.document(42);
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.mode = "S", .handling = -1}), "Long 43");
    EXPECT_EQ(company.definitive(), "Long 43");
    company.document(44);
    EXPECT_EQ(caller.progressivi({.handling = -1}), "Long 44");
}

TEST(DocumentNumbers, AreStoredEvenBelowTheLastOneWhenTheCallerHoldsOne) {
    const Company company;
    company.counter("90");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.mode = "S", .number = 57}), "Double 57");
    EXPECT_EQ(company.definitive(), "Long 57");
}

TEST(DocumentNumbers, HaveTheTypeOfTheColumn) {
    const std::string money = shownMoney(Company().connection(), "42");
    for (const auto& [type, expected] :
         {std::pair<const char*, std::string>("smallint", "Integer 42"),
          {"int", "Long 42"},
          {"float", "Double 42"},
          {"decimal(9,0)", "Decimal 42"},
          {"money", money}}) {
        const Company company("int", type);
        company.counter("41");
        Caller caller(company);
        EXPECT_EQ(caller.progressivi({}), expected);
        EXPECT_EQ(caller.progressivi({.counter = "FAT"}), expected);
        EXPECT_EQ(caller.progressivi({.mode = "S"}), expected);
    }
}

TEST(DocumentNumbers, OfANullCounterAreNull) {
    const Company company;
    company.counter("NULL", "NULL", "1");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({}), "Null");
    EXPECT_EQ(caller.progressivi({.sequence = "P"}), "Null");
    EXPECT_EQ(caller.progressivi({.counter = "FAT"}), "Null");
    EXPECT_EQ(caller.old({}), "Null");
}

TEST(DocumentNumbers, OfANullCounterCannotBeSearchedOrStored) {
    const Company company;
    company.counter("NULL");
    Caller caller(company);
    EXPECT_EQ(raisedBy([&] { return caller.progressivi({.handling = 1}); }),
              errors::kInvalidUseOfNull);
    EXPECT_EQ(raisedBy([&] { return caller.progressivi({.mode = "S"}); }),
              errors::kInvalidUseOfNull);
}

// Small whole numbers are among the types whose Nulls the recordset replaces.
TEST(DocumentNumbers, OfANullCounterOfSmallNumbersBeginWithOne) {
    const Company company("int", "smallint");
    company.counter("NULL", "NULL");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({}), "Integer 1");
    EXPECT_EQ(caller.progressivi({.mode = "S"}), "Integer 1");
    EXPECT_EQ(company.definitive(), "Integer 1");
}

TEST(DocumentNumbers, NeedADocumentTypeWithoutACounter) {
    const Company company;
    Caller caller(company);
    for (const bool old : {false, true}) {
        EXPECT_EQ(old ? caller.old({.type = ""}) : caller.progressivi({.type = "", .number = 5}),
                  "Integer -9");
        EXPECT_EQ(caller.message(), "Obbligatorio passare il tipo di documento!");
    }
}

TEST(DocumentNumbers, TellThatADocumentTypeIsNotThere) {
    const Company company;
    company.counter("41");
    Caller caller(company);
    for (const bool old : {false, true}) {
        const Ask ask{.type = "XXX", .number = 5};
        EXPECT_EQ(old ? caller.old(ask) : caller.progressivi(ask), "Double 5");
        EXPECT_EQ(caller.message(), "Tipo Documento non trovato in tabella!");
    }
}

TEST(DocumentNumbers, TellThatACounterIsNotThere) {
    const Company company;
    company.counter("41");
    Caller caller(company);
    for (const bool old : {false, true}) {
        const Ask byType{.mode = "S", .number = 5, .year = 2024};
        EXPECT_EQ(old ? caller.old(byType) : caller.progressivi(byType), "Double 5");
        EXPECT_EQ(caller.message(), kNoCounter);
        const Ask byCode{.mode = "S", .number = 5, .counter = "FAT", .year = 2024};
        EXPECT_EQ(old ? caller.old(byCode) : caller.progressivi(byCode), "Empty");
        EXPECT_EQ(caller.message(), kNoCounter);
    }
}

TEST(DocumentNumbers, ForgetTheFailureOfTheCallBefore) {
    const Company company;
    company.counter("41");
    Caller caller(company);
    caller.progressivi({.type = ""});
    const Ref<CErrore> before = caller.errore();
    caller.progressivi({});
    EXPECT_EQ(caller.message(), "");
    EXPECT_EQ(caller.errore(), before);
}

TEST(DocumentNumbers, LeaveAnotherErrorObjectWhenTheyAreTaken) {
    const Company company;
    company.counter("41");
    Caller caller(company);
    caller.progressivi({});
    const Ref<CErrore> before = caller.errore();
    caller.progressivi({.mode = "S"});
    EXPECT_FALSE(caller.errore() == before);
    EXPECT_EQ(caller.message(), "");
}

TEST(DocumentNumbers, AreFoundThroughAnotherTableOfTypes) {
    const Company company;
    company.counter("41");
    company.run(
        "CREATE TABLE acq_TabDoc (Codice varchar(3), TipoProg varchar(5));"
        "INSERT INTO acq_TabDoc VALUES ('FOR', 'FAT')");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.type = "FOR", .types = "acq_TabDoc"}), "Long 42");
    EXPECT_EQ(caller.old({.type = "FOR", .types = "acq_TabDoc"}), "Long 42");
}

TEST(DocumentNumbers, OpenAConnectionStringInTheCallersVariable) {
    const Company company;
    company.counter("41");
    Variant connection(company.connectionString());
    Ref<CErrore> errore;
    EXPECT_EQ(shown(Progressivi(u"FAI", u"D", u"S", 2025, 0, connection, u"°°°", u"vtx_TabDoc", 0,
                                errore)),
              "Long 42");
    EXPECT_TRUE(connection.isObject());
}

TEST(DocumentNumbers, PassTheDatabasesErrorsOn) {
    const Company company;
    company.run("DROP TABLE vtx_TabPro");
    Caller caller(company);
    EXPECT_EQ(raisedBy([&] { return caller.progressivi({.counter = "FAT"}); }),
              test::unknownTableNumber());
}

TEST(DocumentNumbers, PassTheErrorOfAnExactStoringOn) {
    const Company company("int", "smallint");
    company.counter("41");
    Caller caller(company);
    EXPECT_NE(raisedBy([&] { return caller.progressivi({.mode = "S", .number = 70000}); }), 0);
    EXPECT_EQ(company.definitive(), "Integer 41");
}

TEST(DocumentNumbers, TellThatACounterThatIsFullCannotBeAdvanced) {
    const Company company("int", "smallint");
    company.counter("32767");
    Caller caller(company);
    EXPECT_EQ(caller.old({.mode = "S", .number = 3, .counter = "FAT"}), "Double 3");
    EXPECT_EQ(caller.message(), "Errore di update su tabella progressivi !!!");
    EXPECT_EQ(caller.progressivi({.mode = "S", .number = 3, .counter = "FAT"}), "Double 3");
    EXPECT_EQ(caller.message(), "Errore di update su tabella progressivi !!!");
    EXPECT_EQ(company.definitive(), "Integer 32767");
}

TEST(DocumentNumbers, OfAProvisionalReadDifferBetweenTheMembers) {
    const Company company;
    company.counter("41", "7", "0");
    Caller caller(company);
    EXPECT_EQ(caller.progressivi({.sequence = "P"}), "Long 42");
    EXPECT_EQ(caller.old({.sequence = "P"}), "Long 8");
}

TEST(DocumentNumbers, SendTheirStatementsAsTheyAre) {
    test::RecordingDatabase database;
    database.answer({"Codice", "TipoProg"}, {{"FAI", "F'T"}});
    database.answer({"Codice"}, {});
    database.answer({"Codice"}, {});
    Variant connection(database.connection());
    Ref<CErrore> errore;
    static_cast<void>(
        Progressivi(u"F'I", u"D", u"L", 2025, 0, connection, u"°°°", u"tipi", 0, errore));
    static_cast<void>(Progressivi(u"", u"D", u"L", -5, 0, connection, u"B'L", u"tipi", 0, errore));
    static_cast<void>(
        Progressivi_OLD(u"", u"D", u"L", 2025, 0, connection, u"BOL", u"tipi", errore));
    EXPECT_EQ(database.statements(),
              (std::vector<std::string>{
                  "SELECT * FROM tipi WHERE CODICE ='F'I'",
                  "SELECT * FROM vtx_TabPro WHERE Codice = 'F'T' AND ANNO = 2025",
                  "SELECT TOP 1 * FROM vtx_TabPro WHERE Codice='B'L' AND Anno = -5",
                  "SELECT TOP 1 * FROM vtx_TabPro WHERE Codice='BOL' AND Anno = 2025"}));
}

TEST(DocumentNumbers, LookForReservationsAndCarriersWithTheseStatements) {
    test::RecordingDatabase database;
    database.answer({"Codice", "Anno", "n_Def", "n_Prov"}, {{"FAT ", "2025", "41", "7"}});
    database.answer({"Stato"}, {});
    database.answer({"Tipo", "Numero"}, {});
    Variant connection(database.connection());
    Ref<CErrore> errore;
    static_cast<void>(
        Progressivi(u"", u"D", u"L", 2025, 120000000, connection, u"FAT", u"tipi", 1, errore));
    ASSERT_EQ(database.statements().size(), 3U);
    EXPECT_EQ(database.statements()[1],
              "SELECT TOP 1 * FROM vtx_TabProPrenotati WHERE Codice = 'FAT' AND Anno = '2025' AND "
              "Numero = '120000000'");
    EXPECT_NE(database.statements()[2].find("Codice = 'FAT ' AND vtx_TabProPrenotati.Numero "
                                            "BETWEEN '42' AND '42' "),
              std::string::npos);
}

}  // namespace
}  // namespace kap::numbering::test
