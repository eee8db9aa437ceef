#pragma once

#include <optional>
#include <string>

namespace kap::platform {

// What the system knows of the user who runs the process.
struct Account {
    std::string name;
    std::string home;
};

// nullopt when it does not know the user.
[[nodiscard]] std::optional<Account> currentAccount();

}  // namespace kap::platform
