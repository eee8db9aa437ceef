#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/system_values.hpp"
#include "engine/catalog/global_tables.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/script/bound_names.hpp"
#include "engine/script/function_rules.hpp"
#include "engine/script/script_runner.hpp"

// What is stored by its text: views, procedures, functions, triggers, types; and ALTER TABLE.
namespace kap::engine {

using tsql::ServerError;

namespace {

StoredKind storedKind(tsql::ModuleKind kind) {
    switch (kind) {
        case tsql::ModuleKind::Procedure:
            return StoredKind::Procedure;
        case tsql::ModuleKind::Function:
            return StoredKind::Function;
        case tsql::ModuleKind::Trigger:
            break;
    }
    return StoredKind::Trigger;
}

StoredKind storedKind(tsql::ObjectKind kind) {
    switch (kind) {
        case tsql::ObjectKind::View:
            return StoredKind::View;
        case tsql::ObjectKind::Procedure:
            return StoredKind::Procedure;
        case tsql::ObjectKind::Function:
            return StoredKind::Function;
        case tsql::ObjectKind::Trigger:
            return StoredKind::Trigger;
        case tsql::ObjectKind::Sequence:
            return StoredKind::Sequence;
        case tsql::ObjectKind::Synonym:
            return StoredKind::Synonym;
        case tsql::ObjectKind::Default:
            return StoredKind::Default;
        case tsql::ObjectKind::Rule:
            return StoredKind::Rule;
        default:
            return StoredKind::Type;
    }
}

const char* kindName(StoredKind kind) {
    switch (kind) {
        case StoredKind::View:
            return "view";
        case StoredKind::Procedure:
            return "procedure";
        case StoredKind::Function:
            return "function";
        case StoredKind::Trigger:
            return "trigger";
        case StoredKind::Sequence:
            return "sequence object";
        case StoredKind::Synonym:
            return "synonym";
        case StoredKind::Default:
            return "default";
        case StoredKind::Rule:
            return "rule";
        default:
            return "type";
    }
}

// As messages name it.
const char* moduleWord(tsql::ModuleKind kind) {
    switch (kind) {
        case tsql::ModuleKind::Procedure:
            return "PROCEDURE";
        case tsql::ModuleKind::Function:
            return "FUNCTION";
        case tsql::ModuleKind::Trigger:
            break;
    }
    return "TRIGGER";
}

// The table of a new trigger, or the view of one that fires instead; without schema it is looked
// for in that of the trigger, too.
std::string parentOfTrigger(const tsql::CreateModuleStatement& node,
                            const SchemaCatalogue& catalogue, int line) {
    const bool qualified = node.name.parts.size() > 1;
    const std::string& given = qualified ? node.name.parts[node.name.parts.size() - 2] : "";
    const std::string_view schema = given.empty() ? kDefaultSchema : std::string_view(given);
    const std::string stored = resolvedName(node.table, schema, catalogue);
    const Table* table = catalogue.find(stored);
    const bool inFile = table != nullptr && !table->temporary && !isGlobalTable(table->name);
    if (inFile) return table->name;
    const View* view = catalogue.findView(stored);
    if (view != nullptr && node.insteadOf) return view->name;
    throw ServerError(tsql::Message::InvalidObjectForOperation, {node.table.text()}, line);
}

// For each event one trigger may fire instead. It cannot stand in for what references do.
void refuseSecondInstead(const SchemaCatalogue& catalogue, const tsql::CreateModuleStatement& node,
                         const std::string& parent, const std::string& name, int line) {
    for (const auto& other : catalogue.triggersOf(parent)) {
        const tsql::TriggerEvents both = other->definition.events & node.events;
        if (!other->definition.insteadOf || both == 0 || sameName(other->object.name, name))
            continue;
        const char* event = (both & tsql::kOnInsert) != 0   ? "INSERT"
                            : (both & tsql::kOnUpdate) != 0 ? "UPDATE"
                                                            : "DELETE";
        throw ServerError(tsql::Message::SecondInsteadOfTrigger,
                          {node.name.last(), node.table.text(), event}, line);
    }
    for (const Reference& each : catalogue.references()) {
        const bool acts =
            ((node.events & tsql::kOnDelete) != 0 &&
             each.onDelete != tsql::ReferenceAction::None) ||
            ((node.events & tsql::kOnUpdate) != 0 && each.onUpdate != tsql::ReferenceAction::None);
        if (!acts || !sameName(each.table, parent)) continue;
        throw ServerError(tsql::Message::InsteadOfTriggerOnCascade,
                          {node.name.last(), node.table.text()}, line);
    }
}

}  // namespace

// What is stored by its text belongs to the database in which it is made.
std::string ScriptRunner::newModuleName(const tsql::ObjectName& name, const char* kind,
                                        int line) const {
    if (name.parts.size() > 2) {
        throw ServerError(tsql::Message::DatabaseBeforeName, {kind}, line);
    }
    return nameToMake(name, catalogue_, line);
}

void ScriptRunner::createView(const tsql::CreateViewStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    const std::string name = newModuleName(node.name, "VIEW", line);
    requireBoundNames(*node.query, "view", node.name, node.text, line);
    // What cannot be read now would fail whoever reads the view.
    NameScope names(catalogue_);
    names.setSchema(schemaOf(name));
    Binder binder(names);
    const BoundQuery bound = binder.query(*node.query, nullptr, QueryPlace::Nested);
    if (!node.columns.empty() && node.columns.size() != bound.columns.size()) {
        const bool more = node.columns.size() < bound.columns.size();
        throw ServerError(
            more ? tsql::Message::MoreColumnsThanNames : tsql::Message::FewerColumnsThanNames,
            {node.name.last()}, line);
    }
    for (std::size_t i = 0; node.columns.empty() && i < bound.columns.size(); ++i) {
        if (!bound.columns[i].name.empty()) continue;
        throw ServerError(tsql::Message::ViewColumnWithoutName,
                          {plain::text(static_cast<std::int64_t>(i) + 1)}, line);
    }
    if (node.replace) refuseSchemaBound(catalogue_, "ALTER", name, node.name.text(), line);
    store({0, StoredKind::View, name, "", node.text}, node.replace, node.mustExist, line);
    scope.keep();
}

void ScriptRunner::createModule(const tsql::CreateModuleStatement& node, int line) {
    if (node.name.last().front() == '#') {
        createTemporary(node, line);
        return;
    }
    Transactions::WriteScope scope(transactions_);
    std::string name = newModuleName(node.name, moduleWord(node.kind), line);
    if (node.kind == tsql::ModuleKind::Function && node.body != nullptr) {
        requireNoSideEffects(*node.body);
    }
    std::string parent;
    if (node.kind == tsql::ModuleKind::Trigger) {
        parent = parentOfTrigger(node, catalogue_, line);
        // A trigger belongs to the schema of its table.
        const std::string own = storedName(schemaOf(parent), node.name.last());
        if (node.name.parts.size() > 1 && !sameName(own, name)) {
            throw ServerError(tsql::Message::TriggerOfOtherSchema, {node.name.text()}, line);
        }
        name = own;
        if (node.insteadOf) refuseSecondInstead(catalogue_, node, parent, name, line);
    }
    if (node.kind == tsql::ModuleKind::Function && node.replace) {
        refuseUsedFunction("ALTER", name, node.name.text(), line);
        refuseSchemaBound(catalogue_, "ALTER", name, node.name.text(), line);
    }
    if (node.rows != nullptr) {
        requireBoundNames(*node.rows, "function", node.name, node.text, line);
        checkRows(node, name, line);
    } else {
        checkColumns(node, name, parent);
    }
    if (node.number > 1) {
        storeNumbered(node, name, line);
    } else {
        store({0, storedKind(node.kind), name, parent, node.text}, node.replace, node.mustExist,
              line);
    }
    scope.keep();
}

// What cannot be read now would fail whoever reads the function.
void ScriptRunner::checkRows(const tsql::CreateModuleStatement& node, const std::string& name,
                             int line) {
    NameScope names(catalogue_);
    names.setSchema(schemaOf(name));
    for (const tsql::ParameterDefinition& parameter : node.parameters) {
        if (parameter.table == nullptr) names.declare(parameter.name, parameter.type, line);
    }
    Binder binder(names);
    const BoundQuery bound = binder.query(*node.rows, nullptr, QueryPlace::Nested);
    for (std::size_t i = 0; i < bound.columns.size(); ++i) {
        if (!bound.columns[i].name.empty()) continue;
        throw ServerError(tsql::Message::FunctionColumnWithoutName,
                          {plain::text(static_cast<std::int64_t>(i) + 1)}, line);
    }
}

void ScriptRunner::createType(const tsql::CreateTypeStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    const bool nullable = node.nullable.value_or(true);
    if (node.table != nullptr) {
        // What is wrong with its columns would fail whoever declares a table of it.
        TableBuilder(NameScope(catalogue_), node.name.last()).add(*node.table);
    }
    store({0, StoredKind::Type, nameToMake(node.name, catalogue_, line),
           nullable ? "" : std::string(kNotNull),
           node.table != nullptr ? node.tableText : tsql::typeText(node.type)},
          false, false, line);
    // What was read before did not know the name.
    kept_.clear();
    scope.keep();
}

// Names of tables, views, procedures, functions and triggers are one space in each schema.
void ScriptRunner::store(StoredObject object, bool replace, bool mustExist, int line) {
    bool there = false;
    bool taken = object.kind != StoredKind::Type && catalogue_.find(object.name) != nullptr;
    for (const StoredObject& other : catalogue_.objects()) {
        if (!sameName(other.name, object.name)) continue;
        if (other.kind == object.kind) {
            there = true;
            object.name = other.name;
            object.enabled = other.enabled;
        } else if (hasTableName(other.kind) && hasTableName(object.kind)) {
            taken = true;
        }
    }
    if (mustExist && !there) {
        throw ServerError(tsql::Message::InvalidObject, {bareName(object.name)}, line).withState(6);
    }
    if (taken || (there && !replace)) {
        throw object.kind == StoredKind::Type
            ? ServerError(tsql::Message::TypeExists, {withSchema(object.name)}, line)
            : ServerError(tsql::Message::ObjectExists, {bareName(object.name)}, line).withState(3);
    }
    object.quotedNames = state_.quotedNames;
    if (object.kind <= StoredKind::Trigger || object.kind == StoredKind::NumberedProcedure) {
        object.text = asCreation(object.text);
    }
    catalogue_.stored().put(object);
    catalogue_.invalidate();
}

// A function stays as long as the definition of a table calls it.
void ScriptRunner::refuseUsedFunction(const char* action, const std::string& stored,
                                      const std::string& shown, int line) const {
    const Function* function = catalogue_.findFunction(stored);
    if (function == nullptr) return;
    const auto calls = [&](const std::string& definition) {
        return std::ranges::any_of(
            std::array<std::string, 2>{"kap_call", kColumnStoredCall},
            [&](const std::string& call) {
                return definition.find(call + "(" + sqlText(function->name)) != std::string::npos;
            });
    };
    const auto refuse = [&](const std::string& user) { refuseUsed(action, shown, user, line); };
    for (const ConstraintInfo& each : catalogue_.constraints()) {
        if (calls(each.definition)) refuse(each.name);
    }
    for (const Table* table : catalogue_.tables()) {
        for (const Column& column : table->columns) {
            if (column.computed && calls(column.defaultSql.value_or(""))) {
                refuse(std::string(table->shown()));
            }
        }
    }
}

void ScriptRunner::dropStored(const tsql::DropStatement& node, int line) {
    const StoredKind kind = storedKind(node.kind);
    Transactions::WriteScope scope(transactions_);
    for (const tsql::ObjectName& name : node.names) {
        if (kind == StoredKind::Procedure && catalogue_.removeTemporary(name.last())) continue;
        const std::string stored = resolvedName(name, kDefaultSchema, catalogue_);
        bool there = false;
        for (const StoredObject& object : catalogue_.objects()) {
            there = there || (object.kind == kind && sameName(object.name, stored));
        }
        if (!there && kind == StoredKind::View && catalogue_.find(stored) != nullptr) {
            throw ServerError(tsql::Message::WrongDropKind, {"VIEW", name.text(), "table", "TABLE"},
                              line);
        }
        if (!there && node.ifExists) continue;
        if (!there) {
            throw ServerError(tsql::Message::CannotDrop, {kindName(kind), name.text()}, line);
        }
        if (kind == StoredKind::Function) {
            refuseUsedFunction("DROP FUNCTION", stored, name.text(), line);
        }
        if (kind == StoredKind::Function || kind == StoredKind::View) {
            refuseSchemaBound(catalogue_, kind == StoredKind::View ? "DROP VIEW" : "DROP FUNCTION",
                              stored, name.text(), line);
        }
        if (kind == StoredKind::Sequence) {
            refuseUsedSequence(catalogue_, "DROP SEQUENCE", stored, name.text(), line);
            counters_.remove({stored, false});
        }
        if (kind == StoredKind::Default || kind == StoredKind::Rule) {
            refuseBoundRule(kind, stored, name.text(), line);
        }
        catalogue_.stored().remove(kind, stored);
        // The whole group goes.
        if (kind == StoredKind::Procedure) catalogue_.stored().removeOf(stored);
        if (kind == StoredKind::Trigger) {
            for (const char* event : {"/INSERT", "/UPDATE", "/DELETE"})
                catalogue_.stored().remove(StoredKind::TriggerOrder, stored + event);
        }
        catalogue_.invalidate();
    }
    if (kind == StoredKind::Type) kept_.clear();
    scope.keep();
}

void ScriptRunner::alterTable(Frame& frame, const tsql::AlterTableStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    execution_.captures.removeStale();
    const Table* table = findOwnTable(node.table, frame.program.names());
    if (table == nullptr && node.action == tsql::AlterTableStatement::Action::Triggers) {
        if (const View* view = findView(node.table, frame.program.names())) {
            TableChanger(connection_, catalogue_, counters_).switchTriggers(view->name, node, line);
            catalogue_.invalidate();
            scope.keep();
            return;
        }
    }
    if (table != nullptr) execution_.captures.remove(*table);
    const std::string written = table != nullptr ? table->name : std::string();
    TableChanger changer(connection_, catalogue_, counters_);
    try {
        changer.alter(node, frame.program.names(), line);
    } catch (const SqliteError& error) {
        throw explained(connection_, catalogue_, error, {"ALTER TABLE", written, {}});
    } catch (const ServerError&) {
        state_.followUp = changer.followUp();
        throw;
    }
    catalogue_.invalidate();
    scope.keep();
}

}  // namespace kap::engine
