#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/lru_cache.hpp"
#include "data/driver.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/plan/row_change_plan.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/file_connection.hpp"

namespace kap::ado::embedded {

// Inserts, updates, deletes or reads single rows for recordsets. What SQLite is to run for a plan
// is made once and kept prepared, for all recordsets of the connection.
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

    // The table of a plan. Raises ServerError when there is none.
    [[nodiscard]] const engine::Table& tableOf(const RowPlan& plan) const;

private:
    // What is made of a plan: itself, and what reads a row again that it has written.
    enum class Form : std::uint8_t { Change, ReadingAgain };
    static constexpr std::size_t kForms = 2;

    struct Command {
        engine::RowChangePlan plan;
        engine::PreparedStatement statement;
        std::uint64_t generation = 0;  // of the schema that it was made for
    };

    // How many rows were written, and which one.
    struct Written {
        std::int64_t rows = 0;
        std::optional<std::int64_t> number;
        std::vector<Value> answer;  // of a table whose rows have no numbers
    };

    [[nodiscard]] ChangeOutcome write(const RowChange& change);
    [[nodiscard]] ChangeOutcome writeWithTriggers(const RowChange& change,
                                                  const engine::Table& table);
    [[nodiscard]] Written writeNamingKeys(const RowChange& change, const engine::Table& table);
    [[nodiscard]] Written writeOnce(const RowChange& change, const engine::Table& table,
                                    Command& command);
    [[nodiscard]] ChangeOutcome outcomeOf(Written written, const RowChange& change,
                                          const engine::Table& table);
    [[nodiscard]] ChangeOutcome read(const RowChange& change);
    [[nodiscard]] Command& commandFor(const RowPlan& plan, const engine::Table& table, Form form);
    [[nodiscard]] Command make(const RowPlan& plan, const engine::Table& table, Form form) const;

    engine::FileConnection& connection_;
    engine::SchemaCatalogue& catalogue_;
    engine::Transactions& transactions_;
    engine::ScriptRunner& scripts_;
    std::array<LruCache<Command>, kForms> kept_;  // by the plans' keys
};

}  // namespace kap::ado::embedded
