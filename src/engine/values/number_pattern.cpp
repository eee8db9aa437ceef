#include <algorithm>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "engine/values/number_format.hpp"

// The custom patterns of FORMAT for numbers.
namespace kap::engine {

namespace {

// One piece of a section: a place for a digit, the point, the exponent, or what stands for itself.
struct PatternPiece {
    enum class Kind { Zero, Digit, Point, Exponent, Literal };
    Kind kind;
    std::u16string text{};   // of a literal; of an exponent its letter and sign
    std::size_t digits = 0;  // that an exponent has at least
};

struct Section {
    std::vector<PatternPiece> pieces;
    bool groups = false;
    int shift = 0;  // places that the point moves before anything is written
};

// Where the section that begins here ends: at a semicolon outside quotes.
std::size_t sectionEnd(std::u16string_view pattern) {
    char16_t quote = 0;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char16_t c = pattern[i];
        if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == u'\\') {
            ++i;
        } else if (c == u'\'' || c == u'"') {
            quote = c;
        } else if (c == u';') {
            return i;
        }
    }
    return pattern.size();
}

std::vector<std::u16string_view> sectionsOf(std::u16string_view pattern) {
    std::vector<std::u16string_view> sections;
    for (;;) {
        const std::size_t end = sectionEnd(pattern);
        sections.push_back(pattern.substr(0, end));
        if (end >= pattern.size()) return sections;
        pattern.remove_prefix(end + 1);
    }
}

class SectionReader {
public:
    explicit SectionReader(std::u16string_view text) : text_(text) {}

    Section read() {
        while (position_ < text_.size())
            readPiece();
        // Commas right before the point divide by a thousand each; others among the digits group.
        constexpr int kThousandsPlaces = 3;
        section_.shift -= kThousandsPlaces * trailingCommas_;
        return std::move(section_);
    }

private:
    [[nodiscard]] char16_t at(std::size_t ahead) const {
        return position_ + ahead < text_.size() ? text_[position_ + ahead] : u'\0';
    }

    void add(PatternPiece::Kind kind) { section_.pieces.push_back({kind}); }

    void literal(std::u16string_view text) {
        section_.pieces.push_back({PatternPiece::Kind::Literal, std::u16string(text)});
    }

    void readPiece() {
        constexpr int kPercent = 2;
        constexpr int kPerThousand = 3;
        const char16_t c = at(0);
        ++position_;
        switch (c) {
            case u'0':
            case u'#':
                if (!pointSeen_ && trailingCommas_ > 0) {
                    section_.groups = true;
                    trailingCommas_ = 0;
                }
                digitSeen_ = true;
                add(c == u'0' ? PatternPiece::Kind::Zero : PatternPiece::Kind::Digit);
                return;
            case u'.':
                if (!pointSeen_) add(PatternPiece::Kind::Point);
                pointSeen_ = true;
                return;
            case u',':
                if (!pointSeen_ && digitSeen_) ++trailingCommas_;
                return;
            case u'%':
                section_.shift += kPercent;
                literal(u"%");
                return;
            case u'‰':
                section_.shift += kPerThousand;
                literal(u"‰");
                return;
            case u'\\':
                if (position_ < text_.size()) literal(text_.substr(position_++, 1));
                return;
            case u'\'':
            case u'"': {
                const std::size_t end = std::min(text_.find(c, position_), text_.size());
                literal(text_.substr(position_, end - position_));
                position_ = end + 1;
                return;
            }
            case u'E':
            case u'e':
                readExponent(c);
                return;
            default:
                literal(text_.substr(position_ - 1, 1));
        }
    }

    void readExponent(char16_t letter) {
        const bool sign = at(0) == u'+' || at(0) == u'-';
        const std::size_t first = sign ? 1 : 0;
        std::size_t digits = 0;
        while (at(first + digits) == u'0')
            ++digits;
        if (digits == 0) {
            literal(std::u16string(1, letter));
            return;
        }
        PatternPiece piece{PatternPiece::Kind::Exponent, std::u16string(1, letter), digits};
        if (at(0) == u'+') piece.text += u'+';
        section_.pieces.push_back(std::move(piece));
        position_ += first + digits;
    }

    std::u16string_view text_;
    std::size_t position_ = 0;
    Section section_;
    bool digitSeen_ = false;
    bool pointSeen_ = false;
    int trailingCommas_ = 0;
};

// How many digits a section has before and behind the point.
struct PlaceCount {
    std::size_t whole = 0;
    std::size_t leastWhole = 0;  // from the first zero on
    std::size_t fraction = 0;
    std::size_t leastFraction = 0;  // up to the last zero
    bool exponent = false;
};

PlaceCount placesIn(const Section& section) {
    PlaceCount count;
    bool behind = false;
    for (const PatternPiece& piece : section.pieces) {
        if (piece.kind == PatternPiece::Kind::Point) behind = true;
        if (piece.kind == PatternPiece::Kind::Exponent) count.exponent = true;
        const bool zero = piece.kind == PatternPiece::Kind::Zero;
        if (!zero && piece.kind != PatternPiece::Kind::Digit) continue;
        if (behind) {
            ++count.fraction;
            if (zero) count.leastFraction = count.fraction;
        } else {
            ++count.whole;
            if (zero || count.leastWhole > 0) ++count.leastWhole;
        }
    }
    return count;
}

// A number that has been brought to a section's places, and how it is written there.
class SectionWriter {
public:
    SectionWriter(const Section& section, const DecimalDigits& number, const Locale& locale)
        : section_(section), count_(placesIn(section)), locale_(locale) {
        digits_ = count_.exponent ? scientific(number) : number.rounded(count_.fraction);
        while (digits_.fraction.size() > count_.leastFraction && digits_.fraction.ends_with('0'))
            digits_.fraction.pop_back();
        whole_ = digits_.whole == "0" ? std::string() : digits_.whole;
        if (whole_.size() < count_.leastWhole) {
            whole_.insert(0, count_.leastWhole - whole_.size(), '0');
        }
    }

    [[nodiscard]] std::u16string write() {
        std::u16string text;
        bool behind = false;
        std::size_t wholePlaces = count_.whole;
        std::size_t fractionPlace = 0;
        for (const PatternPiece& piece : section_.pieces) {
            switch (piece.kind) {
                case PatternPiece::Kind::Zero:
                case PatternPiece::Kind::Digit:
                    if (behind) {
                        writeFraction(text, fractionPlace++);
                    } else {
                        writeWhole(text, wholePlaces--);
                    }
                    break;
                case PatternPiece::Kind::Point:
                    // ".00" has no place for whole digits: they stand before the point all the
                    // same.
                    if (count_.whole == 0) writeWhole(text, 0);
                    behind = true;
                    if (!digits_.fraction.empty()) text += locale_.decimalSeparator;
                    break;
                case PatternPiece::Kind::Exponent:
                    writeExponent(text, piece);
                    break;
                case PatternPiece::Kind::Literal:
                    text += piece.text;
            }
        }
        return text;
    }

private:
    // As many digits before the point as the section has places.
    DecimalDigits scientific(DecimalDigits number) {
        const int wanted = static_cast<int>(std::max<std::size_t>(count_.whole, 1));
        if (!number.isZero()) {
            int size = static_cast<int>(number.whole.size());
            if (number.whole == "0") {
                size = -static_cast<int>(number.fraction.find_first_not_of('0'));
            }
            exponent_ = size - wanted;
            number = number.shifted(-exponent_);
        }
        DecimalDigits result = number.rounded(count_.fraction);
        if (static_cast<int>(result.whole.size()) > wanted) {
            ++exponent_;
            result = number.shifted(-1).rounded(count_.fraction);
        }
        return result;
    }

    // The digit of a place, counted from the point; the first place takes all digits that are left.
    void writeWhole(std::u16string& text, std::size_t place) {
        const bool first = !wholeStarted_;
        wholeStarted_ = true;
        std::size_t from = whole_.size() > place ? whole_.size() - place : 0;
        const std::size_t begin = first ? 0 : from;
        if (place == 0) from = whole_.size();
        const std::size_t end = place == 0               ? whole_.size()
                                : whole_.size() >= place ? from + 1
                                                         : begin;
        for (std::size_t i = begin; i < end; ++i) {
            text += static_cast<char16_t>(whole_[i]);
            const std::size_t behind = whole_.size() - 1 - i;
            constexpr std::size_t kGroup = 3;
            if (section_.groups && behind > 0 && behind % kGroup == 0) {
                text += locale_.groupSeparator;
            }
        }
    }

    void writeFraction(std::u16string& text, std::size_t place) const {
        if (place < digits_.fraction.size()) text += static_cast<char16_t>(digits_.fraction[place]);
    }

    void writeExponent(std::u16string& text, const PatternPiece& piece) const {
        std::string digits = plain::text(exponent_ < 0 ? -exponent_ : exponent_);
        if (digits.size() < piece.digits) digits.insert(0, piece.digits - digits.size(), '0');
        text += piece.text.front();
        if (exponent_ < 0) {
            text += u'-';
        } else if (piece.text.size() > 1) {
            text += u'+';
        }
        text.append(digits.begin(), digits.end());
    }

    const Section& section_;
    PlaceCount count_;
    const Locale& locale_;
    DecimalDigits digits_;
    std::string whole_;
    int exponent_ = 0;
    bool wholeStarted_ = false;
};

bool showsZero(const Section& section, const DecimalDigits& number) {
    return number.shifted(section.shift).rounded(placesIn(section).fraction).isZero();
}

}  // namespace

std::u16string formatByPattern(const DecimalDigits& number, std::u16string_view pattern,
                               const Locale& locale) {
    const auto sections = sectionsOf(pattern);
    const auto section = [&](std::size_t index) {
        // An empty section gives way to the first one.
        const bool given = index < sections.size() && !sections[index].empty();
        return SectionReader(sections[given ? index : 0]).read();
    };
    const bool own = number.negative && sections.size() > 1 && !sections[1].empty();
    Section chosen = section(own ? 1 : 0);
    const bool zero = number.isZero() || (!placesIn(chosen).exponent && showsZero(chosen, number));
    // What is rounded to zero is neither negative nor positive.
    if (zero && (own || sections.size() > 2)) chosen = section(sections.size() > 2 ? 2 : 0);
    const std::u16string text = SectionWriter(chosen, number.shifted(chosen.shift), locale).write();
    return number.negative && !own && !zero ? u"-" + text : text;
}

}  // namespace kap::engine
