#include "cli/text_file.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <istream>
#include <system_error>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "cli/output/usage_error.hpp"
#include "cli/text_encoding.hpp"

namespace kap::cli {
namespace {

bool isStandardInput(const std::string& file) {
    return file.empty() || file == "-";
}

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
    throw UsageError("cannot read " + shownNameOf(file) + ": " + reason);
}

[[noreturn]] void refuseLong(const std::string& file, std::uintmax_t most) {
    refuse(file, "it has more than the " + plain::text(static_cast<std::int64_t>(most >> 20U)) +
                     " MB that are read");
}

// Up to its end, which a pipe or a device need not have.
std::string bytesIn(std::istream& in, std::uintmax_t expected, const std::string& file,
                    std::uintmax_t most) {
    constexpr std::size_t kPart = 1 << 16;
    if (expected > most) {
        refuseLong(file, most);
    }
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(expected) + kPart);
    while (in) {
        const std::size_t before = bytes.size();
        bytes.resize(before + kPart);
        in.read(bytes.data() + before, static_cast<std::streamsize>(kPart));
        bytes.resize(before + static_cast<std::size_t>(in.gcount()));
        if (bytes.size() > most) {
            refuseLong(file, most);
        }
    }
    return bytes;
}

}  // namespace

std::string shownNameOf(const std::string& file) {
    return isStandardInput(file) ? "standard input" : file;
}

std::string bytesOfFile(const std::string& file, std::uintmax_t most) {
    if (isStandardInput(file)) {
        return bytesIn(std::cin, 0, file, most);
    }
    const std::filesystem::path path(std::u8string(file.begin(), file.end()));
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        refuse(file, "it is a directory");
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        refuse(file, std::strerror(errno));
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return bytesIn(in, error ? 0 : size, file, most);
}

std::string textOfFile(const std::string& file, const std::optional<std::string>& encoding,
                       std::uintmax_t most) {
    std::string bytes = bytesOfFile(file, most);
    const TextEncoding used = encoding ? encodingNamed(*encoding) : encodingOf(bytes);
    return decoded(std::move(bytes), used, shownNameOf(file));
}

Option encodingOption(std::optional<std::string>& target) {
    return {.name = "--encoding",
            .placeholder = "utf-8|utf-16|1252|850",
            .target = &target,
            .help = {"How the file holds letters; else it is found.",
                     "Come il file contiene le lettere; altrimenti viene riconosciuto."},
            .fault = oneOf({"utf-8", "utf-16", "1252", "850"})};
}

}  // namespace kap::cli
