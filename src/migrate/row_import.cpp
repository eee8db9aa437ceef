#include "migrate/row_import.hpp"

#include <cstddef>
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

RowImport::RowImport(ado::Connection& connection, const std::string& table,
                     const std::vector<ado::ColumnDefinition>& columns)
    : session_(connection.session()) {
    change_.kind = ado::RowChange::Kind::Insert;
    change_.table = table;
    for (const ado::ColumnDefinition& column : columns) {
        ado::ColumnValue value;
        value.column = column.name;
        value.type = importedType(column);
        change_.values.push_back(std::move(value));
    }
    if (auto* inserting = dynamic_cast<ado::InsertsRows*>(session_.get())) {
        inserter_ = inserting->inserter({table, change_.values});
    }
}

void RowImport::insert(const std::vector<ImportedValue>& values) {
    if (inserter_) {
        inserter_->insert(values);
        return;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        change_.values[i].value = values[i];
    }
    static_cast<void>(session_->apply(change_));
}

void RowImport::check(std::size_t column, const ImportedValue& value) {
    if (inserter_) {
        inserter_->check(column, value);
    }
}

}  // namespace kap::migrate
