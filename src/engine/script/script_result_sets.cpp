#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/binder/scope.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/values/convert.hpp"
#include "tsql/parser.hpp"

// EXEC ... WITH RESULT SETS: results with the names and types that the call promises.
namespace kap::engine {
namespace {

using tsql::Message;
using tsql::ServerError;

ResultColumn promisedColumn(std::string name, const tsql::TypeSpec& type, bool nullable) {
    ResultColumn column;
    column.name = std::move(name);
    column.type = type;
    column.nullable = nullable;
    return column;
}

std::string counted(std::size_t number) {
    return plain::text(static_cast<std::int64_t>(number));
}

void checkTypes(const std::vector<ResultColumn>& promised, const ado::Result& given,
                std::size_t place, int line) {
    if (promised.size() != given.columns.size()) {
        throw ServerError(Message::ResultSetColumnCount,
                          {counted(promised.size()), counted(place), counted(given.columns.size())},
                          line);
    }
    for (std::size_t i = 0; i < promised.size(); ++i) {
        const tsql::TypeSpec sent = storedType(given.columns[i]);
        if (conversionRule(sent.type, promised[i].type.type) != ConversionRule::Never) continue;
        throw ServerError(Message::ResultSetType,
                          {tsql::typeText(promised[i].type), counted(i + 1), counted(place),
                           tsql::typeText(sent)},
                          line);
    }
}

// The columns of one result, with its cells brought to the types that were promised.
ado::Result converted(const std::vector<ResultColumn>& promised, const ado::Result& given,
                      std::vector<ado::ColumnInfo> columns, std::size_t place, int line) {
    ado::Result result;
    result.columns = std::move(columns);
    result.rows.resize(promised.size());
    for (std::size_t i = 0; i < promised.size(); ++i) {
        const tsql::TypeSpec sent = storedType(given.columns[i]);
        for (std::size_t row = 0; row < given.rows[i].size(); ++row) {
            const Value value = convert(storedCell(given.columns[i], given.rows[i], row), sent,
                                        promised[i].type, Overlength::Cut);
            if (isNull(value) && !promised[i].nullable) {
                throw ServerError(Message::ResultSetNull, {counted(i + 1), counted(place)}, line);
            }
            ado::append(result.rows[i], toldValue(value, promised[i].type));
        }
    }
    return result;
}

}  // namespace

std::vector<std::vector<ResultColumn>> ScriptRunner::promised(const tsql::ResultSets& sets,
                                                              const Frame& frame, int line) {
    const Transactions::ReadScope scope(transactions_);
    const NameScope& names = frame.program.names();
    std::vector<std::vector<ResultColumn>> result;
    for (const tsql::ResultSets::Set& set : sets.sets) {
        std::vector<ResultColumn>& columns = result.emplace_back();
        for (const tsql::ResultSetColumn& column : set.columns)
            columns.push_back(promisedColumn(column.name, column.type, column.nullable));
        if (set.object.parts.empty()) continue;
        if (set.isType) {
            const auto type = catalogue_.aliasType(set.object);
            if (!type || type->table.empty()) {
                throw ServerError(Message::InvalidObject, {set.object.text()}, line);
            }
            const tsql::CreateTableStatement table =
                tsql::parseTableBody(type->table, set.object.last());
            TableBuilder builder(NameScope(catalogue_), set.object.last());
            builder.add(table);
            for (const Column& column : builder.table().columns)
                columns.push_back(promisedColumn(column.name, column.type, column.nullable));
            continue;
        }
        // What it shows is what a query of it would show.
        auto query = std::make_unique<tsql::Query>();
        tsql::Select all;
        all.items.push_back({tsql::StarItem{}, line});
        all.from.push_back(std::make_unique<tsql::TableSource>(
            tsql::TableSource{tsql::NamedTable{set.object, ""}, line, 1}));
        query->terms.push_back({std::move(all), tsql::SetOperator::Union, line});
        const tsql::Statement select{tsql::SelectStatement{std::move(query)}, line};
        const StatementPlan plan = translate(select, names);
        for (const ResultColumn& column : std::get<QueryPlan>(plan.kind).columns)
            columns.push_back(promisedColumn(column.name, column.type, column.nullable));
    }
    return result;
}

void ScriptRunner::keepPromise(const std::vector<std::vector<ResultColumn>>& promised,
                               std::vector<ado::Result>& given, int line) const {
    std::size_t place = 0;
    for (ado::Result& result : given) {
        if (result.columns.empty()) continue;
        if (place == promised.size()) {
            throw ServerError(Message::MoreResultSets, {counted(promised.size())}, line);
        }
        const std::vector<ResultColumn>& wanted = promised[place++];
        checkTypes(wanted, result, place, line);
        result = converted(wanted, result, columnInfos(wanted, catalogue_), place, line);
    }
    if (place == promised.size()) return;
    throw ServerError(Message::FewerResultSets, {counted(promised.size()), counted(place)}, line);
}

}  // namespace kap::engine
