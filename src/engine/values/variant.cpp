#include "engine/values/variant.hpp"

#include <algorithm>
#include <exception>
#include <optional>
#include <unordered_map>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "base/text_order.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/fine_dates.hpp"
#include "engine/values/text_collation.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kLongestBytes = 8000;

// A variant taken apart without copying anything.
struct VariantParts {
    TypeSpec type;
    std::string_view content;
};

// Looked up for each value that is compared.
std::optional<SqlType> typeOfName(std::string_view name) {
    static const std::unordered_map<std::string_view, SqlType> kTypes = [] {
        std::unordered_map<std::string_view, SqlType> types;
        for (int i = 0; i < tsql::kSqlTypes; ++i) {
            const auto type = static_cast<SqlType>(i);
            types.emplace(tsql::typeName(type), type);
        }
        return types;
    }();
    const auto found = kTypes.find(name);
    return found == kTypes.end() ? std::nullopt : std::optional(found->second);
}

// "(8,2)" or "(20)" as the numbers of a type; false for anything else.
bool readNumbers(std::string_view text, TypeSpec& type) {
    if (text.size() < 3 || text.front() != '(' || text.back() != ')') return false;
    text = text.substr(1, text.size() - 2);
    const std::size_t comma = text.find(',');
    const auto first = plain::readInt(text.substr(0, comma));
    if (!first) return false;
    if (tsql::isDecimal(type.type)) {
        const auto second =
            comma == std::string_view::npos ? std::nullopt : plain::readInt(text.substr(comma + 1));
        if (!second) return false;
        type = tsql::decimalType(type.type, *first, *second);
        return true;
    }
    (tsql::isFineDate(type.type) ? type.scale : type.length) = *first;
    return true;
}

std::optional<VariantParts> partsOfVariant(std::string_view variant) {
    const std::size_t colon = variant.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    VariantParts parts;
    parts.content = variant.substr(colon + 1);
    const std::string_view head = variant.substr(0, colon);
    const std::size_t bracket = std::min(head.find('('), head.size());
    const auto type = typeOfName(head.substr(0, bracket));
    if (!type || *type == SqlType::SqlVariant) return std::nullopt;
    parts.type = tsql::factsOf(*type).usual;
    if (bracket < head.size() && !readNumbers(head.substr(bracket), parts.type)) {
        return std::nullopt;
    }
    return parts;
}

// A decimal of more digits than a word holds.
std::optional<Wide> wholeNumber(std::string_view digits) {
    if (const auto small = plain::readWhole(digits)) return Wide{*small};
    const auto read = parseScaled(digits);
    if (!read || read->scale != 0) return std::nullopt;
    return read->value;
}

std::optional<Value> contentOf(const VariantParts& parts) {
    if (tsql::isExact(parts.type.type)) {
        const auto whole = wholeNumber(parts.content);
        return whole ? std::optional(exactValue(*whole, parts.type)) : std::nullopt;
    }
    switch (storedAs(parts.type)) {
        case ado::Storage::Integer: {
            const auto whole = plain::readWhole(parts.content);
            return whole ? std::optional<Value>(*whole) : std::nullopt;
        }
        case ado::Storage::Real: {
            const auto real = plain::readReal(parts.content);
            return real && real->inRange ? std::optional<Value>(real->value) : std::nullopt;
        }
        case ado::Storage::Binary: {
            auto bytes = hex::toBytes(parts.content);
            return bytes ? std::optional<Value>(Blob{std::move(*bytes)}) : std::nullopt;
        }
        case ado::Storage::Text:
            break;
    }
    return std::string(parts.content);
}

// What has no limit takes the shortest type that holds the value.
TypeSpec limitedType(const Value& value, TypeSpec type) {
    if (type.length != tsql::kMaxLength) return type;
    const bool binary = tsql::isBinary(type.type);
    const std::size_t length =
        binary ? std::get<Blob>(value).bytes.size() : unitLength(std::get<std::string>(value));
    const std::size_t most = tsql::isNational(type.type) ? kLongestBytes / 2 : kLongestBytes;
    if (length > most) throw tsql::ServerError(tsql::Message::Truncated);
    type.type = binary                        ? SqlType::VarBinary
                : tsql::isNational(type.type) ? SqlType::NVarChar
                                              : SqlType::VarChar;
    type.length = std::max(1, static_cast<int>(length));
    return type;
}

struct ContentWriter {
    const TypeSpec& type;

    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(std::int64_t value) const { return plain::text(value); }
    std::string operator()(double value) const {
        return type.type == SqlType::Real ? plain::shortest(static_cast<float>(value))
                                          : plain::shortest(value);
    }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const Blob& value) const {
        if (tsql::isDecimal(type.type)) return scaledText(wideFromBytes(value.bytes), 0);
        return hex::ofBytes(value.bytes);
    }
};

// From the lowest family to the highest.
int familyOf(SqlType type) {
    constexpr int kBytes = 1;
    constexpr int kTexts = 2;
    constexpr int kExact = 3;
    constexpr int kApproximate = 4;
    constexpr int kDates = 5;
    if (tsql::isDate(type)) return kDates;
    if (tsql::isApproximate(type)) return kApproximate;
    if (tsql::isExact(type)) return kExact;
    if (tsql::isText(type)) return kTexts;
    return tsql::isBinary(type) ? kBytes : 0;
}

std::weak_ordering compareExact(const VariantParts& left, const VariantParts& right) {
    const Wide one = wholeNumber(left.content).value_or(0);
    const Wide other = wholeNumber(right.content).value_or(0);
    const int leftScale = storedScale(left.type);
    const int rightScale = storedScale(right.type);
    const auto order = [](const auto& a, const auto& b) {
        return a < b   ? std::weak_ordering::less
               : b < a ? std::weak_ordering::greater
                       : std::weak_ordering::equivalent;
    };
    if (leftScale == rightScale) return order(one, other);
    const int scale = std::max(leftScale, rightScale);
    const auto first = rescale(one, leftScale, scale, Rounding::HalfAway);
    const auto second = rescale(other, rightScale, scale, Rounding::HalfAway);
    if (first && second) return order(*first, *second);
    // One of them has more digits than fit: it is the farther one.
    return order(first ? *first : farthest(one < 0), second ? *second : farthest(other < 0));
}

std::weak_ordering compareParts(const VariantParts& left, const VariantParts& right) {
    const SqlType type = left.type.type;
    if (const auto families = familyOf(type) <=> familyOf(right.type.type); std::is_neq(families)) {
        return families;
    }
    if (tsql::isExact(type)) return compareExact(left, right);
    if (tsql::isText(type)) return compareTexts(left.content, right.content);
    if (tsql::isApproximate(type)) {
        const auto one = plain::readReal(left.content);
        const auto other = plain::readReal(right.content);
        return std::weak_order(one ? one->value : 0.0, other ? other->value : 0.0);
    }
    if (tsql::isDate(type)) {
        const auto one = contentOf(left);
        const auto other = contentOf(right);
        if (!one || !other) return left.content <=> right.content;
        return instantFrom(*one, left.type).universal() <=>
               instantFrom(*other, right.type).universal();
    }
    return left.content <=> right.content;
}

// Property of a variant: a name, or a number.
Value named(std::string_view text) {
    constexpr TypeSpec kName{SqlType::NVarChar, 128};
    return variantOf(std::string(text), kName);
}

Value counted(int number) {
    return variantOf(std::int64_t{number}, {SqlType::Int});
}

}  // namespace

std::string variantOf(const Value& value, const TypeSpec& given) {
    TypeSpec type = limitedType(value, given);
    // A sum within another is kept shorter than its type says.
    if (tsql::isDecimal(type.type)) type = tsql::decimalType(type.type, type.precision, type.scale);
    return tsql::typeText(type) + ":" + std::visit(ContentWriter{type}, value);
}

TypedValue valueOfVariant(std::string_view variant) {
    const auto parts = partsOfVariant(variant);
    auto value = parts ? contentOf(*parts) : std::nullopt;
    if (!value) {
        throw tsql::ServerError(tsql::Message::ColumnHoldsAnotherType, {"sql_variant"});
    }
    return {std::move(*value), parts->type};
}

bool isVariantText(std::string_view text) {
    const auto parts = partsOfVariant(text);
    return parts && contentOf(*parts).has_value();
}

std::weak_ordering compareVariants(std::string_view left, std::string_view right) noexcept {
    try {
        const auto one = partsOfVariant(left);
        const auto other = partsOfVariant(right);
        if (one && other) return compareParts(*one, *other);
    } catch (const std::exception&) {
        return left <=> right;  // no memory, or no such date: nobody could be told
    }
    return left <=> right;
}

int dataBytes(const TypedValue& value) {
    if (const auto* blob = std::get_if<Blob>(&value.value);
        blob != nullptr && tsql::isBinary(value.type.type)) {
        return static_cast<int>(blob->bytes.size());
    }
    if (tsql::isText(value.type.type)) {
        const int bytesOfUnit = tsql::isNational(value.type.type) ? 2 : 1;
        return static_cast<int>(unitLength(std::get<std::string>(value.value))) * bytesOfUnit;
    }
    return tsql::bytesOf(value.type);
}

int totalBytes(const TypedValue& value) {
    // The number of the type and of its form; behind them the digits of a decimal, the scale of a
    // fine date, the length of bytes, and of texts also their collation.
    constexpr int kHead = 2;
    constexpr int kDigits = 2;
    constexpr int kLength = 2;
    constexpr int kCollation = 4;
    int notes = kHead;
    if (tsql::isDecimal(value.type.type)) notes += kDigits;
    if (tsql::isFineDate(value.type.type)) ++notes;
    if (tsql::isBinary(value.type.type)) notes += kLength;
    if (tsql::isText(value.type.type)) notes += kLength + kCollation;
    return notes + dataBytes(value);
}

Value variantProperty(std::string_view variant, std::string_view property) {
    const TypedValue value = valueOfVariant(variant);
    const std::string wanted = asciiLower(property);
    if (wanted == "basetype") return named(tsql::typeName(value.type.type));
    if (wanted == "precision") return counted(tsql::precisionOf(value.type));
    if (wanted == "scale") return counted(tsql::scaleOf(value.type));
    if (wanted == "totalbytes") return counted(totalBytes(value));
    if (wanted == "maxlength") return counted(tsql::bytesOf(value.type));
    if (wanted == "collation" && tsql::isText(value.type.type)) {
        return named(kDatabaseCollation);
    }
    return {};
}

}  // namespace kap::engine
