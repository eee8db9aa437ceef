#include "engine/values/value.hpp"

#include <limits>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/hexadecimal.hpp"
#include "base/quoting.hpp"
#include "tsql/parser.hpp"

namespace kap::engine {

namespace {

constexpr int kLengthShift = 8;
constexpr int kPrecisionShift = 40;
constexpr int kScaleShift = 48;
constexpr std::int64_t kByte = 0xFF;
constexpr std::int64_t kWord = 0xFFFFFFFF;
constexpr int kMoneyScale = 4;
constexpr const char* kWideSuffix = " wide";

std::string realLiteral(double value) {
    std::string text = plain::shortest(value);
    // Without a point or an exponent SQLite would read a whole number.
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

std::string integerLiteral(std::int64_t value) {
    // The lowest value has no literal: its digits without the sign overflow.
    if (value == std::numeric_limits<std::int64_t>::min()) return "(-9223372036854775807 - 1)";
    return plain::text(value);
}

struct LiteralWriter {
    std::string operator()(std::monostate) const { return "NULL"; }
    std::string operator()(std::int64_t value) const { return integerLiteral(value); }
    std::string operator()(double value) const { return realLiteral(value); }
    std::string operator()(const std::string& value) const { return sqlText(value); }
    std::string operator()(const Blob& value) const {
        return "X'" + hex::ofBytes(value.bytes) + "'";
    }
};

}  // namespace

ado::Storage storedAs(const tsql::TypeSpec& spec) {
    using tsql::SqlType;
    const SqlType type = spec.type;
    if (tsql::isWideDecimal(spec)) return ado::Storage::Binary;
    if (tsql::isExact(type) || type == SqlType::Time || type == SqlType::DateTime2) {
        return ado::Storage::Integer;
    }
    if (type == SqlType::DateTimeOffset) return ado::Storage::Text;
    if (tsql::isApproximate(type) || tsql::isDate(type)) return ado::Storage::Real;
    return tsql::isBinary(type) ? ado::Storage::Binary : ado::Storage::Text;
}

std::string declaredType(const tsql::TypeSpec& type) {
    return tsql::typeText(type) + (tsql::isWideDecimal(type) ? kWideSuffix : "");
}

tsql::TypeSpec typeDeclaredAs(std::string_view declared) {
    const bool wide = declared.ends_with(kWideSuffix);
    if (wide) declared.remove_suffix(std::string_view(kWideSuffix).size());
    tsql::TypeSpec type = tsql::parseType(declared);
    if (tsql::isDecimal(type.type) && !wide) type.length = 0;
    return type;
}

std::int64_t packType(const tsql::TypeSpec& type) {
    return static_cast<std::int64_t>(type.type) |
           (static_cast<std::int64_t>(type.length + 1) << kLengthShift) |
           (static_cast<std::int64_t>(type.precision) << kPrecisionShift) |
           (static_cast<std::int64_t>(type.scale) << kScaleShift);
}

tsql::TypeSpec unpackType(std::int64_t packed) {
    return {static_cast<tsql::SqlType>(packed & kByte),
            static_cast<int>((packed >> kLengthShift) & kWord) - 1,
            static_cast<int>((packed >> kPrecisionShift) & kByte),
            static_cast<int>((packed >> kScaleShift) & kByte)};
}

int storedScale(const tsql::TypeSpec& type) {
    if (tsql::isDecimal(type.type)) return type.scale;
    return tsql::isMoney(type.type) ? kMoneyScale : 0;
}

std::string sqlLiteral(const Value& value) {
    return std::visit(LiteralWriter{}, value);
}

std::string sqlText(std::string_view text) {
    // SQLite's own literals end at a NUL character.
    if (text.find('\0') != std::string_view::npos)
        return "CAST(X'" + hex::ofBytes(text) + "' AS TEXT)";
    return textConstant(text);
}

std::string sqlName(std::string_view name) {
    return inQuotes(name);
}

}  // namespace kap::engine
