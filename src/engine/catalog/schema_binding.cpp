#include "engine/catalog/schema_binding.hpp"

#include <algorithm>
#include <vector>

#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/object_names.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

bool isName(const tsql::Token& token, std::string_view name) {
    return (token.kind == tsql::TokenKind::Word || token.kind == tsql::TokenKind::QuotedName) &&
           sameName(token.text, name);
}

bool bindsSchema(const std::vector<tsql::Token>& tokens) {
    return std::ranges::any_of(
        tokens, [](const tsql::Token& token) { return isWord(token, "SCHEMABINDING"); });
}

bool namesObject(const std::vector<tsql::Token>& tokens, std::string_view object) {
    for (std::size_t i = 2; i < tokens.size(); ++i) {
        if (isName(tokens[i], bareName(object)) && isSign(tokens[i - 1], ".") &&
            isName(tokens[i - 2], schemaOf(object)))
            return true;
    }
    return false;
}

}  // namespace

std::optional<std::string> schemaBoundUser(const SchemaCatalogue& catalogue,
                                           std::string_view object, std::string_view column) {
    for (const StoredObject& each : catalogue.objects()) {
        const bool binds = each.kind == StoredKind::View || each.kind == StoredKind::Function;
        if (!binds || sameName(each.name, object)) continue;
        const std::vector<tsql::Token> tokens = tokensOf(each.text);
        if (!bindsSchema(tokens) || !namesObject(tokens, object)) continue;
        const bool uses =
            column.empty() || std::ranges::any_of(tokens, [&](const tsql::Token& token) {
                return isName(token, column);
            });
        if (uses) return std::string(bareName(each.name));
    }
    return std::nullopt;
}

void refuseSchemaBound(const SchemaCatalogue& catalogue, const char* action,
                       std::string_view object, const std::string& shown, int line) {
    if (const auto user = schemaBoundUser(catalogue, object))
        refuseUsed(action, shown, *user, line);
}

void refuseUsedSequence(const SchemaCatalogue& catalogue, const char* action,
                        std::string_view sequence, const std::string& shown, int line) {
    const std::string call = "kap_next_value(" + sqlText(std::string(sequence)) + ")";
    for (const ConstraintInfo& each : catalogue.constraints()) {
        if (each.definition.find(call) != std::string::npos)
            refuseUsed(action, shown, each.name, line);
    }
}

void refuseUsed(const char* action, const std::string& shown, const std::string& user, int line) {
    throw tsql::ServerError(tsql::Message::ReferencedByObject, {action, shown, user}, line);
}

}  // namespace kap::engine
