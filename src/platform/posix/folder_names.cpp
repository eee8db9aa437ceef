#include "platform/folder_names.hpp"

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace kap::platform {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

std::vector<std::filesystem::path> namesIn(const std::filesystem::path& folder,
                                           std::error_code& error) {
    std::vector<std::filesystem::path> names;
    const std::unique_ptr<DIR, CloseFolder> opened(opendir(folder.c_str()));
    if (!opened) {
        error = std::error_code(errno, std::generic_category());
        return names;
    }
    while (true) {
        errno = 0;
        const dirent* entry = readdir(opened.get());  // NOLINT(concurrency-mt-unsafe): its own
        if (entry == nullptr) {
            error = std::error_code(errno, std::generic_category());
            return names;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
}

}  // namespace kap::platform
