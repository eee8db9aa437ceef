#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "cli/commands/shell/schema_names.hpp"
#include "cli/commands/shell/statement_output.hpp"
#include "cli/commands/sql/script_variables.hpp"

namespace kap::cli {

// What the shell's own commands work with.
struct ShellState {
    ado::Connection& connection;
    SchemaNames& names;
    ShellSettings settings = {};
    ScriptVariables variables = {};
    bool plan = false;
    bool done = false;
};

// Runs a line that begins with ':'.
void runShellCommand(const std::string& line, ShellState& state);

// The names of the commands, with their ':'.
[[nodiscard]] std::vector<std::string> shellCommandNames();

}  // namespace kap::cli
