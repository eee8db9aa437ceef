// How large the write-ahead journal gets.
#include "engine/sqlite/checkpoints.hpp"

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "drivers/embedded/session_support.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado::embedded {
namespace {

using test::openSession;

constexpr std::uintmax_t kPage = 4096 + 24;
// What one commit of these tests writes at most, beside the pages of the rows.
constexpr std::uintmax_t kMargin = 300;

class Journal : public testing::Test {
protected:
    Journal() {
        write("CREATE TABLE t (a int IDENTITY PRIMARY KEY, b varchar(8000))");
        for (int i = 0; i < 100; ++i) {
            write("INSERT t (b) VALUES (REPLICATE('x', 3500))");
        }
    }
    void write(const std::string& script) { static_cast<void>(session_->execute(script)); }
    // At least so many pages, a hundred with each commit.
    void writePages(int pages) {
        for (int i = 0; i < pages; i += 100) {
            ++written_;  // what stays the same is not written
            write("UPDATE t SET b = REPLICATE(CHAR(65 + " + std::to_string(written_ % 26) +
                  "), 3500)");
        }
    }
    [[nodiscard]] std::uintmax_t journalPages() const {
        return std::filesystem::file_size(file_ + "-wal") / kPage;
    }

    kap::test::TemporaryFolder folder_;
    std::string file_ = folder_.file("a.db");
    std::unique_ptr<Session> session_ = openSession(file_, "Synchronous=Off");
    int written_ = 0;
};

// A program that stands in the middle of reading the file.
class StandingProgram {
public:
    explicit StandingProgram(const std::string& file) {
        EXPECT_EQ(sqlite3_open(file.c_str(), &database_), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database_, "BEGIN; SELECT count(*) FROM sqlite_schema", nullptr,
                               nullptr, nullptr),
                  SQLITE_OK);
    }
    StandingProgram(const StandingProgram&) = delete;
    StandingProgram& operator=(const StandingProgram&) = delete;
    ~StandingProgram() { sqlite3_close(database_); }

private:
    sqlite3* database_ = nullptr;
};

TEST_F(Journal, IsUsedAnewWhenItIsLong) {
    writePages(10'000);
    EXPECT_LT(journalPages(), 1000 + kMargin);
}

TEST_F(Journal, GrowsBehindAReaderWhomNobodyWaitsFor) {
    const auto begun = std::chrono::steady_clock::now();
    std::uintmax_t longest = 0;
    {
        const StandingProgram reader(file_);
        writePages(9000);
        longest = journalPages();
        EXPECT_GT(longest, 8000U);
    }
    // Far less than a writer would wait for another.
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
    writePages(10'000);
    EXPECT_LT(journalPages(), longest + 1000 + kMargin);
}

TEST_F(Journal, HoldsWhatIsNotInTheFileYet) {
    writePages(1500);
    session_ = openSession(file_);
    EXPECT_EQ("100, 350000", test::rowsOf(*session_, "SELECT count(*), SUM(LEN(b)) FROM t"));
}

}  // namespace
}  // namespace kap::ado::embedded
