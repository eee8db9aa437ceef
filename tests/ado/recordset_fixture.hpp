#pragma once

#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/late_bound.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap::ado {

// Three customers, one with Nulls, and live recordsets on them.
class RecordsetTest : public ::testing::Test {
protected:
    RecordsetTest() : connection_(test::openMemory()) {
        test::prepare(
            connection_,
            u"CREATE TABLE Clienti (Codice int NOT NULL PRIMARY KEY, Nome varchar(30), "
            u"Fido money, Sconto decimal(5,2), Dal datetime, Attivo bit, AggID timestamp);"
            u"INSERT INTO Clienti (Codice, Nome, Fido, Sconto, Dal, Attivo) VALUES "
            u"(1, 'Rossi', 1000.5, 10.25, '2003-12-31 18:30:00', 1), "
            u"(2, 'Bianchi', NULL, NULL, NULL, 0), (3, 'Verdi', 30, 0, '2004-01-01', NULL)");
    }

    [[nodiscard]] Ref<Recordset> all(
        CursorLocationEnum location = CursorLocationEnum::adUseClient) const {
        return test::openLive(connection_, u"SELECT * FROM Clienti ORDER BY Codice", location);
    }

    LocaleScope locale_{"it-IT"};
    Ref<Connection> connection_;
};

}  // namespace kap::ado
