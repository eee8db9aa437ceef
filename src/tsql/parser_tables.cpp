#include <algorithm>
#include <array>
#include <utility>

#include "base/restored.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// CREATE TABLE and ALTER TABLE: columns and constraints.
namespace kap::tsql {

Statement::Node Parser::createTable() {
    CreateTableStatement result;
    result.table = objectName();
    refuseServersTable();
    tableBody(result);
    refuseServersTable();
    tableOptions();
    return result;
}

void Parser::tableBody(TableElements& table) {
    expectOperator("(");
    do {
        // A comma may stand after the last element.
        if (atOperator(")") && !table.columns.empty()) break;
        tableElement(table);
    } while (acceptOperator(",") || atTableConstraint());
    expectOperator(")");
}

// ON [PRIMARY], ON scheme (column): there is one place to store rows, so its name has no effect.
void Parser::fileGroup() {
    while (acceptKeyword("ON") || acceptKeyword("TEXTIMAGE_ON") || acceptKeyword("FILESTREAM_ON")) {
        if (peek().kind == TokenKind::Text) {
            next();  // "default"
        } else if (!acceptKeyword("PRIMARY")) {
            name();
        }
        if (atOperator("(")) nameList();
    }
}

// Behind the columns of a table: where it lies and how it is packed is not the schema's choice
// here, what it keeps beside its rows cannot be left out unseen.
void Parser::tableOptions() {
    static constexpr std::array kWithoutEffect{"DATA_COMPRESSION", "XML_COMPRESSION",
                                               "MEMORY_OPTIMIZED", "DURABILITY"};
    fileGroup();
    if (!acceptKeyword("WITH")) return;
    expectOperator("(");
    do {
        const bool known = std::ranges::any_of(
            kWithoutEffect, [this](const char* option) { return atKeyword(option); });
        if (!known && atName()) refuse("table option " + peek().text);
        name();
        expectOperator("=");
        if (!acceptKeyword("ON") && !acceptKeyword("OFF")) name();
        if (acceptKeyword("ON")) {
            expectKeyword("PARTITIONS");
            skipBrackets();
        }
    } while (acceptOperator(","));
    expectOperator(")");
    fileGroup();
}

bool Parser::atTableConstraint() const {
    for (const char* word : {"CONSTRAINT", "PRIMARY", "UNIQUE", "FOREIGN", "CHECK", "INDEX"}) {
        if (atKeyword(word)) return true;
    }
    return false;
}

void Parser::tableElement(TableElements& table) {
    if (atKeyword("PERIOD") && atKeyword("FOR", 1)) refuse("PERIOD FOR SYSTEM_TIME");
    if (atTableConstraint() || atKeyword("DEFAULT")) {
        tableConstraint(table);
    } else {
        columnDefinition(table);
    }
}

void Parser::tableConstraint(TableElements& table) {
    std::string constraintName;
    if (acceptKeyword("CONSTRAINT")) constraintName = name();
    if (atKeyword("INDEX") && constraintName.empty()) {
        table.indexes.push_back(indexOfTable({}));
    } else if (atKeyword("CHECK")) {
        table.checks.push_back(checkConstraint(std::move(constraintName)));
    } else if (acceptKeyword("FOREIGN")) {
        expectKeyword("KEY");
        std::vector<std::string> columns = nameList();
        ForeignKey key = foreignKey(std::move(constraintName));
        key.columns = std::move(columns);
        table.foreignKeys.push_back(std::move(key));
    } else if (acceptKeyword("DEFAULT")) {
        DefaultOption option = defaultOption(std::move(constraintName));
        expectKeyword("FOR");
        table.defaults.emplace_back(name(), std::move(option));
    } else {
        KeyConstraint key = keyConstraint(std::move(constraintName));
        keyColumns(key);
        keyOptions(key);
        table.keys.push_back(std::move(key));
    }
}

void Parser::keyColumns(KeyConstraint& key) {
    expectOperator("(");
    do {
        key.columns.push_back(name());
        if (!acceptKeyword("DESC")) acceptKeyword("ASC");
    } while (acceptOperator(","));
    expectOperator(")");
}

// WITH FILLFACTOR = 90, WITH (PAD_INDEX = OFF): how rows lie on disk is not the schema's choice
// here.
bool Parser::indexOptions() {
    bool ignores = false;
    if (acceptKeyword("WITH")) {
        if (acceptOperator("(")) {
            while (!acceptOperator(")")) {
                if (atEnd()) unexpected();
                if (atKeyword("IGNORE_DUP_KEY") && atKeyword("ON", 2)) ignores = true;
                next();
            }
        } else {
            do {
                ignores = ignores || atKeyword("IGNORE_DUP_KEY");
                next();
                if (acceptOperator("=")) next();
            } while (acceptOperator(","));
        }
    }
    fileGroup();
    return ignores;
}

void Parser::keyOptions(KeyConstraint& key) {
    key.ignoresDuplicates = indexOptions();
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
    if (!acceptKeyword("CLUSTERED")) acceptKeyword("NONCLUSTERED");
    return key;
}

// REFERENCES parent (columns) ON DELETE CASCADE; the key's own columns are the caller's.
ForeignKey Parser::foreignKey(std::string name) {
    ForeignKey key;
    key.name = std::move(name);
    key.line = peek().line;
    expectKeyword("REFERENCES");
    key.parent = objectName();
    if (atOperator("(")) key.parentColumns = nameList();
    while (atKeyword("ON") && (atKeyword("DELETE", 1) || atKeyword("UPDATE", 1))) {
        next();
        const bool deletes = acceptKeyword("DELETE");
        if (!deletes) next();
        (deletes ? key.onDelete : key.onUpdate) = referenceAction();
    }
    // NOT NULL may follow, which is the column's.
    if (atKeyword("NOT") && atKeyword("FOR", 1)) {
        next();
        next();
        expectKeyword("REPLICATION");
    }
    return key;
}

ReferenceAction Parser::referenceAction() {
    if (acceptKeyword("CASCADE")) return ReferenceAction::Cascade;
    if (acceptKeyword("SET")) {
        if (acceptKeyword("NULL")) return ReferenceAction::SetNull;
        expectKeyword("DEFAULT");
        return ReferenceAction::SetDefault;
    }
    expectKeyword("NO");
    expectKeyword("ACTION");
    return ReferenceAction::None;
}

CheckConstraint Parser::checkConstraint(std::string name) {
    CheckConstraint check;
    check.name = std::move(name);
    check.line = next().line;
    if (acceptKeyword("NOT")) {
        expectKeyword("FOR");
        expectKeyword("REPLICATION");
    }
    const std::size_t start = position_;
    expectOperator("(");
    const std::size_t draws = draws_;
    check.condition = condition();
    refuseDraws(draws, Message::DrawNotHere);
    expectOperator(")");
    check.text = sourceText(start);
    return check;
}

DefaultOption Parser::defaultOption(std::string name) {
    DefaultOption option;
    option.constraintName = std::move(name);
    const std::size_t start = position_;
    {
        const Restored here(inDefault_, true);
        const Restored order(orderRefused_, true);
        option.value = value();
    }
    option.text = sourceText(start);
    if (atKeyword("WITH") && atKeyword("VALUES", 1)) {
        next();
        next();
        option.withValues = true;
    }
    return option;
}

void Parser::columnDefinition(TableElements& table) {
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
        if (acceptKeyword("AS")) {
            computedColumn(column);
        } else {
            column.type = type(column.name, ordinal);
            if (!aliasNullable_) column.nullable = false;
        }
    }
    while (columnOption(column, table)) {
    }
    table.columns.push_back(std::move(column));
}

void Parser::computedColumn(ColumnDefinition& column) {
    const std::size_t start = position_;
    const std::size_t draws = draws_;
    column.computed = value();
    refuseDraws(draws, Message::DrawNotHere);
    column.computedText = sourceText(start);
    acceptKeyword("PERSISTED");
}

bool Parser::columnOption(ColumnDefinition& column, TableElements& table) {
    if (acceptKeyword("COLLATE")) {
        if (!atName()) unexpected();
        column.collation = next().text;
        return true;
    }
    refuseServersColumn();
    // Which column replication knows rows by has no meaning here.
    if (acceptKeyword("ROWGUIDCOL")) return true;
    const bool named = atKeyword("CONSTRAINT");
    std::string constraintName;
    if (named) {
        next();
        constraintName = name();
    }
    if (acceptKeyword("NULL")) {
        column.nullable = true;
    } else if (acceptKeyword("NOT")) {
        if (acceptKeyword("FOR")) {
            expectKeyword("REPLICATION");
            return true;
        }
        expectKeyword("NULL");
        column.nullable = false;
    } else if (acceptKeyword("DEFAULT")) {
        column.defaultValue = defaultOption(std::move(constraintName));
    } else if (atKeyword("INDEX") && !named) {
        table.indexes.push_back(indexOfTable(column.name));
    } else if (acceptKeyword("IDENTITY")) {
        column.identity = identityOption();
    } else if (atKeyword("PRIMARY") || atKeyword("UNIQUE")) {
        KeyConstraint key = keyConstraint(std::move(constraintName));
        if (atOperator("(")) {
            keyColumns(key);
        } else {
            key.columns.push_back(column.name);
        }
        keyOptions(key);
        table.keys.push_back(std::move(key));
    } else if (atKeyword("CHECK")) {
        CheckConstraint check = checkConstraint(std::move(constraintName));
        check.column = column.name;
        table.checks.push_back(std::move(check));
    } else if (atKeyword("REFERENCES") || (atKeyword("FOREIGN") && atKeyword("KEY", 1))) {
        if (acceptKeyword("FOREIGN")) expectKeyword("KEY");
        std::vector<std::string> columns{column.name};
        if (atOperator("(")) columns = nameList();
        ForeignKey key = foreignKey(std::move(constraintName));
        key.columns = std::move(columns);
        table.foreignKeys.push_back(std::move(key));
    } else {
        if (named) unexpected();
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

Statement::Node Parser::alterTable() {
    AlterTableStatement result;
    result.table = objectName();
    if (acceptKeyword("WITH")) {
        result.withCheck = acceptKeyword("CHECK");
        result.withoutCheck = !result.withCheck;
        if (result.withoutCheck) expectKeyword("NOCHECK");
    }
    if (alterSwitch(result)) return result;
    if (acceptKeyword("ADD")) {
        alterAdd(result);
    } else if (acceptKeyword("DROP")) {
        alterDrop(result);
    } else if (acceptKeyword("ALTER")) {
        expectKeyword("COLUMN");
        result.action = AlterTableStatement::Action::AlterColumn;
        result.column.line = peek().line;
        result.column.name = name();
        if (atKeyword("ADD") || atKeyword("DROP")) return columnProperty(result);
        result.column.type = type(result.column.name, 1);
        if (acceptKeyword("COLLATE")) {
            if (!atName()) unexpected();
            result.column.collation = next().text;
        }
        if (acceptKeyword("NULL")) {
            result.column.nullable = true;
        } else if (acceptKeyword("NOT")) {
            expectKeyword("NULL");
            result.column.nullable = false;
        }
    } else {
        for (const char* word : {"SWITCH", "REBUILD", "SET"}) {
            if (atKeyword(word)) refuse(std::string("ALTER TABLE ") + word);
        }
        unexpected();
    }
    return result;
}

// ALTER COLUMN name ADD ROWGUIDCOL: what has no meaning here as an option of a column has none here
// either.
Statement::Node Parser::columnProperty(const AlterTableStatement& alter) {
    next();
    refuseServersColumn();
    if (acceptKeyword("NOT")) {
        expectKeyword("FOR");
        expectKeyword("REPLICATION");
    } else if (!acceptKeyword("ROWGUIDCOL")) {
        expectKeyword("PERSISTED");
    }
    return NoEffectStatement{"ALTER COLUMN " + alter.column.name};
}

// NOCHECK CONSTRAINT ALL, ENABLE TRIGGER name.
bool Parser::alterSwitch(AlterTableStatement& alter) {
    using Action = AlterTableStatement::Action;
    const bool constraints = atKeyword("CHECK") || atKeyword("NOCHECK");
    const bool triggers = atKeyword("ENABLE") || atKeyword("DISABLE");
    if (!constraints && !triggers) return false;
    alter.action = constraints ? Action::Constraints : Action::Triggers;
    alter.enable = atKeyword("CHECK") || atKeyword("ENABLE");
    next();
    for (const char* word : {"CHANGE_TRACKING", "FILETABLE_NAMESPACE"}) {
        if (triggers && atKeyword(word)) refuse(std::string("ALTER TABLE ... ") + word);
    }
    expectKeyword(constraints ? "CONSTRAINT" : "TRIGGER");
    if (acceptKeyword("ALL")) return true;
    do {
        alter.names.push_back(name());
    } while (acceptOperator(","));
    return true;
}

// DISABLE TRIGGER name ON table says what ALTER TABLE can say, too.
Statement::Node Parser::triggerSwitch() {
    AlterTableStatement result;
    result.action = AlterTableStatement::Action::Triggers;
    result.enable = atKeyword("ENABLE");
    next();
    next();
    if (!acceptKeyword("ALL")) {
        do {
            result.names.push_back(objectName().last());
        } while (acceptOperator(","));
    }
    expectKeyword("ON");
    if (atKeyword("DATABASE") || atKeyword("ALL")) refuse("trigger on the database");
    result.table = objectName();
    return result;
}

void Parser::alterAdd(AlterTableStatement& alter) {
    alter.action = AlterTableStatement::Action::Add;
    acceptKeyword("COLUMN");
    do {
        refuseKeyword("INDEX", "ALTER TABLE ADD INDEX");
        tableElement(alter.added);
    } while (acceptOperator(","));
}

void Parser::alterDrop(AlterTableStatement& alter) {
    using Action = AlterTableStatement::Action;
    alter.action = acceptKeyword("COLUMN") ? Action::DropColumns : Action::DropConstraints;
    if (alter.action == Action::DropConstraints) acceptKeyword("CONSTRAINT");
    if (acceptKeyword("IF")) {
        expectKeyword("EXISTS");
        alter.ifExists = true;
    }
    do {
        alter.names.push_back(name());
    } while (acceptOperator(","));
}

}  // namespace kap::tsql
