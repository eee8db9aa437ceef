#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// CREATE DEFAULT and CREATE RULE.
namespace kap::tsql {

// Both are kept as text, and read again where they are bound; here they are read to tell what is
// wrong with them.
Statement::Node Parser::createRule() {
    CreateRuleStatement result;
    result.isDefault = atKeyword("DEFAULT");
    requireFirst(result.isDefault ? "CREATE DEFAULT" : "CREATE RULE");
    next();
    result.name = objectName();
    expectKeyword("AS");
    const std::size_t start = position_;
    if (result.isDefault) {
        value();
    } else {
        // The variable stands for the value of the column and is declared by nothing else.
        declared_.push_back(ruleVariable());
        condition();
        declared_.pop_back();
    }
    result.text = sourceText(start);
    return result;
}

std::string Parser::ruleVariable() const {
    const Token* found = nullptr;
    for (std::size_t i = position_; i < tokens_.size(); ++i) {
        const Token& token = tokens_[i];
        if (token.kind != TokenKind::Variable || token.text.starts_with("@@")) continue;
        if (found != nullptr && !equalsIgnoringCase(found->text, token.text)) {
            throw ServerError(Message::RuleOfTwoVariables, {}, token.line);
        }
        found = &token;
    }
    if (found == nullptr) throw ServerError(Message::RuleWithoutVariable, {}, peek().line);
    return found->text;
}

}  // namespace kap::tsql
