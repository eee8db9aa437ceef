#include "engine/plan/found_rows.hpp"

#include <algorithm>
#include <atomic>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/definition_writer.hpp"

namespace kap::engine {

namespace {

sql::TableName nextTable(const char* what) {
    static std::atomic<std::int64_t> last{0};
    return {sql::Database::Temporary, std::string("kap merge ") + what + " " + plain::text(++last)};
}

constexpr const char* kFound = "found";
constexpr const char* kDoneRows = "done";
constexpr const char* kRow = "row";
constexpr const char* kTargetRow = "target row";
constexpr const char* kAction = "action";

void addNames(std::vector<std::string>& names, const char* prefix, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        names.push_back(foundName(prefix, i));
}

void addNulls(std::vector<sql::Item>& items, std::size_t count) {
    items.insert(items.end(), count, sql::Item{sql::null()});
}

void addColumns(std::vector<sql::Item>& items, const Table& table, const char* source) {
    for (const Column& column : table.columns)
        items.push_back({sql::column(source, column.name)});
}

sql::Expression nameOfEvent(std::uint8_t event) {
    return sql::text(event == tsql::kOnInsert   ? "INSERT"
                     : event == tsql::kOnUpdate ? "UPDATE"
                                                : "DELETE");
}

// Rows with their numbers in an order, for tables that are joined row by row.
sql::Select numberedBy(const char* order, sql::Expression column, const sql::TableName& table) {
    sql::Window window;
    window.order.push_back({sql::column(order)});
    sql::Select rows = sql::one(std::move(column), sql::from(table));
    rows.items.push_back({sql::Over{sql::call(fn::kRowNumber), std::move(window)}, "kap number"});
    return rows;
}

}  // namespace

std::string foundName(const char* prefix, std::size_t index) {
    return prefix + plain::text(static_cast<std::int64_t>(index) + 1);
}

sql::Expression foundValue(std::size_t index) {
    return sql::column(kFound, foundName("s", index));
}

FoundRows::FoundRows(const Table& target)
    : target_(target), found_(nextTable(kFound)), done_(nextTable(kDoneRows)) {}

void FoundRows::makeTables(MergePlan& plan, std::size_t values, std::size_t sourceColumns,
                           bool kept) const {
    const auto make = [&](const sql::TableName& table, const std::vector<std::string>& columns) {
        sql::CreateTable create{table, {sql::rowNumbers(kRow)}};
        for (const std::string& column : columns)
            create.columns.push_back({column});
        plan.make.push_back(sqlOf(create));
        plan.remove.push_back(
            sqlOf(sql::Drop{sql::SchemaObject::Table, table.database, table.name}));
    };
    std::vector<std::string> columns{kTargetRow, kAction};
    addNames(columns, "c", values);
    addNames(columns, "s", sourceColumns);
    make(found_, columns);
    if (!kept) return;
    columns = {kAction, "found row"};
    addNames(columns, "i", target_.columns.size());
    addNames(columns, "d", target_.columns.size());
    make(done_, columns);
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

sql::Insert FoundRows::find(std::size_t values, std::size_t sourceColumns, sql::Select rows) const {
    sql::Insert insert{found_, {kTargetRow, kAction}, sql::Query{std::move(rows)}};
    addNames(insert.columns, "c", values);
    addNames(insert.columns, "s", sourceColumns);
    return insert;
}

sql::Expression FoundRows::isChosen(std::size_t action, const char* source) {
    return sql::equal(sql::column(source, kAction), sql::number(static_cast<std::int64_t>(action)));
}

sql::Delete FoundRows::keepFirst() const {
    sql::Select first = sql::one(sql::call(fn::kMin, sql::column(kRow)), sql::from(found_));
    first.groups = {sql::column(kTargetRow)};
    return {found_, sql::Chain{sql::ChainOperator::Or,
                               {sql::isNull(sql::column(kTargetRow)),
                                sql::InQuery{sql::column(kRow), std::move(first), true}}}};
}

sql::Insert FoundRows::keep(std::uint8_t event, std::size_t action) const {
    constexpr const char* kNew = "new";
    constexpr const char* kOld = "old";
    const sql::TableName inserted = tableName(capturedRows(target_, RowState::Inserted));
    const std::size_t count = target_.columns.size();
    sql::Insert insert{done_, {kAction, "found row"}};
    addNames(insert.columns, "i", count);
    addNames(insert.columns, "d", count);
    sql::Select rows;
    rows.items.push_back({nameOfEvent(event)});
    rows.items.push_back({sql::column(kFound, kRow)});
    rows.order.push_back({sql::column(kFound, kRow)});
    if (event == tsql::kOnInsert) {
        addColumns(rows.items, target_, kNew);
        addNulls(rows.items, count);
        sql::Select numbered = numberedBy(kRow, sql::column(kRow), found_);
        numbered.where = isChosen(action);
        rows.from = sql::from(sql::Derived{numberedBy("kap row", sql::Star(), inserted), kNew});
        sql::join(rows.from, sql::JoinOperator::Inner,
                  sql::from(sql::Derived{std::move(numbered), kFound}),
                  sql::equal(sql::column(kNew, "kap number"), sql::column(kFound, "kap number")));
    } else {
        const bool changed = event == tsql::kOnUpdate;
        if (changed) addColumns(rows.items, target_, kNew);
        if (!changed) addNulls(rows.items, count);
        addColumns(rows.items, target_, kOld);
        rows.from = sql::from(sql::TableName{found_.database, found_.name, kFound});
        sql::join(rows.from, sql::JoinOperator::Inner,
                  sql::from(tableName(capturedRows(target_, RowState::Deleted), kOld)),
                  sql::equal(sql::column(kOld, "kap target"), sql::column(kFound, kTargetRow)));
        if (changed) {
            sql::join(rows.from, sql::JoinOperator::Inner,
                      sql::from(tableName(capturedRows(target_, RowState::Inserted), kNew)),
                      sql::equal(sql::column(kNew, "kap row"), sql::column(kOld, "kap row")));
        }
        rows.where = isChosen(action, kFound);
    }
    insert.rows = sql::Query{std::move(rows)};
    return insert;
}

void FoundRows::refill(MergePlan& plan) const {
    for (const RowState state : {RowState::Inserted, RowState::Deleted}) {
        const bool before = state == RowState::Deleted;
        sql::Insert insert{tableName(capturedRows(target_, state)), {"kap row"}};
        sql::Select rows = sql::one(sql::column(kRow), sql::from(done_));
        for (std::size_t i = 0; i < target_.columns.size(); ++i) {
            insert.columns.push_back(target_.columns[i].name);
            rows.items.push_back({sql::column(foundName(before ? "d" : "i", i))});
        }
        rows.where =
            sql::allOf({sql::equal(sql::column(kAction), sql::Parameter{1}),
                        sql::Binary{sql::BinaryOperator::NotEqual, sql::column(kAction),
                                    nameOfEvent(before ? tsql::kOnInsert : tsql::kOnDelete)}});
        insert.rows = sql::Query{std::move(rows)};
        plan.refill.push_back(sqlOf(sql::Write{std::move(insert)}));
    }
}

sql::Delete FoundRows::removal(std::size_t action) const {
    sql::Select chosen = sql::one(sql::column(kTargetRow), sql::from(found_));
    chosen.where = isChosen(action);
    return {tableName(target_),
            sql::InQuery{sql::Column{{}, rowNumberName(target_), true}, std::move(chosen)}};
}

sql::Update FoundRows::update(const std::vector<const Column*>& columns, std::size_t action) const {
    constexpr const char* kChanged = "target";
    sql::Update result{tableName(target_, kChanged)};
    for (std::size_t i = 0; i < columns.size(); ++i)
        result.assignments.push_back({columns[i]->name, sql::column(kFound, foundName("c", i))});
    addRowVersion(result.assignments, target_);
    result.from = sql::from(sql::TableName{found_.database, found_.name, kFound});
    result.where = sql::allOf(
        {isChosen(action, kFound), sql::equal(sql::Column{kChanged, rowNumberName(target_), true},
                                              sql::column(kFound, kTargetRow))});
    return result;
}

sql::Insert FoundRows::caught(RowState state, const std::vector<const Column*>& assigned,
                              std::size_t action) const {
    sql::Insert insert{tableName(capturedRows(target_, state)), {"kap row", "kap target"}};
    sql::Select rows = sql::one(sql::column(kRow), sql::from(found_));
    rows.items.push_back({sql::column(kTargetRow)});
    for (std::size_t i = 0; i < target_.columns.size(); ++i) {
        const auto given = std::ranges::find(assigned, &target_.columns[i]);
        const bool kept = given == assigned.end();
        const auto place = kept ? i : static_cast<std::size_t>(given - assigned.begin());
        insert.columns.push_back(target_.columns[i].name);
        rows.items.push_back({sql::column(foundName(kept ? "s" : "c", place))});
    }
    rows.where = isChosen(action);
    rows.order.push_back({sql::column(kRow)});
    insert.rows = sql::Query{std::move(rows)};
    return insert;
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

sql::Select FoundRows::output() const {
    sql::Select rows;
    rows.from = sql::from(sql::TableName{done_.database, done_.name, kDoneRows});
    sql::join(rows.from, sql::JoinOperator::Inner,
              sql::from(sql::TableName{found_.database, found_.name, kFound}),
              sql::equal(sql::column(kFound, kRow), sql::column(kDoneRows, "found row")));
    rows.order.push_back({sql::column(kDoneRows, kRow)});
    return rows;
}

}  // namespace kap::engine
