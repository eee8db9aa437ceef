#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/lru_cache.hpp"
#include "data/driver.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/file_connection.hpp"

namespace kap::ado::embedded {

// Inserts, updates, deletes or reads single rows for recordsets, by SQL with parameters.
//
// Values go through the same conversions and checks as in the dialect's INSERT and UPDATE; row
// versions and identities are given out. Criteria are compared exactly: letter case and trailing
// blanks count, and Null equals Null.
class EmbeddedRowChanger {
public:
    EmbeddedRowChanger(engine::FileConnection& connection, engine::SchemaCatalogue& catalogue,
                       engine::Transactions& transactions, engine::ScriptRunner& scripts);

    // Raises ServerError for what the database refuses and DriverError when the criteria fit more
    // than one row; nothing is written then. What the table's triggers report is raised, too;
    // unless they have rolled it back, the row is written then.
    [[nodiscard]] ChangeOutcome apply(const RowChange& change);

    // The table of a change, and the SQL that inserts a row into it, with a parameter for each of
    // the values. Raise ServerError as apply() does.
    [[nodiscard]] const engine::Table& tableOf(const RowChange& change) const;
    [[nodiscard]] static std::string insertionSql(const RowChange& change,
                                                  const engine::Table& table);

private:
    // The SQL of a change and the values of its parameters, in order.
    struct RowStatement {
        std::string sql;
        std::vector<Value> values;
    };

    [[nodiscard]] ChangeOutcome write(const RowChange& change);
    [[nodiscard]] ChangeOutcome read(const RowChange& change);
    [[nodiscard]] ChangeOutcome run(const RowChange& change, const engine::Table& table,
                                    RowStatement& command);
    [[nodiscard]] ChangeOutcome runNamingKeys(const RowChange& change, const engine::Table& table,
                                              RowStatement& command);
    [[nodiscard]] ChangeOutcome writeWithTriggers(const RowChange& change,
                                                  const engine::Table& table);
    void readAgain(const RowChange& change, const engine::Table& table, ChangeOutcome& outcome);
    [[nodiscard]] engine::PreparedStatement& prepared(const std::string& sql);

    [[nodiscard]] static RowStatement commandFor(const RowChange& change,
                                                 const engine::Table& table,
                                                 const std::string& columns);
    [[nodiscard]] static RowStatement insertion(const RowChange& change,
                                                const engine::Table& table);
    [[nodiscard]] static RowStatement update(const RowChange& change, const engine::Table& table);
    static void addCriteria(const RowChange& change, const engine::Table& table,
                            RowStatement& command);

    engine::FileConnection& connection_;
    engine::SchemaCatalogue& catalogue_;
    engine::Transactions& transactions_;
    engine::ScriptRunner& scripts_;
    LruCache<engine::PreparedStatement> kept_;
};

}  // namespace kap::ado::embedded
