#pragma once

#include <span>

#include "fuzz/targets.hpp"

namespace kap::fuzz {

// The readers of what strangers send: scripts, settings files, contacts, connection strings,
// databases.
[[nodiscard]] std::span<const Target> readerTargets();

// Scripts that are run, and the conversions of the dialect.
[[nodiscard]] std::span<const Target> sqlTargets();

// Files of rows and scripts, as the dialect and the command line read them.
[[nodiscard]] std::span<const Target> fileTargets();

// JSON and XML, as the dialect reads and writes them.
[[nodiscard]] std::span<const Target> markupTargets();

}  // namespace kap::fuzz
