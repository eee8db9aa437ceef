#include "tsql/type_spec.hpp"

#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"

namespace kap::tsql {

namespace {

constexpr int kNone = 255;
constexpr int kLongBytes = 2147483647;
constexpr int kLongCharacters = 1073741823;

struct TypeRow {
    SqlType type;
    TypeFacts facts;
};

// The data-access types, by their names in the interface of recordsets.
constexpr int kAdSmallInt = 2;
constexpr int kAdInteger = 3;
constexpr int kAdSingle = 4;
constexpr int kAdDouble = 5;
constexpr int kAdCurrency = 6;
constexpr int kAdBoolean = 11;
constexpr int kAdVariant = 12;
constexpr int kAdUnsignedTinyInt = 17;
constexpr int kAdBigInt = 20;
constexpr int kAdGuid = 72;
constexpr int kAdBinary = 128;
constexpr int kAdChar = 129;
constexpr int kAdWChar = 130;
constexpr int kAdNumeric = 131;
constexpr int kAdDbDate = 133;
constexpr int kAdDbTimeStamp = 135;
constexpr int kAdVarChar = 200;
constexpr int kAdLongVarChar = 201;
constexpr int kAdVarWChar = 202;
constexpr int kAdLongVarWChar = 203;
constexpr int kAdVarBinary = 204;
constexpr int kAdLongVarBinary = 205;

// clang-format off
// The columns are those of TypeFacts: name; when without brackets (type, length, precision, scale);
// the server's number, bytes, digits and precedence of it; type, size, digits and form as
// recordsets tell of it.
constexpr auto kTypeRows = std::to_array<TypeRow>({
    {SqlType::Bit,           {"bit",           {SqlType::Bit},                 104,    1,  1, 0, 12, kAdBoolean,         2,               kNone, kNone, true}},
    {SqlType::TinyInt,       {"tinyint",       {SqlType::TinyInt},              48,    1,  3, 0, 13, kAdUnsignedTinyInt, 1,               3,     kNone, true}},
    {SqlType::SmallInt,      {"smallint",      {SqlType::SmallInt},             52,    2,  5, 0, 14, kAdSmallInt,        2,               5,     kNone, true}},
    {SqlType::Int,           {"int",           {SqlType::Int},                  56,    4, 10, 0, 15, kAdInteger,         4,               10,    kNone, true}},
    {SqlType::BigInt,        {"bigint",        {SqlType::BigInt},              127,    8, 19, 0, 16, kAdBigInt,          8,               19,    kNone, true}},
    {SqlType::Decimal,       {"decimal",       {SqlType::Decimal, 0, 18, 0},   106,   17,  0, 0, 19, kAdNumeric,         19,              0,     0,     true}},
    {SqlType::Numeric,       {"numeric",       {SqlType::Numeric, 0, 18, 0},   108,   17,  0, 0, 19, kAdNumeric,         19,              0,     0,     true}},
    {SqlType::Money,         {"money",         {SqlType::Money},                60,    8, 19, 4, 18, kAdCurrency,        8,               19,    kNone, true}},
    {SqlType::SmallMoney,    {"smallmoney",    {SqlType::SmallMoney},          122,    4, 10, 4, 17, kAdCurrency,        8,               10,    kNone, true}},
    {SqlType::Float,         {"float",         {SqlType::Float},                62,    8, 53, 0, 21, kAdDouble,          8,               15,    kNone, true}},
    {SqlType::Real,          {"real",          {SqlType::Real},                 59,    4, 24, 0, 20, kAdSingle,          4,               7,     kNone, true}},
    {SqlType::Date,          {"date",          {SqlType::Date},                 40,    3, 10, 0, 23, kAdDbDate,          6,               10,    kNone, true}},
    {SqlType::DateTime,      {"datetime",      {SqlType::DateTime},             61,    8, 23, 3, 25, kAdDbTimeStamp,     16,              23,    3,     true}},
    {SqlType::SmallDateTime, {"smalldatetime", {SqlType::SmallDateTime},        58,    4, 16, 0, 24, kAdDbTimeStamp,     16,              16,    0,     true}},
    {SqlType::Char,          {"char",          {SqlType::Char, 1},             175, 8000,  0, 0,  3, kAdChar,            0,               kNone, kNone, true}},
    {SqlType::VarChar,       {"varchar",       {SqlType::VarChar, 1},          167, 8000,  0, 0,  4, kAdVarChar,         0,               kNone, kNone, false}},
    {SqlType::NChar,         {"nchar",         {SqlType::NChar, 1},            239, 8000,  0, 0,  5, kAdWChar,           0,               kNone, kNone, true}},
    {SqlType::NVarChar,      {"nvarchar",      {SqlType::NVarChar, 1},         231, 8000,  0, 0,  6, kAdVarWChar,        0,               kNone, kNone, false}},
    {SqlType::Text,          {"text",          {SqlType::Text, kMaxLength},     35,   16,  0, 0, 10, kAdLongVarChar,     kLongBytes,      kNone, kNone, false}},
    {SqlType::NText,         {"ntext",         {SqlType::NText, kMaxLength},    99,   16,  0, 0, 11, kAdLongVarWChar,    kLongCharacters, kNone, kNone, false}},
    {SqlType::Binary,        {"binary",        {SqlType::Binary, 1},           173, 8000,  0, 0,  1, kAdBinary,          0,               kNone, kNone, true}},
    {SqlType::VarBinary,     {"varbinary",     {SqlType::VarBinary, 1},        165, 8000,  0, 0,  2, kAdVarBinary,       0,               kNone, kNone, false}},
    {SqlType::Image,         {"image",         {SqlType::Image, kMaxLength},    34,   16,  0, 0,  9, kAdLongVarBinary,   kLongBytes,      kNone, kNone, false}},
    {SqlType::Timestamp,     {"timestamp",     {SqlType::Timestamp, 8},        189,    8,  0, 0,  8, kAdBinary,          8,               kNone, kNone, true}},
    {SqlType::UniqueIdentifier, {"uniqueidentifier", {SqlType::UniqueIdentifier, 16}, 36, 16, 0, 0, 7, kAdGuid,          16,              kNone, kNone, true}},
    {SqlType::Time,          {"time",          {SqlType::Time, 0, 0, 7},        41,    5, 16, 7, 22, kAdVarWChar,        0,               kNone, kNone, false}},
    {SqlType::DateTime2,     {"datetime2",     {SqlType::DateTime2, 0, 0, 7},   42,    8, 27, 7, 26, kAdVarWChar,        0,               kNone, kNone, false}},
    {SqlType::DateTimeOffset, {"datetimeoffset", {SqlType::DateTimeOffset, 0, 0, 7}, 43, 10, 34, 7, 27, kAdVarWChar,     0,               kNone, kNone, false}},
    {SqlType::SqlVariant,    {"sql_variant",   {SqlType::SqlVariant},           98, 8016,  0, 0, 28, kAdVariant,         8016,            kNone, kNone, false}},
});
// clang-format on

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < kTypeRows.size(); ++i) {
        if (kTypeRows[i].type != static_cast<SqlType>(i) ||
            kTypeRows[i].facts.usual.type != kTypeRows[i].type) {
            return false;
        }
    }
    return kTypeRows.size() == static_cast<std::size_t>(kSqlTypes);
}
static_assert(isInOrder());

int bytesOfDecimal(int precision) {
    return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

// Three days' bytes less for a time alone, two more for the offset.
int bytesOfFineDate(const TypeSpec& type) {
    const int time = type.scale <= 2 ? 3 : type.scale <= 4 ? 4 : 5;
    return factsOf(type.type).bytes - factsOf(SqlType::Time).bytes + time;
}

bool between(SqlType type, SqlType first, SqlType last) {
    return type >= first && type <= last;
}

}  // namespace

const TypeFacts& factsOf(SqlType type) {
    return kTypeRows.at(static_cast<std::size_t>(type)).facts;
}

TypeSpec decimalType(SqlType type, int precision, int scale) {
    return {type, precision > kNarrowDigits ? kWideLength : 0, precision, scale};
}

bool isWideDecimal(const TypeSpec& type) {
    return isDecimal(type.type) && type.length == kWideLength;
}

const char* typeName(SqlType type) {
    return factsOf(type).name;
}

TypeSpec widestOf(SqlType type) {
    constexpr int kMostDigits = 38;
    constexpr int kNationalBytes = 2;
    TypeSpec spec = factsOf(type).usual;
    if (isDecimal(type)) spec = decimalType(type, kMostDigits, 0);
    if (hasLength(type))
        spec.length = factsOf(type).bytes / (isNational(type) ? kNationalBytes : 1);
    return spec;
}

int bytesOf(const TypeSpec& type) {
    constexpr int kNationalBytes = 2;
    if (isDecimal(type.type)) return bytesOfDecimal(type.precision);
    if (isFineDate(type.type)) return bytesOfFineDate(type);
    if (!hasLength(type.type)) return factsOf(type.type).bytes;
    const bool wide = isNational(type.type) && type.length != kMaxLength;
    return type.length * (wide ? kNationalBytes : 1);
}

int precisionOf(const TypeSpec& type) {
    if (isDecimal(type.type)) return type.precision;
    const TypeFacts& facts = factsOf(type.type);
    if (!isFineDate(type.type)) return facts.precision;
    // The characters of such a date; without decimals it has no point, either.
    return facts.precision - facts.scale + (type.scale == 0 ? -1 : type.scale);
}

int scaleOf(const TypeSpec& type) {
    return isDecimal(type.type) || isFineDate(type.type) ? type.scale : factsOf(type.type).scale;
}

std::string typeText(const TypeSpec& spec) {
    std::string name = typeName(spec.type);
    if (isDecimal(spec.type)) {
        return name + "(" + plain::text(spec.precision) + "," + plain::text(spec.scale) + ")";
    }
    if (isFineDate(spec.type)) return name + "(" + plain::text(spec.scale) + ")";
    if (!hasLength(spec.type)) return name;
    return name + "(" + (spec.length == kMaxLength ? "max" : plain::text(spec.length)) + ")";
}

bool isInteger(SqlType type) {
    return between(type, SqlType::Bit, SqlType::BigInt);
}
bool isExact(SqlType type) {
    return between(type, SqlType::Bit, SqlType::SmallMoney);
}
bool isDecimal(SqlType type) {
    return type == SqlType::Decimal || type == SqlType::Numeric;
}
bool isMoney(SqlType type) {
    return type == SqlType::Money || type == SqlType::SmallMoney;
}
bool isApproximate(SqlType type) {
    return type == SqlType::Float || type == SqlType::Real;
}
bool isNumber(SqlType type) {
    return between(type, SqlType::Bit, SqlType::Real);
}
bool isDate(SqlType type) {
    return between(type, SqlType::Date, SqlType::SmallDateTime) || isFineDate(type);
}
bool isDateTime(SqlType type) {
    return type == SqlType::DateTime || type == SqlType::SmallDateTime;
}
bool isFineDate(SqlType type) {
    return between(type, SqlType::Time, SqlType::DateTimeOffset);
}
bool isVariant(SqlType type) {
    return type == SqlType::SqlVariant;
}
bool isText(SqlType type) {
    return between(type, SqlType::Char, SqlType::NText);
}
bool isNational(SqlType type) {
    return type == SqlType::NChar || type == SqlType::NVarChar || type == SqlType::NText;
}
bool isBinary(SqlType type) {
    return between(type, SqlType::Binary, SqlType::Timestamp);
}

bool hasLength(SqlType type) {
    return isVarying(type) || isPadded(type);
}

bool isVarying(SqlType type) {
    return type == SqlType::VarChar || type == SqlType::NVarChar || type == SqlType::VarBinary;
}

bool isPadded(SqlType type) {
    return type == SqlType::Char || type == SqlType::NChar || type == SqlType::Binary;
}

bool isLarge(SqlType type) {
    return type == SqlType::Text || type == SqlType::NText || type == SqlType::Image;
}

}  // namespace kap::tsql
