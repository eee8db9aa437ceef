#pragma once

#include <filesystem>
#include <string_view>

#include <kaputil/automation/string.hpp>

namespace kap::platform {

// The file or folder that a client's path names: '\' and '/' both separate, and a name that is not
// there exactly stands for one that differs from it only in case. What is not there at all keeps
// the name it was given. Raises 52 for a path that no file can have: one
// of 4096 characters, for example.
[[nodiscard]] std::filesystem::path locate(std::u16string_view path);

// A path or a name as clients see it. Bytes that are no UTF-8 are read as code page 1252, so that a
// folder can be listed whatever is in it.
[[nodiscard]] String pathText(const std::filesystem::path& path);

}  // namespace kap::platform
