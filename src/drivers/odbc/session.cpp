#include "drivers/odbc/session.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/odbc/connection_pool.hpp"
#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/parameter_binding.hpp"
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

OdbcSession::Work::Work(std::shared_ptr<Link> opened)
    : link(std::move(opened)), catalogue(*link), changer(link, catalogue, tables) {}

OdbcSession::OdbcSession(const ConnectText& text)
    : text_(text),
      work_(std::make_unique<Work>(ConnectionPool::shared().open(text))),
      timeout_(text.timeout) {}

OdbcSession::~OdbcSession() {
    std::shared_ptr<Link> link = work_->link;
    link->endReading();
    work_.reset();
    ConnectionPool::shared().close(text_, std::move(link));
}

Link& OdbcSession::link() {
    Link& now = *work_->link;
    if (text_.pooling.wanted && depth_ == 0 && now.isBlank() && now.hasEnded()) {
        work_ = std::make_unique<Work>(ConnectionPool::shared().open(text_));
    }
    return *work_->link;
}

void OdbcSession::execute(Request& request, Reply& reply) {
    timeout_ = request.timeout;
    Link& link = this->link();
    const auto limited = link.limit(timeout_);
    KnownQuery procedure;
    KnownQuery& known = request.procedure ? procedure : work_->queries.of(request.text);
    const QueryAnalysis& query = known.analysis;
    if (query.leavesState) {
        link.leaveState();
    }
    ResultColumns columns(link, work_->catalogue, work_->tables);
    columns.prepare(query, timeout_);
    Handle statement = link.newStatement(timeout_);
    ParameterBinding parameters(link, statement);
    for (const RequestParameter& parameter : request.parameters) {
        parameters.add(parameter);
    }
    // FreeTDS goes on behind a failure, but not behind that of the first statement.
    const Abilities& abilities = link.abilities();
    const bool inFront = abilities.losesBehindFailure && query.mayFollow &&
                         request.parameters.empty() && !request.procedure;
    const std::u16string text =
        String(request.procedure
                   ? callOf(request)
                   : (inFront ? abilities.server->noRows() : "") +
                         (query.isOneQuery ? abilities.server->said(request.text) : request.text))
            .units();
    const bool mayStream = query.isOneQuery && std::ranges::none_of(request.parameters, comesBack);
    ResultReader reader(work_->link, columns, mayStream, timeout_);
    const SQLRETURN code =
        SQLExecDirectW(statement.get(), wide(text), static_cast<SQLINTEGER>(text.size()));
    reader.readAll(code, statement, known, reply.results);
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
}

void OdbcSession::forgetTables() {
    work_->catalogue.forget();
    work_->queries.forget();
    work_->changer.forget();
}

ChangeOutcome OdbcSession::apply(const RowChange& change) {
    const auto limited = link().limit(timeout_);
    return work_->changer.apply(change, timeout_);
}

Result OdbcSession::schema(SchemaEnum kind, const SchemaRestrictions& wanted) {
    const auto limited = link().limit(timeout_);
    return schemaRowset(*work_->link, kind, wanted, timeout_);
}

std::string OdbcSession::quotedName(std::string_view name) const {
    const Abilities& abilities = work_->link->abilities();
    return abilities.quoted(abilities.folded(name));
}

void OdbcSession::setIsolation(IsolationLevelEnum level) {
    const auto limited = link().limit(timeout_);
    work_->link->setIsolation(level);
}

// Servers seldom nest transactions: the inner ones are counted here.
void OdbcSession::begin() {
    if (depth_ == 0) {
        const auto limited = link().limit(timeout_);
        work_->link->setAutoCommit(false);
    }
    ++depth_;
}

Product OdbcSession::product() {
    return productOf(work_->link->handle());
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
    if (work_->link->isLost()) {
        depth_ = 0;  // the server has undone it
        return;
    }
    try {
        endTransaction(false);
    } catch (const DriverError&) {
        if (work_->link->isLost()) {
            return;  // the server undoes it without being told
        }
        // An error may have ended it already, which is no failure of undoing it.
        if (!hasNoTransaction()) {
            throw;
        }
        depth_ = 0;
        work_->link->setAutoCommit(true);
    }
}

bool OdbcSession::hasNoTransaction() {
    const std::string query = work_->link->abilities().server->openTransactions();
    if (query.empty()) {
        return false;
    }
    const std::vector<Result> answer = execute(query);
    return !answer.empty() && !answer.front().rows.empty() &&
           answer.front().rows.front().size() == 1 && answer.front().rows.front().integer(0) == 0;
}

// A commit that fails leaves the transaction open, as long as there is a connection.
void OdbcSession::endTransaction(bool commit) {
    Link& link = *work_->link;
    const auto limited = link.limit(timeout_);
    try {
        link.endTransaction(commit);
    } catch (const DriverError&) {
        if (link.isLost()) {
            depth_ = 0;
        }
        throw;
    }
    depth_ = 0;
    link.setAutoCommit(true);
}

}  // namespace kap::ado::odbc
