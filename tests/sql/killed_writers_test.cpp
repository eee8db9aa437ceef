#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::test {
namespace {

// A writer in a process of its own, whose reports are read from a pipe.
class Writer {
public:
    Writer(const std::string& connectionString, int number) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        const std::string program = std::string(KAPUTIL_TEST_PROGRAMS) + "/commit_rows";
        const std::string name = std::to_string(number);
        process_ = fork();
        if (process_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execl(program.c_str(), program.c_str(), connectionString.c_str(), name.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        close(ends[1]);
        reports_ = ends[0];
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { close(reports_); }

    // Ends the process where it stands, and gives the last pair that it has reported.
    int kill() {
        ::kill(process_, SIGKILL);
        int status = 0;
        waitpid(process_, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself: " << status;
        std::string text;
        std::array<char, 4096> bytes{};
        for (ssize_t read = 0; (read = ::read(reports_, bytes.data(), bytes.size())) > 0;) {
            text.append(bytes.data(), static_cast<std::size_t>(read));
        }
        // The last line may have been cut off.
        const std::size_t end = text.rfind('\n');
        if (end == std::string::npos) return 0;
        const std::size_t start = text.rfind('\n', end == 0 ? 0 : end - 1);
        return std::atoi(text.c_str() + (start == std::string::npos ? 0 : start + 1));
    }

private:
    pid_t process_ = -1;
    int reports_ = -1;
};

int rounds() {
    const char* wanted = std::getenv("KAPUTIL_KILL_ROUNDS");
    constexpr int kFew = 6;
    return wanted == nullptr ? kFew : std::atoi(wanted);
}

std::string scalar(const Ref<ado::Connection>& connection, const std::string& query) {
    return shown(valueOf(connection, String(query)));
}

// KAPUTIL_KILL_ROUNDS=200 repeats it as often.
TEST(KilledWriters, LeaveEveryReportedCommitAndNoHalfTransaction) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    const TemporaryFolder folder;
    {
        const auto connection = open(folder.database());
        connection->Execute(
            u"CREATE TABLE pairs (writer int, pair int, part int, PRIMARY KEY (writer, pair, "
            u"part))");
    }
    int writerNumber = 0;
    for (int round = 0; round < rounds(); ++round) {
        std::vector<std::unique_ptr<Writer>> writers;
        const int first = writerNumber + 1;
        for (int i = 0; i < 2; ++i) {
            writers.push_back(std::make_unique<Writer>(folder.database(), ++writerNumber));
        }
        std::uniform_int_distribution<int> milliseconds(30, 250);
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
        std::vector<int> reported;
        for (const auto& writer : writers)
            reported.push_back(writer->kill());

        const auto connection = open(folder.database());
        EXPECT_NO_THROW(connection->Execute(u"DBCC CHECKDB"));
        EXPECT_EQ(scalar(connection,
                         "SELECT count(*) FROM (SELECT writer, pair FROM pairs GROUP BY writer, "
                         "pair HAVING count(*) <> 2) AS half"),
                  "Long 0");
        for (std::size_t i = 0; i < reported.size(); ++i) {
            const std::string there =
                scalar(connection, "SELECT isnull(max(pair), 0) FROM pairs WHERE writer = " +
                                       std::to_string(first + static_cast<int>(i)));
            EXPECT_GE(std::atoi(there.substr(5).c_str()), reported[i]) << "writer " << i;
        }
    }
}

}  // namespace
}  // namespace kap::test
