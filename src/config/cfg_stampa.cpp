#include <kaputil/config/cfg_stampa.hpp>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"

namespace kap {

CFG_Stampa::CFG_Stampa() : attributes_(make<CProprieta>()) {}

const ClassDescription& CFG_Stampa::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFG_Stampa>(u"CFG_Stampa", u"751365ef-c473-43b7-8dc1-8e404c5fb3a2",
                                 u"1286c8fd-6205-4973-a472-388401bca382")
            .method<&CFG_Stampa::InitDefault>(u"InitDefault",
                                              {Parameter(u"vNewValue").byReference()})
            .method<&CFG_Stampa::Init>(u"Init", {Parameter(u"vNewValue").byReference()})
            .property<&CFG_Stampa::CFGCampo, &CFG_Stampa::setCFGCampo>(u"CFGCampo")
            .property<&CFG_Stampa::Nome>(u"Nome")
            .property<&CFG_Stampa::AddRunTime>(u"AddRunTime")
            .property<&CFG_Stampa::Titolo, &CFG_Stampa::setTitolo>(u"Titolo")
            .property<&CFG_Stampa::Flag, &CFG_Stampa::setFlag>(u"Flag")
            .property<&CFG_Stampa::EMail, &CFG_Stampa::setEMail>(u"EMail")
            .property<&CFG_Stampa::EsportaReport, &CFG_Stampa::setEsportaReport>(u"EsportaReport")
            .property<&CFG_Stampa::InElenco, &CFG_Stampa::setInElenco>(u"InElenco")
            .property<&CFG_Stampa::Sigla, &CFG_Stampa::setSigla>(u"Sigla")
            .property<&CFG_Stampa::CodiceBreve, &CFG_Stampa::setCodiceBreve>(u"CodiceBreve")
            .property<&CFG_Stampa::ClasseEsterna, &CFG_Stampa::setClasseEsterna>(u"ClasseEsterna")
            .property<&CFG_Stampa::Stampante, &CFG_Stampa::setStampante>(u"Stampante")
            .property<&CFG_Stampa::Layout, &CFG_Stampa::setLayout>(u"Layout")
            .property<&CFG_Stampa::Vidsta, &CFG_Stampa::setVidsta>(u"Vidsta")
            .property<&CFG_Stampa::Copie, &CFG_Stampa::setCopie>(u"Copie")
            .property<&CFG_Stampa::OrigineCarta, &CFG_Stampa::setOrigineCarta>(u"OrigineCarta")
            .property<&CFG_Stampa::Note, &CFG_Stampa::setNote>(u"Note")
            .build();
    return description;
}

void CFG_Stampa::InitDefault(const Ref<CFG_Campo>& vNewValue) {
    field_ = vNewValue;
    attributes_->Scrivi(u"", u"");
    defaultMode_ = true;
    setVidsta(u"V");
    setCopie(u"1");
}

void CFG_Stampa::Init(const Ref<CFG_Campo>& vNewValue) {
    field_ = vNewValue;
    attributes_->Scrivi(u"", CFGCampo()->Valore());
    defaultMode_ = false;
}

Ref<CFG_Campo> CFG_Stampa::CFGCampo() {
    if (!field_) {
        field_ = make<CFG_Campo>();
    }
    return field_;
}

void CFG_Stampa::setCFGCampo(const Ref<CFG_Campo>& /*value*/) {
    // Deliberate: it has always assigned to the default member of the attached field, and a field
    // has none. Programs attach with Init.
    static_cast<void>(CFGCampo());
    throw AutomationError(errors::kMemberNotFound);
}

String CFG_Stampa::Nome() {
    return CFGCampo()->Nome();
}

bool CFG_Stampa::AddRunTime() const {
    return !attributes_->Leggi(u"ADD_RUNTIME").isNull();
}

String CFG_Stampa::attribute(const char16_t* name, const char16_t* otherwise) const {
    const Variant value = attributes_->Leggi(name);
    const String text = value.isNull() ? String() : convert::toString(value);
    return text.empty() ? String(otherwise) : text;
}

void CFG_Stampa::setAttribute(const char16_t* name, const String& value) {
    attributes_->Scrivi(name, value);
    SalvaProprieta();
}

void CFG_Stampa::SalvaProprieta() {
    const String all = convert::toString(attributes_->Leggi());
    if (defaultMode_) {
        CFGCampo()->setValoreDefault(all);
    } else {
        CFGCampo()->setValore(all);
    }
}

String CFG_Stampa::Titolo() const {
    return attribute(u"Titolo", u"");
}

void CFG_Stampa::setTitolo(const String& value) {
    setAttribute(u"Titolo", value);
}

String CFG_Stampa::Flag() {
    return defaultMode_ ? CFGCampo()->FlagDefault() : CFGCampo()->Flag();
}

void CFG_Stampa::setFlag(const String& value) {
    if (defaultMode_) {
        CFGCampo()->setFlagDefault(value);
    } else {
        CFGCampo()->setFlag(value);
    }
}

String CFG_Stampa::EMail() const {
    return attribute(u"Email", u"0");
}

void CFG_Stampa::setEMail(const String& value) {
    setAttribute(u"Email", value);
}

String CFG_Stampa::EsportaReport() const {
    return attribute(u"EsportaReport", u"0");
}

void CFG_Stampa::setEsportaReport(const String& value) {
    setAttribute(u"EsportaReport", value);
}

bool CFG_Stampa::InElenco() const {
    return attribute(u"InElenco", u"1") == String(u"1");
}

void CFG_Stampa::setInElenco(bool value) {
    setAttribute(u"InElenco", value ? u"1" : u"0");
}

String CFG_Stampa::Sigla() const {
    return attribute(u"Sigla", u"");
}

void CFG_Stampa::setSigla(const String& value) {
    setAttribute(u"Sigla", value);
}

String CFG_Stampa::CodiceBreve() const {
    return attribute(u"CodiceBreve", u"");
}

void CFG_Stampa::setCodiceBreve(const String& value) {
    setAttribute(u"CodiceBreve", value);
}

String CFG_Stampa::ClasseEsterna() const {
    return attribute(u"ClasseEsterna", u"");
}

void CFG_Stampa::setClasseEsterna(const String& value) {
    setAttribute(u"ClasseEsterna", value);
}

String CFG_Stampa::Stampante() const {
    return attribute(u"Stampante", u"");
}

void CFG_Stampa::setStampante(const String& value) {
    setAttribute(u"Stampante", value);
}

String CFG_Stampa::Layout() const {
    return attribute(u"Layout", u"");
}

void CFG_Stampa::setLayout(const String& value) {
    setAttribute(u"Layout", value);
}

String CFG_Stampa::Vidsta() const {
    return attribute(u"Vidsta", u"V");
}

void CFG_Stampa::setVidsta(const String& value) {
    setAttribute(u"Vidsta", value);
}

String CFG_Stampa::Copie() const {
    return attribute(u"Copie", u"1");
}

void CFG_Stampa::setCopie(const String& value) {
    setAttribute(u"Copie", value);
}

String CFG_Stampa::OrigineCarta() const {
    return attribute(u"OrigineCarta", u"");
}

void CFG_Stampa::setOrigineCarta(const String& value) {
    setAttribute(u"OrigineCarta", value);
}

String CFG_Stampa::Note() {
    return CFGCampo()->Note();
}

void CFG_Stampa::setNote(const String& value) {
    CFGCampo()->setNote(value);
}

}  // namespace kap
