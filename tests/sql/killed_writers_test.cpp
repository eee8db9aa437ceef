#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/database.hpp"
#include "support/seed.hpp"
#include "support/shown.hpp"
#include "support/started_program.hpp"

namespace kap::test {
namespace {

std::string scalar(const Ref<ado::Connection>& connection, const std::string& query) {
    return shown(valueOf(connection, String(query)));
}

// KAPUTIL_KILL_ROUNDS=200 repeats it as often.
TEST(KilledWriters, LeaveEveryReportedCommitAndNoHalfTransaction) {
    std::minstd_rand random(test::randomSeed());
    const TemporaryFolder folder;
    {
        const auto connection = open(folder.database());
        connection->Execute(
            u"CREATE TABLE pairs (writer int, pair int, part int, PRIMARY KEY (writer, pair, "
            u"part))");
    }
    int writerNumber = 0;
    for (int round = 0; round < killRounds(); ++round) {
        std::vector<std::unique_ptr<StartedProgram>> writers;
        const int first = writerNumber + 1;
        for (int i = 0; i < 2; ++i) {
            writers.push_back(std::make_unique<StartedProgram>(
                "commit_rows", std::vector{folder.database(), std::to_string(++writerNumber)}));
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
