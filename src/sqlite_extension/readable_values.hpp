#pragma once

struct sqlite3;

// What makes stored values readable, and the other way round. The type is as the table declares it.
//
//     kap_text(value, 'datetime')       '2025-03-31 10:30:00'; also 'decimal(10,2)': '12.50'
//     kap_number(value, 'money')        12.5: a number to sum and sort by
//     kap_stored('2025-03-31', 'date')  the value as the column holds it, for comparing
namespace kap::sqlite_extension {

// Raises SqliteError when SQLite refuses.
void registerReadableValues(sqlite3* database);

}  // namespace kap::sqlite_extension
