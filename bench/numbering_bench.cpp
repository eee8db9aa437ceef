// Document numbers beside bare SQLite: the same file settings, every number on disk before the
// next.

#include <sqlite3.h>
#include <memory>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/numbering/document_numbers.hpp>

#include "bench/job.hpp"
#include "engine/sqlite/collation.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;
using kap::Variant;

constexpr int kUsed = 1000;

// A company whose counter A takes numbers, and whose counter B stands before a thousand documents.
class Company {
public:
    static Company& get() {
        static Company company;
        return company;
    }

    Variant& connection() { return connection_; }
    [[nodiscard]] sqlite3* bare() const { return bare_.get(); }

private:
    Company() {
        const std::string file = folder_.file("bench.db");
        const auto connection = kap::make<kap::ado::Connection>();
        connection->Open("Provider=KapLocal;Data Source=" + file);
        connection->Execute(
            u"CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5));"
            u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
            u"GestProvv int, PRIMARY KEY (Codice, Anno));"
            u"CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, "
            u"Stato varchar(1), PRIMARY KEY (Codice, Anno, Numero));"
            u"CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, "
            u"MC_Registrazione varchar(10), PRIMARY KEY (Anno, Tipo, Numero));"
            u"CREATE TABLE con_TabCausali (Codice varchar(5), Registro varchar(5));"
            u"CREATE TABLE con_MovConT (Protocollo int, Causale varchar(5), Data datetime);"
            u"CREATE TABLE con_MovConD (Protocollo int, Anno smallint, Registro varchar(5));"
            u"INSERT INTO vtx_TabDoc VALUES ('DOC', 'B');"
            u"INSERT INTO vtx_TabPro VALUES ('A', 2025, 0, 0, 0), ('B', 2025, 0, 0, 0)");
        connection->BeginTrans();
        for (int i = 1; i <= kUsed; ++i) {
            connection->Execute("INSERT INTO mag_TDocumenti VALUES (2025, 'DOC', " +
                                std::to_string(i) + ", NULL)");
        }
        connection->CommitTrans();
        connection_ = connection;
        sqlite3* handle = nullptr;
        if (sqlite3_open(file.c_str(), &handle) != SQLITE_OK) {
            throw std::runtime_error("the sample company cannot be opened bare");
        }
        bare_.reset(handle);
        kap::engine::registerCollations(bare_.get());  // the columns name it
        run("PRAGMA synchronous = FULL");
    }
    ~Company() {
        bare_.reset();
        connection_ = Variant();
    }
    void run(const char* sql) const {
        if (sqlite3_exec(bare_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(bare_.get()));
        }
    }

    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    kap::test::TemporaryFolder folder_;
    Variant connection_;
    std::unique_ptr<sqlite3, Close> bare_;
};

class BareNumberingStatement {
public:
    explicit BareNumberingStatement(const std::string& sql) {
        if (sqlite3_prepare_v2(Company::get().bare(), sql.c_str(), -1, &statement_, nullptr) !=
            SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(Company::get().bare()));
        }
    }
    ~BareNumberingStatement() { sqlite3_finalize(statement_); }
    BareNumberingStatement(const BareNumberingStatement&) = delete;
    BareNumberingStatement& operator=(const BareNumberingStatement&) = delete;

    // Runs it with these values; the first column of its first row, 0 when it has none.
    int run(std::initializer_list<int> values = {}) {
        sqlite3_reset(statement_);
        int position = 0;
        for (const int value : values) {
            sqlite3_bind_int(statement_, ++position, value);
        }
        int found = 0;
        int code = sqlite3_step(statement_);
        if (code == SQLITE_ROW) {
            found = sqlite3_column_int(statement_, 0);
            code = sqlite3_step(statement_);
        }
        if (code != SQLITE_DONE && code != SQLITE_ROW) {
            throw std::runtime_error(sqlite3_errmsg(Company::get().bare()));
        }
        sqlite3_reset(statement_);
        return found;
    }

private:
    sqlite3_stmt* statement_ = nullptr;
};

int ask(const char16_t* counter, const char16_t* mode, std::int16_t handling) {
    Ref<kap::CErrore> errore;
    const Variant number =
        kap::numbering::Progressivi(u"", u"D", mode, 2025, 0, Company::get().connection(), counter,
                                    u"vtx_TabDoc", handling, errore);
    return kap::convert::toLong(number);
}

void takeNumbers(benchmark::State& state) {
    const int before = ask(u"A", u"L", 0);
    int last = 0;
    for (auto _ : state) {
        last = ask(u"A", u"S", 0);
    }
    if (last != before + static_cast<int>(state.iterations()) - 1) {
        state.SkipWithError("numbers are missing");
    }
    state.SetItemsProcessed(state.iterations());
}

// Reads the counter and writes it if it is still what was read, in a transaction of its own.
void updateBare(benchmark::State& state) {
    BareNumberingStatement read("SELECT n_Def FROM vtx_TabPro WHERE Codice = 'A' AND Anno = 2025");
    BareNumberingStatement begin("BEGIN IMMEDIATE");
    BareNumberingStatement write(
        "UPDATE vtx_TabPro SET n_Def = ?1 WHERE Codice = 'A' AND Anno = 2025 AND n_Def = ?2");
    BareNumberingStatement commit("COMMIT");
    int updated = 0;
    for (auto _ : state) {
        const int last = read.run();
        begin.run();
        write.run({last + 1, last});
        updated += sqlite3_changes(Company::get().bare());
        commit.run();
    }
    if (updated != static_cast<int>(state.iterations())) {
        state.SkipWithError("updates are missing");
    }
    state.SetItemsProcessed(state.iterations());
}

// Each number that is passed over is one search, and the one that is found free another.
void passOverUsed(benchmark::State& state) {
    int found = 0;
    for (auto _ : state) {
        found = ask(u"B", u"L", 1);
    }
    if (found != kUsed + 1) {
        state.SkipWithError("the first unused number is another one");
    }
    state.SetItemsProcessed(state.iterations() * (kUsed + 1));
}

// The same searches, each a text of its own as the library sends it.
void searchBare(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) {
        number = 1;
        for (int found = 1; found != 0; number += found != 0 ? 1 : 0) {
            const std::string range =
                " BETWEEN " + std::to_string(number) + " AND " + std::to_string(number);
            found = BareNumberingStatement(
                        "SELECT d.Numero AS Numero FROM mag_TDocumenti d JOIN vtx_TabDoc t ON "
                        "t.Codice = d.Tipo WHERE d.Anno = 2025 AND t.TipoProg = 'B' AND "
                        "ifnull(d.MC_Registrazione, '') IN ('', '0') AND d.Numero" +
                        range +
                        " UNION SELECT Numero FROM vtx_TabProPrenotati WHERE Anno = 2025 AND "
                        "Codice = 'B' AND Numero" +
                        range +
                        " UNION SELECT Protocollo FROM con_MovConT JOIN con_TabCausali c ON "
                        "c.Codice = Causale WHERE c.Registro = 'B' AND Protocollo" +
                        range +
                        " UNION SELECT Protocollo FROM con_MovConD WHERE Anno = 2025 AND "
                        "Registro = 'B' AND Protocollo" +
                        range + " ORDER BY Numero")
                        .run();
        }
    }
    if (number != kUsed + 1) {
        state.SkipWithError("the first unused number is another one");
    }
    state.SetItemsProcessed(state.iterations() * (kUsed + 1));
}

KAP_BENCH_PAIR("numbering: numbers taken by one process", {"Progressivi", takeNumbers},
               {"sqlite3: read, then a guarded update on disk", updateBare},
               kap::bench::atLeast(0.9));
KAP_BENCH_PAIR("numbering: a search while passing over 1,000 used numbers",
               {"Progressivi, one number passed over", passOverUsed},
               {"sqlite3, the same search's text", searchBare}, 3.0);

}  // namespace
