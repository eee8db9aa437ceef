#include "engine/executor/program.hpp"

#include <algorithm>
#include <atomic>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {
namespace {

std::uint64_t nextSerial() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

}  // namespace

Program::Program(ReadScript script, const Catalogue& catalogue,
                 const std::vector<tsql::DeclaredVariable>& parameters)
    : script_(std::move(script.parsed)), names_(catalogue), serial_(nextSerial()) {
    for (const tsql::DeclaredVariable& parameter : parameters) {
        names_.declare(parameter.name, parameter.type, parameter.line);
    }
    code_.reserve(script_->size() + script.recognised.size());
    std::size_t parsed = 0;
    for (RecognisedStatement& recognised : script.recognised) {
        for (; parsed < recognised.before; ++parsed) {
            add((*script_)[parsed]);
        }
        add(std::move(recognised.compiled));
    }
    for (; parsed < script_->size(); ++parsed) {
        add((*script_)[parsed]);
    }
    resolveGotos();
}

std::size_t Program::emit(Operation operation, int line) {
    Instruction& instruction = code_.emplace_back();
    instruction.operation = operation;
    instruction.line = line;
    return code_.size() - 1;
}

void Program::add(const tsql::Statement& statement) {
    tsql::requireStack(statement.line);
    std::visit([&](const auto& node) { addNode(statement, node); }, statement.node);
}

void Program::add(CompiledStatement recognised) {
    Instruction& instruction = code_[emit(Operation::Statement, recognised.text.line)];
    instruction.statement = &recognised.shape->statement;
    instruction.compiled = std::move(recognised);
}

template <typename Node>
void Program::addNode(const tsql::Statement& statement, const Node& /*node*/) {
    code_[emit(Operation::Statement, statement.line)].statement = &statement;
}

// Variables are there from the start of the program, whatever way leads to their declaration; what
// the declaration does when it is reached is to give them their values.
void Program::addNode(const tsql::Statement& statement, const tsql::DeclareStatement& node) {
    for (const tsql::DeclaredVariable& variable : node.variables) {
        names_.declare(variable.name, variable.type, variable.line);
    }
    code_[emit(Operation::Statement, statement.line)].statement = &statement;
}

void Program::addNode(const tsql::Statement& statement, const tsql::IfStatement& node) {
    const std::size_t test = emit(Operation::Test, statement.line);
    code_[test].condition = node.condition.get();
    add(*node.then);
    if (node.otherwise == nullptr) {
        code_[test].target = code_.size();
        return;
    }
    const std::size_t jump = emit(Operation::Jump, statement.line);
    code_[test].target = code_.size();
    add(*node.otherwise);
    code_[jump].target = code_.size();
}

void Program::addNode(const tsql::Statement& statement, const tsql::WhileStatement& node) {
    const std::size_t test = emit(Operation::Test, statement.line);
    code_[test].condition = node.condition.get();
    loops_.push_back({test, blocks_.size(), {}});
    add(*node.body);
    code_[emit(Operation::Jump, statement.line)].target = test;
    code_[test].target = code_.size();
    for (const std::size_t jump : loops_.back().breaks) {
        code_[jump].target = code_.size();
    }
    loops_.pop_back();
}

void Program::addNode(const tsql::Statement& /*statement*/, const tsql::BlockStatement& node) {
    for (const tsql::Statement& each : node.statements) {
        add(each);
    }
}

void Program::addNode(const tsql::Statement& statement, const tsql::TryStatement& node) {
    const std::size_t enter = emit(Operation::EnterTry, statement.line);
    addBlock(node.body, false);
    const std::size_t leave = emitJump(blocks_.size(), statement.line);
    code_[leave].leaves.tries = 1;
    code_[enter].target = code_.size();
    addBlock(node.handler, true);
    const std::size_t end = emitJump(blocks_.size(), statement.line);
    code_[end].leaves.catches = 1;
    code_[leave].target = code_.size();
    code_[end].target = code_.size();
}

void Program::addBlock(const tsql::Script& statements, bool catches) {
    blocks_.push_back({++lastBlock_, catches});
    for (const tsql::Statement& each : statements) {
        add(each);
    }
    blocks_.pop_back();
}

LeftBlocks Program::left(const Blocks& blocks, std::size_t kept) {
    LeftBlocks result;
    for (std::size_t i = kept; i < blocks.size(); ++i) {
        ++(blocks[i].catches ? result.catches : result.tries);
    }
    return result;
}

std::size_t Program::emitJump(std::size_t kept, int line) {
    const std::size_t at = emit(Operation::Jump, line);
    code_[at].leaves = left(blocks_, kept);
    return at;
}

void Program::addNode(const tsql::Statement& statement, const tsql::BreakStatement& /*node*/) {
    loops_.back().breaks.push_back(emitJump(loops_.back().blocks, statement.line));
}

void Program::addNode(const tsql::Statement& statement, const tsql::ContinueStatement& /*node*/) {
    code_[emitJump(loops_.back().blocks, statement.line)].target = loops_.back().start;
}

void Program::addNode(const tsql::Statement& statement, const tsql::GotoStatement& node) {
    gotos_.push_back({emit(Operation::Jump, statement.line), node.label, blocks_, statement.line});
}

void Program::addNode(const tsql::Statement& statement, const tsql::LabelStatement& node) {
    const auto [found, added] =
        labels_.emplace(asciiLower(node.label), Label{code_.size(), blocks_});
    if (!added) {
        throw tsql::ServerError(tsql::Message::DuplicateLabel, {node.label}, statement.line);
    }
}

void Program::resolveGotos() {
    for (const Goto& each : gotos_) {
        const auto found = labels_.find(asciiLower(each.label));
        if (found == labels_.end()) {
            throw tsql::ServerError(tsql::Message::UnknownLabel, {each.label}, each.line);
        }
        const Label& label = found->second;
        const bool inward =
            label.blocks.size() > each.blocks.size() ||
            !std::equal(label.blocks.begin(), label.blocks.end(), each.blocks.begin());
        if (inward) {
            throw tsql::ServerError(tsql::Message::GotoIntoTry, {}, each.line);
        }
        code_[each.at].target = label.at;
        code_[each.at].leaves = left(each.blocks, label.blocks.size());
    }
}

}  // namespace kap::engine
