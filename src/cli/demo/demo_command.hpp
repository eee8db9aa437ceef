#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kap::cli {

// `kaputil demo`: makes the sample company where there is none and lets two users work in it.
struct DemoCommand {
    std::optional<std::string> database;  // the company's file; none: a temporary one
    std::uint64_t seed = 2026;
    bool json = false;

    // Shows every step on standard output and gives back the exit code: 0 only when each one ended
    // as it should.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
