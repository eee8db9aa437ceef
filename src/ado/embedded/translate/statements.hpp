#pragma once

#include <string>
#include <vector>

#include "ado/embedded/translate/binder.hpp"
#include "ado/embedded/translate/translation.hpp"

/// The statements behind translate(), each in its own file.
namespace kap::ado::embedded {

[[nodiscard]] Translation translateSelect(const tsql::SelectStatement& statement,
                                          const Names& names, Constants constants);
[[nodiscard]] Translation translateInsert(const tsql::InsertStatement& statement, int line,
                                          const Names& names, Constants constants);
[[nodiscard]] Translation translateUpdate(const tsql::UpdateStatement& statement,
                                          const Names& names, Constants constants);
[[nodiscard]] Translation translateDelete(const tsql::DeleteStatement& statement,
                                          const Names& names, Constants constants);
[[nodiscard]] Translation translateTruncate(const tsql::TruncateStatement& statement,
                                            const Names& names);
[[nodiscard]] Translation translateCreate(const tsql::CreateTableStatement& statement, int line,
                                          const Names& names);
[[nodiscard]] Translation translateIndex(const tsql::CreateIndexStatement& statement, int line,
                                         const Names& names);
[[nodiscard]] Translation translateDrop(const tsql::DropStatement& statement, int line,
                                        const Names& names);

/// SELECT ... INTO: makes the table that the columns describe and fills it.
[[nodiscard]] Translation translateSelectInto(const tsql::Query& query,
                                              const tsql::ObjectName& table, const Names& names);

/// A column of a result, as its query made it.
[[nodiscard]] ResultColumn resultColumn(const OutputColumn& output);

/// Calls that give a row its next values; the session provides the functions.
[[nodiscard]] std::string rowVersionCall();
[[nodiscard]] std::string identityCall(const std::string& table);
/// A value for an identity column that the statement itself gives.
[[nodiscard]] std::string givenIdentity(const Table& table, const std::string& value);

/// A name by which SQLite knows the row's number and that no column of the table hides.
[[nodiscard]] std::string rowNumberName(const Table& table);

/// The rows that UPDATE or DELETE with FROM or TOP works on.
struct TargetRows {
    const Table* table = nullptr;
    std::string rowNumber;  ///< the number of the target's row, as FROM brings it
    std::string tail;       ///< " FROM ... WHERE ..."
    std::string limit;      ///< " LIMIT n" or empty
};

/// Binds FROM and WHERE of such a statement into `scope`. The target is a table, an alias of FROM,
/// or a common table over one table; it is added to FROM when it does not stand there. Error 208
/// when there is no such table.
[[nodiscard]] TargetRows bindTarget(Binder& binder, const tsql::ObjectName& target,
                                    const std::vector<tsql::TableSourcePtr>& from,
                                    const tsql::ExpressionPtr& where,
                                    const std::optional<tsql::TopClause>& top, Scope& scope);

}  // namespace kap::ado::embedded
