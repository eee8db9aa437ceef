#include "ado/update_plan.hpp"

#include <algorithm>
#include <utility>

#include "ado/row_table.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

void addOnce(std::vector<std::string>& names, const std::string& name) {
    if (std::ranges::find(names, name) == names.end()) {
        names.push_back(name);
    }
}

bool belongsTo(const ColumnInfo& column, const std::string& table) {
    return !column.baseColumn.empty() && column.baseTable == table;
}

void readBack(RowChange& change, const ColumnInfo& column) {
    change.readBack.push_back(column.baseColumn);
    change.readBackScales.push_back(column.numericScale);
}

// A row of a recordset made by hand belongs to no table.
void requireTables(const std::vector<std::string>& names) {
    if (std::ranges::find(names, std::string()) != names.end()) {
        fail::notOneTable();
    }
}

}  // namespace

UpdatePlanner::UpdatePlanner(const RowTable& rows, std::size_t row, RowCheck check)
    : rows_(rows), result_(rows.result()), row_(row), check_(check) {}

std::vector<RowChange> UpdatePlanner::updates(const PendingValues& values) const {
    std::vector<std::string> changed;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i]) {
            addOnce(changed, result_.columns[i].baseTable);
        }
    }
    requireTables(changed);
    std::vector<RowChange> plan;
    for (const std::string& table : changed) {
        RowChange change = located(RowChange::Kind::Update, table);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const ColumnInfo& column = result_.columns[i];
            if (!belongsTo(column, table)) {
                continue;
            }
            if (values[i]) {
                change.values.push_back(
                    {column.baseColumn, column.type, column.numericScale, *values[i]});
                if (check_.criteria == UpdateCriteriaEnum::adCriteriaUpdCols) {
                    change.criteria.push_back(fetched(i));
                }
            }
            if (values[i] || column.rowVersion || column.generated) {
                readBack(change, column);
            }
        }
        plan.push_back(std::move(change));
    }
    return plan;
}

RowChange UpdatePlanner::insertion(const PendingValues& values) const {
    std::vector<std::string> assigned;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i]) {
            addOnce(assigned, result_.columns[i].baseTable);
        }
    }
    requireTables(assigned);
    const std::vector<std::string> targets = assigned.empty() ? tables() : assigned;
    if (targets.size() != 1) {
        fail::notOneTable();
    }
    RowChange change;
    change.kind = RowChange::Kind::Insert;
    change.table = targets.front();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const ColumnInfo& column = result_.columns[i];
        if (!belongsTo(column, change.table)) {
            continue;
        }
        if (values[i]) {
            change.values.push_back(
                {column.baseColumn, column.type, column.numericScale, *values[i]});
        }
        readBack(change, column);
    }
    return change;
}

RowChange UpdatePlanner::deletion() const {
    const std::vector<std::string> from = tables();
    if (from.size() != 1) {
        fail::notOneTable();
    }
    return located(RowChange::Kind::Delete, from.front());
}

std::vector<RowChange> UpdatePlanner::reads() const {
    std::vector<RowChange> plan;
    for (const std::string& table : tables()) {
        RowChange change = located(RowChange::Kind::Read, table);
        for (const ColumnInfo& column : result_.columns) {
            if (belongsTo(column, table)) {
                readBack(change, column);
            }
        }
        plan.push_back(std::move(change));
    }
    return plan;
}

RowChange UpdatePlanner::located(RowChange::Kind kind, const std::string& table) const {
    RowChange change;
    change.kind = kind;
    change.table = table;
    const bool hasKey = std::ranges::any_of(result_.columns, [&](const ColumnInfo& column) {
        return column.key && belongsTo(column, table);
    });
    const bool writes = kind != RowChange::Kind::Read;
    const bool byVersion = check_.criteria == UpdateCriteriaEnum::adCriteriaTimeStamp;
    const bool hasVersion = std::ranges::any_of(result_.columns, [&](const ColumnInfo& column) {
        return column.rowVersion && belongsTo(column, table);
    });
    const bool versioned = writes && (check_.version || byVersion);
    const bool whole = writes && (check_.criteria == UpdateCriteriaEnum::adCriteriaAllCols ||
                                  (byVersion && !hasVersion));
    for (std::size_t i = 0; i < result_.columns.size(); ++i) {
        const ColumnInfo& column = result_.columns[i];
        if (belongsTo(column, table) &&
            (whole || !hasKey || column.key || (versioned && column.rowVersion))) {
            change.criteria.push_back(fetched(i));
        }
    }
    return change;
}

ColumnValue UpdatePlanner::fetched(std::size_t column) const {
    const ColumnInfo& info = result_.columns[column];
    return {info.baseColumn, info.type, info.numericScale, rows_.underlying(row_, column)};
}

std::vector<std::string> UpdatePlanner::tables() const {
    std::vector<std::string> names;
    for (const ColumnInfo& column : result_.columns) {
        if (!column.baseColumn.empty()) {
            addOnce(names, column.baseTable);
        }
    }
    requireTables(names);
    return names;
}

}  // namespace kap::ado
