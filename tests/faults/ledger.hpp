#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "support/database.hpp"

namespace kap::test {

// A small company's books, in which every fault would show: money only moves between two accounts,
// and each step that was acknowledged left a line.
class Ledger {
public:
    static void create(const Ref<ado::Connection>& connection) {
        connection->Execute(
            u"CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo int NOT NULL)"
            u"INSERT INTO Conti VALUES (1, 500), (2, 500)"
            u"CREATE TABLE Righe (Numero int IDENTITY PRIMARY KEY, Passo int NOT NULL, "
            u"Testo varchar(2000), AggID timestamp)"
            u"CREATE UNIQUE INDEX Passi ON Righe (Passo)");
    }

    // One step of work on an open connection, in one of several manners. Raises what fails.
    static void step(const Ref<ado::Connection>& connection, int number) {
        const std::string line = "INSERT INTO Righe (Passo, Testo) VALUES (" +
                                 std::to_string(number) + ", REPLICATE('x', 1500)) ";
        const std::string transfer =
            "UPDATE Conti SET Saldo = Saldo - 10 WHERE Codice = 1 "
            "UPDATE Conti SET Saldo = Saldo + 10 WHERE Codice = 2 ";
        switch (number % kManners) {
            case 0:
                connection->Execute(String(line));
                break;
            case 1:
                connection->Execute(String("BEGIN TRAN " + transfer + line + "COMMIT"));
                break;
            case 2:
                connection->BeginTrans();
                connection->Execute(String(transfer));
                connection->Execute(String(line));
                connection->CommitTrans();
                break;
            case 3:
                connection->Execute(String("BEGIN TRAN SAVE TRAN a " + transfer +
                                           "ROLLBACK TRAN a " + line + "COMMIT"));
                break;
            case 4:
                connection->Execute(String("BEGIN TRAN " + transfer + "ROLLBACK " + line));
                break;
            default: {
                const auto rows = openLive(connection, u"SELECT * FROM Righe WHERE 1 = 0");
                rows->AddNew();
                rows->Fields()->Item(u"Passo")->setValue(number);
                rows->Fields()->Item(u"Testo")->setValue(u"una riga");
                rows->Update();
            }
        }
    }
    static constexpr int kManners = 6;

    // What is wrong with the books, empty when nothing is. `acknowledged` are the steps that were
    // said to be done; others may be there, or not, but never in part.
    static std::string fault(const Ref<ado::Connection>& connection,
                             const std::set<int>& acknowledged) {
        connection->setCommandTimeout(0);  // after an hour's work there is much to look at
        try {
            connection->Execute(u"DBCC CHECKDB");
        } catch (const AutomationError& error) {
            return std::string("DBCC CHECKDB: ") + error.what();
        }
        const auto number = [&](const std::string& query) {
            return valueOf(connection, String(query)).as<std::int32_t>();
        };
        std::set<int> there;
        const auto rows = connection->Execute(u"SELECT Passo FROM Righe");
        for (; !rows->Eof(); rows->MoveNext()) {
            there.insert(fieldOf(rows, 0).as<std::int32_t>());
        }
        int transfers = 0;
        for (const int step : there) {
            transfers += step % kManners == 1 || step % kManners == 2 ? 1 : 0;
        }
        for (const int step : acknowledged) {
            if (!there.contains(step)) {
                return "step " + std::to_string(step) + " was acknowledged and is not there";
            }
        }
        if (number("SELECT SUM(Saldo) FROM Conti") != 1000) {
            return "money was lost or made";
        }
        if (number("SELECT Saldo FROM Conti WHERE Codice = 2") != 500 + 10 * transfers) {
            return "a step is there in part";
        }
        return {};
    }
};

}  // namespace kap::test
