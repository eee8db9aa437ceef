#include "engine/script/script_runner.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <new>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "base/stack.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/running.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {
namespace {

constexpr std::size_t kKeptScripts = 200;
// Longer scripts are run once, as a rule: a day's import, a company's tables.
constexpr std::size_t kLongestKept = 16384;
constexpr std::size_t kDeepestCalls = 32;

std::vector<tsql::DeclaredVariable> parametersOf(const ado::Request& request) {
    std::vector<tsql::DeclaredVariable> result;
    for (const ado::RequestParameter& parameter : request.parameters) {
        tsql::DeclaredVariable& variable = result.emplace_back();
        variable.name = "?" + plain::text(static_cast<std::int64_t>(result.size()));
        variable.type = typeOf(parameter.type, parameter.numericScale);
    }
    return result;
}

// The batches of a client are one scope for SCOPE_IDENTITY(), also when one of them ends with an
// error; a text with parameters is run in a scope of its own.
class BatchScope {
public:
    BatchScope(Frame& frame, std::optional<std::int64_t>* identity)
        : frame_(frame), identity_(identity) {
        if (identity_ != nullptr) frame_.scopeIdentity = *identity_;
    }
    BatchScope(const BatchScope&) = delete;
    BatchScope& operator=(const BatchScope&) = delete;
    ~BatchScope() {
        if (identity_ != nullptr) *identity_ = frame_.scopeIdentity;
    }

private:
    Frame& frame_;
    std::optional<std::int64_t>* identity_;
};

// Empty for a database in memory.
std::string fileOf(FileConnection& connection) {
    const char* name = sqlite3_db_filename(connection.handle(), "main");
    return name == nullptr || connection.place().name.starts_with(":memory:") ? "" : name;
}

bool comesBack(const ado::RequestParameter& parameter) {
    return parameter.direction == ado::ParameterDirectionEnum::adParamOutput ||
           parameter.direction == ado::ParameterDirectionEnum::adParamInputOutput;
}

}  // namespace

ScriptRunner::ScriptRunner(const EngineContext& engine)
    : connection_(engine.connection),
      catalogue_(engine.catalogue),
      counters_(engine.counters),
      transactions_(engine.transactions),
      state_(engine.state),
      execution_(engine, *this),
      statements_(execution_),
      applicationLocks_(fileOf(connection_), connection_.place().name),
      kept_(kKeptScripts),
      journal_(connection_.journalFile()) {
    transactions_.whenEnded([this]() noexcept { applicationLocks_.transactionEnded(); });
    catalogue_.addView("sys", "dm_exec_sessions", [this] { return sessionRows(); });
}

// Its transactions may outlast it.
ScriptRunner::~ScriptRunner() {
    dropOwnGlobalTables();
    transactions_.whenEnded([] {});
}

// --- Requests

void ScriptRunner::run(ado::Request& request, ado::Reply& reply) {
    state_.standing.reset();
    std::vector<ado::ServerMessage> messages;
    asRequest(request.timeout, messages, [&] {
        dropAbandonedTables();
        runRequest(request, reply);
    });
    raiseIfFailed(messages);
    reply.messages = std::move(messages);
}

void ScriptRunner::runRequest(ado::Request& request, ado::Reply& reply) {
    std::shared_ptr<Program> program;
    try {
        if (request.procedure) {
            runProcedure(request, reply);
            return;
        }
        program = programOf(request.text, parametersOf(request));
    } catch (const tsql::ServerError& error) {
        report(error);
        return;
    }
    const auto held = std::make_shared<Frame>(*program);
    Frame& frame = *held;
    frame.keepsTables = true;
    frame.streams = mayStream(request, *program);
    frame.oneByOne = mayStopBetween(request, *program);
    for (std::size_t i = 0; i < request.parameters.size(); ++i) {
        frame.values[i] = request.parameters[i].value;
    }
    const bool batch = request.parameters.empty();
    const BatchScope scope(frame, batch ? &state_.batchIdentity : nullptr);
    runFrame(frame, reply.results);
    leave(program, held, reply, request.timeout);
    for (std::size_t i = 0; i < request.parameters.size(); ++i) {
        if (comesBack(request.parameters[i])) {
            request.parameters[i].value = frame.values[i];
        }
    }
}

// A procedure by its name is a script of one call, whose arguments are the request's parameters.
void ScriptRunner::runProcedure(ado::Request& request, ado::Reply& reply) {
    const bool returns =
        !request.parameters.empty() &&
        request.parameters.front().direction == ado::ParameterDirectionEnum::adParamReturnValue;
    std::string text = std::string("EXEC ") + (returns ? "? = " : "") + request.text;
    for (std::size_t i = returns ? 1 : 0; i < request.parameters.size(); ++i) {
        const ado::RequestParameter& parameter = request.parameters[i];
        text += i == (returns ? 1U : 0U) ? " " : ", ";
        if (!parameter.name.empty()) {
            text += (parameter.name.front() == '@' ? "" : "@") + parameter.name + " = ";
        }
        text += "?";
        if (comesBack(parameter)) {
            text += " OUTPUT";
        }
    }
    ado::Request script{std::move(text), false, request.parameters, request.timeout};
    if (returns) {
        script.parameters.front().direction = ado::ParameterDirectionEnum::adParamOutput;
    }
    runRequest(script, reply);
    for (std::size_t i = 0; i < request.parameters.size(); ++i) {
        request.parameters[i].value = script.parameters[i].value;
    }
}

// As SQLite's own want of memory (701) does: how far the script has come is not known, so nothing
// of the open transaction may stay. What cannot go back in order is discarded.
void ScriptRunner::rollBackWithoutMemory() noexcept {
    try {
        rollBackAll();
    } catch (...) {
    }
}

void ScriptRunner::finishRequest(std::vector<ado::ServerMessage>& messages) {
    if (!state_.doomed) {
        return;
    }
    rollBackAll();
    messages.push_back(serverMessage({3998,
                                      "Uncommittable transaction is detected at the end of the "
                                      "batch. The transaction is rolled back."}));
}

void ScriptRunner::raiseIfFailed(const std::vector<ado::ServerMessage>& messages) {
    for (const ado::ServerMessage& message : messages) {
        if (message.isError()) {
            throw ado::DriverError(messages, kErrorSource);
        }
    }
}

// --- Programs

std::shared_ptr<Program> ScriptRunner::programOf(
    std::string_view script, const std::vector<tsql::DeclaredVariable>& parameters) {
    std::string key;
    for (const tsql::DeclaredVariable& parameter : parameters) {
        key += parameter.name + " " + tsql::typeText(parameter.type) + ",";
    }
    if (!state_.quotedNames) {
        key += "\"";
    }
    if (!key.empty()) {
        key = std::string(script) + '\0' + key;
    }
    const std::string_view keyText = key.empty() ? script : std::string_view(key);
    if (const auto* found = kept_.find(keyText); found != nullptr && !(*found)->running) {
        return *found;
    }
    tsql::ParseOptions options = catalogue_.parseOptions(state_.quotedNames);
    options.marksLiterals = true;
    std::vector<std::string> declared;
    declared.reserve(parameters.size());
    for (const tsql::DeclaredVariable& parameter : parameters) {
        declared.push_back(parameter.name);
    }
    options.variables = &declared;
    ReadScript read = this->read(script, options);
    const bool keeps = script.size() <= kLongestKept && read.recognised.empty();
    auto program = std::make_shared<Program>(std::move(read), catalogue_, parameters);
    program->names().follow(state_.writes);
    if (keeps && kept_.find(keyText) == nullptr) {
        kept_.insert(keyText, program);
    }
    return program;
}

std::shared_ptr<Program> ScriptRunner::programOf(const std::shared_ptr<const Module>& module,
                                                 int level) {
    const tsql::CreateModuleStatement& definition = module->definition;
    std::shared_ptr<Program>& kept =
        modulePrograms_[level == 0 ? module->object.text
                                   : module->object.text + "\n" + plain::text(level)];
    if (kept != nullptr && !kept->running && kept->module == module) {
        return kept;
    }
    std::vector<tsql::DeclaredVariable> parameters;
    for (const tsql::ParameterDefinition& parameter : definition.parameters) {
        tsql::DeclaredVariable& variable = parameters.emplace_back();
        variable.name = parameter.name;
        variable.type = parameter.type;
    }
    auto program = std::make_shared<Program>(definition.body, catalogue_, parameters);
    program->module = module;
    program->names().setSchema(schemaOf(module->object.name));
    program->names().follow(state_.writes);
    if (kept == nullptr || !kept->running) {
        kept = program;
    }
    return program;
}

// --- The flow

void ScriptRunner::runFrame(Frame& frame, std::vector<ado::Result>& results) {
    runFrame(
        frame, results, [] {}, [] {});
}

void ScriptRunner::runFrame(Frame& frame, std::vector<ado::Result>& results,
                            const std::function<void()>& before,
                            const std::function<void()>& behind) {
    if (state_.frames.size() >= kDeepestCalls) {
        throw raisedBy(tsql::ServerError(tsql::Message::NestingLevelExceeded), 0);
    }
    if (stackLeft() < kStackReserve) {
        throw raisedBy(tsql::outOfStack(0), 0);
    }
    const Running running(*this, frame);
    before();
    try {
        checkAhead(frame.program);
    } catch (const tsql::ServerError& error) {
        report(raisedBy(error, 0));
        throw ScopeEnded();
    } catch (const SqliteError& error) {
        throw raisedBy(error, Instruction());
    }
    const std::size_t had = results.size();
    std::size_t at = std::exchange(frame.at, 0);
    while (at < frame.program.code().size()) {
        at = step(frame, at, results);
        if (frame.oneByOne && results.size() > had && !results.back().columns.empty() &&
            at < frame.program.code().size() && mayBeLeft(frame)) {
            frame.at = at;
            break;
        }
    }
    behind();
}

std::size_t ScriptRunner::step(Frame& frame, std::size_t at, std::vector<ado::Result>& results) {
    Instruction& instruction = frame.program.code()[at];
    try {
        switch (instruction.operation) {
            case Operation::Statement:
                TimeLimit::check(connection_.handle());
                state_.mayStand = frame.streams && mayBeLeft(frame) &&
                                  (frame.oneByOne || at + 1 == frame.program.code().size());
                return runStatement(frame, instruction, at, results);
            case Operation::Test:
                return test(frame, instruction) ? at + 1 : instruction.target;
            case Operation::Jump:
                TimeLimit::check(connection_.handle());
                leave(frame, instruction.leaves);
                return instruction.target;
            case Operation::EnterTry:
                frame.handlers.push_back({instruction.target, frame.handled.size()});
                ++state_.openTries;
                return at + 1;
        }
    } catch (const SqliteError& error) {
        return handle(frame, raisedBy(error, instruction), at);
    } catch (const tsql::ServerError& error) {
        return handle(frame, raisedBy(error, instruction.line), at);
    } catch (const RaisedError& raised) {
        return handle(frame, raised, at);
    }
    return at + 1;
}

}  // namespace kap::engine
