#include "engine/values/date_pattern.hpp"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "automation/locale_tables.hpp"
#include "engine/values/dates.hpp"

namespace kap::engine {

namespace {

std::u16string paddedNumber(int value, std::size_t width) {
    const std::string text = plain::padded(value, static_cast<int>(width));
    return {text.begin(), text.end()};
}

const Locale& englishLocale() {
    return *std::ranges::find(knownLocales(), "en-US", &Locale::name);
}

// The time without its seconds.
std::u16string shortTime(const Locale& locale) {
    std::u16string pattern(locale.timeFormat);
    const std::size_t seconds = pattern.find(u":ss");
    if (seconds != std::u16string::npos) pattern.erase(seconds, 3);
    return pattern;
}

std::u16string joined(std::u16string_view date, std::u16string_view time) {
    return std::u16string(date) + u" " + std::u16string(time);
}

// The part of the long date, or the usual one where that has none of these.
std::u16string partOf(std::u16string_view longDate,
                      std::initializer_list<std::u16string_view> parts, std::u16string_view usual) {
    for (const std::u16string_view part : parts) {
        if (longDate.find(part) != std::u16string_view::npos) return std::u16string(part);
    }
    return std::u16string(usual);
}

std::u16string dayAndMonth(const Locale& locale) {
    return partOf(locale.longDate, {u"MMMM d", u"d. MMMM", u"d 'de' MMMM"}, u"d MMMM");
}

std::u16string monthAndYear(const Locale& locale) {
    return partOf(locale.longDate, {u"MMMM 'de' yyyy"}, u"MMMM yyyy");
}

// The custom pattern behind a standard format.
std::optional<std::u16string> standardPattern(char16_t letter, const Locale& locale) {
    switch (letter) {
        case u'd':
            return std::u16string(locale.shortDate);
        case u'D':
            return std::u16string(locale.longDate);
        case u't':
            return shortTime(locale);
        case u'T':
            return std::u16string(locale.timeFormat);
        case u'f':
            return joined(locale.longDate, shortTime(locale));
        case u'F':
        case u'U':
            return joined(locale.longDate, locale.timeFormat);
        case u'g':
            return joined(locale.shortDate, shortTime(locale));
        case u'G':
            return joined(locale.shortDate, locale.timeFormat);
        case u'm':
        case u'M':
            return dayAndMonth(locale);
        case u'y':
        case u'Y':
            return monthAndYear(locale);
        case u'o':
        case u'O':
            return u"yyyy-MM-dd'T'HH':'mm':'ss.fffffffK";
        case u's':
            return u"yyyy-MM-dd'T'HH':'mm':'ss";
        case u'u':
            return u"yyyy-MM-dd HH':'mm':'ss'Z'";
        case u'r':
        case u'R':
            return u"ddd, dd MMM yyyy HH':'mm':'ss 'GMT'";
        default:
            return std::nullopt;
    }
}

class DateWriter {
public:
    DateWriter(const FormattedDate& date, const Locale& locale)
        : parts_(date.parts),
          offset_(date.offset),
          weekday_(static_cast<std::size_t>(
              convert::weekdayOf({parts_.year, parts_.month, parts_.day}))),
          locale_(locale) {}

    // nullopt where a quote is never closed or nothing follows an escape.
    [[nodiscard]] std::optional<std::u16string> write(std::u16string_view pattern) const {
        std::u16string text;
        for (std::size_t i = 0; i < pattern.size();) {
            const char16_t c = pattern[i];
            if (c == u'\\') {
                if (i + 1 >= pattern.size()) return std::nullopt;
                text += pattern[i + 1];
                i += 2;
            } else if (c == u'%') {
                ++i;  // makes a single letter a custom pattern
            } else if (c == u'\'' || c == u'"') {
                const std::size_t end = pattern.find(c, i + 1);
                if (end == std::u16string_view::npos) return std::nullopt;
                text += pattern.substr(i + 1, end - i - 1);
                i = end + 1;
            } else {
                const std::size_t end = std::min(pattern.find_first_not_of(c, i), pattern.size());
                text += part(c, end - i);
                i = end;
            }
        }
        return text;
    }

private:
    // What a row of equal letters stands for; what is no letter of a pattern stands for itself.
    [[nodiscard]] std::u16string part(char16_t letter, std::size_t count) const {
        constexpr std::size_t kName = 3;
        constexpr std::size_t kFullName = 4;
        const std::size_t two = std::min<std::size_t>(count, 2);
        switch (letter) {
            case u'd':
                if (count >= kFullName) return name(locale_.weekdays.at(weekday_));
                if (count == kName) return name(locale_.weekdayAbbreviations.at(weekday_));
                return paddedNumber(parts_.day, two);
            case u'M': {
                const auto month = static_cast<std::size_t>(parts_.month - 1);
                if (count >= kFullName) return name(locale_.months.at(month));
                if (count == kName) return name(locale_.monthAbbreviations.at(month));
                return paddedNumber(parts_.month, two);
            }
            case u'y':
                return count <= 2 ? paddedNumber(parts_.year % 100, count)
                                  : paddedNumber(parts_.year, count);
            case u'H':
                return paddedNumber(parts_.hour, two);
            case u'h':
                return paddedNumber(parts_.hour % 12 == 0 ? 12 : parts_.hour % 12, two);
            case u'm':
                return paddedNumber(parts_.minute, two);
            case u's':
                return paddedNumber(parts_.second, two);
            case u'f':
            case u'F':
                return fraction(letter, count);
            case u't': {
                const auto half = parts_.hour < 12 ? locale_.morning : locale_.afternoon;
                return name(count == 1 ? half.substr(0, 1) : half);
            }
            case u'z':
                return offset(count);
            case u'K':
                return offset(kName);
            case u'g':
                return u"A.D.";
            case u':':
                return std::u16string(count, locale_.timeSeparator);
            case u'/':
                return std::u16string(count, locale_.dateSeparator);
            default:
                return std::u16string(count, letter);
        }
    }

    [[nodiscard]] static std::u16string name(std::u16string_view text) {
        return std::u16string(text);
    }

    // "+2", "+02" or "+02:00"; nothing for a date without a zone.
    [[nodiscard]] std::u16string offset(std::size_t count) const {
        constexpr int kMinutesPerHour = 60;
        if (!offset_) return {};
        std::string text = offsetText(*offset_);
        if (count == 1) {
            text = text.front() + plain::text(std::abs(*offset_) / kMinutesPerHour);
        } else if (count == 2) {
            text.resize(text.find(':'));
        }
        return {text.begin(), text.end()};
    }

    // So many digits of the second's fraction; F leaves out the zeros at the end.
    [[nodiscard]] std::u16string fraction(char16_t letter, std::size_t count) const {
        constexpr std::size_t kDecimals = 7;
        std::u16string digits = paddedNumber(parts_.fraction, kDecimals);
        digits.resize(count, u'0');
        if (letter == u'F') digits.erase(digits.find_last_not_of(u'0') + 1);
        return digits;
    }

    DateParts parts_;
    std::optional<int> offset_;
    std::size_t weekday_;  // from Sunday
    const Locale& locale_;
};

// What a row of equal letters stands for in the format of a time of day; nullopt for what is none.
std::optional<std::u16string> partOfTime(const DateParts& time, char16_t letter,
                                         std::size_t count) {
    constexpr std::size_t kDecimals = 7;
    const std::size_t most = letter == u'f' || letter == u'F' ? kDecimals : 2;
    if (letter == u'%') return u"";
    if (count > most && letter != u'd') return std::nullopt;
    switch (letter) {
        case u'd':
            return std::u16string(count, u'0');
        case u'h':
            return paddedNumber(time.hour, count);
        case u'm':
            return paddedNumber(time.minute, count);
        case u's':
            return paddedNumber(time.second, count);
        case u'f':
        case u'F': {
            std::u16string digits = paddedNumber(time.fraction, kDecimals).substr(0, count);
            if (letter == u'F') digits.erase(digits.find_last_not_of(u'0') + 1);
            return digits;
        }
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<std::u16string> formatDate(const FormattedDate& date, std::u16string_view format,
                                         const Locale& locale) {
    if (format.empty()) format = u"G";
    if (format.size() > 1) return DateWriter(date, locale).write(format);
    const auto pattern = standardPattern(format.front(), locale);
    if (!pattern) return std::nullopt;
    const bool english = format == u"r" || format == u"R";
    return DateWriter(date, english ? englishLocale() : locale).write(*pattern);
}

std::optional<std::u16string> formatTime(const DateParts& time, std::u16string_view format,
                                         const Locale& locale) {
    std::u16string pattern(format);
    if (format.empty() || format == u"c" || format == u"t" || format == u"T") {
        pattern = u"hh':'mm':'ss";
        if (time.fraction != 0) pattern += u"'.'fffffff";
    } else if (format == u"g") {
        pattern = u"%h':'mm':'ss";
        const std::u16string separator(1, locale.decimalSeparator);
        if (time.fraction != 0) pattern += u"'" + separator + u"'FFFFFFF";
    } else if (format == u"G") {
        pattern = u"'0:'hh':'mm':'ss'" + std::u16string(1, locale.decimalSeparator) + u"'fffffff";
    } else if (format.size() == 1) {
        return std::nullopt;
    }
    std::u16string text;
    for (std::size_t i = 0; i < pattern.size();) {
        const char16_t c = pattern[i];
        if (c == u'\\') {
            if (i + 1 >= pattern.size()) return std::nullopt;
            text += pattern[i + 1];
            i += 2;
            continue;
        }
        if (c == u'\'' || c == u'"') {
            const std::size_t end = pattern.find(c, i + 1);
            if (end == std::u16string::npos) return std::nullopt;
            text += pattern.substr(i + 1, end - i - 1);
            i = end + 1;
            continue;
        }
        const std::size_t end = std::min(pattern.find_first_not_of(c, i), pattern.size());
        const auto part = partOfTime(time, c, end - i);
        if (!part) return std::nullopt;
        text += *part;
        i = end;
    }
    return text;
}

}  // namespace kap::engine
