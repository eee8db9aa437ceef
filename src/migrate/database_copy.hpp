#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "migrate/table_copy.hpp"

namespace kap::migrate {

// Who is told how a copy goes on.
struct CopyListener {
    // A sentence for whatever is left behind.
    std::function<void(const std::string& left)> tell;
    std::function<void(const std::string& table)> begins;
    // The rows of the table that have arrived, and those there are.
    std::function<void(std::int64_t done, std::int64_t all)> progress;
    std::function<void(const std::string& table, const CopyOutcome& outcome)> ends;
};

// Copies a database to another one, whatever kinds they are of, or some of its tables: the tables
// with their rows, then what ties them together, then what is kept as text. A copy that was
// interrupted goes on where it stopped.
class DatabaseCopy {
public:
    // `tables`: only these, those of other schemas as "schema.name"; empty: all of them, and what
    // belongs to no table. Raises AutomationError when the source does not have one of them.
    DatabaseCopy(ado::Connection& from, const std::vector<std::string>& tables);

    // Whether every table has arrived as it was; where one has not, what ties them together is not
    // made, and another run goes on. Raises what TableCopy raises.
    [[nodiscard]] bool run(ado::Connection& to, const CopyListener& listener);

private:
    [[nodiscard]] bool copyTables(TableCopy& copy, const std::vector<ado::ObjectName>& tables,
                                  const CopyListener& listener);
    void makeSchemas(ado::Connection& to, const std::vector<std::string>& more);

    ado::Connection& from_;
    bool all_;
    std::vector<ado::ObjectName> tables_;
};

}  // namespace kap::migrate
