#include "engine/script/bound_names.hpp"

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/tables.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

class BoundNames {
public:
    BoundNames(const char* kind, const tsql::ObjectName& module, int line)
        : kind_(kind), module_(module), line_(line) {}

    // `written` stands for what is before PIVOT: its star is not the module's.
    void check(const tsql::Query& query, bool written = true) {
        tsql::requireStack(line_);
        const std::size_t known = commonTables_.size();
        for (const tsql::CommonTable& table : query.commonTables) {
            commonTables_.push_back(table.name);
            check(*table.query);
        }
        for (const tsql::QueryTerm& term : query.terms) {
            if (const auto* inner = std::get_if<tsql::QueryPtr>(&term.node)) {
                check(**inner, written);
            } else {
                check(std::get<tsql::Select>(term.node), written);
            }
        }
        commonTables_.resize(known);
    }

private:
    void check(const tsql::Select& select, bool written) {
        for (const tsql::SelectItem& item : select.items) {
            if (written && std::holds_alternative<tsql::StarItem>(item.node)) {
                throw ServerError(tsql::Message::NotInBoundObject, {"*"}, item.line);
            }
        }
        for (const tsql::TableSourcePtr& source : select.from)
            check(*source);
    }

    void check(const tsql::TableSource& source) {
        if (const auto* join = std::get_if<tsql::Join>(&source.node)) {
            check(*join->left);
            check(*join->right);
        } else if (const auto* table = std::get_if<tsql::NamedTable>(&source.node)) {
            check(table->name);
        } else if (const auto* derived = std::get_if<tsql::DerivedTable>(&source.node)) {
            check(*derived->query);
        } else if (const auto* pivot = std::get_if<tsql::PivotTable>(&source.node)) {
            check(*pivot->rows, false);
        } else if (const auto* unpivot = std::get_if<tsql::UnpivotTable>(&source.node)) {
            check(*unpivot->rows, false);
        }
    }

    void check(const tsql::ObjectName& name) const {
        constexpr std::size_t kTwoParts = 2;
        const bool common = name.parts.size() == 1 &&
                            std::ranges::any_of(commonTables_, [&](const std::string& each) {
                                return sameName(each, name.last());
                            });
        if (common || name.parts.size() == kTwoParts) return;
        throw ServerError(tsql::Message::InvalidNameForBinding,
                          {kind_, module_.text(), name.text()}, line_);
    }

    const char* kind_;
    const tsql::ObjectName& module_;
    int line_;
    std::vector<std::string> commonTables_;
};

}  // namespace

void requireBoundNames(const tsql::Query& query, const char* kind, const tsql::ObjectName& module,
                       const std::string& text, int line) {
    const bool binds = std::ranges::any_of(
        tokensOf(text), [](const tsql::Token& token) { return isWord(token, "SCHEMABINDING"); });
    if (binds) BoundNames(kind, module, line).check(query);
}

}  // namespace kap::engine
