#pragma once

#include <kaputil/config/cfg_collection.hpp>

#include "automation/class_builder.hpp"

namespace kap::config {

// The members of a collection below the root: the same in the same order for each level.
template <class Class>
ClassDescription describeInnerCollection(const char16_t* name, const char16_t* classId,
                                         const char16_t* interfaceId, const char16_t* summary) {
    return ClassBuilder<Class>(name, classId, interfaceId)
        .summary(summary)
        .template property<&Class::Parent, &Class::setParent>(
            u"Parent", u"The element that owns the collection.")
        .template method<&Class::Add>(u"Add", {u"Nome"}, u"Appends a new element of a name.")
        .raises(u"457 when the name is there already.")
        .template method<&Class::Delete>(u"Delete", {u"Nome"}, u"Takes an element out.")
        .raises(u"5 when the name is not there.")
        .template property<&Class::Item>(u"Item", u"The element of a name, ignoring case.",
                                         {u"Nome"})
        .raises(
            u"-2147221503 when the name is not there; 91 instead when the collection has no "
            u"parent.")
        .template property<&Class::Collezione>(
            u"Collezione", u"The keyed collection itself, which enumerates the elements.")
        .template property<&Class::Count>(u"Count", u"The number of elements.")
        .raises(u"6 beyond 32767.")
        .build(u"Item");
}

}  // namespace kap::config
