#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// Cursors, and variables that hold them.
namespace kap::tsql {

bool Parser::isCursorVariable(const std::string& name) const {
    return std::ranges::any_of(
        cursorVariables_, [&](const std::string& each) { return equalsIgnoringCase(each, name); });
}

// A cursor's name, or a variable that holds one.
std::string Parser::cursorName() {
    if (peek().kind != TokenKind::Variable) return name();
    const int line = peek().line;
    std::string result = variable();
    if (isCursorVariable(result)) return result;
    throw ServerError(Message::NoCursorVariable, {result}, line);
}

Statement::Node Parser::declareCursor(std::string name) {
    DeclareCursorStatement result;
    result.name = std::move(name);
    result.readOnly = acceptKeyword("INSENSITIVE");
    if (result.readOnly) result.kind = CursorKind::Static;
    result.scroll = acceptKeyword("SCROLL");
    expectKeyword("CURSOR");
    cursorDefinition(result);
    return result;
}

// What stands behind CURSOR: options, FOR and the query.
void Parser::cursorDefinition(DeclareCursorStatement& cursor) {
    cursorOptions(cursor);
    const int line = peek().line;
    const std::size_t draws = draws_;
    QueryPtr rows = query();
    refuseRowsAsText(*rows, "DECLARE CURSOR");
    cursor.query = std::make_shared<Statement>(Statement{SelectStatement{std::move(rows)}, line});
    refuseDraws(draws, Message::DrawNotHere);
    cursorPurpose(cursor);
}

// SET @c = CURSOR FOR query; SET @c = cursor.
Statement::Node Parser::assignCursor(std::string variable) {
    const int line = peek().line;
    if (!isCursorVariable(variable)) {
        throw ServerError(Message::NoCursorVariable, {variable}, line);
    }
    expectOperator("=");
    AssignCursorStatement result;
    result.variable = std::move(variable);
    if (!acceptKeyword("CURSOR")) {
        result.source = cursorName();
        return result;
    }
    result.definition = std::make_shared<DeclareCursorStatement>();
    cursorDefinition(*result.definition);
    return result;
}

void Parser::cursorOptions(DeclareCursorStatement& cursor) {
    std::vector<std::string> said;
    if (cursor.scroll) said.emplace_back("SCROLL");
    while (!acceptKeyword("FOR")) {
        cursorOption(cursor, said);
    }
    const bool forwardOnly = std::ranges::find(said, "FORWARD_ONLY") != said.end();
    cursor.scroll = cursor.scroll && !forwardOnly;
}

// A static cursor can be scrolled and not written through; a fast one neither.
void Parser::cursorOption(DeclareCursorStatement& cursor, std::vector<std::string>& said) {
    struct Option {
        const char* word;
        CursorKind kind;
        bool scrolls;
        bool readOnly;
    };
    static constexpr std::array kOptions =
        std::to_array<Option>({{"STATIC", CursorKind::Static, true, true},
                               {"KEYSET", CursorKind::Keyset, true, false},
                               {"DYNAMIC", CursorKind::Dynamic, true, false},
                               {"FAST_FORWARD", CursorKind::FastForward, false, true},
                               {"SCROLL", CursorKind::Unsaid, true, false},
                               {"READ_ONLY", CursorKind::Unsaid, false, true},
                               {"LOCAL", CursorKind::Unsaid, false, false},
                               {"GLOBAL", CursorKind::Unsaid, false, false},
                               {"FORWARD_ONLY", CursorKind::Unsaid, false, false},
                               {"OPTIMISTIC", CursorKind::Unsaid, false, false},
                               {"SCROLL_LOCKS", CursorKind::Unsaid, false, false},
                               {"TYPE_WARNING", CursorKind::Unsaid, false, false}});
    const auto* const option =
        std::ranges::find_if(kOptions, [this](const Option& each) { return atKeyword(each.word); });
    if (option == kOptions.end()) unexpected();
    refuseCursorOption(option->word, said);
    said.emplace_back(option->word);
    if (option->kind != CursorKind::Unsaid) cursor.kind = option->kind;
    cursor.scroll = cursor.scroll || option->scrolls;
    cursor.readOnly = cursor.readOnly || option->readOnly;
    cursor.local = cursor.local || said.back() == "LOCAL";
    next();
}

// What cannot stand beside what was said before.
void Parser::refuseCursorOption(std::string_view option,
                                const std::vector<std::string>& said) const {
    using Pair = std::pair<std::string_view, std::string_view>;
    static constexpr std::array kConflicts = std::to_array<Pair>({{"LOCAL", "GLOBAL"},
                                                                  {"SCROLL", "FORWARD_ONLY"},
                                                                  {"SCROLL", "FAST_FORWARD"},
                                                                  {"FORWARD_ONLY", "FAST_FORWARD"},
                                                                  {"STATIC", "KEYSET"},
                                                                  {"STATIC", "DYNAMIC"},
                                                                  {"STATIC", "FAST_FORWARD"},
                                                                  {"KEYSET", "DYNAMIC"},
                                                                  {"KEYSET", "FAST_FORWARD"},
                                                                  {"DYNAMIC", "FAST_FORWARD"},
                                                                  {"READ_ONLY", "SCROLL_LOCKS"},
                                                                  {"READ_ONLY", "OPTIMISTIC"},
                                                                  {"SCROLL_LOCKS", "OPTIMISTIC"},
                                                                  {"FAST_FORWARD", "SCROLL_LOCKS"},
                                                                  {"FAST_FORWARD", "OPTIMISTIC"}});
    for (const std::string& before : said) {
        const bool conflict =
            before == option || std::ranges::any_of(kConflicts, [&](const Pair& pair) {
                return (pair.first == option && pair.second == before) ||
                       (pair.second == option && pair.first == before);
            });
        if (!conflict) continue;
        throw ServerError(Message::ConflictingCursorOptions, {before, option}, peek().line);
    }
}

void Parser::cursorPurpose(DeclareCursorStatement& cursor) {
    if (!acceptKeyword("FOR")) return;
    if (acceptKeyword("READ")) {
        expectKeyword("ONLY");
        cursor.readOnly = true;
        return;
    }
    expectKeyword("UPDATE");
    if (!acceptKeyword("OF")) return;
    do {
        cursor.updatable.push_back(name());
    } while (acceptOperator(","));
}

Statement::Node Parser::openCursor(CursorAction action) {
    const bool global = acceptKeyword("GLOBAL");
    return CursorStatement{action, cursorName(), global};
}

Statement::Node Parser::fetchStatement() {
    using Direction = FetchStatement::Direction;
    static constexpr std::pair<const char*, Direction> kDirections[] = {
        {"NEXT", Direction::Next},         {"PRIOR", Direction::Prior},
        {"FIRST", Direction::First},       {"LAST", Direction::Last},
        {"ABSOLUTE", Direction::Absolute}, {"RELATIVE", Direction::Relative}};
    FetchStatement result;
    for (const auto& [word, direction] : kDirections) {
        if (!atKeyword(word) || atKeyword("INTO", 1)) continue;
        next();
        result.direction = direction;
        if (direction == Direction::Absolute || direction == Direction::Relative) {
            result.distance = value();
        }
        break;
    }
    acceptKeyword("FROM");
    result.global = acceptKeyword("GLOBAL");
    result.cursor = cursorName();
    if (!acceptKeyword("INTO")) return result;
    do {
        result.into.push_back(variable());
    } while (acceptOperator(","));
    return result;
}

}  // namespace kap::tsql
