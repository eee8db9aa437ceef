// Rows that come as they are needed: what the command line prints of a million rows, beside the
// sqlite3 shell, and the memory that this takes, beside what it takes of a tenth of them.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/job.hpp"
#include "bench/processes.hpp"
#include "bench/rows_sample.hpp"
#include "tests/support/build_folders.hpp"

extern char** environ;

namespace {

using kap::bench::kSampleQuery;
using kap::bench::kSampleRows;
using kap::bench::RowsSample;
using kap::bench::Values;

struct ProgramRun {
    double seconds = 0;
    double peakBytes = 0;
};

// Runs a program with its output in a file. Its size is looked at while it runs: what the system
// tells of a child that has ended begins with the size of the program that started it.
ProgramRun runInto(const std::string& file, std::vector<std::string> arguments) {
    std::vector<char*> words;
    for (std::string& argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, file.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int failure =
        posix_spawnp(&child, words.front(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    double peak = 0;
    pid_t ended = 0;
    while (failure == 0 && (ended = waitpid(child, &status, WNOHANG)) == 0) {
        peak = std::max(peak, kap::bench::peakMemory(std::to_string(child)));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (failure != 0 || ended != child || status != 0 || peak == 0) {
        throw std::runtime_error(arguments.front() + " failed");
    }
    const auto end = std::chrono::steady_clock::now();
    return {std::chrono::duration<double>(end - start).count(), peak};
}

ProgramRun printRows(const std::string& query, const std::string& form) {
    return runInto(RowsSample::get().file("ours." + form),
                   {kap::test::kCommandLine, "sql", "--connection",
                    "Provider=KapLocal;Data Source=" + RowsSample::get().database(), "--" + form,
                    "--command", query});
}

std::uintmax_t sizeOf(const std::string& file) {
    return std::filesystem::file_size(RowsSample::get().file(file));
}

Values csvRowsPerSecond() {
    const ProgramRun shell =
        runInto(RowsSample::get().file("shell.csv"),
                {"sqlite3", "-csv", RowsSample::get().database(), kSampleQuery});
    const ProgramRun ours = printRows(kSampleQuery, "csv");
    // Amounts and dates are longer as texts than as what lies in the file.
    if (sizeOf("ours.csv") < sizeOf("shell.csv")) {
        throw std::runtime_error("rows are missing");
    }
    return {kSampleRows / ours.seconds, kSampleRows / shell.seconds};
}

Values peakOf(const std::string& form) {
    const std::string tenth =
        std::string(kSampleQuery) + " WHERE Id < " + std::to_string(kSampleRows / 10);
    const double all = printRows(kSampleQuery, form).peakBytes;
    return {all, printRows(tenth, form).peakBytes};
}

KAP_BENCH_VALUES("streaming: --csv of 1,000,000 rows", "rows per second", "kaputil sql --csv",
                 "sqlite3 -csv", csvRowsPerSecond, kap::bench::atLeast(1.5));
KAP_BENCH_VALUES(
    "streaming: memory of --csv", "bytes", "1,000,000 rows", "100,000 rows",
    [] { return peakOf("csv"); }, kap::bench::atMost(1.1));
KAP_BENCH_VALUES(
    "streaming: memory of --json", "bytes", "1,000,000 rows", "100,000 rows",
    [] { return peakOf("json"); }, kap::bench::atMost(1.1));

}  // namespace
