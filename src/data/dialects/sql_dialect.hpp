#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/data/enumerations.hpp>

#include "data/dialects/default_value.hpp"
#include "data/dialects/object_name.hpp"

namespace kap::ado {

// What a column is, whichever database has it.
struct ColumnDefinition {
    std::string name;
    DataTypeEnum type = DataTypeEnum::adEmpty;
    std::int32_t size = 0;
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    bool nullable = true;
    bool identity = false;
    std::int64_t seed = 1;  // of an identity
    std::int64_t increment = 1;
    bool rowVersion = false;
    bool isLong = false;
    std::string declared;  // the type in the words of Transact-SQL, where the source speaks it
    std::string computed;  // what the database computes it from, in its words; empty: it does not
    bool persisted = false;
    DefaultValue defaultValue;
    std::string defaultName;  // of its constraint, where there is one
    std::string defaultText;  // in the source's words

    // Whether a copy writes values into it.
    [[nodiscard]] bool isWritten() const { return !rowVersion && computed.empty(); }
};

// The SQL of a kind of database, for those who describe and make tables with it: names, types and
// constants, and where its catalogue tells what. The one place that knows; a session gives its
// database's (TableSession::dialect), whichever driver reaches it.
class SqlDialect {
public:
    SqlDialect() = default;
    SqlDialect(const SqlDialect&) = delete;
    SqlDialect& operator=(const SqlDialect&) = delete;
    virtual ~SqlDialect() = default;

    // Whether what is written in the other dialect can be run here: expressions and programs.
    [[nodiscard]] virtual bool reads(const SqlDialect& other) const = 0;

    [[nodiscard]] virtual std::string quoted(std::string_view name) const = 0;
    // With its schema in front where it has one.
    [[nodiscard]] std::string qualified(const ObjectName& object) const;
    // The name that a table or column gets, so that programs find it as they write it.
    [[nodiscard]] virtual std::string nameFor(std::string_view name) const = 0;
    [[nodiscard]] ObjectName nameFor(const ObjectName& object) const;
    // With what makes it an identity.
    [[nodiscard]] virtual std::string typeFor(const ColumnDefinition& column) const = 0;
    // What a column that is announced so has to become elsewhere, for nothing to be lost.
    [[nodiscard]] virtual DataTypeEnum keptAs(DataTypeEnum announced) const { return announced; }
    // The column in a query for its values: as it is, or as text where the library would cut them.
    [[nodiscard]] virtual std::string selected(const ColumnDefinition& column) const;
    // A parameter that is stored in the column, as a statement writes it.
    [[nodiscard]] virtual std::string mark(const ColumnDefinition& /*column*/) const { return "?"; }
    // A value's plain text (see appendCellText) as a literal.
    [[nodiscard]] virtual std::string literal(const ColumnDefinition& column,
                                              const std::string& text) const = 0;
    // A column's default as an expression that stands in the table's definition; empty: it has
    // none, or none that every database can say.
    [[nodiscard]] std::string defaultFor(const ColumnDefinition& column) const;

    // Queries that list what the database has. A table's columns in their order: name, type in the
    // words of Transact-SQL or Null, identity, what it is computed from, persisted, name and
    // definition of its default, seed, increment.
    [[nodiscard]] virtual std::string columns(const ObjectName& table) const = 0;
    // The parts of its keys and indexes in order: name, kind (PK, UQ, IX), unique, of which rows
    // it is, column (Null: an expression), descending, whether it is only carried along.
    [[nodiscard]] virtual std::string indexes(const ObjectName& table) const = 0;
    // The foreign keys, a row for each of their columns in order: name, table, column, referenced
    // table and column, actions on delete and on update, switched off, schemas of the table and of
    // the referenced one (Null: the connection's own).
    [[nodiscard]] virtual std::string foreignKeys() const = 0;
    // What is written in its dialect: kind, name, text, table, switched off, schemas of itself and
    // of its table (Null: the connection's own).
    [[nodiscard]] virtual std::string programs() const = 0;
    // The tables in other schemas than the connection's own: schema, name.
    [[nodiscard]] virtual std::string otherTables() const = 0;
    // The last identity that the table has given out, Null when it has none.
    [[nodiscard]] virtual std::string lastIdentity(const ObjectName& table,
                                                   const std::string& column) const = 0;

    // Makes a schema where there is none of that name.
    [[nodiscard]] virtual std::string creatingSchema(const std::string& schema) const = 0;
    // What must be there before a table with a row version can be made; empty: nothing.
    [[nodiscard]] virtual std::string beforeRowVersions() const { return {}; }
    // Scripts that prepare a new table behind its creation, and that stand around its rows when it
    // has an identity column; empty: none are needed.
    [[nodiscard]] virtual std::string afterCreation(const ObjectName& table,
                                                    const std::string& rowVersion) const = 0;
    [[nodiscard]] virtual std::string beforeRows(const ObjectName& table) const = 0;
    [[nodiscard]] virtual std::string afterRows(const ObjectName& table) const = 0;
    // Behind the last row: the identities go on behind `last`, and behind those that are there.
    // `any`: whether there are rows.
    [[nodiscard]] virtual std::string afterLastRow(const ObjectName& table,
                                                   const ColumnDefinition& identity,
                                                   std::int64_t last, bool any) const = 0;

    // Of a dialect that reads another one (`reads`), for what comes along as it was written there.
    // Behind the name of a table to which a constraint is added that its rows need not fulfil.
    [[nodiscard]] virtual std::string unchecked() const { return {}; }
    [[nodiscard]] virtual std::string switchingOffConstraint(const ObjectName& table,
                                                             std::string_view name) const;
    [[nodiscard]] virtual std::string switchingOffTrigger(const ObjectName& table,
                                                          std::string_view name) const;
    // The column's default in the words of the other database, under its name where it has one.
    [[nodiscard]] virtual std::string addingDefault(const ObjectName& table,
                                                    const ColumnDefinition& column) const;

protected:
    // What stands for the present moment and for a new identifier.
    [[nodiscard]] virtual std::string now() const = 0;
    [[nodiscard]] virtual std::string newIdentifier() const = 0;
};

}  // namespace kap::ado
