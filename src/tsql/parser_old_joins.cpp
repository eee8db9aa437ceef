#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

// WHERE a.x *= b.x: outer joins as they were written before there were words for them. FROM a, b
// becomes FROM a LEFT JOIN b ON a.x = b.x, with what else WHERE asks of b alone.
namespace kap::tsql {
namespace {

// The names before the columns of a condition; false for what may read other rows as well.
bool collectSources(const ExpressionPtr& expression, std::vector<std::string>& names);

bool collectAll(const std::vector<ExpressionPtr>& parts, std::vector<std::string>& names) {
    return std::ranges::all_of(
        parts, [&](const ExpressionPtr& part) { return collectSources(part, names); });
}

struct SourceCollector {
    std::vector<std::string>& names;

    bool operator()(const Literal& /*node*/) const { return true; }
    bool operator()(const VariableReference& /*node*/) const { return true; }
    bool operator()(const ColumnReference& node) const {
        if (node.name.parts.size() < 2) return false;
        names.push_back(node.name.parts[node.name.parts.size() - 2]);
        return true;
    }
    bool operator()(const UnaryExpression& node) const {
        return collectSources(node.operand, names);
    }
    bool operator()(const BinaryExpression& node) const {
        return collectSources(node.left, names) && collectSources(node.right, names);
    }
    bool operator()(const Comparison& node) const {
        return node.outer == OldOuterJoin::None && collectSources(node.left, names) &&
               collectSources(node.right, names);
    }
    bool operator()(const LogicalExpression& node) const {
        return collectAll(node.operands, names);
    }
    bool operator()(const BetweenPredicate& node) const {
        return collectSources(node.value, names) && collectSources(node.low, names) &&
               collectSources(node.high, names);
    }
    bool operator()(const InPredicate& node) const {
        return node.query == nullptr && collectSources(node.value, names) &&
               collectAll(node.list, names);
    }
    bool operator()(const LikePredicate& node) const {
        return collectSources(node.value, names) && collectSources(node.pattern, names);
    }
    bool operator()(const NullPredicate& node) const { return collectSources(node.value, names); }
    bool operator()(const CastExpression& node) const { return collectSources(node.value, names); }
    bool operator()(const FunctionCall& node) const { return collectAll(node.arguments, names); }
    template <typename Other>
    bool operator()(const Other& /*node*/) const {
        return false;
    }
};

bool collectSources(const ExpressionPtr& expression, std::vector<std::string>& names) {
    if (expression == nullptr) return true;
    requireStack(expression->line);
    return std::visit(SourceCollector{names}, expression->node);
}

// The one table whose columns a side has; empty: none, or several.
std::string onlySource(const ExpressionPtr& side) {
    std::vector<std::string> names;
    if (!collectSources(side, names) || names.empty()) return {};
    const bool one = std::ranges::all_of(
        names, [&](const std::string& name) { return equalsIgnoringCase(name, names.front()); });
    return one ? names.front() : std::string();
}

// What a condition makes of two tables.
struct OuterJoin {
    std::string kept;
    std::string inner;
    ExpressionPtr condition;
};

bool hasSource(const TableSource& source, const std::string& name) {
    const auto isAlias = [&](const std::string& alias) { return equalsIgnoringCase(alias, name); };
    if (const auto* join = std::get_if<Join>(&source.node)) {
        return hasSource(*join->left, name) || hasSource(*join->right, name);
    }
    if (const auto* table = std::get_if<NamedTable>(&source.node)) {
        return isAlias(table->alias.empty() ? table->name.last() : table->alias);
    }
    const auto* derived = std::get_if<DerivedTable>(&source.node);
    return derived != nullptr && isAlias(derived->alias);
}

std::vector<TableSourcePtr>::iterator sourceWith(std::vector<TableSourcePtr>& from,
                                                 const std::string& name) {
    return std::ranges::find_if(
        from, [&](const TableSourcePtr& source) { return hasSource(*source, name); });
}

std::vector<ExpressionPtr> conditionsOf(ExpressionPtr where) {
    std::vector<ExpressionPtr> parts;
    auto* chain = std::get_if<LogicalExpression>(&where->node);
    if (chain != nullptr && chain->op == LogicalOperator::And) {
        parts = std::move(chain->operands);
    } else {
        parts.push_back(std::move(where));
    }
    return parts;
}

OuterJoin outerJoinOf(ExpressionPtr condition) {
    auto& compared = std::get<Comparison>(condition->node);
    const bool keepsLeft = compared.outer == OldOuterJoin::KeepsLeft;
    OuterJoin result;
    result.kept = onlySource(keepsLeft ? compared.left : compared.right);
    result.inner = onlySource(keepsLeft ? compared.right : compared.left);
    if (result.kept.empty() || result.inner.empty()) {
        throw unsupported("*= of anything but columns with the names of their tables",
                          condition->line);
    }
    compared.outer = OldOuterJoin::None;
    result.condition = std::move(condition);
    return result;
}

bool isOuter(const ExpressionPtr& condition) {
    const auto* compared = std::get_if<Comparison>(&condition->node);
    return compared != nullptr && compared->outer != OldOuterJoin::None;
}

}  // namespace

// The operators are known where the database says so.
void Parser::requireOldOuterJoins() const {
    if (options_.oldOuterJoins && options_.oldOuterJoins()) return;
    throw ServerError(Message::OldOuterJoin, {}, peek().line);
}

// Several conditions as one, or none.
ExpressionPtr Parser::allOf(std::vector<ExpressionPtr> conditions) {
    if (conditions.empty()) return nullptr;
    if (conditions.size() == 1) return std::move(conditions.front());
    const int line = conditions.front()->line;
    const int below = deepest(conditions);
    return make(LogicalExpression{LogicalOperator::And, std::move(conditions)}, line, below);
}

void Parser::joinOldWay(Select& select) {
    const int line = select.where->line;
    std::vector<OuterJoin> joins;
    std::vector<ExpressionPtr> rest;
    for (ExpressionPtr& part : conditionsOf(std::move(select.where))) {
        if (isOuter(part)) {
            joins.push_back(outerJoinOf(std::move(part)));
        } else {
            rest.push_back(std::move(part));
        }
    }
    while (!joins.empty()) {
        // A table is joined to what is complete: whose own outer joins have been made.
        const auto ready = std::ranges::find_if(joins, [&](const OuterJoin& join) {
            return std::ranges::none_of(joins, [&](const OuterJoin& other) {
                return equalsIgnoringCase(other.inner, join.kept);
            });
        });
        if (ready == joins.end()) throw unsupported("*= in a circle", line);
        const std::string inner = ready->inner;
        const std::string kept = ready->kept;
        std::vector<ExpressionPtr> on;
        const auto ofInner = [&](const ExpressionPtr& part) {
            return equalsIgnoringCase(onlySource(part), inner);
        };
        const auto right = sourceWith(select.from, inner);
        const auto left = sourceWith(select.from, kept);
        if (left == select.from.end() || right == select.from.end() || left == right) {
            throw unsupported("*= between these tables", line);
        }
        for (auto join = joins.begin(); join != joins.end();) {
            if (!equalsIgnoringCase(join->inner, inner)) {
                ++join;
                continue;
            }
            if (!hasSource(**left, join->kept)) throw unsupported("*= to two tables", line);
            on.push_back(std::move(join->condition));
            join = joins.erase(join);
        }
        for (auto part = rest.begin(); part != rest.end();) {
            if (!ofInner(*part)) {
                ++part;
                continue;
            }
            on.push_back(std::move(*part));
            part = rest.erase(part);
        }
        ExpressionPtr condition = allOf(std::move(on));
        const int below = std::max({(*left)->depth, (*right)->depth, condition->depth});
        if (below >= kMaxNesting) throw nestedTooDeeply(line);
        Join made{JoinKind::Left, std::move(*left), std::move(*right), std::move(condition)};
        *left = std::make_unique<TableSource>(TableSource{std::move(made), line, below + 1});
        select.from.erase(right);
    }
    select.where = allOf(std::move(rest));
}

}  // namespace kap::tsql
