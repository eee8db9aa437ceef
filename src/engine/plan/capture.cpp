#include "engine/plan/capture.hpp"

#include <utility>

#include "engine/plan/statements.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

// Numbers the caught rows, the same before and after an update.
constexpr const char* kRowName = "kap row";
constexpr const char* kRowColumn = "\"kap row\"";
// The number of the row in its table.
constexpr const char* kTargetColumn = "\"kap target\"";

std::string tableText(const Table& table, RowState state) {
    return "temp." + sqlName(capturedRows(table, state).name);
}

std::string columnsOf(const Table& table, const std::string& row) {
    std::string list;
    for (const Column& column : table.columns)
        list += ", " + row + "." + sqlName(column.name);
    return list;
}

std::string triggerName(const Table& table, const char* event) {
    return std::string("kap ") + event + " " + captureKey(table);
}

std::string trigger(const Table& table, const char* event, const std::string& body) {
    return "CREATE TEMP TRIGGER " + sqlName(triggerName(table, event)) + " AFTER " + event +
           " ON " + tableSql(table.name, table.temporary) + " WHEN " +
           sqlOf(sql::call(fn::kCapturing, sql::text(captureKey(table)))) + " BEGIN " + body +
           " END";
}

std::string caught(const Table& table, RowState state) {
    const std::string row = state == RowState::Inserted ? "NEW" : "OLD";
    // Within a trigger a table has no schema before its name; temporary ones are found first.
    return "INSERT INTO " + sqlName(capturedRows(table, state).name) + " VALUES (NULL, " + row +
           "." + rowNumberName(table) + columnsOf(table, row) + ");";
}

// The table of OUTPUT INTO: nothing may happen there besides.
const Table& outputTarget(const tsql::ObjectName& name, const Binder& binder) {
    const Table* found = findTable(name, binder.names());
    if (found == nullptr && findView(name, binder.names()) != nullptr) {
        throw tsql::ServerError(tsql::Message::OutputIntoView, {name.text()}, name.line);
    }
    const Table& target = requireTable(name, binder.names());
    const auto refuse = [&](tsql::Message message, std::string_view constraint) {
        throw tsql::ServerError(message, {target.shown(), constraint}, name.line);
    };
    if (target.triggerEvents != 0) refuse(tsql::Message::OutputIntoWithTriggers, {});
    if (target.temporary) return target;
    if (const auto key = binder.catalogue().referenceAt(target)) {
        refuse(tsql::Message::OutputIntoWithReference, *key);
    }
    if (const auto check = binder.catalogue().checkOf(target)) {
        refuse(tsql::Message::OutputIntoWithCheck, *check);
    }
    return target;
}

// Rows of OUTPUT INTO are brought to the columns of their table.
sql::Insert insertOutput(const tsql::OutputClause& output, const std::vector<OutputColumn>& items,
                         sql::Select rows, Binder& binder) {
    const Table& target = outputTarget(*output.into, binder);
    std::vector<const Column*> columns;
    for (const std::string& name : output.columns) {
        const Column* column = target.find(name);
        if (column == nullptr) {
            throw tsql::ServerError(tsql::Message::InvalidColumn, {name}, output.into->line);
        }
        columns.push_back(column);
    }
    if (output.columns.empty()) {
        for (const Column& column : target.columns) {
            if (!column.identity && !column.computed) columns.push_back(&column);
        }
    }
    if (columns.size() != items.size()) {
        throw tsql::ServerError(tsql::Message::ValuesDoNotMatchTable, {}, output.into->line);
    }
    sql::Insert insert{tableName(target)};
    sql::Select values;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const BoundExpression value = items[i].value.readBy(numberedColumn(i));
        insert.columns.push_back(columns[i]->name);
        values.items.push_back({binder.stored(value, columns[i]->type, output.into->line)});
    }
    for (const Column& column : target.columns) {
        if (!column.identity) continue;
        insert.columns.push_back(column.name);
        values.items.push_back({identityCall(target.name)});
    }
    values.from = sql::from(sql::Derived{std::move(rows)});
    insert.rows = sql::Query{std::move(values)};
    return insert;
}

}  // namespace

std::vector<std::string> makeCapture(const Table& table) {
    std::vector<std::string> sql = removeCapture(table);
    for (std::string& rows : makeCapturedRows(table))
        sql.push_back(std::move(rows));
    sql.push_back(trigger(table, "INSERT", caught(table, RowState::Inserted)));
    sql.push_back(trigger(table, "UPDATE",
                          caught(table, RowState::Deleted) + caught(table, RowState::Inserted)));
    sql.push_back(trigger(table, "DELETE", caught(table, RowState::Deleted)));
    return sql;
}

std::vector<std::string> makeCapturedRows(const Table& table) {
    std::vector<std::string> sql;
    for (const RowState state : {RowState::Inserted, RowState::Deleted}) {
        std::string columns;
        for (const Column& column : table.columns) {
            columns += ", " + sqlName(column.name);
            columns += collationText(column);
        }
        sql.push_back("CREATE TABLE " + tableText(table, state) + " (" + kRowColumn +
                      " INTEGER PRIMARY KEY, " + kTargetColumn + columns + ")");
    }
    return sql;
}

CaptureNames captureNames(const Table& table) {
    return {
        {triggerName(table, "INSERT"), triggerName(table, "UPDATE"), triggerName(table, "DELETE")},
        {capturedRows(table, RowState::Inserted).name,
         capturedRows(table, RowState::Deleted).name}};
}

std::vector<std::string> removeCapture(const Table& table) {
    const CaptureNames names = captureNames(table);
    std::vector<std::string> sql;
    for (const std::string& trigger : names.triggers)
        sql.push_back("DROP TRIGGER IF EXISTS temp." + sqlName(trigger));
    for (const std::string& rows : names.tables)
        sql.push_back("DROP TABLE IF EXISTS temp." + sqlName(rows));
    return sql;
}

std::optional<Capture> captureFor(const Table& table, tsql::TriggerEvents event,
                                  const std::optional<tsql::OutputClause>& output, Binder& binder) {
    const bool triggers = (table.triggerEvents & event) != 0;
    if (!triggers && !output) return std::nullopt;
    Capture capture;
    capture.forTriggers = triggers;
    capture.event = event;
    if (!output) return capture;
    const Table inserted = capturedRows(table, RowState::Inserted);
    const Table deleted = capturedRows(table, RowState::Deleted);
    Scope scope;
    sql::Select rows;
    if (event != tsql::kOnDelete) {
        scope.sources.push_back(Binder::tableSource(inserted, "inserted"));
        rows.from = sql::from(tableName(inserted, "inserted"));
    }
    if (event != tsql::kOnInsert) {
        scope.sources.push_back(Binder::tableSource(deleted, "deleted"));
        sql::Expression same;
        if (event == tsql::kOnUpdate) {
            same = sql::equal(sql::column("inserted", kRowName), sql::column("deleted", kRowName));
        }
        sql::join(rows.from, sql::JoinOperator::Inner, sql::from(tableName(deleted, "deleted")),
                  std::move(same));
    }
    rows.order.push_back({sql::column(scope.sources.front().name, kRowName)});
    for (Source& source : scope.sources)
        showThroughView(source, table, binder);
    (void)addOutput(capture, *output, table, scope, std::move(rows), binder);
    return capture;
}

void showThroughView(Source& source, const Table& table, const Binder& binder) {
    const Binder::CommonTarget& target = binder.commonTarget();
    if (target.table != &table || target.view.empty()) return;
    std::vector<SourceColumn> shown;
    for (const auto& [name, column] : target.columns) {
        if (column == nullptr || table.find(column->name) != column) continue;
        const auto place = static_cast<std::size_t>(column - table.columns.data());
        shown.push_back({name, source.columns[place].value});
    }
    source.columns = std::move(shown);
}

std::vector<OutputColumn> addOutput(Capture& capture, const tsql::OutputClause& output,
                                    const Table& table, Scope& scope, sql::Select rows,
                                    Binder& binder) {
    if (capture.forTriggers && !output.into) {
        throw tsql::ServerError(tsql::Message::OutputOfTableWithTriggers, {table.shown()});
    }
    std::vector<OutputColumn> items = binder.itemValues(output.items, scope);
    for (std::size_t i = 0; i < items.size(); ++i)
        rows.items.push_back(numberedItem(items[i].value.tree, i));
    capture.outputInto = output.into.has_value();
    capture.outputSql =
        capture.outputInto ? sqlOf(sql::Write{insertOutput(output, items, std::move(rows), binder)})
                           : sqlOf(sql::Query{std::move(rows)});
    for (const OutputColumn& item : items) {
        ResultColumn column;
        column.name = item.name;
        column.type = item.value.type;
        column.nullable = item.value.nullable;
        capture.columns.push_back(std::move(column));
    }
    return items;
}

}  // namespace kap::engine
