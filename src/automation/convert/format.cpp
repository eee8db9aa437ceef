#include <kaputil/automation/format.hpp>

#include <array>
#include <optional>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/convert/date_text.hpp"
#include "automation/convert/format_section.hpp"
#include "automation/convert/format_writers.hpp"
#include "base/unicode.hpp"

namespace kap::convert {
namespace {

using Sections = std::vector<FormatSection>;

// The named formats that stand for a text of format characters.
struct NamedFormat {
    std::u16string_view name;
    std::u16string_view pattern;
};
constexpr std::array<NamedFormat, 11> kNamedFormats = {{
    {u"General Date", u"c"},
    {u"Long Date", u"dddddd"},
    {u"Medium Date", u"dd-mmm-yy"},
    {u"Short Date", u"ddddd"},
    {u"Long Time", u"ttttt"},
    {u"Medium Time", u"hh:nn AMPM"},
    {u"Short Time", u"hh:nn"},
    {u"Fixed", u"0.00"},
    {u"Standard", u"#,##0.00"},
    {u"Percent", u"0.00%"},
    {u"Scientific", u"0.00E+00"},
}};

std::u16string_view unnamed(std::u16string_view pattern) {
    for (const NamedFormat& format : kNamedFormats) {
        if (unicode::sameName(format.name, pattern)) {
            return format.pattern;
        }
    }
    return pattern;
}

std::u16string plainText(const Variant& value) {
    return value.isNull() ? std::u16string() : toString(value).units();
}

// The number that a value is or reads as; nullopt for other texts.
std::optional<NumberText> numberOf(const Variant& value) {
    switch (value.type()) {
        case VarType::String: {
            const auto read = readNumber(value.as<String>(), currentLocale());
            return read && toDouble(*read) ? read : std::nullopt;
        }
        case VarType::Single:
            return digitsOf(value.as<float>());
        case VarType::Double:
        case VarType::Date:
            return digitsOf(toDouble(value));
        default:
            return digitsOf(toDecimal(value));
    }
}

std::optional<Date> dateOf(const Variant& value) {
    if (!value.isString()) {
        return Date{toDouble(value)};
    }
    const String& text = value.as<String>();
    if (const auto date = readDate(text, currentLocale())) {
        return date;
    }
    const auto number = numberOf(value);
    return number ? std::optional(Date{*toDouble(*number)}) : std::nullopt;
}

bool isZero(const NumberText& number) {
    return number.pattern == NumberText::Pattern::None ? number.count == 0 : number.bits == 0;
}

// A pattern of bits as the digits of its value.
NumberText asDigits(const NumberText& number) {
    if (number.pattern == NumberText::Pattern::None) {
        return number;
    }
    return digitsOf(*toDouble(number));
}

bool hasSection(const Sections& sections, std::size_t index) {
    return sections.size() > index && !sections[index].steps.empty();
}

std::u16string writeNumber(const Sections& sections, const Variant& value) {
    const auto read = value.isEmpty() ? std::nullopt : numberOf(value);
    if (!read) {
        return plainText(value);
    }
    const NumberText number = asDigits(*read);
    const Locale& locale = currentLocale();
    if (isZero(number) && hasSection(sections, 2)) {
        return formatNumber(sections[2], number, locale);
    }
    if (number.negative && hasSection(sections, 1)) {
        return formatNumber(sections[1], number, locale);
    }
    const bool sign = number.negative && sections[0].kind == FormatKind::Number;
    return (sign ? u"-" : u"") + formatNumber(sections[0], number, locale);
}

std::u16string writeDate(const Sections& sections, const Variant& value, WeekRule weeks) {
    const auto date = dateOf(value);
    const auto when = date ? takeApart(*date) : std::nullopt;
    if (!when) {
        return plainText(value);
    }
    return formatDate(sections[0], *date, *when, weeks, currentLocale());
}

std::u16string writeText(const Sections& sections, const Variant& value) {
    const std::u16string text = plainText(value);
    return formatText(sections[text.empty() && hasSection(sections, 1) ? 1 : 0], text);
}

std::u16string writeSections(const Sections& sections, const Variant& value, WeekRule weeks) {
    const bool numeric = sections[0].kind == FormatKind::Number;
    if (numeric && (value.isNull() || value.isEmpty()) && hasSection(sections, 3)) {
        return formatNumber(sections[3], NumberText{}, currentLocale());
    }
    if (value.isNull()) {
        return {};
    }
    switch (sections[0].kind) {
        case FormatKind::Date:
            return writeDate(sections, value, weeks);
        case FormatKind::Text:
            return writeText(sections, value);
        default:
            return writeNumber(sections, value);
    }
}

// The names that depend on the value or the locale; nullopt for any other format.
std::optional<std::u16string> writeNamed(std::u16string_view name, const Variant& value) {
    const Locale& locale = currentLocale();
    const auto choose = [&](std::u16string_view yes, std::u16string_view no) -> std::u16string {
        const auto number = value.isNull() ? std::nullopt : numberOf(value);
        return number ? std::u16string(isZero(*number) ? no : yes) : plainText(value);
    };
    if (unicode::sameName(name, u"General Number")) {
        return plainText(value);
    }
    if (unicode::sameName(name, u"Currency")) {
        return writeSections(formatSections(locale.currencyFormat), value, {});
    }
    if (unicode::sameName(name, u"Yes/No")) {
        return choose(locale.yesText, locale.noText);
    }
    if (unicode::sameName(name, u"True/False")) {
        return choose(locale.trueText, locale.falseText);
    }
    if (unicode::sameName(name, u"On/Off")) {
        return choose(locale.onText, locale.offText);
    }
    return std::nullopt;
}

}  // namespace

String format(const Variant& value, std::u16string_view pattern, FirstDay firstDay,
              FirstWeek firstWeek) {
    const Variant plain = plainValue(value);
    if (pattern.empty()) {
        return plainText(plain);
    }
    if (auto named = writeNamed(pattern, plain)) {
        return std::move(*named);
    }
    return writeSections(formatSections(unnamed(pattern)), plain, {firstDay, firstWeek});
}

}  // namespace kap::convert
