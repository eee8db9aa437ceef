#include "cli/output/output_file.hpp"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

std::filesystem::path pathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

}  // namespace

void writeWholeFile(const std::string& file, const std::function<void(std::ostream&)>& write) {
    const std::string unfinished = file + ".part";
    const std::filesystem::path path = pathOf(unfinished);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    std::error_code error;
    try {
        write(out);
    } catch (...) {
        out.close();
        std::filesystem::remove(path, error);
        throw;
    }
    out.close();
    if (out) {
        std::filesystem::rename(path, pathOf(file), error);
        if (!error) {
            return;
        }
    }
    std::error_code ignored;  // the reason that is told is why there is no file
    std::filesystem::remove(path, ignored);
    throw UsageError("cannot write " + file + (error ? ": " + error.message() : ""));
}

}  // namespace kap::cli
