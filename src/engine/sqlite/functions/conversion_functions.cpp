#include <cmath>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

// kap_convert(value, from, to, style): CAST and CONVERT.
Value convertFunction(const Arguments& arguments) {
    const tsql::TypeSpec from = arguments.type(1);
    return convert(arguments.value(0, from), from, arguments.type(2), Overlength::Cut,
                   arguments.small(3));
}

// kap_try_convert(value, from, to, style): null for what cannot be converted; what the database
// does not know to convert stays an error.
Value tryConvertFunction(const Arguments& arguments) {
    try {
        return convertFunction(arguments);
    } catch (const tsql::ServerError& error) {
        if (error.number() == tsql::unsupported("", 0).number()) throw;
        return {};
    }
}

// kap_store(value, from, to): a value on its way into a column.
Value storeFunction(const Arguments& arguments) {
    const tsql::TypeSpec from = arguments.type(1);
    return convert(arguments.value(0, from), from, arguments.type(2), Overlength::Refuse);
}

// kap_scale(value, digits): so many decimal digits appended, for the functions that take exact
// numbers in either form.
Value scaleFunction(const Arguments& arguments) {
    const auto scaled = rescale(arguments.exact(0), 0, arguments.small(1), Rounding::HalfAway);
    if (!scaled) {
        throw tsql::ServerError(tsql::Message::ArithmeticOverflow, {"numeric", "numeric"});
    }
    if (const auto result = narrow(*scaled)) return *result;
    return wideBytes(*scaled);
}

// kap_wide(value, digits): the same as a wide decimal, for comparing: what goes beyond is larger
// than all others.
Value wideFunction(const Arguments& arguments) {
    const Wide value = arguments.exact(0);
    const auto scaled = rescale(value, 0, arguments.small(1), Rounding::HalfAway);
    return wideBytes(scaled ? *scaled : farthest(value < 0));
}

// kap_widen(value, digits): the same for comparing only, where a number beyond 64 bits may become a
// double.
Value widenFunction(const Arguments& arguments) {
    const auto scaled = rescale(arguments.integer(0), 0, arguments.small(1), Rounding::HalfAway);
    if (const auto result = scaled ? narrow(*scaled) : std::nullopt) return *result;
    return static_cast<double>(arguments.integer(0)) *
           static_cast<double>(powerOfTen(arguments.small(1)));
}

// A number of rows that is not less than `least`.
std::int64_t rowsOf(const Arguments& arguments, std::int64_t least, tsql::Message tooFew) {
    if (arguments.isNull(0)) {
        throw tsql::ServerError(tsql::Message::RowCountNotInteger);
    }
    if (arguments.integer(0) < least) throw tsql::ServerError(tooFew);
    return arguments.integer(0);
}

// kap_top(count), kap_offset(count), kap_fetch(count): what TOP, OFFSET and FETCH ask for.
Value topFunction(const Arguments& arguments) {
    return rowsOf(arguments, 0, tsql::Message::NegativeRowCount);
}

Value offsetFunction(const Arguments& arguments) {
    return rowsOf(arguments, 0, tsql::Message::NegativeOffset);
}

Value fetchFunction(const Arguments& arguments) {
    return rowsOf(arguments, 1, tsql::Message::FetchOfNothing);
}

// kap_deeper(level, most): the next level of a recursion, within its limit (0: none).
Value deeperFunction(const Arguments& arguments) {
    const std::int64_t level = arguments.integer(0) + 1;
    const std::int64_t most = arguments.integer(1);
    if (most > 0 && level > most) {
        throw tsql::ServerError(tsql::Message::RecursionExhausted, {plain::text(most)});
    }
    return level;
}

// kap_top_percent(rows, percent): so many of all rows, rounded up.
Value topPercentFunction(const Arguments& arguments) {
    constexpr double kWhole = 100;
    const double percent = arguments.real(1);
    if (arguments.isNull(1) || percent < 0 || percent > kWhole) {
        throw tsql::ServerError(tsql::Message::PercentOutOfRange);
    }
    return static_cast<std::int64_t>(
        std::ceil(static_cast<double>(arguments.integer(0)) * percent / kWhole));
}

// True when some conversion to the type succeeds.
bool converts(const std::string& text, const tsql::TypeSpec& to) {
    try {
        (void)convert(text, {tsql::SqlType::VarChar, tsql::kMaxLength}, to, Overlength::Cut);
        return true;
    } catch (const tsql::ServerError&) {
        return false;  // that it does not convert is the answer
    }
}

// kap_isnumeric(text)
Value isNumericFunction(const Arguments& arguments) {
    const std::string text(arguments.text(0));
    const std::string_view shown = withoutBlanks(text);
    // Deliberate on the server, and scripts know it: a sign alone counts as a number.
    const bool numeric =
        !arguments.isNull(0) && !shown.empty() &&
        (converts(text, {tsql::SqlType::Float}) || converts(text, {tsql::SqlType::Money}));
    return std::int64_t{numeric};
}

// kap_isdate(text)
Value isDateFunction(const Arguments& arguments) {
    const std::string text(arguments.text(0));
    const bool isDate = !arguments.isNull(0) && !withoutBlanks(text).empty() &&
                        converts(text, {tsql::SqlType::DateTime});
    return std::int64_t{isDate};
}

}  // namespace

void registerConversionFunctions(Registrar& registrar) {
    registrar.scalar("kap_convert", 4, convertFunction);
    registrar.scalar("kap_try_convert", 4, tryConvertFunction);
    registrar.scalar("kap_store", 3, storeFunction);
    registrar.scalar("kap_scale", 2, scaleFunction);
    registrar.scalar("kap_widen", 2, widenFunction);
    registrar.scalar("kap_wide", 2, wideFunction);
    registrar.scalar("kap_deeper", 2, deeperFunction);
    registrar.scalar("kap_top", 1, topFunction, OnNull::Call);
    registrar.scalar("kap_offset", 1, offsetFunction, OnNull::Call);
    registrar.scalar("kap_fetch", 1, fetchFunction, OnNull::Call);
    registrar.scalar("kap_top_percent", 2, topPercentFunction, OnNull::Call);
    registrar.scalar("kap_isnumeric", 1, isNumericFunction, OnNull::Call);
    registrar.scalar("kap_isdate", 1, isDateFunction, OnNull::Call);
}

}  // namespace kap::engine
