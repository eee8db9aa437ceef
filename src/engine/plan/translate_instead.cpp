#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/found_rows.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

// UPDATE and DELETE that a trigger fires instead of. The rows of the target, which may be a view,
// are found with their new values, and put where the trigger looks for them.
namespace kap::engine {

using tsql::ServerError;

namespace {

// The parts of both statements.
struct InsteadWrite {
    const tsql::ObjectName& table;
    const std::vector<tsql::TableSourcePtr>& from;
    const tsql::ExpressionPtr& where;
    const std::optional<tsql::TopClause>& top;
    const std::vector<tsql::CommonTable>& commonTables;
    const std::optional<tsql::OutputClause>& output;
    int maxRecursion;
    const tsql::UpdateStatement* update;  // null for DELETE
};

// The columns of a view as a table.
Table shapeOfView(const InsteadTarget& target, const Source& source) {
    Table shape;
    shape.name = target.name;
    shape.captureLevel = target.level;
    for (const SourceColumn& each : source.columns) {
        Column& column = shape.columns.emplace_back();
        column.name = each.name;
        column.type = each.value.type;
    }
    return shape;
}

class InsteadWriter {
public:
    InsteadWriter(const InsteadWrite& write, const InsteadTarget& target, std::uint8_t event,
                  const NameScope& names)
        : write_(write), target_(target), event_(event), binder_(names) {}

    StatementPlan plan() {
        if (write_.output && !write_.output->into) {
            throw ServerError(tsql::Message::OutputOfTableWithTriggers, {bareName(target_.name)});
        }
        if (write_.output) {
            throw tsql::unsupported("OUTPUT INTO with an INSTEAD OF trigger", write_.table.line);
        }
        binder_.limitRecursion(write_.maxRecursion);
        std::vector<sql::CommonTable> with = binder_.commonTables(write_.commonTables, nullptr);
        Scope scope;
        bindSources(scope);
        const Source& source = scope.sources[scope.target];
        shape_ = target_.table != nullptr ? *target_.table : shapeOfView(target_, source);
        std::vector<BoundAssignment> assignments;
        sql::Select rows;
        rows.from = std::move(from_);
        if (write_.update != nullptr) {
            assignments = bindAssignments(*write_.update, shape_, binder_, scope);
        }
        if (write_.where) {
            scope.aggregates = AggregateUse::RefusedInWhere;
            rows.where = binder_.condition(*write_.where, scope);
        }
        if (write_.top) rows.limit = binder_.limit(*write_.top, scope);
        return planOf(std::move(with), std::move(rows), source, assignments);
    }

private:
    void bindSources(Scope& scope) {
        BoundSource bound = binder_.targetFrom(write_.from, scope);
        const auto isTarget = [&](const Source& each) {
            const bool named =
                write_.table.parts.size() == 1 && sameName(each.name, write_.table.last());
            return named || sameName(each.object, target_.name) ||
                   (target_.table != nullptr && each.table == target_.table);
        };
        auto found = std::ranges::find_if(bound.sources, isTarget);
        if (found == bound.sources.end()) {
            BoundSource own = binder_.namedSource(write_.table);
            if (!bound.from.empty()) {
                sql::join(own.from, sql::JoinOperator::Inner, std::move(bound.from));
            }
            bound.from = std::move(own.from);
            bound.sources.insert(bound.sources.begin(), std::move(own.sources.front()));
            found = bound.sources.begin();
        }
        scope.target = static_cast<std::size_t>(found - bound.sources.begin());
        scope.sources = std::move(bound.sources);
        from_ = std::move(bound.from);
    }

    StatementPlan planOf(std::vector<sql::CommonTable> with, sql::Select select,
                         const Source& source, const std::vector<BoundAssignment>& assignments) {
        const FoundRows found(shape_);
        InsteadPlan plan;
        MergePlan tables;
        std::vector<sql::Expression> values;
        std::vector<const Column*> assigned;
        for (const BoundAssignment& each : assignments) {
            values.push_back(each.value);
            assigned.push_back(each.column);
            plan.columns.push_back(each.column->name);
        }
        std::vector<sql::Expression> before;
        for (const SourceColumn& column : source.columns)
            before.push_back(column.value.tree);
        found.makeTables(tables, values.size(), before.size(), false);
        plan.make = std::move(tables.make);
        plan.remove = std::move(tables.remove);
        const bool rows = source.table != nullptr;
        select.items =
            FoundRows::foundItems(rows ? rowNumberOf(source) : sql::null(), 0, values, before);
        plan.fill.push_back(sqlOf(sql::Write{
            found.find(values.size(), before.size(), std::move(select)), std::move(with)}));
        // A row of a table that was found several times is written once.
        if (rows) plan.fill.push_back(sqlOf(sql::Write{found.keepFirst()}));
        if (write_.update != nullptr) {
            plan.fill.push_back(sqlOf(sql::Write{found.caught(RowState::Inserted, assigned, 0)}));
        }
        plan.fill.push_back(sqlOf(sql::Write{found.caught(RowState::Deleted, {}, 0)}));
        plan.verb = write_.update != nullptr ? Verb::Update : Verb::Delete;
        plan.target.table = target_.name;
        plan.target.firingLevel = target_.level;
        plan.target.relation = target_.name;
        plan.target.insteadOfEvent = event_;
        plan.shape = std::move(shape_);
        return finished(std::move(plan), binder_);
    }

    const InsteadWrite& write_;
    const InsteadTarget& target_;
    std::uint8_t event_;
    Binder binder_;
    sql::From from_;
    Table shape_;
};

}  // namespace

std::optional<InsteadTarget> insteadTarget(const tsql::ObjectName& name, std::uint8_t event,
                                           const NameScope& names) {
    InsteadTarget target;
    target.table = findTable(name, names);
    target.view = target.table == nullptr ? findView(name, names) : nullptr;
    const std::uint8_t events = target.table != nullptr  ? target.table->insteadOfEvents
                                : target.view != nullptr ? target.view->insteadOfEvents
                                                         : 0;
    if ((events & event) == 0) return std::nullopt;
    target.name = target.table != nullptr ? target.table->name : target.view->name;
    target.fires = names.catalogue().firesInstead(target.name, event);
    target.level = names.catalogue().firingLevel(target.name);
    return target;
}

Table insteadShape(const InsteadTarget& target, const tsql::ObjectName& name, Binder& binder) {
    if (target.table != nullptr) return *target.table;
    return shapeOfView(target, binder.namedSource(name).sources.front());
}

void noteInstead(WriteTarget& written, const std::optional<InsteadTarget>& target,
                 std::uint8_t event) {
    if (!target) return;
    written.insteadOfEvent = event;
    written.relation = target->name;
}

StatementPlan translateInstead(const tsql::UpdateStatement& statement, const InsteadTarget& target,
                               const NameScope& names) {
    const InsteadWrite write{
        statement.table,        statement.from,   statement.where,        statement.top,
        statement.commonTables, statement.output, statement.maxRecursion, &statement};
    return InsteadWriter(write, target, tsql::kOnUpdate, names).plan();
}

StatementPlan translateInstead(const tsql::DeleteStatement& statement, const InsteadTarget& target,
                               const NameScope& names) {
    const InsteadWrite write{
        statement.table,        statement.from,   statement.where,        statement.top,
        statement.commonTables, statement.output, statement.maxRecursion, nullptr};
    return InsteadWriter(write, target, tsql::kOnDelete, names).plan();
}

}  // namespace kap::engine
