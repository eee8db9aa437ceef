#include "drivers/odbc/kept_statements.hpp"

#include <algorithm>

namespace kap::ado::odbc {

BlockReader& BoundStatement::begin(OdbcConnection& connection,
                                   const std::vector<ColumnInfo>& columns) {
    if (!reader_ || !reader_->fits(columns)) {
        reader_.reset();
        reader_.emplace(connection, statement_, columns);
    }
    return *reader_;
}

void BoundStatement::reopen() noexcept {
    if (reader_) {
        reader_->restart();
    }
}

void BoundStatement::close() {
    SQLFreeStmt(statement_.get(), SQL_CLOSE);
}

std::shared_ptr<BoundStatement> KeptStatements::take(const KnownQuery& query) {
    const auto found = std::ranges::find(kept_, &query, &Kept::query);
    if (found == kept_.end()) {
        return nullptr;
    }
    std::shared_ptr<BoundStatement> statement = std::move(found->statement);
    kept_.erase(found);
    statement->reopen();
    return statement;
}

void KeptStatements::keep(const KnownQuery& query, std::shared_ptr<BoundStatement> statement) {
    statement->close();
    kept_.push_front({&query, std::move(statement)});
    if (kept_.size() > kMost) {
        kept_.pop_back();
    }
}

}  // namespace kap::ado::odbc
