#include "sqlite_extension/readable_views.hpp"

#include <optional>
#include <string>
#include <vector>

#include "engine/sqlite/functions/c_border.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/value.hpp"
#include "tsql/server_error.hpp"

namespace kap::sqlite_extension {
namespace {

using engine::PreparedStatement;
using engine::sqlName;
using engine::sqlText;

std::vector<std::string> tablesOf(sqlite3* database) {
    PreparedStatement statement(
        database,
        "SELECT name FROM main.sqlite_schema AS t WHERE type = 'table' AND name NOT LIKE "
        "'sqlite\\_%' ESCAPE '\\' AND name NOT LIKE 'kap\\_%' ESCAPE '\\' AND NOT EXISTS (SELECT 1 "
        "FROM main.sqlite_schema WHERE name = t.name || '_readable' COLLATE NOCASE)");
    std::vector<std::string> names;
    while (statement.step()) {
        names.push_back(statement.text(0));
    }
    return names;
}

// Tables that other programs have made may have any type.
std::optional<tsql::TypeSpec> typeDeclared(const std::string& type) {
    try {
        return engine::typeDeclaredAs(type);
    } catch (const tsql::ServerError&) {
        return std::nullopt;
    }
}

// How the view shows a column; empty: as it is.
std::string readableColumn(const std::string& name, const std::string& declared) {
    const auto type = typeDeclared(declared);
    if (!type) {
        return {};
    }
    if (tsql::isDecimal(type->type) || tsql::isMoney(type->type)) {
        return "kap_number(" + sqlName(name) + ", " + sqlText(declared) + ")";
    }
    if (tsql::isDate(type->type)) {
        return "kap_text(" + sqlName(name) + ", " + sqlText(declared) + ")";
    }
    return {};
}

// The view's text; empty when the table is readable as it is.
std::string viewOf(sqlite3* database, const std::string& table) {
    constexpr int kName = 1;
    constexpr int kType = 2;
    PreparedStatement columns(database, "PRAGMA main.table_xinfo(" + sqlName(table) + ")");
    std::string list;
    bool any = false;
    while (columns.step()) {
        const std::string name = columns.text(kName);
        const std::string readable = readableColumn(name, columns.text(kType));
        any = any || !readable.empty();
        list += (list.empty() ? "" : ", ") +
                (readable.empty() ? sqlName(name) : readable + " AS " + sqlName(name));
    }
    return any ? "SELECT " + list + " FROM main." + sqlName(table) : std::string();
}

void viewsFunction(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
    engine::ErrorSlot slot;
    engine::atCBorder(context, slot, [&] {
        sqlite3_result_int(context, makeReadableViews(sqlite3_context_db_handle(context)));
    });
}

}  // namespace

int makeReadableViews(sqlite3* database) {
    int made = 0;
    for (const std::string& table : tablesOf(database)) {
        const std::string name = "temp." + sqlName(table + "_readable");
        PreparedStatement(database, "DROP VIEW IF EXISTS " + name).run();
        const std::string view = viewOf(database, table);
        if (!view.empty()) {
            PreparedStatement(database,
                              "CREATE TEMP VIEW " + sqlName(table + "_readable") + " AS " + view)
                .run();
            ++made;
        }
    }
    return made;
}

void registerReadableViews(sqlite3* database) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DIRECTONLY;
    if (sqlite3_create_function_v2(database, "kap_views", 0, kFlags, nullptr, &viewsFunction,
                                   nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw engine::lastError(database);
    }
}

}  // namespace kap::sqlite_extension
