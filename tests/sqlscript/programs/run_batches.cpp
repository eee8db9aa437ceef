// Runs scripts of twenty rows each, ten of them written one by one and ten moved out of a temporary
// table, and says after each which one it was. To be killed at any moment: what was said must be
// there, and never a part of a script.
//
//     run_batches CONNECTION_STRING WRITER

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/sqlscript/csql.hpp>

namespace {

constexpr int kHalf = 10;

std::string rowOf(const std::string& writer, int batch, int part) {
    return "(" + writer + ", " + std::to_string(batch) + ", " + std::to_string(part) + ")";
}

void fillWorkTable(kap::ado::Connection& connection, const std::string& writer, int batch) {
    std::string rows;
    for (int part = kHalf + 1; part <= 2 * kHalf; ++part) {
        rows += (rows.empty() ? "" : ", ") + rowOf(writer, batch, part);
    }
    connection.Execute("INSERT INTO #work VALUES " + rows);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "run_batches CONNECTION_STRING WRITER\n";
        return EXIT_FAILURE;
    }
    try {
        const std::string writer = arguments[2];
        const auto sql = kap::make<kap::CSQL>();
        sql->setConnectionString(arguments[1]);
        const auto connection = sql->ActiveConnection();
        connection->Execute(u"CREATE TABLE #work (writer int, batch int, part int)");
        for (int batch = 1;; ++batch) {
            fillWorkTable(*connection, writer, batch);
            sql->Clear();
            for (int part = 1; part <= kHalf; ++part) {
                sql->Command("INSERT INTO parts VALUES " + rowOf(writer, batch, part));
            }
            sql->Parametri()->Scrivi(u"FROM", u"#work");
            sql->Parametri()->Scrivi(u"TO", u"parts");
            sql->Parametri()->Scrivi(u"DELETE_FROM", u"SI");
            sql->AddTmp();
            if (!sql->Execute()) {
                std::cerr << kap::convert::toString(sql->Errore()->MsgToString()).utf8();
                return EXIT_FAILURE;
            }
            std::cout << batch << std::endl;
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
