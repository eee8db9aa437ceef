#pragma once

#include <string>
#include <vector>

#include "ado/driver.hpp"
#include "ado/odbc/parameter_binding.hpp"
#include "ado/odbc/result_columns.hpp"

namespace kap::ado::odbc {

// A statement with the values of its parameters.
struct Command {
    std::string text;
    std::vector<const ColumnValue*> values;
};

// Inserts, updates, deletes or reads single rows for recordsets, by SQL with parameters.
//
// A row that is located by the table's key is written in one statement; without a key it is first
// counted how many rows would be. What the server has set is read back in the same round trip where
// it can answer with rows, or takes several statements at once.
class RowChanger {
public:
    RowChanger(std::shared_ptr<Link> link, TableCatalogue& catalogue, BaseTables& tables)
        : link_(std::move(link)), catalogue_(catalogue), tables_(tables) {}

    // The tables may have changed.
    void forget() { queries_.forget(); }

    [[nodiscard]] ChangeOutcome apply(const RowChange& change, std::chrono::seconds timeout);

private:
    // The table that a change goes to.
    struct Target {
        std::string name;  // quoted
        const TableFacts& facts;
    };

    [[nodiscard]] Target targetOf(const RowChange& change, std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome write(const RowChange& change, const Target& target,
                                      std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome read(const RowChange& change, const Target& target,
                                     std::chrono::seconds timeout);
    void requireOneRow(const RowChange& change, const Target& target, std::chrono::seconds timeout);
    [[nodiscard]] std::vector<Result> run(const Command& command, std::chrono::seconds timeout);

    [[nodiscard]] Command writing(const RowChange& change, const Target& target) const;
    [[nodiscard]] std::optional<Command> readingBack(const RowChange& change,
                                                     const Target& target) const;
    [[nodiscard]] std::string columnList(const std::vector<std::string>& names) const;
    [[nodiscard]] std::string mark(const Target& target, const std::string& column) const;
    void addValues(const RowChange& change, const Target& target, Command& command) const;
    void addCriteria(const std::vector<const ColumnValue*>& criteria, const Target& target,
                     Command& command) const;

    std::shared_ptr<Link> link_;
    TableCatalogue& catalogue_;
    BaseTables& tables_;
    KnownQueries queries_;
};

}  // namespace kap::ado::odbc
