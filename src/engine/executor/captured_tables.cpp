#include "engine/executor/captured_tables.hpp"

#include <new>

#include "engine/sqlite/definition_writer.hpp"
#include "engine/values/value.hpp"

namespace kap::engine {
namespace {

std::string columnsText(const Table& table) {
    std::string text;
    for (const Column& column : table.columns) {
        text += sqlName(column.name) + declaredType(column.type) + ",";
    }
    return text;
}

}  // namespace

bool CapturedTables::isThere(const Table& table) {
    if (count_.handle() == nullptr) {
        count_ = {database_.handle(),
                  "SELECT count(*) FROM temp.sqlite_schema WHERE (type = 'trigger' AND name IN "
                  "(?1, ?2, ?3) AND tbl_name = ?4) OR (type = 'table' AND name IN (?5, ?6))",
                  StatementLife::Kept};
    }
    const CaptureNames names = captureNames(table);
    const ResetGuard guard(count_);
    int index = 0;
    for (const std::string& trigger : names.triggers) {
        count_.bind(++index, std::string_view(trigger));
    }
    count_.bind(++index, std::string_view(table.name));
    for (const std::string& rows : names.tables) {
        count_.bind(++index, std::string_view(rows));
    }
    return count_.step() && count_.integer(0) == static_cast<std::int64_t>(names.triggers.size() +
                                                                           names.tables.size());
}

// What is there may again be what was there before.
void CapturedTables::noticeUndoing() {
    if (undoings_ == catalogue_.undoings()) {
        return;
    }
    undoings_ = catalogue_.undoings();
    checked_ = 0;
    shapes_.clear();
    for (auto& [name, capture] : captures_) {
        capture.columns.clear();
        capture.checked = 0;
    }
}

void CapturedTables::ensure(const Table& table) {
    noticeUndoing();
    std::string columns = columnsText(table);
    Capture& capture = captures_[captureKey(table)];
    if (capture.columns != columns || !isThere(table)) {
        for (const std::string& sql : makeCapture(table)) {
            PreparedStatement(database_.handle(), sql).run();
        }
    }
    capture = {table.name, table.captureLevel, std::move(columns), catalogue_.fileChanges(),
               table.temporary};
}

void CapturedTables::ensureRows(const Table& shape) {
    noticeUndoing();
    std::string columns = columnsText(shape);
    std::string& known = shapes_[captureKey(shape)];
    PreparedStatement look(database_.handle(),
                           "SELECT count(*) FROM temp.sqlite_schema WHERE type = 'table' AND name "
                           "IN (?1, ?2)");
    const CaptureNames names = captureNames(shape);
    look.bind(1, std::string_view(names.tables[0]));
    look.bind(2, std::string_view(names.tables[1]));
    if (known == columns && look.step() && look.integer(0) == 2) return;
    look.reset();
    known = std::move(columns);
    for (const std::string& sql : removeCapture(shape))
        PreparedStatement(database_.handle(), sql).run();
    for (const std::string& sql : makeCapturedRows(shape))
        PreparedStatement(database_.handle(), sql).run();
}

void CapturedTables::empty(const Table& table) {
    for (const std::string& rows : captureNames(table).tables) {
        const sql::Write all{sql::Delete{{sql::Database::Temporary, rows}}};
        PreparedStatement(database_.handle(), sqlOf(all)).run();
    }
}

void CapturedTables::remove(const Table& table) {
    for (const auto& [key, capture] : captures_) {
        if (capture.table != table.name) continue;
        Table level = table;
        level.captureLevel = capture.level;
        for (const std::string& sql : removeCapture(level)) {
            PreparedStatement(database_.handle(), sql).run();
        }
    }
}

// Nobody else changes the temporary tables of this connection. A removal may be undone with the
// transaction, so that it counts only when it is found done.
void CapturedTables::removeStale() {
    noticeUndoing();
    if (checked_ == catalogue_.fileChanges()) {
        return;
    }
    bool removed = false;
    for (auto& [key, capture] : captures_) {
        if (capture.temporary || capture.checked == catalogue_.fileChanges()) {
            continue;
        }
        // Without its table a trigger is no trouble, and SQLite does not find it to drop it.
        const Table* found = catalogue_.find(capture.table);
        Table now = found == nullptr ? Table() : *found;
        now.captureLevel = capture.level;
        if (found != nullptr && columnsText(now) != capture.columns && isThere(now)) {
            remove(now);
            removed = true;
        } else {
            capture.checked = catalogue_.fileChanges();
        }
    }
    if (!removed) checked_ = catalogue_.fileChanges();
}

void CapturedTables::dropped(const std::string& name) noexcept {
    try {
        std::erase_if(captures_, [&](const auto& entry) {
            if (entry.second.table != name) return false;
            Table table;
            table.name = name;
            table.captureLevel = entry.second.level;
            for (const std::string& rows : captureNames(table).tables) {
                const std::string sql = sqlOf(
                    sql::Drop{sql::SchemaObject::Table, sql::Database::Temporary, rows, true});
                sqlite3_exec(database_.handle(), sql.c_str(), nullptr, nullptr, nullptr);
            }
            return true;
        });
    } catch (const std::bad_alloc&) {
        // They stay, and are known.
    }
}

}  // namespace kap::engine
