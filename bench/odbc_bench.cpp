// Database servers beside the bare interface to them: the same driver, query, rows and forms of
// values.

#include <sched.h>
#include <sql.h>
#include <sqlext.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>

#include "bench/job.hpp"
#include "tests/support/build_folders.hpp"

namespace {

using kap::Ref;
using kap::String;
using kap::Variant;

constexpr std::int64_t kOdbcRows = 1'000'000;
constexpr std::int64_t kExpected = kOdbcRows * (kOdbcRows + 1) / 2;
constexpr const char* kOdbcQuery = "SELECT id, articolo, prezzo, data, quantita FROM righe";
constexpr const char* kOneRow =
    "SELECT id, articolo, prezzo, data, quantita FROM righe WHERE id = 77";

// Keeps this thread, and the processes that it starts, on one processor. A round trip takes twice
// as long when the scheduler has put the server's process of a connection on another one, and each
// of the two arms has a connection of its own.
class OnOneProcessor {
public:
    OnOneProcessor() {
        sched_getaffinity(0, sizeof(before_), &before_);
        std::size_t last = CPU_SETSIZE - 1;
        while (last > 0 && !CPU_ISSET(last, &before_)) {
            --last;
        }
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(last, &one);
        sched_setaffinity(0, sizeof(one), &one);
    }
    ~OnOneProcessor() { sched_setaffinity(0, sizeof(before_), &before_); }
    OnOneProcessor(const OnOneProcessor&) = delete;
    OnOneProcessor& operator=(const OnOneProcessor&) = delete;

private:
    cpu_set_t before_{};
};

// A server of the benchmark's own, with its table, for the length of the program.
class SampleServer {
public:
    static SampleServer& get() {
        static SampleServer server;
        return server;
    }
    [[nodiscard]] const Ref<kap::ado::Connection>& connection() const { return connection_; }
    [[nodiscard]] SQLHDBC bare() const { return bare_; }

private:
    SampleServer() {
        const OnOneProcessor pinned;
        script("start");
        std::string text;
        std::getline(std::ifstream(folder_ + "/connection"), text);
        const std::string place = "{database}";
        if (text.empty()) {
            throw std::runtime_error("there is no PostgreSQL server to measure with");
        }
        text.replace(text.find(place), place.size(), "postgres");
        connection_->Open(text);
        connection_->setCommandTimeout(0);
        connection_->Execute(
            "CREATE TABLE righe AS SELECT i AS id, 'Articolo numero ' || i AS articolo0, "
            "(i % 1000) + 0.25::numeric(10,2) AS prezzo0, "
            "timestamp '2003-12-25 10:30:00' + i * interval '1 minute' AS data, "
            "(i % 100)::double precision AS quantita FROM generate_series(1, " +
            std::to_string(kOdbcRows) +
            ") i; ALTER TABLE righe ADD COLUMN articolo varchar(40), "
            "ADD COLUMN prezzo numeric(10,2); UPDATE righe SET articolo = articolo0, prezzo = "
            "prezzo0; ALTER TABLE righe DROP COLUMN articolo0, DROP COLUMN prezzo0, "
            "ADD PRIMARY KEY (id)");
        openBare(text);
    }
    ~SampleServer() {
        connection_->Close();
        SQLDisconnect(bare_);
        SQLFreeHandle(SQL_HANDLE_DBC, bare_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
        script("stop");
        std::filesystem::remove_all(folder_);
    }

    void script(const std::string& job) const {
        const std::string command = std::string(kap::test::kSourceFolder) +
                                    "/scripts/postgres_server.sh " + job + " '" + folder_ + "'";
        if (std::system(command.c_str()) != 0) {
            throw std::runtime_error("the server's script failed");
        }
    }

    void openBare(std::string text) {
        SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION,
                      reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &bare_);
        // The driver manager quotes by braces.
        const std::string quoted = "\"geheim;{x}\"";
        const std::size_t at = text.find(quoted);
        text.replace(at, quoted.size(), "{geheim;{x}}}");
        std::u16string units = String(text).units();
        if (!SQL_SUCCEEDED(SQLDriverConnectW(bare_, nullptr,
                                             reinterpret_cast<SQLWCHAR*>(units.data()), SQL_NTS,
                                             nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT))) {
            throw std::runtime_error("the bare connection cannot be opened");
        }
    }

    std::string folder_ =
        std::string(kap::test::kBuildFolder) + "/bench-server-" + std::to_string(getpid());
    Ref<kap::ado::Connection> connection_ = kap::make<kap::ado::Connection>();
    SQLHENV environment_ = nullptr;
    SQLHDBC bare_ = nullptr;
};

class BareOdbcStatement {
public:
    explicit BareOdbcStatement(const char* query) {
        SQLAllocHandle(SQL_HANDLE_STMT, SampleServer::get().bare(), &statement_);
        std::u16string units = String(query).units();
        if (!SQL_SUCCEEDED(
                SQLExecDirectW(statement_, reinterpret_cast<SQLWCHAR*>(units.data()), SQL_NTS))) {
            throw std::runtime_error("the bare query fails");
        }
    }
    ~BareOdbcStatement() { SQLFreeHandle(SQL_HANDLE_STMT, statement_); }
    BareOdbcStatement(const BareOdbcStatement&) = delete;
    BareOdbcStatement& operator=(const BareOdbcStatement&) = delete;
    [[nodiscard]] SQLHSTMT get() const { return statement_; }

private:
    SQLHSTMT statement_ = nullptr;
};

// The places of one row's, or one block's, values.
template <std::size_t kCount>
struct Places {
    std::array<SQLBIGINT, kCount> id{};
    std::array<std::array<SQLWCHAR, 81>, kCount> article{};
    std::array<std::array<char, 16>, kCount> price{};
    std::array<SQL_TIMESTAMP_STRUCT, kCount> date{};
    std::array<double, kCount> quantity{};
    std::array<std::array<SQLLEN, kCount>, 5> lengths{};

    template <class Take>
    void each(Take take) {
        take(1, SQL_C_SBIGINT, id.data(), sizeof(id[0]), lengths[0].data());
        take(2, SQL_C_WCHAR, article.data(), sizeof(article[0]), lengths[1].data());
        take(3, SQL_C_CHAR, price.data(), sizeof(price[0]), lengths[2].data());
        take(4, SQL_C_TYPE_TIMESTAMP, date.data(), sizeof(date[0]), lengths[3].data());
        take(5, SQL_C_DOUBLE, quantity.data(), sizeof(quantity[0]), lengths[4].data());
    }
};

std::int64_t fetchedRows(const BareOdbcStatement& statement) {
    Places<1> places;
    std::int64_t sum = 0;
    while (SQL_SUCCEEDED(SQLFetch(statement.get()))) {
        places.each([&](SQLUSMALLINT column, SQLSMALLINT form, void* place, std::size_t size,
                        SQLLEN* length) {
            SQLGetData(statement.get(), column, form, place, static_cast<SQLLEN>(size), length);
        });
        sum += places.id[0];
    }
    return sum;
}

std::int64_t bareRows(const char* query) {
    return fetchedRows(BareOdbcStatement(query));
}

// A text of many queries, of the rows from 1 on.
constexpr std::int64_t kBatchQueries = 20;
constexpr std::int64_t kBatchRows = 50;
constexpr std::int64_t kBatchExpected =
    kBatchQueries * kBatchRows * (kBatchQueries * kBatchRows + 1) / 2;

std::string batchText() {
    std::string text;
    for (std::int64_t i = 0; i < kBatchQueries; ++i) {
        text += std::string(kOdbcQuery) + " WHERE id BETWEEN " +
                std::to_string(i * kBatchRows + 1) + " AND " +
                std::to_string((i + 1) * kBatchRows) + " ORDER BY id;";
    }
    return text;
}

std::int64_t bareBatch(const std::string& text) {
    const BareOdbcStatement statement(text.c_str());
    std::int64_t sum = fetchedRows(statement);
    while (SQL_SUCCEEDED(SQLMoreResults(statement.get()))) {
        sum += fetchedRows(statement);
    }
    return sum;
}

std::int64_t batchOfRecordsets(const String& text) {
    std::int64_t sum = 0;
    Ref<kap::ado::Recordset> rows = SampleServer::get().connection()->Execute(text);
    for (; rows; rows = rows->NextRecordset()) {
        const auto id = rows->Fields()->Item(0);
        for (; !rows->Eof(); rows->MoveNext()) {
            sum += id->Value().as<std::int32_t>();
        }
    }
    return sum;
}

std::int64_t bareBlocks(const char* query) {
    constexpr std::size_t kBlock = 1000;
    static Places<kBlock> places;
    const BareOdbcStatement statement(query);
    SQLULEN fetched = 0;
    SQLSetStmtAttr(statement.get(), SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kBlock),
                   0);
    SQLSetStmtAttr(statement.get(), SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
    places.each(
        [&](SQLUSMALLINT column, SQLSMALLINT form, void* place, std::size_t size, SQLLEN* length) {
            SQLBindCol(statement.get(), column, form, place, static_cast<SQLLEN>(size), length);
        });
    std::int64_t sum = 0;
    while (SQL_SUCCEEDED(SQLFetch(statement.get()))) {
        for (std::size_t row = 0; row < fetched; ++row) {
            sum += places.id[row];
        }
    }
    return sum;
}

void readOdbcRecordset(benchmark::State& state) {
    Variant connection(SampleServer::get().connection());
    for (auto _ : state) {
        const auto rows = kap::db::OpenRecordset(kOdbcQuery, connection, -1, -1, -1,
                                                 /*DeleteNull=*/false);
        if (rows->RecordCount() != kOdbcRows) {
            state.SkipWithError("rows are missing");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kOdbcRows);
}

template <class Read>
void readBare(benchmark::State& state, Read read) {
    for (auto _ : state) {
        if (read(kOdbcQuery) != kExpected) {
            state.SkipWithError("the rows do not add up");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kOdbcRows);
}

void readBareOdbcRows(benchmark::State& state) {
    readBare(state, bareRows);
}

void readBareBlocks(benchmark::State& state) {
    readBare(state, bareBlocks);
}

void readOdbcRecord(benchmark::State& state) {
    Variant connection(SampleServer::get().connection());
    const OnOneProcessor pinned;
    const String query(kOneRow);
    Variant text;
    for (auto _ : state) {
        if (!kap::db::DB_Read(connection, query, text)) {
            state.SkipWithError("the record is missing");
            break;
        }
    }
    if (text.as<String>().view().find(u"<ARTICOLO>Articolo numero 77</ARTICOLO>") ==
        std::u16string::npos) {
        state.SkipWithError("a field is missing");
    }
}

void readBareOdbcRecord(benchmark::State& state) {
    const OnOneProcessor pinned;
    for (auto _ : state) {
        if (bareRows(kOneRow) != 77) {
            state.SkipWithError("the row is missing");
            break;
        }
    }
}

template <class Read>
void readBatch(benchmark::State& state, Read read) {
    const OnOneProcessor pinned;
    for (auto _ : state) {
        if (read() != kBatchExpected) {
            state.SkipWithError("the rows do not add up");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kBatchQueries);
}

void readBatchOfRecordsets(benchmark::State& state) {
    const String text(batchText());
    readBatch(state, [&] { return batchOfRecordsets(text); });
}

void readBareBatch(benchmark::State& state) {
    const std::string text = batchText();
    readBatch(state, [&] { return bareBatch(text); });
}

KAP_BENCH_PAIR("server: open 1,000,000 rows, row by row", {"a client cursor", readOdbcRecordset},
               {"SQLFetch and SQLGetData of each value", readBareOdbcRows}, kap::bench::atLeast(2));
KAP_BENCH_PAIR("server: open 1,000,000 rows, in blocks", {"a client cursor", readOdbcRecordset},
               {"SQLFetchScroll of bound blocks", readBareBlocks}, 1.2);
KAP_BENCH_PAIR("server: DB_Read of one row", {"DB_Read", readOdbcRecord},
               {"the ODBC calls of the same round trip", readBareOdbcRecord}, 1.2);
KAP_BENCH_PAIR("server: a text of 20 queries of 50 rows", {"NextRecordset", readBatchOfRecordsets},
               {"SQLMoreResults", readBareBatch}, 1.2);

}  // namespace
