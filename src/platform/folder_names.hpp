#pragma once

#include <filesystem>
#include <system_error>
#include <vector>

namespace kap::platform {

// The names in a folder, in no order. Where the standard library's iterator would end the program
// when there is no memory for a name, this raises std::bad_alloc like everything else.
[[nodiscard]] std::vector<std::filesystem::path> namesIn(const std::filesystem::path& folder,
                                                         std::error_code& error);

}  // namespace kap::platform
