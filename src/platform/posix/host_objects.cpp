#include <kaputil/platform/creatable_objects.hpp>

#include <algorithm>
#include <vector>

#include "base/unicode.hpp"
#include "platform/files/file_system_object.hpp"
#include "platform/mail/application.hpp"

namespace kap::platform {

std::span<const PlatformClass> hostClasses() {
    static const std::vector<PlatformClass> classes = {
        {u"Scripting.FileSystemObject", &files::FileSystemObject::classDescription()},
        {u"Outlook.Application", &mail::Application::classDescription()}};
    return classes;
}

Ref<Object> createHostObject(std::u16string_view programmaticName) {
    const auto found = std::ranges::find_if(hostClasses(), [&](const PlatformClass& known) {
        return unicode::sameName(known.programmaticName, programmaticName);
    });
    return found == hostClasses().end() ? Ref<Object>() : found->description->create();
}

}  // namespace kap::platform
