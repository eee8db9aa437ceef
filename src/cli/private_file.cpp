#include "cli/private_file.hpp"

#include <system_error>

#include "cli/output/usage_error.hpp"

namespace kap::cli {

void requirePrivate(const std::filesystem::path& file) {
#ifndef _WIN32
    using std::filesystem::perms;
    std::error_code error;
    const perms rights = std::filesystem::status(file, error).permissions();
    if (error || (rights & (perms::group_all | perms::others_all)) != perms::none) {
        throw UsageError(file.string() +
                         " holds a password, and others may read it; let nobody but its owner: "
                         "chmod 600");
    }
#else
    static_cast<void>(file);
#endif
}

}  // namespace kap::cli
