#pragma once

#include <CLI/CLI.hpp>

#include "cli/commands/registry/registry_command.hpp"

namespace kap::cli {

// Adds `registry` with its actions to the command line; what is typed goes into `registry`.
CLI::App* addRegistry(CLI::App& app, RegistryCommand& registry);

}  // namespace kap::cli
