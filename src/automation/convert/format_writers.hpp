#pragma once

#include <string>
#include <string_view>

#include <kaputil/automation/format.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/convert/calendar.hpp"
#include "automation/convert/format_section.hpp"
#include "automation/convert/number_text.hpp"

// What a section of a format makes of a value of its kind.
namespace kap::convert {

// Where weeks and the first week of a year begin.
struct WeekRule {
    FirstDay firstDay = FirstDay::Sunday;
    FirstWeek firstWeek = FirstWeek::Jan1;
};

[[nodiscard]] std::u16string formatDate(const FormatSection& section, Date date,
                                        const CivilTime& when, WeekRule weeks,
                                        const Locale& locale);

// The size of the number: its sign is the caller's.
[[nodiscard]] std::u16string formatNumber(const FormatSection& section, const NumberText& number,
                                          const Locale& locale);

[[nodiscard]] std::u16string formatText(const FormatSection& section, std::u16string_view text);

// The weekday as a number from 1, and the week of the year.
[[nodiscard]] int weekdayNumber(CivilDate date, FirstDay firstDay);
[[nodiscard]] int weekOfYear(CivilDate date, WeekRule weeks);

}  // namespace kap::convert
