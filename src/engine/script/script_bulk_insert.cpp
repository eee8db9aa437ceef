#include <map>
#include <memory>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/binder/scope.hpp"
#include "engine/executor/bulk_file.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/values/convert.hpp"

// BULK INSERT: rows of a file go into a table one by one, in one transaction. A row with a field
// that cannot be read is left out and told, until there are too many of them.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr tsql::TypeSpec kFieldText{SqlType::NVarChar, tsql::kMaxLength};

// An INSERT of one row, whose columns have values or, where there is none, their defaults.
struct BulkRow {
    std::shared_ptr<tsql::Script> script;
    std::unique_ptr<Program> program;
    CompiledStatement prepared;
};

std::string placeText(std::int64_t number) {
    return plain::text(number);
}

}  // namespace

void ScriptRunner::bulkInsert(Frame& frame, const tsql::BulkInsertStatement& node, int line,
                              std::vector<ado::Result>& results) {
    BulkFile file(node, line);
    Transactions::WriteScope scope(transactions_);
    const Table& table = requireTable(node.table, frame.program.names());
    std::vector<const Column*> columns;
    for (const Column& column : table.columns) {
        if (!column.computed) columns.push_back(&column);
    }
    WriteSettings settings = state_.writes;
    settings.rowLimit = 0;
    if (node.keepsIdentity) settings.identityInsert = table.name;
    // By which columns have a value.
    std::map<std::vector<bool>, BulkRow> kinds;
    std::int64_t row = 0;
    std::int64_t errors = 0;
    std::int64_t count = 0;
    while (auto fields = file.next(columns.size())) {
        ++row;
        if (row < node.firstRow) continue;
        if (node.lastRow > 0 && row > node.lastRow) break;
        std::vector<Value> values;
        std::vector<bool> given;
        if (!bulkValues(columns, *fields, node, row, values, given, line)) {
            if (++errors <= node.maxErrors) continue;
            throw ServerError(tsql::Message::TooManyBulkErrors, {placeText(node.maxErrors)}, line);
        }
        BulkRow& kind = kinds[given];
        if (kind.program == nullptr) {
            std::vector<tsql::DeclaredVariable> variables;
            tsql::InsertStatement insert;
            insert.table = node.table;
            insert.rows.emplace_back();
            for (std::size_t i = 0, place = 0; i < columns.size(); ++i) {
                const Column& column = *columns[i];
                if (column.isRowVersion() || (column.identity && !node.keepsIdentity)) continue;
                insert.columns.push_back(column.name);
                tsql::ValueOrDefault& value = insert.rows.back().emplace_back();
                if (!given[place++]) continue;
                tsql::DeclaredVariable& variable = variables.emplace_back();
                variable.name = "?" + placeText(static_cast<std::int64_t>(variables.size()));
                variable.type = column.type;
                value.value = std::make_unique<tsql::Expression>(
                    tsql::Expression{tsql::VariableReference{variable.name}, line, 1});
            }
            kind.script = std::make_shared<tsql::Script>();
            kind.script->push_back({std::move(insert), line});
            kind.program = std::make_unique<Program>(kind.script, catalogue_, variables);
            kind.program->names().setSchema(frame.program.names().schema());
            kind.program->names().follow(settings);
            statements_.translate(kind.prepared, kind.script->front(), kind.program->names());
            if (!node.firesTriggers) {
                auto plain = std::make_shared<Translation>(*kind.prepared.translation);
                plain->capture.reset();
                kind.prepared.translation = std::move(plain);
            }
        }
        Frame inner(*kind.program);
        inner.keepsTables = true;
        inner.values = std::move(values);
        const Running running(*this, inner);
        std::vector<ado::Result> ignored;
        statements_.run(kind.prepared, kind.script->front(), ignored);
        tellIgnored(line);
        count += state_.rowCount;
    }
    scope.keep();
    state_.rowCount = count;
    if (!state_.noCount) results.emplace_back().rowsAffected = count;
}

// The fields of a row as values of its columns, those that have one. False when one of them cannot
// be read, which has been told.
bool ScriptRunner::bulkValues(const std::vector<const Column*>& columns,
                              const std::vector<std::optional<std::string>>& fields,
                              const tsql::BulkInsertStatement& node, std::int64_t row,
                              std::vector<Value>& values, std::vector<bool>& given, int line) {
    constexpr int kTruncated = 8152;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column& column = *columns[i];
        if (column.isRowVersion() || (column.identity && !node.keepsIdentity)) continue;
        // What is not there is the default, or a null that is to stay one.
        given.push_back(fields[i] || node.keepsNulls || !column.defaultSql);
        if (!given.back()) continue;
        if (!fields[i]) {
            values.emplace_back();
            continue;
        }
        try {
            // A NUL alone is the empty text.
            const std::string text = *fields[i] == std::string(1, '\0') ? "" : *fields[i];
            values.push_back(convert(text, kFieldText, column.type, Overlength::Refuse));
        } catch (const ServerError& error) {
            report(ServerError(
                error.number() == kTruncated ? tsql::Message::BulkTruncation
                                             : tsql::Message::BulkConversion,
                {placeText(row), placeText(static_cast<std::int64_t>(i) + 1), column.name}, line));
            return false;
        }
    }
    return true;
}

}  // namespace kap::engine
