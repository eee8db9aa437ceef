#include <vector>

#include <kaputil/frame/plain_text.hpp>

#include "ado/embedded/functions/date_settings.hpp"
#include "ado/embedded/functions/dates.hpp"
#include "ado/embedded/functions/text_units.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"
#include "tsql/type_spec.hpp"

namespace kap::ado::embedded {

namespace {

// Two-digit years up to this one belong to the present century.
constexpr int kTwoDigitYearCutoff = 49;

[[noreturn]] void notADate(tsql::SqlType target) {
    if (target == tsql::SqlType::SmallDateTime) {
        throw tsql::ServerError(
            295, "Conversion failed when converting character string to smalldatetime data type.");
    }
    throw tsql::ServerError(
        241, "Conversion failed when converting date and/or time from character string.");
}

[[noreturn]] void outOfRange(tsql::SqlType target) {
    if (target == tsql::SqlType::Date) notADate(target);
    throw tsql::ServerError(242, std::string("The conversion of a varchar data type to a ") +
                                     tsql::typeName(target) +
                                     " data type resulted in an out-of-range value.");
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
        if (tsql::isAsciiDigit(text[i])) {
            while (i < text.size() && tsql::isAsciiDigit(text[i]))
                ++i;
            pieces.push_back({Piece::Kind::Number, std::string(text.substr(start, i - start))});
        } else if (tsql::isAsciiLetter(text[i])) {
            while (i < text.size() && tsql::isAsciiLetter(text[i]))
                ++i;
            pieces.push_back({Piece::Kind::Word, tsql::asciiUpper(text.substr(start, i - start))});
        } else {
            if (text[i] != ' ') pieces.push_back({Piece::Kind::Sign, std::string(1, text[i])});
            ++i;
        }
    }
    return pieces;
}

class DateParser {
public:
    DateParser(std::string_view text, tsql::SqlType target, int style)
        : pieces_(piecesOf(text)), target_(target), order_(orderOf(style)) {}

    double parse() {
        if (!startsWithTime()) parseDay();
        const bool marked = takeWord("T");
        if (marked || at(0) != nullptr) parseTime();
        if (at(0) != nullptr) notADate(target_);
        const auto instant = instantOf(parts_);
        if (!instant || !inRange(*instant, target_)) outOfRange(target_);
        return roundedTo(*instant, target_);
    }

private:
    // A style says the order by itself; without one it is the session's.
    static DateOrder orderOf(int style) {
        if (style == kDefaultDateStyle) return dateSettings().order;
        const int base = style % 100;
        const bool dayFirst = base == 3 || base == 4 || base == 5 || base == 6 || base == 13;
        return dayFirst ? DateOrder::DayFirst : DateOrder::MonthFirst;
    }

    [[nodiscard]] const Piece* at(std::size_t ahead) const {
        return position_ + ahead < pieces_.size() ? &pieces_[position_ + ahead] : nullptr;
    }

    [[nodiscard]] bool numberAt(std::size_t ahead) const {
        return at(ahead) != nullptr && at(ahead)->kind == Piece::Kind::Number;
    }

    [[nodiscard]] bool startsWithTime() const {
        if (pieces_.empty()) return true;
        return numberAt(0) && at(1) != nullptr &&
               (at(1)->is(':') || at(1)->text == "AM" || at(1)->text == "PM");
    }

    int takeNumber() {
        if (!numberAt(0)) notADate(target_);
        const auto value = plain::readInt(pieces_[position_++].text);
        if (!value) notADate(target_);
        return *value;
    }

    // A year of two digits belongs to the century that the server puts it in.
    int takeYear() {
        const std::size_t digits = at(0) != nullptr ? at(0)->text.size() : 0;
        const int year = takeNumber();
        if (digits == 4) return year;
        if (digits > 2) notADate(target_);
        return year + (year <= kTwoDigitYearCutoff ? 2000 : 1900);
    }

    void parseDay() {
        if (at(0)->kind == Piece::Kind::Word ||
            (numberAt(0) && at(1) != nullptr && at(1)->kind == Piece::Kind::Word &&
             at(1)->text != "T")) {
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
        } else if (first.size() == 4) {
            parts_.year = takeYear();
            takeSeparator();
            const int one = takeNumber();
            takeSeparator();
            const int two = takeNumber();
            // Where the day comes first it comes first behind the year, too, as on the server: but
            // not in the international form, nor for the type date.
            const bool dayBefore = order_ == DateOrder::DayFirst &&
                                   target_ != tsql::SqlType::Date &&
                                   !(at(0) != nullptr && at(0)->text == "T");
            parts_.month = dayBefore ? two : one;
            parts_.day = dayBefore ? one : two;
        } else if (order_ == DateOrder::YearFirst) {
            parts_.year = takeYear();
            takeSeparator();
            parts_.month = takeNumber();
            takeSeparator();
            parts_.day = takeNumber();
        } else {
            const int one = takeNumber();
            takeSeparator();
            const int two = takeNumber();
            takeSeparator();
            const bool dayFirst = order_ == DateOrder::DayFirst;
            parts_.month = dayFirst ? two : one;
            parts_.day = dayFirst ? one : two;
            parts_.year = takeYear();
        }
    }

    [[nodiscard]] bool followedBySeparator() const {
        return at(1) != nullptr && (at(1)->is('-') || at(1)->is('/') || at(1)->is('.'));
    }

    void takeSeparator() {
        const Piece* piece = at(0);
        const bool separates =
            piece != nullptr && (piece->is('-') || piece->is('/') || piece->is('.'));
        if (!separates) notADate(target_);
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

    // "Jan 5 2024", "5 January 2024", "January 2024".
    void parseNamedMonth() {
        const bool dayLeads = numberAt(0);
        if (dayLeads) parts_.day = takeNumber();
        parts_.month = takeMonth();
        if (!dayLeads) {
            if (numberAt(0) && at(0)->text.size() <= 2) parts_.day = takeNumber();
        }
        if (at(0) != nullptr && at(0)->is(',')) ++position_;
        parts_.year = takeYear();
    }

    int takeMonth() {
        if (at(0) == nullptr) notADate(target_);
        const std::string word = pieces_[position_++].text;
        const auto names = [&word](int month, bool italian) {
            const std::string name = tsql::asciiUpper(monthName(month, italian));
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
        } else if (at(0) == nullptr || at(0)->kind != Piece::Kind::Word) {
            notADate(target_);
        }
        parseHalfOfDay();
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
        std::size_t digits = at(0) != nullptr ? at(0)->text.size() : 0;
        if (digits > 3 && target_ != tsql::SqlType::Date) notADate(target_);
        int milliseconds = takeNumber();
        for (; decimal && digits < 3; ++digits)
            milliseconds *= 10;
        for (; digits > 3; --digits)
            milliseconds /= 10;
        // A fraction that rounds up to the whole second carries over through the instant.
        parts_.tick = (milliseconds * 3 + 5) / 10;
    }

    void parseHalfOfDay() {
        if (at(0) == nullptr || at(0)->kind != Piece::Kind::Word) return;
        const bool afternoon = at(0)->text == "PM";
        if (!afternoon && at(0)->text != "AM") notADate(target_);
        ++position_;
        if (parts_.hour > 12) return;
        parts_.hour = parts_.hour % 12 + (afternoon ? 12 : 0);
    }

    std::vector<Piece> pieces_;
    std::size_t position_ = 0;
    tsql::SqlType target_;
    DateOrder order_;
    DateParts parts_;
};

}  // namespace

double parseDate(std::string_view text, tsql::SqlType target, int style) {
    return DateParser(withoutBlanks(text), target, style).parse();
}

}  // namespace kap::ado::embedded
