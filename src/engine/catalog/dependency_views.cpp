#include <set>
#include <utility>

#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/view_rows.hpp"

// Which views, procedures, functions and triggers name which objects. It is read from their texts,
// so an alias or a column that has the name of an object counts as this object.
namespace kap::engine::views {
namespace {

bool isName(const tsql::Token& token) {
    return token.kind == tsql::TokenKind::Word || token.kind == tsql::TokenKind::QuotedName;
}

// The stored names of what a text names.
std::set<std::string, std::less<>> namedIn(const SchemaCatalogue& catalogue,
                                           const StoredObject& object) {
    std::set<std::string, std::less<>> result;
    const std::vector<tsql::Token> tokens = tokensOf(object.text);
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (!isName(tokens[i]) || tokens[i].text.empty()) continue;
        const bool qualified = i > 1 && isSign(tokens[i - 1], ".") && isName(tokens[i - 2]);
        if (qualified && !catalogue.hasSchema(tokens[i - 2].text)) continue;
        tsql::ObjectName name;
        if (qualified) name.parts.push_back(tokens[i - 2].text);
        name.parts.push_back(tokens[i].text);
        std::string stored = resolvedName(name, schemaOf(object.name), catalogue);
        if (sameName(stored, object.name) || !catalogue.knows(stored)) continue;
        result.insert(std::move(stored));
    }
    return result;
}

SystemRows dependencies(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"referencing_id", kInt},
                     {"referencing_minor_id", kInt},
                     {"referencing_class", kTinyInt},
                     {"referencing_class_desc", kShort},
                     {"referenced_class", kTinyInt},
                     {"referenced_class_desc", kShort},
                     {"referenced_schema_name", kName},
                     {"referenced_entity_name", kName},
                     {"referenced_id", kInt},
                     {"referenced_minor_id", kInt}},
                    {}};
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind > StoredKind::Trigger) continue;
        for (const std::string& named : namedIn(catalogue, object)) {
            view.rows.push_back({number(objectId(object.name)), number(0), number(1),
                                 text("OBJECT_OR_COLUMN"), number(1), text("OBJECT_OR_COLUMN"),
                                 schemaText(named), bare(named), number(objectId(named)),
                                 number(0)});
        }
    }
    return view;
}

// The tables that views name, as the standard tells it.
SystemRows tablesOfViews(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"VIEW_CATALOG", kName},
                     {"VIEW_SCHEMA", kName},
                     {"VIEW_NAME", kName},
                     {"TABLE_CATALOG", kName},
                     {"TABLE_SCHEMA", kName},
                     {"TABLE_NAME", kName}},
                    {}};
    const Value database = text(catalogue.databaseName());
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::View) continue;
        for (const std::string& named : namedIn(catalogue, object)) {
            if (catalogue.find(named) == nullptr && catalogue.findView(named) == nullptr) continue;
            view.rows.push_back({database, schemaText(object.name), bare(object.name), database,
                                 schemaText(named), bare(named)});
        }
    }
    return view;
}

constexpr auto kDependencyViews = std::to_array<View>({
    {"information_schema", "view_table_usage", tablesOfViews},
    {"sys", "sql_expression_dependencies", dependencies},
});

}  // namespace

std::span<const View> dependencyViews() {
    return kDependencyViews;
}

}  // namespace kap::engine::views
