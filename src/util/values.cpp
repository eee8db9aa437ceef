#include <kaputil/util/values.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "base/quoting.hpp"
#include "base/unicode.hpp"
#include "util/two_digit_year.hpp"

namespace kap::util {
namespace {

constexpr std::size_t kRowVersionBytes = 8;

// The characters from a position on, at most `count`; empty beyond the end.
std::u16string_view piece(std::u16string_view text, std::size_t from,
                          std::size_t count = std::u16string_view::npos) {
    return from < text.size() ? text.substr(from, count) : std::u16string_view{};
}

// The number that the low bytes of the first units spell, most significant first.
template <class Units>
std::uint64_t leadingBytes(const Units& units) {
    if (units.size() < kRowVersionBytes) {
        throw AutomationError(errors::kInvalidArgument);
    }
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < kRowVersionBytes; ++i) {
        number = (number << 8) | (units[i] & 0xFFU);
    }
    return number;
}

}  // namespace

bool kapEmpty(const Variant& vValore) {
    const Variant value = convert::plainValue(vValore);
    return value.isNull() || unicode::trim(convert::toString(value)).empty();
}

Variant kapVal(const Variant& vValore, const String& sDataType) {
    if (!convert::isNumeric(vValore)) {
        return std::int16_t{0};
    }
    const std::u16string type = unicode::upper(sDataType);
    if (type == u"DOUBLE") {
        return convert::toDouble(vValore);
    }
    if (type == u"INTEGER") {
        // Deliberately read from the text: under a decimal comma the fraction is left behind.
        return convert::leadingNumber(convert::toString(vValore));
    }
    if (type == u"NUMERIC" || type == u"DECIMAL" || type == u"FLOAT") {
        return convert::plainValue(vValore);
    }
    // "SINGLE", and deliberately every name that is not known.
    return convert::toSingle(vValore);
}

String kapApice(const Variant& sStringa) {
    if (kapEmpty(sStringa)) {
        return {};
    }
    const String text = convert::toString(sStringa);
    std::u16string doubled;
    appendDoubling(doubled, text.view(), u'\'');
    return doubled;
}

Variant DtoSQL(const Variant& valore) {
    const Variant value = convert::plainValue(valore);
    const String given = value.isNull() ? String() : convert::toString(value);
    const std::u16string_view text = unicode::trimLeft(given);
    if (text.empty()) {
        return u"";
    }
    const std::size_t separator = text.find(u'/') == std::u16string_view::npos ? 0 : 1;
    const std::u16string_view day = piece(text, 0, 2);
    const std::u16string_view month = piece(text, 2 + separator, 2);
    const String year = fullYear(piece(text, 4 + 2 * separator));
    const Variant date = year + u"-" + month + u"-" + day;
    return convert::isDate(date) ? date : Variant(u"");
}

String TSToHex(const Variant& sBinRep) {
    const Variant value = convert::plainValue(sBinRep);
    const std::uint64_t number = value.isArray() ? leadingBytes(value.as<Array>().bytes())
                                                 : leadingBytes(convert::toString(value));
    return Decimal::fromUnsigned(number).plainText();
}

}  // namespace kap::util
