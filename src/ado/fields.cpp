#include <algorithm>
#include <utility>

#include <kaputil/ado/field.hpp>

#include "ado/element_index.hpp"
#include "ado/hand_made_column.hpp"
#include "ado/row_cursor.hpp"
#include "automation/class_builder.hpp"
#include "data/failures.hpp"
#include "data/value_type.hpp"

namespace kap::ado {
namespace {

bool sameColumns(const std::vector<ColumnInfo>& one, const std::vector<ColumnInfo>& other) {
    return std::ranges::equal(one, other, [](const ColumnInfo& left, const ColumnInfo& right) {
        return left.name == right.name && left.type == right.type;
    });
}

}  // namespace

Fields::Fields() = default;

Fields::~Fields() = default;

void Fields::show(std::shared_ptr<RowCursor> cursor, bool open) {
    const bool same = open_ && open && sameColumns(cursor_->columns(), cursor->columns());
    if (!same) {
        hide();
        fields_.resize(cursor->columns().size());
    }
    cursor_ = std::move(cursor);
    open_ = open;
    followFrom(0);
}

void Fields::followFrom(std::size_t first) {
    for (std::size_t i = first; i < fields_.size(); ++i) {
        if (fields_[i]) {
            fields_[i]->follow(cursor_, i);
        }
    }
}

void Fields::hide() {
    for (const Ref<Field>& field : fields_) {
        if (field) {
            field->follow({}, 0);
        }
    }
    fields_.clear();
    open_ = false;
}

const ClassDescription& Fields::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Fields>(u"Fields", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b17",
                             u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b27")
            .property<&Fields::Count>(u"Count")
            .property<&Fields::Item>(u"Item", {u"Index"})
            .method<&Fields::Append>(u"Append",
                                     {u"Name", u"Type", kap::Parameter(u"DefinedSize").otherwise(0),
                                      kap::Parameter(u"Attrib").otherwise(-1),
                                      kap::Parameter(u"FieldValue").otherwise(Variant::missing())})
            .method<&Fields::Delete>(u"Delete", {u"Index"})
            .method<&Fields::CancelUpdate>(u"CancelUpdate")
            .method<&Fields::Refresh>(u"Refresh")
            .method<&Fields::Resync>(u"Resync", {kap::Parameter(u"ResyncValues").otherwise(2)})
            .method<&Fields::Update>(u"Update")
            .build(u"Item");
    return description;
}

std::int32_t Fields::Count() const {
    return static_cast<std::int32_t>(fields_.size());
}

Ref<Field> Fields::Item(const Variant& index) const {
    return at(positionOf(index));
}

const Ref<Field>& Fields::at(std::size_t position) const {
    Ref<Field>& field = fields_[position];
    if (!field) {
        field = make<Field>(cursor_, position);
    }
    return field;
}

std::vector<Variant> Fields::elements() {
    std::vector<Variant> all;
    all.reserve(fields_.size());
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        all.emplace_back(at(i));
    }
    return all;
}

std::size_t Fields::positionOf(const Variant& index) const {
    return elementAt(index, fields_.size(), [&](const String& name) {
        return fields_.empty() ? std::nullopt : cursor_->find(name);
    });
}

void Fields::requireUnopened() const {
    if (open_ || connected_) {
        fail::illegalOperation();
    }
}

void Fields::Append(const String& name, DataTypeEnum type, std::int32_t definedSize,
                    FieldAttributeEnum attributes, const Variant& fieldValue) {
    requireUnopened();
    if (name.empty() || !fieldValue.isMissing()) {
        fail::invalidArgument();
    }
    if (cursor_->find(name)) {
        fail::objectInCollection();
    }
    ColumnInfo column;
    column.name = name.utf8();
    column.baseColumn = column.name;  // of no table, but it can be written
    describeByHand(column, type, definedSize,
                   attributesGiven(static_cast<std::int32_t>(attributes)));
    cursor_->table().addColumn(std::move(column));
    fields_.emplace_back();
}

void Fields::Update() {
    fail::notAvailable(
        u"The columns of a recordset are not updated by themselves: use Recordset.Update.");
}

void Fields::CancelUpdate() {
    fail::notAvailable(
        u"The columns of a recordset are not updated by themselves: use Recordset.CancelUpdate.");
}

void Fields::Resync(ResyncEnum /*resyncValues*/) {
    fail::notAvailable(
        u"The columns of a recordset are not read by themselves: use Recordset.Resync.");
}

void Fields::Delete(const Variant& index) {
    requireUnopened();
    const std::size_t position = positionOf(index);
    cursor_->table().removeColumn(position);
    if (fields_[position]) {
        fields_[position]->follow({}, 0);
    }
    fields_.erase(fields_.begin() + static_cast<std::ptrdiff_t>(position));
    followFrom(position);
}

}  // namespace kap::ado
