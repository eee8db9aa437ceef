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
    ResultReader(const std::shared_ptr<OdbcConnection>& connection, ResultColumns& columns,
                 std::chrono::seconds timeout)
        : connection_(connection), columns_(columns), timeout_(timeout) {}

    // `code` is what running the statement gave.
    void readAll(SQLRETURN code, const Handle& statement, KnownQuery& query,
                 std::vector<Result>& results);
    // The same for a statement behind whose first result nothing comes, so that its rows may be
    // left to be fetched when they are needed: then the statement is taken over.
    void readFirst(SQLRETURN code, std::shared_ptr<BoundStatement> statement, KnownQuery& query,
                   std::vector<Result>& results);
    // The same up to the first result with rows, which may be left to be fetched while the
    // statement stands still. Whether anything may come behind it.
    [[nodiscard]] bool readUpToRows(SQLRETURN code, std::shared_ptr<BoundStatement> statement,
                                    KnownQuery& query, std::vector<Result>& results);
    // The next result of a statement that stands still behind one, in the same way. What has failed
    // in front of it is among the messages.
    [[nodiscard]] bool readNext(std::shared_ptr<BoundStatement> statement, KnownQuery& query,
                                std::vector<Result>& results);
    // All that come behind the one that it stands still at.
    void readRest(BoundStatement& statement, KnownQuery& query, std::vector<Result>& results);

    // The rows that have been left to be fetched.
    [[nodiscard]] const std::weak_ptr<PendingRows>& rowsLeft() const noexcept { return rowsLeft_; }

    // Errors and informations, in the server's order.
    [[nodiscard]] std::vector<ServerMessage>& messages() noexcept { return messages_; }
    [[nodiscard]] bool failed() const;

private:
    enum class Next { Result, End };
    void begin(SQLRETURN code, const Handle& statement, KnownQuery& query,
               std::vector<Result>& results);
    [[nodiscard]] bool goesOn() const;
    void note(SQLRETURN code, const Handle& statement);
    void take(const Handle& statement, KnownQuery& query, std::vector<Result>& results);
    static void takeCount(const Handle& statement, std::vector<Result>& results);
    void takeRows(const Handle& statement, Result& result);
    void takeFirstRows(Result& result);
    [[nodiscard]] Next advance(const Handle& statement);

    std::shared_ptr<OdbcConnection> connection_;
    ResultColumns& columns_;
    std::chrono::seconds timeout_;
    bool first_ = true;  // no result has been taken yet
    // The statement whose rows may be left in it; unset: none.
    std::shared_ptr<BoundStatement> streamed_;
    std::weak_ptr<PendingRows> rowsLeft_;
    bool left_ = false;  // the rows of a result have been left in it
    std::vector<ServerMessage> messages_;
};

}  // namespace kap::ado::odbc
