#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tsql/type_spec.hpp"

// Dates in storage form: days from 30 December 1899 as a double, on an unbroken line.
namespace kap::engine {

// The instant counted in the server's steps of 1/300 of a second.
inline constexpr std::int64_t kTicksPerSecond = 300;
inline constexpr std::int64_t kTicksPerDay = 86400 * kTicksPerSecond;

// The stored day of 1 January 1900, from which the server counts numbers given as dates.
inline constexpr int kServerEpochDay = 2;

// A date and time in parts; `tick` is the fraction of the second in steps of 1/300.
struct DateParts {
    int year = 1900;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int tick = 0;
};

[[nodiscard]] std::int64_t ticksOf(double stored);
[[nodiscard]] double fromTicks(std::int64_t ticks);

[[nodiscard]] DateParts partsOf(double stored);
// The instant of parts that form a valid date; nullopt otherwise.
[[nodiscard]] std::optional<double> instantOf(const DateParts& parts);

// The value rounded as the type does: to the day, the minute, or 1/300 of a second. Equal instants
// give equal doubles.
[[nodiscard]] double roundedTo(double stored, tsql::SqlType type);

// Whether the type can hold the instant: datetime from 1753, smalldatetime from 1900 to 6 June
// 2079, date from year 100, all others to 9999.
[[nodiscard]] bool inRange(double stored, tsql::SqlType type);

// The milliseconds that a fraction of ticks is shown as: .000, .003, .007.
[[nodiscard]] int millisecondsOf(int tick);

// The instant of the host's clock in the local zone, as datetime.
[[nodiscard]] double localInstant();

inline constexpr int kDefaultDateStyle = 0;

// Refuses the styles of the Hijri calendar by name, 130 and 131.
void refuseOtherCalendars(int style);

// Reads a text as the server does in its default language (month before day). `style` 103, 104,
// 105 and their kin put the day first. Errors of the server: 241 for what is no date, 242 for a
// date that does not exist.
[[nodiscard]] double parseDate(std::string_view text, tsql::SqlType target, int style);

// The text of a date in one of the styles of CONVERT; nullopt for a style that is not known.
[[nodiscard]] std::optional<std::string> dateText(double stored, tsql::SqlType type, int style);

// Month name from 1, in English or Italian.
[[nodiscard]] std::string monthName(int month, bool italian = false);
// Day name; 0 is Sunday.
[[nodiscard]] std::string dayName(int dayOfWeek, bool italian = false);

}  // namespace kap::engine
