#include <algorithm>
#include <iterator>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/scope.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/script/server_procedures.hpp"
#include "engine/script/settings_scope.hpp"
#include "engine/values/convert.hpp"
#include "tsql/parser.hpp"

// Calls: stored procedures and texts that are run as scripts.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr TypeSpec kOutputText{SqlType::NVarChar, tsql::kMaxLength};

ServerError noProcedure(const std::string& name, int line) {
    return {tsql::Message::UnknownProcedure, {name}, line};
}

}  // namespace

void ScriptRunner::execute(Frame& frame, Instruction& instruction,
                           const tsql::ExecuteStatement& node, std::vector<ado::Result>& results) {
    if (!node.resultSets || node.resultSets->kind == tsql::ResultSets::Kind::Undefined) {
        executeCall(frame, instruction, node, results);
        return;
    }
    const auto columns = promised(*node.resultSets, frame, instruction.line);
    std::vector<ado::Result> given;
    executeCall(frame, instruction, node, given);
    keepPromise(columns, given, instruction.line);
    std::ranges::move(given, std::back_inserter(results));
}

void ScriptRunner::executeCall(Frame& frame, Instruction& instruction,
                               const tsql::ExecuteStatement& node,
                               std::vector<ado::Result>& results) {
    if (node.text != nullptr) {
        executeText(textOf(frame, instruction, 0, *node.text), instruction.line, results);
        return;
    }
    const tsql::ObjectName name = procedureName(frame, instruction, node);
    const std::string lower = asciiLower(name.last());
    // The server's own come before others of their names.
    if (executeSystem(frame, instruction, node, lower, results)) return;
    if (const auto module = calledModule(name, node.number, frame)) {
        executeModule(frame, instruction, node, module, results);
        return;
    }
    refuseOtherServer(name);
    if (isServerProcedure(lower)) throw tsql::unsupported("procedure " + lower, instruction.line);
    throw noProcedure(name.text(), instruction.line);
}

// The procedure that is called; EXEC @name has its name in a variable.
tsql::ObjectName ScriptRunner::procedureName(Frame& frame, Instruction& instruction,
                                             const tsql::ExecuteStatement& node) {
    if (node.procedureVariable.empty()) return node.procedure;
    const Variable* variable = frame.program.names().variable(node.procedureVariable);
    const Value text = variable == nullptr
                           ? Value()
                           : convert(frame.values[static_cast<std::size_t>(variable->slot)],
                                     variable->type, kOutputText, Overlength::Cut);
    // Another procedure's parameters may have other types.
    instruction.values.clear();
    const auto* name = std::get_if<std::string>(&text);
    if (name == nullptr || name->empty()) return {{""}, instruction.line};
    try {
        return tsql::parseObjectName(*name);
    } catch (const ServerError&) {
        return {{*name}, instruction.line};
    }
}

// What ends a scope ends no more than the call, and so do the settings of the called program.
void ScriptRunner::runCalled(Frame& called, std::vector<ado::Result>& results) {
    const SettingsScope settings(state_, connection_, catalogue_);
    try {
        runFrame(called, results);
    } catch (const ScopeEnded&) {
        // What ended it is among the messages, and the caller goes on.
    }
}

void ScriptRunner::executeText(const std::string& text, int line,
                               std::vector<ado::Result>& results) {
    std::shared_ptr<Program> program = programOf(text, {});
    Frame called(*program);
    const int depth = transactions_.depth();
    runCalled(called, results);
    requireDepth(depth, line);
}

// What is called must leave as many transactions open as there were.
void ScriptRunner::requireDepth(int before, int line) const {
    if (transactions_.depth() == before) return;
    throw ServerError(tsql::Message::TransactionCountMismatch,
                      {plain::text(before), plain::text(transactions_.depth())}, line);
}

void ScriptRunner::executeModule(Frame& frame, Instruction& instruction,
                                 const tsql::ExecuteStatement& node,
                                 const std::shared_ptr<const Module>& module,
                                 std::vector<ado::Result>& results) {
    const tsql::CreateModuleStatement& definition = module->definition;
    if (definition.rows != nullptr || definition.returnTable != nullptr) {
        throw ServerError(tsql::Message::CallOfTableFunction, {bareName(module->object.name)},
                          instruction.line);
    }
    const std::shared_ptr<Program> program = programOf(module);
    Frame called(*program);
    bindArguments(frame, instruction, node, *module, called);
    takeCursors(frame, node, definition, called, instruction.line);
    const int depth = transactions_.depth();
    runCalled(called, results);
    const std::int32_t error = state_.error;
    const std::int64_t rowCount = state_.rowCount;
    const auto& parameters = module->definition.parameters;
    giveCursors(frame, node, definition, called);
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
        const tsql::Argument& argument = node.arguments[i];
        if (!argument.output || argument.value == nullptr) continue;
        const auto* variable = std::get_if<tsql::VariableReference>(&argument.value->node);
        std::size_t place = i;
        for (std::size_t j = 0; !argument.name.empty() && j < parameters.size(); ++j) {
            if (sameName(parameters[j].name, argument.name)) place = j;
        }
        if (parameters[place].cursor) continue;
        setVariable(frame, variable->name, called.values[place], parameters[place].type,
                    instruction.line);
    }
    if (!node.resultVariable.empty()) {
        const bool function = module->definition.kind == tsql::ModuleKind::Function;
        const Value none = function ? Value() : Value(std::int64_t{0});
        setVariable(frame, node.resultVariable, called.returned.value_or(none),
                    function ? module->definition.returns : TypeSpec{SqlType::Int},
                    instruction.line);
    }
    state_.error = error;
    state_.rowCount = rowCount;
    requireDepth(depth, instruction.line);
}

// A value that the parameter cannot take, in the words that the server has for arguments.
Value ScriptRunner::argumentValue(Frame& frame, Instruction& instruction, std::size_t part,
                                  const tsql::Expression& value, const tsql::TypeSpec& type) {
    try {
        return evaluate(frame, instruction, part, value, type);
    } catch (const ServerError& error) {
        constexpr std::array kNotConverted{241, 245, 295};
        if (std::ranges::find(kNotConverted, error.number()) == kNotConverted.end()) throw;
        const auto* literal = std::get_if<tsql::Literal>(&value.node);
        const auto* named = std::get_if<tsql::VariableReference>(&value.node);
        const Variable* variable =
            named == nullptr ? nullptr : frame.program.names().variable(named->name);
        const bool national =
            literal != nullptr && literal->kind == tsql::LiteralKind::NationalText;
        const SqlType given = variable != nullptr ? variable->type.type
                              : national          ? SqlType::NVarChar
                                                  : SqlType::VarChar;
        throw ServerError(tsql::Message::ErrorConvertingType,
                          {tsql::typeName(given), tsql::typeName(type.type)}, instruction.line)
            .withState(5);
    }
}

// Arguments by name or by place; what is left out has the parameter's default.
void ScriptRunner::bindArguments(Frame& frame, Instruction& instruction,
                                 const tsql::ExecuteStatement& node, const Module& module,
                                 Frame& called) {
    const auto& parameters = module.definition.parameters;
    const std::string procedure(bareName(module.object.name));
    std::vector<bool> given(parameters.size());
    if (node.arguments.size() > parameters.size()) {
        throw ServerError(tsql::Message::TooManyArguments, {procedure}, instruction.line);
    }
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
        const tsql::Argument& argument = node.arguments[i];
        std::size_t place = i;
        if (!argument.name.empty()) {
            for (place = 0; place < parameters.size(); ++place) {
                if (sameName(parameters[place].name, argument.name)) break;
            }
            if (place == parameters.size()) {
                throw ServerError(tsql::Message::NoParameterOfProcedure, {argument.name, procedure},
                                  instruction.line);
            }
        }
        if (argument.value == nullptr) continue;  // DEFAULT
        if (parameters[place].cursor) {
            given[place] = true;
            continue;
        }
        if (parameters[place].table != nullptr) {
            giveTable(frame, &argument, *parameters[place].table, called, instruction.line);
            given[place] = true;
            continue;
        }
        const bool variable = std::holds_alternative<tsql::VariableReference>(argument.value->node);
        if (argument.output && (!parameters[place].output || !variable)) {
            throw parameters[place].output
                ? ServerError(tsql::Message::OutputOfConstant, {}, instruction.line)
                : ServerError(tsql::Message::NoOutputParameter, {parameters[place].name},
                              instruction.line);
        }
        called.values[place] =
            argumentValue(frame, instruction, i, *argument.value, parameters[place].type);
        given[place] = true;
    }
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (given[i]) continue;
        const tsql::ParameterDefinition& parameter = parameters[i];
        if (parameter.table != nullptr) {
            giveTable(frame, nullptr, *parameter.table, called, instruction.line);
            continue;
        }
        if (parameter.defaultValue == nullptr) {
            throw ServerError(tsql::Message::ParameterNotSupplied, {procedure, parameter.name},
                              instruction.line);
        }
        called.values[i] = evaluate(frame, instruction, node.arguments.size() + i,
                                    *parameter.defaultValue, parameter.type);
    }
}

}  // namespace kap::engine
