// What a recordset shows of a record once it has been written: what the database has made of it.
#include <kaputil/data/enumerations.hpp>

#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::raisedBy;
using test::shown;
using test::valueOf;

class ReadBackTest : public RecordsetTest {
protected:
    ReadBackTest() {
        connection_->Execute(
            u"CREATE TABLE Righe (Id int IDENTITY PRIMARY KEY, Quantita int, Prezzo money, "
            u"Totale AS (Quantita * Prezzo), Nota varchar(20) DEFAULT 'nuova', Cambi int);"
            u"INSERT INTO Righe (Quantita, Prezzo, Cambi) VALUES (2, 10, 0), (3, 5, 0)");
    }

    void countChanges() {
        connection_->Execute(
            u"CREATE TRIGGER Conta ON Righe AFTER INSERT, UPDATE AS "
            u"UPDATE Righe SET Cambi = ISNULL(Cambi, 0) + 1 "
            u"WHERE Id IN (SELECT Id FROM inserted)");
    }

    [[nodiscard]] Ref<Recordset> rows(
        CursorLocationEnum location,
        UpdateResyncEnum resync = UpdateResyncEnum::adResyncAutoIncrement,
        LockTypeEnum lock = LockTypeEnum::adLockOptimistic) const {
        auto opened = make<Recordset>();
        opened->setCursorLocation(location);
        opened->Properties()->Item(u"Update Resync")->setValue(static_cast<std::int32_t>(resync));
        opened->Open(u"SELECT * FROM Righe ORDER BY Id", Variant(connection_),
                     CursorTypeEnum::adOpenKeyset, lock);
        return opened;
    }

    static constexpr CursorLocationEnum kClient = CursorLocationEnum::adUseClient;
    static constexpr CursorLocationEnum kServer = CursorLocationEnum::adUseServer;
};

TEST_F(ReadBackTest, AComputedColumnShowsItsNewValue) {
    for (const auto location : {kClient, kServer}) {
        const auto all = rows(location);
        const std::int32_t quantity = location == kClient ? 7 : 9;
        all->Update(u"Quantita", quantity);
        EXPECT_EQ(shown(fieldOf(all, u"Totale")),
                  location == kClient ? "Currency 70" : "Currency 90");
        all->AddNew(Array::ofVariants({u"Quantita", u"Prezzo"}), Array::ofVariants({4, 6}));
        EXPECT_EQ(shown(fieldOf(all, u"Totale")), "Currency 24");
        EXPECT_EQ(shown(fieldOf(all, u"Nota")), "String nuova");
    }
}

TEST_F(ReadBackTest, AComputedColumnCannotBeAssigned) {
    const auto all = rows(kServer);
    EXPECT_EQ(raisedBy([&] { all->Fields()->Item(u"Totale")->setValue(1); }),
              errors::kMultipleStep);
    all->Fields()->Item(u"Totale")->setValue(20);  // what it holds already
    EXPECT_EQ(all->EditMode(), EditModeEnum::adEditNone);
    EXPECT_EQ(all->Fields()->Item(u"Totale")->Attributes() & 12, 0);
    EXPECT_EQ(all->Fields()->Item(u"Prezzo")->Attributes() & 12, 4);
}

TEST_F(ReadBackTest, ATableWithoutKeyWithAComputedColumnIsWritten) {
    connection_->Execute(
        u"CREATE TABLE Sfuse (A int, Doppio AS (A * 2), Meta AS (A / 2.0), B varchar(5));"
        u"INSERT INTO Sfuse (A, B) VALUES (1, 'x'), (2, 'y')");
    const auto all = openLive(connection_, u"SELECT * FROM Sfuse ORDER BY A");
    all->Update(u"A", 5);
    EXPECT_EQ(shown(fieldOf(all, u"Doppio")), "Long 10");
    all->Update(u"B", u"z");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT A FROM Sfuse WHERE B = 'z'")), "Long 5");
    all->Delete();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Sfuse")), "Long 1");
}

TEST_F(ReadBackTest, AServerCursorShowsWhatATriggerHasMadeOfTheRecord) {
    countChanges();
    const auto all = rows(kServer);
    all->Update(u"Quantita", 1);
    EXPECT_EQ(shown(fieldOf(all, u"Cambi")), "Long 1");
    all->Update(u"Quantita", 4);
    EXPECT_EQ(shown(fieldOf(all, u"Cambi")), "Long 2");
    all->AddNew(u"Quantita", 1);
    EXPECT_EQ(shown(fieldOf(all, u"Cambi")), "Long 1");
}

TEST_F(ReadBackTest, AClientCursorShowsItWhereUpdateResyncSaysSo) {
    countChanges();
    const auto quiet = rows(kClient);
    quiet->Update(u"Quantita", 1);
    EXPECT_EQ(shown(fieldOf(quiet, u"Cambi")), "Long 0");
    const auto asked = rows(kClient, UpdateResyncEnum::adResyncUpdates);
    asked->Update(u"Quantita", 4);
    EXPECT_EQ(shown(fieldOf(asked, u"Cambi")), "Long 2");
    asked->Properties()->Item(u"Update Resync")->setValue(1);
    asked->Update(u"Quantita", 5);
    EXPECT_EQ(shown(fieldOf(asked, u"Cambi")), "Long 2");
}

TEST_F(ReadBackTest, ANullThatReadsAsANeutralValueGoesOnDoingSo) {
    const auto all = this->all(kServer);
    all->MoveNext();
    all->replaceNulls(2);
    EXPECT_EQ(shown(fieldOf(all, u"Fido")), "Currency 0");
    all->Update(u"Nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(all, u"Fido")), "Currency 0");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Fido FROM Clienti WHERE Codice = 2")), "Null");
}

TEST_F(ReadBackTest, ABatchTakesNoteOfWhatItMetWhereUpdateResyncSaysSo) {
    for (const auto resync :
         {UpdateResyncEnum::adResyncAutoIncrement, UpdateResyncEnum::adResyncConflicts}) {
        const auto all = rows(kClient, resync, LockTypeEnum::adLockBatchOptimistic);
        all->Update(u"Prezzo", 1);
        connection_->Execute(u"UPDATE Righe SET Prezzo = 99 WHERE Id = 1");
        EXPECT_EQ(raisedBy([&] { all->UpdateBatch(); }), errors::kConcurrency);
        const bool noted = resync == UpdateResyncEnum::adResyncConflicts;
        EXPECT_EQ(shown(all->Fields()->Item(u"Prezzo")->UnderlyingValue()),
                  noted ? "Currency 99" : "Currency 10");
        EXPECT_EQ(shown(all->Fields()->Item(u"Prezzo")->Value()), "Currency 1");
        EXPECT_EQ(raisedBy([&] { all->UpdateBatch(); }), noted ? 0 : errors::kConcurrency);
        connection_->Execute(u"UPDATE Righe SET Prezzo = 10 WHERE Id = 1");
    }
}

class UniqueTableTest : public RecordsetTest {
protected:
    UniqueTableTest() : rows_(make<Recordset>()) {
        connection_->Execute(
            u"CREATE TABLE Testate (Id int PRIMARY KEY, Cliente int, Nota varchar(9));"
            u"INSERT INTO Testate VALUES (100, 1, 'a'), (101, 1, 'b')");
        rows_->setCursorLocation(CursorLocationEnum::adUseClient);
        rows_->Open(
            u"SELECT t.Id, t.Cliente, t.Nota, c.Codice, c.Nome FROM Testate t INNER JOIN Clienti c "
            u"ON c.Codice = t.Cliente ORDER BY t.Id",
            Variant(connection_), CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockOptimistic);
    }
    Ref<Recordset> rows_;
};

TEST_F(UniqueTableTest, WithoutItTheRecordOfAJoinIsNeitherDeletedNorMadeOfBothTables) {
    EXPECT_EQ(raisedBy([&] { rows_->Delete(); }), errors::kUnspecified);
    EXPECT_EQ(raisedBy([&] {
                  rows_->AddNew(Array::ofVariants({u"Id", u"Codice"}), Array::ofVariants({1, 2}));
              }),
              errors::kUnspecified);
}

TEST_F(UniqueTableTest, IsTheOneThatIsDeletedFromAndWritten) {
    rows_->Properties()->Item(u"Unique Table")->setValue(u"testate");
    rows_->Delete();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Testate")), "Long 1");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Clienti")), "Long 3");
    rows_->MoveNext();
    rows_->Update(u"Nota", u"c");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Testate")), "String c");
    EXPECT_EQ(raisedBy([&] { rows_->Update(u"Nome", u"Neri"); }), errors::kUnspecified);
    rows_->CancelUpdate();
    rows_->AddNew(Array::ofVariants({u"Id", u"Cliente"}), Array::ofVariants({102, 2}));
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Testate")), "Long 2");
}

TEST_F(UniqueTableTest, ATableThatIsNotThereLeavesNothingToWrite) {
    rows_->Properties()->Item(u"Unique Table")->setValue(u"Manca");
    EXPECT_EQ(raisedBy([&] { rows_->Delete(); }), errors::kUnspecified);
    EXPECT_EQ(raisedBy([&] { rows_->Update(u"Nota", u"c"); }), errors::kUnspecified);
}

}  // namespace
}  // namespace kap::ado
