#include "drivers/odbc/json_insertion.hpp"

#include <algorithm>
#include <iterator>

#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "data/cell_text.hpp"
#include "data/value_type.hpp"
#include "drivers/odbc/catalogue_call.hpp"
#include "drivers/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

using enum DataTypeEnum;

constexpr std::size_t kMostRowsAText = 2000;
// No longer in UTF-16 than in UTF-8.
constexpr std::size_t kMostUnits = std::size_t{512} * 1024;
constexpr std::int32_t kLongestText = 4000;

std::string withDigits(int precision, int scale) {
    return "decimal(" + plain::text(precision) + "," + plain::text(scale) + ")";
}

// What the server is to take a column's values for; empty: they cannot be said in such a text.
std::string typeInText(const ColumnInfo& info) {
    switch (info.type) {
        case adBoolean:
            return "bit";
        case adUnsignedTinyInt:
            return "tinyint";
        case adTinyInt:
        case adSmallInt:
            return "smallint";
        case adUnsignedSmallInt:
        case adInteger:
            return "int";
        case adUnsignedInt:
        case adBigInt:
            return "bigint";
        case adCurrency:
            return "money";
        case adNumeric:
        case adDecimal: {
            const int precision = info.wideDecimal ? 38 : 18;
            return info.numericScale <= precision ? withDigits(precision, info.numericScale) : "";
        }
        case adSingle:
            return "real";
        case adDouble:
            return "float";
        case adDBDate:
            return "date";
        case adDBTime:
            return "varchar(24)";
        case adDate:
        case adDBTimeStamp:
            return "datetime2(3)";
        case adGUID:
            return "varchar(40)";
        default:
            break;
    }
    const bool text = storageOf(info.type) == Storage::Text && info.type != adVariant;
    const bool limited = !info.isLong && info.definedSize > 0 && info.definedSize <= kLongestText;
    return text && limited ? "nvarchar(" + plain::text(info.definedSize) + ")" : "";
}

// Each row of the text is an array of the values in their order.
std::string insertionOf(const RowBatch& batch) {
    std::string names;
    std::string values;
    std::string types;
    for (std::size_t i = 0; i < batch.columns.size(); ++i) {
        const std::string comma = i == 0 ? "" : ", ";
        const std::string value = "v" + plain::text(i);
        names += comma + batch.columns[i].name;
        values += comma + value;
        types += comma + value + " " + typeInText(*batch.columns[i].info) + " '$[" +
                 plain::text(i) + "]'";
    }
    return "INSERT INTO " + batch.table + " (" + names + ") SELECT " + values +
           " FROM OPENJSON(CAST(? AS nvarchar(max))) WITH (" + types + ")";
}

}  // namespace

JsonInsertion::Reading JsonInsertion::readingOf(OdbcConnection& connection,
                                                std::chrono::seconds timeout) {
    const std::string query = connection.dialect().jsonQuery();
    if (query.empty()) {
        return Reading::None;
    }
    Handle statement = connection.newStatement(timeout);
    const String text(query);
    if (!SQL_SUCCEEDED(SQLExecDirectW(statement.get(), wide(text.units()),
                                      static_cast<SQLINTEGER>(text.size())))) {
        (void)connection.failure(statement);  // which remembers a loss
        return Reading::None;
    }
    CatalogueRows rows(connection, std::move(statement));
    const std::string quote = rows.next() ? rows.text(1) : std::string();
    return quote == "\"" ? Reading::Whole : quote == "\\\"" ? Reading::Plain : Reading::None;
}

bool JsonInsertion::fits(const RowBatch& batch) {
    return !batch.columns.empty() &&
           std::ranges::all_of(batch.columns, [](const RowBatch::Column& column) {
               return column.mark == "?" && !typeInText(*column.info).empty();
           });
}

JsonInsertion::JsonInsertion(OdbcConnection& connection, Reading reading, const RowBatch& batch,
                             std::chrono::seconds timeout)
    : connection_(connection),
      reading_(reading),
      statementText_(insertionOf(batch)),
      statement_(connection.newStatement(timeout)),
      units_(kMostUnits) {
    const String text(statementText_);
    connection_.check(
        SQLPrepareW(statement_.get(), wide(text.units()), static_cast<SQLINTEGER>(text.size())),
        statement_);
    connection_.check(
        SQLBindParameter(statement_.get(), 1, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WLONGVARCHAR,
                         kMostUnits, 0, units_.data(),
                         static_cast<SQLLEN>(kMostUnits * sizeof(char16_t)), &length_),
        statement_);
}

bool JsonInsertion::isFor(const RowBatch& batch) const {
    return statementText_ == insertionOf(batch);
}

JsonInsertion::Taken JsonInsertion::take(const RowBatch& batch) {
    Taken taken;
    rows_ = "[";
    for (; taken.rows < std::min(batch.count, kMostRowsAText); ++taken.rows) {
        const std::size_t before = rows_.size();
        const bool said = appendRow(batch, batch.first + taken.rows);
        if (said && rows_.size() < kMostUnits) {
            continue;
        }
        rows_.resize(before);
        if (said && before > 1) {
            break;  // it goes into the next text
        }
        taken.others.push_back(batch.first + taken.rows);
    }
    if (rows_.size() > 1) {
        rows_.back() = ']';  // in the place of the last comma
    }
    return taken;
}

bool JsonInsertion::appendRow(const RowBatch& batch, std::size_t row) {
    char before = '[';
    for (const RowBatch::Column& column : batch.columns) {
        rows_ += before;
        before = ',';
        if (!appendValue(column, row)) {
            return false;
        }
    }
    rows_ += "],";
    return true;
}

bool JsonInsertion::appendValue(const RowBatch::Column& column, std::size_t row) {
    const ColumnInfo& info = *column.info;
    value_.clear();
    if (info.type == adDBTime && column.values->cell(row) == ColumnStore::Cell::Filled) {
        value_ = clockText(column.values->real(row));
    } else if (!appendCellText(info, *column.values, row, value_)) {
        rows_ += "null";
        return true;
    }
    return appendQuoted(value_);
}

bool JsonInsertion::appendQuoted(const std::string& text) {
    rows_ += '"';
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        const bool escaped = code < ' ' || letter == '"' || letter == '\\';
        if (!escaped) {
            rows_ += letter;
            continue;
        }
        if (reading_ == Reading::Plain || code == 0) {
            return false;
        }
        rows_ += code < ' ' ? "\\u00" + hex::ofBytes({&letter, 1}) : std::string{'\\', letter};
    }
    rows_ += '"';
    return true;
}

void JsonInsertion::run(std::chrono::seconds timeout) {
    if (rows_.size() <= 1) {
        return;
    }
    const String text(rows_);
    std::ranges::copy(text.units(), units_.begin());
    length_ = static_cast<SQLLEN>(text.size() * sizeof(char16_t));
    connection_.renew(statement_, timeout);
    SQLRETURN code = SQLExecute(statement_.get());
    // Every result is taken: an error may stand behind the first.
    while (code != SQL_NO_DATA) {
        connection_.check(code, statement_);
        code = SQLMoreResults(statement_.get());
    }
    SQLFreeStmt(statement_.get(), SQL_CLOSE);
}

}  // namespace kap::ado::odbc
