#include "drivers/odbc/row_insertion.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

using enum DataTypeEnum;

constexpr std::int32_t kLongestUnits = 4000;
constexpr std::int32_t kLongestBinary = 8000;
constexpr SQLULEN kMoneyPrecision = 19;
constexpr SQLSMALLINT kMoneyPlaces = 4;
constexpr SQLULEN kWidestPrecision = 38;
constexpr SQLSMALLINT kStampPlaces = 3;
constexpr SQLULEN kStampSize = 23;
constexpr std::size_t kIdentifierUnits = 36;
constexpr std::size_t kDecimalRoom = 48;
constexpr std::size_t kClockRoom = 24;
constexpr std::size_t kMostBytes = std::size_t{4} * 1024 * 1024;
// Servers have no more parameters than 2100 a statement, or rows than a thousand. So many go into
// a page of the copy without a rest.
constexpr std::size_t kMostMarks = 2000;
constexpr std::array<std::size_t, 10> kRows = {500, 250, 200, 125, 100, 50, 40, 20, 10, 5};

bool isFixed(const ColumnInfo& info) {
    return storageOf(info.type) == Storage::Integer || storageOf(info.type) == Storage::Real ||
           info.type == adGUID;
}

}  // namespace

RowInsertion::Form RowInsertion::formOf(const ColumnInfo& info) {
    switch (info.type) {
        case adBoolean:
            return {SQL_C_BIT, SQL_BIT, 1, 0, 1};
        case adUnsignedTinyInt:
            return {SQL_C_SBIGINT, SQL_TINYINT, 3, 0, sizeof(std::int64_t)};
        case adTinyInt:
        case adSmallInt:
            return {SQL_C_SBIGINT, SQL_SMALLINT, 5, 0, sizeof(std::int64_t)};
        case adUnsignedSmallInt:
        case adInteger:
            return {SQL_C_SBIGINT, SQL_INTEGER, 10, 0, sizeof(std::int64_t)};
        case adCurrency:
            return {SQL_C_CHAR, SQL_DECIMAL, kMoneyPrecision, kMoneyPlaces, kDecimalRoom};
        case adNumeric:
        case adDecimal:
            return {SQL_C_CHAR, SQL_DECIMAL,
                    std::clamp<SQLULEN>(info.precision, 1, kWidestPrecision),
                    static_cast<SQLSMALLINT>(info.numericScale), kDecimalRoom};
        case adSingle:
            return {SQL_C_DOUBLE, SQL_REAL, 7, 0, sizeof(double)};
        case adDouble:
            return {SQL_C_DOUBLE, SQL_DOUBLE, 15, 0, sizeof(double)};
        case adDBDate:
            return {SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0, sizeof(SQL_DATE_STRUCT)};
        case adDBTime:
            return {SQL_C_CHAR, SQL_VARCHAR, kClockRoom, 0, kClockRoom};
        case adDate:
        case adDBTimeStamp:
            return {SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, kStampSize, kStampPlaces,
                    sizeof(SQL_TIMESTAMP_STRUCT)};
        case adGUID:
            return {SQL_C_WCHAR, SQL_GUID, kIdentifierUnits, 0,
                    kIdentifierUnits * sizeof(char16_t)};
        default:
            break;
    }
    if (storageOf(info.type) == Storage::Integer) {
        return {SQL_C_SBIGINT, SQL_BIGINT, 19, 0, sizeof(std::int64_t)};
    }
    const auto size = static_cast<std::size_t>(std::max(info.definedSize, 1));
    if (storageOf(info.type) == Storage::Binary) {
        return {SQL_C_BINARY, SQL_VARBINARY, size, 0, size};
    }
    return {SQL_C_WCHAR, SQL_WVARCHAR, size, 0, size * sizeof(char16_t)};
}

bool RowInsertion::fits(const RowBatch& batch) {
    return std::ranges::all_of(batch.columns, [](const RowBatch::Column& column) {
        const ColumnInfo& info = *column.info;
        const std::int32_t most =
            storageOf(info.type) == Storage::Binary ? kLongestBinary : kLongestUnits;
        if (info.type == DataTypeEnum::adVariant) {
            return false;  // each value has another form
        }
        const bool digits = !info.wideDecimal || info.numericScale <= kWidestPrecision;
        return digits && (isFixed(info) ||
                          (!info.isLong && info.definedSize > 0 && info.definedSize <= most));
    });
}

std::size_t RowInsertion::rowsAtOnce(const RowBatch& batch) {
    std::size_t width = 0;
    for (const RowBatch::Column& column : batch.columns) {
        width += formOf(*column.info).room + sizeof(SQLLEN);
    }
    const auto found = std::ranges::find_if(kRows, [&](std::size_t rows) {
        return rows * batch.columns.size() <= kMostMarks && rows * width <= kMostBytes;
    });
    return found == kRows.end() ? 1 : *found;
}

RowInsertion::RowInsertion(OdbcConnection& connection, const RowBatch& batch,
                           std::chrono::seconds timeout)
    : connection_(connection),
      rows_(rowsAtOnce(batch)),
      statement_(connection.newStatement(timeout)) {
    for (const RowBatch::Column& column : batch.columns) {
        forms_.push_back(formOf(*column.info));
    }
    text_ = batch.insertion(rows_);
    for (const Form& form : forms_) {
        values_.emplace_back(form.room * rows_);
    }
    lengths_.resize(rows_ * forms_.size(), SQL_NULL_DATA);
    const std::u16string units = String(text_).units();
    connection_.check(
        SQLPrepareW(statement_.get(), wide(units), static_cast<SQLINTEGER>(units.size())),
        statement_);
    bind();
}

void RowInsertion::bind() {
    for (std::size_t row = 0; row < rows_; ++row) {
        for (std::size_t i = 0; i < forms_.size(); ++i) {
            const Form& form = forms_[i];
            const std::size_t place = row * forms_.size() + i;
            connection_.check(
                SQLBindParameter(statement_.get(), static_cast<SQLUSMALLINT>(place + 1),
                                 SQL_PARAM_INPUT, form.form, form.type, form.size, form.decimals,
                                 values_[i].data() + row * form.room,
                                 static_cast<SQLLEN>(form.room), &lengths_[place]),
                statement_);
        }
    }
}

bool RowInsertion::isFor(const RowBatch& batch) const {
    return forms_.size() == batch.columns.size() && text_ == batch.insertion(rows_) &&
           std::ranges::equal(forms_, batch.columns,
                              [](const Form& form, const RowBatch::Column& column) {
                                  const Form other = formOf(*column.info);
                                  return form.type == other.type && form.size == other.size &&
                                         form.decimals == other.decimals;
                              });
}

bool RowInsertion::run(const RowBatch& batch, std::size_t first, std::chrono::seconds timeout) {
    for (std::size_t row = 0; row < rows_; ++row) {
        for (std::size_t i = 0; i < forms_.size(); ++i) {
            if (!put(batch.columns[i], forms_[i], first + row, row * forms_.size() + i)) {
                return false;
            }
        }
    }
    connection_.renew(statement_, timeout);
    connection_.progress();
    take(SQLExecute(statement_.get()));
    SQLFreeStmt(statement_.get(), SQL_CLOSE);
    return true;
}

// Every result is taken: an error may stand behind the first.
void RowInsertion::take(SQLRETURN code) {
    while (code != SQL_NO_DATA) {
        connection_.check(code, statement_);
        code = SQLMoreResults(statement_.get());
    }
}

bool RowInsertion::put(const RowBatch::Column& column, const Form& form, std::size_t row,
                       std::size_t place) {
    const ColumnStore& store = *column.values;
    SQLLEN& length = lengths_[place];
    char* const value = values_[place % forms_.size()].data() + place / forms_.size() * form.room;
    if (store.cell(row) != ColumnStore::Cell::Filled) {
        length = SQL_NULL_DATA;
        return true;
    }
    const auto copy = [&](const void* bytes, std::size_t size) {
        if (size > form.room) {
            return false;
        }
        std::memcpy(value, bytes, size);
        length = static_cast<SQLLEN>(size);
        return true;
    };
    switch (form.form) {
        case SQL_C_BIT:
            *value = store.integer(row) != 0 ? 1 : 0;
            length = 1;
            return true;
        case SQL_C_SBIGINT: {
            const std::int64_t whole = store.integer(row);
            return copy(&whole, sizeof(whole));
        }
        case SQL_C_DOUBLE: {
            const double real = store.real(row);
            return copy(&real, sizeof(real));
        }
        case SQL_C_TYPE_DATE: {
            const SQL_DATE_STRUCT date = dateOf(store.real(row));
            return copy(&date, sizeof(date));
        }
        case SQL_C_TYPE_TIMESTAMP: {
            const SQL_TIMESTAMP_STRUCT stamp = stampOf(store.real(row), kStampPlaces);
            return copy(&stamp, sizeof(stamp));
        }
        case SQL_C_CHAR: {
            const std::string text = form.type == SQL_VARCHAR ? clockText(store.real(row))
                                     : column.info->wideDecimal
                                         ? std::string(store.bytes(row))
                                         : decimalText(store.integer(row), form.decimals);
            return copy(text.data(), text.size());
        }
        case SQL_C_BINARY: {
            const std::string_view bytes = store.bytes(row);
            return copy(bytes.data(), bytes.size());
        }
        default: {
            const std::u16string units = String(store.bytes(row)).units();
            return copy(units.data(), units.size() * sizeof(char16_t));
        }
    }
}

}  // namespace kap::ado::odbc
