#pragma once

#include <deque>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <sqlite3.h>

#include "engine/binder/constants.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/plan/statement_plan.hpp"
#include "engine/values/error_slot.hpp"

namespace kap::engine::testing {

// A database in memory that runs what the translator writes, with counters of its own.
class TranslatedDatabase {
public:
    TranslatedDatabase();
    ~TranslatedDatabase();
    TranslatedDatabase(const TranslatedDatabase&) = delete;
    TranslatedDatabase& operator=(const TranslatedDatabase&) = delete;

    // Runs a script and gives the rows of its last SELECT: cells separated by '|', rows by line
    // ends, each value as its type shows it. Throws tsql::ServerError.
    std::string run(const std::string& script);

    // The error of a script as "number: text".
    std::string error(const std::string& script);

    // The columns of a query as "name type null|notnull", separated by ", ".
    std::string columns(const std::string& query);

    // The plan of one statement, and the part of it that only its kind has.
    StatementPlan plan(const std::string& statement, Constants constants = Constants::InText);
    template <typename Plan>
    Plan planOf(const std::string& statement) {
        return std::get<Plan>(plan(statement).kind);
    }

private:
    class Tables;

    std::string execute(const StatementPlan& plan);
    std::string rows(sqlite3_stmt* statement, const std::vector<ResultColumn>& columns);
    [[noreturn]] void fail();

    ErrorSlot slot_;
    sqlite3* connection_ = nullptr;
    std::unique_ptr<Tables> tables_;
    std::int64_t rowVersion_ = 0;
    std::int64_t identity_ = 0;
};

}  // namespace kap::engine::testing
