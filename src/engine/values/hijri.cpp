#include "engine/values/hijri.hpp"

#include <array>
#include <cstddef>

#include "automation/convert/calendar.hpp"

namespace kap::engine {

namespace {

constexpr int kHijriEpoch = -466580;  // 18 July 622, in days from 30 December 1899
constexpr int kHijriCycleYears = 30;
constexpr int kHijriCycleDays = 10631;
constexpr int kHijriMonths = 12;

constexpr bool isLongHijriYear(int year) {
    return (year * 11 + 14) % kHijriCycleYears < 11;
}

constexpr int hijriMonthLength(int year, int month) {
    const bool whole = month % 2 == 1 || (month == kHijriMonths && isLongHijriYear(year));
    return whole ? 30 : 29;
}

constexpr int hijriYearLength(int year) {
    return isLongHijriYear(year) ? 355 : 354;
}

}  // namespace

std::optional<DateParts> hijriOf(const DateParts& gregorian) {
    const convert::CivilDate date{gregorian.year, gregorian.month, gregorian.day};
    if (!convert::isValid(date)) return std::nullopt;
    int rest = convert::serialDay(date) - kHijriEpoch;
    if (rest < 0) return std::nullopt;
    DateParts parts = gregorian;
    parts.year = 1 + rest / kHijriCycleDays * kHijriCycleYears;
    for (rest %= kHijriCycleDays; rest >= hijriYearLength(parts.year); ++parts.year)
        rest -= hijriYearLength(parts.year);
    for (parts.month = 1; rest >= hijriMonthLength(parts.year, parts.month); ++parts.month)
        rest -= hijriMonthLength(parts.year, parts.month);
    parts.day = rest + 1;
    return parts;
}

std::optional<DateParts> gregorianOf(const DateParts& hijri) {
    // The last day of the year 9999 is in this one.
    constexpr int kLastYear = 9666;
    const bool known = hijri.year >= 1 && hijri.year <= kLastYear && hijri.month >= 1 &&
                       hijri.month <= kHijriMonths && hijri.day >= 1 &&
                       hijri.day <= hijriMonthLength(hijri.year, hijri.month);
    if (!known) return std::nullopt;
    const int cycles = (hijri.year - 1) / kHijriCycleYears;
    int days = kHijriEpoch + cycles * kHijriCycleDays + hijri.day - 1;
    for (int year = cycles * kHijriCycleYears + 1; year < hijri.year; ++year)
        days += hijriYearLength(year);
    for (int month = 1; month < hijri.month; ++month)
        days += hijriMonthLength(hijri.year, month);
    if (days > convert::serialDay({convert::kLastYear, kHijriMonths, 31})) return std::nullopt;
    const convert::CivilDate date = convert::civilDate(days);
    DateParts parts = hijri;
    parts.year = date.year;
    parts.month = date.month;
    parts.day = date.day;
    return parts;
}

const char* hijriMonthName(int month) {
    static constexpr std::array<const char*, kHijriMonths> kNames{
        "محرم", "صفر",   "ربيع الاول", "ربيع الثاني", "جمادى الاولى", "جمادى الثانية",
        "رجب",  "شعبان", "رمضان",      "شوال",        "ذو القعدة",    "ذو الحجة"};
    return kNames.at(static_cast<std::size_t>(month - 1));
}

}  // namespace kap::engine
