#include "platform/mail/mail_item.hpp"

#include <system_error>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/message_box.hpp>

#include "automation/class_builder.hpp"
#include "platform/paths.hpp"

namespace kap::platform::mail {

const ClassDescription& AttachmentList::classDescription() {
    static const ClassDescription description =
        ClassBuilder<AttachmentList>(u"Attachments", u"", u"")
            .instancing(Instancing::NotCreatable)
            .property<&AttachmentList::Count>(u"Count")
            .method<&AttachmentList::Add>(u"Add", {u"Source"})
            .build();
    return description;
}

std::int32_t AttachmentList::Count() {
    return static_cast<std::int32_t>(files_.size());
}

void AttachmentList::Add(const String& source) {
    const std::filesystem::path file = locate(source);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) {
        throw AutomationError(errors::kFileNotFound);
    }
    files_.push_back(std::filesystem::absolute(file));
}

const ClassDescription& MailItem::classDescription() {
    static const ClassDescription description =
        ClassBuilder<MailItem>(u"MailItem", u"", u"")
            .instancing(Instancing::NotCreatable)
            .property<&MailItem::To, &MailItem::setTo>(u"To")
            .property<&MailItem::Subject, &MailItem::setSubject>(u"Subject")
            .property<&MailItem::Body, &MailItem::setBody>(u"Body")
            .property<&MailItem::HTMLBody, &MailItem::setHTMLBody>(u"HTMLBody")
            .property<&MailItem::Attachments>(u"Attachments")
            .method<&MailItem::Display>(u"Display")
            .build();
    return description;
}

void MailItem::setBody(const String& value) {
    body_ = value;
    html_ = false;
}

void MailItem::setHTMLBody(const String& value) {
    body_ = value;
    html_ = true;
}

void MailItem::Display() {
    const std::filesystem::path file =
        keepDraft({to_.utf8(), subject_.utf8(), body_.utf8(), html_, attachments_->files()});
    if (!openOnDesktop(file)) {
        showMessage(defaultMessageTitle(), MessageSeverity::Information,
                    u"Nessun programma di posta: il messaggio è in " + pathText(file));
    }
}

}  // namespace kap::platform::mail
