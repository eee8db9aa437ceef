#pragma once

#include <chrono>
#include <optional>

#include "data/row_batch.hpp"
#include "drivers/odbc/json_insertion.hpp"
#include "drivers/odbc/row_insertion.hpp"

namespace kap::ado::odbc {

// Appends rows to tables in the way that is the fastest with the server: many by one text that the
// server takes apart, else many by parameters, else by requests of their own.
class BatchInsertion {
public:
    explicit BatchInsertion(OdbcConnection& connection) : connection_(connection) {}

    // What cannot go otherwise goes by requests of the session, which has the connection.
    void append(Session& session, const RowBatch& batch, std::chrono::seconds timeout);
    // The tables may have changed.
    void forget();

private:
    void appendByTexts(Session& session, RowBatch& rest, std::chrono::seconds timeout);
    void appendByParameters(Session& session, RowBatch rest, std::chrono::seconds timeout);

    OdbcConnection& connection_;
    std::optional<JsonInsertion::Reading> reading_;  // unset: nobody has asked
    // Of the table that was last appended to.
    std::optional<JsonInsertion> texts_;
    std::optional<RowInsertion> parameters_;
};

}  // namespace kap::ado::odbc
