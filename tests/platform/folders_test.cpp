#include <kaputil/platform/folders.hpp>

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <kaputil/platform/user.hpp>

#include "support/scoped_variable.hpp"

namespace kap::platform {
namespace {

using test::ScopedVariable;

TEST(Folders, AreTheOneThatTheVariableNames) {
    const ScopedVariable chosen("KAPUTIL_HOME", "/srv/vertex");
    EXPECT_EQ(settingsFolder(), "/srv/vertex");
    EXPECT_EQ(dataFolder(), "/srv/vertex");
}

TEST(Folders, AreTheDesktopsWithoutIt) {
    const ScopedVariable chosen("KAPUTIL_HOME", std::nullopt);
    const ScopedVariable home("HOME", "/home/anna");
    const ScopedVariable config("XDG_CONFIG_HOME", std::nullopt);
    const ScopedVariable data("XDG_DATA_HOME", "/dati");
    EXPECT_EQ(settingsFolder(), "/home/anna/.config/kaputil");
    EXPECT_EQ(dataFolder(), "/dati/kaputil");
}

TEST(Folders, IgnoreVariablesWithARelativePath) {
    const ScopedVariable chosen("KAPUTIL_HOME", "");
    const ScopedVariable home("HOME", "/home/anna");
    const ScopedVariable config("XDG_CONFIG_HOME", "config");
    EXPECT_EQ(settingsFolder(), "/home/anna/.config/kaputil");
}

TEST(Folders, KnowWhereTheProgramIs) {
    EXPECT_TRUE(std::filesystem::exists(applicationFolder() / "test_platform"));
}

TEST(User, IsTheOneTheSystemKnows) {
    const passwd* entry = getpwuid(getuid());
    if (entry == nullptr) {
        EXPECT_EQ(userName(), std::nullopt);
    } else {
        EXPECT_EQ(userName(), String(entry->pw_name));
    }
}

}  // namespace
}  // namespace kap::platform
