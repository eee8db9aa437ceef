#include <chrono>
#include <cmath>

#include <kaputil/automation/plain_text.hpp>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/date_settings.hpp"
#include "engine/values/fine_dates.hpp"
#include "engine/values/time_zones.hpp"
#include "tsql/server_error.hpp"

// What the functions of dates do with time, datetime2 and datetimeoffset.
namespace kap::engine {

namespace {

using tsql::SqlType;
using tsql::TypeSpec;

constexpr TypeSpec kUniversalType{SqlType::DateTimeOffset, 0, 0, 7};

Instant argumentInstant(const Arguments& arguments, int index) {
    const TypeSpec type = arguments.type(index + 1);
    return instantFrom(arguments.value(index, type), type);
}

Instant universalClock(std::chrono::system_clock::time_point now) {
    constexpr std::int64_t kUnixEpoch = std::int64_t{719162} * kFractionsPerDay;
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kFractionsPerSecond>>;
    return {kUnixEpoch + std::chrono::floor<Ticks>(now.time_since_epoch()).count(), 0};
}

// kap_sysnow(type, universal): the host's clock, with its offset where the type has one. One
// instant for the whole statement, since SQLite computes it once.
Value systemNow(const Arguments& arguments) {
    const auto now = std::chrono::system_clock::now();
    const Instant universal = universalClock(now);
    if (arguments.integer(1) != 0) return fitInstant(universal, kUniversalType, arguments.type(0));
    constexpr double kMinutesOfDay = 1440;
    constexpr int kStoredDays = 693593;
    const double local = convert::linearDays(localTime(now)) + kStoredDays;
    const double days =
        static_cast<double>(universal.ticks) / static_cast<double>(kFractionsPerDay);
    const auto offset = static_cast<int>(std::lround((local - days) * kMinutesOfDay));
    return fitInstant(universal.onClock(offset), kUniversalType, arguments.type(0));
}

// kap_fine_part(part, value, type)
Value finePart(const Arguments& arguments) {
    return std::int64_t{
        partOf(static_cast<DatePart>(arguments.integer(0)), argumentInstant(arguments, 1))};
}

// kap_fine_name(part, value, type)
Value fineName(const Arguments& arguments) {
    const auto part = static_cast<DatePart>(arguments.integer(0));
    const int value = partOf(part, argumentInstant(arguments, 1));
    return part == DatePart::TimeZone ? offsetText(value) : nameOfPart(part, value);
}

// kap_fine_dateadd(part, count, value, type). A time goes round at midnight.
Value fineDateAdd(const Arguments& arguments) {
    const auto part = static_cast<DatePart>(arguments.integer(0));
    const TypeSpec type = arguments.type(3);
    const bool time = type.type == SqlType::Time;
    const std::int64_t count = time ? withinDay(part, arguments.integer(1)) : arguments.integer(1);
    const auto moved = movedBy(part, count, argumentInstant(arguments, 2));
    if (!moved || !isOnCalendar(*moved)) {
        throw tsql::ServerError(tsql::Message::DateOverflow, {tsql::typeName(type.type)});
    }
    return fitInstant(*moved, type, type);
}

std::int64_t boundaries(const Arguments& arguments) {
    const auto count =
        boundariesBetween(static_cast<DatePart>(arguments.integer(0)),
                          argumentInstant(arguments, 1), argumentInstant(arguments, 3));
    if (!count) throw tsql::ServerError(tsql::Message::DateDifferenceOverflow);
    return *count;
}

// kap_fine_datediff(part, from, type, to, type)
Value fineDateDiff(const Arguments& arguments) {
    const std::int64_t count = boundaries(arguments);
    if (count < -2147483648LL || count > 2147483647LL) {
        throw tsql::ServerError(tsql::Message::DateDifferenceOverflow);
    }
    return count;
}

// kap_datediff_big(part, from, type, to, type)
Value dateDiffBig(const Arguments& arguments) {
    return boundaries(arguments);
}

// The offset that a number of minutes or a text names.
int zoneOffset(const Arguments& arguments, int index, const char* function) {
    const bool text = arguments.kind(index) == SQLITE_TEXT;
    const auto minutes = text ? readOffset(arguments.text(index))
                         : isOffset(arguments.integer(index))
                             ? std::optional<int>(arguments.small(index))
                             : std::nullopt;
    if (!minutes) throw tsql::ServerError(tsql::Message::WrongZone, {function});
    return *minutes;
}

// kap_switchoffset(value, type, zone)
Value switchOffset(const Arguments& arguments) {
    const TypeSpec type = arguments.type(1);
    return fitInstant(
        argumentInstant(arguments, 0).onClock(zoneOffset(arguments, 2, "switchoffset")), type,
        type);
}

// kap_todatetimeoffset(value, type, zone, result)
Value toDateTimeOffset(const Arguments& arguments) {
    Instant instant = argumentInstant(arguments, 0);
    instant.offset = zoneOffset(arguments, 2, "todatetimeoffset");
    return fitInstant(instant, arguments.type(1), arguments.type(3));
}

// kap_at_time_zone(value, type, zone, result)
Value atTimeZone(const Arguments& arguments) {
    const TypeSpec type = arguments.type(1);
    const Instant instant = argumentInstant(arguments, 0);
    const std::string_view zone = arguments.text(2);
    const auto found =
        type.type == SqlType::DateTimeOffset ? inZone(zone, instant) : fromZone(zone, instant);
    if (!found) throw tsql::ServerError(tsql::Message::UnknownZone, {std::string(zone)});
    return fitInstant(*found, type, arguments.type(3));
}

// The fraction of the second that so many units of a type's last decimal are; -1 for too many.
int fractionOf(int units, int decimals) {
    constexpr int kMostDecimals = 7;
    int most = 1;
    for (int i = 0; i < decimals; ++i)
        most *= 10;
    if (units < 0 || units >= most) return -1;
    for (int i = decimals; i < kMostDecimals; ++i)
        units *= 10;
    return units;
}

// The minutes of an offset in hours and minutes, which must have the same sign.
std::optional<int> offsetOf(int hours, int minutes) {
    constexpr int kMinutesOfHour = 60;
    constexpr int kMostHours = 14;
    const bool apart = (hours < 0 && minutes > 0) || (hours > 0 && minutes < 0);
    const bool tooMany = std::abs(hours) > kMostHours || std::abs(minutes) >= kMinutesOfHour;
    if (apart || tooMany || !isOffset(hours * kMinutesOfHour + minutes)) return std::nullopt;
    return hours * kMinutesOfHour + minutes;
}

// kap_fine_fromparts(type, parts...): hour, minute, second and fraction, before them year, month
// and day, and behind them hours and minutes of the offset, as the type has them.
Value fineFromParts(const Arguments& arguments) {
    const TypeSpec type = arguments.type(0);
    const bool day = type.type != SqlType::Time;
    const int first = day ? 4 : 1;
    DateParts parts;
    if (day) {
        parts.year = arguments.small(1);
        parts.month = arguments.small(2);
        parts.day = arguments.small(3);
    }
    parts.hour = arguments.small(first);
    parts.minute = arguments.small(first + 1);
    parts.second = arguments.small(first + 2);
    parts.fraction = fractionOf(arguments.small(first + 3), type.scale);
    const auto offset = type.type == SqlType::DateTimeOffset
                            ? offsetOf(arguments.small(first + 4), arguments.small(first + 5))
                            : std::optional<int>(0);
    const auto instant = offset && parts.fraction >= 0 ? instantOf(parts, *offset) : std::nullopt;
    if (!instant || !isOnCalendar(*instant)) {
        throw tsql::ServerError(tsql::Message::WrongDateParts, {tsql::typeName(type.type)});
    }
    return fitInstant(*instant, type, type);
}

}  // namespace

void registerFineDateFunctions(Registrar& registrar) {
    registrar.scalar("kap_sysnow", 2, systemNow);
    registrar.scalar("kap_fine_part", 3, finePart);
    registrar.scalar("kap_fine_name", 3, fineName);
    registrar.scalar("kap_fine_dateadd", 4, fineDateAdd);
    registrar.scalar("kap_fine_datediff", 5, fineDateDiff);
    registrar.scalar("kap_datediff_big", 5, dateDiffBig);
    registrar.scalar("kap_switchoffset", 3, switchOffset);
    registrar.scalar("kap_todatetimeoffset", 4, toDateTimeOffset);
    registrar.scalar("kap_at_time_zone", 4, atTimeZone);
    registrar.scalar("kap_fine_fromparts", -1, fineFromParts);
}

}  // namespace kap::engine
