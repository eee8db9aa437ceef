#pragma once

#include <filesystem>
#include <system_error>

namespace kap::platform {

// Raises what the file-system object raises for a failure of the host's file system: 53 for a file
// that is not there, 58 for one that is, 61, 70 (also for one that others have locked, and for a
// pipe in a file's place), 76, and 57 for everything else.
[[noreturn]] void throwFileError(std::error_code error);

// The same for what failed with this file: 76 when its folder is not there either.
[[noreturn]] void throwFileError(std::error_code error, const std::filesystem::path& file);

// The same when `error` is one.
inline void checkFile(std::error_code error) {
    if (error) {
        throwFileError(error);
    }
}

}  // namespace kap::platform
