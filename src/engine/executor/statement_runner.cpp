#include "engine/executor/statement_runner.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>

#include "engine/executor/column_info.hpp"
#include "engine/executor/row_reader.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/translator.hpp"
#include "engine/values/exact.hpp"
#include "tsql/parser.hpp"

namespace kap::engine {
namespace {

// What comes at once of a query that is read as its rows are needed: so many rows, or what there is
// after so long a time.
constexpr std::int64_t kFirstRows = 100;
constexpr std::chrono::milliseconds kFirstWait{20};
// Asking for the time costs as much as reading a small row: it is asked for at each of the first
// rows, and then at every so many.
constexpr std::int64_t kRowsBetweenLooks = 8;
// Of a small result: most grow no more than once.
constexpr std::size_t kUsualRows = 16;

}  // namespace

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

StatementRunner::StatementRunner(FileConnection& connection, SchemaCatalogue& catalogue,
                                 Counters& counters, Transactions& transactions,
                                 SessionState& state, TriggerHost& triggers)
    : connection_(connection),
      catalogue_(catalogue),
      counters_(counters),
      transactions_(transactions),
      state_(state),
      triggers_(triggers),
      pool_(connection.handle()),
      captures_(connection.database(), catalogue) {}

void StatementRunner::run(CompiledStatement& prepared, const tsql::Statement& statement,
                          std::vector<ado::Result>& results) {
    connection_.errorSlot().error.reset();
    const auto* query = std::get_if<tsql::SelectStatement>(&statement.node);
    const auto* first =
        query == nullptr ? nullptr : std::get_if<tsql::Select>(&query->query->terms.front().node);
    const bool defines = std::holds_alternative<tsql::TruncateStatement>(statement.node) ||
                         std::holds_alternative<tsql::CreateTableStatement>(statement.node) ||
                         std::holds_alternative<tsql::CreateIndexStatement>(statement.node) ||
                         std::holds_alternative<tsql::DropStatement>(statement.node) ||
                         (first != nullptr && first->into);
    if (defines) {
        define(prepared, statement, results);
    } else if (query != nullptr) {
        select(prepared, statement, results);
    } else {
        write(prepared, statement, results);
    }
}

// --- Preparing

bool StatementRunner::isCurrent(const CompiledStatement& prepared) const {
    return prepared.ready && prepared.generation == catalogue_.generation() &&
           !prepared.translation->ofTheMoment && fitsFiring(*prepared.translation);
}

bool StatementRunner::needsScope(const CompiledStatement& prepared) const {
    return !isCurrent(prepared) || prepared.translation->readsSchema ||
           prepared.translation->drawsNumbers || !transactions_.isSettled();
}

void StatementRunner::use(CompiledStatement& prepared, Translation translation) {
    prepared.ready = false;
    prepared.statements.clear();
    prepared.columns = std::make_shared<const std::vector<ado::ColumnInfo>>(
        columnInfos(translation.columns, catalogue_));
    prepared.constants = translation.constants;
    translation.captureLevel = catalogue_.firingLevel(translation.table);
    prepared.translation = std::make_shared<const Translation>(std::move(translation));
    prepared.generation = catalogue_.generation();
    prepared.ready = true;
}

void StatementRunner::translate(CompiledStatement& prepared, const tsql::Statement& statement,
                                const NameScope& names) {
    use(prepared, engine::translate(statement, names, Constants::Bound));
}

void StatementRunner::ensureCurrent(CompiledStatement& prepared, const tsql::Statement& statement) {
    if (!isCurrent(prepared)) {
        translate(prepared, exact(prepared, statement), state_.frame().program.names());
    }
    prepareAll(prepared);
}

// A statement that was recognised has the syntax tree of another one of its shape, which differs in
// literals. Its own is made of its text.
const tsql::Statement& StatementRunner::exact(CompiledStatement& prepared,
                                              const tsql::Statement& statement) {
    if (prepared.shape == nullptr) return statement;
    if (prepared.own == nullptr) {
        const StatementText& text = prepared.text;
        tsql::ParseOptions options = catalogue_.parseOptions(state_.quotedNames);
        options.firstLine = text.line;
        prepared.own = std::make_shared<const tsql::Script>(tsql::parseScript(
            std::string_view(*text.script).substr(text.start, text.end - text.start), options));
    }
    return prepared.own->front();
}

void StatementRunner::prepareAll(CompiledStatement& prepared) {
    const std::vector<std::string>& sql = prepared.translation->sql;
    prepared.statements.resize(sql.size());
    for (std::size_t i = 0; i < sql.size(); ++i) {
        auto& statement = prepared.statements[i];
        if (statement == nullptr || statement->isRunning()) {
            statement = pool_.get(sql[i]);
        }
    }
}

// One text of several may hold fewer of the values than all together.
void StatementRunner::bind(const Translation& made, const std::vector<Value>& constants,
                           PreparedStatement& statement) const {
    const int count = sqlite3_bind_parameter_count(statement.handle());
    if (count == 0) {
        return;
    }
    for (const int slot : made.variables) {
        if (parameterOf(slot) <= count) {
            statement.bind(parameterOf(slot),
                           state_.frame().values[static_cast<std::size_t>(slot)]);
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

void StatementRunner::requireHealthy() const {
    if (state_.doomed) {
        throw tsql::ServerError(tsql::Message::UncommittableTransaction);
    }
}

// --- Reading

Value StatementRunner::firstValue(CompiledStatement& prepared) {
    if (prepared.translation->constant) {
        return *prepared.translation->constant;
    }
    connection_.errorSlot().error.reset();
    prepareAll(prepared);
    PreparedStatement& statement = *prepared.statements.back();
    bind(prepared, statement);
    const ResetGuard guard(statement);
    if (!statement.step()) {
        return std::monostate{};
    }
    return valueOf(statement, 0, prepared.translation->columns.front().type);
}

void StatementRunner::select(CompiledStatement& prepared, const tsql::Statement& statement,
                             std::vector<ado::Result>& results) {
    ado::Result result;
    if (needsScope(prepared) || !trySelect(prepared, result)) {
        const auto read = [&] {
            if (prepared.translation->kind == StatementKind::Assign) {
                (void)assign(prepared, SchemaCheck::NotNeeded);
            } else {
                (void)fill(prepared, result, SchemaCheck::NotNeeded);
            }
        };
        bool draws = false;
        {
            const Transactions::ReadScope scope(transactions_);
            ensureCurrent(prepared, statement);
            draws = prepared.translation->drawsNumbers;
            if (!draws) read();
        }
        if (draws) {
            drawing([&] {
                ensureCurrent(prepared, statement);
                read();
            });
        }
    }
    if (prepared.translation->kind != StatementKind::Assign) {
        results.push_back(std::move(result));
    }
}

// Without looking at the schema first: that it has changed shows when the statement is run, because
// SQLite then has to prepare it anew or cannot. False when it has to be translated again.
bool StatementRunner::trySelect(CompiledStatement& prepared, ado::Result& result) {
    try {
        prepareAll(prepared);
        const bool done = prepared.translation->kind == StatementKind::Assign
                              ? assign(prepared, SchemaCheck::Needed)
                              : fill(prepared, result, SchemaCheck::Needed);
        if (done) {
            return true;
        }
    } catch (const SqliteError& error) {
        if (error.primaryCode() != SQLITE_ERROR || connection_.errorSlot().error) {
            throw;
        }
    }
    prepared.ready = false;
    result = {};
    return false;
}

bool StatementRunner::fill(CompiledStatement& prepared, ado::Result& result, SchemaCheck check) {
    // The queries of a function that this one calls are read to their ends.
    const bool mayStand = state_.mayStand && state_.frames.size() == 1;
    const auto start =
        mayStand ? std::chrono::steady_clock::now() : std::chrono::steady_clock::time_point::max();
    const auto waitedLong = [start](std::int64_t rows) {
        return (rows < kRowsBetweenLooks || rows % kRowsBetweenLooks == 0) &&
               std::chrono::steady_clock::now() - start >= kFirstWait;
    };
    PreparedStatement& rows = *prepared.statements.back();
    bind(prepared, rows);
    ResetGuard guard(rows);
    bool more = rows.step();
    if (rows.preparedAnew() && check == SchemaCheck::Needed) {
        return false;
    }
    const RowReader reader(*prepared.columns);
    result.columns = *prepared.columns;
    result.rows.resize(prepared.columns->size());
    const std::int64_t most = state_.writes.rowLimit;
    std::int64_t count = 0;
    if (more) {
        for (ado::ColumnStore& column : result.rows) {
            column.reserve(kUsualRows);
        }
    }
    while (more) {
        reader.read(rows, result.rows);
        ++count;
        more = (most == 0 || count < most) && rows.step();
        if (more && mayStand && (count >= kFirstRows || waitedLong(count))) {
            state_.standing = std::make_unique<StandingRows>(prepared.statements.back(),
                                                             *prepared.columns, count, most);
            guard.release();
            break;
        }
    }
    for (ado::ColumnStore& column : result.rows) {
        column.shrink();
    }
    state_.rowCount = count;
    return true;
}

// Each row leaves its values in the variables, so the last one's stay.
bool StatementRunner::assign(CompiledStatement& prepared, SchemaCheck check) {
    PreparedStatement& rows = *prepared.statements.back();
    bind(prepared, rows);
    const ResetGuard guard(rows);
    bool more = rows.step();
    if (rows.preparedAnew() && check == SchemaCheck::Needed) {
        return false;
    }
    const Translation& made = *prepared.translation;
    const std::int64_t most = state_.writes.rowLimit;
    std::int64_t count = 0;
    while (more) {
        for (std::size_t i = 0; i < made.assigned.size(); ++i) {
            state_.frame().values[static_cast<std::size_t>(made.assigned[i])] =
                valueOf(rows, static_cast<int>(i), made.columns[i].type);
        }
        ++count;
        more = (most == 0 || count < most) && rows.step();
    }
    state_.rowCount = count;
    return true;
}

// --- Writing

namespace {

bool isOneRow(const tsql::Statement& statement) {
    const auto* insert = std::get_if<tsql::InsertStatement>(&statement.node);
    return insert != nullptr && insert->query == nullptr && insert->rows.size() <= 1;
}

}  // namespace

void StatementRunner::write(CompiledStatement& prepared, const tsql::Statement& statement,
                            std::vector<ado::Result>& results) {
    requireHealthy();
    const bool oneRow = isOneRow(statement);
    Transactions::WriteScope scope(
        transactions_, oneRow ? Transactions::Writes::OneRow : Transactions::Writes::Several);
    captures_.removeStale();
    ensureCurrent(prepared, statement);
    state_.offeredRows = 0;
    state_.rankedNumbers.clear();
    refuseReadOnly(*prepared.translation);
    if (prepared.translation->instead != nullptr) {
        scope.expectSeveral();
        writeInstead(*prepared.translation, results);
        scope.keep();
        return;
    }
    if (prepared.translation->merge != nullptr) {
        merge(*prepared.translation, results);
    } else if (prepared.translation->capture) {
        scope.expectSeveral();
        writeCaught(prepared, statement, results);
    } else {
        runAll(prepared, statement);
        state_.rowCount = connection_.database().changes();
        noteIdentity(prepared.translation->kind);
        addCount(results);
    }
    if (prepared.translation->positioned && state_.rowCount == 0) {
        throw tsql::ServerError(tsql::Message::NoRowsTouched);
    }
    scope.keep();
}

void StatementRunner::refuseReadOnly(const Translation& made) const {
    for (const LocalTable& local : state_.frame().program.names().localTables()) {
        if (!local.readOnly || local.table.name != made.table) continue;
        throw tsql::ServerError(tsql::Message::TableParameterIsReadOnly, {local.name});
    }
}

namespace {

// Whether an UPDATE ended at a key that it may not yet have looked at; what it has left in
// variables cannot be taken back.
bool canGoInSteps(const SqliteError& error, const tsql::Statement& statement, const Table& table) {
    const auto* update = std::get_if<tsql::UpdateStatement>(&statement.node);
    const bool key =
        error.code() == SQLITE_CONSTRAINT_UNIQUE || error.code() == SQLITE_CONSTRAINT_PRIMARYKEY;
    return key && update != nullptr &&
           std::ranges::all_of(
               update->assignments,
               [](const tsql::Assignment& each) { return each.variable.empty(); }) &&
           std::ranges::none_of(table.columns, &Column::computed);
}

std::vector<std::string> assignedColumns(const tsql::Statement& statement) {
    std::vector<std::string> names;
    if (const auto* update = std::get_if<tsql::UpdateStatement>(&statement.node)) {
        for (const tsql::Assignment& each : update->assignments) {
            if (!each.column.parts.empty()) {
                names.push_back(each.column.last());
            }
        }
    }
    return names;
}

}  // namespace

void StatementRunner::runAll(CompiledStatement& prepared, const tsql::Statement& statement) {
    bool inSteps = false;
    const auto run = [&] {
        if (inSteps) {
            updateInSteps(exact(prepared, statement));
            return;
        }
        for (const auto& each : prepared.statements) {
            bind(prepared, *each);
            each->run();
        }
    };
    const auto explained = [&] {
        try {
            run();
        } catch (const SqliteError& error) {
            if (error.code() != SQLITE_CONSTRAINT_FOREIGNKEY) throw;
            const Translation& made = *prepared.translation;
            throw ForeignKeySearch(connection_, catalogue_)
                .find({verbOf(made.kind), made.table, {}, assignedColumns(statement)}, run);
        }
    };
    try {
        explained();
    } catch (const SqliteError& error) {
        if (!canGoInSteps(error, statement, tableOf(*prepared.translation))) throw;
        inSteps = true;
        explained();
    }
    if (prepared.translation->ignoresDuplicates) {
        state_.duplicatesIgnored = state_.offeredRows > connection_.database().changes();
    }
}

void StatementRunner::addCount(std::vector<ado::Result>& results) {
    if (state_.noCount) {
        return;
    }
    results.emplace_back().rowsAffected = state_.rowCount;
}

void StatementRunner::writeCaught(CompiledStatement& prepared, const tsql::Statement& statement,
                                  std::vector<ado::Result>& results) {
    const Translation& made = *prepared.translation;
    const Capture capture = *made.capture;
    const Table table = tableOf(made);
    const bool firing = capture.forTriggers && fires(table, capture.event);
    if (!firing && capture.outputSql.empty() && capture.checks.empty()) {
        runAll(prepared, statement);
        state_.rowCount = connection_.database().changes();
        noteIdentity(made.kind);
        addCount(results);
        return;
    }
    captures_.ensure(table);
    catching(table, [&] { runAll(prepared, statement); });
    const std::int64_t count = connection_.database().changes();
    noteIdentity(made.kind);
    checkThroughView(made);
    if (!capture.outputSql.empty()) {
        output(made, results);
    }
    state_.rowCount = count;
    if (firing) {
        fire(table, {table.name, capture.event, assignedColumns(statement)}, results);
    }
    captures_.empty(table);
    state_.rowCount = count;
    if (capture.outputSql.empty() || capture.outputInto) {
        addCount(results);
    }
}

// WITH CHECK OPTION: a row must not leave the view through which it is written.
void StatementRunner::checkThroughView(const Translation& made) {
    for (const std::string& sql : made.capture->checks) {
        PreparedStatement hidden(connection_.handle(), sql);
        bind(made, hidden);
        if (!hidden.step()) continue;
        throw tsql::ServerError(tsql::Message::CheckOptionViolated);
    }
}

void StatementRunner::output(const Translation& made, std::vector<ado::Result>& results) {
    const Capture& capture = *made.capture;
    PreparedStatement rows(connection_.handle(), capture.outputSql);
    bind(made, rows);
    if (capture.outputInto) {
        rows.run();
        return;
    }
    ado::Result result;
    result.columns = columnInfos(capture.columns, catalogue_);
    result.rows.resize(result.columns.size());
    const RowReader reader(result.columns);
    while (rows.step()) {
        reader.read(rows, result.rows);
    }
    results.push_back(std::move(result));
}

const Table& StatementRunner::tableOf(const Translation& translation) const {
    const NameScope& names = state_.frame().program.names();
    for (const LocalTable& local : names.localTables()) {
        if (local.table.name == translation.table) {
            return local.table;
        }
    }
    return *catalogue_.find(translation.table);
}

}  // namespace kap::engine
