// The dialect beside bare SQLite: the same statements prepared from what they translate to, on
// files with the same settings.

#include <sqlite3.h>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "bench/job.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;

constexpr int kInserts = 1000;
constexpr int kQueries = 1000;
constexpr int kDialectRows = 100;
// An amount is kept as a whole number of ten-thousandths.
constexpr std::int64_t kTenThousand = 10000;
constexpr std::int64_t kQuarter = 2500;

// The same table in two files, one for each arm, both in write-ahead mode with full
// synchronisation.
class Databases {
public:
    static Databases& get() {
        static Databases databases;
        return databases;
    }

    [[nodiscard]] const Ref<kap::ado::Connection>& ours() const { return ours_; }
    [[nodiscard]] sqlite3* bare() const { return bare_.get(); }

    void run(const char* sql) const {
        if (sqlite3_exec(bare(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(bare()));
        }
    }

private:
    Databases() {
        ours_->Open("Provider=KapLocal;Data Source=" + folder_.file("ours.db"));
        ours_->Execute(
            u"CREATE TABLE t (id int PRIMARY KEY, name varchar(40), price money); "
            u"CREATE TABLE s (id int PRIMARY KEY, name varchar(40), price money)");
        sqlite3* handle = nullptr;
        if (sqlite3_open(folder_.file("bare.db").c_str(), &handle) != SQLITE_OK) {
            throw std::runtime_error("the bare database cannot be opened");
        }
        bare_.reset(handle);
        run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; "
            "CREATE TABLE t (id int NOT NULL, name varchar(40) COLLATE NOCASE, price money, "
            "PRIMARY KEY (id)); "
            "CREATE TABLE s (id int NOT NULL, name varchar(40) COLLATE NOCASE, price money, "
            "PRIMARY KEY (id))");
        for (int i = 0; i < kDialectRows; ++i) {
            const std::string n = std::to_string(i);
            ours_->Execute("INSERT INTO s VALUES (" + n + ", 'name " + n + "', " + n + ".5)");
            run(("INSERT INTO s VALUES (" + n + ", 'name " + n + "', " + n + "5000)").c_str());
        }
    }

    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    kap::test::TemporaryFolder folder_;
    Ref<kap::ado::Connection> ours_ = kap::make<kap::ado::Connection>();
    std::unique_ptr<sqlite3, Close> bare_;
};

// One text of many statements, each with values of its own, in one transaction.
std::string insertScript() {
    std::string script = "BEGIN TRANSACTION;\n";
    for (int i = 0; i < kInserts; ++i) {
        const std::string n = std::to_string(i);
        script += "INSERT INTO t VALUES (" + n + ", 'name of number " + n + "', " + n + ".25);\n";
    }
    return script + "COMMIT";
}

void insertBatch(benchmark::State& state) {
    const kap::String script = insertScript();
    const auto& connection = Databases::get().ours();
    for (auto _ : state) {
        state.PauseTiming();
        connection->Execute(u"DELETE FROM t");
        state.ResumeTiming();
        connection->Execute(script);
    }
    const auto count = connection->Execute(u"SELECT count(*) FROM t");
    if (count->Fields()->Item(0)->Value().as<std::int32_t>() != kInserts) {
        state.SkipWithError("not every row was inserted");
    }
    state.SetItemsProcessed(state.iterations() * kInserts);
}

// The statement is prepared once, and its values are bound.
void insertBatchBare(benchmark::State& state) {
    const Databases& databases = Databases::get();
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(databases.bare(), "INSERT INTO t VALUES (?, ?, ?)", -1, &statement, nullptr);
    for (auto _ : state) {
        state.PauseTiming();
        databases.run("DELETE FROM t");
        state.ResumeTiming();
        databases.run("BEGIN IMMEDIATE");
        for (int i = 0; i < kInserts; ++i) {
            const std::string name = "name of number " + std::to_string(i);
            sqlite3_bind_int64(statement, 1, i);
            sqlite3_bind_text(statement, 2, name.data(), static_cast<int>(name.size()),
                              SQLITE_STATIC);
            sqlite3_bind_int64(statement, 3, std::int64_t{i} * kTenThousand + kQuarter);
            if (sqlite3_step(statement) != SQLITE_DONE) {
                state.SkipWithError(sqlite3_errmsg(databases.bare()));
            }
            sqlite3_reset(statement);
        }
        databases.run("COMMIT");
    }
    sqlite3_finalize(statement);
    state.SetItemsProcessed(state.iterations() * kInserts);
}

// Texts that no cache has seen: the number goes on from one run to the next.
std::string newQuery(const char* like) {
    static int number = 0;
    const std::string n = std::to_string(++number);
    return "SELECT id, name, price FROM s WHERE id = " + n + " AND name LIKE '" + like + n + "%'";
}

void differentQueries(benchmark::State& state) {
    const auto& connection = Databases::get().ours();
    for (auto _ : state) {
        for (int i = 0; i < kQueries; ++i) {
            benchmark::DoNotOptimize(connection->Execute(kap::String(newQuery("name "))));
        }
    }
    state.SetItemsProcessed(state.iterations() * kQueries);
}

void readAll(sqlite3* handle, const std::string& sql, benchmark::State& state) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        state.SkipWithError(sqlite3_errmsg(handle));
        return;
    }
    while (sqlite3_step(statement) == SQLITE_ROW) {
        benchmark::DoNotOptimize(sqlite3_column_int64(statement, 0));
        benchmark::DoNotOptimize(sqlite3_column_text(statement, 1));
        benchmark::DoNotOptimize(sqlite3_column_int64(statement, 2));
    }
    sqlite3_finalize(statement);
}

void differentQueriesBare(benchmark::State& state) {
    for (auto _ : state) {
        for (int i = 0; i < kQueries; ++i) {
            readAll(Databases::get().bare(), newQuery("name "), state);
        }
    }
    state.SetItemsProcessed(state.iterations() * kQueries);
}

constexpr const char* kSameQuery = "SELECT id, name, price FROM s WHERE price > 10";

void sameQuery(benchmark::State& state) {
    const auto& connection = Databases::get().ours();
    const kap::String query = kSameQuery;
    std::int32_t rows = 0;
    for (auto _ : state) {
        auto answer = connection->Execute(query);
        rows = 0;
        for (; !answer->Eof(); answer->MoveNext())
            ++rows;
    }
    constexpr std::int32_t kFound = 90;
    if (rows != kFound) state.SkipWithError("the query finds other rows");
}

void sameQueryBare(benchmark::State& state) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(Databases::get().bare(),
                       "SELECT id, name, price FROM s WHERE price > 100000", -1, &statement,
                       nullptr);
    for (auto _ : state) {
        // What was read is kept, as a recordset keeps it.
        std::vector<std::int64_t> numbers;
        std::vector<std::string> names;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            numbers.push_back(sqlite3_column_int64(statement, 0));
            names.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 1)));
            numbers.push_back(sqlite3_column_int64(statement, 2));
        }
        sqlite3_reset(statement);
        benchmark::DoNotOptimize(names);
        benchmark::DoNotOptimize(numbers);
    }
    sqlite3_finalize(statement);
}

KAP_BENCH_PAIR("dialect: 1,000 inserts that differ in literals, in one text",
               {"Connection.Execute of the text", insertBatch},
               {"sqlite3, prepared once, values bound", insertBatchBare}, 1.3);
KAP_BENCH_PAIR("dialect: different small queries, each seen for the first time",
               {"Connection.Execute", differentQueries},
               {"sqlite3_prepare_v2 and step of each text", differentQueriesBare}, 2.0);
KAP_BENCH_PAIR("dialect: the same query of 90 rows again",
               {"Connection.Execute and MoveNext", sameQuery},
               {"sqlite3, prepared once, rows kept in vectors", sameQueryBare}, 1.1);

}  // namespace
