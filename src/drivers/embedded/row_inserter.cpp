#include "drivers/embedded/row_inserter.hpp"

#include <utility>

#include "engine/executor/column_info.hpp"
#include "engine/executor/violations.hpp"
#include "engine/values/convert.hpp"

namespace kap::ado::embedded {
namespace {

RowChange insertionInto(const RowTarget& target) {
    RowChange change;
    change.kind = RowChange::Kind::Insert;
    change.table = target.table;
    change.values = target.columns;
    return change;
}

}  // namespace

bool EmbeddedRowInserter::serves(engine::EngineSession& engine, const EmbeddedRowChanger& changer,
                                 const RowTarget& target) {
    const engine::Table& table = changer.tableOf(insertionInto(target));
    return (table.insteadOfEvents & tsql::kOnInsert) == 0 &&
           !engine.scripts().execution().fires(table, tsql::kOnInsert);
}

EmbeddedRowInserter::EmbeddedRowInserter(engine::EngineSession& engine,
                                         const EmbeddedRowChanger& changer, const RowTarget& target)
    : engine_(engine), table_(target.table) {
    const RowChange change = insertionInto(target);
    const engine::Table& table = changer.tableOf(change);
    statement_ = {engine_.connection().handle(), EmbeddedRowChanger::insertionSql(change, table),
                  engine::StatementLife::Kept};
    for (const ColumnValue& value : target.columns) {
        columns_.push_back(
            {*table.find(value.column), engine::typeOf(value.type, value.numericScale)});
    }
}

Value EmbeddedRowInserter::stored(std::size_t column, const Value& value) const {
    const Target& target = columns_[column];
    return engine::convert(value, target.given, target.column.type, engine::Overlength::Refuse);
}

void EmbeddedRowInserter::check(std::size_t column, const Value& value) {
    engine_.reported([&] { static_cast<void>(stored(column, value)); });
}

void EmbeddedRowInserter::insert(const std::vector<Value>& values) {
    engine_.reported([&] {
        engine_.connection().errorSlot().error.reset();
        try {
            engine::Transactions::WriteScope scope(engine_.transactions(),
                                                   engine::Transactions::Writes::OneRow);
            write(values);
            scope.keep();
        } catch (const engine::SqliteError& error) {
            const engine::WriteContext context{"INSERT", table_, {}};
            if (error.code() == SQLITE_CONSTRAINT_FOREIGNKEY &&
                engine_.transactions().depth() > 0) {
                throw engine::ForeignKeySearch(engine_.connection(), engine_.catalogue())
                    .find(context, [&] { write(values); });
            }
            throw explained(engine_.connection(), engine_.catalogue(), error, context);
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
