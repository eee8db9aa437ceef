#pragma once

#include <string>
#include <vector>

#include "engine/binder/binder.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/plan/statement_plan.hpp"
#include "engine/sqlite/write_tree.hpp"

// The statements behind translate(), each in its own file.
namespace kap::engine {

[[nodiscard]] StatementPlan translateSelect(const tsql::SelectStatement& statement,
                                            const NameScope& names, Constants constants);
[[nodiscard]] StatementPlan translateInsert(const tsql::InsertStatement& statement, int line,
                                            const NameScope& names, Constants constants);
[[nodiscard]] StatementPlan translateUpdate(const tsql::UpdateStatement& statement,
                                            const NameScope& names, Constants constants);
[[nodiscard]] StatementPlan translateDelete(const tsql::DeleteStatement& statement,
                                            const NameScope& names, Constants constants);
[[nodiscard]] StatementPlan translateMerge(const tsql::MergeStatement& statement, int line,
                                           const NameScope& names);
[[nodiscard]] StatementPlan translateTruncate(const tsql::TruncateStatement& statement,
                                              const NameScope& names);
[[nodiscard]] StatementPlan translateCreate(const tsql::CreateTableStatement& statement, int line,
                                            const NameScope& names);
[[nodiscard]] StatementPlan translateIndex(const tsql::CreateIndexStatement& statement, int line,
                                           const NameScope& names);
[[nodiscard]] StatementPlan translateDrop(const tsql::DropStatement& statement, int line,
                                          const NameScope& names);

// SELECT ... INTO: makes the table that the columns describe and fills it.
[[nodiscard]] StatementPlan translateSelectInto(const tsql::Query& query,
                                                const tsql::ObjectName& table,
                                                const NameScope& names);

// A query that answers its rows.
[[nodiscard]] QueryPlan queryPlan(const BoundQuery& bound);
// A column of a result, as its query made it.
[[nodiscard]] ResultColumn resultColumn(const OutputColumn& output);

// Calls that give a row its next values; the session provides the functions.
[[nodiscard]] sql::Expression rowVersionCall();
[[nodiscard]] sql::Expression identityCall(const std::string& table);
// A value for an identity column that the statement itself gives.
[[nodiscard]] sql::Expression givenIdentity(const Table& table, sql::Expression value);
// What DEFAULT stands for, NULL where a column has none.
[[nodiscard]] sql::Expression defaultOf(const Column& column);

// A column with the value that an UPDATE gives it.
struct BoundAssignment {
    const Column* column;
    sql::Expression value;
};

// The assignments of an UPDATE of the target of `scope`. Errors of columns that cannot be
// assigned.
[[nodiscard]] std::vector<BoundAssignment> bindAssignments(const tsql::UpdateStatement& statement,
                                                           const Table& table, Binder& binder,
                                                           Scope& scope);
// Assigns the next version of a row in a table with row versions.
void addRowVersion(std::vector<sql::Assignment>& assignments, const Table& table);

// The columns that an INSERT names, or all that it may give values when it names none.
[[nodiscard]] std::vector<const Column*> insertedColumns(const tsql::InsertStatement& statement,
                                                         const Table& table, const Binder& binder,
                                                         int line);
// Errors 271 and 544 for columns that the table fills itself.
void checkAssignable(const std::vector<const Column*>& columns, const Table& table,
                     bool identityGiven, int line);
// Errors 109, 110 and 213 when there are not as many values as columns.
void checkCount(std::size_t given, std::size_t wanted, bool listed, int line);
// Error 273 for a value that is given for a row version.
[[noreturn]] void explicitRowVersion(int line);

// What a statement writes that has a trigger which fires instead of this event.
struct InsteadTarget {
    std::string name;  // its stored name
    const Table* table = nullptr;
    const View* view = nullptr;
    bool fires = false;  // not while it is running itself
    int level = 0;       // how often its triggers are running
};
[[nodiscard]] std::optional<InsteadTarget> insteadTarget(const tsql::ObjectName& name,
                                                         std::uint8_t event,
                                                         const NameScope& names);
// What such a trigger sees rows of: the table, or the columns of the view.
[[nodiscard]] Table insteadShape(const InsteadTarget& target, const tsql::ObjectName& name,
                                 Binder& binder);
// Remembers in what a plan writes that it depends on such a trigger.
void noteInstead(WriteTarget& written, const std::optional<InsteadTarget>& target,
                 std::uint8_t event);
[[nodiscard]] StatementPlan translateInstead(const tsql::UpdateStatement& statement,
                                             const InsteadTarget& target, const NameScope& names);
[[nodiscard]] StatementPlan translateInstead(const tsql::DeleteStatement& statement,
                                             const InsteadTarget& target, const NameScope& names);

// A plan with what it is to be run with.
[[nodiscard]] StatementPlan finished(StatementPlan::Kind plan, const Binder& binder);
// A table as a plan writes it.
[[nodiscard]] WriteTarget writeTarget(const Table& table, const NameScope& names);
// Lets what is written through a view be checked where the view wants it.
void addChecks(std::optional<Capture>& capture, const Binder& binder);
// Whether WHERE names the row of a cursor.
[[nodiscard]] bool isPositioned(const tsql::ExpressionPtr& where);

// The rows that UPDATE or DELETE with FROM or TOP works on.
struct TargetRows {
    const Table* table = nullptr;
    sql::Expression rowNumber;  // the number of the target's row, as FROM brings it
    sql::From from;
    sql::Expression where;  // none: all rows
    sql::Expression limit;  // how many of them; none: all

    // These rows, without their limit, as a query of the given columns.
    [[nodiscard]] sql::Select select(std::vector<sql::Item> items) const;
};

// The name of the table, view or common table that the target of UPDATE or DELETE means: that of
// the source whose alias it is, or its own.
[[nodiscard]] const tsql::ObjectName& targetName(const tsql::ObjectName& target,
                                                 const std::vector<tsql::TableSourcePtr>& from);

// Binds FROM and WHERE of such a statement into `scope`. The target is a table, an alias of FROM,
// or a common table over one table; it is added to FROM when it does not stand there. Error 208
// when there is no such table.
[[nodiscard]] TargetRows bindTarget(Binder& binder, const tsql::ObjectName& target,
                                    const std::vector<tsql::TableSourcePtr>& from,
                                    const tsql::ExpressionPtr& where,
                                    const std::optional<tsql::TopClause>& top, Scope& scope);

// An UPDATE or DELETE of bound rows, for outputOfSources().
struct WriteFrom {
    const TargetRows& rows;
    const Scope& scope;
    tsql::TriggerEvents event;
    const std::optional<tsql::OutputClause>& output;
    const std::vector<BoundAssignment>& assignments;  // empty for DELETE
    const std::vector<sql::CommonTable>& with;
};

// Lets OUTPUT read columns of the other sources of FROM, as a plan that finds the rows before it
// writes them. None when it reads none.
[[nodiscard]] std::optional<MergePlan> outputOfSources(const WriteFrom& write, Binder& binder);

}  // namespace kap::engine
