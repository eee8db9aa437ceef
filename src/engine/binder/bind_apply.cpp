#include <algorithm>
#include <utility>

#include "engine/binder/binder.hpp"
#include "engine/sqlite/row_functions.hpp"
#include "tsql/server_error.hpp"

// CROSS APPLY and OUTER APPLY. SQLite lets no query in FROM read the rows beside it, but functions:
// the right side is run by one, which is given the values that it reads (row_functions.hpp).
namespace kap::engine {

// What the right side binds to is bound once more when it reads common tables: they are not known
// where its text is run, and have to stand in it.
BoundSource Binder::apply(const tsql::Join& join, int line, Scope& scope) {
    BoundSource left = source(*join.left, scope);
    GivenValues given;
    Scope beside;
    beside.outer = scope.outer;
    beside.sources = std::move(left.sources);
    const std::size_t count = commonNames_.size();
    const auto reads = [&] {
        int sum = 0;
        for (std::size_t i = 0; i < count; ++i)
            sum += commonNames_[i].reads;
        return sum;
    };
    const int before = reads();
    BoundSource right = appliedSource(*join.right, beside, given);
    std::vector<sql::CommonTable> with;
    if (reads() != before && !given.values.empty()) {
        given = {};
        std::vector<GivenValues*> around = givenTo_;
        around.push_back(&given);
        const Restored inText(constantsStand_, Constants::InText);
        {
            const Restored to(givenTo_, std::move(around));
            with = commonTablesAgain(count, line);
        }
        right = appliedSource(*join.right, beside, given);
        commonNames_.resize(count);
    }
    left.sources = std::move(beside.sources);
    if (!given.values.empty()) {
        right = givenRows(std::move(right), std::move(with), given, line);
    }
    const bool outer = join.kind == tsql::JoinKind::OuterApply;
    sql::join(left.from, outer ? sql::JoinOperator::Left : sql::JoinOperator::Cross,
              std::move(right.from), outer ? sql::number(1) : sql::Expression());
    for (Source& each : right.sources) {
        for (SourceColumn& column : each.columns)
            column.value.nullable = column.value.nullable || outer;
        left.sources.push_back(std::move(each));
    }
    checkNames(left.sources, line);
    return left;
}

BoundSource Binder::appliedSource(const tsql::TableSource& source, Scope& beside,
                                  GivenValues& given) {
    std::vector<GivenValues*> around = givenTo_;
    around.push_back(&given);
    const Restored to(givenTo_, std::move(around));
    const Restored inText(constantsStand_, Constants::InText);
    const Restored numbers(needsRowNumbers_, false);
    const Restored brackets(withinBrackets_, false);
    beside.given = &given;
    readsOtherRows_ = true;
    Scope own;
    own.outer = &beside;
    return this->source(source, own);
}

std::vector<sql::CommonTable> Binder::commonTablesAgain(std::size_t count, int line) {
    std::vector<sql::CommonTable> with;
    with.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const tsql::CommonTable* table = commonNames_[i].syntax;
        if (table == nullptr) throw tsql::unsupported("the written view within APPLY", line);
        with.push_back(commonTable(*table, nullptr));
    }
    return with;
}

// The rows of sources that are given values, as the function gives them.
BoundSource Binder::givenRows(BoundSource source, std::vector<sql::CommonTable> with,
                              const GivenValues& given, int line) {
    if (given.values.size() > kRowFunctionArguments) {
        throw tsql::unsupported("APPLY that reads so many columns", line);
    }
    const std::string name = source.sources.front().name;
    sql::Select select;
    std::size_t place = 0;
    for (Source& each : source.sources) {
        each.table = nullptr;
        each.rowNumber = {};
        for (SourceColumn& column : each.columns) {
            BoundExpression& value = column.value;
            select.items.push_back({value.tree});
            value = value.readBy(numberedColumn(name, place++));
            value.plainColumn = false;
        }
    }
    if (place > kRowFunctionColumns) {
        throw tsql::unsupported("APPLY of so many columns", line);
    }
    select.from = std::move(source.from);
    sql::Call rows{fn::kRowsOfQuery,
                   {sql::QueryText{sql::Query{std::move(select), std::move(with)}}}};
    rows.arguments.insert(rows.arguments.end(), given.values.begin(), given.values.end());
    source.from = sql::from(sql::RowsOf{std::move(rows), name});
    return source;
}

}  // namespace kap::engine
