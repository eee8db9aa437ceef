#pragma once

#include <deque>
#include <memory>
#include <string>

#include <sqlite3.h>

#include "engine/binder/constants.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/plan/translation.hpp"
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

    // The translation of one statement.
    Translation translation(const std::string& statement, Constants constants = Constants::InText);

private:
    class Tables;

    std::string execute(const Translation& translation);
    std::string rows(sqlite3_stmt* statement, const Translation& translation);
    [[noreturn]] void fail();

    ErrorSlot slot_;
    sqlite3* connection_ = nullptr;
    std::unique_ptr<Tables> tables_;
    std::int64_t rowVersion_ = 0;
    std::int64_t identity_ = 0;
};

}  // namespace kap::engine::testing
