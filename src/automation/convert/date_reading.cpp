#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"
#include "automation/convert/characters.hpp"
#include "automation/convert/date_text.hpp"
#include "base/unicode.hpp"

namespace kap::convert {
namespace {

// The runtime's window for two-digit years: 00 to 49 are 2000 to 2049.
constexpr int kFirstYearOfLastCentury = 50;

// Larger than any part of a date: what a longer run of digits counts as.
constexpr int kTooLarge = 100000;

// One part of a date: a number, or a month given by name.
struct Part {
    int value = 0;
    bool month = false;
};

// What a text was taken apart into.
struct Pieces {
    std::array<Part, 3> parts;
    std::size_t count = 0;
    std::optional<TimeOfDay> time;

    [[nodiscard]] std::span<const Part> date() const { return std::span(parts).first(count); }
};

enum class HalfOfDay { None, Morning, Afternoon };

bool isLetter(char16_t unit) {
    return unicode::upper(unit) != unicode::lower(unit);
}

// Short forms longer than three letters ("Sept") may also be cut to three.
bool isAbbreviation(std::u16string_view word, std::u16string_view abbreviation) {
    return unicode::sameName(word, abbreviation) ||
           (word.size() == 3 && unicode::sameName(word, abbreviation.substr(0, 3)));
}

std::optional<int> monthNamed(std::u16string_view word, const Locale& locale) {
    for (std::size_t i = 0; i < locale.months.size(); ++i) {
        if (unicode::sameName(word, locale.months[i]) ||
            isAbbreviation(word, locale.monthAbbreviations[i])) {
            return static_cast<int>(i) + 1;
        }
    }
    return std::nullopt;
}

bool isWeekday(std::u16string_view word, const Locale& locale) {
    const auto same = [word](std::u16string_view name) { return unicode::sameName(word, name); };
    return std::any_of(locale.weekdays.begin(), locale.weekdays.end(), same) ||
           std::any_of(locale.weekdayAbbreviations.begin(), locale.weekdayAbbreviations.end(),
                       same);
}

// Hours above 12 are what they are, with or without AM or PM.
std::optional<TimeOfDay> timeOf(std::span<const int> parts, HalfOfDay half) {
    TimeOfDay time;
    time.hour = parts[0];
    time.minute = parts.size() > 1 ? parts[1] : 0;
    time.second = parts.size() > 2 ? parts[2] : 0;
    if (half == HalfOfDay::Morning && time.hour == 12) {
        time.hour = 0;
    } else if (half == HalfOfDay::Afternoon && time.hour < 12) {
        time.hour += 12;
    }
    const bool valid = time.hour <= 23 && time.minute <= 59 && time.second <= 59;
    return valid ? std::optional(time) : std::nullopt;
}

class DateTextReader {
public:
    DateTextReader(std::u16string_view text, const Locale& locale) : rest_(text), locale_(locale) {}

    // False when the text is no date.
    bool read() {
        while (skipSeparators() && !rest_.empty()) {
            if (!readToken()) {
                return false;
            }
        }
        return rest_.empty() && !separated_;
    }

    [[nodiscard]] const Pieces& pieces() const { return pieces_; }

private:
    // Blanks and commas stand anywhere, slashes and hyphens between two parts and twice at most.
    bool skipSeparators() {
        separated_ = false;
        for (; !rest_.empty(); rest_.remove_prefix(1)) {
            const char16_t unit = rest_.front();
            if (unit == u'/' || unit == u'-') {
                if (!begun_ || ++dateSeparators_ > 2) {
                    return false;
                }
            } else if (unit != u',' && !isBlank(unit)) {
                break;
            }
            separated_ = separated_ || !isBlank(unit);
        }
        return true;
    }

    bool readToken() {
        begun_ = true;
        if (isDigit(rest_.front())) {
            return readNumbers();
        }
        const std::u16string_view word = takeWord();
        if (const auto month = monthNamed(word, locale_)) {
            return addPart({*month, true});
        }
        return isWeekday(word, locale_);
    }

    // A part of a date, or a whole time: what follows the number tells.
    bool readNumbers() {
        std::array<int, 3> numbers{takeNumber()};
        if (endsDatePart()) {
            return addPart({numbers[0], false});
        }
        std::size_t count = 1;
        while (takeTimeSeparator()) {
            if (count == numbers.size() || rest_.empty() || !isDigit(rest_.front())) {
                return false;
            }
            numbers[count++] = takeNumber();
        }
        const HalfOfDay half = takeHalfOfDay(count > 1);
        if (count == 1 && half == HalfOfDay::None) {
            return addPart({numbers[0], false});
        }
        if (pieces_.time) {
            return false;  // a second time
        }
        partsBeforeTime_ = pieces_.count;
        pieces_.time = timeOf(std::span(numbers).first(count), half);
        return pieces_.time.has_value();
    }

    // Behind most numbers: nothing that could make them a time.
    [[nodiscard]] bool endsDatePart() const {
        if (rest_.empty()) {
            return true;
        }
        const char16_t next = rest_.front();
        return (next == u'/' || next == u'-') && next != locale_.timeSeparator;
    }

    // A time stands before or behind the date, not within.
    bool addPart(Part part) {
        if (pieces_.count == pieces_.parts.size() || (pieces_.time && partsBeforeTime_ > 0)) {
            return false;
        }
        pieces_.parts[pieces_.count++] = part;
        return true;
    }

    int takeNumber() {
        int value = 0;
        std::size_t length = 0;
        for (; length < rest_.size() && isDigit(rest_[length]); ++length) {
            value = std::min(kTooLarge, value * 10 + (rest_[length] - u'0'));
        }
        rest_.remove_prefix(length);
        return value;
    }

    std::u16string_view takeWord() {
        std::size_t length = 0;
        while (length < rest_.size() && isLetter(rest_[length])) {
            ++length;
        }
        const std::u16string_view word = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return word;
    }

    bool takeTimeSeparator() {
        const std::u16string_view ahead = afterBlanks(rest_);
        if (ahead.empty() || (ahead.front() != u':' && ahead.front() != u'.' &&
                              ahead.front() != locale_.timeSeparator)) {
            return false;
        }
        rest_ = afterBlanks(ahead.substr(1));
        return true;
    }

    // AM or PM, the locale's words for them, and after a time with minutes just their letters.
    HalfOfDay takeHalfOfDay(bool lettersToo) {
        const std::u16string_view before = rest_;
        rest_ = afterBlanks(rest_);
        const std::u16string_view word = takeWord();
        const auto is = [&](std::u16string_view local, std::u16string_view english) {
            return !word.empty() &&
                   (unicode::sameName(word, local) || unicode::sameName(word, english) ||
                    (lettersToo && unicode::sameName(word, english.substr(0, 1))));
        };
        if (is(locale_.morning, u"AM")) {
            return HalfOfDay::Morning;
        }
        if (is(locale_.afternoon, u"PM")) {
            return HalfOfDay::Afternoon;
        }
        rest_ = before;
        return HalfOfDay::None;
    }

    static std::u16string_view afterBlanks(std::u16string_view text) {
        while (!text.empty() && isBlank(text.front())) {
            text.remove_prefix(1);
        }
        return text;
    }

    std::u16string_view rest_;
    const Locale& locale_;
    Pieces pieces_;
    std::size_t partsBeforeTime_ = 0;
    int dateSeparators_ = 0;
    bool begun_ = false;
    bool separated_ = false;
};

// The short way for most texts, the same pieces as by the reader above: three numbers of up to four
// digits with a slash or a hyphen between them, and nothing else. False for any other text.
bool readPlainDate(std::u16string_view text, const Locale& locale, Pieces& pieces) {
    constexpr std::size_t kMostDigits = 4;
    std::size_t at = 0;
    for (Part& part : pieces.parts) {
        const bool isFirst = pieces.count++ == 0;
        if (!isFirst) {
            const char16_t separator = at < text.size() ? text[at] : u' ';
            if ((separator != u'/' && separator != u'-') || separator == locale.timeSeparator) {
                return false;
            }
            ++at;
        }
        const std::size_t begin = at;
        for (; at < text.size() && isDigit(text[at]); ++at) {
            part.value = part.value * 10 + (text[at] - u'0');
            if (at - begin == kMostDigits) {
                return false;
            }
        }
        if (at == begin) {
            return false;
        }
    }
    return at == text.size();
}

int currentYear() {
    const auto now = takeApart(localNow());
    return now ? now->date.year : 0;
}

int fullYear(int value) {
    if (value >= 100) {
        return value;
    }
    return value < kFirstYearOfLastCentury ? 2000 + value : 1900 + value;
}

// What the parts of a date text mean, in their order: Y, M and D.
using Order = std::u16string_view;

std::optional<CivilDate> arrange(std::span<const Part> parts, Order order) {
    CivilDate date{parts.size() == 2 ? currentYear() : 0, 1, 1};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool isMonth = order[i] == u'M';
        if (parts[i].month && !isMonth) {
            return std::nullopt;
        }
        if (isMonth) {
            date.month = parts[i].value;
        } else if (order[i] == u'D') {
            date.day = parts[i].value;
        } else {
            date.year = fullYear(parts[i].value);
        }
    }
    return isValid(date) ? std::optional(date) : std::nullopt;
}

std::optional<CivilDate> arrange(std::span<const Part> parts, std::span<const Order> orders) {
    for (const Order& order : orders) {
        if (const auto date = arrange(parts, order)) {
            return date;
        }
    }
    return std::nullopt;
}

constexpr std::array<Order, 4> kDayAndMonth = {u"DM", u"MD", u"MY", u"YM"};
constexpr std::array<Order, 4> kMonthAndDay = {u"MD", u"DM", u"MY", u"YM"};
constexpr std::array<Order, 4> kDayFirst = {u"DMY", u"YMD", u"MDY", u"YDM"};
constexpr std::array<Order, 4> kMonthFirst = {u"MDY", u"YMD", u"DMY", u"YDM"};
constexpr std::array<Order, 4> kYearFirst = {u"YMD", u"DMY", u"MDY", u"YDM"};

// The locale's own order first, then those that people mean when it makes no sense: a day beyond
// the month's end is a year.
std::optional<CivilDate> dateOf(std::span<const Part> parts, DateOrder order) {
    if (parts.size() == 2) {
        return arrange(parts, order == DateOrder::MonthDayYear ? kMonthAndDay : kDayAndMonth);
    }
    return arrange(parts, order == DateOrder::MonthDayYear   ? kMonthFirst
                          : order == DateOrder::DayMonthYear ? kDayFirst
                                                             : kYearFirst);
}

}  // namespace

std::optional<Date> readDate(std::u16string_view text, const Locale& locale) {
    Pieces pieces;
    if (!readPlainDate(text, locale, pieces)) {
        DateTextReader reader(upToNull(text), locale);
        if (!reader.read()) {
            return std::nullopt;
        }
        pieces = reader.pieces();
    }
    const TimeOfDay time = pieces.time.value_or(TimeOfDay{});
    if (pieces.count < 2) {
        return pieces.count == 0 && pieces.time ? std::optional(makeDate({}, time)) : std::nullopt;
    }
    const auto date = dateOf(pieces.date(), locale.dateOrder);
    return date ? std::optional(makeDate(*date, time)) : std::nullopt;
}

}  // namespace kap::convert
