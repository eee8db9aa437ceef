#include <kaputil/util/dates.hpp>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/format.hpp>

#include "automation/convert/calendar.hpp"
#include "base/unicode.hpp"
#include "util/two_digit_year.hpp"

namespace kap::util {
namespace {

using MonthNames = std::array<std::u16string_view, 12>;

constexpr MonthNames kItalian = {u"Gennaio",   u"Febbraio", u"Marzo",    u"Aprile",
                                 u"Maggio",    u"Giugno",   u"Luglio",   u"Agosto",
                                 u"Settembre", u"Ottobre",  u"Novembre", u"Dicembre"};
constexpr MonthNames kEnglish = {u"January",   u"February", u"March",    u"April",
                                 u"May",       u"June",     u"July",     u"August",
                                 u"September", u"October",  u"November", u"December"};
constexpr MonthNames kFrench = {u"Janvier",   u"Février", u"Mars",     u"Avril",
                                u"Mai",       u"Juin",    u"Juillet",  u"Août",
                                u"Septembre", u"Octobre", u"Novembre", u"Décembre"};

const MonthNames& monthNames(std::u16string_view language) {
    const std::u16string code = unicode::upper(language);
    return code == u"ITA" ? kItalian : code == u"FRA" ? kFrench : kEnglish;
}

String number(int value) {
    return convert::toString(static_cast<std::int32_t>(value));
}

String fourDigits(int year) {
    constexpr std::size_t kDigits = 4;
    const String text = number(year);
    return String(std::u16string(kDigits - text.size(), u'0')) + text;
}

convert::CivilDate civilDateOf(const Variant& value) {
    return convert::takeApart(convert::toDate(value)).value().date;
}

// The parts of a typed date, as texts.
struct TypedDate {
    String day;
    String month;
    String year;
};

TypedDate splitAtSlashes(std::u16string_view text) {
    const std::size_t first = text.find(u'/');
    const std::u16string_view rest = text.substr(first + 1);
    const std::size_t second = rest.find(u'/');
    if (second == std::u16string_view::npos) {
        return {text.substr(0, first), {}, rest};
    }
    return {text.substr(0, first), rest.substr(0, second), rest.substr(second + 1)};
}

TypedDate splitAtPositions(std::u16string_view text) {
    const auto piece = [text](std::size_t from, std::size_t count) {
        return from < text.size() ? text.substr(from, count) : std::u16string_view{};
    };
    return {piece(0, 2), piece(2, 2), piece(4, text.size())};
}

TypedDate takeApart(std::u16string_view text) {
    if (const Variant value = text; convert::isDate(value)) {
        const convert::CivilDate date = civilDateOf(value);
        return {number(date.day), number(date.month), number(date.year)};
    }
    return text.find(u'/') == std::u16string_view::npos ? splitAtPositions(text)
                                                        : splitAtSlashes(text);
}

String twoCharacters(const String& part) {
    return part.size() == 1 ? u"0" + part : part;
}

// What a typed text means: a date, or the empty text when it is none that business programs accept.
Variant dateTyped(std::u16string_view text) {
    if (text.empty()) {
        return u"";
    }
    // Databases know no date before it.
    constexpr convert::CivilDate kFirstDate{1753, 1, 1};
    const TypedDate typed = takeApart(text);
    const Variant joined =
        fullYear(typed.year) + u"-" + twoCharacters(typed.month) + u"-" + twoCharacters(typed.day);
    if (!convert::isDate(joined)) {
        return u"";
    }
    const Date date = convert::toDate(joined);
    return date.days < convert::serialDay(kFirstDate) ? Variant(u"") : Variant(date);
}

}  // namespace

String NomeMese(std::int16_t nMese, const String& sLingua) {
    const MonthNames& names = monthNames(sLingua);
    if (nMese < 1 || nMese > static_cast<int>(names.size())) {
        return {};
    }
    return names[static_cast<std::size_t>(nMese) - 1];
}

Variant ConvertiData(const String& sData, const String& sLingua) {
    const convert::CivilDate date = civilDateOf(sData);
    // The blank at the end is deliberate: headings go on behind it.
    return number(date.day) + u" " + NomeMese(static_cast<std::int16_t>(date.month), sLingua) +
           u" " + fourDigits(date.year) + u" ";
}

String kapControllaData(const Variant& valore, ByRef<String> sFormat) {
    const Variant value = convert::plainValue(valore);
    const String given = value.isNull() ? String() : convert::toString(value);
    const Variant date = dateTyped(unicode::trimLeft(given));
    if (sFormat->empty()) {
        *sFormat = u"dd/mm/yyyy";
    }
    // A format may hold texts of its own: they stand beside a date only.
    return date.isString() ? String() : convert::format(date, *sFormat);
}

}  // namespace kap::util
