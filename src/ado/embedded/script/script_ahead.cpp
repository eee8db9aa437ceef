#include <algorithm>
#include <utility>
#include <vector>

#include "ado/embedded/script/script_runner.hpp"
#include "ado/embedded/translate/translator.hpp"

// What is looked at before a script begins.
namespace kap::ado::embedded {
namespace {

bool definesTables(const Instruction& instruction) {
    if (instruction.statement == nullptr) return false;
    const tsql::Statement::Node& node = instruction.statement->node;
    if (const auto* query = std::get_if<tsql::SelectStatement>(&node)) {
        const auto* first = std::get_if<tsql::Select>(&query->query->terms.front().node);
        return first != nullptr && first->into;
    }
    return std::holds_alternative<tsql::CreateTableStatement>(node) ||
           std::holds_alternative<tsql::AlterTableStatement>(node) ||
           std::holds_alternative<tsql::DropStatement>(node) ||
           std::holds_alternative<tsql::CreateTypeStatement>(node);
}

// Errors that belong to the run: a table that may be made by a procedure that is called before, and
// constants that cannot be computed.
bool showsLater(int serverNumber) {
    static constexpr int kLater[] = {208, 220,  232,  295,  517,  544,
                                     545, 1087, 8101, 8115, 8134, 8152};
    return std::ranges::find(kLater, serverNumber) != std::end(kLater) ||
           reachOf(serverNumber) == ErrorReach::Transaction;
}

// Whether what it is made of is kept for its run.
bool isData(const tsql::Statement& statement) {
    return isTranslated(statement) &&
           (std::holds_alternative<tsql::SelectStatement>(statement.node) ||
            std::holds_alternative<tsql::InsertStatement>(statement.node) ||
            std::holds_alternative<tsql::UpdateStatement>(statement.node) ||
            std::holds_alternative<tsql::DeleteStatement>(statement.node) ||
            std::holds_alternative<tsql::MergeStatement>(statement.node));
}

// The values that a statement without SQL of its own computes, as far as they may be subqueries.
std::vector<const tsql::Expression*> valuesIn(const tsql::Statement& statement) {
    std::vector<const tsql::Expression*> values;
    const auto add = [&](const tsql::ExpressionPtr& value) {
        if (value != nullptr) values.push_back(value.get());
    };
    if (const auto* assigned = std::get_if<tsql::AssignStatement>(&statement.node)) {
        add(assigned->value);
    } else if (const auto* returned = std::get_if<tsql::ReturnStatement>(&statement.node)) {
        add(returned->value);
    } else if (const auto* declared = std::get_if<tsql::DeclareStatement>(&statement.node)) {
        for (const tsql::DeclaredVariable& variable : declared->variables)
            add(variable.initial);
    }
    return values;
}

// Comparisons of variables and numbers, which most conditions are, name none.
bool mayNameTables(const tsql::Expression& expression) {
    constexpr int kComparison = 2;
    return expression.depth > kComparison ||
           std::holds_alternative<tsql::ScalarSubquery>(expression.node) ||
           std::holds_alternative<tsql::ExistsPredicate>(expression.node) ||
           std::holds_alternative<tsql::InPredicate>(expression.node);
}

}  // namespace

// What is wrong with a statement on tables that are there shows before anything is run. A script
// that makes or changes tables is taken as it comes.
void ScriptRunner::checkAhead(Program& program) {
    std::vector<Instruction>& code = program.code();
    const bool checked = program.checkedAt == catalogue_.generation();
    if (checked || code.size() < 2 || std::ranges::any_of(code, definesTables)) {
        return;
    }
    const Transactions::ReadScope scope(transactions_);
    for (Instruction& instruction : code) {
        if (!instruction.parts.empty()) continue;
        try {
            checkAhead(instruction, program.names());
        } catch (const tsql::ServerError& error) {
            if (!showsLater(error.number())) throw error.at(instruction.line);
        }
    }
    program.checkedAt = catalogue_.generation();
}

void ScriptRunner::checkAhead(Instruction& instruction, const Names& names) {
    const tsql::Statement* statement = instruction.statement;
    if (statement != nullptr && isData(*statement)) {
        Prepared prepared;
        statements_.translate(prepared, *statement, names);
        instruction.parts.push_back(std::move(prepared));
        return;
    }
    if (instruction.condition != nullptr && mayNameTables(*instruction.condition)) {
        (void)translateCondition(*instruction.condition, names);
    }
    if (statement == nullptr) return;
    if (const auto* cursor = std::get_if<tsql::DeclareCursorStatement>(&statement->node)) {
        (void)translateCursor(*std::get<tsql::SelectStatement>(cursor->query->node).query, names);
    }
    for (const tsql::Expression* value : valuesIn(*statement)) {
        if (mayNameTables(*value)) (void)translateValue(*value, names);
    }
}

}  // namespace kap::ado::embedded
