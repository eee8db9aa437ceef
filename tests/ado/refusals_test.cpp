// What the objects refuse, and with which number: class by class.
#include <utility>
#include <vector>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/stream.hpp>

#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::call;
using test::fieldOf;
using test::raisedBy;
using test::shown;

// What names no element of any collection, and numbers none.
std::vector<Variant> noIndexes() {
    return {Variant::null(), Ref<Object>(), Array::ofVariants({0}), -1, 99, u"manca"};
}

class RefusalsTest : public RecordsetTest {
protected:
    [[nodiscard]] Ref<Command> command(const char16_t* text = u"SELECT * FROM Clienti") const {
        auto made = make<Command>();
        made->setActiveConnection(Variant(connection_));
        made->setCommandText(text);
        return made;
    }
};

using CollectionRefusals = RefusalsTest;

TEST_F(CollectionRefusals, AnElementThatIsNotThere) {
    const auto rows = all();
    const auto parameters = command()->Parameters();
    parameters->Append(command()->CreateParameter(u"a", DataTypeEnum::adInteger));
    const auto properties = connection_->Properties();
    for (const Variant& none : noIndexes()) {
        EXPECT_EQ(raisedBy([&] { (void)rows->Fields()->Item(none); }), errors::kItemNotFound);
        EXPECT_EQ(raisedBy([&] { (void)rows->Collect(none); }), errors::kItemNotFound);
        EXPECT_EQ(raisedBy([&] { (void)parameters->Item(none); }), errors::kItemNotFound);
        EXPECT_EQ(raisedBy([&] { parameters->Delete(none); }), errors::kItemNotFound);
        EXPECT_EQ(raisedBy([&] { (void)properties->Item(none); }), errors::kItemNotFound);
    }
    EXPECT_EQ(raisedBy([&] { (void)connection_->Errors()->Item(0); }), errors::kItemNotFound);
    EXPECT_EQ(parameters->Count(), 1);
}

TEST_F(CollectionRefusals, AFieldHoldsTheNameOfAnElement) {
    const auto names = connection_->Execute(u"SELECT 'Nome' AS Campo, 2 AS Posto");
    const Variant name(names->Fields()->Item(0));
    const Variant place(names->Fields()->Item(1));
    const auto rows = all();
    EXPECT_EQ(rows->Fields()->Item(name)->Name(), String(u"Nome"));
    EXPECT_EQ(rows->Fields()->Item(place)->Name(), String(u"Fido"));
    EXPECT_EQ(rows->GetRows(1, Variant::missing(), name).as<Array>().size(), 1U);
    const auto parameters = command()->Parameters();
    parameters->Append(command()->CreateParameter(u"Nome", DataTypeEnum::adInteger));
    EXPECT_EQ(parameters->Item(name)->Type(), DataTypeEnum::adInteger);
}

using ConnectionRefusals = RefusalsTest;

TEST_F(ConnectionRefusals, ClosingItWhileATransactionIsOpenThatItHasBegun) {
    connection_->BeginTrans();
    connection_->BeginTrans();
    connection_->CommitTrans();
    EXPECT_EQ(raisedBy([&] { connection_->Close(); }), errors::kInTransaction);
    EXPECT_EQ(connection_->State(), ObjectStateEnum::adStateOpen);
    connection_->RollbackTrans();
    connection_->Close();
    EXPECT_EQ(raisedBy([&] { connection_->Close(); }), errors::kObjectClosed);
}

TEST_F(ConnectionRefusals, ClosingUndoesATransactionThatAScriptHasBegun) {
    const auto other = connection_->openAnother();
    connection_->Execute(u"BEGIN TRANSACTION; DELETE FROM Clienti WHERE Codice = 1");
    connection_->Close();
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT COUNT(*) FROM Clienti")), "Long 3");
}

TEST_F(ConnectionRefusals, RunningATextThatIsEmpty) {
    EXPECT_EQ(raisedBy([&] { connection_->Execute(u""); }), errors::kNoCommandText);
    EXPECT_EQ(raisedBy([&] { command(u"")->Execute(); }), errors::kNoCommandText);
    EXPECT_EQ(raisedBy([&] { make<Recordset>()->Open(u"", Variant(connection_)); }),
              errors::kNoCommandText);
    EXPECT_FALSE(raisedBy([&] { connection_->Execute(u" -- niente"); }));
}

TEST_F(ConnectionRefusals, WhatItsStateDoesNotAllow) {
    const auto closed = make<Connection>();
    EXPECT_EQ(raisedBy([&] { closed->Execute(u"SELECT 1"); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { (void)closed->OpenSchema(SchemaEnum::adSchemaTables); }),
              errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { closed->setDefaultDatabase(u"x"); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { connection_->Open(); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { connection_->setConnectionString(u"x"); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { connection_->setConnectionTimeout(1); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { connection_->setMode(ConnectModeEnum::adModeRead); }),
              errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { connection_->setProvider(u"x"); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { connection_->setCommandTimeout(-1); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { connection_->setIsolationLevel(IsolationLevelEnum{7}); }),
              errors::kInvalidArgument);
}

using CommandRefusals = RefusalsTest;

TEST_F(CommandRefusals, AParameterThatIsInTheCollectionAlready) {
    const auto made = command();
    const auto parameter = made->CreateParameter(u"a", DataTypeEnum::adInteger);
    made->Parameters()->Append(parameter);
    EXPECT_EQ(raisedBy([&] { made->Parameters()->Append(parameter); }),
              errors::kObjectInCollection);
    made->Parameters()->Append(made->CreateParameter(u"a", DataTypeEnum::adInteger));
    EXPECT_EQ(made->Parameters()->Count(), 2);
    EXPECT_EQ(raisedBy([&] { made->Parameters()->Append({}); }), errors::kIncompleteParameter);
    EXPECT_EQ(raisedBy([&] { made->Parameters()->Append(make<Parameter>()); }),
              errors::kIncompleteParameter);
}

TEST_F(CommandRefusals, AParameterOfALongTextSaysThatItHasNoSize) {
    const auto made = command(u"SELECT LEN(?) AS L");
    const auto parameter = made->CreateParameter(
        u"t", DataTypeEnum::adLongVarWChar, ParameterDirectionEnum::adParamInput, -1, u"lungo");
    made->Parameters()->Append(parameter);
    EXPECT_EQ(shown(fieldOf(made->Execute(), 0)), "Decimal 5");
    EXPECT_EQ(parameter->Size(), -1);
    EXPECT_EQ(raisedBy([&] { parameter->setSize(-2); }), errors::kInvalidArgument);
}

TEST_F(CommandRefusals, RunningWithoutAConnectionThatIsOpen) {
    const auto made = make<Command>();
    made->setCommandText(u"SELECT 1");
    EXPECT_EQ(raisedBy([&] { made->Execute(); }), errors::kInvalidConnection);
    EXPECT_EQ(raisedBy([&] { made->setActiveConnection(Variant(make<Connection>())); }),
              errors::kInvalidConnection);
    const auto connected = command();
    connection_->Close();
    EXPECT_EQ(raisedBy([&] { connected->Execute(); }), errors::kInvalidConnection);
}

using RecordsetRefusals = RefusalsTest;

TEST_F(RecordsetRefusals, EveryMemberThatNeedsItOpen) {
    const auto closed = make<Recordset>();
    const char16_t* const kGets[] = {u"AbsolutePage", u"AbsolutePosition", u"BOF",
                                     u"Bookmark",     u"EditMode",         u"EOF",
                                     u"PageCount",    u"RecordCount",      u"Status"};
    for (const char16_t* member : kGets) {
        EXPECT_EQ(raisedBy([&] { (void)call(*closed, member); }), errors::kObjectClosed)
            << String(member).utf8();
    }
    const std::pair<const char16_t*, std::vector<Variant>> kMethods[] = {
        {u"AddNew", {}},       {u"CancelBatch", {}},
        {u"CancelUpdate", {}}, {u"Clone", {}},
        {u"Close", {}},        {u"CompareBookmarks", {1.0, 1.0}},
        {u"Delete", {}},       {u"Find", {u"Nome = 'x'"}},
        {u"GetRows", {}},      {u"GetString", {}},
        {u"Move", {1}},        {u"MoveFirst", {}},
        {u"MoveLast", {}},     {u"MoveNext", {}},
        {u"MovePrevious", {}}, {u"NextRecordset", {}},
        {u"Requery", {}},      {u"Resync", {}},
        {u"Save", {u"file"}},  {u"Seek", {1}},
        {u"Supports", {16}},   {u"Update", {}},
        {u"UpdateBatch", {}},  {u"Collect", {0}}};
    for (const auto& method : kMethods) {
        EXPECT_EQ(raisedBy([&] { (void)call(*closed, method.first, method.second); }),
                  errors::kObjectClosed)
            << String(method.first).utf8();
    }
}

TEST_F(RecordsetRefusals, AConnectionBesideTheCommandThatIsItsSource) {
    const auto rows = make<Recordset>();
    EXPECT_EQ(raisedBy([&] { rows->Open(Variant(command()), Variant(connection_)); }),
              errors::kConnectionOfCommand);
    EXPECT_EQ(raisedBy([&] { rows->setActiveConnection(Variant(connection_)); }),
              errors::kConnectionOfCommand);
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open();
    EXPECT_EQ(rows->RecordCount(), 3);
    rows->setActiveConnection(Variant(Ref<Object>()));  // disconnected
    rows->setActiveConnection(Variant(connection_));    // and connected again
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
}

TEST_F(RecordsetRefusals, AnotherConnectionWhileItIsOpenOnOne) {
    const auto rows = all();
    const auto other = connection_->openAnother();
    EXPECT_EQ(raisedBy([&] { rows->setActiveConnection(Variant(other)); }), errors::kObjectOpen);
    rows->setActiveConnection(Variant(Ref<Object>()));
    rows->setActiveConnection(Variant(other));
    rows->Update(u"Nome", u"Neri");
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
}

TEST_F(RecordsetRefusals, FieldsOfItsOwnBesideAConnection) {
    const auto rows = make<Recordset>();
    rows->setActiveConnection(Variant(connection_));
    EXPECT_EQ(raisedBy([&] { rows->Fields()->Append(u"N", DataTypeEnum::adInteger); }),
              errors::kIllegalOperation);
    rows->setActiveConnection(Variant(Ref<Object>()));
    rows->Fields()->Append(u"N", DataTypeEnum::adInteger);
    EXPECT_EQ(rows->Fields()->Count(), 1);
}

TEST_F(RecordsetRefusals, NamesWithoutTheirValues) {
    const auto rows = all();
    EXPECT_EQ(raisedBy([&] { rows->Update(u"Nome"); }), errors::kInvalidArgument);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
    EXPECT_EQ(raisedBy([&] {
                  rows->Update(Array::ofVariants({u"Nome", u"Fido"}), Array::ofVariants({1}));
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { rows->AddNew(u"Nome"); }), errors::kInvalidArgument);
}

TEST_F(RecordsetRefusals, AStartThatIsNoBookmark) {
    const auto rows = all();
    for (const Variant& start :
         {Variant(u"x"), Variant::null(), Variant(7), Variant(Array::ofVariants({1}))}) {
        EXPECT_EQ(raisedBy([&] { rows->Move(1, start); }), errors::kInvalidArgument);
        EXPECT_EQ(raisedBy([&] { (void)rows->GetRows(1, start); }), errors::kInvalidArgument);
    }
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
}

TEST_F(RecordsetRefusals, NothingWhereAValueIsMeant) {
    const auto rows = all();
    const Variant nothing{Ref<Object>()};
    EXPECT_EQ(raisedBy([&] { rows->setFilter(nothing); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { rows->setBookmark(nothing); }), errors::kBadBookmark);
    EXPECT_EQ(raisedBy([&] { rows->Move(1, nothing); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { rows->Save(nothing, PersistFormatEnum::adPersistXML); }),
              errors::kInvalidArgument);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
}

using StreamRefusals = RefusalsTest;

TEST_F(StreamRefusals, WhatItsStateOrItsTypeDoesNotAllow) {
    const auto stream = make<Stream>();
    for (const char16_t* member : {u"EOS", u"Position", u"Size", u"Close", u"Flush", u"Read",
                                   u"ReadText", u"SetEOS", u"SkipLine"}) {
        EXPECT_EQ(raisedBy([&] { (void)call(*stream, member); }), errors::kObjectClosed)
            << String(member).utf8();
    }
    EXPECT_EQ(raisedBy([&] { stream->WriteText(u"x"); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { stream->LoadFromFile(u"x"); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { stream->SaveToFile(u"x"); }), errors::kObjectClosed);
    stream->Open(Variant(Ref<Object>()));
    EXPECT_EQ(raisedBy([&] { stream->Open(); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { stream->setMode(ConnectModeEnum::adModeRead); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { (void)stream->Read(); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->Write(u"x"); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { (void)stream->ReadText(-3); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { stream->setPosition(-1); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { stream->CopyTo({}); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { stream->CopyTo(make<Stream>()); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { stream->LoadFromFile(u"manca/manca"); }), errors::kOpeningFile);
    stream->WriteText(u"x");
    EXPECT_EQ(raisedBy([&] { stream->setType(StreamTypeEnum::adTypeBinary); }),
              errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->setCharset(u"utf-8"); }), errors::kIllegalOperation);
    stream->setPosition(0);
    stream->setType(StreamTypeEnum::adTypeBinary);
    EXPECT_EQ(raisedBy([&] { (void)stream->ReadText(); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->Write(Variant(Ref<Object>())); }), errors::kInvalidArgument);
}

TEST_F(RecordsetRefusals, TheBookmarkOfANewRecordLeadsToItOnceItIsSaved) {
    const auto rows = all();
    rows->AddNew();
    rows->Fields()->Item(u"Codice")->setValue(9);
    const Variant bookmark = rows->Bookmark();
    rows->Update();
    rows->MoveFirst();
    rows->setBookmark(bookmark);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 9");
    rows->AddNew();
    const Variant gone = rows->Bookmark();
    rows->CancelUpdate();
    EXPECT_EQ(raisedBy([&] { rows->setBookmark(gone); }), errors::kBadBookmark);
}

}  // namespace
}  // namespace kap::ado
