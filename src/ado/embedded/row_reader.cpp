#include "ado/embedded/row_reader.hpp"

#include <cstddef>
#include <string_view>

#include "tsql/server_error.hpp"

namespace kap::ado::embedded {
namespace {

std::string_view textCell(sqlite3_stmt* row, int column) {
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
}

std::string_view binaryCell(sqlite3_stmt* row, int column) {
    // SQLite answers a null pointer for no bytes.
    const auto* data = static_cast<const char*>(sqlite3_column_blob(row, column));
    return data == nullptr ? std::string_view()
                           : std::string_view(
                                 data, static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
}

}  // namespace

RowReader::RowReader(const std::vector<ColumnInfo>& columns) : columns_(columns) {
    storages_.reserve(columns.size());
    for (const ColumnInfo& column : columns) {
        storages_.push_back(storageOf(column.type));
    }
}

void RowReader::read(const PreparedStatement& statement, std::vector<ColumnStore>& stores) const {
    sqlite3_stmt* row = statement.handle();
    for (std::size_t i = 0; i < storages_.size(); ++i) {
        const int column = static_cast<int>(i);
        ColumnStore& store = stores[i];
        const int type = sqlite3_column_type(row, column);
        if (type == SQLITE_NULL) {
            store.appendNull();
            continue;
        }
        const bool isNumber = type == SQLITE_INTEGER || type == SQLITE_FLOAT;
        switch (storages_[i]) {
            case Storage::Integer:
                if (type != SQLITE_INTEGER) {
                    refuse(i);
                }
                store.appendInteger(sqlite3_column_int64(row, column));
                break;
            case Storage::Real:
                if (!isNumber) {
                    refuse(i);
                }
                store.appendReal(sqlite3_column_double(row, column));
                break;
            case Storage::Text:
                store.appendBytes(textCell(row, column));
                break;
            case Storage::Binary:
                store.appendBytes(binaryCell(row, column));
                break;
        }
    }
}

void RowReader::refuse(std::size_t column) const {
    throw tsql::ServerError(245, "Conversion failed: column '" + columns_[column].name +
                                     "' holds a value that is not of its type.");
}

}  // namespace kap::ado::embedded
