#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "numbering/company.hpp"
#include "support/build_folders.hpp"
#include "support/prepared_tables.hpp"
#include "support/seed.hpp"
#include "support/temporary_folder.hpp"

namespace kap::numbering::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kNotWritten = "! Errore di update su tabella progressivi !!!";

// A program that takes numbers and writes them to a file.
class Taker {
public:
    Taker(const std::string& connectionString, const std::string& way, int times,
          const std::string& file) {
        const std::string program = std::string(test::kTestPrograms) + "/take_numbers";
        const std::string count = std::to_string(times);
        const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        if (out < 0) {
            throw std::runtime_error("cannot make " + file);
        }
        process_ = fork();
        if (process_ == 0) {
            dup2(out, STDOUT_FILENO);
            execl(program.c_str(), program.c_str(), connectionString.c_str(), way.c_str(),
                  count.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        close(out);
    }

    // Waits for its end; whether all went well.
    bool succeeded() const {
        int status = 0;
        waitpid(process_, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    // Ends it where it stands; whether it was still running.
    bool kill() const {
        ::kill(process_, SIGKILL);
        int status = 0;
        waitpid(process_, &status, 0);
        return WIFSIGNALED(status);
    }

private:
    pid_t process_ = -1;
};

// What the takers wrote.
struct Taken {
    std::set<int> numbers;
    std::vector<int> twice;
    int refused = 0;
    std::vector<std::string> unexpected;
};

Taken takenIn(const std::string& file) {
    Taken taken;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line == kNotWritten) {
            ++taken.refused;
        } else if (line.empty() || line.find_first_not_of("0123456789") != std::string::npos) {
            taken.unexpected.push_back(line);
        } else if (!taken.numbers.insert(std::stoi(line)).second) {
            taken.twice.push_back(std::stoi(line));
        }
    }
    return taken;
}

void report(const std::string& what, const Taken& taken, Clock::duration time) {
    const double seconds = std::chrono::duration<double>(time).count();
    std::cout << what << ": " << taken.numbers.size() << " numbers, "
              << static_cast<double>(taken.numbers.size()) / seconds << " a second, "
              << taken.refused << " calls refused and made again\n";
}

class Concurrency : public testing::Test {
protected:
    Concurrency() {
        kap::test::prepare(database_, String(schema()));
        database_->Execute(
            u"INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT');"
            u"INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 0, 0, 0)");
    }

    int counter() const {
        return valueOf(database_, u"SELECT n_Def FROM vtx_TabPro").as<std::int32_t>();
    }

    void takeTogether(const std::string& way) {
        constexpr int kTimes = 20;
        for (const int processes : {2, 4, 8}) {
            const int before = counter();
            const std::string file = folder_.file(way + std::to_string(processes));
            const auto begun = Clock::now();
            std::vector<Taker> takers;
            for (int i = 0; i < processes; ++i) {
                takers.emplace_back(folder_.database(), way, kTimes, file);
            }
            for (const Taker& taker : takers) {
                EXPECT_TRUE(taker.succeeded());
            }
            const Taken taken = takenIn(file);
            report(way + " by " + std::to_string(processes), taken, Clock::now() - begun);
            EXPECT_EQ(taken.twice, std::vector<int>());
            EXPECT_EQ(taken.unexpected, std::vector<std::string>());
            ASSERT_EQ(taken.numbers.size(), static_cast<std::size_t>(processes * kTimes));
            EXPECT_EQ(*taken.numbers.begin(), before + 1);
            EXPECT_EQ(*taken.numbers.rbegin(), before + processes * kTimes);
            EXPECT_EQ(counter(), before + processes * kTimes);
        }
    }

    TemporaryFolder folder_;
    Ref<ado::Connection> database_ = open(folder_.database());
};

TEST_F(Concurrency, HandsNoNumberOutTwiceAndLosesNone) {
    takeTogether("plain");
}

TEST_F(Concurrency, HandsNoNumberOutTwiceWithReservations) {
    takeTogether("reserving");
}

TEST_F(Concurrency, HandsNoNumberOutTwiceThroughTheEarlierMember) {
    takeTogether("old");
}

int secondsOfKilling() {
    const char* wanted = std::getenv("KAPUTIL_NUMBERING_SECONDS");
    constexpr int kFew = 3;
    return wanted == nullptr ? kFew : std::atoi(wanted);
}

// KAPUTIL_NUMBERING_SECONDS=600 goes on for so long. A number is lost only when its taker was
// killed between taking it and writing it down, so there is at most one a kill.
TEST_F(Concurrency, HandsNoNumberOutTwiceWhenProgramsAreKilled) {
    std::mt19937 random(test::randomSeed());
    const std::vector<std::string> ways = {"plain", "reserving", "old"};
    const std::string file = folder_.file("taken");
    const auto begun = Clock::now();
    const auto end = begun + std::chrono::seconds(secondsOfKilling());
    const auto start = [&] {
        return Taker(folder_.database(), ways[random() % ways.size()], 0, file);
    };

    std::vector<Taker> takers;
    for (int i = 0; i < 4; ++i) {
        takers.push_back(start());
    }
    int kills = 0;
    while (Clock::now() < end) {
        std::this_thread::sleep_for(
            std::chrono::milliseconds(static_cast<int>(20 + random() % 200)));
        Taker& taker = takers[random() % takers.size()];
        EXPECT_TRUE(taker.kill()) << "it ended by itself";
        ++kills;
        taker = start();
    }
    for (const Taker& taker : takers) {
        EXPECT_TRUE(taker.kill()) << "it ended by itself";
        ++kills;
    }
    const Taken taken = takenIn(file);
    report("with " + std::to_string(kills) + " kills", taken, Clock::now() - begun);
    EXPECT_EQ(taken.twice, std::vector<int>());
    EXPECT_EQ(taken.unexpected, std::vector<std::string>());
    const int unreported = counter() - static_cast<int>(taken.numbers.size());
    std::cout << unreported << " numbers were taken by programs killed before they could say so\n";
    EXPECT_GE(unreported, 0);
    EXPECT_LE(unreported, kills);
    EXPECT_LE(*taken.numbers.rbegin(), counter());
}

}  // namespace
}  // namespace kap::numbering::test
