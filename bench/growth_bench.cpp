// How time and memory grow: with the rows of a recordset, the size of a file, its tables, the
// connections of a process, the statements of a script.

#include <chrono>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <sqlite3.h>
#include <unistd.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "bench/job.hpp"
#include "bench/sparse_file.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;
using kap::Variant;
using kap::bench::Growth;
using Clock = std::chrono::steady_clock;

double nanosecondsSince(Clock::time_point begun) {
    return std::chrono::duration<double, std::nano>(Clock::now() - begun).count();
}

Ref<kap::ado::Connection> opened(const std::string& text) {
    auto connection = kap::make<kap::ado::Connection>();
    connection->Open(text);
    return connection;
}

// Filled fast: how it is read is measured, not how it was written.
Ref<kap::ado::Connection> openedToFill(const kap::test::TemporaryFolder& folder) {
    return opened(folder.database() + ";Synchronous=Off");
}

std::int64_t numberOf(const Ref<kap::ado::Connection>& connection, const std::string& query) {
    const auto rows = connection->Execute(query);
    return kap::convert::toLong(rows->Fields()->Item(0)->Value());
}

void expect(bool held, const char* what) {
    if (!held) throw std::runtime_error(what);
}

std::string text(double count) {
    return std::to_string(static_cast<std::int64_t>(count));
}

// --- Rows of a recordset

Growth cursorOf(double rows) {
    static const kap::test::TemporaryFolder folder;
    static double filled = 0;
    const auto connection = openedToFill(folder);
    if (filled == 0) {
        connection->Execute(
            u"CREATE TABLE Righe (Id int PRIMARY KEY, Codice varchar(12), Descrizione varchar(40), "
            u"Prezzo money, Data datetime)");
    }
    constexpr double kBatch = 10'000;
    for (; filled < rows; filled += kBatch) {
        connection->Execute("WITH c (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < " +
                            text(kBatch) + ") INSERT INTO Righe SELECT " + text(filled) +
                            " + n, 'ART' + convert(varchar(8), n), 'Descrizione numero ' + "
                            "convert(varchar(8), n), n * 1.25, dateadd(day, n % 5000, '20200101') "
                            "FROM c OPTION (MAXRECURSION 0)");
    }
    Variant held(connection);
    const auto begun = Clock::now();
    const auto recordset = kap::db::OpenRecordset("SELECT TOP " + text(rows) + " * FROM Righe",
                                                  held, -1, -1, -1, /*DeleteNull=*/false);
    const double took = nanosecondsSince(begun);
    expect(recordset->RecordCount() == static_cast<std::int32_t>(rows), "rows are missing");
    return {took / rows, static_cast<double>(recordset->rowMemory()) / rows};
}

// --- Size of a file

// Documents of one mebibyte, of which a sixteenth is held: they are zeros, and what is measured
// reads a row's own columns, which stand before them. In memory, so that the disk's waits do not
// hide ours; a disk would also take an hour to delete so many pieces.
class FileOfDocuments {
public:
    FileOfDocuments() {
        fill("PRAGMA page_size = 65536; CREATE TABLE Prima (Id int); DROP TABLE Prima");
        openedToFill(folder_)->Execute(
            u"CREATE TABLE Documenti (Id int PRIMARY KEY, Titolo varchar(40), Corpo "
            u"varbinary(max))");
    }

    [[nodiscard]] std::int64_t documents() const { return documents_; }

    void growTo(std::int64_t megabytes) {
        fill("WITH c (n) AS (SELECT " + std::to_string(documents_ + 1) +
             " UNION ALL SELECT n + 1 FROM c WHERE n < " + std::to_string(megabytes) +
             ") INSERT INTO Documenti SELECT n, 'documento', zeroblob(1048576) FROM c");
        documents_ = megabytes;
    }

    [[nodiscard]] Ref<kap::ado::Connection> open() const { return opened(folder_.database()); }

private:
    void fill(const std::string& sql) const {
        const kap::bench::SparseFile file = kap::bench::openSparse(folder_.file("azienda.db"));
        if (sqlite3_exec(file.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(file.get()));
        }
    }

    kap::test::TemporaryFolder folder_{"/dev/shm"};
    std::int64_t documents_ = 0;
};

Growth readInFileOf(double megabytes) {
    constexpr int kReads = 2'000;
    static FileOfDocuments file;
    file.growTo(static_cast<std::int64_t>(megabytes));
    Variant held(file.open());
    Variant record;
    const auto begun = Clock::now();
    for (int i = 0; i < kReads; ++i) {
        const std::int64_t id = 1 + (std::int64_t{i} * 7'919) % file.documents();
        expect(
            kap::db::DB_Read(
                held, "SELECT Id, Titolo FROM Documenti WHERE Id = " + std::to_string(id), record),
            "a document is missing");
    }
    return {nanosecondsSince(begun) / kReads, 0};
}

// --- Tables of a file

Growth openingOf(double tables) {
    constexpr int kOpenings = 5;
    const kap::test::TemporaryFolder folder;
    {
        const auto connection = openedToFill(folder);
        connection->BeginTrans();
        for (int i = 0; i < static_cast<int>(tables); ++i) {
            const std::string n = std::to_string(i);
            connection->Execute("CREATE TABLE Tabella" + n +
                                " (Id int PRIMARY KEY, Nome varchar(40) NOT NULL, Prezzo money, "
                                "Versione timestamp)");
        }
        connection->CommitTrans();
        connection->Close();
    }
    const auto begun = Clock::now();
    for (int i = 0; i < kOpenings; ++i) {
        const auto connection = opened(folder.database());
        expect(numberOf(connection, "SELECT COUNT(*) FROM Tabella1") == 0, "a table is missing");
        connection->Close();
    }
    return {nanosecondsSince(begun) / kOpenings / tables, 0};
}

// --- Connections of a process

double residentBytes() {
    std::ifstream pages("/proc/self/statm");
    double all = 0;
    double resident = 0;
    pages >> all >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

Growth connectionsOf(double count) {
    const kap::test::TemporaryFolder folder;
    openedToFill(folder)->Execute(
        u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40)); "
        u"INSERT INTO Clienti VALUES (1, 'Rossi')");
    std::vector<Ref<kap::ado::Connection>> connections;
    connections.reserve(static_cast<std::size_t>(count));
    const double before = residentBytes();
    const auto begun = Clock::now();
    for (int i = 0; i < static_cast<int>(count); ++i) {
        connections.push_back(opened(folder.database()));
        expect(numberOf(connections.back(), "SELECT Codice FROM Clienti") == 1, "a row is missing");
    }
    return {nanosecondsSince(begun) / count, (residentBytes() - before) / count};
}

// --- Statements of a script

Growth scriptOf(double statements) {
    const kap::test::TemporaryFolder folder;
    const auto connection = openedToFill(folder);
    connection->Execute(u"CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo money)");
    const auto sql = kap::make<kap::CSQL>();
    sql->setActiveConnection(connection);
    const auto begun = Clock::now();
    for (int i = 0; i < static_cast<int>(statements); ++i) {
        sql->Command("INSERT INTO Conti VALUES (" + std::to_string(i) + ", 100.25)",
                     u"Inserimento fallito");
    }
    expect(sql->Execute(), "the script failed");
    const double took = nanosecondsSince(begun);
    expect(
        numberOf(connection, "SELECT COUNT(*) FROM Conti") == static_cast<std::int64_t>(statements),
        "rows are missing");
    return {took / statements, 0};
}

KAP_BENCH_GROWTH({.name = "recordset: rows of a client cursor",
                  .sizes = "rows",
                  .item = "one row, filled and kept",
                  .at = {10'000, 100'000, 1'000'000, 10'000'000},
                  .take = cursorOf,
                  .most = 1.5});
KAP_BENCH_GROWTH({.name = "file: a row by its key",
                  .sizes = "megabytes",
                  .item = "one DB_Read",
                  .at = {16, 256, 4'096, 102'400},
                  .take = readInFileOf,
                  // The smallest stays in the cache whole; of the largest each read takes a page.
                  .most = 5});
KAP_BENCH_GROWTH({.name = "file: opening one of many tables",
                  .sizes = "tables",
                  .item = "opening and the first query, for each table",
                  .at = {100, 1'000, 10'000},
                  .take = openingOf,
                  .most = 1.5});
KAP_BENCH_GROWTH({.name = "connection: many in a process",
                  .sizes = "connections",
                  .item = "opening one, with its first query",
                  .at = {10, 100, 1'000},
                  .take = connectionsOf,
                  .most = 1.5});
KAP_BENCH_GROWTH({.name = "script: statements of one CSQL",
                  .sizes = "statements",
                  .item = "one statement, added and executed",
                  .at = {1'000, 10'000, 100'000},
                  .take = scriptOf,
                  .most = 1.5});

}  // namespace
