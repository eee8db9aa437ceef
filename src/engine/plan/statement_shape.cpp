#include "engine/plan/statement_shape.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/constants.hpp"

namespace kap::engine {
namespace {

using tsql::LiteralKind;
using tsql::Token;
using tsql::TokenKind;

LiteralKind literalKindOf(TokenKind kind) {
    switch (kind) {
        case TokenKind::Integer:
            return LiteralKind::Integer;
        case TokenKind::Decimal:
            return LiteralKind::Decimal;
        case TokenKind::Float:
            return LiteralKind::Float;
        case TokenKind::Money:
            return LiteralKind::Money;
        case TokenKind::Text:
            return LiteralKind::Text;
        case TokenKind::NationalText:
            return LiteralKind::NationalText;
        case TokenKind::Binary:
            return LiteralKind::Binary;
        default:
            return LiteralKind::Null;
    }
}

// Statements end without a mark. These words begin one and never go on with a whole one before.
bool endsStatement(const Token& next) {
    static constexpr std::array<std::string_view, 13> kFirstWords{
        "SET",    "INSERT",   "UPDATE", "DELETE", "SELECT", "IF",   "DECLARE",
        "COMMIT", "ROLLBACK", "PRINT",  "RETURN", "GOTO",   "BEGIN"};
    if (next.kind == TokenKind::End) return true;
    if (next.kind == TokenKind::Operator) return next.text == ";";
    return next.kind == TokenKind::Word &&
           std::ranges::any_of(kFirstWords, [&](std::string_view word) {
               return equalsIgnoringCase(next.text, word);
           });
}

// One text, whose only values are its constants.
bool canBeShared(const StatementPlan& plan) {
    if (!plan.values.variables.empty() || plan.values.readsSchema) return false;
    if (const auto* write = std::get_if<WritePlan>(&plan.kind)) {
        return !write->capture && !write->positioned;
    }
    return std::holds_alternative<QueryPlan>(plan.kind);
}

bool tokenFits(const ShapeToken& wanted, const Token& found) {
    return wanted.kind == found.kind && (wanted.free || wanted.text == found.text);
}

}  // namespace

std::optional<std::vector<Value>> StatementShape::constantsOf(std::span<const Token> from) const {
    if (from.size() <= tokens.size() || !endsStatement(from[tokens.size()])) return std::nullopt;
    if (!std::equal(tokens.begin(), tokens.end(), from.begin(), tokenFits)) return std::nullopt;
    std::vector<Value> constants = plan->values.constants;
    for (std::size_t i = 0; i < constants.size(); ++i) {
        const ConstantSource& source = plan->values.sources[i];
        if (source.use == ConstantSource::Use::Unknown) continue;
        const Token& token = from[source.token];
        auto constant = constantFrom(source, {literalKindOf(token.kind), token.text});
        if (!constant) return std::nullopt;
        constants[i] = std::move(*constant);
    }
    return constants;
}

std::shared_ptr<StatementShape> shapeOf(std::span<const Token> statement, std::size_t first,
                                        StatementPlan plan) {
    if (!canBeShared(plan)) return nullptr;
    auto shape = std::make_shared<StatementShape>();
    shape->tokens.reserve(statement.size());
    for (const Token& token : statement)
        shape->tokens.push_back({token.kind, token.text, false});
    bool free = false;
    for (ConstantSource& source : plan.values.sources) {
        if (source.use == ConstantSource::Use::Unknown) continue;
        source.token -= first;
        ShapeToken& token = shape->tokens.at(source.token);
        token.free = true;
        token.text.clear();
        free = true;
    }
    if (!free) return nullptr;
    shape->plan = std::make_shared<const StatementPlan>(std::move(plan));
    return shape;
}

}  // namespace kap::engine
