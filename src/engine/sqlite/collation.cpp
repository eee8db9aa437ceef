#include "engine/sqlite/collation.hpp"

#include <cstddef>
#include <string_view>

#include "base/text_order.hpp"
#include "engine/sqlite/sqlite.hpp"
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

// The orders that COLLATE asks for.
template <bool kCases, bool kAccents, bool kBinary>
std::weak_ordering compareMatching(std::string_view left, std::string_view right) noexcept {
    return compareTextsAs(left, right, {kCases, kAccents, kBinary});
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

std::string collationText(const tsql::TypeSpec& type) {
    const std::string_view collation = collationOf(type);
    return collation.empty() ? std::string() : " COLLATE " + std::string(collation);
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
