#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/code_page_text.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr std::size_t kIdentifierLength = 36;

bool isFixedText(SqlType type) {
    return type == SqlType::Char || type == SqlType::NChar;
}

// Money is shown with two decimals, with commas between thousands in style 1, with all four in
// style 2.
std::string moneyText(Wide value, int style) {
    constexpr int kStored = 4;
    const int shown = style == 2 ? 4 : 2;
    const Wide rounded = *rescale(value, kStored, shown, Rounding::HalfAway);
    std::string text = scaledText(rounded, shown);
    if (style != 1) return text;
    const std::size_t first = text.front() == '-' ? 1 : 0;
    for (std::size_t place = text.find('.'); place > first + 3;) {
        place -= 3;
        text.insert(place, 1, ',');
    }
    return text;
}

// "1e+20" as the server prints it: "1e+020".
std::string withThreeExponentDigits(std::string text) {
    const std::size_t exponent = text.find('e');
    if (exponent == std::string::npos) return text;
    const std::size_t digits = text.size() - exponent - 2;
    if (digits < 3) text.insert(exponent + 2, 3 - digits, '0');
    return text;
}

std::string scientific(double value, int decimals) {
    return withThreeExponentDigits(plain::scientific(value, decimals));
}

bool fits(const TypeSpec& type, std::size_t units) {
    return type.length == tsql::kMaxLength || units <= static_cast<std::size_t>(type.length);
}

// Cutting a number's digits would make it another number: some types say so, whole numbers print a
// star.
std::string textOfUnfittingNumber(const TypeSpec& from, const TypeSpec& to) {
    if (tsql::isInteger(from.type) && !tsql::isNational(to.type)) return "*";
    if (tsql::isMoney(from.type)) {
        throw tsql::ServerError(tsql::Message::NoRoomForMoney, {tsql::typeName(to.type)});
    }
    overflow(tsql::isInteger(from.type) ? "expression" : messageName(from),
             tsql::typeName(to.type));
}

[[noreturn]] void truncated() {
    throw tsql::ServerError(tsql::Message::Truncated);
}

}  // namespace

std::string textFromExact(Wide value, const TypeSpec& from, const TypeSpec& to, int style) {
    std::string text =
        tsql::isMoney(from.type) ? moneyText(value, style) : scaledText(value, storedScale(from));
    return fits(to, text.size()) ? text : textOfUnfittingNumber(from, to);
}

std::string textFromApproximate(double value, const TypeSpec& from, int style) {
    if (style == 1) return scientific(value, 7);
    if (style == 2 || style == 3) return scientific(value, from.type == SqlType::Real ? 8 : 15);
    constexpr int kSignificantDigits = 6;
    return withThreeExponentDigits(plain::general(value, kSignificantDigits));
}

std::string fitText(std::string text, const TypeSpec& from, const TypeSpec& to,
                    Overlength overlength) {
    if (!tsql::isNational(to.type)) text = inCodePage(std::move(text));
    if (to.length == tsql::kMaxLength) return text;
    const auto length = static_cast<std::size_t>(to.length);
    // As many bytes as units at least: only longer texts need counting.
    const bool tooLong = text.size() > length && unitLength(text) > length;
    if (tooLong) {
        if (tsql::isApproximate(from.type)) overflow("float", tsql::typeName(to.type));
        if (from.type == SqlType::UniqueIdentifier) {
            throw tsql::ServerError(tsql::Message::NoRoomForUniqueIdentifier);
        }
        if (overlength == Overlength::Refuse && unitLength(withoutTrailingBlanks(text)) > length) {
            truncated();
        }
        text.resize(unitOffset(text, length));
    }
    return isFixedText(to.type) ? padded(text, length) : text;
}

std::string identifierFromText(const std::string& text) {
    std::string_view trimmed = withoutBlanks(text);
    if (trimmed.size() == kIdentifierLength + 2 && trimmed.front() == '{' &&
        trimmed.back() == '}') {
        trimmed = trimmed.substr(1, kIdentifierLength);
    }
    bool valid = trimmed.size() >= kIdentifierLength;
    trimmed = trimmed.substr(0, kIdentifierLength);
    for (std::size_t i = 0; valid && i < kIdentifierLength; ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        const char c = trimmed[i];
        const bool hex = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        valid = dash ? c == '-' : hex;
    }
    if (!valid) {
        throw tsql::ServerError(tsql::Message::WrongUniqueIdentifierText);
    }
    return asciiUpper(trimmed);
}

Blob fitBinary(Blob blob, const TypeSpec& to, Overlength overlength) {
    if (to.length == tsql::kMaxLength) return blob;
    const auto length = static_cast<std::size_t>(to.length);
    if (blob.bytes.size() > length) {
        if (overlength == Overlength::Refuse) truncated();
        blob.bytes.resize(length);
    }
    if (to.type == SqlType::Binary || to.type == SqlType::Timestamp)
        blob.bytes.resize(length, '\0');
    return blob;
}

}  // namespace kap::engine
