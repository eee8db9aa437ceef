#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/values/date_part.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

sql::Expression partCode(DatePart part) {
    return sql::number(static_cast<int>(part));
}

bool isTimeOfDay(DatePart part) {
    return part >= DatePart::Hour && part <= DatePart::Nanosecond;
}

bool isFine(DatePart part) {
    return part == DatePart::Microsecond || part == DatePart::Nanosecond;
}

constexpr TypeSpec kFineDate{SqlType::DateTime2, 0, 0, 7};
constexpr TypeSpec kOffsetDate{SqlType::DateTimeOffset, 0, 0, 7};

// Whether a function works with a part of this type. Differences are counted in any part that a
// date has, also one that its type leaves out.
bool isSupported(DatePart part, SqlType type, std::string_view function) {
    const bool moves = function == "dateadd";
    if (part == DatePart::TimeZone) {
        return (type == SqlType::DateTime2 || type == SqlType::DateTimeOffset) && !moves &&
               !function.starts_with("datediff");
    }
    if (function.starts_with("datediff")) return part != DatePart::IsoWeek;
    if (type == SqlType::Date && isTimeOfDay(part)) return false;
    if (type == SqlType::Time && !isTimeOfDay(part)) return false;
    if (!moves) return true;
    return part != DatePart::IsoWeek && (tsql::isFineDate(type) || !isFine(part));
}

void refusePart(const ScalarCall& call, std::string_view word, SqlType type) {
    throw tsql::ServerError(tsql::Message::DatePartNotSupported,
                            {word, call.name(), tsql::typeName(type)}, call.line);
}

DatePart wordPart(const ScalarCall& call) {
    const std::string_view word = call.word(0);
    const auto part = datePartNamed(word);
    if (!part) {
        throw tsql::ServerError(tsql::Message::UnknownOption, {word, call.name()}, call.line);
    }
    return *part;
}

sql::Expression namedPart(const ScalarCall& call, SqlType type) {
    const DatePart part = wordPart(call);
    if (!isSupported(part, type, call.name())) refusePart(call, call.word(0), type);
    return partCode(part);
}

// A text is the date that has what is asked for: one of datetime where it can be read so.
BoundExpression readDate(const ScalarCall& call, std::size_t index, DatePart part) {
    const BoundExpression& argument = call.arguments[index];
    if (!tsql::isText(argument.type.type)) return call.instant(index);
    if (part == DatePart::TimeZone) return call.binder.convertTo(argument, kOffsetDate, call.line);
    if (isFine(part)) return call.binder.convertTo(argument, kFineDate, call.line);
    if (argument.constant() == nullptr) return call.instant(index);
    try {
        return call.instant(index);
    } catch (const tsql::ServerError&) {
        return call.binder.convertTo(argument, kFineDate, call.line);
    }
}

bool isFine(const BoundExpression& date) {
    return tsql::isFineDate(date.type.type);
}

BoundExpression partCall(const BoundExpression& date, const sql::Expression& part) {
    return BoundExpression::expression(isFine(date)
                                           ? sql::call(fn::kFinePart, part, date.tree, date.type)
                                           : sql::call(fn::kDatepart, part, date.tree),
                                       {SqlType::Int}, date.nullable);
}

BoundExpression partOfDate(ScalarCall& call, DatePart part, std::string_view word) {
    const BoundExpression date = readDate(call, 0, part);
    if (!isSupported(part, date.type.type, "datepart")) {
        throw tsql::ServerError(tsql::Message::DatePartNotSupported,
                                {word, "datepart", tsql::typeName(date.type.type)}, call.line);
    }
    return partCall(date, partCode(part));
}

BoundExpression year(ScalarCall& call) {
    return partOfDate(call, DatePart::Year, "year");
}
BoundExpression month(ScalarCall& call) {
    return partOfDate(call, DatePart::Month, "month");
}
BoundExpression day(ScalarCall& call) {
    return partOfDate(call, DatePart::Day, "day");
}

// The arguments that are bound start behind the word.
BoundExpression datePart(ScalarCall& call) {
    const BoundExpression date = readDate(call, 0, wordPart(call));
    return partCall(date, namedPart(call, date.type.type));
}

BoundExpression dateName(ScalarCall& call) {
    const BoundExpression date = readDate(call, 0, wordPart(call));
    const sql::Expression part = namedPart(call, date.type.type);
    constexpr int kNameLength = 30;
    return BoundExpression::expression(isFine(date)
                                           ? sql::call(fn::kFineName, part, date.tree, date.type)
                                           : sql::call(fn::kDatename, part, date.tree),
                                       {SqlType::NVarChar, kNameLength}, date.nullable);
}

BoundExpression dateAdd(ScalarCall& call) {
    const BoundExpression date = call.instant(1);
    const BoundExpression count = call.binder.castTo(call[0], {SqlType::BigInt}, 0, call.line);
    return BoundExpression::expression(
        sql::call(isFine(date) ? fn::kFineDateadd : fn::kDateadd, namedPart(call, date.type.type),
                  count.tree, date.tree, date.type),
        date.type, call.anyNullable());
}

sql::Expression fineDifference(const fn::Function& function, const sql::Expression& part,
                               const BoundExpression& from, const BoundExpression& to) {
    return sql::call(function, part, from.tree, from.type, to.tree, to.type);
}

BoundExpression dateDiff(ScalarCall& call) {
    const DatePart part = wordPart(call);
    const BoundExpression from = readDate(call, 0, part);
    const BoundExpression to = readDate(call, 1, part);
    const sql::Expression code = namedPart(call, from.type.type);
    return BoundExpression::expression(isFine(from) || isFine(to)
                                           ? fineDifference(fn::kFineDatediff, code, from, to)
                                           : sql::call(fn::kDatediff, code, from.tree, to.tree),
                                       {SqlType::Int}, call.anyNullable());
}

BoundExpression bigDateDiff(ScalarCall& call) {
    const DatePart part = wordPart(call);
    const BoundExpression from = readDate(call, 0, part);
    return BoundExpression::expression(
        fineDifference(fn::kDatediffBig, namedPart(call, from.type.type), from,
                       readDate(call, 1, part)),
        {SqlType::BigInt}, call.anyNullable());
}

BoundExpression now(ScalarCall& /*call*/) {
    return BoundExpression::expression(sql::call(fn::kNow), {SqlType::DateTime}, false);
}

BoundExpression universalNow(ScalarCall& /*call*/) {
    return BoundExpression::expression(sql::call(fn::kUtcnow), {SqlType::DateTime}, false);
}

BoundExpression systemTime(const TypeSpec& type, bool universal) {
    return BoundExpression::expression(sql::call(fn::kSysnow, type, universal ? 1 : 0), type,
                                       false);
}

BoundExpression systemNow(ScalarCall& /*call*/) {
    return systemTime(kFineDate, false);
}

BoundExpression systemUniversalNow(ScalarCall& /*call*/) {
    return systemTime(kFineDate, true);
}

BoundExpression systemOffsetNow(ScalarCall& /*call*/) {
    return systemTime(kOffsetDate, false);
}

// EOMONTH(date [, months]): the last day of the month so many months on.
BoundExpression endOfMonth(ScalarCall& call) {
    sql::Expression months = call.arguments.size() > 1 ? call.shortInteger(1) : sql::number(0);
    BoundExpression date = readDate(call, 0, DatePart::Month);
    if (isFine(date)) date = call.binder.castTo(date, {SqlType::Date}, 0, call.line);
    return BoundExpression::expression(sql::call(fn::kEomonth, date.tree, std::move(months)),
                                       {SqlType::Date}, call.anyNullable());
}

TypeSpec offsetTypeOf(const BoundExpression& date) {
    return {SqlType::DateTimeOffset, 0, 0,
            tsql::isDate(date.type.type) ? tsql::scaleOf(date.type) : kOffsetDate.scale};
}

// An offset is a text or a number of minutes.
sql::Expression zoneArgument(const ScalarCall& call) {
    return tsql::isText(call.arguments[1].type.type) ? call.arguments[1].tree : call.integer(1);
}

BoundExpression switchOffset(ScalarCall& call) {
    const BoundExpression date = call.binder.convertTo(call[0], offsetTypeOf(call[0]), call.line);
    return BoundExpression::expression(
        sql::call(fn::kSwitchoffset, date.tree, date.type, zoneArgument(call)), date.type,
        call.anyNullable());
}

BoundExpression toDateTimeOffset(ScalarCall& call) {
    const TypeSpec result = offsetTypeOf(call[0]);
    const TypeSpec local{SqlType::DateTime2, 0, 0, result.scale};
    const BoundExpression date = call.binder.castTo(call[0], local, 0, call.line);
    return BoundExpression::expression(
        sql::call(fn::kTodatetimeoffset, date.tree, local, zoneArgument(call), result), result,
        call.anyNullable());
}

// date AT TIME ZONE name
BoundExpression atTimeZone(ScalarCall& call) {
    const BoundExpression& date = call[0];
    const bool taken = tsql::isDateTime(date.type.type) || date.type.type == SqlType::DateTime2 ||
                       date.type.type == SqlType::DateTimeOffset;
    if (!taken) {
        throw tsql::ServerError(tsql::Message::InvalidArgumentType,
                                {tsql::typeName(date.type.type), "1", "AT TIME ZONE"}, call.line);
    }
    const TypeSpec result = offsetTypeOf(date);
    return BoundExpression::expression(
        sql::call(fn::kAtTimeZone, date.tree, date.type, call.text(1), result), result, true);
}

// TIMEFROMPARTS and its kin: the last argument says the decimals and must be written out.
template <SqlType kType>
BoundExpression fineFromParts(ScalarCall& call) {
    const BoundExpression& last = call.arguments.back();
    const auto* scale = std::get_if<std::int64_t>(last.constant());
    if (scale == nullptr || !tsql::isInteger(last.type.type)) {
        throw tsql::ServerError(tsql::Message::WrongScaleArgument, {tsql::typeName(kType)},
                                call.line);
    }
    if (*scale < 0 || *scale > kFineDate.scale) {
        throw tsql::ServerError(tsql::Message::InvalidScale,
                                {plain::text(call.line), plain::text(*scale)}, call.line);
    }
    const TypeSpec type{kType, 0, 0, static_cast<int>(*scale)};
    sql::Call parts{fn::kFineFromparts, {sql::typeNumber(type)}};
    for (std::size_t i = 0; i + 1 < call.arguments.size(); ++i)
        parts.arguments.push_back(call.shortInteger(i));
    return BoundExpression::expression(std::move(parts), type, call.anyNullable());
}

// DATEFROMPARTS(year, month, day) and its kin, which take the parts of the time behind them.
template <SqlType kType>
BoundExpression fromParts(ScalarCall& call) {
    sql::Call parts{fn::kFromparts, {sql::typeNumber({kType})}};
    for (std::size_t i = 0; i < call.arguments.size(); ++i)
        parts.arguments.push_back(call.shortInteger(i));
    return BoundExpression::expression(std::move(parts), {kType}, call.anyNullable());
}

BoundExpression isDate(ScalarCall& call) {
    if (isFine(call[0])) call.refuseType(0);
    if (tsql::isDate(call[0].type.type)) {
        return BoundExpression::expression(sql::isNotNull(call[0].tree), {SqlType::Int}, false);
    }
    return BoundExpression::expression(sql::call(fn::kIsdate, call.text(0)), {SqlType::Int}, false);
}

constexpr std::array kDateFunctions = std::to_array<ScalarFunction>({
    {"getdate", 0, 0, now},
    {"getutcdate", 0, 0, universalNow},
    {"sysdatetime", 0, 0, systemNow},
    {"sysutcdatetime", 0, 0, systemUniversalNow},
    {"sysdatetimeoffset", 0, 0, systemOffsetNow},
    {"switchoffset", 2, 2, switchOffset},
    {"todatetimeoffset", 2, 2, toDateTimeOffset},
    {tsql::kAtTimeZone, 2, 2, atTimeZone},
    {"eomonth", 1, 2, endOfMonth},
    {"datefromparts", 3, 3, fromParts<SqlType::Date>},
    {"smalldatetimefromparts", 5, 5, fromParts<SqlType::SmallDateTime>},
    {"datetimefromparts", 7, 7, fromParts<SqlType::DateTime>},
    {"timefromparts", 5, 5, fineFromParts<SqlType::Time>},
    {"datetime2fromparts", 8, 8, fineFromParts<SqlType::DateTime2>},
    {"datetimeoffsetfromparts", 10, 10, fineFromParts<SqlType::DateTimeOffset>},
    {"year", 1, 1, year},
    {"month", 1, 1, month},
    {"day", 1, 1, day},
    {"datepart", 2, 2, datePart, true},
    {"datename", 2, 2, dateName, true},
    {"dateadd", 3, 3, dateAdd, true},
    {"datediff", 3, 3, dateDiff, true},
    {"datediff_big", 3, 3, bigDateDiff, true},
    {"isdate", 1, 1, isDate},
});

}  // namespace

std::span<const ScalarFunction> dateFunctions() {
    return kDateFunctions;
}

}  // namespace kap::engine
