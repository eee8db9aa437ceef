#include <algorithm>
#include <array>
#include <chrono>

#include "automation/convert/calendar.hpp"
#include "base/ascii.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/date_part.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

// kap_now(): one instant for the whole statement, since SQLite computes it once.
Value now(const Arguments& /*arguments*/) {
    return localInstant();
}

Value universalNow(const Arguments& /*arguments*/) {
    using Days = std::chrono::duration<double, std::ratio<86400>>;
    constexpr double kUnixEpochDay = 25569;
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return roundedTo(kUnixEpochDay + Days(since).count(), tsql::SqlType::DateTime);
}

// kap_eomonth(date, months)
Value endOfMonth(const Arguments& arguments) {
    const auto moved = movedBy(DatePart::Month, arguments.integer(1), arguments.real(0));
    if (!moved) {
        throw tsql::ServerError(tsql::Message::DateOverflow, {"date"});
    }
    const DateParts parts = partsOf(*moved);
    const int last = convert::daysInMonth(parts.year, parts.month);
    return instantOf({parts.year, parts.month, last, 0, 0, 0, 0}).value();
}

// kap_fromparts(type, year, month, day, hour, minute, second, milliseconds), as many of them as the
// type has.
Value fromParts(const Arguments& arguments) {
    constexpr int kThousand = 1000;
    const tsql::SqlType type = arguments.type(0).type;
    const auto part = [&](int index) {
        return index < arguments.count() ? arguments.small(index) : 0;
    };
    const int milliseconds = part(7);
    const bool hasFraction = milliseconds >= 0 && milliseconds < kThousand;
    // A fraction that rounds up to the whole second carries over through the instant.
    const auto instant = instantOf({part(1), part(2), part(3), part(4), part(5), part(6),
                                    hasFraction ? milliseconds * kFractionsPerMillisecond : 0});
    const bool valid = hasFraction && instant;
    if (!valid || !inRange(*instant, type)) {
        throw tsql::ServerError(tsql::Message::WrongDateParts, {tsql::typeName(type)});
    }
    return roundedTo(*instant, type);
}

Value datePart(const Arguments& arguments) {
    return std::int64_t{partOf(static_cast<DatePart>(arguments.integer(0)), arguments.real(1))};
}

Value dateName(const Arguments& arguments) {
    const auto part = static_cast<DatePart>(arguments.integer(0));
    return nameOfPart(part, partOf(part, arguments.real(1)));
}

// kap_dateadd(part, count, date, type)
Value dateAdd(const Arguments& arguments) {
    const tsql::TypeSpec type = arguments.type(3);
    const auto moved = movedBy(static_cast<DatePart>(arguments.integer(0)), arguments.integer(1),
                               arguments.real(2));
    const double result = moved ? roundedTo(*moved, type.type) : 0;
    if (!moved || !inRange(result, type.type)) {
        throw tsql::ServerError(tsql::Message::DateOverflow, {tsql::typeName(type.type)});
    }
    return result;
}

// kap_datediff(part, from, to)
Value dateDiff(const Arguments& arguments) {
    const std::int64_t count = boundariesBetween(static_cast<DatePart>(arguments.integer(0)),
                                                 arguments.real(1), arguments.real(2));
    if (count < -2147483648LL || count > 2147483647LL) {
        throw tsql::ServerError(tsql::Message::DateDifferenceOverflow);
    }
    return count;
}

Value instantResult(std::int64_t ticks, const tsql::TypeSpec& type) {
    const double result = roundedTo(fromTicks(ticks), type.type);
    if (!inRange(result, type.type)) overflow("expression", tsql::typeName(type.type));
    return result;
}

// kap_date_sum(left, right, type): the days since 1 January 1900 of both, added.
Value dateSum(const Arguments& arguments) {
    return instantResult(
        ticksOf(arguments.real(0)) + ticksOf(arguments.real(1)) - kServerEpochDay * kTicksPerDay,
        arguments.type(2));
}

Value dateDifference(const Arguments& arguments) {
    return instantResult(
        ticksOf(arguments.real(0)) - ticksOf(arguments.real(1)) + kServerEpochDay * kTicksPerDay,
        arguments.type(2));
}

}  // namespace

void registerDateFunctions(Registrar& registrar) {
    registrar.scalar("kap_now", 0, now);
    registrar.scalar("kap_utcnow", 0, universalNow);
    registrar.scalar("kap_eomonth", 2, endOfMonth);
    registrar.scalar("kap_fromparts", -1, fromParts);
    registrar.scalar("kap_datepart", 2, datePart);
    registrar.scalar("kap_datename", 2, dateName);
    registrar.scalar("kap_dateadd", 4, dateAdd);
    registrar.scalar("kap_datediff", 3, dateDiff);
    registrar.scalar("kap_date_sum", 3, dateSum);
    registrar.scalar("kap_date_difference", 3, dateDifference);
}

}  // namespace kap::engine
