#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/executor/stored_value.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"
#include "tsql/parser.hpp"

// INSERT ... EXEC: the rows of all results of the call are inserted by one statement, which fires
// the triggers of the table once.
namespace kap::engine {
namespace {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

constexpr const char* kExecutedRows = "@executed rows";

std::string columnName(std::size_t place) {
    return "c" + plain::text(static_cast<std::int64_t>(place) + 1);
}

std::vector<TypeSpec> typesOf(const ado::Result& result) {
    std::vector<TypeSpec> types;
    types.reserve(result.columns.size());
    for (const ado::ColumnInfo& column : result.columns)
        types.push_back(storedType(column));
    return types;
}

// A table variable with the columns of a result.
tsql::CreateTableStatement tableOf(const std::vector<TypeSpec>& types, int line) {
    tsql::CreateTableStatement table;
    table.table = {{kExecutedRows}, line};
    for (const TypeSpec& type : types) {
        tsql::ColumnDefinition& column = table.columns.emplace_back();
        column.name = columnName(table.columns.size() - 1);
        column.type = type;
        // A row version is one of its own table alone.
        if (type.type == SqlType::Timestamp) column.type = {SqlType::VarBinary, 8};
        column.nullable = true;
        column.line = line;
    }
    return table;
}

// INSERT INTO table (columns) SELECT c1, c2 FROM the rows.
tsql::InsertStatement insertion(const tsql::InsertStatement& node, std::size_t columns) {
    const int line = node.table.line;
    tsql::InsertStatement insert;
    insert.table = node.table;
    insert.columns = node.columns;
    tsql::Select select;
    for (std::size_t i = 0; i < columns; ++i) {
        auto value = std::make_unique<tsql::Expression>(
            tsql::Expression{tsql::ColumnReference{{{columnName(i)}, line}}, line, 1});
        select.items.push_back({tsql::ExpressionItem{std::move(value), ""}, line});
    }
    select.from.push_back(std::make_unique<tsql::TableSource>(
        tsql::TableSource{tsql::NamedTable{{{kExecutedRows}, line}, ""}, line, 1}));
    insert.query = std::make_unique<tsql::Query>();
    insert.query->line = line;
    insert.query->terms.push_back({std::move(select), tsql::SetOperator::Union, line});
    return insert;
}

// Whatever form the statement has: there is one error for rows that do not match the table.
bool isAboutCount(int number) {
    static constexpr std::array kCounts{109, 110, 120, 121};
    return std::ranges::find(kCounts, number) != kCounts.end();
}

}  // namespace

void ScriptRunner::insertExecuted(Frame& frame, Instruction& instruction,
                                  const tsql::InsertStatement& node,
                                  std::vector<ado::Result>& results) {
    if (node.output) throw ServerError(tsql::Message::OutputOfInsertExec, {}, instruction.line);
    if (state_.insertingExecuted) {
        throw ServerError(tsql::Message::NestedInsertExec, {}, instruction.line);
    }
    std::vector<ado::Result> given;
    {
        const Restored inserting(state_.insertingExecuted, true);
        execute(frame, instruction, *node.execute, given);
    }
    std::int64_t most =
        node.top ? mostRows(frame, instruction, node) : std::numeric_limits<std::int64_t>::max();
    std::vector<const ado::Result*> sets;
    for (const ado::Result& result : given) {
        if (!result.columns.empty()) sets.push_back(&result);
    }
    std::int64_t count = 0;
    Transactions::WriteScope scope(transactions_);
    for (std::size_t first = 0; first < sets.size();) {
        // Results of other types are converted by themselves.
        std::size_t last = first + 1;
        while (last < sets.size() && typesOf(*sets[last]) == typesOf(*sets[first]))
            ++last;
        insertRows(frame, node, std::span(sets).subspan(first, last - first), most - count,
                   results);
        count += state_.rowCount;
        first = last;
    }
    scope.keep();
    state_.rowCount = count;
    if (!state_.noCount) results.emplace_back().rowsAffected = count;
}

// TOP of INSERT ... EXEC.
std::int64_t ScriptRunner::mostRows(Frame& frame, Instruction& instruction,
                                    const tsql::InsertStatement& node) {
    if (node.top->percent) throw tsql::unsupported("INSERT TOP PERCENT EXEC", instruction.line);
    // Behind what the call itself computes.
    const std::size_t part = node.execute->arguments.size() + 1;
    const Value most = evaluate(frame, instruction, part, *node.top->count, {SqlType::BigInt});
    return std::max<std::int64_t>(wholeOr(most, 0), 0);
}

// The rows lie in a table of the statement's own meanwhile.
void ScriptRunner::insertRows(Frame& frame, const tsql::InsertStatement& node,
                              std::span<const ado::Result* const> given, std::int64_t most,
                              std::vector<ado::Result>& results) {
    const std::vector<TypeSpec> types = typesOf(*given.front());
    auto script = std::make_shared<tsql::Script>();
    script->push_back({insertion(node, types.size()), node.table.line});
    Program program(script, catalogue_);
    program.names().setSchema(frame.program.names().schema());
    program.names().follow(state_.writes);
    for (const LocalTable& table : frame.program.names().localTables()) {
        program.names().addLocalTable(table);
    }
    Frame inner(program);
    inner.keepsTables = true;
    const Running running(*this, inner);
    declareTable(inner, tableOf(types, node.table.line));
    std::string values;
    for (std::size_t i = 0; i < types.size(); ++i)
        values += (i == 0 ? "?" : ", ?") + plain::text(static_cast<std::int64_t>(i) + 1);
    PreparedStatement add(connection_.handle(),
                          "INSERT INTO temp." +
                              sqlName(program.names().localTable(kExecutedRows)->name) +
                              " VALUES (" + values + ")");
    for (const ado::Result* result : given) {
        const std::size_t rows = result->rows.empty() ? 0 : result->rows.front().size();
        for (std::size_t row = 0; row < rows && most > 0; ++row, --most) {
            for (std::size_t i = 0; i < types.size(); ++i) {
                add.bind(static_cast<int>(i) + 1,
                         storedCell(result->columns[i], result->rows[i], row));
            }
            add.run();
        }
    }
    CompiledStatement prepared;
    std::vector<ado::Result> written;
    try {
        statements_.run(prepared, script->front(), written);
    } catch (const ServerError& error) {
        if (!isAboutCount(error.number())) throw;
        throw ServerError(tsql::Message::ValuesDoNotMatchTable, {}, node.table.line);
    }
    tellIgnored(node.table.line);
    frame.scopeIdentity = inner.scopeIdentity;
    // What triggers have answered; the count is told for all rows together.
    for (ado::Result& each : written) {
        if (!each.columns.empty()) results.push_back(std::move(each));
    }
}

}  // namespace kap::engine
