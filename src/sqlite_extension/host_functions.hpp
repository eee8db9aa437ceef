#pragma once

// Every file of the module is compiled with this in front: SQLite's functions are those of the
// program that has loaded it, which may have an SQLite of its own in it.
#include <sqlite3ext.h>

SQLITE_EXTENSION_INIT3
