#pragma once

#include <string>

#include "engine/sqlite/definition_tree.hpp"
#include "engine/sqlite/sql_writer.hpp"

namespace kap::engine {

// Writes what changes the schema as SQLite reads it: the only place that knows how, and where the
// comments stand that keep what SQLite has no word for (definition_notes.hpp).
class DefinitionWriter {
public:
    // What is written goes behind what `text` holds.
    explicit DefinitionWriter(std::string& text) : text_(text), writer_(text) {}

    void write(const sql::SchemaChange& change);
    void write(const sql::Constraint& constraint);

private:
    void body(const sql::CreateTable& create);
    void body(const sql::CreateIndex& create);
    void body(const sql::CreateTrigger& create);
    void body(const sql::Drop& drop);
    void body(const sql::AlterTable& alter);
    void body(const sql::Reindex& reindex);

    void change(const sql::AddColumn& added);
    void change(const sql::DropColumn& dropped);
    void change(const sql::RenameTable& renamed);
    void change(const sql::RenameColumn& renamed);

    void part(const sql::KeyConstraint& key);
    void part(const sql::CheckConstraint& check);
    void part(const sql::ForeignKey& key);
    void part(const sql::OtherConstraint& /*other*/) {}

    void column(const sql::ColumnDefinition& column);
    // What another program has written, behind a blank where something stands before it.
    void others(const std::string& words);
    void formula(const sql::Formula& formula);
    void constraintName(const std::string& name);

    std::string& text_;
    SqlWriter writer_;
};

// "NO ACTION", "CASCADE" and so on.
[[nodiscard]] const char* textOf(tsql::ReferenceAction action);
// A change of the schema as SQLite reads it.
[[nodiscard]] std::string sqlOf(const sql::SchemaChange& change);
// A constraint as the definition of its table holds it.
[[nodiscard]] std::string sqlOf(const sql::Constraint& constraint);

}  // namespace kap::engine
