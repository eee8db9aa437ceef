// Many programs with many threads that write one file at the same time.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "faults/ledger.hpp"
#include "faults/progress.hpp"
#include "faults/random_runs.hpp"
#include "support/temporary_folder.hpp"

namespace kap {
namespace {

using test::Ledger;

constexpr int kPrograms = 8;
constexpr int kThreads = 4;
constexpr int kStepsOfOne = 1'000'000;

// Does steps of every manner until the time is over, and tells each that is done.
void keepTheBooks(const std::string& string, int worker, std::chrono::milliseconds time, int told) {
    const auto end = std::chrono::steady_clock::now() + time;
    const auto connection = test::open(string);
    for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
        const int number = worker * kStepsOfOne + i;
        try {
            Ledger::step(connection, number);
        } catch (const AutomationError&) {
            // Somebody was faster for as long as one waits; what was begun is ended.
            connection->Execute(u"IF @@TRANCOUNT > 0 ROLLBACK");
            continue;
        }
        static_cast<void>(!write(told, &number, sizeof number));
    }
}

[[noreturn]] void runProgram(const std::string& string, int program, std::chrono::milliseconds time,
                             int told) {
    int status = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, worker = program * kThreads + i] {
            try {
                keepTheBooks(string, worker, time, told);
            } catch (...) {
                status = 3;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    _exit(status);
}

TEST(ManyWriters, LoseNothingAndStandInNobodysWay) {
    const test::TemporaryFolder folder;
    const std::string string = folder.database("libri.db");
    Ledger::create(test::open(string));
    std::array<int, 2> ends{};
    ASSERT_EQ(0, pipe(ends.data()));
    const auto time = test::timeForFaults();
    std::vector<pid_t> programs;
    for (int program = 0; program < kPrograms; ++program) {
        const pid_t child = fork();
        if (child == 0) {
            close(ends[0]);
            runProgram(string + ";Synchronous=Normal", program, time, ends[1]);
        }
        programs.push_back(child);
    }
    close(ends[1]);
    std::set<int> acknowledged;
    const auto told = [&] {
        return std::to_string(acknowledged.size()) + " steps of " + std::to_string(kPrograms) +
               " programs with " + std::to_string(kThreads) + " threads each";
    };
    test::Progress progress;
    int number = 0;
    while (read(ends[0], &number, sizeof number) == sizeof number) {
        EXPECT_TRUE(acknowledged.insert(number).second);
        progress.tell(told);
    }
    close(ends[0]);
    for (const pid_t program : programs) {
        int status = 0;
        waitpid(program, &status, 0);
        EXPECT_EQ(0, status);
    }
    std::printf("%s\n", told().c_str());
    EXPECT_GT(acknowledged.size(), 0U);
    EXPECT_EQ("", Ledger::fault(test::open(string), acknowledged));
}

}  // namespace
}  // namespace kap
