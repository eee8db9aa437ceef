#include "engine/script/function_rules.hpp"

#include <algorithm>
#include <string>
#include <variant>

#include "engine/catalog/tables.hpp"
#include "engine/values/value.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;
using tsql::Statement;

bool isTableVariable(const tsql::ObjectName& name) {
    return name.last().starts_with('@');
}

bool namesTableVariable(const tsql::TableSource& source, const std::string& alias) {
    if (const auto* named = std::get_if<tsql::NamedTable>(&source.node)) {
        return isTableVariable(named->name) && sameName(named->alias, alias);
    }
    const auto* join = std::get_if<tsql::Join>(&source.node);
    return join != nullptr &&
           (namesTableVariable(*join->left, alias) || namesTableVariable(*join->right, alias));
}

// The written table by its name, or by its alias among the sources.
bool writesTableVariable(const tsql::ObjectName& target,
                         const std::vector<tsql::TableSourcePtr>& from) {
    return isTableVariable(target) ||
           std::ranges::any_of(from, [&](const tsql::TableSourcePtr& source) {
               return namesTableVariable(*source, target.last());
           });
}

bool onlyAssigns(const tsql::SelectStatement& query) {
    const auto* first = std::get_if<tsql::Select>(&query.query->terms.front().node);
    return first != nullptr && !first->into && !first->items.empty() &&
           std::holds_alternative<tsql::AssignmentItem>(first->items.front().node);
}

// What a statement without statements of its own does to others; empty: nothing.
struct SideEffect {
    std::string operator()(const tsql::InsertStatement& insert) const {
        if (insert.execute != nullptr) return "INSERT EXEC";
        return isTableVariable(insert.table) ? "" : "INSERT";
    }
    std::string operator()(const tsql::UpdateStatement& update) const {
        return writesTableVariable(update.table, update.from) ? "" : "UPDATE";
    }
    std::string operator()(const tsql::DeleteStatement& deleted) const {
        return writesTableVariable(deleted.table, deleted.from) ? "" : "DELETE";
    }
    std::string operator()(const tsql::MergeStatement& merge) const {
        return isTableVariable(merge.table) ? "" : "MERGE";
    }
    std::string operator()(const tsql::TransactionStatement& transaction) const {
        switch (transaction.action) {
            case tsql::TransactionAction::Begin:
                return "BEGIN TRANSACTION";
            case tsql::TransactionAction::Commit:
                return "COMMIT TRANSACTION";
            case tsql::TransactionAction::Rollback:
                return "ROLLBACK TRANSACTION";
            case tsql::TransactionAction::Save:
                break;
        }
        return "SAVE TRANSACTION";
    }
    std::string operator()(const tsql::ExecuteStatement& call) const {
        return call.text != nullptr ? "EXECUTE STRING" : "";
    }
    std::string operator()(const tsql::TruncateStatement& /*node*/) const {
        return "TRUNCATE TABLE";
    }
    std::string operator()(const tsql::CreateTableStatement& /*node*/) const {
        return "CREATE TABLE";
    }
    std::string operator()(const tsql::AlterTableStatement& /*node*/) const {
        return "ALTER TABLE";
    }
    std::string operator()(const tsql::CreateIndexStatement& /*node*/) const {
        return "CREATE INDEX";
    }
    std::string operator()(const tsql::DropStatement& /*node*/) const { return "DROP OBJECT"; }
    std::string operator()(const tsql::PrintStatement& /*node*/) const { return "PRINT"; }
    std::string operator()(const tsql::RaiserrorStatement& /*node*/) const { return "RAISERROR"; }
    std::string operator()(const tsql::ThrowStatement& /*node*/) const { return "THROW"; }
    std::string operator()(const tsql::TryStatement& /*node*/) const { return "BEGIN TRY"; }
    std::string operator()(const tsql::WaitStatement& /*node*/) const { return "WAITFOR"; }
    std::string operator()(const tsql::SetOptionStatement& /*node*/) const {
        return "SET OPTION ON";
    }
    template <typename Other>
    std::string operator()(const Other& /*node*/) const {
        return "";
    }
};

void checkEffects(const Statement& statement) {
    tsql::requireStack(statement.line);
    const std::string effect = std::visit(SideEffect(), statement.node);
    if (!effect.empty()) {
        throw ServerError(tsql::Message::SideEffectWithinFunction, {effect}, statement.line);
    }
    if (const auto* query = std::get_if<tsql::SelectStatement>(&statement.node)) {
        if (onlyAssigns(*query)) return;
        throw ServerError(tsql::Message::SelectWithinFunction, {}, statement.line);
    }
    if (const auto* branch = std::get_if<tsql::IfStatement>(&statement.node)) {
        checkEffects(*branch->then);
        if (branch->otherwise != nullptr) checkEffects(*branch->otherwise);
    } else if (const auto* loop = std::get_if<tsql::WhileStatement>(&statement.node)) {
        checkEffects(*loop->body);
    } else if (const auto* block = std::get_if<tsql::BlockStatement>(&statement.node)) {
        requireNoSideEffects(block->statements);
    }
}

}  // namespace

void requireNoSideEffects(const tsql::Script& body) {
    for (const Statement& statement : body) {
        checkEffects(statement);
    }
}

}  // namespace kap::engine
