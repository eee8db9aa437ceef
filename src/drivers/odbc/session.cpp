#include "drivers/odbc/session.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/odbc/connection_pool.hpp"
#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/parameter_binding.hpp"
#include "drivers/odbc/pending_results.hpp"
#include "drivers/odbc/result_reader.hpp"
#include "drivers/odbc/schema_reader.hpp"

namespace kap::ado::odbc {
namespace {

bool comesBack(const RequestParameter& parameter) {
    return parameter.direction != ParameterDirectionEnum::adParamInput;
}

// A procedure's name with marks for its parameters, as every driver reads it.
std::string callOf(const Request& request) {
    const bool returns =
        !request.parameters.empty() &&
        request.parameters.front().direction == ParameterDirectionEnum::adParamReturnValue;
    std::string marks;
    for (std::size_t i = returns ? 1 : 0; i < request.parameters.size(); ++i) {
        marks += marks.empty() ? "?" : ", ?";
    }
    return std::string(returns ? "{? = call " : "{call ") + request.text +
           (marks.empty() ? "" : "(" + marks + ")") + "}";
}

[[noreturn]] void noTransaction(const char* verb) {
    throw driverError(errors::kNoTransaction, "25000",
                      std::string("The ") + verb +
                          " TRANSACTION request has no corresponding BEGIN TRANSACTION.");
}

}  // namespace

OdbcSession::Work::Work(std::shared_ptr<OdbcConnection> opened)
    : connection(std::move(opened)),
      catalogue(*connection),
      changer(connection, catalogue, tables),
      insertion(*connection) {}

OdbcSession::OdbcSession(const ConnectText& text)
    : text_(text),
      work_(std::make_unique<Work>(ConnectionPool::shared().open(text))),
      timeout_(text.timeout) {}

OdbcSession::~OdbcSession() {
    std::shared_ptr<OdbcConnection> connection = work_->connection;
    connection->endReading();
    work_.reset();
    ConnectionPool::shared().close(text_, std::move(connection));
}

OdbcConnection& OdbcSession::connection() {
    OdbcConnection& now = *work_->connection;
    if (text_.pooling.wanted && depth_ == 0 && now.isBlank() && now.hasEnded()) {
        auto work = std::make_unique<Work>(ConnectionPool::shared().open(text_));
        const std::lock_guard lock(replacing_);
        work_ = std::move(work);
    }
    return *work_->connection;
}

void OdbcSession::execute(Request& request, Reply& reply) {
    timeout_ = request.timeout;
    OdbcConnection& connection = this->connection();
    const auto limited = connection.limit(timeout_);
    KnownQuery procedure;
    KnownQuery& known = request.procedure ? procedure : work_->queries.of(request.text);
    const QueryAnalysis& query = known.analysis;
    if (query.leavesState) {
        connection.leaveState();
    }
    ResultColumns columns(connection, work_->catalogue, work_->tables);
    columns.prepare(query, timeout_);
    const bool again = query.isOneQuery && request.parameters.empty();
    std::shared_ptr<BoundStatement> statement =
        again ? statementFor(known)
              : std::make_shared<BoundStatement>(connection.newStatement(timeout_));
    const Cancelling::Scope cancellable(connection.cancelling(), statement->handle().get());
    ParameterBinding parameters(connection, statement->handle());
    for (const RequestParameter& parameter : request.parameters) {
        parameters.add(parameter);
    }
    const String text(said(request, known));
    ResultReader reader(work_->connection, columns, timeout_);
    const SQLRETURN code = SQLExecDirectW(statement->handle().get(), wide(text.units()),
                                          static_cast<SQLINTEGER>(text.size()));
    if (query.isOneQuery && std::ranges::none_of(request.parameters, comesBack)) {
        reader.readFirst(code, statement, known, reply.results);
    } else if (request.oneByOne && query.onlyReads && request.parameters.empty()) {
        if (reader.readUpToRows(code, statement, known, reply.results)) {
            const auto rest = std::make_shared<PendingResults>(
                work_->connection, statement, reader.rowsLeft(), columns, known, timeout_);
            connection.reading(rest);
            reply.rest = rest;
        }
    } else {
        reader.readAll(code, statement->handle(), known, reply.results);
    }
    if (query.changesTables || request.procedure) {
        forgetTables();
    }
    if (reader.failed()) {
        throw DriverError(std::move(reader.messages()), kErrorSource);
    }
    std::ranges::move(reader.messages(), std::back_inserter(reply.messages));
    for (std::size_t i = 0; i < request.parameters.size(); ++i) {
        if (comesBack(request.parameters[i])) {
            request.parameters[i].value = parameters.result(i, request.parameters[i]);
        }
    }
    if (again && statement->isRead()) {
        work_->statements.keep(known, std::move(statement));
    }
}

void OdbcSession::cancel() noexcept {
    const std::lock_guard lock(replacing_);
    work_->connection->cancelling().cancel();
}

std::shared_ptr<BoundStatement> OdbcSession::statementFor(const KnownQuery& query) {
    OdbcConnection& connection = *work_->connection;
    if (auto statement = work_->statements.take(query)) {
        connection.renew(statement->handle(), timeout_);
        return statement;
    }
    return std::make_shared<BoundStatement>(connection.newStatement(timeout_));
}

std::string OdbcSession::said(const Request& request, KnownQuery& query) const {
    if (request.procedure) {
        return callOf(request);
    }
    if (query.saidAsWritten) {
        return request.text;
    }
    // FreeTDS goes on behind a failure, but not behind that of the first statement.
    const ServerDialect& dialect = work_->connection->dialect();
    const bool inFront = dialect.driver().losesBehindFailure && query.analysis.mayFollow &&
                         request.parameters.empty();
    std::string text = dialect.said(request.text, query.analysis.isOneQuery);
    query.saidAsWritten = query.oneResult && text == request.text;
    return inFront ? dialect.noRows() + text : text;
}

void OdbcSession::forgetTables() {
    work_->catalogue.forget();
    work_->queries.forget();
    work_->statements.forget();
    work_->changer.forget();
    work_->insertion.forget();
}

ChangeOutcome OdbcSession::apply(const RowChange& change) {
    const auto limited = connection().limit(timeout_);
    return work_->changer.apply(change, timeout_);
}

void OdbcSession::append(const RowBatch& batch) {
    const auto limited = connection().limit(timeout_);
    work_->insertion.append(*this, batch, timeout_);
}

Result OdbcSession::schema(SchemaEnum kind, const SchemaRestrictions& wanted) {
    const auto limited = connection().limit(timeout_);
    return schemaRowset(*work_->connection, kind, wanted, timeout_);
}

std::string OdbcSession::quotedName(std::string_view name) const {
    const ServerDialect& dialect = work_->connection->dialect();
    return dialect.quoted(dialect.folded(name));
}

void OdbcSession::setIsolation(IsolationLevelEnum level) {
    const auto limited = connection().limit(timeout_);
    work_->connection->setIsolation(level);
}

// Servers seldom nest transactions: the inner ones are counted here.
void OdbcSession::begin() {
    if (depth_ == 0) {
        const auto limited = connection().limit(timeout_);
        work_->connection->setAutoCommit(false);
    }
    ++depth_;
}

Product OdbcSession::product() {
    return productOf(work_->connection->handle());
}

// A server undoes the transaction of a connection that is lost.
int OdbcSession::transactionDepth() const {
    return work_->connection->isLost() ? 0 : depth_;
}

void OdbcSession::commit() {
    if (depth_ == 0) {
        noTransaction("COMMIT");
    }
    if (depth_ == 1) {
        endTransaction(true);
    } else {
        --depth_;
    }
}

void OdbcSession::rollback() {
    if (depth_ == 0) {
        noTransaction("ROLLBACK");
    }
    if (work_->connection->isLost()) {
        depth_ = 0;  // the server has undone it
        return;
    }
    try {
        endTransaction(false);
    } catch (const DriverError&) {
        if (work_->connection->isLost()) {
            return;  // the server undoes it without being told
        }
        // An error may have ended it already, which is no failure of undoing it.
        if (!hasNoTransaction()) {
            throw;
        }
        depth_ = 0;
        work_->connection->setAutoCommit(true);
    }
}

bool OdbcSession::hasNoTransaction() {
    const std::string query = work_->connection->dialect().openTransactions();
    if (query.empty()) {
        return false;
    }
    const std::vector<Result> answer = execute(query);
    return !answer.empty() && !answer.front().rows.empty() &&
           answer.front().rows.front().size() == 1 && answer.front().rows.front().integer(0) == 0;
}

// A commit that fails leaves the transaction open, as long as there is a connection.
void OdbcSession::endTransaction(bool commit) {
    OdbcConnection& connection = *work_->connection;
    const auto limited = connection.limit(timeout_);
    try {
        connection.endTransaction(commit);
    } catch (const DriverError&) {
        if (connection.isLost()) {
            depth_ = 0;
        }
        throw;
    }
    depth_ = 0;
    connection.setAutoCommit(true);
}

}  // namespace kap::ado::odbc
