#include "engine/executor/kept_tables.hpp"

#include "engine/executor/statement_runner.hpp"

namespace kap::engine {

namespace {

// A value as SQLite holds it, whatever its column is declared.
Value stored(const PreparedStatement& row, int column) {
    switch (sqlite3_column_type(row.handle(), column)) {
        case SQLITE_INTEGER:
            return row.integer(column);
        case SQLITE_FLOAT:
            return sqlite3_column_double(row.handle(), column);
        case SQLITE_TEXT:
            return row.text(column);
        case SQLITE_BLOB:
            return Blob{row.text(column)};
        default:
            return std::monostate{};
    }
}

}  // namespace

KeptTables::KeptTables(Database& database, Counters& counters, const std::vector<Frame*>& frames)
    : database_(database), counters_(counters) {
    for (const Frame* frame : frames) {
        for (const VariableTable& table : frame->localTables) {
            if (exists(table)) remember(table);
        }
    }
}

bool KeptTables::exists(const VariableTable& table) {
    return database_.hasTable("temp", table.name);
}

void KeptTables::remember(const VariableTable& table) {
    Kept kept;
    kept.table = &table;
    PreparedStatement columns(database_.handle(),
                              "SELECT name FROM pragma_table_xinfo(?1, 'temp') WHERE hidden = 0");
    columns.bind(1, std::string_view(table.name));
    int count = 0;
    for (; columns.step(); ++count)
        kept.columns += (count == 0 ? "" : ", ") + sqlName(columns.text(0));
    PreparedStatement rows(database_.handle(), "SELECT " + kept.columns + " FROM temp." +
                                                   sqlName(table.name) + " ORDER BY rowid");
    while (rows.step()) {
        std::vector<Value>& row = kept.rows.emplace_back();
        for (int i = 0; i < count; ++i)
            row.push_back(stored(rows, i));
    }
    tables_.push_back(std::move(kept));
}

void KeptTables::putBack() {
    for (const Kept& kept : tables_)
        putBack(kept);
}

void KeptTables::putBack(const Kept& kept) {
    const std::string name = "temp." + sqlName(kept.table->name);
    if (exists(*kept.table)) {
        PreparedStatement(database_.handle(), "DELETE FROM " + name).run();
    } else {
        for (const std::string& sql : kept.table->sql)
            PreparedStatement(database_.handle(), sql).run();
        counters_.add(kept.table->definition);
    }
    if (kept.rows.empty()) return;
    std::string marks = "?";
    for (std::size_t i = 1; i < kept.rows.front().size(); ++i)
        marks += ", ?";
    PreparedStatement insert(
        database_.handle(),
        "INSERT INTO " + name + " (" + kept.columns + ") VALUES (" + marks + ")",
        StatementLife::Kept);
    for (const std::vector<Value>& row : kept.rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            insert.bind(static_cast<int>(i) + 1, row[i]);
        insert.run();
    }
}

}  // namespace kap::engine
