#include <kaputil/platform/profile_file.hpp>

#include <filesystem>
#include <optional>
#include <string>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/folders.hpp>

#include "base/unicode.hpp"
#include "platform/folder_lock.hpp"
#include "platform/paths.hpp"
#include "platform/profile_text.hpp"
#include "platform/whole_file.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;

bool hasFolder(std::u16string_view file) {
    return file.find_first_of(u"\\/:") != std::u16string_view::npos;
}

fs::path profilePath(std::u16string_view file) {
    if (hasFolder(file)) {
        return locate(file);
    }
    return locate(pathText(settingsFolder() / "").units() + std::u16string(file));
}

std::optional<std::u16string> readValue(std::u16string_view section, std::u16string_view key,
                                        std::u16string_view file) {
    if (file.empty()) {
        return std::nullopt;
    }
    try {
        const auto bytes = readFile(profilePath(file), kLargestSettings);
        return ProfileText(bytes.value_or("")).value(section, key);
    } catch (const AutomationError&) {
        return std::nullopt;  // a file that cannot be read has no keys
    }
}

}  // namespace

void changeProfile(std::u16string_view section, std::u16string_view key, std::u16string_view value,
                   std::u16string_view file) {
    if (file.empty()) {
        throw AutomationError(errors::kBadFileName);
    }
    if (!hasFolder(file)) {
        makePrivateFolder(settingsFolder());
    }
    const fs::path path = realFile(profilePath(file));
    const FolderLock lock(path.parent_path());
    ProfileText text(readFile(path, kLargestSettings).value_or(""));
    if (!text.put(section, key, value)) {
        throw AutomationError(errors::kInvalidArgument);
    }
    const auto bytes = text.bytes();
    if (!bytes) {
        throw AutomationError(errors::kInvalidArgument);
    }
    replaceFile(path, *bytes, FileAccess::Shared);
}

String readProfile(std::u16string_view section, std::u16string_view key,
                   std::u16string_view otherwise, std::size_t capacity, std::u16string_view file) {
    auto text =
        readValue(section, key, file).value_or(std::u16string(unicode::trimRight(otherwise)));
    if (text.size() >= capacity) {
        text.resize(capacity == 0 ? 0 : capacity - 1);
    }
    return text;
}

bool writeProfile(std::u16string_view section, std::u16string_view key, std::u16string_view value,
                  std::u16string_view file) {
    try {
        changeProfile(section, key, value, file);
        return true;
    } catch (const AutomationError&) {
        return false;  // callers are told by the result alone
    }
}

}  // namespace kap::platform
