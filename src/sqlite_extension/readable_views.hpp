#pragma once

struct sqlite3;

namespace kap::sqlite_extension {

// Makes a temporary view of each table of the file whose values need reading: "Fatture_readable"
// has the columns of "Fatture", amounts as numbers and dates as texts. Views of before are made
// anew; a name that the file has already is left alone. Gives back how many there are. Raises
// SqliteError.
int makeReadableViews(sqlite3* database);

// Makes kap_views() known, which does the same for those whose tables have changed.
void registerReadableViews(sqlite3* database);

}  // namespace kap::sqlite_extension
