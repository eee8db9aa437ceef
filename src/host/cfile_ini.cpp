#include <kaputil/host/cfile_ini.hpp>

#include <limits>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/host/services.hpp>
#include <kaputil/platform/creatable_objects.hpp>
#include <kaputil/platform/folders.hpp>
#include <kaputil/platform/profile_file.hpp>

#include "automation/class_builder.hpp"
#include "automation/late_bound.hpp"
#include "base/unicode.hpp"
#include "platform/paths.hpp"

namespace kap {
namespace {

constexpr std::size_t kBufferSize = 512;

bool folderHas(const String& folder, const String& name) {
    const Variant files = platform::createObject(u"Scripting.FileSystemObject");
    const Variant listed = late::get(late::call(files, u"GetFolder", {folder}), u"Files");
    const std::u16string wanted = unicode::upper(name);
    bool found = false;
    for (const Variant& file : late::objectOf(listed).elements()) {
        const String candidate = convert::toString(late::get(file, u"Name"));
        found = found || unicode::upper(candidate) == wanted;
    }
    return found;
}

}  // namespace

const ClassDescription& CFileINI::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CFileINI>(u"CFileINI", u"6d508732-1be6-4a1b-b796-8fe52569b49e",
                               u"3f65d614-9991-4046-97ea-fd7a2eac2c21")
            .method<&CFileINI::ReadIni>(u"ReadIni", {u"ApplicationName", u"KeyName", u"FileINI"})
            .method<&CFileINI::WriteIni>(u"WriteIni",
                                         {u"ApplicationName", u"KeyName", u"Value", u"FileINI"})
            .method<&CFileINI::NomeFileINI>(u"NomeFileINI",
                                            {Parameter(u"sPath").otherwise(u""),
                                             Parameter(u"sNomeApplicazione").otherwise(u"Vertex")})
            .build();
    return description;
}

String CFileINI::ReadIni(const String& applicationName, const String& keyName,
                         const String& fileINI) {
    String value = platform::readProfile(applicationName, keyName, u" ", kBufferSize, fileINI);
    // Deliberately an error: the length is kept in a byte, and clients trap it.
    if (value.size() > std::numeric_limits<std::uint8_t>::max()) {
        throw AutomationError(errors::kOverflow);
    }
    return value;
}

std::int16_t CFileINI::WriteIni(const String& applicationName, const String& keyName,
                                const String& value, const String& fileINI) {
    return platform::writeProfile(applicationName, keyName, value, fileINI) ? 1 : 0;
}

Variant CFileINI::NomeFileINI(ByRef<String> sPath, ByRef<String> sNomeApplicazione) {
    if (sPath->empty()) {
        *sPath = platform::pathText(platform::applicationFolder());
    }
    const String candidate = host::kapNomeUtente() + u".ini";
    return folderHas(*sPath, candidate) ? candidate : *sNomeApplicazione + u".ini";
}

}  // namespace kap
