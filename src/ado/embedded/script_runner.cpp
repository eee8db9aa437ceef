#include "ado/embedded/script_runner.hpp"

#include <cstddef>
#include <utility>

#include "ado/embedded/column_info.hpp"
#include "ado/embedded/row_reader.hpp"
#include "ado/embedded/translate/translator.hpp"
#include "tsql/parser.hpp"

namespace kap::ado::embedded {
namespace {

constexpr std::size_t kKeptScripts = 200;
// Longer scripts are run once, as a rule: a day's import, a company's tables.
constexpr std::size_t kLongestKept = 16384;

const char* verbOf(StatementKind kind) {
    switch (kind) {
        case StatementKind::Insert:
            return "INSERT";
        case StatementKind::Update:
            return "UPDATE";
        default:
            return "";
    }
}

bool isDefinition(const tsql::Statement& statement) {
    return std::holds_alternative<tsql::CreateTableStatement>(statement.node) ||
           std::holds_alternative<tsql::DropTableStatement>(statement.node);
}

bool isSelect(const tsql::Statement& statement) {
    return std::holds_alternative<tsql::SelectStatement>(statement.node);
}

}  // namespace

ScriptRunner::ScriptRunner(Connection& connection, SchemaCatalogue& catalogue, Counters& counters,
                           Transactions& transactions)
    : connection_(connection),
      catalogue_(catalogue),
      counters_(counters),
      transactions_(transactions),
      kept_(kKeptScripts) {}

void ScriptRunner::run(std::string_view script, std::vector<Result>& results) {
    PreparedScript unkept;
    for (Prepared& statement : prepared(script, unkept)) {
        results.push_back(run(statement));
    }
}

ScriptRunner::PreparedScript& ScriptRunner::prepared(std::string_view script,
                                                     PreparedScript& unkept) {
    if (PreparedScript* found = kept_.find(script)) {
        return *found;
    }
    PreparedScript made;
    for (tsql::Statement& statement : tsql::parseScript(script)) {
        made.emplace_back().syntax = std::move(statement);
    }
    if (script.size() > kLongestKept) {
        unkept = std::move(made);
        return unkept;
    }
    return kept_.insert(script, std::move(made));
}

Result ScriptRunner::run(Prepared& statement) {
    connection_.errorSlot().error.reset();
    try {
        return runStatement(statement);
    } catch (const SqliteError& error) {
        const Translation& made = statement.translation;
        throw connection_.explain(error, {verbOf(made.kind), made.table, {}})
            .at(statement.syntax.line);
    } catch (const tsql::ServerError& error) {
        throw error.at(statement.syntax.line);
    }
}

Result ScriptRunner::runStatement(Prepared& statement) {
    if (const auto* node = std::get_if<tsql::TransactionStatement>(&statement.syntax.node)) {
        switch (node->action) {
            case tsql::TransactionAction::Begin:
                transactions_.begin();
                break;
            case tsql::TransactionAction::Commit:
                transactions_.commit();
                break;
            case tsql::TransactionAction::Rollback:
                transactions_.rollback();
                break;
        }
        return {};
    }
    if (isSelect(statement.syntax)) {
        return select(statement);
    }
    return isDefinition(statement.syntax) ? define(statement) : write(statement);
}

bool ScriptRunner::isCurrent(const Prepared& statement) const {
    return statement.ready && statement.generation == catalogue_.generation();
}

void ScriptRunner::translate(Prepared& statement) {
    statement.ready = false;
    statement.statements.clear();
    statement.translation = embedded::translate(statement.syntax, catalogue_);
    statement.columns = columnInfos(statement.translation.columns, catalogue_);
    statement.generation = catalogue_.generation();
    statement.ready = true;
}

void ScriptRunner::ensureCurrent(Prepared& statement) {
    if (isCurrent(statement)) {
        return;
    }
    translate(statement);
    for (const std::string& sql : statement.translation.sql) {
        statement.statements.emplace_back(connection_.handle(), sql, StatementLife::Kept);
    }
}

// --- Reading

Result ScriptRunner::select(Prepared& statement) {
    Result result;
    if (isCurrent(statement) && trySelect(statement, result)) {
        return result;
    }
    const Transactions::ReadScope scope(transactions_);
    ensureCurrent(statement);
    (void)fill(statement, result, SchemaCheck::NotNeeded);
    return result;
}

// Without looking at the schema first: that it has changed shows when the statement is run, because
// SQLite then has to prepare it anew or cannot. False when it has to be translated again.
bool ScriptRunner::trySelect(Prepared& statement, Result& result) {
    try {
        if (fill(statement, result, SchemaCheck::Needed)) {
            return true;
        }
    } catch (const SqliteError& error) {
        if (error.primaryCode() != SQLITE_ERROR || connection_.errorSlot().error) {
            throw;
        }
    }
    statement.ready = false;
    result = {};
    return false;
}

bool ScriptRunner::fill(Prepared& statement, Result& result, SchemaCheck check) {
    for (std::size_t i = 0; i + 1 < statement.statements.size(); ++i) {
        statement.statements[i].run();
    }
    PreparedStatement& rows = statement.statements.back();
    const ResetGuard guard(rows);
    bool more = rows.step();
    if (rows.preparedAnew() && check == SchemaCheck::Needed) {
        return false;
    }
    const RowReader reader(statement.columns);
    result.columns = statement.columns;
    result.rows.resize(statement.columns.size());
    while (more) {
        reader.read(rows, result.rows);
        more = rows.step();
    }
    for (ColumnStore& column : result.rows) {
        column.shrink();
    }
    return true;
}

// --- Writing

Result ScriptRunner::write(Prepared& statement) {
    Transactions::WriteScope scope(transactions_);
    ensureCurrent(statement);
    runAll(statement);
    Result result;
    result.rowsAffected = connection_.database().changes();
    scope.keep();
    return result;
}

void ScriptRunner::runAll(Prepared& statement) {
    for (PreparedStatement& each : statement.statements) {
        each.run();
    }
}

Result ScriptRunner::define(Prepared& statement) {
    Transactions::WriteScope scope(transactions_);
    translate(statement);
    for (const DroppedTable& table : statement.translation.dropped) {
        counters_.remove(table);
    }
    // Each is prepared only when the one before it has changed the schema.
    for (const std::string& sql : statement.translation.sql) {
        PreparedStatement(connection_.handle(), sql).run();
    }
    if (statement.translation.created) {
        counters_.add(*statement.translation.created);
    }
    statement.ready = false;
    catalogue_.invalidate();
    scope.keep();
    return {};
}

}  // namespace kap::ado::embedded
