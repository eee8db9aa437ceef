#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_collection.hpp>

namespace kap {

class CFG_Procedura;

// The procedures of an application, by name.
class KAPUTIL_EXPORT CFG_Procedure final : public InnerCfgCollection {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Appends a new procedure. Raises 457 when the name, in any case, is there already.
    Ref<CFG_Procedura> Add(const String& nome);

    // The procedure of this name, ignoring case. Raises -2147221503 with the description
    // "CFG   PATH\NAME  non  trovato" when there is none, and 91 instead when the collection has no
    // `Parent` to tell its path.
    [[nodiscard]] Ref<CFG_Procedura> Item(const String& nome) const;
};

}  // namespace kap
