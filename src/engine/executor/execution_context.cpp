#include "engine/executor/execution_context.hpp"

#include <memory>
#include <utility>

#include "engine/values/exact.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

Value valueOf(const PreparedStatement& row, int column, const tsql::TypeSpec& type) {
    Value value = row.value(column);
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        if (tsql::isWideDecimal(type)) return wideBytes(*integer);
        const bool real = storedAs(type) == ado::Storage::Real;
        return real ? Value(static_cast<double>(*integer)) : value;
    }
    if (auto* text = std::get_if<std::string>(&value);
        text != nullptr && storedAs(type) == ado::Storage::Binary) {
        return Blob{std::move(*text)};
    }
    if (auto* blob = std::get_if<Blob>(&value);
        blob != nullptr && storedAs(type) != ado::Storage::Binary) {
        return std::move(blob->bytes);
    }
    return value;
}

ExecutionContext::ExecutionContext(const EngineContext& engine, TriggerHost& host)
    : EngineContext(engine),
      triggers(host),
      pool(connection.handle()),
      captures(connection.database(), catalogue) {}

PreparedStatement& ExecutionContext::prepared(std::shared_ptr<PreparedStatement>& kept,
                                              const std::string& sql) {
    if (kept == nullptr || kept->isRunning()) kept = pool.get(sql);
    return *kept;
}

void ExecutionContext::bind(const std::vector<int>& variables, const std::vector<Value>& constants,
                            PreparedStatement& statement) const {
    const int count = sqlite3_bind_parameter_count(statement.handle());
    if (count == 0) {
        return;
    }
    for (const int slot : variables) {
        if (parameterOf(slot) <= count) {
            statement.bind(parameterOf(slot), state.frame().values[static_cast<std::size_t>(slot)]);
        }
    }
    int parameter = 0;
    for (const Value& constant : constants) {
        if (parameter == count) {
            return;
        }
        statement.bind(++parameter, constant);
    }
}

void ExecutionContext::runText(const BoundValues& values, const std::string& sql) const {
    PreparedStatement statement(connection.handle(), sql);
    bind(values, statement);
    statement.run();
}

const Table& ExecutionContext::tableOf(std::string_view name) const {
    for (const LocalTable& local : state.frame().program.names().localTables()) {
        if (local.table.name == name) {
            return local.table;
        }
    }
    return *catalogue.find(name);
}

const tsql::Statement& ExecutionContext::exact(CompiledStatement& compiled,
                                               const tsql::Statement& statement) const {
    if (compiled.shape == nullptr) return statement;
    if (compiled.own == nullptr) {
        const StatementText& text = compiled.text;
        tsql::ParseOptions options = catalogue.parseOptions(state.quotedNames);
        options.firstLine = text.line;
        compiled.own = std::make_shared<const tsql::Script>(tsql::parseScript(
            std::string_view(*text.script).substr(text.start, text.end - text.start), options));
    }
    return compiled.own->front();
}

void ExecutionContext::noteIdentity(bool inserts) {
    const auto identity = counters.takeLastIdentity();
    if (!inserts) return;
    state.identity = identity;
    state.frame().scopeIdentity = identity;
}

void ExecutionContext::addCount(std::vector<ado::Result>& results) const {
    if (state.noCount) return;
    results.emplace_back().rowsAffected = state.rowCount;
}

void ExecutionContext::requireHealthy() const {
    if (state.doomed) {
        throw tsql::ServerError(tsql::Message::UncommittableTransaction);
    }
}

bool ExecutionContext::fires(const Table& table, std::uint8_t event) const {
    if ((table.triggerEvents & event) == 0) return false;
    for (const std::uint8_t each : {tsql::kOnInsert, tsql::kOnUpdate, tsql::kOnDelete}) {
        if ((event & each) != 0 && !catalogue.firedBy(table.name, each, false).empty()) {
            return true;
        }
    }
    return false;
}

void ExecutionContext::fire(const Table& table, const FiringTrigger& trigger,
                            std::vector<ado::Result>& results) {
    const Transactions::ImplicitScope transaction(transactions);
    triggers.fire(table, trigger, results);
    if (transactions.depth() == 0) {
        throw tsql::ServerError(tsql::Message::TransactionEndedInTrigger);
    }
    if (state.doomed) {
        throw tsql::ServerError(tsql::Message::ErrorInTrigger);
    }
}

}  // namespace kap::engine
