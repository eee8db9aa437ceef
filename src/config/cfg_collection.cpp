#include <kaputil/config/cfg_collection.hpp>

#include <limits>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "config/node_access.hpp"

namespace kap {

CfgCollection::CfgCollection() {
    elements_.create(*this);
}

std::int16_t CfgCollection::Count() const {
    const std::int32_t count = elements_.pointer()->Count();
    if (count > std::numeric_limits<std::int16_t>::max()) {
        throw AutomationError(errors::kOverflow);
    }
    return static_cast<std::int16_t>(count);
}

void CfgCollection::Delete(const String& nome) {
    elements_.pointer()->Remove(nome);
}

void CfgCollection::append(LinkedObject& element, const String& nome) {
    elements_.pointer()->Add(Variant(Ref<Object>(&element)), nome);
}

void CfgCollection::raiseNotFound(const String& nome) const {
    throw AutomationError(errors::kObjectError,
                          u"CFG   " + ownerPath() + u"\\" + nome + u"  non  trovato");
}

void CfgCollection::collectLinks(std::vector<LinkedObject*>& links) const {
    links.push_back(elements_.pointer());
}

Ref<Object> InnerCfgCollection::Parent() const {
    const Variant parent = parent_.get();
    return parent.isObject() ? parent.as<Ref<Object>>() : Ref<Object>();
}

void InnerCfgCollection::setParent(const Ref<Object>& value) {
    parent_.set(*this, Variant(value));
}

String InnerCfgCollection::ownerPath() const {
    return convert::toString(config::propertyOf(config::required(Parent()), u"Path"));
}

void InnerCfgCollection::collectLinks(std::vector<LinkedObject*>& links) const {
    CfgCollection::collectLinks(links);
    links.push_back(parent_.linked());
}

}  // namespace kap
