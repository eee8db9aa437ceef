#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "data/row_statement.hpp"
#include "drivers/odbc/server_dialect.hpp"
#include "drivers/odbc/table_facts.hpp"

namespace kap::ado::odbc {

// A text, and which of a change's values its parameters are given.
struct RowText {
    struct Parameter {
        enum class Of : std::uint8_t { Values, Criteria };
        Of of = Of::Values;
        std::size_t place = 0;
    };
    std::string text;
    std::vector<Parameter> parameters = {};
};

// The statements by which rows are changed that a plan changes alike, as the server's dialect wants
// them.
class DmlWriter {
public:
    // The rows are looked for where the criteria that are marked hold nothing. `table` is quoted.
    DmlWriter(const ServerDialect& dialect, const RowPlan& plan, const TableFacts& facts,
              std::string table, const std::vector<bool>& nulls);

    // The row as the criteria find it.
    [[nodiscard]] RowText reading() const;
    // How many rows the criteria find.
    [[nodiscard]] RowText counting() const;
    // Writes the row: alone; answering with it; or with queries behind it that tell how many there
    // were and, where it can be told, the row. See ServerDialect.
    [[nodiscard]] RowText writing() const;
    [[nodiscard]] RowText returning() const;
    [[nodiscard]] RowText selecting(bool transaction) const;
    // Reads the row that has just been written; nothing when it cannot be told, or nothing of it is
    // wanted.
    [[nodiscard]] std::optional<RowText> readingBack() const;

    // Whether the criteria name the table's whole key: then they fit one row at most.
    [[nodiscard]] static bool namesKey(const RowPlan& plan, const TableFacts& facts);

private:
    using Parameter = RowText::Parameter;

    [[nodiscard]] std::vector<std::string> quoted(const std::vector<RowColumn>& columns) const;
    [[nodiscard]] RowStatement select() const;
    [[nodiscard]] RowStatement statement(std::vector<Parameter>& parameters) const;
    // The criteria of the statement, and of the plan's key where a written row is read.
    [[nodiscard]] std::string criteria(std::vector<Parameter>& parameters) const;
    void addCriterion(const RowColumn& column, const Parameter& parameter, std::string& text,
                      std::vector<Parameter>& parameters) const;

    const ServerDialect& dialect_;
    const RowPlan& plan_;
    const TableFacts& facts_;
    std::string table_;
    const std::vector<bool>& nulls_;
};

}  // namespace kap::ado::odbc
