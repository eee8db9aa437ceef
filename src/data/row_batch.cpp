#include "data/row_batch.hpp"

#include <algorithm>
#include <utility>
#include <variant>

#include <kaputil/automation/decimal.hpp>

#include "data/cell_value.hpp"
#include "data/value_type.hpp"

namespace kap::ado {
namespace {

constexpr std::size_t kMostRows = 100;

RequestParameter parameterOf(const ColumnInfo& info) {
    RequestParameter made;
    made.type = info.type;
    made.precision = info.precision;
    made.numericScale = info.numericScale;
    return made;
}

// A decimal that is kept as its text goes as a whole number of its last decimal where it is one, as
// other decimals do, and else as a text, which its database reads by its own rules.
void putCell(RequestParameter& parameter, const RowBatch::Column& column, std::size_t row) {
    const ColumnInfo& info = *column.info;
    parameter.type = info.type;
    parameter.value = databaseValue(info, *column.values, row);
    const auto* digits = std::get_if<std::string>(&parameter.value);
    if (!info.wideDecimal || digits == nullptr) {
        return;
    }
    const auto number = Decimal::parse(*digits);
    const auto scaled = number && info.numericScale <= kWidestDecimal
                            ? number->scaledTo(info.numericScale)
                            : std::nullopt;
    if (scaled) {
        parameter.value = *scaled;
    } else {
        parameter.type = DataTypeEnum::adVarWChar;
    }
}

}  // namespace

std::string RowBatch::beginning() const {
    std::string text = "INSERT INTO " + table + " (";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        text += (i == 0 ? "" : ", ") + columns[i].name;
    }
    return text + ") VALUES ";
}

std::string RowBatch::insertion(std::size_t rows) const {
    if (columns.empty()) {
        return "INSERT INTO " + table + " DEFAULT VALUES";
    }
    std::string row = "(";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        row += (i == 0 ? "" : ",") + columns[i].mark;
    }
    row += ")";
    std::string text = beginning();
    for (std::size_t i = 0; i < rows; ++i) {
        text += (i == 0 ? "" : ",") + row;
    }
    return text;
}

void appendByRequests(Session& session, const RowBatch& batch, std::size_t most) {
    const std::size_t width = std::max<std::size_t>(batch.columns.size(), 1);
    const std::size_t rowsAStatement =
        batch.columns.empty() ? 1 : std::clamp<std::size_t>(most / width, 1, kMostRows);
    Request request;
    for (std::size_t done = 0; done < batch.count;) {
        const std::size_t rows = std::min(rowsAStatement, batch.count - done);
        if (request.text.empty() || request.parameters.size() != rows * batch.columns.size()) {
            request.text = batch.insertion(rows);
            request.parameters.clear();
            for (std::size_t i = 0; i < rows; ++i) {
                for (const RowBatch::Column& column : batch.columns) {
                    request.parameters.push_back(parameterOf(*column.info));
                }
            }
        }
        std::size_t place = 0;
        for (std::size_t i = 0; i < rows; ++i, ++done) {
            for (const RowBatch::Column& column : batch.columns) {
                putCell(request.parameters[place++], column, batch.first + done);
            }
        }
        Reply reply;
        session.execute(request, reply);
    }
}

}  // namespace kap::ado
