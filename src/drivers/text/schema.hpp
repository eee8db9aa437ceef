#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/automation/string.hpp>

// The description of a text file that stands beside it in Schema.ini: a section named as the file.
namespace kap::ado::text_files {

enum class Layout : unsigned char { FixedLength, Delimited };
enum class Encoding : unsigned char { Oem, Ansi, Unicode, Utf8 };

// How the values of a column are written. Texts, dates and Booleans stand at the left of their
// column, numbers at the right.
enum class ColumnKind : unsigned char { Text, Whole, Real, Currency, Date, Boolean };

struct Column {
    String name;
    ColumnKind kind = ColumnKind::Text;
    std::optional<std::size_t> width;  // characters; every column of a fixed layout has one
};

struct Schema {
    Layout layout = Layout::Delimited;
    String delimiter = u",";
    bool header = true;
    Encoding encoding = Encoding::Ansi;
    String decimalSymbol;
    std::optional<std::size_t> numberDigits;  // behind the point; unset: as many as there are
    std::size_t currencyDigits = 2;
    String currencySymbol;  // in front of amounts
    String dateTimeFormat;  // empty: the user's short date, with the time where there is one
    std::vector<Column> columns;
};

// Reads the section of a file from the Schema.ini of its folder.
//
//     Format            FixedLength, TabDelimited, CSVDelimited (default), Delimited(x)
//     ColNameHeader     True (default): the names of the columns come first
//     CharacterSet      ANSI (code page 1252, default), OEM (850), Unicode (UTF-16), UTF-8
//     DecimalSymbol     the user's by default        NumberDigits   decimals of numbers
//     CurrencySymbol, CurrencyDigits (2)             DateTimeFormat
//     Col1, Col2, ...   name, type, and with a fixed layout "Width" and characters
//
// Types: Bit; Byte, Short, Integer, Long (all whole numbers of up to 32 bits); Single, Float,
// Double; Currency; Date, DateTime; Char, Text, Memo, LongChar with or without a size right behind.
// Raises the driver's errors, which name what is wrong, for a section that is not there or that
// cannot be used.
[[nodiscard]] Schema readSchema(const std::filesystem::path& folder, const String& file);

}  // namespace kap::ado::text_files
