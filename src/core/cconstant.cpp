#include <kaputil/core/cconstant.hpp>

#include "automation/class_builder.hpp"

namespace kap {

const ClassDescription& CConstant::classDescription() {
    static const ClassDescription kDescription =
        ClassBuilder<CConstant>(u"CConstant", u"9136269b-1192-4caf-ab2a-0b55b4cfdba3",
                                u"b1ca7f4e-f8d9-4c85-bee2-07900c2efd48")
            .instancing(Instancing::NotCreatable)
            .build();
    return kDescription;
}

}  // namespace kap
