#include <kaputil/config/cfg_campi.hpp>

#include <kaputil/config/cfg_campo.hpp>

#include "config/inner_collection.hpp"

namespace kap {

const ClassDescription& CFG_Campi::classDescription() {
    static const ClassDescription description = config::describeInnerCollection<CFG_Campi>(
        u"CFG_Campi", u"e20b2bad-f777-4633-ab8e-5e9b00307ad2",
        u"d83a0c09-6a68-435b-9557-f8485cc61f84");
    return description;
}

Ref<CFG_Campo> CFG_Campi::Add(const String& nome) {
    auto element = make<CFG_Campo>();
    element->setNome(nome);
    append(*element, nome);
    element->setParent(Ref<CFG_Campi>(this));
    return element;
}

Ref<CFG_Campo> CFG_Campi::Item(const String& nome) const {
    return element<CFG_Campo>(nome);
}

}  // namespace kap
