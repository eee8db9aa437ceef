#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_procedure.hpp>

namespace kap {

// An application of a configuration.
class KAPUTIL_EXPORT CFG_Applicazione final : public LinkedObject {
public:
    CFG_Applicazione();
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The name. The collection goes on finding the application by the name that it was added with.
    [[nodiscard]] String Nome() const { return name_; }
    void setNome(const String& value) { name_ = value; }

    // Its procedures, made with it. A collection given in their place keeps its own `Parent`.
    [[nodiscard]] Ref<CFG_Procedure> Procedure() const { return procedures_.get(); }
    void setProcedure(const Ref<CFG_Procedure>& value) { procedures_.set(*this, value); }

    // The root that it was added to, or an unset object.
    [[nodiscard]] Ref<CFG_Applicazioni> Parent() const { return parent_.get(); }
    void setParent(const Ref<CFG_Applicazioni>& value) { parent_.set(*this, value); }

    // "GROUP\NAME", or what of it there is above.
    [[nodiscard]] String Path() const;

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    String name_;
    Link<CFG_Procedure> procedures_;
    Link<CFG_Applicazioni> parent_;
};

}  // namespace kap
