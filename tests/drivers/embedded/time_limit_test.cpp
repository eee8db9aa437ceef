#include "engine/sqlite/time_limit.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"
#include "support/database.hpp"
#include "support/seed.hpp"

namespace kap::ado::embedded {
namespace {

using kap::test::TemporaryFolder;
using test::errorOf;
using test::openSession;
using test::rowsOf;

// A script that the time limit ends somewhere, and what must hold wherever it does.
struct LimitedScript {
    const char* name;
    const char* before;  // brings the data to its first state, without a limit
    const char* script;
    const char* query;  // of another connection
    std::vector<std::string> allowed;
};

constexpr const char* kTables =
    "CREATE TABLE marker (n int);"
    "CREATE TABLE kept (a int);"
    "CREATE TABLE t (a int PRIMARY KEY, b int CHECK (b >= 0));"
    "CREATE TABLE child (id int IDENTITY, a int REFERENCES t (a) ON UPDATE CASCADE);"
    "CREATE TABLE u (a int);"
    "CREATE TABLE log1 (a int, v timestamp)";
constexpr const char* kTrigger =
    "CREATE TRIGGER u_all ON u FOR INSERT, UPDATE, DELETE AS INSERT log1 (a) SELECT a FROM "
    "inserted DELETE l FROM log1 l JOIN deleted d ON d.a = l.a";
constexpr const char* kFunction =
    "CREATE FUNCTION f (@n int) RETURNS int AS BEGIN DECLARE @v TABLE (a int) INSERT @v VALUES "
    "(@n), (@n) RETURN (SELECT sum(a) FROM @v) END";
constexpr const char* kProcedure =
    "CREATE PROCEDURE p AS CREATE TABLE #p (a int) INSERT #p VALUES (1), (2) INSERT t SELECT a, a "
    "FROM #p";

const std::vector<LimitedScript>& limitedScripts() {
    static const std::vector<LimitedScript> kScripts{
        {"one row", "DELETE t", "INSERT t VALUES (1, 1)", "SELECT count(*) FROM t", {"0", "1"}},
        {"statements",
         "DELETE t",
         "INSERT t VALUES (1, 1); INSERT t VALUES (2, 2); UPDATE t SET b = 5; DELETE t WHERE a = 1",
         "SELECT count(*) FROM t",
         {"0", "1", "2"}},
        {"several rows",
         "DELETE t",
         "INSERT t VALUES (1, 1), (2, 2), (3, 3)",
         "SELECT count(*) FROM t",
         {"0", "3"}},
        {"reading", "DELETE t", "SELECT count(*) FROM t", "SELECT count(*) FROM t", {"0"}},
        {"transaction",
         "DELETE t",
         "BEGIN TRAN; INSERT t VALUES (1, 1); SELECT a FROM t; INSERT t VALUES (2, 2), (3, 3); "
         "COMMIT",
         "SELECT count(*) FROM t",
         {"0", "3"}},
        {"save point",
         "DELETE t",
         "BEGIN TRAN; INSERT t VALUES (1, 1); SAVE TRAN s; INSERT t VALUES (2, 2); "
         "ROLLBACK TRAN s; COMMIT",
         "SELECT sum(a) FROM t",
         {"Null", "1"}},
        {"rollback",
         "DELETE t",
         "DECLARE @v TABLE (a int); BEGIN TRAN; INSERT @v VALUES (1), (2); INSERT t SELECT a, a "
         "FROM @v; ROLLBACK; SELECT a FROM @v",
         "SELECT count(*) FROM t",
         {"0"}},
        {"trigger",
         "DELETE u",
         "INSERT u VALUES (1), (2); UPDATE u SET a = a + 10; DELETE u WHERE a = 11",
         "SELECT (SELECT sum(a) FROM u) - (SELECT sum(a) FROM log1)",
         {"Null", "0"}},
        {"output",
         "DELETE t; DELETE kept",
         "INSERT t OUTPUT inserted.a INTO kept VALUES (1, 1), (2, 2)",
         "SELECT (SELECT count(*) FROM t) * 10 + (SELECT count(*) FROM kept)",
         {"0", "22"}},
        {"merge",
         "DELETE u; INSERT u VALUES (1)",
         "MERGE u USING (SELECT 1 AS a UNION SELECT 2) AS s ON u.a = s.a WHEN MATCHED THEN UPDATE "
         "SET a = 5 WHEN NOT MATCHED THEN INSERT VALUES (s.a);",
         "SELECT (SELECT sum(a) FROM u) * 100 + (SELECT sum(a) FROM log1)",
         {"101", "707"}},
        {"shifted keys",
         "DELETE child; DELETE t; INSERT t VALUES (1, 1), (2, 2), (3, 3); INSERT child (a) VALUES "
         "(1)",
         "UPDATE t SET a = a + 1",
         "SELECT sum(t.a) * 10 + max(child.a) FROM t, child",
         {"61", "92"}},
        {"broken reference",
         "DELETE child; DELETE t",
         "BEGIN TRAN; INSERT t VALUES (7, 7); INSERT child (a) VALUES (99); COMMIT",
         "SELECT (SELECT count(*) FROM t) + 10 * (SELECT count(*) FROM child)",
         {"0", "1"}},
        {"caught",
         "DELETE t",
         "BEGIN TRY; BEGIN TRAN; INSERT t VALUES (1, 1); INSERT t VALUES (1, 1); COMMIT; END TRY "
         "BEGIN CATCH; WHILE @@TRANCOUNT > 0 ROLLBACK; END CATCH",
         "SELECT count(*) FROM t",
         {"0"}},
        {"function",
         "DELETE t",
         "INSERT t SELECT dbo.f(1), dbo.f(2); SELECT dbo.f(a) FROM t",
         "SELECT sum(a) + sum(b) FROM t",
         {"Null", "6"}},
        {"procedure",
         "DELETE t",
         "EXEC p; EXEC ('DELETE t')",
         "SELECT count(*) FROM t",
         {"0", "2"}},
        {"cursor",
         "DELETE t; INSERT t VALUES (1, 1), (2, 2)",
         "DECLARE c CURSOR LOCAL FOR SELECT a FROM t; OPEN c; FETCH NEXT FROM c; WHILE "
         "@@FETCH_STATUS = 0 BEGIN UPDATE t SET b = 0 WHERE CURRENT OF c; FETCH NEXT FROM c END",
         "SELECT sum(b) FROM t",
         {"3", "2", "0"}},
        {"definition",
         "IF object_id('x') IS NOT NULL DROP TABLE x",
         "CREATE TABLE x (a int, c int CHECK (c > 0)); ALTER TABLE x ADD b int NOT NULL DEFAULT 1; "
         "INSERT x (a) VALUES (1); ALTER TABLE x DROP COLUMN a",
         "SELECT count(*) FROM t",
         {"0", "2"}},
    };
    return kScripts;
}

class LimitedSession {
public:
    explicit LimitedSession(const std::string& source)
        : session_(openSession(source)), other_(openSession(source, "Lock Timeout=0")) {
        for (const char* sql : {kTables, kTrigger, kFunction, kProcedure}) {
            (void)session_->execute(sql);
        }
    }

    void prepare(const LimitedScript& script) { (void)session_->execute(script.before); }

    // Runs it until the limit passes at that look; what it has failed with.
    std::optional<ServerMessage> run(const LimitedScript& script, int steps, std::int64_t looks,
                                     bool& passed) {
        const engine::TimeLimit::Fuse fuse(steps, looks);
        Request request;
        request.text = script.script;
        request.timeout = std::chrono::hours(1);
        Reply reply;
        std::optional<ServerMessage> failure;
        try {
            session_->execute(request, reply);
        } catch (const DriverError& error) {
            failure = error.messages().back();
        }
        passed = fuse.blown();
        return failure;
    }

    // Work goes on, on both connections, and each sees the other's.
    void expectSound(const LimitedScript& script) {
        EXPECT_EQ(std::to_string(session_->transactionDepth()),
                  rowsOf(*session_, "SELECT @@TRANCOUNT"));
        if (session_->transactionDepth() > 0) session_->rollback();
        const std::string found = rowsOf(*other_, script.query);
        EXPECT_NE(std::ranges::find(script.allowed, found), script.allowed.end()) << found;
        for (Session* writer : {session_.get(), other_.get()}) {
            const std::string number = std::to_string(++marker_);
            (void)writer->apply({insertion_, {std::int64_t{marker_}}});
            Session& reader = writer == other_.get() ? *session_ : *other_;
            EXPECT_EQ(rowsOf(reader, "SELECT max(n) FROM marker"), number);
        }
        EXPECT_EQ(errorOf(*session_, "INSERT t VALUES (1000, -1)").nativeNumber, 547);
        EXPECT_EQ(errorOf(*session_, "INSERT child (a) VALUES (1000)").nativeNumber, 547);
    }

private:
    std::unique_ptr<Session> session_;
    std::unique_ptr<Session> other_;
    std::shared_ptr<const RowPlan> insertion_ = std::make_shared<const RowPlan>(
        RowPlan::Kind::Insert, "marker",
        RowPlan::Columns{.values = {{"n", DataTypeEnum::adInteger}}});
    int marker_ = 0;
};

// Lets the limit pass at each place of a script, or at some of very many.
void interruptEverywhere(LimitedSession& session, const LimitedScript& script,
                         std::mt19937_64& random) {
    constexpr std::int64_t kAllOf = 250;
    constexpr std::int64_t kSteps = 1;
    std::int64_t stride = 1;
    bool passed = true;
    for (std::int64_t looks = 0; passed; ++looks) {
        if (looks > kAllOf) {
            stride += 1 + stride / 8;
            looks += static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(stride));
        }
        SCOPED_TRACE("interrupted at look " + std::to_string(looks));
        session.prepare(script);
        const auto failure = session.run(script, kSteps, looks, passed);
        ASSERT_LT(looks, 10'000'000);
        // One that passes at the last look is told to nobody: the work is done.
        if (passed && failure) {
            EXPECT_EQ(failure->text, "Query timeout expired");
            EXPECT_EQ(failure->number, errors::kTimeout);
        }
        session.expectSound(script);
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(TimeLimits, LeaveEveryConnectionSoundWhereverTheyEndAScript) {
    std::mt19937_64 random(kap::test::randomSeed());
    LimitedSession session(":memory:interrupted");
    for (const LimitedScript& script : limitedScripts()) {
        SCOPED_TRACE(script.name);
        interruptEverywhere(session, script, random);
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(TimeLimits, LeaveAFileSoundWhereverTheyEndAScript) {
    std::mt19937_64 random(kap::test::randomSeed());
    const TemporaryFolder folder;
    LimitedSession session(folder.file("a.db"));
    for (const char* name : {"one row", "transaction", "trigger"}) {
        const auto script = std::ranges::find_if(limitedScripts(), [&](const LimitedScript& each) {
            return each.name == std::string(name);
        });
        SCOPED_TRACE(name);
        interruptEverywhere(session, *script, random);
        if (::testing::Test::HasFailure()) return;
    }
}

// The steps of a statement that is kept are counted on from run to run.
TEST(TimeLimits, LoseNothingOfWhatIsWrittenAfterThem) {
    std::mt19937_64 random(kap::test::randomSeed());
    const auto session = openSession(":memory:plain");
    const auto other = openSession(":memory:plain", "Lock Timeout=0");
    (void)session->execute("CREATE TABLE t (a int)");
    std::string script;
    for (int i = 0; i < 200; ++i) {
        script += "INSERT t VALUES (" + std::to_string(i) + ")\n";
    }
    for (int round = 0; round < 60; ++round) {
        {
            const engine::TimeLimit::Fuse fuse(1 + static_cast<int>(random() % 40),
                                               static_cast<std::int64_t>(random() % 400));
            Request request;
            request.text = script;
            request.timeout = std::chrono::hours(1);
            Reply reply;
            try {
                session->execute(request, reply);
            } catch (const DriverError& error) {
                EXPECT_EQ(error.messages().back().text, "Query timeout expired");
            }
        }
        EXPECT_EQ(session->transactionDepth(), 0);
        const std::string own = rowsOf(*session, "SELECT count(*) FROM t");
        ASSERT_EQ(rowsOf(*other, "SELECT count(*) FROM t"), own) << "round " << round;
        (void)other->execute("DELETE t");
    }
}

TEST(TimeLimits, EndAScriptBetweenItsStatements) {
    const auto session = openSession(":memory:between");
    (void)session->execute("CREATE TABLE t (a int)");
    const engine::TimeLimit::Fuse fuse(1'000'000, 2);
    Request request;
    request.text = "INSERT t VALUES (1)\nINSERT t VALUES (2)\nINSERT t VALUES (3)";
    request.timeout = std::chrono::hours(1);
    Reply reply;
    EXPECT_THROW(session->execute(request, reply), DriverError);
    EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), "2");
}

TEST(TimeLimits, EndTheWaitForALockedFile) {
    const TemporaryFolder folder;
    const auto holder = openSession(folder.file("a.db"));
    (void)holder->execute("CREATE TABLE t (a int); BEGIN TRAN; INSERT t VALUES (1)");
    const auto waiter = openSession(folder.file("a.db"), "Lock Timeout=600");
    Request request;
    request.text = "INSERT t VALUES (2)";
    request.timeout = std::chrono::seconds(1);
    Reply reply;
    const auto error = test::errorOf([&] { waiter->execute(request, reply); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->text, "Query timeout expired");
    holder->commit();
    (void)waiter->execute("INSERT t VALUES (3)");
    EXPECT_EQ(rowsOf(*waiter, "SELECT a FROM t ORDER BY a"), "1; 3");
}

// The server leaves the transaction to its client, who may have set otherwise.
TEST(TimeLimits, UndoAnOpenTransactionWhenErrorsDo) {
    for (const bool abort : {false, true}) {
        const auto session = openSession(":memory:abort");
        (void)session->execute("IF object_id('t') IS NULL CREATE TABLE t (a int)");
        (void)session->execute(abort ? "SET XACT_ABORT ON" : "SET XACT_ABORT OFF");
        {
            const engine::TimeLimit::Fuse fuse(1'000'000, 50);
            Request request;
            request.text = "BEGIN TRAN INSERT t VALUES (1) WHILE 1 = 1 PRINT 'x'";
            request.timeout = std::chrono::hours(1);
            Reply reply;
            EXPECT_THROW(session->execute(request, reply), DriverError);
        }
        EXPECT_EQ(session->transactionDepth(), abort ? 0 : 1);
        EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), abort ? "0" : "1");
    }
}

TEST(TimeLimits, InAFunctionEndTheStatementThatCallsItAndAllBehindIt) {
    const auto session = openSession(":memory:function");
    (void)session->execute("CREATE TABLE t (a int)");
    (void)session->execute(
        "CREATE FUNCTION slow (@n int) RETURNS int AS BEGIN DECLARE @i int = 0 WHILE @i < @n SET "
        "@i = @i + 1 RETURN @i END");
    const engine::TimeLimit::Fuse fuse(1'000'000, 20);
    Request request;
    request.text =
        "BEGIN TRY SELECT dbo.slow(1000) END TRY BEGIN CATCH INSERT t VALUES (1) END CATCH INSERT "
        "t VALUES (2)";
    request.timeout = std::chrono::hours(1);
    Reply reply;
    const auto error = test::errorOf([&] { session->execute(request, reply); });
    EXPECT_EQ(error.value_or(ServerMessage{}).text, "Query timeout expired");
    EXPECT_EQ(rowsOf(*session, "SELECT count(*) FROM t"), "0");
}

}  // namespace
}  // namespace kap::ado::embedded
