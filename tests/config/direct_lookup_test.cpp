#include <kaputil/config/direct_lookup.hpp>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/prepared_tables.hpp"
#include "support/recording_database.hpp"
#include "support/shown.hpp"

namespace kap::config {
namespace {

using test::raisedBy;

// A database with the table ABC_KAP_CFG and these rows: group, application, procedure, field, flag.
Ref<ado::Connection> withRows(const std::string& rows) {
    auto connection = test::openMemory();
    kap::test::prepare(
        connection,
        u"CREATE TABLE ABC_KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), "
        u"Procedura varchar(30), Modulo varchar(30), Campo varchar(30), Valore varchar(200), "
        u"Flag varchar(10))");
    if (!rows.empty()) {
        connection->Execute(
            "INSERT INTO ABC_KAP_CFG (Gruppo, Applicazione, Procedura, Campo, Flag) VALUES " +
            rows);
    }
    return connection;
}

std::string lookUp(const Ref<ado::Connection>& connection, const String& procedure,
                   const String& application = u"°°°", const String& field = u"°°°") {
    Variant session(connection);
    return KapCFG(session, u"ABC", procedure, application, field)->Leggi().as<String>().utf8();
}

TEST(DirectLookup, AsksNothingWithoutAProcedure) {
    Variant nowhere(u"Provider=Manca");
    EXPECT_EQ(KapCFG(nowhere, u"ABC", u"")->Leggi().as<String>(), u"<FLAG>0</FLAG>");
}

TEST(DirectLookup, GivesZeroWhereNoRowMatches) {
    EXPECT_EQ(lookUp(withRows(""), u"Ordini"), "<FLAG>0</FLAG>");
}

TEST(DirectLookup, GivesTheFlagWithApplicationAndField) {
    EXPECT_EQ(lookUp(withRows("('G', 'Vendite', 'Ordini', 'Copie', '1')"), u"Ordini"),
              "<FLAG>1</FLAG><APPLICAZIONE>Vendite</APPLICAZIONE><CAMPO>Copie</CAMPO>");
}

TEST(DirectLookup, TakesTheFirstRowOfAnyGroup) {
    EXPECT_EQ(lookUp(withRows("('DEFAULT', 'B', 'Ordini', 'X', '1'), "
                              "('G', 'A', 'Ordini', 'Z', '2'), ('H', 'A', 'Ordini', 'Y', '3')"),
                     u"Ordini"),
              "<FLAG>3</FLAG><APPLICAZIONE>A</APPLICAZIONE><CAMPO>Y</CAMPO>");
}

TEST(DirectLookup, IsNarrowedByApplicationAndField) {
    const auto connection = withRows(
        "('G', 'A', 'Ordini', 'X', '1'), ('G', 'B', 'Ordini', 'X', '2'), "
        "('G', 'B', 'Ordini', 'Y', '3')");
    EXPECT_EQ(lookUp(connection, u"Ordini", u"B"),
              "<FLAG>2</FLAG><APPLICAZIONE>B</APPLICAZIONE><CAMPO>X</CAMPO>");
    EXPECT_EQ(lookUp(connection, u"Ordini", u"B", u"Y"),
              "<FLAG>3</FLAG><APPLICAZIONE>B</APPLICAZIONE><CAMPO>Y</CAMPO>");
    EXPECT_EQ(lookUp(connection, u"Ordini", u"°°°", u"Y"),
              "<FLAG>3</FLAG><APPLICAZIONE>B</APPLICAZIONE><CAMPO>Y</CAMPO>");
    EXPECT_EQ(lookUp(connection, u"Ordini", u"C"), "<FLAG>0</FLAG>");
}

TEST(DirectLookup, LooksForEmptyNamesThatAreGiven) {
    const auto connection =
        withRows("('G', 'A', 'Ordini', 'X', '1'), ('G', '', 'Ordini', '', '2')");
    EXPECT_EQ(lookUp(connection, u"Ordini", u"", u""),
              "<FLAG>2</FLAG><APPLICAZIONE></APPLICAZIONE><CAMPO></CAMPO>");
    EXPECT_EQ(lookUp(connection, u"Ordini", u"A", u""), "<FLAG>0</FLAG>");
}

TEST(DirectLookup, WritesNullAsEmptyText) {
    EXPECT_EQ(lookUp(withRows("('G', 'A', 'Ordini', NULL, NULL)"), u"Ordini"),
              "<FLAG></FLAG><APPLICAZIONE>A</APPLICAZIONE><CAMPO></CAMPO>");
}

TEST(DirectLookup, SendsItsStatementAsItIs) {
    test::RecordingDatabase database;
    database.answer({"Applicazione", "Campo", "Flag"}, {});
    Variant session(database.connection());
    static_cast<void>(KapCFG(session, u"ABC", u"Ordini"));
    static_cast<void>(KapCFG(session, u"ABC", u"Ordini", u"L'altra"));
    static_cast<void>(KapCFG(session, u"", u"Ordini", u"°°°", u""));
    static_cast<void>(KapCFG(session, u"X", u"P", u"A", u"C"));
    EXPECT_EQ(database.statements(),
              (std::vector<std::string>{
                  "SELECT TOP 1 * FROM ABC_KAP_CFG WHERE Procedura ='Ordini' ORDER BY "
                  "Applicazione, Procedura, Campo",
                  "SELECT TOP 1 * FROM ABC_KAP_CFG WHERE Procedura ='Ordini' AND Applicazione "
                  "='L'altra' ORDER BY Applicazione, Procedura, Campo",
                  "SELECT TOP 1 * FROM _KAP_CFG WHERE Procedura ='Ordini' AND CAMPO ='' ORDER BY "
                  "Applicazione, Procedura, Campo",
                  "SELECT TOP 1 * FROM X_KAP_CFG WHERE Procedura ='P' AND Applicazione ='A' AND "
                  "CAMPO ='C' ORDER BY Applicazione, Procedura, Campo"}));
}

TEST(DirectLookup, PassesTheDatabasesErrorsOn) {
    Variant session(test::openMemory());
    EXPECT_EQ(raisedBy([&] { return KapCFG(session, u"ABC", u"Ordini"); }),
              test::unknownTableNumber());
    EXPECT_EQ(raisedBy([&] { return KapCFG(session, u"ABC", u"L'ordine"); }),
              ado::errors::kCommandText);
}

}  // namespace
}  // namespace kap::config
