#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <kaputil/platform/registry.hpp>

#include "platform/win32/wide.hpp"

namespace kap::platform::registry {

// The root of a path and what stands behind it. Raises 52 for a path that does not begin with one.
[[nodiscard]] std::pair<HKEY, std::u16string> rootAndPath(std::u16string_view key);

// A key of the system's registry that is opened, or was not there.
class OpenedKey {
public:
    // Raises the file-system object's errors for a key that may not be opened this way.
    OpenedKey(std::u16string_view key, REGSAM access);
    OpenedKey(const OpenedKey&) = delete;
    OpenedKey& operator=(const OpenedKey&) = delete;
    ~OpenedKey();

    [[nodiscard]] bool isOpen() const noexcept { return key_ != nullptr; }
    [[nodiscard]] HKEY get() const noexcept { return key_; }

    [[nodiscard]] std::optional<Value> value(const std::u16string& name) const;
    [[nodiscard]] std::vector<String> keys() const;
    [[nodiscard]] std::vector<NamedValue> values() const;

private:
    HKEY key_ = nullptr;
};

}  // namespace kap::platform::registry
