// What members say when the connection to a database server ends: the same, whichever meets it.
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/config/direct_lookup.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/host/text_export.hpp>
#include <kaputil/numbering/document_numbers.hpp>
#include <kaputil/numbering/used_numbers.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "replay.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap {
namespace {

using test::shown;

const std::string kLost =
    "error 08S01 20004 [FreeTDS][SQL Server]Read from the server failed\nlost\n";
const std::string kBreaks = "breaks 08S01 20004 [FreeTDS][SQL Server]Read from the server failed\n";
const std::string kTable = "facts t\nfact id int key 1\nfact nome nvarchar(20)\n";
const std::string kQuery = "> SELECT * FROM t\n";
const std::string kColumns = "columns id int, nome nvarchar(20)\n";
const std::string kRow = "row 1 | Rossi\n";
const char16_t* const kText = u"SELECT * FROM t";

const char* const kSentence =
    "The connection to the database server has been lost (Read from the server failed). Close it "
    "and open it again.";
const char* const kSentenceLater =
    "The connection to the database server has been lost. Close it and open it again.";

using Work = std::function<void(Variant&)>;

// The connection says the loss in one way, and the caller is told it in the same.
void expectLoss(const Work& work, Variant& connection, const char* sentence, const char* where) {
    try {
        work(connection);
        ADD_FAILURE() << where << ": nothing was raised";
        return;
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), ado::errors::kUnspecified) << where;
        EXPECT_EQ(error.description().utf8(), sentence) << where;
    }
    const auto errors = ado::connectionOf(connection)->Errors();
    ASSERT_EQ(errors->Count(), 1) << where;
    EXPECT_EQ(errors->Item(0)->SQLState().utf8(), "08S01") << where;
    EXPECT_EQ(errors->Item(0)->Number(), ado::errors::kUnspecified) << where;
}

// Meets the loss in what has still to be sent, and then each time again without asking anybody.
void meetsLoss(const std::string& traffic, const Work& work, const char* where) {
    for (const bool within : {false, true}) {
        test::Replay replay((within ? "> !autocommit off\n" : "") + traffic);
        Variant connection(replay.open());
        if (within) {
            ado::connectionOf(connection)->BeginTrans();
        }
        expectLoss(work, connection, kSentence, where);
        expectLoss(work, connection, kSentenceLater, where);
        if (within) {
            ado::connectionOf(connection)->RollbackTrans();
        }
    }
}

// What reads rows of the table `t`, whichever way.
const std::vector<std::pair<const char*, Work>>& readers() {
    using Open = std::function<Ref<ado::Recordset>(Variant&)>;
    const auto opens = [](const Open& open) {
        return [open](Variant& connection) { static_cast<void>(open(connection)); };
    };
    static const std::vector<std::pair<const char*, Work>> all = {
        {"OpenRecordset", opens([](Variant& on) { return db::OpenRecordset(kText, on); })},
        {"a recordset that keeps its Nulls", opens([](Variant& on) {
             return db::OpenRecordset(kText, on, -1, -1, -1, /*deleteNull=*/false);
         })},
        {"one that stays connected", opens([](Variant& on) {
             return db::OpenRecordset(kText, on, -1, -1, -1, false, /*closeConnection=*/false);
         })},
        {"a keyset on the server", opens([](Variant& on) {
             return db::OpenRecordset(kText, on, std::int16_t{1}, std::int16_t{3}, -1, false, false,
                                      std::int16_t{2});
         })},
        {"a forward-only one on the server", opens([](Variant& on) {
             return db::OpenRecordset(kText, on, std::int16_t{0}, std::int16_t{1}, -1, false, false,
                                      std::int16_t{2});
         })},
        {"DB_Read",
         [](Variant& on) {
             Variant text;
             db::DB_Read(on, kText, text);
         }},
        {"DB_Update",
         [](Variant& on) {
             const auto error = make<CErrore>();
             db::DB_Update(on, kText, u"", *error);
         }},
        {"kapLeggiRecord", [](Variant& on) { static_cast<void>(db::kapLeggiRecord(on, kText)); }},
        {"Riga_Prog", [](Variant& on) { static_cast<void>(db::Riga_Prog(on, String(kText))); }},
        {"EsportaTXT",
         [](Variant& on) {
             const test::TemporaryFolder folder;
             host::EsportaTXT(String(kText), on, u"EXPORT.TXT", String(folder.file("")), true);
         }},
    };
    return all;
}

TEST(LostConnections, AreToldAlikeByEveryMemberThatReads) {
    for (const auto& [name, work] : readers()) {
        meetsLoss(kTable + kQuery + kLost, work, name);
    }
}

TEST(LostConnections, AreToldWhereTheTableIsAskedFor) {
    for (const auto& [name, work] : readers()) {
        meetsLoss("facts t\n" + kBreaks, work, name);
    }
}

// Waits for about two seconds each, as behind any movement that fails.
TEST(LostConnections, AreToldWhereRowsAreFetched) {
    for (const auto& [name, work] : readers()) {
        meetsLoss(kTable + kQuery + kColumns + kRow + kBreaks, work, name);
    }
}

TEST(LostConnections, AreToldByTheOtherMembersThatRead) {
    meetsLoss(
        "facts P_KAP_CFG\nfact Procedura varchar(5) key 1\n> SELECT TOP 1 * FROM P_KAP_CFG "
        "WHERE Procedura ='X' ORDER BY Applicazione, Procedura, Campo\n" +
            kLost,
        [](Variant& on) { static_cast<void>(config::KapCFG(on, u"P", u"X", u"°°°", u"°°°")); },
        "KapCFG");
    const std::string counter = "facts vtx_TabPro\nfact Codice varchar(5) key 1\n";
    const auto progressivi = [](const char16_t* type, const char16_t* code) {
        return [type, code](Variant& on) {
            Ref<CErrore> error;
            static_cast<void>(numbering::Progressivi(type, u"D", u"S", 2025, 0, on, code,
                                                     u"vtx_TabDoc", 0, error));
        };
    };
    meetsLoss(
        counter + "> SELECT TOP 1 * FROM vtx_TabPro WHERE Codice='FAT' AND Anno = 2025\n" + kLost,
        progressivi(u"", u"FAT"), "Progressivi by code");
    meetsLoss(
        "facts vtx_TabDoc\nfact Codice varchar(3) key 1\n> SELECT * FROM vtx_TabDoc WHERE "
        "CODICE ='FAI'\n" +
            kLost,
        progressivi(u"FAI", u"°°°"), "Progressivi by type");
}

// These tell failures of any kind by their error object, and raise none.
TEST(LostConnections, AreToldByTheErrorObjectsOfMembersThatRaiseNothing) {
    test::Replay replay(kTable + kQuery + kLost);
    Variant connection(replay.open());
    const auto error = make<CErrore>();
    Variant text;
    EXPECT_FALSE(db::DB_Delete(connection, kText, text, *error));
    EXPECT_EQ(shown(Variant(error->Numero())), "String 1");
    const auto script = make<CSQL>();
    script->setActiveConnection(ado::connectionOf(connection));
    script->Command(u"UPDATE t SET a = 1");
    EXPECT_FALSE(script->Execute());
    EXPECT_NE(script->Errore()->MsgToString().as<String>().utf8().find(kSentenceLater),
              std::string::npos);
}

const std::string kUpdate = R"(
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
)";

TEST(LostConnections, AreToldByWhatWritesRows) {
    const std::string read = kTable + kQuery + kColumns + kRow;
    test::Replay replay(read + kUpdate + kLost);
    Variant connection(replay.open());
    const auto rows = test::openLive(ado::connectionOf(connection), kText);
    expectLoss([&](Variant&) { rows->Update(u"nome", u"Neri"); }, connection, kSentence, "Update");
    rows->CancelUpdate();
    const std::vector<std::pair<const char*, Work>> others = {
        {"Update", [&](Variant&) { rows->Update(u"nome", u"Neri"); }},
        {"Delete",
         [&](Variant&) {
             rows->CancelUpdate();
             rows->Delete();
         }},
        {"Resync", [&](Variant&) { rows->Resync(); }},
        {"Requery", [&](Variant&) { rows->Requery(); }},
        {"Execute", [&](Variant& on) { ado::connectionOf(on)->Execute(u"UPDATE t SET a = 1"); }},
        {"BeginTrans", [&](Variant& on) { ado::connectionOf(on)->BeginTrans(); }},
        {"OpenSchema",
         [&](Variant& on) {
             (void)ado::connectionOf(on)->OpenSchema(ado::SchemaEnum::adSchemaTables);
         }},
        {"a command with parameters", [&](Variant& on) {
             const auto command = make<ado::Command>();
             command->setActiveConnection(on);
             command->setCommandText(u"UPDATE t SET a = ?");
             command->Parameters()->Append(
                 command->CreateParameter(u"a", ado::DataTypeEnum::adInteger,
                                          ado::ParameterDirectionEnum::adParamInput, 4, 1));
             command->Execute();
         }}};
    for (const auto& [name, work] : others) {
        expectLoss(work, connection, kSentenceLater, name);
    }
}

// Of a table with triggers, and of a server of which nothing is known, several statements write.
TEST(LostConnections, AreToldByEachStatementOfAWriting) {
    const std::string begun = R"(
server Another Server
> !columns t
columns a varchar, b varchar, c varchar, d varchar, e int, f varchar, g int, h int, i int, j int, k int,
  l varchar, m varchar
row NULL | NULL | t | id | 4 | int | 10 | 4 | 0 | 10 | 0 | NULL | NULL
row NULL | NULL | t | nome | 12 | varchar | 20 | 20 | 0 | 10 | 1 | NULL | NULL
> !keys t
columns a varchar, b varchar, c varchar, d varchar
row NULL | NULL | t | id
> SELECT * FROM t
columns id int, nome varchar(20)
row 1 | Rossi
> !autocommit off
)";
    const std::string written =
        "> UPDATE \"t\" SET \"nome\" = ? WHERE \"id\" = ? AND \"nome\" = ?\n? nvarchar Neri\n? int "
        "1\n? nvarchar Rossi\n";
    const std::string readBack = "> SELECT \"nome\" FROM \"t\" WHERE \"id\" = ?\n? int 1\n";
    const std::string answered = "columns nome varchar(20)\nrow NERI\n";
    for (const std::string& traffic :
         {written, written + "count 1\n" + readBack,
          written + "count 1\n" + readBack + answered + "> !commit\n"}) {
        test::Replay replay(begun + traffic + kLost);
        Variant connection(replay.open());
        const auto rows = test::openLive(ado::connectionOf(connection), kText);
        const std::string sentence =
            std::string(kSentence) +
            (traffic.ends_with("!commit\n")
                 ? " Whether the transaction has been committed is not known."
                 : "");
        expectLoss([&](Variant&) { rows->Update(u"nome", u"Neri"); }, connection, sentence.c_str(),
                   traffic.c_str());
    }
}

std::string manyRows(int count) {
    std::string rows;
    for (int i = 1; i <= count; ++i) {
        rows += "row " + std::to_string(i) + " | Rossi\n";
    }
    return rows;
}

constexpr int kManyRows = 6000;
const std::string kBreaking = kTable + kQuery + kColumns + manyRows(kManyRows) + kBreaks;

// The first block is there: whoever goes beyond it is told.
TEST(LostConnections, AreToldByTheMovementThatNeedsTheNextRows) {
    for (const auto location :
         {ado::CursorLocationEnum::adUseClient, ado::CursorLocationEnum::adUseServer}) {
        test::Replay replay(kBreaking);
        Variant connection(replay.open());
        const auto rows = make<ado::Recordset>();
        rows->setCursorLocation(location);
        rows->Open(kText, connection, ado::CursorTypeEnum::adOpenForwardOnly,
                   ado::LockTypeEnum::adLockReadOnly);
        int passed = 0;
        expectLoss(
            [&](Variant&) {
                for (; !rows->Eof(); rows->MoveNext()) {
                    ++passed;
                }
            },
            connection, kSentence, "MoveNext");
        EXPECT_GT(passed, 0);
        EXPECT_LT(passed, kManyRows);
    }
}

// Whoever has looked meanwhile whether the rows are there must not take them for all.
TEST(LostConnections, AreToldBehindTheRowsThatCameInTheBackground) {
    constexpr std::int32_t kFetchInBackground = 32;
    constexpr std::int32_t kFetchWithoutWaiting = 64;
    for (const std::int32_t options : {kFetchInBackground, kFetchWithoutWaiting}) {
        test::Replay replay(kBreaking);
        Variant connection(replay.open());
        const auto rows = make<ado::Recordset>();
        rows->setCursorLocation(ado::CursorLocationEnum::adUseClient);
        rows->Open(kText, connection, ado::CursorTypeEnum::adOpenStatic,
                   ado::LockTypeEnum::adLockReadOnly, options);
        while (rows->State() != ado::ObjectStateEnum::adStateOpen) {
            std::this_thread::yield();
        }
        expectLoss(
            [&](Variant&) {
                while (!rows->Eof()) {
                    rows->MoveNext();
                }
            },
            connection, kSentence, "MoveNext");
        expectLoss([&](Variant&) { rows->MoveLast(); }, connection, kSentence, "MoveLast");
    }
}

}  // namespace
}  // namespace kap
