#include <kaputil/platform/registry.hpp>

#include <utility>
#include <vector>

#include <kaputil/automation/error.hpp>

#include "platform/file_errors.hpp"
#include "platform/registry/tree.hpp"
#include "platform/win32/registry_key.hpp"

// The system's registry.
namespace kap::platform::registry {
namespace {

bool isNotThere(LSTATUS status) {
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
}

// True when it worked, false when there is no such key or value; anything else is raised.
bool succeeded(LSTATUS status) {
    if (status == ERROR_SUCCESS) {
        return true;
    }
    if (isNotThere(status)) {
        return false;
    }
    throwFileError(systemError(static_cast<DWORD>(status)));
}

}  // namespace

bool hasKey(std::u16string_view key) {
    return OpenedKey(key, KEY_QUERY_VALUE).isOpen();
}

std::optional<Value> value(std::u16string_view key, std::u16string_view name) {
    const OpenedKey opened(key, KEY_QUERY_VALUE);
    if (!opened.isOpen()) {
        return std::nullopt;
    }
    return opened.value(std::u16string(name));
}

std::vector<String> keysBelow(std::u16string_view key) {
    std::vector<String> names;
    if (key.empty()) {
        for (const std::u16string_view root : roots()) {
            names.emplace_back(root);
        }
        return names;
    }
    const OpenedKey opened(key, KEY_ENUMERATE_SUB_KEYS);
    return opened.isOpen() ? opened.keys() : names;
}

std::vector<NamedValue> valuesOf(std::u16string_view key) {
    const OpenedKey opened(key, KEY_QUERY_VALUE);
    return opened.isOpen() ? opened.values() : std::vector<NamedValue>();
}

bool setValue(std::u16string_view key, std::u16string_view name, const Value& value) {
    const OpenedKey opened(key, KEY_SET_VALUE);
    return opened.isOpen() &&
           succeeded(RegSetValueExW(opened.get(), wide(std::u16string(name)), 0, value.type,
                                    value.data.data(), static_cast<DWORD>(value.data.size())));
}

bool createKey(std::u16string_view key) {
    const auto [root, path] = rootAndPath(key);
    HKEY made = nullptr;
    DWORD disposition = 0;
    if (!succeeded(RegCreateKeyExW(root, wide(path), 0, nullptr, 0, KEY_QUERY_VALUE, nullptr, &made,
                                   &disposition))) {
        throw AutomationError(errors::kPathNotFound);
    }
    RegCloseKey(made);
    return disposition == REG_CREATED_NEW_KEY;
}

bool deleteKey(std::u16string_view key) {
    const auto [root, path] = rootAndPath(key);
    if (path.empty()) {
        throw AutomationError(errors::kInvalidArgument, u"A root cannot be removed");
    }
    return succeeded(RegDeleteTreeW(root, wide(path)));
}

bool deleteValue(std::u16string_view key, std::u16string_view name) {
    const OpenedKey opened(key, KEY_SET_VALUE);
    return opened.isOpen() && succeeded(RegDeleteValueW(opened.get(), wide(std::u16string(name))));
}

}  // namespace kap::platform::registry
