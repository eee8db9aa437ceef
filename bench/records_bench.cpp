// Recordsets and records beside bare SQLite: the same file, the same rows, every value copied out.

#include <sqlite3.h>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>

#include "bench/job.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;
using kap::String;
using kap::Variant;
using kap::VarType;

constexpr int kRecordsRows = 1'000'000;
constexpr int kColumns = 10;
constexpr int kWideColumns = 100;
const char* const kRecordsQuery = "SELECT * FROM Righe";
const char* const kWideQuery = "SELECT * FROM Larga WHERE C0 = 1";

std::string rowsScript(int first, int count) {
    std::string script = "INSERT INTO Righe VALUES ";
    for (int i = first; i < first + count; ++i) {
        const std::string n = std::to_string(i);
        const bool without = i % 10 == 0;
        script += (i == first ? "(" : ", (") + n + ", 'Articolo numero " + n + "', " + n + ".25, " +
                  std::to_string(i % 100) + ".5, '2003-" + (i % 2 == 0 ? "06" : "11") +
                  "-15 10:30:00', " + (without ? "NULL" : "'Descrizione di qualche parola'") +
                  ", " + std::to_string(i % 2) + ", " + n + ".125, 'UM" + std::to_string(i % 7) +
                  "', " + (without ? "NULL" : std::to_string(i % 1000)) + ")";
    }
    return script;
}

std::string wideScript() {
    std::string create = "CREATE TABLE Larga (C0 int PRIMARY KEY";
    std::string values = "1";
    for (int i = 1; i < kWideColumns; ++i) {
        create += ", C" + std::to_string(i) + (i % 2 == 0 ? " int" : " varchar(40)");
        values += i % 2 == 0 ? ", " + std::to_string(i * 1000)
                             : ", 'valore del campo " + std::to_string(i) + "'";
    }
    return create + "); INSERT INTO Larga VALUES (" + values + ")";
}

// The database that every job reads, made once for the length of the program.
class SampleDatabase {
public:
    static SampleDatabase& get() {
        static SampleDatabase database;
        return database;
    }

    [[nodiscard]] const Ref<kap::ado::Connection>& connection() const { return connection_; }
    [[nodiscard]] sqlite3* bare() const { return bare_.get(); }

private:
    SampleDatabase() {
        const std::string file = folder_.file("bench.db");
        connection_->Open("Provider=KapLocal;Data Source=" + file);
        connection_->Execute(
            u"CREATE TABLE Righe (Id int PRIMARY KEY, Articolo varchar(40), Prezzo money, "
            u"Sconto decimal(5,2), Data datetime, Descrizione varchar(80), Evaso bit, Peso float, "
            u"UM varchar(5), Quantita int)");
        connection_->BeginTrans();
        for (int first = 1; first <= kRecordsRows; first += 500) {
            connection_->Execute(rowsScript(first, 500));
        }
        connection_->CommitTrans();
        connection_->Execute(wideScript());
        sqlite3* handle = nullptr;
        if (sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
            throw std::runtime_error("the sample database cannot be opened bare");
        }
        bare_.reset(handle);
    }
    ~SampleDatabase() {
        bare_.reset();
        connection_->Close();
    }

    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    kap::test::TemporaryFolder folder_;
    Ref<kap::ado::Connection> connection_ = kap::make<kap::ado::Connection>();
    std::unique_ptr<sqlite3, Close> bare_;
};

class BareRecordsStatement {
public:
    BareRecordsStatement(sqlite3* handle, const char* sql) {
        if (sqlite3_prepare_v2(handle, sql, -1, &statement_, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(handle));
        }
    }
    ~BareRecordsStatement() { sqlite3_finalize(statement_); }
    BareRecordsStatement(const BareRecordsStatement&) = delete;
    BareRecordsStatement& operator=(const BareRecordsStatement&) = delete;
    [[nodiscard]] sqlite3_stmt* get() const { return statement_; }

private:
    sqlite3_stmt* statement_ = nullptr;
};

// What was read, boiled down: both arms must come to the same.
struct Checksum {
    double numbers = 0;
    std::size_t characters = 0;
    std::size_t nulls = 0;

    friend bool operator==(const Checksum&, const Checksum&) = default;
};

Checksum bareChecksum(sqlite3_stmt* statement, int columns) {
    Checksum sum;
    std::string copy;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        for (int i = 0; i < columns; ++i) {
            switch (sqlite3_column_type(statement, i)) {
                case SQLITE_INTEGER:
                    sum.numbers += static_cast<double>(sqlite3_column_int64(statement, i));
                    break;
                case SQLITE_FLOAT:
                    sum.numbers += sqlite3_column_double(statement, i);
                    break;
                case SQLITE_TEXT:
                    copy.assign(reinterpret_cast<const char*>(sqlite3_column_text(statement, i)),
                                static_cast<std::size_t>(sqlite3_column_bytes(statement, i)));
                    sum.characters += copy.size();
                    break;
                default:
                    ++sum.nulls;
            }
        }
    }
    return sum;
}

// In the database's own units, as the bare arm sees them.
void add(Checksum& sum, const Variant& value) {
    switch (value.type()) {
        case VarType::Long:
            sum.numbers += value.as<std::int32_t>();
            break;
        case VarType::Double:
            sum.numbers += value.as<double>();
            break;
        case VarType::Boolean:
            sum.numbers += value.as<bool>() ? 1 : 0;
            break;
        case VarType::Currency:
            sum.numbers += static_cast<double>(value.as<kap::Currency>().scaled);
            break;
        case VarType::Decimal:
            sum.numbers += value.as<kap::Decimal>().magnitude()[0];
            break;
        case VarType::Date:
            sum.numbers += value.as<kap::Date>().days;
            break;
        case VarType::String:
            sum.characters += value.as<String>().size();
            break;
        default:
            ++sum.nulls;
    }
}

Ref<kap::ado::Recordset> openAll() {
    Variant connection(SampleDatabase::get().connection());
    return kap::db::OpenRecordset(kRecordsQuery, connection, -1, -1, -1, /*DeleteNull=*/false);
}

Checksum recordsetChecksum() {
    const auto rows = openAll();
    std::vector<Ref<kap::ado::Field>> fields;
    fields.reserve(kColumns);
    for (std::int32_t i = 0; i < kColumns; ++i) {
        fields.push_back(rows->Fields()->Item(i));
    }
    Checksum sum;
    for (; !rows->Eof(); rows->MoveNext()) {
        for (const auto& field : fields) {
            add(sum, field->Value());
        }
    }
    return sum;
}

// Every value of an open recordset, each field looked up anew by its number or name.
Checksum lookedUpChecksum(kap::ado::Recordset& rows, const std::vector<Variant>& fields) {
    Checksum sum;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
        for (const Variant& field : fields) {
            add(sum, rows.Fields()->Item(field)->Value());
        }
    }
    return sum;
}

Checksum expectedChecksum() {
    const BareRecordsStatement statement(SampleDatabase::get().bare(), kRecordsQuery);
    return bareChecksum(statement.get(), kColumns);
}

void readRecordset(benchmark::State& state) {
    const Checksum expected = expectedChecksum();
    for (auto _ : state) {
        if (!(recordsetChecksum() == expected)) {
            state.SkipWithError("the recordset's values are not the database's");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kRecordsRows);
}

void readLookedUp(benchmark::State& state, const std::vector<Variant>& fields) {
    const Checksum expected = expectedChecksum();
    const auto rows = openAll();
    for (auto _ : state) {
        if (!(lookedUpChecksum(*rows, fields) == expected)) {
            state.SkipWithError("the recordset's values are not the database's");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kRecordsRows);
}

void readByNumber(benchmark::State& state) {
    std::vector<Variant> numbers;
    numbers.reserve(kColumns);
    for (std::int32_t i = 0; i < kColumns; ++i) {
        numbers.emplace_back(i);
    }
    readLookedUp(state, numbers);
}

void readByName(benchmark::State& state) {
    readLookedUp(state, {u"Id", u"Articolo", u"Prezzo", u"Sconto", u"Data", u"Descrizione",
                         u"Evaso", u"Peso", u"UM", u"Quantita"});
}

void readBareRecords(benchmark::State& state) {
    const Checksum expected = expectedChecksum();
    for (auto _ : state) {
        const BareRecordsStatement statement(SampleDatabase::get().bare(), kRecordsQuery);
        if (!(bareChecksum(statement.get(), kColumns) == expected)) {
            state.SkipWithError("the bare rows differ from one reading to the next");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kRecordsRows);
}

void fillRecordset(benchmark::State& state) {
    for (auto _ : state) {
        if (openAll()->RecordCount() != kRecordsRows) {
            state.SkipWithError("rows are missing");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kRecordsRows);
}

kap::bench::Values recordsetMemory() {
    const auto rows = openAll();
    const Checksum sum = expectedChecksum();
    if (rows->RecordCount() != kRecordsRows) {
        throw std::runtime_error("rows are missing");
    }
    const double cells = 9.0 * kRecordsRows * kColumns;
    return {static_cast<double>(rows->rowMemory()) / kRecordsRows,
            (cells + static_cast<double>(sum.characters)) / kRecordsRows};
}

void readRecord(benchmark::State& state) {
    Variant connection(SampleDatabase::get().connection());
    const String query(kWideQuery);
    Variant text;
    for (auto _ : state) {
        if (!kap::db::DB_Read(connection, query, text)) {
            state.SkipWithError("the record is missing");
            break;
        }
    }
    if (text.as<String>().view().find(u"<C99>valore del campo 99</C99>") == std::u16string::npos) {
        state.SkipWithError("the last field is missing");
    }
}

void readBareRecord(benchmark::State& state) {
    const BareRecordsStatement statement(SampleDatabase::get().bare(), kWideQuery);
    std::vector<std::string> values(kWideColumns);
    for (auto _ : state) {
        sqlite3_reset(statement.get());
        if (sqlite3_step(statement.get()) != SQLITE_ROW) {
            state.SkipWithError("the record is missing");
            break;
        }
        for (int i = 0; i < kWideColumns; ++i) {
            values[static_cast<std::size_t>(i)].assign(
                reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), i)),
                static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), i)));
        }
    }
    if (values.back() != "valore del campo 99") {
        state.SkipWithError("the last field is missing");
    }
}

KAP_BENCH_PAIR("recordset: open 1,000,000 x 10",
               {"OpenRecordset, a client cursor filled", fillRecordset},
               {"sqlite3_step and every value copied out", readBareRecords}, 1.0);
KAP_BENCH_PAIR("recordset: open and read every value, 1,000,000 x 10",
               {"OpenRecordset and Field.Value of each", readRecordset},
               {"sqlite3_step and every value copied out", readBareRecords}, 2.0);
KAP_BENCH_PAIR("recordset: every value by the field's number, 1,000,000 x 10",
               {"Fields(number).Value of an open recordset", readByNumber},
               {"sqlite3_step and every value copied out", readBareRecords}, 1.0);
KAP_BENCH_PAIR("recordset: every value by the field's name, 1,000,000 x 10",
               {"Fields(name).Value of an open recordset", readByName},
               {"sqlite3_step and every value copied out", readBareRecords}, 1.6);
KAP_BENCH_VALUES("recordset: memory of a row of 10 columns", "bytes", "a client cursor",
                 "9 bytes a cell and the texts", recordsetMemory, 1.05);
KAP_BENCH_PAIR("record: DB_Read of 100 columns", {"DB_Read into a property string", readRecord},
               {"sqlite3, prepared once, values copied out", readBareRecord}, 3.0);

}  // namespace
