#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "data/connection_string.hpp"
#include "engine/sqlite/server_errors.hpp"

namespace kap::engine {

// When SQLite waits for the disk: after every commit, only when it must to keep the file sound, or
// never (a power cut may then damage the file).
enum class Synchronous : std::uint8_t { Off, Normal, Full };

// What a connection string says about an embedded database.
//
//   Data Source   the file, or :memory: or :memory:NAME for a database that this process shares by
//                 name until its last connection closes; required
//   Mode          ReadWrite (default; makes the file when it is missing) or Read
//   Lock Timeout  seconds to wait for other writers, 0 to 86400; 30 when not given
//   Synchronous   Full (default), Normal or Off
//
// User ID and Password may be there, but empty: a file has no users.
struct Options {
    // Raises kInvalidArgument for a key or value that is not one of these, naming it.
    static Options parse(const ado::ConnectionString& keys);

    [[nodiscard]] bool inMemory() const { return source.starts_with(":memory:"); }
    [[nodiscard]] DatabasePlace place() const { return {source, lockTimeout}; }

    std::string source;
    bool readOnly = false;
    std::chrono::seconds lockTimeout{30};
    Synchronous synchronous = Synchronous::Full;
};

}  // namespace kap::engine
