#include "engine/catalog/column_users.hpp"

#include <algorithm>

#include "engine/catalog/bound_rules.hpp"
#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/source_text.hpp"

namespace kap::engine {
namespace {

bool namesColumn(std::string_view source, std::string_view column) {
    const std::vector<tsql::Token> tokens = tokensOf(source);
    return std::ranges::any_of(tokens, [&](const tsql::Token& token) {
        const bool isName =
            token.kind == tsql::TokenKind::Word || token.kind == tsql::TokenKind::QuotedName;
        return isName && sameName(token.text, column);
    });
}

}  // namespace

bool isNamedByDefinitions(const SchemaCatalogue& catalogue, const Table& table,
                          std::string_view column) {
    const bool computes = std::ranges::any_of(table.columns, [&](const Column& each) {
        return each.computed && namesColumn(shownSource(each), column);
    });
    const auto checks = [&](const ConstraintInfo& each) {
        return sameName(each.table, table.name) && std::string_view(each.type) == "C " &&
               !isBoundRule(each.name) &&
               namesColumn(each.source.empty() ? each.definition : each.source, column);
    };
    const auto filters = [&](const IndexInfo& each) {
        return sameName(each.table, table.name) && namesColumn(each.filter, column);
    };
    return computes || std::ranges::any_of(catalogue.constraints(), checks) ||
           std::ranges::any_of(catalogue.keysAndIndexes(), filters);
}

}  // namespace kap::engine
