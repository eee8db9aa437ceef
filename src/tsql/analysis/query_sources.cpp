#include "tsql/analysis/query_sources.hpp"

#include <algorithm>
#include <array>
#include <variant>

#include "base/ascii.hpp"
#include "tsql/parser.hpp"

namespace kap::tsql {
namespace {

// The part of a name that stands so many places before its last one; empty: there is none.
std::string partBefore(const ObjectName& name, std::size_t places) {
    return name.parts.size() > places ? name.parts[name.parts.size() - 1 - places] : std::string();
}

// Whether any function over many rows stands in an item.
bool isAggregate(const Expression& expression) {
    const auto* call = std::get_if<FunctionCall>(&expression.node);
    if (call == nullptr || call->over) {
        return false;
    }
    constexpr std::array<std::string_view, 10> kNames = {
        "count", "sum", "avg", "min", "max", "count_big", "stdev", "stdevp", "var", "varp"};
    return std::ranges::any_of(
        kNames, [&](std::string_view name) { return equalsIgnoringCase(call->name.last(), name); });
}

class SourceReader {
public:
    explicit SourceReader(QuerySources& found) : found_(found) {}

    void read(const Query& query) {
        if (query.terms.size() != 1 || !query.commonTables.empty() || query.asText) {
            found_.isCombined = query.terms.size() != 1 || query.asText;
            return;
        }
        if (const auto* inner = std::get_if<QueryPtr>(&query.terms.front().node)) {
            read(**inner);
            return;
        }
        readSelect(std::get<Select>(query.terms.front().node));
    }

private:
    void readSelect(const Select& select) {
        found_.isCombined = select.distinct || !select.groupBy.empty() || select.having != nullptr;
        found_.isReadable = true;
        for (const TableSourcePtr& source : select.from) {
            readSource(*source);
        }
        for (const SelectItem& item : select.items) {
            readItem(item);
        }
    }

    void readSource(const TableSource& source) {
        if (const auto* join = std::get_if<Join>(&source.node)) {
            readSource(*join->left);
            readSource(*join->right);
        } else if (const auto* table = std::get_if<NamedTable>(&source.node)) {
            const std::string& name = table->name.last();
            found_.tables.push_back({table->name.text(), partBefore(table->name, 2),
                                     partBefore(table->name, 1), name,
                                     table->alias.empty() ? name : table->alias});
            // A table of another server is nothing that this one knows.
            found_.isReadable = found_.isReadable && table->name.parts.size() <= 3;
        } else {
            found_.isReadable = false;  // columns of a derived table
        }
    }

    void readItem(const SelectItem& item) {
        using Kind = QueryItem::Kind;
        if (const auto* star = std::get_if<StarItem>(&item.node)) {
            const auto& parts = star->qualifier.parts;
            found_.items.push_back({Kind::Star, parts.empty() ? "" : parts.back(), {}});
            return;
        }
        const auto* expression = std::get_if<ExpressionItem>(&item.node);
        if (expression == nullptr) {
            found_.isReadable = false;
            return;
        }
        const auto* column = std::get_if<ColumnReference>(&expression->value->node);
        if (column == nullptr) {
            found_.isCombined = found_.isCombined || isAggregate(*expression->value);
            found_.items.push_back({});
            return;
        }
        found_.items.push_back({Kind::Column, partBefore(column->name, 1), column->name.last()});
    }

    QuerySources& found_;
};

bool writesTable(const Query& query) {
    return std::ranges::any_of(query.terms, [](const QueryTerm& term) {
        const auto* select = std::get_if<Select>(&term.node);
        return select != nullptr && select->into.has_value();
    });
}

}  // namespace

QuerySources sourcesOf(std::string_view script) {
    QuerySources found;
    const Script read = parseScript(script);
    const auto* select =
        read.size() == 1 ? std::get_if<SelectStatement>(&read.front().node) : nullptr;
    if (select != nullptr && !writesTable(*select->query)) {
        found.isOneQuery = true;
        SourceReader(found).read(*select->query);
    }
    return found;
}

}  // namespace kap::tsql
