#include "migrate/relation_copy.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/error.hpp>

namespace kap::migrate {
namespace {

bool contains(const std::vector<ado::ObjectName>& names, const ado::ObjectName& name) {
    return std::ranges::any_of(names,
                               [&](const ado::ObjectName& each) { return each.isAlike(name); });
}

}  // namespace

RelationCopy::RelationCopy(ado::Connection& from, ado::Connection& to,
                           std::function<void(const std::string&)> tell)
    : from_(from),
      to_(to),
      fromDialect_(dialectOf(from)),
      toDialect_(dialectOf(to)),
      tell_(std::move(tell)),
      foreignKeys_(foreignKeysOf(from, fromDialect_)) {}

std::vector<ado::ObjectName> RelationCopy::inOrder(
    const std::vector<ado::ObjectName>& tables) const {
    std::vector<ado::ObjectName> ordered;
    std::vector<ado::ObjectName> begun;
    const std::function<void(const ado::ObjectName&)> add = [&](const ado::ObjectName& table) {
        if (contains(begun, table)) {
            return;  // also a circle ends here
        }
        begun.push_back(table);
        for (const CopiedForeignKey& key : foreignKeys_) {
            if (key.table.isAlike(table) && contains(tables, key.referenced)) {
                add(key.referenced);
            }
        }
        ordered.push_back(table);
    };
    std::ranges::for_each(tables, add);
    return ordered;
}

void RelationCopy::copy(const std::vector<ado::ObjectName>& tables) {
    for (const ado::ObjectName& table : tables) {
        addIndexes(table);
    }
    const std::vector<ado::ObjectName> there = allTablesOf(to_, toDialect_);
    const std::vector<CopiedForeignKey> known = foreignKeysOf(to_, toDialect_);
    for (const CopiedForeignKey& key : foreignKeys_) {
        const bool exists = std::ranges::any_of(known, [&](const CopiedForeignKey& other) {
            return equalsIgnoringCase(other.name, toDialect_.nameFor(key.name)) &&
                   other.table.isAlike(toDialect_.nameFor(key.table));
        });
        if (contains(tables, key.table) && contains(there, toDialect_.nameFor(key.referenced)) &&
            !exists) {
            addForeignKey(key);
        }
    }
}

void RelationCopy::addIndexes(const ado::ObjectName& table) {
    const ado::ObjectName target = toDialect_.nameFor(table);
    const std::vector<CopiedIndex> known = indexesOf(to_, toDialect_, target);
    for (const CopiedIndex& index : indexesOf(from_, fromDialect_, table)) {
        if (index.kind == CopiedIndex::Kind::PrimaryKey) {
            continue;
        }
        if (index.expressions || (!index.filter.empty() && !toDialect_.reads(fromDialect_))) {
            tell_("The index " + index.name + " of " + table.text() +
                  " stays behind: it is of expressions or of some rows only.");
            continue;
        }
        const std::string name = newName(index.name, target);
        const bool exists = std::ranges::any_of(
            known, [&](const CopiedIndex& other) { return equalsIgnoringCase(other.name, name); });
        if (!exists) {
            run("The index " + index.name + " of " + table.text(), creation(index, name, target));
        }
    }
}

std::string RelationCopy::creation(const CopiedIndex& index, const std::string& name,
                                   const ado::ObjectName& target) const {
    std::vector<std::string> parts;
    for (const CopiedIndex::Part& part : index.parts) {
        parts.push_back(toDialect_.quoted(toDialect_.nameFor(part.column)) +
                        (part.descending ? " DESC" : ""));
    }
    const std::string columns = " (" + joined(parts) + ")";
    if (index.kind == CopiedIndex::Kind::UniqueKey) {
        return "ALTER TABLE " + toDialect_.qualified(target) + " ADD CONSTRAINT " +
               toDialect_.quoted(name) + " UNIQUE (" + columnList(index.columns()) + ")";
    }
    return std::string(index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
           toDialect_.quoted(name) + " ON " + toDialect_.qualified(target) + columns +
           (index.carried.empty() ? "" : " INCLUDE (" + columnList(index.carried) + ")") +
           (index.filter.empty() ? "" : " WHERE " + index.filter);
}

void RelationCopy::addForeignKey(const CopiedForeignKey& key) {
    const std::string what = "The foreign key " + key.name + " of " + key.table.text();
    const std::string table = "ALTER TABLE " + toDialect_.qualified(toDialect_.nameFor(key.table));
    const std::string name = toDialect_.quoted(toDialect_.nameFor(key.name));
    const bool off = key.disabled && toDialect_.reads(fromDialect_);
    const bool added =
        run(what, table + (off ? toDialect_.unchecked() : "") + " ADD CONSTRAINT " + name +
                      " FOREIGN KEY (" + columnList(key.columns) + ") REFERENCES " +
                      toDialect_.qualified(toDialect_.nameFor(key.referenced)) + " (" +
                      columnList(key.referencedColumns) + ") ON DELETE " + key.onDelete +
                      " ON UPDATE " + key.onUpdate);
    if (added && off) {
        run(what + ", as a switched-off one,",
            toDialect_.switchingOffConstraint(toDialect_.nameFor(key.table),
                                              toDialect_.nameFor(key.name)));
    }
}

// What the definition of a table could not say: expressions, which may call what has come along.
void RelationCopy::copyDefaults(const std::vector<ado::ObjectName>& tables) {
    for (const ado::ObjectName& table : tables) {
        const std::vector<ado::ColumnDefinition> there =
            columnsOf(to_, toDialect_, toDialect_.nameFor(table));
        for (const ado::ColumnDefinition& column : columnsOf(from_, fromDialect_, table)) {
            const bool other = column.defaultValue.kind != ado::DefaultValue::Kind::None &&
                               toDialect_.defaultFor(column).empty();
            const bool exists = std::ranges::any_of(there, [&](const ado::ColumnDefinition& each) {
                return equalsIgnoringCase(each.name, column.name) && !each.defaultText.empty();
            });
            if (other && !exists) {
                addDefault(table, column);
            }
        }
    }
}

void RelationCopy::addDefault(const ado::ObjectName& table, const ado::ColumnDefinition& column) {
    const std::string what = "The default of " + table.text() + "." + column.name;
    if (!toDialect_.reads(fromDialect_)) {
        tell_(what + " stays behind: " + column.defaultText);
        return;
    }
    run(what, toDialect_.addingDefault(table, column));
}

// Names of indexes are the table's with some databases, and the whole schema's with others.
std::string RelationCopy::newName(const std::string& name, const ado::ObjectName& table) {
    ado::ObjectName made(toDialect_.nameFor(name), table.schema);
    if (!toDialect_.reads(fromDialect_) && contains(namesGiven_, made)) {
        made.name.insert(0, table.name + "_");
    }
    namesGiven_.push_back(made);
    return made.name;
}

std::string RelationCopy::columnList(const std::vector<std::string>& columns) const {
    std::vector<std::string> quoted;
    quoted.reserve(columns.size());
    for (const std::string& column : columns) {
        quoted.push_back(toDialect_.quoted(toDialect_.nameFor(column)));
    }
    return joined(quoted);
}

bool RelationCopy::run(const std::string& what, const std::string& script) {
    try {
        to_.Execute(script);
        return true;
    } catch (const AutomationError& error) {
        tell_(what + " stays behind: " + error.description().utf8());
        return false;
    }
}

}  // namespace kap::migrate
