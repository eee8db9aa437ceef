#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;
using test::valueOf;

constexpr std::int32_t kConflict =
    static_cast<std::int32_t>(RecordStatusEnum::adRecConcurrencyViolation);

class BatchTest : public RecordsetTest {
protected:
    BatchTest() : rows_(make<Recordset>()) {
        rows_->setCursorLocation(CursorLocationEnum::adUseClient);
        rows_->Open(u"SELECT * FROM Clienti ORDER BY Codice", Variant(connection_),
                    CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockBatchOptimistic);
    }

    void change(std::int32_t position, const char16_t* name) {
        rows_->setAbsolutePosition(position);
        rows_->Update(u"Nome", name);
    }
    [[nodiscard]] std::string stored(const char16_t* query) const {
        return shown(valueOf(connection_, query));
    }
    [[nodiscard]] std::string names() const {
        const auto all = connection_->Execute(u"SELECT Nome FROM Clienti ORDER BY Codice");
        return all->GetString(StringFormatEnum::adClipString, -1, u"", u" ").utf8();
    }

    Ref<Recordset> rows_;
};

TEST_F(BatchTest, KeepsChangesUntilTheBatchIsWritten) {
    change(1, u"Neri");
    change(3, u"Blu");
    EXPECT_EQ(names(), "Rossi Bianchi Verdi ");
    EXPECT_EQ(shown(fieldOf(rows_, u"Nome")), "String Blu");
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Neri Bianchi Blu ");
}

TEST_F(BatchTest, TellsWhatWaits) {
    EXPECT_EQ(rows_->Status(), 8);  // unmodified
    change(1, u"Neri");
    EXPECT_EQ(rows_->Status(), 2);
    EXPECT_EQ(shown(rows_->Fields()->Item(u"Nome")->OriginalValue()), "String Rossi");
    rows_->AddNew(Array::ofVariants({u"Codice", u"Nome"}), Array::ofVariants({9, u"Blu"}));
    EXPECT_EQ(rows_->Status(), 1);
    rows_->UpdateBatch();
    EXPECT_EQ(rows_->Status(), 0);
    rows_->MoveFirst();
    EXPECT_EQ(rows_->Status(), 0);
    rows_->MoveNext();
    EXPECT_EQ(rows_->Status(), 8);
    EXPECT_EQ(names(), "Neri Bianchi Verdi Blu ");
}

TEST_F(BatchTest, ChangesOfOneRecordAddUpAndItsOriginalsStay) {
    change(1, u"Neri");
    rows_->Update(u"Fido", Currency{70000});
    rows_->Update(u"Nome", u"Gialli");
    EXPECT_EQ(shown(rows_->Fields()->Item(u"Nome")->OriginalValue()), "String Rossi");
    rows_->UpdateBatch();
    EXPECT_EQ(stored(u"SELECT Nome FROM Clienti WHERE Codice = 1"), "String Gialli");
    EXPECT_EQ(stored(u"SELECT Fido FROM Clienti WHERE Codice = 1"), "Currency 7");
    rows_->Update(u"Nome", u"Viola");
    rows_->UpdateBatch();
    EXPECT_EQ(stored(u"SELECT Nome FROM Clienti WHERE Codice = 1"), "String Viola");
}

TEST_F(BatchTest, WritesNewRecordsWithTheDatabasesDefaults) {
    test::prepare(
        connection_,
        u"CREATE TABLE Righe (Id int IDENTITY(5,1) PRIMARY KEY, Testo varchar(9) DEFAULT 'x')");
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT * FROM Righe", Variant(connection_), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockBatchOptimistic);
    rows->AddNew();
    rows->Update();
    rows->AddNew(u"Testo", u"y");
    EXPECT_EQ(shown(fieldOf(rows, u"Id")), "Null");
    rows->UpdateBatch();
    EXPECT_EQ(shown(fieldOf(rows, u"Id")), "Long 6");
    rows->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows, u"Id")), "Long 5");
    EXPECT_EQ(shown(fieldOf(rows, u"Testo")), "String x");
}

TEST_F(BatchTest, DeletesWithTheBatch) {
    rows_->MoveNext();
    rows_->Delete();
    EXPECT_EQ(rows_->RecordCount(), 2);
    EXPECT_EQ(names(), "Rossi Bianchi Verdi ");
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Rossi Verdi ");
}

TEST_F(BatchTest, ANewRecordThatIsDeletedNeverReachesTheDatabase) {
    rows_->AddNew(u"Codice", 9);
    rows_->Delete();
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Rossi Bianchi Verdi ");
    EXPECT_EQ(rows_->RecordCount(), 3);
}

TEST_F(BatchTest, ForgetsWhatWaits) {
    change(1, u"Neri");
    rows_->AddNew(u"Codice", 9);
    rows_->setAbsolutePosition(2);
    rows_->Delete();
    rows_->CancelBatch();
    EXPECT_EQ(rows_->RecordCount(), 3);
    rows_->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows_, u"Nome")), "String Rossi");
    rows_->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows_, u"Nome")), "String Bianchi");
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Rossi Bianchi Verdi ");
}

TEST_F(BatchTest, WritesOrForgetsTheCurrentRecordAlone) {
    change(1, u"Neri");
    change(2, u"Blu");
    change(3, u"Viola");
    rows_->setAbsolutePosition(2);
    rows_->UpdateBatch(AffectEnum::adAffectCurrent);
    EXPECT_EQ(names(), "Rossi Blu Verdi ");
    rows_->setAbsolutePosition(3);
    rows_->CancelBatch(AffectEnum::adAffectCurrent);
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Neri Blu Verdi ");
}

TEST_F(BatchTest, WritesWhatTheFilterShows) {
    change(1, u"Neri");
    change(3, u"Viola");
    EXPECT_EQ(raisedBy([&] { rows_->UpdateBatch(AffectEnum::adAffectGroup); }),
              errors::kInvalidArgument);
    rows_->setFilter(u"Codice = 3");
    rows_->UpdateBatch(AffectEnum::adAffectGroup);
    EXPECT_EQ(names(), "Rossi Bianchi Viola ");
    rows_->UpdateBatch();  // all that criteria show
    EXPECT_EQ(names(), "Rossi Bianchi Viola ");
    rows_->UpdateBatch(AffectEnum::adAffectAllChapters);
    EXPECT_EQ(names(), "Neri Bianchi Viola ");
}

TEST_F(BatchTest, TriesEveryRecordAndCollectsTheConflicts) {
    change(1, u"Neri");
    change(2, u"Blu");
    change(3, u"Viola");
    connection_->Execute(
        u"UPDATE Clienti SET Nome = 'Altro' WHERE Codice = 1; DELETE FROM Clienti WHERE Codice = "
        u"3");
    EXPECT_EQ(raisedBy([&] { rows_->UpdateBatch(); }), errors::kConcurrency);
    EXPECT_EQ(names(), "Altro Blu ");
    EXPECT_EQ(connection_->Errors()->Count(), 2);
    EXPECT_EQ(connection_->Errors()->Item(1)->Number(), errors::kConcurrency);
    rows_->setFilter(static_cast<std::int32_t>(FilterGroupEnum::adFilterConflictingRecords));
    EXPECT_EQ(rows_->RecordCount(), 2);
    EXPECT_EQ(shown(fieldOf(rows_, u"Codice")), "Long 1");
    EXPECT_EQ(rows_->Status(), 2 | kConflict);
}

TEST_F(BatchTest, AConflictIsSettledByReadingTheUnderlyingValues) {
    change(1, u"Neri");
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Altro' WHERE Codice = 1");
    EXPECT_EQ(raisedBy([&] { rows_->UpdateBatch(); }), errors::kConcurrency);
    rows_->Resync(AffectEnum::adAffectCurrent, ResyncEnum::adResyncUnderlyingValues);
    const auto name = rows_->Fields()->Item(u"Nome");
    EXPECT_EQ(shown(name->Value()), "String Neri");
    EXPECT_EQ(shown(name->OriginalValue()), "String Rossi");
    EXPECT_EQ(shown(name->UnderlyingValue()), "String Altro");
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Neri Bianchi Verdi ");
    EXPECT_EQ(rows_->Status(), 0);
    EXPECT_EQ(shown(name->UnderlyingValue()), "String Neri");
}

TEST_F(BatchTest, ReadingAllValuesAgainForgetsTheChange) {
    change(1, u"Neri");
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Altro' WHERE Codice = 1");
    rows_->Resync(AffectEnum::adAffectCurrent);
    EXPECT_EQ(shown(fieldOf(rows_, u"Nome")), "String Altro");
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Altro Bianchi Verdi ");
}

TEST_F(BatchTest, AViolatedConstraintIsToldByStatus) {
    rows_->AddNew(Array::ofVariants({u"Codice", u"Nome"}), Array::ofVariants({1, u"Doppio"}));
    EXPECT_EQ(raisedBy([&] { rows_->UpdateBatch(); }), errors::kIntegrity);
    EXPECT_EQ(rows_->Status(),
              1 | static_cast<std::int32_t>(RecordStatusEnum::adRecIntegrityViolation));
    EXPECT_EQ(connection_->Errors()->Item(0)->NativeError(), 2627);
    rows_->Update(u"Codice", 7);
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Rossi Bianchi Verdi Doppio ");
}

TEST_F(BatchTest, FiltersWhatWaitsWithDeletedRecords) {
    change(1, u"Neri");
    rows_->MoveLast();
    rows_->Delete();
    rows_->setFilter(static_cast<std::int32_t>(FilterGroupEnum::adFilterPendingRecords));
    EXPECT_EQ(rows_->RecordCount(), 2);
    rows_->MoveLast();
    EXPECT_EQ(rows_->Status(), 4);
    EXPECT_EQ(raisedBy([&] { return fieldOf(rows_, u"Nome"); }), errors::kRowNotFound);
    EXPECT_EQ(shown(rows_->Fields()->Item(u"Nome")->OriginalValue()), "String Verdi");
    rows_->UpdateBatch();
    rows_->setFilter(static_cast<std::int32_t>(FilterGroupEnum::adFilterAffectedRecords));
    EXPECT_EQ(rows_->RecordCount(), 2);
    rows_->setFilter(static_cast<std::int32_t>(FilterGroupEnum::adFilterFetchedRecords));
    EXPECT_EQ(rows_->RecordCount(), 2);
    EXPECT_EQ(raisedBy([&] { rows_->setFilter(77); }), errors::kInvalidArgument);
}

TEST_F(BatchTest, IsWrittenAfterBeingDisconnected) {
    rows_->setActiveConnection(Variant(Ref<Object>()));
    change(2, u"Blu");
    EXPECT_EQ(raisedBy([&] { rows_->UpdateBatch(); }), errors::kInvalidConnection);
    rows_->setActiveConnection(Variant(connection_));
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Rossi Blu Verdi ");
}

TEST_F(BatchTest, MovementAndTheBatchSaveAPendingRecord) {
    rows_->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows_->MoveNext();
    rows_->Fields()->Item(u"Nome")->setValue(u"Blu");
    rows_->UpdateBatch();
    EXPECT_EQ(names(), "Neri Blu Verdi ");
}

TEST_F(BatchTest, AReplacedNullIsWrittenOnlyWhenItIsAssigned) {
    rows_->replaceNulls(2);
    rows_->MoveNext();
    rows_->Update(u"Nome", u"Blu");
    rows_->UpdateBatch();
    EXPECT_EQ(stored(u"SELECT Fido FROM Clienti WHERE Codice = 2"), "Null");
    EXPECT_EQ(shown(fieldOf(rows_, u"Fido")), "Currency 0");
    rows_->Update(u"Fido", Currency{50000});
    rows_->CancelBatch();
    EXPECT_EQ(shown(fieldOf(rows_, u"Fido")), "Currency 0");
    EXPECT_EQ(shown(rows_->Fields()->Item(u"Fido")->OriginalValue()), "Null");
}

TEST_F(BatchTest, ACloneSeesWhatWaitsAndMayWriteIt) {
    change(1, u"Neri");
    const auto clone = rows_->Clone();
    EXPECT_EQ(shown(fieldOf(clone, u"Nome")), "String Neri");
    EXPECT_EQ(clone->Status(), 2);
    clone->UpdateBatch();
    EXPECT_EQ(names(), "Neri Bianchi Verdi ");
    EXPECT_EQ(rows_->Status(), 0);
}

TEST_F(RecordsetTest, OnlyABatchRecordsetUpdatesInBatches) {
    const auto rows = all();
    EXPECT_EQ(raisedBy([&] { rows->UpdateBatch(); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { rows->CancelBatch(); }), errors::kFeatureNotAvailable);
}

TEST_F(RecordsetTest, TakesNoteOfUnderlyingValuesWithoutABatch) {
    const auto rows = all();
    const auto name = rows->Fields()->Item(u"Nome");
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Altro' WHERE Codice = 1");
    EXPECT_EQ(shown(name->UnderlyingValue()), "String Rossi");
    rows->Resync(AffectEnum::adAffectCurrent, ResyncEnum::adResyncUnderlyingValues);
    EXPECT_EQ(shown(name->Value()), "String Rossi");
    EXPECT_EQ(shown(name->UnderlyingValue()), "String Altro");
    rows->Update(u"Nome", u"Neri");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
}

TEST_F(RecordsetTest, ReadsTheOthersAgainWhenOneIsGone) {
    const auto rows = all();
    connection_->Execute(u"DELETE FROM Clienti WHERE Codice = 1; UPDATE Clienti SET Fido = 77");
    EXPECT_EQ(raisedBy([&] { rows->Resync(); }), errors::kRowNotFound);
    EXPECT_EQ(rows->RecordCount(), 2);
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, u"Fido")), "Currency 77");
}

TEST_F(RecordsetTest, AConflictIsKeptWithTheConnectionsErrors) {
    const auto rows = all();
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Gialli' WHERE Codice = 1");
    EXPECT_EQ(raisedBy([&] { rows->Update(u"Nome", u"Neri"); }), errors::kConcurrency);
    ASSERT_EQ(connection_->Errors()->Count(), 1);
    EXPECT_EQ(connection_->Errors()->Item(0)->Number(), errors::kConcurrency);
}

}  // namespace
}  // namespace kap::ado
