#include "platform/mail/contact_item.hpp"

#include <algorithm>
#include <array>
#include <system_error>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "platform/file_errors.hpp"
#include "platform/folder_lock.hpp"

namespace kap::platform::mail {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::pair<std::u16string_view, ContactField>, 9> kNames = {{
    {u"CustomerID", ContactField::CustomerId},
    {u"Email1Address", ContactField::Email},
    {u"FirstName", ContactField::FirstName},
    {u"LastName", ContactField::LastName},
    {u"CompanyName", ContactField::Company},
    {u"HomeTelephoneNumber", ContactField::HomePhone},
    {u"HomeAddress", ContactField::HomeAddress},
    {u"GovernmentIDNumber", ContactField::GovernmentId},
    {u"FileAs", ContactField::FileAs},
}};

// The name that a contact is shown by when its program gave it none.
String displayName(const Card& card) {
    const String first = card.get(ContactField::FirstName);
    const String last = card.get(ContactField::LastName);
    String both = first + (first.empty() || last.empty() ? u"" : u" ") + last.view();
    if (!both.empty()) {
        return both;
    }
    const String company = card.get(ContactField::Company);
    return company.empty() ? card.get(ContactField::Email) : company;
}

}  // namespace

std::optional<ContactField> contactFieldNamed(std::u16string_view name) {
    for (const auto& [known, field] : kNames) {
        if (unicode::sameName(known, name)) {
            return field;
        }
    }
    return std::nullopt;
}

ContactItem::ContactItem(fs::path file, Card card)
    : file_(std::move(file)), card_(std::move(card)) {}

#define KAP_FIELD(name, Field) \
    property<&ContactItem::get<ContactField::Field>, &ContactItem::let<ContactField::Field>>(name)

const ClassDescription& ContactItem::classDescription() {
    static const ClassDescription description =
        ClassBuilder<ContactItem>(u"ContactItem", u"", u"")
            .instancing(Instancing::NotCreatable)
            .KAP_FIELD(u"CustomerID", CustomerId)
            .KAP_FIELD(u"Email1Address", Email)
            .KAP_FIELD(u"FirstName", FirstName)
            .KAP_FIELD(u"LastName", LastName)
            .KAP_FIELD(u"CompanyName", Company)
            .KAP_FIELD(u"HomeTelephoneNumber", HomePhone)
            .KAP_FIELD(u"HomeAddress", HomeAddress)
            .KAP_FIELD(u"GovernmentIDNumber", GovernmentId)
            .KAP_FIELD(u"FileAs", FileAs)
            .method<&ContactItem::Move>(u"Move", {u"DestFldr"})
            .method<&ContactItem::Save>(u"Save")
            .method<&ContactItem::Delete>(u"Delete")
            .build();
    return description;
}

#undef KAP_FIELD

String ContactItem::text(ContactField field) const {
    const auto changed =
        std::ranges::find(changes_, field, &std::pair<ContactField, String>::first);
    return changed == changes_.end() ? card_.get(field) : changed->second;
}

void ContactItem::put(ContactField field, const String& value) {
    std::erase_if(changes_, [&](const auto& change) { return change.first == field; });
    changes_.emplace_back(field, value);
}

void ContactItem::changeInto(Card& card) const {
    for (const auto& [field, value] : changes_) {
        if (card.get(field) != value) {
            card.put(field, value);
        }
    }
    if (card.get(ContactField::FileAs).empty()) {
        card.put(ContactField::FileAs, displayName(card));
    }
}

Ref<Object> ContactItem::Move(const Ref<MailFolder>& destination) {
    if (!destination) {
        throw AutomationError(errors::kObjectNotSet);
    }
    folder_ = destination->path();
    if (file_ && file_->parent_path() != *folder_) {
        const fs::path target = fileFor(card_, *folder_);
        std::error_code error;
        fs::rename(*file_, target, error);
        checkFile(error);
        file_ = target;
    }
    return Ref<Object>(this);
}

void ContactItem::Save() {
    if (!file_) {
        file_ = fileFor(card_, folder_ ? *folder_ : defaultContactFolder());
    }
    card_ = changeCard(*file_, card_, [this](Card& card) { changeInto(card); });
    changes_.clear();
}

void ContactItem::Delete() {
    if (!file_) {
        return;  // it never was anywhere
    }
    const FolderLock lock(file_->parent_path());
    std::error_code error;
    if (!fs::remove(*file_, error) && !error) {
        throw AutomationError(errors::kFileNotFound);
    }
    checkFile(error);
}

}  // namespace kap::platform::mail
