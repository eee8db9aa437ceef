#include "drivers/odbc/session.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

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

OdbcSession::OdbcSession(const ConnectText& text)
    : link_(std::make_shared<Link>(text)),
      catalogue_(*link_),
      changer_(link_, catalogue_, tables_),
      timeout_(text.timeout) {}

OdbcSession::~OdbcSession() {
    link_->endReading();
}

void OdbcSession::execute(Request& request, Reply& reply) {
    timeout_ = request.timeout;
    const auto limited = link_->limit(timeout_);
    KnownQuery procedure;
    KnownQuery& known = request.procedure ? procedure : queries_.of(request.text);
    const QueryAnalysis& query = known.analysis;
    ResultColumns columns(*link_, catalogue_, tables_);
    columns.prepare(query, timeout_);
    Handle statement = link_->newStatement(timeout_);
    ParameterBinding parameters(*link_, statement);
    for (const RequestParameter& parameter : request.parameters) {
        parameters.add(parameter);
    }
    const std::u16string text = String(request.procedure ? callOf(request) : request.text).units();
    const bool mayStream = query.isOneQuery && std::ranges::none_of(request.parameters, comesBack);
    ResultReader reader(link_, columns, mayStream, timeout_);
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
    catalogue_.forget();
    queries_.forget();
    changer_.forget();
}

ChangeOutcome OdbcSession::apply(const RowChange& change) {
    const auto limited = link_->limit(timeout_);
    return changer_.apply(change, timeout_);
}

Result OdbcSession::schema(SchemaEnum kind, const SchemaRestrictions& wanted) {
    const auto limited = link_->limit(timeout_);
    return schemaRowset(*link_, kind, wanted, timeout_);
}

std::string OdbcSession::quotedName(std::string_view name) const {
    return link_->abilities().quoted(link_->abilities().folded(name));
}

void OdbcSession::setIsolation(IsolationLevelEnum level) {
    const auto limited = link_->limit(timeout_);
    link_->setIsolation(level);
}

// Servers seldom nest transactions: the inner ones are counted here.
void OdbcSession::begin() {
    if (depth_ == 0) {
        const auto limited = link_->limit(timeout_);
        link_->setAutoCommit(false);
    }
    ++depth_;
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
    if (link_->isLost()) {
        depth_ = 0;  // the server has undone it
        return;
    }
    try {
        endTransaction(false);
    } catch (const DriverError&) {
        if (!link_->isLost()) {  // else the server undoes it without being told
            throw;
        }
    }
}

// A commit that fails leaves the transaction open, as long as there is a connection.
void OdbcSession::endTransaction(bool commit) {
    const auto limited = link_->limit(timeout_);
    try {
        link_->endTransaction(commit);
    } catch (const DriverError&) {
        if (link_->isLost()) {
            depth_ = 0;
        }
        throw;
    }
    depth_ = 0;
    link_->setAutoCommit(true);
}

}  // namespace kap::ado::odbc
