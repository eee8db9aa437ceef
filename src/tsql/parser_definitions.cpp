#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// CREATE, ALTER and DROP of everything: what they begin, and the shorter ones whole.
namespace kap::tsql {

Statement::Node Parser::createStatement() {
    if (acceptKeyword("TABLE")) return createTable();
    if (atKeyword("OR") && atKeyword("ALTER", 1)) {
        next();
        next();
        if (!atModule()) unexpected();
        return module(Making::CreateOrAlter);
    }
    if (atModule()) return module(Making::Create);
    if (acceptKeyword("DATABASE")) {
        refuseServersDatabase("CREATE");
        return databaseStatement(DatabaseAction::Create);
    }
    if (acceptKeyword("TYPE")) return createType();
    if (atKeyword("DEFAULT") || atKeyword("RULE")) return createRule();
    const bool index = atKeyword("UNIQUE") || atKeyword("CLUSTERED") || atKeyword("NONCLUSTERED") ||
                       atKeyword("INDEX");
    if (index) return createIndex();
    if (atKeyword("SCHEMA")) return createSchema();
    if (acceptKeyword("SEQUENCE")) return createSequence();
    if (acceptKeyword("SYNONYM")) return createSynonym();
    for (const char* word : {"STATISTICS", "LOGIN", "USER", "ROLE"}) {
        if (atKeyword(word)) return noEffect(std::string("CREATE ") + word);
    }
    if (atEnd()) unexpected();
    refuse("CREATE " + peek().text);
}

Statement::Node Parser::alterStatement() {
    if (acceptKeyword("TABLE")) return alterTable();
    if (atModule()) return module(Making::Alter);
    if (acceptKeyword("SCHEMA")) return alterSchema();
    if (acceptKeyword("SEQUENCE")) return alterSequence();
    if (acceptKeyword("DATABASE")) {
        refuseServersDatabase("ALTER");
        if (atKeyword("SCOPED") && atKeyword("CONFIGURATION", 1)) {
            return noEffect("ALTER DATABASE SCOPED CONFIGURATION");
        }
        return databaseStatement(DatabaseAction::Alter);
    }
    for (const char* word : {"AUTHORIZATION", "LOGIN", "USER", "ROLE"}) {
        if (atKeyword(word)) return noEffect(std::string("ALTER ") + word);
    }
    if (atEnd()) unexpected();
    refuse("ALTER " + peek().text);
}

Statement::Node Parser::dropStatement() {
    static constexpr std::pair<const char*, ObjectKind> kKinds[] = {
        {"TABLE", ObjectKind::Table},         {"VIEW", ObjectKind::View},
        {"PROCEDURE", ObjectKind::Procedure}, {"PROC", ObjectKind::Procedure},
        {"FUNCTION", ObjectKind::Function},   {"TRIGGER", ObjectKind::Trigger},
        {"INDEX", ObjectKind::Index},         {"TYPE", ObjectKind::Type},
        {"SCHEMA", ObjectKind::Schema},       {"DEFAULT", ObjectKind::Default},
        {"RULE", ObjectKind::Rule},           {"SEQUENCE", ObjectKind::Sequence},
        {"SYNONYM", ObjectKind::Synonym}};
    if (acceptKeyword("DATABASE")) {
        refuseServersDatabase("DROP");
        if (acceptKeyword("IF")) expectKeyword("EXISTS");
        return databaseStatement(DatabaseAction::Drop);
    }
    for (const auto& [word, kind] : kKinds) {
        if (!acceptKeyword(word)) continue;
        DropStatement result;
        result.kind = kind;
        if (acceptKeyword("IF")) {
            expectKeyword("EXISTS");
            result.ifExists = true;
        }
        if (kind == ObjectKind::Index) return dropIndex(result.ifExists);
        do {
            result.names.push_back(objectName());
        } while (acceptOperator(","));
        if (kind == ObjectKind::Trigger && atKeyword("ON")) refuse("trigger on the database");
        return result;
    }
    for (const char* word : {"STATISTICS", "LOGIN", "USER", "ROLE"}) {
        if (!atKeyword(word)) continue;
        if (atKeyword("IF", 1)) next();
        return noEffect(std::string("DROP ") + word);
    }
    if (atEnd()) unexpected();
    refuse("DROP " + peek().text);
}

// DROP INDEX table.index, and the newer DROP INDEX index ON table.
Statement::Node Parser::dropIndex(bool ifExists) {
    DropStatement result;
    result.kind = ObjectKind::Index;
    result.ifExists = ifExists;
    do {
        ObjectName index = objectName();
        if (acceptKeyword("ON")) {
            ObjectName table = objectName();
            table.parts.push_back(index.last());
            index = std::move(table);
        } else if (index.parts.size() < 2) {
            throw ServerError(Message::TableAndIndexNameNeeded, {}, index.line);
        }
        result.names.push_back(std::move(index));
        indexOptions();
    } while (acceptOperator(","));
    return result;
}

Statement::Node Parser::createIndex() {
    CreateIndexStatement result;
    result.unique = acceptKeyword("UNIQUE");
    if (!acceptKeyword("CLUSTERED")) acceptKeyword("NONCLUSTERED");
    refuseKeyword("COLUMNSTORE", "COLUMNSTORE INDEX");
    expectKeyword("INDEX");
    result.name = name();
    expectKeyword("ON");
    result.table = objectName();
    indexBody(result);
    return result;
}

// (a, b DESC) INCLUDE (c) WHERE condition WITH (options).
void Parser::indexBody(CreateIndexStatement& index) {
    expectOperator("(");
    do {
        IndexColumn column{name()};
        column.descending = acceptKeyword("DESC");
        if (!column.descending) acceptKeyword("ASC");
        index.columns.push_back(std::move(column));
    } while (acceptOperator(","));
    expectOperator(")");
    if (acceptKeyword("INCLUDE")) index.included = nameList();
    if (acceptKeyword("WHERE")) {
        const std::size_t start = position_;
        index.where = condition();
        index.whereText = sourceText(start);
    }
    index.ignoresDuplicates = indexOptions();
}

// INDEX name within CREATE TABLE: of the columns that it lists, or of the one it stands behind.
CreateIndexStatement Parser::indexOfTable(const std::string& column) {
    CreateIndexStatement result;
    result.table.line = next().line;
    result.name = name();
    result.unique = acceptKeyword("UNIQUE");
    if (!acceptKeyword("CLUSTERED")) acceptKeyword("NONCLUSTERED");
    for (const char* word : {"COLUMNSTORE", "HASH"})
        refuseKeyword(word, word);
    if (column.empty() || atOperator("(")) {
        indexBody(result);
        return result;
    }
    result.columns.push_back({column});
    result.ignoresDuplicates = indexOptions();
    return result;
}

Statement::Node Parser::createType() {
    CreateTypeStatement result;
    result.name = objectName();
    if (acceptKeyword("AS")) {
        expectKeyword("TABLE");
        const std::size_t start = position_;
        auto table = std::make_shared<CreateTableStatement>();
        table->table = result.name;
        tableBody(*table);
        result.tableText = sourceText(start);
        result.table = std::move(table);
        return result;
    }
    refuseKeyword("EXTERNAL", "EXTERNAL NAME");
    expectKeyword("FROM");
    result.type = type(result.name.last(), 0);
    if (acceptKeyword("NULL")) {
        result.nullable = true;
    } else if (acceptKeyword("NOT")) {
        expectKeyword("NULL");
        result.nullable = false;
    }
    return result;
}

}  // namespace kap::tsql
