#include <array>
#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

Statement::Node Parser::createStatement() {
    if (!acceptKeyword("TABLE")) {
        if (atEnd()) unexpected();
        refuse("CREATE " + peek().text);
    }
    CreateTableStatement result;
    result.table = objectName();
    expectOperator("(");
    do {
        // A comma may stand after the last element.
        if (atOperator(")") && !result.columns.empty()) break;
        tableElement(result);
    } while (acceptOperator(","));
    expectOperator(")");
    fileGroup();
    return result;
}

// ON [PRIMARY]: there is one place to store rows, so its name has no effect.
void Parser::fileGroup() {
    while (acceptKeyword("ON") || acceptKeyword("TEXTIMAGE_ON"))
        name();
}

void Parser::tableElement(CreateTableStatement& table) {
    for (const char* word : {"CONSTRAINT", "PRIMARY", "UNIQUE", "FOREIGN", "CHECK", "INDEX"}) {
        if (!atKeyword(word)) continue;
        tableConstraint(table);
        return;
    }
    columnDefinition(table);
}

void Parser::tableConstraint(CreateTableStatement& table) {
    std::string constraintName;
    if (acceptKeyword("CONSTRAINT")) constraintName = name();
    refuseKeyword("FOREIGN", "FOREIGN KEY");
    refuseKeyword("CHECK", "CHECK");
    refuseKeyword("INDEX", "INDEX");
    KeyConstraint key = keyConstraint(std::move(constraintName));
    expectOperator("(");
    do {
        key.columns.push_back(name());
        if (!acceptKeyword("DESC")) acceptKeyword("ASC");
    } while (acceptOperator(","));
    expectOperator(")");
    refuseKeyword("WITH", "index option");
    fileGroup();
    table.keys.push_back(std::move(key));
}

KeyConstraint Parser::keyConstraint(std::string name) {
    KeyConstraint key;
    key.name = std::move(name);
    key.line = peek().line;
    if (acceptKeyword("PRIMARY")) {
        expectKeyword("KEY");
        key.primary = true;
    } else {
        expectKeyword("UNIQUE");
    }
    // How rows lie on disk is not the schema's choice here.
    if (!acceptKeyword("CLUSTERED")) acceptKeyword("NONCLUSTERED");
    return key;
}

void Parser::columnDefinition(CreateTableStatement& table) {
    ColumnDefinition column;
    column.line = peek().line;
    const int ordinal = static_cast<int>(table.columns.size()) + 1;
    const bool alone = atKeyword("TIMESTAMP") && (atOperator(",", 1) || atOperator(")", 1) ||
                                                  atKeyword("NOT", 1) || atKeyword("NULL", 1));
    if (alone) {
        // A lone "timestamp" is a column of that type and name.
        column.name = next().text;
        column.type = {SqlType::Timestamp, 8, 0, 0};
    } else {
        column.name = name();
        refuseKeyword("AS", "computed column");
        column.type = type(column.name, ordinal);
    }
    while (columnOption(column, table)) {
    }
    table.columns.push_back(std::move(column));
}

bool Parser::columnOption(ColumnDefinition& column, CreateTableStatement& table) {
    for (const char* word : {"COLLATE", "REFERENCES", "FOREIGN", "CHECK", "ROWGUIDCOL", "SPARSE"}) {
        refuseKeyword(word, word);
    }
    std::string constraintName;
    if (acceptKeyword("CONSTRAINT")) {
        constraintName = name();
        for (const char* word : {"REFERENCES", "FOREIGN", "CHECK"})
            refuseKeyword(word, word);
        if (!atKeyword("DEFAULT") && !atKeyword("PRIMARY") && !atKeyword("UNIQUE") &&
            !atKeyword("NULL") && !atKeyword("NOT")) {
            unexpected();
        }
    }
    if (acceptKeyword("NULL")) {
        column.nullable = true;
    } else if (acceptKeyword("NOT")) {
        refuseKeyword("FOR", "NOT FOR REPLICATION");
        expectKeyword("NULL");
        column.nullable = false;
    } else if (acceptKeyword("DEFAULT")) {
        column.defaultValue = DefaultOption{std::move(constraintName), value()};
    } else if (acceptKeyword("IDENTITY")) {
        column.identity = identityOption();
    } else if (atKeyword("PRIMARY") || atKeyword("UNIQUE")) {
        KeyConstraint key = keyConstraint(std::move(constraintName));
        key.columns.push_back(column.name);
        table.keys.push_back(std::move(key));
    } else {
        return false;
    }
    return true;
}

IdentityOption Parser::identityOption() {
    IdentityOption result;
    if (!acceptOperator("(")) return result;
    result.seed = signedValue(Place::Value);
    expectOperator(",");
    result.increment = signedValue(Place::Value);
    expectOperator(")");
    return result;
}

Statement::Node Parser::dropStatement() {
    if (!acceptKeyword("TABLE")) {
        if (atEnd()) unexpected();
        refuse("DROP " + peek().text);
    }
    DropTableStatement result;
    if (acceptKeyword("IF")) {
        expectKeyword("EXISTS");
        result.ifExists = true;
    }
    do {
        result.tables.push_back(objectName());
    } while (acceptOperator(","));
    return result;
}

}  // namespace kap::tsql
