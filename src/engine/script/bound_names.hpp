#pragma once

#include "tsql/statements.hpp"

// What a view or a function WITH SCHEMABINDING has to name as "schema.object", and without a star.
namespace kap::engine {

// Holds the query of one to that: its sources, those of the queries in FROM, and its select lists.
// `kind` is "view" or "function", `text` how the module was written: without SCHEMABINDING in it
// nothing is asked. Errors 4512 and 1054.
void requireBoundNames(const tsql::Query& query, const char* kind, const tsql::ObjectName& module,
                       const std::string& text, int line);

}  // namespace kap::engine
