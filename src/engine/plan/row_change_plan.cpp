#include "engine/plan/row_change_plan.hpp"

#include <utility>

#include "engine/plan/statements.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using Kind = ado::RowPlan::Kind;
using tsql::ServerError;

const Column& requiredColumn(const Table& table, const std::string& name) {
    const Column* column = table.find(name);
    if (column == nullptr) throw ServerError(tsql::Message::InvalidColumn, {name});
    return *column;
}

std::vector<Column> requiredColumns(const Table& table, const std::vector<ado::RowColumn>& named) {
    std::vector<Column> columns;
    columns.reserve(named.size());
    for (const ado::RowColumn& each : named)
        columns.push_back(requiredColumn(table, each.name));
    return columns;
}

// What the database sets itself cannot be assigned.
void requireAssignable(Kind kind, const Table& table, const Column& column) {
    const bool insert = kind == Kind::Insert;
    if (column.isRowVersion()) {
        throw insert ? ServerError(tsql::Message::TimestampNotInsertable)
                     : ServerError(tsql::Message::TimestampNotUpdatable);
    }
    if (column.computed) throw ServerError(tsql::Message::ColumnNotModifiable, {column.name});
    if (column.identity) {
        throw insert ? ServerError(tsql::Message::IdentityInsertOff, {table.shown()})
                     : ServerError(tsql::Message::IdentityNotUpdatable, {column.name});
    }
}

// Makes the statement; what it is told is numbered as it comes.
class RowChangeWriter {
public:
    RowChangeWriter(const ado::RowPlan& plan, const Table& table) : plan_(plan), table_(table) {
        made_.values = requiredColumns(table, plan.values());
        made_.criteria = requiredColumns(table, plan.criteria());
        for (const Column& column : made_.values)
            requireAssignable(plan.kind(), table, column);
    }

    void answer() {
        made_.answer = requiredColumns(table_, plan_.readBack());
        for (const Column& column : made_.answer)
            answer_.push_back(sql::column(column.name));
    }

    [[nodiscard]] RowChangePlan written() && {
        switch (plan_.kind()) {
            case Kind::Insert:
                return finished(insertion());
            case Kind::Update:
                return finished(update());
            case Kind::Delete:
                return finished(sql::Delete{tableName(table_), found()});
            case Kind::Read:
                break;
        }
        constexpr int kMoreThanOne = 2;
        return reading(found(), kMoreThanOne);
    }

    [[nodiscard]] RowChangePlan numbered() && {
        made_.values.clear();
        made_.criteria.clear();
        return reading(sql::equal(sql::Column{{}, rowNumberName(table_), true}, parameter()), 1);
    }

private:
    [[nodiscard]] sql::Expression parameter() { return sql::Parameter{++parameters_}; }

    template <class Body>
    [[nodiscard]] RowChangePlan finished(Body body) {
        made_.sql = sqlOf(sql::Write{std::move(body), {}, std::move(answer_)});
        return std::move(made_);
    }

    [[nodiscard]] RowChangePlan reading(sql::Expression condition, int most) {
        sql::Select rows;
        if (answer_.empty()) answer_.push_back(sql::number(1));
        for (sql::Expression& each : answer_)
            rows.items.push_back({std::move(each)});
        rows.from = sql::from(tableName(table_));
        rows.where = std::move(condition);
        rows.limit = sql::number(most);
        made_.sql = sqlOf(sql::Query{std::move(rows)});
        return std::move(made_);
    }

    [[nodiscard]] sql::Insert insertion() {
        sql::Insert insert{tableName(table_)};
        std::vector<sql::Expression> values;
        const auto add = [&](const Column& column, sql::Expression value) {
            insert.columns.push_back(column.name);
            values.push_back(std::move(value));
        };
        for (const Column& column : made_.values)
            add(column, parameter());
        for (const Column& column : table_.columns) {
            if (column.identity) {
                add(column, identityCall(table_.name));
            } else if (column.isRowVersion()) {
                add(column, rowVersionCall());
            }
        }
        if (values.empty()) {
            insert.rows = sql::DefaultValues();
        } else {
            insert.rows = sql::Query{sql::Values{{std::move(values)}}};
        }
        return insert;
    }

    [[nodiscard]] sql::Update update() {
        sql::Update update{tableName(table_)};
        for (const Column& column : made_.values)
            update.assignments.push_back({column.name, parameter()});
        addRowVersion(update.assignments, table_);
        update.where = found();
        return update;
    }

    // A text is first compared as its column does, which an index can serve, and then exactly.
    [[nodiscard]] sql::Expression found() {
        std::vector<sql::Expression> conditions;
        const auto same = [](sql::Expression left, const sql::Expression& right) {
            return sql::Binary{sql::BinaryOperator::Is, std::move(left), right};
        };
        for (const Column& column : made_.criteria) {
            const sql::Expression held = sql::column(column.name);
            const sql::Expression value = parameter();
            conditions.push_back(same(held, value));
            if (storedAs(column.type) == ado::Storage::Text)
                conditions.push_back(same(sql::Collated{held, "BINARY"}, value));
        }
        return conditions.empty() ? sql::Expression() : sql::allOf(std::move(conditions));
    }

    const ado::RowPlan& plan_;
    const Table& table_;
    RowChangePlan made_;
    std::vector<sql::Expression> answer_;
    int parameters_ = 0;
};

const char* verbOf(Kind kind) {
    switch (kind) {
        case Kind::Insert:
            return "INSERT";
        case Kind::Update:
            return "UPDATE";
        case Kind::Delete:
            return "DELETE";
        case Kind::Read:
            break;
    }
    return "";
}

}  // namespace

RowChangePlan translateRowChange(const ado::RowPlan& plan, const Table& table,
                                 WrittenRows written) {
    RowChangeWriter writer(plan, table);
    if (plan.kind() == Kind::Read || written == WrittenRows::Answering) writer.answer();
    return std::move(writer).written();
}

RowChangePlan translateReadingAgain(const ado::RowPlan& plan, const Table& table) {
    RowChangeWriter writer(plan, table);
    writer.answer();
    return std::move(writer).numbered();
}

WriteContext contextOf(const ado::RowPlan& plan) {
    WriteContext context{verbOf(plan.kind()), plan.table(), {}};
    if (plan.kind() == Kind::Update) {
        for (const ado::RowColumn& column : plan.values())
            context.columns.push_back(column.name);
    }
    return context;
}

}  // namespace kap::engine
