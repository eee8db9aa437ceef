#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "base/ascii.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/plan/statement_shape.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"

// How scripts are read: a statement that differs from an earlier one in literals alone is
// recognised by its tokens and shares what was made of that one.
namespace kap::engine {
namespace {

using tsql::Token;
using tsql::TokenKind;

// Whether the script changes what quoted words are on its way.
bool changesQuotes(const std::vector<Token>& tokens) {
    return std::ranges::any_of(tokens, [](const Token& token) {
        return token.kind == TokenKind::Word && equalsIgnoringCase(token.text, "QUOTED_IDENTIFIER");
    });
}

bool isQueryOrWrite(const tsql::Statement& statement) {
    return isTranslated(statement) &&
           (std::holds_alternative<tsql::SelectStatement>(statement.node) ||
            std::holds_alternative<tsql::InsertStatement>(statement.node) ||
            std::holds_alternative<tsql::UpdateStatement>(statement.node) ||
            std::holds_alternative<tsql::DeleteStatement>(statement.node));
}

CompiledStatement compiledOf(StatementShapes::Found found, StatementText text) {
    CompiledStatement compiled;
    compiled.ready = true;
    compiled.generation = found.shape->generation;
    compiled.plan = found.shape->plan;
    compiled.columns = found.shape->columns;
    compiled.constants = std::move(found.constants);
    compiled.text = std::move(text);
    compiled.shape = std::move(found.shape);
    return compiled;
}

}  // namespace

ReadScript ScriptRunner::read(std::string_view script, const tsql::ParseOptions& options) {
    tsql::ScriptReader reader(script, options);
    const bool byShapes = !state_.showPlan && !changesQuotes(reader.tokens());
    tsql::Script parsed;
    std::vector<RecognisedStatement> recognised;
    std::shared_ptr<const std::string> text;
    while (reader.atStatement()) {
        const std::span<const Token> rest = reader.rest();
        auto found = byShapes ? recognise(reader, parsed) : std::nullopt;
        if (!found) {
            if (!byShapes) parsed.push_back(reader.read());
            continue;
        }
        if (text == nullptr) text = std::make_shared<const std::string>(script);
        const Token& first = rest.front();
        const Token& last = rest[found->shape->tokens.size() - 1];
        recognised.push_back(
            {parsed.size(),
             compiledOf(std::move(*found), {text, first.start, last.end, first.line})});
    }
    return {std::make_shared<const tsql::Script>(std::move(parsed)), std::move(recognised)};
}

// Reads the next statement: gives its shape, or adds it to those that were parsed.
std::optional<StatementShapes::Found> ScriptRunner::recognise(tsql::ScriptReader& reader,
                                                              tsql::Script& parsed) {
    const std::size_t first = reader.position();
    const std::span<const Token> rest = reader.rest();
    if (auto found = shapes_.find(rest, catalogue_.generation())) {
        reader.pass(found->shape->tokens.size());
        return found;
    }
    const bool learns = shapes_.isWorthLearning(rest);
    tsql::Statement statement = reader.read();
    if (learns && isQueryOrWrite(statement)) {
        const auto tokens = rest.first(reader.position() - first);
        if (const auto shape = learn(tokens, first, statement)) {
            return StatementShapes::Found{shape, shape->plan->values.constants};
        }
    }
    parsed.push_back(std::move(statement));
    return std::nullopt;
}

// Null, with the statement as it was, when it cannot be shared. What is wrong with it shows when it
// is run: statements before it may make what it needs.
std::shared_ptr<const StatementShape> ScriptRunner::learn(std::span<const Token> tokens,
                                                          std::size_t first,
                                                          tsql::Statement& statement) {
    NameScope names(catalogue_);
    names.follow(state_.writes);
    try {
        const Transactions::ReadScope scope(transactions_);
        const auto shape = shapeOf(tokens, first, translate(statement, names, Constants::Bound));
        if (shape == nullptr) return nullptr;
        if (const auto* query = std::get_if<QueryPlan>(&shape->plan->kind)) {
            shape->columns = std::make_shared<const std::vector<ado::ColumnInfo>>(
                columnInfos(query->columns, catalogue_));
        }
        shape->generation = catalogue_.generation();
        shape->statement = std::move(statement);
        shapes_.learn(tokens, shape);
        return shape;
    } catch (const tsql::ServerError&) {
    } catch (const SqliteError&) {
    }
    return nullptr;
}

}  // namespace kap::engine
