// Numbers that many programs take from a database server at once, while programs are killed and the
// server ends connections.
#include <gtest/gtest.h>

#include <fcntl.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <random>
#include <set>
#include <thread>

#include "server.hpp"
#include "support/processes.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::numbering {
namespace {

class ServerNumbering : public test::ServerTest {
protected:
    static constexpr std::size_t kProcesses = 8;

    void SetUp() override {
        ServerTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        run("CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5));"
            "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
            "GestProvv int, PRIMARY KEY (Codice, Anno));"
            "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT');"
            "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 0, 0, 0)");
    }

    // A program that takes numbers until it is killed, and writes them down.
    [[nodiscard]] pid_t takeNumbers() {
        const std::string file = folder_.file(std::to_string(files_.size()));
        files_.push_back(file);
        const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        const int mine = dup(STDOUT_FILENO);
        dup2(out, STDOUT_FILENO);
        const pid_t child =
            test::startProgram("take_numbers", {database_->connection(), "plain", "0"});
        dup2(mine, STDOUT_FILENO);
        close(mine);
        close(out);
        return child;
    }

    // Every number that any of them has written down.
    [[nodiscard]] std::vector<int> taken() const {
        std::vector<int> numbers;
        for (const std::string& file : files_) {
            std::ifstream stream(file);
            for (std::string line; std::getline(stream, line);) {
                if (!line.empty() && line.find_first_not_of("0123456789") == std::string::npos) {
                    numbers.push_back(std::stoi(line));
                }
            }
        }
        return numbers;
    }

    // One connection of the programs, whichever.
    void endAConnection() const {
        (void)value(
            "SELECT count(pg_terminate_backend(pid)) FROM (SELECT pid FROM pg_stat_activity WHERE "
            "datname = current_database() AND pid <> pg_backend_pid() ORDER BY random() LIMIT 1) "
            "s");
    }

    test::TemporaryFolder folder_;
    std::vector<std::string> files_;
};

TEST_F(ServerNumbering, GivesNoNumberTwiceWhileProgramsAndConnectionsEnd) {
    constexpr std::size_t kNumbers = 200;
    constexpr int kFewestEnds = 12;
    constexpr std::chrono::milliseconds kPause(100);
    const auto seed = static_cast<unsigned>(getpid());
    std::mt19937 random(seed);
    std::vector<pid_t> children(kProcesses);
    for (pid_t& child : children) {
        child = takeNumbers();
    }
    int ends = 0;
    while (taken().size() < kNumbers || ends < kFewestEnds) {
        std::this_thread::sleep_for(kPause);
        if (taken().empty()) {
            continue;
        }
        pid_t& child = children[random() % kProcesses];
        if (ends++ % 2 == 0) {
            ::kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            child = takeNumbers();
        } else {
            endAConnection();
        }
        // Those that met the end of their connection may have given up.
        for (pid_t& each : children) {
            if (waitpid(each, nullptr, WNOHANG) == each) {
                each = takeNumbers();
            }
        }
    }
    for (const pid_t child : children) {
        ::kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    const std::vector<int> numbers = taken();
    const std::set<int> different(numbers.begin(), numbers.end());
    EXPECT_EQ(different.size(), numbers.size()) << "seed " << seed;
    // A program that ended had taken one number at most that it did not tell.
    const auto last = std::stoul(value("SELECT 'x' || n_Def FROM vtx_TabPro").substr(8));
    EXPECT_GE(last, numbers.size()) << "seed " << seed;
    EXPECT_LE(last, numbers.size() + static_cast<std::size_t>(ends) + kProcesses)
        << "seed " << seed;
}

}  // namespace
}  // namespace kap::numbering
