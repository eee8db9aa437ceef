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
    Timestamp,  // also written rowversion: eight bytes that change with every write of the row
    UniqueIdentifier,
    // Behind the others: files hold texts in which a type is its number here.
    Time,
    DateTime2,
    DateTimeOffset,
    SqlVariant,  // a value with the type that it has by itself
};

// The length of varchar(max), nvarchar(max), varbinary(max), text, ntext and image.
inline constexpr int kMaxLength = -1;

// A type with its length (characters of text, bytes of binary), precision and scale; what does not
// apply is 0. The scale of time, datetime2 and datetimeoffset is that of their seconds, how many
// digits these have behind the point.
struct TypeSpec {
    SqlType type = SqlType::Int;
    int length = 0;
    int precision = 0;
    int scale = 0;

    friend bool operator==(const TypeSpec&, const TypeSpec&) = default;
};

// Decimals of up to so many digits are kept as whole numbers of 64 bits.
inline constexpr int kNarrowDigits = 18;

// The length of decimals of more digits, whose values take sixteen bytes. Without it they are such
// whole numbers, too: so files of older editions keep them, and so are sums that cannot be larger.
inline constexpr int kWideLength = 16;

// What is known of a type, whatever its length. The row of each type stands in type_spec.cpp.
struct TypeFacts {
    const char* name;  // in lower case
    TypeSpec usual;    // when it is written without brackets
    int id;            // the server's number of it (system_type_id, xtype)
    int bytes;         // that a value takes, at most for those whose length is their own
    int precision;     // digits, as the system views tell them; 0: none, or the column's own
    int scale;         // of those digits behind the point
    int precedence;    // of two types in an operation the higher one wins
    // As recordsets tell of it: the data-access type, its size (0: the length), precision and
    // scale (255: none), and whether all its values have one size.
    int clientType;
    int clientSize;
    int clientPrecision;
    int clientScale;
    bool clientFixed;
};

[[nodiscard]] const TypeFacts& factsOf(SqlType type);

inline constexpr int kSqlTypes = static_cast<int>(SqlType::SqlVariant) + 1;

// decimal or numeric of so many digits, wide when they are many.
[[nodiscard]] TypeSpec decimalType(SqlType type, int precision, int scale);

// Whether a type is that of a decimal kept in sixteen bytes.
[[nodiscard]] bool isWideDecimal(const TypeSpec& type);

// The name of a type in lower case: "varchar", "decimal", "timestamp".
[[nodiscard]] const char* typeName(SqlType type);

// The longest that a type can be: characters, bytes or, of decimals, digits. What has no length of
// its own stays as it is.
[[nodiscard]] TypeSpec widestOf(SqlType type);

// The bytes that the server takes for a value of a type: of texts and binaries as many as their
// length allows, -1 when there is no limit; a large one's are kept elsewhere, and 16 point there.
[[nodiscard]] int bytesOf(const TypeSpec& type);

// The digits of a type as the system views tell them, and those behind the point.
[[nodiscard]] int precisionOf(const TypeSpec& type);
[[nodiscard]] int scaleOf(const TypeSpec& type);

// The canonical text of a type, which parses back to it: "varchar(20)", "nvarchar(max)",
// "decimal(18,4)", "float".
[[nodiscard]] std::string typeText(const TypeSpec& spec);

// bit, tinyint, smallint, int, bigint.
[[nodiscard]] bool isInteger(SqlType type);
// Integers, decimal, numeric, money and smallmoney.
[[nodiscard]] bool isExact(SqlType type);
// decimal and numeric.
[[nodiscard]] bool isDecimal(SqlType type);
// money and smallmoney.
[[nodiscard]] bool isMoney(SqlType type);
// float and real.
[[nodiscard]] bool isApproximate(SqlType type);
// Exact or approximate.
[[nodiscard]] bool isNumber(SqlType type);
// date, datetime, smalldatetime, time, datetime2 and datetimeoffset.
[[nodiscard]] bool isDate(SqlType type);
// datetime and smalldatetime, which stand for numbers of days, too.
[[nodiscard]] bool isDateTime(SqlType type);
// time, datetime2 and datetimeoffset, whose seconds have as many decimals as the type says.
[[nodiscard]] bool isFineDate(SqlType type);
// sql_variant, whose values have types of their own.
[[nodiscard]] bool isVariant(SqlType type);
// char, varchar, nchar, nvarchar, text and ntext.
[[nodiscard]] bool isText(SqlType type);
// nchar, nvarchar and ntext.
[[nodiscard]] bool isNational(SqlType type);
// binary, varbinary, image and timestamp.
[[nodiscard]] bool isBinary(SqlType type);
// Written with a length in brackets: char, varchar, nchar, nvarchar, binary and varbinary.
[[nodiscard]] bool hasLength(SqlType type);
// Those of them that are not padded to their length, and may be without limit.
[[nodiscard]] bool isVarying(SqlType type);
// Those of them that are padded.
[[nodiscard]] bool isPadded(SqlType type);
// text, ntext and image, values that few functions take.
[[nodiscard]] bool isLarge(SqlType type);

}  // namespace kap::tsql
