#include <algorithm>
#include <utility>

#include "engine/binder/binder.hpp"
#include "engine/values/rows_as_text.hpp"
#include "tsql/server_error.hpp"

// FOR XML and FOR JSON: an aggregate over the rows of the query makes its text.
namespace kap::engine {

using tsql::ServerError;

namespace {

constexpr const char* kXmlColumn = "XML_F52E2B61-18A1-11d1-B105-00805F49916B";
constexpr const char* kJsonColumn = "JSON_F52E2B61-18A1-11d1-B105-00805F49916B";

// SQLite takes 127 arguments, of which one is the format.
constexpr std::size_t kMostTextColumns = 126;

// The sources of FROM as they were written, in the order in which they are bound.
void addSourceNames(const tsql::TableSource& source, std::vector<std::string>& names) {
    if (const auto* join = std::get_if<tsql::Join>(&source.node)) {
        addSourceNames(*join->left, names);
        addSourceNames(*join->right, names);
        return;
    }
    std::string name;
    if (const auto* table = std::get_if<tsql::NamedTable>(&source.node)) {
        name = table->alias.empty() ? table->name.text() : table->alias;
    } else if (const auto* function = std::get_if<tsql::FunctionTable>(&source.node)) {
        name = function->alias.empty() ? function->name.text() : function->alias;
    } else if (const auto* derived = std::get_if<tsql::DerivedTable>(&source.node)) {
        name = derived->alias;
    } else if (const auto* pivot = std::get_if<tsql::PivotTable>(&source.node)) {
        name = pivot->alias;
    } else if (const auto* unpivot = std::get_if<tsql::UnpivotTable>(&source.node)) {
        name = unpivot->alias;
    }
    names.push_back(std::move(name));
}

bool isNotCompared(const BoundExpression& value) {
    return tsql::isLarge(value.type.type) || value.markup == Markup::Xml;
}

// The columns of a level are told apart by the key of their table, where all of it is there.
void compareByKey(std::vector<FormattedColumn>& columns, const BoundQuery& bound,
                  std::size_t source) {
    const auto isOf = [&](std::size_t column) {
        return column < bound.origins.size() && bound.origins[column].source == source &&
               bound.origins[column].table != nullptr;
    };
    std::vector<const Column*> shown(columns.size(), nullptr);
    const Table* table = nullptr;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!isOf(i)) continue;
        table = bound.origins[i].table;
        shown[i] = bound.columns[i].value.column;
    }
    if (table == nullptr) return;
    const auto isKey = [](const Column& column) { return column.keyOrdinal > 0; };
    const auto isShown = [&](const Column& column) {
        return std::ranges::find(shown, &column) != shown.end();
    };
    const bool whole = std::ranges::any_of(table->columns, isKey) &&
                       std::ranges::all_of(table->columns, [&](const Column& part) {
                           return !isKey(part) || isShown(part);
                       });
    for (std::size_t i = 0; whole && i < columns.size(); ++i) {
        if (shown[i] != nullptr && !isKey(*shown[i]))
            columns[i].comparison = RowComparison::Ignored;
    }
}

}  // namespace

// Which source each column is of: a column that none has belongs to the innermost one so far.
std::vector<BoundQuery::Origin> Binder::originsOf(const std::vector<OutputColumn>& columns,
                                                  const Scope& scope) {
    std::vector<BoundQuery::Origin> result;
    result.reserve(columns.size());
    for (const OutputColumn& column : columns) {
        const auto has = [&](const Source& source) {
            return std::ranges::any_of(source.columns, [&](const SourceColumn& each) {
                return each.value.tree == column.value.tree;
            });
        };
        const auto found = std::ranges::find_if(scope.sources, has);
        result.push_back({static_cast<std::size_t>(found - scope.sources.begin()),
                          found == scope.sources.end() ? nullptr : found->table});
    }
    return result;
}

// AUTO: a level for each source, in the order in which the list names them first.
void Binder::levelsOf(const tsql::Query& query, const BoundQuery& bound, RowFormat& format) {
    const auto* select = std::get_if<tsql::Select>(&query.terms.front().node);
    const int line = query.asText->line;
    if (select == nullptr || query.terms.size() > 1) {
        throw tsql::unsupported("AUTO of several queries", line);
    }
    std::vector<std::string> names;
    for (const tsql::TableSourcePtr& source : select->from)
        addSourceNames(*source, names);
    if (names.empty()) {
        throw ServerError(format.isJson() ? tsql::Message::JsonAutoWithoutTable
                                          : tsql::Message::XmlAutoWithoutTable,
                          {}, line);
    }
    std::vector<std::size_t> levels;
    for (std::size_t i = 0; i < format.columns.size(); ++i) {
        const std::size_t source =
            i < bound.origins.size() ? bound.origins[i].source : names.size();
        FormattedColumn& column = format.columns[i];
        if (isNotCompared(bound.columns[i].value)) column.comparison = RowComparison::Differs;
        if (source >= names.size()) {
            column.level = levels.empty() ? 0 : levels.size() - 1;
            continue;
        }
        auto found = std::ranges::find(levels, source);
        if (found == levels.end()) found = levels.insert(levels.end(), source);
        column.level = static_cast<std::size_t>(found - levels.begin());
    }
    if (levels.empty()) levels.push_back(0);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        format.levels.push_back(names[levels[i]]);
        compareByKey(format.columns, bound, levels[i]);
    }
}

// The query with its rows as one text; without rows it has none where it stands alone, and null
// within another.
BoundQuery Binder::rowsAsText(const tsql::Query& query, BoundQuery bound, QueryPlace place) {
    const tsql::RowsAsText& options = *query.asText;
    if (place != QueryPlace::Whole && query.terms.size() > 1) {
        throw ServerError(tsql::Message::RowsAsTextOfSet, {}, options.line);
    }
    if (bound.columns.size() > kMostTextColumns) {
        throw tsql::unsupported("FOR XML or FOR JSON of more than 126 columns", options.line);
    }
    RowFormat format;
    format.options = options;
    sql::Call written{fn::kRowsAsText, {sql::Expression()}};
    for (std::size_t i = 0; i < bound.columns.size(); ++i) {
        const OutputColumn& column = bound.columns[i];
        written.arguments.push_back(numberedColumn(i));
        format.columns.push_back({column.name, column.value.type, column.value.markup});
    }
    if (options.mode == tsql::RowsAsText::Mode::Auto) levelsOf(query, bound, format);
    try {
        (void)rowsWriter(format);
    } catch (const ServerError& error) {
        throw error.at(options.line);
    }
    const bool whole = place == QueryPlace::Whole;
    BoundQuery result;
    written.arguments.front() = sql::text(packRowFormat(format));
    sql::Select select;
    select.items.push_back(numberedItem(std::move(written), 0));
    select.from = sql::from(sql::Derived{std::move(bound.tree)});
    if (whole) select.groups.push_back(sql::null());
    result.tree = {std::move(select)};
    BoundExpression text = BoundExpression::expression(
        numberedColumn(0), {tsql::SqlType::NVarChar, tsql::kMaxLength}, true);
    if (format.isJson()) {
        text.markup = options.withoutArray ? Markup::None : Markup::Json;
    } else if (options.typed) {
        text.markup = Markup::Xml;
    }
    const char* name = format.isJson() ? kJsonColumn : kXmlColumn;
    result.columns.push_back({whole && !options.typed ? name : "", std::move(text)});
    return result;
}

}  // namespace kap::engine
