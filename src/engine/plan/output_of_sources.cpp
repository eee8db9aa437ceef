#include <algorithm>

#include "engine/plan/capture.hpp"
#include "engine/plan/found_rows.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

// OUTPUT that reads columns of the other tables of FROM. What they hold is gone or changed once the
// target is written, so the rows are found first and kept.
namespace kap::engine {

namespace {

// The other sources as OUTPUT reads them, and what their columns are where rows are found.
struct OtherSources {
    std::vector<Source> sources;
    std::vector<sql::Expression> columns;
};

OtherSources otherSources(const Scope& scope) {
    OtherSources others;
    for (std::size_t i = 0; i < scope.sources.size(); ++i) {
        if (i == scope.target) continue;
        others.sources.push_back(FoundRows::foundSource(scope.sources[i], others.columns.size()));
        for (const SourceColumn& column : scope.sources[i].columns)
            others.columns.push_back(column.value.tree);
    }
    return others;
}

// Whether OUTPUT reads a column of the found rows; a query in it may read any of them.
bool reads(const std::vector<OutputColumn>& items, std::size_t column) {
    const sql::Expression wanted = foundValue(column);
    const auto& name = *wanted.as<sql::Column>();
    return std::ranges::any_of(items, [&](const OutputColumn& item) {
        return sql::contains(item.value.tree, [&](const sql::Kind& kind) {
            const auto* own = std::get_if<sql::Column>(&kind);
            return own != nullptr ? *own == name : sql::holdsQuery(kind);
        });
    });
}

// Forgets the columns that OUTPUT does not read; whether any is left.
bool keepRead(std::vector<sql::Expression>& columns, const std::vector<OutputColumn>& items) {
    bool any = false;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bool read = reads(items, i);
        any = any || read;
        if (!read) columns[i] = sql::null();
    }
    return any;
}

}  // namespace

std::optional<MergePlan> outputOfSources(const WriteFrom& write, Binder& binder) {
    if (!write.output || write.scope.sources.size() < 2) return std::nullopt;
    const Table& table = *write.rows.table;
    const FoundRows found(table);
    OtherSources others = otherSources(write.scope);
    Scope scope;
    const bool updates = write.event == tsql::kOnUpdate;
    if (updates) scope.sources.push_back(found.written(RowState::Inserted));
    scope.sources.push_back(found.written(RowState::Deleted));
    for (Source& source : scope.sources)
        showThroughView(source, table, binder);
    for (Source& source : others.sources)
        scope.sources.push_back(std::move(source));
    Capture capture;
    capture.event = write.event;
    capture.forTriggers = (table.triggerEvents & write.event) != 0;
    const std::vector<OutputColumn> items =
        addOutput(capture, *write.output, table, scope, found.output(), binder);
    if (!keepRead(others.columns, items)) return std::nullopt;
    if (!binder.commonTarget().checks.empty()) {
        throw tsql::unsupported("OUTPUT of other tables through a view WITH CHECK OPTION", 0);
    }
    std::vector<sql::Expression> values;
    std::vector<const Column*> columns;
    MergeStep step;
    for (const BoundAssignment& each : write.assignments) {
        values.push_back(each.value);
        columns.push_back(each.column);
        step.columns.push_back(each.column->name);
    }
    step.event = write.event;
    step.sql =
        updates ? sqlOf(sql::Write{found.update(columns, 0)}) : sqlOf(sql::Write{found.removal(0)});
    step.keep = sqlOf(sql::Write{found.keep(write.event, 0)});
    MergePlan plan;
    plan.verb = updates ? Verb::Update : Verb::Delete;
    plan.target = writeTarget(table, binder.names());
    plan.capture = std::move(capture);
    found.makeTables(plan, values.size(), others.columns.size(), true);
    sql::Select rows =
        write.rows.select(found.foundItems(write.rows.rowNumber, 0, values, others.columns));
    rows.limit = write.rows.limit;
    plan.find = {sqlOf(sql::Write{found.find(values.size(), others.columns.size(), std::move(rows)),
                                  write.with}),
                 // A row that was found several times is written once.
                 sqlOf(sql::Write{found.keepFirst()})};
    plan.steps.push_back(std::move(step));
    found.refill(plan);
    return plan;
}

}  // namespace kap::engine
