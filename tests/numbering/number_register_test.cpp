#include <kaputil/numbering/number_register.hpp>

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "numbering/company.hpp"
#include "numbering/register_text.hpp"

namespace kap::numbering::test {
namespace {

constexpr Date kSummer{45839};     // 1 July 2025
constexpr Date kYearAfter{46023};  // 1 January 2026

using Texts = std::vector<std::string>;

// The company with dated documents and headers of accounting entries.
class RegisterOfNumbers : public testing::Test {
protected:
    RegisterOfNumbers() { company_.run("ALTER TABLE mag_TDocumenti ADD Data datetime NULL"); }

    void document(const std::string& day, int number, const std::string& type = "FAI",
                  const std::string& entry = "NULL") const {
        company_.run("INSERT INTO mag_TDocumenti VALUES (2025, '" + type + "', " +
                     std::to_string(number) + ", " + entry + ", '" + day + "')");
    }
    void registered(int number, const std::string& type = "FAI") const {
        document("20250110", number, type, "'M7'");
    }
    void header(int number, const std::string& reason = "FVE",
                const std::string& day = "20250131") const {
        company_.run("INSERT INTO con_MovConT VALUES (" + std::to_string(number) + ", '" + reason +
                     "', '" + day + "')");
    }

    [[nodiscard]] std::vector<NumberRegister> read(RegisterRequest request = {}) const {
        if (!request.today) {
            request.today = kSummer;
        }
        Variant connection(company_.connection());
        return readRegisters(connection, request);
    }
    [[nodiscard]] NumberRegister fat(Date today = kSummer) const {
        return read({.counter = u"FAT", .year = 2025, .today = today}).at(0);
    }
    [[nodiscard]] Texts lines() const { return lineTexts(fat()); }
    [[nodiscard]] Texts anomalies(Date today = kSummer) const { return anomalyTexts(fat(today)); }

    Company company_;
};

TEST_F(RegisterOfNumbers, ListsEveryNumberWithWhoCarriesIt) {
    company_.counter("7");
    registered(1);
    company_.entry(1);
    document("20250111", 2);
    company_.invoice(2);
    document("20250112", 3, "NCR");
    company_.reserve(4);
    company_.invoice(7);
    EXPECT_EQ(lines(),
              (Texts{"1 used: FAI 1*, entry 1", "2 used: FAI 2, invoice FAI 2", "3 used: NCR 3",
                     "4 reserved: reservation 4", "5-6 missing", "7 used: invoice FAI 7"}));
    EXPECT_EQ(anomalies(), (Texts{"5-6 missing: reservation 4, invoice FAI 7"}));
    EXPECT_EQ(fat().totals, (RegisterTotals{.used = 4, .reserved = 1, .missing = 2}));
}

TEST_F(RegisterOfNumbers, ANumberWhoseDocumentWasDeletedIsNotMissingWhileAnEntryCarriesIt) {
    company_.counter("2");
    registered(1);
    company_.entry(1);
    company_.entry(2);
    EXPECT_EQ(lines(), (Texts{"1 used: FAI 1*, entry 1", "2 used: entry 2"}));
    EXPECT_EQ(anomalies(), (Texts{"2 entry without document: entry 2"}));
}

TEST_F(RegisterOfNumbers, AnEntryNeedsNoDocumentWhereNoTypeDrawsFromTheCounter) {
    company_.run(
        "INSERT INTO vtx_TabPro VALUES ('ACQ', 2025, 1, 0, 0);"
        "INSERT INTO con_MovConD VALUES (1, 2025, 'ACQ')");
    const auto found = read({.counter = u"acq"});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(lineTexts(found[0]), (Texts{"1 used: entry 1"}));
    EXPECT_EQ(anomalyTexts(found[0]), (Texts{}));
}

TEST_F(RegisterOfNumbers, TheSecondTableOfAnEntryIsNoSecondEntry) {
    company_.counter("1");
    registered(1);
    header(1);
    company_.entry(1);
    company_.entry(1);
    EXPECT_EQ(lines(), (Texts{"1 used: FAI 1*, entry 1"}));
    EXPECT_EQ(anomalies(), (Texts{}));
}

TEST_F(RegisterOfNumbers, TellsWhoCarriesANumberTwice) {
    company_.counter("7");
    document("20250101", 1);
    document("20250101", 1, "NCR");
    document("20250102", 2);
    company_.entry(2);
    header(3);
    header(3);
    registered(3);
    document("20250110", 4);
    company_.run("INSERT INTO mag_TFatture VALUES (2025, 'FAI', 90, 4)");
    document("20250111", 5);
    company_.invoice(5, "NCR");
    document("20250112", 6, "FAI", "'M9'");
    company_.entry(6);
    company_.run(
        "DROP TABLE vtx_TabProPrenotati;"
        "CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno int, Numero int, Stato "
        "char(1));"
        "INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 7, ''), ('FAT', 2025, 7, 'D')");
    EXPECT_EQ(
        anomalies(),
        (Texts{"1 doubled: FAI 1, NCR 1", "2 doubled: FAI 2, entry 2",
               "3 doubled: FAI 3*, entry 3, entry 3", "4 doubled: FAI 4, invoice FAI 4",
               "5 doubled: FAI 5, invoice NCR 5", "7 doubled: reservation 7, reservation 7 D"}));
    EXPECT_EQ(fat().totals.doubled, 6);
}

TEST_F(RegisterOfNumbers, ADocumentThatSaysItIsRegisteredHasAnEntry) {
    company_.counter("3");
    registered(1);
    document("20250111", 2, "FAI", "'0'");
    document("20250112", 3, "FAI", "''");
    EXPECT_EQ(anomalies(), (Texts{"1 document without entry: FAI 1*"}));
}

TEST_F(RegisterOfNumbers, WhatIsCarriedOutsideTheCounterIsBeyondIt) {
    company_.counter("1");
    document("20250101", 0);
    document("20250101", 1);
    document("20250102", 3);
    company_.reserve(5);
    EXPECT_EQ(lines(), (Texts{"0 beyond: FAI 0", "1 used: FAI 1", "3 beyond: FAI 3",
                              "5 reserved: reservation 5"}));
    EXPECT_EQ(anomalies(), (Texts{"0 beyond: FAI 0", "3 beyond: FAI 3"}));
    EXPECT_EQ(fat().totals, (RegisterTotals{.used = 1, .ahead = 1, .beyond = 2}));
}

TEST_F(RegisterOfNumbers, ACounterWithProvisionalNumbersHasThemAboveTheDefinitiveOnes) {
    company_.counter("1", "4", "1");
    document("20250101", 1);
    document("20250102", 4);
    document("20250103", 5);
    EXPECT_EQ(lines(), (Texts{"1 used: FAI 1", "4 provisional: FAI 4", "5 beyond: FAI 5"}));
    EXPECT_EQ(anomalies(), (Texts{"5 beyond: FAI 5"}));
}

TEST_F(RegisterOfNumbers, ANullCounterHasGivenOutNothing) {
    company_.counter("NULL", "NULL", "NULL");
    document("20250101", 1);
    EXPECT_EQ(anomalies(), (Texts{"1 beyond: FAI 1"}));
    EXPECT_FALSE(fat().definitive);
}

TEST_F(RegisterOfNumbers, DocumentsWithoutTheirCounterAreNotForgotten) {
    company_.run("INSERT INTO mag_TDocumenti VALUES (2024, 'DDT', 3, NULL, '20240101')");
    const auto found = read();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].counter, String(u"BOL"));
    EXPECT_FALSE(found[0].hasCounter);
    EXPECT_EQ(anomalyTexts(found[0]), (Texts{"3 beyond: DDT 3"}));
}

TEST_F(RegisterOfNumbers, LooksAtWhatBecameOfReservations) {
    company_.counter("6");
    company_.reserve(1);
    company_.reserve(2, "'D'");
    company_.reserve(3, "'U'");
    company_.reserve(4, "'M'");
    for (const int number : {2, 3, 5, 6}) {
        document("20250101", number);
    }
    EXPECT_EQ(anomalies(), (Texts{"2 reserved in use: FAI 2, reservation 2 D",
                                  "4 reservation unused: reservation 4 M"}));
    EXPECT_EQ(anomalies(kYearAfter), (Texts{"1 reservation expired: reservation 1",
                                            "2 reserved in use: FAI 2, reservation 2 D",
                                            "4 reservation unused: reservation 4 M"}));
}

TEST_F(RegisterOfNumbers, DatesGoForwardWithTheNumbers) {
    company_.counter("5");
    document("20250101", 1);
    document("20250301", 2);
    document("20250228", 3);
    document("20250301", 4, "NCR");
    document("20241231", 5);
    EXPECT_EQ(anomalies(), (Texts{"3 date back: FAI 3, FAI 2", "5 date back: FAI 5, FAI 2",
                                  "5 other year: FAI 5"}));
}

TEST_F(RegisterOfNumbers, TimesOfADayDoNotMatter) {
    company_.counter("2");
    document("20250101 18:00", 1);
    document("20250101 09:00", 2);
    EXPECT_EQ(anomalies(), (Texts{}));
}

TEST_F(RegisterOfNumbers, ATypeThatChangedItsCounterKeepsItsNumbers) {
    company_.run(
        "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 2, 0, 0), ('FA2', 2025, 1, 0, 0);"
        "INSERT INTO con_TabCausali VALUES ('FV2', 'FA2')");
    registered(1);
    registered(2);
    header(1);
    header(2);
    company_.run(
        "UPDATE vtx_TabDoc SET TipoProg = 'FA2' WHERE Codice = 'FAI';"
        "INSERT INTO mag_TDocumenti VALUES (2025, 'DDT', 1, NULL, '20250101')");
    EXPECT_EQ(lines(), (Texts{"1 used: FAI 1*, entry 1", "2 used: FAI 2*, entry 2"}));
    EXPECT_EQ(anomalies(), (Texts{"1-2 counter changed FA2: FAI 1*, FAI 2*"}));
    EXPECT_EQ(anomalyTexts(read({.counter = u"FA2"}).at(0)),
              (Texts{"1 missing", "1-2 counter changed FAT: FAI 1*, FAI 2*"}));
}

TEST_F(RegisterOfNumbers, ReadsOneCounterOrYearOrAll) {
    company_.run(
        "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 0, 0, 0), ('FAT', 2024, 0, 0, 0), "
        "('BOL', 2025, 0, 0, 0)");
    const auto names = [](const std::vector<NumberRegister>& all) {
        Texts texts;
        for (const NumberRegister& one : all) {
            texts.push_back(one.counter.utf8() + " " + std::to_string(one.year));
        }
        return texts;
    };
    EXPECT_EQ(names(read()), (Texts{"BOL 2025", "FAT 2024", "FAT 2025"}));
    EXPECT_EQ(names(read({.counter = u"fat"})), (Texts{"FAT 2024", "FAT 2025"}));
    EXPECT_EQ(names(read({.year = 2025})), (Texts{"BOL 2025", "FAT 2025"}));
    EXPECT_EQ(names(read({.counter = u"L'ALTRO"})), (Texts{}));
}

TEST_F(RegisterOfNumbers, EntriesBelongToTheYearOfTheirDate) {
    company_.counter("2");
    header(1, "FVE", "20251231 23:59");
    header(2, "FVE", "20260101");
    EXPECT_EQ(anomalies(), (Texts{"1 entry without document: entry 1", "2 missing: entry 1"}));
}

TEST_F(RegisterOfNumbers, CodesAreComparedAsTheDatabaseComparesThem) {
    company_.run("INSERT INTO vtx_TabPro VALUES ('fat ', 2025, 1, 0, 0)");
    document("20250101", 1, "fai");
    EXPECT_EQ(lineTexts(fat()), (Texts{"1 used: FAI 1"}));
}

TEST_F(RegisterOfNumbers, TakesAConnectionString) {
    company_.counter("1");
    Variant connection(company_.connectionString());
    EXPECT_EQ(readRegisters(connection).size(), 1U);
    EXPECT_TRUE(connection.isObject());
}

TEST_F(RegisterOfNumbers, ANumberThatIsNoneIsToldWithItsColumn) {
    company_.run(
        "DROP TABLE mag_TDocumenti;"
        "CREATE TABLE mag_TDocumenti (Anno varchar(4), Tipo varchar(3), Numero "
        "varchar(9));"
        "INSERT INTO mag_TDocumenti VALUES ('2025', 'FAI', '12'), ('2025', 'FAI', 'A1')");
    try {
        static_cast<void>(read());
        FAIL() << "nothing was raised";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kTypeMismatch);
        EXPECT_EQ(asciiLower(error.what()), "numero holds 'a1', which is no whole number");
    }
}

TEST(RegisterWithoutTables, NeedsTheCountersAlone) {
    if (test::unknownTableNumber() != ado::errors::kUnknownObject) {
        GTEST_SKIP() << "this server does not tell that a table is missing";
    }
    const auto database = open(memoryDatabase());
    Variant connection(database);
    EXPECT_THROW(static_cast<void>(readRegisters(connection)), AutomationError);
    kap::test::prepare(
        database,
        u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
        u"GestProvv int); INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 3, 0, 0)");
    const auto found = readRegisters(connection);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(lineTexts(found[0]), (Texts{"1-3 missing"}));
}

}  // namespace
}  // namespace kap::numbering::test
