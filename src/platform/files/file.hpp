#pragma once

#include <cstdint>
#include <filesystem>

#include <kaputil/automation/class_description.hpp>

#include "platform/files/text_stream.hpp"

namespace kap::platform::files {

class Folder;

// A file that is there. Raises 53 later, when it is gone.
class File final : public DescribedObject {
public:
    explicit File(std::filesystem::path path);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String Path();
    [[nodiscard]] String Name();
    // A Long, or a Double where that is too small.
    [[nodiscard]] Variant Size();
    [[nodiscard]] Date DateLastModified();
    [[nodiscard]] Ref<Folder> ParentFolder();
    void Delete(bool force);
    void Copy(const String& destination, bool overwriteFiles);
    void Move(const String& destination);
    [[nodiscard]] Ref<TextStream> OpenAsTextStream(std::int32_t ioMode, std::int32_t format);

private:
    std::filesystem::path path_;
};

// Removes, copies or moves a file for the objects. A destination that is a folder, or ends in a
// separator, takes the file under its own name.
void removeFile(const std::filesystem::path& file);
void copyFile(const std::filesystem::path& file, const String& destination, bool overwrite);
[[nodiscard]] std::filesystem::path moveFile(const std::filesystem::path& file,
                                             const String& destination);

// The last change of a file or folder in local time, to the second.
[[nodiscard]] Date lastModified(const std::filesystem::path& path);

}  // namespace kap::platform::files
