#include "drivers/odbc/row_changer.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "data/cell_value.hpp"
#include "drivers/odbc/cancelling.hpp"
#include "drivers/odbc/diagnostics.hpp"
#include "drivers/odbc/local_transaction.hpp"
#include "drivers/odbc/result_reader.hpp"
#include "drivers/odbc/values.hpp"

namespace kap::ado::odbc {
namespace {

constexpr std::size_t kKeptPlans = 200;
// Of one plan, for rows that hold nothing in other columns each.
constexpr std::size_t kMostTexts = 32;

DriverError tooManyRows() {
    return driverError(errors::kUnspecified, "21000",
                       "Key column information is insufficient or incorrect. Too many rows were "
                       "affected by update.");
}

// A decimal may come back with other decimals than the record's column has.
Value inScale(const ColumnInfo& column, Value value, std::uint8_t scale) {
    const auto* digits = std::get_if<std::int64_t>(&value);
    if (digits == nullptr || column.type != DataTypeEnum::adNumeric ||
        column.numericScale == scale) {
        return value;
    }
    const auto other = decimalOf(decimalText(*digits, column.numericScale));
    const auto same = other ? scaled(*other, scale) : std::nullopt;
    if (!same) {
        refuseValue(column, "it got more decimals than the records that are open have");
    }
    return *same;
}

void takeReadBack(const RowPlan& plan, const Result& result, ChangeOutcome& outcome) {
    for (std::size_t i = 0; i < plan.readBack().size(); ++i) {
        outcome.readBack.push_back(inScale(result.columns[i],
                                           databaseValue(result.columns[i], result.rows[i], 0),
                                           plan.readBack()[i].numericScale));
    }
}

std::int64_t rowsOf(const Result& result) {
    return result.rows.empty() ? 0 : static_cast<std::int64_t>(result.rows.front().size());
}

}  // namespace

OdbcRowChanger::OdbcRowChanger(std::shared_ptr<OdbcConnection> connection,
                               TableCatalogue& catalogue, BaseTables& tables)
    : connection_(std::move(connection)),
      catalogue_(catalogue),
      tables_(tables),
      prepared_(*connection_),
      texts_(kKeptPlans) {}

void OdbcRowChanger::forget() {
    queries_.forget();
    prepared_.forget();
    texts_.clear();
}

ChangeOutcome OdbcRowChanger::apply(const RowChange& change, std::chrono::seconds timeout) {
    TableName table = tableOf(*change.plan);
    const TableFacts& facts = catalogue_.facts(table, timeout);
    const Task task{change, std::move(table), facts, timeout};
    return change.plan->kind() == RowPlan::Kind::Read ? read(task) : write(task);
}

TableName OdbcRowChanger::tableOf(const RowPlan& plan) const {
    const auto found = tables_.find(plan.table());
    return found == tables_.end() ? TableName{{}, {}, plan.table()} : found->second;
}

std::string OdbcRowChanger::quoted(const TableName& table) const {
    std::string name = dialect().quoted(table.name);
    if (!table.schema.empty() || !table.catalog.empty()) {
        name.insert(0, (table.schema.empty() ? "" : dialect().quoted(table.schema)) + ".");
    }
    if (!table.catalog.empty()) {
        name.insert(0, dialect().quoted(table.catalog) + ".");
    }
    return name;
}

ChangeOutcome OdbcRowChanger::read(const Task& task) {
    const std::vector<Result> results = run(textFor(Use::Reading, task), task);
    ChangeOutcome outcome;
    outcome.rowsTouched = results.empty() ? 0 : rowsOf(results.front());
    if (outcome.rowsTouched > 1) {
        throw tooManyRows();
    }
    if (outcome.rowsTouched == 1) {
        takeReadBack(*task.change.plan, results.front(), outcome);
    }
    return outcome;
}

ChangeOutcome OdbcRowChanger::write(const Task& task) {
    const RowPlan& plan = *task.change.plan;
    const bool alone =
        plan.kind() == RowPlan::Kind::Insert || DmlWriter::namesKey(plan, task.facts);
    if (!alone && connection_->inTransaction()) {
        requireOneRow(task);  // what the client has open cannot be undone
    }
    const ServerDialect::Answer answer = dialect().answerTo(plan, task.facts);
    LocalTransaction transaction(*connection_, !alone || answer == ServerDialect::Answer::Counted);
    ChangeOutcome outcome = answered(answer, task);
    if (outcome.rowsTouched > 1) {
        throw tooManyRows();
    }
    transaction.commit();
    return outcome;
}

ChangeOutcome OdbcRowChanger::answered(ServerDialect::Answer answer, const Task& task) {
    switch (answer) {
        case ServerDialect::Answer::Returned:
            break;
        case ServerDialect::Answer::Selected:
            return selected(task);
        case ServerDialect::Answer::Counted:
            return counted(task);
    }
    try {
        return returned(task);
    } catch (const DriverError& error) {
        const bool refused = std::ranges::any_of(
            error.messages(),
            [&](const ServerMessage& message) { return dialect().refusesToReturn(message); });
        if (!refused) {
            throw;
        }
    }
    catalogue_.noteTriggers(task.table);
    return selected(task);
}

ChangeOutcome OdbcRowChanger::returned(const Task& task) {
    const std::vector<Result> results = run(textFor(Use::Returning, task), task);
    ChangeOutcome outcome;
    const auto rows =
        std::ranges::find_if(results, [](const Result& result) { return !result.columns.empty(); });
    if (rows != results.end()) {
        outcome.rowsTouched = rowsOf(*rows);
        if (outcome.rowsTouched == 1) {
            takeReadBack(*task.change.plan, *rows, outcome);
        }
    }
    return outcome;
}

// Triggers may have answered with counts and rows of their own: ours come last.
ChangeOutcome OdbcRowChanger::selected(const Task& task) {
    const bool readsBack = keptText(Use::ReadingBack, task).has_value();
    const bool own = !connection_->inTransaction();
    std::vector<Result> results;
    try {
        results = run(textFor(own ? Use::SelectingWhole : Use::Selecting, task), task);
    } catch (const DriverError&) {
        if (own && !connection_->isLost()) {
            undo(task);
        }
        throw;
    }
    std::erase_if(results, [](const Result& result) { return result.columns.empty(); });
    const std::size_t ours = readsBack ? 2 : 1;
    if (results.size() < ours || rowsOf(results[results.size() - ours]) != 1) {
        throw driverError(errors::kUnspecified, "HY000",
                          "The database server does not say how many rows it has written.");
    }
    ChangeOutcome outcome;
    outcome.rowsTouched = results[results.size() - ours].rows.front().integer(0);
    if (readsBack && outcome.rowsTouched == 1 && rowsOf(results.back()) == 1) {
        takeReadBack(*task.change.plan, results.back(), outcome);
    }
    return outcome;
}

ChangeOutcome OdbcRowChanger::counted(const Task& task) {
    std::vector<Result> results = run(textFor(Use::Writing, task), task);
    ChangeOutcome outcome;
    for (const Result& result : results) {
        outcome.rowsTouched = result.rowsAffected.value_or(outcome.rowsTouched);
    }
    const std::optional<RowText>& second = keptText(Use::ReadingBack, task);
    if (second && outcome.rowsTouched == 1) {
        results = run(*second, task);
        if (!results.empty() && rowsOf(results.back()) == 1) {
            takeReadBack(*task.change.plan, results.back(), outcome);
        }
    }
    return outcome;
}

// Nothing tells the rows of a table without key apart but their values.
void OdbcRowChanger::requireOneRow(const Task& task) {
    const std::vector<Result> results = run(textFor(Use::Counting, task), task);
    const bool one = !results.empty() && rowsOf(results.front()) == 1 &&
                     results.front().rows.front().integer(0) <= 1;
    if (!one) {
        throw tooManyRows();
    }
}

std::vector<Result> OdbcRowChanger::run(const RowText& row, const Task& task) {
    PreparedStatements::InUse statement = prepared_.of(row.text, task.timeout);
    std::vector<Result> results;
    {
        const Cancelling::Scope cancellable(connection_->cancelling(), statement.handle.get());
        ParameterBinding parameters(*connection_, statement.handle);
        for (const RowText::Parameter& parameter : row.parameters) {
            const bool written = parameter.of == RowText::Parameter::Of::Values;
            const RowPlan& plan = *task.change.plan;
            const RowColumn& column = (written ? plan.values() : plan.criteria())[parameter.place];
            parameters.add(column.type, column.numericScale,
                           (written ? task.change.values : task.change.criteria)[parameter.place]);
        }
        ResultColumns columns(*connection_, catalogue_, tables_);
        ResultReader reader(connection_, columns, task.timeout);
        // Drivers tell where the columns of their answers come from, or it does not matter.
        KnownQuery& known = queries_.of(row.text);
        known.analysis = {};
        known.oneResult = true;
        const SQLRETURN code = PreparedStatements::run(statement, row.text);
        reader.readAll(code, statement.handle, known, results);
        if (reader.failed()) {
            throw DriverError(std::move(reader.messages()), kErrorSource);
        }
        prepared_.giveBack(row.text, std::move(statement));
    }
    return results;
}

// What a text of several statements has left open.
void OdbcRowChanger::undo(const Task& task) {
    const std::string text = dialect().undoing();
    if (text.empty()) {
        return;
    }
    try {
        static_cast<void>(run({text}, task));
    } catch (const DriverError&) {
        connection_->giveUp();  // nothing must make it last
    }
}

const RowText& OdbcRowChanger::textFor(Use use, const Task& task) {
    return *keptText(use, task);
}

// There is one for each use and each choice of criteria that hold nothing: no parameter stands for
// Null in a comparison.
const std::optional<RowText>& OdbcRowChanger::keptText(Use use, const Task& task) {
    const RowPlan& plan = *task.change.plan;
    std::vector<KeptText>* texts = texts_.find(plan.key());
    if (texts == nullptr) {
        texts = &texts_.insert(plan.key(), {});
    }
    const auto fits = [&](const KeptText& kept) {
        return kept.use == use &&
               std::ranges::equal(kept.nulls, task.change.criteria, {}, {},
                                  [](const Value& value) { return isNull(value); });
    };
    const auto known = std::ranges::find_if(*texts, fits);
    if (known != texts->end()) {
        return known->text;
    }
    if (texts->size() == kMostTexts) {
        texts->clear();
    }
    std::vector<bool> nulls;
    for (const Value& value : task.change.criteria) {
        nulls.push_back(isNull(value));
    }
    std::optional<RowText> text =
        made(use, DmlWriter(dialect(), plan, task.facts, quoted(task.table), nulls));
    return texts->emplace_back(KeptText{use, std::move(nulls), std::move(text)}).text;
}

std::optional<RowText> OdbcRowChanger::made(Use use, const DmlWriter& writer) {
    switch (use) {
        case Use::Reading:
            return writer.reading();
        case Use::Counting:
            return writer.counting();
        case Use::Writing:
            return writer.writing();
        case Use::Returning:
            return writer.returning();
        case Use::Selecting:
            return writer.selecting(false);
        case Use::SelectingWhole:
            return writer.selecting(true);
        case Use::ReadingBack:
            break;
    }
    return writer.readingBack();
}

}  // namespace kap::ado::odbc
