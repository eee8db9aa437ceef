#include <algorithm>
#include <array>
#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// MERGE.
namespace kap::tsql {

namespace {

const char* clauseName(MergeAction::When when) {
    switch (when) {
        case MergeAction::When::Matched:
            return "WHEN MATCHED";
        case MergeAction::When::NotMatched:
            return "WHEN NOT MATCHED";
        case MergeAction::When::NotMatchedBySource:
            break;
    }
    return "WHEN NOT MATCHED BY SOURCE";
}

const char* actionName(const MergeAction& action) {
    static constexpr std::array kNames{"UPDATE", "INSERT", "DELETE"};
    return kNames.at(action.action.index());
}

// Rows that are there can be changed, rows that are not there can be made; the second of two like
// clauses must do something else than the first, and can do so only where that one has a condition.
void checkAction(const MergeStatement& merge, const MergeAction& action) {
    const std::string clause = clauseName(action.when);
    const bool inserts = std::holds_alternative<InsertStatement>(action.action);
    if (inserts != (action.when == MergeAction::When::NotMatched)) {
        throw ServerError(Message::MergeActionNotAllowed, {actionName(action), clause},
                          action.line);
    }
    for (const MergeAction& before : merge.actions) {
        if (before.when != action.when) continue;
        if (before.action.index() == action.action.index()) {
            throw ServerError(Message::MergeActionTwice, {actionName(action), clause}, action.line);
        }
        if (before.condition == nullptr) {
            throw ServerError(Message::UnreachableMergeClause, {clause, clause}, action.line);
        }
    }
}

}  // namespace

MergeStatement Parser::mergeStatement() {
    MergeStatement result;
    const std::size_t draws = draws_;
    result.top = optionalTop();
    acceptKeyword("INTO");
    result.table = tableName();
    tableHints(HintsStand::BehindWith);
    if (acceptKeyword("AS")) {
        result.alias = name();
    } else if (atName() && !atKeyword("USING")) {
        result.alias = name();
    }
    expectKeyword("USING");
    result.source.push_back(joinedSource());
    expectKeyword("ON");
    result.condition = condition();
    while (atKeyword("WHEN"))
        result.actions.push_back(mergeAction(result));
    if (result.actions.empty()) unexpected();
    result.output = outputClause();
    result.maxRecursion = queryHints();
    refuseDraws(draws, Message::DrawInMerge);
    if (!atOperator(";")) {
        throw ServerError(Message::MergeWithoutSemicolon, {}, peek().line);
    }
    return result;
}

MergeAction Parser::mergeAction(const MergeStatement& merge) {
    MergeAction result;
    result.line = peek().line;
    result.when = mergeWhen();
    if (acceptKeyword("AND")) result.condition = condition();
    expectKeyword("THEN");
    if (acceptKeyword("UPDATE")) {
        UpdateStatement update;
        expectKeyword("SET");
        do {
            update.assignments.push_back(assignment());
        } while (acceptOperator(","));
        result.action = std::move(update);
    } else if (acceptKeyword("DELETE")) {
        result.action = DeleteStatement{};
    } else {
        expectKeyword("INSERT");
        result.action = mergeInsert();
    }
    checkAction(merge, result);
    return result;
}

MergeAction::When Parser::mergeWhen() {
    expectKeyword("WHEN");
    const bool negated = acceptKeyword("NOT");
    expectKeyword("MATCHED");
    if (!negated) return MergeAction::When::Matched;
    if (!acceptKeyword("BY")) return MergeAction::When::NotMatched;
    if (acceptKeyword("SOURCE")) return MergeAction::When::NotMatchedBySource;
    expectKeyword("TARGET");
    return MergeAction::When::NotMatched;
}

InsertStatement Parser::mergeInsert() {
    InsertStatement result;
    if (atOperator("(")) result.columns = nameList();
    if (acceptKeyword("DEFAULT")) {
        expectKeyword("VALUES");
        result.defaultValues = true;
        return result;
    }
    expectKeyword("VALUES");
    insertRows(result);
    if (result.rows.size() > 1) unexpected();
    return result;
}

}  // namespace kap::tsql
