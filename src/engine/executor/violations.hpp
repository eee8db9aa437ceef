#pragma once

#include "engine/catalog/schema_catalogue.hpp"
#include "engine/sqlite/file_connection.hpp"
#include "engine/sqlite/server_errors.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

// A failed statement in the server's words. Of a constraint SQLite tells little; which one it was,
// and where it lies, the catalogue knows. Raises the failure again when it is an interruption.
[[nodiscard]] tsql::ServerError explained(FileConnection& connection,
                                          const SchemaCatalogue& catalogue,
                                          const SqliteError& error, const WriteContext& context);

// A unique index or key cannot be made because of rows that are there.
[[nodiscard]] tsql::ServerError duplicateRows(const std::string& table, const std::string& index);

// Which foreign key a statement has violated. To be called within the transaction in which SQLite
// refused the statement, with `again` running it once more: its rows are written, looked at, and
// undone.
class ForeignKeySearch {
public:
    ForeignKeySearch(FileConnection& connection, const SchemaCatalogue& catalogue)
        : connection_(connection), catalogue_(catalogue) {}

    template <typename Again>
    [[nodiscard]] tsql::ServerError find(const WriteContext& context, const Again& again) {
        const Trial trial(connection_.database());
        try {
            again();
        } catch (const SqliteError& error) {
            if (error.primaryCode() == SQLITE_INTERRUPT) throw;
            return unnamed(context);
        }
        return search(context);
    }

private:
    // What is written while it lives may break references, and is undone at its end.
    class Trial {
    public:
        explicit Trial(Database& database);
        Trial(const Trial&) = delete;
        Trial& operator=(const Trial&) = delete;
        ~Trial();

    private:
        Database& database_;
    };

    [[nodiscard]] tsql::ServerError search(const WriteContext& context) const;
    [[nodiscard]] tsql::ServerError violated(const WriteContext& context,
                                             const ConstraintInfo& key) const;
    [[nodiscard]] static tsql::ServerError unnamed(const WriteContext& context);

    FileConnection& connection_;
    const SchemaCatalogue& catalogue_;
};

// Writes, within a transaction; a foreign key that it violates is named. `context` makes the
// WriteContext.
template <typename Write, typename Context>
void namingForeignKey(FileConnection& connection, const SchemaCatalogue& catalogue,
                      const Context& context, const Write& write) {
    try {
        write();
    } catch (const SqliteError& error) {
        if (error.code() != SQLITE_CONSTRAINT_FOREIGNKEY) throw;
        throw ForeignKeySearch(connection, catalogue).find(context(), write);
    }
}

}  // namespace kap::engine
