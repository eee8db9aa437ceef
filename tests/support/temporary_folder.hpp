#pragma once

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace kap::test {

// A folder of its own, removed with everything in it at the end.
class TemporaryFolder {
public:
    TemporaryFolder() : TemporaryFolder(std::filesystem::temp_directory_path()) {}
    explicit TemporaryFolder(const std::filesystem::path& parent) {
        std::string pattern = (parent / "kaputil-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::filesystem::filesystem_error(
                "mkdtemp", std::error_code(errno, std::generic_category()));
        }
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const {
        return (path_ / name).string();
    }
    // The connection string of an embedded database in the folder.
    [[nodiscard]] std::string database(const std::string& name = "azienda.db") const {
        return "Provider=KapLocal;Data Source=" + file(name);
    }

private:
    std::filesystem::path path_;
};

}  // namespace kap::test
