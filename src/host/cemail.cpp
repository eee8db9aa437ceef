#include <kaputil/host/cemail.hpp>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/platform/creatable_objects.hpp>

#include "automation/class_builder.hpp"
#include "automation/late_bound.hpp"
#include "host/mail_folders.hpp"

namespace kap {
namespace {

constexpr std::int16_t kMessage = 0;
constexpr std::int16_t kContact = 2;

constexpr const char16_t* kMissing = u"Non Sono state inserite le proprietà obbligatorie";
constexpr const char16_t* kNotWritten =
    u"Non è stato possibile inserire il contatto controllare l'esistenza della cartella o "
    u"dell'oggetto a cui fa riferimento la Classe.";
constexpr const char16_t* kNotDone =
    u"Non è stato possibile eseguire l'operazione controllare l'esistenza della cartella o "
    u"dell'oggetto a cui fa riferimento la Classe.";

Variant mailClient() {
    return platform::createObject(u"Outlook.Application");
}

std::vector<String> piecesOf(const String& list) {
    std::vector<String> pieces;
    std::u16string_view rest = list;
    while (!list.empty()) {
        const std::size_t comma = rest.find(u',');
        pieces.emplace_back(rest.substr(0, comma));
        if (comma == std::u16string_view::npos) {
            break;
        }
        rest.remove_prefix(comma + 1);
    }
    return pieces;
}

}  // namespace

const ClassDescription& CEMail::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CEMail>(u"CEMail", u"6ad333e0-4535-4a1f-9d0c-6075308b5714",
                             u"dfb00056-0c60-4a29-a43a-4f09fee6c732")
            .property<&CEMail::IClassi_Errore>(u"IClassi_Errore")
            .property<&CEMail::EMail, &CEMail::setEMail>(u"EMail")
            .property<&CEMail::Nome, &CEMail::setNome>(u"Nome")
            .property<&CEMail::Cognome, &CEMail::setCognome>(u"Cognome")
            .property<&CEMail::RagioneSociale, &CEMail::setRagioneSociale>(u"RagioneSociale")
            .property<&CEMail::Indirizzo, &CEMail::setIndirizzo>(u"Indirizzo")
            .property<&CEMail::Telefono, &CEMail::setTelefono>(u"Telefono")
            .property<&CEMail::CodAna, &CEMail::setCodAna>(u"CodAna")
            .property<&CEMail::VisualizzaCome, &CEMail::setVisualizzaCome>(u"VisualizzaCome")
            .property<&CEMail::Chiave, &CEMail::setChiave>(u"Chiave")
            .method<&CEMail::Update>(u"Update", {Parameter(u"sFolderName").otherwise(u"°°°")})
            .method<&CEMail::Delete>(u"Delete", {Parameter(u"sFolderName").otherwise(u"°°°")})
            .method<&CEMail::Count>(u"Count", {Parameter(u"sFolderName").otherwise(u"°°°")})
            .method<&CEMail::InviaMail>(
                u"InviaMail",
                {u"sDestinatario", u"sOggetto", Parameter(u"sBody").otherwise(u""),
                 Parameter(u"sBodyHtml").otherwise(u""), Parameter(u"sAllegato").otherwise(u"")})
            .build();
    return description;
}

Ref<CErrore> CEMail::IClassi_Errore() {
    if (!errore_) {
        errore_ = make<CErrore>();
    }
    return errore_;
}

void CEMail::setEMail(const Variant& value) {
    eMail_ = convert::toString(value);
}

void CEMail::setNome(const Variant& value) {
    nome_ = convert::toString(value);
}

void CEMail::setCognome(const Variant& value) {
    cognome_ = convert::toString(value);
}

void CEMail::setRagioneSociale(const Variant& value) {
    ragioneSociale_ = convert::toString(value);
}

void CEMail::setIndirizzo(const Variant& value) {
    indirizzo_ = convert::toString(value);
}

void CEMail::setTelefono(const Variant& value) {
    telefono_ = convert::toString(value);
}

void CEMail::setCodAna(const Variant& value) {
    codAna_ = convert::toString(value);
}

void CEMail::setVisualizzaCome(const Variant& value) {
    visualizzaCome_ = convert::toString(value);
}

void CEMail::setChiave(const Variant& value) {
    chiave_ = convert::toString(value);
}

void CEMail::completeKey() {
    if (chiave_.empty()) {
        chiave_ = eMail_;
    }
}

// Whether all that a contact must have is there; a company's display name is made of it.
bool CEMail::completeForUpdate() {
    bool complete = !eMail_.empty();
    const bool isPerson = !nome_.empty() && !cognome_.empty();
    if (codAna_.empty()) {
        complete = false;
    } else if (!isPerson && ragioneSociale_.empty()) {
        complete = false;
    } else if (!isPerson && visualizzaCome_.empty()) {
        visualizzaCome_ = codAna_ + u" - " + ragioneSociale_;
    }
    completeKey();
    return complete;
}

void CEMail::report(const String& sentence, const String& description) {
    IClassi_Errore()->setNumero(std::int16_t{1});
    IClassi_Errore()->AddMessaggio(sentence + u"\r\n" + description);
}

bool CEMail::succeeded() {
    return convert::toDouble(IClassi_Errore()->Numero()) == 0;
}

void CEMail::assignFields(const Variant& contact) const {
    late::let(contact, u"CustomerID", chiave_);
    late::let(contact, u"Email1Address", eMail_);
    late::let(contact, u"FirstName", nome_);
    late::let(contact, u"LastName", cognome_);
    late::let(contact, u"CompanyName", ragioneSociale_);
    late::let(contact, u"HomeTelephoneNumber", telefono_);
    late::let(contact, u"HomeAddress", indirizzo_);
    late::let(contact, u"GovernmentIDNumber", codAna_);
    late::let(
        contact, u"FileAs",
        visualizzaCome_.empty() ? codAna_ + u" - " + cognome_ + u" " + nome_ : visualizzaCome_);
}

void CEMail::writeContact(const String& folderName) {
    const Variant client = mailClient();
    const Variant folder = host::contactFolder(client, folderName);
    Variant contact =
        late::call(late::get(folder, u"Items"), u"Find", {u"[CustomerID] = " + chiave_});
    const bool isNew = host::isNothing(contact);
    if (isNew) {
        contact = late::call(client, u"CreateItem", {kContact});
    }
    assignFields(contact);
    if (isNew) {
        late::call(contact, u"Move", {folder});
    }
    late::call(contact, u"Save");
}

Variant CEMail::Update(ByRef<String> sFolderName) {
    if (!completeForUpdate()) {
        // Deliberately not cleared before: earlier messages remain.
        IClassi_Errore()->setNumero(std::int16_t{1});
        IClassi_Errore()->AddMessaggio(kMissing);
        return succeeded();
    }
    IClassi_Errore()->Clear();
    try {
        writeContact(*sFolderName);
    } catch (const AutomationError& error) {
        report(kNotWritten, error.description());
    }
    return succeeded();
}

Variant CEMail::Delete(ByRef<String> sFolderName) {
    completeKey();
    IClassi_Errore()->Clear();
    try {
        const Variant folder = host::contactFolder(mailClient(), *sFolderName);
        // The blank in front is deliberate: mail clients have always been given this text.
        const Variant contact =
            late::call(late::get(folder, u"Items"), u"Find", {u" [CustomerID] = " + chiave_});
        if (!host::isNothing(contact)) {
            late::call(contact, u"Delete");
        }
    } catch (const AutomationError& error) {
        report(kNotDone, error.description());
    }
    return succeeded();
}

Variant CEMail::Count(ByRef<String> sFolderName) {
    try {
        return host::countItems(*sFolderName);
    } catch (const AutomationError& error) {
        report(kNotDone, error.description());
        return {};
    }
}

void CEMail::InviaMail(ByRef<String> sDestinatario, ByRef<String> sOggetto, ByRef<String> sBody,
                       ByRef<String> sBodyHtml, ByRef<String> sAllegato) {
    const Variant message = late::call(mailClient(), u"CreateItem", {kMessage});
    late::let(message, u"To", *sDestinatario);
    late::let(message, u"Subject", *sOggetto);
    if (sBody->empty()) {
        late::let(message, u"HTMLBody", *sBodyHtml);
    } else {
        late::let(message, u"Body", *sBody);
    }
    for (const String& file : piecesOf(*sAllegato)) {
        late::call(late::get(message, u"Attachments"), u"Add", {file});
    }
    late::call(message, u"Display");
}

namespace host {

void kapInviaEMail(const String& sDestinatario, const String& sOggetto, const String& sBody,
                   const String& sBodyHtml, const String& sFileAllegato) {
    make<CEMail>()->InviaMail(sDestinatario, sOggetto, sBody, sBodyHtml, sFileAllegato);
}

}  // namespace host
}  // namespace kap
