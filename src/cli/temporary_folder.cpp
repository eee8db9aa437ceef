#include "cli/temporary_folder.hpp"

#include <random>
#include <string>
#include <system_error>

#include <kaputil/automation/plain_text.hpp>

namespace kap::cli {

TemporaryFolder::TemporaryFolder() {
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    std::random_device random;
    do {
        path_ = parent / ("kaputil-" + plain::text(random()));
    } while (!std::filesystem::create_directory(path_));  // false: somebody has that name
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;  // a file that cannot be removed is the system's to clean up
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace kap::cli
