#include "ado/charset.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "base/code_page.hpp"
#include "base/unicode.hpp"
#include "platform/text_encoding.hpp"

namespace kap::ado {
namespace {

using Name = std::pair<std::u16string_view, TextCharset>;
constexpr auto kNames = std::to_array<Name>({
    {u"unicode", TextCharset::Utf16},
    {u"utf-16", TextCharset::Utf16},
    {u"utf-16le", TextCharset::Utf16},
    {u"iso-10646-ucs-2", TextCharset::Utf16},
    {u"unicodefffe", TextCharset::Utf16Big},
    {u"utf-16be", TextCharset::Utf16Big},
    {u"utf-8", TextCharset::Utf8},
    {u"utf8", TextCharset::Utf8},
    {u"unicode-1-1-utf-8", TextCharset::Utf8},
    {u"us-ascii", TextCharset::Ascii},
    {u"ascii", TextCharset::Ascii},
    {u"iso-8859-1", TextCharset::Latin1},
    {u"latin1", TextCharset::Latin1},
    {u"iso-8859-15", TextCharset::Latin9},
    {u"latin9", TextCharset::Latin9},
    {u"windows-1252", TextCharset::Windows1252},
    {u"x-ansi", TextCharset::Windows1252},
    {u"ibm850", TextCharset::Dos850},
    {u"cp850", TextCharset::Dos850},
});

// Where ISO 8859-15 differs from ISO 8859-1.
using Difference = std::pair<unsigned char, char16_t>;
constexpr auto kLatin9 = std::to_array<Difference>({{0xA4, u'\u20AC'},
                                                    {0xA6, u'\u0160'},
                                                    {0xA8, u'\u0161'},
                                                    {0xB4, u'\u017D'},
                                                    {0xB8, u'\u017E'},
                                                    {0xBC, u'\u0152'},
                                                    {0xBD, u'\u0153'},
                                                    {0xBE, u'\u0178'}});
constexpr char16_t kReplacement = u'\uFFFD';

char16_t decodeByte(TextCharset charset, unsigned char byte) {
    if (charset == TextCharset::Ascii && byte >= 0x80) {
        return kReplacement;
    }
    if (charset == TextCharset::Latin9) {
        const auto found = std::ranges::find(kLatin9, byte, &Difference::first);
        if (found != kLatin9.end()) {
            return found->second;
        }
    }
    return byte;
}

std::optional<unsigned char> encodeUnit(TextCharset charset, char16_t unit) {
    if (charset == TextCharset::Latin9) {
        const auto found = std::ranges::find(kLatin9, unit, &Difference::second);
        if (found != kLatin9.end()) {
            return found->first;
        }
        if (unit < 0x100 && std::ranges::find(kLatin9, static_cast<unsigned char>(unit),
                                              &Difference::first) != kLatin9.end()) {
            return std::nullopt;
        }
    }
    const char16_t limit = charset == TextCharset::Ascii ? 0x80 : 0x100;
    return unit < limit ? std::optional(static_cast<unsigned char>(unit)) : std::nullopt;
}

CodePage pageOf(TextCharset charset) {
    return charset == TextCharset::Dos850 ? CodePage::Dos850 : CodePage::Windows1252;
}

bool isPage(TextCharset charset) {
    return charset == TextCharset::Dos850 || charset == TextCharset::Windows1252;
}

std::string swapped(std::string bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
    return bytes;
}

std::size_t utf8Length(unsigned char lead) {
    if (lead >= 0xF0) {
        return 4;
    }
    if (lead >= 0xE0) {
        return 3;
    }
    return lead >= 0xC0 ? 2 : 1;
}

// Character by character, so that one that is damaged does not take the others with it.
std::u16string decodeUtf8(std::string_view bytes) {
    if (auto whole = unicode::utf16(bytes)) {
        return std::move(*whole);
    }
    std::u16string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = characterLength(TextCharset::Utf8, bytes, at);
        const auto one = unicode::utf16(bytes.substr(at, length));
        text += one ? *one : std::u16string(1, kReplacement);
        at += one ? length : 1;
    }
    return text;
}

}  // namespace

std::optional<TextCharset> charsetNamed(std::u16string_view name) {
    const auto found = std::ranges::find_if(
        kNames, [&](const Name& each) { return unicode::sameName(each.first, name); });
    return found == kNames.end() ? std::nullopt : std::optional(found->second);
}

std::string_view markOf(TextCharset charset) noexcept {
    switch (charset) {
        case TextCharset::Utf16:
            return "\xFF\xFE";
        case TextCharset::Utf16Big:
            return "\xFE\xFF";
        case TextCharset::Utf8:
            return "\xEF\xBB\xBF";
        default:
            return {};
    }
}

std::size_t characterLength(TextCharset charset, std::string_view bytes, std::size_t at) noexcept {
    std::size_t length = 1;
    if (charset == TextCharset::Utf16 || charset == TextCharset::Utf16Big) {
        length = 2;
    } else if (charset == TextCharset::Utf8) {
        length = utf8Length(static_cast<unsigned char>(bytes[at]));
    }
    return std::min(length, bytes.size() - at);
}

std::u16string decodeText(TextCharset charset, std::string_view bytes) {
    if (charset == TextCharset::Utf16) {
        return platform::fromUtf16Bytes(bytes);
    }
    if (charset == TextCharset::Utf16Big) {
        return platform::fromUtf16Bytes(swapped(std::string(bytes)));
    }
    if (charset == TextCharset::Utf8) {
        return decodeUtf8(bytes);
    }
    if (isPage(charset)) {
        return decode(pageOf(charset), bytes);
    }
    std::u16string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        text += decodeByte(charset, static_cast<unsigned char>(byte));
    }
    return text;
}

std::string encodeText(TextCharset charset, std::u16string_view text) {
    if (charset == TextCharset::Utf16) {
        return platform::utf16Bytes(text);
    }
    if (charset == TextCharset::Utf16Big) {
        return swapped(platform::utf16Bytes(text));
    }
    if (charset == TextCharset::Utf8) {
        return unicode::displayUtf8(text);
    }
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isPage(charset)) {
            const auto one = encode(pageOf(charset), text.substr(i, 1));
            bytes += one ? *one : "?";
        } else {
            const auto one = encodeUnit(charset, text[i]);
            bytes += one ? static_cast<char>(*one) : '?';
        }
    }
    return bytes;
}

}  // namespace kap::ado
