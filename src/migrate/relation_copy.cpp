#include "migrate/relation_copy.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"

namespace kap::migrate {
namespace {

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::any_of(
        names, [&](const std::string& each) { return equalsIgnoringCase(each, name); });
}

// The columns of a table by their names; a name that is none of them gives none at all.
std::vector<CopiedColumn> picked(const std::vector<CopiedColumn>& columns,
                                 const std::vector<std::string>& names) {
    std::vector<CopiedColumn> found;
    for (const std::string& name : names) {
        const auto column = std::ranges::find_if(
            columns, [&](const CopiedColumn& each) { return equalsIgnoringCase(each.name, name); });
        if (column == columns.end()) {
            return {};
        }
        found.push_back(*column);
    }
    return found;
}

bool sameTypes(const std::vector<CopiedColumn>& left, const std::vector<CopiedColumn>& right) {
    return std::ranges::equal(left, right, [](const CopiedColumn& one, const CopiedColumn& other) {
        return one.type == other.type && one.size == other.size;
    });
}

std::vector<std::string> columnsIn(const CopiedIndex& index) {
    std::vector<std::string> names;
    for (const CopiedIndex::Part& part : index.parts) {
        names.push_back(part.column);
    }
    return names;
}

}  // namespace

RelationCopy::RelationCopy(ado::Connection& from, ado::Connection& to,
                           std::function<void(const std::string&)> tell)
    : from_(from),
      to_(to),
      fromDialect_(CopyDialect::of(from)),
      toDialect_(CopyDialect::of(to)),
      tell_(std::move(tell)),
      foreignKeys_(foreignKeysOf(from, fromDialect_)) {}

std::vector<std::string> RelationCopy::inOrder(const std::vector<std::string>& tables) const {
    std::vector<std::string> ordered;
    std::vector<std::string> begun;
    const std::function<void(const std::string&)> add = [&](const std::string& table) {
        if (contains(begun, table)) {
            return;  // also a circle ends here
        }
        begun.push_back(table);
        for (const CopiedForeignKey& key : foreignKeys_) {
            if (equalsIgnoringCase(key.table, table) && contains(tables, key.referenced)) {
                add(key.referenced);
            }
        }
        ordered.push_back(table);
    };
    std::ranges::for_each(tables, add);
    return ordered;
}

void RelationCopy::copy(const std::vector<std::string>& tables) {
    for (const std::string& table : tables) {
        addIndexes(table);
    }
    const std::vector<std::string> there = tablesOf(to_);
    const std::vector<CopiedForeignKey> known = foreignKeysOf(to_, toDialect_);
    for (const CopiedForeignKey& key : foreignKeys_) {
        const bool exists = std::ranges::any_of(known, [&](const CopiedForeignKey& other) {
            return equalsIgnoringCase(other.name, key.name) &&
                   equalsIgnoringCase(other.table, key.table);
        });
        if (contains(tables, key.table) && contains(there, key.referenced) && !exists) {
            addForeignKey(key);
        }
    }
}

void RelationCopy::addIndexes(const std::string& table) {
    const std::string target = toDialect_.nameFor(table);
    const std::vector<CopiedIndex> known = indexesOf(to_, target);
    std::vector<std::string> special;
    const auto rows = opened(from_, fromDialect_.specialIndexes());
    for (; !rows->Eof(); rows->MoveNext()) {
        special.push_back(textOf(rows, 0));
    }
    for (const CopiedIndex& index : indexesOf(from_, table)) {
        if (contains(special, index.name)) {
            tell_("The index " + index.name + " of " + table +
                  " stays behind: it is of expressions or of some rows only.");
            continue;
        }
        const std::string name = newName(index.name, target);
        const bool exists = std::ranges::any_of(
            known, [&](const CopiedIndex& other) { return equalsIgnoringCase(other.name, name); });
        if (exists) {
            continue;
        }
        std::vector<std::string> parts;
        for (const CopiedIndex::Part& part : index.parts) {
            parts.push_back(toDialect_.quoted(toDialect_.nameFor(part.column)) +
                            (part.descending ? " DESC" : ""));
        }
        run("The index " + index.name + " of " + table,
            std::string(index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
                toDialect_.quoted(name) + " ON " + toDialect_.quoted(target) + " (" +
                joined(parts) + ")");
    }
}

void RelationCopy::addForeignKey(CopiedForeignKey key) {
    const std::string what = "The foreign key " + key.name + " of " + key.table;
    if (key.referencedColumns.empty()) {
        key.referencedColumns = referencedBy(key);
    }
    if (key.referencedColumns.empty()) {
        tell_(what + " stays behind: which columns of " + key.referenced +
              " it refers to is not known.");
        return;
    }
    run(what, "ALTER TABLE " + toDialect_.quoted(toDialect_.nameFor(key.table)) +
                  " ADD CONSTRAINT " + toDialect_.quoted(toDialect_.nameFor(key.name)) +
                  " FOREIGN KEY (" + columnList(key.columns) + ") REFERENCES " +
                  toDialect_.quoted(toDialect_.nameFor(key.referenced)) + " (" +
                  columnList(key.referencedColumns) + ") ON DELETE " + key.onDelete +
                  " ON UPDATE " + key.onUpdate);
}

// The only key of the referenced table whose columns are of the same types.
std::vector<std::string> RelationCopy::referencedBy(const CopiedForeignKey& key) const {
    const auto columns = columnsOf(from_, fromDialect_, key.referenced);
    const auto own = picked(columnsOf(from_, fromDialect_, key.table), key.columns);
    std::vector<std::vector<std::string>> keys = {keyOf(from_, key.referenced)};
    for (const CopiedIndex& index : indexesOf(from_, key.referenced)) {
        if (index.unique) {
            keys.push_back(columnsIn(index));
        }
    }
    std::erase_if(keys, [&](const std::vector<std::string>& each) {
        return each.empty() || !sameTypes(picked(columns, each), own);
    });
    return keys.size() == 1 ? keys.front() : std::vector<std::string>();
}

void RelationCopy::tellPrograms(const std::vector<std::string>& tables) {
    const auto rows = opened(from_, fromDialect_.programs());
    for (; !rows->Eof(); rows->MoveNext()) {
        tell_("The " + textOf(rows, 0) + " " + textOf(rows, 1) +
              " stays behind: it is written in its database's dialect.");
    }
    for (const std::string& table : tables) {
        for (const CopiedColumn& column : columnsOf(from_, fromDialect_, table)) {
            if (column.defaultValue.kind != DefaultValue::Kind::None &&
                toDialect_.defaultFor(column).empty()) {
                tell_("The default of " + table + "." + column.name +
                      " stays behind: " + column.defaultValue.text);
            }
        }
    }
}

// Names of indexes are the table's with some databases, and the whole database's with others.
std::string RelationCopy::newName(const std::string& name, const std::string& table) {
    std::string made = toDialect_.nameFor(name);
    if (contains(namesGiven_, made)) {
        made = table + "_" + made;
    }
    namesGiven_.push_back(made);
    return made;
}

std::string RelationCopy::columnList(const std::vector<std::string>& columns) const {
    std::vector<std::string> quoted;
    quoted.reserve(columns.size());
    for (const std::string& column : columns) {
        quoted.push_back(toDialect_.quoted(toDialect_.nameFor(column)));
    }
    return joined(quoted);
}

void RelationCopy::run(const std::string& what, const std::string& script) {
    try {
        to_.Execute(script);
    } catch (const AutomationError& error) {
        tell_(what + " stays behind: " + error.description().utf8());
    }
}

}  // namespace kap::migrate
