#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace kap::platform {

// A file that is being written. Everything written at its end goes there in one piece, so that
// several processes that append do not mix their lines.
class OutputFile {
public:
    enum class Begin : unsigned char { Empty, New, AtEnd };

    // Opens a file: emptied or made, made because it must not be there (58), or to be appended to,
    // which needs it to be there. Raises 76 when its folder is not there.
    OutputFile(const std::filesystem::path& file, Begin begin);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    // Raises 61 when the disk is full.
    void write(std::string_view bytes);

    // How many bytes the file has.
    [[nodiscard]] std::uintmax_t size() const;

private:
    int descriptor_;
};

}  // namespace kap::platform
