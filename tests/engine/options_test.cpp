#include "engine/sqlite/options.hpp"

#include <gtest/gtest.h>
#include <kaputil/data/error_numbers.hpp>

namespace kap::engine {
namespace {

Options parsed(std::string_view text) {
    return Options::parse(ado::ConnectionString::parse(text));
}

std::string refusalOf(std::string_view text) {
    try {
        (void)parsed(text);
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), ado::errors::kInvalidArgument);
        EXPECT_EQ(error.source().utf8(), "KapLocal");
        return error.description().utf8();
    }
    return "(accepted)";
}

TEST(Options, DefaultsAreTheSafeOnes) {
    const Options options = parsed("Provider=KapLocal;Data Source=a.db");
    EXPECT_EQ(options.source, "a.db");
    EXPECT_FALSE(options.readOnly);
    EXPECT_EQ(options.lockTimeout, std::chrono::seconds(30));
    EXPECT_EQ(options.synchronous, Synchronous::Full);
    EXPECT_FALSE(options.inMemory());
}

TEST(Options, ReadsEveryKeyIgnoringCase) {
    const Options options =
        parsed("data source=a.db;LOCK TIMEOUT=5;synchronous=normal;mode=READ;user id=;password=");
    EXPECT_EQ(options.lockTimeout, std::chrono::seconds(5));
    EXPECT_EQ(options.synchronous, Synchronous::Normal);
    EXPECT_TRUE(options.readOnly);
}

TEST(Options, KnowsDatabasesInMemory) {
    EXPECT_TRUE(parsed("Data Source=:memory:").inMemory());
    EXPECT_TRUE(parsed("Data Source=:memory:demo").inMemory());
}

TEST(Options, RefusesAnUnknownKeyAndListsTheKnownOnes) {
    EXPECT_EQ(refusalOf("Data Source=a.db;Initial Catalog=x"),
              "The connection string has the key 'Initial Catalog', which the provider KapLocal "
              "does not know. Its keys are Provider, Data Source, Mode, Lock Timeout, Synchronous, "
              "User ID and Password.");
}

TEST(Options, RefusesAMissingDataSource) {
    EXPECT_EQ(refusalOf("Provider=KapLocal"),
              "The connection string names no database: add Data Source=<file>, or Data "
              "Source=:memory: for one that is not kept.");
    EXPECT_NE(refusalOf("Provider=KapLocal;Data Source="), "(accepted)");
}

TEST(Options, RefusesUsersAndPasswords) {
    EXPECT_EQ(refusalOf("Data Source=a.db;User ID=sa"),
              "The connection string gives a User ID, but an embedded database has no users: leave "
              "it out.");
    EXPECT_EQ(refusalOf("Data Source=a.db;Password=x"),
              "The connection string gives a Password, but an embedded database has no users: "
              "leave it out.");
}

TEST(Options, RefusesValuesThatAKeyDoesNotHave) {
    EXPECT_EQ(refusalOf("Data Source=a.db;Mode=Share"),
              "The connection string's Mode is 'Share'; it must be ReadWrite or Read.");
    EXPECT_EQ(refusalOf("Data Source=a.db;Synchronous=2"),
              "The connection string's Synchronous is '2'; it must be Full, Normal or Off.");
    for (const char* timeout : {"-1", "x", "", "1.5", "86401", "99999999999"}) {
        EXPECT_EQ(refusalOf(std::string("Data Source=a.db;Lock Timeout=") + timeout),
                  std::string("The connection string's Lock Timeout is '") + timeout +
                      "'; it must be a whole number of seconds from 0 to 86400.");
    }
}

}  // namespace
}  // namespace kap::engine
