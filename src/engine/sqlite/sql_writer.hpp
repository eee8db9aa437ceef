#pragma once

#include <span>
#include <string>

#include "engine/sqlite/expression_tree.hpp"
#include "engine/sqlite/query_tree.hpp"
#include "engine/sqlite/write_tree.hpp"

namespace kap::engine {

// Writes expressions, queries and what writes rows as SQLite reads them: the only place that knows
// how. Error 8631 where the stack ends before the expression does.
class SqlWriter {
public:
    // What is written goes behind what `text` holds.
    explicit SqlWriter(std::string& text) : text_(text) {}

    void write(const sql::Expression& expression);
    // Expressions with commas between them.
    void write(std::span<const sql::Expression> list);
    void write(const sql::Query& query);
    void write(const sql::Write& statement);
    // What stands behind FROM.
    void write(const sql::From& from);
    void source(const sql::TableName& table);
    void name(std::string_view name);
    // Names with commas between them.
    void names(std::span<const std::string> list);

private:
    void node(const sql::Column& column);
    void node(const sql::Constant& constant);
    void node(const sql::Parameter& parameter);
    void node(const sql::Star& star);
    void node(const sql::Call& call);
    void node(const sql::Conversion& conversion);
    void node(const sql::Sum& sum);
    void node(const sql::Unary& unary);
    void node(const sql::Binary& binary);
    void node(const sql::Chain& chain);
    void node(const sql::Bytes& bytes);
    void node(const sql::Collated& collated);
    void node(const sql::Case& choice);
    void node(const sql::In& in);
    void node(const sql::InQuery& in);
    void node(const sql::Between& between);
    void node(const sql::Exists& exists);
    void node(const sql::Subquery& subquery);
    void node(const sql::Window& window);
    void node(const sql::Over& over);
    void node(const sql::Definition& definition);
    void node(const sql::QueryText& text);

    void body(const sql::Select& select);
    void body(const sql::Compound& compound);
    void body(const sql::Values& values);
    void body(const sql::Insert& insert);
    void body(const sql::Update& update);
    void body(const sql::Delete& removal);
    void where(const sql::Expression& condition);
    void source(const sql::Derived& derived);
    void source(const sql::RowsOf& rows);
    void source(const sql::From& sources);
    void alias(std::string_view name);
    void bracketed(const sql::QueryTree& query);
    void with(std::span<const sql::CommonTable> tables);
    void limits(const sql::Expression& limit, const sql::Expression& offset);
    void orderBy(std::span<const sql::OrderTerm> order);
    void number(std::int64_t value);
    void balanced(std::span<const sql::Expression> parts, const char* joint);

    std::string& text_;
};

// An expression as SQLite reads it.
[[nodiscard]] std::string sqlOf(const sql::Expression& expression);

// Expressions with commas between them.
[[nodiscard]] std::string sqlOf(std::span<const sql::Expression> list);

// A query as SQLite reads it.
[[nodiscard]] std::string sqlOf(const sql::Query& query);
// What stands behind FROM.
[[nodiscard]] std::string sqlOf(const sql::From& from);
// A statement as SQLite reads it.
[[nodiscard]] std::string sqlOf(const sql::Write& statement);

}  // namespace kap::engine
