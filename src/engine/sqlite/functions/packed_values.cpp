#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/functions/function_support.hpp"

// Values that stand in for others while the keys of several rows change at once: bytes that no
// column holds otherwise, different for each row, and from which the value can be had back.
namespace kap::engine {

namespace {

constexpr std::string_view kMark("\0kap packed value\0", 18);

template <typename Number>
void append(std::string& bytes, Number number) {
    std::array<char, sizeof(Number)> raw{};
    std::memcpy(raw.data(), &number, sizeof(Number));
    bytes.append(raw.data(), raw.size());
}

template <typename Number>
Number numberAt(std::string_view bytes) {
    Number number{};
    std::memcpy(&number, bytes.data(), sizeof(Number));
    return number;
}

// The bytes behind the mark and the number of the row; empty when it is no packed value.
std::string_view content(sqlite3_value* value) {
    if (sqlite3_value_type(value) != SQLITE_BLOB) return {};
    const auto* data = static_cast<const char*>(sqlite3_value_blob(value));
    if (data == nullptr) return {};
    const std::string_view bytes(data, static_cast<std::size_t>(sqlite3_value_bytes(value)));
    if (!bytes.starts_with(kMark)) return {};
    return bytes.substr(kMark.size() + sizeof(std::int64_t));
}

void packInto(sqlite3_context* context, sqlite3_value** values) {
    std::string bytes(kMark);
    append(bytes, static_cast<std::int64_t>(sqlite3_value_int64(values[0])));
    const int type = sqlite3_value_type(values[1]);
    bytes += static_cast<char>(type);
    if (type == SQLITE_INTEGER) {
        append(bytes, static_cast<std::int64_t>(sqlite3_value_int64(values[1])));
    } else if (type == SQLITE_FLOAT) {
        append(bytes, sqlite3_value_double(values[1]));
    } else if (type != SQLITE_NULL) {
        bytes += type == SQLITE_TEXT ? textBytes(values[1]) : blobBytes(values[1]);
    }
    sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

// kap_pack(row, value)
void pack(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    ErrorSlot none;
    atCBorder(context, none, [&] { packInto(context, values); });
}

// kap_unpack(value): the value that was packed; any other as it is.
void unpack(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    std::string_view bytes = content(values[0]);
    if (bytes.empty()) {
        sqlite3_result_value(context, values[0]);
        return;
    }
    const int type = bytes.front();
    bytes.remove_prefix(1);
    switch (type) {
        case SQLITE_INTEGER:
            sqlite3_result_int64(context, numberAt<std::int64_t>(bytes));
            return;
        case SQLITE_FLOAT:
            sqlite3_result_double(context, numberAt<double>(bytes));
            return;
        case SQLITE_TEXT:
            sqlite3_result_text64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT,
                                  SQLITE_UTF8);
            return;
        case SQLITE_BLOB:
            sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
            return;
        default:
            sqlite3_result_null(context);
    }
}

// kap_packed(value): whether it is one.
void isPacked(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    sqlite3_result_int(context, content(values[0]).empty() ? 0 : 1);
}

}  // namespace

void registerPackedValues(Registrar& registrar) {
    registrar.raw("kap_pack", 2, pack);
    registrar.raw("kap_unpack", 1, unpack);
    registrar.raw("kap_packed", 1, isPacked);
}

}  // namespace kap::engine
