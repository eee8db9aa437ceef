#pragma once

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

// Statements of the dialect made at random: nearly all are well-formed, many make no sense. They
// read and write the tables, views and functions of kRandomSchema.
namespace kap::test {

class RandomStatements {
public:
    explicit RandomStatements(unsigned seed) : random_(seed) {}

    // Batches, to be run in this order, that make what the statements name.
    [[nodiscard]] static std::vector<std::string> schema();
    // The next statement; it is a batch of its own.
    [[nodiscard]] std::string next();

private:
    // A table of FROM under its name there.
    struct Shown {
        std::string name;
        std::vector<std::string> columns;
    };
    using Scope = std::vector<Shown>;

    [[nodiscard]] std::size_t below(std::size_t limit);
    [[nodiscard]] bool chance(std::size_t percent) { return below(100) < percent; }
    [[nodiscard]] std::string oneOf(std::initializer_list<const char*> texts);
    [[nodiscard]] std::string newName();

    [[nodiscard]] std::string statement();
    [[nodiscard]] std::string update();
    [[nodiscard]] std::string erase();
    [[nodiscard]] std::string insert();
    [[nodiscard]] std::string merge();
    [[nodiscard]] std::string cursor();
    [[nodiscard]] std::string definition();
    [[nodiscard]] std::string control();
    [[nodiscard]] std::string target();
    [[nodiscard]] std::string output(bool inserted, bool deleted, const Scope& others);
    [[nodiscard]] std::string commonTables();

    [[nodiscard]] std::string query(int depth, std::size_t columns);
    [[nodiscard]] std::string select(int depth, std::size_t columns, bool ordered);
    [[nodiscard]] std::string grouped(int depth, std::size_t columns, const Scope& scope);
    [[nodiscard]] std::string subquery(int depth);
    [[nodiscard]] std::string from(int depth, Scope& scope);
    [[nodiscard]] std::string source(int depth, Scope& scope);
    // The table that a statement writes, often one of its FROM, which comes back in `sources`.
    [[nodiscard]] std::string writtenTable(Scope& scope, std::string& sources);
    [[nodiscard]] std::string joined(int depth, Scope& scope);
    [[nodiscard]] std::string top();

    [[nodiscard]] std::string column(const Scope& scope);
    [[nodiscard]] std::string value(int depth);
    [[nodiscard]] std::string number(int depth);
    [[nodiscard]] std::string text(int depth);
    [[nodiscard]] std::string aggregate(int depth);
    [[nodiscard]] std::string windowed(int depth);
    [[nodiscard]] std::string condition(int depth);

    std::mt19937 random_;
    int names_ = 0;
    std::vector<Scope> scopes_;  // of the queries around, the innermost last
};

}  // namespace kap::test
