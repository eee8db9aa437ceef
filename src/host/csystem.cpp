#include <kaputil/host/csystem.hpp>

#include <kaputil/platform/folders.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "platform/paths.hpp"

namespace kap {

const ClassDescription& CSystem::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CSystem>(u"CSystem", u"71c6409f-464e-4b9b-9829-a930eabaef1c",
                              u"a2c17a63-37ab-4d29-9e05-faee796d2a41")
            .method<&CSystem::WindowsDirectory>(u"WindowsDirectory")
            .build();
    return description;
}

String CSystem::WindowsDirectory() {
    // What the buffer of 255 characters, one of them for the end, takes.
    constexpr std::size_t kLongest = 254;
    const String folder = platform::pathText(platform::settingsFolder());
    if (folder.size() > kLongest) {
        return u"\\";
    }
    return String(unicode::trim(folder)) + u"\\";
}

}  // namespace kap
