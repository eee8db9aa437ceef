#include "engine/values/convert.hpp"

#include <cmath>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/fine_dates.hpp"
#include "engine/values/variant.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

[[noreturn]] void notConvertible(const TypeSpec& from, const TypeSpec& to) {
    throw tsql::ServerError(tsql::Message::ExplicitConversionNotAllowed,
                            {tsql::typeName(from.type), tsql::typeName(to.type)});
}

Value fromExact(Wide value, const TypeSpec& from, const TypeSpec& to, Overlength overlength,
                int style) {
    const int scale = storedScale(from);
    if (tsql::isExact(to.type)) {
        // A decimal loses its fraction on the way to a whole number; money is rounded.
        const bool cut = tsql::isDecimal(from.type) && tsql::isInteger(to.type);
        return fitWide(value, scale, to, cut ? Rounding::Truncate : Rounding::HalfAway,
                       messageName(from));
    }
    if (tsql::isApproximate(to.type)) return fitApproximate(scaledToDouble(value, scale), to);
    if (tsql::isDateTime(to.type)) {
        return fitDate(scaledToDouble(value, scale) + kServerEpochDay, from, to);
    }
    if (tsql::isText(to.type)) {
        return fitText(textFromExact(value, from, to, style), from, to, overlength);
    }
    if (tsql::isBinary(to.type) && tsql::isInteger(from.type)) {
        return fitBinary(binaryFromExact(static_cast<std::int64_t>(value), from, to), to,
                         overlength);
    }
    notConvertible(from, to);
}

// A float too large for a whole number is named with six decimals.
void checkWholeRange(double value, double whole, const TypeSpec& to) {
    static constexpr std::pair<SqlType, double> kLimits[] = {
        {SqlType::TinyInt, 255.0}, {SqlType::SmallInt, 32767.0}, {SqlType::Int, 2147483647.0}};
    for (const auto& [type, high] : kLimits) {
        if (type != to.type) continue;
        const double low = type == SqlType::TinyInt ? 0.0 : -high - 1.0;
        if (whole >= low && whole <= high) return;
        constexpr int kDecimals = 6;
        throw tsql::ServerError(tsql::Message::ValueOverflowOfType,
                                {tsql::typeName(to.type), plain::fixed(value, kDecimals)});
    }
}

// Doubles are exact whole numbers up to here: beyond, scaling one would change its last digits.
constexpr double kExactBelow = 9007199254740992.0;

// A double as a decimal of more digits than it has: those seventeen that tell it from all others,
// and zeros behind them.
Value fitDigits(double value, const TypeSpec& to) {
    constexpr int kDecimals = 16;  // behind the first digit
    const std::string text = plain::scientific(value, kDecimals);
    const std::size_t mark = text.find('e');
    const auto digits = parseScaled(std::string_view(text).substr(0, mark));
    std::size_t exponent = mark + 1;
    if (text[exponent] == '+') ++exponent;
    const int power = plain::readInt(std::string_view(text).substr(exponent)).value();
    return fitWide(digits.value().value, digits.value().scale - power, to, Rounding::HalfAway,
                   "float");
}

Value fromApproximate(double value, const TypeSpec& from, const TypeSpec& to, Overlength overlength,
                      int style) {
    if (tsql::isExact(to.type)) {
        if (to.type == SqlType::Bit) return std::int64_t{value != 0};
        const int scale = storedScale(to);
        if (tsql::isWideDecimal(to)) {
            if (!std::isfinite(value)) overflow("float", messageName(to));
            return fitDigits(value, to);
        }
        // Whole numbers drop the fraction, all others are rounded.
        const double scaled = value * static_cast<double>(powerOfTen(scale));
        const double whole = tsql::isInteger(to.type) ? std::trunc(scaled) : std::round(scaled);
        if (tsql::isInteger(to.type)) checkWholeRange(value, whole, to);
        constexpr double kLimit = 9223372036854775808.0;
        if (!(whole >= -kLimit && whole < kLimit)) {
            overflow(tsql::isInteger(to.type) ? "expression" : "float", messageName(to));
        }
        if (tsql::isDecimal(to.type) && std::abs(whole) > kExactBelow) {
            return fitDigits(value, to);
        }
        return fitWide(static_cast<std::int64_t>(whole), scale, to, Rounding::Truncate,
                       tsql::isDecimal(to.type) ? "float" : "expression");
    }
    if (tsql::isApproximate(to.type)) return fitApproximate(value, to);
    if (tsql::isDateTime(to.type)) return fitDate(value + kServerEpochDay, from, to);
    if (tsql::isText(to.type)) {
        return fitText(textFromApproximate(value, from, style), from, to, overlength);
    }
    notConvertible(from, to);
}

Value fromDate(double stored, const TypeSpec& from, const TypeSpec& to, Overlength overlength,
               int style) {
    if (tsql::isDate(to.type)) return fitDate(stored, from, to);
    if (tsql::isText(to.type)) {
        auto text = dateText(stored, from.type, style);
        if (!text) {
            throw tsql::ServerError(tsql::Message::WrongStyle,
                                    {plain::text(style), tsql::typeName(from.type)});
        }
        return fitText(std::move(*text), from, to, overlength);
    }
    if (from.type == SqlType::Date || !tsql::isNumber(to.type)) notConvertible(from, to);
    const double days = stored - kServerEpochDay;
    // Whole numbers take the nearest day: noon belongs to the next.
    if (tsql::isInteger(to.type)) {
        return fitWide(std::llround(days), 0, to, Rounding::HalfAway, "datetime");
    }
    return fromApproximate(days, {SqlType::Float}, to, overlength, style);
}

// Where either has decimals of the second.
Value fromFineDate(const Value& value, const TypeSpec& from, const TypeSpec& to,
                   Overlength overlength, int style) {
    if (tsql::isText(to.type)) {
        auto text = fineDateToText(value, from, style);
        if (!text) {
            throw tsql::ServerError(tsql::Message::WrongStyle,
                                    {plain::text(style), tsql::typeName(from.type)});
        }
        return fitText(std::move(*text), from, to, overlength);
    }
    if (conversionRule(from.type, to.type) == ConversionRule::Never) notConvertible(from, to);
    return fitInstant(instantFrom(value, from), from, to);
}

Value fromText(const std::string& text, const TypeSpec& from, const TypeSpec& to,
               Overlength overlength, int style) {
    if (tsql::isText(to.type)) return fitText(text, from, to, overlength);
    if (tsql::isExact(to.type)) return exactFromText(text, from, to);
    if (tsql::isApproximate(to.type)) return approximateFromText(text, from, to);
    if (tsql::isFineDate(to.type)) return fineDateFromText(text, to, style);
    if (tsql::isDate(to.type)) return parseDate(text, to.type, style);
    if (to.type == SqlType::UniqueIdentifier) return identifierFromText(text);
    if (tsql::isBinary(to.type))
        return fitBinary(binaryFromText(text, from, style), to, overlength);
    notConvertible(from, to);
}

Value fromBinary(const Blob& blob, const TypeSpec& from, const TypeSpec& to, Overlength overlength,
                 int style) {
    if (tsql::isBinary(to.type)) return fitBinary(blob, to, overlength);
    if (tsql::isText(to.type))
        return fitText(textFromBinary(blob, to, style), from, to, overlength);
    if (tsql::isInteger(to.type)) {
        return fitWide(integerFromBinary(blob), 0, to, Rounding::Truncate, "expression");
    }
    if (tsql::isMoney(to.type)) return integerFromBinary(blob);
    notConvertible(from, to);
}

}  // namespace

Value convert(const Value& value, const TypeSpec& from, const TypeSpec& to, Overlength overlength,
              int style) {
    if (isNull(value)) return value;
    if (tsql::isVariant(to.type)) {
        return tsql::isVariant(from.type) ? value : Value(variantOf(value, from));
    }
    if (tsql::isVariant(from.type)) {
        const TypedValue typed = valueOfVariant(std::get<std::string>(value));
        return convert(typed.value, typed.type, to, overlength, style);
    }
    if (tsql::isExact(from.type)) {
        return fromExact(exactOf(value), from, to, overlength, style);
    }
    if (tsql::isApproximate(from.type)) {
        return fromApproximate(std::get<double>(value), from, to, overlength, style);
    }
    if (tsql::isDate(from.type)) {
        const bool fine = tsql::isFineDate(from.type) || tsql::isFineDate(to.type);
        return fine ? fromFineDate(value, from, to, overlength, style)
                    : fromDate(std::get<double>(value), from, to, overlength, style);
    }
    if (tsql::isText(from.type)) {
        return fromText(std::get<std::string>(value), from, to, overlength, style);
    }
    if (tsql::isBinary(from.type)) {
        return fromBinary(std::get<Blob>(value), from, to, overlength, style);
    }
    if (to.type == SqlType::UniqueIdentifier) return value;
    if (tsql::isText(to.type)) return fitText(std::get<std::string>(value), from, to, overlength);
    notConvertible(from, to);
}

Value fitExact(std::int64_t value, int scale, const TypeSpec& to, const std::string& from) {
    return fitWide(value, scale, to, Rounding::HalfAway, from);
}

double fitDate(double stored, const TypeSpec& from, const TypeSpec& to) {
    const double result = roundedTo(stored, to.type);
    if (inRange(result, to.type)) return result;
    if (tsql::isNumber(from.type)) overflow("expression", tsql::typeName(to.type));
    throw tsql::ServerError(tsql::Message::DateOutOfRange,
                            {tsql::typeName(from.type), tsql::typeName(to.type)});
}

}  // namespace kap::engine
