#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"

// CREATE, ALTER and DROP SCHEMA.
namespace kap::engine {

using tsql::ServerError;

namespace {

std::optional<SchemaInfo> schemaOfName(const SchemaCatalogue& catalogue, std::string_view name) {
    for (SchemaInfo& schema : catalogue.schemas()) {
        if (sameName(schema.name, name)) return std::move(schema);
    }
    return std::nullopt;
}

ServerError notThere(const char* action, const char* kind, const std::string& name, int line) {
    return {tsql::Message::CannotDoWithout, {action, kind, name}, line};
}

// Something that the schema has, as messages name it; empty when it has nothing.
std::string objectIn(const SchemaCatalogue& catalogue, std::string_view schema) {
    for (const Table* table : catalogue.tables()) {
        if (sameName(schemaOf(table->name), schema)) return std::string(table->shown());
    }
    for (const StoredObject& object : catalogue.objects()) {
        const bool own = (object.kind == StoredKind::Type || hasTableName(object.kind)) &&
                         sameName(schemaOf(object.name), schema);
        if (own) return std::string(bareName(object.name));
    }
    return {};
}

}  // namespace

// The schema and its elements are made together or not at all.
void ScriptRunner::createSchema(const tsql::CreateSchemaStatement& node, int line,
                                std::vector<ado::Result>& results) {
    Transactions::WriteScope scope(transactions_);
    try {
        makeSchema(node, line, results);
    } catch (const ServerError& error) {
        state_.followUp = ServerError(tsql::Message::SchemaNotMade, {}, error.line());
        throw;
    }
    scope.keep();
}

void ScriptRunner::makeSchema(const tsql::CreateSchemaStatement& node, int line,
                              std::vector<ado::Result>& results) {
    if (schemaOfName(catalogue_, node.name)) {
        throw ServerError(tsql::Message::ObjectExists, {node.name}, line).withState(6);
    }
    // Stored names are cut at their first point.
    if (node.name.find('.') != std::string::npos) {
        throw tsql::unsupported("a schema whose name has a point", line);
    }
    catalogue_.stored().put({0, StoredKind::Schema, node.name, "", ""});
    catalogue_.invalidate();
    Program program({std::shared_ptr<void>(), &node.elements}, catalogue_);
    program.names().setSchema(node.name);
    Frame frame(program);
    const Running running(*this, frame);
    for (const tsql::Statement& element : node.elements) {
        if (const auto* view = std::get_if<tsql::CreateViewStatement>(&element.node)) {
            createView(*view, element.line);
        } else if (isTranslated(element)) {
            CompiledStatement prepared;
            statements_.run(prepared, element, results);
        }
    }
}

void ScriptRunner::dropSchema(const tsql::DropStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    for (const tsql::ObjectName& name : node.names) {
        const auto schema = schemaOfName(catalogue_, name.last());
        if (!schema && node.ifExists) continue;
        if (!schema) throw notThere("drop", "schema", name.last(), line);
        if (!schema->made) {
            throw ServerError(tsql::Message::CannotDropOwn, {"schema", schema->name}, line);
        }
        if (const std::string user = objectIn(catalogue_, schema->name); !user.empty()) {
            throw ServerError(tsql::Message::SchemaIsUsed, {schema->name, user}, line);
        }
        catalogue_.stored().remove(StoredKind::Schema, schema->name);
        catalogue_.invalidate();
    }
    scope.keep();
}

// ALTER SCHEMA ... TRANSFER: texts keep what they say, also of themselves.
void ScriptRunner::transferObject(const tsql::AlterSchemaStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    const auto schema = catalogue_.schemaNamed(node.schema);
    if (!schema) throw notThere("alter", "schema", node.schema, line);
    const std::string before = resolvedName(node.object, kDefaultSchema, catalogue_);
    const std::string after = storedName(*schema, bareName(before));
    const auto movable = [&](const StoredObject& object) {
        const bool kind = node.isType
                              ? object.kind == StoredKind::Type
                              : object.kind != StoredKind::Trigger && hasTableName(object.kind);
        return kind && sameName(object.name, before);
    };
    const Table* table = node.isType ? nullptr : catalogue_.find(before);
    const auto stored = std::ranges::find_if(catalogue_.objects(), movable);
    const bool there = table != nullptr ? !table->temporary : stored != catalogue_.objects().end();
    if (!there) {
        throw notThere("find", node.isType ? "type" : "object", node.object.last(), line);
    }
    if (sameName(before, after)) return;
    const bool taken = node.isType
                           ? catalogue_.aliasType({{*schema, node.object.last()}, line}).has_value()
                           : catalogue_.knows(after);
    if (taken) throw ServerError(tsql::Message::NameTaken, {bareName(before)}, line);
    refuseSchemaBound(catalogue_, "ALTER SCHEMA", before, node.object.text(), line);
    refuseUsedFunction("ALTER SCHEMA", before, node.object.text(), line);
    if (table != nullptr) {
        execution_.captures.removeStale();
        execution_.captures.remove(*table);
        TableChanger(connection_, catalogue_, counters_).renameTable(Table(*table), after);
    } else {
        const StoredKind kind = stored->kind;
        if (kind == StoredKind::Sequence) {
            refuseUsedSequence(catalogue_, "ALTER SCHEMA", before, node.object.text(), line);
            Table counter;
            counter.name = before;
            counters_.rename(counter, after);
        }
        catalogue_.stored().rename(kind, before, after);
    }
    kept_.clear();
    catalogue_.invalidate();
    scope.keep();
}

}  // namespace kap::engine
