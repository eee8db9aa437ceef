#include <algorithm>
#include <array>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/date_settings.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/hijri.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

namespace {

// Two-digit years up to this one belong to the present century.
constexpr int kTwoDigitYearCutoff = 49;

// The types that came with years before 1753 and decimals of the second.
bool isNew(tsql::SqlType type) {
    return type == tsql::SqlType::Date || tsql::isFineDate(type);
}

[[noreturn]] void notADate(tsql::SqlType target) {
    if (target == tsql::SqlType::SmallDateTime) {
        throw tsql::ServerError(tsql::Message::WrongSmallDateTimeText);
    }
    throw tsql::ServerError(tsql::Message::WrongDateText);
}

[[noreturn]] void outOfRange(tsql::SqlType target) {
    if (target == tsql::SqlType::Date) notADate(target);
    throw tsql::ServerError(tsql::Message::DateOutOfRange, {"varchar", tsql::typeName(target)});
}

struct Piece {
    enum class Kind { Number, Word, Sign };
    Kind kind;
    std::string text;

    [[nodiscard]] bool is(char sign) const { return kind == Kind::Sign && text.front() == sign; }
};

std::vector<Piece> piecesOf(std::string_view text) {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t start = i;
        if (isAsciiDigit(text[i])) {
            while (i < text.size() && isAsciiDigit(text[i]))
                ++i;
            pieces.push_back({Piece::Kind::Number, std::string(text.substr(start, i - start))});
        } else if (isAsciiLetter(text[i])) {
            while (i < text.size() && isAsciiLetter(text[i]))
                ++i;
            pieces.push_back({Piece::Kind::Word, asciiUpper(text.substr(start, i - start))});
        } else {
            if (text[i] != ' ') pieces.push_back({Piece::Kind::Sign, std::string(1, text[i])});
            ++i;
        }
    }
    return pieces;
}

// Where the parts of a date stand: the places of year, month and day.
struct DatePlaces {
    std::size_t year;
    std::size_t month;
    std::size_t day;
};

DatePlaces placesOf(DateOrder order) {
    switch (order) {
        case DateOrder::Mdy:
            return {2, 0, 1};
        case DateOrder::Dmy:
            return {2, 1, 0};
        case DateOrder::Ymd:
            return {0, 1, 2};
        case DateOrder::Ydm:
            return {0, 2, 1};
        case DateOrder::Myd:
            return {1, 0, 2};
        case DateOrder::Dym:
            return {1, 2, 0};
    }
    return {2, 0, 1};
}

// The order that a style of CONVERT says; without one it is the session's.
DateOrder orderOf(int style) {
    if (style == kDefaultDateStyle) return dateSettings().order;
    switch (style % 100) {
        case 3:
        case 4:
        case 5:
        case 6:
        case 13:
        case 30:
        case 31:
            return DateOrder::Dmy;
        case 2:
        case 11:
        case 12:
        case 20:
        case 21:
        case 23:
        case 25:
        case 26:
        case 27:
            return DateOrder::Ymd;
        default:
            return DateOrder::Mdy;
    }
}

bool isHalfOfDay(const Piece& piece) {
    return piece.text == "AM" || piece.text == "PM";
}

// A word that names a month, as far as its kind tells: all others belong to the time.
bool isName(const Piece& piece) {
    return piece.kind == Piece::Kind::Word && !isHalfOfDay(piece) && piece.text != "T" &&
           piece.text != "Z";
}

class DateParser {
public:
    DateParser(std::string_view text, tsql::SqlType target, int style)
        : pieces_(piecesOf(text)),
          target_(target),
          order_(orderOf(style)),
          hijri_(isHijriStyle(style)) {}

    double parse() {
        readAll();
        const auto instant = instantOf(parts_);
        if (!instant || !inRange(*instant, target_)) outOfRange(target_);
        return roundedTo(*instant, target_);
    }

    DateReading read() {
        readAll();
        return {parts_, offset_};
    }

private:
    // The day and the time of day, in either order; each may be missing.
    void readAll() {
        if (startsWithTime()) parseTime();
        const bool timeFirst = position_ > 0;
        if (at(0) != nullptr) {
            parseDay();
            hasDay_ = true;
            const bool marked = takeWord("T");
            if (!timeFirst && (marked || at(0) != nullptr)) parseTime();
            // The letter of universal time says nothing more to types without a zone.
            const bool zone = marked || (tsql::isFineDate(target_) && !timeFirst);
            if (zone && takeWord("Z")) offset_ = 0;
        }
        if (at(0) != nullptr) notADate(target_);
        if (hijri_ && hasDay_) leaveHijri();
    }

    void leaveHijri() {
        const auto day = gregorianOf(parts_);
        if (!day) outOfRange(target_);
        parts_ = *day;
    }

    [[nodiscard]] const Piece* at(std::size_t ahead) const {
        return position_ + ahead < pieces_.size() ? &pieces_[position_ + ahead] : nullptr;
    }

    [[nodiscard]] bool numberAt(std::size_t ahead) const {
        return at(ahead) != nullptr && at(ahead)->kind == Piece::Kind::Number;
    }

    [[nodiscard]] bool startsWithTime() const {
        return numberAt(0) && at(1) != nullptr && (at(1)->is(':') || isHalfOfDay(*at(1)));
    }

    int takeNumber() {
        if (!numberAt(0)) notADate(target_);
        const auto value = plain::readInt(pieces_[position_++].text);
        if (!value) notADate(target_);
        return *value;
    }

    // The value of a year's digits: two belong to the century that the server puts them in.
    [[nodiscard]] int yearOf(const std::string& digits) const {
        const auto year = plain::readInt(digits);
        if (!year || (digits.size() > 2 && digits.size() != 4)) notADate(target_);
        if (digits.size() == 4) return *year;
        // Which century would be meant is not said of the other calendar.
        if (hijri_) notADate(target_);
        return *year + (*year <= kTwoDigitYearCutoff ? 2000 : 1900);
    }

    // A day's or a month's.
    [[nodiscard]] int shortOf(const std::string& digits) const {
        const auto number = plain::readInt(digits);
        if (!number || digits.size() > 2) notADate(target_);
        return *number;
    }

    void parseDay() {
        if (std::ranges::any_of(pieces_, [](const Piece& piece) { return isName(piece); })) {
            parseNamedMonth();
            return;
        }
        if (!numberAt(0)) notADate(target_);
        const std::string& first = at(0)->text;
        if (first.size() == 8 || (first.size() == 6 && !followedBySeparator())) {
            parseUnseparated(first);
            ++position_;
        } else if (first.size() == 4 && !followedBySeparator()) {
            parts_.year = takeNumber();
        } else {
            parseNumbers();
        }
    }

    // Three numbers. One of four digits is the year wherever it stands; the others keep their
    // order.
    void parseNumbers() {
        std::array<std::string, 3> numbers;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            if (i > 0) takeSeparator();
            if (!numberAt(0)) notADate(target_);
            numbers.at(i) = pieces_[position_++].text;
        }
        const bool international = at(0) != nullptr && at(0)->text == "T";
        const auto wide = static_cast<std::size_t>(
            std::ranges::find_if(numbers,
                                 [](const std::string& each) { return each.size() == 4; }) -
            numbers.begin());
        DatePlaces places = placesOf(orderFor(wide, international));
        if (wide < numbers.size()) {
            const bool dayFirst = places.day < places.month;
            const std::size_t one = wide == 0 ? 1 : 0;
            const std::size_t two = wide == 2 ? 1 : 2;
            places = {wide, dayFirst ? two : one, dayFirst ? one : two};
        }
        parts_.year = yearOf(numbers.at(places.year));
        parts_.month = shortOf(numbers.at(places.month));
        parts_.day = shortOf(numbers.at(places.day));
    }

    // Where the day comes first it comes first behind the year, too, as on the server: but not in
    // the international form, nor for the newer types, which know no order of year, day and month.
    [[nodiscard]] DateOrder orderFor(std::size_t year, bool international) const {
        const bool plainDate = isNew(target_);
        if (year == 0 && (plainDate || international)) return DateOrder::Ymd;
        return plainDate && order_ == DateOrder::Ydm ? DateOrder::Ymd : order_;
    }

    [[nodiscard]] bool separatorAt(std::size_t ahead) const {
        const Piece* piece = at(ahead);
        return piece != nullptr && (piece->is('-') || piece->is('/') || piece->is('.'));
    }

    [[nodiscard]] bool followedBySeparator() const { return separatorAt(1); }

    void takeSeparator() {
        if (!separatorAt(0)) notADate(target_);
        ++position_;
    }

    void parseUnseparated(const std::string& digits) {
        const std::size_t yearDigits = digits.size() - 4;
        const auto number = [&](std::size_t start, std::size_t size) {
            return plain::readInt(std::string_view(digits).substr(start, size)).value_or(0);
        };
        parts_.year = number(0, yearDigits);
        if (yearDigits == 2) parts_.year += parts_.year <= kTwoDigitYearCutoff ? 2000 : 1900;
        parts_.month = number(yearDigits, 2);
        parts_.day = number(yearDigits + 2, 2);
    }

    // A month's name with a day and a year around it, in any order: the year is the number of four
    // digits, or else the second one. SET DATEFORMAT has no say here. Without a day it is the
    // first.
    void parseNamedMonth() {
        std::vector<std::string> numbers;
        bool named = false;
        while (at(0) != nullptr && !startsWithTime()) {
            if (numberAt(0) && numbers.size() < 2) {
                numbers.push_back(pieces_[position_++].text);
            } else if (isName(*at(0)) && !named) {
                parts_.month = takeMonth();
                named = true;
            } else {
                break;
            }
            if (separatorAt(0) || (at(0) != nullptr && at(0)->is(','))) ++position_;
        }
        if (!named || numbers.empty()) notADate(target_);
        const bool yearFirst = numbers.front().size() == 4;
        if (numbers.size() == 1 && !yearFirst) notADate(target_);
        parts_.year = yearOf(yearFirst ? numbers.front() : numbers.back());
        if (numbers.size() == 2) {
            parts_.day = shortOf(yearFirst ? numbers.back() : numbers.front());
        }
    }

    int takeMonth() {
        if (at(0) == nullptr) notADate(target_);
        const std::string word = pieces_[position_++].text;
        const auto names = [&word](int month, bool italian) {
            const std::string name = asciiUpper(monthName(month, italian));
            return word == name || (word.size() == 3 && name.compare(0, 3, word) == 0);
        };
        for (int month = 1; month <= 12; ++month) {
            if (names(month, false) || (dateSettings().italian && names(month, true))) {
                return month;
            }
        }
        notADate(target_);
    }

    void parseTime() {
        parts_.hour = takeNumber();
        if (takeSign(':')) {
            parts_.minute = takeNumber();
            if (takeSign(':')) {
                parts_.second = takeNumber();
                // ".5" is half a second, ":500" as many milliseconds.
                if (takeSign('.')) {
                    parseFraction(true);
                } else if (takeSign(':')) {
                    parseFraction(false);
                }
            }
        } else if (at(0) == nullptr || !isHalfOfDay(*at(0))) {
            notADate(target_);
        }
        parseHalfOfDay();
        if (isNew(target_)) parseOffset();
    }

    // "+02:00", up to fourteen hours.
    void parseOffset() {
        const bool ahead = takeSign('+');
        if (!ahead && !takeSign('-')) return;
        constexpr int kPerHour = 60;
        constexpr int kMost = 14 * kPerHour;
        const int hours = takeNumber();
        if (!takeSign(':')) notADate(target_);
        const int minutes = takeNumber();
        const int offset = hours * kPerHour + minutes;
        if (hours > 14 || minutes >= kPerHour || offset > kMost) notADate(target_);
        offset_ = ahead ? offset : -offset;
    }

    bool takeWord(std::string_view word) {
        if (at(0) == nullptr || at(0)->kind != Piece::Kind::Word || at(0)->text != word)
            return false;
        ++position_;
        return true;
    }

    bool takeSign(char sign) {
        if (at(0) == nullptr || !at(0)->is(sign)) return false;
        ++position_;
        return true;
    }

    void parseFraction(bool decimal) {
        constexpr std::size_t kMilliseconds = 3;
        constexpr std::size_t kFraction = 7;
        if (!numberAt(0)) notADate(target_);
        std::string digits = pieces_[position_++].text;
        const std::size_t most = decimal && tsql::isFineDate(target_) ? kFraction : kMilliseconds;
        // A date takes no notice of what is behind its day.
        if (digits.size() > most && target_ != tsql::SqlType::Date) notADate(target_);
        if (!decimal && digits.size() < kMilliseconds) {
            digits.insert(0, kMilliseconds - digits.size(), '0');
        }
        digits.resize(kFraction, '0');
        parts_.fraction = plain::readInt(digits).value_or(0);
    }

    void parseHalfOfDay() {
        if (at(0) == nullptr || !isHalfOfDay(*at(0))) return;
        const bool afternoon = at(0)->text == "PM";
        ++position_;
        if (parts_.hour > 12) return;
        parts_.hour = parts_.hour % 12 + (afternoon ? 12 : 0);
    }

    std::vector<Piece> pieces_;
    std::size_t position_ = 0;
    tsql::SqlType target_;
    DateOrder order_;
    bool hijri_;
    bool hasDay_ = false;
    DateParts parts_;
    std::optional<int> offset_;
};

}  // namespace

double parseDate(std::string_view text, tsql::SqlType target, int style) {
    return DateParser(withoutBlanks(text), target, style).parse();
}

DateReading readDate(std::string_view text, tsql::SqlType target, int style) {
    return DateParser(withoutBlanks(text), target, style).read();
}

}  // namespace kap::engine
