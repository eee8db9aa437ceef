#pragma once

#include <kaputil/config/cfg_collection.hpp>

#include "automation/class_builder.hpp"

namespace kap::config {

// The members of a collection below the root: the same in the same order for each level.
template <class Class>
ClassDescription describeInnerCollection(const char16_t* name, const char16_t* classId,
                                         const char16_t* interfaceId) {
    return ClassBuilder<Class>(name, classId, interfaceId)
        .template property<&Class::Parent, &Class::setParent>(u"Parent")
        .template method<&Class::Add>(u"Add", {u"Nome"})
        .template method<&Class::Delete>(u"Delete", {u"Nome"})
        .template property<&Class::Item>(u"Item", {u"Nome"})
        .template property<&Class::Collezione>(u"Collezione")
        .template property<&Class::Count>(u"Count")
        .build(u"Item");
}

}  // namespace kap::config
