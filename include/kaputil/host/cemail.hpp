#pragma once

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>

namespace kap {

// A customer's contact in the user's mail client, and messages for the user to send.
//
//     auto contact = kap::make<kap::CEMail>();
//     contact->setEMail(u"info@rossi.it");
//     contact->setCodAna(u"C00012");
//     contact->setRagioneSociale(u"Ferramenta Rossi");
//     contact->Update();
//
// The mail client is whatever answers to the name "Outlook.Application" (see `registerFactory` in
// <kaputil/platform/creatable_objects.hpp>). Where nobody registered one, contacts are kept as
// vCards, one file each, in `contacts` below the user's data folder
// (<kaputil/platform/folders.hpp>) and messages as drafts in `drafts` there.
//
// A folder of contacts is named by the path from its store, with "/" between: "Personale/Clienti".
// "°°°" and the empty text stand for the client's own folder of contacts.
class KAPUTIL_EXPORT CEMail final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // What went wrong; made on first use.
    [[nodiscard]] Ref<CErrore> IClassi_Errore();

    // The contact, as texts; all are empty at first.
    [[nodiscard]] Variant EMail() { return eMail_; }
    void setEMail(const Variant& value);
    [[nodiscard]] Variant Nome() { return nome_; }
    void setNome(const Variant& value);
    [[nodiscard]] Variant Cognome() { return cognome_; }
    void setCognome(const Variant& value);
    [[nodiscard]] Variant RagioneSociale() { return ragioneSociale_; }
    void setRagioneSociale(const Variant& value);
    [[nodiscard]] Variant Indirizzo() { return indirizzo_; }
    void setIndirizzo(const Variant& value);
    [[nodiscard]] Variant Telefono() { return telefono_; }
    void setTelefono(const Variant& value);
    // The customer's code in the program.
    [[nodiscard]] Variant CodAna() { return codAna_; }
    void setCodAna(const Variant& value);
    // The name the contact is filed and shown by.
    [[nodiscard]] Variant VisualizzaCome() { return visualizzaCome_; }
    void setVisualizzaCome(const Variant& value);
    // What the contact is found by; empty, it becomes `EMail` in every operation.
    [[nodiscard]] Variant Chiave() { return chiave_; }
    void setChiave(const Variant& value);

    // Changes the folder's contact that has the key, or makes it. `EMail` and `CodAna` must be
    // there, and either first name and surname or the company's name, of which an empty
    // `VisualizzaCome` is made. True when the error number is 0 afterwards; the client's errors are
    // told by `IClassi_Errore`, nothing is raised.
    Variant Update(ByRef<String> sFolderName = u"°°°");

    // Removes the folder's contact that has the key; none is no error. Result and errors as of
    // `Update`.
    Variant Delete(ByRef<String> sFolderName = u"°°°");

    // How many items the folder has; Empty after an error, which `IClassi_Errore` tells behind what
    // it told before.
    Variant Count(ByRef<String> sFolderName = u"°°°");

    // Makes a message and shows it for the user to send. A plain body wins over one in HTML;
    // attachments are paths with commas between. Errors of the mail client pass through.
    void InviaMail(ByRef<String> sDestinatario, ByRef<String> sOggetto, ByRef<String> sBody = u"",
                   ByRef<String> sBodyHtml = u"", ByRef<String> sAllegato = u"");

private:
    bool completeForUpdate();
    void completeKey();
    void writeContact(const String& folderName);
    void assignFields(const Variant& contact) const;
    void report(const String& sentence, const String& description);
    [[nodiscard]] bool succeeded();

    String eMail_;
    String nome_;
    String cognome_;
    String ragioneSociale_;
    String indirizzo_;
    String telefono_;
    String codAna_;
    String visualizzaCome_;
    String chiave_;
    Ref<CErrore> errore_;
};

namespace host {

// A message made and shown by a new `CEMail`.
KAPUTIL_EXPORT void kapInviaEMail(const String& sDestinatario, const String& sOggetto,
                                  const String& sBody = {}, const String& sBodyHtml = {},
                                  const String& sFileAllegato = {});

}  // namespace host
}  // namespace kap
