#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "engine/catalog/object_names.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/statement_kinds.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"

// What is looked at before a script begins.
namespace kap::engine {
namespace {

// Those that make or change what later statements may name.
template <typename Node>
concept DefiningStatement =
    OneOf<Node, tsql::CreateTableStatement, tsql::AlterTableStatement, tsql::DropStatement,
          tsql::CreateSchemaStatement, tsql::AlterSchemaStatement, tsql::SequenceStatement,
          tsql::CreateSynonymStatement, tsql::CreateTypeStatement>;

// Those behind which the tables are what they were, and those that tell when they run: a script is
// not taken as it comes because it makes a view or calls a procedure.
template <typename Node>
concept OtherStatement = FlowStatement<Node> ||
    OneOf<Node, tsql::InsertStatement, tsql::UpdateStatement, tsql::DeleteStatement,
          tsql::MergeStatement, tsql::TruncateStatement, tsql::CreateIndexStatement,
          tsql::CreateViewStatement, tsql::CreateModuleStatement, tsql::CreateRuleStatement,
          tsql::DeclareStatement, tsql::AssignStatement, tsql::SetOptionStatement,
          tsql::ReturnStatement, tsql::PrintStatement, tsql::RaiserrorStatement,
          tsql::ThrowStatement, tsql::WaitStatement, tsql::TransactionStatement,
          tsql::ExecuteStatement, tsql::DeclareCursorStatement, tsql::AssignCursorStatement,
          tsql::CursorStatement, tsql::FetchStatement, tsql::DatabaseStatement,
          tsql::BackupStatement, tsql::CheckStatement, tsql::BulkInsertStatement,
          tsql::ShowOptionsStatement, tsql::CheckIdentityStatement, tsql::NoEffectStatement>;

// A statement that stands in neither list does not compile.
struct DefinesTables {
    bool operator()(const tsql::SelectStatement& statement) const {
        return tableMadeBy(statement) != nullptr;
    }
    template <DefiningStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return true;
    }
    template <OtherStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return false;
    }
};

bool definesTables(const Instruction& instruction) {
    return instruction.statement != nullptr &&
           std::visit(DefinesTables(), instruction.statement->node);
}

// Errors that belong to the run: a table that may be made by a procedure that is called before, and
// constants that cannot be computed.
bool showsLater(int serverNumber) {
    static constexpr int kLater[] = {208, 220,  232,  295,  517,  544,
                                     545, 1087, 8101, 8115, 8134, 8152};
    return std::ranges::find(kLater, serverNumber) != std::end(kLater) ||
           tsql::reachOf(serverNumber) == tsql::ErrorReach::Transaction;
}

// Errors that the making of a module tells of.
bool isAboutColumns(int serverNumber) {
    static constexpr int kColumnErrors[] = {109, 110, 120, 121,  205, 207,
                                            209, 213, 264, 4104, 8120};
    return std::ranges::find(kColumnErrors, serverNumber) != std::end(kColumnErrors);
}

// Makes or changes tables of the database, so that later statements may be about what is not there
// yet.
bool definesStoredTables(const Instruction& instruction) {
    if (!definesTables(instruction)) return false;
    const auto isStored = [](const tsql::ObjectName& name) {
        return !name.last().starts_with('#');
    };
    const tsql::Statement::Node& node = instruction.statement->node;
    if (const auto* made = std::get_if<tsql::CreateTableStatement>(&node)) {
        return isStored(made->table);
    }
    if (const auto* dropped = std::get_if<tsql::DropStatement>(&node)) {
        return std::ranges::any_of(dropped->names, isStored);
    }
    if (const auto* query = std::get_if<tsql::SelectStatement>(&node)) {
        return isStored(*tableMadeBy(*query));
    }
    return true;
}

std::vector<tsql::DeclaredVariable> declaredParameters(const tsql::CreateModuleStatement& node) {
    std::vector<tsql::DeclaredVariable> parameters;
    for (const tsql::ParameterDefinition& parameter : node.parameters) {
        if (parameter.table != nullptr) continue;
        tsql::DeclaredVariable& variable = parameters.emplace_back();
        variable.name = parameter.name;
        variable.type = parameter.type;
    }
    return parameters;
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
        if (instruction.compiled.ready || !instruction.values.empty()) continue;
        try {
            checkAhead(instruction, program.names());
        } catch (const tsql::ServerError& error) {
            if (!showsLater(error.number())) throw error.at(instruction.line);
        }
    }
    program.checkedAt = catalogue_.generation();
}

// Variables and labels that are there twice show when a module is made. What a procedure, function
// or trigger says of tables that are there is looked at when it is made; a statement that names
// another table is looked at when it runs.
void ScriptRunner::checkColumns(const tsql::CreateModuleStatement& node, const std::string& name,
                                const std::string& table) {
    Program program(node.body, catalogue_, declaredParameters(node));
    program.names().setSchema(schemaOf(name));
    const auto addTable = [&](const tsql::CreateTableStatement& own) {
        TableBuilder builder(program.names(), own.table.last());
        builder.add(own);
        program.names().addLocalTable({own.table.last(), builder.table()});
    };
    for (const tsql::ParameterDefinition& parameter : node.parameters) {
        if (parameter.table != nullptr) addTable(*parameter.table);
    }
    if (node.returnTable != nullptr) addTable(*node.returnTable);
    std::vector<Instruction>& code = program.code();
    if (std::ranges::any_of(code, definesStoredTables)) return;
    if (const Table* written = table.empty() ? nullptr : catalogue_.find(table)) {
        program.names().addLocalTable({"inserted", capturedRows(*written, RowState::Inserted)});
        program.names().addLocalTable({"deleted", capturedRows(*written, RowState::Deleted)});
    }
    const Transactions::ReadScope scope(transactions_);
    for (Instruction& instruction : code) {
        try {
            checkAhead(instruction, program.names());
        } catch (const tsql::ServerError& error) {
            if (isAboutColumns(error.number())) {
                RaisedError raised = raisedBy(error.at(instruction.line), instruction.line);
                raised.procedure = node.name.last();
                throw raised;
            }
        }
    }
}

void ScriptRunner::checkAhead(Instruction& instruction, const NameScope& names) {
    const tsql::Statement* statement = instruction.statement;
    if (statement != nullptr && isData(*statement)) {
        statements_.translate(instruction.compiled, *statement, names);
        return;
    }
    if (instruction.condition != nullptr && mayNameTables(*instruction.condition)) {
        (void)translateCondition(*instruction.condition, names);
    }
    if (statement == nullptr) return;
    if (const auto* cursor = std::get_if<tsql::DeclareCursorStatement>(&statement->node)) {
        (void)translateCursor(*std::get<tsql::SelectStatement>(cursor->query->node).query, names);
    }
    if (const auto* held = std::get_if<tsql::AssignCursorStatement>(&statement->node);
        held != nullptr && held->definition != nullptr) {
        const tsql::Statement& query = *held->definition->query;
        (void)translateCursor(*std::get<tsql::SelectStatement>(query.node).query, names);
    }
    for (const tsql::Expression* value : valuesIn(*statement)) {
        if (mayNameTables(*value)) (void)translateValue(*value, names);
    }
}

}  // namespace kap::engine
