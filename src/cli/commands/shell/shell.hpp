#pragma once

#include <string>

#include <kaputil/ado/connection.hpp>

namespace kap::cli {

// The shell in front of an open database: reads statements from the terminal, runs them and shows
// their answers, until the user has enough. `name` is the database's, for the prompt. Gives back
// the exit code.
[[nodiscard]] int runShell(ado::Connection& connection, const std::string& name);

}  // namespace kap::cli
