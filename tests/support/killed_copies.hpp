#pragma once

#include <string>

#include <kaputil/ado/connection.hpp>

#include "support/processes.hpp"

namespace kap::test {

// Two tables that take several transactions to be copied, one of them in the order of a key of two
// columns.
inline void fillForKilledCopies(ado::Connection& source) {
    source.Execute(
        u"CREATE TABLE Testate (Id int IDENTITY(7,1) PRIMARY KEY, Nome varchar(20));"
        u"CREATE TABLE Righe (Doc varchar(5) NOT NULL, Riga int NOT NULL, Prezzo money, "
        u"PRIMARY KEY (Doc, Riga));"
        u"WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n WHERE i < 25000) INSERT INTO "
        u"Testate SELECT 'riga ' + CAST(i AS varchar(9)) FROM n OPTION (MAXRECURSION 0);"
        u"INSERT INTO Righe SELECT 'A' + CAST(Id % 9 AS varchar(3)), Id, Id * 0.25 FROM Testate");
}

// Copies it by programs that are killed in the midst of their work, again and again, and then by
// one that is not. Whether that one found everything equal.
inline bool copiesThoughKilled(const std::string& from, const std::string& to) {
    for (const char* rows : {"20000", "20000", "20000"}) {
        if (succeeds(startProgram("copy_until_killed", {from, to, rows}))) {
            return true;  // it was faster than its end
        }
    }
    return succeeds(startProgram("copy_until_killed", {from, to, "0"}));
}

}  // namespace kap::test
