// Export of a query to a text file with lines of fixed length, beside the sqlite3 shell writing the
// same rows as comma-separated values to a file.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/host/text_export.hpp>

#include "bench/job.hpp"
#include "bench/processes.hpp"
#include "bench/rows_sample.hpp"

namespace {

using kap::String;
using kap::Variant;
using kap::bench::kSampleQuery;
using kap::bench::kSampleRows;
using kap::bench::peakMemory;
using kap::bench::RowsSample;
using kap::bench::Values;

constexpr std::size_t kLineEnd = 2;
// Made by hand: numbers in the text are longer than in the database, by whose sizes a schema is
// made otherwise.
constexpr const char* kSchema =
    "[EXPORT.TXT]\r\nColNameHeader=False\r\nFormat=FixedLength\r\nCharacterSet=OEM\r\n"
    "CurrencyDigits=3\r\ncol1=Id Integer Width 8\r\ncol2=Codice Char Width 12\r\n"
    "col3=Descrizione Char Width 40\r\ncol4=Quantita Float Width 12\r\n"
    "col5=Prezzo Currency Width 12\r\ncol6=Sconto Single Width 8\r\ncol7=Data Date Width 20\r\n"
    "col8=Magazzino Short Width 4\r\ncol9=Peso Float Width 12\r\ncol10=Nota Char Width 20\r\n";

// Made by hand: the file's schema goes beside it.
RowsSample& withSchema() {
    RowsSample& sample = RowsSample::get();
    std::ofstream(sample.file("SCHEMA.INI"), std::ios::binary) << kSchema;
    return sample;
}

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void exportRows() {
    String query(kSampleQuery);
    Variant connection(RowsSample::get().open());
    String name = u"EXPORT.TXT";
    String folder(RowsSample::get().file(""));
    bool describes = false;
    if (!kap::host::EsportaTXT(query, connection, name, folder, describes)) {
        throw std::runtime_error("the export failed");
    }
}

void checkExport() {
    const std::string file = RowsSample::get().file("EXPORT.TXT");
    std::ifstream lines(file, std::ios::binary);
    std::string first;
    std::getline(lines, first);
    const auto size = static_cast<std::uintmax_t>(first.size() + 1);
    if (first.size() < kLineEnd || std::filesystem::file_size(file) != size * kSampleRows) {
        throw std::runtime_error("the exported lines are not as many as the rows");
    }
}

void runShell() {
    const std::string command = "sqlite3 -csv '" + RowsSample::get().database() + "' '" +
                                kSampleQuery + "' > '" + RowsSample::get().file("shell.csv") + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("the sqlite3 shell failed");
}

Values rowsPerSecond() {
    withSchema();  // made before the time is taken
    const double ours = secondsOf(exportRows);
    checkExport();
    const double shell = secondsOf(runShell);
    return {kSampleRows / ours, kSampleRows / shell};
}

// From now on the largest size of this process is counted anew.
void forgetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

// What an export adds to the rows that it reads, which are all held by the recordset of the query.
Values memoryBesideRows() {
    double rows = 0;
    withSchema();
    {
        const auto connection = RowsSample::get().open();
        const auto source = kap::make<kap::ado::Recordset>();
        forgetPeak();
        source->setCursorLocation(kap::ado::CursorLocationEnum::adUseClient);
        source->Open(kSampleQuery, Variant(connection));
        rows = peakMemory();
    }
    forgetPeak();
    exportRows();
    return {peakMemory(), rows};
}

KAP_BENCH_VALUES("export: 1,000,000 rows of 10 columns", "rows per second",
                 "EsportaTXT, fixed widths", "sqlite3 -csv", rowsPerSecond,
                 kap::bench::atLeast(2.5));
KAP_BENCH_VALUES("export: memory beside that of the query's rows", "bytes",
                 "the process while EsportaTXT runs", "the process with the recordset alone",
                 memoryBesideRows, kap::bench::atMost(1.1));

}  // namespace
