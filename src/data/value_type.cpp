#include "data/value_type.hpp"

#include "data/failures.hpp"

namespace kap::ado {

using enum DataTypeEnum;

std::int32_t widthOf(DataTypeEnum type) noexcept {
    switch (type) {
        case adTinyInt:
        case adUnsignedTinyInt:
            return 1;
        case adSmallInt:
        case adUnsignedSmallInt:
        case adBoolean:
            return 2;
        case adInteger:
        case adUnsignedInt:
        case adSingle:
        case adError:
            return 4;
        case adDBDate:
        case adDBTime:
            return 6;
        case adDouble:
        case adCurrency:
        case adDate:
        case adBigInt:
            return 8;
        case adDBTimeStamp:
        case adGUID:
            return 16;
        case adDecimal:
        case adNumeric:
            return 19;
        default:
            return 0;
    }
}

bool isLongType(DataTypeEnum type) noexcept {
    return type == adLongVarChar || type == adLongVarWChar || type == adLongVarBinary ||
           type == adBSTR || type == adVariant;
}

bool isDecimalType(DataTypeEnum type) noexcept {
    return type == adNumeric || type == adDecimal;
}

std::uint8_t usualPrecision(DataTypeEnum type) noexcept {
    constexpr std::uint8_t kNone = 255;
    switch (type) {
        case adTinyInt:
        case adUnsignedTinyInt:
            return 3;
        case adSmallInt:
        case adUnsignedSmallInt:
            return 5;
        case adInteger:
        case adUnsignedInt:
        case adDBDate:
            return 10;
        case adBigInt:
        case adCurrency:
            return 19;
        case adSingle:
            return 7;
        case adDouble:
            return 15;
        case adDecimal:
        case adNumeric:
            return kWidestDecimal;
        case adDBTimeStamp:
            return 23;
        default:
            return kNone;
    }
}

std::uint8_t usualScale(DataTypeEnum type) noexcept {
    constexpr std::uint8_t kNone = 255;
    constexpr std::uint8_t kMilliseconds = 3;
    if (type == adDBTimeStamp) {
        return kMilliseconds;
    }
    return isDecimalType(type) ? 0 : kNone;
}

bool isColumnType(DataTypeEnum type) noexcept {
    switch (type) {
        case adBinary:
        case adChar:
        case adWChar:
        case adVarChar:
        case adVarWChar:
        case adVarBinary:
            return true;
        default:
            return widthOf(type) > 0 || isLongType(type);
    }
}

DataTypeEnum dataTypeOf(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
        case VarType::Null:
        case VarType::String:
            return adVarWChar;
        case VarType::Boolean:
            return adBoolean;
        case VarType::Byte:
            return adUnsignedTinyInt;
        case VarType::Integer:
            return adSmallInt;
        case VarType::Long:
            return adInteger;
        case VarType::Single:
            return adSingle;
        case VarType::Double:
            return adDouble;
        case VarType::Currency:
            return adCurrency;
        case VarType::Decimal:
            return adNumeric;
        case VarType::Date:
            return adDBTimeStamp;
        case VarType::Array:
            return adVarBinary;
        default:
            fail::invalidArgument();
    }
}

}  // namespace kap::ado
