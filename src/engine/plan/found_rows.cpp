#include "engine/plan/found_rows.hpp"

#include <atomic>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"

namespace kap::engine {

namespace {

std::string nextName(const char* what) {
    static std::atomic<std::int64_t> last{0};
    return "temp." + sqlName(std::string("kap merge ") + what + " " + plain::text(++last));
}

// ", "c1", "c2"": so many columns, each after a comma.
std::string foundColumns(const char* prefix, std::size_t count) {
    std::string list;
    for (std::size_t i = 0; i < count; ++i)
        list += ", " + foundColumn(prefix, i);
    return list;
}

std::string nulls(std::size_t count) {
    std::string list;
    for (std::size_t i = 0; i < count; ++i)
        list += ", NULL";
    return list;
}

std::string tableColumns(const Table& table, const char* row) {
    std::string list;
    for (const Column& column : table.columns)
        list += ", " + std::string(row) + "." + sqlName(column.name);
    return list;
}

const char* nameOfEvent(std::uint8_t event) {
    return event == tsql::kOnInsert   ? "'INSERT'"
           : event == tsql::kOnUpdate ? "'UPDATE'"
                                      : "'DELETE'";
}

std::string capturedTable(const Table& table, RowState state) {
    return "temp." + sqlName(capturedRows(table, state).name);
}

}  // namespace

std::string foundName(const char* prefix, std::size_t index) {
    return prefix + plain::text(static_cast<std::int64_t>(index) + 1);
}

std::string foundColumn(const char* prefix, std::size_t index) {
    return sqlName(foundName(prefix, index));
}

sql::Expression foundValue(std::size_t index) {
    return sql::column("found", foundName("s", index));
}

std::string chosenBy(std::size_t action) {
    return "\"action\" = " + plain::text(static_cast<std::int64_t>(action));
}

FoundRows::FoundRows(const Table& target)
    : target_(target), found_(nextName("found")), done_(nextName("done")) {}

void FoundRows::makeTables(MergePlan& plan, std::size_t values, std::size_t sourceColumns,
                           bool kept) const {
    plan.make.push_back("CREATE TABLE " + found_ +
                        " (\"row\" INTEGER PRIMARY KEY, \"target row\", \"action\"" +
                        foundColumns("c", values) + foundColumns("s", sourceColumns) + ")");
    plan.remove.push_back("DROP TABLE " + found_);
    if (!kept) return;
    const std::size_t count = target_.columns.size();
    plan.make.push_back("CREATE TABLE " + done_ +
                        " (\"row\" INTEGER PRIMARY KEY, \"action\", \"found row\"" +
                        foundColumns("i", count) + foundColumns("d", count) + ")");
    plan.remove.push_back("DROP TABLE " + done_);
}

std::vector<sql::Item> FoundRows::foundItems(sql::Expression rowNumber, std::size_t action,
                                             std::span<const sql::Expression> values,
                                             std::span<const sql::Expression> sourceColumns) {
    std::vector<sql::Item> items;
    items.reserve(values.size() + sourceColumns.size() + 2);
    items.push_back({std::move(rowNumber)});
    items.push_back({sql::number(static_cast<std::int64_t>(action))});
    for (const auto& part : {values, sourceColumns}) {
        for (const sql::Expression& value : part)
            items.push_back({value});
    }
    return items;
}

std::string FoundRows::findText(std::size_t values, std::size_t sourceColumns,
                                sql::Select rows) const {
    return "INSERT INTO " + found_ + " (\"target row\", \"action\"" + foundColumns("c", values) +
           foundColumns("s", sourceColumns) + ") " + sqlOf(sql::Query{std::move(rows)});
}

std::string FoundRows::keepText(std::uint8_t event, const std::string& chosen) const {
    const std::string inserted = capturedTable(target_, RowState::Inserted);
    const std::string deleted = capturedTable(target_, RowState::Deleted);
    const std::size_t count = target_.columns.size();
    std::string text = "INSERT INTO " + done_ + " (\"action\", \"found row\"" +
                       foundColumns("i", count) + foundColumns("d", count) + ") SELECT " +
                       nameOfEvent(event) + ", \"found\".\"row\"";
    if (event == tsql::kOnInsert) {
        return text + tableColumns(target_, "\"new\"") + nulls(count) +
               " FROM (SELECT *, row_number() OVER (ORDER BY \"kap row\") AS \"kap number\" FROM " +
               inserted +
               ") AS \"new\" JOIN (SELECT \"row\", row_number() OVER (ORDER BY \"row\") AS \"kap "
               "number\" FROM " +
               found_ + " WHERE " + chosen +
               ") AS \"found\" ON \"new\".\"kap number\" = \"found\".\"kap number\" ORDER BY "
               "\"found\".\"row\"";
    }
    const bool update = event == tsql::kOnUpdate;
    text += update ? tableColumns(target_, "\"new\"") : nulls(count);
    text += tableColumns(target_, "\"old\"") + " FROM " + found_ + " AS \"found\" JOIN " + deleted +
            " AS \"old\" ON \"old\".\"kap target\" = \"found\".\"target row\"";
    if (update) {
        text += " JOIN " + inserted + " AS \"new\" ON \"new\".\"kap row\" = \"old\".\"kap row\"";
    }
    return text + " WHERE \"found\"." + chosen + " ORDER BY \"found\".\"row\"";
}

void FoundRows::refill(MergePlan& plan) const {
    for (const RowState state : {RowState::Inserted, RowState::Deleted}) {
        const bool before = state == RowState::Deleted;
        std::string columns;
        for (const Column& column : target_.columns)
            columns += ", " + sqlName(column.name);
        plan.refill.push_back("INSERT INTO " + capturedTable(target_, state) + " (\"kap row\"" +
                              columns + ") SELECT \"row\"" +
                              foundColumns(before ? "d" : "i", target_.columns.size()) + " FROM " +
                              done_ + " WHERE \"action\" = ?1 AND \"action\" <> " +
                              (before ? "'INSERT'" : "'DELETE'"));
    }
}

std::string FoundRows::deleteText(const std::string& chosen) const {
    return "DELETE FROM " + tableSql(target_.name, target_.temporary) + " WHERE " +
           rowNumberName(target_) + " IN (SELECT \"target row\" FROM " + found_ + " WHERE " +
           chosen + ")";
}

std::string FoundRows::updateText(const std::vector<const Column*>& columns,
                                  const std::string& chosen) const {
    std::string list;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        list += (i == 0 ? "" : ", ") + sqlName(columns[i]->name) + " = \"found\"." +
                foundColumn("c", i);
    }
    return "UPDATE " + tableSql(target_.name, target_.temporary) + " AS \"target\" SET " + list +
           rowVersionAssignment(target_) + " FROM " + found_ + " AS \"found\" WHERE \"found\"." +
           chosen + " AND \"target\"." + rowNumberName(target_) + " = \"found\".\"target row\"";
}

Source FoundRows::written(RowState state) const {
    const bool after = state == RowState::Inserted;
    Source source = Binder::tableSource(target_, after ? "inserted" : "deleted");
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        BoundExpression& value = source.columns[i].value;
        value = BoundExpression::expression(sql::column("done", foundName(after ? "i" : "d", i)),
                                            value.type, true);
    }
    return source;
}

Source FoundRows::foundSource(Source source, std::size_t first) {
    source.table = nullptr;
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        BoundExpression& value = source.columns[i].value;
        value = BoundExpression::expression(foundValue(first + i), value.type, true);
    }
    return source;
}

std::string FoundRows::outputFrom() const {
    return done_ + " AS \"done\" JOIN " + found_ +
           " AS \"found\" ON \"found\".\"row\" = \"done\".\"found row\" ORDER BY \"done\".\"row\"";
}

}  // namespace kap::engine
