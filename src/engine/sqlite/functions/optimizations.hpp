#pragma once

struct sqlite3;

namespace kap::engine {

// Turns off the one optimisation of SQLite that loses rows under the collation of texts.
//
// In joins SQLite 3.38 to 3.41 may test rows against a Bloom filter that hashes a text by its
// length. Texts that are equal but for blanks at their end differ in length, so the filter would
// drop rows that match.
void disableUnsafeOptimizations(sqlite3* connection);

}  // namespace kap::engine
