#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/values/convert.hpp"

// Cursors. Each has the rows that its query had when it was opened.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr std::int32_t kFetched = 0;
constexpr std::int32_t kNoMoreRows = -1;

}  // namespace

void ScriptRunner::declareCursor(Frame& frame, const tsql::DeclareCursorStatement& node, int line) {
    const std::string key = asciiLower(node.name);
    Cursors& cursors = node.local ? frame.cursors : cursors_;
    if (cursors.contains(key)) {
        throw ServerError(tsql::Message::CursorExists, {node.name}, line);
    }
    cursors.emplace(key, newCursor(frame, node));
}

std::shared_ptr<Cursor> ScriptRunner::newCursor(Frame& frame,
                                                const tsql::DeclareCursorStatement& node) {
    auto cursor = std::make_shared<Cursor>();
    cursor->name = node.name;
    cursor->kind = node.kind;
    cursor->scroll = node.scroll;
    cursor->readOnly = node.readOnly;
    cursor->updatable = node.updatable;
    cursor->query = node.query;
    // The variables have the values of now whenever it is opened.
    std::vector<tsql::DeclaredVariable> variables;
    for (const Variable& variable : frame.program.names().variables()) {
        tsql::DeclaredVariable& declared = variables.emplace_back();
        declared.name = variable.name;
        declared.type = variable.type;
    }
    cursor->program =
        std::make_shared<Program>(std::make_shared<const tsql::Script>(), catalogue_, variables);
    for (const LocalTable& table : frame.program.names().localTables()) {
        cursor->program->names().addLocalTable(table);
    }
    // What cannot be read now would fail whoever opens it.
    {
        const Transactions::ReadScope scope(transactions_);
        (void)translateCursor(*std::get<tsql::SelectStatement>(node.query->node).query,
                              cursor->program->names());
    }
    cursor->values = frame.values;
    return cursor;
}

// A variable takes a new cursor, or one that is there: both names mean the same then.
void ScriptRunner::assignCursor(Frame& frame, const tsql::AssignCursorStatement& node, int line) {
    std::shared_ptr<Cursor> cursor =
        node.definition != nullptr ? newCursor(frame, *node.definition) : cursorNamed(node.source);
    if (cursor == nullptr && !node.source.starts_with('@')) {
        throw ServerError(tsql::Message::UnknownCursor, {node.source}, line);
    }
    frame.cursors[asciiLower(node.variable)] = std::move(cursor);
}

// A script's own cursor comes before a global one of that name.
std::shared_ptr<Cursor> ScriptRunner::cursorNamed(const std::string& name, bool global) const {
    const std::string key = asciiLower(name);
    const std::array<const Cursors*, 2> places{&state_.frame().cursors, &cursors_};
    for (const Cursors* cursors : places) {
        if (global && cursors != &cursors_) continue;
        const auto found = cursors->find(key);
        if (found != cursors->end()) return found->second;
    }
    return nullptr;
}

const Cursor* ScriptRunner::findCursor(const std::string& name) const {
    return cursorNamed(name).get();
}

std::int64_t ScriptRunner::cursorStatus(std::string_view kind, const std::string& name) const {
    constexpr std::int64_t kNone = -3;
    constexpr std::int64_t kEmptyVariable = -2;
    constexpr std::int64_t kClosed = -1;
    const bool variable = equalsIgnoringCase(kind, "variable");
    const bool global = equalsIgnoringCase(kind, "global");
    const bool known = variable || global || equalsIgnoringCase(kind, "local");
    if (!known || variable != name.starts_with('@')) return kNone;
    const Cursors& cursors = global ? cursors_ : state_.frame().cursors;
    const auto found = cursors.find(asciiLower(name));
    if (found == cursors.end()) return kNone;
    if (found->second == nullptr) return kEmptyVariable;
    const Cursor& cursor = *found->second;
    if (!cursor.open) return kClosed;
    return cursor.count() > 0 || cursor.kind == tsql::CursorKind::Dynamic ? 1 : 0;
}

std::shared_ptr<Cursor> ScriptRunner::requireCursor(const std::string& name, bool global,
                                                    int line) const {
    std::shared_ptr<Cursor> cursor = cursorNamed(name, global);
    if (cursor == nullptr) {
        throw name.starts_with('@') ? ServerError(tsql::Message::NoCursorOfVariable, {name}, line)
                                    : ServerError(tsql::Message::UnknownCursor, {name}, line);
    }
    return cursor;
}

void ScriptRunner::useCursor(Frame& frame, const tsql::CursorStatement& node, int line) {
    const std::shared_ptr<Cursor> cursor = requireCursor(node.name, node.global, line);
    const std::string key = asciiLower(node.name);
    switch (node.action) {
        case tsql::CursorAction::Deallocate:
            // A variable stays, and holds none.
            if (node.name.starts_with('@')) {
                frame.cursors[key] = nullptr;
            } else if (node.global || frame.cursors.erase(key) == 0) {
                cursors_.erase(key);
            }
            return;
        case tsql::CursorAction::Close:
            if (!cursor->open) throw ServerError(tsql::Message::CursorNotOpen, {}, line);
            cursor->open = false;
            cursor->rows = {};
            cursor->rowNumbers.clear();
            state_.cursorRows = 0;
            return;
        case tsql::CursorAction::Open:
            openCursor(*cursor, line);
            return;
    }
}

void ScriptRunner::openCursor(Cursor& cursor, int line) {
    if (cursor.open) throw ServerError(tsql::Message::CursorAlreadyOpen, {}, line);
    Frame inner(*cursor.program);
    inner.values = cursor.values;
    inner.keepsTables = true;
    const Running running(*this, inner);
    const Restored rowLimit(state_.writes.rowLimit);
    CompiledStatement prepared;
    statements_.openCursor(prepared, *cursor.query, cursor.rows);
    cursor.types.clear();
    const auto& query = std::get<QueryPlan>(prepared.plan->kind);
    for (const ResultColumn& column : query.columns) {
        cursor.types.push_back(column.type);
    }
    cursor.rowNumbers.clear();
    const std::vector<std::string>& tables = query.rowTables;
    const std::size_t own = cursor.types.size() - tables.size();
    for (std::size_t i = 0; i < tables.size(); ++i) {
        cursor.rowNumbers.emplace_back(tables[i], std::move(cursor.rows.rows[own + i]));
    }
    cursor.types.resize(own);
    cursor.rows.rows.resize(own);
    cursor.rows.columns.resize(own);
    cursor.position = -1;
    cursor.open = true;
    // How many rows a dynamic cursor will have is not known.
    const bool counted = cursor.scroll && cursor.kind != tsql::CursorKind::Dynamic;
    state_.cursorRows = counted ? static_cast<std::int32_t>(cursor.count()) : -1;
}

namespace {

// The argument that a parameter of a procedure is given; null when it is given none.
const tsql::Argument* argumentFor(const tsql::ExecuteStatement& call,
                                  const tsql::ParameterDefinition& parameter, std::size_t place) {
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const tsql::Argument& argument = call.arguments[i];
        const bool meant =
            argument.name.empty() ? i == place : sameName(argument.name, parameter.name);
        if (meant) return &argument;
    }
    return nullptr;
}

std::string cursorVariableOf(const tsql::Argument* argument) {
    if (argument == nullptr || argument->value == nullptr) return {};
    const auto* variable = std::get_if<tsql::VariableReference>(&argument->value->node);
    return variable == nullptr ? std::string() : asciiLower(variable->name);
}

}  // namespace

void ScriptRunner::takeCursors(const Frame& frame, const tsql::ExecuteStatement& node,
                               const tsql::CreateModuleStatement& module, Frame& called,
                               int line) const {
    for (std::size_t i = 0; i < module.parameters.size(); ++i) {
        const tsql::ParameterDefinition& parameter = module.parameters[i];
        if (!parameter.cursor) continue;
        called.cursors[asciiLower(parameter.name)] = nullptr;
        const auto held = frame.cursors.find(cursorVariableOf(argumentFor(node, parameter, i)));
        if (held == frame.cursors.end() || held->second == nullptr) continue;
        throw ServerError(tsql::Message::CursorParameterTaken, {held->first}, line);
    }
}

// A cursor that was closed again is not given.
void ScriptRunner::giveCursors(Frame& frame, const tsql::ExecuteStatement& node,
                               const tsql::CreateModuleStatement& module, const Frame& called) {
    for (std::size_t i = 0; i < module.parameters.size(); ++i) {
        const tsql::ParameterDefinition& parameter = module.parameters[i];
        const tsql::Argument* argument =
            parameter.cursor ? argumentFor(node, parameter, i) : nullptr;
        const std::string variable = cursorVariableOf(argument);
        if (variable.empty() || !argument->output) continue;
        const auto given = called.cursors.find(asciiLower(parameter.name));
        const bool open =
            given != called.cursors.end() && given->second != nullptr && given->second->open;
        frame.cursors[variable] = open ? given->second : nullptr;
    }
}

// What WHERE CURRENT OF stands for: the number of the table's row that was fetched last.
Value ScriptRunner::currentRow(const std::string& name, const std::string& table,
                               const std::vector<std::string>& written) const {
    const Cursor* cursor = findCursor(name);
    if (cursor == nullptr) {
        throw ServerError(tsql::Message::UnknownCursor, {name});
    }
    if (!cursor->open) throw ServerError(tsql::Message::CursorNotOpen);
    if (cursor->readOnly || cursor->rowNumbers.empty()) {
        throw ServerError(tsql::Message::CursorReadOnly);
    }
    const auto rows = std::ranges::find_if(
        cursor->rowNumbers, [&](const auto& each) { return sameName(each.first, table); });
    if (rows == cursor->rowNumbers.end()) {
        throw ServerError(tsql::Message::TableNotInCursor);
    }
    const bool allowed = std::ranges::all_of(written, [&](const std::string& column) {
        return cursor->updatable.empty() ||
               std::ranges::any_of(cursor->updatable,
                                   [&](const std::string& each) { return sameName(each, column); });
    });
    if (!allowed) {
        throw ServerError(tsql::Message::ColumnNotForUpdate);
    }
    if (cursor->position < 0 || cursor->position >= cursor->count()) {
        throw ServerError(tsql::Message::NoRowsInFetchBuffer);
    }
    return ado::valueAt(rows->second, static_cast<std::size_t>(cursor->position),
                        ado::Storage::Integer);
}

std::int64_t ScriptRunner::fetchTarget(Frame& frame, Instruction& instruction,
                                       const tsql::FetchStatement& node, const Cursor& cursor) {
    using Direction = tsql::FetchStatement::Direction;
    static constexpr std::array kWords{"next", "prior", "first", "last", "absolute", "relative"};
    const char* word = kWords.at(static_cast<std::size_t>(node.direction));
    if (node.direction != Direction::Next && !cursor.scroll) {
        throw ServerError(tsql::Message::FetchTypeOfForwardOnly, {word}, instruction.line);
    }
    if (node.direction == Direction::Absolute && cursor.kind == tsql::CursorKind::Dynamic) {
        throw ServerError(tsql::Message::FetchTypeOfDynamic, {word}, instruction.line);
    }
    std::int64_t distance = 0;
    if (node.distance) {
        const Value value = evaluate(frame, instruction, 0, *node.distance, {SqlType::BigInt});
        // Beyond all rows it is the same how far.
        constexpr std::int64_t kFarthest = std::int64_t{1} << 60;
        if (const auto* whole = std::get_if<std::int64_t>(&value)) {
            distance = std::clamp(*whole, -kFarthest, kFarthest);
        }
    }
    switch (node.direction) {
        case Direction::Next:
            return cursor.position + 1;
        case Direction::Prior:
            return cursor.position - 1;
        case Direction::First:
            return 0;
        case Direction::Last:
            return cursor.count() - 1;
        case Direction::Absolute:
            return distance >= 0 ? distance - 1 : cursor.count() + distance;
        case Direction::Relative:
            break;
    }
    return cursor.position + distance;
}

void ScriptRunner::fetch(Frame& frame, Instruction& instruction, const tsql::FetchStatement& node,
                         std::vector<ado::Result>& results) {
    // A fetch that fails must end the loop that asks how it went.
    state_.fetchStatus = kNoMoreRows;
    const std::shared_ptr<Cursor> held = requireCursor(node.cursor, node.global, instruction.line);
    Cursor& cursor = *held;
    if (!cursor.open) throw ServerError(tsql::Message::CursorNotOpen, {}, instruction.line);
    const std::int64_t target = fetchTarget(frame, instruction, node, cursor);
    const bool there = target >= 0 && target < cursor.count();
    cursor.position = std::max<std::int64_t>(-1, std::min(target, cursor.count()));
    state_.fetchStatus = there ? kFetched : kNoMoreRows;
    if (!node.into.empty() && node.into.size() != cursor.types.size()) {
        throw ServerError(tsql::Message::FetchVariablesDoNotMatch, {}, instruction.line);
    }
    const auto row = static_cast<std::size_t>(target);
    for (std::size_t i = 0; there && i < node.into.size(); ++i) {
        setVariable(frame, node.into[i],
                    storedCell(cursor.rows.columns[i], cursor.rows.rows[i], row), cursor.types[i],
                    instruction.line);
    }
    if (!node.into.empty()) return;
    ado::Result result;
    result.columns = cursor.rows.columns;
    for (const ado::ColumnStore& column : cursor.rows.rows) {
        ado::ColumnStore& cell = result.rows.emplace_back();
        const ado::Storage storage = ado::storageOf(result.columns[result.rows.size() - 1].type);
        if (there) ado::append(cell, ado::valueAt(column, row, storage));
    }
    results.push_back(std::move(result));
}

}  // namespace kap::engine
