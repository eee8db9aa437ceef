#pragma once

#include <cstdint>

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// Reads and writes keys of profile files ("INI files"). How such a file is read and written, and
// where a name without a folder leads, is told in <kaputil/platform/profile_file.hpp>.
class KAPUTIL_EXPORT CFileINI final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The value of a key, empty when there is none. Raises 6 for one longer than 255 characters.
    [[nodiscard]] String ReadIni(const String& applicationName, const String& keyName,
                                 const String& fileINI);

    // Writes a key; a file that is missing is made. Not 0 when it was written.
    std::int16_t WriteIni(const String& applicationName, const String& keyName, const String& value,
                          const String& fileINI);

    // The name, without a folder, of the INI file that the user should use: the user's name and
    // ".ini" when the folder `sPath` has such a file in any case, else `sNomeApplicazione` and
    // ".ini". An empty `sPath` becomes the folder of the host application, in the caller's variable
    // too. Raises the file-system object's error (76) for a folder that is not there.
    [[nodiscard]] Variant NomeFileINI(ByRef<String> sPath = u"",
                                      ByRef<String> sNomeApplicazione = u"Vertex");
};

}  // namespace kap
