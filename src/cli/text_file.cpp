#include "cli/text_file.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>
#include <utility>

#include "cli/output/usage_error.hpp"
#include "cli/text_encoding.hpp"

namespace kap::cli {
namespace {

bool isStandardInput(const std::string& file) {
    return file.empty() || file == "-";
}

}  // namespace

std::string shownNameOf(const std::string& file) {
    return isStandardInput(file) ? "standard input" : file;
}

std::string bytesOfFile(const std::string& file) {
    if (isStandardInput(file)) {
        return {std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    }
    const std::filesystem::path path(std::u8string(file.begin(), file.end()));
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        throw UsageError("cannot read " + file + ": it is a directory");
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw UsageError("cannot read " + file + ": " + std::strerror(errno));
    }
    // At once where the size is known; a pipe has none.
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    std::string bytes(error ? 0 : static_cast<std::size_t>(size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    in.clear();
    bytes.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return bytes;
}

std::string textOfFile(const std::string& file, const std::optional<std::string>& encoding) {
    std::string bytes = bytesOfFile(file);
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
