#include "data/value.hpp"

namespace kap::ado {

Storage storageOf(DataTypeEnum type) noexcept {
    switch (type) {
        case DataTypeEnum::adBoolean:
        case DataTypeEnum::adTinyInt:
        case DataTypeEnum::adUnsignedTinyInt:
        case DataTypeEnum::adSmallInt:
        case DataTypeEnum::adUnsignedSmallInt:
        case DataTypeEnum::adInteger:
        case DataTypeEnum::adUnsignedInt:
        case DataTypeEnum::adBigInt:
        case DataTypeEnum::adError:
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return Storage::Integer;
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
        case DataTypeEnum::adDate:
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adDBTime:
        case DataTypeEnum::adDBTimeStamp:
            return Storage::Real;
        case DataTypeEnum::adBinary:
        case DataTypeEnum::adVarBinary:
        case DataTypeEnum::adLongVarBinary:
            return Storage::Binary;
        case DataTypeEnum::adEmpty:
        case DataTypeEnum::adVariant:
        case DataTypeEnum::adGUID:
        case DataTypeEnum::adBSTR:
        case DataTypeEnum::adChar:
        case DataTypeEnum::adWChar:
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adVarWChar:
        case DataTypeEnum::adLongVarChar:
        case DataTypeEnum::adLongVarWChar:
            break;
        default:  // of no column
            break;
    }
    return Storage::Text;
}

}  // namespace kap::ado
