// The values of many records at once.
#include <algorithm>
#include <limits>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/element_index.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/row_cursor.hpp"
#include "base/hexadecimal.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

constexpr std::int32_t kAllRows = -1;

std::size_t fieldWanted(const RowCursor& cursor, const Variant& field) {
    return elementAt(field, cursor.columns().size(),
                     [&](const String& name) { return cursor.find(name); });
}

String textOf(const Variant& value) {
    if (!value.isArray()) {
        return convert::toString(value);
    }
    return String(hex::ofBytes(value.as<Array>().bytes()));
}

}  // namespace

std::vector<std::size_t> Recordset::fieldsWanted(const Variant& fields) const {
    std::vector<std::size_t> wanted;
    if (fields.isMissing()) {
        for (std::size_t i = 0; i < cursor_->columns().size(); ++i) {
            wanted.push_back(i);
        }
    } else if (fields.isArray()) {
        const Array& names = fields.as<Array>();
        for (std::int32_t i = names.lowerBound(); i <= names.upperBound(); ++i) {
            wanted.push_back(fieldWanted(*cursor_, names.at(i)));
        }
    } else {
        wanted.push_back(fieldWanted(*cursor_, fields));
    }
    return wanted;
}

// The records from the current one to the end, or as many of them as asked for.
std::size_t Recordset::rowsWanted(std::int32_t rows) const {
    if (rows < kAllRows) {
        fail::invalidArgument();
    }
    const std::size_t wanted =
        rows == kAllRows ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(rows);
    return std::min(cursor_->rowsLeft(wanted), wanted);
}

Variant Recordset::GetRows(std::int32_t rows, const Variant& start, const Variant& fields) {
    savePending();
    Variant values;
    moving(*this, EventReasonEnum::adRsnMove, [&] { values = takeRows(rows, start, fields); });
    return values;
}

Variant Recordset::takeRows(std::int32_t rows, const Variant& start, const Variant& fields) {
    moveTo(start);
    const std::vector<std::size_t> wanted = fieldsWanted(fields);
    if (cursor_->eof()) {
        fail::noCurrentRecord();
    }
    const std::size_t count = rowsWanted(rows);
    Array values({{0, wanted.size()}, {0, count}}, VarType::Variant);
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            const std::int32_t at[] = {static_cast<std::int32_t>(i),
                                       static_cast<std::int32_t>(row)};
            values.put(at, cursor_->value(wanted[i]));
        }
        cursor_->move(1);
    }
    return values;
}

String Recordset::GetString(StringFormatEnum stringFormat, std::int32_t numRows,
                            const String& columnDelimiter, const String& rowDelimiter,
                            const String& nullExpr) {
    savePending();
    if (stringFormat != StringFormatEnum::adClipString) {
        fail::invalidArgument();
    }
    String text;
    moving(*this, EventReasonEnum::adRsnMove,
           [&] { text = takeString(numRows, columnDelimiter, rowDelimiter, nullExpr); });
    return text;
}

String Recordset::takeString(std::int32_t numRows, const String& columnDelimiter,
                             const String& rowDelimiter, const String& nullExpr) {
    if (opened().eof()) {
        fail::noCurrentRecord();
    }
    const std::size_t count = rowsWanted(numRows);
    String text;
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t i = 0; i < cursor_->columns().size(); ++i) {
            const Variant value = cursor_->value(i);
            text += i == 0 ? std::u16string_view() : columnDelimiter.view();
            text += value.isNull() ? nullExpr.view() : textOf(value).view();
        }
        text += rowDelimiter.view();
        cursor_->move(1);
    }
    return text;
}

}  // namespace kap::ado
