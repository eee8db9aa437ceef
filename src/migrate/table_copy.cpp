#include "migrate/table_copy.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "data/table_session.hpp"
#include "migrate/copied_tables.hpp"
#include "migrate/table_pages.hpp"

namespace kap::migrate {
namespace {

constexpr std::size_t kRowsATransaction = 20000;

}  // namespace

struct TableCopy::Table {
    ado::ObjectName source;  // the names as they stand in each database
    ado::ObjectName target;
    std::vector<ado::ColumnDefinition> columns;
    std::vector<std::string> key;
    std::string keyName;

    [[nodiscard]] const ado::ColumnDefinition* identity() const {
        const auto found = std::ranges::find_if(columns, &ado::ColumnDefinition::identity);
        return found == columns.end() ? nullptr : &*found;
    }
    [[nodiscard]] std::string rowVersion() const {
        const auto found = std::ranges::find_if(columns, &ado::ColumnDefinition::rowVersion);
        return found == columns.end() ? std::string() : found->name;
    }
};

namespace {

TableDigest digest(ado::Connection& connection, const ado::SqlDialect& dialect,
                   const ado::ObjectName& table) {
    const std::vector<ado::ColumnDefinition> columns = columnsOf(connection, dialect, table);
    TableDigest made;
    TablePages(connection, dialect, table, columns, keyOf(connection, dialect, table))
        .read(0,
              [&](const ado::Result& page, std::size_t first) { made.add(columns, page, first); });
    return made;
}

}  // namespace

TableCopy::TableCopy(ado::Connection& from, ado::Connection& to,
                     std::function<void(const std::string&)> tell)
    : from_(from),
      to_(to),
      fromDialect_(dialectOf(from)),
      toDialect_(dialectOf(to)),
      tell_(std::move(tell)) {}

void TableCopy::check(const std::vector<ado::ObjectName>& tables) {
    const bool noted = hasNotes();
    for (const ado::ObjectName& name : tables) {
        const Table table = describe(name);
        if ((!noted || rowsNoted(table) < 0) && isInTarget(table)) {
            requireEmpty(table);
        }
    }
}

bool TableCopy::hasNotes() {
    const auto tables = to_.OpenSchema(
        ado::SchemaEnum::adSchemaTables,
        Variant(
            Array::ofVariants({Variant(), Variant(), Variant(toDialect_.nameFor(kCopyNotes))})));
    return !tables->Eof();
}

void TableCopy::abandon() {
    const auto notes = opened(to_, std::string("SELECT COUNT(*) FROM ") + kCopyNotes);
    if (convert::toLong(notes->Fields()->Item(0)->Value()) == 0) {
        finish();
    }
}

void TableCopy::begin() {
    if (hasNotes()) {
        return;
    }
    to_.Execute(std::string("CREATE TABLE ") + kCopyNotes +
                " (Tabella varchar(300) NOT NULL PRIMARY KEY, Righe int NOT NULL)");
    const std::string more = toDialect_.beforeRowVersions();
    if (!more.empty()) {
        to_.Execute(more);
    }
}

void TableCopy::finish() {
    to_.Execute(std::string("DROP TABLE ") + kCopyNotes);
}

CopyOutcome TableCopy::run(const ado::ObjectName& name,
                           const std::function<void(std::int64_t, std::int64_t)>& progress) {
    Table table = describe(name);
    std::int64_t done = rowsNoted(table);
    if (done < 0) {
        create(table);
        done = 0;
    }
    writeRows(table, done, progress);
    continueIdentity(table);
    CopyOutcome outcome;
    outcome.source = digest(from_, fromDialect_, table.source);
    outcome.target = digest(to_, toDialect_, table.target);
    outcome.rows = outcome.target.rows;
    return outcome;
}

TableCopy::Table TableCopy::describe(const ado::ObjectName& name) {
    Table table;
    table.source = name;
    table.target = toDialect_.nameFor(name);
    table.columns = columnsOf(from_, fromDialect_, name);
    for (const CopiedIndex& index : indexesOf(from_, fromDialect_, name)) {
        if (index.kind == CopiedIndex::Kind::PrimaryKey) {
            table.key = index.columns();
            table.keyName = index.name;
        }
    }
    return table;
}

// The rows of a table that have arrived; -1 when the copy of it has not begun.
std::int64_t TableCopy::rowsNoted(const Table& table) {
    const auto notes = opened(
        to_, std::string("SELECT Righe FROM ") + kCopyNotes + " WHERE Tabella = " + noted(table));
    return notes->Eof() ? -1 : convert::toLong(notes->Fields()->Item(0)->Value());
}

void TableCopy::create(Table& table) {
    if (isInTarget(table)) {
        requireEmpty(table);
        to_.Execute(noting(table));
        return;
    }
    const bool formulas = std::ranges::any_of(
        table.columns,
        [](const ado::ColumnDefinition& column) { return !column.computed.empty(); });
    std::string reason = "it is written in its database's dialect";
    if (formulas && toDialect_.reads(fromDialect_)) {
        try {
            makeTable(table);
            return;
        } catch (const AutomationError& error) {
            reason = error.description().utf8();  // if it is another one it comes again
        }
    }
    for (ado::ColumnDefinition& column : table.columns) {
        if (!column.computed.empty()) {
            tell_("What " + table.source.text() + "." + column.name +
                  " is computed from stays behind, its values do not: " + reason);
            column.computed.clear();
        }
    }
    makeTable(table);
}

std::string TableCopy::noting(const Table& table) const {
    return std::string("INSERT INTO ") + kCopyNotes + " VALUES (" + noted(table) + ", 0)";
}

// In quotes where it is in another schema, lest it be taken for a name with a point in it.
std::string TableCopy::noted(const Table& table) const {
    ado::ColumnDefinition text;
    text.type = ado::DataTypeEnum::adVarChar;
    return toDialect_.literal(
        text, table.target.schema.empty() ? table.target.name : toDialect_.qualified(table.target));
}

void TableCopy::makeTable(const Table& table) {
    to_.BeginTrans();
    try {
        to_.Execute(definition(table));
        const std::string more =
            toDialect_.afterCreation(table.target, toDialect_.nameFor(table.rowVersion()));
        if (!more.empty()) {
            to_.Execute(more);
        }
        to_.Execute(noting(table));
        to_.CommitTrans();
    } catch (const AutomationError&) {
        to_.RollbackTrans();
        throw;
    }
}

std::string TableCopy::definition(const Table& table) const {
    std::vector<std::string> parts;
    for (const ado::ColumnDefinition& column : table.columns) {
        parts.push_back(definition(table, column));
    }
    if (!table.key.empty()) {
        parts.push_back(primaryKey(table));
    }
    return "CREATE TABLE " + toDialect_.qualified(table.target) + " (" + joined(parts) + ")";
}

std::string TableCopy::definition(const Table& table, const ado::ColumnDefinition& column) const {
    const std::string name = toDialect_.quoted(toDialect_.nameFor(column.name));
    if (!column.computed.empty()) {
        return name + " AS " + column.computed + (column.persisted ? " PERSISTED" : "");
    }
    const bool inKey = std::ranges::any_of(
        table.key, [&](const std::string& part) { return equalsIgnoringCase(part, column.name); });
    const bool read = toDialect_.reads(fromDialect_);
    std::string otherwise = toDialect_.defaultFor(column);
    if (read && column.defaultValue.kind == ado::DefaultValue::Kind::Constant &&
        !otherwise.empty()) {
        otherwise = column.defaultText;
    }
    const bool named = read && !column.defaultName.empty();
    return name + " " + toDialect_.typeFor(column) +
           (column.nullable && !inKey ? " NULL" : " NOT NULL") +
           (otherwise.empty()
                ? ""
                : (named ? " CONSTRAINT " + toDialect_.quoted(column.defaultName) : std::string()) +
                      " DEFAULT " + otherwise);
}

std::string TableCopy::primaryKey(const Table& table) const {
    std::vector<std::string> key;
    for (const std::string& part : table.key) {
        key.push_back(toDialect_.quoted(toDialect_.nameFor(part)));
    }
    const bool named = toDialect_.reads(fromDialect_) && !table.keyName.empty();
    return (named ? "CONSTRAINT " + toDialect_.quoted(table.keyName) + " " : std::string()) +
           "PRIMARY KEY (" + joined(key) + ")";
}

bool TableCopy::isInTarget(const Table& table) {
    const std::vector<ado::ObjectName> there = allTablesOf(to_, toDialect_);
    return std::ranges::any_of(
        there, [&](const ado::ObjectName& other) { return other.isAlike(table.target); });
}

void TableCopy::requireEmpty(const Table& table) {
    const auto count = opened(to_, "SELECT COUNT(*) FROM " + toDialect_.qualified(table.target));
    if (convert::toLong(count->Fields()->Item(0)->Value()) != 0) {
        throw std::runtime_error("the target has a table " + table.target.text() +
                                 " with rows in it; empty or drop it first");
    }
}

// Rows are written in transactions of many, each with its note. Columns that the target computes
// are its own affair.
void TableCopy::writeRows(const Table& table, std::int64_t done,
                          const std::function<void(std::int64_t, std::int64_t)>& progress) {
    Table written = table;
    for (const ado::ColumnDefinition& there : columnsOf(to_, toDialect_, table.target)) {
        for (ado::ColumnDefinition& column : written.columns) {
            if (equalsIgnoringCase(toDialect_.nameFor(column.name), there.name)) {
                column.computed = there.computed;
            }
        }
    }
    const std::int64_t all =
        numberOf(from_, "SELECT COUNT(*) FROM " + fromDialect_.qualified(table.source)).value_or(0);
    if (table.key.empty() && done < all) {  // in no order: nobody knows which ones have arrived
        to_.Execute("DELETE FROM " + toDialect_.qualified(table.target));
        done = 0;
    }
    TablePages(from_, fromDialect_, table.source, table.columns, table.key)
        .read(done, [&](const ado::Result& page, std::size_t first) {
            ado::RowBatch batch = batchOf(written, page);
            const std::size_t rows = page.rows.front().size();
            for (batch.first = first; batch.first < rows; batch.first += batch.count) {
                batch.count = std::min(kRowsATransaction, rows - batch.first);
                append(written, batch, done + static_cast<std::int64_t>(batch.count));
                done += static_cast<std::int64_t>(batch.count);
                progress(done, all);
            }
        });
}

ado::RowBatch TableCopy::batchOf(const Table& table, const ado::Result& page) const {
    ado::RowBatch batch;
    batch.table = toDialect_.qualified(table.target);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const ado::ColumnDefinition& column = table.columns[i];
        if (column.isWritten()) {
            batch.columns.push_back({toDialect_.quoted(toDialect_.nameFor(column.name)),
                                     toDialect_.mark(column), &page.columns[i], &page.rows[i]});
        }
    }
    return batch;
}

// One transaction of rows, with the note that so many have arrived then.
void TableCopy::append(const Table& table, const ado::RowBatch& batch, std::int64_t done) {
    const bool identity = table.identity() != nullptr;
    const std::string before = identity ? toDialect_.beforeRows(table.target) : "";
    const std::string behind = identity ? toDialect_.afterRows(table.target) : "";
    to_.BeginTrans();
    try {
        if (!before.empty()) {
            to_.Execute(before);
        }
        to_.reporting([&] { ado::TableSession::of(*to_.session()).append(batch); });
        if (!behind.empty()) {
            to_.Execute(behind);
        }
        to_.Execute(std::string("UPDATE ") + kCopyNotes + " SET Righe = " + plain::text(done) +
                    " WHERE Tabella = " + noted(table));
        to_.CommitTrans();
    } catch (const AutomationError&) {
        to_.RollbackTrans();
        throw;
    }
}

// The next identity is one that neither database has given out.
void TableCopy::continueIdentity(const Table& table) {
    const ado::ColumnDefinition* identity = table.identity();
    if (identity == nullptr) {
        return;
    }
    const bool up = identity->increment > 0;
    const auto furthest = numberOf(to_, std::string(up ? "SELECT MAX(" : "SELECT MIN(") +
                                            toDialect_.quoted(toDialect_.nameFor(identity->name)) +
                                            ") FROM " + toDialect_.qualified(table.target));
    std::int64_t last =
        lastIdentityOf(from_, fromDialect_, table.source, identity->name).value_or(identity->seed);
    if (furthest) {
        last = up ? std::max(last, *furthest) : std::min(last, *furthest);
    }
    to_.Execute(toDialect_.afterLastRow(table.target, *identity, last, furthest.has_value()));
}

}  // namespace kap::migrate
