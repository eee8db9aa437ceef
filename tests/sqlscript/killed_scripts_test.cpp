#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

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
TEST(KilledScripts, HappenWholeOrNotAtAll) {
    std::minstd_rand random(test::randomSeed());
    const TemporaryFolder folder;
    open(folder.database())
        ->Execute(
            u"CREATE TABLE parts (writer int, batch int, part int, PRIMARY KEY (writer, batch, "
            u"part))");
    for (int writer = 1; writer <= killRounds(); ++writer) {
        StartedProgram program("run_batches", {folder.database(), std::to_string(writer)});
        std::uniform_int_distribution<int> milliseconds(10, 200);
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
        const int reported = program.kill();

        const auto connection = open(folder.database());
        EXPECT_EQ(scalar(connection,
                         "SELECT count(*) FROM (SELECT writer, batch FROM parts GROUP BY writer, "
                         "batch HAVING count(*) <> 20) AS half"),
                  "Long 0")
            << "writer " << writer;
        const std::string there =
            scalar(connection, "SELECT isnull(max(batch), 0) FROM parts WHERE writer = " +
                                   std::to_string(writer));
        EXPECT_GE(std::atoi(there.substr(5).c_str()), reported) << "writer " << writer;
    }
    EXPECT_NO_THROW(open(folder.database())->Execute(u"DBCC CHECKDB"));
}

}  // namespace
}  // namespace kap::test
