#include <functional>
#include <optional>
#include <span>

#include <kaputil/ado/command.hpp>

#include "ado/events_fixture.hpp"

namespace kap::ado::events_test {
namespace {

using test::fieldOf;

TEST_F(EventsTest, TellOfEveryMovementAndOfTheEnd) {
    const auto rows = watched();
    rows->MoveNext();
    EXPECT_EQ(told_.taken(), (Lines{"will move MoveNext", "moved MoveNext to 2"}));
    rows->MoveLast();
    rows->MovePrevious();
    rows->MoveFirst();
    rows->Move(2);
    EXPECT_EQ(told_.taken(),
              (Lines{"will move MoveLast", "moved MoveLast to 3", "will move MovePrevious",
                     "moved MovePrevious to 2", "will move MoveFirst", "moved MoveFirst to 1",
                     "will move Move", "moved Move to 3"}));
    rows->MoveNext();
    EXPECT_EQ(told_.taken(), (Lines{"will move MoveNext", "end", "moved MoveNext"}));
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), errors::kNoCurrentRecord);
    EXPECT_EQ(told_.taken(), (Lines{"will move MoveNext", "moved MoveNext failed -2146825267"}));
    rows->setFilter(u"Codice > 1");
    rows->setSort(u"Codice DESC");
    rows->setAbsolutePosition(2);
    rows->Find(u"Codice = 3", 0, SearchDirectionEnum::adSearchBackward);
    EXPECT_EQ(told_.taken(),
              (Lines{"will move Move", "moved Move to 1", "will move Move", "moved Move to 1",
                     "will move Move", "moved Move to 2", "will move Move", "moved Move to 1"}));
}

TEST_F(EventsTest, TellOfFieldsAndRecordsThatChange) {
    const auto rows = watched();
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(told_.taken(), (Lines{"will change FirstChange x1", "will assign 1 Nome",
                                    "assigned 1 Nome", "changed FirstChange x1"}));
    rows->Fields()->Item(u"Nome")->setValue(u"Bruni");
    EXPECT_EQ(told_.taken(), (Lines{"will assign 1 Nome", "assigned 1 Nome"}));
    rows->MoveNext();
    EXPECT_EQ(told_.taken(), (Lines{"will change Update x1", "changed Update x1",
                                    "will move MoveNext", "moved MoveNext to 2"}));
    rows->AddNew();
    rows->CancelUpdate();
    EXPECT_EQ(told_.taken(),
              (Lines{"will move Move", "will change AddNew x1", "changed AddNew x1",
                     "moved Move to 4", "will change UndoAddNew x1", "changed UndoAddNew x1"}));
    EXPECT_EQ(failureOf([&] { rows->Fields()->Item(u"Codice")->setValue(u"no number"); }),
              errors::kWrongValueType);
    EXPECT_EQ(told_.taken(), (Lines{"will change FirstChange x1", "will assign 1 Codice",
                                    "assigned 1 Codice failed -2146824867",
                                    "changed FirstChange x1 failed -2146824867"}));
    rows->Delete();
    EXPECT_EQ(told_.taken(), (Lines{"will change Delete x1", "changed Delete x1"}));
    rows->Update();
    EXPECT_EQ(told_.taken(), Lines{}) << "there was nothing to write";
}

TEST_F(EventsTest, TellOfOpeningAndClosing) {
    auto rows = make<Recordset>();
    rows->connect(make<RecordsetSink>(told_));
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT * FROM Clienti", Variant(connection_));
    EXPECT_EQ(told_.taken(), (Lines{"moved Requery to 1", "changed all Requery"}));
    rows->Requery();
    EXPECT_EQ(told_.taken(), (Lines{"will change all Requery", "will move Requery",
                                    "moved Requery to 1", "changed all Requery"}));
    rows->Resync();
    EXPECT_EQ(told_.taken(), (Lines{"will change all Resynch", "changed all Resynch"}));
    told_.answered = "will change all";
    told_.answer = EventStatusEnum::adStatusCancel;
    rows->Close();
    EXPECT_EQ(told_.taken(),
              (Lines{"will change all Close cannot be denied", "changed all Close"}));
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
}

TEST_F(EventsTest, TellOfBatchesHowManyRecordsTheyWrite) {
    auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT * FROM Clienti", Variant(connection_), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockBatchOptimistic);
    for (; !rows->Eof(); rows->MoveNext()) {
        rows->Update(u"Nome", u"Tutti");
    }
    rows->connect(make<RecordsetSink>(told_));
    rows->UpdateBatch();
    EXPECT_EQ(told_.taken(), (Lines{"will change Update x3", "changed Update x3"}));
    rows->CancelBatch();
    EXPECT_EQ(told_.taken(), (Lines{"will change UndoUpdate x0", "changed UndoUpdate x0"}));
}

TEST_F(EventsTest, CancelWhatASinkDoesNotAllow) {
    const auto rows = watched();
    told_.answer = EventStatusEnum::adStatusCancel;
    told_.answered = "will move";
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), errors::kCancelled);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    EXPECT_EQ(told_.taken(),
              (Lines{"will move MoveNext", "moved MoveNext to 1 failed -2147217842"}));
    told_.answered = "will assign";
    EXPECT_EQ(failureOf([&] { rows->Fields()->Item(u"Nome")->setValue(u"Neri"); }),
              errors::kCancelled);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
    told_.answered = "will change Update";
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(failureOf([&] { rows->Update(); }), errors::kCancelled);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditInProgress);
    EXPECT_EQ(test::shown(test::valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Rossi");
    told_.answered = "will change Delete";
    rows->CancelUpdate();
    EXPECT_EQ(failureOf([&] { rows->Delete(); }), errors::kCancelled);
    EXPECT_EQ(rows->RecordCount(), 3);
    told_.answered = "moved";
    rows->MoveNext();
    EXPECT_EQ(rows->AbsolutePosition(), 2) << "what has been done is not denied any more";
}

TEST_F(EventsTest, StopAtTheFirstSinkThatCancels) {
    const auto rows = watched();
    Told second;
    rows->connect(make<RecordsetSink>(second));
    told_.answered = "will move";
    told_.answer = EventStatusEnum::adStatusCancel;
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), errors::kCancelled);
    EXPECT_EQ(second.taken(), (Lines{"moved MoveNext to 1 failed -2147217842"}));
}

TEST_F(EventsTest, LeaveOutWhatASinkDoesNotWant) {
    const auto rows = watched();
    told_.answered = "will move";
    told_.answer = EventStatusEnum::adStatusUnwantedEvent;
    rows->MoveNext();
    rows->MoveNext();
    EXPECT_EQ(told_.taken(),
              (Lines{"will move MoveNext", "moved MoveNext to 2", "moved MoveNext to 3"}));
}

TEST_F(EventsTest, EndWhenTheSinkIsDisconnected) {
    const auto rows = all();
    const std::int32_t connection = rows->connect(make<RecordsetSink>(told_));
    EXPECT_TRUE(rows->isObserved());
    EXPECT_EQ(rows->connected().size(), 1U);
    rows->disconnect(connection);
    EXPECT_FALSE(rows->isObserved());
    rows->MoveNext();
    rows->Update(u"Nome", u"Neri");
    EXPECT_EQ(told_.taken(), Lines{});
    EXPECT_EQ(failureOf([&] { rows->disconnect(connection); }), kap::errors::kInvalidArgument);
    EXPECT_EQ(failureOf([&] { rows->connect({}); }), kap::errors::kObjectNotSet);
}

TEST_F(EventsTest, DoNotFollowAFieldWhoseRecordsetIsGone) {
    auto rows = watched();
    const auto field = rows->Fields()->Item(u"Nome");
    rows = {};
    field->setValue(u"Neri");
    EXPECT_EQ(test::shown(field->Value()), "String Neri");
    EXPECT_EQ(told_.taken(), Lines{});
}

TEST_F(EventsTest, TellOfConnectionsAndTransactions) {
    const std::int32_t watching = watchConnection();
    connection_->BeginTrans();
    connection_->BeginTrans();
    connection_->CommitTrans();
    connection_->RollbackTrans();
    EXPECT_EQ(told_.taken(), (Lines{"begun 1", "begun 2", "committed", "undone"}));
    EXPECT_NE(failureOf([&] { connection_->CommitTrans(); }), 0);
    ASSERT_EQ(told_.lines.size(), 1U);
    EXPECT_TRUE(told_.taken().front().starts_with("committed failed -2"));
    connection_->Close();
    connection_->Open(u"Provider=KapLocal;Data Source=:memory:other");
    EXPECT_EQ(
        told_.taken(),
        (Lines{"closed", "will open Provider=KapLocal;Data Source=:memory:other as ", "opened"}));
    connection_->disconnect(watching);
    connection_->Close();
    EXPECT_EQ(told_.taken(), Lines{});
}

TEST_F(EventsTest, OpenWhatASinkHasMadeOfTheConnectionString) {
    auto connection = make<Connection>();
    auto sink = make<ConnectionSink>(told_);
    connection->connect(sink);
    sink->replacement = u"Provider=KapLocal;Data Source=:memory:replaced";
    connection->Open(u"Provider=Nobody");
    EXPECT_EQ(connection->ConnectionString(),
              String(u"Provider=KapLocal;Data Source=:memory:replaced"));
    connection->Close();
    told_.taken();
    told_.answered = "will open";
    told_.answer = EventStatusEnum::adStatusCancel;
    EXPECT_EQ(failureOf([&] { connection->Open(); }), errors::kOperationCancelled);
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(told_.taken().back(), "opened cancelled -2146824576");
}

TEST_F(EventsTest, TellOfEverythingThatIsRun) {
    watchConnection();
    connection_->Execute(u"UPDATE Clienti SET Nome = 'X'");
    EXPECT_EQ(told_.taken(),
              (Lines{"will run UPDATE Clienti SET Nome = 'X'", "run 3 with a recordset"}));
    connection_->Execute(u"PRINT 'buongiorno'");
    EXPECT_EQ(told_.taken(),
              (Lines{"will run PRINT 'buongiorno'", "says buongiorno", "run -1 with a recordset"}));
    EXPECT_EQ(failureOf([&] { connection_->Execute(u"SELECT * FROM Manca"); }),
              errors::kUnknownObject);
    EXPECT_EQ(told_.taken(), (Lines{"will run SELECT * FROM Manca", "run -1 failed -2147217865"}));
    auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandText(u"SELECT 1 AS A");
    command->Execute();
    EXPECT_EQ(told_.taken(),
              (Lines{"will run SELECT 1 AS A of a command", "run -1 with a recordset"}));
    auto rows = make<Recordset>();
    rows->Open(Variant(command));
    EXPECT_EQ(told_.taken(), (Lines{"will run SELECT 1 AS A of a command for a recordset",
                                    "run -1 with a recordset"}));
    static_cast<void>(all());
    EXPECT_EQ(told_.taken().front(),
              "will run SELECT * FROM Clienti ORDER BY Codice for a recordset");
}

TEST_F(EventsTest, RunWhatASinkHasMadeOfTheSource) {
    watchConnection();
    sink_->replacement = u"SELECT 'altro' AS A";
    EXPECT_EQ(test::shown(fieldOf(connection_->Execute(u"SELECT 1 AS A"), u"A")), "String altro");
    auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandText(u"SELECT 1 AS A");
    EXPECT_EQ(test::shown(fieldOf(command->Execute(), u"A")), "String altro");
    EXPECT_EQ(command->CommandText(), String(u"SELECT 1 AS A"));
    EXPECT_EQ(test::shown(fieldOf(all(), u"A")), "String altro");
    told_.answered = "will run";
    told_.answer = EventStatusEnum::adStatusCancel;
    EXPECT_EQ(failureOf([&] { connection_->Execute(u"SELECT 1 AS A"); }),
              errors::kOperationCancelled);
}

// A sink of a client: any object with members of these names, called late-bound.
class LateBoundSink final : public Object {
public:
    explicit LateBoundSink(std::function<void(std::span<Variant>)> action)
        : action_(std::move(action)) {}
    [[nodiscard]] String className() const override { return u"Sink"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view name) const override {
        return name == u"WillMove" ? std::optional<std::int32_t>(1) : std::nullopt;
    }
    using Object::invoke;
    Variant invoke(std::int32_t /*member*/, InvokeKind /*kind*/,
                   const Arguments& arguments) override {
        action_(arguments.positional);
        return {};
    }

private:
    std::function<void(std::span<Variant>)> action_;
};

TEST_F(EventsTest, CallAnyObjectThatHasAMemberOfTheName) {
    const auto rows = all();
    rows->connect(make<LateBoundSink>([](std::span<Variant> arguments) {
        ASSERT_EQ(arguments.size(), 3U);
        EXPECT_EQ(test::shown(arguments[0]), "Long 13");
        EXPECT_EQ(test::shown(arguments[1]), "Long 1");
        EXPECT_TRUE(arguments[2].isObject());
        arguments[0] = u"of no interest";
        arguments[1] = std::int16_t{4};
    }));
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), errors::kCancelled);
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
}

TEST_F(EventsTest, GiveWhatASinkRaisesToTheCaller) {
    const auto rows = watched();
    rows->connect(make<LateBoundSink>(
        [](std::span<Variant> /*arguments*/) { throw AutomationError(1234, u"not today"); }));
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), 1234);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    EXPECT_EQ(told_.taken(), (Lines{"will move MoveNext", "moved MoveNext to 1 failed 1234"}));
}

TEST_F(EventsTest, LetASinkDoWhatItLikesWithTheObject) {
    auto rows = all();
    rows->connect(make<LateBoundSink>([&](std::span<Variant> /*arguments*/) { rows->Close(); }));
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), errors::kObjectClosed);
    rows->Open();
    rows->connect(make<LateBoundSink>([&](std::span<Variant> /*arguments*/) { rows = {}; }));
    EXPECT_EQ(failureOf([&] { rows->MoveNext(); }), errors::kObjectClosed);

    auto endless = all();
    endless->connect(
        make<LateBoundSink>([&](std::span<Variant> /*arguments*/) { endless->MoveNext(); }));
    EXPECT_EQ(failureOf([&] { endless->MoveNext(); }), kap::errors::kOutOfStack);
    endless->disconnect(endless->connected().front().connection);
    EXPECT_FALSE(endless->isObserved());
}

TEST_F(EventsTest, LetASinkDisconnectItselfAndOthersWhileItIsCalled) {
    const auto rows = all();
    std::int32_t calls = 0;
    std::int32_t own = 0;
    own = rows->connect(make<LateBoundSink>([&](std::span<Variant> /*arguments*/) {
        ++calls;
        for (const EventSource::Connected& one : rows->connected()) {
            rows->disconnect(one.connection);
        }
    }));
    rows->connect(make<RecordsetSink>(told_));
    rows->MoveNext();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(told_.taken(), Lines{});
    rows->MoveNext();
    EXPECT_EQ(calls, 1);
    EXPECT_NE(own, 0);
}

}  // namespace
}  // namespace kap::ado::events_test
