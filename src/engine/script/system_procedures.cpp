#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "engine/catalog/column_users.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/values/convert.hpp"
#include "tsql/parser.hpp"

// The procedures that every server has, as far as scripts call them.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

// What administers a server and has no meaning on one file.
constexpr std::array kNoEffect{"sp_dboption",
                               "sp_grantdbaccess",
                               "sp_addrolemember",
                               "sp_addlogin",
                               "sp_adduser",
                               "sp_updatestats",
                               "sp_configure",
                               "sp_recompile",
                               "sp_changedbowner",
                               "sp_addextendedproperty",
                               "sp_updateextendedproperty",
                               "sp_tableoption",
                               "sp_refreshview",
                               "sp_bindsession",
                               "sp_fulltext_database"};

const std::string& argumentAt(const std::vector<std::string>& arguments, std::size_t index,
                              const char* procedure, const char* name, int line) {
    if (index < arguments.size()) return arguments[index];
    throw ServerError(tsql::Message::ParameterNotSupplied, {procedure, name}, line);
}

// The name that a text holds; one that cannot be read is a name as it is.
tsql::ObjectName nameIn(const std::string& text, int line) {
    try {
        tsql::ObjectName name = tsql::parseObjectName(text);
        name.line = line;
        return name;
    } catch (const ServerError&) {
        return {{text}, line};
    }
}

}  // namespace

bool ScriptRunner::executeSystem(Frame& frame, Instruction& instruction,
                                 const tsql::ExecuteStatement& node, const std::string& name,
                                 std::vector<ado::Result>& results) {
    if (!name.starts_with("sp_")) return false;
    const int line = instruction.line;
    if (name == "sp_executesql") {
        executeSql(frame, instruction, node, results);
        return true;
    }
    const bool configures = name == "sp_dboption" || name == "sp_configure";
    if (configures && configureTriggers(name, textArguments(frame, instruction, node))) {
        // The file remembers it.
    } else if (name == "sp_sequence_get_range") {
        drawRange(frame, instruction, node);
    } else if (name == "sp_getapplock") {
        takeApplicationLock(frame, instruction, node);
    } else if (name == "sp_releaseapplock") {
        releaseApplicationLock(frame, instruction, node);
    } else if (name == "sp_settriggerorder") {
        setTriggerOrder(textArguments(frame, instruction, node), line);
    } else if (std::ranges::find(kNoEffect, name) != kNoEffect.end()) {
        note(name + " has no effect on a database of one file.");
    } else if (name == "sp_set_session_context") {
        setSessionContext(frame, instruction, node);
    } else if (name == "sp_addtype") {
        addType(textArguments(frame, instruction, node), line);
    } else if (name == "sp_droptype") {
        dropType(textArguments(frame, instruction, node), line);
    } else if (name.find("bindefault") != std::string::npos || name.ends_with("bindrule")) {
        if (!bindRule(name, textArguments(frame, instruction, node), line, results)) return false;
    } else if (name == "sp_rename") {
        renameObject(textArguments(frame, instruction, node), line);
    } else if (name == "sp_dbcmptlevel") {
        compatibilityLevel(textArguments(frame, instruction, node), line);
    } else if (name == "sp_spaceused") {
        spaceUsed(textArguments(frame, instruction, node), line, results);
    } else if (name == "sp_helptext") {
        helpText(textArguments(frame, instruction, node), line, results);
    } else {
        return executeCatalogue(frame, instruction, node, name, results);
    }
    state_.error = 0;
    state_.rowCount = 0;
    return true;
}

// EXEC sp_executesql N'text', N'@a int, @b int OUTPUT', @a = 1, @b = @x OUTPUT.
void ScriptRunner::executeSql(Frame& frame, Instruction& instruction,
                              const tsql::ExecuteStatement& node,
                              std::vector<ado::Result>& results) {
    if (node.arguments.empty() || node.arguments.front().value == nullptr) {
        throw ServerError(tsql::Message::ParameterNotSupplied, {"sp_executesql", "@statement"},
                          instruction.line)
            .withState(10);
    }
    const std::string text = textOf(frame, instruction, 0, *node.arguments[0].value);
    std::vector<tsql::DeclaredVariable> declared;
    std::vector<tsql::ParameterDefinition> parameters;
    if (node.arguments.size() > 1) {
        const std::string definitions = textOf(frame, instruction, 1, *node.arguments[1].value);
        parameters =
            tsql::parseParameters(definitions, catalogue_.parseOptions(state_.quotedNames));
        for (const tsql::ParameterDefinition& parameter : parameters) {
            tsql::DeclaredVariable& variable = declared.emplace_back();
            variable.name = parameter.name;
            variable.type = parameter.type;
        }
    }
    const std::shared_ptr<Program> program = programOf(text, declared);
    Frame called(*program);
    constexpr std::size_t kFirst = 2;
    std::vector<std::size_t> places;
    for (std::size_t i = kFirst; i < node.arguments.size(); ++i) {
        const tsql::Argument& argument = node.arguments[i];
        std::size_t place = i - kFirst;
        for (std::size_t j = 0; !argument.name.empty() && j < declared.size(); ++j) {
            if (sameName(declared[j].name, argument.name)) place = j;
        }
        if (place >= declared.size()) {
            throw ServerError(tsql::Message::TooManyArguments, {"sp_executesql"}, instruction.line);
        }
        if (parameters[place].table != nullptr) {
            giveTable(frame, &argument, *parameters[place].table, called, instruction.line);
        } else if (argument.value != nullptr) {
            // The same call may come with other definitions.
            instruction.values.resize(std::min(instruction.values.size(), i));
            called.values[place] =
                evaluate(frame, instruction, i, *argument.value, declared[place].type);
        }
        places.push_back(place);
    }
    if (node.arguments.size() < declared.size() + kFirst && !declared.empty() &&
        node.arguments.size() > kFirst - 1) {
        throw ServerError(tsql::Message::QueryParameterNotSupplied,
                          {textOf(frame, instruction, 1, *node.arguments[1].value), text,
                           declared[node.arguments.size() - kFirst].name},
                          instruction.line);
    }
    const int depth = transactions_.depth();
    runCalled(called, results);
    for (std::size_t i = kFirst; i < node.arguments.size(); ++i) {
        const tsql::Argument& argument = node.arguments[i];
        if (!argument.output || argument.value == nullptr) continue;
        const auto* variable = std::get_if<tsql::VariableReference>(&argument.value->node);
        if (variable == nullptr) continue;
        const std::size_t place = places[i - kFirst];
        setVariable(frame, variable->name, called.values[place], declared[place].type,
                    instruction.line);
    }
    if (!node.resultVariable.empty()) {
        setVariable(frame, node.resultVariable, std::int64_t{0}, {SqlType::Int}, instruction.line);
    }
    requireDepth(depth, instruction.line);
}

std::vector<std::string> ScriptRunner::textArguments(Frame& frame, Instruction& instruction,
                                                     const tsql::ExecuteStatement& node) {
    std::vector<std::string> result;
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
        const auto& value = node.arguments[i].value;
        result.push_back(value == nullptr ? "" : textOf(frame, instruction, i, *value));
    }
    return result;
}

// sp_addtype name, 'varchar(11)', 'NOT NULL'.
void ScriptRunner::addType(const std::vector<std::string>& arguments, int line) {
    tsql::CreateTypeStatement type;
    type.name = nameIn(argumentAt(arguments, 0, "sp_addtype", "@typename", line), line);
    type.type = tsql::parseType(argumentAt(arguments, 1, "sp_addtype", "@phystype", line));
    if (arguments.size() > 2 && !arguments[2].empty()) {
        type.nullable = !equalsIgnoringCase(arguments[2], "NOT NULL") &&
                        !equalsIgnoringCase(arguments[2], "NONULL");
    }
    createType(type, line);
}

void ScriptRunner::dropType(const std::vector<std::string>& arguments, int line) {
    tsql::DropStatement drop;
    drop.kind = tsql::ObjectKind::Type;
    drop.names.push_back(nameIn(argumentAt(arguments, 0, "sp_droptype", "@typename", line), line));
    dropStored(drop, line);
}

// sp_rename 'table', 'new'; sp_rename 'table.column', 'new', 'COLUMN'. The new name stands in the
// same schema.
void ScriptRunner::renameObject(const std::vector<std::string>& arguments, int line) {
    const std::string& object = argumentAt(arguments, 0, "sp_rename", "@objname", line);
    const std::string& newName = argumentAt(arguments, 1, "sp_rename", "@newname", line);
    const std::string kind = arguments.size() > 2 ? asciiUpper(arguments[2]) : "OBJECT";
    Transactions::WriteScope scope(transactions_);
    execution_.captures.removeStale();
    tsql::ObjectName name = nameIn(object, line);
    if (kind == "COLUMN") {
        const std::string column = name.last();
        name.parts.pop_back();
        if (name.parts.empty()) throw ServerError(tsql::Message::AmbiguousRename, {}, line);
        const Table* table = catalogue_.find(resolvedName(name, kDefaultSchema, catalogue_));
        if (table == nullptr) throw ServerError(tsql::Message::AmbiguousRename, {}, line);
        refuseRename(*table, object, line);
        if (isNamedByDefinitions(catalogue_, *table, column)) {
            throw ServerError(tsql::Message::RenameOfDependency, {object}, line);
        }
        TableChanger(connection_, catalogue_, counters_)
            .renameColumn(Table(*table), column, newName, line);
    } else if (kind == "INDEX") {
        const std::string index = name.last();
        name.parts.pop_back();
        const Table* table = name.parts.empty()
                                 ? nullptr
                                 : catalogue_.find(resolvedName(name, kDefaultSchema, catalogue_));
        if (table == nullptr || !TableChanger(connection_, catalogue_, counters_)
                                     .renameIndex(Table(*table), index, newName)) {
            throw ServerError(tsql::Message::NoSuchItem, {object, catalogue_.databaseName()}, line);
        }
    } else if (kind == "OBJECT") {
        renameByName(name, object, newName, line);
    } else if (kind == "USERDATATYPE") {
        renameStored(StoredKind::Type, resolvedName(name, kDefaultSchema, catalogue_), object,
                     newName, line);
        kept_.clear();
    } else {
        throw tsql::unsupported("sp_rename of " + kind, line);
    }
    catalogue_.invalidate();
    scope.keep();
    note("Caution: Changing any part of an object name could break scripts and stored procedures.");
}

// A table, what is stored by its text, or a constraint.
void ScriptRunner::renameByName(const tsql::ObjectName& name, const std::string& object,
                                const std::string& newName, int line) {
    const std::string stored = resolvedName(name, kDefaultSchema, catalogue_);
    const std::string after = storedName(schemaOf(stored), newName);
    TableChanger changer(connection_, catalogue_, counters_);
    if (catalogue_.knows(after) || isKeptByTheFile(after)) {
        throw ServerError(tsql::Message::RenameTargetExists, {newName, "OBJECT"}, line);
    }
    if (const Table* table = catalogue_.find(stored)) {
        refuseRename(*table, object, line);
        changer.renameTable(Table(*table), after);
        return;
    }
    for (const ConstraintInfo& each : catalogue_.constraints()) {
        if (!sameName(storedName(each), stored)) continue;
        const Table* table = catalogue_.find(each.table);
        execution_.captures.remove(*table);
        (void)changer.renameConstraint(Table(*table), each.name, newName);
        return;
    }
    for (const StoredObject& each : catalogue_.objects()) {
        if (!hasTableName(each.kind) || !sameName(each.name, stored)) continue;
        renameStored(each.kind, stored, object, newName, line);
        return;
    }
    throw ServerError(tsql::Message::NoSuchItem, {object, catalogue_.databaseName()}, line);
}

void ScriptRunner::renameStored(StoredKind kind, const std::string& stored,
                                const std::string& object, const std::string& newName, int line) {
    const std::vector<StoredObject> objects = catalogue_.objects();
    const auto found = std::ranges::find_if(objects, [&](const StoredObject& each) {
        return each.kind == kind && sameName(each.name, stored);
    });
    if (found == objects.end()) {
        throw ServerError(tsql::Message::NoSuchItem, {object, catalogue_.databaseName()}, line);
    }
    if (schemaBoundUser(catalogue_, stored)) {
        throw ServerError(tsql::Message::RenameOfDependency, {object}, line);
    }
    refuseUsedFunction("sp_rename", stored, object, line);
    const std::string after = storedName(schemaOf(stored), newName);
    if (kind == StoredKind::Sequence)
        refuseUsedSequence(catalogue_, "sp_rename", stored, object, line);
    catalogue_.stored().rename(kind, found->name, after);
    if (kind == StoredKind::Sequence) {
        Table counter;
        counter.name = found->name;
        counters_.rename(counter, after);
    }
    if (kind > StoredKind::Trigger) return;
    StoredObject other = *found;
    other.name = after;
    other.text = withObjectName(found->text, newName);
    catalogue_.stored().put(other);
    if (kind == StoredKind::View) catalogue_.stored().renameParent(found->name, after);
}

void ScriptRunner::refuseRename(const Table& table, const std::string& object, int line) {
    if (schemaBoundUser(catalogue_, table.name)) {
        throw ServerError(tsql::Message::RenameOfDependency, {object}, line);
    }
    execution_.captures.remove(table);
}

// sp_helptext 'name': the text of a view, procedure, function or trigger, line by line.
void ScriptRunner::helpText(const std::vector<std::string>& arguments, int line,
                            std::vector<ado::Result>& results) {
    const std::string& name = argumentAt(arguments, 0, "sp_helptext", "@objname", line);
    const Transactions::ReadScope scope(transactions_);
    const std::string wanted = objectNamed(catalogue_, name);
    for (const StoredObject& object : catalogue_.objects()) {
        const bool text = object.kind <= StoredKind::Trigger;
        if (!text || !sameName(object.name, wanted)) continue;
        ado::Result result;
        ResultColumn column;
        column.name = "Text";
        column.type = {SqlType::NVarChar, 255};
        result.columns = columnInfos({column}, catalogue_);
        ado::ColumnStore& lines = result.rows.emplace_back();
        std::size_t start = 0;
        while (start < object.text.size()) {
            const std::size_t end =
                std::min(object.text.find('\n', start), object.text.size() - 1) + 1;
            lines.appendBytes(std::string_view(object.text).substr(start, end - start));
            start = end;
        }
        results.push_back(std::move(result));
        return;
    }
    throw ServerError(tsql::Message::NoSuchObject, {name, catalogue_.databaseName()}, line);
}

}  // namespace kap::engine
