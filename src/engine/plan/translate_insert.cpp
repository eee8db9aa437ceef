#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "base/ascii.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::InsertStatement;
using tsql::ServerError;

namespace {

// Columns that take values from the statement, in its order.
std::vector<const Column*> namedColumns(const InsertStatement& statement, const Table& table,
                                        const Binder& binder, int line) {
    std::vector<const Column*> columns;
    for (const std::string& name : statement.columns) {
        const Column* column = &binder.targetColumn(table, {{name}, line});
        if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
            throw ServerError(tsql::Message::ColumnAssignedTwice, {name}, line);
        }
        columns.push_back(column);
    }
    return columns;
}

// Without a list the values are for all columns but the identity and the computed ones.
std::vector<const Column*> allColumns(const Table& table, const Binder& binder, int line) {
    std::vector<const Column*> columns;
    if (binder.commonTarget().table == &table) {
        for (const auto& [shown, column] : binder.commonTarget().columns) {
            const Column& own = binder.targetColumn(table, {{shown}, line});
            if (!own.identity && !own.computed) columns.push_back(&own);
        }
        return columns;
    }
    for (const Column& column : table.columns) {
        if (!column.identity && !column.computed) columns.push_back(&column);
    }
    return columns;
}

}  // namespace

std::vector<const Column*> insertedColumns(const InsertStatement& statement, const Table& table,
                                           const Binder& binder, int line) {
    return statement.columns.empty() ? allColumns(table, binder, line)
                                     : namedColumns(statement, table, binder, line);
}

void checkAssignable(const std::vector<const Column*>& columns, const Table& table,
                     bool identityGiven, int line) {
    for (const Column* column : columns) {
        if (column->computed) {
            throw ServerError(tsql::Message::ColumnNotModifiable, {column->name}, line);
        }
        if (!column->identity || identityGiven) continue;
        throw ServerError(tsql::Message::IdentityInsertOff, {table.shown()}, line);
    }
}

void explicitRowVersion(int line) {
    throw ServerError(tsql::Message::TimestampNotInsertable, {}, line);
}

void checkCount(std::size_t given, std::size_t wanted, bool listed, int line) {
    if (given == wanted) return;
    if (!listed) {
        throw ServerError(tsql::Message::ValuesDoNotMatchTable, {}, line);
    }
    if (given < wanted) {
        throw ServerError(tsql::Message::MoreColumnsThanValues, {}, line);
    }
    throw ServerError(tsql::Message::FewerColumnsThanValues, {}, line);
}

namespace {

// The table of that name, or the one behind a view.
const Table& insertTarget(const InsertStatement& statement, Binder& binder,
                          const std::optional<InsteadTarget>& instead, Table& shape) {
    const tsql::ObjectName& name = statement.table;
    if (instead && instead->fires) {
        shape = insteadShape(*instead, name, binder);
        return shape;
    }
    const Table* table = findTable(name, binder.names());
    if (table != nullptr) return *table;
    const View* view = findView(name, binder.names());
    if (view == nullptr) return requireTable(name, binder.names());
    binder.writesColumns(statement.columns);
    binder.insertThrough(*view, name);
    return *binder.commonTarget().table;
}

void checkSelectCount(std::size_t given, std::size_t wanted, bool listed, int line) {
    if (given == wanted) return;
    if (!listed) checkCount(given, wanted, listed, line);
    throw ServerError(
        given < wanted ? tsql::Message::FewerSelectItems : tsql::Message::MoreSelectItems, {},
        line);
}

// The parts of the statement that its rows share.
class InsertWriter {
public:
    InsertWriter(const InsertStatement& statement, int line, const NameScope& names,
                 Constants constants)
        : statement_(statement),
          line_(line),
          instead_(insteadTarget(statement.table, tsql::kOnInsert, names)),
          binder_(names, instead_ ? Constants::InText : constants),
          table_(insertTarget(statement, binder_, instead_, shape_)) {}

    StatementPlan plan() {
        const bool listed = !statement_.columns.empty();
        columns_ = insertedColumns(statement_, table_, binder_, line_);
        const bool mayGive = sameName(binder_.names().settings().identityInsert, table_.name);
        if (mayGive) requireIdentity(listed);
        checkAssignable(columns_, table_, mayGive, line_);
        givesIdentity_ = mayGive;
        if (statement_.query) binder_.limitRecursion(statement_.query->maxRecursion);
        std::vector<sql::CommonTable> with = binder_.commonTables(statement_.commonTables, nullptr);
        sql::Insert insert{tableName(table_)};
        insert.rows = insertedRows(listed);
        insert.columns = columnNames();
        WriteTarget target = writeTarget(table_, binder_.names());
        noteInstead(target, instead_, tsql::kOnInsert);
        if (firesInstead()) {
            insert.table = tableName(capturedRows(table_, RowState::Inserted));
            return finished(writeInstead(std::move(target), {std::move(insert), std::move(with)}),
                            binder_);
        }
        WritePlan plan;
        plan.verb = Verb::Insert;
        plan.target = std::move(target);
        insert.ignored = table_.ignoring;
        plan.sql = sqlOf(sql::Write{std::move(insert), std::move(with)});
        plan.ignoresDuplicates = !table_.ignoring.empty();
        plan.capture = captureFor(table_, tsql::kOnInsert, statement_.output, binder_);
        addChecks(plan.capture, binder_);
        return finished(std::move(plan), binder_);
    }

private:
    [[nodiscard]] bool firesInstead() const { return instead_ && instead_->fires; }

    // Counts a row that is offered to an index of the table that leaves out what it has already:
    // what is not written then was left out.
    [[nodiscard]] sql::Expression offered(sql::Expression value, bool first) const {
        const bool counts = first && !table_.ignoring.empty();
        return counts ? sql::call(fn::kOffered, std::move(value)) : value;
    }

    [[nodiscard]] InsteadPlan writeInstead(WriteTarget target, const sql::Write& write) const {
        if (statement_.output && !statement_.output->into) {
            throw ServerError(tsql::Message::OutputOfTableWithTriggers, {table_.shown()});
        }
        if (statement_.output) {
            throw tsql::unsupported("OUTPUT INTO with an INSTEAD OF trigger", line_);
        }
        InsteadPlan plan;
        plan.verb = Verb::Insert;
        plan.target = std::move(target);
        plan.fill.push_back(sqlOf(write));
        plan.shape = table_;
        return plan;
    }

    // While IDENTITY_INSERT is on for a table, its identity column must be given, by name.
    void requireIdentity(bool listed) const {
        const bool given =
            listed && std::any_of(columns_.begin(), columns_.end(),
                                  [](const Column* c) { return c->identity.has_value(); });
        if (given) return;
        if (!listed) throw identityWithoutList();
        throw ServerError(tsql::Message::IdentityValueNeeded, {table_.shown()}, line_);
    }

    // One value more than columns is taken for a value of the identity column.
    void refuseIdentity() const {
        const bool has = std::any_of(table_.columns.begin(), table_.columns.end(),
                                     [](const Column& c) { return c.identity.has_value(); });
        if (has) throw identityWithoutList();
    }

    [[nodiscard]] ServerError identityWithoutList() const {
        return {tsql::Message::IdentityNeedsColumnList, {table_.shown()}, line_};
    }

    // What the table fills by itself, after the columns given.
    using Generated = std::vector<std::pair<const Column*, sql::Expression>>;
    [[nodiscard]] Generated generated() const {
        Generated result;
        if (firesInstead()) return insteadGenerated();
        for (const Column& column : table_.columns) {
            if (column.identity && !givesIdentity_)
                result.emplace_back(&column, identityCall(table_.name));
            if (column.isRowVersion()) result.emplace_back(&column, rowVersionCall());
        }
        return result;
    }

    // What a trigger that fires instead sees of columns that the statement does not fill: their
    // defaults, and no number of an identity yet.
    [[nodiscard]] Generated insteadGenerated() const {
        Generated result;
        for (const Column& column : table_.columns) {
            const bool given = std::ranges::find(columns_, &column) != columns_.end();
            if (column.identity && !givesIdentity_) {
                result.emplace_back(&column, sql::number(0));
            } else if (!given && column.defaultSql && !column.computed) {
                result.emplace_back(&column, defaultOf(column));
            }
        }
        return result;
    }

    [[nodiscard]] std::vector<std::string> columnNames() const {
        std::vector<std::string> names;
        names.reserve(columns_.size());
        for (const Column* column : columns_) {
            if (!column->isRowVersion()) names.push_back(column->name);
        }
        for (const auto& [column, call] : generated())
            names.push_back(column->name);
        return names;
    }

    std::variant<sql::Query, sql::DefaultValues> insertedRows(bool listed) {
        if (statement_.query) return sql::Query{queryRows(listed)};
        if (!statement_.defaultValues) return givenRows(listed);
        columns_.clear();
        std::vector<sql::Expression> values;
        addGenerated(values);
        if (values.empty() && statement_.top) {
            throw tsql::unsupported("INSERT TOP DEFAULT VALUES", line_);
        }
        if (values.empty()) return sql::DefaultValues();
        sql::Values row;
        row.rows.push_back(std::move(values));
        return limited(std::move(row));
    }

    // Behind the values that a row has already.
    void addGenerated(std::vector<sql::Expression>& row) const {
        for (auto& [column, call] : generated())
            row.push_back(std::move(call));
    }

    sql::Query givenRows(bool listed) {
        sql::Values values;
        values.rows.reserve(statement_.rows.size());
        for (const auto& row : statement_.rows) {
            if (row.size() != statement_.rows.front().size()) {
                throw ServerError(tsql::Message::UnequalRowLengths, {}, line_);
            }
            if (!listed && row.size() == columns_.size() + 1) refuseIdentity();
            checkCount(row.size(), columns_.size(), listed, line_);
            values.rows.push_back(rowValues(row));
        }
        return limited(std::move(values));
    }

    // The rows of VALUES, as many as TOP or SET ROWCOUNT allows.
    sql::Query limited(sql::Values values) {
        const std::size_t count = values.rows.size();
        if (!statement_.top && count <= 1) return {std::move(values)};
        sql::Expression most = limit(sql::number(static_cast<std::int64_t>(count)));
        if (!most) return {std::move(values)};
        sql::Select some = sql::allColumns(sql::from(sql::Derived{sql::Query{std::move(values)}}));
        some.limit = std::move(most);
        return {std::move(some)};
    }

    std::vector<sql::Expression> rowValues(const std::vector<tsql::ValueOrDefault>& row) {
        Scope scope;
        scope.columnsRefused = true;
        std::vector<sql::Expression> values;
        values.reserve(row.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            const Column& column = *columns_[i];
            if (column.isRowVersion()) {
                if (row[i].value) explicitRowVersion(line_);
                continue;
            }
            values.push_back(offered(valueOf(row[i], column, scope), values.empty()));
        }
        addGenerated(values);
        return values;
    }

    sql::Expression valueOf(const tsql::ValueOrDefault& value, const Column& column, Scope& scope) {
        if (!value.value) return defaultOf(column);
        return stored(binder_.value(*value.value, scope), column, value.value->line,
                      writtenLiteral(*value.value));
    }

    [[nodiscard]] sql::Expression stored(const BoundExpression& value, const Column& column,
                                         int line, const WrittenLiteral& written = {}) const {
        sql::Expression result = binder_.stored(value, column.type, line, written);
        return column.identity && !firesInstead() ? givenIdentity(table_, std::move(result))
                                                  : result;
    }

    // `count` is how many rows there are, for TOP PERCENT.
    sql::Expression limit(const sql::Expression& count) {
        const std::int64_t rowLimit = binder_.names().settings().rowLimit;
        if (!statement_.top) return rowLimit > 0 ? sql::number(rowLimit) : sql::Expression();
        Scope scope;
        return statement_.top->percent ? binder_.percentLimit(*statement_.top, count, scope)
                                       : binder_.limit(*statement_.top, scope);
    }

    sql::Select queryRows(bool listed) {
        BoundQuery rows = binder_.query(*statement_.query, nullptr, QueryPlace::InsertRows);
        checkSelectCount(rows.columns.size(), columns_.size(), listed, line_);
        std::vector<sql::Expression> values;
        values.reserve(columns_.size());
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (columns_[i]->isRowVersion()) explicitRowVersion(line_);
            const BoundExpression value = rows.columns[i].value.readBy(numberedColumn(i));
            values.push_back(offered(stored(value, *columns_[i], line_), values.empty()));
        }
        addGenerated(values);
        sql::Select select;
        select.items.reserve(values.size());
        for (sql::Expression& value : values)
            select.items.push_back({std::move(value)});
        const sql::QueryTree tree = std::move(rows.tree);
        select.from = sql::from(sql::Derived{tree});
        // ON would be read as that of a join.
        if (!table_.ignoring.empty()) select.where = sql::number(1);
        select.limit = limit(rowCount(tree));
        return select;
    }

    const InsertStatement& statement_;
    int line_;
    std::optional<InsteadTarget> instead_;
    Table shape_;
    Binder binder_;
    const Table& table_;
    std::vector<const Column*> columns_;
    bool givesIdentity_ = false;
};

}  // namespace

StatementPlan translateInsert(const InsertStatement& statement, int line, const NameScope& names,
                              Constants constants) {
    return InsertWriter(statement, line, names, constants).plan();
}

}  // namespace kap::engine
