#include "automation/convert/calendar.hpp"

#include <chrono>
#include <cmath>

namespace kap::convert {
namespace {

using std::chrono::sys_days;

constexpr sys_days kOrigin = std::chrono::year{1899} / 12 / 30;
constexpr int kSecondsPerDay = 86400;

std::chrono::year_month_day toChrono(CivilDate date) {
    return std::chrono::year{date.year} / static_cast<int>(date.month) / static_cast<int>(date.day);
}

}  // namespace

int daysInMonth(int year, int month) {
    const auto last = std::chrono::year{year} / month / std::chrono::last;
    return static_cast<int>(static_cast<unsigned>(last.day()));
}

bool isValid(CivilDate date) {
    return date.year >= kFirstYear && date.year <= kLastYear && date.month >= 1 &&
           date.month <= 12 && date.day >= 1 && date.day <= daysInMonth(date.year, date.month);
}

int serialDay(CivilDate date) {
    return static_cast<int>((sys_days(toChrono(date)) - kOrigin).count());
}

CivilDate civilDate(int serial) {
    const std::chrono::year_month_day date(kOrigin + std::chrono::days(serial));
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

int weekdayOf(CivilDate date) {
    return static_cast<int>(std::chrono::weekday(sys_days(toChrono(date))).c_encoding());
}

Date makeDate(CivilDate date, TimeOfDay time) {
    const int seconds = (time.hour * 60 + time.minute) * 60 + time.second;
    return fromLinearDays(serialDay(date) + static_cast<double>(seconds) / kSecondsPerDay);
}

bool isInRange(Date date) {
    const double linear = linearDays(date);
    return linear >= kFirstSerial && linear < kLastSerial + 1.0;
}

std::optional<DayAndTime> split(Date date, int unitsPerDay) {
    if (!isInRange(date)) {
        return std::nullopt;
    }
    const double linear = linearDays(date);
    const double whole = std::floor(linear);
    const int day = static_cast<int>(whole);
    const int units = static_cast<int>(std::lround((linear - whole) * unitsPerDay));
    return units == unitsPerDay ? DayAndTime{day + 1, 0} : DayAndTime{day, units};
}

std::optional<CivilTime> takeApart(Date date) {
    const auto parts = split(date, kSecondsPerDay);
    if (!parts || parts->serialDay > kLastSerial) {
        return std::nullopt;
    }
    const int seconds = parts->units;
    return CivilTime{civilDate(parts->serialDay),
                     {seconds / 3600, seconds / 60 % 60, seconds % 60}};
}

double linearDays(Date date) {
    if (date.days >= 0) {
        return date.days;
    }
    const double whole = std::ceil(date.days);
    return whole + (whole - date.days);
}

Date fromLinearDays(double days) {
    if (days >= 0) {
        return {days};
    }
    const double whole = std::floor(days);
    return {whole - (days - whole)};
}

}  // namespace kap::convert
