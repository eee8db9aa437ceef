#pragma once

#include <cstdint>
#include <filesystem>

#include <kaputil/automation/class_description.hpp>

#include "platform/files/file.hpp"

namespace kap::platform::files {

// The files of a folder, or the folders in it, by name; sorted, and read anew each time.
class FolderEntries final : public DescribedObject {
public:
    enum class Kind : unsigned char { Files, Folders };

    FolderEntries(std::filesystem::path folder, Kind kind);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count();
    // The one with this name. Raises 53 for a file, 76 for a folder that is not there.
    [[nodiscard]] Ref<Object> Item(const String& key);
    [[nodiscard]] std::vector<Variant> elements() override;

private:
    [[nodiscard]] std::vector<std::filesystem::path> paths() const;
    [[nodiscard]] Ref<Object> object(const std::filesystem::path& path) const;

    std::filesystem::path folder_;
    Kind kind_;
};

// A folder that is there. Raises 76 later, when it is gone.
class Folder final : public DescribedObject {
public:
    explicit Folder(std::filesystem::path path);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String Path();
    [[nodiscard]] String Name();
    [[nodiscard]] Date DateLastModified();
    // The unset object for a root.
    [[nodiscard]] Ref<Folder> ParentFolder();
    [[nodiscard]] bool IsRootFolder();
    [[nodiscard]] Ref<FolderEntries> Files();
    [[nodiscard]] Ref<FolderEntries> SubFolders();
    void Delete(bool force);

private:
    std::filesystem::path path_;
};

void removeFolder(const std::filesystem::path& folder);

}  // namespace kap::platform::files
