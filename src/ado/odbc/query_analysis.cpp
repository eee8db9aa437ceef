#include "ado/odbc/query_analysis.hpp"

#include <algorithm>
#include <array>
#include <utility>
#include <variant>

#include "tsql/lexer.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::odbc {
namespace {

// What a text begins with that is worth reading; a long script of writes is not.
bool beginsAsQuery(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n(;");
    if (start == std::string_view::npos) {
        return false;
    }
    const std::string_view word = text.substr(start, 6);
    return tsql::equalsIgnoringCase(word, "select") ||
           tsql::equalsIgnoringCase(word.substr(0, 4), "with") || word.starts_with("--") ||
           word.starts_with("/*");
}

bool holdsWord(std::string_view lower, std::string_view word) {
    return lower.find(word) != std::string_view::npos;
}

bool mayChangeTables(std::string_view text) {
    const std::string lower = tsql::asciiLower(text);
    constexpr std::array<std::string_view, 6> kWords = {"create", "alter", "drop",
                                                        "rename", "into",  "exec"};
    return std::ranges::any_of(kWords, [&](auto word) { return holdsWord(lower, word); });
}

std::string schemaOf(const tsql::ObjectName& name) {
    return name.parts.size() > 1 ? name.parts[name.parts.size() - 2] : std::string();
}

// Whether any function over many rows stands in an item.
bool isAggregate(const tsql::Expression& expression) {
    const auto* call = std::get_if<tsql::FunctionCall>(&expression.node);
    if (call == nullptr || call->over) {
        return false;
    }
    constexpr std::array<std::string_view, 10> kNames = {
        "count", "sum", "avg", "min", "max", "count_big", "stdev", "stdevp", "var", "varp"};
    return std::ranges::any_of(kNames, [&](std::string_view name) {
        return tsql::equalsIgnoringCase(call->name.last(), name);
    });
}

class Reader {
public:
    explicit Reader(QueryAnalysis& found) : found_(found) {}

    void read(const tsql::Query& query) {
        if (query.terms.size() != 1 || !query.commonTables.empty()) {
            found_.isCombined = query.terms.size() != 1;
            return;
        }
        if (const auto* inner = std::get_if<tsql::QueryPtr>(&query.terms.front().node)) {
            read(**inner);
            return;
        }
        readSelect(std::get<tsql::Select>(query.terms.front().node));
    }

private:
    void readSelect(const tsql::Select& select) {
        found_.isCombined = select.distinct || !select.groupBy.empty() || select.having != nullptr;
        found_.isReadable = true;
        for (const tsql::TableSourcePtr& source : select.from) {
            readSource(*source);
        }
        for (const tsql::SelectItem& item : select.items) {
            readItem(item);
        }
    }

    void readSource(const tsql::TableSource& source) {
        if (const auto* join = std::get_if<tsql::Join>(&source.node)) {
            readSource(*join->left);
            readSource(*join->right);
        } else if (const auto* table = std::get_if<tsql::NamedTable>(&source.node)) {
            const std::string& name = table->name.last();
            found_.tables.push_back(
                {schemaOf(table->name), name, table->alias.empty() ? name : table->alias});
        } else {
            found_.isReadable = false;  // columns of a derived table
        }
    }

    void readItem(const tsql::SelectItem& item) {
        using Kind = QueryItem::Kind;
        if (const auto* star = std::get_if<tsql::StarItem>(&item.node)) {
            const auto& parts = star->qualifier.parts;
            found_.items.push_back({Kind::Star, parts.empty() ? "" : parts.back(), {}});
            return;
        }
        const auto* expression = std::get_if<tsql::ExpressionItem>(&item.node);
        if (expression == nullptr) {
            found_.isReadable = false;
            return;
        }
        const auto* column = std::get_if<tsql::ColumnReference>(&expression->value->node);
        if (column == nullptr) {
            found_.isCombined = found_.isCombined || isAggregate(*expression->value);
            found_.items.push_back({});
            return;
        }
        found_.items.push_back({Kind::Column, schemaOf(column->name), column->name.last()});
    }

    QueryAnalysis& found_;
};

bool writesTable(const tsql::Query& query) {
    return std::ranges::any_of(query.terms, [](const tsql::QueryTerm& term) {
        const auto* select = std::get_if<tsql::Select>(&term.node);
        return select != nullptr && select->into.has_value();
    });
}

}  // namespace

QueryAnalysis analyse(std::string_view text) {
    QueryAnalysis found;
    if (!beginsAsQuery(text)) {
        found.changesTables = mayChangeTables(text);
        return found;
    }
    try {
        const tsql::Script script = tsql::parseScript(text);
        const auto* select =
            script.size() == 1 ? std::get_if<tsql::SelectStatement>(&script.front().node) : nullptr;
        if (select == nullptr || writesTable(*select->query)) {
            found.changesTables = mayChangeTables(text);
            return found;
        }
        found.isOneQuery = true;
        Reader(found).read(*select->query);
    } catch (const tsql::ServerError&) {
        // Not the dialect, but perhaps the server's: then only the driver can tell.
        found = {};
        found.changesTables = mayChangeTables(text);
    }
    return found;
}

}  // namespace kap::ado::odbc
