#include "engine/catalog/counters.hpp"

#include <algorithm>
#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/text_order.hpp"
#include "engine/catalog/global_tables.hpp"
#include "engine/sqlite/functions/c_border.hpp"
#include "engine/values/convert.hpp"
#include "tsql/parser.hpp"

namespace kap::engine {
namespace {

// The owner of the counter of row versions; no table has this name.
const std::string kRowVersions;
// The first row version is one above; databases of the server begin there too.
constexpr std::int64_t kRowVersionStart = 2000;

bool isTemporary(std::string_view owner) {
    return (owner.starts_with('#') && !isGlobalTable(owner)) || owner.starts_with('@');
}

std::string counters(bool temporary) {
    return std::string(temporary ? "temp." : "main.") + kCountersTable;
}

bool fits(std::int64_t value, const tsql::TypeSpec& type) {
    try {
        (void)fitExact(value, 0, type, tsql::typeName(type.type));
        return true;
    } catch (const tsql::ServerError&) {
        return false;
    }
}

Counters& self(sqlite3_context* context) {
    return *static_cast<Counters*>(sqlite3_user_data(context));
}

void rowVersionFunction(sqlite3_context* context, int /*count*/, sqlite3_value** /*arguments*/) {
    atCBorder(context, self(context).errorSlot(), [context] {
        auto version = static_cast<std::uint64_t>(self(context).nextRowVersion());
        std::array<unsigned char, 8> bytes{};
        for (auto at = bytes.rbegin(); at != bytes.rend(); ++at) {
            *at = static_cast<unsigned char>(version & 0xFFU);
            version >>= 8;
        }
        sqlite3_result_blob(context, bytes.data(), static_cast<int>(bytes.size()),
                            SQLITE_TRANSIENT);
    });
}

void identityFunction(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
    atCBorder(context, self(context).errorSlot(), [context, arguments] {
        const std::string name(textBytes(arguments[0]));
        sqlite3_result_int64(context, self(context).nextIdentity(name));
    });
}

void givenIdentityFunction(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
    atCBorder(context, self(context).errorSlot(), [context, arguments] {
        const std::string name(textBytes(arguments[0]));
        if (sqlite3_value_type(arguments[1]) == SQLITE_INTEGER) {
            self(context).noteIdentity(name, sqlite3_value_int64(arguments[1]));
        }
        sqlite3_result_value(context, arguments[1]);
    });
}

}  // namespace

Counters::Counters(Database& database, ErrorSlot& errorSlot)
    : database_(database), errorSlot_(errorSlot) {
    const auto provide = [&](const char* name, int arguments, auto* function) {
        if (sqlite3_create_function_v2(database.handle(), name, arguments,
                                       SQLITE_UTF8 | SQLITE_DIRECTONLY, this, function, nullptr,
                                       nullptr, nullptr) != SQLITE_OK) {
            throw lastError(database.handle());
        }
    };
    provide("kap_rowversion", 0, &rowVersionFunction);
    provide("kap_identity", 1, &identityFunction);
    provide("kap_identity_given", 2, &givenIdentityFunction);
}

bool Counters::exists(bool temporary) const {
    return database_.hasTable(temporary ? "temp" : "main", std::string(kCountersTable));
}

std::optional<Counters::Record> Counters::find(const Table& table) const {
    if (!exists(table.temporary)) {
        return std::nullopt;
    }
    PreparedStatement look(database_.handle(), "SELECT identity_column, seed, increment FROM " +
                                                   counters(table.temporary) + " WHERE owner = ?1");
    look.bind(1, std::string_view(table.name));
    if (!look.step()) {
        return std::nullopt;
    }
    return Record{look.text(0), {look.integer(1), look.integer(2)}};
}

// With its first table of ours a file begins to have our indexes.
void Counters::noteTextOrder() {
    PreparedStatement version(database_.handle(), "PRAGMA main.user_version");
    if (version.step() && version.integer(0) == 0) {
        version.reset();
        database_.run(("PRAGMA main.user_version = " + plain::text(kTextOrder)).c_str());
    }
}

void Counters::makeTable(bool temporary) {
    if (!temporary && !exists(false)) noteTextOrder();
    database_.run(("CREATE TABLE IF NOT EXISTS " + counters(temporary) +
                   " (owner TEXT NOT NULL PRIMARY KEY, last INTEGER, identity_column TEXT, "
                   "identity_type TEXT, seed INTEGER NOT NULL, increment INTEGER NOT NULL) "
                   "WITHOUT ROWID")
                      .c_str());
}

void Counters::add(const TableDefinition& definition) {
    const Table& table = definition.table;
    const std::string name = counters(table.temporary);
    makeTable(table.temporary);
    const auto identity = std::ranges::find_if(
        table.columns, [](const Column& column) { return column.identity.has_value(); });
    const bool has = identity != table.columns.end();

    PreparedStatement insert(database_.handle(), "INSERT OR REPLACE INTO " + name +
                                                     " VALUES (?1, NULL, ?2, ?3, ?4, ?5)");
    insert.bind(1, std::string_view(table.name));
    insert.bind(2, has ? std::string_view(identity->name) : std::string_view());
    const std::string type = has ? tsql::typeText(identity->type) : std::string();
    insert.bind(3, std::string_view(type));
    insert.bind(4, has ? identity->identity->seed : 1);
    insert.bind(5, has ? identity->identity->increment : 1);
    insert.run();
    counters_.erase(table.name);

    if (table.temporary) {
        return;  // its row versions, if any, are the database's
    }
    PreparedStatement versions(database_.handle(), "INSERT OR IGNORE INTO " + name +
                                                       " VALUES ('', NULL, NULL, NULL, ?1, 1)");
    versions.bind(1, kRowVersionStart + 1);
    versions.run();
}

void Counters::remove(const DroppedTable& table) {
    counters_.erase(table.name);
    if (!exists(table.temporary)) {
        return;
    }
    PreparedStatement forget(database_.handle(),
                             "DELETE FROM " + counters(table.temporary) + " WHERE owner = ?1");
    forget.bind(1, std::string_view(table.name));
    forget.run();
}

void Counters::rename(const Table& table, const std::string& newName) {
    if (!exists(table.temporary)) {
        return;
    }
    // What it has given out in this transaction goes to the file under the old name first.
    flush();
    counters_.erase(table.name);
    PreparedStatement rename(database_.handle(), "UPDATE " + counters(table.temporary) +
                                                     " SET owner = ?2 WHERE owner = ?1");
    rename.bind(1, std::string_view(table.name));
    rename.bind(2, std::string_view(newName));
    rename.run();
}

void Counters::renameIdentity(const Table& table, const std::string& column) {
    if (!exists(table.temporary)) {
        return;
    }
    PreparedStatement rename(database_.handle(), "UPDATE " + counters(table.temporary) +
                                                     " SET identity_column = ?2 WHERE owner = ?1");
    rename.bind(1, std::string_view(table.name));
    rename.bind(2, std::string_view(column));
    rename.run();
}

std::int64_t Counters::nextRowVersion() {
    return next(kRowVersions);
}

std::int64_t Counters::nextIdentity(const std::string& table) {
    const std::int64_t value = next(table);
    lastIdentity_ = value;
    return value;
}

Counters::Counter& Counters::current(const std::string& owner) {
    Counter& counter = counters_[owner];
    if (!counter.current) {
        load(owner, counter);
    }
    return counter;
}

void Counters::noteIdentity(const std::string& table, std::int64_t value) {
    lastIdentity_ = value;
    Counter& counter = current(table);
    const bool farther = counter.increment > 0 ? value > counter.last : value < counter.last;
    if (!counter.started || farther) {
        counter.last = value;
        counter.started = true;
        counter.pending = true;
    }
}

void Counters::restart(const Table& table) {
    counters_.erase(table.name);
    if (!exists(table.temporary)) {
        return;
    }
    PreparedStatement forget(database_.handle(), "UPDATE " + counters(table.temporary) +
                                                     " SET last = NULL WHERE owner = ?1");
    forget.bind(1, std::string_view(table.name));
    forget.run();
    tellOthers(table.temporary);
}

// Other connections go on from the farthest number that they know, until the schema has changed.
void Counters::tellOthers(bool temporary) {
    if (temporary) {
        return;
    }
    // A name that begins like that of the counters is nobody else's.
    const std::string passing = std::string("TABLE main.") + kCountersTable + "_reseeded";
    database_.run(("CREATE " + passing + " (last INTEGER)").c_str());
    database_.run(("DROP " + passing).c_str());
}

void Counters::reseed(const std::string& table, std::int64_t value) {
    Counter& counter = current(table);
    std::int64_t last = value;
    const bool overflows =
        !counter.started && __builtin_sub_overflow(value, counter.increment, &last);
    if (overflows || !fits(value, counter.type)) {
        throw tsql::ServerError(tsql::Message::ArithmeticOverflow,
                                {"IDENTITY", tsql::typeName(counter.type.type)});
    }
    counter.last = last;
    counter.started = true;
    counter.pending = true;
    tellOthers(isTemporary(table));
}

std::optional<std::int64_t> Counters::lastIdentityOf(const std::string& table) {
    const Counter& counter = current(table);
    return counter.started ? std::optional(counter.last) : std::nullopt;
}

std::int64_t Counters::currentIdentity(const std::string& table) {
    const Counter& counter = current(table);
    return counter.started ? counter.last : counter.first;
}

std::int64_t Counters::currentRowVersion() {
    if (!exists(false)) {
        return kRowVersionStart;
    }
    const Counter& counter = current(kRowVersions);
    return counter.started ? counter.last : kRowVersionStart;
}

Counters::Kept& Counters::kept(bool temporary) {
    Kept& kept = kept_.at(temporary ? 1 : 0);
    if (kept.read.handle() == nullptr) {
        const std::string table = counters(temporary);
        kept = {{database_.handle(),
                 "SELECT last, seed, increment, identity_type FROM " + table + " WHERE owner = ?1",
                 StatementLife::Kept},
                {database_.handle(), "UPDATE " + table + " SET last = ?2 WHERE owner = ?1",
                 StatementLife::Kept}};
    }
    return kept;
}

void Counters::load(const std::string& owner, Counter& counter) {
    PreparedStatement& look = kept(isTemporary(owner)).read;
    const ResetGuard guard(look);
    look.bind(1, std::string_view(owner));
    if (!look.step()) {
        throw SqliteError(SQLITE_CORRUPT, "the counter of '" + owner + "' is missing", 0);
    }
    counter.first = look.integer(1);
    counter.increment = look.integer(2);
    if (const std::string type = look.text(3); !type.empty()) {
        counter.type = tsql::parseType(type);
    }
    if (!look.isNull(0)) {
        const std::int64_t last = look.integer(0);
        const bool fileIsAhead = counter.increment > 0 ? last > counter.last : last < counter.last;
        if (!counter.started || fileIsAhead) {
            counter.last = last;
            counter.started = true;
        }
    }
    counter.current = true;
}

std::int64_t Counters::next(const std::string& owner) {
    Counter& counter = current(owner);
    std::int64_t value = counter.first;
    const bool overflows =
        counter.started && __builtin_add_overflow(counter.last, counter.increment, &value);
    if (overflows || !fits(value, counter.type)) {
        throw tsql::ServerError(tsql::Message::ArithmeticOverflow,
                                {"IDENTITY", tsql::typeName(counter.type.type)});
    }
    counter.last = value;
    counter.started = true;
    counter.pending = true;
    return value;
}

bool Counters::pending() const noexcept {
    return std::ranges::any_of(counters_, [](const auto& entry) { return entry.second.pending; });
}

void Counters::flush() {
    for (auto& [owner, counter] : counters_) {
        if (!counter.pending) {
            continue;
        }
        PreparedStatement& write = kept(isTemporary(owner)).write;
        write.bind(1, std::string_view(owner));
        write.bind(2, counter.last);
        write.run();
        counter.pending = false;
    }
}

void Counters::flushAfterRollback() {
    for (const bool temporary : {false, true}) {
        if (!exists(temporary)) {
            std::erase_if(counters_, [temporary](const auto& entry) {
                return isTemporary(entry.first) == temporary;
            });
        }
    }
    flush();
}

void Counters::transactionEnded() noexcept {
    for (auto& [owner, counter] : counters_) {
        counter.current = false;
        counter.pending = false;
        counter.agreed = false;
    }
}

void Counters::committed() noexcept {
    for (auto& [owner, counter] : counters_) {
        counter.agreed = counter.current;
        counter.current = false;
        counter.pending = false;
    }
}

void Counters::goOn() noexcept {
    for (auto& [owner, counter] : counters_) {
        counter.current = counter.agreed;
    }
}

void Counters::schemaChanged() {
    std::erase_if(counters_, [](const auto& entry) {
        return entry.first != kRowVersions && !entry.second.pending;
    });
}

}  // namespace kap::engine
