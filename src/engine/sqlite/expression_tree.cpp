#include "engine/sqlite/expression_tree.hpp"

#include <optional>

#include "engine/sqlite/collation.hpp"
#include "engine/values/exact.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine::sql {

namespace {

// The parts of a node, those that it does not have left out.
template <typename AnyKind, typename Visit>
void eachPartOf(AnyKind& kind, const Visit& visit) {
    const auto present = [&](auto& part) {
        if (part) visit(part);
    };
    std::visit([&](auto& own) { std::remove_cvref_t<decltype(own)>::eachPart(own, present); },
               kind);
}

}  // namespace

// A chain of nodes instead of a recursion: a tree may be deeper than what is left of the stack. It
// takes no memory.
void Expression::release(Node* node) noexcept {
    if (--node->holders > 0) return;
    for (Node* ending = node; ending != nullptr;) {
        Node* const last = ending;
        ending = last->next;
        eachPartOf(last->kind, [&](Expression& part) {
            Node* const own = std::exchange(part.node_, nullptr);
            if (--own->holders > 0) return;
            own->next = ending;
            ending = own;
        });
        delete last;
    }
}

bool operator==(const Expression& left, const Expression& right) {
    if (left.node_ == right.node_) return true;
    if (left.node_ == nullptr || right.node_ == nullptr) return false;
    tsql::requireStack(0);
    return left.node_->kind == right.node_->kind;
}

Expression scaled(const Term& term, int scale) {
    if (term.scale == scale) return term.value;
    const auto* constant = term.value.as<Constant>();
    if (constant != nullptr && !engine::isNull(constant->value)) {
        const auto before = narrow(exactOf(constant->value));
        const auto after =
            before ? rescale(*before, term.scale, scale, Rounding::HalfAway) : std::nullopt;
        if (const auto result = after ? narrow(*after) : std::nullopt) return number(*result);
    }
    return call(fn::kScale, term.value, scale - term.scale);
}

Expression null() {
    return Constant{};
}

Expression number(std::int64_t value) {
    return Constant{value};
}

Expression text(std::string value) {
    return Constant{std::move(value)};
}

Expression typeNumber(const tsql::TypeSpec& type) {
    return number(packType(type));
}

Expression column(std::string name) {
    return Column{{}, std::move(name)};
}

Expression column(std::string source, std::string name) {
    return Column{std::move(source), std::move(name)};
}

Expression collated(Expression value, const tsql::TypeSpec& type) {
    const std::string_view collation = collationOf(type);
    if (collation.empty()) return value;
    return Collated{std::move(value), collation};
}

Expression equal(Expression left, Expression right) {
    return Binary{BinaryOperator::Equal, std::move(left), std::move(right)};
}

Expression negation(Expression condition) {
    return Unary{UnaryOperator::Not, std::move(condition)};
}

Expression isNull(Expression value) {
    return Unary{UnaryOperator::IsNull, std::move(value)};
}

Expression isNotNull(Expression value) {
    return Unary{UnaryOperator::IsNotNull, std::move(value)};
}

Expression allOf(std::vector<Expression> conditions) {
    if (conditions.size() == 1) return std::move(conditions.front());
    return Chain{ChainOperator::And, std::move(conditions)};
}

Expression when(Expression condition, Expression value, Expression otherwise) {
    Case result;
    result.branches.push_back({std::move(condition), std::move(value)});
    result.otherwise = std::move(otherwise);
    return result;
}

bool holdsQuery(const Kind& kind) {
    return std::holds_alternative<Subquery>(kind) || std::holds_alternative<InQuery>(kind) ||
           std::holds_alternative<Exists>(kind);
}

bool contains(const Expression& expression, const std::function<bool(const Kind&)>& wanted) {
    tsql::requireStack(0);
    if (wanted(expression.kind())) return true;
    bool found = false;
    eachPartOf(expression.kind(),
               [&](const Expression& part) { found = found || contains(part, wanted); });
    return found;
}

}  // namespace kap::engine::sql
