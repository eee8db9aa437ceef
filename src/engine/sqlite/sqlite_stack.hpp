#pragma once

struct sqlite3;

// How deep SQLite goes into a statement: as far as the stack of the present thread holds, as far as
// it is known.
namespace kap::engine {

// The message of a statement that is refused for want of stack.
inline constexpr const char* kOutOfStack = "stack limit reached";

// Lets SQLite look at the stack wherever it comes upon a table, a column, a function or a query.
// What it would go too deep for ends with SQLITE_AUTH.
void watchStack(sqlite3* database);

// Bounds what SQLite follows without looking: expressions and the terms of a compound query. Before
// each statement that is prepared. Raises SqliteError where there is no stack even for a plain one.
void limitNesting(sqlite3* database);

}  // namespace kap::engine
