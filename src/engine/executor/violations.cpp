#include "engine/executor/violations.hpp"

#include <algorithm>
#include <set>

#include "base/ascii.hpp"
#include "engine/catalog/bound_rules.hpp"
#include "engine/catalog/key_names.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/sqlite/time_limit.hpp"
#include "engine/values/value.hpp"
#include "tsql/lexer.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

// Where a constraint was violated. A column is named only when there is but one.
struct ConflictPlace {
    const std::string& table;
    const std::vector<std::string>& columns;
};

ServerError conflict(const SchemaCatalogue& catalogue, const std::string& verb,
                     std::string_view kind, const std::string& name, const ConflictPlace& place) {
    const std::string column =
        place.columns.size() == 1 ? ", column '" + place.columns.front() + "'" : "";
    return {tsql::Message::ConstraintConflict,
            {verb, kind, name, catalogue.databaseName(), withSchema(place.table), column}};
}

// The columns that a condition names, as its text quotes them.
std::vector<std::string> columnsIn(const std::string& condition, const Table* table) {
    std::vector<std::string> columns;
    for (const tsql::Token& token : tsql::tokenize(condition)) {
        if (token.kind != tsql::TokenKind::QuotedName) continue;
        const Column* column = table == nullptr ? nullptr : table->find(token.text);
        const bool known =
            column != nullptr && std::ranges::find(columns, column->name) == columns.end();
        if (known) columns.push_back(column->name);
    }
    return columns;
}

// "CHECK constraint failed: CK_t_a"
ServerError checkViolated(const SchemaCatalogue& catalogue, const SqliteError& error,
                          const WriteContext& context) {
    const std::string message = error.what();
    const std::size_t colon = message.find(": ");
    const std::string name = colon == std::string::npos ? message : message.substr(colon + 2);
    std::vector<std::string> columns;
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (sameName(each.name, name) && sameName(each.table, context.table)) {
            columns = columnsIn(each.definition, catalogue.find(context.table));
        }
    }
    if (isBoundRule(name) && !columns.empty()) {
        return {tsql::Message::RuleViolated,
                {catalogue.databaseName(), withSchema(context.table), columns.front()}};
    }
    return conflict(catalogue, context.verb, "CHECK", name, {context.table, columns});
}

// "UNIQUE constraint failed: index 't.i (nulls)'" or the columns of the index.
ServerError duplicate(const SchemaCatalogue& catalogue, const SqliteError& error,
                      const WriteContext& context) {
    const std::string message = error.what();
    const std::vector<std::string> columns = violatedColumns(error, context.table);
    constexpr std::string_view kNulls = " (nulls)'";
    const auto fits = [&](const std::string& name, const std::vector<std::string>& own) {
        return message.ends_with("'" + context.table + "." + name + std::string(kNulls)) ||
               std::ranges::equal(own, columns, sameName);
    };
    for (const ConstraintInfo& key : catalogue.constraints()) {
        const std::string_view type = key.type;
        if (!sameName(key.table, context.table) || !fits(key.name, key.columns)) continue;
        if (type != "PK" && type != "UQ") continue;
        return {tsql::Message::DuplicateKey,
                {type == "PK" ? "PRIMARY" : "UNIQUE", key.name, withSchema(context.table)}};
    }
    for (const IndexInfo& index : catalogue.indexes()) {
        if (!sameName(index.table, context.table) || !index.unique ||
            !fits(index.name, index.columns)) {
            continue;
        }
        return {tsql::Message::DuplicateIndexKey, {withSchema(context.table), index.name}};
    }
    return serverError(error, {}, context);
}

std::string violatedKey(const FileConnection& connection, const SqliteError& error,
                        const std::string& table) {
    PreparedStatement definition(connection.handle(),
                                 "SELECT sql FROM main.sqlite_schema WHERE name = ?1 UNION ALL "
                                 "SELECT sql FROM temp.sqlite_schema WHERE name = ?1");
    definition.bind(1, std::string_view(table));
    if (!definition.step()) {
        return {};
    }
    return keyName(definition.text(0), violatedColumns(error, table));
}

// What a function of the dialect has left behind, or SQLite's failure in the server's words.
ServerError plainlyExplained(FileConnection& connection, const SqliteError& error,
                             WriteContext context) {
    if (connection.errorSlot().error) {
        return *connection.errorSlot().error;
    }
    if (error.primaryCode() == SQLITE_CONSTRAINT) {
        context.keyName = violatedKey(connection, error, context.table);
    }
    return serverError(error, connection.place(), context);
}

}  // namespace

ServerError explained(FileConnection& connection, const SchemaCatalogue& catalogue,
                      const SqliteError& error, const WriteContext& context) {
    // That the time has passed is no failure of the statement, and ends more than it.
    if (error.primaryCode() == SQLITE_INTERRUPT) throw error;
    if (connection.errorSlot().error || error.primaryCode() != SQLITE_CONSTRAINT ||
        context.table.empty()) {
        return plainlyExplained(connection, error, context);
    }
    switch (error.code()) {
        case SQLITE_CONSTRAINT_CHECK:
            return checkViolated(catalogue, error, context);
        case SQLITE_CONSTRAINT_UNIQUE:
        case SQLITE_CONSTRAINT_PRIMARYKEY:
            return duplicate(catalogue, error, context);
        default:
            break;
    }
    WriteContext named = context;
    named.shownTable = withSchema(context.table);
    named.database = catalogue.databaseName();
    return plainlyExplained(connection, error, named);
}

ServerError duplicateRows(const std::string& table, const std::string& index) {
    return {tsql::Message::DuplicateKeyInNewIndex, {withSchema(table), index}};
}

ForeignKeySearch::Trial::Trial(Database& database) : database_(database) {
    const TimeLimit::Pause whole;
    database_.run("SAVEPOINT kap_search");
    // Ends by itself with the transaction.
    database_.run("PRAGMA defer_foreign_keys = ON");
}

ForeignKeySearch::Trial::~Trial() {
    const TimeLimit::Pause whole;
    for (const char* sql :
         {"ROLLBACK TO kap_search", "RELEASE kap_search", "PRAGMA defer_foreign_keys = OFF"}) {
        sqlite3_exec(database_.handle(), sql, nullptr, nullptr, nullptr);
    }
}

ServerError ForeignKeySearch::unnamed(const WriteContext& context) {
    return {tsql::Message::ForeignKeyConflict, {context.verb, withSchema(context.table)}};
}

// The written table may be the one that refers or the one that is referred to.
ServerError ForeignKeySearch::search(const WriteContext& context) const {
    const std::vector<ConstraintInfo> constraints = catalogue_.constraints();
    std::set<std::string> tables;
    for (const ConstraintInfo& key : constraints) {
        const bool concerns =
            sameName(key.table, context.table) || sameName(key.parent, context.table);
        if (std::string_view(key.type) == "F " && concerns) tables.insert(key.table);
    }
    for (const std::string& table : tables) {
        PreparedStatement rows(
            connection_.handle(),
            "SELECT f.\"table\", group_concat(l.\"from\", char(9)) FROM "
            "pragma_foreign_key_check(?1) AS f JOIN "
            "pragma_foreign_key_list(?1) AS l ON l.id = f.fkid GROUP BY f.rowid, "
            "f.fkid LIMIT 1");
        rows.bind(1, std::string_view(table));
        if (!rows.step()) continue;
        const std::string columns = rows.text(1);
        for (const ConstraintInfo& key : constraints) {
            std::string own;
            for (const std::string& column : key.columns)
                own += (own.empty() ? "" : "\t") + column;
            if (std::string_view(key.type) == "F " && sameName(key.table, table) &&
                sameName(own, columns)) {
                return violated(context, key);
            }
        }
    }
    return unnamed(context);
}

ServerError ForeignKeySearch::violated(const WriteContext& context,
                                       const ConstraintInfo& key) const {
    const bool same = sameName(key.table, key.parent);
    // An update of other columns than those that refer has moved what is referred to.
    const bool refers = context.columns.empty() ||
                        std::ranges::any_of(context.columns, [&](const std::string& written) {
                            return std::ranges::any_of(key.columns, [&](const std::string& own) {
                                return sameName(own, written);
                            });
                        });
    const bool child =
        sameName(key.table, context.table) && context.verb != "DELETE" && (refers || !same);
    const std::string kind =
        std::string(child ? "FOREIGN KEY" : "") +
        (same ? (child ? " SAME TABLE" : "SAME TABLE REFERENCE") : (child ? "" : "REFERENCE"));
    return conflict(catalogue_, context.verb, kind, key.name,
                    child ? ConflictPlace{key.parent, key.parentColumns}
                          : ConflictPlace{key.table, key.columns});
}

}  // namespace kap::engine
