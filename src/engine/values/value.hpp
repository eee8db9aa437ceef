#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "data/value.hpp"
#include "tsql/type_spec.hpp"

// Values in storage form: how the database file holds what the dialect's types mean.
//
// | type                                | form                                         |
// |-------------------------------------|----------------------------------------------|
// | bit, tinyint, smallint, int, bigint | whole number                                 |
// | decimal(p,s), numeric(p,s)          | whole number times 10^s; 8115 beyond 64 bits |
// | the same of more than 18 digits     | sixteen bytes: that number plus 2^127, the   |
// |                                     | highest byte first                           |
// | money, smallmoney                   | whole number times 10^4                      |
// | float, real                         | double; a real is rounded to a single        |
// | date                                | double: whole days from 30 December 1899     |
// | datetime                            | double: such days, to 1/300 of a second      |
// | smalldatetime                       | double: such days, to the minute             |
// | time                                | whole number: 100 nanoseconds from midnight  |
// | datetime2                           | such from 1 January of year 1                |
// | datetimeoffset                      | text: universal time in ISO form with seven  |
// |                                     | decimals and Z, then the offset; compared    |
// |                                     | by the first part                            |
// | char, nchar                         | UTF-8 text padded with blanks to the length  |
// | varchar, nvarchar, text, ntext      | UTF-8 text                                   |
// | binary                              | bytes padded with zeros to the length        |
// | varbinary, image, timestamp         | bytes                                        |
// | uniqueidentifier                    | text of 36 upper-case characters             |
// | sql_variant                         | text that names the type, too (variant.hpp)  |
//
// So numbers and dates compare, sort and index as SQLite's own numbers do. Lengths of text count
// UTF-16 code units.
namespace kap::engine {

using ado::Blob;
using ado::isNull;
using ado::Value;

// Which of the forms a type's values have.
[[nodiscard]] ado::Storage storedAs(const tsql::TypeSpec& type);

// A type as the file declares a column of it, and back. Decimals of more than 18 digits say that
// they are wide: those that do not were made when all were kept in 64 bits, and stay so.
[[nodiscard]] std::string declaredType(const tsql::TypeSpec& type);
[[nodiscard]] tsql::TypeSpec typeDeclaredAs(std::string_view declared);

// A type as one number, for the SQL functions that are told types.
[[nodiscard]] std::int64_t packType(const tsql::TypeSpec& type);
[[nodiscard]] tsql::TypeSpec unpackType(std::int64_t packed);

// The digits behind the decimal point that a stored whole number of this type holds; 0 for
// integers.
[[nodiscard]] int storedScale(const tsql::TypeSpec& type);

// A value as a SQLite literal.
[[nodiscard]] std::string sqlLiteral(const Value& value);

// 'text' with its quotes doubled.
[[nodiscard]] std::string sqlText(std::string_view text);

// "name" with its quotes doubled.
[[nodiscard]] std::string sqlName(std::string_view name);

}  // namespace kap::engine
