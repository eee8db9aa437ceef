// The examples are written once, in Basic; this is how Python writes them. Only what examples are
// made of is known: objects and their members, loops, conditions, and errors that are looked at.
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <span>
#include <stdexcept>

#include <kaputil/catalogue/documentation.hpp>

#include "catalogue/script_tokens.hpp"

namespace kap {
namespace {

using Tokens = std::span<const ScriptToken>;
using Line = std::vector<ScriptToken>;

// Words that Python has others for. Those of a name in front of an opening parenthesis, too.
const std::map<std::string_view, std::string_view>& pythonWords() {
    static const std::map<std::string_view, std::string_view> words = {
        {"CreateObject", "kaputil.Dispatch"},
        {"Nothing", "kaputil.Nothing"},
        {"Empty", "kaputil.Empty"},
        {"Null", "None"},
        {"Not", "not"},
        {"And", "and"},
        {"Or", "or"},
        {"Is", "is"},
        {"Mod", "%"},
        {"Len", "len"},
        {"CStr", "str"},
        {"DateSerial", "datetime.datetime"},
        {"vbCrLf", R"("\r\n")"},
        {"vbTab", R"("\t")"}};
    return words;
}

std::string pythonText(std::string_view text) {
    std::string made = "\"";
    for (const char unit : text) {
        if (unit == '"' || unit == '\\') {
            made += '\\';
        }
        made += unit;
    }
    return made + '"';
}

std::size_t closingOf(Tokens tokens, std::size_t open) {
    int depth = 0;
    for (std::size_t i = open; i < tokens.size(); ++i) {
        depth += tokens[i].isSign("(") ? 1 : 0;
        depth -= tokens[i].isSign(")") ? 1 : 0;
        if (depth == 0) {
            return i;
        }
    }
    throw std::invalid_argument("a parenthesis is not closed");
}

// Where the first sign "=" outside of parentheses is, or the number of tokens.
std::size_t assignmentIn(Tokens tokens) {
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].isSign("(")) {
            i = closingOf(tokens, i);
        } else if (tokens[i].isSign("=")) {
            return i;
        }
    }
    return tokens.size();
}

// Where what is called ends and its arguments begin: "cn.Execute" of cn.Execute "..."
std::size_t endOfCalled(Tokens tokens) {
    std::size_t i = 1;
    while (i < tokens.size()) {
        if (tokens[i].isSign(".")) {
            i += 2;
        } else if (tokens[i].isSign("(") && !tokens[i].apart) {
            i = closingOf(tokens, i) + 1;
        } else {
            break;
        }
    }
    return std::min(i, tokens.size());
}

class PythonWriter {
public:
    std::string write(std::string_view script) {
        while (!script.empty()) {
            const std::size_t end = script.find('\n');
            lines_.push_back(scriptTokens(script.substr(0, end)));
            script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
        }
        findReferences();
        for (const Line& line : lines_) {
            writeLine(line);
        }
        return std::move(python_);
    }

private:
    // Variables that begin with a value, are handed to a member as they are and read afterwards:
    // members write into these.
    void findReferences() {
        std::set<std::string> begun;
        std::set<std::string> given;
        for (const Line& line : lines_) {
            for (std::size_t i = 0; i < line.size(); ++i) {
                if (line[i].kind == ScriptTokenKind::Word && given.contains(line[i].text)) {
                    references_.insert(line[i].text);
                }
            }
            if (line.size() >= 3 && line[1].isSign("=") && isValue(line, 2)) {
                begun.insert(line[0].text);
                continue;
            }
            for (std::size_t i = 1; i < line.size(); ++i) {
                if (begun.contains(line[i].text) && isArgument(line, i) && calls(line[0])) {
                    given.insert(line[i].text);
                }
            }
        }
    }

    static bool calls(const ScriptToken& first) {
        constexpr std::array<std::string_view, 4> kOthers = {"WScript", "If", "Do", "For"};
        return std::ranges::find(kOthers, first.text) == kOthers.end();
    }

    static bool isValue(const Line& line, std::size_t at) {
        return line[at].kind != ScriptTokenKind::Word || line[at].isWord("True") ||
               line[at].isWord("False") || line[at].isWord("Empty");
    }

    // A variable by itself between commas, parentheses or at an end of the arguments.
    static bool isArgument(Tokens tokens, std::size_t at) {
        const ScriptToken& before = tokens[at - 1];
        const bool begins = before.isSign(",") || before.isSign("(") ||
                            (before.kind == ScriptTokenKind::Word && tokens[at].apart &&
                             !pythonWords().contains(before.text));
        const bool ends = at + 1 == tokens.size() || tokens[at + 1].isSign(",") ||
                          tokens[at + 1].isSign(")") ||
                          tokens[at + 1].kind == ScriptTokenKind::Comment;
        return begins && ends && tokens[at].kind == ScriptTokenKind::Word;
    }

    void put(const std::string& statement, const std::string& comment = {}) {
        std::string line = std::string(static_cast<std::size_t>(depth_) * 4, ' ') + statement;
        if (!comment.empty()) {
            line += (statement.empty() ? "#" : "  #") + comment;
        }
        python_ += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }

    void writeLine(const Line& line) {
        std::string comment;
        Tokens tokens = line;
        if (!tokens.empty() && tokens.back().kind == ScriptTokenKind::Comment) {
            comment = tokens.back().text;
            tokens = tokens.first(tokens.size() - 1);
        }
        if (tokens.empty()) {
            put({}, comment);
        } else if (!writeBlock(tokens, comment)) {
            lookAtError(tokens);
            put(statement(tokens), comment);
        }
    }

    // What begins or ends a block, or says nothing in Python.
    bool writeBlock(Tokens tokens, const std::string& comment) {
        const ScriptToken& first = tokens.front();
        if (first.isWord("If")) {
            begin("if " + condition(tokens.subspan(1, tokens.size() - 2)), comment);
        } else if (first.isWord("Else")) {
            --depth_;
            begin("else", comment);
        } else if (first.isWord("Do")) {
            const bool until = tokens[1].isWord("Until");
            begin((until ? "while not " : "while ") + condition(tokens.subspan(2)), comment);
        } else if (first.isWord("For") && tokens[1].isWord("Each")) {
            begin("for " + tokens[2].text + " in " + expression(tokens.subspan(4)), comment);
        } else if (first.isWord("For")) {
            begin("for " + tokens[1].text + " in range(" + tokens[3].text + ", " +
                      expression(tokens.subspan(5)) + " + 1)",
                  comment);
        } else if (first.isWord("Loop") || first.isWord("Next") || first.isWord("End")) {
            --depth_;
        } else if (first.isWord("On")) {
            onError(tokens[2].isWord("Resume"));
        } else {
            return first.isWord("Dim");
        }
        return true;
    }

    void begin(const std::string& statement, const std::string& comment) {
        put(statement + ":", comment);
        ++depth_;
    }

    // Errors are looked at from "On Error Resume Next" to "On Error GoTo 0".
    void onError(bool begins) {
        if (begins) {
            begin("try", {});
            trying_ = true;
        } else {
            --depth_;
            trying_ = false;
        }
    }

    void lookAtError(Tokens tokens) {
        const bool looks =
            std::ranges::any_of(tokens, [](const ScriptToken& one) { return one.isWord("Err"); });
        if (looks && trying_) {
            --depth_;
            begin("except kaputil.AutomationError as error", {});
            trying_ = false;
        }
    }

    std::string statement(Tokens tokens) {
        if (tokens.front().isWord("Set")) {
            tokens = tokens.subspan(1);
        }
        if (tokens.front().isWord("WScript")) {
            return "print(" + expression(tokens.subspan(3)) + ")";
        }
        const std::size_t assignment = assignmentIn(tokens);
        if (assignment < tokens.size()) {
            return assigned(tokens.first(assignment), tokens.subspan(assignment + 1));
        }
        const std::size_t end = endOfCalled(tokens);
        std::string called = expression(tokens.first(end));
        if (end == tokens.size() && called.ends_with(')')) {
            return called;
        }
        return called + "(" + expression(tokens.subspan(end), /*handedOver=*/true) + ")";
    }

    std::string assigned(Tokens target, Tokens value) {
        const std::string name = target.front().text;
        if (target.size() == 1 && references_.contains(name)) {
            const bool known = !known_.insert(name).second;
            return known ? name + ".value = " + expression(value)
                         : name + " = kaputil.Ref(" + expression(value) + ")";
        }
        std::string made = expression(target);
        if (made.ends_with(')')) {  // an element: the last parentheses are its index
            const std::size_t open = made.rfind('(');
            made[open] = '[';
            made.back() = ']';
        }
        return made + " = " + expression(value);
    }

    std::string condition(Tokens tokens) {
        equal_ = "==";
        std::string made = expression(tokens);
        equal_ = "=";
        return made;
    }

    // `handedOver`: the tokens are the arguments of a call, in which a variable by itself is handed
    // to the member; anywhere else its value is meant.
    std::string expression(Tokens tokens, bool handedOver = false) {
        std::string made;
        std::vector<bool> handed = {handedOver};
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            const ScriptToken& token = tokens[i];
            if (token.isWord("Array") && i + 1 < tokens.size()) {
                const std::size_t end = closingOf(tokens, i + 1);
                made += blankBefore(made, token) + "[" +
                        expression(tokens.subspan(i + 2, end - i - 2)) + "]";
                i = end;
                continue;
            }
            if (token.isSign("(")) {
                handed.push_back(i > 0 && tokens[i - 1].kind == ScriptTokenKind::Word);
            } else if (token.isSign(")")) {
                handed.pop_back();
            }
            made += blankBefore(made, token) + word(tokens, i, handed.back());
        }
        return made;
    }

    static std::string blankBefore(const std::string& made, const ScriptToken& token) {
        return made.empty() || !token.apart ? "" : " ";
    }

    std::string word(Tokens tokens, std::size_t at, bool handedOver) const {
        const ScriptToken& token = tokens[at];
        if (token.kind == ScriptTokenKind::Text) {
            return pythonText(token.text);
        }
        if (token.kind == ScriptTokenKind::Sign) {
            return sign(token.text);
        }
        if (token.isWord("Err")) {
            return "error";
        }
        if (at > 0 && tokens[at - 1].isSign(".")) {
            const bool ofError = at > 1 && tokens[at - 2].isWord("Err");
            const std::string_view ofErrors = token.isWord("Number") ? "number" : "description";
            return ofError ? std::string(ofErrors) : token.text;
        }
        if (references_.contains(token.text)) {
            return handedOver && isWhole(tokens, at) ? token.text : token.text + ".value";
        }
        const auto known = pythonWords().find(token.text);
        return known == pythonWords().end() ? token.text : std::string(known->second);
    }

    static bool isWhole(Tokens tokens, std::size_t at) {
        const bool begins = at == 0 || tokens[at - 1].isSign(",") || tokens[at - 1].isSign("(");
        return begins && (at + 1 == tokens.size() || tokens[at + 1].isSign(",") ||
                          tokens[at + 1].isSign(")"));
    }

    [[nodiscard]] std::string sign(const std::string& text) const {
        if (text == "&") {
            return "+";
        }
        if (text == "<>") {
            return "!=";
        }
        return text == "=" ? std::string(equal_) : text;
    }

    std::vector<Line> lines_;
    std::set<std::string> references_;
    std::set<std::string> known_;
    std::string python_;
    std::string_view equal_ = "=";
    int depth_ = 0;
    bool trying_ = false;
};

}  // namespace

std::string pythonForm(std::string_view script) {
    return PythonWriter().write(script);
}

}  // namespace kap
