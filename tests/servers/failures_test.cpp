// What goes wrong on a database server, and what clients are told.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <random>
#include <thread>

#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/numbering/document_numbers.hpp>

#include "relay.hpp"
#include "server.hpp"
#include "support/seed.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::shown;

template <class Work>
AutomationError errorOf(Work work) {
    try {
        work();
    } catch (const AutomationError& error) {
        return error;
    }
    return AutomationError(0);
}

class ServerFailures : public test::ServerTest {
protected:
    // The data-access code, the SQLSTATE and how many errors there are.
    [[nodiscard]] std::string refusalOf(const std::string& script) const {
        const std::int32_t number = errorOf([&] { run(script); }).number();
        const auto errors = connection_->Errors();
        if (errors->Count() == 0 || errors->Item(0)->Number() != number) {
            return "not reported";
        }
        return std::to_string(number) + " " + errors->Item(0)->SQLState().utf8() + " " +
               std::to_string(errors->Count());
    }
    static AutomationError openError(const std::string& connection) {
        return errorOf([&] { test::open(connection); });
    }
};

TEST_F(ServerFailures, EachKindHasItsNumber) {
    run("CREATE TABLE t (a int PRIMARY KEY, b varchar(3) NOT NULL, c int REFERENCES t)");
    EXPECT_EQ(refusalOf("SELECT * FROM nix"), "-2147217865 42P01 1");
    EXPECT_EQ(refusalOf("SELECT nix FROM t"), "-2147217900 42703 1");
    EXPECT_EQ(refusalOf("SELEC 1"), "-2147217900 42601 1");
    EXPECT_EQ(refusalOf("INSERT INTO t VALUES (1, NULL, NULL)"), "-2147217873 23502 1");
    run("INSERT INTO t VALUES (1, 'x', NULL)");
    EXPECT_EQ(refusalOf("INSERT INTO t VALUES (1, 'y', NULL)"), "-2147217873 23505 1");
    EXPECT_EQ(refusalOf("INSERT INTO t VALUES (2, 'y', 9)"), "-2147217873 23503 1");
    EXPECT_EQ(refusalOf("INSERT INTO t VALUES (2, 'toolong', NULL)"), "-2147217833 22001 1");
    EXPECT_EQ(refusalOf("SELECT 'x'::int"), "-2147217913 22P02 1");
    EXPECT_EQ(refusalOf("SELECT 99999999999::int"), "-2147217833 22003 1");
    EXPECT_EQ(refusalOf("SELECT 1/0"), "-2147217900 22012 1");
}

TEST_F(ServerFailures, AFailureLeavesTheConnectionUsable) {
    EXPECT_NE(errorOf([&] { run("SELECT * FROM nix"); }).number(), 0);
    EXPECT_EQ(value("SELECT 1"), "Long 1");
    connection_->BeginTrans();
    run("CREATE TABLE t (a int)");
    EXPECT_NE(errorOf([&] { run("SELECT 1/0"); }).number(), 0);
    run("INSERT INTO t VALUES (1)");
    connection_->CommitTrans();
    EXPECT_EQ(value("SELECT a FROM t"), "Long 1");
}

TEST_F(ServerFailures, AWrongPasswordIsRefusedAndNeverShown) {
    std::string text = database_->connection();
    const std::string password = "PWD=\"geheim;{x}\"";
    text.replace(text.find(password), password.size(), "PWD=falsches-wort");
    const AutomationError error = openError(text);
    EXPECT_EQ(error.number(), errors::kLogin);
    EXPECT_NE(error.description().utf8().find("kap"), std::string::npos);
    EXPECT_EQ(error.description().utf8().find("falsches-wort"), std::string::npos);
}

TEST_F(ServerFailures, AnUnknownHostOrDatabaseIsToldAtOnce) {
    EXPECT_EQ(openError("Driver={PostgreSQL Unicode};Server=gibts.invalid;UID=x;PWD=y").number(),
              errors::kLogin);
    EXPECT_EQ(openError(server_->connection("gibtsnicht")).number(), errors::kLogin);
    EXPECT_EQ(openError("DSN=GibtsNicht").number(), errors::kLogin);
    EXPECT_EQ(openError("Driver={Gibts nicht};Server=x").number(), errors::kLogin);
}

TEST_F(ServerFailures, AServerThatNeverAnswersIsGivenUpInTime) {
    const test::Relay silent(0);
    const auto begun = std::chrono::steady_clock::now();
    const AutomationError error =
        openError(server_->connection("postgres", silent.port()) + ";Connect Timeout=2");
    EXPECT_TRUE(error.number() == errors::kLogin || error.number() == errors::kTimeout)
        << error.number();
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
}

TEST_F(ServerFailures, ATransactServerThatNeverAnswersIsGivenUpInTime) {
    const test::Relay silent(0);
    const auto begun = std::chrono::steady_clock::now();
    const AutomationError error =
        openError("Provider=SQLOLEDB;Data Source=127.0.0.1," + std::to_string(silent.port()) +
                  ";Initial Catalog=x;User ID=sa;Password=p;Connect Timeout=2");
    EXPECT_TRUE(error.number() == errors::kLogin || error.number() == errors::kTimeout)
        << error.number();
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
}

TEST_F(ServerFailures, ACommandThatTakesTooLongIsStopped) {
    connection_->setCommandTimeout(1);
    EXPECT_EQ(errorOf([&] { run("SELECT pg_sleep(30)"); }).number(), errors::kTimeout);
    EXPECT_EQ(value("SELECT 1"), "Long 1");
    connection_->setCommandTimeout(0);
    EXPECT_EQ(value("SELECT 2 FROM pg_sleep(1.2)"), "Long 2");
}

TEST_F(ServerFailures, ALostConnectionIsToldAtOnceAndEachTime) {
    test::Relay relay(server_->port());
    const auto connection = test::open(server_->connection(database_->name(), relay.port()));
    connection->BeginTrans();
    relay.cut();
    EXPECT_EQ(errorOf([&] { connection->Execute(u"SELECT pg_sleep(0.1)"); }).number(),
              errors::kUnspecified);
    const AutomationError again = errorOf([&] { connection->Execute(u"SELECT 1"); });
    EXPECT_EQ(again.number(), errors::kUnspecified);
    EXPECT_EQ(again.description(),
              String(u"The connection to the database server has been lost. Close it and open it "
                     u"again."));
    connection->RollbackTrans();
    connection->Close();
    connection->Open();
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT 1")), "Long 1");
}

TEST_F(ServerFailures, AServerRestartedInMidFetchFailsTheMovement) {
    const auto server = test::Server::own();
    const auto connection =
        test::open(server->connection("postgres") + ";UseDeclareFetch=1;Fetch=100");
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT generate_series(1, 100000) AS a, repeat('x', 200) AS b",
               Variant(connection));
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    server->restart();
    EXPECT_EQ(errorOf([&] { rows->MoveLast(); }).number(), errors::kUnspecified);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    rows->Close();
    connection->Close();
    connection->Open();
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT 5")), "Long 5");
}

// Whatever meets the end of a connection says it in the same way.
class ServerLosses : public test::ServerTest {
protected:
    using Work = std::function<void(Variant&)>;

    void SetUp() override {
        ServerTest::SetUp();
        if (!IsSkipped()) {
            run(test::kRowVersions);
            run("CREATE TABLE t (id int PRIMARY KEY, nome varchar(20), aggid rowversion);"
                "INSERT INTO t VALUES (1, 'Rossi', '\\x0000000000000001')");
        }
    }
    static std::string processOf(const Ref<Connection>& connection) {
        return shown(test::valueOf(connection, u"SELECT 'p' || pg_backend_pid()")).substr(8);
    }
    void end(const std::string& process) const {
        const std::string there = "FROM pg_stat_activity WHERE pid = " + process;
        (void)value("SELECT pg_terminate_backend(pid) " + there);
        while (value("SELECT 'x' || count(*) " + there) != "String x0") {
        }
    }
    static void expectLoss(const Work& work, Variant& connection, const std::string& where) {
        const AutomationError error = errorOf([&] { work(connection); });
        EXPECT_EQ(error.number(), errors::kUnspecified) << where;
        EXPECT_TRUE(error.description().utf8().starts_with(kSentence))
            << where << ": " << error.description().utf8();
        const auto reported = connectionOf(connection)->Errors();
        ASSERT_GT(reported->Count(), 0) << where;
        EXPECT_EQ(reported->Item(0)->SQLState().utf8(), "08S01") << where;
    }

    static constexpr const char* kSentence = "The connection to the database server has been lost";
    const std::vector<std::pair<const char*, Work>> members_ = {
        {"Execute", [](Variant& on) { connectionOf(on)->Execute(u"SELECT 1"); }},
        {"Execute that writes", [](Variant& on) { connectionOf(on)->Execute(u"DELETE FROM t"); }},
        {"OpenSchema",
         [](Variant& on) { (void)connectionOf(on)->OpenSchema(SchemaEnum::adSchemaTables); }},
        {"OpenRecordset", [](Variant& on) { (void)db::OpenRecordset(u"SELECT * FROM t", on); }},
        {"a recordset that keeps its Nulls",
         [](Variant& on) {
             (void)db::OpenRecordset(u"SELECT * FROM t", on, -1, -1, -1, /*deleteNull=*/false);
         }},
        {"a keyset on the server",
         [](Variant& on) {
             (void)db::OpenRecordset(u"SELECT * FROM t", on, std::int16_t{1}, std::int16_t{3}, -1,
                                     false, false, std::int16_t{2});
         }},
        {"DB_Read",
         [](Variant& on) {
             Variant text;
             (void)db::DB_Read(on, u"SELECT * FROM t", text);
         }},
        {"DB_Update",
         [](Variant& on) {
             const auto error = make<CErrore>();
             (void)db::DB_Update(on, u"SELECT * FROM t", u"", *error);
         }},
        {"kapLeggiRecord",
         [](Variant& on) { (void)db::kapLeggiRecord(on, u"SELECT * FROM t", u"nome"); }},
        {"Riga_Prog",
         [](Variant& on) { (void)db::Riga_Prog(on, String(u"SELECT max(id) FROM t")); }},
        {"Progressivi", [](Variant& on) {
             Ref<CErrore> error;
             (void)numbering::Progressivi(u"FAI", u"D", u"S", 2025, 0, on, u"°°°", u"t", 0, error);
         }}};
};

TEST_F(ServerLosses, AreToldAlikeByEveryMember) {
    for (const auto& [name, work] : members_) {
        for (const bool pooled : {false, true}) {
            for (const bool transaction : {false, true}) {
                Variant connection(database_->open(pooled ? ";Pooling=True" : ""));
                const auto opened = connectionOf(connection);
                const std::string process = processOf(opened);
                if (transaction) {
                    opened->BeginTrans();
                    opened->Execute(u"UPDATE t SET nome = 'x'");
                } else if (pooled) {
                    opened->Execute(u"SET work_mem = '1MB'");  // else there is nothing to lose
                }
                end(process);
                const std::string where = std::string(name) + (pooled ? ", pooled" : "") +
                                          (transaction ? ", in a transaction" : "");
                expectLoss(work, connection, where);
                expectLoss(work, connection, where + ", again");
            }
        }
    }
    EXPECT_EQ(value("SELECT nome FROM t"), "String Rossi");
}

TEST_F(ServerLosses, AreToldByWhatGoesOnWithRecordsThatAreOpen) {
    const std::vector<std::pair<const char*, std::function<void(Recordset&)>>> all = {
        {"Update", [](Recordset& rows) { rows.Update(u"nome", u"Neri"); }},
        {"Delete", [](Recordset& rows) { rows.Delete(); }},
        {"AddNew",
         [](Recordset& rows) {
             rows.AddNew();
             rows.Fields()->Item(u"id")->setValue(2);
             rows.Update();
         }},
        {"Requery", [](Recordset& rows) { rows.Requery(); }},
        {"Resync", [](Recordset& rows) { rows.Resync(); }}};
    for (const auto& member : all) {
        Variant connection(database_->open());
        const auto rows = test::openLive(connectionOf(connection), u"SELECT * FROM t");
        end(processOf(connectionOf(connection)));
        expectLoss([&](Variant&) { member.second(*rows); }, connection, member.first);
    }
}

// The driver asks for a hundred rows at a time: the end comes between two blocks.
TEST_F(ServerLosses, AreToldByTheMovementThatNeedsTheNextRows) {
    for (const auto location : {CursorLocationEnum::adUseClient, CursorLocationEnum::adUseServer}) {
        Variant connection(database_->open(";UseDeclareFetch=1;Fetch=100"));
        const std::string process = processOf(connectionOf(connection));
        const auto rows = make<Recordset>();
        rows->setCursorLocation(location);
        rows->Open(u"SELECT generate_series(1, 100000) AS a, repeat('x', 200) AS b", connection);
        end(process);
        expectLoss(
            [&](Variant&) {
                while (!rows->Eof()) {
                    rows->MoveNext();
                }
            },
            connection, "MoveNext");
    }
}

// At any moment, in the midst of whatever is running.
TEST_F(ServerLosses, AreToldAtAnyMoment) {
    std::mt19937 random(test::randomSeed());
    for (int round = 0; round < 40; ++round) {
        const auto& member = members_[3 + random() % (members_.size() - 4)];
        Variant connection(database_->open(random() % 2 == 0 ? "" : ";Pooling=True"));
        connectionOf(connection)->Execute(u"SET work_mem = '1MB'");
        const std::string process = processOf(connectionOf(connection));
        const auto pause = std::chrono::microseconds(random() % 20000);
        std::thread killer([&] {
            std::this_thread::sleep_for(pause);
            end(process);
        });
        expectLoss(
            [&](Variant& on) {
                for (;;) {
                    member.second(on);
                }
            },
            connection, member.first);
        killer.join();
    }
}

TEST_F(ServerFailures, RowsLeftBehindByAClosedConnectionAreToldAsLost) {
    const auto connection = database_->open();
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT generate_series(1, 100000) AS a", Variant(connection));
    connection->Close();
    EXPECT_EQ(errorOf([&] { rows->MoveLast(); }).number(), errors::kObjectClosed);
}

TEST_F(ServerFailures, ALockThatIsNotFreedEndsWithTheTimeout) {
    run("CREATE TABLE t (a int); INSERT INTO t VALUES (1)");
    const auto other = database_->open();
    other->BeginTrans();
    other->Execute(u"UPDATE t SET a = 2");
    connection_->setCommandTimeout(1);
    EXPECT_EQ(errorOf([&] { run("UPDATE t SET a = 3"); }).number(), errors::kTimeout);
    other->RollbackTrans();
    EXPECT_EQ(value("SELECT a FROM t"), "Long 1");
}

}  // namespace
}  // namespace kap::ado
