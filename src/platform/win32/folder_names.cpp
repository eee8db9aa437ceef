#include "platform/folder_names.hpp"

namespace kap::platform {

std::vector<std::filesystem::path> namesIn(const std::filesystem::path& folder,
                                           std::error_code& error) {
    std::vector<std::filesystem::path> names;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename());
    }
    return names;
}

}  // namespace kap::platform
