#pragma once

#include <string>
#include <vector>

#include "ado/embedded/translate/binder.hpp"
#include "ado/embedded/translate/translation.hpp"

/// The statements behind translate(), each in its own file.
namespace kap::ado::embedded {

[[nodiscard]] Translation translateSelect(const tsql::SelectStatement& statement,
                                          const Catalogue& catalogue);
[[nodiscard]] Translation translateInsert(const tsql::InsertStatement& statement, int line,
                                          const Catalogue& catalogue);
[[nodiscard]] Translation translateUpdate(const tsql::UpdateStatement& statement,
                                          const Catalogue& catalogue);
[[nodiscard]] Translation translateDelete(const tsql::DeleteStatement& statement,
                                          const Catalogue& catalogue);
[[nodiscard]] Translation translateCreate(const tsql::CreateTableStatement& statement, int line,
                                          const Catalogue& catalogue);
[[nodiscard]] Translation translateDrop(const tsql::DropTableStatement& statement, int line,
                                        const Catalogue& catalogue);

/// Calls that give a row its next values; the session provides the functions.
[[nodiscard]] std::string rowVersionCall();
[[nodiscard]] std::string identityCall(const Table& table);

/// A name by which SQLite knows the row's number and that no column of the table hides.
[[nodiscard]] std::string rowNumberName(const Table& table);

/// The rows that UPDATE or DELETE with FROM or TOP works on.
struct TargetRows {
    const Table* table = nullptr;
    std::string name;   ///< the target's name in FROM
    std::string tail;   ///< " FROM ... WHERE ..."
    std::string limit;  ///< " LIMIT n" or empty
};

/// Binds FROM and WHERE of such a statement into `scope`. The target is a table, or an alias of
/// FROM; it is added to FROM when it does not stand there. Error 208 when there is no such table.
[[nodiscard]] TargetRows bindTarget(Binder& binder, const tsql::ObjectName& target,
                                    const std::vector<tsql::TableSourcePtr>& from,
                                    const tsql::ExpressionPtr& where,
                                    const std::optional<tsql::TopClause>& top, Scope& scope);

}  // namespace kap::ado::embedded
