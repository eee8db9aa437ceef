#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "data/row_batch.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// A prepared statement that inserts many rows by one parameter: a text of JSON, from which the
// server takes them as a table. Servers that speak Transact-SQL need far longer for a statement
// with a parameter a value.
class JsonInsertion {
public:
    // What a server makes of such texts.
    enum class Reading : std::uint8_t {
        None,   // it has no tables of them
        Plain,  // it leaves a sign as it is escaped
        Whole,
    };
    // Asks the server.
    [[nodiscard]] static Reading readingOf(OdbcConnection& connection,
                                           std::chrono::seconds timeout);

    // Whether every column has a type whose values can be said so.
    [[nodiscard]] static bool fits(const RowBatch& batch);

    // Prepares it for rows like these. Raises DriverError.
    JsonInsertion(OdbcConnection& connection, Reading reading, const RowBatch& batch,
                  std::chrono::seconds timeout);

    [[nodiscard]] bool isFor(const RowBatch& batch) const;

    struct Taken {
        std::size_t rows = 0;             // of the batch, from its first on
        std::vector<std::size_t> others;  // those among them that cannot be said so
    };
    // Makes the text of as many rows as go into a statement, one at least.
    [[nodiscard]] Taken take(const RowBatch& batch);
    // Inserts them, without the others.
    void run(std::chrono::seconds timeout);

private:
    [[nodiscard]] bool appendRow(const RowBatch& batch, std::size_t row);
    [[nodiscard]] bool appendValue(const RowBatch::Column& column, std::size_t row);
    [[nodiscard]] bool appendQuoted(const std::string& text);

    OdbcConnection& connection_;
    Reading reading_;
    std::string statementText_;
    Handle statement_;
    std::string rows_;  // the text that is being made
    std::string value_;
    std::vector<char16_t> units_;  // the parameter
    SQLLEN length_ = 0;
};

}  // namespace kap::ado::odbc
