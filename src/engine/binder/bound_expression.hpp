#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/catalog/tables.hpp"
#include "engine/values/value.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// One operand of a sum of exact numbers.
struct SumTerm {
    bool minus = false;
    std::string sql;
    int scale = 0;
    std::optional<std::int64_t> constant;

    // The operand with so many digits behind the point.
    [[nodiscard]] std::string at(int wantedScale) const;
};

// An expression that has been bound: its SQLite text, which yields storage form, and its static
// type.
struct BoundExpression {
    std::string sql;
    tsql::TypeSpec type;
    bool nullable = true;
    // The word NULL: it takes the type of what it meets.
    bool nullLiteral = false;
    // Of a literal, so that it is converted now and not for each row.
    std::optional<Value> constant;
    // Of a plain column of a stored table.
    const Table* table = nullptr;
    const Column* column = nullptr;
    // A column as it is: SQLite knows its collation.
    bool plainColumn = false;
    // The operands of a sum, for a longer one to take over.
    std::vector<SumTerm> terms;
    // Texts joined, without brackets ("a || b"), for the same reason.
    std::string joint;
    // Texts joined and cut to the longest text.
    bool cut = false;
    // IDENTITY(...) of SELECT ... INTO, whose numbers are given when the rows are written.
    std::optional<Identity> newIdentity;

    [[nodiscard]] static BoundExpression expression(std::string sql, tsql::TypeSpec type,
                                                    bool nullable) {
        BoundExpression result;
        result.sql = std::move(sql);
        result.type = type;
        result.nullable = nullable;
        return result;
    }
    // The same value under another type of the same storage form.
    [[nodiscard]] BoundExpression as(const tsql::TypeSpec& other) const;
    [[nodiscard]] static BoundExpression literal(const Value& value, tsql::TypeSpec type);
    [[nodiscard]] static BoundExpression null();
};

// The text of an expression with the collation of texts, where SQLite would not apply it by
// itself.
[[nodiscard]] std::string collated(const BoundExpression& expression);
// The same for an expression whose value stands in another text: a constant that is bound.
[[nodiscard]] std::string collated(const BoundExpression& expression, const std::string& text);

// The quoted name of a query's column by its place from 0: "c1", "c2"...
[[nodiscard]] std::string numberedName(std::size_t index);

// A call of a SQL function.
template <typename... Parts>
[[nodiscard]] std::string callText(const char* function, const Parts&... parts) {
    std::string result = std::string(function) + "(";
    bool first = true;
    ((result += (std::exchange(first, false) ? "" : ", ") + std::string(parts)), ...);
    return result + ")";
}

// A type as an argument of a SQL function.
[[nodiscard]] std::string typeArgument(const tsql::TypeSpec& type);

}  // namespace kap::engine
