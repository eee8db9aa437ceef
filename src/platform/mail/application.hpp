#pragma once

#include <cstdint>

#include <kaputil/automation/class_description.hpp>

#include "platform/mail/folders.hpp"

namespace kap::platform::mail {

// What "GetNamespace" gives: the stores of the user's contacts.
class Namespace final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] Ref<FolderList> Folders();
    // 10 is the folder of contacts; raises 5 for any other.
    [[nodiscard]] Ref<MailFolder> GetDefaultFolder(std::int32_t folderType);
};

// "Outlook.Application": the mail client that existing programs are written for, kept on this host
// by files: contacts in folders, messages as drafts.
class Application final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Of "MAPI", the only one; raises 5 for any other.
    [[nodiscard]] Ref<Namespace> GetNamespace(const String& type);
    // 0 is a message, 2 a contact; raises 5 for any other.
    [[nodiscard]] Ref<Object> CreateItem(std::int32_t itemType);
};

}  // namespace kap::platform::mail
