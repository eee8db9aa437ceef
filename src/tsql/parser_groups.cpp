#include <algorithm>
#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// GROUP BY: expressions, and the sets of them that ROLLUP, CUBE and GROUPING SETS stand for.
namespace kap::tsql {

namespace {

using GroupSet = std::vector<std::size_t>;
using Grouping = std::vector<GroupSet>;

constexpr std::size_t kMostSets = 4096;

GroupSet joined(const GroupSet& left, const GroupSet& right) {
    GroupSet result = left;
    for (const std::size_t each : right) {
        if (std::find(result.begin(), result.end(), each) == result.end()) result.push_back(each);
    }
    return result;
}

// (a, b, c), (a, b), (a), ().
Grouping rolledUp(const std::vector<GroupSet>& elements) {
    Grouping result{{}};
    for (const GroupSet& element : elements)
        result.insert(result.begin(), joined(result.front(), element));
    return result;
}

// Every choice of the elements.
Grouping cubed(const std::vector<GroupSet>& elements) {
    Grouping result{{}};
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        Grouping with;
        for (const GroupSet& set : result)
            with.push_back(joined(*element, set));
        result.insert(result.begin(), with.begin(), with.end());
    }
    return result;
}

// Elements that stand side by side: each set of one with each set of the other.
Grouping crossed(const Grouping& left, const Grouping& right) {
    Grouping result;
    for (const GroupSet& one : left) {
        for (const GroupSet& other : right)
            result.push_back(joined(one, other));
    }
    return result;
}

void checkNumber(std::size_t sets, int line) {
    if (sets <= kMostSets) return;
    throw unsupported("GROUP BY with more than 4096 grouping sets", line);
}

}  // namespace

void Parser::groupByClause(Select& select) {
    const int line = peek().line;
    expectKeyword("BY");
    allGroups_ = acceptKeyword("ALL");
    Grouping sets{{}};
    bool plain = true;
    do {
        const Grouping next = grouping(select);
        plain = plain && next.size() == 1 && next.front().size() == 1;
        checkNumber(sets.size() * next.size(), line);
        sets = crossed(sets, next);
    } while (acceptOperator(","));
    if (atKeyword("WITH")) {
        next();
        const bool cube = acceptKeyword("CUBE");
        if (!cube) expectKeyword("ROLLUP");
        constexpr std::size_t kMostCubed = 12;
        if (!plain) unexpected();
        if (cube && select.groupBy.size() > kMostCubed) checkNumber(kMostSets + 1, line);
        std::vector<GroupSet> elements;
        for (std::size_t i = 0; i < select.groupBy.size(); ++i)
            elements.push_back({i});
        sets = cube ? cubed(elements) : rolledUp(elements);
        plain = false;
    }
    if (!plain && allGroups_) throw unsupported("GROUP BY ALL with ROLLUP or CUBE", line);
    if (!plain) select.groupingSets = std::move(sets);
}

Parser::Grouping Parser::grouping(Select& select) {
    const Level level(*this);
    const int line = peek().line;
    if (atKeyword("ROLLUP") && atOperator("(", 1)) {
        next();
        return rolledUp(groupElements(select));
    }
    if (atKeyword("CUBE") && atOperator("(", 1)) {
        next();
        const std::vector<GroupSet> elements = groupElements(select);
        constexpr std::size_t kMostCubed = 12;
        if (elements.size() > kMostCubed) checkNumber(kMostSets + 1, line);
        return cubed(elements);
    }
    if (!atKeyword("GROUPING") || !atKeyword("SETS", 1)) return {groupElement(select)};
    next();
    next();
    expectOperator("(");
    Grouping result;
    do {
        const Grouping sets = grouping(select);
        result.insert(result.end(), sets.begin(), sets.end());
        checkNumber(result.size(), line);
    } while (acceptOperator(","));
    expectOperator(")");
    return result;
}

std::vector<Parser::GroupSet> Parser::groupElements(Select& select) {
    std::vector<GroupSet> elements;
    expectOperator("(");
    do {
        elements.push_back(groupElement(select));
    } while (acceptOperator(","));
    expectOperator(")");
    return elements;
}

// An expression, several in brackets, or "()" for all rows together. What brackets hold shows only
// behind them: "(a) + 1" is one expression.
Parser::GroupSet Parser::groupElement(Select& select) {
    if (!atOperator("(") || atQuery()) return {groupExpression(select)};
    const std::size_t start = position_;
    const std::size_t before = select.groupBy.size();
    next();
    GroupSet set;
    if (!atOperator(")")) {
        do {
            set.push_back(groupExpression(select));
        } while (acceptOperator(","));
    }
    expectOperator(")");
    const bool ends = atEnd() || atOperator(",") || atOperator(")") || atStatement() ||
                      atKeyword("WITH") || atKeyword("HAVING") || atKeyword("ORDER") ||
                      atKeyword("UNION") || atKeyword("EXCEPT") || atKeyword("INTERSECT") ||
                      atKeyword("OPTION") || atKeyword("FOR");
    if (ends) return set;
    position_ = start;
    select.groupBy.resize(before);
    return {groupExpression(select)};
}

std::size_t Parser::groupExpression(Select& select) {
    select.groupBy.push_back(value());
    return select.groupBy.size() - 1;
}

}  // namespace kap::tsql
