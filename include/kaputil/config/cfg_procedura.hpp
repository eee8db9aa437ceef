#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_moduli.hpp>

namespace kap {

// A procedure of an application.
class KAPUTIL_EXPORT CFG_Procedura final : public LinkedObject {
public:
    CFG_Procedura();
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The name. The collection goes on finding the procedure by the name that it was added with.
    [[nodiscard]] String Nome() const { return name_; }
    void setNome(const String& value) { name_ = value; }

    // Its modules, made with it. A collection given in their place keeps its own `Parent`.
    [[nodiscard]] Ref<CFG_Moduli> Moduli() const { return modules_.get(); }
    void setModuli(const Ref<CFG_Moduli>& value) { modules_.set(*this, value); }

    // Always empty: it cannot be set. Assigning it raises 28 (out of stack space).
    [[nodiscard]] String NomeMenu() const { return {}; }
    void setNomeMenu(const String& value);

    // The collection that it was added to, or an unset object.
    [[nodiscard]] Ref<Object> Parent() const;
    void setParent(const Ref<Object>& value) { parent_.set(*this, Variant(value)); }

    // "GROUP\APPLICATION\NAME", or what of it there is above.
    [[nodiscard]] String Path() const;

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    String name_;
    Link<CFG_Moduli> modules_;
    AnyLink parent_;
};

}  // namespace kap
