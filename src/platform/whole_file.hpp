#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kap::platform {

// Who may read a file that the library makes: everybody whom the user's mask allows (and nobody
// else may write it), or the user alone.
enum class FileAccess : unsigned char { Shared, Private };

// The file behind symbolic links, which stay links when it is replaced.
[[nodiscard]] std::filesystem::path realFile(const std::filesystem::path& file);

// What a file may have, in bytes, that is read whole: any, and one of settings or contacts.
inline constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 30U;
inline constexpr std::uintmax_t kLargestSettings = std::uintmax_t{64} << 20U;

// The bytes of a file; nullopt when there is none. Raises the file-system object's errors, and 5
// for a file with more than `most` bytes.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file,
                                                  std::uintmax_t most = kLargestFile);

// Puts a file with these bytes in the place of what is there, in one step: whoever opens the file
// sees the old bytes or the new ones, also after a crash. A file that is there keeps its
// permissions. Raises the file-system object's errors.
void replaceFile(const std::filesystem::path& file, std::string_view content, FileAccess access);

// Makes a folder for the user alone, and those above it. Raises the file-system object's errors.
void makePrivateFolder(const std::filesystem::path& folder);

}  // namespace kap::platform
