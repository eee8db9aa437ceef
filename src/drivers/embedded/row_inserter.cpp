#include "drivers/embedded/row_inserter.hpp"

#include "engine/executor/column_info.hpp"
#include "engine/executor/violations.hpp"
#include "engine/values/convert.hpp"

namespace kap::ado::embedded {

bool EmbeddedRowInserter::serves(engine::EngineSession& engine, const engine::Table& table) {
    return (table.insteadOfEvents & tsql::kOnInsert) == 0 &&
           !engine.scripts().execution().fires(table, tsql::kOnInsert);
}

EmbeddedRowInserter::EmbeddedRowInserter(engine::EngineSession& engine, const engine::Table& table,
                                         const RowPlan& insertion)
    : engine_(engine),
      insertion_(insertion),
      made_(translateRowChange(insertion, table, engine::WrittenRows::Silent)) {
    for (const RowColumn& column : insertion_.values()) {
        given_.push_back(engine::typeOf(column.type, column.numericScale));
    }
    statement_ = {engine_.connection().handle(), made_.sql, engine::StatementLife::Kept};
}

Value EmbeddedRowInserter::stored(std::size_t column, const Value& value) const {
    return engine::convert(value, given_[column], made_.values[column].type,
                           engine::Overlength::Refuse);
}

void EmbeddedRowInserter::check(std::size_t column, const Value& value) {
    engine_.reported([&] { static_cast<void>(stored(column, value)); });
}

void EmbeddedRowInserter::insert(const std::vector<Value>& values) {
    engine_.reported([&] {
        engine_.connection().errorSlot().error.reset();
        const auto context = [&] { return engine::contextOf(insertion_); };
        try {
            engine::Transactions::WriteScope scope(engine_.transactions(),
                                                   engine::Transactions::Writes::OneRow);
            namingForeignKey(engine_.connection(), engine_.catalogue(), context,
                             [&] { write(values); });
            scope.keep();
        } catch (const engine::SqliteError& error) {
            throw explained(engine_.connection(), engine_.catalogue(), error, context());
        }
    });
}

void EmbeddedRowInserter::write(const std::vector<Value>& values) {
    const engine::ResetGuard guard(statement_);
    for (std::size_t i = 0; i < values.size(); ++i) {
        statement_.bind(static_cast<int>(i + 1), stored(i, values[i]));
    }
    while (statement_.step()) {
    }
}

}  // namespace kap::ado::embedded
