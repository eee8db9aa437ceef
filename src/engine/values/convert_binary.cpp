#include <algorithm>

#include "base/hexadecimal.hpp"
#include "engine/values/code_page_text.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr std::size_t kBitsPerByte = 8;

std::size_t widthOf(SqlType type) {
    switch (type) {
        case SqlType::Bit:
        case SqlType::TinyInt:
            return 1;
        case SqlType::SmallInt:
            return 2;
        case SqlType::Int:
            return 4;
        default:
            return 8;
    }
}

[[noreturn]] void badHexadecimal(const TypeSpec& from) {
    throw tsql::ServerError(tsql::Message::ErrorConvertingType,
                            {tsql::isNational(from.type) ? "nvarchar" : "varchar", "varbinary"});
}

Blob fromHexadecimal(std::string_view digits, const TypeSpec& from) {
    if (digits.size() % 2 != 0) badHexadecimal(from);
    Blob result;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = hex::valueOf(static_cast<unsigned char>(digits[i]));
        const int low = hex::valueOf(static_cast<unsigned char>(digits[i + 1]));
        if (high < 0 || low < 0) badHexadecimal(from);
        result.bytes += static_cast<char>(high * 16 + low);
    }
    return result;
}

}  // namespace

// A number stands at the right end: what does not fit is cut on the left, what is missing is zero
// on the left.
Blob binaryFromExact(std::int64_t value, const TypeSpec& from, const TypeSpec& to) {
    std::size_t width = widthOf(from.type);
    const bool bounded = to.length != tsql::kMaxLength;
    const auto length = bounded ? static_cast<std::size_t>(to.length) : width;
    width = to.type == SqlType::Binary || to.type == SqlType::Timestamp ? length
                                                                        : std::min(width, length);
    const bool negative = value < 0;
    auto rest = static_cast<std::uint64_t>(value);
    std::string bytes(width, '\0');
    for (std::size_t i = 0; i < width; ++i) {
        const bool beyond = i >= sizeof rest;
        bytes[width - 1 - i] =
            beyond ? (negative ? '\xFF' : '\0') : static_cast<char>(rest & 0xFFU);
        rest = beyond ? rest : rest >> kBitsPerByte;
    }
    return {std::move(bytes)};
}

std::int64_t integerFromBinary(const Blob& blob) {
    std::uint64_t value = 0;
    const std::size_t skipped =
        blob.bytes.size() > sizeof value ? blob.bytes.size() - sizeof value : 0;
    for (const char c : std::string_view(blob.bytes).substr(skipped)) {
        value = (value << kBitsPerByte) | static_cast<unsigned char>(c);
    }
    return static_cast<std::int64_t>(value);
}

// Style 1 reads "0x..." and style 2 plain hexadecimal digits; otherwise the text's own code units
// are taken.
Blob binaryFromText(const std::string& text, const TypeSpec& from, int style) {
    if (style == 1) {
        if (text.size() < 2 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
            badHexadecimal(from);
        return fromHexadecimal(std::string_view(text).substr(2), from);
    }
    if (style == 2) return fromHexadecimal(text, from);
    if (!tsql::isNational(from.type)) return Blob{codePageBytes(text)};
    Blob result;
    for (const char16_t unit : toUnits(text)) {
        result.bytes += static_cast<char>(unit & 0xFFU);
        result.bytes += static_cast<char>(unit >> kBitsPerByte);
    }
    return result;
}

std::string textFromBinary(const Blob& blob, const TypeSpec& to, int style) {
    if (style == 1 || style == 2) {
        // A literal of bytes is X'...': its digits are the text.
        const std::string literal = sqlLiteral(blob);
        return (style == 1 ? "0x" : "") + literal.substr(2, literal.size() - 3);
    }
    if (!tsql::isNational(to.type)) return codePageText(blob.bytes);
    std::u16string units;
    for (std::size_t i = 0; i + 1 < blob.bytes.size(); i += 2) {
        units +=
            static_cast<char16_t>(static_cast<unsigned char>(blob.bytes[i]) |
                                  (static_cast<unsigned char>(blob.bytes[i + 1]) << kBitsPerByte));
    }
    return fromUnits(units);
}

}  // namespace kap::engine
