#include "cli/text_encoding.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/code_page.hpp"
#include "base/unicode.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

// Texts of western languages have a zero beside each letter; no other encoding has any.
bool zerosAt(std::string_view bytes, std::size_t first) {
    constexpr std::size_t kLooked = 64;
    const std::size_t end = std::min(bytes.size(), kLooked);
    for (std::size_t i = first; i < end; i += 2) {
        if (bytes[i] != '\0') {
            return false;
        }
    }
    return end > 1;
}

bool isBigEndian(std::string_view bytes) {
    return bytes.starts_with(kBigEndianMark) ||
           (!bytes.starts_with(kLittleEndianMark) && zerosAt(bytes, 0));
}

std::string fromUtf16Bytes(std::string_view bytes, const std::string& file) {
    if (bytes.size() % 2 != 0) {
        throw UsageError(file + ": not UTF-16; the last character is cut off");
    }
    const std::size_t high = isBigEndian(bytes) ? 0 : 1;
    if (bytes.starts_with(kLittleEndianMark) || bytes.starts_with(kBigEndianMark)) {
        bytes.remove_prefix(kLittleEndianMark.size());
    }
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[i + at]); };
        units.push_back(static_cast<char16_t>(byte(high) << 8U | byte(1 - high)));
    }
    auto text = unicode::utf8(units);
    if (!text) {
        throw UsageError(file + ": not UTF-16; it holds half a character");
    }
    return std::move(*text);
}

std::string fromCodePage(CodePage page, std::string_view bytes) {
    // Most lines of most files are plain letters.
    const auto beyond = [](char unit) { return static_cast<unsigned char>(unit) >= 0x80; };
    if (std::ranges::none_of(bytes, beyond)) {
        return std::string(bytes);
    }
    return unicode::displayUtf8(decode(page, bytes));
}

std::string checkedUtf8(std::string bytes, const std::string& file) {
    if (bytes.starts_with(kUtf8Mark)) {
        bytes.erase(0, kUtf8Mark.size());
    }
    std::int64_t line = 1;
    if (!unicode::isUtf8(bytes)) {
        for (std::size_t start = 0; start < bytes.size(); ++line) {
            const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
            if (!unicode::isUtf8(std::string_view(bytes).substr(start, end - start))) {
                break;
            }
            start = end + 1;
        }
        throw UsageError(file + ", line " + plain::text(line) +
                         ": not UTF-8; name its encoding with --encoding");
    }
    return bytes;
}

}  // namespace

TextEncoding encodingOf(const std::string& bytes) {
    if (bytes.starts_with(kLittleEndianMark) || bytes.starts_with(kBigEndianMark) ||
        zerosAt(bytes, 0) || zerosAt(bytes, 1)) {
        return TextEncoding::Utf16;
    }
    return unicode::isUtf8(bytes) ? TextEncoding::Utf8 : TextEncoding::Windows1252;
}

TextEncoding encodingNamed(const std::string& name) {
    if (name == "utf-16") {
        return TextEncoding::Utf16;
    }
    if (name == "1252") {
        return TextEncoding::Windows1252;
    }
    return name == "850" ? TextEncoding::Dos850 : TextEncoding::Utf8;
}

std::string decoded(std::string bytes, TextEncoding encoding, const std::string& file) {
    switch (encoding) {
        case TextEncoding::Utf16:
            return fromUtf16Bytes(bytes, file);
        case TextEncoding::Windows1252:
            return fromCodePage(CodePage::Windows1252, bytes);
        case TextEncoding::Dos850:
            return fromCodePage(CodePage::Dos850, bytes);
        case TextEncoding::Utf8:
            break;
    }
    return checkedUtf8(std::move(bytes), file);
}

}  // namespace kap::cli
