#include <kaputil/frame/convert.hpp>

#include <cmath>
#include <limits>
#include <type_traits>

#include <kaputil/frame/array.hpp>
#include <kaputil/frame/error.hpp>
#include <kaputil/frame/locale.hpp>

#include "frame/convert/date_text.hpp"
#include "frame/convert/number_text.hpp"
#include "frame/unicode.hpp"

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
    auto number = readNumber(value.as<String>(), currentLocale());
    if (!number) {
        raise(errors::kTypeMismatch);
    }
    return std::move(*number);
}

bool isTruthText(std::u16string_view text, std::u16string_view local, std::u16string_view english) {
    return unicode::sameName(text, local) || unicode::sameName(text, english);
}

double doubleInText(const Variant& value) {
    const auto real = toDouble(numberIn(value));
    if (!real) {
        raise(errors::kOverflow);
    }
    return *real;
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
Whole toWhole(const Variant& value) {
    if (value.type() == VarType::Decimal || value.type() == VarType::Currency) {
        const auto exact = toDecimal(value).scaledTo(0);
        if (!exact || *exact < std::numeric_limits<Whole>::min() ||
            *exact > std::numeric_limits<Whole>::max()) {
            raise(errors::kOverflow);
        }
        return static_cast<Whole>(*exact);
    }
    if (value.isString()) {
        const NumberText number = numberIn(value);
        const auto real = toDouble(number);
        if (!real) {
            raise(errors::kOverflow);
        }
        // "&HFFFF" names a bit pattern: it fills the width it is converted to.
        using Bits = std::make_unsigned_t<Whole>;
        if (number.hexadecimal && *real <= static_cast<double>(std::numeric_limits<Bits>::max())) {
            return static_cast<Whole>(static_cast<Bits>(*real));
        }
        return toWhole<Whole>(*real);
    }
    return toWhole<Whole>(realValue(value));
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
        const Locale& locale = currentLocale();
        const std::u16string_view text = value.as<String>();
        if (isTruthText(text, locale.trueText, u"True")) {
            return true;
        }
        if (isTruthText(text, locale.falseText, u"False")) {
            return false;
        }
    }
    if (value.isObject()) {
        return throughDefault(value, &toBoolean);
    }
    return realValue(value) != 0;
}

std::uint8_t toByte(const Variant& value) {
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
    if (std::fabs(real) > static_cast<double>(std::numeric_limits<float>::max())) {
        raise(errors::kOverflow);
    }
    return static_cast<float>(real);
}

double toDouble(const Variant& value) {
    return realValue(value);
}

Currency toCurrency(const Variant& value) {
    if (value.type() == VarType::Currency) {
        return value.as<Currency>();
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
        if (const auto date = readDate(value.as<String>(), currentLocale())) {
            return *date;
        }
    }
    const Date date{realValue(value)};
    if (!printDate(date, currentLocale())) {
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

String plainNumber(double value) {
    return printDouble(value, u'.');
}

}  // namespace kap::convert
