// Writing a record beside bare SQLite: the same file settings and the same round trips.

#include <sqlite3.h>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/util/values.hpp>

#include "bench/job.hpp"
#include "engine/sqlite/collation.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::String;
using kap::Variant;

constexpr int kCardColumns = 30;
constexpr int kCard = 7;
constexpr double kDay = 37787;  // 15 June 2003
const char* const kCardQuery = "SELECT * FROM Schede WHERE Codice = 7";

// Texts, amounts, dates and numbers in turn, as the record of a customer or an article has them.
std::string cardColumn(int i) {
    constexpr std::array<const char*, 5> kTypes = {"varchar(40)", "money", "datetime", "int",
                                                   "decimal(12,2)"};
    return "C" + std::to_string(i) + " " + kTypes.at(static_cast<std::size_t>(i) % kTypes.size());
}

std::string cardValue(int i) {
    const std::string number = std::to_string(i * 37);
    const std::array<std::string, 5> values = {"valore del campo " + number, number, "15/06/2003",
                                               number, number};
    return values.at(static_cast<std::size_t>(i) % values.size());
}

// A table of records with a row version, every change of which is on disk before the next one, or
// is left to the system.
class Cards {
public:
    explicit Cards(bool waits) {
        const std::string file = folder_.file("cards.db");
        const auto connection = kap::make<kap::ado::Connection>();
        connection->Open("Provider=KapLocal;Data Source=" + file +
                         (waits ? "" : ";Synchronous=Off"));
        std::string create = "CREATE TABLE Schede (Codice int PRIMARY KEY, AggID timestamp";
        for (int i = 0; i < kCardColumns; ++i)
            create += ", " + cardColumn(i);
        connection->Execute(create + ")");
        connection->Execute(
            u"DECLARE @i int SET @i = 0 WHILE @i < 100 BEGIN INSERT INTO Schede (Codice) VALUES "
            u"(@i) SET @i = @i + 1 END");
        // The version of this record is the file's last, so that the next one is known.
        connection->Execute(u"UPDATE Schede SET C0 = 'prima' WHERE Codice = 7");
        connection_ = connection;
        sqlite3* handle = nullptr;
        if (sqlite3_open(file.c_str(), &handle) != SQLITE_OK) {
            throw std::runtime_error("the file of records cannot be opened bare");
        }
        bare_.reset(handle);
        kap::engine::registerCollations(handle);  // the columns name it
        run(waits ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = OFF");
    }

    [[nodiscard]] Variant& connection() { return connection_; }
    [[nodiscard]] sqlite3* bare() const { return bare_.get(); }
    void run(const char* sql) const {
        if (sqlite3_exec(bare_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(bare_.get()));
        }
    }

private:
    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    kap::test::TemporaryFolder folder_;
    Variant connection_;
    std::unique_ptr<sqlite3, Close> bare_;
};

class BareCardStatement {
public:
    BareCardStatement(sqlite3* handle, const char* sql) {
        if (sqlite3_prepare_v2(handle, sql, -1, &statement_, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(handle));
        }
    }
    ~BareCardStatement() { sqlite3_finalize(statement_); }
    BareCardStatement(const BareCardStatement&) = delete;
    BareCardStatement& operator=(const BareCardStatement&) = delete;
    [[nodiscard]] sqlite3_stmt* get() const { return statement_; }

private:
    sqlite3_stmt* statement_ = nullptr;
};

// The record as a client gives it back: all of its fields, and the version that it was read with,
// which the next change raises by one.
class CardText {
public:
    explicit CardText(Variant& connection) {
        const auto row = kap::db::OpenRecordset(kCardQuery, connection);
        const Variant version = row->Fields()->Item(u"AggID")->Value();
        version_ = std::stoull(kap::util::TSToHex(version).utf8());
        for (int i = 0; i < kCardColumns; ++i) {
            const std::string name = "C" + std::to_string(i);
            fields_ += String("<" + name + ">" + cardValue(i) + "</" + name + ">").units();
        }
    }
    [[nodiscard]] String next() {
        return u"<CODICE>7</CODICE><AGGID>" + String(std::to_string(version_++)).units() +
               u"</AGGID>" + fields_;
    }

private:
    std::uint64_t version_ = 0;
    std::u16string fields_;
};

void updateRecord(benchmark::State& state, bool waits) {
    Cards cards(waits);
    CardText card(cards.connection());
    const String query(kCardQuery);
    const auto errore = kap::make<kap::CErrore>();
    for (auto _ : state) {
        if (!kap::db::DB_Update(cards.connection(), query, card.next(), *errore)) {
            state.SkipWithError("the record was not written");
            break;
        }
    }
    const auto row = kap::db::OpenRecordset(kCardQuery, cards.connection());
    if (row->Fields()->Item(u"C25")->Value().as<String>().view() != u"valore del campo 925") {
        state.SkipWithError("the record does not hold what was written");
    }
}

// The same round trips: the row is read and each of its values copied out; then, in a transaction,
// every column is written where the row has the version that was read.
void updateBareRecord(benchmark::State& state, bool waits) {
    Cards cards(waits);
    std::string update = "UPDATE Schede SET AggID = randomblob(8)";
    for (int i = 0; i < kCardColumns; ++i)
        update += ", C" + std::to_string(i) + " = ?" + std::to_string(i + 3);
    update += " WHERE Codice = ?1 AND AggID = ?2";
    const BareCardStatement read(cards.bare(), "SELECT * FROM Schede WHERE Codice = ?1");
    const BareCardStatement begin(cards.bare(), "BEGIN IMMEDIATE");
    const BareCardStatement write(cards.bare(), update.c_str());
    const BareCardStatement commit(cards.bare(), "COMMIT");
    std::vector<std::string> values(kCardColumns + 2);
    std::vector<std::string> written;
    for (int i = 0; i < kCardColumns; ++i)
        written.push_back(cardValue(i));
    for (auto _ : state) {
        sqlite3_reset(read.get());
        sqlite3_bind_int(read.get(), 1, kCard);
        bool done = sqlite3_step(read.get()) == SQLITE_ROW;
        for (int i = 0; i < kCardColumns + 2; ++i) {
            values[static_cast<std::size_t>(i)].assign(
                static_cast<const char*>(sqlite3_column_blob(read.get(), i)),
                static_cast<std::size_t>(sqlite3_column_bytes(read.get(), i)));
        }
        sqlite3_reset(read.get());
        sqlite3_bind_int(write.get(), 1, kCard);
        sqlite3_bind_blob(write.get(), 2, values[1].data(), static_cast<int>(values[1].size()),
                          SQLITE_STATIC);
        for (int i = 0; i < kCardColumns; ++i) {
            const std::string& value = written[static_cast<std::size_t>(i)];
            if (i % 5 == 0) {
                sqlite3_bind_text(write.get(), i + 3, value.data(), static_cast<int>(value.size()),
                                  SQLITE_STATIC);
            } else if (i % 5 == 2) {
                sqlite3_bind_double(write.get(), i + 3, kDay);
            } else {
                sqlite3_bind_int64(write.get(), i + 3, std::int64_t{37} * i);
            }
        }
        for (sqlite3_stmt* each : {begin.get(), write.get(), commit.get()}) {
            done = done && sqlite3_step(each) == SQLITE_DONE;
            sqlite3_reset(each);
        }
        if (!done || sqlite3_changes(cards.bare()) != 1) {
            state.SkipWithError("the record was not written");
            break;
        }
    }
}

template <bool kWaits>
void updateRecord(benchmark::State& state) {
    updateRecord(state, kWaits);
}
template <bool kWaits>
void updateBareRecord(benchmark::State& state) {
    updateBareRecord(state, kWaits);
}

KAP_BENCH_PAIR("record: DB_Update of 30 columns",
               {"DB_Update of a property string", updateRecord<true>},
               {"sqlite3, prepared: read, then a guarded update", updateBareRecord<true>}, 2.0);
KAP_BENCH_PAIR("record: DB_Update of 30 columns, without waiting for the disk",
               {"DB_Update of a property string", updateRecord<false>},
               {"sqlite3, prepared: read, then a guarded update", updateBareRecord<false>}, 2.0);

}  // namespace
