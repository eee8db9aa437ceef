#include "engine/binder/row_numbers.hpp"

#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "tsql/server_error.hpp"

namespace kap::engine {

std::string rowNumberName(const Table& table) {
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        if (table.find(name) == nullptr) return name;
    }
    throw tsql::unsupported("a table with columns rowid, _rowid_ and oid", 0);
}

sql::Expression rowNumberOf(const Source& source) {
    if (source.rowNumber) return source.rowNumber;
    return sql::Column{source.name, rowNumberName(*source.table), true};
}

sql::Database databaseOf(const Table& table) {
    return table.temporary ? sql::Database::Temporary : sql::Database::Main;
}

sql::TableName tableName(const Table& table, std::string alias) {
    return {databaseOf(table), table.name, std::move(alias)};
}

sql::Select numberedRows(const Table& table) {
    sql::Select rows;
    rows.items.push_back({sql::Column{{}, rowNumberName(table), true}, kRowNumber});
    rows.items.push_back({sql::Star()});
    rows.from = sql::from(tableName(table));
    return rows;
}

std::string captureKey(const Table& table) {
    return table.captureLevel == 0 ? table.name
                                   : table.name + " (" + plain::text(table.captureLevel) + ")";
}

Table capturedRows(const Table& table, RowState state) {
    Table result = table;
    result.name =
        (state == RowState::Inserted ? "kap inserted " : "kap deleted ") + captureKey(table);
    result.temporary = true;
    result.triggerEvents = 0;
    result.insteadOfEvents = 0;
    result.captureLevel = 0;
    for (Column& column : result.columns) {
        column.identity.reset();
        column.computed = false;
        column.keyOrdinal = 0;
    }
    return result;
}

}  // namespace kap::engine
