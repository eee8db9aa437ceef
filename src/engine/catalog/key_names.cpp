#include "engine/catalog/key_names.hpp"

#include <algorithm>
#include <variant>

#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {

std::string keyName(std::string_view createSql, const std::vector<std::string>& columns) {
    const auto table = readTable(createSql);
    if (!table) return {};
    for (const sql::Constraint& constraint : table->constraints) {
        const auto* key = std::get_if<sql::KeyConstraint>(&constraint.kind);
        const bool named = key != nullptr && !constraint.name.empty();
        if (named && std::ranges::equal(key->columns, columns, sameName)) return constraint.name;
    }
    return {};
}

}  // namespace kap::engine
