#include "engine/values/text_units.hpp"

#include <algorithm>

#include "base/unicode.hpp"

namespace kap::engine {

namespace {

unsigned char byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

// The bytes of the character that starts at `index`: 1 for what is not UTF-8.
std::size_t characterSize(std::string_view text, std::size_t index) {
    const unsigned char lead = byteAt(text, index);
    const std::size_t size = lead < 0xC2   ? 1
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 1;
    if (index + size > text.size()) return 1;
    for (std::size_t i = 1; i < size; ++i) {
        if (!isContinuation(byteAt(text, index + i))) return 1;
    }
    return size;
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Characters of four bytes lie beyond the basic plane and take a pair of units.
std::size_t unitsOf(std::size_t characterBytes) {
    return characterBytes == 4 ? 2 : 1;
}

}  // namespace

std::size_t unitLength(std::string_view text) {
    std::size_t units = 0;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t size = characterSize(text, i);
        units += unitsOf(size);
        i += size;
    }
    return units;
}

std::size_t unitOffset(std::string_view text, std::size_t index) {
    std::size_t units = 0;
    std::size_t offset = 0;
    while (offset < text.size()) {
        const std::size_t size = characterSize(text, offset);
        if (units + unitsOf(size) > index) break;
        units += unitsOf(size);
        offset += size;
    }
    return offset;
}

std::string_view unitSlice(std::string_view text, std::size_t first, std::size_t count) {
    const std::string_view rest = text.substr(unitOffset(text, first));
    return rest.substr(0, unitOffset(rest, count));
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view withoutBlanks(std::string_view text) {
    return withoutLeadingBlanks(withoutTrailingBlanks(text));
}

std::string padded(std::string_view text, std::size_t units) {
    std::string result(text);
    const std::size_t length = unitLength(text);
    if (length < units) result.append(units - length, ' ');
    return result;
}

std::u16string toUnits(std::string_view text) {
    if (auto units = unicode::utf16(text)) return std::move(*units);
    std::u16string result;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t size = characterSize(text, i);
        if (const auto units = unicode::utf16(text.substr(i, size))) {
            result += *units;
        } else {
            result += u'\uFFFD';
        }
        i += size;
    }
    return result;
}

std::string fromUnits(std::u16string_view units) {
    return unicode::displayUtf8(units);
}

std::u16string foldedUnits(std::string_view text) {
    if (!isAscii(text)) return unicode::upper(toUnits(text));
    std::u16string result(text.size(), u'\0');
    std::transform(text.begin(), text.end(), result.begin(), [](char c) {
        return static_cast<char16_t>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    });
    return result;
}

}  // namespace kap::engine
