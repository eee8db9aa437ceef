#include <cstdint>
#include <string>

#include <kaputil/automation/plain_text.hpp>

#include "engine/binder/binder.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/sqlite/sql_writer.hpp"
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
std::string lotOf(const std::string& rowNumber, std::optional<std::int64_t> seed) {
    const std::string mask = plain::text(kChances - 1);
    if (!seed) return "(random() & " + mask + ")";
    constexpr std::int64_t kMostSeed = 0xFFFFFF;
    constexpr std::int64_t kSpread = 2654435761;
    return "((((" + rowNumber + " & 268435455) * " + plain::text(kSpread) + " + " +
           plain::text((*seed & kMostSeed) * kSpread) + ") >> 12) & " + mask + ")";
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
    const std::string stored = tableSql(found->name, found->temporary);
    const std::string lot = lotOf(rowNumberName(*found), seed);
    const std::string rows = sample.rows ? lot + " * (SELECT count(*) FROM " + stored + ") < " +
                                               plain::text(static_cast<std::int64_t>(size)) +
                                               " * " + plain::text(kChances)
                                         : lot + " < " +
                                               plain::text(static_cast<std::int64_t>(
                                                   size * static_cast<double>(kChances) / kWhole));
    BoundSource source = storedTable(named.name, named.alias);
    Source& columns = source.sources.front();
    columns.rowNumber = sql::column(columns.name, kRowNumber);
    source.sql = "(SELECT " + rowNumberName(*found) + " AS " + sqlName(kRowNumber) + ", * FROM " +
                 stored + " WHERE " + rows + ") AS " + sqlName(columns.name);
    return source;
}

}  // namespace kap::engine
