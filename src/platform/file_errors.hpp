#pragma once

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace kap::platform {

// Raises what the file-system object raises for a failure of the host's file system: 53 for a file
// that is not there, 58 for one that is, 61, 70 (also for one that others have locked, and for a
// pipe in a file's place), 76, and 57 for everything else.
[[noreturn]] void throwFileError(std::error_code error);

// The same for what failed with this file: 76 when its folder is not there either.
[[noreturn]] void throwFileError(std::error_code error, const std::filesystem::path& file);

// Raises 5 for a file that has more than the `most` bytes that are read of one.
[[noreturn]] void refuseLongFile(const std::filesystem::path& file, std::uintmax_t most);

// Raises what throwFileError() does when `error` is one.
inline void checkFile(std::error_code error) {
    if (error) {
        throwFileError(error);
    }
}

}  // namespace kap::platform
