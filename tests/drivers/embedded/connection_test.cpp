#include "engine/sqlite/file_connection.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"
#include "support/database.hpp"

namespace kap::ado::embedded {
namespace {

namespace fs = std::filesystem;
using kap::test::TemporaryFolder;
using test::openSession;
using test::rowsOf;

ServerMessage openingError(const std::string& dataSource, const std::string& more = {}) {
    return test::errorOf([&] { (void)openSession(dataSource, more); }).value_or(ServerMessage{});
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(EmbeddedConnection, MakesAMissingFile) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("new.db"))->execute("CREATE TABLE t (a int)");
    EXPECT_TRUE(fs::exists(folder.file("new.db")));
}

TEST(EmbeddedConnection, KeepsWhatWasWrittenWhenItIsOpenedAgain) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))
        ->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (7)");
    EXPECT_EQ(rowsOf(*openSession(folder.file("a.db")), "SELECT a FROM t"), "7");
}

TEST(EmbeddedConnection, ClosingLeavesOnlyTheOneFile) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))->execute("CREATE TABLE t (a int)");
    const auto files =
        std::distance(fs::directory_iterator(fs::path(folder.file("a.db")).parent_path()),
                      fs::directory_iterator());
    EXPECT_EQ(files, 1);
}

TEST(EmbeddedConnection, ANameMayHoldBlanksSignsAndAccents) {
    const TemporaryFolder folder;
    const std::string name = folder.file("società n.1; 100% file:x?y#z.db");
    (void)openSession(name)->execute("CREATE TABLE t (a int)");
    EXPECT_TRUE(fs::exists(fs::path(name)));
}

TEST(EmbeddedConnection, RefusesAMissingDirectoryByName) {
    const TemporaryFolder folder;
    const ServerMessage error = openingError(folder.file("missing/a.db"));
    EXPECT_EQ(error.number, errors::kLogin);
    EXPECT_EQ(error.nativeNumber, 4060);
    EXPECT_EQ(error.text, "Cannot open the database '" + folder.file("missing/a.db") +
                              "': the directory '" + folder.file("missing") + "' does not exist.");
}

TEST(EmbeddedConnection, RefusesADirectory) {
    const TemporaryFolder folder;
    fs::create_directory(folder.file("dir"));
    const ServerMessage error = openingError(folder.file("dir"));
    EXPECT_EQ(error.number, errors::kLogin);
    EXPECT_EQ(error.text,
              "Cannot open the database '" + folder.file("dir") + "': it is a directory.");
}

// A device gives bytes without end, or none, whatever the database is opened for.
TEST(EmbeddedConnection, RefusesADevice) {
    for (const char* const device : {"/dev/zero", "/dev/null"}) {
        for (const char* const keys : {"", "Mode=Read"}) {
            const ServerMessage error = openingError(device, keys);
            EXPECT_EQ(error.number, errors::kLogin) << device << keys;
            EXPECT_EQ(error.text,
                      "Cannot open the database '" + std::string(device) + "': it is no file.");
        }
    }
}

TEST(EmbeddedConnection, ReadingDoesNotMakeAMissingFile) {
    const TemporaryFolder folder;
    const ServerMessage error = openingError(folder.file("a.db"), "Mode=Read");
    EXPECT_EQ(error.number, errors::kLogin);
    EXPECT_EQ(error.text, "Cannot open the database '" + folder.file("a.db") +
                              "': the file does not exist, and Mode=Read does not make it.");
    EXPECT_FALSE(fs::exists(folder.file("a.db")));
}

TEST(EmbeddedConnection, RefusesAFileThatIsNotADatabaseAndLeavesItAlone) {
    const TemporaryFolder folder;
    const std::string text(5000, 'x');
    writeFile(folder.file("letter.txt"), text);
    const ServerMessage error = openingError(folder.file("letter.txt"));
    EXPECT_EQ(error.number, errors::kLogin);
    EXPECT_EQ(error.text, "Cannot open the database '" + folder.file("letter.txt") +
                              "': the file is not a database.");
    EXPECT_EQ(readFile(folder.file("letter.txt")), text);
}

TEST(EmbeddedConnection, RefusesAShortFileThatIsNotADatabase) {
    const TemporaryFolder folder;
    writeFile(folder.file("short.txt"), "ciao\n");
    EXPECT_EQ(
        openingError(folder.file("short.txt")).text,
        "Cannot open the database '" + folder.file("short.txt") + "': the file is not a database.");
    EXPECT_EQ(readFile(folder.file("short.txt")), "ciao\n");
}

TEST(EmbeddedConnection, RefusesADatabaseWhoseSchemaIsDamaged) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))->execute("CREATE TABLE t (a int)");
    std::string content = readFile(folder.file("a.db"));
    content.replace(100, 300, std::string(300, '\x7F'));
    writeFile(folder.file("a.db"), content);
    const ServerMessage error = openingError(folder.file("a.db"));
    EXPECT_EQ(error.number, errors::kLogin);
    EXPECT_NE(error.text.find("': the file is damaged ("), std::string::npos) << error.text;
}

TEST(EmbeddedConnection, ReportsDamageThatIsMetLater) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))
        ->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (1), (2), (3)");
    std::string content = readFile(folder.file("a.db"));
    // All pages but the first, which holds the schema.
    content.replace(4096, content.size() - 4096, std::string(content.size() - 4096, '\x7F'));
    writeFile(folder.file("a.db"), content);
    const auto session = openSession(folder.file("a.db"));
    const ServerMessage error = test::errorOf(*session, "SELECT a FROM t");
    EXPECT_EQ(error.number, errors::kUnspecified);
    EXPECT_EQ(error.nativeNumber, 824);
    EXPECT_EQ(error.text, "The file of the database '" + folder.file("a.db") +
                              "' is damaged (database disk image is malformed). Restore it from a "
                              "copy.");
}

TEST(EmbeddedConnection, ReadModeReadsAndRefusesToWrite) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))
        ->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (1)");
    const auto session = openSession(folder.file("a.db"), "Mode=Read");
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "1");
    const ServerMessage error = test::errorOf(*session, "DELETE FROM t");
    EXPECT_EQ(error.number, errors::kUnspecified);
    EXPECT_EQ(error.nativeNumber, 3906);
    EXPECT_EQ(error.text, "Failed to update the database '" + folder.file("a.db") +
                              "' because the database is read-only.");
}

// Makes a database whose file has these rights and tells how opening it fails. The superuser may
// read and write everything, so it is opened as somebody else, in a process of its own.
std::string refusalWithRights(const TemporaryFolder& folder, fs::perms rights) {
    (void)openSession(folder.file("a.db"));
    fs::permissions(fs::path(folder.file("a.db")).parent_path(), fs::perms::all);
    fs::permissions(folder.file("a.db"), rights);
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return "no pipe";
    }
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        std::string text = "no other user";
        if (getuid() != 0 || setuid(kNobody) == 0) {
            const ServerMessage error = openingError(folder.file("a.db"));
            text = std::to_string(error.number) + " " + error.text;
        }
        _exit(::write(ends[1], text.data(), text.size()) > 0 ? 0 : 1);
    }
    close(ends[1]);
    std::array<char, 1000> text{};
    const ssize_t size = ::read(ends[0], text.data(), text.size());
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

TEST(EmbeddedConnection, RefusesAFileThatMayNotBeRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(
        refusalWithRights(folder, fs::perms::none),
        "-2147217843 Cannot open the database '" + folder.file("a.db") + "': Permission denied.");
}

TEST(EmbeddedConnection, RefusesToWriteAReadOnlyFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(refusalWithRights(
                  folder, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read),
              "-2147217843 Cannot open the database '" + folder.file("a.db") +
                  "': the file is read-only; to read it, say Mode=Read.");
}

TEST(EmbeddedConnection, ConnectionsThatNameTheSameMemoryShareIt) {
    const auto first = openSession(":memory:shared one");
    const auto second = openSession(":memory:shared one");
    (void)first->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (5)");
    EXPECT_EQ(rowsOf(*second, "SELECT a FROM t"), "5");
    EXPECT_EQ(test::errorOf(*openSession(":memory:another"), "SELECT a FROM t").nativeNumber, 208);
}

TEST(EmbeddedConnection, MemoryWithoutANameIsSharedToo) {
    const auto first = openSession(":memory:");
    const auto second = openSession(":memory:");
    (void)first->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (5)");
    EXPECT_EQ(rowsOf(*second, "SELECT a FROM t"), "5");
}

TEST(EmbeddedConnection, MemoryIsGoneWhenTheLastConnectionCloses) {
    (void)openSession(":memory:gone")->execute("CREATE TABLE t (a int)");
    EXPECT_EQ(test::errorOf(*openSession(":memory:gone"), "SELECT a FROM t").nativeNumber, 208);
}

}  // namespace
}  // namespace kap::ado::embedded
