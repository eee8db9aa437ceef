#include "drivers/odbc/prepared_statements.hpp"

#include <algorithm>
#include <utility>

namespace kap::ado::odbc {

PreparedStatements::InUse PreparedStatements::of(const std::string& text,
                                                 std::chrono::seconds timeout) {
    const auto found = std::ranges::find(kept_, text, &Kept::text);
    if (found == kept_.end()) {
        return {connection_.newStatement(timeout), false};
    }
    Handle handle = std::move(found->handle);
    kept_.erase(found);
    if (handle.get() != kNoHandle) {
        connection_.renew(handle, timeout);
        return {std::move(handle), true};
    }
    handle = connection_.newStatement(timeout);
    const std::u16string units = String(text).units();
    connection_.check(SQLPrepareW(handle.get(), wide(units), static_cast<SQLINTEGER>(units.size())),
                      handle);
    return {std::move(handle), true};
}

SQLRETURN PreparedStatements::run(const InUse& statement, const std::string& text) {
    if (statement.prepared) {
        return SQLExecute(statement.handle.get());
    }
    const std::u16string units = String(text).units();
    return SQLExecDirectW(statement.handle.get(), wide(units),
                          static_cast<SQLINTEGER>(units.size()));
}

void PreparedStatements::giveBack(const std::string& text, InUse statement) {
    if (!statement.prepared) {
        keep(text, {});
        return;
    }
    SQLFreeStmt(statement.handle.get(), SQL_CLOSE);
    SQLFreeStmt(statement.handle.get(), SQL_RESET_PARAMS);
    keep(text, std::move(statement.handle));
}

void PreparedStatements::keep(const std::string& text, Handle handle) {
    kept_.push_front({text, std::move(handle)});
    if (kept_.size() > kMost) {
        kept_.pop_back();
    }
}

}  // namespace kap::ado::odbc
