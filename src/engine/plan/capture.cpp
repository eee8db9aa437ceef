#include "engine/plan/capture.hpp"

#include <utility>

#include "engine/plan/statements.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

// Numbers the caught rows, the same before and after an update.
constexpr const char* kRowName = "kap row";
// The number of the row in its table.
constexpr const char* kTargetName = "kap target";

const char* wordOf(sql::RowEvent event) {
    return event == sql::RowEvent::Insert   ? "INSERT"
           : event == sql::RowEvent::Update ? "UPDATE"
                                            : "DELETE";
}

std::string triggerName(const Table& table, sql::RowEvent event) {
    return std::string("kap ") + wordOf(event) + " " + captureKey(table);
}

// Puts a row as it was before or is behind the event into the table that catches it.
sql::Write caught(const Table& table, RowState state) {
    const std::string row = state == RowState::Inserted ? "NEW" : "OLD";
    std::vector<sql::Expression> values{sql::null(), sql::Column{row, rowNumberName(table), true}};
    for (const Column& column : table.columns)
        values.push_back(sql::column(row, column.name));
    // Within a trigger a table has no schema before its name; temporary ones are found first.
    sql::Insert insert{{sql::Database::None, capturedRows(table, state).name}};
    insert.rows = sql::Query{sql::Values{{std::move(values)}}};
    return {std::move(insert)};
}

std::string dropIfThere(sql::SchemaObject kind, const std::string& name) {
    return sqlOf(sql::Drop{kind, sql::Database::Temporary, name, true});
}

std::string trigger(const Table& table, sql::RowEvent event, std::vector<sql::Write> steps) {
    return sqlOf(sql::CreateTrigger{triggerName(table, event), event, tableName(table),
                                    sql::call(fn::kCapturing, sql::text(captureKey(table))),
                                    std::move(steps)});
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
    const sql::Write inserted = caught(table, RowState::Inserted);
    const sql::Write deleted = caught(table, RowState::Deleted);
    sql.push_back(trigger(table, sql::RowEvent::Insert, {inserted}));
    sql.push_back(trigger(table, sql::RowEvent::Update, {deleted, inserted}));
    sql.push_back(trigger(table, sql::RowEvent::Delete, {deleted}));
    return sql;
}

std::vector<std::string> makeCapturedRows(const Table& table) {
    std::vector<std::string> sql;
    for (const RowState state : {RowState::Inserted, RowState::Deleted}) {
        sql::CreateTable create{tableName(capturedRows(table, state)),
                                {sql::rowNumbers(kRowName), {kTargetName}}};
        for (const Column& column : table.columns) {
            create.columns.push_back({column.name});
            create.columns.back().collation = collationOf(column);
        }
        sql.push_back(sqlOf(create));
    }
    return sql;
}

CaptureNames captureNames(const Table& table) {
    return {{triggerName(table, sql::RowEvent::Insert), triggerName(table, sql::RowEvent::Update),
             triggerName(table, sql::RowEvent::Delete)},
            {capturedRows(table, RowState::Inserted).name,
             capturedRows(table, RowState::Deleted).name}};
}

std::vector<std::string> removeCapture(const Table& table) {
    const CaptureNames names = captureNames(table);
    std::vector<std::string> sql;
    for (const std::string& trigger : names.triggers)
        sql.push_back(dropIfThere(sql::SchemaObject::Trigger, trigger));
    for (const std::string& rows : names.tables)
        sql.push_back(dropIfThere(sql::SchemaObject::Table, rows));
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
