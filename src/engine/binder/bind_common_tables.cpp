#include <algorithm>
#include <iterator>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/row_numbers.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;

std::vector<sql::CommonTable> Binder::commonTables(const std::vector<tsql::CommonTable>& tables,
                                                   Scope* outer, const tsql::ObjectName* target) {
    std::vector<sql::CommonTable> with;
    with.reserve(tables.size());
    for (const tsql::CommonTable& table : tables) {
        const bool repeated =
            std::any_of(tables.begin(), tables.end(), [&](const tsql::CommonTable& other) {
                return &other != &table && sameName(other.name, table.name);
            });
        if (repeated) {
            throw ServerError(tsql::Message::DuplicateCommonTable, {table.name}, table.query->line);
        }
        const bool isTarget =
            target != nullptr && target->parts.size() == 1 && sameName(target->last(), table.name);
        with.push_back(isTarget ? targetTable(table, outer) : commonTable(table, outer));
    }
    if (target != nullptr && commonTarget_.table == nullptr && this->table(*target) == nullptr) {
        const View* view = this->view(*target);
        if (view != nullptr)
            std::ranges::move(targetView(*view, *target), std::back_inserter(with));
    }
    return with;
}

std::vector<OutputColumn> Binder::commonColumns(const tsql::CommonTable& table,
                                                std::vector<OutputColumn> columns) {
    if (!table.columns.empty() && table.columns.size() != columns.size()) {
        const bool more = table.columns.size() < columns.size();
        throw ServerError(
            more ? tsql::Message::MoreColumnsThanNames : tsql::Message::FewerColumnsThanNames,
            {table.name}, table.query->line);
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!table.columns.empty()) columns[i].name = table.columns[i];
        BoundExpression& value = columns[i].value;
        value = BoundExpression::expression(numberedColumn(i), value.type, true);
    }
    checkOwnNames(columns, table.name, table.query->line);
    return columns;
}

namespace {

sql::CommonTable numberedTable(const std::string& name, std::size_t columns, sql::QueryTree query) {
    return {name, numberedNames(columns), std::move(query)};
}

// A recursion must not change the types that it began with; texts would be cut unseen.
void checkRecursiveTypes(const tsql::CommonTable& table, const std::vector<OutputColumn>& anchor,
                         const std::vector<OutputColumn>& recursive) {
    const std::size_t count = std::min(anchor.size(), recursive.size());
    for (std::size_t i = 0; i < count; ++i) {
        const BoundExpression& next = recursive[i].value;
        const tsql::TypeSpec& from = anchor[i].value.type;
        const bool sameText = !tsql::isText(from.type) || from.length == next.type.length;
        if (next.nullLiteral || (from.type == next.type.type && sameText)) continue;
        const std::string& name = i < table.columns.size() ? table.columns[i] : anchor[i].name;
        throw ServerError(tsql::Message::RecursiveTypesDiffer, {name, table.name},
                          table.query->line);
    }
}

// What a recursion may do: SQLite would refuse it in words of its own.
void checkRecursion(const std::string& table, const tsql::QueryTerm& term, bool grouped,
                    int reads) {
    const auto refuse = [&](tsql::Message message) {
        throw ServerError(message, {table}, term.line);
    };
    const tsql::QueryTerm* inner = &term;
    while (const auto* bracketed = std::get_if<tsql::QueryPtr>(&inner->node))
        inner = &(*bracketed)->terms.front();
    const auto& select = std::get<tsql::Select>(inner->node);
    if (term.joinedBy != tsql::SetOperator::UnionAll) {
        throw ServerError(tsql::Message::RecursiveWithoutUnionAll, {table}, term.line);
    }
    if (select.distinct) refuse(tsql::Message::DistinctInRecursion);
    if (select.top) refuse(tsql::Message::TopInRecursion);
    if (grouped) refuse(tsql::Message::GroupingInRecursion);
    if (reads < 2) return;
    throw ServerError(tsql::Message::SeveralRecursiveReferences, {table}, term.line);
}

}  // namespace

// A table that reads itself has the columns of its first term, so that is bound first, alone.
sql::CommonTable Binder::commonTable(const tsql::CommonTable& table, Scope* outer) {
    const int aside = std::exchange(deepestRead_, 0);
    sql::CommonTable defined = boundCommonTable(table, outer);
    commonNames_.back().depth = checkedDepth(deepestRead_ + 1, table.query->line);
    commonNames_.back().syntax = &table;
    deepestRead_ = aside;
    return defined;
}

sql::CommonTable Binder::boundCommonTable(const tsql::CommonTable& table, Scope* outer) {
    const std::size_t mark = commonNames_.size();
    const bool several = table.query->terms.size() > 1 &&
                         std::holds_alternative<tsql::Select>(table.query->terms.front().node);
    if (several) {
        BoundSelect anchor = term(table.query->terms.front(), {}, outer);
        commonNames_.push_back(
            {table.name, commonColumns(table, std::move(anchor.items)), std::string()});
    }
    BoundQuery bound = query(*table.query, outer, QueryPlace::Nested);
    if (several && !commonNames_[mark].readAs.empty()) {
        CommonName own = std::move(commonNames_[mark]);
        commonNames_.resize(mark);
        return recursiveTable(table, std::move(own), outer);
    }
    commonNames_.resize(mark);
    const std::size_t count = bound.columns.size();
    commonNames_.push_back({table.name, commonColumns(table, std::move(bound.columns)), ""});
    return numberedTable(table.name, count, std::move(bound.tree));
}

// Each row of a table that reads itself carries its level in one more column, so that a recursion
// without end is found out.
sql::CommonTable Binder::recursiveTable(const tsql::CommonTable& table, CommonName own,
                                        Scope* outer) {
    const std::size_t mark = commonNames_.size();
    own.recursiveAt = queryDepth_;
    commonNames_.push_back(std::move(own));
    const std::size_t level = commonNames_[mark].columns.size();
    std::vector<BoundSelect> terms;
    bool recursive = false;
    for (const tsql::QueryTerm& each : table.query->terms) {
        commonNames_[mark].readAs.clear();
        commonNames_[mark].reads = 0;
        const int windows = windowsBound_;
        terms.push_back(term(each, {}, outer));
        const std::string& readAs = commonNames_[mark].readAs;
        if (!readAs.empty()) {
            checkRecursion(table.name, each, terms.back().grouped, commonNames_[mark].reads);
            if (windowsBound_ != windows) {
                throw tsql::unsupported(
                    "a windowed function in the recursive part of a common table expression",
                    each.line);
            }
        } else if (recursive) {
            throw tsql::unsupported("a term behind the recursive ones of a common table expression",
                                    each.line);
        }
        recursive = recursive || !readAs.empty();
        sql::Expression deeper =
            readAs.empty() ? sql::number(0)
                           : sql::call(fn::kDeeper, numberedColumn(readAs, level), maxRecursion_);
        if (!readAs.empty()) checkRecursiveTypes(table, terms.front().items, terms.back().items);
        terms.back().items.push_back(
            {"", BoundExpression::expression(std::move(deeper), {tsql::SqlType::BigInt}, false)});
    }
    std::vector<OutputColumn> columns =
        unify(terms, tsql::SetOperator::UnionAll, table.query->line, *this);
    const std::size_t count = columns.size();
    columns.pop_back();
    commonNames_[mark] = {table.name, commonColumns(table, std::move(columns)), ""};
    return numberedTable(table.name, count, sql::Query{unionOf(terms, *table.query)});
}

// UPDATE and DELETE of a common table write the one table that it reads.
sql::CommonTable Binder::targetTable(const tsql::CommonTable& table, Scope* outer) {
    const auto* select = table.query->terms.size() == 1
                             ? std::get_if<tsql::Select>(&table.query->terms.front().node)
                             : nullptr;
    const bool plain = select != nullptr && !select->distinct && select->groupBy.empty() &&
                       !select->having && select->from.size() == 1;
    const auto* named =
        plain ? std::get_if<tsql::NamedTable>(&select->from.front()->node) : nullptr;
    const Table* base = named == nullptr ? nullptr : this->table(named->name);
    if (base == nullptr) {
        throw ServerError(tsql::Message::DerivedTableNotUpdatable, {table.name}, table.query->line);
    }
    BoundSelect bound = term(table.query->terms.front(), table.query->orderBy, outer);
    orderRows(table.query->orderBy, bound);
    std::vector<OutputColumn> columns = bound.items;
    const std::string& source = named->alias.empty() ? base->name : named->alias;
    bound.items.push_back(
        {"", BoundExpression::expression(sql::Column{source, rowNumberName(*base), true},
                                         {tsql::SqlType::BigInt}, false)});
    commonTarget_ = {base, columns.size(), {}, "", {}};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i < table.columns.size()) columns[i].name = table.columns[i];
        commonTarget_.columns.emplace_back(columns[i].name, columns[i].value.column);
        columns[i].value =
            BoundExpression::expression(numberedColumn(i), columns[i].value.type, true);
    }
    commonNames_.push_back({table.name, std::move(columns), ""});
    return numberedTable(table.name, bound.items.size(), selectOf(bound));
}

std::optional<BoundSource> Binder::targetSource(const tsql::ObjectName& target,
                                                const std::string& shown) const {
    if (commonTarget_.table == nullptr) return std::nullopt;
    const std::string name = commonNameFor(target);
    BoundSource source =
        commonSource(*findCommon({{name}, target.line}), shown.empty() ? name : shown);
    if (shown.empty()) source.sources.front().object = commonTarget_.view;
    return source;
}

// A view that is written through stands under its stored name.
tsql::ObjectName Binder::commonNameOf(const tsql::ObjectName& name) const {
    const bool written = std::ranges::any_of(commonNames_, &CommonName::isView);
    const View* own = written && findCommon(name) == nullptr ? view(name) : nullptr;
    if (own == nullptr) return name;
    const CommonName* common = findCommon({{own->name}, name.line});
    return common != nullptr && common->isView ? tsql::ObjectName{{own->name}, name.line} : name;
}

std::string Binder::commonNameFor(const tsql::ObjectName& target) const {
    return commonNameOf(target).last();
}

// The innermost one of that name.
const Binder::CommonName* Binder::findCommon(const tsql::ObjectName& name) const {
    if (name.parts.size() != 1) return nullptr;
    const auto found =
        std::find_if(commonNames_.rbegin(), commonNames_.rend(),
                     [&](const CommonName& common) { return sameName(common.name, name.last()); });
    return found == commonNames_.rend() ? nullptr : &*found;
}

Binder::CommonName* Binder::findCommon(const tsql::ObjectName& name) {
    return const_cast<CommonName*>(std::as_const(*this).findCommon(name));
}

}  // namespace kap::engine
