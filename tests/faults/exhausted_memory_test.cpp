// Members of every class while memory ends: each call ends in an error or is done, and what it has
// worked on stays whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <new>
#include <random>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/numbering/document_numbers.hpp>
#include <kaputil/platform/message_box.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "ado/gradual_rows.hpp"
#include "automation/same_value.hpp"
#include "data/column_store.hpp"
#include "data/driver.hpp"
#include "faults/library/failing_memory.hpp"
#include "faults/random_runs.hpp"
#include "support/database.hpp"
#include "support/late_bound.hpp"
#include "support/scoped_variable.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

// Whether the work was done; nothing else than an error may come out of it.
template <class Work>
bool endsInDoneOrError(Work work, const faults::MemoryFault& fault, bool& failed) {
    faults::startMemory(fault);
    try {
        work();
        failed = faults::stopMemory().failed;
        return true;
    } catch (const AutomationError&) {
        failed = faults::stopMemory().failed;
    } catch (const std::bad_alloc&) {
        failed = faults::stopMemory().failed;
    }
    return false;
}

// Does the work with every request for memory failing in turn, once and for good. `work` gets
// everything anew; `check` is told whether it says that it is done.
template <class Prepare, class Work, class Check>
void withEveryRequestFailing(Prepare prepare, Work work, Check check) {
    std::int64_t nth = 1;
    bool failed = true;
    for (; failed && !testing::Test::HasFailure(); ++nth) {
        for (const bool forGood : {false, true}) {
            SCOPED_TRACE("request " + std::to_string(nth) + (forGood ? " and all after" : ""));
            auto on = prepare();
            const bool done = endsInDoneOrError([&] { work(on); }, {nth, forGood}, failed);
            check(on, done);
        }
    }
    EXPECT_GT(nth, 2);
}

class ExhaustedMemory : public testing::Test {
protected:
    ExhaustedMemory() { platform::setMessageLog(log_.file("messaggi.log")); }
    ~ExhaustedMemory() override { platform::setMessageLog(std::nullopt); }

    test::TemporaryFolder folder_;
    test::TemporaryFolder log_;
    test::ScopedVariable home_{"KAPUTIL_HOME", folder_.file("")};
    test::ScopedVariable path_{"PATH", "/nonexistent"};  // no program of the desktop is started
};

TEST_F(ExhaustedMemory, RemovesAFolderOrSaysThatItIsThere) {
    const std::string path = folder_.file("archivio");
    withEveryRequestFailing(
        [&] {
            std::filesystem::create_directories(path + "/un anno di cui si conserva tutto/gennaio");
            test::putFile(path + "/un anno di cui si conserva tutto/gennaio/1.txt", "uno");
            return createObject(u"Scripting.FileSystemObject");
        },
        [&](const Ref<Object>& files) {
            test::call(*files, u"DeleteFolder", {Variant(String(path))});
        },
        [&](const Ref<Object>& /*files*/, bool done) {
            EXPECT_TRUE(!done || !std::filesystem::exists(path));
        });
}

TEST_F(ExhaustedMemory, LeavesABagAsItWasOrWritten) {
    withEveryRequestFailing(
        [] {
            auto bag = make<CProprieta>();
            bag->Scrivi(u"Uno", u"1");
            bag->Scrivi(u"Due", u"il secondo valore, piu' lungo di una parola");
            return bag;
        },
        [](const Ref<CProprieta>& bag) { bag->Scrivi(u"Uno", u"un valore molto piu' lungo"); },
        [](const Ref<CProprieta>& bag, bool done) {
            EXPECT_TRUE(isSameValue(Variant(done ? u"un valore molto piu' lungo" : u"1"),
                                    bag->Leggi(u"Uno")));
            EXPECT_EQ(2, bag->Count());
            EXPECT_TRUE(isSameValue(Variant(u"il secondo valore, piu' lungo di una parola"),
                                    bag->Leggi(u"Due")));
        });
}

Ref<ado::Recordset> twoRecords() {
    auto records = make<ado::Recordset>();
    records->Fields()->Append(u"A", ado::DataTypeEnum::adVarWChar, 200);
    records->Fields()->Append(u"N", ado::DataTypeEnum::adInteger);
    records->Fields()->Append(u"B", ado::DataTypeEnum::adVarWChar, 200);
    records->Open();
    for (int i = 0; i < 2; ++i) {
        records->AddNew(Array::ofVariants({u"A", u"N", u"B"}),
                        Array::ofVariants({u"il testo di un campo", i, u"e quello di un altro"}));
        records->Update();
    }
    return records;
}

// The rows that can be read in every column.
int wholeRows(const Ref<ado::Recordset>& records) {
    int rows = 0;
    for (records->MoveFirst(); !records->Eof(); records->MoveNext(), ++rows) {
        EXPECT_TRUE(isSameValue(Variant(u"il testo di un campo"), test::fieldOf(records, u"A")));
        EXPECT_TRUE(isSameValue(Variant(rows), test::fieldOf(records, u"N")));
        EXPECT_TRUE(isSameValue(Variant(u"e quello di un altro"), test::fieldOf(records, u"B")));
    }
    EXPECT_EQ(rows, records->RecordCount());
    return rows;
}

TEST_F(ExhaustedMemory, LeavesRecordsWithoutTheNewOneOrWithAllOfIt) {
    withEveryRequestFailing(
        [] {
            auto records = twoRecords();
            records->AddNew();
            records->Fields()->Item(u"A")->setValue(u"il testo di un campo");
            records->Fields()->Item(u"N")->setValue(2);
            records->Fields()->Item(u"B")->setValue(u"e quello di un altro");
            return records;
        },
        [](const Ref<ado::Recordset>& records) { records->Update(); },
        [](const Ref<ado::Recordset>& records, bool done) {
            if (!done) {
                records->CancelUpdate();
            }
            EXPECT_EQ(done ? 3 : 2, wholeRows(records));
        });
}

// Three columns of texts, all at once.
class ThreeTexts : public ado::RowSource {
public:
    static constexpr std::size_t kRows = 400;
    void fetch(std::vector<ado::ColumnStore>& rows) override {
        for (ado::ColumnStore& column : rows) {
            for (std::size_t row = 0; row < kRows; ++row) {
                column.appendBytes("a text that needs some room");
            }
        }
    }
};

// What the client's and the fetching thread share is taken whole or not at all.
TEST_F(ExhaustedMemory, LeavesRowsThatCameInTheBackgroundWhole) {
    ado::ColumnInfo text;
    text.type = ado::DataTypeEnum::adVarChar;
    struct Taking {
        std::shared_ptr<ado::GradualRows> source;
        std::vector<ado::ColumnStore> rows;
    };
    withEveryRequestFailing(
        [&] {
            Taking taking{std::make_shared<ado::GradualRows>(std::make_shared<ThreeTexts>(),
                                                             std::vector<ado::ColumnInfo>(3, text)),
                          std::vector<ado::ColumnStore>(3)};
            taking.source->waitForAll();
            return taking;
        },
        [](Taking& taking) { taking.source->fetch(taking.rows); },
        [](Taking& taking, bool done) {
            if (!done) {
                for (const ado::ColumnStore& column : taking.rows) {
                    EXPECT_EQ(0U, column.size());
                }
                taking.source->fetch(taking.rows);
            }
            for (const ado::ColumnStore& column : taking.rows) {
                ASSERT_EQ(ThreeTexts::kRows, column.size());
                EXPECT_EQ("a text that needs some room", column.bytes(ThreeTexts::kRows - 1));
            }
        });
}

class ExhaustedMemoryWithAFile : public ExhaustedMemory {
protected:
    ExhaustedMemoryWithAFile()
        : string_(folder_.database() + ";Synchronous=Off;Lock Timeout=0"),
          connection_(test::open(string_)),
          other_(test::open(string_)) {
        connection_->Execute(
            u"CREATE TABLE T (a int PRIMARY KEY, b varchar(200), v timestamp)"
            u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
            u"GestProvv int, AggID timestamp, PRIMARY KEY (Codice, Anno))");
    }

    [[nodiscard]] int seenByOther(const char16_t* query) const {
        return test::valueOf(other_, query).as<std::int32_t>();
    }
    // Nothing is open, and both can write.
    void expectFree() const {
        EXPECT_EQ(0, test::valueOf(connection_, u"SELECT @@TRANCOUNT").as<std::int32_t>());
        EXPECT_NO_THROW(other_->Execute(u"DELETE FROM T WHERE a = -1"));
        EXPECT_NO_THROW(connection_->Execute(u"DELETE FROM T WHERE a = -1"));
    }

    std::string string_;
    Ref<ado::Connection> connection_;
    Ref<ado::Connection> other_;
};

TEST_F(ExhaustedMemoryWithAFile, LeavesNoTransactionOfAScriptOpen) {
    withEveryRequestFailing(
        [&] {
            other_->Execute(u"DELETE FROM T");
            auto script = make<CSQL>();
            script->setActiveConnection(connection_);
            script->Command(u"INSERT INTO T (a, b) VALUES (1, 'primo')", u"il primo");
            script->Command(u"INSERT INTO T (a, b) VALUES (2, 'secondo')", u"il secondo");
            return script;
        },
        [](const Ref<CSQL>& script) {
            if (!script->Execute()) {
                throw AutomationError(1);
            }
        },
        [&](const Ref<CSQL>& /*script*/, bool done) {
            const int rows = seenByOther(u"SELECT COUNT(*) FROM T");
            EXPECT_TRUE(rows == 2 || (rows == 0 && !done)) << rows;
            expectFree();
        });
}

TEST_F(ExhaustedMemoryWithAFile, GivesANumberOrNone) {
    const auto progressivo = [&](Variant& on) {
        Ref<CErrore> error;
        const Variant number = numbering::Progressivi(u"FAI", u"D", u"S", 2025, 0, on, u"FAT",
                                                      u"vtx_TabDoc", 0, error);
        if (convert::toLong(error->Numero()) != 0 || convert::toLong(number) != 8) {
            throw AutomationError(1);
        }
    };
    withEveryRequestFailing(
        [&] {
            other_->Execute(
                u"DELETE FROM vtx_TabPro INSERT INTO vtx_TabPro (Codice, Anno, n_Def, n_Prov, "
                u"GestProvv) VALUES ('FAT', 2025, 7, 0, 0)");
            return Variant(connection_);
        },
        progressivo,
        [&](const Variant& /*on*/, bool done) {
            const int last = seenByOther(u"SELECT n_Def FROM vtx_TabPro");
            EXPECT_TRUE(last == 8 || (last == 7 && !done)) << last;
            expectFree();
        });
}

// Making SQL functions known to SQLite takes most of it, so not every request has its turn.
TEST_F(ExhaustedMemoryWithAFile, IsToldWhenADatabaseIsOpened) {
    bool failed = true;
    for (std::int64_t nth = 1; failed; nth += 1 + nth / 16) {
        for (const bool forGood : {false, true}) {
            SCOPED_TRACE("request " + std::to_string(nth) + (forGood ? " and all after" : ""));
            const auto opened = make<ado::Connection>();
            const bool done =
                endsInDoneOrError([&] { opened->Open(String(string_)); }, {nth, forGood}, failed);
            EXPECT_EQ(done, opened->State() == ado::ObjectStateEnum::adStateOpen);
        }
    }
    expectFree();
}

// Everything that can be made, its members, and what they give.
class RandomCalls {
public:
    RandomCalls(std::uint32_t seed, const std::string& connectionString)
        : random_(seed), connection_(test::open(connectionString)) {
        for (const PublishedClass& one : publishedClasses()) {
            if (one.description->create != nullptr) {
                objects_.push_back(one.description->create());
            }
        }
        for (const char16_t* name : {u"ADODB.Command", u"ADODB.Connection", u"ADODB.Parameter",
                                     u"ADODB.Recordset", u"Scripting.FileSystemObject"}) {
            objects_.push_back(createObject(name));
        }
        objects_.push_back(connection_);
        objects_.push_back(twoRecords());
        objects_.push_back(test::openLive(connection_, u"SELECT * FROM T"));
    }

    // Calls members, some of them without memory from some request on.
    void run(int calls) {
        for (int i = 0; i < calls; ++i) {
            const Ref<Object> object = objects_[below(objects_.size())];
            const ClassDescription& its = *descriptionOf(*object);
            if (its.members.empty()) {
                continue;
            }
            const MemberDescription& member = its.members[below(its.members.size())];
            if (isLeftOut(member)) {
                continue;
            }
            call(object, member);
        }
    }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    // What waits for somebody, or for another program, and what removes folders or leads out of
    // them.
    static bool isLeftOut(const MemberDescription& member) {
        constexpr std::array kLeftOut = {
            u"InviaEMail", u"Display",    u"Send",         u"kapMsgBox", u"ParentFolder",
            u"Delete",     u"DeleteFile", u"DeleteFolder", u"Move",      u"MoveFile"};
        return std::ranges::any_of(
            kLeftOut, [&](const char16_t* name) { return member.name == String(name); });
    }

    Variant anyValue() {
        switch (below(14)) {
            case 0:
                return Variant::missing();
            case 1:
                return Variant::null();
            case 2:
                return {};
            case 3:
                return Variant(static_cast<std::int16_t>(below(5)));
            case 4:
                return Variant(static_cast<std::int32_t>(below(100000)) - 1);
            case 5:
                return Variant(1.5);
            case 6:
                return Variant(Date{37980.25});
            case 7:
                return Variant(below(2) == 0);
            case 8:
                return Variant(objects_[below(objects_.size())]);
            case 9:
                return Array::ofVariants({Variant(u"A"), Variant(2), Variant::null()});
            case 10:
                return Variant(Ref<Object>(connection_));
            default: {
                static constexpr std::array kTexts = {u"",
                                                      u"a",
                                                      u"SELECT * FROM T",
                                                      u"INSERT INTO T (a) VALUES (1)",
                                                      u"b",
                                                      u"file.ini",
                                                      u"<A>1</A><B>due</B>",
                                                      u"12/03/2004",
                                                      u"BEGIN TRAN",
                                                      u"COMMIT",
                                                      u"ROLLBACK",
                                                      u"un testo piu' lungo di una parola"};
                return Variant(kTexts[below(kTexts.size())]);
            }
        }
    }

    void call(const Ref<Object>& object, const MemberDescription& member) {
        constexpr std::array kKinds = {InvokeKind::MethodOrGet, InvokeKind::MethodOrGet,
                                       InvokeKind::LetOrSet};
        const InvokeKind kind = kKinds[below(kKinds.size())];
        std::vector<Variant> given;
        const std::size_t count = member.parameters.size() + (kind == InvokeKind::LetOrSet ? 1 : 0);
        for (std::size_t i = 0; i < count; ++i) {
            given.push_back(anyValue());
        }
        SCOPED_TRACE(object->className().utf8() + "." + member.name.utf8());
        const faults::MemoryFault fault{
            below(3) == 0 ? 0 : 1 + static_cast<int>(below(1U << below(9))), below(2) == 0};
        Variant result;
        bool failed = false;
        static_cast<void>(endsInDoneOrError(
            [&] {
                result = object->invoke(member.dispatchId, kind, Arguments{given, {}});
            },
            fault, failed));
        ended_ += failed ? 1 : 0;
        if (result.isObject() && result.as<Ref<Object>>() &&
            descriptionOf(*result.as<Ref<Object>>()) != nullptr && objects_.size() < 60) {
            objects_.push_back(result.as<Ref<Object>>());
        }
    }

    std::mt19937 random_;
    Ref<ado::Connection> connection_;
    std::vector<Ref<Object>> objects_;
    int ended_ = 0;
};

TEST_F(ExhaustedMemoryWithAFile, EndsMembersOfEveryClassInAnError) {
    const auto before = std::filesystem::current_path();
    const test::TemporaryFolder work;  // not the database's: they may write over every file in it
    std::filesystem::current_path(work.file(""));
    test::withRandomSeeds([&](std::uint32_t seed) {
        RandomCalls(seed, string_).run(400);
        expectFree();
    });
    std::filesystem::current_path(before);
}

}  // namespace
}  // namespace kap
