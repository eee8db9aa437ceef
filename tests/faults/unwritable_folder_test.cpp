// A database in a folder that its reader may not write, a back-up share or a disc: it is opened
// with all that is in it, or it is said why not; nobody who changes it then makes it be misread.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

#include <kaputil/automation/error.hpp>

#include "faults/library/failing_calls.hpp"
#include "support/database.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

class UnwritableFolder : public testing::Test {
protected:
    UnwritableFolder() {
        test::open(connection())->Execute(u"CREATE TABLE T (A int) INSERT INTO T VALUES (7)");
    }

    [[nodiscard]] std::string connection() const { return folder_.database("copia.db"); }
    [[nodiscard]] std::string beside(const char* end) const {
        return folder_.file(std::string("copia.db") + end);
    }

    // A program adds a row and is killed: its journal stays.
    void writeAndDie() const {
        const pid_t child = fork();
        if (child == 0) {
            test::open(connection())->Execute(u"INSERT INTO T VALUES (8)");
            const auto dying = test::open(connection());
            dying->Execute(u"INSERT INTO T VALUES (9)");
            kill(getpid(), SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        ASSERT_GT(std::filesystem::file_size(beside("-wal")), 0U);
    }

    // As somebody who may make no file in the folder.
    [[nodiscard]] Ref<ado::Connection> read() const {
        for (const int reason : {EACCES, EROFS}) {
            faults::Fault fault{folder_.file(""), {faults::Call::Open}, 1, reason, true};
            fault.onlyCreating = true;
            faults::start(fault);
            try {
                auto opened = test::open(connection() + ";Mode=Read");
                faults::stop();
                if (reason == EROFS) {
                    return opened;
                }
            } catch (...) {
                faults::stop();
                throw;
            }
        }
        return nullptr;
    }

    static std::int32_t sumIn(const Ref<ado::Connection>& opened) {
        return test::valueOf(opened, u"SELECT SUM(A) FROM T").as<std::int32_t>();
    }

    test::TemporaryFolder folder_;
};

TEST_F(UnwritableFolder, HoldsADatabaseThatCanBeRead) {
    EXPECT_EQ(7, sumIn(read()));
    test::putFile(beside("-wal"), "");  // a journal with nothing in it is none
    EXPECT_EQ(7, sumIn(read()));
}

TEST_F(UnwritableFolder, HoldsAJournalThatIsReadOrTold) {
    writeAndDie();
    EXPECT_EQ(24, sumIn(read()));
    std::filesystem::remove(beside("-shm"));
    try {
        static_cast<void>(read());
        ADD_FAILURE() << "it is opened without what is in its journal";
    } catch (const AutomationError& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("journal")) << error.what();
    }
    EXPECT_EQ(24, sumIn(test::open(connection())));
}

TEST_F(UnwritableFolder, IsReadBesideSomebodyWhoWritesIt) {
    const auto writer = test::open(connection());
    writer->Execute(u"INSERT INTO T VALUES (8)");
    const auto reader = read();
    EXPECT_EQ(15, sumIn(reader));
    writer->Execute(u"INSERT INTO T VALUES (9)");
    EXPECT_EQ(24, sumIn(reader));
}

TEST_F(UnwritableFolder, IsNotMisreadWhenSomebodyWritesItLater) {
    const auto reader = read();
    EXPECT_EQ(7, sumIn(reader));
    const auto expectTold = [&] {
        try {
            ADD_FAILURE() << sumIn(reader);
        } catch (const AutomationError& error) {
            EXPECT_NE(std::string::npos, std::string(error.what()).find("opened again"))
                << error.what();
        }
    };
    {
        const auto writer = test::open(connection());
        writer->Execute(u"INSERT INTO T VALUES (8)");
        expectTold();
        EXPECT_EQ(15, sumIn(read()));
    }
    expectTold();  // the journal is gone again, and the file another one
    EXPECT_EQ(15, sumIn(read()));
}

}  // namespace
}  // namespace kap
