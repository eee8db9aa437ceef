#include "platform/mail/application.hpp"

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "platform/mail/contact_item.hpp"
#include "platform/mail/mail_item.hpp"

namespace kap::platform::mail {

const ClassDescription& Namespace::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Namespace>(u"NameSpace", u"", u"")
            .summary(u"The stores of the user's contacts.")
            .instancing(Instancing::NotCreatable)
            .property<&Namespace::Folders>(u"Folders", u"The stores.")
            .method<&Namespace::GetDefaultFolder>(u"GetDefaultFolder", {u"FolderType"},
                                                  u"The folder of contacts (10).")
            .raises(u"5 for any other folder.")
            .build();
    return description;
}

Ref<FolderList> Namespace::Folders() {
    return make<FolderList>(contactStores());
}

Ref<MailFolder> Namespace::GetDefaultFolder(std::int32_t folderType) {
    constexpr std::int32_t kContacts = 10;
    if (folderType != kContacts) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return make<MailFolder>(defaultContactFolder());
}

const ClassDescription& Application::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Application>(u"Application", u"", u"")
            .summary(u"The mail client: contacts in folders, messages as drafts.")
            .method<&Application::GetNamespace>(u"GetNamespace", {u"Type"},
                                                u"The stores of the user's contacts (MAPI).")
            .raises(u"5 for any other name.")
            .method<&Application::CreateItem>(u"CreateItem", {u"ItemType"},
                                              u"A new message (0) or contact (2).")
            .raises(u"5 for any other item.")
            .build();
    return description;
}

Ref<Namespace> Application::GetNamespace(const String& type) {
    if (!unicode::sameName(type, u"MAPI")) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return make<Namespace>();
}

Ref<Object> Application::CreateItem(std::int32_t itemType) {
    constexpr std::int32_t kMessage = 0;
    constexpr std::int32_t kContact = 2;
    if (itemType == kMessage) {
        return make<MailItem>();
    }
    if (itemType != kContact) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return make<ContactItem>();
}

}  // namespace kap::platform::mail
