#include "drivers/odbc/values.hpp"

#include <array>
#include <cmath>
#include <limits>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "base/ascii.hpp"
#include "base/unicode.hpp"

namespace kap::ado::odbc {
namespace {

constexpr double kSecondsOfDay = 86400;
constexpr double kNanoseconds = 1e9;
constexpr int kCertainDecimals = 6;

constexpr auto kPowers = [] {
    std::array<std::int64_t, 19> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * 10;
    }
    return powers;
}();

double dayPart(int hour, int minute, int second, double fraction) {
    return (hour * 3600 + minute * 60 + second + fraction) / kSecondsOfDay;
}

std::optional<int> twoDigits(std::string_view text, std::size_t at) {
    return at + 2 <= text.size() ? plain::readInt(text.substr(at, 2)) : std::nullopt;
}

// An instant as its day and the microseconds since midnight, rounded to `decimals` of a second.
struct Instant {
    int day = 0;
    std::int64_t microseconds = 0;
};

Instant instantOf(double days, int decimals) {
    constexpr std::int64_t kDay = 86'400'000'000;
    const double day = std::floor(days);
    const std::int64_t step =
        kPowers[static_cast<std::size_t>(kCertainDecimals - std::min(decimals, kCertainDecimals))];
    const auto exact =
        static_cast<std::int64_t>(std::llround((days - day) * static_cast<double>(kDay)));
    Instant made{static_cast<int>(day), (exact + step / 2) / step * step};
    if (made.microseconds >= kDay) {
        made.microseconds -= kDay;
        ++made.day;
    }
    return made;
}

}  // namespace

std::optional<double> daysOf(const SQL_TIMESTAMP_STRUCT& stamp) {
    const auto day = daysOf(SQL_DATE_STRUCT{stamp.year, stamp.month, stamp.day});
    if (!day) {
        return std::nullopt;
    }
    return *day + dayPart(stamp.hour, stamp.minute, stamp.second, stamp.fraction / kNanoseconds);
}

std::optional<double> daysOf(const SQL_DATE_STRUCT& date) {
    const convert::CivilDate civil{date.year, date.month, date.day};
    if (!convert::isValid(civil)) {
        return std::nullopt;
    }
    return convert::serialDay(civil);
}

std::optional<double> daysOfClock(std::string_view text) {
    const auto hour = twoDigits(text, 0);
    const auto minute = twoDigits(text, 3);
    const auto second = twoDigits(text, 6);
    if (!hour || !minute || !second) {
        return std::nullopt;
    }
    double fraction = 0;
    if (text.size() > 9 && text[8] == '.') {
        const auto read = plain::readReal("0." + std::string(text.substr(9)));
        fraction = read ? read->value : 0;
    }
    return dayPart(*hour, *minute, *second, fraction);
}

SQL_TIMESTAMP_STRUCT stampOf(double days, int decimals) {
    const Instant instant = instantOf(days, decimals);
    const convert::CivilDate date = convert::civilDate(instant.day);
    const auto seconds = static_cast<int>(instant.microseconds / 1'000'000);
    SQL_TIMESTAMP_STRUCT made{};
    made.year = static_cast<SQLSMALLINT>(date.year);
    made.month = static_cast<SQLUSMALLINT>(date.month);
    made.day = static_cast<SQLUSMALLINT>(date.day);
    made.hour = static_cast<SQLUSMALLINT>(seconds / 3600);
    made.minute = static_cast<SQLUSMALLINT>(seconds / 60 % 60);
    made.second = static_cast<SQLUSMALLINT>(seconds % 60);
    made.fraction = static_cast<SQLUINTEGER>(instant.microseconds % 1'000'000 * 1000);
    return made;
}

SQL_DATE_STRUCT dateOf(double days) {
    const convert::CivilDate date = convert::civilDate(static_cast<int>(std::floor(days)));
    return {static_cast<SQLSMALLINT>(date.year), static_cast<SQLUSMALLINT>(date.month),
            static_cast<SQLUSMALLINT>(date.day)};
}

std::string clockText(double days) {
    const SQL_TIMESTAMP_STRUCT stamp = stampOf(days - std::floor(days), kCertainDecimals);
    std::string text = plain::padded(stamp.hour, 2) + ":" + plain::padded(stamp.minute, 2) + ":" +
                       plain::padded(stamp.second, 2);
    if (stamp.fraction != 0) {
        text += "." + plain::padded(stamp.fraction / 1000, kCertainDecimals);
    }
    return text;
}

std::optional<DecimalDigits> decimalOf(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string_view decimals = text.substr(std::min(point + 1, text.size()));
    while (decimals.ends_with('0')) {
        decimals.remove_suffix(1);
    }
    if (text.empty() || text == ".") {
        return std::nullopt;
    }
    DecimalDigits made{0, static_cast<int>(decimals.size())};
    for (const std::string_view part : {text.substr(0, point), decimals}) {
        for (const char letter : part) {
            if (!isAsciiDigit(letter) || __builtin_mul_overflow(made.digits, 10, &made.digits) ||
                __builtin_sub_overflow(made.digits, letter - '0', &made.digits)) {
                return std::nullopt;
            }
        }
    }
    // Counted downwards: there is one more number below zero.
    if (!negative) {
        if (made.digits == std::numeric_limits<std::int64_t>::min()) {
            return std::nullopt;
        }
        made.digits = -made.digits;
    }
    return made;
}

std::optional<std::int64_t> scaled(DecimalDigits number, int scale) {
    const int more = scale - number.scale;
    std::int64_t digits = 0;
    if (more < 0 || more >= static_cast<int>(kPowers.size()) ||
        __builtin_mul_overflow(number.digits, kPowers[static_cast<std::size_t>(more)], &digits)) {
        return number.digits == 0 ? std::optional<std::int64_t>(0) : std::nullopt;
    }
    return digits;
}

std::string decimalText(std::int64_t digits, int scale) {
    std::string text = plain::padded(digits, scale + 1);
    if (scale > 0) {
        text.insert(text.size() - static_cast<std::size_t>(scale), ".");
    }
    return text;
}

std::string shortestDecimal(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string_view whole = text.substr(0, point);
    std::string_view decimals = text.substr(std::min(point + 1, text.size()));
    while (whole.starts_with('0')) {
        whole.remove_prefix(1);
    }
    while (decimals.ends_with('0')) {
        decimals.remove_suffix(1);
    }
    if (whole.empty() && decimals.empty()) {
        return text.find('0') == std::string_view::npos ? "" : "0";
    }
    std::string made = negative ? "-" : "";
    made += whole.empty() ? std::string_view("0") : whole;
    if (!decimals.empty()) {
        made += '.';
        made += decimals;
    }
    return made;
}

bool appendUtf8(std::string& text, const char16_t* units, std::size_t count) {
    const std::size_t start = text.size();
    text.resize(start + count);
    char* out = text.data() + start;
    std::size_t plain = 0;
    while (plain < count && units[plain] < 0x80) {
        out[plain] = static_cast<char>(units[plain]);
        ++plain;
    }
    if (plain == count) {
        return true;
    }
    text.resize(start + plain);
    const auto rest = unicode::utf8({units + plain, count - plain});
    if (rest) {
        text += *rest;
    }
    return rest.has_value();
}

}  // namespace kap::ado::odbc
