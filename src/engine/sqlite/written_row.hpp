#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <sqlite3.h>

namespace kap::engine {

// Notes the number of the first row that is inserted or updated in a table, for as long as it
// lives. A table without such numbers gives none. One at a time for a connection.
//
// SQLite's RETURNING says the same, and makes a table in memory for it each time.
class WrittenRow {
public:
    WrittenRow(sqlite3* database, std::string_view table) : database_(database), table_(table) {
        sqlite3_update_hook(database_, &WrittenRow::written, this);
    }
    WrittenRow(const WrittenRow&) = delete;
    WrittenRow& operator=(const WrittenRow&) = delete;
    ~WrittenRow() { sqlite3_update_hook(database_, nullptr, nullptr); }

    [[nodiscard]] const std::optional<std::int64_t>& number() const noexcept { return number_; }

private:
    static void written(void* self, int operation, const char* /*schema*/, const char* table,
                        sqlite3_int64 number) {
        auto& row = *static_cast<WrittenRow*>(self);
        if (!row.number_ && operation != SQLITE_DELETE && row.table_ == table) {
            row.number_ = number;
        }
    }

    sqlite3* database_;
    std::string_view table_;
    std::optional<std::int64_t> number_;
};

}  // namespace kap::engine
