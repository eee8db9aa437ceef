#include "frame/convert/calendar.hpp"

#include <chrono>
#include <cmath>

namespace kap::convert {
namespace {

using std::chrono::sys_days;

constexpr sys_days kOrigin = std::chrono::year{1899} / 12 / 30;
constexpr int kSecondsPerDay = 86400;
constexpr int kFirstSerial = -657434;  // 1 January 100
constexpr int kLastSerial = 2958465;   // 31 December 9999

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

std::optional<CivilTime> takeApart(Date date) {
    const double linear = linearDays(date);
    if (!(linear >= kFirstSerial && linear < kLastSerial + 1.0)) {
        return std::nullopt;
    }
    const double whole = std::floor(linear);
    int day = static_cast<int>(whole);
    int seconds = static_cast<int>(std::lround((linear - whole) * kSecondsPerDay));
    if (seconds == kSecondsPerDay) {
        seconds = 0;
        ++day;
    }
    if (day > kLastSerial) {
        return std::nullopt;
    }
    return CivilTime{civilDate(day), {seconds / 3600, seconds / 60 % 60, seconds % 60}};
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
