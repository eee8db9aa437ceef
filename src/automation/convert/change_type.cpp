#include <kaputil/automation/convert.hpp>

#include <cmath>
#include <limits>
#include <type_traits>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/convert/calendar.hpp"
#include "automation/convert/characters.hpp"
#include "automation/convert/date_text.hpp"
#include "automation/convert/number_text.hpp"
#include "base/power.hpp"
#include "base/unicode.hpp"

namespace kap::convert {
namespace {

[[noreturn]] void raise(std::int32_t number) {
    throw AutomationError(number);
}

// Deeper than any chain of default members that is not endless.
constexpr int kMaxDefaultDepth = 64;

// An object stands for the value of its default member, through any number of objects.
template <class Conversion>
auto throughDefault(const Variant& value, Conversion conversion) {
    Variant held = value;
    for (int depth = 0; held.isObject(); ++depth) {
        const Ref<Object> object = held.as<Ref<Object>>();
        if (!object) {
            raise(errors::kObjectNotSet);
        }
        if (depth == kMaxDefaultDepth) {
            raise(errors::kOutOfStack);
        }
        held = object->defaultValue();
    }
    return conversion(held);
}

NumberText numberIn(const Variant& value) {
    const auto number = readNumber(value.as<String>(), currentLocale());
    if (!number) {
        raise(errors::kTypeMismatch);
    }
    return *number;
}

// The locale's words and the English ones in any case, and those that a text file holds.
std::optional<bool> readBoolean(std::u16string_view text, const Locale& locale) {
    const std::u16string_view word = upToNull(text);
    if (unicode::sameName(word, locale.trueText) || unicode::sameName(word, u"True") ||
        word == u"#TRUE#") {
        return true;
    }
    if (unicode::sameName(word, locale.falseText) || unicode::sameName(word, u"False") ||
        word == u"#FALSE#") {
        return false;
    }
    return std::nullopt;
}

double requireDouble(const NumberText& number) {
    const auto real = toDouble(number);
    if (!real) {
        raise(errors::kOverflow);
    }
    return *real;
}

double doubleInText(const Variant& value) {
    if (const auto plain = readPlainDouble(value.as<String>(), currentLocale())) {
        return *plain;
    }
    return requireDouble(numberIn(value));
}

// What is left when the exact types have been dealt with: every number as a double.
double realValue(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
            return 0;
        case VarType::Boolean:
            return value.as<bool>() ? -1 : 0;
        case VarType::Byte:
            return value.as<std::uint8_t>();
        case VarType::Integer:
            return value.as<std::int16_t>();
        case VarType::Long:
            return value.as<std::int32_t>();
        case VarType::Single:
            return static_cast<double>(value.as<float>());
        case VarType::Double:
            return value.as<double>();
        case VarType::Currency:
            return static_cast<double>(value.as<Currency>().scaled) / 10000.0;
        case VarType::Decimal:
            return value.as<Decimal>().toDouble();
        case VarType::Date:
            return value.as<Date>().days;
        case VarType::String:
            return doubleInText(value);
        case VarType::Object:
            return throughDefault(value, &realValue);
        case VarType::Null:
            raise(errors::kInvalidUseOfNull);
        default:
            raise(errors::kTypeMismatch);
    }
}

// Rounds half to even, whatever the process's rounding mode is.
double roundToEven(double value) {
    const double below = std::floor(value);
    const double fraction = value - below;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(below, 2) != 0)) {
        return below + 1;
    }
    return below;
}

template <class Whole>
Whole toWhole(double value) {
    const double rounded = roundToEven(value);
    if (!(rounded >= static_cast<double>(std::numeric_limits<Whole>::min()) &&
          rounded <= static_cast<double>(std::numeric_limits<Whole>::max()))) {
        raise(errors::kOverflow);
    }
    return static_cast<Whole>(rounded);
}

template <class Whole>
Whole wholeInText(const NumberText& number) {
    // A bit pattern fills the width that it is converted to: "&HFFFF" is the Integer -1.
    using Bits = std::make_unsigned_t<Whole>;
    if (number.pattern != NumberText::Pattern::None &&
        number.bits <= std::numeric_limits<Bits>::max()) {
        return static_cast<Whole>(static_cast<Bits>(number.bits));
    }
    return toWhole<Whole>(requireDouble(number));
}

template <class Whole>
Whole narrowed(std::int64_t value) {
    if (value < std::numeric_limits<Whole>::min() || value > std::numeric_limits<Whole>::max()) {
        raise(errors::kOverflow);
    }
    return static_cast<Whole>(value);
}

template <class Whole>
Whole toWhole(const Variant& value) {
    switch (value.type()) {
        case VarType::Long:
            return narrowed<Whole>(value.as<std::int32_t>());
        case VarType::Integer:
            return narrowed<Whole>(value.as<std::int16_t>());
        case VarType::Decimal:
        case VarType::Currency: {
            const auto exact = toDecimal(value).scaledTo(0);
            if (!exact) {
                raise(errors::kOverflow);
            }
            return narrowed<Whole>(*exact);
        }
        case VarType::String:
            return wholeInText<Whole>(numberIn(value));
        default:
            return toWhole<Whole>(realValue(value));
    }
}

// The exact value times 10,000, rounded half to even. The product in floating point is rounded
// itself; what it lost is known exactly and decides where it seems to lie halfway.
Currency currencyOfReal(double value) {
    constexpr double kScale = 10000;
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    const auto [product, lost] = exactProduct(value, kScale);
    if (!(product >= -kLimit && product < kLimit)) {
        raise(errors::kOverflow);
    }
    const double below = std::floor(product);
    const bool halfway = product - below == 0.5 && lost != 0;
    const double step = halfway ? (lost > 0 ? 1 : 0) : roundToEven((product - below) + lost);
    const auto whole = static_cast<std::int64_t>(below);
    const auto more = static_cast<std::int64_t>(step);
    using Limits = std::numeric_limits<std::int64_t>;
    if (more > 0 ? whole > Limits::max() - more : whole < Limits::min() - more) {
        raise(errors::kOverflow);
    }
    return {whole + more};
}

std::optional<Decimal> decimalOf(const Variant& value) {
    switch (value.type()) {
        case VarType::Decimal:
            return value.as<Decimal>();
        case VarType::Currency:
            return Decimal(value.as<Currency>().scaled, 4);
        case VarType::String:
            return toDecimal(numberIn(value));
        case VarType::Object:
            return throughDefault(value, &decimalOf);
        case VarType::Single:
            return Decimal::fromDouble(realValue(value), 7);
        case VarType::Double:
        case VarType::Date:
            return Decimal::fromDouble(realValue(value));
        default:
            return Decimal(static_cast<std::int64_t>(realValue(value)));
    }
}

}  // namespace

String toString(const Variant& value) {
    const char16_t point = currentLocale().decimalSeparator;
    switch (value.type()) {
        case VarType::Empty:
            return {};
        case VarType::String:
            return value.as<String>();
        case VarType::Boolean:
            return value.as<bool>() ? currentLocale().trueText : currentLocale().falseText;
        case VarType::Byte:
            return printWhole(value.as<std::uint8_t>());
        case VarType::Integer:
            return printWhole(value.as<std::int16_t>());
        case VarType::Long:
            return printWhole(value.as<std::int32_t>());
        case VarType::Single:
            return printSingle(value.as<float>(), point);
        case VarType::Double:
            return printDouble(value.as<double>(), point);
        case VarType::Currency:
            return printCurrency(value.as<Currency>(), point);
        case VarType::Decimal:
            return printDecimal(value.as<Decimal>(), point);
        case VarType::Date: {
            auto text = printDate(value.as<Date>(), currentLocale());
            if (!text) {
                raise(errors::kTypeMismatch);
            }
            return std::move(*text);
        }
        case VarType::Object:
            return throughDefault(value, &toString);
        case VarType::Null:
            raise(errors::kInvalidUseOfNull);
        default:
            raise(errors::kTypeMismatch);
    }
}

bool toBoolean(const Variant& value) {
    if (value.isString()) {
        if (const auto truth = readBoolean(value.as<String>(), currentLocale())) {
            return *truth;
        }
    }
    if (value.isObject()) {
        return throughDefault(value, &toBoolean);
    }
    return realValue(value) != 0;
}

std::uint8_t toByte(const Variant& value) {
    if (value.type() == VarType::Boolean) {
        return value.as<bool>() ? 255 : 0;  // True has every bit set
    }
    return toWhole<std::uint8_t>(value);
}

std::int16_t toInteger(const Variant& value) {
    return toWhole<std::int16_t>(value);
}

std::int32_t toLong(const Variant& value) {
    return toWhole<std::int32_t>(value);
}

float toSingle(const Variant& value) {
    if (value.type() == VarType::Single) {
        return value.as<float>();
    }
    const double real = realValue(value);
    const auto narrow = static_cast<float>(real);
    if (std::isinf(narrow) && !std::isinf(real)) {
        raise(errors::kOverflow);
    }
    return narrow;
}

double toDouble(const Variant& value) {
    return realValue(value);
}

Currency toCurrency(const Variant& value) {
    switch (value.type()) {
        case VarType::Currency:
            return value.as<Currency>();
        case VarType::Single:
        case VarType::Double:
        case VarType::Date:
            return currencyOfReal(realValue(value));
        case VarType::Object:
            return throughDefault(value, &toCurrency);
        default:
            break;
    }
    const auto scaled = toDecimal(value).scaledTo(4);
    if (!scaled) {
        raise(errors::kOverflow);
    }
    return {*scaled};
}

Decimal toDecimal(const Variant& value) {
    const auto exact = decimalOf(value);
    if (!exact) {
        raise(errors::kOverflow);
    }
    return *exact;
}

Date toDate(const Variant& value) {
    if (value.type() == VarType::Date) {
        return value.as<Date>();
    }
    if (value.isObject()) {
        return throughDefault(value, &toDate);
    }
    if (value.isString()) {
        const auto date = readDate(value.as<String>(), currentLocale());
        if (!date) {
            raise(errors::kTypeMismatch);
        }
        return *date;
    }
    const Date date{realValue(value)};
    if (!takeApart(date)) {
        raise(errors::kOverflow);
    }
    return date;
}

Variant plainValue(const Variant& value) {
    return value.isObject() ? throughDefault(value, &plainValue) : value;
}

Variant changeType(const Variant& value, VarType type) {
    switch (type) {
        case VarType::Empty:
            return {};
        case VarType::Null:
            return Variant::null();
        case VarType::Integer:
            return toInteger(value);
        case VarType::Long:
            return toLong(value);
        case VarType::Single:
            return toSingle(value);
        case VarType::Double:
            return toDouble(value);
        case VarType::Currency:
            return toCurrency(value);
        case VarType::Date:
            return toDate(value);
        case VarType::String:
            return toString(value);
        case VarType::Boolean:
            return toBoolean(value);
        case VarType::Decimal:
            return toDecimal(value);
        case VarType::Byte:
            return toByte(value);
        case VarType::Variant:
            return value;
        case VarType::Object:
            return value.as<Ref<Object>>();
        default:
            raise(errors::kTypeMismatch);
    }
}

bool isNumeric(const Variant& value) {
    switch (value.type()) {
        case VarType::Null:
        case VarType::Date:
        case VarType::Error:
        case VarType::Array:
            return false;
        case VarType::String: {
            const auto number = readNumber(value.as<String>(), currentLocale());
            return number && toDouble(*number);
        }
        case VarType::Object:
            return value.as<Ref<Object>>() && throughDefault(value, &isNumeric);
        default:
            return true;
    }
}

bool isDate(const Variant& value) {
    if (value.isString()) {
        return readDate(value.as<String>(), currentLocale()).has_value();
    }
    if (value.isObject()) {
        return value.as<Ref<Object>>() && throughDefault(value, &isDate);
    }
    return value.type() == VarType::Date;
}

}  // namespace kap::convert
