#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "automation/locale_tables.hpp"
#include "base/ascii.hpp"
#include "base/unicode.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/date_pattern.hpp"
#include "engine/values/date_settings.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/fine_dates.hpp"
#include "engine/values/number_format.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

// FORMAT and PARSE: values as a country writes them. The country is named by the call, or is the
// one of the session's language.
namespace kap::engine {

namespace {

using tsql::SqlType;
using tsql::TypeSpec;

const Locale& cultureNamed(std::string_view name) {
    const std::string_view wanted =
        !name.empty() ? name : std::string_view(dateSettings().italian ? "it-IT" : "en-US");
    for (const auto& cultures : {knownLocales(), otherCultures()}) {
        for (const Locale& locale : cultures) {
            const bool language = wanted.size() == 2 && locale.name.size() > 2 &&
                                  equalsIgnoringCase(locale.name.substr(0, 2), wanted);
            if (language || equalsIgnoringCase(locale.name, wanted)) return locale;
        }
    }
    throw tsql::ServerError(tsql::Message::UnknownCulture, {name});
}

FormattedNumber numberOf(const Value& value, const TypeSpec& type) {
    FormattedNumber number;
    if (const auto* real = std::get_if<double>(&value)) {
        number.digits = DecimalDigits::of(*real);
        number.approximate = true;
        return number;
    }
    number.digits = DecimalDigits::of(exactOf(value), storedScale(type));
    if (!tsql::isInteger(type.type)) return number;
    const auto whole = std::get<std::int64_t>(value);
    constexpr int kIntBits = 32;
    constexpr int kSmallBits = 16;
    number.value = whole;
    if (type.type == SqlType::Int) number.bits = kIntBits;
    if (type.type == SqlType::SmallInt) number.bits = kSmallBits;
    return number;
}

std::optional<std::u16string> formatAnyDate(const Value& value, const TypeSpec& type,
                                            const std::u16string& format, const Locale& culture) {
    if (!tsql::isFineDate(type.type)) {
        return formatDate({partsOf(std::get<double>(value))}, format, culture);
    }
    Instant instant = instantFrom(value, type);
    if (type.type == SqlType::Time) return formatTime(partsOf(instant), format, culture);
    if (type.type == SqlType::DateTime2) return formatDate({partsOf(instant)}, format, culture);
    // Formats that name universal time tell it.
    const bool universal = format == u"u" || format == u"r" || format == u"R";
    if (universal) instant = instant.onClock(0);
    return formatDate({partsOf(instant), instant.offset}, format, culture);
}

// kap_format(value, type, format, culture): NULL for a format that the value's kind does not have.
Value formatValue(const Arguments& arguments) {
    const TypeSpec type = arguments.type(1);
    const Value value = arguments.value(0, type);
    const std::u16string format = toUnits(arguments.text(2));
    const Locale& culture = cultureNamed(arguments.text(3));
    const auto text = tsql::isDate(type.type)
                          ? formatAnyDate(value, type, format, culture)
                          : formatNumber(numberOf(value, type), format, culture);
    if (!text) return {};
    constexpr std::size_t kLongest = 4000;
    return fromUnits(std::u16string_view(*text).substr(0, kLongest));
}

// The text of a number as programs write it; nullopt for what cannot be one in the country.
std::optional<std::string> plainNumber(std::u16string_view text, const TypeSpec& type,
                                       const Locale& culture) {
    std::u16string rest(text);
    bool negative = false;
    const auto trim = [&] { rest = std::u16string(unicode::trim(rest)); };
    const auto takeFront = [&](std::u16string_view sign) {
        if (sign.empty() || !rest.starts_with(sign)) return false;
        rest.erase(0, sign.size());
        trim();
        return true;
    };
    const auto takeBack = [&](std::u16string_view sign) {
        if (sign.empty() || !rest.ends_with(sign)) return false;
        rest.resize(rest.size() - sign.size());
        trim();
        return true;
    };
    trim();
    const bool amount = tsql::isMoney(type.type);
    if (amount && rest.starts_with(u'(') && rest.ends_with(u')')) {
        rest = rest.substr(1, rest.size() - 2);
        negative = true;
    }
    const auto takeSign = [&] {
        if (takeFront(u"-") || takeBack(u"-")) {
            negative = !negative;
            return true;
        }
        return takeFront(u"+") || takeBack(u"+");
    };
    bool sign = takeSign();
    if (amount && (takeFront(culture.currencySign) || takeBack(culture.currencySign)) && !sign) {
        sign = takeSign();
    }
    std::string digits = negative ? "-" : "";
    bool point = false;
    for (const char16_t unit : rest) {
        const bool groups = !tsql::isApproximate(type.type) && !point;
        if (unit == culture.decimalSeparator && !point) {
            digits += '.';
            point = true;
        } else if (unit == culture.groupSeparator && groups) {
            continue;
        } else if (unit < 0x80 && unit != u'.' && unit != u',') {
            digits += static_cast<char>(unit);
        } else {
            return std::nullopt;
        }
    }
    return digits;
}

tsql::ServerError unreadable(const std::string& text, const TypeSpec& type) {
    return {tsql::Message::ConversionFailed, {"nvarchar", text, tsql::typeName(type.type)}};
}

Value parsedNumber(const std::string& text, const TypeSpec& type, const Locale& culture) {
    const TypeSpec from{SqlType::NVarChar, tsql::kMaxLength};
    const auto digits = plainNumber(toUnits(text), type, culture);
    const bool any = digits && digits->find_first_of("0123456789") != std::string::npos;
    if (!any) throw unreadable(text, type);
    if (!tsql::isInteger(type.type)) return convert(*digits, from, type, Overlength::Refuse);
    // A whole number may have decimals, all of them zero.
    std::string whole = *digits;
    const std::size_t point = whole.find('.');
    if (point != std::string::npos) {
        if (whole.find_first_not_of('0', point + 1) != std::string::npos) {
            throw unreadable(text, type);
        }
        whole.resize(point);
    }
    return convert(whole, from, type, Overlength::Refuse);
}

// The day of the week that a text begins with, from Sunday, which is taken away with the comma
// behind it; nullopt when it begins with none.
std::optional<int> takeWeekday(std::u16string& text, const Locale& culture) {
    const std::size_t end = std::min(text.find_first_of(u", "), text.size());
    const std::u16string_view word = std::u16string_view(text).substr(0, end);
    for (std::size_t day = 0; day < culture.weekdays.size(); ++day) {
        if (!unicode::sameName(word, culture.weekdays.at(day)) &&
            !unicode::sameName(word, culture.weekdayAbbreviations.at(day))) {
            continue;
        }
        text.erase(0, std::min(text.find_first_not_of(u", ", end), text.size()));
        return static_cast<int>(day);
    }
    return std::nullopt;
}

// "05.02.2021" and "5. Februar 2021" as the conversions of the runtime read them.
std::u16string withoutPoints(std::u16string text) {
    for (std::size_t at = text.find(u'.'); at != std::u16string::npos; at = text.find(u'.', at)) {
        const bool within = at + 1 < text.size() && text[at + 1] >= u'0' && text[at + 1] <= u'9';
        text[at] = within ? u'/' : u' ';
    }
    return text;
}

Value parsedDate(const std::string& text, const TypeSpec& type, const Locale& culture) {
    const CultureScope scope(culture);
    std::u16string units = toUnits(text);
    const auto weekday = takeWeekday(units, culture);
    if (culture.dateSeparator == u'.') units = withoutPoints(std::move(units));
    const Variant given = String(units);
    if (!convert::isDate(given)) throw tsql::ServerError(tsql::Message::WrongDateText);
    double days = convert::linearDays(convert::toDate(given));
    // A time alone is one of today.
    if (days >= 0 && days < 1) days += std::floor(localInstant());
    const DateParts parts = partsOf(days);
    if (weekday && *weekday != convert::weekdayOf({parts.year, parts.month, parts.day})) {
        throw tsql::ServerError(tsql::Message::WrongDateText);
    }
    constexpr TypeSpec kFrom{SqlType::DateTime};
    return tsql::isFineDate(type.type) ? fitInstant(instantFrom(days, kFrom), kFrom, type)
                                       : Value(fitDate(days, kFrom, type));
}

// kap_parse(text, type, culture)
Value parseValue(const Arguments& arguments) {
    const TypeSpec type = arguments.type(1);
    const std::string text(arguments.text(0));
    const Locale& culture = cultureNamed(arguments.text(2));
    try {
        return tsql::isDate(type.type) ? parsedDate(text, type, culture)
                                       : parsedNumber(text, type, culture);
    } catch (const tsql::ServerError&) {
        throw tsql::ServerError(tsql::Message::ErrorParsing,
                                {text, tsql::typeName(type.type), arguments.text(2)});
    }
}

// kap_try_parse(text, type, culture): null for what cannot be read.
Value tryParseValue(const Arguments& arguments) {
    (void)cultureNamed(arguments.text(2));  // a wrong country is the program's mistake
    try {
        return parseValue(arguments);
    } catch (const tsql::ServerError&) {
        return {};
    }
}

}  // namespace

void registerCultureFunctions(Registrar& registrar) {
    registrar.scalar("kap_format", 4, formatValue);
    registrar.scalar("kap_parse", 3, parseValue);
    registrar.scalar("kap_try_parse", 3, tryParseValue);
}

}  // namespace kap::engine
