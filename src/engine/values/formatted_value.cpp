#include "engine/values/formatted_value.hpp"

#include <cstdint>

#include "base/ascii.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/variant.hpp"

namespace kap::engine {
namespace {

// "10:30:00.000+01:00" without ".000".
std::string withoutEmptyFraction(std::string text) {
    const std::size_t point = text.find('.');
    if (point == std::string::npos) return text;
    std::size_t end = point + 1;
    while (end < text.size() && text[end] == '0')
        ++end;
    if (end < text.size() && isAsciiDigit(text[end])) return text;
    return text.erase(point, end - point);
}

int styleOf(tsql::SqlType type) {
    constexpr int kIsoDate = 126;
    constexpr int kFourDecimals = 2;
    constexpr int kAllDigits = 2;
    constexpr int kDigitsOfReal = 1;
    if (tsql::isDate(type)) return kIsoDate;
    if (tsql::isMoney(type)) return kFourDecimals;
    if (type == tsql::SqlType::Real) return kDigitsOfReal;
    return type == tsql::SqlType::Float ? kAllDigits : 0;
}

}  // namespace

std::string base64(std::string_view bytes) {
    static constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t kGroup = 3;
    constexpr unsigned kBits = 6;
    std::string text;
    text.reserve((bytes.size() + 2) / kGroup * 4);
    for (std::size_t at = 0; at < bytes.size(); at += kGroup) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < kGroup; ++i) {
            group = (group << 8U) |
                    (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        }
        for (std::size_t i = 0; i <= kGroup; ++i) {
            const unsigned shift = kBits * static_cast<unsigned>(kGroup - i);
            text += at + i <= bytes.size() ? kDigits[(group >> shift) & 0x3FU] : '=';
        }
    }
    return text;
}

std::string formattedValue(const Value& value, const tsql::TypeSpec& type) {
    if (tsql::isVariant(type.type)) {
        const TypedValue typed = valueOfVariant(std::get<std::string>(value));
        return formattedValue(typed.value, typed.type);
    }
    if (tsql::isBinary(type.type)) return base64(std::get<Blob>(value).bytes);
    if (tsql::isText(type.type)) return std::get<std::string>(value);
    const tsql::TypeSpec text{tsql::SqlType::NVarChar, tsql::kMaxLength};
    std::string result =
        std::get<std::string>(convert(value, type, text, Overlength::Cut, styleOf(type.type)));
    return tsql::isDate(type.type) ? withoutEmptyFraction(std::move(result)) : result;
}

}  // namespace kap::engine
