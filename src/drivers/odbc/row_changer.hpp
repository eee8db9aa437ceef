#pragma once

#include <string>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/parameter_binding.hpp"
#include "drivers/odbc/prepared_statements.hpp"
#include "drivers/odbc/result_columns.hpp"

namespace kap::ado::odbc {

// A statement with the values of its parameters.
struct ParameterizedText {
    std::string text;
    std::vector<const ColumnValue*> values;
};

// Inserts, updates, deletes or reads single rows for recordsets, by SQL with parameters.
//
// How many rows a statement has written, and how the row stands then, come as data wherever the
// server can say them, in the same round trip and the same transaction: what drivers count is
// falsified by triggers, and what is read later may be another client's. A row without a key is
// written in a transaction that is undone when it was not alone.
class OdbcRowChanger {
public:
    OdbcRowChanger(std::shared_ptr<OdbcConnection> connection, TableCatalogue& catalogue,
                   BaseTables& tables)
        : connection_(std::move(connection)),
          catalogue_(catalogue),
          tables_(tables),
          prepared_(*connection_) {}

    // The tables may have changed.
    void forget() {
        queries_.forget();
        prepared_.forget();
    }

    [[nodiscard]] ChangeOutcome apply(const RowChange& change, std::chrono::seconds timeout);

private:
    // The table that a change goes to.
    struct Target {
        TableName table;
        std::string name;  // quoted
        const TableFacts& facts;
    };
    // A statement as the dialect wants it, and the values of its parameters.
    struct Writing {
        RowStatement row;
        std::vector<const ColumnValue*> values;
    };

    [[nodiscard]] Target targetOf(const RowChange& change, std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome read(const RowChange& change, const Target& target,
                                     std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome write(const RowChange& change, const Target& target,
                                      std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome answered(ServerDialect::Answer answer, const RowChange& change,
                                         const Target& target, std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome returned(const RowChange& change, const Target& target,
                                         std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome selected(const RowChange& change, const Target& target,
                                         std::chrono::seconds timeout);
    [[nodiscard]] ChangeOutcome counted(const RowChange& change, const Target& target,
                                        std::chrono::seconds timeout);
    void requireOneRow(const RowChange& change, const Target& target, std::chrono::seconds timeout);
    [[nodiscard]] std::vector<Result> run(const ParameterizedText& query,
                                          std::chrono::seconds timeout);
    void undo(std::chrono::seconds timeout);

    [[nodiscard]] Writing writing(const RowChange& change, const Target& target) const;
    [[nodiscard]] std::optional<ParameterizedText> readingBack(const RowChange& change,
                                                               const Target& target) const;
    [[nodiscard]] std::vector<std::string> quoted(const std::vector<std::string>& names) const;
    [[nodiscard]] ParameterizedText selectOf(const std::vector<std::string>& names,
                                             const Target& target) const;
    // Appends the criteria to a text, and their values.
    void addCriteria(const std::vector<const ColumnValue*>& criteria, const Target& target,
                     std::string& text, std::vector<const ColumnValue*>& values) const;
    [[nodiscard]] const ServerDialect& dialect() const { return connection_->dialect(); }

    std::shared_ptr<OdbcConnection> connection_;
    TableCatalogue& catalogue_;
    BaseTables& tables_;
    KnownQueries queries_;
    PreparedStatements prepared_;
};

}  // namespace kap::ado::odbc
