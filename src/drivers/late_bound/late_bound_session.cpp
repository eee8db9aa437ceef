#include "drivers/late_bound/late_bound_session.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "automation/late_bound.hpp"
#include "base/ascii.hpp"
#include "base/unicode.hpp"
#include "data/cell_text.hpp"
#include "data/cell_value.hpp"
#include "data/dialects/sql_dialects.hpp"
#include "data/failures.hpp"
#include "data/row_batch.hpp"
#include "drivers/late_bound/foreign_connection.hpp"
#include "drivers/late_bound/late_bound_rows.hpp"
#include "drivers/late_bound/query_table.hpp"
#include "drivers/late_bound/statement_text.hpp"

namespace kap::ado::late_bound {
namespace {

// Whether an error says that the maker does not know of several recordsets.
bool saysNotAvailable(const AutomationError& error) {
    constexpr std::int32_t kNotImplemented = -2147467263;
    return error.number() == errors::kFeatureNotAvailable ||
           error.number() == kap::errors::kMemberNotFound || error.number() == kNotImplemented;
}

// The recordset behind the one before it; an unset object when there is none, or when the maker
// does not know of several. A later statement's failure is raised here.
Variant nextRecordset(const Variant& recordset, Variant& rowsAffected) {
    try {
        std::array<Variant, 1> arguments = {std::int32_t{0}};
        Variant next = late::objectOf(recordset).invoke(u"NextRecordset", InvokeKind::Method,
                                                        Arguments{arguments, {}});
        rowsAffected = arguments[0];
        return next;
    } catch (const AutomationError& error) {
        if (saysNotAvailable(error)) {
            return Ref<Object>();
        }
        throw;
    }
}

bool isSet(const Variant& value) {
    return value.isObject() && value.as<Ref<Object>>();
}

std::optional<std::int64_t> countOf(const Variant& rowsAffected) {
    const std::int64_t count = convert::toLong(convert::plainValue(rowsAffected));
    return count < 0 ? std::nullopt : std::optional(count);
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::any_of(names, [&](const std::string& one) {
        return unicode::sameName(String(one), String(name));
    });
}

// The values of a row, as its database reads them.
std::string literalsOf(const SqlDialect& dialect, const RowBatch& batch, std::size_t row) {
    std::string list;
    for (const RowBatch::Column& column : batch.columns) {
        ColumnDefinition definition;
        definition.type = column.info->type;
        std::string text;
        list += list.empty() ? "" : ", ";
        list += appendCellText(*column.info, *column.values, row, text)
                    ? dialect.literal(definition, text)
                    : "NULL";
    }
    return list;
}

}  // namespace

template <class Work>
auto LateBoundSession::asDriver(Work work) const {
    try {
        return work();
    } catch (const DriverError&) {
        throw;
    } catch (const AutomationError& error) {
        throw DriverError(error, messagesOf(connection_, error));
    }
}

Variant LateBoundSession::run(const std::string& script, Variant& rowsAffected) {
    constexpr auto kText = static_cast<std::int32_t>(CommandTypeEnum::adCmdText);
    std::array<Variant, 3> arguments = {String(script), std::int32_t{-1}, kText};
    Variant rows = connection_->invoke(u"Execute", InvokeKind::Method, Arguments{arguments, {}});
    rowsAffected = arguments[1];
    return rows;
}

Variant LateBoundSession::runWithin(std::chrono::seconds limit, const std::string& script,
                                    Variant& rowsAffected) {
    const auto usual = commandTimeoutOf(connection_);
    const auto wanted = static_cast<std::int32_t>(limit.count());
    if (!usual || *usual == wanted) {
        return run(script, rowsAffected);
    }
    setCommandTimeout(connection_, wanted);
    Variant rows;
    try {
        rows = asDriver([&] { return run(script, rowsAffected); });
    } catch (const DriverError&) {
        try {
            setCommandTimeout(connection_, *usual);
        } catch (const AutomationError&) {
            // Deliberate: what clients are to read is why the script failed.
        }
        throw;
    }
    setCommandTimeout(connection_, *usual);
    return rows;
}

void LateBoundSession::execute(Request& request, Reply& reply) {
    if (!request.parameters.empty()) {
        fail::notAvailable(u"Another maker's connection takes no parameters from this library.");
    }
    asDriver([&] {
        const std::string script = request.procedure ? "EXEC " + request.text : request.text;
        Variant rowsAffected;
        Variant recordset = runWithin(request.timeout, script, rowsAffected);
        while (isSet(recordset)) {
            Result result = resultOf(recordset);
            if (result.columns.empty()) {
                result.rowsAffected = countOf(rowsAffected);
            } else {
                describe(script, result);
            }
            reply.results.push_back(std::move(result));
            recordset = nextRecordset(recordset, rowsAffected);
        }
    });
}

// By literals, for there are no parameters.
void LateBoundSession::append(const RowBatch& batch) {
    constexpr std::size_t kRowsAStatement = 100;
    const SqlDialect& speech = dialect();
    for (std::size_t done = 0; done < batch.count;) {
        const std::size_t end = std::min(done + kRowsAStatement, batch.count);
        std::string text = batch.beginning();
        for (std::size_t row = done; row < end; ++row) {
            text +=
                (row == done ? "(" : ", (") + literalsOf(speech, batch, batch.first + row) + ")";
        }
        static_cast<void>(write(text));
        done = end;
    }
}

const SqlDialect& LateBoundSession::dialect() {
    const String provider = asDriver([&] {
        return connection_->memberId(u"Provider")
                   ? convert::toString(late::get(Variant(connection_), u"Provider"))
                   : String();
    });
    if (provider == u"KapLocal") {
        return embeddedSql();
    }
    const Result types = schema(SchemaEnum::adSchemaProviderTypes, {});
    for (std::size_t i = 0; i < types.columns.size(); ++i) {
        for (std::size_t row = 0;
             types.columns[i].name == "TYPE_NAME" && row < types.rows[i].size(); ++row) {
            if (equalsIgnoringCase(types.rows[i].bytes(row), "int4")) {
                return postgresSql();
            }
        }
    }
    return transactSql();
}

std::vector<std::string> LateBoundSession::keyOf(const std::string& table) {
    const SchemaRestrictions wanted = {std::nullopt, std::nullopt, table};
    std::vector<std::string> key;
    try {
        const Result found = schema(SchemaEnum::adSchemaPrimaryKeys, wanted);
        for (std::size_t i = 0; i < found.columns.size(); ++i) {
            if (found.columns[i].name != "COLUMN_NAME") {
                continue;
            }
            for (std::size_t row = 0; row < found.rows[i].size(); ++row) {
                key.emplace_back(found.rows[i].bytes(row));
            }
        }
    } catch (const DriverError&) {
        key.clear();  // a database that describes no keys: rows are located by all of their columns
    }
    return key;
}

// The columns of a table that nobody assigns: its identity and what is computed.
std::vector<std::string> LateBoundSession::setByDatabase(const std::string& table) {
    const std::string object = "OBJECT_ID(" + textLiteral(table) + ")";
    const auto has = [&](const char* property) {
        return "COLUMNPROPERTY(" + object + ", COLUMN_NAME, '" + property + "') = 1";
    };
    std::vector<std::string> names;
    try {
        Variant unused;
        const Result found =
            resultOf(run("SELECT COLUMN_NAME FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = " +
                             textLiteral(table) + " AND (" + has("IsIdentity") + " OR " +
                             has("IsComputed") + ")",
                         unused));
        for (std::size_t row = 0; !found.rows.empty() && row < found.rows[0].size(); ++row) {
            names.emplace_back(found.rows[0].bytes(row));
        }
    } catch (const AutomationError&) {
        names.clear();  // a database that cannot tell: it refuses what must not be assigned
    }
    return names;
}

void LateBoundSession::describe(const std::string& script, Result& result) {
    const auto table = tableOfQuery(script);
    if (!table || (table->columns && table->columns->size() != result.columns.size())) {
        return;
    }
    const std::vector<std::string> key = keyOf(table->last);
    const std::vector<std::string> own = setByDatabase(table->last);
    std::size_t keysFound = 0;
    for (std::size_t i = 0; i < result.columns.size(); ++i) {
        ColumnInfo& column = result.columns[i];
        const std::string base = table->columns ? (*table->columns)[i] : column.name;
        if (base.empty()) {
            continue;
        }
        column.baseTable = table->name;
        column.baseColumn = base;
        column.identity = contains(own, base);
        column.key = contains(key, base);
        keysFound += column.key ? 1 : 0;
    }
    if (keysFound < key.size()) {
        for (ColumnInfo& column : result.columns) {
            column.key = false;
        }
    }
}

std::int64_t LateBoundSession::write(const std::string& statement) {
    Variant rowsAffected;
    static_cast<void>(run(statement, rowsAffected));
    return countOf(rowsAffected).value_or(0);
}

std::vector<Value> LateBoundSession::readBack(const RowChange& change) {
    Variant unused;
    const Result found = resultOf(run(readingText(change), unused));
    std::vector<Value> values;
    if (found.rows.empty() || found.rows.front().size() != 1) {
        return values;
    }
    for (std::size_t i = 0; i < found.columns.size(); ++i) {
        values.push_back(databaseValue(found.columns[i], found.rows[i], 0));
    }
    return values;
}

ChangeOutcome LateBoundSession::apply(const RowChange& change) {
    return asDriver([&] {
        ChangeOutcome outcome;
        if (change.plan->kind() == RowPlan::Kind::Read) {
            outcome.readBack = readBack(change);
            outcome.rowsTouched = outcome.readBack.empty() ? 0 : 1;
            return outcome;
        }
        // A change of its own is taken back when its criteria fit more than one row.
        const bool own = depth_ == 0;
        if (own) {
            begin();
        }
        try {
            outcome.rowsTouched = write(writingText(change));
            if (outcome.rowsTouched > 1) {
                throw AutomationError(errors::kMultipleStep,
                                      u"The row cannot be told from others of its table.",
                                      u"ADODB");
            }
            if (outcome.rowsTouched == 1 && change.plan->kind() != RowPlan::Kind::Delete &&
                !change.plan->readBack().empty()) {
                outcome.readBack = readBack(change);
            }
        } catch (const AutomationError&) {
            if (own) {
                rollback();
            }
            throw;
        }
        if (own) {
            commit();
        }
        return outcome;
    });
}

Result LateBoundSession::schema(SchemaEnum kind, const SchemaRestrictions& wanted) {
    return asDriver([&] {
        std::vector<Variant> restrictions;
        for (const auto& one : wanted) {
            restrictions.push_back(one ? Variant(*one) : Variant());
        }
        return resultOf(late::call(
            Variant(connection_), u"OpenSchema",
            {static_cast<std::int32_t>(kind), Array::ofVariants(std::move(restrictions))}));
    });
}

void LateBoundSession::setIsolation(IsolationLevelEnum level) {
    asDriver([&] {
        late::let(Variant(connection_), u"IsolationLevel", static_cast<std::int32_t>(level));
    });
}

void LateBoundSession::begin() {
    asDriver([&] { late::call(Variant(connection_), u"BeginTrans"); });
    ++depth_;
}

void LateBoundSession::commit() {
    asDriver([&] { late::call(Variant(connection_), u"CommitTrans"); });
    --depth_;
}

void LateBoundSession::rollback() {
    if (depth_ > 0) {
        depth_ = 0;
        asDriver([&] { late::call(Variant(connection_), u"RollbackTrans"); });
    }
}

}  // namespace kap::ado::late_bound
