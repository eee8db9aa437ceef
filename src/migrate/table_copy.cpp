#include "migrate/table_copy.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "migrate/cell_text.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::migrate {
namespace {

constexpr int kRowsAStatement = 100;
constexpr int kRowsATransaction = 2000;

}  // namespace

struct TableCopy::Table {
    std::string source;  // the names as they stand in each database
    std::string target;
    std::vector<CopiedColumn> columns;
    std::vector<std::string> key;

    [[nodiscard]] const CopiedColumn* identity() const {
        const auto found = std::ranges::find_if(columns, &CopiedColumn::identity);
        return found == columns.end() ? nullptr : &*found;
    }
    [[nodiscard]] std::string rowVersion() const {
        const auto found = std::ranges::find_if(columns, &CopiedColumn::rowVersion);
        return found == columns.end() ? std::string() : found->name;
    }
};

TableCopy::TableCopy(ado::Connection& from, ado::Connection& to)
    : from_(from), to_(to), fromDialect_(CopyDialect::of(from)), toDialect_(CopyDialect::of(to)) {}

void TableCopy::check(const std::vector<std::string>& tables) {
    const bool noted = hasNotes();
    for (const std::string& name : tables) {
        const Table table = describe(name);
        if ((!noted || rowsNoted(table.target) < 0) && isInTarget(table)) {
            requireEmpty(table);
        }
    }
}

std::string TableCopy::targetName(const std::string& table) const {
    return toDialect_.nameFor(table);
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
                " (Tabella varchar(128) NOT NULL PRIMARY KEY, Righe int NOT NULL)");
    // What row versions are kept with, where the database has none of its own.
    CopiedColumn version;
    version.rowVersion = true;
    if (toDialect_.typeFor(version) == "rowversion") {
        to_.Execute(
            "CREATE SEQUENCE IF NOT EXISTS kap_row_versions;"
            "DO $$ BEGIN CREATE DOMAIN rowversion AS bytea; EXCEPTION WHEN duplicate_object THEN "
            "NULL; END $$");
    }
}

void TableCopy::finish() {
    to_.Execute(std::string("DROP TABLE ") + kCopyNotes);
}

CopyOutcome TableCopy::run(const std::string& name,
                           const std::function<void(std::int64_t, std::int64_t)>& progress) {
    const Table table = describe(name);
    std::int64_t done = rowsNoted(table.target);
    if (done < 0) {
        create(table);
        done = 0;
    }
    writeRows(table, done, progress);
    CopyOutcome outcome;
    outcome.source = digest(from_, fromDialect_.quoted(table.source));
    outcome.target = digest(to_, toDialect_.quoted(table.target));
    outcome.rows = outcome.target.rows;
    return outcome;
}

TableCopy::Table TableCopy::describe(const std::string& name) {
    Table table;
    table.source = name;
    table.target = targetName(name);
    table.columns = columnsOf(from_, fromDialect_, name);
    table.key = keyOf(from_, name);
    return table;
}

// The rows of a table that have arrived; -1 when the copy of it has not begun.
std::int64_t TableCopy::rowsNoted(const std::string& target) {
    CopiedColumn text;
    text.type = ado::DataTypeEnum::adVarChar;
    const auto notes = opened(to_, std::string("SELECT Righe FROM ") + kCopyNotes +
                                       " WHERE Tabella = " + toDialect_.literal(text, target));
    return notes->Eof() ? -1 : convert::toLong(notes->Fields()->Item(0)->Value());
}

void TableCopy::create(const Table& table) {
    const std::string quoted = toDialect_.quoted(table.target);
    CopiedColumn text;
    text.type = ado::DataTypeEnum::adVarChar;
    const std::string note = std::string("INSERT INTO ") + kCopyNotes + " VALUES (" +
                             toDialect_.literal(text, table.target) + ", 0)";
    if (isInTarget(table)) {
        requireEmpty(table);
        to_.Execute(note);
        return;
    }
    std::vector<std::string> parts;
    for (const CopiedColumn& column : table.columns) {
        const bool inKey = std::ranges::find(table.key, column.name) != table.key.end();
        const std::string otherwise = toDialect_.defaultFor(column);
        parts.push_back(toDialect_.quoted(toDialect_.nameFor(column.name)) + " " +
                        toDialect_.typeFor(column) +
                        (column.nullable && !inKey ? " NULL" : " NOT NULL") +
                        (otherwise.empty() ? "" : " DEFAULT " + otherwise));
    }
    std::vector<std::string> key;
    for (const std::string& part : table.key) {
        key.push_back(toDialect_.quoted(toDialect_.nameFor(part)));
    }
    if (!key.empty()) {
        parts.push_back("PRIMARY KEY (" + joined(key) + ")");
    }
    to_.BeginTrans();
    try {
        to_.Execute("CREATE TABLE " + quoted + " (" + joined(parts) + ")");
        const std::string more =
            toDialect_.afterCreation(table.target, toDialect_.nameFor(table.rowVersion()));
        if (!more.empty()) {
            to_.Execute(more);
        }
        to_.Execute(note);
        to_.CommitTrans();
    } catch (const AutomationError&) {
        to_.RollbackTrans();
        throw;
    }
}

bool TableCopy::isInTarget(const Table& table) {
    const std::vector<std::string> there = tablesOf(to_);
    return std::ranges::any_of(
        there, [&](const std::string& other) { return equalsIgnoringCase(other, table.target); });
}

void TableCopy::requireEmpty(const Table& table) {
    const auto count = opened(to_, "SELECT COUNT(*) FROM " + toDialect_.quoted(table.target));
    if (convert::toLong(count->Fields()->Item(0)->Value()) != 0) {
        throw std::runtime_error("the target has a table " + table.target +
                                 " with rows in it; empty or drop it first");
    }
}

// Rows are written in transactions of many, each with its note.
void TableCopy::writeRows(const Table& table, std::int64_t done,
                          const std::function<void(std::int64_t, std::int64_t)>& progress) {
    std::vector<std::string> order;
    for (const std::string& part : table.key) {
        order.push_back(fromDialect_.quoted(part));
    }
    const auto rows = opened(from_, "SELECT * FROM " + fromDialect_.quoted(table.source) +
                                        (order.empty() ? "" : " ORDER BY " + joined(order)));
    const std::int64_t all = rows->RecordCount();
    if (order.empty() && done < all) {  // in no order: nobody knows which ones have arrived
        to_.Execute("DELETE FROM " + toDialect_.quoted(table.target));
        done = 0;
    }
    if (done > 0 && done <= all) {
        rows->Move(static_cast<std::int32_t>(done));
    }
    std::vector<std::string> names;
    for (const CopiedColumn& column : table.columns) {
        if (!column.rowVersion) {
            names.push_back(toDialect_.quoted(toDialect_.nameFor(column.name)));
        }
    }
    const bool identity = table.identity() != nullptr;
    const std::string insert = (identity ? toDialect_.beforeRows(table.target) : "") +
                               "INSERT INTO " + toDialect_.quoted(table.target) + " (" +
                               joined(names) + ") VALUES ";
    const std::string behind = identity ? toDialect_.afterRows(table.target) : "";
    CopiedColumn text;
    text.type = ado::DataTypeEnum::adVarChar;
    const auto fields = rows->Fields();
    const auto literals = [&] {
        std::vector<std::string> values;
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            if (table.columns[i].rowVersion) {
                continue;
            }
            const auto value = cellText(*fields->Item(static_cast<std::int32_t>(i)));
            values.push_back(value ? toDialect_.literal(table.columns[i], *value) : "NULL");
        }
        return "(" + joined(values) + ")";
    };
    while (!rows->Eof()) {
        to_.BeginTrans();
        try {
            for (int written = 0; written < kRowsATransaction && !rows->Eof();) {
                std::string values;
                for (int i = 0; i < kRowsAStatement && !rows->Eof(); ++i, ++written, ++done) {
                    values += (values.empty() ? "" : ",\n") + literals();
                    rows->MoveNext();
                }
                to_.Execute(insert + values + behind);
            }
            to_.Execute(std::string("UPDATE ") + kCopyNotes + " SET Righe = " + plain::text(done) +
                        " WHERE Tabella = " + toDialect_.literal(text, table.target));
            to_.CommitTrans();
        } catch (const AutomationError&) {
            to_.RollbackTrans();
            throw;
        }
        progress(done, all);
    }
    if (identity) {
        const std::string last =
            toDialect_.afterLastRow(table.target, toDialect_.nameFor(table.identity()->name));
        if (!last.empty()) {
            to_.Execute(last);
        }
    }
}

TableDigest TableCopy::digest(ado::Connection& connection, const std::string& quotedName) {
    const auto rows = opened(connection, "SELECT * FROM " + quotedName);
    const std::vector<CopiedColumn> columns = columnsOf(*rows);
    const auto fields = rows->Fields();
    TableDigest made;
    for (; !rows->Eof(); rows->MoveNext()) {
        made.add(columns, *fields);
    }
    return made;
}

}  // namespace kap::migrate
