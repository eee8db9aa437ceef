#include <utility>

#include <kaputil/ado/field.hpp>
#include <kaputil/frame/convert.hpp>

#include "ado/failures.hpp"
#include "ado/row_cursor.hpp"
#include "frame/class_builder.hpp"

namespace kap::ado {

Fields::Fields(std::shared_ptr<RowCursor> cursor) : cursor_(std::move(cursor)) {
    if (cursor_ == nullptr) {
        return;  // of a closed recordset: none
    }
    fields_.reserve(cursor_->columns().size());
    for (std::size_t i = 0; i < cursor_->columns().size(); ++i) {
        fields_.push_back(make<Field>(cursor_, i));
    }
}

const ClassDescription& Fields::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Fields>(u"Fields", u"", u"")
            .summary(u"The columns of a recordset, in the order of the query.")
            .property<&Fields::Count>(u"Count", u"How many there are.")
            .property<&Fields::Item>(u"Item", u"A field by position from 0 or by name.", {u"Index"})
            .build(u"Item");
    return description;
}

std::int32_t Fields::Count() const {
    return static_cast<std::int32_t>(fields_.size());
}

Ref<Field> Fields::Item(const Variant& index) const {
    if (index.isString()) {
        const auto found = cursor_ == nullptr ? std::nullopt : cursor_->find(index.as<String>());
        if (!found) {
            fail::itemNotFound();
        }
        return fields_[*found];
    }
    if (index.isObject()) {  // a field or text box that holds the name or position
        return Item(index.as<Ref<Object>>() ? index.as<Ref<Object>>()->defaultValue()
                                            : Variant::null());
    }
    const std::int32_t position = convert::toLong(index);
    if (position < 0 || static_cast<std::size_t>(position) >= fields_.size()) {
        fail::itemNotFound();
    }
    return fields_[static_cast<std::size_t>(position)];
}

}  // namespace kap::ado
