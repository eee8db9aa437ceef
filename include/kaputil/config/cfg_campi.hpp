#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_collection.hpp>

namespace kap {

class CFG_Campo;

// The fields of a module, by name.
class KAPUTIL_EXPORT CFG_Campi final : public InnerCfgCollection {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Appends a new field. Raises 457 when the name, in any case, is there already.
    Ref<CFG_Campo> Add(const String& nome);

    // The field of this name, ignoring case. Raises -2147221503 with the description
    // "CFG   PATH\NAME  non  trovato" when there is none, and 91 instead when the collection has no
    // `Parent` to tell its path.
    [[nodiscard]] Ref<CFG_Campo> Item(const String& nome) const;
};

}  // namespace kap
