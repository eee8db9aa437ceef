#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// What stands behind OVER.
namespace kap::tsql {

Window Parser::window() {
    Window result;
    expectOperator("(");
    if (acceptKeyword("PARTITION")) {
        expectKeyword("BY");
        result.partitionBy = valueList();
    }
    if (acceptKeyword("ORDER")) {
        expectKeyword("BY");
        result.orderBy = orderItems();
    }
    if (atKeyword("ROWS") || atKeyword("RANGE")) result.frame = windowFrame();
    expectOperator(")");
    return result;
}

// ROWS BETWEEN 2 PRECEDING AND CURRENT ROW, and its short form that ends at the current row.
std::string Parser::windowFrame() {
    const int line = peek().line;
    const bool range = atKeyword("RANGE");
    next();
    std::string text = range ? "RANGE " : "ROWS ";
    const bool between = acceptKeyword("BETWEEN");
    const FrameEdge first = frameEdge();
    FrameEdge last{FramePlace::Current, "CURRENT ROW"};
    if (between) {
        expectKeyword("AND");
        last = frameEdge();
    }
    const auto counted = [](const FrameEdge& edge) {
        return edge.place == FramePlace::Before || edge.place == FramePlace::Behind;
    };
    if (range && (counted(first) || counted(last))) {
        throw ServerError(Message::RangeFrameNotSupported, {}, line);
    }
    const bool possible = first.place != FramePlace::End && last.place != FramePlace::Start &&
                          first.place <= last.place;
    if (!possible) {
        throw ServerError(Message::InvalidWindowFrame, {first.text, last.text}, line);
    }
    return text + "BETWEEN " + first.text + " AND " + last.text;
}

Parser::FrameEdge Parser::frameEdge() {
    if (acceptKeyword("CURRENT")) {
        expectKeyword("ROW");
        return {FramePlace::Current, "CURRENT ROW"};
    }
    const bool unbounded = acceptKeyword("UNBOUNDED");
    if (!unbounded && peek().kind != TokenKind::Integer) unexpected();
    const std::string count = unbounded ? "UNBOUNDED" : next().text;
    const bool before = acceptKeyword("PRECEDING");
    if (!before) expectKeyword("FOLLOWING");
    const FramePlace edge = before ? FramePlace::Start : FramePlace::End;
    const FramePlace counted = before ? FramePlace::Before : FramePlace::Behind;
    return {unbounded ? edge : counted, count + (before ? " PRECEDING" : " FOLLOWING")};
}

}  // namespace kap::tsql
