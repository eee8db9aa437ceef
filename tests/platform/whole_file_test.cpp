#include "platform/whole_file.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/profile_file.hpp>

#include "platform/output_file.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;
using test::contentOf;

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
}

class WholeFile : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::string file_ = folder_.file("dati");
};

TEST_F(WholeFile, IsReplacedInOneStep) {
    test::putFile(file_, "prima");
    replaceFile(file_, std::string("do\0po", 5), FileAccess::Shared);
    EXPECT_EQ(readFile(file_), std::string("do\0po", 5));
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(file_).parent_path()), {}), 1);
}

TEST_F(WholeFile, IsMadeForTheUserAloneOrForThoseTheMaskAllows) {
    const mode_t before = umask(022);
    replaceFile(file_, "x", FileAccess::Private);
    EXPECT_EQ(modeOf(file_), 0600U);
    replaceFile(folder_.file("altri"), "x", FileAccess::Shared);
    EXPECT_EQ(modeOf(folder_.file("altri")), 0644U);
    umask(0);
    replaceFile(folder_.file("tutti"), "x", FileAccess::Shared);
    EXPECT_EQ(modeOf(folder_.file("tutti")), 0664U);
    umask(before);
}

TEST_F(WholeFile, KeepsItsPermissions) {
    test::putFile(file_, "x");
    fs::permissions(file_, fs::perms::owner_read | fs::perms::group_read);
    replaceFile(file_, "y", FileAccess::Shared);
    EXPECT_EQ(modeOf(file_), 0440U);
}

TEST_F(WholeFile, StaysBehindItsLink) {
    test::putFile(file_, "x");
    fs::create_symlink(file_, folder_.file("legame"));
    replaceFile(folder_.file("legame"), "y", FileAccess::Shared);
    EXPECT_TRUE(fs::is_symlink(folder_.file("legame")));
    EXPECT_EQ(contentOf(file_), "y");
}

TEST_F(WholeFile, IsNothingWhereThereIsNone) {
    EXPECT_EQ(readFile(file_), std::nullopt);
}

TEST_F(WholeFile, RaisesTheErrorsOfFiles) {
    EXPECT_EQ(test::raisedBy([&] {
                  replaceFile(folder_.file("manca/dati"), "x", FileAccess::Shared);
                  return 0;
              }),
              errors::kFileNotFound);
    fs::create_directory(file_);
    EXPECT_EQ(test::raisedBy([&] { return readFile(file_); }), errors::kPermissionDenied);
}

TEST_F(WholeFile, LeavesNothingBehindWhenItFails) {
    fs::create_directory(file_);
    test::putFile(folder_.file("dati/occupato"), "x");
    EXPECT_NE(test::raisedBy([&] {
                  replaceFile(file_, "x", FileAccess::Shared);
                  return 0;
              }),
              0);
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(file_).parent_path()), {}), 1);
}

TEST_F(WholeFile, TakesAwayWhatAKilledProgramHasLeft) {
    test::putFile(folder_.file(".dati.kap0.tmp"), "meta");
    replaceFile(file_, "x", FileAccess::Shared);
    EXPECT_EQ(contentOf(file_), "x");
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(file_).parent_path()), {}), 1);
}

TEST_F(WholeFile, IsWrittenBesideOneThatSomebodyIsWriting) {
    const std::string other = folder_.file(".dati.kap0.tmp");
    test::putFile(other, "a meta");
    const int writing = open(other.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(flock(writing, LOCK_EX), 0);
    replaceFile(file_, "x", FileAccess::Shared);
    EXPECT_EQ(contentOf(file_), "x");
    EXPECT_EQ(contentOf(other), "a meta");
    close(writing);
}

TEST_F(WholeFile, MayHaveTheLongestName) {
    const std::string longest = folder_.file(std::string(255, 'n'));
    replaceFile(longest, "x", FileAccess::Shared);
    EXPECT_EQ(contentOf(longest), "x");
}

TEST_F(WholeFile, IsNoPipeThatWouldBeWaitedFor) {
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(test::raisedBy([&] { return readFile(file_); }), errors::kPermissionDenied);
    for (const auto begin : {OutputFile::Begin::Empty, OutputFile::Begin::AtEnd}) {
        EXPECT_EQ(test::raisedBy([&] { return OutputFile(file_, begin).size(); }),
                  errors::kPermissionDenied);
    }
    // Also with somebody at its other end.
    const int reader = open(file_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(test::raisedBy([&] { return OutputFile(file_, OutputFile::Begin::AtEnd).size(); }),
              errors::kPermissionDenied);
    close(reader);
    EXPECT_FALSE(writeProfile(u"A", u"x", u"1", String(file_)));
}

TEST_F(WholeFile, IsNoDeviceThatWouldBeReadForEver) {
    EXPECT_EQ(test::raisedBy([] { return readFile("/dev/zero"); }), errors::kPermissionDenied);
    EXPECT_EQ("", readFile("/dev/null"));
}

TEST_F(WholeFile, IsReadUpToALimit) {
    test::putFile(file_, "12345");
    EXPECT_EQ("12345", readFile(file_, 5));
    EXPECT_EQ(test::raisedBy([&] { return readFile(file_, 4); }), errors::kInvalidArgument);
    // One whose size nobody says, too.
    EXPECT_EQ(test::raisedBy([] { return readFile("/proc/self/maps", 4); }),
              errors::kInvalidArgument);
    fs::resize_file(file_, kLargestFile + 1);
    try {
        static_cast<void>(readFile(file_));
        ADD_FAILURE();
    } catch (const AutomationError& error) {
        EXPECT_EQ(file_ + " has more than the 1024 MB that are read", error.description().utf8());
    }
}

TEST_F(WholeFile, TakesThePlaceOfNoPipeOrDevice) {
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(test::raisedBy([&] {
                  replaceFile(file_, "x", FileAccess::Shared);
                  return 0;
              }),
              errors::kPermissionDenied);
    EXPECT_TRUE(fs::is_fifo(file_));
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(file_).parent_path()), {}), 1);
}

}  // namespace
}  // namespace kap::platform
