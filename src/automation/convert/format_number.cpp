#include <algorithm>
#include <array>
#include <cstddef>

#include "automation/convert/decimal_digits.hpp"
#include "automation/convert/format_writers.hpp"
#include "automation/convert/number_text.hpp"

namespace kap::convert {
namespace {

// What a section asks of the number, found before anything is written.
struct Shape {
    int whole = 0;          // places before the point
    int leastWhole = 0;     // from the first 0 among them
    int decimals = 0;       // places behind it
    int leastDecimals = 0;  // up to the last 0 among them
    int exponent = 0;       // places of the exponent
    int moves = 0;          // powers of ten that percent signs and thousands commas move the point
    bool grouped = false;
    bool scientific = false;
};

class ShapeReader {
public:
    Shape read(const FormatSection& section) {
        for (const FormatStep& step : section.steps) {
            if (!step.literal) {
                readStep(step.text.front());
            }
        }
        endWhole();
        return shape_;
    }

private:
    void readStep(char16_t mark) {
        switch (mark) {
            case u'0':
            case u'#':
                return readPlace(mark);
            case u'.':
                return endWhole();
            case u',':
                commas_ += afterPoint_ || shape_.whole == 0 ? 0 : 1;
                return;
            case u'%':
                shape_.moves += 2;
                return;
            default:
                shape_.scientific = true;
                return endWhole();
        }
    }

    void readPlace(char16_t mark) {
        const int least = mark == u'0' ? 1 : 0;
        if (shape_.scientific) {
            ++shape_.exponent;
        } else if (afterPoint_) {
            ++shape_.decimals;
            shape_.leastDecimals = least != 0 ? shape_.decimals : shape_.leastDecimals;
        } else {
            shape_.grouped = shape_.grouped || commas_ > 0;
            commas_ = 0;
            ++shape_.whole;
            shape_.leastWhole += least != 0 || shape_.leastWhole > 0 ? 1 : 0;
        }
    }

    // Commas right before the point divide by a thousand each.
    void endWhole() {
        shape_.moves -= 3 * commas_;
        commas_ = 0;
        afterPoint_ = true;
    }

    Shape shape_;
    int commas_ = 0;
    bool afterPoint_ = false;
};

// The digits of a number around its point.
struct PlainNumber {
    std::string whole;  // without zeros in front
    std::string decimals;
};

// Rounds to `decimals` places, halves away from zero as formats do, and cuts zeros at the end down
// to `least` places.
PlainNumber rounded(std::string digits, int exponent, int decimals, int least) {
    int point = static_cast<int>(digits.size()) + exponent;  // digits before the point
    if (point < 0) {
        digits.insert(0, static_cast<std::size_t>(-point), '0');
        point = 0;
    }
    const std::size_t kept = static_cast<std::size_t>(point) + static_cast<std::size_t>(decimals);
    bool up = digits.size() > kept && digits[kept] >= '5';
    digits.resize(kept, '0');
    for (std::size_t i = kept; up && i-- > 0;) {
        up = digits[i] == '9';
        digits[i] = up ? '0' : static_cast<char>(digits[i] + 1);
    }
    if (up) {
        digits.insert(0, 1, '1');
        ++point;
    }
    PlainNumber number{digits.substr(0, static_cast<std::size_t>(point)),
                       digits.substr(static_cast<std::size_t>(point))};
    number.whole.erase(0, number.whole.find_first_not_of('0'));
    while (static_cast<int>(number.decimals.size()) > least && number.decimals.back() == '0') {
        number.decimals.pop_back();
    }
    return number;
}

class NumberWriter {
public:
    NumberWriter(const Shape& shape, const Locale& locale) : shape_(shape), locale_(locale) {}

    std::u16string write(const FormatSection& section, std::string digits, int exponent) {
        exponent += shape_.moves;
        number_ = shape_.scientific && !digits.empty() ? scaled(digits, exponent)
                                                       : roundedAt(std::move(digits), exponent);
        const auto least = static_cast<std::size_t>(shape_.leastWhole);
        if (number_.whole.size() < least) {
            number_.whole.insert(0, least - number_.whole.size(), '0');
        }
        for (const FormatStep& step : section.steps) {
            writeStep(step);
        }
        return std::move(out_);
    }

private:
    [[nodiscard]] PlainNumber roundedAt(std::string digits, int exponent) const {
        return rounded(std::move(digits), exponent, shape_.decimals, shape_.leastDecimals);
    }

    // Moves the point so that the places before it are filled, and keeps the exponent. Where
    // rounding carries into one place more, the same digits are rounded again one place further on:
    // never what a rounding left.
    PlainNumber scaled(const std::string& digits, int exponent) {
        const int wanted = std::max(shape_.whole, 1);
        exponent_ = static_cast<int>(digits.size()) + exponent - wanted;
        PlainNumber number = roundedAt(digits, exponent - exponent_);
        if (static_cast<int>(number.whole.size()) > wanted) {
            ++exponent_;
            number = roundedAt(digits, exponent - exponent_);
        }
        return number;
    }

    void writeStep(const FormatStep& step) {
        const char16_t mark = step.text.front();
        if (step.literal || mark == u'%') {
            out_ += step.text;
        } else if (mark == u'.') {
            if (shape_.whole == 0) {
                writeWholePlace();  // digits before the point are never lost
            }
            afterPoint_ = true;
            out_.push_back(locale_.decimalSeparator);
        } else if (mark == u'0' || mark == u'#') {
            writePlace();
        } else if (mark != u',') {
            writeExponent(step.text);
        }
    }

    void writePlace() {
        if (exponentWritten_) {
            return;
        }
        if (!afterPoint_) {
            return writeWholePlace();
        }
        if (decimalsWritten_ < number_.decimals.size()) {
            out_.push_back(static_cast<char16_t>(number_.decimals[decimalsWritten_++]));
        }
    }

    // The first place takes all the digits that have no place of their own.
    void writeWholePlace() {
        const auto left = static_cast<std::size_t>(std::max(shape_.whole - placesPassed_++, 1));
        while (number_.whole.size() - wholeWritten_ >= left &&
               wholeWritten_ < number_.whole.size()) {
            out_.push_back(static_cast<char16_t>(number_.whole[wholeWritten_++]));
            const std::size_t behind = number_.whole.size() - wholeWritten_;
            if (shape_.grouped && behind > 0 && behind % 3 == 0) {
                out_.push_back(locale_.groupSeparator);
            }
        }
    }

    void writeExponent(std::u16string_view mark) {
        out_.push_back(mark[0]);
        if (exponent_ < 0) {
            out_.push_back(u'-');
        } else if (mark[1] == u'+') {
            out_.push_back(u'+');
        }
        const std::u16string digits = printWhole(std::abs(exponent_));
        const auto width = static_cast<std::size_t>(shape_.exponent);
        out_.append(width - std::min(width, digits.size()), u'0');
        out_ += digits;
        exponentWritten_ = true;
    }

    const Shape& shape_;
    const Locale& locale_;
    std::u16string out_;
    PlainNumber number_;
    std::size_t wholeWritten_ = 0;
    std::size_t decimalsWritten_ = 0;
    int placesPassed_ = 0;
    int exponent_ = 0;
    bool afterPoint_ = false;
    bool exponentWritten_ = false;
};

}  // namespace

std::u16string formatNumber(const FormatSection& section, const NumberText& number,
                            const Locale& locale) {
    const Shape shape = ShapeReader().read(section);
    return NumberWriter(shape, locale).write(section, std::string(number.text()), number.exponent);
}

}  // namespace kap::convert
