#include "engine/executor/row_reader.hpp"

#include <cstddef>

#include "engine/executor/stored_value.hpp"
#include "engine/sqlite/functions/c_border.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
RowReader::RowReader(const std::vector<ado::ColumnInfo>& columns) : columns_(columns) {
    storages_.reserve(columns.size());
    told_.reserve(columns.size());
    for (const ado::ColumnInfo& column : columns) {
        storages_.push_back(ado::storageOf(column.type));
        const tsql::TypeSpec type = storedType(column);
        told_.push_back(isTold(type) ? std::optional(type) : std::nullopt);
        if (told_.back()) storages_.back() = ado::Storage::Text;
    }
}

void RowReader::read(const PreparedStatement& statement,
                     std::vector<ado::ColumnStore>& stores) const {
    sqlite3_stmt* row = statement.handle();
    for (std::size_t i = 0; i < storages_.size(); ++i) {
        ado::ColumnStore& store = stores[i];
        // The value itself, not its parts one by one: connections are used by one thread at a
        // time, so that nothing needs its lock taken for each of them.
        sqlite3_value* value = sqlite3_column_value(row, static_cast<int>(i));
        const int type = sqlite3_value_type(value);
        if (type == SQLITE_NULL) {
            store.appendNull();
            continue;
        }
        const bool isNumber = type == SQLITE_INTEGER || type == SQLITE_FLOAT;
        switch (storages_[i]) {
            case ado::Storage::Integer:
                if (type != SQLITE_INTEGER) refuse(i);
                store.appendInteger(sqlite3_value_int64(value));
                break;
            case ado::Storage::Real:
                if (!isNumber) refuse(i);
                store.appendReal(sqlite3_value_double(value));
                break;
            case ado::Storage::Text:
                if (told_[i]) {
                    tell(i, value, store);
                } else {
                    store.appendBytes(textBytes(value));
                }
                break;
            case ado::Storage::Binary:
                store.appendBytes(blobBytes(value));
                break;
        }
    }
}

void RowReader::tell(std::size_t column, sqlite3_value* value, ado::ColumnStore& store) const {
    const tsql::TypeSpec& type = *told_[column];
    const ado::Storage form = storedAs(type);
    const int kind = sqlite3_value_type(value);
    if (kind == SQLITE_INTEGER && form != ado::Storage::Text) {
        ado::append(store, toldValue(Value(std::int64_t{sqlite3_value_int64(value)}), type));
    } else if (kind == SQLITE_BLOB && form == ado::Storage::Binary) {
        ado::append(store, toldValue(Blob{std::string(blobBytes(value))}, type));
    } else if (kind == SQLITE_TEXT && form == ado::Storage::Text) {
        ado::append(store, toldValue(std::string(textBytes(value)), type));
    } else {
        refuse(column);
    }
}

void RowReader::refuse(std::size_t column) const {
    throw tsql::ServerError(tsql::Message::ColumnHoldsAnotherType, {columns_[column].name});
}

}  // namespace kap::engine
