#pragma once

#include <string>

#include "cli/commands/config/configuration.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// A page for browsers: every field of a configuration with a column for each of its groups. Fields
// in which the groups differ are marked, and what a group has of its own.
[[nodiscard]] std::string settingsPage(const Configuration& configuration, const std::string& table,
                                       Language language);

}  // namespace kap::cli
