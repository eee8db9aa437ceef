#include <cstdint>
#include <optional>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/binder/binder.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/catalog/object_names.hpp"
#include "tsql/server_error.hpp"

// TABLESAMPLE: each row of a table is taken or left by itself.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr std::int64_t kChances = std::int64_t{1} << 20;  // into which a row's lot is divided
constexpr double kWhole = 100;

// A row's lot, from 0 to kChances - 1. With a seed it is the same each time: the row's number by a
// large odd one, of whose product the middle bits are taken.
sql::Expression lotOf(const sql::Expression& rowNumber, std::optional<std::int64_t> seed) {
    const auto both = [](sql::BinaryOperator op, sql::Expression left, std::int64_t right) {
        return sql::Binary{op, std::move(left), sql::number(right)};
    };
    constexpr std::int64_t kMask = kChances - 1;
    if (!seed) return both(sql::BinaryOperator::BitAnd, sql::call(fn::kRandomWhole), kMask);
    constexpr std::int64_t kMostRows = 0xFFFFFFF;
    constexpr std::int64_t kMostSeed = 0xFFFFFF;
    constexpr std::int64_t kSpread = 2654435761;
    constexpr std::int64_t kLowBits = 12;
    sql::Expression product = both(sql::BinaryOperator::BitAnd, rowNumber, kMostRows);
    product = both(sql::BinaryOperator::Multiply, std::move(product), kSpread);
    product = both(sql::BinaryOperator::Add, std::move(product), (*seed & kMostSeed) * kSpread);
    product = both(sql::BinaryOperator::ShiftRight, std::move(product), kLowBits);
    return both(sql::BinaryOperator::BitAnd, std::move(product), kMask);
}

// Whether the row's lot is among those that are taken: so many rows of the table, or so many of a
// hundred.
sql::Expression isTaken(sql::Expression lot, double size, bool rows, const sql::From& table) {
    if (!rows) {
        const auto most = static_cast<std::int64_t>(size * static_cast<double>(kChances) / kWhole);
        return sql::Binary{sql::BinaryOperator::Less, std::move(lot), sql::number(most)};
    }
    const auto wanted = static_cast<std::int64_t>(size);
    const sql::Expression count =
        sql::Subquery{sql::one(sql::call(fn::kCount, sql::Star()), table)};
    return sql::Binary{
        sql::BinaryOperator::Less,
        sql::Binary{sql::BinaryOperator::Multiply, std::move(lot), count},
        sql::Binary{sql::BinaryOperator::Multiply, sql::number(wanted), sql::number(kChances)}};
}

// The whole number that a constant is.
std::int64_t wholeOf(const BoundExpression& value, const Table& table, int line) {
    const Value* constant = value.constant();
    if (constant == nullptr || !tsql::isInteger(value.type.type)) {
        throw ServerError(tsql::Message::WrongSampleNumber, {table.shown()}, line);
    }
    return std::get<std::int64_t>(*constant);
}

}  // namespace

// How many rows, or which part of a hundred.
double Binder::sampleSize(const tsql::TableSample& sample, const Table& table, int line) {
    Scope constants;
    const BoundExpression size = value(*sample.size, constants);
    if (sample.rows) {
        const std::int64_t rows = wholeOf(size, table, line);
        if (rows < 0) throw ServerError(tsql::Message::WrongSampleNumber, {table.shown()}, line);
        return static_cast<double>(rows);
    }
    const BoundExpression part = convertTo(size, {SqlType::Float}, line);
    const Value* constant = part.constant();
    const double percent = constant == nullptr ? -1 : std::get<double>(*constant);
    if (percent < 0 || percent > kWhole) {
        throw ServerError(tsql::Message::WrongSamplePercent,
                          {plain::fixed(percent, 6), table.shown()}, line);
    }
    return percent;
}

BoundSource Binder::sampledTable(const tsql::NamedTable& named) {
    const int line = named.name.line;
    const bool isCommon = findCommon(commonNameOf(named.name)) != nullptr;
    const Table* found = isCommon ? nullptr : table(named.name);
    if (found == nullptr && !isCommon && view(named.name) == nullptr) noSuchTable(named.name);
    if (found == nullptr || found->name.starts_with('@')) {
        throw ServerError(tsql::Message::SampleOfNoTable, {}, line);
    }
    const tsql::TableSample& sample = *named.sample;
    const double size = sampleSize(sample, *found, line);
    std::optional<std::int64_t> seed;
    if (sample.seed) {
        Scope constants;
        seed = wholeOf(value(*sample.seed, constants), *found, line);
    }
    const sql::From stored = sql::from(tableName(*found));
    BoundSource source = storedTable(named.name, named.alias);
    Source& columns = source.sources.front();
    columns.rowNumber = sql::column(columns.name, kRowNumber);
    sql::Select rows = numberedRows(*found);
    rows.where = isTaken(lotOf(sql::Column{{}, rowNumberName(*found), true}, seed), size,
                         sample.rows, stored);
    source.from = sql::from(sql::Derived{std::move(rows), columns.name});
    return source;
}

}  // namespace kap::engine
