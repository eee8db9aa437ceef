#include <kaputil/host/cemail.hpp>

#include <gtest/gtest.h>

#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/creatable_objects.hpp>
#include <kaputil/platform/message_box.hpp>

#include "automation/class_builder.hpp"
#include "automation/late_bound.hpp"
#include "host/mail_folders.hpp"
#include "support/late_bound.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

namespace fs = std::filesystem;
using late::call;
using late::get;
using test::contentOf;
using test::raisedBy;
using test::shown;

constexpr const char* kNotWritten =
    "Non \xC3\xA8 stato possibile inserire il contatto controllare l'esistenza della cartella o "
    "dell'oggetto a cui fa riferimento la Classe.\r\n";
constexpr const char* kNotDone =
    "Non \xC3\xA8 stato possibile eseguire l'operazione controllare l'esistenza della cartella o "
    "dell'oggetto a cui fa riferimento la Classe.\r\n";
constexpr const char* kMissing = "Non Sono state inserite le propriet\xC3\xA0 obbligatorie\r\n";
constexpr const char* kNotSet = "Object variable or With block variable not set\r\n";

class CEMailTest : public testing::Test {
protected:
    CEMailTest() { platform::setMessageLog(folder_.file("messaggi.log")); }
    ~CEMailTest() override { platform::setMessageLog(std::nullopt); }

    // A company with everything it must have.
    void fillCompany() const {
        email_->setEMail(u"info@rossi.it");
        email_->setCodAna(u"C00012");
        email_->setRagioneSociale(u"Ferramenta Rossi");
    }
    void fillPerson() const {
        email_->setEMail(u"mario@rossi.it");
        email_->setCodAna(u"C00012");
        email_->setNome(u"Mario");
        email_->setCognome(u"Rossi");
    }
    [[nodiscard]] std::string messages() const {
        return convert::toString(email_->IClassi_Errore()->MsgToString()).utf8();
    }
    [[nodiscard]] std::string number() const { return shown(email_->IClassi_Errore()->Numero()); }
    [[nodiscard]] static Variant contacts() {
        const Variant client = platform::createObject(u"Outlook.Application");
        return host::contactFolder(client, u"°°°");
    }
    // The only contact of a folder.
    [[nodiscard]] static Variant contact(const Variant& folder) {
        return call(get(folder, u"Items"), u"Item", {1});
    }
    static Variant makeFolder(const char16_t* store, const char16_t* folder) {
        const Variant client = platform::createObject(u"Outlook.Application");
        const Variant stores = get(call(client, u"GetNamespace", {u"MAPI"}), u"Folders");
        return call(get(call(stores, u"Add", {store}), u"Folders"), u"Add", {folder});
    }
    [[nodiscard]] std::string draft() const {
        return contentOf(fs::directory_iterator(folder_.file("drafts"))->path());
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
    test::ScopedVariable home_{"KAPUTIL_HOME", folder_.file("")};
    test::ScopedVariable display_{"DISPLAY", std::nullopt};
    test::ScopedVariable wayland_{"WAYLAND_DISPLAY", std::nullopt};
    Ref<CEMail> email_ = make<CEMail>();
};

TEST_F(CEMailTest, KeepsItsPropertiesAsTextsThatAreEmptyAtFirst) {
    for (const char16_t* name : {u"EMail", u"Nome", u"Cognome", u"RagioneSociale", u"Indirizzo",
                                 u"Telefono", u"CodAna", u"VisualizzaCome", u"Chiave"}) {
        EXPECT_EQ(shown(test::call(*email_, name)), "String ") << String(name).utf8();
        test::invoke(*email_, name, InvokeKind::Let, {2.5});
        EXPECT_EQ(shown(test::call(*email_, name)), "String 2,5") << String(name).utf8();
    }
}

TEST_F(CEMailTest, HasOneErrorObject) {
    EXPECT_EQ(email_->IClassi_Errore(), email_->IClassi_Errore());
    EXPECT_EQ(number(), "String 0");
}

TEST_F(CEMailTest, WritesEveryFieldOfAContact) {
    fillCompany();
    email_->setNome(u"Mario");
    email_->setIndirizzo(u"Via Roma 1");
    email_->setTelefono(u"0541 123456");
    email_->setChiave(u"K1");
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    const Variant written = contact(contacts());
    EXPECT_EQ(shown(get(written, u"CustomerID")), "String K1");
    EXPECT_EQ(shown(get(written, u"Email1Address")), "String info@rossi.it");
    EXPECT_EQ(shown(get(written, u"FirstName")), "String Mario");
    EXPECT_EQ(shown(get(written, u"LastName")), "String ");
    EXPECT_EQ(shown(get(written, u"CompanyName")), "String Ferramenta Rossi");
    EXPECT_EQ(shown(get(written, u"HomeTelephoneNumber")), "String 0541 123456");
    EXPECT_EQ(shown(get(written, u"HomeAddress")), "String Via Roma 1");
    EXPECT_EQ(shown(get(written, u"GovernmentIDNumber")), "String C00012");
    EXPECT_EQ(shown(get(written, u"FileAs")), "String C00012 - Ferramenta Rossi");
}

TEST_F(CEMailTest, MakesACompanysDisplayNameBeforeItIsWritten) {
    fillCompany();
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    EXPECT_EQ(shown(email_->VisualizzaCome()), "String C00012 - Ferramenta Rossi");
    email_->setVisualizzaCome(u"Rossi");
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    EXPECT_EQ(shown(get(contact(contacts()), u"FileAs")), "String Rossi");
}

TEST_F(CEMailTest, FilesAPersonByCodeSurnameAndName) {
    fillPerson();
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    EXPECT_EQ(shown(email_->VisualizzaCome()), "String ");
    EXPECT_EQ(shown(get(contact(contacts()), u"FileAs")), "String C00012 - Rossi Mario");
}

TEST_F(CEMailTest, TakesTheAddressForAKeyThatIsEmpty) {
    fillPerson();
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    EXPECT_EQ(shown(email_->Chiave()), "String mario@rossi.it");
    EXPECT_EQ(shown(get(contact(contacts()), u"CustomerID")), "String mario@rossi.it");
}

TEST_F(CEMailTest, ChangesTheContactThatHasTheKey) {
    fillPerson();
    email_->setChiave(u"K1");
    email_->Update();
    email_->setTelefono(u"1");
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    EXPECT_EQ(shown(email_->Count()), "Long 1");
    EXPECT_EQ(shown(get(contact(contacts()), u"HomeTelephoneNumber")), "String 1");
}

TEST_F(CEMailTest, RefusesAContactThatLacksWhatItMustHave) {
    EXPECT_EQ(shown(email_->Update()), "Boolean Falso");
    EXPECT_EQ(number(), "String 1");
    EXPECT_EQ(messages(), kMissing);
    email_->setEMail(u"x@y.it");
    EXPECT_EQ(shown(email_->Update()), "Boolean Falso");  // no code
    email_->setCodAna(u"C1");
    email_->setNome(u"Mario");
    EXPECT_EQ(shown(email_->Update()), "Boolean Falso");  // a company without a name
    EXPECT_EQ(messages(), std::string(kMissing) + kMissing + kMissing);
    email_->setCognome(u"Rossi");
    EXPECT_EQ(shown(email_->Update()), "Boolean Vero");
    EXPECT_EQ(messages(), "");
}

TEST_F(CEMailTest, CompletesTheKeyAlsoOfAContactThatItRefuses) {
    email_->setEMail(u"x@y.it");
    email_->Update();
    EXPECT_EQ(shown(email_->Chiave()), "String x@y.it");
}

TEST_F(CEMailTest, WritesIntoTheFolderOfAPath) {
    const Variant folder = makeFolder(u"Ufficio", u"Clienti");
    fillPerson();
    EXPECT_EQ(shown(email_->Update(u"ufficio/Clienti")), "Boolean Vero");
    EXPECT_EQ(shown(get(contact(folder), u"LastName")), "String Rossi");
    EXPECT_EQ(shown(email_->Count(u"Ufficio/Clienti")), "Long 1");
    EXPECT_EQ(shown(email_->Count()), "Long 0");
    EXPECT_EQ(shown(email_->Count(u"")), "Long 0");
    EXPECT_EQ(shown(email_->Delete(u"Ufficio/Clienti")), "Boolean Vero");
    EXPECT_EQ(shown(email_->Count(u"Ufficio/Clienti")), "Long 0");
}

TEST_F(CEMailTest, FailsForANameWithoutAStore) {
    makeFolder(u"Ufficio", u"Clienti");
    fillPerson();
    EXPECT_EQ(shown(email_->Update(u"Ufficio")), "Boolean Falso");
    EXPECT_EQ(messages(), std::string(kNotWritten) + kNotSet);
    EXPECT_EQ(shown(email_->Delete(u"Ufficio")), "Boolean Falso");
    EXPECT_EQ(messages(), std::string(kNotDone) + kNotSet);
    EXPECT_EQ(shown(email_->Count(u"Ufficio")), "Empty");
}

TEST_F(CEMailTest, FailsForAFolderThatIsNotThere) {
    fillPerson();
    EXPECT_EQ(shown(email_->Update(u"Ufficio/Clienti")), "Boolean Falso");
    EXPECT_EQ(number(), "String 1");
    EXPECT_EQ(messages(), std::string(kNotWritten) + "La cartella \"Ufficio\" non esiste.\r\n");
    EXPECT_EQ(shown(email_->Delete(u"Ufficio/Clienti")), "Boolean Falso");
    EXPECT_EQ(messages(), std::string(kNotDone) + "La cartella \"Ufficio\" non esiste.\r\n");
}

TEST_F(CEMailTest, DeletesTheContactThatHasTheKey) {
    fillPerson();
    email_->Update();
    const auto other = make<CEMail>();
    other->setEMail(u"mario@rossi.it");
    EXPECT_EQ(shown(other->Delete()), "Boolean Vero");
    EXPECT_EQ(shown(other->Chiave()), "String mario@rossi.it");
    EXPECT_EQ(shown(other->Count()), "Long 0");
}

TEST_F(CEMailTest, DeletesAKeyThatIsNotThereWithoutAnError) {
    email_->setChiave(u"manca");
    EXPECT_EQ(shown(email_->Delete()), "Boolean Vero");
    EXPECT_EQ(number(), "String 0");
}

TEST_F(CEMailTest, DeletesNobodyWithoutAKey) {
    fillPerson();
    email_->Update();
    EXPECT_EQ(shown(make<CEMail>()->Delete()), "Boolean Falso");
    EXPECT_EQ(shown(email_->Count()), "Long 1");
}

TEST_F(CEMailTest, CountsWithoutClearingTheErrors) {
    email_->Update();
    EXPECT_EQ(shown(email_->Count(u"Manca/Clienti")), "Empty");
    EXPECT_EQ(number(), "String 1");
    EXPECT_EQ(messages(), std::string(kMissing) + kNotDone + kNotSet);
    EXPECT_EQ(shown(email_->Count()), "Long 0");
    EXPECT_EQ(number(), "String 1");
}

TEST_F(CEMailTest, TellsThatTheMailClientIsMissing) {
    registerFactory(u"Outlook.Application", []() -> Ref<Object> {
        throw AutomationError(errors::kCannotCreateObject, u"nessun programma");
    });
    fillPerson();
    EXPECT_EQ(shown(email_->Update()), "Boolean Falso");
    EXPECT_EQ(messages(), std::string(kNotWritten) + "nessun programma\r\n");
    EXPECT_EQ(shown(email_->Delete()), "Boolean Falso");
    EXPECT_EQ(shown(email_->Count()), "Empty");
    EXPECT_EQ(shown(email_->Count(u"A/B")), "Empty");
    EXPECT_EQ(raisedBy([&] {
                  email_->InviaMail(u"a@x.it", u"oggetto");
                  return 0;
              }),
              errors::kCannotCreateObject);
    unregisterFactory(u"Outlook.Application");
}

TEST_F(CEMailTest, MakesAMessageWithThePlainBodyWhereBothAreGiven) {
    email_->InviaMail(u"a@x.it", u"Oggetto", u"testo", u"<b>testo</b>");
    EXPECT_NE(draft().find("Content-Type: text/plain; charset=utf-8"), std::string::npos);
    EXPECT_EQ(draft().find("<b>"), std::string::npos);
}

TEST_F(CEMailTest, MakesAMessageInHtmlWithoutAPlainBody) {
    host::kapInviaEMail(u"a@x.it", u"Oggetto", u"", u"<b>testo</b>");
    EXPECT_NE(draft().find("Content-Type: text/html; charset=utf-8"), std::string::npos);
    EXPECT_NE(draft().find("<b>testo</b>"), std::string::npos);
}

TEST_F(CEMailTest, AttachesTheFilesBetweenTheCommas) {
    test::putFile(folder_.file("uno.txt"), "1");
    test::putFile(folder_.file("due.txt"), "2");
    host::kapInviaEMail(u"a@x.it", u"Oggetto", u"testo", u"",
                        String(folder_.file("uno.txt") + "," + folder_.file("due.txt")));
    const std::string text = draft();
    EXPECT_NE(text.find("multipart/mixed"), std::string::npos);
    EXPECT_LT(text.find("uno.txt"), text.find("due.txt"));
    EXPECT_EQ(raisedBy([&] {
                  host::kapInviaEMail(u"a@x.it", u"x", u"", u"",
                                      String(folder_.file("uno.txt") + ","));
                  return 0;
              }),
              errors::kFileNotFound);
}

TEST(MailFolderPath, IsTakenApartAtEverySlash) {
    EXPECT_EQ(host::takePathApart(u"Ufficio/Clienti"),
              u"<FOLDER1>Ufficio</FOLDER1><FOLDER8>Clienti</FOLDER8>");
    EXPECT_EQ(host::takePathApart(u"A/B/C"),
              u"<FOLDER1>A</FOLDER1><FOLDER3>B</FOLDER3><FOLDER4>C</FOLDER4>");
    EXPECT_EQ(host::takePathApart(u"A/"), u"<FOLDER1>A</FOLDER1><FOLDER2></FOLDER2>");
    EXPECT_EQ(host::takePathApart(u"Ufficio"), u"Ufficio");
}

}  // namespace
}  // namespace kap
