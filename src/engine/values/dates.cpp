#include "engine/values/dates.hpp"

#include <algorithm>
#include <cmath>

#include <kaputil/automation/string.hpp>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"
#include "automation/locale_tables.hpp"

namespace kap::engine {

namespace {

constexpr std::int64_t kMinutesPerDay = 1440;
constexpr int kFirstDateTimeYear = 1753;

double firstDay(int year) {
    return convert::serialDay({year, 1, 1});
}

// The nearest tick; the second's last half one is the whole second.
int ticksOfFraction(int fraction) {
    constexpr int kTenths = 100000;
    return (fraction * 3 + kTenths / 2) / kTenths;
}

// Whatever the user's own is: scripts name the language.
const Locale& localeOf(bool italian) {
    return *std::ranges::find(knownLocales(), italian ? "it-IT" : "en-US", &Locale::name);
}

}  // namespace

std::int64_t ticksOf(double stored) {
    return std::llround(stored * static_cast<double>(kTicksPerDay));
}

// One correctly rounded division: every way to the same instant gives the same double.
double fromTicks(std::int64_t ticks) {
    return static_cast<double>(ticks) / static_cast<double>(kTicksPerDay);
}

DateParts partsOf(double stored) {
    const std::int64_t ticks = ticksOf(stored);
    std::int64_t days = ticks / kTicksPerDay;
    std::int64_t rest = ticks % kTicksPerDay;
    if (rest < 0) {
        rest += kTicksPerDay;
        --days;
    }
    const convert::CivilDate date = convert::civilDate(static_cast<int>(days));
    const std::int64_t seconds = rest / kTicksPerSecond;
    return {date.year,
            date.month,
            date.day,
            static_cast<int>(seconds / 3600),
            static_cast<int>(seconds / 60 % 60),
            static_cast<int>(seconds % 60),
            millisecondsOf(static_cast<int>(rest % kTicksPerSecond)) * kFractionsPerMillisecond};
}

std::optional<double> instantOf(const DateParts& parts) {
    const convert::CivilDate date{parts.year, parts.month, parts.day};
    const bool timeIsValid = parts.hour >= 0 && parts.hour < 24 && parts.minute >= 0 &&
                             parts.minute < 60 && parts.second >= 0 && parts.second < 60;
    if (!convert::isValid(date) || !timeIsValid) return std::nullopt;
    const std::int64_t seconds = (parts.hour * 60 + parts.minute) * 60 + parts.second;
    return fromTicks(convert::serialDay(date) * kTicksPerDay + seconds * kTicksPerSecond +
                     ticksOfFraction(parts.fraction));
}

double roundedTo(double stored, tsql::SqlType type) {
    if (type == tsql::SqlType::Date) return std::floor(fromTicks(ticksOf(stored)));
    if (type == tsql::SqlType::SmallDateTime) {
        // Up to 29.998 seconds belong to the minute before, 29.999 and more to the next.
        const auto minutes =
            std::llround(fromTicks(ticksOf(stored)) * static_cast<double>(kMinutesPerDay));
        return static_cast<double>(minutes) / static_cast<double>(kMinutesPerDay);
    }
    return fromTicks(ticksOf(stored));
}

bool inRange(double stored, tsql::SqlType type) {
    static const double kEnd = firstDay(convert::kLastYear) + 365;
    static const double kFirstDateTime = firstDay(kFirstDateTimeYear);
    static const double kFirstDate = firstDay(convert::kFirstYear);
    static const double kSmallEnd = convert::serialDay({2079, 6, 7});
    if (type == tsql::SqlType::SmallDateTime)
        return stored >= kServerEpochDay && stored < kSmallEnd;
    return stored >= (type == tsql::SqlType::Date ? kFirstDate : kFirstDateTime) && stored < kEnd;
}

int millisecondsOf(int tick) {
    return (tick * 10 + 1) / 3;
}

double localInstant() {
    return roundedTo(convert::linearDays(localNow()), tsql::SqlType::DateTime);
}

std::string monthName(int month, bool italian) {
    return String(localeOf(italian).months.at(static_cast<std::size_t>(month - 1))).utf8();
}

std::string dayName(int dayOfWeek, bool italian) {
    return String(localeOf(italian).weekdays.at(static_cast<std::size_t>(dayOfWeek))).utf8();
}

}  // namespace kap::engine
