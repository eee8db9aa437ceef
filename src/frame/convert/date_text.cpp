#include "frame/convert/date_text.hpp"

#include <array>
#include <cstddef>
#include <vector>

#include "frame/clock.hpp"
#include "frame/convert/calendar.hpp"
#include "frame/convert/number_text.hpp"
#include "frame/unicode.hpp"

namespace kap::convert {
namespace {

// The runtime's window for two-digit years: 00 to 29 are 2000 to 2029.
constexpr int kLastShortYear = 29;

struct Part {
    int value = 0;
    std::size_t digits = 0;  // 0: a month given by name
};

// What a text was taken apart into.
struct Pieces {
    std::vector<Part> date;
    std::vector<int> time;
    bool afternoon = false;
    bool morning = false;
};

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

bool isLetter(char16_t unit) {
    return unicode::upper(unit) != unicode::lower(unit);
}

std::optional<int> monthNamed(std::u16string_view word, const Locale& locale) {
    for (std::size_t i = 0; i < locale.months.size(); ++i) {
        if (unicode::sameName(word, locale.months[i]) ||
            unicode::sameName(word, locale.monthAbbreviations[i])) {
            return static_cast<int>(i) + 1;
        }
    }
    return std::nullopt;
}

class DateTextReader {
public:
    DateTextReader(std::u16string_view text, const Locale& locale) : rest_(text), locale_(locale) {}

    std::optional<Pieces> read() {
        skipBlanks();
        while (!rest_.empty()) {
            if (!readOne()) {
                return std::nullopt;
            }
        }
        return danglingSeparator_ ? std::nullopt : std::optional(pieces_);
    }

private:
    bool readOne() {
        const char16_t unit = rest_.front();
        if (isDigit(unit)) {
            return readNumberPart();
        }
        if (isLetter(unit)) {
            return readWord();
        }
        return false;
    }

    bool readNumberPart() {
        Part part;
        while (!rest_.empty() && isDigit(rest_.front()) && part.digits < 5) {
            part.value = part.value * 10 + (rest_.front() - u'0');
            ++part.digits;
            rest_.remove_prefix(1);
        }
        const bool timeFollows = startsTimeSeparator();
        if (timeFollows || inTime_) {
            pieces_.time.push_back(part.value);
            inTime_ = timeFollows;
            return part.digits <= 2 && pieces_.time.size() <= 3 && takeSeparator(timeFollows);
        }
        pieces_.date.push_back(part);
        return part.digits <= 4 && pieces_.date.size() <= 3 && takeDateSeparator();
    }

    [[nodiscard]] bool startsTimeSeparator() const {
        return !rest_.empty() && (rest_.front() == u':' || rest_.front() == locale_.timeSeparator);
    }

    bool takeSeparator(bool present) {
        danglingSeparator_ = present;
        if (present) {
            rest_.remove_prefix(1);
        }
        skipBlanks();
        return true;
    }

    bool takeDateSeparator() {
        skipBlanks();
        danglingSeparator_ = false;
        if (!rest_.empty() && std::u16string_view(u"/-.,").find(rest_.front()) != rest_.npos) {
            danglingSeparator_ = true;
            rest_.remove_prefix(1);
            skipBlanks();
        }
        return true;
    }

    bool readWord() {
        std::size_t length = 0;
        while (length < rest_.size() && isLetter(rest_[length])) {
            ++length;
        }
        const std::u16string_view word = rest_.substr(0, length);
        rest_.remove_prefix(length);
        if (unicode::sameName(word, u"AM") || unicode::sameName(word, u"PM")) {
            return takeHalfOfDay(unicode::sameName(word, u"PM"));
        }
        if (unicode::sameName(word, u"T") && pieces_.date.size() == 3 && pieces_.time.empty()) {
            return true;  // the ISO form's mark between date and time
        }
        const auto month = monthNamed(word, locale_);
        if (!month || pieces_.date.size() >= 3) {
            return false;
        }
        pieces_.date.push_back({*month, 0});
        return takeDateSeparator();
    }

    bool takeHalfOfDay(bool afternoon) {
        if (pieces_.time.empty() || pieces_.morning || pieces_.afternoon) {
            return false;
        }
        pieces_.afternoon = afternoon;
        pieces_.morning = !afternoon;
        skipBlanks();
        return true;
    }

    void skipBlanks() {
        while (!rest_.empty() && rest_.front() == u' ') {
            rest_.remove_prefix(1);
        }
    }

    std::u16string_view rest_;
    const Locale& locale_;
    Pieces pieces_;
    bool inTime_ = false;
    bool danglingSeparator_ = false;
};

int currentYear() {
    const auto now = takeApart(localNow());
    return now ? now->date.year : 0;
}

int fullYear(Part part) {
    if (part.digits > 2 || part.digits == 0) {
        return part.value;
    }
    return part.value <= kLastShortYear ? 2000 + part.value : 1900 + part.value;
}

using Order = std::array<std::size_t, 3>;  // the positions of year, month and day
constexpr Order kYearMonthDay = {0, 1, 2};
constexpr Order kDayMonthYear = {2, 1, 0};
constexpr Order kMonthDayYear = {2, 0, 1};

Order orderOf(DateOrder order) {
    switch (order) {
        case DateOrder::DayMonthYear:
            return kDayMonthYear;
        case DateOrder::MonthDayYear:
            return kMonthDayYear;
        case DateOrder::YearMonthDay:
            break;
    }
    return kYearMonthDay;
}

std::optional<CivilDate> arrange(const std::vector<Part>& parts, Order order) {
    const CivilDate date{fullYear(parts[order[0]]), parts[order[1]].value, parts[order[2]].value};
    const bool monthNamedElsewhere = parts[order[0]].digits == 0 || parts[order[2]].digits == 0;
    const bool longPart = parts[order[1]].digits > 2 || parts[order[2]].digits > 2;
    if (monthNamedElsewhere || longPart || !isValid(date)) {
        return std::nullopt;
    }
    return date;
}

std::optional<CivilDate> dateOf(const std::vector<Part>& given, const Locale& locale) {
    std::vector<Part> parts = given;
    Order preferred = orderOf(locale.dateOrder);
    if (parts.size() == 2) {
        const Part year{currentYear(), 4};
        const bool atFront = locale.dateOrder == DateOrder::YearMonthDay;
        parts.insert(atFront ? parts.begin() : parts.end(), year);
    } else if (parts[0].digits > 2) {
        preferred = kYearMonthDay;
    }
    for (const Order& order : {preferred, kDayMonthYear, kMonthDayYear, kYearMonthDay}) {
        if (const auto date = arrange(parts, order)) {
            return date;
        }
    }
    return std::nullopt;
}

std::optional<TimeOfDay> timeOf(const Pieces& pieces) {
    TimeOfDay time;
    const std::vector<int>& parts = pieces.time;
    time.hour = parts[0];
    time.minute = parts.size() > 1 ? parts[1] : 0;
    time.second = parts.size() > 2 ? parts[2] : 0;
    if (pieces.afternoon || pieces.morning) {
        if (time.hour > 12) {
            return std::nullopt;
        }
        time.hour = time.hour % 12 + (pieces.afternoon ? 12 : 0);
    }
    if (time.hour > 23 || time.minute > 59 || time.second > 59) {
        return std::nullopt;
    }
    return time;
}

void appendPadded(std::u16string& out, int value, std::size_t width) {
    const std::u16string digits = printWhole(value);
    if (digits.size() < width) {
        out.append(width - digits.size(), u'0');
    }
    out += digits;
}

void appendField(std::u16string& out, char16_t letter, std::size_t width, const CivilTime& when,
                 const Locale& locale) {
    const int hour = when.time.hour;
    switch (letter) {
        case u'd':
            return appendPadded(out, when.date.day, width);
        case u'M':
            return appendPadded(out, when.date.month, width);
        case u'y':
            return appendPadded(out, when.date.year, width);
        case u'H':
            return appendPadded(out, hour, width);
        case u'h':
            return appendPadded(out, hour % 12 == 0 ? 12 : hour % 12, width);
        case u'm':
            return appendPadded(out, when.time.minute, width);
        case u's':
            return appendPadded(out, when.time.second, width);
        case u't':
            out += hour < 12 ? locale.morning : locale.afternoon;
            return;
        case u'/':
            out.append(width, locale.dateSeparator);
            return;
        case u':':
            out.append(width, locale.timeSeparator);
            return;
        default:
            out.append(width, letter);
    }
}

void appendPattern(std::u16string& out, std::u16string_view pattern, const CivilTime& when,
                   const Locale& locale) {
    for (std::size_t i = 0; i < pattern.size();) {
        const std::size_t next = std::min(pattern.find_first_not_of(pattern[i], i), pattern.size());
        appendField(out, pattern[i], next - i, when, locale);
        i = next;
    }
}

}  // namespace

std::optional<Date> readDate(std::u16string_view text, const Locale& locale) {
    const auto pieces = DateTextReader(text, locale).read();
    if (!pieces || pieces->date.size() == 1 || (pieces->date.empty() && pieces->time.empty())) {
        return std::nullopt;
    }
    CivilDate date;
    if (!pieces->date.empty()) {
        const auto read = dateOf(pieces->date, locale);
        if (!read) {
            return std::nullopt;
        }
        date = *read;
    }
    TimeOfDay time;
    if (!pieces->time.empty()) {
        const auto read = timeOf(*pieces);
        if (!read) {
            return std::nullopt;
        }
        time = *read;
    }
    return makeDate(date, time);
}

std::optional<std::u16string> printDate(Date date, const Locale& locale) {
    const auto when = takeApart(date);
    if (!when) {
        return std::nullopt;
    }
    const bool hasDate = when->date != CivilDate{};
    const bool hasTime = when->time != TimeOfDay{};
    std::u16string out;
    if (hasDate || !hasTime) {
        if (hasDate) {
            appendPattern(out, locale.shortDate, *when, locale);
        } else {
            appendPattern(out, locale.timeFormat, *when, locale);  // the origin itself: midnight
        }
    }
    if (hasTime) {
        if (hasDate) {
            out.push_back(u' ');
        }
        appendPattern(out, locale.timeFormat, *when, locale);
    }
    return out;
}

}  // namespace kap::convert
