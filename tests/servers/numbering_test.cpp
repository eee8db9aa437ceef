// Numbers that many programs take from a database server at once, while programs are killed and the
// server ends connections.
#include <gtest/gtest.h>

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <set>
#include <thread>

#include <kaputil/numbering/document_numbers.hpp>

#include "relay.hpp"
#include "server.hpp"
#include "support/processes.hpp"
#include "support/seed.hpp"
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
        run(test::kRowVersions);
        run("CREATE TABLE Contatore (Id int PRIMARY KEY, Valore int, aggid rowversion);"
            "CREATE TRIGGER keep BEFORE INSERT OR UPDATE ON Contatore FOR EACH ROW EXECUTE "
            "FUNCTION keep_row_version();"
            "INSERT INTO Contatore (Id, Valore) VALUES (1, 0)");
    }

    // A program that goes on until it is killed, and writes numbers down.
    [[nodiscard]] pid_t start(const std::string& program,
                              const std::vector<std::string>& arguments) {
        const std::string file = folder_.file(std::to_string(files_.size()));
        files_.push_back(file);
        const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        const int mine = dup(STDOUT_FILENO);
        dup2(out, STDOUT_FILENO);
        const pid_t child = test::startProgram(program, arguments);
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

    // Kills programs and ends connections, by turns, until enough has been written down, and for as
    // many seconds as KAPUTIL_FAULT_SECONDS says. How often.
    int endProgramsAndConnections(const std::function<pid_t()>& begin) {
        constexpr std::size_t kNumbers = 200;
        constexpr int kFewestEnds = 12;
        constexpr std::chrono::milliseconds kPause(100);
        const char* seconds = std::getenv("KAPUTIL_FAULT_SECONDS");
        const auto end = std::chrono::steady_clock::now() +
                         std::chrono::seconds(seconds == nullptr ? 0 : std::atoi(seconds));
        std::mt19937 random(seed_);
        std::vector<pid_t> children(kProcesses);
        std::ranges::generate(children, begin);
        int ends = 0;
        while (taken().size() < kNumbers || ends < kFewestEnds ||
               std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(kPause);
            if (taken().empty()) {
                continue;
            }
            pid_t& child = children[random() % kProcesses];
            if (ends++ % 2 == 0) {
                ::kill(child, SIGKILL);
                waitpid(child, nullptr, 0);
                child = begin();
            } else {
                endAConnection();
            }
            // Those that met the end of their connection may have given up.
            for (pid_t& each : children) {
                if (waitpid(each, nullptr, WNOHANG) == each) {
                    each = begin();
                }
            }
        }
        for (const pid_t child : children) {
            ::kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        return ends;
    }

    // What was written down has come once each, and the server's last number, shown as a text
    // behind an x, is that of all of them: a program that ended had one at most that it did not
    // tell.
    void expectEachOnce(const std::string& shown, int ends) const {
        const std::vector<int> numbers = taken();
        const std::set<int> different(numbers.begin(), numbers.end());
        EXPECT_EQ(different.size(), numbers.size()) << "seed " << seed_;
        const auto last = std::stoul(shown.substr(8));
        EXPECT_GE(last, numbers.size()) << "seed " << seed_;
        EXPECT_LE(last, numbers.size() + static_cast<std::size_t>(ends) + kProcesses)
            << "seed " << seed_;
        std::printf("%zu told, %zu of them different, the server's last %lu; %d ends\n",
                    numbers.size(), different.size(), last, ends);
    }

    const std::uint32_t seed_ = test::randomSeed();
    test::TemporaryFolder folder_;
    std::vector<std::string> files_;
};

TEST_F(ServerNumbering, GivesNoNumberTwiceWhileProgramsAndConnectionsEnd) {
    const int ends = endProgramsAndConnections([&] {
        return start("take_numbers", {database_->connection(), "plain", "0"});
    });
    expectEachOnce(value("SELECT 'x' || n_Def FROM vtx_TabPro"), ends);
}

TEST_F(ServerNumbering, AsksTwiceForANumberByItsCounterAndThreeTimesByTheTypeOfDocument) {
    test::Relay relay(server_->port());
    Variant connection(test::open(server_->connection(database_->name(), relay.port())));
    const auto asked = [&](const char16_t* type, const char16_t* code) {
        Ref<CErrore> error;
        // The first time each table costs one more, the second time the writing is prepared.
        for (int i = 0; i < 4; ++i) {
            (void)relay.roundTrips();
            (void)Progressivi(type, u"D", u"S", 2025, 0, connection, code, u"vtx_TabDoc", 0, error);
            EXPECT_EQ(test::shown(error->Numero()), "String 0");
        }
        return relay.roundTrips();
    };
    EXPECT_EQ(asked(u"", u"FAT"), 2);
    EXPECT_EQ(asked(u"FAI", u"°°°"), 3);
    EXPECT_EQ(value("SELECT n_Def FROM vtx_TabPro"), "Long 8");
}

TEST_F(ServerNumbering, LosesNoSavedRecordWhileProgramsAndConnectionsEnd) {
    const int ends = endProgramsAndConnections([&] {
        return start("increment_counter", {database_->connection(), "0"});
    });
    expectEachOnce(value("SELECT 'x' || Valore FROM Contatore"), ends);
}

}  // namespace
}  // namespace kap::numbering
