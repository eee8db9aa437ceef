// The register of document numbers beside a bare reading of the rows that it is made of: ten years
// of 100,000 documents, each with its entry in the accounts.

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/numbering/number_register.hpp>

#include "bench/job.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRegisterYears = 10;
constexpr int kRegisterNumbers = 100'000;

double secondsSince(Clock::time_point begun) {
    return std::chrono::duration<double>(Clock::now() - begun).count();
}

void fillBooks(kap::ado::Connection& connection) {
    connection.Execute(
        u"CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5));"
        u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
        u"GestProvv int, PRIMARY KEY (Codice, Anno));"
        u"CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, Data datetime, "
        u"MC_Registrazione varchar(10), PRIMARY KEY (Anno, Tipo, Numero));"
        u"CREATE TABLE con_MovConD (Anno smallint, Registro varchar(5), Protocollo int);"
        u"INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')");
    for (int year = 2026 - kRegisterYears; year < 2026; ++year) {
        const std::string text = std::to_string(year);
        const std::string last = std::to_string(kRegisterNumbers);
        connection.Execute("INSERT INTO vtx_TabPro VALUES ('FAT', " + text + ", " + last +
                           ", 0, 0);"
                           "WITH d(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM d WHERE n < " +
                           last + ") INSERT INTO mag_TDocumenti SELECT " + text +
                           ", 'FAI', n, DATEADD(day, n * 364 / " + last + ", '" + text +
                           "0101'), 'M' FROM d OPTION (MAXRECURSION 0);"
                           "INSERT INTO con_MovConD SELECT " +
                           text + ", 'FAT', Numero FROM mag_TDocumenti WHERE Anno = " + text);
    }
}

double registerSeconds(kap::Variant& connection) {
    const auto begun = Clock::now();
    const auto found = kap::numbering::readRegisters(connection);
    const double seconds = secondsSince(begun);
    std::int64_t used = 0;
    for (const auto& one : found) {
        used += one.totals.used;
        if (!one.anomalies.empty()) {
            throw std::runtime_error("a register has anomalies");
        }
    }
    if (used != std::int64_t{kRegisterYears} * kRegisterNumbers) {
        throw std::runtime_error("numbers are missing");
    }
    return seconds;
}

// Steps through the rows and reads their columns, the texts among them.
double bareSeconds(const std::string& file) {
    sqlite3* opened = nullptr;
    if (sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        throw std::runtime_error("the books cannot be opened bare");
    }
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> database(opened, &sqlite3_close);
    const auto begun = Clock::now();
    std::int64_t read = 0;
    for (const char* query :
         {"SELECT Tipo, Numero, Anno, Data, MC_Registrazione FROM mag_TDocumenti",
          "SELECT Registro, Anno, Protocollo FROM con_MovConD"}) {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(opened, query, -1, &prepared, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(opened));
        }
        const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                              &sqlite3_finalize);
        while (sqlite3_step(prepared) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(prepared); ++i) {
                if (sqlite3_column_type(prepared, i) == SQLITE_TEXT) {
                    benchmark::DoNotOptimize(sqlite3_column_text(prepared, i));
                } else {
                    benchmark::DoNotOptimize(sqlite3_column_double(prepared, i));
                }
            }
            ++read;
        }
    }
    if (read != std::int64_t{2} * kRegisterYears * kRegisterNumbers) {
        throw std::runtime_error("rows are missing");
    }
    return secondsSince(begun);
}

kap::bench::Values registerBesideRows() {
    const kap::test::TemporaryFolder folder;
    const std::string file = folder.file("books.db");
    const auto connection = kap::make<kap::ado::Connection>();
    connection->Open("Provider=KapLocal;Data Source=" + file + ";Synchronous=Off");
    fillBooks(*connection);
    kap::Variant opened(connection);
    static_cast<void>(bareSeconds(file));  // both then find the file in memory
    const double ours = registerSeconds(opened);
    return {ours, bareSeconds(file)};
}

KAP_BENCH_VALUES("numbering: the register of ten years of 100,000 documents", "s",
                 "the registers of all years", "sqlite3_step over the same rows",
                 registerBesideRows, 6.0);

}  // namespace
