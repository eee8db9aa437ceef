#include <kaputil/config/cfg_procedura.hpp>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "config/path.hpp"

namespace kap {

CFG_Procedura::CFG_Procedura() {
    modules_.create(*this).setParentOfNew(*this);
}

const ClassDescription& CFG_Procedura::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFG_Procedura>(u"CFG_Procedura", u"da5fdcb9-22b5-40a9-868e-c536c872ce49",
                                    u"f9899346-9239-442d-bec8-9975c40c39f4")
            .field<&CFG_Procedura::Nome, &CFG_Procedura::setNome>(u"Nome")
            .field<&CFG_Procedura::Moduli, &CFG_Procedura::setModuli>(u"Moduli")
            .property<&CFG_Procedura::NomeMenu, &CFG_Procedura::setNomeMenu>(u"NomeMenu")
            .property<&CFG_Procedura::Parent, &CFG_Procedura::setParent>(u"Parent")
            .property<&CFG_Procedura::Path>(u"Path")
            .build(u"Moduli");
    return description;
}

void CFG_Procedura::setNomeMenu(const String& /*value*/) {
    // Deliberate: the assignment has always called itself without end, and programs have learnt to
    // do without.
    throw AutomationError(errors::kOutOfStack);
}

Ref<Object> CFG_Procedura::Parent() const {
    const Variant parent = parent_.get();
    return parent.isObject() ? parent.as<Ref<Object>>() : Ref<Object>();
}

String CFG_Procedura::Path() const {
    return config::CalcolaPath(name_, Parent());
}

void CFG_Procedura::collectLinks(std::vector<LinkedObject*>& links) const {
    links.push_back(modules_.pointer());
    links.push_back(parent_.linked());
}

}  // namespace kap
