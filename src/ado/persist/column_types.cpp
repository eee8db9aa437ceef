#include "ado/persist/column_types.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include <kaputil/automation/decimal.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "data/failures.hpp"
#include "data/variant_cell.hpp"

namespace kap::ado::persist {
namespace {

using enum DataTypeEnum;

constexpr double kSecondsOfDay = 86400;
constexpr int kCurrencyDigits = 4;

// The shape of a text or binary type: fixed, of varying length, or long. Other types have none.
enum class Shape : std::uint8_t { Any, Fixed, Varying, Long };

struct TypeRow {
    DataTypeEnum code;
    std::string_view type;
    std::string_view dbType;
    Shape shape = Shape::Any;
};

constexpr auto kTypeRows = std::to_array<TypeRow>({
    {adBoolean, "boolean", ""},
    {adTinyInt, "i1", ""},
    {adUnsignedTinyInt, "ui1", ""},
    {adSmallInt, "i2", ""},
    {adUnsignedSmallInt, "ui2", ""},
    {adInteger, "int", ""},
    {adInteger, "i4", ""},
    {adUnsignedInt, "ui4", ""},
    {adError, "int", "error"},
    {adBigInt, "i8", ""},
    {adCurrency, "number", "currency"},
    {adCurrency, "i8", "currency"},
    {adNumeric, "number", "numeric"},
    {adNumeric, "number", ""},
    {adDecimal, "number", "decimal"},
    {adSingle, "r4", ""},
    {adDouble, "float", ""},
    {adDouble, "r8", ""},
    {adDBTimeStamp, "dateTime", "timestamp"},
    {adDBTimeStamp, "dateTime", ""},
    {adDate, "dateTime", "variantdate"},
    {adDBDate, "date", ""},
    {adDBTime, "time", ""},
    {adGUID, "uuid", ""},
    {adVariant, "string", "variant"},
    {adBSTR, "string", "bstr"},
    {adChar, "string", "str", Shape::Fixed},
    {adVarChar, "string", "str", Shape::Varying},
    {adLongVarChar, "string", "str", Shape::Long},
    {adWChar, "string", "", Shape::Fixed},
    {adVarWChar, "string", "", Shape::Varying},
    {adLongVarWChar, "string", "", Shape::Long},
    {adBinary, "bin.hex", "", Shape::Fixed},
    {adVarBinary, "bin.hex", "", Shape::Varying},
    {adLongVarBinary, "bin.hex", "", Shape::Long},
});

Shape shapeOf(bool fixed, bool isLong) {
    if (isLong) {
        return Shape::Long;
    }
    return fixed ? Shape::Fixed : Shape::Varying;
}

bool isDateType(DataTypeEnum type) {
    return type == adDate || type == adDBDate || type == adDBTime || type == adDBTimeStamp;
}

[[noreturn]] void refuseValue(const ColumnInfo& column, const std::string& text) {
    fail::readingFile("'" + text + "' is no value of the field '" + column.name + "'");
}

// --- Dates

// With no more of a second's parts than are needed to read the same instant back.
std::string secondsText(double day, double linear) {
    const double seconds = (linear - day) * kSecondsOfDay;
    const double rounded = std::round(seconds * 1000) / 1000;
    const bool enough = day + rounded / kSecondsOfDay == linear;
    const double shown = enough ? rounded : seconds;
    const auto whole = static_cast<std::int64_t>(std::floor(shown));
    std::string text = plain::padded(whole / 3600, 2) + ":" + plain::padded(whole / 60 % 60, 2) +
                       ":" + plain::padded(whole % 60, 2);
    const double part = shown - std::floor(shown);
    std::string digits = plain::fixed(part, enough ? 3 : 9);
    while (digits.ends_with('0')) {
        digits.pop_back();
    }
    return digits.starts_with("0.") && digits.size() > 2 ? text + digits.substr(1) : text;
}

std::string dateText(DataTypeEnum type, double linear) {
    const double day = std::floor(linear);
    const convert::CivilDate date = convert::civilDate(static_cast<int>(day));
    std::string dayText = plain::padded(date.year, 4) + "-" + plain::padded(date.month, 2) + "-" +
                          plain::padded(date.day, 2);
    if (type == adDBDate) {
        return dayText;
    }
    const std::string time = secondsText(day, linear);
    return type == adDBTime ? time : dayText + "T" + time;
}

std::optional<double> readDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    const auto year = plain::readInt(text.substr(0, 4));
    const auto month = plain::readInt(text.substr(5, 2));
    const auto day = plain::readInt(text.substr(8, 2));
    if (!year || !month || !day || !convert::isValid({*year, *month, *day})) {
        return std::nullopt;
    }
    return convert::serialDay({*year, *month, *day});
}

std::optional<double> readTime(std::string_view text) {
    if (text.size() < 8 || text[2] != ':' || text[5] != ':') {
        return std::nullopt;
    }
    const auto hour = plain::readInt(text.substr(0, 2));
    const auto minute = plain::readInt(text.substr(3, 2));
    const auto second = plain::readReal(text.substr(6));
    constexpr int kLastMinute = 59;
    if (!hour || !minute || !second || *hour > 23 || *minute > kLastMinute ||
        second->value >= kLastMinute + 1 || *hour < 0 || *minute < 0 || second->value < 0) {
        return std::nullopt;
    }
    return (*hour * 3600 + *minute * 60 + second->value) / kSecondsOfDay;
}

std::optional<double> readDate(DataTypeEnum type, std::string_view text) {
    if (type == adDBTime && text.find('-') == std::string_view::npos) {
        return readTime(text);
    }
    const auto day = readDay(text.substr(0, 10));
    if (!day || text.size() <= 10) {
        return day;
    }
    const auto time = text[10] == 'T' || text[10] == ' ' ? readTime(text.substr(11)) : std::nullopt;
    return time ? std::optional(*day + *time) : std::nullopt;
}

// --- Bytes

std::optional<std::string> readHex(std::string_view text) {
    std::string bytes;
    int high = -1;
    for (const char letter : text) {
        if (letter == ' ') {
            continue;
        }
        const int digit = hex::valueOf(static_cast<unsigned char>(letter));
        if (digit < 0) {
            return std::nullopt;
        }
        if (high < 0) {
            high = digit;
        } else {
            bytes += static_cast<char>(high * 16 + digit);
            high = -1;
        }
    }
    return high < 0 ? std::optional(bytes) : std::nullopt;
}

// --- Numbers

std::optional<std::int64_t> readScaled(const std::string& text, int scale) {
    const auto number = Decimal::parse(text);
    return number ? number->scaledTo(scale) : std::nullopt;
}

template <class Whole>
bool fits(std::int64_t value) {
    return value >= std::numeric_limits<Whole>::min() && value <= std::numeric_limits<Whole>::max();
}

bool fitsType(DataTypeEnum type, std::int64_t value) {
    switch (type) {
        case adTinyInt:
            return fits<std::int8_t>(value);
        case adUnsignedTinyInt:
            return fits<std::uint8_t>(value);
        case adSmallInt:
            return fits<std::int16_t>(value);
        case adUnsignedSmallInt:
            return fits<std::uint16_t>(value);
        case adInteger:
        case adError:
            return fits<std::int32_t>(value);
        case adUnsignedInt:
            return fits<std::uint32_t>(value);
        default:
            return true;
    }
}

std::optional<std::int64_t> readInteger(const ColumnInfo& column, const std::string& text) {
    switch (column.type) {
        case adBoolean:
            if (equalsIgnoringCase(text, "true") || text == "1" || text == "-1") {
                return 1;
            }
            if (equalsIgnoringCase(text, "false") || text == "0") {
                return 0;
            }
            return std::nullopt;
        case adCurrency:
            return readScaled(text, kCurrencyDigits);
        case adNumeric:
        case adDecimal:
            return readScaled(text, column.numericScale);
        default: {
            const auto whole = plain::readWhole(text);
            return whole && fitsType(column.type, *whole) ? whole : std::nullopt;
        }
    }
}

bool fitsType(DataTypeEnum type, double value) {
    return type != adSingle || std::fabs(value) <= std::numeric_limits<float>::max();
}

std::string integerText(const ColumnInfo& column, std::int64_t value) {
    switch (column.type) {
        case adBoolean:
            return value != 0 ? "True" : "False";
        case adCurrency:
            return Decimal(value, kCurrencyDigits).plainText();
        case adNumeric:
        case adDecimal:
            return Decimal(value, column.numericScale).plainText();
        default:
            return plain::text(value);
    }
}

std::string realText(const ColumnInfo& column, double value) {
    if (isDateType(column.type)) {
        return dateText(column.type, value);
    }
    return column.type == adSingle ? plain::shortest(static_cast<float>(value))
                                   : plain::shortest(value);
}

std::string textText(const ColumnInfo& column, const std::string& value) {
    if (column.type == adVariant) {
        return variantCellText(value);
    }
    return column.type == adGUID ? "{" + value + "}" : value;
}

}  // namespace

TypeName nameOfType(const ColumnInfo& column) {
    const Shape shape = shapeOf(column.fixedLength, column.isLong);
    const auto found = std::ranges::find_if(kTypeRows, [&](const TypeRow& row) {
        return row.code == column.type && (row.shape == Shape::Any || row.shape == shape);
    });
    if (found != kTypeRows.end()) {
        return {found->type, found->dbType};
    }
    // A text or binary type in another shape than its own, such as a fixed adVarChar.
    const auto byCode = std::ranges::find(kTypeRows, column.type, &TypeRow::code);
    return byCode == kTypeRows.end() ? TypeName{"string", ""}
                                     : TypeName{byCode->type, byCode->dbType};
}

DataTypeEnum typeNamed(std::string_view type, std::string_view dbType, bool fixed, bool isLong) {
    const Shape shape = shapeOf(fixed, isLong);
    const auto found = std::ranges::find_if(kTypeRows, [&](const TypeRow& row) {
        return row.type == type && row.dbType == dbType &&
               (row.shape == Shape::Any || row.shape == shape);
    });
    if (found == kTypeRows.end()) {
        fail::readingFile("the type '" + std::string(type) + "' (" + std::string(dbType) +
                          ") is not known");
    }
    return found->code;
}

std::string writtenValue(const ColumnInfo& column, const Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        return integerText(column, *integer);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return realText(column, *real);
    }
    if (const auto* blob = std::get_if<Blob>(&value)) {
        return hex::ofBytes(blob->bytes, hex::Case::Lower);
    }
    return textText(column, std::get<std::string>(value));
}

Value readValue(const ColumnInfo& column, const std::string& text) {
    if (column.wideDecimal) {
        if (!Decimal::parse(text)) {
            refuseValue(column, text);
        }
        return text;
    }
    switch (storageOf(column.type)) {
        case Storage::Integer: {
            const auto whole = readInteger(column, text);
            return whole ? Value(*whole) : (refuseValue(column, text), Value());
        }
        case Storage::Real: {
            if (isDateType(column.type)) {
                const auto days = readDate(column.type, text);
                return days ? Value(*days) : (refuseValue(column, text), Value());
            }
            const auto real = plain::readReal(text);
            const bool fits = real && real->inRange && fitsType(column.type, real->value);
            return fits ? Value(real->value) : (refuseValue(column, text), Value());
        }
        case Storage::Binary: {
            auto bytes = readHex(text);
            return bytes ? Value(Blob{std::move(*bytes)}) : (refuseValue(column, text), Value());
        }
        case Storage::Text:
            break;
    }
    const bool braced =
        column.type == adGUID && text.size() > 1 && text.front() == '{' && text.back() == '}';
    return braced ? text.substr(1, text.size() - 2) : text;
}

}  // namespace kap::ado::persist
