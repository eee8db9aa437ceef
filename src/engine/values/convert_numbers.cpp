#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/currency.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

const std::string kExpression = "expression";

struct Range {
    std::int64_t low;
    std::int64_t high;
};

Range rangeOf(const TypeSpec& type) {
    constexpr std::int64_t kLow = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kHigh = std::numeric_limits<std::int64_t>::max();
    switch (type.type) {
        case SqlType::TinyInt:
            return {0, 255};
        case SqlType::SmallInt:
            return {-32768, 32767};
        case SqlType::Int:
            return {std::numeric_limits<std::int32_t>::min(),
                    std::numeric_limits<std::int32_t>::max()};
        case SqlType::SmallMoney:
            return {std::numeric_limits<std::int32_t>::min(),
                    std::numeric_limits<std::int32_t>::max()};
        case SqlType::Decimal:
        case SqlType::Numeric: {
            if (type.precision > tsql::kNarrowDigits) return {-kHigh, kHigh};
            const auto limit = static_cast<std::int64_t>(powerOfTen(type.precision)) - 1;
            return {-limit, limit};
        }
        default:
            return {kLow, kHigh};
    }
}

bool hasDigits(Wide value, int precision) {
    const Wide limit = powerOfTen(precision);
    return value < limit && value > -limit;
}

bool isSmallInteger(SqlType type) {
    return type == SqlType::TinyInt || type == SqlType::SmallInt;
}

std::string textTypeName(const TypeSpec& from) {
    return tsql::isNational(from.type) ? "nvarchar" : "varchar";
}

[[noreturn]] void notANumber(const std::string& text, const TypeSpec& from, const TypeSpec& to) {
    if (tsql::isMoney(to.type)) {
        throw tsql::ServerError(tsql::Message::WrongMoneyText);
    }
    if (tsql::isInteger(to.type) && to.type != SqlType::BigInt) {
        throw tsql::ServerError(tsql::Message::ConversionFailed,
                                {textTypeName(from), text, tsql::typeName(to.type)});
    }
    throw tsql::ServerError(tsql::Message::ErrorConvertingType,
                            {textTypeName(from), messageName(to)});
}

[[noreturn]] void textOverflow(const std::string& text, const TypeSpec& from, const TypeSpec& to) {
    if (to.type == SqlType::Int) {
        throw tsql::ServerError(tsql::Message::TextOverflowsInt, {textTypeName(from), text});
    }
    if (isSmallInteger(to.type)) {
        throw tsql::ServerError(
            tsql::Message::TextOverflowsSmallInteger,
            {textTypeName(from), text, to.type == SqlType::TinyInt ? "INT1" : "INT2"});
    }
    overflow(
        to.type == SqlType::BigInt || tsql::isMoney(to.type) ? "expression" : textTypeName(from),
        messageName(to));
}

// Amounts may carry a sign and a currency sign in front, in either order, and commas anywhere.
// Signs alone are zero, as on the server.
std::optional<ScaledNumber> parseAmount(std::string_view text) {
    std::string digits;
    bool currency = false;
    for (;;) {
        text = withoutLeadingBlanks(text);
        const std::size_t size = tsql::currencySignAt(text);
        const bool sign = !text.empty() && (text.front() == '-' || text.front() == '+');
        if (size > 0 && !currency) {
            currency = true;
            text.remove_prefix(size);
        } else if (sign && digits.empty()) {
            digits = text.front();
            text.remove_prefix(1);
        } else {
            break;
        }
    }
    std::ranges::remove_copy(text, std::back_inserter(digits), ',');
    const bool bare = digits.find_first_not_of("+-.") == std::string::npos && digits.size() <= 2;
    return parseScaled(bare ? digits + '0' : digits);
}

bool isSignAlone(std::string_view text) {
    return text == "+" || text == "-";
}

std::int64_t bitFromText(const std::string& text, std::string_view word, const TypeSpec& from,
                         const TypeSpec& to) {
    if (word.empty()) return 0;
    if (equalsIgnoringCase(word, "true")) return 1;
    if (equalsIgnoringCase(word, "false")) return 0;
    const auto number = parseScaled(word);
    if (!number || number->scale > 0) notANumber(text, from, to);
    return number->value != 0 ? 1 : 0;
}

}  // namespace

void overflow(const std::string& from, const std::string& to) {
    throw tsql::ServerError(tsql::Message::ArithmeticOverflow, {from, to});
}

std::string messageName(const TypeSpec& type) {
    return tsql::isDecimal(type.type) ? "numeric" : tsql::typeName(type.type);
}

Value fitWide(Wide value, int scale, const TypeSpec& to, Rounding rounding,
              const std::string& from) {
    if (to.type == SqlType::Bit) return std::int64_t{value != 0};
    const auto scaled = rescale(value, scale, storedScale(to), rounding);
    if (tsql::isWideDecimal(to)) {
        if (!scaled || !hasDigits(*scaled, to.precision)) overflow(from, messageName(to));
        return wideBytes(*scaled);
    }
    const auto narrowed = scaled ? narrow(*scaled) : std::nullopt;
    const Range range = rangeOf(to);
    if (narrowed && *narrowed >= range.low && *narrowed <= range.high) return *narrowed;
    if (narrowed && isSmallInteger(to.type) && from != kExpression) {
        throw tsql::ServerError(tsql::Message::ValueOverflow,
                                {tsql::typeName(to.type), plain::text(*narrowed)});
    }
    // Whole numbers and amounts are checked after the expression was computed, so the source is not
    // named.
    overflow(tsql::isDecimal(to.type) ? from : kExpression, messageName(to));
}

double fitApproximate(double value, const TypeSpec& to) {
    if (!std::isfinite(value)) overflow("expression", tsql::typeName(to.type));
    if (to.type != SqlType::Real) return value;
    if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max())) {
        overflow("expression", "real");
    }
    return static_cast<double>(static_cast<float>(value));
}

Value exactFromText(const std::string& text, const TypeSpec& from, const TypeSpec& to) {
    const std::string_view trimmed = withoutBlanks(text);
    if (to.type == SqlType::Bit) return bitFromText(text, trimmed, from, to);
    // An empty text is zero, but no decimal.
    if (trimmed.empty() && !tsql::isDecimal(to.type)) return std::int64_t{0};
    if (tsql::isInteger(to.type) && isSignAlone(trimmed)) return std::int64_t{0};
    const auto number = tsql::isMoney(to.type) ? parseAmount(trimmed) : parseScaled(trimmed);
    if (!number || (tsql::isInteger(to.type) && trimmed.find('.') != std::string_view::npos)) {
        notANumber(text, from, to);
    }
    const auto scaled = rescale(number->value, number->scale, storedScale(to), Rounding::HalfAway);
    if (tsql::isWideDecimal(to)) {
        if (!scaled || !hasDigits(*scaled, to.precision)) textOverflow(text, from, to);
        return wideBytes(*scaled);
    }
    const auto narrowed = scaled ? narrow(*scaled) : std::nullopt;
    const Range range = rangeOf(to);
    if (!narrowed || *narrowed < range.low || *narrowed > range.high) textOverflow(text, from, to);
    return *narrowed;
}

double approximateFromText(const std::string& text, const TypeSpec& from, const TypeSpec& to) {
    std::string_view trimmed = withoutBlanks(text);
    if (trimmed.empty()) return 0;
    if (trimmed.front() == '+') trimmed.remove_prefix(1);
    std::string digits(trimmed);
    // "1d5" is a number, too: scripts of other languages write doubles so.
    std::ranges::replace_if(
        digits, [](char c) { return c == 'd' || c == 'D'; }, 'e');
    const auto number = plain::readReal(digits);
    if (!number) notANumber(text, from, to);
    if (!number->inRange) overflow("expression", tsql::typeName(to.type));
    return fitApproximate(number->value, to);
}

}  // namespace kap::engine
