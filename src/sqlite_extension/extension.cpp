// The module `kaputil_sqlite`: what SQLite lacks to read a file of the library, for programs that
// load it (`.load kaputil_sqlite`).
#include <sqlite3ext.h>

#include <new>
#include <string>

#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/functions/optimizations.hpp"
#include "engine/sqlite/functions/registration.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "sqlite_extension/readable_values.hpp"
#include "sqlite_extension/readable_views.hpp"

SQLITE_EXTENSION_INIT1

namespace kap::engine {

// A module cannot switch off what the program's SQLite does.
void disableUnsafeOptimizations(sqlite3* /*connection*/) {}

}  // namespace kap::engine

namespace kap::sqlite_extension {
namespace {

// The table of functions that the program hands over has window functions from here on.
constexpr int kFirstVersion = 3025000;

void deleteSlot(void* slot) {
    delete static_cast<engine::ErrorSlot*>(slot);
}

void nothing(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
    sqlite3_result_null(context);
}

// Where functions leave the server's numbers of errors, for as long as the connection lives: the
// last function that is registered owns it.
engine::ErrorSlot& slotOf(sqlite3* database) {
    auto* slot = new engine::ErrorSlot;
    // SQLite deletes the slot also when it refuses the function.
    if (sqlite3_create_function_v2(database, "kap_error_slot", 0, SQLITE_UTF8 | SQLITE_DIRECTONLY,
                                   slot, &nothing, nullptr, nullptr, &deleteSlot) != SQLITE_OK) {
        throw engine::lastError(database);
    }
    return *slot;
}

void extend(sqlite3* database) {
    engine::registerCollations(database);
    engine::registerFunctions(database, slotOf(database));
    registerReadableValues(database);
    registerReadableViews(database);
    try {
        if (engine::hasFormerTextOrder(database)) {
            engine::registerFormerTextOrder(database);
        }
        makeReadableViews(database);
    } catch (const engine::SqliteError&) {
        // Without them the file can be read as well, and kap_views() says why there are none.
    }
}

int refuse(char** message, const std::string& reason, int code) {
    if (message != nullptr) {
        *message = sqlite3_mprintf("kaputil_sqlite: %s", reason.c_str());
    }
    return code;
}

int begin(sqlite3* database, char** message) noexcept {
    try {
        if (sqlite3_libversion_number() < kFirstVersion) {
            return refuse(message, "SQLite 3.25 or later is needed", SQLITE_ERROR);
        }
        extend(database);
        return SQLITE_OK;
    } catch (const engine::SqliteError& error) {
        return refuse(message, error.what(), error.code());
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    }
}

}  // namespace
}  // namespace kap::sqlite_extension

// SQLite finds the function by the name of the file, or by the second of these.
// NOLINTBEGIN(readability-identifier-naming)
extern "C" __attribute__((visibility("default"))) int sqlite3_kaputilsqlite_init(
    sqlite3* database, char** message, const sqlite3_api_routines* routines) {
    SQLITE_EXTENSION_INIT2(routines)
    return kap::sqlite_extension::begin(database, message);
}

extern "C" __attribute__((visibility("default"))) int sqlite3_extension_init(
    sqlite3* database, char** message, const sqlite3_api_routines* routines) {
    return sqlite3_kaputilsqlite_init(database, message, routines);
}
// NOLINTEND(readability-identifier-naming)
