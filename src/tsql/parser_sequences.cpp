#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// CREATE and ALTER SEQUENCE, NEXT VALUE FOR and where it may stand, CREATE SYNONYM.
namespace kap::tsql {

Statement::Node Parser::createSequence() {
    SequenceStatement result;
    result.name = objectName();
    sequenceOptions(result);
    return result;
}

Statement::Node Parser::alterSequence() {
    SequenceStatement result;
    result.alters = true;
    result.name = objectName();
    const std::size_t start = position_;
    sequenceOptions(result);
    if (position_ == start) throw ServerError(Message::NothingAltered, {}, result.name.line);
    return result;
}

SequenceStatement Parser::wholeSequence() {
    SequenceStatement result;
    sequenceOptions(result);
    if (!atEnd()) unexpected();
    return result;
}

void Parser::sequenceOptions(SequenceStatement& sequence) {
    std::vector<std::string> said;
    while (sequenceOption(sequence, said)) {
    }
}

void Parser::sayOnce(const char* argument, std::vector<std::string>& said) const {
    if (std::ranges::find(said, argument) != said.end()) {
        throw ServerError(Message::SequenceArgumentTwice, {argument}, peek().line);
    }
    said.emplace_back(argument);
}

bool Parser::sequenceOption(SequenceStatement& sequence, std::vector<std::string>& said) {
    const int line = peek().line;
    if (acceptKeyword("AS")) {
        if (sequence.alters) throw ServerError(Message::TypeInAlter, {}, line);
        sayOnce("AS", said);
        sequence.type = type("", 0);
        return true;
    }
    if (acceptKeyword("START")) {
        if (sequence.alters) throw ServerError(Message::StartInAlter, {}, line);
        sayOnce("START WITH", said);
        expectKeyword("WITH");
        sequence.start = sequenceNumber("START WITH");
        return true;
    }
    if (acceptKeyword("RESTART")) {
        if (!sequence.alters) throw ServerError(Message::RestartInCreate, {}, line);
        sayOnce("RESTART WITH", said);
        sequence.restarts = true;
        if (acceptKeyword("WITH")) sequence.start = sequenceNumber("RESTART WITH");
        return true;
    }
    if (acceptKeyword("INCREMENT")) {
        sayOnce("INCREMENT BY", said);
        expectKeyword("BY");
        sequence.increment = sequenceNumber("INCREMENT BY");
        return true;
    }
    if (sequenceLimit("MINVALUE", sequence.minimum, said)) return true;
    if (sequenceLimit("MAXVALUE", sequence.maximum, said)) return true;
    if (sequenceSwitch("CYCLE", sequence.cycles, said)) return true;
    if (!sequenceSwitch("CACHE", sequence.caches, said)) return false;
    const bool sized = peek().kind == TokenKind::Integer || atOperator("-");
    if (*sequence.caches && sized) sequence.cacheSize = sequenceNumber("CACHE");
    return true;
}

// MINVALUE 1, NO MINVALUE, and MINVALUE alone, which says the same.
bool Parser::sequenceLimit(const char* word, SequenceLimit& limit, std::vector<std::string>& said) {
    if (atKeyword("NO") && atKeyword(word, 1)) {
        next();
        next();
        limit.none = true;
        sayOnce(word, said);
        return true;
    }
    if (!acceptKeyword(word)) return false;
    sayOnce(word, said);
    const bool sized = peek().kind == TokenKind::Integer || atOperator("-") || atOperator("+");
    limit.none = !sized;
    if (sized) limit.value = sequenceNumber(word);
    return true;
}

// CYCLE, NO CYCLE.
bool Parser::sequenceSwitch(const char* word, std::optional<bool>& choice,
                            std::vector<std::string>& said) {
    const bool no = atKeyword("NO") && atKeyword(word, 1);
    if (!no && !atKeyword(word)) return false;
    if (no) next();
    next();
    sayOnce(word, said);
    choice = !no;
    return true;
}

// A whole number with its sign; no sequence counts beyond 64 bits.
std::int64_t Parser::sequenceNumber(const char* argument) {
    const int line = peek().line;
    const bool negative = atOperator("-");
    if (negative || atOperator("+")) next();
    if (peek().kind != TokenKind::Integer && peek().kind != TokenKind::Decimal) unexpected();
    const std::string digits = (negative ? "-" : "") + next().text;
    const auto number = plain::readWhole(digits);
    if (!number) throw ServerError(Message::WrongSequenceValue, {argument}, line);
    return *number;
}

// NEXT VALUE FOR name [OVER (ORDER BY ...)].
ExpressionPtr Parser::nextValue() {
    const int line = next().line;
    next();
    expectKeyword("FOR");
    ObjectName sequence = objectName();
    if (inDefault_ && sequence.parts.size() > 2 && !sequence.parts.front().empty()) {
        throw ServerError(Message::DatabaseOfDrawInDefault, {}, line);
    }
    FunctionCall result{ObjectName{{kNextValue}, line}, {}};
    result.arguments.push_back(make(ColumnReference{std::move(sequence)}, line));
    if (acceptKeyword("OVER")) {
        if (orderRefused_) throw ServerError(Message::DrawOverNotHere, {}, line);
        result.over = window();
        if (!result.over->partitionBy.empty()) {
            throw ServerError(Message::DrawPartitioned, {}, line);
        }
        if (result.over->orderBy.empty()) throw ServerError(Message::DrawOverEmpty, {}, line);
    } else {
        ++unorderedDraws_;
    }
    ++draws_;
    drawLine_ = line;
    return make(std::move(result), line, 1);
}

void Parser::refuseDraws(std::size_t before, Message message) const {
    if (draws_ != before) throw ServerError(message, {}, drawLine_);
}

// Among the arguments of a function that may leave them alone, or that is asked once for many rows.
void Parser::refuseDrawsOf(const ObjectName& function, std::size_t before) const {
    static constexpr std::array kChoosing{"isnull", "coalesce", "nullif"};
    static constexpr std::array kAggregates{"count", "count_big", "sum",        "avg",
                                            "min",   "max",       "string_agg", "checksum_agg",
                                            "stdev", "stdevp",    "var",        "varp"};
    if (function.parts.size() != 1) return;
    const std::string name = asciiLower(function.last());
    if (std::ranges::find(kChoosing, name) != kChoosing.end()) {
        refuseDraws(before, Message::DrawInChoice);
    }
    if (std::ranges::find(kAggregates, name) != kAggregates.end()) {
        refuseDraws(before, Message::DrawInAggregate);
    }
}

// How many numbers a query draws must be known from its rows alone.
void Parser::refuseDraws(const Query& query, std::size_t before, std::size_t unordered) const {
    if (queries_ > 1) refuseDraws(before, Message::DrawNotHere);
    const auto* select = std::get_if<Select>(&query.terms.front().node);
    if (query.terms.size() > 1 || select == nullptr || select->distinct) {
        refuseDraws(before, Message::DrawInUnion);
    }
    if (select->top || query.offset != nullptr) refuseDraws(before, Message::DrawWithTop);
    if (!query.orderBy.empty() && unorderedDraws_ != unordered) {
        refuseDraws(before, Message::DrawWithOrder);
    }
}

// CREATE SYNONYM name FOR object.
Statement::Node Parser::createSynonym() {
    CreateSynonymStatement result;
    result.name = objectName();
    expectKeyword("FOR");
    result.target = objectName();
    return result;
}

}  // namespace kap::tsql
