#include <kaputil/config/cfg_procedure.hpp>

#include <kaputil/config/cfg_procedura.hpp>

#include "config/inner_collection.hpp"

namespace kap {

const ClassDescription& CFG_Procedure::classDescription() {
    static const ClassDescription description = config::describeInnerCollection<CFG_Procedure>(
        u"CFG_Procedure", u"1078f8da-19d3-4206-8eab-6a543fa334b1",
        u"496399e7-9b32-488b-be65-dca3df5610dd");
    return description;
}

Ref<CFG_Procedura> CFG_Procedure::Add(const String& nome) {
    auto element = make<CFG_Procedura>();
    element->setNome(nome);
    append(*element, nome);
    element->setParent(Ref<CFG_Procedure>(this));
    return element;
}

Ref<CFG_Procedura> CFG_Procedure::Item(const String& nome) const {
    return element<CFG_Procedura>(nome);
}

}  // namespace kap
