#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace kap::bench {

// An empty folder for the files of a benchmark, which goes with the object.
class Folder {
public:
    Folder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kaputil-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("a folder for the benchmark cannot be made: " + pattern);
        }
        path_ = pattern;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] std::string file(const char* name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

}  // namespace kap::bench
