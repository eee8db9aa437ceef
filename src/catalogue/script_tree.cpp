#include "catalogue/script_tree.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>
#include <utility>

#include "catalogue/script_tokens.hpp"

namespace kap {
namespace {

// From those that bind least to those that bind most; between the second and the third binds Not.
using OperatorsOfLevel = std::vector<std::string_view>;
const std::array<OperatorsOfLevel, 7>& operatorLevels() {
    static const std::array<OperatorsOfLevel, 7> levels = {{{"Or"},
                                                            {"And"},
                                                            {"=", "<>", "<", ">", "<=", ">=", "Is"},
                                                            {"&"},
                                                            {"+", "-"},
                                                            {"Mod"},
                                                            {"*", "/"}}};
    return levels;
}
constexpr std::size_t kLevelOfNot = 2;

// Reads the expressions of one line.
class ExpressionReader {
public:
    explicit ExpressionReader(std::span<const ScriptToken> tokens) : tokens_(tokens) {}

    [[nodiscard]] bool atEnd() const { return at_ == tokens_.size(); }

    bool takeWord(std::string_view word) {
        const bool found = !atEnd() && tokens_[at_].isWord(word);
        at_ += found ? 1 : 0;
        return found;
    }

    bool takeSign(std::string_view sign) {
        const bool found = !atEnd() && tokens_[at_].isSign(sign);
        at_ += found ? 1 : 0;
        return found;
    }

    void expectEnd() const {
        if (!atEnd()) {
            throw std::invalid_argument("what is not known: " + tokens_[at_].text);
        }
    }

    ScriptExpression expression(std::size_t level = 0) {
        if (level == kLevelOfNot && takeWord("Not")) {
            return {ScriptPart::Not, "Not", {expression(level)}};
        }
        if (level == operatorLevels().size()) {
            return value();
        }
        ScriptExpression left = expression(level + 1);
        for (std::string found = takeOperator(level); !found.empty(); found = takeOperator(level)) {
            ScriptExpression right = expression(level + 1);
            left = {ScriptPart::Operation, std::move(found), {std::move(left), std::move(right)}};
        }
        return left;
    }

    std::vector<ScriptExpression> list() {
        std::vector<ScriptExpression> made;
        if (atEnd() || tokens_[at_].isSign(")")) {
            return made;
        }
        do {
            made.push_back(expression());
        } while (takeSign(","));
        return made;
    }

    // An object, its members and what these give, up to arguments without parentheses.
    ScriptExpression chain() {
        ScriptExpression made = {ScriptPart::Name, takeName(), {}};
        while (!atEnd()) {
            if (takeSign(".")) {
                std::string name = takeName();
                made = {ScriptPart::Member, std::move(name), {std::move(made)}};
            } else if (tokens_[at_].isSign("(") && !tokens_[at_].apart) {
                ++at_;
                made = call(std::move(made), list());
                expectClosed();
            } else {
                break;
            }
        }
        return made;
    }

    static ScriptExpression call(ScriptExpression callee, std::vector<ScriptExpression> arguments) {
        if (callee.isName("Array")) {
            return {ScriptPart::List, {}, std::move(arguments)};
        }
        arguments.insert(arguments.begin(), std::move(callee));
        return {ScriptPart::Call, {}, std::move(arguments)};
    }

private:
    std::string takeOperator(std::size_t level) {
        for (const std::string_view one : operatorLevels().at(level)) {
            if (takeSign(one) || takeWord(one)) {
                return std::string(one);
            }
        }
        return {};
    }

    ScriptExpression value() {
        if (atEnd()) {
            throw std::invalid_argument("a value is missing");
        }
        const ScriptToken& token = tokens_[at_];
        if (token.kind == ScriptTokenKind::Word) {
            return chain();
        }
        ++at_;
        if (token.kind == ScriptTokenKind::Text) {
            return {ScriptPart::Text, token.text, {}};
        }
        if (token.kind == ScriptTokenKind::Number) {
            return {ScriptPart::Number, token.text, {}};
        }
        if (token.isSign("-")) {
            ScriptExpression number = value();
            number.text.insert(0, "-");
            return number;
        }
        if (token.isSign("(")) {
            ScriptExpression within = {ScriptPart::Group, {}, {expression()}};
            expectClosed();
            return within;
        }
        throw std::invalid_argument("what is not known: " + token.text);
    }

    std::string takeName() {
        if (atEnd() || tokens_[at_].kind != ScriptTokenKind::Word) {
            throw std::invalid_argument("a name is missing");
        }
        return tokens_[at_++].text;
    }

    void expectClosed() {
        if (!takeSign(")")) {
            throw std::invalid_argument("a parenthesis is not closed");
        }
    }

    std::span<const ScriptToken> tokens_;
    std::size_t at_ = 0;
};

using Parts = std::vector<ScriptExpression>;

// "For Each name In collection", "For name = first To last".
ScriptStatement loopOver(ExpressionReader& reader) {
    if (reader.takeWord("Each")) {
        ScriptExpression name = reader.chain();
        reader.takeWord("In");
        return {ScriptAction::ForEach, Parts{std::move(name), reader.expression()}, {}};
    }
    Parts parts = {reader.chain()};
    reader.takeSign("=");
    parts.push_back(reader.expression());
    reader.takeWord("To");
    parts.push_back(reader.expression());
    return {ScriptAction::For, std::move(parts), {}};
}

ScriptStatement assignmentOrCall(ExpressionReader& reader) {
    reader.takeWord("Set");
    ScriptExpression first = reader.chain();
    if (reader.takeSign("=")) {
        return {ScriptAction::Assign, Parts{std::move(first), reader.expression()}, {}};
    }
    const bool complete = reader.atEnd() && first.part == ScriptPart::Call;
    return {ScriptAction::Call,
            Parts{complete ? std::move(first)
                           : ExpressionReader::call(std::move(first), reader.list())},
            {}};
}

ScriptStatement statementOf(ExpressionReader& reader, std::span<const ScriptToken> tokens) {
    if (reader.takeWord("If")) {
        ScriptExpression condition = reader.expression();
        reader.takeWord("Then");
        return {ScriptAction::If, Parts{std::move(condition)}, {}};
    }
    if (reader.takeWord("Else")) {
        return {ScriptAction::Else, {}, {}};
    }
    if (reader.takeWord("Do")) {
        const bool until = reader.takeWord("Until");
        reader.takeWord("While");
        return {until ? ScriptAction::Until : ScriptAction::While, Parts{reader.expression()}, {}};
    }
    if (reader.takeWord("For")) {
        return loopOver(reader);
    }
    if (reader.takeWord("Loop") || reader.takeWord("Next") ||
        (reader.takeWord("End") && reader.takeWord("If"))) {
        return {ScriptAction::End, {}, {}};
    }
    if (reader.takeWord("On")) {
        const bool begins = tokens.size() > 2 && tokens[2].isWord("Resume");
        return {begins ? ScriptAction::Try : ScriptAction::EndTry, {}, {}};
    }
    if (reader.takeWord("Dim")) {
        return {ScriptAction::Declare, reader.list(), {}};
    }
    if (reader.takeWord("WScript")) {
        reader.takeSign(".");
        reader.takeWord("Echo");
        return {ScriptAction::Print, reader.list(), {}};
    }
    return assignmentOrCall(reader);
}

ScriptStatement readLine(std::string_view line) {
    std::vector<ScriptToken> tokens = scriptTokens(line);
    std::string comment;
    if (!tokens.empty() && tokens.back().kind == ScriptTokenKind::Comment) {
        comment = tokens.back().text;
        tokens.pop_back();
    }
    ScriptStatement statement;
    if (!tokens.empty()) {
        ExpressionReader reader(tokens);
        statement = statementOf(reader, tokens);
        const bool ofErrors =
            statement.action == ScriptAction::Try || statement.action == ScriptAction::EndTry;
        if (!ofErrors) {
            reader.expectEnd();
        }
    }
    statement.comment = std::move(comment);
    statement.looksAtError = occursIn("Err", statement);
    return statement;
}

}  // namespace

std::vector<ScriptStatement> readScript(std::string_view script) {
    std::vector<ScriptStatement> statements;
    while (!script.empty()) {
        const std::size_t end = script.find('\n');
        statements.push_back(readLine(script.substr(0, end)));
        script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
    }
    return statements;
}

bool occursIn(std::string_view name, const ScriptExpression& expression) {
    return expression.isName(name) ||
           std::ranges::any_of(expression.parts,
                               [&](const ScriptExpression& part) { return occursIn(name, part); });
}

bool occursIn(std::string_view name, const ScriptStatement& statement) {
    return std::ranges::any_of(statement.parts,
                               [&](const ScriptExpression& part) { return occursIn(name, part); });
}

}  // namespace kap
