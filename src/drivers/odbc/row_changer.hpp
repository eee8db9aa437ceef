#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/lru_cache.hpp"
#include "data/driver.hpp"
#include "drivers/odbc/dml_writer.hpp"
#include "drivers/odbc/parameter_binding.hpp"
#include "drivers/odbc/prepared_statements.hpp"
#include "drivers/odbc/result_columns.hpp"

namespace kap::ado::odbc {

// Inserts, updates, deletes or reads single rows for recordsets, by SQL with parameters, whose
// texts are kept.
//
// How many rows a statement has written, and how the row stands then, come as data wherever the
// server can say them, in the same round trip and the same transaction: what drivers count is
// falsified by triggers, and what is read later may be another client's. A row without a key is
// written in a transaction that is undone when it was not alone.
class OdbcRowChanger {
public:
    OdbcRowChanger(std::shared_ptr<OdbcConnection> connection, TableCatalogue& catalogue,
                   BaseTables& tables);

    // The tables may have changed.
    void forget();

    [[nodiscard]] ChangeOutcome apply(const RowChange& change, std::chrono::seconds timeout);

private:
    // What a text is for; see DmlWriter.
    enum class Use : std::uint8_t {
        Reading,
        Counting,
        Writing,
        Returning,
        Selecting,
        SelectingWhole,
        ReadingBack,
    };
    struct KeptText {
        Use use = Use::Reading;
        std::vector<bool> nulls;  // the criteria that hold nothing
        std::optional<RowText> text;
    };

    // A change, and what is known of the table that it goes to.
    struct Task {
        const RowChange& change;
        TableName table;
        const TableFacts& facts;
        std::chrono::seconds timeout;
    };

    [[nodiscard]] ChangeOutcome read(const Task& task);
    [[nodiscard]] ChangeOutcome write(const Task& task);
    [[nodiscard]] ChangeOutcome answered(ServerDialect::Answer answer, const Task& task);
    [[nodiscard]] ChangeOutcome returned(const Task& task);
    [[nodiscard]] ChangeOutcome selected(const Task& task);
    [[nodiscard]] ChangeOutcome counted(const Task& task);
    void requireOneRow(const Task& task);
    [[nodiscard]] std::vector<Result> run(const RowText& row, const Task& task);
    void undo(const Task& task);

    // Holds until the next one is asked for.
    [[nodiscard]] const RowText& textFor(Use use, const Task& task);
    [[nodiscard]] const std::optional<RowText>& keptText(Use use, const Task& task);
    [[nodiscard]] static std::optional<RowText> made(Use use, const DmlWriter& writer);
    [[nodiscard]] TableName tableOf(const RowPlan& plan) const;
    [[nodiscard]] std::string quoted(const TableName& table) const;
    [[nodiscard]] const ServerDialect& dialect() const { return connection_->dialect(); }

    std::shared_ptr<OdbcConnection> connection_;
    TableCatalogue& catalogue_;
    BaseTables& tables_;
    KnownQueries queries_;
    PreparedStatements prepared_;
    LruCache<std::vector<KeptText>> texts_;  // by the plans' keys
};

}  // namespace kap::ado::odbc
