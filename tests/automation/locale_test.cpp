#include <kaputil/automation/locale.hpp>

#include <gtest/gtest.h>

#include <string_view>
#include <thread>

#include "support/shown.hpp"

namespace kap {
namespace {

TEST(Locale, IsFoundByTheNamesThatSystemsGive) {
    const std::pair<const char*, const char*> cases[] = {
        {"it-IT", "it-IT"},       {"it_IT.UTF-8", "it-IT"}, {"IT", "it-IT"},
        {"it_CH", "it-IT"},       {"en-US", "en-US"},       {"en", "en-US"},
        {"en_GB.UTF-8", "en-GB"}, {"EN_us@euro", "en-US"},  {"en-AU", "en-US"},
    };
    for (const auto& [given, expected] : cases) {
        const LocaleScope scope(given);
        EXPECT_EQ(currentLocale().name, expected) << given;
    }
}

TEST(Locale, IsRefusedWhenUnknown) {
    for (const char* name : {"xx-XX", "", "C", "POSIX", "italiano"}) {
        EXPECT_EQ(test::raisedBy([&] { return setLocale(name), 0; }), 5) << name;
    }
}

TEST(Locale, ReturnsToThePreviousOneAtTheEndOfAScope) {
    const LocaleScope outer("en-GB");
    {
        const LocaleScope inner("it-IT");
        EXPECT_EQ(currentLocale().name, "it-IT");
    }
    EXPECT_EQ(currentLocale().name, "en-GB");
}

TEST(Locale, IsSetForOneThreadOnly) {
    const LocaleScope outer("en-GB");
    std::string_view other;
    std::thread([&other] {
        setLocale("it-IT");
        other = currentLocale().name;
    }).join();
    EXPECT_EQ(other, "it-IT");
    EXPECT_EQ(currentLocale().name, "en-GB");
}

}  // namespace
}  // namespace kap
