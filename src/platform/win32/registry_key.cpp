#include "platform/win32/registry_key.hpp"

#include <array>

#include "platform/file_errors.hpp"
#include "platform/registry/tree.hpp"

namespace kap::platform::registry {
namespace {

std::array<std::pair<std::u16string_view, HKEY>, 4> rootHandles() {
    return {{{u"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
             {u"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
             {u"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
             {u"HKEY_USERS", HKEY_USERS}}};
}

// Room for the longest names of keys and values, with the NUL behind.
constexpr DWORD kKeyNameRoom = kLongestKeyName + 1;
constexpr DWORD kValueNameRoom = kLongestValueName + 1;

void check(LSTATUS status) {
    if (status != ERROR_SUCCESS) {
        throwFileError(systemError(static_cast<DWORD>(status)));
    }
}

}  // namespace

std::pair<HKEY, std::u16string> rootAndPath(std::u16string_view key) {
    const std::u16string path = normalPath(key);
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    for (const auto& [name, handle] : rootHandles()) {
        if (name == std::u16string_view(path).substr(0, end)) {
            return {handle, end == path.size() ? std::u16string() : path.substr(end + 1)};
        }
    }
    return {HKEY_CURRENT_USER, path};  // not reached: a normal path begins with a root
}

OpenedKey::OpenedKey(std::u16string_view key, REGSAM access) {
    const auto [root, path] = rootAndPath(key);
    const LSTATUS status = RegOpenKeyExW(root, wide(path), 0, access, &key_);
    if (status != ERROR_SUCCESS) {
        key_ = nullptr;
    }
    if (status != ERROR_FILE_NOT_FOUND && status != ERROR_PATH_NOT_FOUND) {
        check(status);
    }
}

OpenedKey::~OpenedKey() {
    if (key_ != nullptr) {
        RegCloseKey(key_);
    }
}

std::optional<Value> OpenedKey::value(const std::u16string& name) const {
    Value value;
    for (;;) {
        DWORD size = static_cast<DWORD>(value.data.size());
        DWORD type = 0;
        const LSTATUS status =
            RegQueryValueExW(key_, wide(name), nullptr, &type,
                             value.data.empty() ? nullptr : value.data.data(), &size);
        if (status == ERROR_FILE_NOT_FOUND) {
            return std::nullopt;
        }
        if (status != ERROR_MORE_DATA) {
            check(status);
        }
        value.type = type;
        const bool complete = status == ERROR_SUCCESS && size <= value.data.size();
        value.data.resize(size);
        if (complete) {
            return value;
        }
    }
}

std::vector<String> OpenedKey::keys() const {
    std::vector<String> names;
    for (DWORD index = 0;; ++index) {
        std::array<wchar_t, kKeyNameRoom> name{};
        DWORD length = kKeyNameRoom;
        const LSTATUS status =
            RegEnumKeyExW(key_, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS) {
            return names;
        }
        check(status);
        names.emplace_back(narrowView(name.data(), length));
    }
}

std::vector<NamedValue> OpenedKey::values() const {
    std::vector<NamedValue> values;
    std::vector<wchar_t> name(kValueNameRoom);
    for (DWORD index = 0;; ++index) {
        DWORD length = kValueNameRoom;
        const LSTATUS status =
            RegEnumValueW(key_, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS) {
            return values;
        }
        check(status);
        const String found(narrowView(name.data(), length));
        if (auto held = value(found.units())) {
            values.push_back({found, std::move(*held)});
        }
    }
}

}  // namespace kap::platform::registry
