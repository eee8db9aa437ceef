#include "engine/sqlite/collation.hpp"

#include <cstddef>
#include <new>
#include <string_view>

#include "base/text_order.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/text_collation.hpp"
#include "engine/values/variant.hpp"

namespace kap::engine {

namespace {

constexpr const char* kTextCollation = "KAP_CI";
constexpr const char* kInstantCollation = "KAP_INSTANT";
constexpr const char* kVariantCollation = "KAP_VARIANT";

std::string_view textOf(int size, const void* bytes) {
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

template <std::weak_ordering (*kCompare)(std::string_view, std::string_view) noexcept>
int compareForSqlite(void* /*context*/, int leftSize, const void* left, int rightSize,
                     const void* right) {
    const auto order = kCompare(textOf(leftSize, left), textOf(rightSize, right));
    return std::is_lt(order) ? -1 : (std::is_gt(order) ? 1 : 0);
}

// Universal time, up to its Z.
int compareInstants(void* /*context*/, int leftSize, const void* left, int rightSize,
                    const void* right) {
    constexpr std::size_t kUniversal = 28;
    return textOf(leftSize, left)
        .substr(0, kUniversal)
        .compare(textOf(rightSize, right).substr(0, kUniversal));
}

// The orders that COLLATE asks for, by the names that definitions of older editions hold.
template <bool kCases, bool kAccents, bool kBinary>
std::weak_ordering compareMatching(std::string_view left, std::string_view right) noexcept {
    return compareTextsAs(left, right, {kCases, kAccents, kBinary});
}

// A collation of the server's, which SQLite knows by the same name.
int compareAsCollation(void* collation, int leftSize, const void* left, int rightSize,
                       const void* right) {
    const TextMatching& matching = static_cast<const TextCollation*>(collation)->matching;
    const auto order = compareTextsAs(textOf(leftSize, left), textOf(rightSize, right), matching);
    return std::is_lt(order) ? -1 : (std::is_gt(order) ? 1 : 0);
}

bool knowsCollation(sqlite3* database, const char* name) {
    const auto collation = knownCollation(name);
    if (collation == nullptr) return false;
    // The collation lives as long as the process.
    return sqlite3_create_collation_v2(database, collation->name.c_str(), SQLITE_UTF8,
                                       const_cast<TextCollation*>(collation.get()),
                                       &compareAsCollation, nullptr) == SQLITE_OK;
}

void provideCollation(void* /*context*/, sqlite3* database, int /*encoding*/, const char* name) {
    try {
        (void)knowsCollation(database, name);
    } catch (const std::bad_alloc&) {
        return;  // SQLite then says that there is none
    }
}

void registerCollation(sqlite3* database, const char* name,
                       int (*compare)(void*, int, const void*, int, const void*)) {
    if (sqlite3_create_collation_v2(database, name, SQLITE_UTF8, nullptr, compare, nullptr) !=
        SQLITE_OK) {
        throw lastError(database);
    }
}

}  // namespace

std::string_view collationOf(const tsql::TypeSpec& type) {
    if (tsql::isText(type.type)) return kTextCollation;
    if (type.type == tsql::SqlType::DateTimeOffset) return kInstantCollation;
    return tsql::isVariant(type.type) ? kVariantCollation : "";
}

void registerCollations(sqlite3* database) {
    registerCollation(database, kTextCollation, &compareForSqlite<compareTexts>);
    registerCollation(database, kInstantCollation, &compareInstants);
    registerCollation(database, kVariantCollation, &compareForSqlite<compareVariants>);
    registerCollation(database, "KAP_CS", &compareForSqlite<compareMatching<true, true, false>>);
    registerCollation(database, "KAP_CI_AI",
                      &compareForSqlite<compareMatching<false, false, false>>);
    registerCollation(database, "KAP_CS_AI",
                      &compareForSqlite<compareMatching<true, false, false>>);
    registerCollation(database, "KAP_BIN", &compareForSqlite<compareMatching<true, true, true>>);
    sqlite3_collation_needed(database, nullptr, &provideCollation);
}

std::string collationOfColumn(sqlite3* database, bool temporary, const std::string& table,
                              const std::string& column) {
    const char* name = nullptr;
    const int code =
        sqlite3_table_column_metadata(database, temporary ? "temp" : "main", table.c_str(),
                                      column.c_str(), nullptr, &name, nullptr, nullptr, nullptr);
    return code == SQLITE_OK && name != nullptr ? name : "";
}

bool hasFormerTextOrder(sqlite3* database) {
    PreparedStatement ours(database,
                           "SELECT 1 FROM main.sqlite_schema WHERE name = 'kap_counters'");
    if (!ours.step()) {
        return false;  // the version is another program's, and no index is ours
    }
    PreparedStatement version(database, "PRAGMA main.user_version");
    return version.step() && version.integer(0) < kTextOrder;
}

void registerFormerTextOrder(sqlite3* database) {
    registerCollation(database, kTextCollation, &compareForSqlite<compareTextsBySigns>);
}

}  // namespace kap::engine
