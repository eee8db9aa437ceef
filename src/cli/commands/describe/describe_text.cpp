#include <algorithm>
#include <ostream>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/describe/describe_output.hpp"
#include "cli/output/shown_text.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::cli {
namespace {

std::string remarks(const ColumnFact& column) {
    std::string text = column.nullable ? "" : "not null";
    const auto add = [&text](const std::string& more) {
        text += (text.empty() ? "" : ", ") + more;
    };
    if (column.identity) {
        add("identity");
    }
    if (column.computed) {
        add("computed");
    }
    if (!column.defaultValue.empty()) {
        add("default " + column.defaultValue);
    }
    return text;
}

void line(std::ostream& out, const std::string& what, const std::string& text) {
    out << "  " << what << " " << shownText(text) << '\n';
}

void print(std::ostream& out, const TableFact& table, const Terminal& terminal) {
    out << terminal.styled(Style::Bold, shownText(table.name)) << "  " << table.rows
        << (table.rows == 1 ? " row\n" : " rows\n");
    std::size_t names = 0;
    std::size_t types = 0;
    for (const ColumnFact& column : table.columns) {
        names = std::max(names, columnsOf(column.name));
        types = std::max(types, columnsOf(column.type));
    }
    for (const ColumnFact& column : table.columns) {
        std::string text = "  " + padded(shownText(column.name), names) + "  " +
                           padded(column.type, types) + "  " + shownText(remarks(column));
        text.erase(text.find_last_not_of(' ') + 1);
        out << text << '\n';
    }
    for (const IndexFact& index : table.indexes) {
        line(out,
             index.primary  ? "primary key"
             : index.unique ? "unique"
                            : "index",
             index.name + " (" + migrate::joined(index.columns) + ")");
    }
    for (const ForeignKeyFact& key : table.foreignKeys) {
        line(out, "refers",
             key.name + " (" + migrate::joined(key.columns) + ") to " + key.target + " (" +
                 migrate::joined(key.targetColumns) + ")");
    }
    for (const ModuleFact& check : table.checks) {
        line(out, "check", check.name + " " + check.definition);
    }
    for (const ModuleFact& trigger : table.triggers) {
        line(out, "trigger", trigger.name);
    }
}

}  // namespace

void printFacts(std::ostream& out, const DatabaseFacts& facts, const Terminal& terminal) {
    if (facts.bytes) {
        out << plain::text(*facts.bytes) << " bytes\n\n";
    }
    for (const TableFact& table : facts.tables) {
        print(out, table, terminal);
        out << '\n';
    }
    for (const ModuleFact& one : facts.modules) {
        out << one.kind << " " << terminal.styled(Style::Bold, shownText(one.name)) << '\n';
    }
    if (facts.tables.empty() && facts.modules.empty()) {
        out << "No tables.\n";
    }
}

}  // namespace kap::cli
