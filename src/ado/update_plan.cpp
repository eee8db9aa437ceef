#include "ado/update_plan.hpp"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/ascii.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

// Of records each of which has other columns assigned.
constexpr std::size_t kMostKept = 32;

void addOnce(std::vector<std::string>& names, const std::string& name) {
    if (std::ranges::find(names, name) == names.end()) {
        names.push_back(name);
    }
}

std::vector<bool> assignedIn(const PendingValues& values) {
    std::vector<bool> assigned(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        assigned[i] = values[i].has_value();
    }
    return assigned;
}

// With or without its schema, as the client has named it; no name is that of every table.
bool isNamed(std::string_view table, std::string_view name) {
    if (table.size() > name.size() && table[table.size() - name.size() - 1] == '.') {
        table.remove_prefix(table.size() - name.size());
    }
    return name.empty() || equalsIgnoringCase(table, name);
}

RowColumn rowColumn(const ColumnInfo& column) {
    return {column.baseColumn, column.type, column.numericScale};
}

// Makes the plan for one table of a result.
class TablePlanner {
public:
    TablePlanner(const std::vector<ColumnInfo>& columns, std::string table)
        : columns_(columns), table_(std::move(table)) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (!columns_[i].baseColumn.empty() && columns_[i].baseTable == table_) {
                own_.push_back(i);
            }
        }
    }

    void write(const std::vector<bool>& assigned) {
        for (const std::size_t i : own_) {
            if (i < assigned.size() && assigned[i]) {
                made_.values.push_back(i);
                told_.values.push_back(rowColumn(columns_[i]));
            }
        }
    }

    void locate(bool writes, const WriteRules& rules) {
        const bool hasKey = any(&ColumnInfo::key);
        const bool byVersion = rules.criteria == UpdateCriteriaEnum::adCriteriaTimeStamp;
        const bool versioned = writes && (rules.checksVersion || byVersion);
        const bool whole = writes && (rules.criteria == UpdateCriteriaEnum::adCriteriaAllCols ||
                                      (byVersion && !any(&ColumnInfo::rowVersion)));
        for (const std::size_t i : own_) {
            const ColumnInfo& column = columns_[i];
            if (whole || !hasKey || column.key || (versioned && column.rowVersion)) {
                compare(i);
            }
        }
    }

    // The row must hold what the client saw in the columns that are written.
    void requireUnchanged() {
        for (const std::size_t i : made_.values) {
            compare(i);
        }
    }

    // Every column of the result that shows what is read back takes it.
    template <class Wanted>
    void readBack(Wanted wanted) {
        std::unordered_map<std::string_view, std::size_t> answers;
        for (const std::size_t i : own_) {
            if (wanted(i) && answers.try_emplace(columns_[i].baseColumn, answers.size()).second) {
                told_.readBack.push_back(rowColumn(columns_[i]));
            }
        }
        for (const std::size_t i : own_) {
            if (const auto found = answers.find(columns_[i].baseColumn); found != answers.end()) {
                made_.taken.push_back({found->second, i});
            }
        }
    }

    [[nodiscard]] TablePlan planned(RowPlan::Kind kind) && {
        made_.plan = std::make_shared<const RowPlan>(kind, std::move(table_), std::move(told_));
        return std::move(made_);
    }

private:
    [[nodiscard]] bool any(bool ColumnInfo::*property) const {
        return std::ranges::any_of(own_,
                                   [&](std::size_t column) { return columns_[column].*property; });
    }
    void compare(std::size_t column) {
        made_.criteria.push_back(column);
        told_.criteria.push_back(rowColumn(columns_[column]));
    }

    const std::vector<ColumnInfo>& columns_;
    std::string table_;
    std::vector<std::size_t> own_;  // the table's columns
    TablePlan made_;
    RowPlan::Columns told_;
};

}  // namespace

UpdatePlans::Plans UpdatePlans::updates(const PendingValues& values, const WriteRules& rules) {
    return of({RowPlan::Kind::Update, rules, assignedIn(values)});
}

UpdatePlans::Plans UpdatePlans::insertion(const PendingValues& values, const WriteRules& rules) {
    return of({RowPlan::Kind::Insert, rules, assignedIn(values)});
}

UpdatePlans::Plans UpdatePlans::deletion(const WriteRules& rules) {
    return of({RowPlan::Kind::Delete, rules, {}});
}

UpdatePlans::Plans UpdatePlans::reads(const WriteRules& rules) {
    return of({RowPlan::Kind::Read, rules, {}});
}

UpdatePlans::Plans UpdatePlans::of(Change change) {
    const auto known = std::ranges::find(made_, change, &Made::change);
    if (known != made_.end()) {
        made_.splice(made_.begin(), made_, known);
        return known->plans;
    }
    auto plans = std::make_shared<const std::vector<TablePlan>>(make(change));
    if (made_.size() == kMostKept) {
        made_.pop_back();
    }
    made_.push_front({std::move(change), plans});
    return plans;
}

std::vector<TablePlan> UpdatePlans::make(const Change& change) const {
    using Kind = RowPlan::Kind;
    std::vector<TablePlan> plans;
    for (const std::string& table : tablesOf(change)) {
        TablePlanner planner(columns_, table);
        planner.write(change.assigned);
        if (change.kind != Kind::Insert) {
            planner.locate(change.kind != Kind::Read, change.rules);
        }
        if (change.kind == Kind::Update) {
            if (change.rules.criteria == UpdateCriteriaEnum::adCriteriaUpdCols) {
                planner.requireUnchanged();
            }
            planner.readBack([&](std::size_t i) {
                return change.assigned[i] || columns_[i].rowVersion || columns_[i].generated ||
                       change.rules.readsWhole;
            });
        } else if (change.kind != Kind::Delete) {
            planner.readBack([](std::size_t) { return true; });
        }
        plans.push_back(std::move(planner).planned(change.kind));
    }
    return plans;
}

// A row of a recordset made by hand belongs to no table.
std::vector<std::string> UpdatePlans::tablesOf(const Change& change) const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < change.assigned.size(); ++i) {
        if (change.assigned[i]) {
            addOnce(names, columns_[i].baseTable);
        }
    }
    const bool all = names.empty() && change.kind != RowPlan::Kind::Update;
    for (std::size_t i = 0; all && i < columns_.size(); ++i) {
        if (!columns_[i].baseColumn.empty()) {
            addOnce(names, columns_[i].baseTable);
        }
    }
    const auto isWritten = [&](const std::string& name) {
        return isNamed(name, change.rules.onlyTable);
    };
    if (all) {
        std::erase_if(names, [&](const std::string& name) { return !isWritten(name); });
    } else if (!std::ranges::all_of(names, isWritten)) {
        fail::notOneTable();
    }
    const bool one = change.kind == RowPlan::Kind::Insert || change.kind == RowPlan::Kind::Delete;
    if (std::ranges::find(names, std::string()) != names.end() || (one && names.size() != 1)) {
        fail::notOneTable();
    }
    return names;
}

}  // namespace kap::ado
