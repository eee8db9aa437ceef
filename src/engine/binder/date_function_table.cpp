#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/values/date_part.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;

namespace {

std::string partCode(DatePart part) {
    return plain::text(static_cast<int>(part));
}

bool isTimeOfDay(DatePart part) {
    return part >= DatePart::Hour && part <= DatePart::Nanosecond;
}

// Whether a function works with a part of this type. Differences are counted in any part that a
// date has, also one that its type leaves out.
bool isSupported(DatePart part, tsql::SqlType type, std::string_view function) {
    if (part == DatePart::TimeZone) return false;
    if (function == "datediff") return part != DatePart::IsoWeek;
    if (type == SqlType::Date && isTimeOfDay(part)) return false;
    const bool fine = part == DatePart::Microsecond || part == DatePart::Nanosecond;
    return function != "dateadd" || !(fine || part == DatePart::IsoWeek);
}

std::string namedPart(const ScalarCall& call, tsql::SqlType type) {
    const std::string_view word = call.word(0);
    const auto part = datePartNamed(word);
    if (!part) {
        throw tsql::ServerError(tsql::Message::UnknownOption, {word, call.name()}, call.line);
    }
    if (!isSupported(*part, type, call.name())) {
        throw tsql::ServerError(tsql::Message::DatePartNotSupported,
                                {word, call.name(), tsql::typeName(type)}, call.line);
    }
    return partCode(*part);
}

BoundExpression partOfDate(ScalarCall& call, DatePart part) {
    const BoundExpression date = call.instant(0);
    return BoundExpression::expression(callText("kap_datepart", partCode(part), date.sql),
                                       {SqlType::Int}, date.nullable);
}

BoundExpression year(ScalarCall& call) {
    return partOfDate(call, DatePart::Year);
}
BoundExpression month(ScalarCall& call) {
    return partOfDate(call, DatePart::Month);
}
BoundExpression day(ScalarCall& call) {
    return partOfDate(call, DatePart::Day);
}

// The arguments that are bound start behind the word.
BoundExpression datePart(ScalarCall& call) {
    const BoundExpression date = call.instant(0);
    return BoundExpression::expression(
        callText("kap_datepart", namedPart(call, date.type.type), date.sql), {SqlType::Int},
        date.nullable);
}

BoundExpression dateName(ScalarCall& call) {
    const BoundExpression date = call.instant(0);
    constexpr int kNameLength = 30;
    return BoundExpression::expression(
        callText("kap_datename", namedPart(call, date.type.type), date.sql),
        {SqlType::NVarChar, kNameLength}, date.nullable);
}

BoundExpression dateAdd(ScalarCall& call) {
    const BoundExpression date = call.instant(1);
    const BoundExpression count = call.binder.castTo(call[0], {SqlType::BigInt}, 0, call.line);
    return BoundExpression::expression(callText("kap_dateadd", namedPart(call, date.type.type),
                                                count.sql, date.sql, typeArgument(date.type)),
                                       date.type, call.anyNullable());
}

BoundExpression dateDiff(ScalarCall& call) {
    const BoundExpression from = call.instant(0);
    return BoundExpression::expression(
        callText("kap_datediff", namedPart(call, from.type.type), from.sql, call.instant(1).sql),
        {SqlType::Int}, call.anyNullable());
}

BoundExpression now(ScalarCall& /*call*/) {
    return BoundExpression::expression("kap_now()", {SqlType::DateTime}, false);
}

BoundExpression universalNow(ScalarCall& /*call*/) {
    return BoundExpression::expression("kap_utcnow()", {SqlType::DateTime}, false);
}

// EOMONTH(date [, months]): the last day of the month so many months on.
BoundExpression endOfMonth(ScalarCall& call) {
    const std::string months = call.arguments.size() > 1 ? call.shortInteger(1) : "0";
    return BoundExpression::expression(callText("kap_eomonth", call.instant(0).sql, months),
                                       {SqlType::Date}, call.anyNullable());
}

// DATEFROMPARTS(year, month, day) and its kin, which take the parts of the time behind them.
template <SqlType kType>
BoundExpression fromParts(ScalarCall& call) {
    std::string parts = typeArgument({kType});
    for (std::size_t i = 0; i < call.arguments.size(); ++i)
        parts += ", " + call.shortInteger(i);
    return BoundExpression::expression(callText("kap_fromparts", parts), {kType},
                                       call.anyNullable());
}

BoundExpression isDate(ScalarCall& call) {
    if (tsql::isDate(call[0].type.type)) {
        return BoundExpression::expression("(" + call[0].sql + " IS NOT NULL)", {SqlType::Int},
                                           false);
    }
    return BoundExpression::expression(callText("kap_isdate", call.text(0)), {SqlType::Int}, false);
}

constexpr std::array kDateFunctions = std::to_array<ScalarFunction>({
    {"getdate", 0, 0, now},
    {"getutcdate", 0, 0, universalNow},
    {"sysdatetime", 0, 0, now},
    {"sysutcdatetime", 0, 0, universalNow},
    {"eomonth", 1, 2, endOfMonth},
    {"datefromparts", 3, 3, fromParts<SqlType::Date>},
    {"smalldatetimefromparts", 5, 5, fromParts<SqlType::SmallDateTime>},
    {"datetimefromparts", 7, 7, fromParts<SqlType::DateTime>},
    {"year", 1, 1, year},
    {"month", 1, 1, month},
    {"day", 1, 1, day},
    {"datepart", 2, 2, datePart, true},
    {"datename", 2, 2, dateName, true},
    {"dateadd", 3, 3, dateAdd, true},
    {"datediff", 3, 3, dateDiff, true},
    {"isdate", 1, 1, isDate},
});

}  // namespace

std::span<const ScalarFunction> dateFunctions() {
    return kDateFunctions;
}

}  // namespace kap::engine
