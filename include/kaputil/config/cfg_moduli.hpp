#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_collection.hpp>

namespace kap {

class CFG_Modulo;

// The modules of a procedure, by name.
class KAPUTIL_EXPORT CFG_Moduli final : public InnerCfgCollection {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Appends a new module. Raises 457 when the name, in any case, is there already.
    Ref<CFG_Modulo> Add(const String& nome);

    // The module of this name, ignoring case. Raises -2147221503 with the description
    // "CFG   PATH\NAME  non  trovato" when there is none, and 91 instead when the collection has no
    // `Parent` to tell its path.
    [[nodiscard]] Ref<CFG_Modulo> Item(const String& nome) const;
};

}  // namespace kap
