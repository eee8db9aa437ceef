#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

namespace kap::cli {

// The values of one row, as SQL literals in the order of the columns.
class SqlRow {
public:
    SqlRow& number(std::int64_t value);
    // `value` / 10^`decimals`.
    SqlRow& amount(std::int64_t value, std::size_t decimals);
    SqlRow& text(std::string_view value);
    SqlRow& date(int year, int month, int day);
    SqlRow& null();

    [[nodiscard]] const std::string& values() const noexcept { return values_; }

private:
    void add(std::string_view literal);

    std::string values_;
};

// Fills one table with INSERT statements of many rows each. Call `finish` after the last row.
class InsertScript {
public:
    // `target` is the table and its columns: "Clienti (Codice, RagioneSociale)".
    InsertScript(ado::Connection& connection, std::string target);

    void add(const SqlRow& row);
    void finish();

private:
    ado::Connection& connection_;
    std::string target_;
    std::string rows_;
    std::size_t waiting_ = 0;
};

}  // namespace kap::cli
