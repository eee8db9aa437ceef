#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "drivers/odbc/block_reader.hpp"
#include "drivers/odbc/known_queries.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// A statement whose rows are read in blocks. The columns stay bound to the same memory when it is
// run again, as long as they are the same.
class BoundStatement {
public:
    explicit BoundStatement(Handle statement) : statement_(std::move(statement)) {}

    [[nodiscard]] Handle& handle() noexcept { return statement_; }
    // It is going to be run again: what is to be read has not begun.
    void reopen() noexcept;
    // The reader of the result that has been opened, with these columns.
    [[nodiscard]] BlockReader& begin(OdbcConnection& connection,
                                     const std::vector<ColumnInfo>& columns);
    // Of the result that was begun last.
    [[nodiscard]] BlockReader& reader() noexcept { return *reader_; }
    // Whether a result has been begun and read to its end.
    [[nodiscard]] bool isRead() const noexcept { return reader_ && reader_->atEnd(); }
    // The statement goes on to its next result, which may have other columns.
    void leaveResult() { reader_.reset(); }
    // Ends the result; the statement can be run again.
    void close();

private:
    Handle statement_;
    std::optional<BlockReader> reader_;  // freed first: the statement knows its memory
};

// The statements of the queries that a connection has run last and read in one block. Programs read
// single records by the same few queries: to make a statement, describe it to the driver and free
// it costs as much as to run it. Few are kept, for managers of drivers look for a statement among
// all that there are in the process.
class KeptStatements {
public:
    // The statement that has run this query, or else null.
    [[nodiscard]] std::shared_ptr<BoundStatement> take(const KnownQuery& query);
    // Its result has been read to the end.
    void keep(const KnownQuery& query, std::shared_ptr<BoundStatement> statement);
    void forget() { kept_.clear(); }

private:
    static constexpr std::size_t kMost = 4;
    struct Kept {
        const KnownQuery* query;  // only compared; the columns are looked at anew each time
        std::shared_ptr<BoundStatement> statement;
    };
    std::list<Kept> kept_;  // the last used first
};

}  // namespace kap::ado::odbc
