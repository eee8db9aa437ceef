#pragma once

#include <span>

#include "fuzz/targets.hpp"

namespace kap::fuzz {

// The readers of what strangers send: scripts, settings files, contacts, connection strings,
// databases.
[[nodiscard]] std::span<const Target> readerTargets();

}  // namespace kap::fuzz
