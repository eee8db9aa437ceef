#include <kaputil/ado/recordset.hpp>

#include "ado/row_cursor.hpp"
#include "frame/class_builder.hpp"

namespace kap::ado {

const ClassDescription& Recordset::classDescription() {
    const auto missing = [](const char16_t* name) {
        return Parameter(name).otherwise(Variant::missing());
    };
    static const ClassDescription description =
        ClassBuilder<Recordset>(u"Recordset", u"", u"")
            .summary(u"The rows of a query, one of them current, to read, change and write back.")
            .property<&Recordset::AbsolutePosition>(u"AbsolutePosition",
                                                    u"The current record's position from 1.")
            .property<&Recordset::ActiveConnection, &Recordset::setActiveConnection>(
                u"ActiveConnection", u"The connection; unset: the recordset is disconnected.")
            .alsoSet()
            .property<&Recordset::Bof>(u"BOF", u"Whether the position is before the first record.")
            .property<&Recordset::CursorLocation, &Recordset::setCursorLocation>(
                u"CursorLocation", u"2 server, 3 client.")
            .property<&Recordset::CursorType, &Recordset::setCursorType>(
                u"CursorType", u"0 forward only, 1 keyset, 2 dynamic, 3 static.")
            .property<&Recordset::EditMode>(u"EditMode", u"0 none, 1 changed, 2 new.")
            .property<&Recordset::Eof>(u"EOF", u"Whether the position is after the last record.")
            .property<&Recordset::Fields>(u"Fields", u"The columns.")
            .property<&Recordset::LockType, &Recordset::setLockType>(
                u"LockType", u"1 read only, 2 pessimistic, 3 optimistic.")
            .property<&Recordset::RecordCount>(u"RecordCount", u"How many records there are.")
            .property<&Recordset::Source, &Recordset::setSource>(u"Source", u"The query.")
            .alsoSet()
            .property<&Recordset::State>(u"State", u"0 closed, 1 open.")
            .method<&Recordset::AddNew>(u"AddNew", {missing(u"FieldList"), missing(u"Values")},
                                        u"Begins a new record.")
            .method<&Recordset::CancelUpdate>(u"CancelUpdate", {}, u"Forgets the pending changes.")
            .method<&Recordset::Close>(u"Close", {}, u"Closes the recordset.")
            .method<&Recordset::Delete>(u"Delete", {Parameter(u"AffectRecords").otherwise(1)},
                                        u"Deletes the current record.")
            .method<&Recordset::Move>(u"Move", {u"NumRecords", missing(u"Start")},
                                      u"Moves by a number of records.")
            .method<&Recordset::MoveFirst>(u"MoveFirst", {}, u"Moves to the first record.")
            .method<&Recordset::MoveLast>(u"MoveLast", {}, u"Moves to the last record.")
            .method<&Recordset::MoveNext>(u"MoveNext", {}, u"Moves to the next record.")
            .method<&Recordset::MovePrevious>(u"MovePrevious", {}, u"Moves to the previous record.")
            .method<&Recordset::Open>(
                u"Open",
                {missing(u"Source"), missing(u"ActiveConnection"),
                 Parameter(u"CursorType").otherwise(-1), Parameter(u"LockType").otherwise(-1),
                 Parameter(u"Options").otherwise(-1)},
                u"Opens the query.")
            .method<&Recordset::Requery>(u"Requery", {Parameter(u"Options").otherwise(-1)},
                                         u"Runs the query again.")
            .method<&Recordset::Resync>(
                u"Resync",
                {Parameter(u"AffectRecords").otherwise(3), Parameter(u"ResyncValues").otherwise(2)},
                u"Reads records again from the database.")
            .method<&Recordset::Update>(u"Update", {missing(u"Fields"), missing(u"Values")},
                                        u"Writes the pending record.")
            .build(u"Fields");
    return description;
}

}  // namespace kap::ado
