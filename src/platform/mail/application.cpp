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
            .instancing(Instancing::NotCreatable)
            .property<&Namespace::Folders>(u"Folders")
            .method<&Namespace::GetDefaultFolder>(u"GetDefaultFolder", {u"FolderType"})
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
            .method<&Application::GetNamespace>(u"GetNamespace", {u"Type"})
            .method<&Application::CreateItem>(u"CreateItem", {u"ItemType"})
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
