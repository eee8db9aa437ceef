// Each step from one state of a transaction to the next, with everything going wrong in it that
// can.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <map>
#include <new>
#include <set>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "faults/killed_at.hpp"
#include "faults/progress.hpp"
#include "faults/random_runs.hpp"
#include "faults/troubles.hpp"
#include "support/database.hpp"
#include "support/seed.hpp"
#include "support/temporary_folder.hpp"

namespace kap {
namespace {

using test::Trouble;

constexpr const char16_t* kDepth = u"SELECT @@TRANCOUNT";
constexpr const char16_t* kSeen = u"SELECT Passo FROM Righe";

// What there is: rows that everybody sees, and those of the open transaction beside them.
struct Books {
    std::set<int> kept{};
    int depth = 0;
    std::set<int> seen{};  // by the transaction
    std::map<std::string, std::set<int>> saved{};

    [[nodiscard]] Books lost() const { return {kept, 0, kept, {}}; }
};

struct Step {
    const char* name;
    void (*run)(const Ref<ado::Connection>& connection, int first);
    Books (*effect)(Books books, int first);
    // Where a script of several statements may end before its end.
    std::vector<Books> (*ends)(const Books& books, int first) = nullptr;
};

Books begun(Books books, int /*first*/) {
    ++books.depth;
    return books;
}

Books committed(Books books, int /*first*/) {
    if (--books.depth == 0) {
        books.kept = books.seen;
        books.saved.clear();
    }
    return books;
}

Books rolledBack(Books books, int /*first*/) {
    return books.lost();
}

Books withRow(Books books, int first) {
    books.seen.insert(first);
    if (books.depth == 0) {
        books.kept = books.seen;
    }
    return books;
}

Books withTwoRows(Books books, int first) {
    return withRow(withRow(std::move(books), first), first + 1);
}

// With its transaction open, as the server leaves it to the client.
std::vector<Books> withinScript(const Books& books, int first) {
    const Books open = begun(books, first);
    const Books one = withRow(open, first);
    return {open, one, withRow(one, -1)};
}

void addRow(const Ref<ado::Connection>& connection, int first) {
    connection->Execute(String("INSERT INTO Righe (Passo) VALUES (" + std::to_string(first) + ")"));
}

const Step kBegin{"BeginTrans", [](const auto& on, int) { on->BeginTrans(); }, &begun};
const Step kCommit{"CommitTrans", [](const auto& on, int) { on->CommitTrans(); }, &committed};
const Step kRollback{"RollbackTrans", [](const auto& on, int) { on->RollbackTrans(); },
                     &rolledBack};
const Step kBeginScript{"BEGIN TRAN", [](const auto& on, int) { on->Execute(u"BEGIN TRAN"); },
                        &begun};
const Step kCommitScript{"COMMIT", [](const auto& on, int) { on->Execute(u"COMMIT"); }, &committed};
const Step kRollbackScript{"ROLLBACK", [](const auto& on, int) { on->Execute(u"ROLLBACK"); },
                           &rolledBack};
const Step kSave{"SAVE TRAN", [](const auto& on, int) { on->Execute(u"SAVE TRAN a"); },
                 [](Books books, int) {
                     books.saved["a"] = books.seen;
                     return books;
                 }};
const Step kBack{"ROLLBACK TRAN a", [](const auto& on, int) { on->Execute(u"ROLLBACK TRAN a"); },
                 [](Books books, int) {
                     books.seen = books.saved["a"];
                     return books;
                 }};
const Step kRow{"INSERT", &addRow, &withRow};
const Step kRows{
    "INSERT of two rows",
    [](const auto& on, int first) {
        on->Execute(String("INSERT INTO Righe (Passo) SELECT " + std::to_string(first) +
                           " UNION ALL SELECT " + std::to_string(first + 1)));
    },
    &withTwoRows};
const Step kRecord{"Update",
                   [](const auto& on, int first) {
                       const auto rows = test::openLive(on, u"SELECT * FROM Righe WHERE 1 = 0");
                       rows->AddNew();
                       rows->Fields()->Item(u"Passo")->setValue(first);
                       rows->Update();
                   },
                   &withRow};
const Step kWhole{
    "a script with a transaction",
    [](const auto& on, int first) {
        on->Execute(String("BEGIN TRAN INSERT INTO Righe (Passo) VALUES (" + std::to_string(first) +
                           ") SAVE TRAN b INSERT INTO Righe (Passo) VALUES (-1) "
                           "ROLLBACK TRAN b COMMIT"));
    },
    &withRow, &withinScript};
// With a trigger, which writes a second row.
const Step kTrigger{
    "INSERT with a trigger",
    [](const auto& on, int first) {
        on->Execute(String("INSERT INTO Prime (Passo) VALUES (" + std::to_string(first) + ")"));
    },
    &withTwoRows};
using Story = std::vector<Step>;

const std::vector<Story>& stories() {
    static const std::vector<Story> kStories = {
        {kBegin, kRow, kSave, kRows, kBack, kRecord, kCommit},
        {kBeginScript, kRecord, kBegin, kRow, kCommit, kTrigger, kCommitScript},
        {kRow, kRecord, kRows, kTrigger, kWhole},
        {kBegin, kRow, kTrigger, kRollback, kRow},
        {kBeginScript, kSave, kRows, kRollbackScript, kBegin, kSave, kWhole, kBack, kRow, kCommit}};
    return kStories;
}

void makeTables(const Ref<ado::Connection>& connection) {
    connection->Execute(
        u"CREATE TABLE Righe (Numero int IDENTITY PRIMARY KEY, Passo int NOT NULL UNIQUE, "
        u"AggID timestamp) CREATE TABLE Prime (Passo int)"
        u"CREATE TABLE Segni (n int)");
    connection->Execute(
        u"CREATE TRIGGER Seconde ON Prime FOR INSERT AS INSERT INTO Righe (Passo) SELECT "
        u"Passo FROM inserted INSERT INTO Righe (Passo) SELECT Passo + 1 FROM inserted");
}

std::set<int> rowsReadBy(const Ref<ado::Connection>& connection) {
    std::set<int> there;
    const auto rows = connection->Execute(kSeen);
    for (; !rows->Eof(); rows->MoveNext()) {
        there.insert(test::fieldOf(rows, 0).as<std::int32_t>());
    }
    return there;
}

class Transitions : public testing::Test {
protected:
    Transitions()
        : file_(folder_.file("libri.db")),
          other_(test::open(folder_.database("libri.db") + ";Synchronous=Off;Lock Timeout=0")) {
        makeTables(other_);
        reopen();
    }

    void reopen() {
        connection_ = nullptr;
        connection_ = test::open(folder_.database("libri.db") + ";Synchronous=Off;Lock Timeout=0");
    }

    // Tells a story in which one step meets its trouble at the n-th occasion. False when the step
    // has fewer.
    bool tell(const Story& story, std::size_t at, Trouble& trouble, std::int64_t nth) {
        SCOPED_TRACE(std::string(story[at].name) + ", step " + std::to_string(at) + ": " +
                     trouble.name() + ", occasion " + std::to_string(nth));
        other_->Execute(u"DELETE FROM Righe DELETE FROM Prime");
        Books books;
        int row = 1;
        for (std::size_t i = 0; i < at; ++i, row += 2) {
            story[i].run(connection_, row);
            books = story[i].effect(books, row);
        }
        const Books after = story[at].effect(books, row);
        std::string failure;
        bool failed = false;
        trouble.begin(nth);
        try {
            story[at].run(connection_, row);
            failed = trouble.end();
        } catch (const AutomationError& error) {
            failed = trouble.end();
            failure = error.what();
        } catch (const std::bad_alloc&) {
            failed = trouble.end();
            failure = "no memory";
        }
        SCOPED_TRACE(failure.empty() ? "it says that it is done"
                                     : "it says: " + failure + " (" + trouble.place() + ")");
        EXPECT_TRUE(failed || trouble.other() || failure.empty());
        std::vector<Books> allowed = {after};
        if (!failure.empty()) {
            allowed = {books, books.lost()};
            if (story[at].ends != nullptr) {
                std::ranges::copy(story[at].ends(books, row), std::back_inserter(allowed));
            }
        }
        expectOneOf(allowed);
        return failed;
    }

    // A story, a step and a trouble that the seed chooses, on the connection that the last one has
    // left.
    void tellAny(const std::vector<std::unique_ptr<Trouble>>& troubles, std::uint32_t seed) {
        std::mt19937 random(seed);
        if (random() % 4 == 0) {
            reopen();
        }
        const Story& story = stories()[random() % stories().size()];
        const std::size_t at = random() % story.size();
        const std::uint32_t most = 1U << random() % 12;
        tell(story, at, *troubles[random() % troubles.size()],
             static_cast<std::int64_t>(1 + random() % most));
    }

    // Compares what is there with what may be, and goes on from it.
    void expectOneOf(const std::vector<Books>& allowed) {
        try {
            const int depth = test::valueOf(connection_, kDepth).as<std::int32_t>();
            const std::set<int> seen = rowsOf(connection_);
            const std::set<int> kept = rowsOf(other_);
            const auto found = std::ranges::find_if(allowed, [&](const Books& books) {
                return books.depth == depth && books.seen == seen && books.kept == kept;
            });
            if (found == allowed.end()) {
                ADD_FAILURE() << "depth " << depth << ", seen " << testing::PrintToString(seen)
                              << ", kept " << testing::PrintToString(kept) << "; expected "
                              << allowed.front().depth << ", "
                              << testing::PrintToString(allowed.front().seen) << ", "
                              << testing::PrintToString(allowed.front().kept);
            }
            goOn(depth, seen, kept);
        } catch (const AutomationError& error) {
            ADD_FAILURE() << "work does not go on: " << error.what()
                          << "; elsewhere: " << checkedAnew();
        }
    }

    // Ends what is open, one way or the other; then both connections write. What a failure has
    // spoiled cannot be committed, and says so.
    void goOn(int depth, const std::set<int>& seen, const std::set<int>& kept) {
        bool commits = ++ends_ % 2 == 0;
        try {
            for (; commits && depth > 0; --depth) {
                connection_->CommitTrans();
            }
        } catch (const AutomationError&) {
            commits = false;
            depth = 0;
        }
        if (depth > 0) {
            connection_->RollbackTrans();
        }
        EXPECT_EQ(0, test::valueOf(connection_, kDepth).as<std::int32_t>());
        EXPECT_EQ(commits ? seen : kept, rowsOf(other_));
        other_->Execute(u"DELETE FROM Segni");
        connection_->Execute(u"INSERT INTO Segni VALUES (1)");
        EXPECT_EQ(1, test::valueOf(other_, u"SELECT COUNT(*) FROM Segni").as<std::int32_t>());
    }

    [[nodiscard]] std::set<int> rowsOf(const Ref<ado::Connection>& connection) const {
        SCOPED_TRACE(connection == other_ ? "by the other" : "by itself");
        return rowsReadBy(connection);
    }

    // What others find in the file.
    [[nodiscard]] std::string checkedAnew() const {
        try {
            test::open(folder_.database("libri.db"))->Execute(u"DBCC CHECKDB");
            return "sound";
        } catch (const AutomationError& error) {
            return error.what();
        }
    }

    // Every occasion, or, when there are many and time is short, ever fewer of them.
    void walk(const Story& story, std::size_t at, Trouble& trouble, std::mt19937& random) {
        constexpr std::int64_t kEach = 12;
        const bool all = std::getenv("KAPUTIL_FAULT_SECONDS") != nullptr;
        std::int64_t nth = 1;
        while (tell(story, at, trouble, nth) && !HasFailure()) {
            const std::int64_t most = all || nth < kEach ? 1 : nth / 3;
            nth += 1 + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(most));
            progress_.tell([&] { return told(trouble, runs_ + nth); });
        }
        runs_ += nth;
    }

    static std::string told(const Trouble& trouble, std::int64_t occasions) {
        return trouble.name() + ": " + std::to_string(occasions) + " occasions";
    }

    test::TemporaryFolder folder_;
    std::string file_;
    Ref<ado::Connection> other_;
    Ref<ado::Connection> connection_;
    int ends_ = 0;
    std::int64_t runs_ = 0;
    test::Progress progress_;
};

TEST_F(Transitions, AreMadeOrNotWhateverGoesWrongInThem) {
    std::mt19937 random(test::randomSeed());
    for (const auto& trouble : test::everyTrouble(file_)) {
        for (const Story& story : stories()) {
            for (std::size_t at = 0; at < story.size() && !HasFailure(); ++at) {
                walk(story, at, *trouble, random);
            }
        }
        std::printf("%s\n", told(*trouble, std::exchange(runs_, 0)).c_str());
    }
}

TEST_F(Transitions, AreMadeOrNotAtRandom) {
    const auto troubles = test::everyTrouble(file_);
    test::withRandomSeeds([&](std::uint32_t seed) { tellAny(troubles, seed); });
}

// Found at random: a rollback needs memory, too, when the temporary schema has changed since it was
// prepared, and a query that had run before then read what was to be undone.
TEST_F(Transitions, AreSettledByTheNextCallWhenEvenARollbackFails) {
    const auto troubles = test::everyTrouble(file_);
    for (std::uint32_t seed = 3671769843; seed <= 3671769867; ++seed) {
        SCOPED_TRACE(seed);
        tellAny(troubles, seed);
    }
}

// Who cannot have the lock is told so; what he had stays, and he can go on when it is free.
TEST_F(Transitions, FailWholeWhenAnotherHasTheLock) {
    for (const Step& step : {kBegin, kBeginScript, kRow, kRows, kRecord, kTrigger, kWhole}) {
        SCOPED_TRACE(step.name);
        other_->BeginTrans();
        EXPECT_THROW(step.run(connection_, 1), AutomationError);
        EXPECT_EQ(0, test::valueOf(connection_, kDepth).as<std::int32_t>());
        EXPECT_EQ(0U, rowsOf(connection_).size());
        other_->RollbackTrans();
        goOn(0, {}, {});
        step.run(connection_, 1);
        connection_->Execute(u"WHILE @@TRANCOUNT > 0 COMMIT DELETE FROM Righe");
    }
}

// Tells a story in a program that is killed at its n-th call of the file system; what was said to
// be done is there, and of the step in which it died all or nothing. False when it came to its end.
bool tellUntilKilled(const Story& story, const test::TemporaryFolder& folder, int nth) {
    const std::string string = folder.database("libri.db") + ";Synchronous=Off";
    test::open(string)->Execute(u"DELETE FROM Righe DELETE FROM Prime");
    const std::set<int> done = test::killedAt(nth, folder.file(""), [&](auto acknowledge) {
        const auto connection = test::open(string);
        for (int i = 0; i < static_cast<int>(story.size()); ++i) {
            story[static_cast<std::size_t>(i)].run(connection, 1 + 2 * i);
            acknowledge(i);
        }
    });
    Books books;
    int row = 1;
    for (std::size_t i = 0; i < done.size(); ++i, row += 2) {
        books = story[i].effect(books, row);
    }
    const auto connection = test::open(string);
    const std::set<int> kept = rowsReadBy(connection);
    const bool finished = done.size() == story.size();
    if (finished || kept == books.kept) {
        EXPECT_EQ(books.kept, kept);
    } else {
        EXPECT_EQ(story[done.size()].effect(books, row).kept, kept) << story[done.size()].name;
    }
    EXPECT_NO_THROW(connection->Execute(u"DBCC CHECKDB"));
    return !finished;
}

TEST(KilledTransitions, AreMadeOrNotWhereverAProgramDiesInThem) {
    std::mt19937 random(test::randomSeed());
    const test::TemporaryFolder folder;
    makeTables(test::open(folder.database("libri.db")));
    const bool all = std::getenv("KAPUTIL_FAULT_SECONDS") != nullptr;
    test::Progress progress;
    int kills = 0;
    for (const Story& story : stories()) {
        int nth = 1;
        while (tellUntilKilled(story, folder, nth) && !testing::Test::HasFailure()) {
            const int most = all ? 1 : 1 + nth / 4;
            nth += 1 + static_cast<int>(random() % static_cast<unsigned>(most));
            ++kills;
            progress.tell([&] { return std::to_string(kills) + " kills"; });
        }
    }
    EXPECT_GT(kills, 50);
    std::printf("%d kills\n", kills);
}

}  // namespace
}  // namespace kap
