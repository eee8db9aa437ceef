#include "platform/whole_file.hpp"

#include <array>

#include "platform/file_errors.hpp"
#include "platform/random_name.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform {
namespace {

namespace fs = std::filesystem;

void* openOrThrow(const fs::path& file, DWORD access, DWORD disposition) {
    void* opened = CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        throwFileError(lastError());
    }
    return opened;
}

// A new file beside the one to be replaced, removed again unless it takes its place.
class Replacement {
public:
    explicit Replacement(const fs::path& file)
        : path_(file.parent_path() / (randomUuid() + ".tmp")),
          opened_(openOrThrow(path_, GENERIC_WRITE, CREATE_NEW)) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        opened_.reset();
        if (!path_.empty()) {
            DeleteFileW(path_.c_str());
        }
    }

    void write(std::string_view content) {
        DWORD written = 0;
        if (WriteFile(opened_.get(), content.data(), static_cast<DWORD>(content.size()), &written,
                      nullptr) == FALSE ||
            FlushFileBuffers(opened_.get()) == FALSE) {
            throwFileError(lastError());
        }
        opened_.reset();
    }

    void takePlaceOf(const fs::path& file) {
        if (MoveFileExW(path_.c_str(), file.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE) {
            throwFileError(lastError());
        }
        path_.clear();
    }

private:
    fs::path path_;
    Handle opened_;
};

}  // namespace

fs::path realFile(const fs::path& file) {
    std::error_code error;
    fs::path real = fs::canonical(file, error);
    return error ? fs::absolute(file) : real;
}

std::optional<std::string> readFile(const fs::path& file, std::uintmax_t most) {
    void* opened = CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                               nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
            return std::nullopt;
        }
        throwFileError(systemError(error));
    }
    const Handle closing(opened);
    std::string content;
    std::array<char, 1 << 16> buffer{};
    for (;;) {
        DWORD got = 0;
        if (ReadFile(opened, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) ==
            FALSE) {
            throwFileError(lastError());
        }
        if (got == 0) {
            return content;
        }
        content.append(buffer.data(), got);
        if (content.size() > most) {
            refuseLongFile(file, most);
        }
    }
}

// Who may read it is what the folder passes on to its files.
void replaceFile(const fs::path& file, std::string_view content, FileAccess /*access*/) {
    const fs::path real = realFile(file);
    Replacement replacement(real);
    replacement.write(content);
    replacement.takePlaceOf(real);
}

void makePrivateFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    checkFile(error);
}

}  // namespace kap::platform
