#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/lru_cache.hpp"
#include "engine/executor/program.hpp"
#include "engine/plan/statement_shape.hpp"
#include "tsql/token.hpp"

namespace kap::engine {

// The shapes of statements that a connection has met, a bounded number of them.
//
// A shape is learned from the second statement that begins with the same words; where learned
// shapes are not met again, learning stops, because it costs what translating a statement costs.
class StatementShapes {
public:
    StatementShapes() : groups_(kMostGroups) {}

    struct Found {
        std::shared_ptr<const StatementShape> shape;
        std::vector<Value> constants;
    };
    // The shape of the statement that the tokens begin with.
    [[nodiscard]] std::optional<Found> find(std::span<const tsql::Token> from,
                                            std::uint64_t generation);
    // Whether the shape of that statement, which find() does not know, is worth to be learned.
    [[nodiscard]] bool isWorthLearning(std::span<const tsql::Token> from);
    void learn(std::span<const tsql::Token> from, std::shared_ptr<const StatementShape> shape);

private:
    // The shapes that begin with the same words.
    struct Group {
        std::vector<std::shared_ptr<const StatementShape>> shapes;  // the last found first
        int fruitless = 0;  // attempts to learn since one of them was met
    };
    static constexpr std::size_t kMostGroups = 200;

    [[nodiscard]] Group* groupOf(std::span<const tsql::Token> from);

    LruCache<Group> groups_;
};

}  // namespace kap::engine
