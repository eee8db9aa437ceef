#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include <kaputil/automation/class_description.hpp>

#include "platform/mail/draft.hpp"

namespace kap::platform::mail {

// The files that go with a message.
class AttachmentList final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count();
    // Raises 53 for a file that is not there.
    void Add(const String& source);

    [[nodiscard]] const std::vector<std::filesystem::path>& files() const noexcept {
        return files_;
    }

private:
    std::vector<std::filesystem::path> files_;
};

// A message in the making. It has one body: plain text or HTML, whichever was assigned last.
class MailItem final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String To() { return to_; }
    void setTo(const String& value) { to_ = value; }
    [[nodiscard]] String Subject() { return subject_; }
    void setSubject(const String& value) { subject_ = value; }
    [[nodiscard]] String Body() { return html_ ? String() : body_; }
    void setBody(const String& value);
    [[nodiscard]] String HTMLBody() { return html_ ? body_ : String(); }
    void setHTMLBody(const String& value);
    [[nodiscard]] Ref<AttachmentList> Attachments() { return attachments_; }

    // Keeps the message among the drafts and shows it in the user's mail program. Where there is
    // none the message log says where it is. Nothing is ever sent.
    void Display();

private:
    String to_;
    String subject_;
    String body_;
    bool html_ = false;
    Ref<AttachmentList> attachments_ = make<AttachmentList>();
};

}  // namespace kap::platform::mail
