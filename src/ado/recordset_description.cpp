#include <kaputil/ado/recordset.hpp>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/events.hpp>

#include "ado/row_cursor.hpp"
#include "automation/class_builder.hpp"
#include "data/driver.hpp"

namespace kap::ado {
namespace {

using kap::Parameter;
using Builder = ClassBuilder<Recordset>;

Parameter missing(const char16_t* name) {
    return Parameter(name).otherwise(Variant::missing());
}

Parameter affecting(std::int32_t which) {
    return Parameter(u"AffectRecords").otherwise(which);
}

Builder&& properties(Builder&& builder) {
    return std::move(builder)
        .property<&Recordset::AbsolutePage, &Recordset::setAbsolutePage>(
            u"AbsolutePage", u"The current record's page from 1.")
        .property<&Recordset::AbsolutePosition, &Recordset::setAbsolutePosition>(
            u"AbsolutePosition", u"The current record's position from 1.")
        .property<&Recordset::ActiveCommand>(u"ActiveCommand", u"The command that was opened.")
        .property<&Recordset::ActiveConnection, &Recordset::setActiveConnection>(
            u"ActiveConnection", u"The connection; unset: the recordset is disconnected.")
        .alsoSet()
        .property<&Recordset::Bof>(u"BOF", u"Whether the position is before the first record.")
        .property<&Recordset::Bookmark, &Recordset::setBookmark>(
            u"Bookmark", u"A value that stands for the current record.")
        .property<&Recordset::CacheSize, &Recordset::setCacheSize>(u"CacheSize",
                                                                   u"Records kept at hand.")
        .property<&Recordset::CursorLocation, &Recordset::setCursorLocation>(u"CursorLocation",
                                                                             u"2 server, 3 client.")
        .property<&Recordset::CursorType, &Recordset::setCursorType>(
            u"CursorType", u"0 forward only, 1 keyset, 2 dynamic, 3 static.")
        .property<&Recordset::EditMode>(u"EditMode", u"0 none, 1 changed, 2 new, 4 deleted.")
        .property<&Recordset::Eof>(u"EOF", u"Whether the position is after the last record.")
        .property<&Recordset::Fields>(u"Fields", u"The columns.")
        .property<&Recordset::Filter, &Recordset::setFilter>(
            u"Filter", u"Which records are shown: criteria, bookmarks, or a group.")
        .property<&Recordset::LockType, &Recordset::setLockType>(
            u"LockType", u"1 read only, 2 pessimistic, 3 optimistic, 4 batch optimistic.")
        .property<&Recordset::MarshalOptions, &Recordset::setMarshalOptions>(
            u"MarshalOptions", u"0 all records go back, 1 the changed ones.")
        .property<&Recordset::MaxRecords, &Recordset::setMaxRecords>(
            u"MaxRecords", u"The most records to fetch; 0: no limit.")
        .property<&Recordset::PageCount>(u"PageCount", u"How many pages there are.")
        .property<&Recordset::PageSize, &Recordset::setPageSize>(u"PageSize", u"Records of a page.")
        .property<&Recordset::RecordCount>(
            u"RecordCount", u"How many records there are; -1 when they are not counted.")
        .property<&Recordset::Sort, &Recordset::setSort>(
            u"Sort", u"The order: column names, each with ASC or DESC.")
        .property<&Recordset::Source, &Recordset::setSource>(u"Source", u"The query.")
        .alsoSet()
        .property<&Recordset::State>(u"State", u"0 closed, 1 open.")
        .property<&Recordset::Status>(
            u"Status", u"Whether the record waits for UpdateBatch, and why that failed.");
}

// Behind the methods, whose identifiers clients may have been built with.
Builder&& laterMembers(Builder&& builder) {
    return std::move(builder)
        .property<&Recordset::Collect, &Recordset::setCollect>(u"Collect", u"A field's value.",
                                                               {u"Index"})
        .property<&Recordset::DataMember, &Recordset::setDataMember>(u"DataMember", u"Empty.")
        .property<&Recordset::DataSource, &Recordset::setDataSource>(u"DataSource", u"Unset.")
        .alsoSet()
        .property<&Recordset::Index, &Recordset::setIndex>(u"Index", u"Empty.")
        .property<&Recordset::Properties>(u"Properties", u"What the provider lets be chosen.")
        .property<&Recordset::StayInSync, &Recordset::setStayInSync>(u"StayInSync",
                                                                     u"Kept for who asks.")
        .method<&Recordset::Save>(
            u"Save", {missing(u"Destination"), Parameter(u"PersistFormat").otherwise(0)},
            u"Writes the records to a file or a stream; 1: as XML.")
        .method<&Recordset::Seek>(u"Seek", {u"KeyValues", Parameter(u"SeekOption").otherwise(1)},
                                  u"No driver has it.");
}

Builder&& methods(Builder&& builder) {
    return std::move(builder)
        .method<&Recordset::AddNew>(u"AddNew", {missing(u"FieldList"), missing(u"Values")},
                                    u"Begins a new record.")
        .method<&Recordset::Cancel>(u"Cancel", {}, u"Ends what is running.")
        .method<&Recordset::CancelBatch>(u"CancelBatch", {affecting(3)},
                                         u"Forgets the changes that wait.")
        .method<&Recordset::CancelUpdate>(u"CancelUpdate", {}, u"Forgets the pending changes.")
        .method<&Recordset::Clone>(u"Clone", {Parameter(u"LockType").otherwise(-1)},
                                   u"Another recordset on the same records.")
        .method<&Recordset::Close>(u"Close", {}, u"Closes the recordset.")
        .method<&Recordset::CompareBookmarks>(u"CompareBookmarks", {u"Bookmark1", u"Bookmark2"},
                                              u"How two records stand to each other.")
        .method<&Recordset::Delete>(u"Delete", {affecting(1)},
                                    u"Deletes the current record, or several.")
        .method<&Recordset::Find>(u"Find",
                                  {u"Criteria", Parameter(u"SkipRecords").otherwise(0),
                                   Parameter(u"SearchDirection").otherwise(1), missing(u"Start")},
                                  u"Moves to the next record that meets a comparison.")
        .method<&Recordset::GetRows>(
            u"GetRows", {Parameter(u"Rows").otherwise(-1), missing(u"Start"), missing(u"Fields")},
            u"The values of many records as an array.")
        .method<&Recordset::GetString>(
            u"GetString",
            {Parameter(u"StringFormat").otherwise(2), Parameter(u"NumRows").otherwise(-1),
             Parameter(u"ColumnDelimiter").otherwise(u"\t"),
             Parameter(u"RowDelimiter").otherwise(u"\r"), Parameter(u"NullExpr").otherwise(u"")},
            u"The values of many records as a text.")
        .method<&Recordset::Move>(u"Move", {u"NumRecords", missing(u"Start")},
                                  u"Moves by a number of records.")
        .method<&Recordset::MoveFirst>(u"MoveFirst", {}, u"Moves to the first record.")
        .method<&Recordset::MoveLast>(u"MoveLast", {}, u"Moves to the last record.")
        .method<&Recordset::MoveNext>(u"MoveNext", {}, u"Moves to the next record.")
        .method<&Recordset::MovePrevious>(u"MovePrevious", {}, u"Moves to the previous record.")
        .method<&Recordset::NextRecordset>(u"NextRecordset", {missing(u"RecordsAffected")},
                                           u"The script's next answer.")
        .method<&Recordset::Open>(
            u"Open",
            {missing(u"Source"), missing(u"ActiveConnection"),
             Parameter(u"CursorType").otherwise(-1), Parameter(u"LockType").otherwise(-1),
             Parameter(u"Options").otherwise(-1)},
            u"Opens the query.")
        .method<&Recordset::Requery>(u"Requery", {Parameter(u"Options").otherwise(-1)},
                                     u"Runs the query again.")
        .method<&Recordset::Resync>(u"Resync",
                                    {affecting(3), Parameter(u"ResyncValues").otherwise(2)},
                                    u"Reads records again from the database.")
        .method<&Recordset::Supports>(u"Supports", {u"CursorOptions"},
                                      u"Whether the recordset can do something.")
        .method<&Recordset::Update>(u"Update", {missing(u"Fields"), missing(u"Values")},
                                    u"Writes the pending record.")
        .method<&Recordset::UpdateBatch>(u"UpdateBatch", {affecting(3)},
                                         u"Writes the changes that wait.");
}

}  // namespace

const ClassDescription& Recordset::classDescription() {
    static const ClassDescription description =
        laterMembers(
            methods(properties(
                Builder(u"Recordset", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b12",
                        u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b22")
                    .summary(u"The rows of a query, one of them current, to read, change and "
                             u"write back.")
                    .events(&RecordsetEvents::classDescription))))
            .build(u"Fields");
    return description;
}

}  // namespace kap::ado
