#pragma once

#include <concepts>
#include <cstddef>
#include <utility>
#include <variant>

#include "tsql/statements.hpp"

// Who does what with the statements of the dialect. A new statement has to be put into one of the
// groups, and then needs a case wherever its group is visited one by one.
namespace kap::engine {

template <typename Node, typename... Kinds>
concept OneOf = (std::same_as<Node, Kinds> || ...);

// Those that a plan is made of; of INSERT and DROP some are the script's own, see isTranslated().
template <typename Node>
concept PlannedStatement =
    OneOf<Node, tsql::SelectStatement, tsql::InsertStatement, tsql::UpdateStatement,
          tsql::DeleteStatement, tsql::MergeStatement, tsql::TruncateStatement,
          tsql::CreateTableStatement, tsql::CreateIndexStatement, tsql::DropStatement>;

// The flow of a script: a program has them as jumps.
template <typename Node>
concept FlowStatement =
    OneOf<Node, tsql::IfStatement, tsql::WhileStatement, tsql::BlockStatement, tsql::TryStatement,
          tsql::BreakStatement, tsql::ContinueStatement, tsql::GotoStatement, tsql::LabelStatement>;

// Those that a script runs by itself.
template <typename Node>
concept ScriptStatement =
    OneOf<Node, tsql::AlterTableStatement, tsql::CreateViewStatement, tsql::CreateModuleStatement,
          tsql::CreateSchemaStatement, tsql::AlterSchemaStatement, tsql::CreateTypeStatement,
          tsql::CreateRuleStatement, tsql::SequenceStatement, tsql::CreateSynonymStatement,
          tsql::DeclareStatement, tsql::AssignStatement, tsql::SetOptionStatement,
          tsql::ReturnStatement, tsql::PrintStatement, tsql::RaiserrorStatement,
          tsql::ThrowStatement, tsql::WaitStatement, tsql::TransactionStatement,
          tsql::ExecuteStatement, tsql::DeclareCursorStatement, tsql::AssignCursorStatement,
          tsql::CursorStatement, tsql::FetchStatement, tsql::DatabaseStatement,
          tsql::BackupStatement, tsql::CheckStatement, tsql::BulkInsertStatement,
          tsql::ShowOptionsStatement, tsql::CheckIdentityStatement, tsql::NoEffectStatement>;

namespace detail {

template <typename Node>
constexpr bool isInOneGroup() {
    return int{PlannedStatement<Node>} + int{FlowStatement<Node>} + int{ScriptStatement<Node>} == 1;
}

template <std::size_t... Place>
constexpr bool allInOneGroup(std::index_sequence<Place...> /*places*/) {
    return (isInOneGroup<std::variant_alternative_t<Place, tsql::Statement::Node>>() && ...);
}

}  // namespace detail

static_assert(
    detail::allInOneGroup(std::make_index_sequence<std::variant_size_v<tsql::Statement::Node>>()),
    "a statement of the dialect belongs to one group");

}  // namespace kap::engine
