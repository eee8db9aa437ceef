#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/creatable_objects.hpp>
#include <kaputil/platform/message_box.hpp>

#include "automation/late_bound.hpp"
#include "platform/mail/draft.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;
using late::call;
using late::get;
using late::let;
using test::contentOf;
using test::raisedBy;
using test::shown;

constexpr std::int16_t kMessage = 0;
constexpr std::int16_t kContact = 2;
constexpr std::int16_t kContactsFolder = 10;

class MailClient : public testing::Test {
protected:
    MailClient() { setMessageLog(folder_.file("messaggi.log")); }
    ~MailClient() override { setMessageLog(std::nullopt); }

    [[nodiscard]] Variant session() const { return call(client_, u"GetNamespace", {u"MAPI"}); }
    [[nodiscard]] Variant contacts() const {
        return call(session(), u"GetDefaultFolder", {kContactsFolder});
    }
    [[nodiscard]] Variant newContact(const char16_t* key) const {
        const Variant contact = call(client_, u"CreateItem", {kContact});
        let(contact, u"CustomerID", key);
        return contact;
    }
    [[nodiscard]] static Variant find(const Variant& folder, const char16_t* filter) {
        return call(get(folder, u"Items"), u"Find", {filter});
    }
    [[nodiscard]] static std::string count(const Variant& folder) {
        return shown(get(get(folder, u"Items"), u"Count"));
    }
    // The only file of the drafts.
    [[nodiscard]] fs::path draft() const {
        return fs::directory_iterator(folder_.file("drafts"))->path();
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
    test::ScopedVariable home_{"KAPUTIL_HOME", folder_.file("")};
    test::ScopedVariable display_{"DISPLAY", std::nullopt};
    test::ScopedVariable wayland_{"WAYLAND_DISPLAY", std::nullopt};
    Variant client_ = createObject(u"outlook.application");
};

TEST_F(MailClient, KeepsAContactInAFileOfTheUsersAlone) {
    const Variant contact = newContact(u"12");
    let(contact, u"Email1Address", u"info@rossi.it");
    call(contact, u"Save");
    const fs::path contacts = folder_.file("contacts/Personale/Contatti");
    const fs::path file = fs::directory_iterator(contacts)->path();
    EXPECT_EQ(file.extension(), ".vcf");
    EXPECT_NE(contentOf(file).find("\r\nEMAIL:info@rossi.it\r\n"), std::string::npos);
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(contacts.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(MailClient, ShowsAContactWithoutANameByWhatItHas) {
    const Variant contact = newContact(u"12");
    let(contact, u"Email1Address", u"info@rossi.it");
    call(contact, u"Save");
    EXPECT_EQ(shown(get(contact, u"FileAs")), "String info@rossi.it");
}

TEST_F(MailClient, FindsAContactByAField) {
    call(newContact(u"Uno@x.it"), u"Save");
    call(newContact(u"due"), u"Save");
    const Variant folder = contacts();
    EXPECT_EQ(count(folder), "Long 2");
    EXPECT_EQ(shown(get(find(folder, u"[CustomerID] = uno@X.it"), u"CustomerID")),
              "String Uno@x.it");
    EXPECT_EQ(shown(get(find(folder, u" [customerid]='due' "), u"CustomerID")), "String due");
    EXPECT_FALSE(find(folder, u"[CustomerID] = tre").as<Ref<Object>>());
}

TEST_F(MailClient, RefusesAFilterThatIsNone) {
    for (const char16_t* filter : {u"", u"CustomerID = 1", u"[CustomerID]", u"[CustomerID] = ",
                                   u"[CustomerID] < 1", u"[Colore] = 1", u"[CustomerID"}) {
        EXPECT_EQ(raisedBy([&] { return find(contacts(), filter); }), errors::kInvalidArgument)
            << String(filter).utf8();
    }
}

TEST_F(MailClient, ChangesOnlyWhatWasAssigned) {
    call(newContact(u"12"), u"Save");
    const Variant first = find(contacts(), u"[CustomerID] = 12");
    const Variant second = find(contacts(), u"[CustomerID] = 12");
    let(first, u"CompanyName", u"Rossi");
    let(second, u"HomeTelephoneNumber", u"0541");
    call(first, u"Save");
    call(second, u"Save");
    const Variant both = find(contacts(), u"[CustomerID] = 12");
    EXPECT_EQ(shown(get(both, u"CompanyName")), "String Rossi");
    EXPECT_EQ(shown(get(both, u"HomeTelephoneNumber")), "String 0541");
    EXPECT_EQ(count(contacts()), "Long 1");
}

TEST_F(MailClient, RemovesAContact) {
    call(newContact(u"12"), u"Save");
    const Variant contact = find(contacts(), u"[CustomerID] = 12");
    call(contact, u"Delete");
    EXPECT_EQ(count(contacts()), "Long 0");
    EXPECT_EQ(raisedBy([&] { return call(contact, u"Delete"); }), errors::kFileNotFound);
    EXPECT_NO_THROW(call(newContact(u"13"), u"Delete"));
}

TEST_F(MailClient, HasStoresAndFoldersInFolders) {
    const Variant stores = get(session(), u"Folders");
    EXPECT_EQ(shown(get(stores, u"Count")), "Long 0");
    const Variant store = call(stores, u"Add", {u"Ufficio"});
    const Variant made = call(get(store, u"Folders"), u"Add", {u"Clienti"});
    EXPECT_EQ(shown(get(made, u"Name")), "String Clienti");
    EXPECT_TRUE(fs::is_directory(folder_.file("contacts/Ufficio/Clienti")));
    EXPECT_EQ(shown(get(call(stores, u"Item", {u"UFFICIO"}), u"Name")), "String Ufficio");
    EXPECT_EQ(shown(get(call(stores, u"Item", {1}), u"Name")), "String Ufficio");
    EXPECT_EQ(late::objectOf(stores).elements().size(), 1U);
    EXPECT_EQ(raisedBy([&] { return call(stores, u"Item", {2}); }), errors::kSubscriptOutOfRange);
    EXPECT_EQ(raisedBy([&] { return call(stores, u"Item", {u"Casa"}); }), errors::kPathNotFound);
    EXPECT_EQ(raisedBy([&] { return call(stores, u"Add", {u"ufficio"}); }),
              errors::kFileAlreadyExists);
}

TEST_F(MailClient, NeverLeavesTheFolderOfItsStores) {
    const Variant stores = get(session(), u"Folders");
    for (const char16_t* name : {u"..", u".", u"", u"../fuori", u"a\\b", u"/etc", u".nascosta"}) {
        EXPECT_EQ(raisedBy([&] { return call(stores, u"Add", {name}); }), errors::kBadFileName);
        EXPECT_EQ(raisedBy([&] { return call(stores, u"Item", {name}); }), errors::kPathNotFound);
    }
}

TEST_F(MailClient, MovesContactsSavedOrNot) {
    const Variant store = call(get(session(), u"Folders"), u"Add", {u"Ufficio"});
    const Variant contact = newContact(u"12");
    call(contact, u"Move", {store});
    EXPECT_EQ(count(store), "Long 0");  // not kept before it is saved
    call(contact, u"Save");
    EXPECT_EQ(count(store), "Long 1");
    call(contact, u"Move", {contacts()});
    EXPECT_EQ(count(store), "Long 0");
    EXPECT_EQ(count(contacts()), "Long 1");
    EXPECT_EQ(raisedBy([&] { return call(contact, u"Move", {contact}); }), errors::kTypeMismatch);
    EXPECT_EQ(raisedBy([&] { return call(contact, u"Move", {Variant(Ref<Object>())}); }),
              errors::kObjectNotSet);
}

TEST_F(MailClient, PassesOverFilesThatAreNoContacts) {
    call(newContact(u"12"), u"Save");
    const std::string folder = folder_.file("contacts/Personale/Contatti/");
    test::putFile(folder + "rotto.VCF", "ciao");
    test::putFile(folder + "nota.txt", "BEGIN:VCARD\nEND:VCARD\n");
    test::putFile(folder + ".x.vcf", "BEGIN:VCARD\nEND:VCARD\n");
    EXPECT_EQ(count(contacts()), "Long 2");
    EXPECT_TRUE(find(contacts(), u"[CustomerID] = 12").as<Ref<Object>>());
    EXPECT_EQ(late::objectOf(get(contacts(), u"Items")).elements().size(), 1U);
    EXPECT_EQ(raisedBy([&] { return call(get(contacts(), u"Items"), u"Item", {3}); }),
              errors::kSubscriptOutOfRange);
}

TEST_F(MailClient, MakesOnlyWhatItKnows) {
    EXPECT_EQ(raisedBy([&] { return call(client_, u"CreateItem", {1}); }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { return call(client_, u"GetNamespace", {u"IMAP"}); }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { return call(session(), u"GetDefaultFolder", {6}); }),
              errors::kInvalidArgument);
}

TEST_F(MailClient, LeavesAMessageAmongTheDraftsAndSaysWhere) {
    const Variant message = call(client_, u"CreateItem", {kMessage});
    let(message, u"To", u"anna@x.it; bruno@x.it");
    let(message, u"Subject", u"però");
    let(message, u"Body", u"prima\r\nseconda è");
    call(message, u"Display");
    const std::string text = contentOf(draft());
    EXPECT_NE(text.find("To: anna@x.it, bruno@x.it\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("X-Unsent: 1\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\r\n\r\nprima\r\nseconda =C3=A8"), std::string::npos) << text;
    EXPECT_EQ(text.find("From:"), std::string::npos);
    EXPECT_NE(contentOf(folder_.file("messaggi.log"))
                  .find("\tinformation\ttest_platform\tNessun programma di posta: il messaggio "
                        "\xC3\xA8 in " +
                        draft().string() + "\n"),
              std::string::npos);
    struct stat status {};
    ASSERT_EQ(stat(draft().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(MailClient, KeepsTheBodyThatWasAssignedLast) {
    const Variant message = call(client_, u"CreateItem", {kMessage});
    let(message, u"HTMLBody", u"<b>x</b>");
    let(message, u"Body", u"x");
    EXPECT_EQ(shown(get(message, u"HTMLBody")), "String ");
    let(message, u"HTMLBody", u"<b>y</b>");
    EXPECT_EQ(shown(get(message, u"Body")), "String ");
    EXPECT_EQ(shown(get(message, u"HTMLBody")), "String <b>y</b>");
}

TEST_F(MailClient, RefusesAnAttachmentThatIsNotThere) {
    const Variant attachments = get(call(client_, u"CreateItem", {kMessage}), u"Attachments");
    EXPECT_EQ(raisedBy([&] { return call(attachments, u"Add", {u""}); }), errors::kFileNotFound);
    EXPECT_EQ(raisedBy([&] { return call(attachments, u"Add", {String(folder_.file("x"))}); }),
              errors::kFileNotFound);
    EXPECT_EQ(shown(get(attachments, u"Count")), "Long 0");
}

TEST_F(MailClient, WritesAHeaderOnOneLineWhateverItIsGiven) {
    const std::string text =
        mail::messageText({"a@x.it\r\nBcc: b@x.it", "uno\r\nX-Altro: due", "", false, {}});
    EXPECT_EQ(text.find("\nBcc:"), std::string::npos) << text;
    EXPECT_EQ(text.find("\nX-Altro:"), std::string::npos) << text;
}

TEST_F(MailClient, TakesTheSenderFromTheUsersVariable) {
    const test::ScopedVariable sender("EMAIL", "Anna Rossi <anna@x.it>");
    EXPECT_NE(mail::messageText({}).find("From: Anna Rossi <anna@x.it>\r\n"), std::string::npos);
}

// A desktop whose command writes down what it is given.
class Desktop : public MailClient {
protected:
    void install(const std::string& script) const {
        const std::string command = folder_.file("bin/xdg-open");
        fs::create_directory(folder_.file("bin"));
        test::putFile(command, "#!/bin/sh\n" + script);
        fs::permissions(command, fs::perms::owner_all);
    }
    void display() const { call(call(client_, u"CreateItem", {kMessage}), u"Display"); }
    [[nodiscard]] std::string log() const { return contentOf(folder_.file("messaggi.log")); }

    test::ScopedVariable path_{"PATH", folder_.file("bin") + ":/usr/bin:/bin"};
    test::ScopedVariable screen_{"DISPLAY", ":77"};
};

TEST_F(Desktop, OpensTheMessageWithItsOwnCommand) {
    install("printf '%s|' \"$@\" > \"$KAPUTIL_HOME/opened\"\n");
    display();
    EXPECT_EQ(contentOf(folder_.file("opened")), draft().string() + "|");
    EXPECT_EQ(log(), "");
}

TEST_F(Desktop, ThatFailsLeavesTheMessageAmongTheDrafts) {
    install("exit 3\n");
    display();
    EXPECT_NE(log().find("Nessun programma di posta"), std::string::npos) << log();
}

TEST_F(Desktop, WithoutACommandLeavesTheMessageAmongTheDrafts) {
    const test::ScopedVariable nowhere("PATH", folder_.file("vuoto"));
    display();
    EXPECT_NE(log().find("Nessun programma di posta"), std::string::npos) << log();
}

}  // namespace
}  // namespace kap::platform
