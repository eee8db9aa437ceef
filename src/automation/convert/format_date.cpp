#include <algorithm>
#include <array>

#include "automation/convert/date_text.hpp"
#include "automation/convert/format_writers.hpp"
#include "automation/convert/number_text.hpp"

namespace kap::convert {
namespace {

// A constant locale has no host settings: the system's first day is the one of business calendars.
FirstDay actual(FirstDay day) {
    return day == FirstDay::System ? FirstDay::Sunday : day;
}

int firstDayOfWeeks(CivilDate date, FirstDay firstDay) {
    return serialDay(date) - (weekdayNumber(date, firstDay) - 1);
}

// The serial day on which the first week of a year begins.
int beginOfFirstWeek(int year, WeekRule weeks) {
    const CivilDate newYear{year, 1, 1};
    const int begin = firstDayOfWeeks(newYear, weeks.firstDay);
    const int daysInYear = 7 - (serialDay(newYear) - begin);
    const int needed = weeks.firstWeek == FirstWeek::FullWeek   ? 7
                       : weeks.firstWeek == FirstWeek::FourDays ? 4
                                                                : 1;
    return daysInYear >= needed ? begin : begin + 7;
}

class DateWriter {
public:
    DateWriter(const CivilTime& when, Date date, WeekRule weeks, const Locale& locale)
        : when_(when), date_(date), weeks_(weeks), locale_(locale) {}

    std::u16string write(const FormatSection& section) {
        halves_ = std::any_of(section.steps.begin(), section.steps.end(), [](const auto& step) {
            return !step.literal && (step.text[0] == u'A' || step.text[0] == u'a');
        });
        for (const FormatStep& step : section.steps) {
            if (step.literal) {
                out_ += step.text;
            } else {
                writePart(step.text);
                afterHour_ = step.text[0] == u'h' || (afterHour_ && step.text == u":");
            }
        }
        return std::move(out_);
    }

private:
    void writePart(std::u16string_view part) {
        switch (part.front()) {
            case u'd':
                return writeDay(part.size());
            case u'm':
                return afterHour_ && part.size() <= 2 ? number(when_.time.minute, part.size())
                                                      : pattern(part.size(), u'M');
            case u'y':
                return writeYear(part.size());
            case u'h':
                return pattern(part.size(), halves_ ? u'h' : u'H');
            case u'n':
                return number(when_.time.minute, part.size());
            case u's':
                return number(when_.time.second, part.size());
            case u'w':
                return number(part.size() == 1 ? weekdayNumber(when_.date, weeks_.firstDay)
                                               : weekOfYear(when_.date, weeks_));
            case u'q':
                return number((when_.date.month - 1) / 3 + 1);
            case u'c':
                out_ += *printDate(date_, locale_);
                return;
            case u't':
                return appendPattern(out_, locale_.timeFormat, when_, locale_);
            case u'/':
            case u':':
                return appendPattern(out_, part, when_, locale_);
            default:
                return writeHalfOfDay(part);
        }
    }

    void writeDay(std::size_t size) {
        if (size >= 5) {
            return appendPattern(out_, size == 5 ? locale_.shortDate : locale_.longDate, when_,
                                 locale_);
        }
        pattern(size, u'd');
    }

    void writeYear(std::size_t size) {
        if (size == 1) {
            return number(serialDay(when_.date) - serialDay({when_.date.year, 1, 1}) + 1);
        }
        pattern(size, u'y');
    }

    void writeHalfOfDay(std::u16string_view form) {
        const bool morning = when_.time.hour < 12;
        if (form == u"AMPM") {
            out_ += morning ? locale_.morning : locale_.afternoon;
        } else if (form.size() == 3) {
            out_ += morning ? form.substr(0, 1) : form.substr(2);
        } else {
            out_ += morning ? form.substr(0, 2) : form.substr(3);
        }
    }

    void pattern(std::size_t size, char16_t letter) {
        appendPattern(out_, std::u16string(size, letter), when_, locale_);
    }

    void number(int value, std::size_t width = 1) {
        const std::u16string digits = printWhole(value);
        out_.append(width - std::min(width, digits.size()), u'0');
        out_ += digits;
    }

    const CivilTime& when_;
    Date date_;
    WeekRule weeks_;
    const Locale& locale_;
    std::u16string out_;
    bool halves_ = false;     // hours run from 1 to 12
    bool afterHour_ = false;  // the next m is the minute
};

}  // namespace

int weekdayNumber(CivilDate date, FirstDay firstDay) {
    const int first = static_cast<int>(actual(firstDay)) - 1;
    return (weekdayOf(date) - first + 7) % 7 + 1;
}

int weekOfYear(CivilDate date, WeekRule weeks) {
    const int day = serialDay(date);
    int begin = beginOfFirstWeek(date.year, weeks);
    if (day < begin) {
        begin = beginOfFirstWeek(date.year - 1, weeks);
    } else if (weeks.firstWeek != FirstWeek::Jan1 && weeks.firstWeek != FirstWeek::System &&
               day >= beginOfFirstWeek(date.year + 1, weeks)) {
        begin = beginOfFirstWeek(date.year + 1, weeks);
    }
    return (day - begin) / 7 + 1;
}

std::u16string formatDate(const FormatSection& section, Date date, const CivilTime& when,
                          WeekRule weeks, const Locale& locale) {
    return DateWriter(when, date, weeks, locale).write(section);
}

}  // namespace kap::convert
