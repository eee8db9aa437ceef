#pragma once

#include <filesystem>

namespace kap::cli {

// Throws UsageError for a file with a password in it that others than its owner may read or write.
// Where files have no such rights nothing is asked.
void requirePrivate(const std::filesystem::path& file);

}  // namespace kap::cli
