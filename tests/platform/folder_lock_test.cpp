#include "platform/folder_lock.hpp"

#include <gtest/gtest.h>

#include <optional>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/profile_file.hpp>
#include <kaputil/platform/registry.hpp>

#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::platform {
namespace {

class FolderLocked : public testing::Test {
protected:
    FolderLocked() { setFolderLockLimit(std::chrono::milliseconds(20)); }
    ~FolderLocked() override { setFolderLockLimit(kFolderLockLimit); }

    test::TemporaryFolder folder_;
    std::optional<FolderLock> held_{folder_.file("")};
};

TEST_F(FolderLocked, EndsInAnErrorForThoseWhoWaitTooLong) {
    EXPECT_EQ(test::raisedBy([&] {
                  const FolderLock second(folder_.file(""));
                  return 0;
              }),
              errors::kPermissionDenied);
    EXPECT_FALSE(FolderLock::ifPossible(folder_.file("")));
    held_.reset();
    EXPECT_TRUE(FolderLock::ifPossible(folder_.file("")));
}

TEST_F(FolderLocked, IsToldByThoseWhoWriteSettings) {
    EXPECT_FALSE(writeProfile(u"A", u"x", u"1", String(folder_.file("p.ini"))));
    const test::ScopedVariable home("KAPUTIL_HOME", folder_.file(""));
    EXPECT_EQ(test::raisedBy([] { return registry::createKey(u"HKCU\\Software"); }),
              errors::kPermissionDenied);
}

}  // namespace
}  // namespace kap::platform
