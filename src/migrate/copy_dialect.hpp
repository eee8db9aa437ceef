#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/field.hpp>

#include "migrate/default_value.hpp"

namespace kap::migrate {

// What a column is, whichever database has it.
struct CopiedColumn {
    std::string name;
    ado::DataTypeEnum type = ado::DataTypeEnum::adEmpty;
    std::int32_t size = 0;
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    bool nullable = true;
    bool identity = false;
    bool rowVersion = false;
    bool isLong = false;
    DefaultValue defaultValue;
};

// How databases that a copy goes to want to be written to: the one place that knows.
class CopyDialect {
public:
    virtual ~CopyDialect() = default;
    // The dialect of an open connection's database, told by the types that it has.
    [[nodiscard]] static const CopyDialect& of(ado::Connection& connection);

    [[nodiscard]] virtual std::string quoted(std::string_view name) const = 0;
    // The name that a table or column gets, so that programs find it as they write it.
    [[nodiscard]] virtual std::string nameFor(std::string_view name) const = 0;
    [[nodiscard]] virtual std::string typeFor(const CopiedColumn& column) const = 0;
    // A value's plain text (see cellText) as a literal.
    [[nodiscard]] virtual std::string literal(const CopiedColumn& column,
                                              const std::string& text) const = 0;
    // A column's default as an expression; empty: it has none, or none that can be said here.
    [[nodiscard]] std::string defaultFor(const CopiedColumn& column) const;

    // Queries that list what the database has: its foreign keys, a row for each of their columns
    // in order (name, table, column, referenced table, referenced column or Null, actions on
    // delete and on update); what is written in its dialect (kind, name); indexes of another kind
    // than of columns of all rows (name).
    [[nodiscard]] virtual std::string foreignKeys() const = 0;
    [[nodiscard]] virtual std::string programs() const = 0;
    [[nodiscard]] virtual std::string specialIndexes() const = 0;

    // Scripts that prepare a new table behind its creation, and that stand around its rows when it
    // has an identity column; empty: none are needed.
    [[nodiscard]] virtual std::string afterCreation(const std::string& table,
                                                    const std::string& rowVersion) const = 0;
    [[nodiscard]] virtual std::string beforeRows(const std::string& table) const = 0;
    [[nodiscard]] virtual std::string afterRows(const std::string& table) const = 0;
    // Behind the last row: the next identity is one that is free.
    [[nodiscard]] virtual std::string afterLastRow(const std::string& table,
                                                   const std::string& identity) const = 0;

protected:
    // What stands for the present moment and for a new identifier.
    [[nodiscard]] virtual std::string now() const = 0;
    [[nodiscard]] virtual std::string newIdentifier() const = 0;
};

}  // namespace kap::migrate
