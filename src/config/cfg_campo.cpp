#include <kaputil/config/cfg_campo.hpp>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/enumerations.hpp>

#include "automation/class_builder.hpp"
#include "config/field_row.hpp"
#include "config/path.hpp"

namespace kap {
namespace {

const String kNotSet = u"<non definito>";
const String kNone = u"<nessuno>";

bool contains(const String& text, const String& part) {
    return text.view().find(part.view()) != std::u16string_view::npos;
}

// The text as it is stored when the list allows it. Deliberately loose: the text may stand anywhere
// in the list, and lists are written with that in mind.
String ControllaConsentito(const String& text, const String& list, const String& field) {
    if (list.empty()) {
        return text;
    }
    if (text == kNone) {
        return {};
    }
    if (contains(list + u"|", text) || contains(u"|" + list, text)) {
        return text;
    }
    throw AutomationError(errors::kObjectError,
                          u"Valore " + text + u" non consentito su CFG " + field);
}

}  // namespace

const ClassDescription& CFG_Campo::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFG_Campo>(u"CFG_Campo", u"a4169f44-3a5d-48b9-b45d-da6731b9f27a",
                                u"9cf3faee-d251-4c33-8601-1139e8470dce")
            .property<&CFG_Campo::Parent, &CFG_Campo::setParent>(u"Parent")
            .property<&CFG_Campo::Obbligatorio, &CFG_Campo::setObbligatorio>(u"Obbligatorio")
            .property<&CFG_Campo::Nome, &CFG_Campo::setNome>(u"Nome")
            .property<&CFG_Campo::Gruppo, &CFG_Campo::setGruppo>(u"Gruppo")
            .property<&CFG_Campo::ValoreDefault, &CFG_Campo::setValoreDefault>(u"ValoreDefault")
            .property<&CFG_Campo::Valore, &CFG_Campo::setValore>(u"Valore")
            .property<&CFG_Campo::FlagDefault, &CFG_Campo::setFlagDefault>(u"FlagDefault")
            .property<&CFG_Campo::Flag, &CFG_Campo::setFlag>(u"Flag")
            .property<&CFG_Campo::Note, &CFG_Campo::setNote>(u"Note")
            .property<&CFG_Campo::ValoriConsentiti, &CFG_Campo::setValoriConsentiti>(
                u"ValoriConsentiti")
            .property<&CFG_Campo::FlagConsentiti, &CFG_Campo::setFlagConsentiti>(u"FlagConsentiti")
            .property<&CFG_Campo::Personalizzato>(u"Personalizzato")
            .method<&CFG_Campo::Update>(u"Update")
            .method<&CFG_Campo::ResetDefault>(u"ResetDefault", {u"ResetTabella"})
            .property<&CFG_Campo::Path>(u"Path")
            .build();
    return description;
}

String CFG_Campo::Valore() {
    if (value_ == kNotSet) {
        value_ = defaultValue_;
    }
    return value_;
}

void CFG_Campo::setValore(const String& value) {
    value_ = ControllaConsentito(value, allowedValues_, name_);
    isDefault_ = false;
}

String CFG_Campo::Flag() {
    if (flag_ == kNotSet) {
        flag_ = defaultFlag_;
    }
    return flag_;
}

void CFG_Campo::setFlag(const String& value) {
    flag_ = ControllaConsentito(value, allowedFlags_, name_);
    isDefault_ = false;
}

void CFG_Campo::Update() {
    const config::FieldRow row(Path(), *this);
    const auto rows = make<ado::Recordset>();
    rows->Open(row.selectStatement(), row.connection(), ado::CursorTypeEnum::adOpenKeyset,
               ado::LockTypeEnum::adLockOptimistic);
    if (rows->Eof()) {
        rows->AddNew();
    }
    const auto fields = rows->Fields();
    fields->Item(u"Gruppo")->setValue(row.part(0));
    fields->Item(u"Applicazione")->setValue(row.part(1));
    fields->Item(u"Procedura")->setValue(row.part(2));
    fields->Item(u"Modulo")->setValue(row.part(3));
    fields->Item(u"Campo")->setValue(row.part(4));
    fields->Item(u"Valore")->setValue(Valore());
    fields->Item(u"Flag")->setValue(Flag());
    rows->Update();
    rows->Close();
}

void CFG_Campo::ResetDefault(bool resetTabella) {
    if (resetTabella) {
        config::FieldRow(Path(), *this).remove();
    }
    setValore(defaultValue_ == kNone ? String() : defaultValue_);
    setFlag(defaultFlag_);
    isDefault_ = true;
    group_ = {};
}

String CFG_Campo::Path() const {
    return config::CalcolaPath(name_, Parent());
}

void CFG_Campo::collectLinks(std::vector<LinkedObject*>& links) const {
    links.push_back(parent_.pointer());
}

}  // namespace kap
