#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <variant>

#include <sqlite3.h>

#include "engine/sqlite/sqlite.hpp"
#include "engine/values/error_slot.hpp"
#include "engine/values/value.hpp"
#include "tsql/server_error.hpp"

// What stands between SQLite, which is C and carries no exception, and functions of ours.
namespace kap::engine {

// The bytes of a text or number as text; empty for NULL. Raises std::bad_alloc when SQLite has no
// memory to make a text of it, which it tells by the same null pointer.
[[nodiscard]] inline std::string_view textBytes(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (text == nullptr) {
        const int type = sqlite3_value_type(value);
        if (type != SQLITE_NULL && type != SQLITE_BLOB) throw std::bad_alloc();
        return {};
    }
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// The bytes of a binary value, for which SQLite answers a null pointer when there are none.
[[nodiscard]] inline std::string_view blobBytes(sqlite3_value* value) {
    const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
    if (bytes == nullptr) return {};
    return {bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// An argument of a function as it is.
[[nodiscard]] inline Value argumentValue(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER:
            return std::int64_t{sqlite3_value_int64(value)};
        case SQLITE_FLOAT:
            return sqlite3_value_double(value);
        case SQLITE_TEXT:
            return std::string(textBytes(value));
        case SQLITE_BLOB:
            return Blob{std::string(blobBytes(value))};
        default:
            return std::monostate{};
    }
}

// Does the work of a function that SQLite calls; what it raises becomes the call's error. The
// server's own goes through the slot.
template <class Work>
void atCBorder(sqlite3_context* context, ErrorSlot& slot, Work work) noexcept {
    try {
        try {
            work();
        } catch (const tsql::ServerError& error) {
            slot.error = error;
            sqlite3_result_error(context, error.what(), -1);
        } catch (const SqliteError& error) {
            sqlite3_result_error(context, error.what(), -1);
            sqlite3_result_error_code(context, error.code());
        }
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

}  // namespace kap::engine
