#pragma once

#include <optional>
#include <string>
#include <utility>

#include "ado/embedded/catalogue.hpp"
#include "ado/embedded/functions/value.hpp"
#include "tsql/type_spec.hpp"

namespace kap::ado::embedded {

/// An expression that has been bound: its SQLite text, which yields storage form, and its static
/// type.
struct Typed {
    std::string sql;
    tsql::TypeSpec type;
    bool nullable = true;
    bool nullLiteral = false;  ///< the word NULL: it takes the type of what it meets
    std::optional<Value>
        constant;  ///< of a literal, so that it is converted now and not for each row
    const Table* table = nullptr;  ///< of a plain column of a stored table
    const Column* column = nullptr;
    bool plainColumn = false;  ///< a column as it is: SQLite knows its collation

    [[nodiscard]] static Typed expression(std::string sql, tsql::TypeSpec type, bool nullable) {
        Typed result;
        result.sql = std::move(sql);
        result.type = type;
        result.nullable = nullable;
        return result;
    }
    [[nodiscard]] static Typed literal(const Value& value, tsql::TypeSpec type);
    [[nodiscard]] static Typed null();
};

/// The text of an expression with the collation of texts, where SQLite would not apply it by
/// itself.
[[nodiscard]] std::string collated(const Typed& expression);

/// The quoted name of a query's column by its place from 0: "c1", "c2"...
[[nodiscard]] std::string numberedName(std::size_t index);

/// A call of a SQL function.
template <typename... Parts>
[[nodiscard]] std::string callText(const char* function, const Parts&... parts) {
    std::string result = std::string(function) + "(";
    bool first = true;
    ((result += (std::exchange(first, false) ? "" : ", ") + std::string(parts)), ...);
    return result + ")";
}

/// A type as an argument of a SQL function.
[[nodiscard]] std::string typeArgument(const tsql::TypeSpec& type);

}  // namespace kap::ado::embedded
