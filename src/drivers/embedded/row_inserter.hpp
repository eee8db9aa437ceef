#pragma once

#include <cstddef>
#include <vector>

#include "data/row_inserter.hpp"
#include "engine/engine_session.hpp"
#include "engine/plan/row_change_plan.hpp"

namespace kap::ado::embedded {

// Inserts rows by one prepared statement. The table must have no triggers for it.
class EmbeddedRowInserter final : public RowInserter {
public:
    EmbeddedRowInserter(engine::EngineSession& engine, const engine::Table& table,
                        const RowPlan& insertion);

    // Whether a table is written like this: nothing runs beside an insertion.
    [[nodiscard]] static bool serves(engine::EngineSession& engine, const engine::Table& table);

    void insert(const std::vector<Value>& values) override;
    void check(std::size_t column, const Value& value) override;

private:
    [[nodiscard]] Value stored(std::size_t column, const Value& value) const;
    void write(const std::vector<Value>& values);

    engine::EngineSession& engine_;
    RowPlan insertion_;
    engine::RowChangePlan made_;
    std::vector<tsql::TypeSpec> given_;  // the types of the client's values
    engine::PreparedStatement statement_;
};

}  // namespace kap::ado::embedded
