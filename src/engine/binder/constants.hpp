#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "engine/values/value.hpp"
#include "tsql/syntax.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// Where the constants of a statement stand.
enum class Constants : std::uint8_t {
    InText,  // in its text, which is complete
    Bound,   // those that rows are found by and filled with are bound to it, so that statements
             // that differ in nothing else share one text
};

// A statement with more constants than this has the others in its text: it is a list of rows, which
// does not come back. They are its first parameters, and variables the ones behind so many: so the
// text of a statement does not depend on how many variables its script has.
inline constexpr int kMostConstants = 64;
// The number of the parameter that a variable's value is bound to.
[[nodiscard]] constexpr int parameterOf(int slot) {
    return kMostConstants + slot + 1;
}

// How a bound constant follows from a literal of the statement. Where one is known, nothing else of
// the statement depends on that literal's value: another literal of the kind can take its place.
struct ConstantSource {
    enum class Use : std::uint8_t {
        Unknown,   // the statement is bound anew for another literal
        Stored,    // goes into a column of `type`
        Compared,  // meets a value, after it has been brought to `type` or to `scale`
    };
    Use use = Use::Unknown;
    bool negative = false;                              // a minus stands before the literal
    std::size_t token = tsql::kNoToken;                 // of the literal, in the script
    tsql::SqlType literalType = tsql::SqlType::Int;     // the literal's own
    std::optional<tsql::TypeSpec> type = std::nullopt;  // Compared: none when it stays as it is
    // Compared, of exact numbers: the digits behind the point of the value that it meets.
    std::optional<int> scale = std::nullopt;
};

// What a statement is to be run with: variables, constants, and whether its text holds what the
// schema says, which another connection may change.
struct BoundValues {
    std::vector<int> variables;  // their slots; see parameterOf()
    std::vector<Value> constants;
    std::vector<ConstantSource> sources;  // of the constants, one each
    bool readsSchema = false;             // the text holds what the schema was when it was made
    bool ofTheMoment = false;             // the text holds what another statement may change
    bool drawsNumbers = false;            // of sequences: also a query writes their counters then
};

// A literal as it stands in a statement, with the minus before it.
struct WrittenLiteral {
    const tsql::Literal* literal = nullptr;
    bool negative = false;
};
// The literal that an expression is; null for any other expression.
[[nodiscard]] WrittenLiteral writtenLiteral(const tsql::Expression& expression);

// The constant that follows from a literal in that way; nullopt when it takes another way, or when
// it cannot be converted: then binding the statement tells what is wrong.
[[nodiscard]] std::optional<Value> constantFrom(const ConstantSource& source,
                                                const tsql::Literal& literal);

}  // namespace kap::engine
