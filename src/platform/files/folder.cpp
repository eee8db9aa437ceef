#include "platform/files/folder.hpp"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "platform/file_errors.hpp"
#include "platform/folder_names.hpp"
#include "platform/paths.hpp"

namespace kap::platform::files {
namespace {

namespace fs = std::filesystem;

void checkFolder(const fs::path& folder) {
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) {
        throw AutomationError(errors::kPathNotFound);
    }
}

}  // namespace

FolderEntries::FolderEntries(fs::path folder, Kind kind)
    : folder_(std::move(folder)), kind_(kind) {}

const ClassDescription& FolderEntries::classDescription() {
    static const ClassDescription description =
        ClassBuilder<FolderEntries>(u"FolderEntries", u"", u"")
            .property<&FolderEntries::Item>(u"Item", {u"Key"})
            .property<&FolderEntries::Count>(u"Count")
            .build(u"Item");
    return description;
}

std::vector<fs::path> FolderEntries::paths() const {
    checkFolder(folder_);
    std::vector<fs::path> found;
    std::error_code error;
    for (const fs::path& name : namesIn(folder_, error)) {
        fs::path path = folder_ / name;
        std::error_code ignored;  // of a link that leads nowhere: it is neither
        const bool wanted = kind_ == Kind::Folders ? fs::is_directory(path, ignored)
                                                   : fs::is_regular_file(path, ignored);
        if (wanted) {
            found.push_back(std::move(path));
        }
    }
    checkFile(error);
    std::ranges::sort(found);
    return found;
}

Ref<Object> FolderEntries::object(const fs::path& path) const {
    if (kind_ == Kind::Folders) {
        return make<Folder>(path);
    }
    return make<File>(path);
}

std::int32_t FolderEntries::Count() {
    return static_cast<std::int32_t>(paths().size());
}

Ref<Object> FolderEntries::Item(const String& key) {
    for (const fs::path& path : paths()) {
        if (unicode::sameName(pathText(path.filename()), key)) {
            return object(path);
        }
    }
    throw AutomationError(kind_ == Kind::Folders ? errors::kPathNotFound : errors::kFileNotFound);
}

std::vector<Variant> FolderEntries::elements() {
    std::vector<Variant> all;
    for (const fs::path& path : paths()) {
        all.emplace_back(object(path));
    }
    return all;
}

Folder::Folder(fs::path path) : path_(std::move(path)) {}

const ClassDescription& Folder::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Folder>(u"Folder", u"", u"")
            .property<&Folder::Path>(u"Path")
            .property<&Folder::Name>(u"Name")
            .property<&Folder::ParentFolder>(u"ParentFolder")
            .property<&Folder::IsRootFolder>(u"IsRootFolder")
            .property<&Folder::DateLastModified>(u"DateLastModified")
            .property<&Folder::Files>(u"Files")
            .property<&Folder::SubFolders>(u"SubFolders")
            .method<&Folder::Delete>(u"Delete", {Parameter(u"Force").otherwise(false)})
            .build(u"Path");
    return description;
}

String Folder::Path() {
    return pathText(path_);
}

String Folder::Name() {
    return pathText(path_.filename());
}

Date Folder::DateLastModified() {
    checkFolder(path_);
    return lastModified(path_);
}

Ref<Folder> Folder::ParentFolder() {
    return IsRootFolder() ? Ref<Folder>() : make<Folder>(path_.parent_path());
}

bool Folder::IsRootFolder() {
    return path_ == path_.root_path();
}

Ref<FolderEntries> Folder::Files() {
    checkFolder(path_);
    return make<FolderEntries>(path_, FolderEntries::Kind::Files);
}

Ref<FolderEntries> Folder::SubFolders() {
    checkFolder(path_);
    return make<FolderEntries>(path_, FolderEntries::Kind::Folders);
}

void Folder::Delete(bool /*force*/) {
    removeFolder(path_);
}

// What the standard library has for this ends the program when there is no memory.
void removeFolder(const fs::path& folder) {
    checkFolder(folder);
    std::error_code error;
    std::vector<fs::path> left = {folder};
    while (!left.empty()) {
        const fs::path present = left.back();
        bool isEmpty = true;
        const std::vector<fs::path> names = namesIn(present, error);
        checkFile(error);
        for (const fs::path& name : names) {
            const fs::path inside = present / name;
            if (fs::is_directory(fs::symlink_status(inside, error))) {
                left.push_back(inside);
                isEmpty = false;
            } else {
                fs::remove(inside, error);
                checkFile(error);
            }
        }
        if (isEmpty) {
            fs::remove(present, error);
            checkFile(error);
            left.pop_back();
        }
    }
}

}  // namespace kap::platform::files
