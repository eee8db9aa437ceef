#include <kaputil/config/cfg_applicazione.hpp>

#include "automation/class_builder.hpp"
#include "config/path.hpp"

namespace kap {

CFG_Applicazione::CFG_Applicazione() {
    procedures_.create(*this).setParentOfNew(*this);
}

const ClassDescription& CFG_Applicazione::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFG_Applicazione>(u"CFG_Applicazione", u"0a766aae-60de-4642-bc23-1824483c3a3a",
                                       u"e698acc0-57a2-4c8a-916b-907e57f58f76")
            .field<&CFG_Applicazione::Nome, &CFG_Applicazione::setNome>(u"Nome")
            .field<&CFG_Applicazione::Procedure, &CFG_Applicazione::setProcedure>(u"Procedure")
            .property<&CFG_Applicazione::Parent, &CFG_Applicazione::setParent>(u"Parent")
            .property<&CFG_Applicazione::Path>(u"Path")
            .build(u"Procedure");
    return description;
}

String CFG_Applicazione::Path() const {
    return config::CalcolaPath(name_, Parent());
}

void CFG_Applicazione::collectLinks(std::vector<LinkedObject*>& links) const {
    links.push_back(procedures_.pointer());
    links.push_back(parent_.pointer());
}

}  // namespace kap
