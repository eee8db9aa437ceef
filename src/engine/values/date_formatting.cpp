#include <cstdlib>
#include <string>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/date_settings.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/hijri.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

// What a fine date is written in when no style is asked for.
constexpr int kInternationalStyle = 121;

std::string digits(int value, std::size_t width, char fill = '0') {
    std::string text = plain::text(value);
    if (text.size() < width) text.insert(0, width - text.size(), fill);
    return text;
}

// Milliseconds, or behind a point as many decimals as a type has: without any, no separator either.
void appendFraction(std::string& text, int fraction, std::optional<int> decimals) {
    if (!decimals) {
        text += digits(fraction / kFractionsPerMillisecond, 3);
        return;
    }
    text.pop_back();
    if (*decimals == 0) return;
    constexpr int kMostDecimals = 7;
    text += "." + digits(fraction, kMostDecimals).substr(0, static_cast<std::size_t>(*decimals));
}

// The pattern language of the styles: each letter is one part, everything else stands for itself.
//   Y year of 4 digits, y of 2; M month, N its short name, A its Hijri name; D day, d day filled
//   with a blank; H hour of 24, h of 12 filled with a blank; m minute; s second; f milliseconds
//   p AM or PM
std::string formatted(const DateParts& parts, std::string_view pattern,
                      std::optional<int> decimals = std::nullopt) {
    const int hour12 = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    std::string result;
    for (const char c : pattern) {
        switch (c) {
            case 'Y':
                result += digits(parts.year, 4);
                break;
            case 'y':
                result += digits(parts.year % 100, 2);
                break;
            case 'M':
                result += digits(parts.month, 2);
                break;
            case 'N':
                result += monthName(parts.month, dateSettings().italian).substr(0, 3);
                break;
            case 'A':
                result += hijriMonthName(parts.month);
                break;
            case 'D':
                result += digits(parts.day, 2);
                break;
            case 'd':
                result += digits(parts.day, 2, ' ');
                break;
            case 'H':
                result += digits(parts.hour, 2);
                break;
            case 'h':
                result += digits(hour12, 2, ' ');
                break;
            case 'm':
                result += digits(parts.minute, 2);
                break;
            case 's':
                result += digits(parts.second, 2);
                break;
            case 'f':
                appendFraction(result, parts.fraction, decimals);
                break;
            case 'p':
                result += parts.hour < 12 ? "AM" : "PM";
                break;
            default:
                result += c;
        }
    }
    return result;
}

const char* datePattern(int style) {
    switch (style) {
        case 0:
        case 100:
            return "N d Y";
        case 1:
            return "M/D/y";
        case 101:
            return "M/D/Y";
        case 2:
            return "y.M.D";
        case 102:
            return "Y.M.D";
        case 3:
            return "D/M/y";
        case 103:
            return "D/M/Y";
        case 4:
            return "D.M.y";
        case 104:
            return "D.M.Y";
        case 5:
            return "D-M-y";
        case 105:
            return "D-M-Y";
        case 6:
            return "D N y";
        case 106:
            return "D N Y";
        case 7:
            return "N D, y";
        case 107:
            return "N D, Y";
        case 9:
        case 109:
            return "N d Y";
        case 10:
            return "M-D-y";
        case 110:
            return "M-D-Y";
        case 11:
            return "y/M/D";
        case 111:
            return "Y/M/D";
        case 12:
            return "yMD";
        case 112:
            return "YMD";
        case 13:
        case 113:
            return "D N Y";
        case 20:
        case 120:
        case 21:
        case 25:
        case 121:
        case 23:
        case 126:
        case 127:
            return "Y-M-D";
        case 130:
            return "d A Y";
        case 131:
            return "d/M/Y";
        default:
            return nullptr;
    }
}

// What the style adds for the time of day; it starts with its own separator, if any.
const char* timePattern(int style) {
    switch (style) {
        case 0:
        case 100:
            return " h:mp";
        case 9:
        case 109:
        case 130:
        case 131:
            return " h:m:s:fp";
        case 13:
        case 113:
            return " H:m:s:f";
        case 20:
        case 120:
            return " H:m:s";
        case 21:
        case 25:
        case 121:
            return " H:m:s.f";
        case 126:
        case 127:
            return "TH:m:s.f";
        default:
            return "";
    }
}

// The day as the calendar of the style has it.
DateParts inCalendarOf(const DateParts& parts, tsql::SqlType type, int style) {
    if (!isHijriStyle(style)) return parts;
    const auto found = hijriOf(parts);
    if (found) return *found;
    throw tsql::ServerError(tsql::Message::DateOutOfRange, {tsql::typeName(type), "varchar"});
}

}  // namespace

std::optional<std::string> dateText(double stored, tsql::SqlType type, int style) {
    const DateParts parts = inCalendarOf(partsOf(stored), type, style);
    if (style == 8 || style == 108) return formatted(parts, "H:m:s");
    if (style == 14 || style == 114) return formatted(parts, "H:m:s:f");
    const char* date = datePattern(style);
    if (date == nullptr) return std::nullopt;
    if (type == tsql::SqlType::Date) {
        // A plain date is written the international way unless a style is asked for.
        return formatted(parts, style == kDefaultDateStyle ? "Y-M-D" : date);
    }
    // The ISO style leaves out milliseconds that are zero.
    const bool iso = style == 126 || style == 127;
    const char* time = iso && parts.fraction == 0 ? "TH:m:s" : timePattern(style);
    return formatted(parts, date) + formatted(parts, time);
}

std::string offsetText(int minutes) {
    constexpr int kPerHour = 60;
    const int ahead = std::abs(minutes);
    return (minutes < 0 ? "-" : "+") + digits(ahead / kPerHour, 2) + ":" +
           digits(ahead % kPerHour, 2);
}

std::optional<std::string> fineDateText(const FineDate& date, tsql::SqlType type, int style) {
    if (style == kDefaultDateStyle) style = kInternationalStyle;
    const DateParts parts =
        type == tsql::SqlType::Time ? date.parts : inCalendarOf(date.parts, type, style);
    std::string_view day = "";
    std::string_view time = timePattern(style);
    if (style == 8 || style == 108) {
        time = "H:m:s";
    } else if (style == 14 || style == 114) {
        time = "H:m:s:f";
    } else if (const char* pattern = datePattern(style)) {
        day = pattern;
    } else {
        return std::nullopt;
    }
    if (type == tsql::SqlType::Time) {
        // A style without a time has nothing to tell of one.
        if (time.empty()) return std::nullopt;
        if (!day.empty()) time.remove_prefix(1);
        day = "";
    }
    std::string text = formatted(parts, day) + formatted(parts, time, date.decimals);
    if (!date.offset || time.empty()) return text;
    if (style == 127) return text + "Z";
    return text + (style == 126 ? "" : " ") + offsetText(*date.offset);
}

}  // namespace kap::engine
