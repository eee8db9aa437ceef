#include "cli/commands/batch/literal_reader.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

// A language whose times are those of program text.
constexpr std::string_view kProgramLanguage = "en-US";

bool isDigit(char unit) {
    return unit >= '0' && unit <= '9';
}

// Takes the digits at the beginning off the text and tells how many they were.
std::size_t takeDigits(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && isDigit(text[count])) {
        ++count;
    }
    text.remove_prefix(count);
    return count;
}

bool take(std::string_view& text, std::string_view any) {
    const bool found = !text.empty() && any.find(text.front()) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

enum class NumberForm : unsigned char { None, Whole, Floating };

NumberForm numberFormOf(std::string_view text) {
    take(text, "-");
    const bool leadingZero = text.size() > 1 && text[0] == '0' && isDigit(text[1]);
    std::size_t digits = takeDigits(text);
    NumberForm form = NumberForm::Whole;
    if (take(text, ".")) {
        form = NumberForm::Floating;
        digits += takeDigits(text);
    }
    if (digits == 0 || leadingZero) {
        return NumberForm::None;
    }
    if (take(text, "eE")) {
        form = NumberForm::Floating;
        take(text, "+-");
        if (takeDigits(text) == 0) {
            return NumberForm::None;
        }
    }
    return text.empty() ? form : NumberForm::None;
}

double doubleOf(std::string_view text) {
    const auto number = plain::readReal(text);
    if (!number || !number->inRange) {
        throw UsageError("the number " + std::string(text) + " is out of range");
    }
    return number->value;
}

template <class Whole>
bool fits(double number) {
    return number >= std::numeric_limits<Whole>::min() &&
           number <= std::numeric_limits<Whole>::max();
}

Variant numberOf(std::string_view text, NumberForm form) {
    const double number = doubleOf(text);
    if (form == NumberForm::Whole && fits<std::int16_t>(number)) {
        return static_cast<std::int16_t>(number);
    }
    if (form == NumberForm::Whole && fits<std::int32_t>(number)) {
        return static_cast<std::int32_t>(number);
    }
    return number;
}

// Whether the text has this form, in which '9' stands for any digit.
bool hasForm(std::string_view text, std::string_view form) {
    if (text.size() != form.size()) {
        return false;
    }
    for (std::size_t i = 0; i < form.size(); ++i) {
        if (form[i] == '9' ? !isDigit(text[i]) : text[i] != form[i]) {
            return false;
        }
    }
    return true;
}

bool isTimeForm(std::string_view text) {
    return hasForm(text, "99:99:99") || hasForm(text, "99:99");
}

bool isDateForm(std::string_view text) {
    constexpr std::string_view kDay = "9999-99-99";
    constexpr std::size_t kMonthAt = 5;
    if (!hasForm(text.substr(0, kDay.size()), kDay) || text.substr(kMonthAt, 2) > "12") {
        return false;  // in place of a month that there is not the day would be read
    }
    const std::string_view rest = text.substr(kDay.size());
    return rest.empty() || (rest.front() == ' ' && isTimeForm(rest.substr(1)));
}

Variant dateOf(std::string_view text) {
    const std::string_view inside = text.substr(1, text.size() - 2);
    const LocaleScope language(kProgramLanguage);
    const Variant date = inside;
    if ((!isDateForm(inside) && !isTimeForm(inside)) || !convert::isDate(date)) {
        throw UsageError(std::string(text) +
                         " is no date; write it as #2003-12-25# or #2003-12-25 10:30:00#");
    }
    return convert::toDate(date);
}

}  // namespace

std::optional<Variant> readLiteral(std::string_view word) {
    if (const NumberForm form = numberFormOf(word); form != NumberForm::None) {
        return numberOf(word, form);
    }
    if (word.size() > 1 && word.front() == '#' && word.back() == '#') {
        return dateOf(word);
    }
    if (equalsIgnoringCase(word, "true") || equalsIgnoringCase(word, "false")) {
        return Variant(equalsIgnoringCase(word, "true"));
    }
    if (equalsIgnoringCase(word, "null")) {
        return Variant::null();
    }
    if (equalsIgnoringCase(word, "empty")) {
        return Variant();
    }
    if (equalsIgnoringCase(word, "missing")) {
        return Variant::missing();
    }
    return std::nullopt;
}

}  // namespace kap::cli
