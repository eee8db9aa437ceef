#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/faulty_files.hpp"
#include "drivers/embedded/session_support.hpp"
#include "support/database.hpp"

namespace kap::ado::embedded {
namespace {

using kap::test::TemporaryFolder;
using test::errorOf;
using test::FaultyFiles;
using test::openSession;
using test::rowsOf;

constexpr const char* kManyRows =
    "INSERT INTO t SELECT a.n + 1, a.x FROM t a CROSS JOIN t b CROSS JOIN t c";

// A database with ten rows of some size.
void make(const std::string& file) {
    (void)openSession(file)->execute(
        "CREATE TABLE t (n int, x varchar(500)); INSERT INTO t VALUES (1, replicate('x', 500)), "
        "(2, 'b'), (3, 'c'), (4, 'd'), (5, 'e'), (6, 'f'), (7, 'g'), (8, 'h'), (9, 'i'), "
        "(10, 'j')");
}

TEST(DiskFailures, AFullDiskIsAnErrorAndNothingIsLost) {
    const TemporaryFolder folder;
    make(folder.file("a.db"));
    FaultyFiles files;
    const auto session = openSession(folder.file("a.db"));
    files.failAfter(3, SQLITE_FULL);
    const ServerMessage error = errorOf(*session, kManyRows);
    EXPECT_EQ(error.number, errors::kUnspecified);
    EXPECT_EQ(error.nativeNumber, 1101);
    EXPECT_EQ(error.text, "Could not write to the database '" + folder.file("a.db") +
                              "' because the disk is full. What the statement had written was "
                              "undone.");
    EXPECT_EQ(session->transactionDepth(), 0);
    EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), "10");
    files.heal();
    EXPECT_EQ(session->execute(kManyRows).back().rowsAffected, 1000);
    EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), "1010");
}

TEST(DiskFailures, WhicheverWriteFailsTheDatabaseStaysWhole) {
    const TemporaryFolder folder;
    make(folder.file("a.db"));
    FaultyFiles files;
    bool succeeded = false;
    for (int writes = 0; !succeeded; ++writes) {
        ASSERT_LT(writes, 1000);
        const auto session = openSession(folder.file("a.db"));
        files.failAfter(writes, SQLITE_FULL);
        try {
            (void)session->execute("UPDATE t SET x = replicate('y', 400)");
            succeeded = true;
        } catch (const DriverError& error) {
            EXPECT_EQ(error.messages().front().nativeNumber, 1101) << error.what();
        }
        files.heal();
        EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t WHERE x LIKE 'y%'"),
                  succeeded ? "10" : "0");
    }
}

TEST(DiskFailures, AFullDiskWithinATransactionEndsIt) {
    const TemporaryFolder folder;
    make(folder.file("a.db"));
    FaultyFiles files;
    const auto session = openSession(folder.file("a.db"));
    session->begin();
    (void)session->execute("DELETE FROM t WHERE n = 1");
    files.failAfter(0, SQLITE_FULL);
    EXPECT_EQ(test::errorOf([&] { session->commit(); })->nativeNumber, 1101);
    EXPECT_EQ(session->transactionDepth(), 0);
    files.heal();
    EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), "10");
}

TEST(DiskFailures, ADeviceErrorNamesTheFile) {
    const TemporaryFolder folder;
    make(folder.file("a.db"));
    FaultyFiles files;
    const auto session = openSession(folder.file("a.db"));
    files.failAfter(0, SQLITE_IOERR_WRITE);
    const ServerMessage error = errorOf(*session, "DELETE FROM t");
    EXPECT_EQ(error.nativeNumber, 823);
    EXPECT_EQ(error.number, errors::kUnspecified);
    EXPECT_NE(error.text.find(folder.file("a.db")), std::string::npos) << error.text;
    files.heal();
    EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), "10");
}

TEST(DiskFailures, AFullDiskWhenOpeningANewFileIsAnError) {
    const TemporaryFolder folder;
    FaultyFiles files;
    files.failAfter(0, SQLITE_FULL);
    const ServerMessage error =
        test::errorOf([&] { (void)openSession(folder.file("new.db")); }).value_or(ServerMessage{});
    files.heal();
    EXPECT_EQ(error.number, errors::kLogin);
    EXPECT_EQ(error.text,
              "Cannot open the database '" + folder.file("new.db") + "': the disk is full.");
}

}  // namespace
}  // namespace kap::ado::embedded
