// Several programs that write one database file, beside the same in bare SQLite: every write on
// disk before the next, in write-ahead mode.

#include <sqlite3.h>
#include <memory>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/numbering/document_numbers.hpp>

#include "bench/job.hpp"
#include "bench/processes.hpp"
#include "engine/sqlite/collation.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;
using kap::Variant;
using kap::bench::SharedWork;
using kap::bench::Values;

constexpr std::chrono::milliseconds kTime{2000};
constexpr int kSharedRows = 100;
constexpr int kBusyMillis = 30'000;

// A file with a table of rows to change and a counter, which goes with the object.
class SharedFile {
public:
    SharedFile() {
        const auto connection = open();
        connection->Execute(
            u"CREATE TABLE Righe (Id int PRIMARY KEY, Quantita int, Versione timestamp);"
            u"CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5));"
            u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
            u"GestProvv int, PRIMARY KEY (Codice, Anno));"
            u"INSERT INTO vtx_TabPro VALUES ('A', 2025, 0, 0, 0);"
            u"DECLARE @i int SET @i = 0 WHILE @i < 100 BEGIN "
            u"INSERT INTO Righe (Id, Quantita) VALUES (@i, 0) SET @i = @i + 1 END");
        connection->Close();
    }
    ~SharedFile() = default;
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;

    [[nodiscard]] std::string path() const { return folder_.file("shared.db"); }

    [[nodiscard]] Ref<kap::ado::Connection> open() const {
        auto connection = kap::make<kap::ado::Connection>();
        connection->Open("Provider=KapLocal;Data Source=" + path());
        return connection;
    }

    [[nodiscard]] std::int64_t number(const char16_t* query) const {
        const auto rows = kap::make<kap::ado::Recordset>();
        rows->Open(query, Variant(open()));
        return kap::convert::toLong(rows->Fields()->Item(0)->Value());
    }

private:
    kap::test::TemporaryFolder folder_;
};

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// The same file without the library.
class Bare {
public:
    explicit Bare(const std::string& path) {
        sqlite3* handle = nullptr;
        const int result = sqlite3_open(path.c_str(), &handle);
        database_.reset(handle);
        if (result != SQLITE_OK) throw std::runtime_error("the file cannot be opened bare");
        sqlite3_busy_timeout(handle, kBusyMillis);
        kap::engine::registerCollations(handle);  // the columns name it
        run("PRAGMA synchronous = FULL");
    }
    void run(const char* sql) {
        if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(database_.get()));
        }
    }
    [[nodiscard]] sqlite3_stmt* prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(database_.get(), sql, -1, &statement, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(database_.get()));
        }
        return statement;
    }

private:
    std::unique_ptr<sqlite3, Close> database_;
};

using Statement = std::unique_ptr<sqlite3_stmt, Close>;

void require(bool held, const char* what) {
    if (!held) throw std::runtime_error(what);
}

// --- Optimistic updates

// A client cursor with one row, whose update fails when somebody else has changed the row since:
// then it is read again.
class Updater {
public:
    Updater(const SharedFile& file, int process) : connection_(file.open()), row_(process) {}

    void update() {
        row_ = (row_ + 37) % kSharedRows;
        for (;;) {
            const auto rows = kap::make<kap::ado::Recordset>();
            rows->setCursorLocation(kap::ado::CursorLocationEnum::adUseClient);
            rows->Open("SELECT * FROM Righe WHERE Id = " + std::to_string(row_),
                       Variant(connection_), kap::ado::CursorTypeEnum::adOpenStatic,
                       kap::ado::LockTypeEnum::adLockOptimistic);
            const auto field = rows->Fields()->Item(u"Quantita");
            field->setValue(kap::convert::toLong(field->Value()) + 1);
            try {
                rows->Update();
                return;
            } catch (const kap::AutomationError& error) {
                if (error.number() != kap::ado::errors::kConcurrency) throw;
                rows->CancelUpdate();
            }
        }
    }

private:
    Ref<kap::ado::Connection> connection_;
    int row_;
};

class BareUpdater {
public:
    BareUpdater(const SharedFile& file, int process)
        : bare_(file.path()),
          read_(bare_.prepare("SELECT Quantita FROM Righe WHERE Id = ?1")),
          write_(
              bare_.prepare("UPDATE Righe SET Quantita = ?2 + 1 WHERE Id = ?1 AND Quantita = ?2")),
          begin_(bare_.prepare("BEGIN IMMEDIATE")),
          commit_(bare_.prepare("COMMIT")),
          row_(process) {}

    void update() {
        row_ = (row_ + 37) % kSharedRows;
        sqlite3_bind_int(read_.get(), 1, row_);
        require(sqlite3_step(read_.get()) == SQLITE_ROW, "the row is missing");
        const int quantity = sqlite3_column_int(read_.get(), 0);
        sqlite3_reset(read_.get());
        sqlite3_bind_int(write_.get(), 1, row_);
        sqlite3_bind_int(write_.get(), 2, quantity);
        for (sqlite3_stmt* each : {begin_.get(), write_.get(), commit_.get()}) {
            require(sqlite3_step(each) == SQLITE_DONE, "the bare update failed");
            sqlite3_reset(each);
        }
    }

private:
    Bare bare_;
    Statement read_;
    Statement write_;
    Statement begin_;
    Statement commit_;
    int row_;
};

template <typename Worker>
SharedWork updates(int processes, bool exact) {
    const SharedFile file;
    const SharedWork work = kap::bench::inProcesses(processes, kTime, [&](int process) {
        auto worker = std::make_shared<Worker>(file, process);
        return [worker] { worker->update(); };
    });
    // The bare arm counts what it lost to another one's update as done.
    const std::int64_t sum = file.number(u"SELECT SUM(Quantita) FROM Righe");
    require(exact ? sum == work.done : sum <= work.done, "updates were lost");
    return work;
}

template <int kProcesses>
Values updatesPerSecond() {
    return {updates<Updater>(kProcesses, true).perSecond,
            updates<BareUpdater>(kProcesses, false).perSecond};
}

template <int kProcesses>
Values longestUpdate() {
    const SharedWork work = updates<Updater>(kProcesses, true);
    return {work.longestMillis, work.meanMillis};
}

// --- Numbers

class Taker {
public:
    Taker(const SharedFile& file, int /*process*/) : connection_(file.open()) {}

    // A call that finds the counter taken by another one too often is refused, and made again.
    void take() {
        constexpr int kMostRefusals = 100;
        for (int refusals = 0; !given(); ++refusals) {
            require(refusals < kMostRefusals, "no number was given out");
        }
    }

private:
    [[nodiscard]] bool given() {
        const Variant number = kap::numbering::Progressivi(u"", u"D", u"S", 2025, 0, connection_,
                                                           u"A", u"vtx_TabDoc", 0, errore_);
        return kap::convert::toDouble(number) > 0;
    }

    Variant connection_;
    Ref<kap::CErrore> errore_;
};

class BareTaker {
public:
    BareTaker(const SharedFile& file, int /*process*/)
        : bare_(file.path()),
          begin_(bare_.prepare("BEGIN IMMEDIATE")),
          write_(bare_.prepare("UPDATE vtx_TabPro SET n_Def = n_Def + 1 WHERE Codice = 'A' AND "
                               "Anno = 2025")),
          commit_(bare_.prepare("COMMIT")) {}

    void take() {
        for (sqlite3_stmt* each : {begin_.get(), write_.get(), commit_.get()}) {
            require(sqlite3_step(each) == SQLITE_DONE, "the bare counter failed");
            sqlite3_reset(each);
        }
    }

private:
    Bare bare_;
    Statement begin_;
    Statement write_;
    Statement commit_;
};

template <typename Worker>
SharedWork numbers(int processes) {
    const SharedFile file;
    const SharedWork work = kap::bench::inProcesses(processes, kTime, [&](int process) {
        auto worker = std::make_shared<Worker>(file, process);
        return [worker] { worker->take(); };
    });
    require(file.number(u"SELECT n_Def FROM vtx_TabPro") == work.done,
            "numbers were lost or given out twice");
    return work;
}

template <int kProcesses>
Values numbersPerSecond() {
    return {numbers<Taker>(kProcesses).perSecond, numbers<BareTaker>(kProcesses).perSecond};
}

Values longestNumber() {
    constexpr int kMany = 8;
    const SharedWork work = numbers<Taker>(kMany);
    return {work.longestMillis, work.meanMillis};
}

KAP_BENCH_VALUES("shared file: optimistic updates, 1 process", "per second",
                 "Recordset.Open and Update", "sqlite3, prepared: read, then a guarded update",
                 updatesPerSecond<1>, kap::bench::atLeast(0.9));
KAP_BENCH_VALUES("shared file: optimistic updates, 4 processes", "per second",
                 "Recordset.Open and Update", "sqlite3, prepared: read, then a guarded update",
                 updatesPerSecond<4>, kap::bench::atLeast(0.8));
KAP_BENCH_VALUES("shared file: optimistic updates, 8 processes", "per second",
                 "Recordset.Open and Update", "sqlite3, prepared: read, then a guarded update",
                 updatesPerSecond<8>, kap::bench::atLeast(0.8));
KAP_BENCH_VALUES("shared file: longest update beside the mean, 8 processes", "ms", "the longest",
                 "the mean", longestUpdate<8>, kap::bench::atMost(10));
KAP_BENCH_VALUES("shared file: numbers given out, 8 processes", "per second", "Progressivi",
                 "sqlite3, prepared: an immediate update", numbersPerSecond<8>,
                 kap::bench::atLeast(0.7));
KAP_BENCH_VALUES("shared file: longest number beside the mean, 8 processes", "ms", "the longest",
                 "the mean", longestNumber, kap::bench::atMost(10));

}  // namespace
