#include "engine/executor/column_info.hpp"

#include <algorithm>
#include <cstddef>

#include "data/value_type.hpp"

namespace kap::engine {
namespace {

using enum ado::DataTypeEnum;
using tsql::SqlType;

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
    const tsql::TypeFacts& facts = tsql::factsOf(reportedType(type));
    ado::ColumnInfo info;
    info.type = static_cast<ado::DataTypeEnum>(facts.clientType);
    info.definedSize = facts.clientSize == 0 ? type.length : facts.clientSize;
    info.precision = static_cast<std::uint8_t>(facts.clientPrecision);
    info.numericScale = static_cast<std::uint8_t>(facts.clientScale);
    info.fixedLength = facts.clientFixed;
    info.isLong = tsql::isLarge(reportedType(type));
    info.engineType = packType(type);
    if (tsql::isFineDate(type.type)) info.definedSize = tsql::precisionOf(type);
    if (tsql::isDecimal(type.type)) {
        info.precision = static_cast<std::uint8_t>(type.precision);
        info.numericScale = static_cast<std::uint8_t>(type.scale);
        info.wideDecimal = tsql::isWideDecimal(type);
    }
    return info;
}

tsql::TypeSpec typeOf(ado::DataTypeEnum type, std::uint8_t numericScale) {
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
            return {SqlType::Decimal, 0, ado::kWidestDecimal, numericScale};
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
        info.generated = column.computed;
        if (column.key) {
            const Table* table = catalogue.find(column.baseTable);
            info.key = table != nullptr && hasWholeKey(columns, *table);
        }
        infos.push_back(std::move(info));
    }
    return infos;
}

}  // namespace kap::engine
