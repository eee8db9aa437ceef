#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kap::ado {

// The condition of Recordset.Filter or Find, read into a tree. Texts are UTF-8.
struct CriteriaNode {
    enum class Kind : std::uint8_t { Comparison, And, Or };
    enum class Operator : std::uint8_t {
        Equal,
        NotEqual,
        Less,
        LessOrEqual,
        Greater,
        GreaterOrEqual,
        Like
    };
    enum class Literal : std::uint8_t {
        Text,  // in single quotes
        Date,  // between #
        Word,  // a number, True, False or Null
    };

    Kind kind = Kind::Comparison;
    std::vector<CriteriaNode> parts;  // of And and Or
    // Of a comparison.
    std::string column;
    Operator comparison = Operator::Equal;
    Literal literal = Literal::Word;
    std::string value;
};

// Reads `name op value` joined by AND and OR, AND binding closer, with parentheses. A name may
// stand in brackets; a quote inside a text is doubled. Raises 3001 saying what is wrong.
[[nodiscard]] CriteriaNode parseCriteria(std::string_view text);

// The columns of Recordset.Sort, `name [ASC|DESC]` with commas between.
struct SortName {
    std::string column;
    bool descending = false;
};
[[nodiscard]] std::vector<SortName> parseSort(std::string_view text);

}  // namespace kap::ado
