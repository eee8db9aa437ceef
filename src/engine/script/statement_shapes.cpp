#include "engine/script/statement_shapes.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "base/ascii.hpp"

namespace kap::engine {
namespace {

constexpr std::size_t kMostShapes = 8;  // in a group
constexpr int kMostFruitless = 4;

// Only queries and writes have shapes.
bool beginsShape(const tsql::Token& first) {
    static constexpr std::array<std::string_view, 5> kFirstWords{"SELECT", "INSERT", "UPDATE",
                                                                 "DELETE", "WITH"};
    return first.kind == tsql::TokenKind::Word &&
           std::ranges::any_of(kFirstWords, [&](std::string_view word) {
               return equalsIgnoringCase(first.text, word);
           });
}

// The first words of a statement: what it does with which table, as a rule.
std::string firstWords(std::span<const tsql::Token> from) {
    constexpr std::size_t kWords = 4;
    constexpr std::size_t kUsualLength = 64;
    std::string result;
    result.reserve(kUsualLength);
    for (const tsql::Token& token : from.first(std::min(kWords, from.size()))) {
        result += static_cast<char>(token.kind);
        result += token.text;
        result += '\0';
    }
    return result;
}

}  // namespace

StatementShapes::Group* StatementShapes::groupOf(std::span<const tsql::Token> from) {
    return groups_.find(firstWords(from));
}

std::optional<StatementShapes::Found> StatementShapes::find(std::span<const tsql::Token> from,
                                                            std::uint64_t generation) {
    Group* group = beginsShape(from.front()) ? groupOf(from) : nullptr;
    if (group == nullptr) return std::nullopt;
    const auto stale = [&](const auto& shape) { return shape->generation != generation; };
    if (std::erase_if(group->shapes, stale) > 0) group->fruitless = 0;
    for (std::size_t i = 0; i < group->shapes.size(); ++i) {
        auto constants = group->shapes[i]->constantsOf(from);
        if (!constants) continue;
        group->fruitless = 0;
        std::rotate(group->shapes.begin(), group->shapes.begin() + static_cast<std::ptrdiff_t>(i),
                    group->shapes.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        return Found{group->shapes.front(), std::move(*constants)};
    }
    return std::nullopt;
}

bool StatementShapes::isWorthLearning(std::span<const tsql::Token> from) {
    if (!beginsShape(from.front())) return false;
    Group* group = groupOf(from);
    if (group == nullptr) {
        groups_.insert(firstWords(from), {});
        return false;
    }
    return group->fruitless++ < kMostFruitless;
}

void StatementShapes::learn(std::span<const tsql::Token> from,
                            std::shared_ptr<const StatementShape> shape) {
    Group* group = groupOf(from);
    if (group == nullptr) return;
    if (group->shapes.size() == kMostShapes) group->shapes.pop_back();
    group->shapes.insert(group->shapes.begin(), std::move(shape));
}

}  // namespace kap::engine
