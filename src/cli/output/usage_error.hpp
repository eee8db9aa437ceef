#pragma once

#include <stdexcept>

namespace kap::cli {

// What was typed makes no sense; `what()` says why. The exit code is that of wrong usage.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace kap::cli
