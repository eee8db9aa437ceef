#pragma once

#include <memory>
#include <vector>

#include "drivers/odbc/pending_rows.hpp"
#include "drivers/odbc/result_columns.hpp"

namespace kap::ado::odbc {

// Takes what a statement that has been run answers, result by result to the end: errors in the
// middle of a script are gathered, and what comes behind them is taken all the same.
class ResultReader {
public:
    // `mayStream`: nothing comes behind the first result, so that its rows may be left to be
    // fetched when they are needed.
    ResultReader(const std::shared_ptr<OdbcConnection>& connection, ResultColumns& columns,
                 bool mayStream, std::chrono::seconds timeout)
        : connection_(connection), columns_(columns), mayStream_(mayStream), timeout_(timeout) {}

    // `code` is what running the statement gave. The statement is taken over when rows are left in
    // it.
    void readAll(SQLRETURN code, Handle& statement, KnownQuery& query,
                 std::vector<Result>& results);

    // Errors and informations, in the server's order.
    [[nodiscard]] std::vector<ServerMessage>& messages() noexcept { return messages_; }
    [[nodiscard]] bool failed() const;

private:
    enum class Next { Result, End };
    void note(SQLRETURN code, const Handle& statement);
    void take(Handle& statement, KnownQuery& query, std::vector<Result>& results);
    static void takeCount(const Handle& statement, std::vector<Result>& results);
    void takeRows(Handle& statement, Result& result);
    [[nodiscard]] Next advance(const Handle& statement);

    std::shared_ptr<OdbcConnection> connection_;
    ResultColumns& columns_;
    bool mayStream_;
    std::chrono::seconds timeout_;
    bool first_ = true;  // no result has been taken yet
    std::vector<ServerMessage> messages_;
};

}  // namespace kap::ado::odbc
