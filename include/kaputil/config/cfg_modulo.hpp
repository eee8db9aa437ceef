#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_campi.hpp>
#include <kaputil/config/cfg_moduli.hpp>

namespace kap {

// A module of a procedure: the one that holds fields.
class KAPUTIL_EXPORT CFG_Modulo final : public LinkedObject {
public:
    CFG_Modulo();
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The name. The collection goes on finding the module by the name that it was added with.
    [[nodiscard]] String Nome() const { return name_; }
    void setNome(const String& value) { name_ = value; }

    // Its fields, made with it. A collection given in their place keeps its own `Parent`.
    [[nodiscard]] Ref<CFG_Campi> Campi() const { return fields_.get(); }
    void setCampi(const Ref<CFG_Campi>& value) { fields_.set(*this, value); }

    // The collection that it was added to, or an unset object.
    [[nodiscard]] Ref<CFG_Moduli> Parent() const { return parent_.get(); }
    void setParent(const Ref<CFG_Moduli>& value) { parent_.set(*this, value); }

    // "GROUP\APPLICATION\PROCEDURE\NAME", or what of it there is above.
    [[nodiscard]] String Path() const;

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    String name_;
    Link<CFG_Campi> fields_;
    Link<CFG_Moduli> parent_;
};

}  // namespace kap
