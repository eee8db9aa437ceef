#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "engine/binder/binder.hpp"

// The scalar functions of the dialect: how many arguments they take and what they become.
namespace kap::engine {

// A call whose arguments are bound.
struct ScalarCall {
    const Binder& binder;
    const tsql::FunctionCall& syntax;
    std::vector<BoundExpression> arguments;
    int line;

    [[nodiscard]] BoundExpression& operator[](std::size_t index) { return arguments[index]; }
    [[nodiscard]] bool anyNullable() const;
    // An argument as text, converted when it is not.
    [[nodiscard]] sql::Expression text(std::size_t index) const;
    // An argument as a whole number; the other form where it is left out.
    [[nodiscard]] sql::Expression integer(std::size_t index) const;
    [[nodiscard]] sql::Expression integer(std::size_t index, std::int64_t otherwise) const;
    // The same as an int, with the server's error for what is none.
    [[nodiscard]] sql::Expression shortInteger(std::size_t index) const;
    [[nodiscard]] sql::Expression real(std::size_t index) const;
    // An argument as the date type it has, or as datetime.
    [[nodiscard]] BoundExpression instant(std::size_t index) const;
    // The variable text type of an argument.
    [[nodiscard]] tsql::TypeSpec textType(std::size_t index) const;
    // An argument that must be a number: a text becomes a float. Error 8116 for any other.
    [[nodiscard]] BoundExpression number(std::size_t index) const;
    // Error 8116: the argument's type is none that the function takes.
    [[noreturn]] void refuseType(std::size_t index) const;
    // The argument's name where the dialect wants a word and no value, as the first one of
    // DATEADD.
    [[nodiscard]] std::string_view word(std::size_t index) const;
    // The name of the function in lower case, for messages.
    [[nodiscard]] std::string name() const;
};

struct ScalarFunction {
    std::string_view name;
    int fewest;
    int most;  // -1 for any number
    BoundExpression (*bind)(ScalarCall& call);
    bool firstIsWord = false;  // the first argument is a word and is not bound
};

[[nodiscard]] std::span<const ScalarFunction> textFunctions();
[[nodiscard]] std::span<const ScalarFunction> numberFunctions();
[[nodiscard]] std::span<const ScalarFunction> dateFunctions();
[[nodiscard]] std::span<const ScalarFunction> generalFunctions();
[[nodiscard]] std::span<const ScalarFunction> principalFunctions();
[[nodiscard]] std::span<const ScalarFunction> cultureFunctions();
[[nodiscard]] std::span<const ScalarFunction> byteFunctions();
[[nodiscard]] std::span<const ScalarFunction> variantFunctions();
[[nodiscard]] std::span<const ScalarFunction> markupFunctions();
[[nodiscard]] std::span<const ScalarFunction> textBuilders();
[[nodiscard]] std::span<const ScalarFunction> collatingFunctions();

// NEWSEQUENTIALID(), which stands alone in the default of a column and nowhere else.
[[nodiscard]] bool isSequentialIdentifier(const tsql::Expression& value);

// The function of that name (case ignored), or null.
[[nodiscard]] const ScalarFunction* findFunction(std::string_view name);

}  // namespace kap::engine
