#include <kaputil/platform/creatable_objects.hpp>

#include <algorithm>
#include <array>
#include <vector>

#include "base/unicode.hpp"
#include "platform/files/file_system_object.hpp"
#include "platform/mail/application.hpp"
#include "platform/mail/contact_item.hpp"
#include "platform/mail/mail_item.hpp"

namespace kap::platform {

std::span<const PlatformClass> hostClasses() {
    static const std::vector<PlatformClass> classes = {
        {u"Scripting.FileSystemObject", &files::FileSystemObject::classDescription()},
        {u"Outlook.Application", &mail::Application::classDescription()}};
    return classes;
}

std::span<const ClassReference> hostObjectClasses() {
    static constexpr std::array<ClassReference, 2> kClasses = {
        &mail::MailItem::classDescription, &mail::ContactItem::classDescription};
    return kClasses;
}

Ref<Object> createHostObject(std::u16string_view programmaticName) {
    const auto found = std::ranges::find_if(hostClasses(), [&](const PlatformClass& known) {
        return unicode::sameName(known.programmaticName, programmaticName);
    });
    return found == hostClasses().end() ? Ref<Object>() : found->description->create();
}

}  // namespace kap::platform
