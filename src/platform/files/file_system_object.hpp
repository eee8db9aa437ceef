#pragma once

#include <cstdint>

#include <kaputil/automation/class_description.hpp>

#include "platform/files/file.hpp"
#include "platform/files/folder.hpp"
#include "platform/files/text_stream.hpp"

namespace kap::platform::files {

// "Scripting.FileSystemObject": files and folders by name. Paths are read as `locate` does. Errors
// have the numbers of the run-time library: 52, 53, 57, 58, 61, 70, 76.
class FileSystemObject final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] bool FileExists(const String& fileSpec);
    [[nodiscard]] bool FolderExists(const String& folderSpec);
    [[nodiscard]] Ref<File> GetFile(const String& filePath);
    [[nodiscard]] Ref<Folder> GetFolder(const String& folderPath);

    // Makes a file for writing, empty also when it was there, or raises 58 without `overwrite`.
    Ref<TextStream> CreateTextFile(const String& fileName, bool overwrite, bool unicode);
    Ref<TextStream> OpenTextFile(const String& fileName, std::int32_t ioMode, bool create,
                                 std::int32_t format);

    Ref<Folder> CreateFolder(const String& path);
    void DeleteFile(const String& fileSpec, bool force);
    void DeleteFolder(const String& folderSpec, bool force);
    void CopyFile(const String& source, const String& destination, bool overwriteFiles);
    void MoveFile(const String& source, const String& destination);

    // What follows only reads the text of a path.
    [[nodiscard]] String BuildPath(const String& path, const String& name);
    [[nodiscard]] String GetFileName(const String& path);
    [[nodiscard]] String GetBaseName(const String& path);
    [[nodiscard]] String GetExtensionName(const String& path);
    [[nodiscard]] String GetParentFolderName(const String& path);
    [[nodiscard]] String GetAbsolutePathName(const String& path);
};

}  // namespace kap::platform::files
