#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "base/ascii.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/found_rows.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

// MERGE. The rows of every action are found before anything is written, with their new values, in a
// temporary table; then come the deletes, the updates and the inserts. Where triggers or OUTPUT
// want the written rows, these are kept in a second one. Where triggers fire instead of the actions
// the found rows are put where these look for them, and nothing is written.
namespace kap::engine {

using tsql::MergeAction;
using tsql::MergeStatement;
using tsql::ServerError;

namespace {

std::uint8_t eventOf(const MergeAction& action) {
    if (std::holds_alternative<tsql::InsertStatement>(action.action)) return tsql::kOnInsert;
    return std::holds_alternative<tsql::UpdateStatement>(action.action) ? tsql::kOnUpdate
                                                                        : tsql::kOnDelete;
}

// The columns that its actions give values.
std::vector<std::string> writtenNames(const MergeStatement& statement) {
    std::vector<std::string> names;
    for (const MergeAction& action : statement.actions) {
        if (const auto* update = std::get_if<tsql::UpdateStatement>(&action.action)) {
            for (const tsql::Assignment& each : update->assignments) {
                if (!each.column.parts.empty()) names.push_back(each.column.last());
            }
        } else if (const auto* insert = std::get_if<tsql::InsertStatement>(&action.action)) {
            names.insert(names.end(), insert->columns.begin(), insert->columns.end());
        }
    }
    return names;
}

std::uint8_t eventsOf(const MergeStatement& statement) {
    std::uint8_t events = 0;
    for (const MergeAction& action : statement.actions)
        events |= eventOf(action);
    return events;
}

// The target, when triggers fire instead of the actions. They must do so for all of them.
std::optional<InsteadTarget> insteadOfActions(const MergeStatement& statement, int line,
                                              const NameScope& names) {
    std::optional<InsteadTarget> result;
    bool others = false;
    for (const MergeAction& action : statement.actions) {
        auto target = insteadTarget(statement.table, eventOf(action), names);
        const bool fires = target && target->fires;
        if (fires) result = std::move(target);
        others = others || !fires;
    }
    if (!result || !others) return result;
    throw ServerError(tsql::Message::MergeInsteadOfSome, {statement.table.text()}, line);
}

class MergeWriter {
public:
    MergeWriter(const MergeStatement& statement, int line, const NameScope& names)
        : statement_(statement),
          line_(line),
          instead_(insteadOfActions(statement, line, names)),
          binder_(names),
          with_(boundTables(statement, instead_.has_value(), binder_)),
          shape_(instead_ ? insteadShape(*instead_, statement.table, binder_) : Table()),
          table_(instead_ ? shape_ : target(statement, binder_)),
          rows_(table_) {}

    StatementPlan plan() {
        bindSources();
        bindActions();
        plan_.verb = Verb::Merge;
        plan_.target = writeTarget(table_, binder_.names());
        const std::uint8_t events = eventsOf(statement_);
        noteInstead(plan_.target, insteadTarget(statement_.table, events, binder_.names()), events);
        if (instead_) return planInstead();
        plan_.capture = capture();
        const bool kept = plan_.capture.has_value();
        if (kept && statement_.output) {
            for (const Source& source : sources_)
                sourceColumns_ += source.columns.size();
        }
        addSearch(kept);
        // A unique value that goes is free for the row that comes.
        for (const std::uint8_t event : {tsql::kOnDelete, tsql::kOnUpdate, tsql::kOnInsert})
            addSteps(event, kept);
        return finished(std::move(plan_), binder_);
    }

private:
    StatementPlan planInstead() {
        if (statement_.output && !statement_.output->into) {
            throw ServerError(tsql::Message::OutputOfTableWithTriggers, {bareName(instead_->name)});
        }
        if (statement_.output) {
            throw tsql::unsupported("OUTPUT INTO with an INSTEAD OF trigger", line_);
        }
        sourceColumns_ = shape_.columns.size();
        addSearch(false);
        for (const std::uint8_t event : {tsql::kOnInsert, tsql::kOnUpdate, tsql::kOnDelete}) {
            MergeFiring firing{event, {}, {}};
            for (std::size_t i = 0; i < statement_.actions.size(); ++i) {
                if (eventOf(statement_.actions[i]) == event) addFiring(firing, i);
            }
            if (!firing.fill.empty()) plan_.firings.push_back(std::move(firing));
        }
        // The columns of the bound actions are those of the shape.
        plan_.shape = shape_;
        return finished(std::move(plan_), binder_);
    }

    void addFiring(MergeFiring& firing, std::size_t action) const {
        const std::vector<const Column*>& columns = bound_[action].columns;
        if (firing.event != tsql::kOnDelete) {
            firing.fill.push_back(
                sqlOf(sql::Write{rows_.caught(RowState::Inserted, columns, action)}));
        }
        if (firing.event != tsql::kOnInsert) {
            firing.fill.push_back(sqlOf(sql::Write{rows_.caught(RowState::Deleted, {}, action)}));
        }
        for (const Column* column : columns)
            firing.columns.push_back(column->name);
    }

    // Finds the rows of every action.
    void addSearch(bool kept) {
        rows_.makeTables(plan_, widest_, sourceColumns_, kept);
        for (std::size_t i = 0; i < statement_.actions.size(); ++i)
            plan_.find.push_back(sqlOf(sql::Write{find(i), with_}));
        plan_.repeated = sqlOf(sql::Query{repeated()});
        if (const auto limit = limited()) plan_.limit = sqlOf(sql::Write{*limit});
    }

    // What is done with the found rows of an action, and their values.
    struct Bound {
        sql::Expression condition;  // none: any row
        std::vector<sql::Expression> values;
        std::vector<const Column*> columns;  // that take them
        bool defaults = false;               // DEFAULT VALUES
    };

    // A view or a common table that is written through brings the rows of the table behind it.
    static std::vector<sql::CommonTable> boundTables(const MergeStatement& statement, bool instead,
                                                     Binder& binder) {
        binder.limitRecursion(statement.maxRecursion);
        if (instead) return binder.commonTables(statement.commonTables, nullptr);
        binder.writesColumns(writtenNames(statement));
        return binder.commonTables(statement.commonTables, nullptr, &statement.table);
    }

    static const Table& target(const MergeStatement& statement, const Binder& binder) {
        const Table* behind = binder.commonTarget().table;
        return behind != nullptr ? *behind : requireTable(statement.table, binder.names());
    }

    void bindSources() {
        const std::string own = binder_.commonTarget().table != nullptr || isView()
                                    ? statement_.table.last()
                                    : shownName(table_, statement_.table, binder_.names());
        const std::string& name = statement_.alias.empty() ? own : statement_.alias;
        Scope outside;
        BoundSource source = binder_.from(statement_.source, outside);
        bindTargetAs(name);
        sources_ = std::move(source.sources);
        sourceFrom_ = std::move(source.from);
        for (const Source& each : sources_) {
            if (!sameName(each.name, name)) continue;
            throw ServerError(tsql::Message::MergeSameCorrelationName, {name}, line_);
        }
        Scope scope;
        scope.sources = {targetSource_};
        scope.sources.insert(scope.sources.end(), sources_.begin(), sources_.end());
        scope.aggregates = AggregateUse::RefusedInOn;
        condition_ = binder_.condition(*statement_.condition, scope);
    }

    // Whether the target is a view that triggers fire for.
    [[nodiscard]] bool isView() const { return instead_ && instead_->view != nullptr; }

    void bindTargetAs(const std::string& name) {
        if (isView()) {
            BoundSource own = binder_.namedSource(statement_.table, name);
            targetSource_ = std::move(own.sources.front());
            targetFrom_ = std::move(own.from);
            targetRow_ = sql::null();
            return;
        }
        if (binder_.commonTarget().table == nullptr) {
            targetSource_ = Binder::tableSource(table_, name);
            targetFrom_ = sql::from(tableName(table_, name));
            targetRow_ = rowNumberOf(targetSource_);
            return;
        }
        BoundSource own = *binder_.targetSource(statement_.table, name);
        targetSource_ = std::move(own.sources.front());
        targetFrom_ = std::move(own.from);
        targetRow_ = numberedColumn(name, binder_.commonTarget().rowNumber);
    }

    // What an action may name: the rows that there are when it is taken.
    Scope scopeOf(const MergeAction& action) const {
        Scope scope;
        scope.aggregates = AggregateUse::RefusedInWhere;
        if (action.when != MergeAction::When::NotMatched) scope.sources.push_back(targetSource_);
        if (action.when != MergeAction::When::NotMatchedBySource) {
            scope.sources.insert(scope.sources.end(), sources_.begin(), sources_.end());
        }
        return scope;
    }

    void bindActions() {
        for (const MergeAction& action : statement_.actions) {
            Scope scope = scopeOf(action);
            Bound bound;
            if (action.condition) bound.condition = binder_.condition(*action.condition, scope);
            if (const auto* update = std::get_if<tsql::UpdateStatement>(&action.action)) {
                for (BoundAssignment& each : bindAssignments(*update, table_, binder_, scope)) {
                    bound.columns.push_back(each.column);
                    bound.values.push_back(std::move(each.value));
                }
            } else if (const auto* insert = std::get_if<tsql::InsertStatement>(&action.action)) {
                bindInsert(*insert, action.line, scope, bound);
            }
            widest_ = std::max(widest_, bound.values.size());
            bound_.push_back(std::move(bound));
        }
    }

    void bindInsert(const tsql::InsertStatement& insert, int line, Scope& scope, Bound& bound) {
        givesIdentity_ = sameName(binder_.names().settings().identityInsert, table_.name);
        bound.defaults = insert.defaultValues;
        if (insert.defaultValues) {
            addGenerated(bound);
            return;
        }
        const auto columns = insertedColumns(insert, table_, binder_, line);
        checkAssignable(columns, table_, givesIdentity_, line);
        const auto& row = insert.rows.front();
        checkCount(row.size(), columns.size(), !insert.columns.empty(), line);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const Column& column = *columns[i];
            if (column.isRowVersion()) {
                if (row[i].value) explicitRowVersion(line);
                continue;
            }
            bound.columns.push_back(&column);
            if (row[i].value) {
                const BoundExpression value = binder_.value(*row[i].value, scope);
                bound.values.push_back(binder_.stored(value, column.type, line));
            } else {
                bound.values.push_back(defaultOf(column));
            }
        }
        addGenerated(bound);
    }

    // What a trigger that fires instead sees of columns that are not given: their defaults, and no
    // number of an identity yet.
    void addGenerated(Bound& bound) const {
        if (!instead_) return;
        for (const Column& column : shape_.columns) {
            if (std::ranges::find(bound.columns, &column) != bound.columns.end()) continue;
            const bool numbered = column.identity && !givesIdentity_;
            if (!numbered && (!column.defaultSql || column.computed)) continue;
            bound.columns.push_back(&column);
            bound.values.push_back(numbered ? sql::number(0) : defaultOf(column));
        }
    }

    // Of several actions for the same rows the first whose condition holds is taken.
    void addConditionsOf(std::size_t index, std::vector<sql::Expression>& conditions) const {
        for (std::size_t i = 0; i < index; ++i) {
            if (statement_.actions[i].when != statement_.actions[index].when) continue;
            conditions.emplace_back(sql::Unary{sql::UnaryOperator::IsNotTrue, bound_[i].condition});
        }
        if (bound_[index].condition) conditions.push_back(bound_[index].condition);
    }

    sql::Insert find(std::size_t index) const {
        const MergeAction& action = statement_.actions[index];
        const Bound& bound = bound_[index];
        const bool target = action.when != MergeAction::When::NotMatched;
        const bool source = action.when != MergeAction::When::NotMatchedBySource;
        sql::Select rows;
        std::vector<sql::Expression> conditions;
        if (target && source) {
            rows.from = sourceFrom_;
            sql::join(rows.from, sql::JoinOperator::Cross, targetFrom_, condition_);
        } else {
            rows.from = target ? targetFrom_ : sourceFrom_;
            sql::Select other = sql::one(sql::number(1), target ? sourceFrom_ : targetFrom_);
            other.where = condition_;
            conditions.push_back(sql::negation(sql::Exists{std::move(other)}));
        }
        addConditionsOf(index, conditions);
        if (!conditions.empty()) rows.where = sql::allOf(std::move(conditions));
        const std::vector<sql::Expression> columns = keptColumns(target, source);
        rows.items =
            FoundRows::foundItems(target ? targetRow_ : sql::null(), index, bound.values, columns);
        return rows_.find(bound.values.size(), columns.size(), std::move(rows));
    }

    // What is kept of the rows beside their new values: the columns of the sources for OUTPUT, or
    // those of the target for triggers that fire instead.
    [[nodiscard]] std::vector<sql::Expression> keptColumns(bool target, bool source) const {
        std::vector<sql::Expression> columns;
        if (sourceColumns_ == 0) return columns;
        columns.reserve(sourceColumns_);
        const bool there = instead_ ? target : source;
        for (const Source& each : instead_ ? std::vector{targetSource_} : sources_) {
            for (const SourceColumn& column : each.columns)
                columns.push_back(there ? column.value.tree : sql::null());
        }
        return columns;
    }

    // A row of the target that was found twice.
    sql::Select repeated() const {
        const sql::Expression row = sql::column("target row");
        sql::Select rows = sql::one(sql::number(1), sql::from(rows_.found()));
        rows.where = sql::isNotNull(row);
        rows.groups = {row};
        rows.having = sql::Binary{sql::BinaryOperator::Greater, sql::call(fn::kCount, sql::Star()),
                                  sql::number(1)};
        rows.limit = sql::number(1);
        return rows;
    }

    // Forgets what TOP or SET ROWCOUNT does not let through of the found rows.
    std::optional<sql::Delete> limited() {
        sql::Expression most;
        if (statement_.top) {
            if (statement_.top->percent) throw tsql::unsupported("MERGE TOP PERCENT", line_);
            Scope scope;
            most = binder_.limit(*statement_.top, scope);
        } else if (const std::int64_t rows = binder_.names().settings().rowLimit; rows > 0) {
            most = sql::number(rows);
        }
        if (!most) return std::nullopt;
        return sql::Delete{rows_.found(), sql::Binary{sql::BinaryOperator::Greater,
                                                      sql::column("row"), std::move(most)}};
    }

    void addSteps(std::uint8_t event, bool kept) {
        for (std::size_t i = 0; i < statement_.actions.size(); ++i) {
            const MergeAction& action = statement_.actions[i];
            if (eventOf(action) != event) continue;
            MergeStep step;
            step.event = event;
            if (event == tsql::kOnDelete) step.sql = sqlOf(sql::Write{rows_.removal(i)});
            if (event == tsql::kOnUpdate) {
                step.sql = sqlOf(sql::Write{rows_.update(bound_[i].columns, i)});
            }
            if (event == tsql::kOnInsert) step.sql = sqlOf(sql::Write{insertion(i)});
            if (kept) step.keep = sqlOf(sql::Write{rows_.keep(event, i)});
            for (const Column* column : bound_[i].columns)
                step.columns.push_back(column->name);
            plan_.steps.push_back(std::move(step));
        }
    }

    sql::Insert insertion(std::size_t action) const {
        const Bound& bound = bound_[action];
        sql::Insert insert{tableName(table_)};
        sql::Select rows;
        const auto add = [&](const Column& column, sql::Expression value) {
            insert.columns.push_back(column.name);
            rows.items.push_back({std::move(value)});
        };
        for (std::size_t i = 0; i < bound.columns.size(); ++i) {
            const Column& column = *bound.columns[i];
            const sql::Expression value = sql::column(foundName("c", i));
            add(column, column.identity ? givenIdentity(table_, value) : value);
        }
        for (const Column& column : table_.columns) {
            if (column.identity && !givesIdentity_) add(column, identityCall(table_.name));
            if (column.isRowVersion()) add(column, rowVersionCall());
            const bool own = !column.identity && !column.isRowVersion() && !column.computed;
            if (bound.defaults && own) add(column, defaultOf(column));
        }
        rows.from = sql::from(rows_.found());
        rows.where = FoundRows::isChosen(action);
        rows.order.push_back({sql::column("row")});
        insert.rows = sql::Query{std::move(rows)};
        return insert;
    }

    // Written rows are kept for OUTPUT and for triggers of any of the actions.
    std::optional<Capture> capture() {
        Capture capture;
        capture.event = eventsOf(statement_);
        capture.forTriggers = (table_.triggerEvents & capture.event) != 0;
        const bool checked = !binder_.commonTarget().checks.empty();
        if (!capture.forTriggers && !statement_.output && !checked) return std::nullopt;
        if (statement_.output) addOutput(capture);
        rows_.refill(plan_);
        std::optional<Capture> result(std::move(capture));
        addChecks(result, binder_);
        return result;
    }

    void addOutput(Capture& capture) {
        Scope scope;
        Source action{"", nullptr, {}};
        constexpr int kActionLength = 10;
        action.columns.push_back({"$action", BoundExpression::expression(
                                                 sql::column("done", "action"),
                                                 {tsql::SqlType::NVarChar, kActionLength}, false)});
        scope.sources.push_back(std::move(action));
        for (const RowState state : {RowState::Inserted, RowState::Deleted}) {
            scope.sources.push_back(rows_.written(state));
            showThroughView(scope.sources.back(), table_, binder_);
        }
        std::size_t first = 0;
        for (const Source& source : sources_) {
            scope.sources.push_back(FoundRows::foundSource(source, first));
            first += source.columns.size();
        }
        (void)engine::addOutput(capture, *statement_.output, table_, scope, rows_.output(),
                                binder_);
    }

    const MergeStatement& statement_;
    int line_;
    std::optional<InsteadTarget> instead_;
    Binder binder_;
    std::vector<sql::CommonTable> with_;
    Table shape_;  // of what triggers fire for instead
    const Table& table_;
    FoundRows rows_;
    Source targetSource_;
    std::vector<Source> sources_;
    sql::From targetFrom_;
    sql::Expression targetRow_;
    sql::From sourceFrom_;
    sql::Expression condition_;
    std::vector<Bound> bound_;
    std::size_t widest_ = 0;
    std::size_t sourceColumns_ = 0;
    bool givesIdentity_ = false;
    MergePlan plan_;
};

}  // namespace

StatementPlan translateMerge(const MergeStatement& statement, int line, const NameScope& names) {
    return MergeWriter(statement, line, names).plan();
}

}  // namespace kap::engine
