#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/binder/name_scope.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/plan/statement_plan.hpp"
#include "engine/plan/statement_shape.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// Where a statement stands in its script, for one that has not been parsed.
struct StatementText {
    std::shared_ptr<const std::string> script;
    std::size_t start = 0;
    std::size_t end = 0;
    int line = 1;
};

// A statement with its plan. That is made when the statement is first run and made anew when the
// schema has changed since: statements before it may make the tables it names.
struct CompiledStatement {
    bool ready = false;
    std::uint64_t generation = 0;  // of the catalogue
    // Statements of one shape share these two.
    std::shared_ptr<const StatementPlan> plan;
    std::shared_ptr<const std::vector<ado::ColumnInfo>> columns;  // of a query
    std::shared_ptr<PreparedStatement> prepared;  // the plan's only text, of the connection's pool
    // Of a statement that was recognised by its shape: the shape, whose syntax tree has the
    // literals of another statement, its own constants, and its text, from which its own tree is
    // made when it has to be translated after all.
    std::shared_ptr<const StatementShape> shape;
    std::vector<Value> constants;
    StatementText text;
    std::shared_ptr<const tsql::Script> own;
};

// The same of an expression of a script.
struct CompiledValue {
    bool ready = false;
    std::uint64_t generation = 0;
    std::shared_ptr<const ValuePlan> plan;
    std::shared_ptr<PreparedStatement> prepared;
};

// A statement that was recognised by its shape, and how many parsed ones stand before it.
struct RecognisedStatement {
    std::size_t before = 0;
    CompiledStatement compiled;
};

// A batch as it was read.
struct ReadScript {
    std::shared_ptr<const tsql::Script> parsed;
    std::vector<RecognisedStatement> recognised;
};

enum class Operation : std::uint8_t {
    Statement,  // runs `statement`
    Test,       // goes to `target` unless `condition` holds
    Jump,       // goes to `target`, out of the blocks that it `leaves`
    EnterTry,   // from here on an error goes to `target`
};

// The TRY and CATCH blocks that a jump leaves.
struct LeftBlocks {
    std::size_t tries = 0;
    std::size_t catches = 0;
};

struct Instruction {
    Operation operation = Operation::Statement;
    const tsql::Statement* statement = nullptr;
    const tsql::Expression* condition = nullptr;
    std::size_t target = 0;
    LeftBlocks leaves;
    int line = 1;
    CompiledStatement compiled;  // of a statement that is planned
    // Of the condition, or of the statement's expressions in the order in which they are evaluated.
    std::vector<CompiledValue> values;
};

// A batch or the body of a module, laid out flat: blocks, loops and handlers are jumps.
//
// One program is run by one frame at a time, because its prepared statements are in the middle of
// their rows while it runs.
class Program {
public:
    // Errors 132 and 133 for labels that are there twice or not at all, 1026 for a jump into a TRY
    // or CATCH block.
    Program(std::shared_ptr<const tsql::Script> script, const Catalogue& catalogue,
            const std::vector<tsql::DeclaredVariable>& parameters = {})
        : Program(ReadScript{std::move(script), {}}, catalogue, parameters) {}
    Program(ReadScript script, const Catalogue& catalogue,
            const std::vector<tsql::DeclaredVariable>& parameters);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] std::vector<Instruction>& code() { return code_; }
    [[nodiscard]] NameScope& names() { return names_; }
    // A number of its own, for the names of its table variables.
    [[nodiscard]] std::uint64_t serial() const { return serial_; }

    bool running = false;
    std::uint64_t checkedAt =
        ~std::uint64_t{0};  // the catalogue's generation when all was looked at ahead
    std::shared_ptr<const Module> module;  // whose body it is; unset for a batch

private:
    // A TRY or CATCH block, by a number of its own.
    struct Block {
        std::size_t number = 0;
        bool catches = false;
        bool operator==(const Block&) const = default;
    };
    using Blocks = std::vector<Block>;  // around a place, the innermost last

    struct Loop {
        std::size_t start = 0;
        std::size_t blocks = 0;  // around it
        std::vector<std::size_t> breaks;
    };

    void add(CompiledStatement recognised);
    void add(const tsql::Statement& statement);
    void addNode(const tsql::Statement& statement, const tsql::IfStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::WhileStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::BlockStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::TryStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::BreakStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::ContinueStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::GotoStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::LabelStatement& node);
    void addNode(const tsql::Statement& statement, const tsql::DeclareStatement& node);
    template <typename Node>
    void addNode(const tsql::Statement& statement, const Node& node);
    std::size_t emit(Operation operation, int line);
    void addBlock(const tsql::Script& statements, bool catches);
    // A jump out of the blocks of the present place but the first `kept`.
    std::size_t emitJump(std::size_t kept, int line);
    [[nodiscard]] static LeftBlocks left(const Blocks& blocks, std::size_t kept);
    void resolveGotos();

    struct Goto {
        std::size_t at;
        std::string label;
        Blocks blocks;
        int line;
    };

    struct Label {
        std::size_t at = 0;
        Blocks blocks;
    };

    std::shared_ptr<const tsql::Script> script_;
    NameScope names_;
    std::uint64_t serial_;
    std::vector<Instruction> code_;
    std::vector<Loop> loops_;
    Blocks blocks_;  // around the present place
    std::size_t lastBlock_ = 0;
    std::vector<Goto> gotos_;
    std::map<std::string, Label, std::less<>> labels_;  // in lower case
};

}  // namespace kap::engine
