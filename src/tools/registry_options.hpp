#pragma once

#include <CLI/CLI.hpp>

#include "tools/registry_command.hpp"

namespace kap::tools {

// Adds `registry` with its actions to the command line; what is typed goes into `registry`.
CLI::App* addRegistry(CLI::App& app, RegistryCommand& registry);

}  // namespace kap::tools
