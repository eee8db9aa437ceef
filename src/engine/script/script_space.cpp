#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/column_info.hpp"
#include "engine/script/script_runner.hpp"

// sp_spaceused: what the database, or one table, takes of the file.
namespace kap::engine {
namespace {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

constexpr std::int64_t kKilobyte = 1024;

struct Space {
    std::int64_t reserved = 0;
    std::int64_t data = 0;
    std::int64_t unused = 0;

    [[nodiscard]] std::int64_t indexes() const { return reserved - data - unused; }
};

struct ShownColumn {
    const char* name;
    TypeSpec type;
    std::string value;
};

constexpr TypeSpec kAmount{SqlType::VarChar, 18};

std::string kilobytes(std::int64_t bytes) {
    return plain::text((bytes + kKilobyte - 1) / kKilobyte) + " KB";
}

// "1.25 MB"
std::string megabytes(std::int64_t bytes) {
    constexpr std::int64_t kPerMegabyte = 100;
    const std::int64_t hundredths =
        (bytes * kPerMegabyte + kKilobyte * kKilobyte / 2) / (kKilobyte * kKilobyte);
    const std::int64_t rest = hundredths % kPerMegabyte;
    return plain::text(hundredths / kPerMegabyte) + (rest < 10 ? ".0" : ".") + plain::text(rest) +
           " MB";
}

// The pages of a table and its indexes, or of all.
Space spaceOf(sqlite3* database, const Table* table) {
    const std::string place = table != nullptr && table->temporary ? "temp" : "main";
    std::string sql =
        "SELECT coalesce(sum(d.pgsize), 0), coalesce(sum(CASE WHEN s.type = 'index' THEN 0 ELSE "
        "d.pgsize - d.unused END), 0), coalesce(sum(d.unused), 0) FROM dbstat('" +
        place + "', 1) AS d LEFT JOIN " + place + ".sqlite_schema AS s ON s.name = d.name";
    if (table != nullptr) sql += " WHERE s.tbl_name = ?1 COLLATE NOCASE";
    PreparedStatement look(database, sql);
    if (table != nullptr) look.bind(1, std::string_view(table->name));
    if (!look.step()) return {};
    return {look.integer(0), look.integer(1), look.integer(2)};
}

std::int64_t pragmaValue(sqlite3* database, const char* name) {
    PreparedStatement look(database, std::string("PRAGMA main.") + name);
    return look.step() ? look.integer(0) : 0;
}

ado::Result rowOf(const std::vector<ShownColumn>& shown, const SchemaCatalogue& catalogue) {
    std::vector<ResultColumn> columns(shown.size());
    ado::Result result;
    result.rows.resize(shown.size());
    for (std::size_t i = 0; i < shown.size(); ++i) {
        columns[i].name = shown[i].name;
        columns[i].type = shown[i].type;
        result.rows[i].appendBytes(shown[i].value);
    }
    result.columns = columnInfos(columns, catalogue);
    return result;
}

std::vector<ShownColumn> amounts(const Space& space) {
    return {{"reserved", kAmount, kilobytes(space.reserved)},
            {"data", kAmount, kilobytes(space.data)},
            {"index_size", kAmount, kilobytes(space.indexes())},
            {"unused", kAmount, kilobytes(space.unused)}};
}

}  // namespace

void ScriptRunner::spaceUsed(const std::vector<std::string>& arguments, int line,
                             std::vector<ado::Result>& results) {
    if (arguments.size() > 1 && !arguments[1].empty() &&
        !equalsIgnoringCase(arguments[1], "true") && !equalsIgnoringCase(arguments[1], "false")) {
        throw ServerError(tsql::Message::WrongProcedureCall, {"sp_spaceused"}, line);
    }
    const Transactions::ReadScope scope(transactions_);
    if (!arguments.empty() && !arguments.front().empty()) {
        spaceOfTable(arguments.front(), line, results);
        return;
    }
    const std::int64_t page = pragmaValue(connection_.handle(), "page_size");
    const std::int64_t whole = page * pragmaValue(connection_.handle(), "page_count");
    const std::int64_t free = page * pragmaValue(connection_.handle(), "freelist_count");
    results.push_back(rowOf({{"database_name", {SqlType::NVarChar, 128}, catalogue_.databaseName()},
                             {"database_size", kAmount, megabytes(whole)},
                             {"unallocated space", kAmount, megabytes(free)}},
                            catalogue_));
    results.push_back(rowOf(amounts(spaceOf(connection_.handle(), nullptr)), catalogue_));
}

void ScriptRunner::spaceOfTable(const std::string& name, int line,
                                std::vector<ado::Result>& results) {
    const std::string stored = objectNamed(catalogue_, name);
    const Table* table = catalogue_.find(stored);
    if (table == nullptr) {
        if (!catalogue_.knows(stored)) {
            throw ServerError(tsql::Message::NoSuchObject, {name, catalogue_.databaseName()}, line);
        }
        throw ServerError(tsql::Message::ObjectWithoutSpace, {}, line);
    }
    constexpr std::size_t kWidth = 20;
    std::string shownRows = plain::text(catalogue_.countRows(*table));
    shownRows.resize(std::max(shownRows.size(), kWidth), ' ');
    std::vector<ShownColumn> row{
        {"name", {SqlType::NVarChar, 128}, std::string(table->shown())},
        {"rows", {SqlType::Char, static_cast<int>(kWidth)}, std::move(shownRows)}};
    for (ShownColumn& amount : amounts(spaceOf(connection_.handle(), table)))
        row.push_back(std::move(amount));
    results.push_back(rowOf(row, catalogue_));
}

}  // namespace kap::engine
