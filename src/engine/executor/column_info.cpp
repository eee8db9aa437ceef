#include "engine/executor/column_info.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kap::engine {
namespace {

using enum ado::DataTypeEnum;
using tsql::SqlType;

constexpr std::int32_t kLongBytes = 2147483647;
constexpr std::int32_t kLongCharacters = 1073741823;
constexpr std::uint8_t kNone = 255;
// The size of a size that is the type's length.
constexpr std::int32_t kLength = -1;

struct TypeRow {
    SqlType type;
    ado::DataTypeEnum code;
    std::int32_t size;
    std::uint8_t precision;
    std::uint8_t scale;
    bool fixed;
};

constexpr auto kTypes = std::to_array<TypeRow>({
    {SqlType::Bit, adBoolean, 2, kNone, kNone, true},
    {SqlType::TinyInt, adUnsignedTinyInt, 1, 3, kNone, true},
    {SqlType::SmallInt, adSmallInt, 2, 5, kNone, true},
    {SqlType::Int, adInteger, 4, 10, kNone, true},
    {SqlType::BigInt, adBigInt, 8, 19, kNone, true},
    {SqlType::Decimal, adNumeric, 19, 0, 0, true},
    {SqlType::Numeric, adNumeric, 19, 0, 0, true},
    {SqlType::Money, adCurrency, 8, 19, kNone, true},
    {SqlType::SmallMoney, adCurrency, 8, 10, kNone, true},
    {SqlType::Float, adDouble, 8, 15, kNone, true},
    {SqlType::Real, adSingle, 4, 7, kNone, true},
    {SqlType::Date, adDBDate, 6, 10, kNone, true},
    {SqlType::DateTime, adDBTimeStamp, 16, 23, 3, true},
    {SqlType::SmallDateTime, adDBTimeStamp, 16, 16, 0, true},
    {SqlType::Char, adChar, kLength, kNone, kNone, true},
    {SqlType::VarChar, adVarChar, kLength, kNone, kNone, false},
    {SqlType::NChar, adWChar, kLength, kNone, kNone, true},
    {SqlType::NVarChar, adVarWChar, kLength, kNone, kNone, false},
    {SqlType::Text, adLongVarChar, kLongBytes, kNone, kNone, false},
    {SqlType::NText, adLongVarWChar, kLongCharacters, kNone, kNone, false},
    {SqlType::Binary, adBinary, kLength, kNone, kNone, true},
    {SqlType::VarBinary, adVarBinary, kLength, kNone, kNone, false},
    {SqlType::Image, adLongVarBinary, kLongBytes, kNone, kNone, false},
    {SqlType::Timestamp, adBinary, 8, kNone, kNone, true},
    {SqlType::UniqueIdentifier, adGUID, 16, kNone, kNone, true},
});

constexpr bool inOrder() {
    for (std::size_t i = 0; i < kTypes.size(); ++i) {
        if (kTypes[i].type != static_cast<SqlType>(i)) {
            return false;
        }
    }
    return true;
}
static_assert(inOrder());

// A text or binary without a limit is reported as the long type of its family.
SqlType reportedType(const tsql::TypeSpec& type) {
    if (type.length != tsql::kMaxLength) {
        return type.type;
    }
    switch (type.type) {
        case SqlType::VarChar:
            return SqlType::Text;
        case SqlType::NVarChar:
            return SqlType::NText;
        case SqlType::VarBinary:
            return SqlType::Image;
        default:
            return type.type;
    }
}

bool hasWholeKey(const std::vector<ResultColumn>& columns, const Table& table) {
    return std::ranges::all_of(table.columns, [&](const Column& part) {
        return part.keyOrdinal == 0 ||
               std::ranges::any_of(columns, [&](const ResultColumn& column) {
                   return column.baseTable == table.name && column.baseColumn == part.name;
               });
    });
}

}  // namespace

ado::ColumnInfo typeInfo(const tsql::TypeSpec& type) {
    const TypeRow& row = kTypes.at(static_cast<std::size_t>(reportedType(type)));
    ado::ColumnInfo info;
    info.type = row.code;
    info.definedSize = row.size == kLength ? type.length : row.size;
    info.precision = row.precision;
    info.numericScale = row.scale;
    info.fixedLength = row.fixed;
    info.isLong = row.size == kLongBytes || row.size == kLongCharacters;
    if (row.code == adNumeric) {
        info.precision = static_cast<std::uint8_t>(type.precision);
        info.numericScale = static_cast<std::uint8_t>(type.scale);
    }
    return info;
}

tsql::TypeSpec typeOf(ado::DataTypeEnum type, std::uint8_t numericScale) {
    constexpr int kWidestDecimal = 18;
    switch (type) {
        case adBoolean:
            return {SqlType::Bit};
        case adUnsignedTinyInt:
            return {SqlType::TinyInt};
        case adSmallInt:
            return {SqlType::SmallInt};
        case adInteger:
            return {SqlType::Int};
        case adCurrency:
            return {SqlType::Money};
        case adNumeric:
        case adDecimal:
            return {SqlType::Decimal, 0, kWidestDecimal, numericScale};
        case adSingle:
            return {SqlType::Real};
        case adDouble:
            return {SqlType::Float};
        case adDBDate:
            return {SqlType::Date};
        case adDate:
        case adDBTime:
        case adDBTimeStamp:
            return {SqlType::DateTime};
        default:
            break;
    }
    switch (ado::storageOf(type)) {
        case ado::Storage::Integer:
            return {SqlType::BigInt};
        case ado::Storage::Real:
            return {SqlType::Float};
        case ado::Storage::Text:
            return {SqlType::NVarChar, tsql::kMaxLength};
        case ado::Storage::Binary:
            break;
    }
    return {SqlType::VarBinary, tsql::kMaxLength};
}

std::vector<ado::ColumnInfo> columnInfos(const std::vector<ResultColumn>& columns,
                                         const Catalogue& catalogue) {
    std::vector<ado::ColumnInfo> infos;
    infos.reserve(columns.size());
    for (const ResultColumn& column : columns) {
        ado::ColumnInfo info = typeInfo(column.type);
        info.name = column.name;
        info.nullable = column.nullable;
        info.baseTable = column.baseTable;
        info.baseColumn = column.baseColumn;
        info.identity = column.identity;
        info.rowVersion = column.rowVersion;
        if (column.key) {
            const Table* table = catalogue.find(column.baseTable);
            info.key = table != nullptr && hasWholeKey(columns, *table);
        }
        infos.push_back(std::move(info));
    }
    return infos;
}

}  // namespace kap::engine
