#pragma once

#include "ado/embedded/catalogue.hpp"
#include "ado/embedded/translate/translation.hpp"
#include "tsql/syntax.hpp"

namespace kap::ado::embedded {

/// Binds a statement to the tables it names, gives every expression its type by the server's rules,
/// and writes it as SQLite SQL.
///
/// Throws tsql::ServerError with the statement's line for what the server would refuse before
/// running it (unknown tables and columns, type clashes, wrong counts of values, texts that are no
/// number or date), and 40517 for what this database does not do.
[[nodiscard]] Translation translate(const tsql::Statement& statement, const Catalogue& catalogue);

}  // namespace kap::ado::embedded
