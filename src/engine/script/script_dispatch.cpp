#include <optional>

#include "engine/plan/statement_kinds.hpp"
#include "engine/plan/translator.hpp"
#include "engine/script/script_runner.hpp"

// Which part of the runner runs which statement.
namespace kap::engine {
namespace {

// What a statement leaves behind that is not planned.
struct Outcome {
    // What @@ROWCOUNT is afterwards; unset: it and @@ERROR are what the statement has left.
    std::optional<std::int64_t> rowCount;
    bool ends = false;  // the batch or module
};

constexpr Outcome kDone{0, false};
constexpr Outcome kLeftAsIs{};
constexpr Outcome kEnds{std::nullopt, true};

}  // namespace

// One case for each kind of statement, so that one which nobody runs does not compile.
class ScriptRunner::Dispatch {
public:
    Dispatch(ScriptRunner& runner, Frame& frame, Instruction& instruction,
             std::vector<ado::Result>& results)
        : runner_(runner),
          frame_(frame),
          instruction_(instruction),
          results_(results),
          line_(instruction.statement->line) {}

    template <PlannedStatement Node>
    Outcome operator()(const Node& /*node*/) const {
        runner_.runPlanned(frame_, instruction_, results_);
        return kLeftAsIs;
    }
    Outcome operator()(const tsql::InsertStatement& node) const {
        if (node.execute == nullptr) {
            runner_.runPlanned(frame_, instruction_, results_);
            return kLeftAsIs;
        }
        runner_.insertExecuted(frame_, instruction_, node, results_);
        return {runner_.state_.rowCount};
    }
    Outcome operator()(const tsql::DropStatement& node) const {
        switch (node.kind) {
            case tsql::ObjectKind::Table:
            case tsql::ObjectKind::Index:
                runner_.runPlanned(frame_, instruction_, results_);
                return kLeftAsIs;
            case tsql::ObjectKind::Schema:
                runner_.dropSchema(node, line_);
                return kDone;
            default:
                runner_.dropStored(node, line_);
                return kDone;
        }
    }
    // A program has these as jumps.
    template <FlowStatement Node>
    Outcome operator()(const Node& /*node*/) const {
        return kLeftAsIs;
    }

    // --- Variables, messages, transactions
    Outcome operator()(const tsql::DeclareStatement& node) const {
        runner_.declareVariables(frame_, instruction_, node);
        return kLeftAsIs;
    }
    Outcome operator()(const tsql::AssignStatement& node) const {
        runner_.assign(frame_, instruction_, node);
        return {1};
    }
    Outcome operator()(const tsql::SetOptionStatement& node) const {
        runner_.setOption(frame_, instruction_, node);
        return kDone;
    }
    Outcome operator()(const tsql::ReturnStatement& node) const {
        runner_.returnValue(frame_, instruction_, node);
        return kEnds;
    }
    Outcome operator()(const tsql::PrintStatement& node) const {
        runner_.print(frame_, instruction_, node);
        return kDone;
    }
    Outcome operator()(const tsql::RaiserrorStatement& node) const {
        runner_.raiseError(frame_, instruction_, node);
        return kDone;
    }
    Outcome operator()(const tsql::ThrowStatement& node) const {
        runner_.throwError(frame_, instruction_, node);
        return kDone;
    }
    Outcome operator()(const tsql::WaitStatement& node) const {
        runner_.wait(frame_, instruction_, node);
        return kDone;
    }
    Outcome operator()(const tsql::TransactionStatement& node) const {
        runner_.transaction(frame_, node);
        return kDone;
    }

    // --- Calls, and rows of other places
    // @@ERROR and @@ROWCOUNT are those of the last statement of what is called.
    Outcome operator()(const tsql::ExecuteStatement& node) const {
        runner_.execute(frame_, instruction_, node, results_);
        return kLeftAsIs;
    }
    Outcome operator()(const tsql::BulkInsertStatement& node) const {
        runner_.bulkInsert(frame_, node, line_, results_);
        return {runner_.state_.rowCount};
    }

    // --- Definitions
    Outcome operator()(const tsql::CreateViewStatement& node) const {
        runner_.createView(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CreateModuleStatement& node) const {
        runner_.createModule(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CreateTypeStatement& node) const {
        runner_.createType(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CreateRuleStatement& node) const {
        runner_.createRule(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CreateSchemaStatement& node) const {
        runner_.createSchema(node, line_, results_);
        return kDone;
    }
    Outcome operator()(const tsql::AlterSchemaStatement& node) const {
        runner_.transferObject(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::SequenceStatement& node) const {
        runner_.defineSequence(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CreateSynonymStatement& node) const {
        runner_.createSynonym(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::AlterTableStatement& node) const {
        runner_.alterTable(frame_, node, line_);
        return kDone;
    }

    // --- Cursors
    Outcome operator()(const tsql::DeclareCursorStatement& node) const {
        runner_.declareCursor(frame_, node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::AssignCursorStatement& node) const {
        runner_.assignCursor(frame_, node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CursorStatement& node) const {
        runner_.useCursor(frame_, node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::FetchStatement& node) const {
        runner_.fetch(frame_, instruction_, node, results_);
        return {runner_.state_.fetchStatus == 0 ? 1 : 0};
    }

    // --- The database
    Outcome operator()(const tsql::DatabaseStatement& node) const {
        runner_.database(node, line_);
        return kDone;
    }
    Outcome operator()(const tsql::BackupStatement& node) const {
        runner_.backup(runner_.textOf(frame_, instruction_, 0, *node.file), node.replace, line_);
        return kDone;
    }
    Outcome operator()(const tsql::CheckStatement& /*node*/) const {
        runner_.checkDatabase();
        return kDone;
    }
    Outcome operator()(const tsql::ShowOptionsStatement& /*node*/) const {
        runner_.showOptions(results_);
        return kDone;
    }
    Outcome operator()(const tsql::CheckIdentityStatement& node) const {
        runner_.checkIdentity(frame_, instruction_, node);
        return kDone;
    }
    Outcome operator()(const tsql::NoEffectStatement& node) const {
        runner_.note(node.what + " has no effect on a database of one file.");
        return kDone;
    }

private:
    ScriptRunner& runner_;
    Frame& frame_;
    Instruction& instruction_;
    std::vector<ado::Result>& results_;
    int line_;
};

std::size_t ScriptRunner::runStatement(Frame& frame, Instruction& instruction, std::size_t at,
                                       std::vector<ado::Result>& results) {
    const Outcome outcome =
        std::visit(Dispatch(*this, frame, instruction, results), instruction.statement->node);
    if (outcome.ends) return frame.program.code().size();
    if (outcome.rowCount) {
        state_.rowCount = *outcome.rowCount;
        state_.error = 0;
    }
    return at + 1;
}

// SET SHOWPLAN_TEXT ON has statements explained instead of run.
void ScriptRunner::runPlanned(Frame& frame, Instruction& instruction,
                              std::vector<ado::Result>& results) {
    if (state_.showPlan) {
        explain(frame, instruction, results);
        return;
    }
    statements_.run(instruction.compiled, *instruction.statement, results);
    tellIgnored(instruction.line);
    state_.error = 0;
}

void ScriptRunner::returnValue(Frame& frame, Instruction& instruction,
                               const tsql::ReturnStatement& node) {
    if (node.value == nullptr) return;
    const auto& module = frame.program.module;
    const bool ofFunction =
        module != nullptr && module->definition.kind == tsql::ModuleKind::Function;
    frame.returned =
        evaluate(frame, instruction, 0, *node.value,
                 ofFunction ? module->definition.returns : tsql::TypeSpec{tsql::SqlType::Int});
}

}  // namespace kap::engine
