// What the provider of a recordset tells, and lets be chosen.
#include <utility>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/row_cursor.hpp"
#include "automation/class_builder.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

using Details = Property::Details;

}  // namespace

Ref<Properties> Recordset::Properties() {
    const Ref<Recordset> self(this);
    std::vector<Details> all;
    const auto number = [&](const char16_t* name, std::int32_t Recordset::*kept,
                            std::int32_t most) {
        all.push_back({name, DataTypeEnum::adInteger,
                       [self, kept] { return Variant((*self).*kept); },
                       [self, kept, most](const Variant& value) {
                           const std::int32_t given = convert::toLong(value);
                           if (given < 0 || given > most) {
                               fail::invalidArgument();
                           }
                           (*self).*kept = given;
                           self->chooseCriteria();
                       }});
    };
    const auto text = [&](const char16_t* name, String Recordset::*kept) {
        all.push_back({name, DataTypeEnum::adBSTR, [self, kept] { return Variant((*self).*kept); },
                       [self, kept](const Variant& value) {
                           (*self).*kept = convert::toString(value);
                           self->chooseCriteria();
                       }});
    };
    const auto can = [&](const char16_t* name, CursorOptionEnum option) {
        all.push_back({name, DataTypeEnum::adBoolean, [self, option] {
                           return Variant(self->cursor_ != nullptr && self->Supports(option));
                       }});
    };
    number(u"Update Criteria", &Recordset::updateCriteria_,
           static_cast<std::int32_t>(UpdateCriteriaEnum::adCriteriaTimeStamp));
    number(u"Update Resync", &Recordset::updateResync_,
           static_cast<std::int32_t>(UpdateResyncEnum::adResyncAll));
    text(u"Resync Command", &Recordset::resyncCommand_);
    text(u"Unique Table", &Recordset::uniqueTable_);
    can(u"Bookmarkable", CursorOptionEnum::adBookmark);
    can(u"Fetch Backwards", CursorOptionEnum::adMovePrevious);
    can(u"Hold Rows", CursorOptionEnum::adHoldRecords);
    can(u"Updatability", CursorOptionEnum::adUpdate);
    all.push_back({u"Maximum Rows", DataTypeEnum::adInteger,
                   [self] { return Variant(self->MaxRecords()); },
                   [self](const Variant& value) { self->setMaxRecords(convert::toLong(value)); }});
    return make<ado::Properties>(std::move(all));
}

void Recordset::chooseCriteria() {
    if (cursor_ == nullptr) {
        return;
    }
    const auto resyncs = [&](UpdateResyncEnum what) {
        return (updateResync_ & static_cast<std::int32_t>(what)) != 0;
    };
    WriteRules rules;
    rules.criteria = static_cast<UpdateCriteriaEnum>(updateCriteria_);
    rules.readsWhole = resyncs(UpdateResyncEnum::adResyncUpdates);
    rules.readsConflicts = resyncs(UpdateResyncEnum::adResyncConflicts);
    rules.onlyTable = uniqueTable_.utf8();
    cursor_->setWriting(std::move(rules));
}

}  // namespace kap::ado
