#include "engine/sqlite/definition_writer.hpp"

#include <utility>
#include <variant>

#include "engine/sqlite/definition_notes.hpp"

namespace kap::engine {
namespace {

const char* textOf(sql::RowEvent event) {
    switch (event) {
        case sql::RowEvent::Insert:
            return "INSERT";
        case sql::RowEvent::Update:
            return "UPDATE";
        case sql::RowEvent::Delete:
            return "DELETE";
    }
    return "";
}

const char* textOf(sql::SchemaObject kind) {
    switch (kind) {
        case sql::SchemaObject::Table:
            return "TABLE ";
        case sql::SchemaObject::Index:
            return "INDEX ";
        case sql::SchemaObject::Trigger:
            return "TRIGGER ";
    }
    return "";
}

}  // namespace

const char* textOf(tsql::ReferenceAction action) {
    switch (action) {
        case tsql::ReferenceAction::None:
            return "NO ACTION";
        case tsql::ReferenceAction::Cascade:
            return "CASCADE";
        case tsql::ReferenceAction::SetNull:
            return "SET NULL";
        case tsql::ReferenceAction::SetDefault:
            return "SET DEFAULT";
    }
    return "";
}

void DefinitionWriter::formula(const sql::Formula& formula) {
    if (const auto* kept = formula.value.as<sql::Definition>()) {
        text_ += kept->text;
    } else {
        writer_.write(formula.value);
    }
    if (formula.source) text_ += sourceComment(*formula.source);
}

void DefinitionWriter::others(const std::string& words) {
    if (words.empty()) return;
    if (!text_.empty() && text_.back() != ' ') text_ += ' ';
    text_ += words;
}

void DefinitionWriter::constraintName(const std::string& name) {
    if (name.empty()) return;
    text_ += "CONSTRAINT ";
    writer_.name(name);
    text_ += ' ';
}

void DefinitionWriter::column(const sql::ColumnDefinition& column) {
    writer_.name(column.name);
    if (column.numbersRows) text_ += " INTEGER PRIMARY KEY";
    if (!column.type.empty()) {
        // SQLite's grammar has no word between the brackets of a type; as a quoted name
        // "nvarchar(max)" is one.
        text_ += ' ';
        writer_.name(column.type);
    }
    others(column.others);
    if (!column.collation.empty()) text_ += " COLLATE " + column.collation;
    if (column.computed) {
        text_ += " GENERATED ALWAYS AS (";
        formula(*column.computed);
        text_ += ") VIRTUAL";
    }
    if (column.notNull) text_ += " NOT NULL";
    if (!column.defaultValue) return;
    text_ += ' ';
    constraintName(column.defaultValue->name);
    text_ += "DEFAULT (";
    formula(column.defaultValue->value);
    text_ += ')';
}

void DefinitionWriter::part(const sql::KeyConstraint& key) {
    text_ += key.primary ? "PRIMARY KEY (" : "UNIQUE (";
    writer_.names(key.columns);
    text_ += notesComment(key.notes) + ")";
}

void DefinitionWriter::part(const sql::CheckConstraint& check) {
    text_ += "CHECK (";
    formula(check.condition);
    text_ += ')';
}

void DefinitionWriter::part(const sql::ForeignKey& key) {
    text_ += "FOREIGN KEY (";
    writer_.names(key.columns);
    text_ += ") REFERENCES ";
    writer_.name(key.parent);
    if (!key.parentColumns.empty()) {
        text_ += " (";
        writer_.names(key.parentColumns);
        text_ += ')';
    }
    text_ += " ON DELETE ";
    text_ += textOf(key.onDelete);
    text_ += " ON UPDATE ";
    text_ += textOf(key.onUpdate);
}

void DefinitionWriter::write(const sql::Constraint& constraint) {
    constraintName(constraint.name);
    std::visit([&](const auto& kind) { part(kind); }, constraint.kind);
    others(constraint.others);
}

void DefinitionWriter::body(const sql::CreateTable& create) {
    text_ += "CREATE TABLE ";
    writer_.source(create.table);
    const char* before = " (";
    for (const sql::ColumnDefinition& each : create.columns) {
        text_ += std::exchange(before, ", ");
        column(each);
    }
    for (const sql::Constraint& each : create.constraints) {
        text_ += std::exchange(before, ", ");
        write(each);
    }
    text_ += ')';
    others(create.others);
}

void DefinitionWriter::body(const sql::CreateIndex& create) {
    text_ += create.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
    writer_.source(sql::TableName{create.database, create.name});
    text_ += " ON ";
    writer_.name(create.table);
    const char* before = " (";
    for (const sql::OrderTerm& term : create.terms) {
        text_ += std::exchange(before, ", ");
        writer_.write(term.value);
        if (term.descending) text_ += " DESC";
    }
    text_ += ")" + notesComment(create.notes);
    if (!create.where) return;
    text_ += " WHERE ";
    formula(*create.where);
}

void DefinitionWriter::body(const sql::CreateTrigger& create) {
    text_ += "CREATE TRIGGER ";
    writer_.source(sql::TableName{sql::Database::Temporary, create.name});
    text_ += " AFTER ";
    text_ += textOf(create.event);
    text_ += " ON ";
    writer_.source(create.table);
    text_ += " WHEN ";
    writer_.write(create.when);
    text_ += " BEGIN ";
    for (const sql::Write& step : create.steps) {
        writer_.write(step);
        text_ += "; ";
    }
    text_ += "END";
}

void DefinitionWriter::body(const sql::Drop& drop) {
    text_ += "DROP ";
    text_ += textOf(drop.kind);
    if (drop.ifExists) text_ += "IF EXISTS ";
    writer_.source(sql::TableName{drop.database, drop.name});
}

void DefinitionWriter::change(const sql::AddColumn& added) {
    text_ += "ADD COLUMN ";
    column(added.column);
}

void DefinitionWriter::change(const sql::DropColumn& dropped) {
    text_ += "DROP COLUMN ";
    writer_.name(dropped.column);
}

void DefinitionWriter::change(const sql::RenameTable& renamed) {
    text_ += "RENAME TO ";
    writer_.name(renamed.name);
}

void DefinitionWriter::change(const sql::RenameColumn& renamed) {
    text_ += "RENAME COLUMN ";
    writer_.name(renamed.column);
    text_ += " TO ";
    writer_.name(renamed.name);
}

void DefinitionWriter::body(const sql::Reindex& reindex) {
    text_ += "REINDEX ";
    writer_.source(reindex.table);
}

void DefinitionWriter::body(const sql::AlterTable& alter) {
    text_ += "ALTER TABLE ";
    writer_.source(alter.table);
    text_ += ' ';
    std::visit([&](const auto& kind) { change(kind); }, alter.change);
}

void DefinitionWriter::write(const sql::SchemaChange& change) {
    std::visit([&](const auto& kind) { body(kind); }, change);
}

std::string sqlOf(const sql::SchemaChange& change) {
    std::string text;
    DefinitionWriter(text).write(change);
    return text;
}

std::string sqlOf(const sql::Constraint& constraint) {
    std::string text;
    DefinitionWriter(text).write(constraint);
    return text;
}

}  // namespace kap::engine
