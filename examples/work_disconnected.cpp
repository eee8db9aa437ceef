// Takes records away from the database, changes them without it, and brings the changes back in one
// batch; somebody else has changed one of them meanwhile.
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>

#include <iostream>

using namespace kap::ado;

namespace {

void changeNote(Recordset& orders, const char16_t* customer, const char16_t* note) {
    orders.MoveFirst();
    orders.Find(kap::String(u"Cliente = '") + customer + u"'");
    orders.Update(u"Note", note);
}

}  // namespace

int main() {
    const auto connection = kap::make<Connection>();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:");
    connection->Execute(
        u"CREATE TABLE Ordini (Numero int PRIMARY KEY, Cliente varchar(40), Note varchar(80)) "
        u"INSERT INTO Ordini VALUES (1, 'Rossi', ''), (2, 'Bianchi', ''), (3, 'Verdi', '')");

    const auto orders = kap::make<Recordset>();
    orders->setCursorLocation(CursorLocationEnum::adUseClient);
    orders->Open(u"SELECT * FROM Ordini ORDER BY Numero", connection, CursorTypeEnum::adOpenStatic,
                 LockTypeEnum::adLockBatchOptimistic);
    orders->setActiveConnection(kap::Variant::null());

    // Away from the database.
    changeNote(*orders, u"Rossi", u"Porto assegnato");
    changeNote(*orders, u"Verdi", u"Urgente");
    connection->Execute(u"UPDATE Ordini SET Note = 'Sospeso' WHERE Numero = 3");

    // Back again. Every change is tried; what somebody else has changed is left as it is.
    orders->setActiveConnection(connection);
    try {
        orders->UpdateBatch();
    } catch (const kap::AutomationError& error) {
        std::cout << error.what() << '\n';
    }
    orders->setFilter(static_cast<std::int32_t>(FilterGroupEnum::adFilterConflictingRecords));
    orders->Resync(AffectEnum::adAffectGroup, ResyncEnum::adResyncUnderlyingValues);
    const bool oneConflict = orders->RecordCount() == 1;
    for (; !orders->Eof(); orders->MoveNext()) {
        const auto note = orders->Fields()->Item(u"Note");
        std::cout << "ours:   " << note->Value().as<kap::String>().utf8() << '\n'
                  << "theirs: " << note->UnderlyingValue().as<kap::String>().utf8() << '\n';
    }

    // Having seen what the others wrote, ours may overwrite it.
    orders->UpdateBatch();
    const auto rows = connection->Execute(u"SELECT Note FROM Ordini ORDER BY Numero");
    const kap::String notes = rows->GetString(StringFormatEnum::adClipString, -1, u"", u"|");
    std::cout << notes.utf8() << '\n';
    return oneConflict && notes == kap::String(u"Porto assegnato||Urgente|") ? 0 : 1;
}
