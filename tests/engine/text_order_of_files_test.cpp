#include <kaputil/engine/embedded_database.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/functions/registration.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "support/temporary_folder.hpp"

// Files whose indexes were made in the order of texts of older editions.
namespace kap::engine {
namespace {

class TextOrderOfFiles : public ::testing::Test {
protected:
    // A table with a unique index of names, as an older edition would have left it.
    void makeOldFile(const std::string& names) {
        {
            EmbeddedDatabase database(file_);
            database.run("CREATE TABLE T (n int, nome varchar(20) UNIQUE)");
        }
        Database database(file_.string(), SQLITE_OPEN_READWRITE);
        registerCollations(database.handle());
        registerFormerTextOrder(database.handle());
        database.run(("INSERT INTO T VALUES " + names).c_str());
        database.run("PRAGMA user_version = 0");
    }

    static std::vector<std::string> names(EmbeddedDatabase& database, const std::string& query) {
        std::vector<std::string> found;
        const std::vector<ResultSet> results = database.run(query);
        for (const auto& row : results.front().rows) {
            found.push_back(std::get<std::string>(row.front()));
        }
        return found;
    }

    test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.file("azienda.db");
};

TEST_F(TextOrderOfFiles, IndexesAreMadeAnewWhenAFileIsOpened) {
    makeOldFile("(1, 'D''Amico'), (2, 'Dabene'), (3, 'co-op'), (4, 'coop'), (5, 'Straße')");
    EmbeddedDatabase database(file_);
    const std::vector<std::string> expected = {"coop", "co-op", "Dabene", "D'Amico", "Straße"};
    EXPECT_EQ(expected, names(database, "SELECT nome FROM T ORDER BY nome"));
    EXPECT_EQ(std::vector<std::string>{"Straße"},
              names(database, "SELECT nome FROM T WHERE nome = 'strasse'"));
    EXPECT_NO_THROW(database.check());
}

TEST_F(TextOrderOfFiles, AFileThatWouldBreakItsKeysKeepsItsOrder) {
    makeOldFile("(1, 'Straße'), (2, 'Strasse'), (3, 'D''Amico'), (4, 'Dabene')");
    EmbeddedDatabase database(file_);
    const std::vector<std::string> expected = {"D'Amico", "Dabene", "Strasse", "Straße"};
    EXPECT_EQ(expected, names(database, "SELECT nome FROM T ORDER BY nome"));
    EXPECT_NO_THROW(database.check());
    database.run("DELETE FROM T WHERE n = 1");
    EmbeddedDatabase again(file_);
    EXPECT_EQ(std::vector<std::string>{"Strasse"},
              names(again, "SELECT nome FROM T WHERE nome = 'straße'"));
}

TEST_F(TextOrderOfFiles, AFileThatIsOnlyReadKeepsItsOrder) {
    makeOldFile("(1, 'D''Amico'), (2, 'Dabene')");
    DatabaseSettings settings;
    settings.readOnly = true;
    EmbeddedDatabase database(file_, settings);
    const std::vector<std::string> expected = {"D'Amico", "Dabene"};
    EXPECT_EQ(expected, names(database, "SELECT nome FROM T ORDER BY nome"));
}

}  // namespace
}  // namespace kap::engine
