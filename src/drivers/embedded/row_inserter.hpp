#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "data/row_inserter.hpp"
#include "drivers/embedded/row_changer.hpp"
#include "engine/engine_session.hpp"

namespace kap::ado::embedded {

// Inserts rows by one prepared statement. The table must have no triggers for it.
class EmbeddedRowInserter final : public RowInserter {
public:
    EmbeddedRowInserter(engine::EngineSession& engine, const EmbeddedRowChanger& changer,
                        const RowTarget& target);

    // Whether a table is written like this: nothing runs beside an insertion.
    [[nodiscard]] static bool serves(engine::EngineSession& engine,
                                     const EmbeddedRowChanger& changer, const RowTarget& target);

    void insert(const std::vector<Value>& values) override;
    void check(std::size_t column, const Value& value) override;

private:
    struct Target {
        engine::Column column;
        tsql::TypeSpec given;  // the type of the client's values
    };
    [[nodiscard]] Value stored(std::size_t column, const Value& value) const;
    void write(const std::vector<Value>& values);

    engine::EngineSession& engine_;
    std::string table_;
    std::vector<Target> columns_;
    engine::PreparedStatement statement_;
};

}  // namespace kap::ado::embedded
