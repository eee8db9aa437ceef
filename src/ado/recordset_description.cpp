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
        .property<&Recordset::AbsolutePage, &Recordset::setAbsolutePage>(u"AbsolutePage")
        .property<&Recordset::AbsolutePosition, &Recordset::setAbsolutePosition>(
            u"AbsolutePosition")
        .property<&Recordset::ActiveCommand>(u"ActiveCommand")
        .property<&Recordset::ActiveConnection, &Recordset::setActiveConnection>(
            u"ActiveConnection")
        .alsoSet()
        .property<&Recordset::Bof>(u"BOF")
        .property<&Recordset::Bookmark, &Recordset::setBookmark>(u"Bookmark")
        .property<&Recordset::CacheSize, &Recordset::setCacheSize>(u"CacheSize")
        .property<&Recordset::CursorLocation, &Recordset::setCursorLocation>(u"CursorLocation")
        .property<&Recordset::CursorType, &Recordset::setCursorType>(u"CursorType")
        .property<&Recordset::EditMode>(u"EditMode")
        .property<&Recordset::Eof>(u"EOF")
        .property<&Recordset::Fields>(u"Fields")
        .property<&Recordset::Filter, &Recordset::setFilter>(u"Filter")
        .property<&Recordset::LockType, &Recordset::setLockType>(u"LockType")
        .property<&Recordset::MarshalOptions, &Recordset::setMarshalOptions>(u"MarshalOptions")
        .property<&Recordset::MaxRecords, &Recordset::setMaxRecords>(u"MaxRecords")
        .property<&Recordset::PageCount>(u"PageCount")
        .property<&Recordset::PageSize, &Recordset::setPageSize>(u"PageSize")
        .property<&Recordset::RecordCount>(u"RecordCount")
        .property<&Recordset::Sort, &Recordset::setSort>(u"Sort")
        .property<&Recordset::Source, &Recordset::setSource>(u"Source")
        .alsoSet()
        .property<&Recordset::State>(u"State")
        .property<&Recordset::Status>(u"Status");
}

// Behind the methods, whose identifiers clients may have been built with.
Builder&& laterMembers(Builder&& builder) {
    return std::move(builder)
        .property<&Recordset::Collect, &Recordset::setCollect>(u"Collect", {u"Index"})
        .property<&Recordset::DataMember, &Recordset::setDataMember>(u"DataMember")
        .property<&Recordset::DataSource, &Recordset::setDataSource>(u"DataSource")
        .alsoSet()
        .property<&Recordset::Index, &Recordset::setIndex>(u"Index")
        .property<&Recordset::Properties>(u"Properties")
        .property<&Recordset::StayInSync, &Recordset::setStayInSync>(u"StayInSync")
        .method<&Recordset::Save>(
            u"Save", {missing(u"Destination"), Parameter(u"PersistFormat").otherwise(0)})
        .method<&Recordset::Seek>(u"Seek", {u"KeyValues", Parameter(u"SeekOption").otherwise(1)});
}

Builder&& methods(Builder&& builder) {
    return std::move(builder)
        .method<&Recordset::AddNew>(u"AddNew", {missing(u"FieldList"), missing(u"Values")})
        .method<&Recordset::Cancel>(u"Cancel")
        .method<&Recordset::CancelBatch>(u"CancelBatch", {affecting(3)})
        .method<&Recordset::CancelUpdate>(u"CancelUpdate")
        .method<&Recordset::Clone>(u"Clone", {Parameter(u"LockType").otherwise(-1)})
        .method<&Recordset::Close>(u"Close")
        .method<&Recordset::CompareBookmarks>(u"CompareBookmarks", {u"Bookmark1", u"Bookmark2"})
        .method<&Recordset::Delete>(u"Delete", {affecting(1)})
        .method<&Recordset::Find>(u"Find",
                                  {u"Criteria", Parameter(u"SkipRecords").otherwise(0),
                                   Parameter(u"SearchDirection").otherwise(1), missing(u"Start")})
        .method<&Recordset::GetRows>(
            u"GetRows", {Parameter(u"Rows").otherwise(-1), missing(u"Start"), missing(u"Fields")})
        .method<&Recordset::GetString>(
            u"GetString",
            {Parameter(u"StringFormat").otherwise(2), Parameter(u"NumRows").otherwise(-1),
             Parameter(u"ColumnDelimiter").otherwise(u"\t"),
             Parameter(u"RowDelimiter").otherwise(u"\r"), Parameter(u"NullExpr").otherwise(u"")})
        .method<&Recordset::Move>(u"Move", {u"NumRecords", missing(u"Start")})
        .method<&Recordset::MoveFirst>(u"MoveFirst")
        .method<&Recordset::MoveLast>(u"MoveLast")
        .method<&Recordset::MoveNext>(u"MoveNext")
        .method<&Recordset::MovePrevious>(u"MovePrevious")
        .method<&Recordset::NextRecordset>(u"NextRecordset", {missing(u"RecordsAffected")})
        .method<&Recordset::Open>(
            u"Open", {missing(u"Source"), missing(u"ActiveConnection"),
                      Parameter(u"CursorType").otherwise(-1), Parameter(u"LockType").otherwise(-1),
                      Parameter(u"Options").otherwise(-1)})
        .method<&Recordset::Requery>(u"Requery", {Parameter(u"Options").otherwise(-1)})
        .method<&Recordset::Resync>(u"Resync",
                                    {affecting(3), Parameter(u"ResyncValues").otherwise(2)})
        .method<&Recordset::Supports>(u"Supports", {u"CursorOptions"})
        .method<&Recordset::Update>(u"Update", {missing(u"Fields"), missing(u"Values")})
        .method<&Recordset::UpdateBatch>(u"UpdateBatch", {affecting(3)});
}

}  // namespace

const ClassDescription& Recordset::classDescription() {
    static const ClassDescription description =
        laterMembers(
            methods(properties(Builder(u"Recordset", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b12",
                                       u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b22")
                                   .events(&RecordsetEvents::classDescription))))
            .build(u"Fields");
    return description;
}

}  // namespace kap::ado
