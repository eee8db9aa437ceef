#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "data/driver.hpp"
#include "engine/plan/statement_plan.hpp"
#include "tsql/statements.hpp"
#include "tsql/token.hpp"

namespace kap::engine {

// One word of a shape.
struct ShapeToken {
    tsql::TokenKind kind = tsql::TokenKind::End;
    std::string text;
    bool free = false;  // a literal in whose place another of the kind may stand
};

// What statements have in common that differ in literals alone: a statement whose tokens fit is
// neither parsed nor translated. Its constants follow from its literals as the sources of the
// plan's values say.
struct StatementShape {
    std::vector<ShapeToken> tokens;
    tsql::Statement statement;     // the first one that was met
    std::uint64_t generation = 0;  // of the catalogue that the plan was made for
    std::shared_ptr<const StatementPlan> plan;
    std::shared_ptr<const std::vector<ado::ColumnInfo>> columns;

    // The constants of a statement that has this shape and that `tokens` begin with; nullopt when
    // they begin with another one, or when it may go on behind the tokens of the shape.
    [[nodiscard]] std::optional<std::vector<Value>> constantsOf(
        std::span<const tsql::Token> from) const;
};

// Makes the shape of a statement out of its plan; `first` is the place of its first token in
// its script. Null when no other statement can share that: no literal of it is free, or running it
// takes more than one text and its constants.
[[nodiscard]] std::shared_ptr<StatementShape> shapeOf(std::span<const tsql::Token> statement,
                                                      std::size_t first, StatementPlan plan);

}  // namespace kap::engine
