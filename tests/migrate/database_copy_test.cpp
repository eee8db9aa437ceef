#include "migrate/database_copy.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "support/database.hpp"

namespace kap::migrate {
namespace {

using test::valueOf;

Ref<ado::Connection> newFile() {
    static int count = 0;
    return test::open("Provider=KapLocal;Data Source=:memory:copy" + std::to_string(++count));
}

std::int32_t number(const Ref<ado::Connection>& connection, const String& query) {
    return convert::toLong(valueOf(connection, query));
}

class DatabaseCopyTest : public testing::Test {
protected:
    // Runs a copy; `rowsTillFailure`: it is given up behind so many rows of a table.
    bool copy(const std::vector<std::string>& tables = {},
              std::optional<std::int64_t> rowsTillFailure = std::nullopt) {
        told_.clear();
        ended_.clear();
        progress_.clear();
        return DatabaseCopy(*from_, tables)
            .run(*to_, {.tell = [&](const std::string& left) { told_.push_back(left); },
                        .begins = [](const std::string& /*table*/) {},
                        .progress =
                            [&](std::int64_t done, std::int64_t /*all*/) {
                                progress_.push_back(done);
                                if (rowsTillFailure && done >= *rowsTillFailure) {
                                    throw std::runtime_error("given up");
                                }
                            },
                        .ends =
                            [&](const std::string& table, const CopyOutcome& outcome) {
                                ended_.push_back(table + (outcome.isWhole() ? "" : " differs"));
                            }});
    }
    void fill(int rows) {
        from_->Execute(u"CREATE TABLE Righe (Id int PRIMARY KEY, Nome varchar(20))");
        from_->Execute(
            "WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n WHERE i < " +
            std::to_string(rows) +
            ") INSERT INTO Righe SELECT i, 'riga ' + CAST(i AS varchar(9)) FROM n OPTION "
            "(MAXRECURSION 0)");
    }

    Ref<ado::Connection> from_ = newFile();
    Ref<ado::Connection> to_ = newFile();
    std::vector<std::string> told_;
    std::vector<std::string> ended_;
    std::vector<std::int64_t> progress_;
};

TEST_F(DatabaseCopyTest, TellsEachTableWhenItHasArrived) {
    from_->Execute(
        u"CREATE TABLE Clienti (Id int PRIMARY KEY);"
        u"CREATE TABLE Ordini (Id int PRIMARY KEY, Cliente int REFERENCES Clienti);"
        u"INSERT INTO Clienti VALUES (1); INSERT INTO Ordini VALUES (7, 1)");
    EXPECT_TRUE(copy());
    EXPECT_EQ(ended_, (std::vector<std::string>{"Clienti", "Ordini"}));
    EXPECT_TRUE(told_.empty());
    EXPECT_THROW(to_->Execute(u"INSERT INTO Ordini VALUES (8, 2)"), AutomationError);
}

TEST_F(DatabaseCopyTest, GoesOnBehindTheRowsThatHaveArrived) {
    fill(50000);
    EXPECT_THROW(copy({}, 40000), std::runtime_error);
    EXPECT_EQ(number(to_, u"SELECT COUNT(*) FROM Righe"), 40000);
    EXPECT_TRUE(copy());
    EXPECT_EQ(progress_, std::vector<std::int64_t>{50000});
    EXPECT_EQ(number(to_, u"SELECT COUNT(*) FROM Righe"), 50000);
    EXPECT_EQ(number(to_, u"SELECT COUNT(*) FROM sysobjects WHERE name = 'KAP_COPY'"), 0);
}

TEST_F(DatabaseCopyTest, WithADifferenceMakesNothingElseAndKeepsItsNotes) {
    fill(10);
    from_->Execute(u"CREATE VIEW Nomi AS SELECT Nome FROM Righe");
    EXPECT_THROW(copy({}, 10), std::runtime_error);
    to_->Execute(u"UPDATE Righe SET Nome = 'altro' WHERE Id = 3");
    EXPECT_FALSE(copy());
    EXPECT_EQ(ended_, std::vector<std::string>{"Righe differs"});
    EXPECT_EQ(number(to_, u"SELECT COUNT(*) FROM sysobjects WHERE name = 'Nomi'"), 0);
    EXPECT_EQ(number(to_, u"SELECT Righe FROM KAP_COPY"), 10);
}

TEST_F(DatabaseCopyTest, OfATableThatIsNotThereBeginsNothing) {
    EXPECT_THROW(DatabaseCopy(*from_, {"Manca"}), AutomationError);
}

TEST_F(DatabaseCopyTest, OfSomeTablesLeavesTheOthers) {
    from_->Execute(u"CREATE TABLE A (Id int PRIMARY KEY); CREATE TABLE B (Id int PRIMARY KEY)");
    EXPECT_TRUE(copy({"B"}));
    EXPECT_EQ(number(to_, u"SELECT COUNT(*) FROM sysobjects WHERE type = 'U'"), 1);
}

TEST_F(DatabaseCopyTest, RefusesATableWithRowsBeforeAnythingIsWritten) {
    from_->Execute(u"CREATE TABLE A (Id int PRIMARY KEY); CREATE TABLE B (Id int PRIMARY KEY)");
    to_->Execute(u"CREATE TABLE B (Id int); INSERT INTO B VALUES (1)");
    EXPECT_THROW(copy(), std::runtime_error);
    EXPECT_EQ(number(to_, u"SELECT COUNT(*) FROM sysobjects WHERE type = 'U'"), 1);
}

}  // namespace
}  // namespace kap::migrate
