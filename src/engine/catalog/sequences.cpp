#include "engine/catalog/sequences.hpp"

#include <array>
#include <limits>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/catalog/object_names.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::Message;
using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

struct SequenceRange {
    std::int64_t least;
    std::int64_t most;
};

template <typename Number>
constexpr SequenceRange numbersOf() {
    return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
}

// The numbers of a type, as far as 64 bits hold them; nothing for a type that counts nothing.
std::optional<SequenceRange> numbersOf(const TypeSpec& type) {
    switch (type.type) {
        case SqlType::TinyInt:
            return numbersOf<std::uint8_t>();
        case SqlType::SmallInt:
            return numbersOf<std::int16_t>();
        case SqlType::Int:
            return numbersOf<std::int32_t>();
        case SqlType::BigInt:
            return numbersOf<std::int64_t>();
        case SqlType::Decimal:
        case SqlType::Numeric: {
            if (type.scale != 0) return std::nullopt;
            constexpr int kDigits = std::numeric_limits<std::int64_t>::digits10;
            if (type.precision > kDigits) return numbersOf<std::int64_t>();
            std::int64_t most = 1;
            for (int i = 0; i < type.precision; ++i)
                most *= 10;
            return SequenceRange{1 - most, most - 1};
        }
        default:
            return std::nullopt;
    }
}

// What no order of the options can make right.
void check(const Sequence& sequence, int line) {
    const std::string_view name = bareName(sequence.name);
    const auto range = numbersOf(sequence.type);
    if (!range) throw ServerError(Message::WrongSequenceType, {name}, line);
    const std::array<std::pair<const char*, std::int64_t>, 4> values{
        {{"START WITH", sequence.start},
         {"MINVALUE", sequence.minimum},
         {"MAXVALUE", sequence.maximum},
         {"INCREMENT BY", sequence.increment}}};
    for (const auto& [argument, value] : values) {
        // A step back counts in types that have no negative numbers, too.
        const bool step = value == sequence.increment && value < 0 && range->least == 0;
        if (step || (value >= range->least && value <= range->most)) continue;
        throw ServerError(Message::WrongSequenceValue, {argument}, line);
    }
    if (sequence.increment == 0) throw ServerError(Message::ZeroIncrement, {name}, line);
    if (sequence.minimum >= sequence.maximum) {
        throw ServerError(Message::MinimumNotLess, {name}, line);
    }
    if (sequence.stepsBetween(sequence.nearEnd(), sequence.farEnd()) == 0) {
        throw ServerError(Message::IncrementTooLarge, {name}, line);
    }
    if (!sequence.holds(sequence.start)) throw ServerError(Message::StartOutOfRange, {name}, line);
    if (sequence.caches && sequence.cacheSize && *sequence.cacheSize <= 0) {
        throw ServerError(Message::WrongCacheSize, {name}, line);
    }
}

// What a statement says of the limits, the step and the cache.
void take(Sequence& sequence, const tsql::SequenceStatement& statement) {
    const auto range = numbersOf(sequence.type);
    if (statement.increment) sequence.increment = *statement.increment;
    if (range && statement.minimum.none) sequence.minimum = range->least;
    if (range && statement.maximum.none) sequence.maximum = range->most;
    if (statement.minimum.value) sequence.minimum = *statement.minimum.value;
    if (statement.maximum.value) sequence.maximum = *statement.maximum.value;
    if (statement.cycles) sequence.cycles = *statement.cycles;
    if (!statement.caches) return;
    sequence.caches = *statement.caches;
    sequence.cacheSize = statement.cacheSize;
}

}  // namespace

// Without a sign, for the ends of 64 bits are further apart than a number of 64 bits with one.
std::uint64_t Sequence::stepsBetween(std::int64_t from, std::int64_t to) const {
    const bool grows = increment > 0;
    const std::uint64_t distance =
        grows ? static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from)
              : static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(to);
    const auto step = static_cast<std::uint64_t>(increment);
    return distance / (grows ? step : 0 - step);
}

Sequence sequenceOf(const tsql::SequenceStatement& statement, const std::string& stored, int line) {
    Sequence result;
    result.name = stored;
    if (statement.type) result.type = *statement.type;
    if (const auto range = numbersOf(result.type)) {
        result.minimum = range->least;
        result.maximum = range->most;
    }
    take(result, statement);
    result.start = statement.start.value_or(result.increment < 0 ? result.maximum : result.minimum);
    check(result, line);
    return result;
}

Sequence altered(const Sequence& sequence, const tsql::SequenceStatement& statement, int line) {
    Sequence result = sequence;
    take(result, statement);
    if (statement.start) result.start = *statement.start;
    check(result, line);
    return result;
}

StoredObject storedObject(const Sequence& sequence) {
    std::string text =
        "AS " + tsql::typeText(sequence.type) + " START WITH " + plain::text(sequence.start) +
        " INCREMENT BY " + plain::text(sequence.increment) + " MINVALUE " +
        plain::text(sequence.minimum) + " MAXVALUE " + plain::text(sequence.maximum) +
        (sequence.cycles ? " CYCLE" : " NO CYCLE") + (sequence.caches ? " CACHE" : " NO CACHE");
    if (sequence.cacheSize) text += " " + plain::text(*sequence.cacheSize);
    return {0, StoredKind::Sequence, sequence.name, "", std::move(text)};
}

Sequence sequenceOf(const StoredObject& object) {
    return sequenceOf(tsql::parseSequenceOptions(object.text), object.name, 0);
}

}  // namespace kap::engine
