#include "ado/embedded/schema_catalogue.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "ado/embedded/functions/text_units.hpp"
#include "ado/embedded/functions/value.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {
namespace {

std::string folded(std::string_view name) {
    return fromUnits(foldedUnits(name));
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// SQLite's own rules of what a declared type holds. What may hold numbers and texts alike (dates,
// decimals, columns without a type) is read as text, which every value has.
tsql::TypeSpec affinityType(const std::string& declared) {
    using tsql::SqlType;
    const std::string upper = tsql::asciiUpper(declared);
    if (contains(upper, "INT")) {
        return {SqlType::BigInt};
    }
    if (contains(upper, "CHAR") || contains(upper, "CLOB") || contains(upper, "TEXT")) {
        return {SqlType::NVarChar, tsql::kMaxLength};
    }
    if (contains(upper, "BLOB")) {
        return {SqlType::VarBinary, tsql::kMaxLength};
    }
    if (contains(upper, "REAL") || contains(upper, "FLOA") || contains(upper, "DOUB")) {
        return {SqlType::Float};
    }
    return {SqlType::NVarChar, tsql::kMaxLength};
}

// SQLite takes a type that it cannot parse, varchar(max), as a name in quotes.
std::string_view unquoted(std::string_view declared) {
    if (declared.size() >= 2 && declared.front() == '"' && declared.back() == '"') {
        return declared.substr(1, declared.size() - 2);
    }
    return declared;
}

tsql::TypeSpec columnType(const std::string& declared, bool ours) {
    if (ours) {
        try {
            return tsql::parseType(unquoted(declared));
        } catch (const tsql::ServerError&) {
            // Another program has added a column: it has a type of SQLite's.
        }
    }
    return affinityType(declared);
}

// The columns of PRAGMA table_xinfo.
enum XInfo { Ordinal, Name, Type, NotNull, Default, Key, Hidden };

Column readColumn(const PreparedStatement& row, const std::optional<Counters::Record>& record) {
    Column column;
    column.name = row.text(XInfo::Name);
    column.type = columnType(row.text(XInfo::Type), record.has_value());
    column.keyOrdinal = static_cast<int>(row.integer(XInfo::Key));
    column.nullable = row.integer(XInfo::NotNull) == 0 && (column.keyOrdinal == 0 || !record);
    if (!row.isNull(XInfo::Default)) {
        column.defaultSql = row.text(XInfo::Default);
    }
    if (record && record->identityColumn == column.name) {
        column.identity = record->identity;
    }
    return column;
}

}  // namespace

SchemaCatalogue::SchemaCatalogue(Database& database, Counters& counters)
    : database_(database),
      counters_(counters),
      version_(database.handle(), "PRAGMA main.schema_version", StatementLife::Kept) {}

const Table* SchemaCatalogue::find(std::string_view name) const {
    if (!namesRead_) {
        readNames();
    }
    const auto found = tables_.find(folded(name));
    if (found == tables_.end()) {
        return nullptr;
    }
    Entry& entry = found->second;
    if (!entry.table) {
        entry.table = read(entry);
    }
    return entry.table.get();
}

void SchemaCatalogue::refresh() {
    std::int64_t version = -1;
    {
        const ResetGuard guard(version_);
        version_.step();
        version = version_.integer(0);
    }
    if (version == knownVersion_) {
        return;
    }
    invalidate();
    knownVersion_ = version;
    // SQLite keeps a schema of its own, which only running a statement brings up to date.
    PreparedStatement(database_.handle(), "SELECT 1 FROM main.sqlite_schema LIMIT 1").run();
}

void SchemaCatalogue::invalidate() {
    knownVersion_ = -1;
    ++generation_;
    tables_.clear();
    namesRead_ = false;
    counters_.schemaChanged();
}

void SchemaCatalogue::readNames() const {
    readNames("SELECT name FROM main.sqlite_schema WHERE type IN ('table', 'view')", false);
    readNames("SELECT name FROM temp.sqlite_schema WHERE type IN ('table', 'view')", true);
    namesRead_ = true;
}

void SchemaCatalogue::readNames(const char* sql, bool temporary) const {
    PreparedStatement names(database_.handle(), sql);
    while (names.step()) {
        std::string name = names.text(0);
        if (name != kCountersTable && !name.starts_with("sqlite_")) {
            std::string key = folded(name);
            tables_.insert_or_assign(std::move(key), Entry{std::move(name), temporary, nullptr});
        }
    }
}

std::unique_ptr<Table> SchemaCatalogue::read(const Entry& entry) const {
    auto table = std::make_unique<Table>();
    table->name = entry.name;
    table->temporary = entry.temporary;
    const auto record = counters_.find(*table);
    PreparedStatement rows(database_.handle(), std::string("PRAGMA ") +
                                                   (entry.temporary ? "temp" : "main") +
                                                   ".table_xinfo(" + sqlName(entry.name) + ")");
    while (rows.step()) {
        if (rows.integer(XInfo::Hidden) == 0) {
            table->columns.push_back(readColumn(rows, record));
        }
    }
    return table;
}

}  // namespace kap::ado::embedded
