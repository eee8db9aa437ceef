#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// What data access writes in braces, the same for every server: {d '2021-02-03'}, {t '04:05:06'},
// {ts '2021-02-03 04:05:06'}, {guid '...'} and {fn name(...)}.
namespace kap::tsql {

ExpressionPtr Parser::escaped() {
    const int line = next().line;
    ExpressionPtr result;
    if (acceptKeyword("FN")) {
        result = escapedCall();
    } else if (acceptKeyword("D") || acceptKeyword("TS")) {
        result = escapedText({SqlType::DateTime}, line);
    } else if (acceptKeyword("T")) {
        result = timeOfToday(escapedText({SqlType::DateTime}, line), line);
    } else if (acceptKeyword("GUID")) {
        constexpr int kBytes = 16;
        result = escapedText({SqlType::UniqueIdentifier, kBytes}, line);
    } else {
        unexpected();
    }
    expectOperator("}");
    return result;
}

// The text by the style of the international form, whatever the session's order of dates.
ExpressionPtr Parser::escapedText(const TypeSpec& type, int line) {
    if (peek().kind != TokenKind::Text) unexpected();
    CastExpression result;
    result.value = literal(LiteralKind::Text);
    result.type = type;
    result.style = make(Literal{LiteralKind::Integer, "121"}, line);
    return make(std::move(result), line, 1);
}

// DATEADD(day, DATEDIFF(day, 0, GETDATE()), time)
ExpressionPtr Parser::timeOfToday(ExpressionPtr time, int line) {
    const auto day = [&] { return make(ColumnReference{{{"day"}, line}}, line); };
    ExpressionPtr days =
        invoked("DATEDIFF", line, day(), make(Literal{LiteralKind::Integer, "0"}, line),
                invoked("GETDATE", line));
    return invoked("DATEADD", line, day(), std::move(days), std::move(time));
}

}  // namespace kap::tsql
