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

// A date and time in parts; `fraction` is that of the second, in units of 100 nanoseconds.
struct DateParts {
    int year = 1900;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int fraction = 0;
};

[[nodiscard]] std::int64_t ticksOf(double stored);
[[nodiscard]] double fromTicks(std::int64_t ticks);

inline constexpr int kFractionsPerMillisecond = 10000;
inline constexpr int kFractionsPerSecond = 1000 * kFractionsPerMillisecond;

// The milliseconds that a fraction of ticks is shown as: .000, .003, .007.
[[nodiscard]] int millisecondsOf(int tick);

// The fraction of the second in the milliseconds that a datetime is shown with: .000, .003, .007.
[[nodiscard]] DateParts partsOf(double stored);
// The instant of parts that form a valid date, to 1/300 of a second; nullopt otherwise.
[[nodiscard]] std::optional<double> instantOf(const DateParts& parts);

// The value rounded as the type does: to the day, the minute, or 1/300 of a second. Equal instants
// give equal doubles.
[[nodiscard]] double roundedTo(double stored, tsql::SqlType type);

// Whether the type can hold the instant: datetime from 1753, smalldatetime from 1900 to 6 June
// 2079, date from year 100, all others to 9999.
[[nodiscard]] bool inRange(double stored, tsql::SqlType type);

// The instant of the host's clock in the local zone, as datetime.
[[nodiscard]] double localInstant();

inline constexpr int kDefaultDateStyle = 0;

// Reads a text as the server does in its default language: month before day; `style` 103 and kin
// put the day first, 130 and 131 are of the Hijri calendar. Errors: 241 for what is no date, 242
// for a date that does not exist. The target is date, datetime or smalldatetime.
[[nodiscard]] double parseDate(std::string_view text, tsql::SqlType target, int style);

// What a text says as time, datetime2 or datetimeoffset, by the same rules; error 241 for what it
// does not. The day is 1 January 1900 when it names none.
struct DateReading {
    DateParts parts;
    std::optional<int> offset;  // minutes ahead of universal time
};
[[nodiscard]] DateReading readDate(std::string_view text, tsql::SqlType target, int style);

// The text of a date in one of the styles of CONVERT; nullopt for a style that is not known.
[[nodiscard]] std::optional<std::string> dateText(double stored, tsql::SqlType type, int style);

// What the styles of CONVERT make of parts whose seconds have so many decimals. `offset` is written
// behind the time, where there is one.
struct FineDate {
    DateParts parts;
    int decimals = 0;
    std::optional<int> offset;
};
[[nodiscard]] std::optional<std::string> fineDateText(const FineDate& date, tsql::SqlType type,
                                                      int style);

// "+02:00" for 120 minutes ahead of universal time.
[[nodiscard]] std::string offsetText(int minutes);

// Month name from 1, in English or Italian.
[[nodiscard]] std::string monthName(int month, bool italian = false);
// Day name; 0 is Sunday.
[[nodiscard]] std::string dayName(int dayOfWeek, bool italian = false);

}  // namespace kap::engine
