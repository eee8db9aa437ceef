#pragma once

#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_campi.hpp>

namespace kap {

// One setting of a module: a value and a flag, each with its default and what it may be.
//
// Two texts have a meaning of their own, in exactly this form: "<non definito>" is a value or flag
// that was never set, which reads as its default; "<nessuno>" is a default value that there is not.
class KAPUTIL_EXPORT CFG_Campo final : public LinkedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The collection that it was added to, or an unset object.
    [[nodiscard]] Ref<CFG_Campi> Parent() const { return parent_.get(); }
    void setParent(const Ref<CFG_Campi>& value) { parent_.set(*this, value); }

    // For the program; nothing here acts on it.
    [[nodiscard]] bool Obbligatorio() const { return mandatory_; }
    void setObbligatorio(bool value) { mandatory_ = value; }

    // The name. The collection goes on finding the field by the name that it was added with.
    [[nodiscard]] String Nome() const { return name_; }
    void setNome(const String& value) { name_ = value; }

    // The group whose row gave the field its value, "DEFAULT" or that of the root; empty while the
    // value comes from no row.
    [[nodiscard]] String Gruppo() const { return group_; }
    void setGruppo(const String& value) { group_ = value; }

    // "<nessuno>" in a new field.
    [[nodiscard]] String ValoreDefault() const { return defaultValue_; }
    void setValoreDefault(const String& value) { defaultValue_ = value; }

    // The value. Reading one that was never set makes it the default, for good. An assignment makes
    // the field customised; with a list of values "<nessuno>" stands for the empty text. Raises
    // -2147221503, "Valore VALUE non consentito su CFG NAME", for a value that is not allowed, and
    // leaves the field as it was.
    [[nodiscard]] String Valore();
    void setValore(const String& value);

    // The default flag is assigned here, but what is read is the flag as it is stored:
    // "<non definito>" until one was assigned or `Flag` was read.
    [[nodiscard]] String FlagDefault() const { return flag_; }
    void setFlagDefault(const String& value) { defaultFlag_ = value; }

    // The flag, in every respect as `Valore`; its default is "0" in a new field.
    [[nodiscard]] String Flag();
    void setFlag(const String& value);

    [[nodiscard]] String Note() const { return note_; }
    void setNote(const String& value) { note_ = value; }

    // What value and flag may be, with "|" between; empty is anything. The check is loose: any
    // part of the list is allowed, as "0|1" itself or "|" are by "0|1". What the field holds is not
    // checked again. "" and "0|1" in a new field.
    [[nodiscard]] String ValoriConsentiti() const { return allowedValues_; }
    void setValoriConsentiti(const String& value) { allowedValues_ = value; }
    [[nodiscard]] String FlagConsentiti() const { return allowedFlags_; }
    void setFlagConsentiti(const String& value) { allowedFlags_ = value; }

    // Whether value or flag were assigned since the field was made or reset.
    [[nodiscard]] bool Personalizzato() const { return !isDefault_; }

    // Writes value and flag into the row of the root's group in the root's table, which is added
    // when it is missing. Raises 91 when the field has no place in a tree, and what the database
    // raises; names stand in the statement as they are, so that an apostrophe in one makes it fail.
    void Update();

    // Back to the defaults, after deleting the field's row of the root's group when `resetTabella`
    // says so. A default value that there is not becomes the empty text. Raises -2147221503 when a
    // default is not allowed, with the row gone and the value and the mark as far as they were set,
    // and what `Update` raises.
    void ResetDefault(bool resetTabella);

    // "GROUP\APPLICATION\PROCEDURE\MODULE\NAME", or what of it there is above.
    [[nodiscard]] String Path() const;

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    String name_ = u"<non definito>";
    String value_ = u"<non definito>";
    String flag_ = u"<non definito>";
    String note_;
    String allowedValues_;
    String allowedFlags_ = u"0|1";
    String group_;
    String defaultValue_ = u"<nessuno>";
    String defaultFlag_ = u"0";
    bool mandatory_ = false;
    bool isDefault_ = true;
    Link<CFG_Campi> parent_;
};

}  // namespace kap
