#include "drivers/odbc/result_reader.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {
namespace {

// The statement has no result to go on from: how drivers say that a failure was the end.
bool isEndOfResults(const std::vector<ServerMessage>& messages) {
    return std::ranges::any_of(messages, [](const ServerMessage& message) {
        return message.state == "HY010" || message.state == "24000";
    });
}

// The query that stands in front of a text (see ServerDialect::noRows).
bool isOfNoRows(const Handle& statement) {
    constexpr SQLSMALLINT kRoom = 32;
    std::array<char16_t, kRoom> name{};
    SQLSMALLINT length = 0;
    SQLSMALLINT type = 0;
    SQLULEN size = 0;
    SQLSMALLINT scale = 0;
    SQLSMALLINT nullable = 0;
    const SQLRETURN code = SQLDescribeColW(statement.get(), 1, wide(name.data()), kRoom, &length,
                                           &type, &size, &scale, &nullable);
    return SQL_SUCCEEDED(code) &&
           std::ranges::equal(std::u16string_view(name.data()), ServerDialect::kNoRows);
}

}  // namespace

bool ResultReader::failed() const {
    return std::ranges::any_of(messages_, &ServerMessage::isError);
}

void ResultReader::readAll(SQLRETURN code, const Handle& statement, KnownQuery& query,
                           std::vector<Result>& results) {
    begin(code, statement, query, results);
    while (!left_ && goesOn() && advance(statement) == Next::Result) {
        take(statement, query, results);
    }
}

void ResultReader::begin(SQLRETURN code, const Handle& statement, KnownQuery& query,
                         std::vector<Result>& results) {
    note(code, statement);
    if (code == SQL_NO_DATA) {
        takeCount(statement, results);  // a write that found no row, with some drivers
    } else if (SQL_SUCCEEDED(code)) {
        connection_->requireNotCancelled();
        take(statement, query, results);
    }
}

bool ResultReader::goesOn() const {
    return !connection_->isLost() && !connection_->cancelling().isWanted();
}

void ResultReader::readFirst(SQLRETURN code, std::shared_ptr<BoundStatement> statement,
                             KnownQuery& query, std::vector<Result>& results) {
    streamed_ = std::move(statement);
    readAll(code, streamed_->handle(), query, results);
}

bool ResultReader::readUpToRows(SQLRETURN code, std::shared_ptr<BoundStatement> statement,
                                KnownQuery& query, std::vector<Result>& results) {
    const auto hasRows = [](const Result& result) { return !result.columns.empty(); };
    streamed_ = std::move(statement);
    begin(code, streamed_->handle(), query, results);
    while (std::ranges::none_of(results, hasRows)) {
        if (!readNext(streamed_, query, results)) {
            return false;
        }
    }
    return true;
}

bool ResultReader::readNext(std::shared_ptr<BoundStatement> statement, KnownQuery& query,
                            std::vector<Result>& results) {
    streamed_ = std::move(statement);
    streamed_->leaveResult();
    if (!goesOn() || advance(streamed_->handle()) == Next::End) {
        return false;
    }
    take(streamed_->handle(), query, results);
    return true;
}

void ResultReader::readRest(BoundStatement& statement, KnownQuery& query,
                            std::vector<Result>& results) {
    statement.leaveResult();
    while (goesOn() && advance(statement.handle()) == Next::Result) {
        take(statement.handle(), query, results);
    }
}

void ResultReader::note(SQLRETURN code, const Handle& statement) {
    if (code == SQL_SUCCESS || code == SQL_NO_DATA) {
        return;
    }
    std::vector<ServerMessage> told = code == SQL_SUCCESS_WITH_INFO
                                          ? diagnosticsOf(SQL_HANDLE_STMT, statement.get(), false)
                                          : connection_->failure(statement);
    std::ranges::move(told, std::back_inserter(messages_));
}

ResultReader::Next ResultReader::advance(const Handle& statement) {
    for (;;) {
        connection_->progress();
        const SQLRETURN code = SQLMoreResults(statement.get());
        if (code == SQL_NO_DATA) {
            return Next::End;
        }
        if (SQL_SUCCEEDED(code)) {
            connection_->requireNotCancelled();
            note(code, statement);
            return Next::Result;
        }
        std::vector<ServerMessage> told = connection_->failure(statement);
        if (isEndOfResults(told)) {
            return Next::End;
        }
        std::ranges::move(told, std::back_inserter(messages_));
        if (!goesOn()) {
            return Next::End;
        }
    }
}

void ResultReader::take(const Handle& statement, KnownQuery& query, std::vector<Result>& results) {
    SQLSMALLINT count = 0;
    connection_->check(SQLNumResultCols(statement.get(), &count), statement);
    if (count == 0) {
        takeCount(statement, results);
        return;
    }
    if (std::exchange(first_, false) && count == 1 && isOfNoRows(statement)) {
        return;
    }
    Result& result = results.emplace_back();
    result.columns = columns_.describe(statement, static_cast<std::size_t>(count), query, timeout_);
    result.rows.resize(result.columns.size());
    try {
        takeRows(statement, result);
    } catch (const DriverError& error) {
        std::ranges::copy(error.messages(), std::back_inserter(messages_));
    }
}

// What creates or drops something has no count.
void ResultReader::takeCount(const Handle& statement, std::vector<Result>& results) {
    SQLLEN rows = -1;
    if (SQL_SUCCEEDED(SQLRowCount(statement.get(), &rows)) && rows >= 0) {
        results.emplace_back().rowsAffected = rows;
    }
}

void ResultReader::takeRows(const Handle& statement, Result& result) {
    // The scale of a wide decimal is known when the last row is there.
    const bool streams =
        streamed_ != nullptr && std::ranges::none_of(result.columns, &ColumnInfo::wideDecimal);
    if (streams) {
        takeFirstRows(result);
        return;
    }
    BlockReader reader(*connection_, statement, result.columns);
    while (reader.readBlock(result.columns, result.rows)) {
    }
    for (ColumnStore& store : result.rows) {
        store.shrink();
    }
}

void ResultReader::takeFirstRows(Result& result) {
    left_ = true;
    BlockReader& reader = streamed_->begin(*connection_, result.columns);
    (void)reader.readBlock(result.columns, result.rows);
    if (!reader.atEnd()) {
        auto rows = std::make_shared<PendingRows>(connection_, streamed_, result.columns, timeout_);
        rowsLeft_ = rows;
        connection_->reading(rows);
        result.rest = std::move(rows);
    }
}

}  // namespace kap::ado::odbc
