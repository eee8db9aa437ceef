#include <utility>

#include "tsql/parser_state.hpp"

// CREATE SCHEMA with the tables and views in it, and ALTER SCHEMA.
namespace kap::tsql {

// CREATE SCHEMA [name] [AUTHORIZATION owner] elements: without a name it has the owner's.
Statement::Node Parser::createSchema() {
    requireFirst("CREATE SCHEMA");
    next();
    CreateSchemaStatement result;
    if (!atKeyword("AUTHORIZATION")) result.name = name();
    if (acceptKeyword("AUTHORIZATION")) {
        std::string owner = name();
        if (result.name.empty()) result.name = std::move(owner);
    }
    while (atKeyword("CREATE") || atKeyword("GRANT") || atKeyword("REVOKE") || atKeyword("DENY"))
        result.elements.push_back(schemaElement(result.name));
    return result;
}

// What has no schema before its name belongs to the new one.
Statement Parser::schemaElement(const std::string& schema) {
    const int line = peek().line;
    const std::size_t start = position_;
    const auto qualify = [&](ObjectName& name) {
        if (name.parts.size() == 1) name.parts.insert(name.parts.begin(), schema);
    };
    if (!atKeyword("CREATE")) return {noEffect(peek().text), line};
    next();
    if (atKeyword("VIEW")) {
        CreateViewStatement view = viewDefinition();
        view.text = sourceText(start);
        qualify(view.name);
        return {std::move(view), line};
    }
    expectKeyword("TABLE");
    Statement::Node node = createTable();
    qualify(std::get<CreateTableStatement>(node).table);
    return {std::move(node), line};
}

// ALTER SCHEMA name TRANSFER [OBJECT:: | TYPE::] object.
Statement::Node Parser::alterSchema() {
    AlterSchemaStatement result;
    result.schema = name();
    expectKeyword("TRANSFER");
    if (atKeyword("XML") && atKeyword("SCHEMA", 1)) refuse("XML SCHEMA COLLECTION");
    if (atOperator(":", 1) && atOperator(":", 2)) {
        result.isType = atKeyword("TYPE");
        if (!result.isType && !atKeyword("OBJECT")) unexpected();
        next();
        next();
        next();
    }
    result.object = objectName();
    return result;
}

}  // namespace kap::tsql
