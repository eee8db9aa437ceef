#pragma once

#include <filesystem>

#include <kaputil/base/export.hpp>

namespace kap::platform {

// The folder of the user's settings, which stands where programs look for the Windows directory:
// the variable KAPUTIL_HOME names it; without it, it is `kaputil` in the user's folder for
// settings. It need not be there.
[[nodiscard]] KAPUTIL_EXPORT std::filesystem::path settingsFolder();

// The folder of what the user keeps with the library (contacts, drafts): KAPUTIL_HOME again, else
// `kaputil` in the user's folder for data. It need not be there.
[[nodiscard]] KAPUTIL_EXPORT std::filesystem::path dataFolder();

// The folder of the program that loaded the library.
[[nodiscard]] KAPUTIL_EXPORT std::filesystem::path applicationFolder();

}  // namespace kap::platform
