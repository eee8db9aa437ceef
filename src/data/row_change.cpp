#include "data/row_change.hpp"

#include <utility>

namespace kap::ado {
namespace {

// No name holds what ends each part.
constexpr char kEndOfPart = '\0';

void appendColumns(std::string& key, const std::vector<RowColumn>& columns) {
    for (const RowColumn& column : columns) {
        key += column.name;
        key += kEndOfPart;
        const auto type = static_cast<std::uint16_t>(column.type);
        key += static_cast<char>(type & 0xFFU);
        key += static_cast<char>(type >> 8U);
        key += static_cast<char>(column.numericScale);
    }
    key += kEndOfPart;
}

}  // namespace

RowPlan::RowPlan(Kind kind, std::string table, Columns columns)
    : kind_(kind), table_(std::move(table)), columns_(std::move(columns)) {
    key_ = static_cast<char>(kind_);
    key_ += table_;
    key_ += kEndOfPart;
    appendColumns(key_, columns_.values);
    appendColumns(key_, columns_.criteria);
    appendColumns(key_, columns_.readBack);
}

}  // namespace kap::ado
