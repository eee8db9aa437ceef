#include <kaputil/config/cfg_moduli.hpp>

#include <kaputil/config/cfg_modulo.hpp>

#include "config/inner_collection.hpp"

namespace kap {

const ClassDescription& CFG_Moduli::classDescription() {
    static const ClassDescription description = config::describeInnerCollection<CFG_Moduli>(
        u"CFG_Moduli", u"c3381f15-199b-4b0b-8249-307c7495cbfd",
        u"1f519c02-76a0-438d-86e9-075d9d3384aa");
    return description;
}

Ref<CFG_Modulo> CFG_Moduli::Add(const String& nome) {
    auto element = make<CFG_Modulo>();
    element->setNome(nome);
    append(*element, nome);
    element->setParent(Ref<CFG_Moduli>(this));
    return element;
}

Ref<CFG_Modulo> CFG_Moduli::Item(const String& nome) const {
    return element<CFG_Modulo>(nome);
}

}  // namespace kap
