#include "cli/commands/sql/script_text.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/automation/string.hpp>

namespace kap::cli {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isUtf8(std::string_view bytes) {
    try {
        const String text(bytes);
        return true;
    } catch (const AutomationError& error) {
        if (error.number() != errors::kInvalidArgument) {
            throw;
        }
        return false;
    }
}

// Bytes of one line never continue a character of the one before, so lines can be judged alone.
std::ptrdiff_t firstBadLine(std::string_view bytes) {
    std::ptrdiff_t line = 1;
    for (std::size_t start = 0; start < bytes.size(); ++line) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        if (!isUtf8(bytes.substr(start, end - start))) {
            break;
        }
        start = end + 1;
    }
    return line;
}

// What the server's own tools write: two bytes a unit, the first of which is a mark of their order.
bool isUtf16(std::string_view bytes) {
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

std::string fromUtf16(std::string_view bytes, const std::string& name) {
    if (bytes.size() % 2 != 0) {
        throw ScriptError(name + ": not UTF-16; the last character is cut off");
    }
    const std::size_t high = bytes.front() == '\xFF' ? 1 : 0;
    std::u16string units;
    for (std::size_t i = 2; i < bytes.size(); i += 2) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[i + at]); };
        units += static_cast<char16_t>(byte(high) << 8U | byte(1 - high));
    }
    try {
        return String(std::move(units)).utf8();
    } catch (const AutomationError&) {
        throw ScriptError(name + ": not UTF-16; it holds half a character");
    }
}

}  // namespace

std::string readScript(std::istream& in, const std::string& name) {
    std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) {
        throw ScriptError("cannot read " + name + ": " + std::strerror(errno));
    }
    if (isUtf16(bytes)) {
        return fromUtf16(bytes, name);
    }
    if (bytes.starts_with(kByteOrderMark)) {
        bytes.erase(0, kByteOrderMark.size());
    }
    if (!isUtf8(bytes)) {
        throw ScriptError(name + ", line " + plain::text(firstBadLine(bytes)) +
                          ": not UTF-8; save the script as UTF-8 and run it again");
    }
    return bytes;
}

std::string readScript(const std::string& path) {
    if (std::filesystem::is_directory(path)) {
        throw ScriptError("cannot read " + path + ": it is a directory");
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw ScriptError("cannot read " + path + ": " + std::strerror(errno));
    }
    return readScript(in, path);
}

}  // namespace kap::cli
