#pragma once

#include <string>

namespace kap::tsql {

enum class SqlType {
    Bit,
    TinyInt,
    SmallInt,
    Int,
    BigInt,
    Decimal,
    Numeric,
    Money,
    SmallMoney,
    Float,
    Real,
    Date,
    DateTime,
    SmallDateTime,
    Char,
    VarChar,
    NChar,
    NVarChar,
    Text,
    NText,
    Binary,
    VarBinary,
    Image,
    Timestamp,  ///< also written rowversion: eight bytes that change with every write of the row
    UniqueIdentifier,
};

/// The length of varchar(max), nvarchar(max), varbinary(max), text, ntext and image.
inline constexpr int kMaxLength = -1;

/// A type with its length (characters of text, bytes of binary), precision and scale; what does not
/// apply is 0.
struct TypeSpec {
    SqlType type = SqlType::Int;
    int length = 0;
    int precision = 0;
    int scale = 0;

    friend bool operator==(const TypeSpec&, const TypeSpec&) = default;
};

/// The name of a type in lower case: "varchar", "decimal", "timestamp".
[[nodiscard]] const char* typeName(SqlType type);

/// The canonical text of a type, which parses back to it: "varchar(20)", "nvarchar(max)",
/// "decimal(18,4)", "float".
[[nodiscard]] std::string typeText(const TypeSpec& spec);

/// bit, tinyint, smallint, int, bigint.
[[nodiscard]] bool isInteger(SqlType type);
/// Integers, decimal, numeric, money and smallmoney.
[[nodiscard]] bool isExact(SqlType type);
/// decimal and numeric.
[[nodiscard]] bool isDecimal(SqlType type);
/// money and smallmoney.
[[nodiscard]] bool isMoney(SqlType type);
/// float and real.
[[nodiscard]] bool isApproximate(SqlType type);
/// Exact or approximate.
[[nodiscard]] bool isNumber(SqlType type);
/// date, datetime and smalldatetime.
[[nodiscard]] bool isDate(SqlType type);
/// char, varchar, nchar, nvarchar, text and ntext.
[[nodiscard]] bool isText(SqlType type);
/// nchar, nvarchar and ntext.
[[nodiscard]] bool isNational(SqlType type);
/// binary, varbinary, image and timestamp.
[[nodiscard]] bool isBinary(SqlType type);
/// text, ntext and image, values that few functions take.
[[nodiscard]] bool isLarge(SqlType type);

}  // namespace kap::tsql
