#include "drivers/odbc/cell_buffer.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/odbc/decimal_column.hpp"
#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

// What is bound of a text or binary; longer ones are read again in pieces.
constexpr std::size_t kBoundCharacters = 256;
constexpr std::size_t kBoundBytes = 512;
constexpr std::size_t kPieceBytes = 65536;
constexpr std::size_t kGuidCharacters = 37;
constexpr std::size_t kClockCharacters = 24;
constexpr std::size_t kDecimalSigns = 4;  // a sign, a zero, a point and the end
constexpr std::size_t kWidestDecimalText = 64;

struct Shape {
    SQLSMALLINT form;
    std::size_t bytes;
    std::size_t terminator = 0;
    bool open = false;
};

Shape textShape(const ColumnInfo& column) {
    // A character outside the first plane takes two units.
    const std::size_t characters =
        std::min(static_cast<std::size_t>(column.definedSize), kBoundCharacters / 2);
    return {SQL_C_WCHAR, (characters * 2 + 1) * sizeof(char16_t), sizeof(char16_t), true};
}

Shape shapeOf(const ColumnInfo& column) {
    switch (column.type) {
        case DataTypeEnum::adBoolean:
            return {SQL_C_BIT, 1};
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
            return {SQL_C_DOUBLE, sizeof(double)};
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adNumeric:
            return {SQL_C_CHAR,
                    column.precision <= 18 ? column.precision + kDecimalSigns : kWidestDecimalText,
                    1, true};
        case DataTypeEnum::adDBTimeStamp:
            return {SQL_C_TYPE_TIMESTAMP, sizeof(SQL_TIMESTAMP_STRUCT)};
        case DataTypeEnum::adDBDate:
            return {SQL_C_TYPE_DATE, sizeof(SQL_DATE_STRUCT)};
        case DataTypeEnum::adDBTime:
            return {SQL_C_CHAR, kClockCharacters, 1};
        case DataTypeEnum::adGUID:
            return {SQL_C_CHAR, kGuidCharacters, 1};
        default:
            break;
    }
    switch (storageOf(column.type)) {
        case Storage::Integer:
            return {SQL_C_SBIGINT, sizeof(SQLBIGINT)};
        case Storage::Binary:
            return {SQL_C_BINARY,
                    std::clamp<std::size_t>(static_cast<std::size_t>(column.definedSize), 1,
                                            kBoundBytes),
                    0, true};
        default:
            return textShape(column);
    }
}

}  // namespace

void refuseValue(const ColumnInfo& column, const std::string& why) {
    throw driverError(errors::kMultipleStep, "22003",
                      "A value of the column '" + column.name + "' cannot be read: " + why + ".");
}

CellBuffer::CellBuffer(const ColumnInfo& column) {
    const Shape shape = shapeOf(column);
    form_ = shape.form;
    cellBytes_ = shape.bytes;
    terminator_ = shape.terminator;
    open_ = shape.open;
    // Texts stand where their characters want them; cells of one size stand one behind the other,
    // because drivers do not look at the length of the buffer then.
    constexpr std::size_t kAlignment = 8;
    if (open_) {
        cellBytes_ = (cellBytes_ + kAlignment - 1) / kAlignment * kAlignment;
    }
}

void CellBuffer::allocate(std::size_t rows) {
    cells_ = std::make_unique_for_overwrite<char[]>(rows * cellBytes_);
    lengths_.resize(rows);
}

SQLRETURN CellBuffer::bind(SQLHSTMT statement, SQLUSMALLINT number) {
    return SQLBindCol(statement, number, form_, cells_.get(), static_cast<SQLLEN>(cellBytes_),
                      lengths_.data());
}

SQLRETURN CellBuffer::get(SQLHSTMT statement, SQLUSMALLINT number) {
    return SQLGetData(statement, number, form_, cells_.get(), static_cast<SQLLEN>(cellBytes_),
                      lengths_.data());
}

bool CellBuffer::isCut(std::size_t row) const noexcept {
    const SQLLEN length = lengths_[row];
    return open_ && (length == SQL_NO_TOTAL ||
                     (length >= 0 && static_cast<std::size_t>(length) > cellBytes_ - terminator_));
}

void CellBuffer::append(std::size_t row, ColumnInfo& column, ColumnStore& store) {
    if (isNull(row)) {
        store.appendNull();
        return;
    }
    switch (form_) {
        case SQL_C_BIT:
            store.appendInteger(valueAt<unsigned char>(row) != 0 ? 1 : 0);
            return;
        case SQL_C_SBIGINT:
            store.appendInteger(valueAt<SQLBIGINT>(row));
            return;
        case SQL_C_DOUBLE: {
            const auto value = valueAt<double>(row);
            const bool single = column.type == DataTypeEnum::adSingle;
            store.appendReal(single ? static_cast<double>(static_cast<float>(value)) : value);
            return;
        }
        case SQL_C_TYPE_TIMESTAMP:
        case SQL_C_TYPE_DATE:
            appendStamp(row, column, store);
            return;
        case SQL_C_WCHAR:
            appendText(&valueAt<char16_t>(row), lengthAt(row) / sizeof(char16_t), column, store);
            return;
        default:
            appendPieces({&valueAt<char>(row), lengthAt(row)}, column, store);
    }
}

void CellBuffer::appendPieces(const std::string& bytes, ColumnInfo& column, ColumnStore& store) {
    if (form_ == SQL_C_WCHAR) {
        std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
        std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
        appendText(units.data(), units.size(), column, store);
    } else if (storageOf(column.type) == Storage::Integer) {
        appendDecimal(bytes, column, store);
    } else if (column.type == DataTypeEnum::adDBTime) {
        const auto days = daysOfClock(bytes);
        if (!days) {
            refuseValue(column, "'" + bytes + "' is no time of a day");
        }
        store.appendReal(*days);
    } else {
        store.appendBytes(bytes);
    }
}

void CellBuffer::appendStamp(std::size_t row, const ColumnInfo& column, ColumnStore& store) const {
    const auto days = form_ == SQL_C_TYPE_DATE ? daysOf(valueAt<SQL_DATE_STRUCT>(row))
                                               : daysOf(valueAt<SQL_TIMESTAMP_STRUCT>(row));
    if (!days) {
        refuseValue(column, "it is a date outside the calendar from the year 100 to 9999");
    }
    store.appendReal(*days);
}

void CellBuffer::appendText(const char16_t* units, std::size_t count, const ColumnInfo& column,
                            ColumnStore& store) {
    utf8_.clear();
    if (!appendUtf8(utf8_, units, count)) {
        refuseValue(column, "its text holds half of a surrogate pair");
    }
    store.appendBytes(utf8_);
}

SQLRETURN CellBuffer::readPieces(SQLHSTMT statement, SQLUSMALLINT number, std::string& bytes,
                                 bool& isNull) const {
    bytes.clear();
    isNull = false;
    std::size_t room = kPieceBytes;
    for (;;) {
        const std::size_t start = bytes.size();
        bytes.resize(start + room);
        SQLLEN length = 0;
        const SQLRETURN code = SQLGetData(statement, number, form_, bytes.data() + start,
                                          static_cast<SQLLEN>(room), &length);
        if (code == SQL_NO_DATA) {  // the last piece had filled its place
            bytes.resize(start);
            return SQL_SUCCESS;
        }
        if (!SQL_SUCCEEDED(code) || length == SQL_NULL_DATA) {
            isNull = SQL_SUCCEEDED(code);
            bytes.clear();
            return code;
        }
        // The length is that of all that was left, or not known.
        const std::size_t most = room - terminator_;
        const bool more = length == SQL_NO_TOTAL || static_cast<std::size_t>(length) > most;
        bytes.resize(start + (more ? most : static_cast<std::size_t>(length)));
        if (!more) {
            return SQL_SUCCESS;
        }
        if (length != SQL_NO_TOTAL) {
            room = static_cast<std::size_t>(length) - most + terminator_;
        }
    }
}

}  // namespace kap::ado::odbc
