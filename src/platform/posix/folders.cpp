#include <kaputil/platform/folders.hpp>

#include <cstdlib>
#include <string>
#include <system_error>

#include "platform/posix/account.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;

fs::path variable(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? fs::path() : fs::path(value);
}

fs::path home() {
    fs::path chosen = variable("HOME");
    if (!chosen.empty()) {
        return chosen;
    }
    const auto account = currentAccount();
    return account ? fs::path(account->home) : fs::path("/");
}

// The desktop's rule: the variable when it holds an absolute path, else the usual folder at home.
fs::path userFolder(const char* name, const char* usual) {
    const fs::path chosen = variable(name);
    return chosen.is_absolute() ? chosen : home() / usual;
}

fs::path ownFolder(const char* name, const char* usual) {
    const fs::path chosen = variable("KAPUTIL_HOME");
    return chosen.empty() ? userFolder(name, usual) / "kaputil" : chosen;
}

}  // namespace

fs::path settingsFolder() {
    return ownFolder("XDG_CONFIG_HOME", ".config");
}

fs::path dataFolder() {
    return ownFolder("XDG_DATA_HOME", ".local/share");
}

fs::path applicationFolder() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::current_path() : program.parent_path();
}

}  // namespace kap::platform
