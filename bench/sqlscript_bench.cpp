// Scripts of a thousand statements and transfers of a million rows beside bare SQLite doing the
// same in one transaction, and what the length of a script does to its making.

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "bench/job.hpp"
#include "engine/sqlite/collation.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;

constexpr int kStatements = 1'000;
constexpr int kScriptRows = 1'000'000;

std::string statement(int number) {
    return "UPDATE Conti SET Saldo = Saldo + 1 WHERE Codice = " + kap::plain::text(number);
}

// A file with accounts and two tables for transfers, open twice: through the library and bare.
class ScriptDatabase {
public:
    static ScriptDatabase& get() {
        static ScriptDatabase database;
        return database;
    }

    [[nodiscard]] const Ref<kap::ado::Connection>& connection() const { return connection_; }

    void runBare(const std::string& script) const {
        if (sqlite3_exec(bare_.get(), script.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(bare_.get()));
        }
    }

private:
    ScriptDatabase() {
        const std::string file = folder_.file("bench.db");
        connection_->Open("Provider=KapLocal;Synchronous=Off;Data Source=" + file);
        connection_->Execute(
            u"CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo int NOT NULL) "
            u"CREATE TABLE Origine (Codice int NOT NULL, Nome varchar(30) NOT NULL, Qta int NOT "
            u"NULL) "
            u"CREATE TABLE Archivio (Codice int NOT NULL, Nome varchar(30) NOT NULL, Qta int NOT "
            u"NULL)");
        openBare(file);
        runBare("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                kap::plain::text(kStatements) + ") INSERT INTO Conti SELECT i, 0 FROM n");
        runBare("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                kap::plain::text(kScriptRows) +
                ") INSERT INTO Origine SELECT i, 'articolo ' || i, i % 100 FROM n");
    }
    ~ScriptDatabase() {
        bare_.reset();
        connection_->Close();
    }

    void openBare(const std::string& file) {
        sqlite3* handle = nullptr;
        if (sqlite3_open(file.c_str(), &handle) != SQLITE_OK) {
            throw std::runtime_error("the database cannot be opened bare");
        }
        bare_.reset(handle);
        kap::engine::registerCollations(handle);  // the columns name it
        runBare("PRAGMA synchronous = OFF");
    }

    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    kap::test::TemporaryFolder folder_;
    Ref<kap::ado::Connection> connection_ = kap::make<kap::ado::Connection>();
    std::unique_ptr<sqlite3, Close> bare_;
};

void runCommands(benchmark::State& state) {
    const auto sql = kap::make<kap::CSQL>();
    sql->setActiveConnection(ScriptDatabase::get().connection());
    for (auto _ : state) {
        sql->Clear();
        for (int i = 1; i <= kStatements; ++i) {
            sql->Command(statement(i), u"Aggiornamento fallito");
        }
        if (!sql->Execute()) {
            state.SkipWithError("the script failed");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kStatements);
}

void runBareStatements(benchmark::State& state) {
    const ScriptDatabase& database = ScriptDatabase::get();
    for (auto _ : state) {
        database.runBare("BEGIN IMMEDIATE");
        for (int i = 1; i <= kStatements; ++i) {
            database.runBare(statement(i));
        }
        database.runBare("COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kStatements);
}

template <int Statements>
void buildScript(benchmark::State& state) {
    std::size_t length = 0;
    for (auto _ : state) {
        const auto sql = kap::make<kap::CSQL>();
        for (int i = 0; i < Statements; ++i) {
            sql->Command(u"UPDATE Conti SET Nome = 'Rossi' WHERE Codice = 123456",
                         u"Aggiornamento fallito");
        }
        length = sql->SQL_Execute().size();
    }
    constexpr std::size_t kLeast = 100;  // characters a statement and what stands around it
    if (length < kLeast * Statements) {
        state.SkipWithError("the script is too short");
    }
    state.SetItemsProcessed(state.iterations() * Statements);
}

void transferRows(benchmark::State& state) {
    const auto& connection = ScriptDatabase::get().connection();
    const auto sql = kap::make<kap::CSQL>();
    sql->setActiveConnection(connection);
    for (auto _ : state) {
        state.PauseTiming();
        connection->Execute(u"DELETE Archivio");
        state.ResumeTiming();
        sql->Clear();
        sql->Parametri()->Scrivi(u"FROM", u"Origine");
        sql->Parametri()->Scrivi(u"TO", u"Archivio");
        sql->AddTmp();
        if (!sql->Execute()) {
            state.SkipWithError("the transfer failed");
            break;
        }
    }
    const auto rows = connection->Execute(u"SELECT COUNT(*) FROM Archivio");
    if (rows->Fields()->Item(0)->Value().as<std::int32_t>() != kScriptRows) {
        state.SkipWithError("rows are missing");
    }
    state.SetItemsProcessed(state.iterations() * kScriptRows);
}

void insertBare(benchmark::State& state) {
    const ScriptDatabase& database = ScriptDatabase::get();
    for (auto _ : state) {
        state.PauseTiming();
        database.runBare("DELETE FROM Archivio");
        state.ResumeTiming();
        database.runBare(
            "BEGIN IMMEDIATE; INSERT INTO Archivio (Codice, Nome, Qta) SELECT Codice, Nome, Qta "
            "FROM Origine WHERE 1=1; COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kScriptRows);
}

KAP_BENCH_PAIR("script: build and execute 1,000 commands",
               {"CSQL, Command and Execute", runCommands},
               {"sqlite3_exec of the same statements", runBareStatements}, 1.3);
// Both longer than what the allocator keeps at hand, so that only the length differs.
KAP_BENCH_PAIR("script: a statement of 40,000 beside one of 10,000, building",
               {"a script of 40,000 statements, a statement", buildScript<40'000>},
               {"a script of 10,000 statements, a statement", buildScript<10'000>}, 1.1);
KAP_BENCH_PAIR("script: move 1,000,000 rows from table to table",
               {"CSQL, AddTmp and Execute", transferRows},
               {"sqlite3_exec of INSERT ... SELECT", insertBare}, 1.1);

}  // namespace
