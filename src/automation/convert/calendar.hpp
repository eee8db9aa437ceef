#pragma once

#include <optional>

#include <kaputil/automation/variant.hpp>

// The proleptic Gregorian calendar behind the automation date: serial days from 30 December 1899.
namespace kap::convert {

struct CivilDate {
    int year = 1899;
    int month = 12;
    int day = 30;
    friend bool operator==(CivilDate, CivilDate) = default;
};

struct TimeOfDay {
    int hour = 0;
    int minute = 0;
    int second = 0;
    friend bool operator==(TimeOfDay, TimeOfDay) = default;
};

struct CivilTime {
    CivilDate date;
    TimeOfDay time;
};

// The range of automation dates: 1 January 100 to 31 December 9999.
inline constexpr int kFirstYear = 100;
inline constexpr int kLastYear = 9999;
inline constexpr int kFirstSerial = -657434;
inline constexpr int kLastSerial = 2958465;

[[nodiscard]] int daysInMonth(int year, int month);
[[nodiscard]] bool isValid(CivilDate date);
[[nodiscard]] int serialDay(CivilDate date);
[[nodiscard]] CivilDate civilDate(int serialDay);
[[nodiscard]] int weekdayOf(CivilDate date);  // 0 is Sunday

// The date and time as one automation date, the fraction counted away from the day's midnight also
// before 30 December 1899.
[[nodiscard]] Date makeDate(CivilDate date, TimeOfDay time);

// Whether the calendar has such a day, whatever its time.
[[nodiscard]] bool isInRange(Date date);

// A date's day, and its time as so many of the equal units that make up a day.
struct DayAndTime {
    int serialDay = 0;
    int units = 0;
};

// The time is rounded to the nearest unit, which may be the midnight of the next day: then even one
// behind the last day of the calendar. nullopt when the date is out of range.
[[nodiscard]] std::optional<DayAndTime> split(Date date, int unitsPerDay);

// The parts of a date, the time rounded to the second; nullopt when that is out of range.
[[nodiscard]] std::optional<CivilTime> takeApart(Date date);

// The same instant on an unbroken line of days and back: before 30 December 1899 the automation
// date counts its fraction away from zero, which is no order to compute in.
[[nodiscard]] double linearDays(Date date);
[[nodiscard]] Date fromLinearDays(double days);

}  // namespace kap::convert
