#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

ExpressionPtr Parser::make(Expression::Node node, int line, int below) {
    // A chain like a+b+c+... nests without any bracket, so the tree is measured and not only the
    // rules.
    if (below >= kMaxNesting) throw nestedTooDeeply(line);
    deepest_ = std::max(deepest_, below + 1);
    return std::make_unique<Expression>(Expression{std::move(node), line, below + 1});
}

int Parser::deepest(const std::vector<ExpressionPtr>& expressions) {
    int depth = 0;
    for (const ExpressionPtr& expression : expressions)
        depth = std::max(depth, expression->depth);
    return depth;
}

ExpressionPtr Parser::value() {
    return sum(Place::Value);
}

ExpressionPtr Parser::condition() {
    ExpressionPtr result = disjunction(Place::Condition);
    if (!result->isPredicate()) {
        if (atOperator("*=")) requireOldOuterJoins();
        throw ServerError(Message::NoConditionNear, {peek().text}, peek().line);
    }
    return result;
}

ExpressionPtr Parser::disjunction(Place place) {
    return logical(LogicalOperator::Or, place);
}

// A chain of one operator becomes one flat node: conditions of many hundred terms are written by
// programs.
ExpressionPtr Parser::logical(LogicalOperator op, Place place) {
    const bool isOr = op == LogicalOperator::Or;
    const auto operand = [&] {
        return isOr ? logical(LogicalOperator::And, place) : negation(place);
    };
    const int line = peek().line;
    ExpressionPtr first = operand();
    if (!first->isPredicate() || !atKeyword(isOr ? "OR" : "AND")) return first;
    LogicalExpression chain{op, {}};
    chain.operands.push_back(std::move(first));
    while (acceptKeyword(isOr ? "OR" : "AND")) {
        ExpressionPtr following = operand();
        if (!following->isPredicate()) unexpected();
        chain.operands.push_back(std::move(following));
    }
    const int below = deepest(chain.operands);
    return make(std::move(chain), line, below);
}

ExpressionPtr Parser::negation(Place place) {
    if (!atKeyword("NOT")) return predicate(place);
    const Level level(*this);
    const int line = next().line;
    ExpressionPtr operand = negation(place);
    if (!operand->isPredicate()) unexpected();
    const int below = operand->depth;
    return make(UnaryExpression{UnaryOperator::Not, std::move(operand)}, line, below);
}

ExpressionPtr Parser::sum(Place place) {
    static constexpr std::pair<std::string_view, BinaryOperator> kOperators[] = {
        {"+", BinaryOperator::Add},    {"-", BinaryOperator::Subtract},
        {"&", BinaryOperator::BitAnd}, {"|", BinaryOperator::BitOr},
        {"^", BinaryOperator::BitXor},
    };
    ExpressionPtr left = product(place);
    while (!left->isPredicate()) {
        const auto* found =
            std::find_if(std::begin(kOperators), std::end(kOperators),
                         [&](const auto& entry) { return atOperator(entry.first); });
        if (found == std::end(kOperators)) break;
        const int line = next().line;
        ExpressionPtr right = product(Place::Value);
        const int below = std::max(left->depth, right->depth);
        left =
            make(BinaryExpression{found->second, std::move(left), std::move(right)}, line, below);
    }
    return left;
}

ExpressionPtr Parser::product(Place place) {
    static constexpr std::pair<std::string_view, BinaryOperator> kOperators[] = {
        {"*", BinaryOperator::Multiply},
        {"/", BinaryOperator::Divide},
        {"%", BinaryOperator::Modulo},
    };
    ExpressionPtr left = signedValue(place);
    while (!left->isPredicate()) {
        const auto* found =
            std::find_if(std::begin(kOperators), std::end(kOperators),
                         [&](const auto& entry) { return atOperator(entry.first); });
        if (found == std::end(kOperators)) break;
        const int line = next().line;
        ExpressionPtr right = signedValue(Place::Value);
        const int below = std::max(left->depth, right->depth);
        left =
            make(BinaryExpression{found->second, std::move(left), std::move(right)}, line, below);
    }
    return left;
}

ExpressionPtr Parser::signedValue(Place place) {
    static constexpr std::pair<std::string_view, UnaryOperator> kOperators[] = {
        {"+", UnaryOperator::Plus},
        {"-", UnaryOperator::Minus},
        {"~", UnaryOperator::BitNot},
    };
    const Level level(*this);
    for (const auto& [symbol, op] : kOperators) {
        if (!atOperator(symbol)) continue;
        const int line = next().line;
        ExpressionPtr operand = signedValue(Place::Value);
        const int below = operand->depth;
        return make(UnaryExpression{op, std::move(operand)}, line, below);
    }
    ExpressionPtr result = primary(place);
    while (!result->isPredicate()) {
        if (atOperator(".") && std::holds_alternative<ScalarSubquery>(result->node)) {
            result = xmlMethod(std::move(result));
        } else if (atOperator(":") && atOperator(":", 1)) {
            refuse("method of a type (::)");
        } else if (atKeyword("COLLATE")) {
            result = collated(std::move(result));
        } else if (atKeyword("AT") && atKeyword("TIME", 1) && atKeyword("ZONE", 2)) {
            const int line = next().line;
            next();
            next();
            result = invoked(kAtTimeZone, line, std::move(result), primary(Place::Value));
        } else {
            break;
        }
    }
    return result;
}

ExpressionPtr Parser::primary(Place place) {
    const Token& token = peek();
    switch (token.kind) {
        case TokenKind::Integer:
            return literal(LiteralKind::Integer);
        case TokenKind::Decimal:
            return literal(LiteralKind::Decimal);
        case TokenKind::Float:
            return literal(LiteralKind::Float);
        case TokenKind::Money:
            return literal(LiteralKind::Money);
        case TokenKind::Text:
            return literal(LiteralKind::Text);
        case TokenKind::NationalText:
            return literal(LiteralKind::NationalText);
        case TokenKind::Binary:
            return literal(LiteralKind::Binary);
        case TokenKind::Variable: {
            checkDeclared(peek());
            if (!cursorVariables_.empty() && isCursorVariable(peek().text)) {
                throw ServerError(Message::CursorVariableMisplaced, {peek().text}, peek().line);
            }
            const Token& variable = next();
            return make(VariableReference{variable.text}, variable.line);
        }
        case TokenKind::Parameter: {
            const int line = peek().line;
            return make(VariableReference{parameterMark()}, line);
        }
        case TokenKind::QuotedName:
            return nameOrCall();
        case TokenKind::Word:
            return wordExpression();
        case TokenKind::Operator:
            if (token.text == "(") return bracketed(place);
            if (token.text == "{") return escaped();
            if (atOperator("%") && atOperator("%", 1)) refuse("%%" + peek(2).text + "%%");
            unexpected();
        case TokenKind::End:
            break;
    }
    unexpected();
}

ExpressionPtr Parser::literal(LiteralKind kind) {
    const std::size_t place = options_.marksLiterals ? position_ : kNoToken;
    const Token& token = next();
    return make(Literal{kind, token.text, place}, token.line);
}

ExpressionPtr Parser::bracketed(Place place) {
    const int line = peek().line;
    if (atQuery()) {
        QueryPtr inner = bracketedQuery();
        const int below = inner->depth;
        return make(ScalarSubquery{std::move(inner)}, line, below);
    }
    expectOperator("(");
    ExpressionPtr inner = place == Place::Condition ? disjunction(place) : value();
    expectOperator(")");
    return inner;
}

ExpressionPtr Parser::wordExpression() {
    if (acceptKeyword("NULL")) return make(Literal{LiteralKind::Null, ""}, peek().line);
    if (atKeyword("CASE")) return caseExpression();
    if (atKeyword("CAST") && atOperator("(", 1)) return castCall();
    if (atKeyword("CONVERT")) return convertCall();
    if (atKeyword("TRY_CAST") && atOperator("(", 1)) return tried(castCall());
    if (atKeyword("TRY_CONVERT") && atOperator("(", 1)) return tried(convertCall());
    if (atKeyword("IDENTITY") && atOperator("(", 1)) return identityCall();
    if ((atKeyword("PARSE") || atKeyword("TRY_PARSE")) && atOperator("(", 1)) return parseCall();
    if (atKeyword("TRIM") && atOperator("(", 1)) return trimCall();
    if (atKeyword("IIF") && atOperator("(", 1)) return iifCall();
    if (atKeyword("CHOOSE") && atOperator("(", 1)) return chooseCall();
    if (atKeyword("NEXT") && atKeyword("VALUE", 1)) return nextValue();
    if (atKeyword("IDENTITYCOL")) {
        const int line = next().line;
        return make(ColumnReference{{{"$IDENTITY"}, line}}, line);
    }
    // Reserved words that are functions: they name nothing else.
    for (const char* function : {"LEFT", "RIGHT", "COALESCE", "NULLIF", "UPDATE"}) {
        if (!atKeyword(function)) continue;
        const Token& token = next();
        return call(ObjectName{{token.text}, token.line});
    }
    static constexpr std::pair<const char*, const char*> kWithoutBrackets[] = {
        {"CURRENT_TIMESTAMP", "GETDATE"},
        {"CURRENT_USER", "USER_NAME"},
        {"SESSION_USER", "USER_NAME"},
        {"USER", "USER_NAME"},
        {"SYSTEM_USER", "SUSER_SNAME"}};
    for (const auto& [word, function] : kWithoutBrackets) {
        if (!atKeyword(word)) continue;
        const int line = next().line;
        return make(FunctionCall{ObjectName{{function}, line}, {}}, line);
    }
    return nameOrCall();
}

ExpressionPtr Parser::nameOrCall() {
    refuseServersBuilder();
    ObjectName name = objectName();
    if (atOperator("(")) return call(std::move(name));
    const int line = name.line;
    return make(ColumnReference{std::move(name)}, line);
}

ExpressionPtr Parser::call(ObjectName name) {
    const int line = name.line;
    FunctionCall result{std::move(name), {}};
    const std::size_t draws = draws_;
    expectOperator("(");
    if (acceptOperator("*")) {
        result.star = true;
    } else if (!atOperator(")")) {
        result.distinct = acceptKeyword("DISTINCT");
        if (!result.distinct) acceptKeyword("ALL");
        const bool stored = result.name.parts.size() > 1;
        result.arguments = stored ? functionArguments() : valueList();
    }
    expectOperator(")");
    if (draws_ != draws) refuseDrawsOf(result.name, draws);
    if (atKeyword("WITHIN") && atKeyword("GROUP", 1)) {
        next();
        next();
        expectOperator("(");
        expectKeyword("ORDER");
        expectKeyword("BY");
        result.within = orderItems();
        expectOperator(")");
    }
    if (isXmlMethod(result)) return xmlMethodOfColumn(std::move(result), line);
    if (acceptKeyword("OVER")) result.over = window();
    const int below = deepest(result.arguments);
    return make(std::move(result), line, below);
}

// dbo.f(1, DEFAULT): a stored function knows values of its own for its parameters.
std::vector<ExpressionPtr> Parser::functionArguments() {
    std::vector<ExpressionPtr> values;
    do {
        const int line = peek().line;
        values.push_back(acceptKeyword("DEFAULT") ? make(DefaultArgument{}, line) : value());
    } while (acceptOperator(","));
    return values;
}

// text COLLATE name, as a function of both.
ExpressionPtr Parser::collated(ExpressionPtr text) {
    const int line = next().line;
    if (!atName()) unexpected();
    const std::string name = next().text;
    return invoked("collate", line, std::move(text),
                   make(Literal{LiteralKind::NationalText, name}, line));
}

// Texts compare as the database's collation says: letter case ignored, accents not. Another one
// that says the same changes nothing.
void Parser::collation() {
    next();
    const std::string name = asciiUpper(peek().text);
    const bool same = name == "DATABASE_DEFAULT" || name.find("_CI_AS") != std::string::npos;
    if (!same) refuse("COLLATE " + peek().text);
    next();
}

std::vector<ExpressionPtr> Parser::valueList() {
    std::vector<ExpressionPtr> values;
    do {
        values.push_back(value());
    } while (acceptOperator(","));
    return values;
}

ExpressionPtr Parser::caseExpression() {
    const int line = next().line;
    const std::size_t draws = draws_;
    CaseExpression result;
    int below = 0;
    const auto measured = [&below](ExpressionPtr part) {
        below = std::max(below, part->depth);
        return part;
    };
    if (!atKeyword("WHEN")) result.subject = measured(value());
    while (acceptKeyword("WHEN")) {
        CaseBranch branch;
        branch.when = measured(result.subject ? value() : condition());
        expectKeyword("THEN");
        branch.then = measured(value());
        result.branches.push_back(std::move(branch));
    }
    if (result.branches.empty()) unexpected();
    if (acceptKeyword("ELSE")) result.otherwise = measured(value());
    expectKeyword("END");
    refuseDraws(draws, Message::DrawInChoice);
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::tried(ExpressionPtr cast) {
    std::get<CastExpression>(cast->node).tries = true;
    return cast;
}

// TRIM(text), TRIM(letters FROM text).
ExpressionPtr Parser::trimCall() {
    const int line = peek().line;
    FunctionCall result{ObjectName{{next().text}, line}, {}};
    expectOperator("(");
    for (const char* side : {"BOTH", "LEADING", "TRAILING"}) {
        const bool letters = peek(1).kind != TokenKind::Operator && !atKeyword("FROM", 1);
        if (letters) refuseKeyword(side, "sides of TRIM");
    }
    if (!atOperator(")")) result.arguments = valueList();
    if (result.arguments.size() == 1 && acceptKeyword("FROM")) {
        result.arguments.insert(result.arguments.begin(), value());
    } else if (result.arguments.size() != 1) {
        throw ServerError(Message::WrongArgumentCount, {"trim", "1"}, line);
    }
    expectOperator(")");
    const int below = deepest(result.arguments);
    return make(std::move(result), line, below);
}

// IIF(condition, a, b) is CASE WHEN condition THEN a ELSE b END.
ExpressionPtr Parser::iifCall() {
    const int line = next().line;
    const std::size_t draws = draws_;
    CaseExpression result;
    expectOperator("(");
    CaseBranch branch;
    branch.when = condition();
    expectOperator(",");
    branch.then = value();
    expectOperator(",");
    result.otherwise = value();
    expectOperator(")");
    refuseDraws(draws, Message::DrawInChoice);
    const int below = std::max({branch.when->depth, branch.then->depth, result.otherwise->depth});
    result.branches.push_back(std::move(branch));
    return make(std::move(result), line, below);
}

// CHOOSE(n, a, b...) is CASE n WHEN 1 THEN a WHEN 2 THEN b... END.
ExpressionPtr Parser::chooseCall() {
    const int line = next().line;
    const std::size_t draws = draws_;
    CaseExpression result;
    expectOperator("(");
    result.subject = value();
    int below = result.subject->depth;
    while (acceptOperator(",")) {
        const auto place = static_cast<std::int64_t>(result.branches.size()) + 1;
        CaseBranch branch;
        branch.when = make(Literal{LiteralKind::Integer, plain::text(place)}, line);
        branch.then = value();
        below = std::max(below, branch.then->depth);
        result.branches.push_back(std::move(branch));
    }
    if (result.branches.empty()) unexpected();
    expectOperator(")");
    refuseDraws(draws, Message::DrawInChoice);
    return make(std::move(result), line, below);
}

// A type as an argument: a NULL of it.
ExpressionPtr Parser::typeAsValue(int line) {
    CastExpression typed;
    typed.value = make(Literal{LiteralKind::Null, ""}, line);
    typed.type = type("", 0);
    const int depth = typed.value->depth;
    return make(std::move(typed), line, depth);
}

// PARSE(text AS type USING culture), TRY_PARSE alike.
ExpressionPtr Parser::parseCall() {
    const int line = peek().line;
    FunctionCall result{ObjectName{{next().text}, line}, {}};
    expectOperator("(");
    result.arguments.push_back(value());
    expectKeyword("AS");
    result.arguments.push_back(typeAsValue(line));
    if (acceptKeyword("USING")) result.arguments.push_back(value());
    expectOperator(")");
    const int below = deepest(result.arguments);
    return make(std::move(result), line, below);
}

// IDENTITY(type, seed, increment) in SELECT ... INTO: the type stands as a NULL of it.
ExpressionPtr Parser::identityCall() {
    const int line = peek().line;
    FunctionCall result{ObjectName{{next().text}, line}, {}};
    expectOperator("(");
    result.arguments.push_back(typeAsValue(line));
    if (acceptOperator(",")) {
        result.arguments.push_back(signedValue(Place::Value));
        expectOperator(",");
        result.arguments.push_back(signedValue(Place::Value));
    }
    expectOperator(")");
    const int below = deepest(result.arguments);
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::castCall() {
    const int line = next().line;
    CastExpression result;
    expectOperator("(");
    result.value = value();
    expectKeyword("AS");
    result.type = type("", 0);
    expectOperator(")");
    const int below = result.value->depth;
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::convertCall() {
    const int line = next().line;
    CastExpression result;
    expectOperator("(");
    result.type = type("", 0);
    expectOperator(",");
    result.value = value();
    if (acceptOperator(",")) result.style = value();
    expectOperator(")");
    const int below = std::max(result.value->depth, result.style ? result.style->depth : 0);
    return make(std::move(result), line, below);
}

}  // namespace kap::tsql
