#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <kaputil/ado/connection.hpp>

namespace kap::cli {

// What a command does with a database. One that only reads never makes the file that it is to read.
enum class Access : std::uint8_t { Reading, Writing };

// Opens a database and works on it. Errors go to standard error; the exit code is that of the work,
// or tells which of both failed.
[[nodiscard]] int withDatabase(const std::string& connectionString, Access access, bool json,
                               const std::function<int(ado::Connection&)>& work);

}  // namespace kap::cli
