#include "engine/values/fine_dates.hpp"

#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "engine/values/convert_families.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr std::int64_t kTicksInMinute = std::int64_t{60} * kFractionsPerSecond;
constexpr int kMostOffset = 14 * 60;
// From 1 January of year 1 to 30 December 1899.
constexpr std::int64_t kStoredEpoch = 693593;
constexpr std::int64_t kDaysOfYears = 3652059;  // 1 to 9999
constexpr std::int64_t kEndOfYears = kDaysOfYears * kFractionsPerDay;
constexpr int kAllDecimals = 7;
constexpr int kUniversalStyle = 127;

std::int64_t floored(std::int64_t value, std::int64_t divisor) {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

std::int64_t timeOfDay(std::int64_t ticks) {
    return ticks - floored(ticks, kFractionsPerDay) * kFractionsPerDay;
}

bool isInYears(std::int64_t ticks) {
    return ticks >= 0 && ticks < kEndOfYears;
}

Instant onDay(std::int64_t storedDay, std::int64_t time) {
    return {(storedDay + kStoredEpoch) * kFractionsPerDay + time, 0};
}

std::int64_t unitOf(int decimals) {
    std::int64_t unit = 1;
    for (int i = decimals; i < kAllDecimals; ++i)
        unit *= 10;
    return unit;
}

std::int64_t roundedToDecimals(std::int64_t ticks, int decimals) {
    const std::int64_t unit = unitOf(decimals);
    return floored(ticks + unit / 2, unit) * unit;
}

// What would be rounded beyond the last day is cut.
std::int64_t roundedWithinYears(std::int64_t ticks, int decimals) {
    const std::int64_t rounded = roundedToDecimals(ticks, decimals);
    return rounded < kEndOfYears ? rounded : kEndOfYears - unitOf(decimals);
}

[[noreturn]] void beyondRange(const TypeSpec& from, const TypeSpec& to) {
    throw tsql::ServerError(tsql::Message::DateOutOfRange,
                            {tsql::typeName(from.type), tsql::typeName(to.type)});
}

// "2021-02-03T04:05:06.1234567Z+02:00": universal time first, by which it is compared, and then
// the clock that shows it.
std::string storedOffset(const Instant& instant) {
    const FineDate universal{partsOf(Instant{instant.universal(), 0}), kAllDecimals, 0};
    return *fineDateText(universal, SqlType::DateTimeOffset, kUniversalStyle) +
           offsetText(instant.offset);
}

int numberIn(std::string_view text, std::size_t at, std::size_t count) {
    return plain::readInt(text.substr(at, count)).value_or(0);
}

Instant readStoredOffset(std::string_view text) {
    constexpr std::size_t kLength = 34;
    constexpr std::size_t kSign = 28;
    if (text.size() != kLength) throw tsql::ServerError(tsql::Message::WrongDateText);
    const DateParts parts{numberIn(text, 0, 4),  numberIn(text, 5, 2),  numberIn(text, 8, 2),
                          numberIn(text, 11, 2), numberIn(text, 14, 2), numberIn(text, 17, 2),
                          numberIn(text, 20, 7)};
    const auto universal = instantOf(parts, 0);
    if (!universal) throw tsql::ServerError(tsql::Message::WrongDateText);
    const int minutes = numberIn(text, kSign + 1, 2) * 60 + numberIn(text, kSign + 4, 2);
    return universal->onClock(text[kSign] == '-' ? -minutes : minutes);
}

std::optional<Instant> movedByMonthsOf(std::int64_t months, const Instant& instant) {
    constexpr std::int64_t kMostMonths = 120000;
    if (months < -kMostMonths || months > kMostMonths) return std::nullopt;
    DateParts parts = partsOf(instant);
    const int month = parts.year * 12 + parts.month - 1 + static_cast<int>(months);
    parts.year = month / 12;
    parts.month = month % 12 + 1;
    if (month < 12 || parts.year > convert::kLastYear) return std::nullopt;
    parts.day = std::min(parts.day, convert::daysInMonth(parts.year, parts.month));
    return instantOf(parts, instant.offset);
}

std::optional<Instant> movedByUnits(std::int64_t count, std::int64_t each, const Instant& instant) {
    Instant result = instant;
    std::int64_t change = 0;
    if (__builtin_mul_overflow(count, each, &change) ||
        __builtin_add_overflow(instant.ticks, change, &result.ticks) || !isInYears(result.ticks)) {
        return std::nullopt;
    }
    return result;
}

std::int64_t monthNumberOf(const Instant& instant) {
    const DateParts parts = partsOf(instant);
    return std::int64_t{parts.year} * 12 + parts.month - 1;
}

// The ticks that make one of a part between the day and the microsecond; 0 for the others.
std::int64_t ticksOfPart(DatePart part) {
    switch (part) {
        case DatePart::DayOfYear:
        case DatePart::WeekDay:
        case DatePart::Day:
            return kFractionsPerDay;
        case DatePart::Hour:
            return 60 * kTicksInMinute;
        case DatePart::Minute:
            return kTicksInMinute;
        case DatePart::Second:
            return kFractionsPerSecond;
        case DatePart::Millisecond:
            return kFractionsPerMillisecond;
        case DatePart::Microsecond:
            return kFractionsPerMillisecond / 1000;
        default:
            return 0;
    }
}

}  // namespace

std::int64_t Instant::universal() const {
    return ticks - offset * kTicksInMinute;
}

Instant Instant::onClock(int minutes) const {
    return {universal() + minutes * kTicksInMinute, minutes};
}

bool isOffset(std::int64_t minutes) {
    return minutes >= -kMostOffset && minutes <= kMostOffset;
}

DateParts partsOf(const Instant& instant) {
    const convert::CivilDate date = convert::civilDate(dayOf(instant));
    const std::int64_t time = timeOfDay(instant.ticks);
    const auto seconds = static_cast<int>(time / kFractionsPerSecond);
    return {date.year,
            date.month,
            date.day,
            seconds / 3600,
            seconds / 60 % 60,
            seconds % 60,
            static_cast<int>(time % kFractionsPerSecond)};
}

std::optional<Instant> instantOf(const DateParts& parts, int offset) {
    const bool isDay = parts.year >= 1 && parts.year <= convert::kLastYear && parts.month >= 1 &&
                       parts.month <= 12 && parts.day >= 1 &&
                       parts.day <= convert::daysInMonth(parts.year, parts.month);
    const bool isTime = parts.hour >= 0 && parts.hour < 24 && parts.minute >= 0 &&
                        parts.minute < 60 && parts.second >= 0 && parts.second < 60;
    if (!isDay || !isTime) return std::nullopt;
    const std::int64_t seconds = (parts.hour * 60 + parts.minute) * 60 + parts.second;
    Instant result = onDay(convert::serialDay({parts.year, parts.month, parts.day}),
                           seconds * kFractionsPerSecond + parts.fraction);
    result.offset = offset;
    return result;
}

int dayOf(const Instant& instant) {
    return static_cast<int>(floored(instant.ticks, kFractionsPerDay) - kStoredEpoch);
}

Instant instantFrom(const Value& value, const TypeSpec& type) {
    switch (type.type) {
        case SqlType::Time:
            return onDay(kServerEpochDay, std::get<std::int64_t>(value));
        case SqlType::DateTime2:
            return {std::get<std::int64_t>(value), 0};
        case SqlType::DateTimeOffset:
            return readStoredOffset(std::get<std::string>(value));
        default:
            break;
    }
    const std::int64_t ticks = ticksOf(std::get<double>(value));
    const std::int64_t day = floored(ticks, kTicksPerDay);
    const std::int64_t rest = ticks - day * kTicksPerDay;
    const int milliseconds = millisecondsOf(static_cast<int>(rest % kTicksPerSecond));
    return onDay(day, rest / kTicksPerSecond * kFractionsPerSecond +
                          std::int64_t{milliseconds} * kFractionsPerMillisecond);
}

Value fitInstant(const Instant& instant, const TypeSpec& from, const TypeSpec& to) {
    switch (to.type) {
        case SqlType::Time:
            return timeOfDay(roundedToDecimals(timeOfDay(instant.ticks), to.scale));
        case SqlType::DateTime2:
            return roundedWithinYears(instant.ticks, to.scale);
        case SqlType::DateTimeOffset: {
            const Instant rounded{roundedWithinYears(instant.ticks, to.scale), instant.offset};
            if (!isInYears(rounded.universal())) beyondRange(from, to);
            return storedOffset(rounded);
        }
        case SqlType::Date:
            return fitDate(static_cast<double>(dayOf(instant)), from, to);
        default:
            break;
    }
    const std::int64_t time = timeOfDay(instant.ticks);
    // The nearest of the second's three hundred steps, which may be the next one's first.
    const std::int64_t step =
        (time % kFractionsPerSecond * kTicksPerSecond + kFractionsPerSecond / 2) /
        kFractionsPerSecond;
    const std::int64_t steps = time / kFractionsPerSecond * kTicksPerSecond + step;
    return fitDate(fromTicks(dayOf(instant) * kTicksPerDay + steps), from, to);
}

Value fineDateFromText(const std::string& text, const TypeSpec& to, int style) {
    const DateReading read = readDate(text, to.type, style);
    const auto instant = instantOf(read.parts, read.offset.value_or(0));
    const bool hasOffset = to.type == SqlType::DateTimeOffset;
    if (!instant || (hasOffset && !isInYears(instant->universal()))) {
        throw tsql::ServerError(tsql::Message::WrongDateText);
    }
    return fitInstant(*instant, {SqlType::VarChar}, to);
}

std::optional<std::string> fineDateToText(const Value& value, const TypeSpec& type, int style) {
    Instant instant = instantFrom(value, type);
    const bool hasOffset = type.type == SqlType::DateTimeOffset;
    if (hasOffset && style == kUniversalStyle) instant = instant.onClock(0);
    const auto offset = hasOffset ? std::optional<int>(instant.offset) : std::nullopt;
    return fineDateText({partsOf(instant), type.scale, offset}, type.type, style);
}

int partOf(DatePart part, const Instant& instant) {
    if (part == DatePart::TimeZone) return instant.offset;
    return partOf(part, partsOf(instant), dayOf(instant));
}

bool isOnCalendar(const Instant& instant) {
    return isInYears(instant.ticks) && isInYears(instant.universal());
}

std::int64_t withinDay(DatePart part, std::int64_t count) {
    constexpr std::int64_t kNanosecondsPerDay = kFractionsPerDay * 100;
    if (part == DatePart::Nanosecond) return count % kNanosecondsPerDay;
    const std::int64_t each = ticksOfPart(part);
    return each == 0 ? count : count % (kFractionsPerDay / each);
}

std::optional<Instant> movedBy(DatePart part, std::int64_t count, const Instant& instant) {
    constexpr std::int64_t kMost = 1000000000000000;
    constexpr std::int64_t kNanosecondsPerTick = 100;
    const std::int64_t bounded = std::clamp(count, -kMost, kMost);
    switch (part) {
        case DatePart::Year:
            return movedByMonthsOf(bounded * 12, instant);
        case DatePart::Quarter:
            return movedByMonthsOf(bounded * 3, instant);
        case DatePart::Month:
            return movedByMonthsOf(bounded, instant);
        case DatePart::Week:
            return movedByUnits(bounded, 7 * kFractionsPerDay, instant);
        case DatePart::Nanosecond: {
            const std::int64_t half =
                count >= 0 ? kNanosecondsPerTick / 2 : -kNanosecondsPerTick / 2;
            return movedByUnits((bounded + half) / kNanosecondsPerTick, 1, instant);
        }
        default:
            break;
    }
    const std::int64_t each = ticksOfPart(part);
    return each == 0 ? std::nullopt : movedByUnits(count, each, instant);
}

std::optional<std::int64_t> boundariesBetween(DatePart part, const Instant& from,
                                              const Instant& to) {
    const Instant first{from.universal(), 0};
    const Instant last{to.universal(), 0};
    constexpr int kMonthsPerQuarter = 3;
    constexpr int kDaysInWeek = 7;
    switch (part) {
        case DatePart::Year:
            return partsOf(last).year - partsOf(first).year;
        case DatePart::Quarter:
            return monthNumberOf(last) / kMonthsPerQuarter -
                   monthNumberOf(first) / kMonthsPerQuarter;
        case DatePart::Month:
            return monthNumberOf(last) - monthNumberOf(first);
        case DatePart::Week:
            // The stored day 1 was a Sunday.
            return floored(dayOf(last) - 1, kDaysInWeek) - floored(dayOf(first) - 1, kDaysInWeek);
        case DatePart::Nanosecond: {
            std::int64_t nanoseconds = 0;
            if (__builtin_mul_overflow(last.ticks - first.ticks, std::int64_t{100}, &nanoseconds)) {
                return std::nullopt;
            }
            return nanoseconds;
        }
        default:
            break;
    }
    const std::int64_t each = ticksOfPart(part);
    return each == 0 ? 0 : floored(last.ticks, each) - floored(first.ticks, each);
}

}  // namespace kap::engine
