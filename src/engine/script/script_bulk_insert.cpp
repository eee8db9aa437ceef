#include <map>
#include <memory>
#include <optional>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/unicode.hpp"
#include "engine/binder/scope.hpp"
#include "engine/executor/bulk_file.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/time_limit.hpp"
#include "engine/values/convert.hpp"

// BULK INSERT: rows of a file go into a table one by one, all or each batch of them in one
// transaction. A row with a field
// that cannot be read is left out and told, until there are too many of them.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr tsql::TypeSpec kFieldText{SqlType::NVarChar, tsql::kMaxLength};

// Whether a field of the file goes into the column: what the database gives is passed over.
bool takesField(const Column* column, const tsql::BulkInsertStatement& bulk) {
    return column != nullptr && !column->isRowVersion() &&
           (!column->identity || bulk.keepsIdentity);
}

// The fields of the file: those of a format file, or one for each column.
BulkFormat layoutOf(const tsql::BulkInsertStatement& bulk, const Table& table, int line) {
    if (!bulk.formatFile.empty()) return bulkFormat(bulk.formatFile, table, line);
    BulkFormat format;
    for (const Column& column : table.columns) {
        if (!column.computed) format.fields.push_back({bulk.fieldTerminator, 0, &column});
    }
    if (!format.fields.empty()) format.fields.back().terminator = bulk.rowTerminator;
    return format;
}

std::vector<const Column*> columnsOf(const BulkFormat& format) {
    std::vector<const Column*> columns;
    for (const BulkField& field : format.fields)
        columns.push_back(field.column);
    return columns;
}

}  // namespace

// An INSERT of one row, whose columns have values or, where there is none, their defaults.
struct ScriptRunner::BulkRow {
    std::shared_ptr<tsql::Script> script;
    std::unique_ptr<Program> program;
    CompiledStatement prepared;
};

void ScriptRunner::bulkInsert(Frame& frame, const tsql::BulkInsertStatement& node, int line,
                              std::vector<ado::Result>& results) {
    std::optional<Transactions::WriteScope> scope(std::in_place, transactions_);
    const BulkFormat format = layoutOf(node, requireTable(node.table, frame.program.names()), line);
    std::vector<const Column*> columns = columnsOf(format);
    BulkFile file(node, format, line);
    auto generation = catalogue_.generation();
    // By which columns have a value.
    std::map<std::vector<bool>, BulkRow> kinds;
    std::int64_t row = 0;
    std::int64_t errors = 0;
    std::int64_t count = 0;
    while (auto fields = file.next()) {
        TimeLimit::check(connection_.handle());
        ++row;
        if (row < node.firstRow) continue;
        if (node.lastRow > 0 && row > node.lastRow) break;
        std::vector<Value> values;
        std::vector<bool> given;
        if (!bulkValues(columns, *fields, node, row, values, given, line)) {
            if (++errors <= node.maxErrors) continue;
            throw ServerError(tsql::Message::TooManyBulkErrors, {plain::text(node.maxErrors)},
                              line);
        }
        BulkRow& kind = kinds[given];
        if (kind.program == nullptr) makeBulkRow(kind, columns, given, frame, node, line);
        Frame inner(*kind.program);
        inner.keepsTables = true;
        inner.values = std::move(values);
        const Running running(*this, inner);
        std::vector<ado::Result> ignored;
        statements_.run(kind.prepared, kind.script->front(), ignored);
        tellIgnored(line);
        count += state_.rowCount;
        if (node.batchSize == 0 || count % node.batchSize != 0) continue;
        scope->keep();
        scope.emplace(transactions_);
        if (generation == catalogue_.generation()) continue;
        // Others have changed the table meanwhile.
        generation = catalogue_.generation();
        kinds.clear();
        columns = columnsOf(layoutOf(node, requireTable(node.table, frame.program.names()), line));
    }
    scope->keep();
    state_.rowCount = count;
    if (!state_.noCount) results.emplace_back().rowsAffected = count;
}

void ScriptRunner::makeBulkRow(BulkRow& row, const std::vector<const Column*>& columns,
                               const std::vector<bool>& given, const Frame& frame,
                               const tsql::BulkInsertStatement& node, int line) {
    std::vector<tsql::DeclaredVariable> variables;
    tsql::InsertStatement insert;
    insert.table = node.table;
    insert.rows.emplace_back();
    std::size_t place = 0;
    for (const Column* column : columns) {
        if (!takesField(column, node)) continue;
        insert.columns.push_back(column->name);
        tsql::ValueOrDefault& value = insert.rows.back().emplace_back();
        if (!given[place++]) continue;
        tsql::DeclaredVariable& variable = variables.emplace_back();
        variable.name = "?" + plain::text(static_cast<std::int64_t>(variables.size()));
        variable.type = column->type;
        value.value = std::make_unique<tsql::Expression>(
            tsql::Expression{tsql::VariableReference{variable.name}, line, 1});
    }
    row.script = std::make_shared<tsql::Script>();
    row.script->push_back({std::move(insert), line});
    row.program = std::make_unique<Program>(row.script, catalogue_, variables);
    WriteSettings settings = state_.writes;
    settings.rowLimit = 0;
    if (node.keepsIdentity) {
        settings.identityInsert = requireTable(node.table, frame.program.names()).name;
    }
    row.program->names().setSchema(frame.program.names().schema());
    row.program->names().follow(settings);
    statements_.translate(row.prepared, row.script->front(), row.program->names());
    if (node.firesTriggers) return;
    auto silent = std::make_shared<StatementPlan>(*row.prepared.plan);
    if (auto* write = std::get_if<WritePlan>(&silent->kind)) write->capture.reset();
    row.prepared.plan = std::move(silent);
}

// The fields of a row as values of its columns, those that have one. False when one of them cannot
// be read, which has been told.
bool ScriptRunner::bulkValues(const std::vector<const Column*>& columns,
                              const std::vector<std::optional<std::string>>& fields,
                              const tsql::BulkInsertStatement& node, std::int64_t row,
                              std::vector<Value>& values, std::vector<bool>& given, int line) {
    constexpr int kTruncated = 8152;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!takesField(columns[i], node)) continue;
        const Column& column = *columns[i];
        // What is not there is the default, or a null that is to stay one.
        given.push_back(fields[i] || node.keepsNulls || !column.defaultSql);
        if (!given.back()) continue;
        if (!fields[i]) {
            values.emplace_back();
            continue;
        }
        try {
            if (!unicode::isUtf8(*fields[i])) throw ServerError(tsql::Message::ConversionFailed);
            // A NUL alone is the empty text.
            const std::string text = *fields[i] == std::string(1, '\0') ? "" : *fields[i];
            values.push_back(convert(text, kFieldText, column.type, Overlength::Refuse));
        } catch (const ServerError& error) {
            report(ServerError(
                error.number() == kTruncated ? tsql::Message::BulkTruncation
                                             : tsql::Message::BulkConversion,
                {plain::text(row), plain::text(static_cast<std::int64_t>(i) + 1), column.name},
                line));
            return false;
        }
    }
    return true;
}

}  // namespace kap::engine
