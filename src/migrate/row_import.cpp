#include "migrate/row_import.hpp"

#include <cstddef>
#include <memory>
#include <utility>

namespace kap::migrate {

using ado::DataTypeEnum;

ado::DataTypeEnum importedType(const ado::ColumnDefinition& column) {
    switch (column.type) {
        case DataTypeEnum::adBoolean:
        case DataTypeEnum::adInteger:
        case DataTypeEnum::adSmallInt:
        case DataTypeEnum::adUnsignedTinyInt:
        case DataTypeEnum::adBigInt:
            return DataTypeEnum::adBigInt;
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
            return DataTypeEnum::adDouble;
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adDBTimeStamp:
            return DataTypeEnum::adDBTimeStamp;
        case DataTypeEnum::adBinary:
        case DataTypeEnum::adVarBinary:
        case DataTypeEnum::adLongVarBinary:
            return DataTypeEnum::adVarBinary;
        default:
            return DataTypeEnum::adVarWChar;
    }
}

std::vector<ado::ColumnDefinition> importableColumns(ado::Connection& connection,
                                                     const std::string& table) {
    return columnsOf(connection, dialectOf(connection), ado::ObjectName(table));
}

namespace {

ado::RowPlan insertionInto(const std::string& table,
                           const std::vector<ado::ColumnDefinition>& columns) {
    ado::RowPlan::Columns written;
    for (const ado::ColumnDefinition& column : columns) {
        written.values.push_back({column.name, importedType(column)});
    }
    return {ado::RowPlan::Kind::Insert, table, std::move(written)};
}

}  // namespace

RowImport::RowImport(ado::Connection& connection, const std::string& table,
                     const std::vector<ado::ColumnDefinition>& columns)
    : session_(connection.session()),
      insertion_(std::make_shared<const ado::RowPlan>(insertionInto(table, columns))) {
    if (auto* inserting = dynamic_cast<ado::InsertsRows*>(session_.get())) {
        inserter_ = inserting->inserter(*insertion_);
    }
}

void RowImport::insert(const std::vector<ImportedValue>& values) {
    if (inserter_) {
        inserter_->insert(values);
    } else {
        static_cast<void>(session_->apply({insertion_, values}));
    }
}

void RowImport::check(std::size_t column, const ImportedValue& value) {
    if (inserter_) {
        inserter_->check(column, value);
    }
}

}  // namespace kap::migrate
