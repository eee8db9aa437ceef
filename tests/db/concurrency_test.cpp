#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/build_folders.hpp"
#include "support/database.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap::db {
namespace {

pid_t start(const std::string& connectionString, int times) {
    const std::string program = std::string(test::kTestPrograms) + "/increment_counter";
    const std::string count = std::to_string(times);
    const pid_t child = fork();
    if (child == 0) {
        execl(program.c_str(), program.c_str(), connectionString.c_str(), count.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    return child;
}

TEST(Concurrency, TwoProcessesEditingTheSameRowThroughDbUpdateNeverLoseAnUpdate) {
    constexpr int kTimes = 60;
    const test::TemporaryFolder folder;
    const auto connection = test::open(folder.database());
    kap::test::prepare(connection,
                       u"CREATE TABLE Contatore (Id int PRIMARY KEY, Valore int, AggID timestamp);"
                       u"INSERT INTO Contatore (Id, Valore) VALUES (1, 0)");
    std::vector<pid_t> children;
    for (int i = 0; i < 2; ++i) {
        children.push_back(start(folder.database(), kTimes));
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    EXPECT_EQ(test::shown(test::valueOf(connection, u"SELECT Valore FROM Contatore")),
              "Long " + std::to_string(2 * kTimes));
}

}  // namespace
}  // namespace kap::db
