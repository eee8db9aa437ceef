#include <kaputil/config/cfg_modulo.hpp>

#include "automation/class_builder.hpp"
#include "config/path.hpp"

namespace kap {

CFG_Modulo::CFG_Modulo() {
    fields_.create(*this).setParentOfNew(*this);
}

const ClassDescription& CFG_Modulo::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFG_Modulo>(u"CFG_Modulo", u"9c372610-0bee-45bf-b14d-921dea05c6f2",
                                 u"bf7b3016-c968-4b36-afc2-9407aa5cf7ca")
            .field<&CFG_Modulo::Nome, &CFG_Modulo::setNome>(u"Nome")
            .field<&CFG_Modulo::Campi, &CFG_Modulo::setCampi>(u"Campi")
            .property<&CFG_Modulo::Parent, &CFG_Modulo::setParent>(u"Parent")
            .property<&CFG_Modulo::Path>(u"Path")
            .build(u"Campi");
    return description;
}

String CFG_Modulo::Path() const {
    return config::CalcolaPath(name_, Parent());
}

void CFG_Modulo::collectLinks(std::vector<LinkedObject*>& links) const {
    links.push_back(fields_.pointer());
    links.push_back(parent_.pointer());
}

}  // namespace kap
