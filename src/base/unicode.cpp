#include "base/unicode.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <utf8proc.h>

namespace kap::unicode {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// How many bytes at the beginning are ASCII.
std::size_t asciiPrefix(std::string_view bytes) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::size_t i = 0;
    for (std::uint64_t word = 0; i + sizeof(word) <= bytes.size(); i += sizeof(word)) {
        std::memcpy(&word, bytes.data() + i, sizeof(word));
        if ((word & kHighBits) != 0) break;
    }
    while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) < 0x80) {
        ++i;
    }
    return i;
}

void appendUtf16(std::u16string& out, char32_t point) {
    if (point < 0x10000) {
        out.push_back(static_cast<char16_t>(point));
        return;
    }
    const char32_t offset = point - 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
}

void appendUtf8(std::string& out, char32_t point) {
    const auto byte = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
    if (point < 0x80) {
        byte(point);
    } else if (point < 0x800) {
        byte(0xC0 | (point >> 6));
        byte(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        byte(0xE0 | (point >> 12));
        byte(0x80 | ((point >> 6) & 0x3F));
        byte(0x80 | (point & 0x3F));
    } else {
        byte(0xF0 | (point >> 18));
        byte(0x80 | ((point >> 12) & 0x3F));
        byte(0x80 | ((point >> 6) & 0x3F));
        byte(0x80 | (point & 0x3F));
    }
}

// Writes `text` as UTF-8; `replace` decides about half surrogate pairs: U+FFFD or giving up.
bool encode(std::u16string_view text, bool replace, std::string& out) {
    // Most texts are plain ASCII, one byte a unit; the rest begins at the first that is not.
    const auto plainEnd = std::ranges::find_if(text, [](char16_t unit) { return unit >= 0x80; });
    const auto plain = static_cast<std::size_t>(plainEnd - text.begin());
    out.reserve(text.size());
    out.resize(plain);
    std::transform(text.begin(), plainEnd, out.begin(),
                   [](char16_t unit) { return static_cast<char>(unit); });
    for (std::size_t i = plain; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit < 0x80) {
            out.push_back(static_cast<char>(unit));
        } else if (isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            const char32_t high = unit - char32_t{0xD800};
            const char32_t low = text[++i] - char32_t{0xDC00};
            appendUtf8(out, 0x10000 + (high << 10) + low);
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            if (!replace) {
                return false;
            }
            appendUtf8(out, kReplacement);
        } else {
            appendUtf8(out, unit);
        }
    }
    return true;
}

using CaseTable = std::array<char16_t, 0x10000>;

char16_t mapUnit(char16_t unit, utf8proc_int32_t (*map)(utf8proc_int32_t)) {
    const utf8proc_int32_t mapped = map(unit);
    return mapped > 0xFFFF ? unit : static_cast<char16_t>(mapped);
}

// The whole plane is mapped once: looking a character up must cost no more than an array access.
const CaseTable& upperTable() {
    static const CaseTable table = [] {
        CaseTable made{};
        for (std::size_t unit = 0; unit < made.size(); ++unit) {
            made[unit] = mapUnit(static_cast<char16_t>(unit), &utf8proc_toupper);
        }
        // The sharp s has no simple capital; the Unicode library gives the rare U+1E9E.
        made[0x00DF] = u'\u00DF';
        return made;
    }();
    return table;
}

}  // namespace

std::optional<std::u16string> utf16(std::string_view utf8) {
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(utf8.data());
    // Most texts are plain ASCII, one unit a byte.
    std::size_t i = asciiPrefix(utf8);
    std::u16string out(bytes, bytes + i);
    while (i < utf8.size()) {
        if (bytes[i] < 0x80) {
            out.push_back(bytes[i++]);
            continue;
        }
        utf8proc_int32_t point = -1;
        const auto length =
            utf8proc_iterate(bytes + i, static_cast<utf8proc_ssize_t>(utf8.size() - i), &point);
        if (length <= 0) {
            return std::nullopt;
        }
        appendUtf16(out, static_cast<char32_t>(point));
        i += static_cast<std::size_t>(length);
    }
    return out;
}

bool isUtf8(std::string_view bytes) noexcept {
    const auto* units = reinterpret_cast<const utf8proc_uint8_t*>(bytes.data());
    for (std::size_t i = asciiPrefix(bytes); i < bytes.size();) {
        if (units[i] < 0x80) {
            ++i;
            continue;
        }
        utf8proc_int32_t point = -1;
        const auto length =
            utf8proc_iterate(units + i, static_cast<utf8proc_ssize_t>(bytes.size() - i), &point);
        if (length <= 0) {
            return false;
        }
        i += static_cast<std::size_t>(length);
    }
    return true;
}

std::optional<std::string> utf8(std::u16string_view text) {
    std::string out;
    if (!encode(text, false, out)) {
        return std::nullopt;
    }
    return out;
}

std::string displayUtf8(std::u16string_view text) {
    std::string out;
    encode(text, true, out);
    return out;
}

char16_t upperBeyondAscii(char16_t unit) noexcept {
    return upperTable()[unit];
}

char16_t lower(char16_t unit) noexcept {
    if (unit < 0x80) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    }
    return mapUnit(unit, &utf8proc_tolower);
}

std::u16string upper(std::u16string_view text) {
    std::u16string out(text);
    for (char16_t& unit : out) {
        unit = upper(unit);
    }
    return out;
}

std::u16string lower(std::u16string_view text) {
    std::u16string out(text);
    for (char16_t& unit : out) {
        unit = lower(unit);
    }
    return out;
}

bool sameName(std::u16string_view left, std::u16string_view right) noexcept {
    if (left.size() != right.size()) {
        return false;
    }
    if (left == right) {
        return true;  // nearly always, where they are the same at all
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (left[i] != right[i] && upper(left[i]) != upper(right[i])) {
            return false;
        }
    }
    return true;
}

std::size_t NameHash::operator()(std::u16string_view name) const noexcept {
    std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a over the upper-cased units
    for (const char16_t unit : name) {
        hash = (hash ^ upper(unit)) * 0x100000001B3U;
    }
    return static_cast<std::size_t>(hash);
}

std::u16string_view trimLeft(std::u16string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(u' ');
    return first == std::u16string_view::npos ? std::u16string_view{} : text.substr(first);
}

std::u16string_view trimRight(std::u16string_view text) noexcept {
    return text.substr(0, text.find_last_not_of(u' ') + 1);
}

std::u16string_view trim(std::u16string_view text) noexcept {
    return trimLeft(trimRight(text));
}

}  // namespace kap::unicode
