#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "engine/sqlite/function_names.hpp"
#include "engine/sqlite/shared_query.hpp"
#include "engine/values/value.hpp"
#include "tsql/type_spec.hpp"

// Expressions and conditions of SQLite as trees: what the binder makes and SqlWriter
// (sql_writer.hpp) writes. They know nothing of the dialect, so they stand beside the writer and
// below the binder. Queries are in query_tree.hpp.
namespace kap::engine::sql {

struct Column;
struct Constant;
struct Parameter;
struct Star;
struct Call;
struct Conversion;
struct Sum;
struct Unary;
struct Binary;
struct Chain;
struct Bytes;
struct Collated;
struct Case;
struct In;
struct InQuery;
struct Between;
struct Exists;
struct Subquery;
struct Window;
struct Over;
struct Definition;
struct QueryText;

using Kind = std::variant<Column, Constant, Parameter, Star, Call, Conversion, Sum, Unary, Binary,
                          Chain, Bytes, Collated, Case, In, InQuery, Between, Exists, Subquery,
                          Window, Over, Definition, QueryText>;

template <typename Type, typename Variant>
inline constexpr bool kIsOneOf = false;
template <typename Type, typename... Kinds>
inline constexpr bool kIsOneOf<Type, std::variant<Kinds...>> = (std::same_as<Type, Kinds> || ...);

template <typename Type>
concept NodeKind = kIsOneOf<Type, Kind>;

struct Node;
// An expression, or none. It never changes, so that those who hold it share one tree; copies cost
// nothing. All holders of a tree belong to one thread.
class Expression {
public:
    Expression() = default;
    template <NodeKind Type>
    Expression(Type kind);  // NOLINT(google-explicit-constructor): a node is an expression
    Expression(const Expression& other) noexcept;
    Expression(Expression&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    Expression& operator=(Expression other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~Expression() {
        if (node_ != nullptr) release(node_);
    }

    explicit operator bool() const { return node_ != nullptr; }
    // What it is; there must be one.
    [[nodiscard]] const Kind& kind() const;
    // The same if it is of that kind, else null.
    template <NodeKind Type>
    [[nodiscard]] const Type* as() const;
    // Gives up what it holds, which is of that kind: nobody copies what nobody else holds.
    template <NodeKind Type>
    [[nodiscard]] Type take() &&;
    // Whether both are the same tree, not only of the same shape.
    [[nodiscard]] bool isSame(const Expression& other) const { return node_ == other.node_; }

    // Whether two expressions are written alike. Error 8631 where the stack ends.
    friend bool operator==(const Expression& left, const Expression& right);

private:
    static void release(Node* node) noexcept;

    Node* node_ = nullptr;
};

// "source"."name", or "name" alone; `bare` for names that SQLite itself gives.
struct Column {
    std::string source;
    std::string name;
    bool bare = false;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Column&, const Column&) = default;
};

struct Constant {
    Value value;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Constant&, const Constant&) = default;
};

// ?1, ?2...: a constant that is bound, a variable, or a value that a query is given.
struct Parameter {
    int number = 0;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Parameter&, const Parameter&) = default;
};

// The argument of count(*).
struct Star {
    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Star&, const Star&) = default;
};

struct Call {
    fn::Function function;
    std::vector<Expression> arguments;
    bool distinct = false;  // of an aggregate

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        for (auto& argument : self.arguments)
            visit(argument);
    }
    friend bool operator==(const Call&, const Call&) = default;
};

// A value brought from one type to another by kap_convert, kap_try_convert or, into a column,
// kap_store, which knows no style.
struct Conversion {
    fn::Function function;
    Expression operand;
    tsql::TypeSpec from;
    tsql::TypeSpec to;
    Expression style = {};

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.operand);
        visit(self.style);
    }
    friend bool operator==(const Conversion&, const Conversion&) = default;
};

// One operand of a sum.
struct Term {
    bool minus = false;
    Expression value;
    int scale = 0;  // the digits behind the point that it is stored with

    friend bool operator==(const Term&, const Term&) = default;
};

// The same with so many digits behind the point.
[[nodiscard]] Expression scaled(const Term& term, int scale);

// Two or more numbers added and subtracted from left to right, each brought to one scale before.
struct Sum {
    tsql::TypeSpec type;
    int scale = 0;
    std::vector<Term> terms;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        for (auto& term : self.terms)
            visit(term.value);
    }
    friend bool operator==(const Sum&, const Sum&) = default;
};

enum class UnaryOperator : std::uint8_t {
    Minus,
    BitNot,
    Not,
    IsNull,
    IsNotNull,
    IsTrue,
    IsNotTrue,
};

struct Unary {
    UnaryOperator op;
    Expression operand;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.operand);
    }
    friend bool operator==(const Unary&, const Unary&) = default;
};

enum class BinaryOperator : std::uint8_t {
    Equal,
    NotEqual,
    Is,  // the same, also where both are null
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Add,
    Subtract,
    Multiply,
    BitAnd,
    BitOr,
    ShiftRight,
};

struct Binary {
    BinaryOperator op;
    Expression left;
    Expression right;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.left);
        visit(self.right);
    }
    friend bool operator==(const Binary&, const Binary&) = default;
};

enum class ChainOperator : std::uint8_t { And, Or, Join };

// Any number of conditions, or of texts that are joined.
struct Chain {
    ChainOperator op;
    std::vector<Expression> parts;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        for (auto& part : self.parts)
            visit(part);
    }
    friend bool operator==(const Chain&, const Chain&) = default;
};

// CAST(... AS BLOB)
struct Bytes {
    Expression operand;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.operand);
    }
    friend bool operator==(const Bytes&, const Bytes&) = default;
};

struct Collated {
    Expression operand;
    std::string_view collation;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.operand);
    }
    friend bool operator==(const Collated&, const Collated&) = default;
};

struct Branch {
    Expression when;
    Expression then;

    friend bool operator==(const Branch&, const Branch&) = default;
};

struct Case {
    Expression subject;  // none: the branches have conditions
    std::vector<Branch> branches;
    Expression otherwise = {};  // none: null

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.subject);
        for (auto& branch : self.branches) {
            visit(branch.when);
            visit(branch.then);
        }
        visit(self.otherwise);
    }
    friend bool operator==(const Case&, const Case&) = default;
};

struct In {
    Expression value;
    std::vector<Expression> list;
    bool negated = false;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.value);
        for (auto& each : self.list)
            visit(each);
    }
    friend bool operator==(const In&, const In&) = default;
};

struct InQuery {
    Expression value;
    QueryTree query;
    bool negated = false;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.value);
    }
    friend bool operator==(const InQuery&, const InQuery&) = default;
};

struct Between {
    Expression value;
    Expression low;
    Expression high;
    bool negated = false;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.value);
        visit(self.low);
        visit(self.high);
    }
    friend bool operator==(const Between&, const Between&) = default;
};

struct Exists {
    QueryTree query;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Exists&, const Exists&) = default;
};

// The one value of a query of one row.
struct Subquery {
    QueryTree query;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Subquery&, const Subquery&) = default;
};

struct OrderTerm {
    Expression value;
    bool descending = false;

    friend bool operator==(const OrderTerm&, const OrderTerm&) = default;
};

// What stands between the brackets of OVER.
struct Window {
    std::vector<Expression> partitions;
    std::vector<OrderTerm> order;
    std::string frame;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        for (auto& partition : self.partitions)
            visit(partition);
        for (auto& term : self.order)
            visit(term.value);
    }
    friend bool operator==(const Window&, const Window&) = default;
};

// A call with the window that it looks through.
struct Over {
    Expression call;
    Expression window;

    template <typename Self, typename Visit>
    static void eachPart(Self& self, const Visit& visit) {
        visit(self.call);
        visit(self.window);
    }
    friend bool operator==(const Over&, const Over&) = default;
};

// What the schema of the file holds as text: the default of a column.
struct Definition {
    std::string text;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const Definition&, const Definition&) = default;
};

// What a query is written as, for a function that runs it.
struct QueryText {
    QueryTree query;

    template <typename Self, typename Visit>
    static void eachPart(Self& /*self*/, const Visit& /*visit*/) {}
    friend bool operator==(const QueryText&, const QueryText&) = default;
};

struct Node {
    Kind kind;
    mutable int holders = 1;
    Node* next = nullptr;  // of those that are about to end
};

template <NodeKind Type>
Expression::Expression(Type kind)
    : node_(new Node{Kind(std::in_place_type<Type>, std::move(kind))}) {}

inline Expression::Expression(const Expression& other) noexcept : node_(other.node_) {
    if (node_ != nullptr) ++node_->holders;
}

inline const Kind& Expression::kind() const {
    return node_->kind;
}

template <NodeKind Type>
const Type* Expression::as() const {
    return node_ == nullptr ? nullptr : std::get_if<Type>(&node_->kind);
}

template <NodeKind Type>
Type Expression::take() && {
    const Expression own = std::move(*this);
    auto& held = std::get<Type>(own.node_->kind);
    return own.node_->holders == 1 ? Type(std::move(held)) : Type(held);
}

// NULL, a whole number, a text.
[[nodiscard]] Expression null();
[[nodiscard]] Expression number(std::int64_t value);
[[nodiscard]] Expression text(std::string value);
// A type as functions are told it.
[[nodiscard]] Expression typeNumber(const tsql::TypeSpec& type);

[[nodiscard]] Expression column(std::string name);
[[nodiscard]] Expression column(std::string source, std::string name);

// Texts and instants with their collation; what SQLite orders by itself stays as it is.
[[nodiscard]] Expression collated(Expression value, const tsql::TypeSpec& type);

[[nodiscard]] Expression equal(Expression left, Expression right);
[[nodiscard]] Expression negation(Expression condition);
[[nodiscard]] Expression isNull(Expression value);
[[nodiscard]] Expression isNotNull(Expression value);
// Conditions that all hold; one alone is itself.
[[nodiscard]] Expression allOf(std::vector<Expression> conditions);
// CASE WHEN condition THEN value ELSE otherwise END
[[nodiscard]] Expression when(Expression condition, Expression value, Expression otherwise = {});

[[nodiscard]] inline Expression argument(Expression value) {
    return value;
}
[[nodiscard]] inline Expression argument(const tsql::TypeSpec& type) {
    return typeNumber(type);
}
template <std::integral Number>
[[nodiscard]] Expression argument(Number value) {
    return number(static_cast<std::int64_t>(value));
}

// A call with these arguments: expressions, numbers and types.
template <typename... Arguments>
[[nodiscard]] Expression call(const fn::Function& function, Arguments&&... arguments) {
    Call result{function, {}};
    result.arguments.reserve(sizeof...(arguments));
    (result.arguments.push_back(argument(std::forward<Arguments>(arguments))), ...);
    return result;
}

// Whether a node is a query, which may read anything.
[[nodiscard]] bool holdsQuery(const Kind& kind);

// Whether some part of an expression, or it itself, is such a node. Queries within it are not
// looked into. Error 8631 where the stack ends.
[[nodiscard]] bool contains(const Expression& expression,
                            const std::function<bool(const Kind&)>& wanted);

}  // namespace kap::engine::sql
