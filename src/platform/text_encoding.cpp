#include "platform/text_encoding.hpp"

#include <utility>

#include "base/code_page.hpp"
#include "base/unicode.hpp"

namespace kap::platform {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// The encoding that a mark tells.
std::optional<TextEncoding> markedEncoding(std::string_view bytes) noexcept {
    if (bytes.starts_with(kUtf16Mark) && bytes.size() % 2 == 0) {
        return TextEncoding::Utf16Marked;
    }
    if (bytes.starts_with(kUtf8Mark) && unicode::isUtf8(bytes)) {
        return TextEncoding::Utf8Marked;
    }
    return std::nullopt;
}

}  // namespace

TextEncoding encodingOf(std::string_view bytes) noexcept {
    if (const auto marked = markedEncoding(bytes)) return *marked;
    return unicode::isUtf8(bytes) ? TextEncoding::Utf8 : TextEncoding::Windows1252;
}

TextEncoding sharedEncodingOf(std::string_view bytes) noexcept {
    return markedEncoding(bytes).value_or(TextEncoding::Windows1252);
}

std::u16string decodeText(TextEncoding encoding, std::string_view bytes) {
    switch (encoding) {
        case TextEncoding::Utf16Marked:
            return fromUtf16Bytes(bytes.substr(kUtf16Mark.size()));
        case TextEncoding::Utf8Marked:
            return unicode::utf16(bytes.substr(kUtf8Mark.size())).value_or(u"");
        case TextEncoding::Utf8:
            return unicode::utf16(bytes).value_or(u"");
        case TextEncoding::Windows1252:
            break;
    }
    return decode(CodePage::Windows1252, bytes);
}

std::optional<std::string> encodeText(TextEncoding encoding, std::u16string_view text) {
    switch (encoding) {
        case TextEncoding::Utf16Marked:
            return std::string(kUtf16Mark) + utf16Bytes(text);
        case TextEncoding::Utf8Marked:
        case TextEncoding::Utf8: {
            auto bytes = unicode::utf8(text);
            if (bytes && encoding == TextEncoding::Utf8Marked) {
                bytes->insert(0, kUtf8Mark);
            }
            return bytes;
        }
        case TextEncoding::Windows1252:
            break;
    }
    return encode(CodePage::Windows1252, text);
}

std::string utf16Bytes(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

std::u16string fromUtf16Bytes(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        text.push_back(static_cast<char16_t>(low | (high << 8)));
    }
    return text;
}

}  // namespace kap::platform
