#include "drivers/odbc/column_types.hpp"

#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "data/value_type.hpp"

namespace kap::ado::odbc {
namespace {

using enum DataTypeEnum;

constexpr std::int32_t kLongBytes = 2147483647;
constexpr std::int32_t kLongCharacters = 1073741823;
// No server has a text with a limit beyond this.
constexpr SQLULEN kLongestLimited = 1'000'000;
constexpr std::uint8_t kNone = 255;
constexpr std::uint8_t kExactDigits = 18;  // that a word holds
constexpr int kRowVersionBytes = 8;

// What Transact-SQL servers have beyond the standard.
constexpr SQLSMALLINT kXml = -152;
constexpr SQLSMALLINT kTime = -154;
constexpr SQLSMALLINT kTimeWithZone = -155;

DataTypeEnum wholeType(const AnnouncedType& type) {
    switch (type.code) {
        case SQL_BIT:
            return adBoolean;
        case SQL_TINYINT:
            return adUnsignedTinyInt;
        case SQL_SMALLINT:
            return adSmallInt;
        case SQL_INTEGER:
            return adInteger;
        default:
            return adBigInt;
    }
}

DataTypeEnum numberType(const AnnouncedType& type) {
    constexpr SQLULEN kSingleBits = 24;
    switch (type.code) {
        case SQL_REAL:
            return adSingle;
        case SQL_FLOAT:
            return type.size == kSingleBits ? adSingle : adDouble;
        case SQL_DOUBLE:
            return adDouble;
        case SQL_DECIMAL:
        case SQL_NUMERIC:
            return adNumeric;
        default:
            return wholeType(type);
    }
}

bool isLimited(const AnnouncedType& type, SQLULEN inventedSize) {
    return type.size > 0 && type.size <= kLongestLimited && type.size != inventedSize;
}

DataTypeEnum textType(const AnnouncedType& type, SQLULEN inventedSize) {
    const bool limited = isLimited(type, inventedSize);
    switch (type.code) {
        case SQL_CHAR:
            return adChar;
        case SQL_VARCHAR:
            return limited ? adVarChar : adLongVarChar;
        case SQL_LONGVARCHAR:
            return adLongVarChar;
        case SQL_WCHAR:
            return adWChar;
        case SQL_WVARCHAR:
            return limited ? adVarWChar : adLongVarWChar;
        default:
            return adLongVarWChar;
    }
}

DataTypeEnum typeOf(const AnnouncedType& type, SQLULEN inventedSize) {
    const std::string name = asciiLower(type.name);
    if (name == "money" || name == "smallmoney") {
        return adCurrency;
    }
    if (name == "bool") {  // some drivers announce a text
        return adBoolean;
    }
    switch (type.code) {
        case SQL_BIT:
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT:
        case SQL_REAL:
        case SQL_FLOAT:
        case SQL_DOUBLE:
        case SQL_DECIMAL:
        case SQL_NUMERIC:
            return numberType(type);
        case SQL_TYPE_DATE:
            return adDBDate;
        case SQL_TYPE_TIME:
        case kTime:
            return adDBTime;
        case SQL_TYPE_TIMESTAMP:
            return adDBTimeStamp;
        case SQL_GUID:
            return adGUID;
        case SQL_BINARY:
            return adBinary;
        case SQL_VARBINARY:
            return isLimited(type, inventedSize) ? adVarBinary : adLongVarBinary;
        case SQL_LONGVARBINARY:
            return adLongVarBinary;
        case kTimeWithZone:
            return adVarWChar;
        case kXml:
            return adLongVarWChar;
        default:
            return textType(type, inventedSize);
    }
}

std::uint8_t small(SQLULEN number) {
    return static_cast<std::uint8_t>(std::min<SQLULEN>(number, kNone));
}

DataTypeEnum narrow(DataTypeEnum type) {
    switch (type) {
        case adWChar:
            return adChar;
        case adVarWChar:
            return adVarChar;
        case adLongVarWChar:
            return adLongVarChar;
        default:
            return type;
    }
}

bool isRowVersion(const AnnouncedType& type, DataTypeEnum code) {
    const std::string name = asciiLower(type.name);
    return storageOf(code) == Storage::Binary && (name == "timestamp" || name == "rowversion");
}

}  // namespace

void describeType(const AnnouncedType& type, SQLULEN inventedSize, TextKind wideTexts,
                  ColumnInfo& info) {
    info.type = typeOf(type, inventedSize);
    if (wideTexts == TextKind::Narrow) {
        info.type = narrow(info.type);
    }
    info.rowVersion = isRowVersion(type, info.type);
    if (info.rowVersion) {
        info.type = adBinary;
    }
    info.isLong = isLongType(info.type);
    info.precision = usualPrecision(info.type);
    info.numericScale = kNone;
    if (info.type == adNumeric || info.type == adDBTimeStamp || info.type == adDBDate ||
        info.type == adDBTime) {
        info.precision = small(type.size);
        info.numericScale =
            info.type == adDBDate
                ? kNone
                : small(static_cast<SQLULEN>(std::max<SQLSMALLINT>(type.decimals, 0)));
    }
    info.wideDecimal = info.type == adNumeric && info.precision > kExactDigits;
    const std::int32_t width = widthOf(info.type);
    info.fixedLength =
        width > 0 || info.type == adChar || info.type == adWChar || info.type == adBinary;
    if (info.rowVersion) {
        info.definedSize = kRowVersionBytes;
    } else if (width > 0) {
        info.definedSize = width;
    } else if (info.isLong) {
        info.definedSize = info.type == adLongVarWChar ? kLongCharacters : kLongBytes;
    } else {
        info.definedSize = static_cast<std::int32_t>(std::min<SQLULEN>(type.size, kLongBytes));
    }
}

}  // namespace kap::ado::odbc
