#include <ostream>

#include <nlohmann/json.hpp>

#include "cli/commands/describe/describe_output.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

template <class Facts, class Describe>
Json listOf(const Facts& facts, Describe describe) {
    Json all = Json::array();
    for (const auto& one : facts) {
        all.push_back(describe(one));
    }
    return all;
}

Json jsonOf(const ColumnFact& column) {
    return {{"name", column.name},
            {"type", column.type},
            {"nullable", column.nullable},
            {"identity", column.identity},
            {"computed", column.computed},
            {"default", column.defaultValue.empty() ? Json(nullptr) : Json(column.defaultValue)}};
}

Json jsonOf(const IndexFact& index) {
    return {{"name", index.name},
            {"unique", index.unique},
            {"primary", index.primary},
            {"columns", index.columns}};
}

Json jsonOf(const ForeignKeyFact& key) {
    return {{"name", key.name},
            {"columns", key.columns},
            {"table", key.target},
            {"tableColumns", key.targetColumns},
            {"onDelete", key.onDelete}};
}

Json jsonOf(const ModuleFact& one) {
    Json json = {{"name", one.name}, {"definition", one.definition}};
    if (!one.kind.empty()) {
        json["kind"] = one.kind;
    }
    return json;
}

Json jsonOf(const TableFact& table) {
    const auto described = [](const auto& one) { return jsonOf(one); };
    return {{"name", table.name},
            {"rows", table.rows},
            {"columns", listOf(table.columns, described)},
            {"indexes", listOf(table.indexes, described)},
            {"foreignKeys", listOf(table.foreignKeys, described)},
            {"checks", listOf(table.checks, described)},
            {"triggers", listOf(table.triggers, described)}};
}

}  // namespace

void printFactsJson(std::ostream& out, const DatabaseFacts& facts) {
    const auto described = [](const auto& one) { return jsonOf(one); };
    out << Json{{"bytes", facts.bytes ? Json(*facts.bytes) : Json(nullptr)},
                {"tables", listOf(facts.tables, described)},
                {"modules", listOf(facts.modules, described)}}
               .dump(2)
        << '\n';
}

}  // namespace kap::cli
