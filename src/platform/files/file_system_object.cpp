#include "platform/files/file_system_object.hpp"

#include <filesystem>
#include <memory>
#include <system_error>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "platform/file_errors.hpp"
#include "platform/paths.hpp"

namespace kap::platform::files {
namespace {

namespace fs = std::filesystem;

fs::path absolutePath(std::u16string_view path) {
    std::error_code error;
    fs::path absolute = fs::absolute(locate(path), error);
    checkFile(error);
    absolute = absolute.lexically_normal();
    return absolute.has_filename() ? absolute : absolute.parent_path();
}

constexpr std::u16string_view kSeparators = u"\\/";

// The last name of a path and what is in front of it, both without separators between.
struct SplitPath {
    std::u16string_view parent;
    std::u16string_view name;
};
SplitPath split(std::u16string_view path) {
    while (path.size() > 1 && kSeparators.find(path.back()) != std::u16string_view::npos) {
        path.remove_suffix(1);
    }
    const std::size_t separator = path.find_last_of(kSeparators);
    if (separator == std::u16string_view::npos) {
        return {{}, path};
    }
    // The separator of a root stays with it.
    return {path.substr(0, separator == 0 ? 1 : separator), path.substr(separator + 1)};
}

}  // namespace

const ClassDescription& FileSystemObject::classDescription() {
    constexpr std::int32_t kReading = static_cast<std::int32_t>(IoMode::Reading);
    static const ClassDescription description =
        ClassBuilder<FileSystemObject>(u"FileSystemObject", u"", u"")
            .method<&FileSystemObject::BuildPath>(u"BuildPath", {u"Path", u"Name"})
            .method<&FileSystemObject::GetAbsolutePathName>(u"GetAbsolutePathName", {u"Path"})
            .method<&FileSystemObject::GetBaseName>(u"GetBaseName", {u"Path"})
            .method<&FileSystemObject::GetExtensionName>(u"GetExtensionName", {u"Path"})
            .method<&FileSystemObject::GetFileName>(u"GetFileName", {u"Path"})
            .method<&FileSystemObject::GetParentFolderName>(u"GetParentFolderName", {u"Path"})
            .method<&FileSystemObject::FileExists>(u"FileExists", {u"FileSpec"})
            .method<&FileSystemObject::FolderExists>(u"FolderExists", {u"FolderSpec"})
            .method<&FileSystemObject::GetFile>(u"GetFile", {u"FilePath"})
            .method<&FileSystemObject::GetFolder>(u"GetFolder", {u"FolderPath"})
            .method<&FileSystemObject::CreateTextFile>(
                u"CreateTextFile", {u"FileName", Parameter(u"Overwrite").otherwise(true),
                                    Parameter(u"Unicode").otherwise(false)})
            .method<&FileSystemObject::OpenTextFile>(
                u"OpenTextFile", {u"FileName", Parameter(u"IOMode").otherwise(kReading),
                                  Parameter(u"Create").otherwise(false),
                                  Parameter(u"Format").otherwise(std::int32_t{0})})
            .method<&FileSystemObject::CreateFolder>(u"CreateFolder", {u"Path"})
            .method<&FileSystemObject::DeleteFile>(
                u"DeleteFile", {u"FileSpec", Parameter(u"Force").otherwise(false)})
            .method<&FileSystemObject::DeleteFolder>(
                u"DeleteFolder", {u"FolderSpec", Parameter(u"Force").otherwise(false)})
            .method<&FileSystemObject::CopyFile>(
                u"CopyFile",
                {u"Source", u"Destination", Parameter(u"OverWriteFiles").otherwise(true)})
            .method<&FileSystemObject::MoveFile>(u"MoveFile", {u"Source", u"Destination"})
            .build();
    return description;
}

bool FileSystemObject::FileExists(const String& fileSpec) {
    std::error_code ignored;
    const fs::path path = locate(fileSpec);
    return fs::exists(path, ignored) && !fs::is_directory(path, ignored);
}

bool FileSystemObject::FolderExists(const String& folderSpec) {
    std::error_code ignored;
    return fs::is_directory(locate(folderSpec), ignored);
}

Ref<File> FileSystemObject::GetFile(const String& filePath) {
    if (!FileExists(filePath)) {
        throw AutomationError(errors::kFileNotFound);
    }
    return make<File>(absolutePath(filePath));
}

Ref<Folder> FileSystemObject::GetFolder(const String& folderPath) {
    if (!FolderExists(folderPath)) {
        throw AutomationError(errors::kPathNotFound);
    }
    return make<Folder>(absolutePath(folderPath));
}

Ref<TextStream> FileSystemObject::CreateTextFile(const String& fileName, bool overwrite,
                                                 bool unicode) {
    return make<TextStream>(
        std::make_unique<OutputFile>(locate(fileName),
                                     overwrite ? OutputFile::Begin::Empty : OutputFile::Begin::New),
        unicode);
}

Ref<TextStream> FileSystemObject::OpenTextFile(const String& fileName, std::int32_t ioMode,
                                               bool create, std::int32_t format) {
    return openTextStream(locate(fileName), ioMode, create, format);
}

Ref<Folder> FileSystemObject::CreateFolder(const String& path) {
    const fs::path folder = absolutePath(path);
    std::error_code error;
    const bool made = fs::create_directory(folder, error);
    if (error) {
        throwFileError(error, folder);
    }
    if (!made) {
        throw AutomationError(errors::kFileAlreadyExists);
    }
    return make<Folder>(folder);
}

void FileSystemObject::DeleteFile(const String& fileSpec, bool /*force*/) {
    removeFile(locate(fileSpec));
}

void FileSystemObject::DeleteFolder(const String& folderSpec, bool /*force*/) {
    removeFolder(locate(folderSpec));
}

void FileSystemObject::CopyFile(const String& source, const String& destination,
                                bool overwriteFiles) {
    static_cast<void>(GetFile(source));  // raises when it is not there
    copyFile(locate(source), destination, overwriteFiles);
}

void FileSystemObject::MoveFile(const String& source, const String& destination) {
    static_cast<void>(moveFile(locate(source), destination));
}

String FileSystemObject::BuildPath(const String& path, const String& name) {
    const bool separated = path.empty() || name.empty() ||
                           kSeparators.find(path[path.size() - 1]) != std::u16string_view::npos;
    return path + (separated ? u"" : u"\\") + name.view();
}

String FileSystemObject::GetFileName(const String& path) {
    return split(path).name;
}

String FileSystemObject::GetBaseName(const String& path) {
    const std::u16string_view name = split(path).name;
    return name.substr(0, name.rfind(u'.'));
}

String FileSystemObject::GetExtensionName(const String& path) {
    const std::u16string_view name = split(path).name;
    const std::size_t point = name.rfind(u'.');
    return point == std::u16string_view::npos ? std::u16string_view() : name.substr(point + 1);
}

String FileSystemObject::GetParentFolderName(const String& path) {
    return split(path).parent;
}

String FileSystemObject::GetAbsolutePathName(const String& path) {
    return pathText(absolutePath(path));
}

}  // namespace kap::platform::files
