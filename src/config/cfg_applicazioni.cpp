#include <kaputil/config/cfg_applicazioni.hpp>

#include <kaputil/config/cfg_applicazione.hpp>

#include "ado/connection_carrier.hpp"
#include "automation/class_builder.hpp"

namespace kap {

const ClassDescription& CFG_Applicazioni::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFG_Applicazioni>(u"CFG_Applicazioni", u"a1493e40-ee46-4833-8ef1-58e3b80d0cef",
                                       u"cee9d7b3-31a7-492b-8740-f94992332c8a")
            .field<&CFG_Applicazioni::Gruppo, &CFG_Applicazioni::setGruppo>(u"Gruppo")
            .property<&CFG_Applicazioni::NomeTabella, &CFG_Applicazioni::setNomeTabella>(
                u"NomeTabella")
            .property<&CFG_Applicazioni::ActiveConnection, &CFG_Applicazioni::setActiveConnection>(
                u"ActiveConnection")
            .property<&CFG_Applicazioni::Path>(u"Path")
            .method<&CFG_Applicazioni::Add>(u"Add", {u"Item"})
            .method<&CFG_Applicazioni::Delete>(u"Delete", {u"Nome"})
            .property<&CFG_Applicazioni::Item>(u"Item", {u"Nome"})
            .property<&CFG_Applicazioni::Collezione>(u"Collezione")
            .property<&CFG_Applicazioni::Count>(u"Count")
            .method<&CFG_Applicazioni::CaricaCfgPersonalizzati>(u"CaricaCfgPersonalizzati")
            .build(u"Item");
    return description;
}

Ref<CFG_Applicazione> CFG_Applicazioni::Add(const Variant& item) {
    if (item.isObject()) {
        if (auto* given = dynamic_cast<CFG_Applicazione*>(item.as<Ref<Object>>().get())) {
            Ref<CFG_Applicazione> adopted(given);
            // First, deliberately: an application whose name is there already has this parent, too.
            adopted->setParent(Ref<CFG_Applicazioni>(this));
            append(*adopted, adopted->Nome());
            return adopted;
        }
    }
    auto application = make<CFG_Applicazione>();
    application->setNome(convert::toString(item));
    append(*application, application->Nome());
    application->setParent(Ref<CFG_Applicazioni>(this));
    return application;
}

Ref<CFG_Applicazione> CFG_Applicazioni::Item(const String& nome) const {
    return element<CFG_Applicazione>(nome);
}

}  // namespace kap
