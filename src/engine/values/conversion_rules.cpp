#include "engine/values/convert.hpp"

namespace kap::engine {

using tsql::SqlType;

namespace {

ConversionRule when(bool implicit) {
    return implicit ? ConversionRule::Implicit : ConversionRule::ExplicitOnly;
}

ConversionRule fromNumber(SqlType from, SqlType to) {
    if (tsql::isNumber(to)) return ConversionRule::Implicit;
    if (tsql::isDate(to)) {
        return tsql::isDateTime(to) ? ConversionRule::Implicit : ConversionRule::Never;
    }
    if (tsql::isText(to)) return when(!tsql::isMoney(from));
    if (tsql::isBinary(to)) {
        return tsql::isInteger(from) ? ConversionRule::Implicit : ConversionRule::Never;
    }
    return ConversionRule::Never;
}

ConversionRule fromDate(SqlType from, SqlType to) {
    const bool dayAndTime = (from == SqlType::Date && to == SqlType::Time) ||
                            (from == SqlType::Time && to == SqlType::Date);
    if (dayAndTime) return ConversionRule::Never;
    if (tsql::isDate(to) || tsql::isText(to)) return ConversionRule::Implicit;
    if (tsql::isNumber(to) && tsql::isDateTime(from)) return ConversionRule::ExplicitOnly;
    return ConversionRule::Never;
}

ConversionRule fromText(SqlType from, SqlType to) {
    if (tsql::isText(to)) return ConversionRule::Implicit;
    if (tsql::isLarge(from)) return ConversionRule::Never;
    if (tsql::isBinary(to)) return ConversionRule::ExplicitOnly;
    return ConversionRule::Implicit;
}

ConversionRule fromBinary(SqlType from, SqlType to) {
    if (tsql::isBinary(to)) return ConversionRule::Implicit;
    if (tsql::isLarge(from)) return ConversionRule::Never;
    if (tsql::isText(to) || tsql::isInteger(to) || tsql::isMoney(to))
        return ConversionRule::Implicit;
    return ConversionRule::Never;
}

// What a sql_variant can hold goes in by itself, and comes out on request only.
ConversionRule withVariant(SqlType other, bool into) {
    const bool held = !tsql::isLarge(other) && other != SqlType::Timestamp;
    if (!held) return ConversionRule::Never;
    return into ? ConversionRule::Implicit : ConversionRule::ExplicitOnly;
}

}  // namespace

ConversionRule conversionRule(SqlType from, SqlType to) {
    if (from == to) return ConversionRule::Implicit;
    if (tsql::isVariant(to)) return withVariant(from, true);
    if (tsql::isVariant(from)) return withVariant(to, false);
    // Large types take part only where their own kind of value is expected.
    if (tsql::isLarge(to) && tsql::isText(to) != tsql::isText(from)) return ConversionRule::Never;
    if (tsql::isNumber(from)) return fromNumber(from, to);
    if (tsql::isDate(from)) return fromDate(from, to);
    if (tsql::isText(from)) return fromText(from, to);
    if (tsql::isBinary(from)) return fromBinary(from, to);
    return tsql::isText(to) ? ConversionRule::Implicit : ConversionRule::Never;
}

}  // namespace kap::engine
