#pragma once

#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>

#include "platform/mail/card.hpp"
#include "platform/mail/folders.hpp"

namespace kap::platform::mail {

// The field of a contact that clients call by this name, ignoring case; nullopt when there is none.
[[nodiscard]] std::optional<ContactField> contactFieldNamed(std::u16string_view name);

// A contact. What is assigned to it is kept by Save, which changes nothing else of the card.
class ContactItem final : public DescribedObject {
public:
    // A new one, which Save puts into the default folder.
    ContactItem() = default;
    ContactItem(std::filesystem::path file, Card card);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    template <ContactField Field>
    [[nodiscard]] String get() {
        return text(Field);
    }
    template <ContactField Field>
    void let(const String& value) {
        put(Field, value);
    }

    // Puts the contact into another folder. Raises 13 for an object that is no folder.
    Ref<Object> Move(const Ref<MailFolder>& destination);
    void Save();
    // Raises 53 when it is not there any more.
    void Delete();

private:
    [[nodiscard]] String text(ContactField field) const;
    void put(ContactField field, const String& value);
    void changeInto(Card& card) const;

    std::optional<std::filesystem::path> file_;  // nullopt: never saved
    std::optional<std::filesystem::path> folder_;
    Card card_;
    std::vector<std::pair<ContactField, String>> changes_;
};

}  // namespace kap::platform::mail
