#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/values/value.hpp"

namespace kap::engine {

// What the database says of itself when scripts ask what server they run on. Scripts decide by it
// which statements they may use, so the numbers are those of a server that has what is here.

// @@version.
[[nodiscard]] std::string versionText();
// The machine, and the user who is logged on to it; empty when the system does not say.
[[nodiscard]] std::string hostName();
[[nodiscard]] std::string loginName();
// A number that tells the processes of one machine apart, as far as 16 bits do.
[[nodiscard]] std::int64_t sessionNumber();
// The number of this process as HOST_ID() tells it: ten characters.
[[nodiscard]] std::string hostProcess();
// SERVERPROPERTY('ProductVersion')...; null for a property that there is none of.
[[nodiscard]] Value serverProperty(std::string_view name);

}  // namespace kap::engine
