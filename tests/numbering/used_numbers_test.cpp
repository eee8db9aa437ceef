#include <kaputil/numbering/used_numbers.hpp>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "numbering/company.hpp"
#include "support/recording_database.hpp"

namespace kap::numbering::test {
namespace {

const std::string kDocuments =
    "SELECT mag_TDocumenti.Tipo , mag_TDocumenti.Numero FROM  mag_TDocumenti INNER JOIN vtx_Tabdoc "
    "ON vtx_TabDoc.Codice = mag_TDocumenti.Tipo WHERE mag_TDocumenti.Anno = '2025' AND "
    "vtx_TabDoc.TipoProg = 'FAT' AND (isnull(mag_TDocumenti.MC_Registrazione,'')='' or "
    "isnull(mag_TDocumenti.MC_Registrazione,'0')='0' ) AND mag_TDocumenti.Numero BETWEEN '40' AND "
    "'45' ";
const std::string kInvoices =
    "SELECT mag_TFatture.Tipo , mag_TFatture.Numero FROM  mag_TFatture INNER JOIN vtx_Tabdoc ON "
    "vtx_TabDoc.Codice = mag_TFatture.Tipo WHERE mag_TFatture.Anno = '2025' AND "
    "vtx_TabDoc.TipoProg = 'FAT' AND mag_TFatture.NumFat BETWEEN '40' AND '45' ";
const std::string kReservations =
    "SELECT '°°°' as Tipo , vtx_TabProPrenotati.Numero FROM  vtx_TabProPrenotati WHERE "
    "vtx_TabProPrenotati.Anno = '2025' AND vtx_TabProPrenotati.Codice = 'FAT' AND "
    "vtx_TabProPrenotati.Numero BETWEEN '40' AND '45' ";
const std::string kEntries =
    "SELECT 'MC' as Tipo, con_MovConT.Protocollo AS Numero FROM con_MovConT INNER JOIN "
    "con_TabCausali ON con_TabCausali.Codice = con_MovConT.Causale WHERE year(con_MovConT.Data) = "
    "'2025' AND con_TabCausali.Registro = 'FAT' AND con_MovConT.Protocollo BETWEEN '40' AND '45' "
    "UNION SELECT 'MC' as Tipo, con_MovConD.Protocollo AS Numero FROM con_MovConD WHERE "
    "con_MovConD.Anno = '2025' AND con_MovConD.Registro = 'FAT' AND con_MovConD.Protocollo "
    "BETWEEN '40' AND '45' ";
const std::string kCounter =
    "SELECT Codice as Tipo, N_Def AS Numero FROM vtx_TabPro WHERE vtx_TabPro.Anno = '2025' AND "
    "vtx_TabPro.Codice = 'FAT' AND vtx_TabPro.N_Def BETWEEN '40' AND '45' ";
const std::string kOrder = "ORDER BY Numero ";

std::string search(const Company& company, double first, double last, const char16_t* where) {
    Variant connection(company.connection());
    return RicercaNumeriDocPre(connection, u"FAT", u"2025", first, last, where).as<String>().utf8();
}

TEST(UsedNumbers, AreLookedForWithTheseStatements) {
    test::RecordingDatabase database;
    database.answer({"Tipo", "Numero"}, {});
    Variant connection(database.connection());
    for (const char16_t* where : {u"D", u"F", u"P", u"M", u"T", u"X", u"Z", u"t"}) {
        static_cast<void>(RicercaNumeriDocPre(connection, u"FAT", u"2025", 40, 45, where));
    }
    EXPECT_EQ(
        database.statements(),
        (std::vector<std::string>{
            kDocuments + kOrder, kInvoices + kOrder, kReservations + kOrder, kEntries + kOrder,
            kDocuments + "UNION " + kReservations + "UNION " + kEntries + kOrder,
            kDocuments + "UNION " + kInvoices + "UNION " + kReservations + "UNION " + kEntries +
                "UNION " + kCounter + kOrder,
            kOrder, kOrder}));
}

TEST(UsedNumbers, StandInTheStatementInPlainDecimal) {
    test::RecordingDatabase database;
    database.answer({"Tipo", "Numero"}, {});
    Variant connection(database.connection());
    static_cast<void>(
        RicercaNumeriDocPre(connection, u"F'T", u"'25", -3, 12345678901234567890.0, u"P"));
    EXPECT_EQ(database.statements().front(),
              "SELECT '°°°' as Tipo , vtx_TabProPrenotati.Numero FROM  vtx_TabProPrenotati WHERE "
              "vtx_TabProPrenotati.Anno = ''25' AND vtx_TabProPrenotati.Codice = 'F'T' AND "
              "vtx_TabProPrenotati.Numero BETWEEN '-3' AND '12345678901234567168' ORDER BY "
              "Numero ");
}

TEST(UsedNumbers, AreNoneOnAnEmptyDatabase) {
    const Company company;
    for (const char16_t* where : {u"D", u"F", u"P", u"M", u"T", u"X"}) {
        EXPECT_EQ(search(company, 1, 1000, where), "");
    }
}

TEST(UsedNumbers, AreThoseOfDocumentsNotYetRegistered) {
    const Company company;
    company.document(41, "FAI", "NULL");
    company.document(42, "FAI", "''");
    company.document(43, "NCR", "'0'");
    company.document(44, "FAI", "'17'");
    company.document(45, "DDT");
    EXPECT_EQ(search(company, 40, 45, u"D"),
              "<TIPO1>FAI</TIPO1><NUMERO1>41</NUMERO1><TIPO2>FAI</TIPO2><NUMERO2>42</NUMERO2>"
              "<TIPO3>NCR</TIPO3><NUMERO3>43</NUMERO3>");
    EXPECT_EQ(search(company, 42, 42, u"D"), "<TIPO1>FAI</TIPO1><NUMERO1>42</NUMERO1>");
}

TEST(UsedNumbers, OfInvoicesAreFoundByOneColumnAndShownByAnother) {
    const Company company;
    company.run("INSERT INTO mag_TFatture VALUES (2025, 'FAI', 7, 42), (2025, 'FAI', 42, 8)");
    EXPECT_EQ(search(company, 42, 42, u"F"), "<TIPO1>FAI</TIPO1><NUMERO1>7</NUMERO1>");
}

TEST(UsedNumbers, DoNotIncludeInvoicesByDefault) {
    const Company company;
    company.invoice(42);
    Variant connection(company.connection());
    EXPECT_EQ(RicercaNumeriDocPre(connection, u"FAT", u"2025", 42, 42).as<String>(), u"");
}

TEST(UsedNumbers, AreThoseOfReservationsAndOfBothKindsOfEntries) {
    const Company company;
    company.reserve(43);
    company.entry(41);
    company.run(
        "INSERT INTO con_MovConT VALUES (42, 'FVE', '2025-12-31'), (44, 'FVE', '2026-01-01'), "
        "(45, 'XXX', '2025-06-01')");
    EXPECT_EQ(search(company, 40, 45, u"P"), "<TIPO1>°°°</TIPO1><NUMERO1>43</NUMERO1>");
    EXPECT_EQ(search(company, 40, 45, u"M"),
              "<TIPO1>MC</TIPO1><NUMERO1>41</NUMERO1><TIPO2>MC</TIPO2><NUMERO2>42</NUMERO2>");
    EXPECT_EQ(search(company, 40, 45, u"T"),
              "<TIPO1>MC</TIPO1><NUMERO1>41</NUMERO1><TIPO2>MC</TIPO2><NUMERO2>42</NUMERO2>"
              "<TIPO3>°°°</TIPO3><NUMERO3>43</NUMERO3>");
}

TEST(UsedNumbers, IncludeTheCounterWhereEverythingIsLookedFor) {
    const Company company;
    company.counter("44");
    company.document(41);
    company.invoice(42);
    company.reserve(43);
    company.entry(45);
    EXPECT_EQ(search(company, 40, 45, u"X"),
              "<TIPO1>FAI</TIPO1><NUMERO1>41</NUMERO1><TIPO2>FAI</TIPO2><NUMERO2>42</NUMERO2>"
              "<TIPO3>°°°</TIPO3><NUMERO3>43</NUMERO3><TIPO4>FAT</TIPO4><NUMERO4>44</NUMERO4>"
              "<TIPO5>MC</TIPO5><NUMERO5>45</NUMERO5>");
    EXPECT_EQ(search(company, 40, 43, u"X").find("FAT"), std::string::npos);
}

TEST(UsedNumbers, CountEqualRowsOnceInAUnion) {
    const Company company;
    company.entry(42);
    company.run("INSERT INTO con_MovConT VALUES (42, 'FVE', '2025-12-31')");
    EXPECT_EQ(search(company, 42, 42, u"M"), "<TIPO1>MC</TIPO1><NUMERO1>42</NUMERO1>");
}

TEST(UsedNumbers, PassTheDatabasesErrorsOn) {
    const Company company;
    EXPECT_EQ(raisedBy([&] { return search(company, 1, 1, u"Z"); }), ado::errors::kCommandText);
    company.run("DROP TABLE con_MovConD");
    EXPECT_EQ(raisedBy([&] { return search(company, 1, 1, u"T"); }), test::unknownTableNumber());
    EXPECT_EQ(search(company, 1, 1, u"D"), "");
}

TEST(UsedNumbers, AreNoMoreThanASmallWholeNumberCounts) {
    const auto withRows = [](std::size_t count) {
        test::RecordingDatabase database;
        database.answer({"Tipo", "Numero"},
                        std::vector<test::RecordingDatabase::Row>(count, {"FAI", "1"}));
        Variant connection(database.connection());
        return raisedBy([&] {
            return RicercaNumeriDocPre(connection, u"FAT", u"2025", 1, 1, u"D").as<String>().size();
        });
    };
    EXPECT_EQ(withRows(32767), 0);
    EXPECT_EQ(withRows(32768), errors::kOverflow);
}

}  // namespace
}  // namespace kap::numbering::test
