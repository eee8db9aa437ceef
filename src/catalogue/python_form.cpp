// The examples are written once, in Basic; this is how Python writes them.
#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <kaputil/catalogue/documentation.hpp>

#include "catalogue/code_lines.hpp"
#include "catalogue/script_tree.hpp"

namespace kap {
namespace {

// Words and operators that Python has others for.
const std::map<std::string_view, std::string_view>& pythonWords() {
    static const std::map<std::string_view, std::string_view> words = {
        {"CreateObject", "kaputil.Dispatch"},
        {"Nothing", "kaputil.Nothing"},
        {"Empty", "kaputil.Empty"},
        {"Null", "None"},
        {"And", "and"},
        {"Or", "or"},
        {"Is", "is"},
        {"Mod", "%"},
        {"Len", "len"},
        {"CStr", "str"},
        {"DateSerial", "datetime.datetime"},
        {"vbCrLf", R"("\r\n")"},
        {"vbTab", R"("\t")"},
        {"Err", "error"},
        {"&", "+"},
        {"=", "=="},
        {"<>", "!="}};
    return words;
}

std::string pythonWord(const std::string& word) {
    const auto known = pythonWords().find(word);
    return known == pythonWords().end() ? word : std::string(known->second);
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

bool isLiteral(const ScriptExpression& value) {
    return value.part == ScriptPart::Text || value.part == ScriptPart::Number ||
           value.isName("True") || value.isName("False") || value.isName("Empty");
}

// Adds the variables that stand by themselves among the arguments of members.
void addHandedOver(const ScriptExpression& expression, std::set<std::string>& names) {
    if (expression.part == ScriptPart::Call &&
        expression.parts.front().part == ScriptPart::Member) {
        for (std::size_t i = 1; i < expression.parts.size(); ++i) {
            if (expression.parts[i].part == ScriptPart::Name) {
                names.insert(expression.parts[i].text);
            }
        }
    }
    for (const ScriptExpression& part : expression.parts) {
        addHandedOver(part, names);
    }
}

class PythonWriter : CodeLines {
public:
    PythonWriter() : CodeLines("#", ":") {}

    std::string write(std::string_view script) {
        const std::vector<ScriptStatement> statements = readScript(script);
        findReferences(statements);
        for (const ScriptStatement& statement : statements) {
            writeStatement(statement);
        }
        return take();
    }

private:
    // Variables that begin with a value, are handed to a member as they are and read afterwards:
    // members write into these.
    void findReferences(const std::vector<ScriptStatement>& statements) {
        std::set<std::string> begun;
        std::set<std::string> given;
        for (const ScriptStatement& statement : statements) {
            for (const std::string& name : given) {
                if (occursIn(name, statement)) {
                    references_.insert(name);
                }
            }
            const bool assigns = statement.action == ScriptAction::Assign;
            if (assigns && isLiteral(statement.parts[1])) {
                begun.insert(statement.parts[0].text);
            } else if (assigns || statement.action == ScriptAction::Call) {
                std::set<std::string> handed;
                addHandedOver(statement.parts.back(), handed);
                std::ranges::set_intersection(handed, begun, std::inserter(given, given.end()));
            }
        }
    }

    void writeStatement(const ScriptStatement& statement) {
        const auto& parts = statement.parts;
        const std::string& comment = statement.comment;
        if (statement.looksAtError && trying_) {
            end();
            begin("except kaputil.AutomationError as error", {});
            trying_ = false;
        }
        switch (statement.action) {
            case ScriptAction::Nothing:
                return put({}, comment);
            case ScriptAction::Declare:
                return;
            case ScriptAction::Call:
                return put(expression(parts[0]), comment);
            case ScriptAction::Assign:
                return put(assigned(parts[0], parts[1]), comment);
            case ScriptAction::Print:
                return put("print(" + list(parts, 0, /*handedOver=*/false) + ")", comment);
            case ScriptAction::If:
                return begin("if " + expression(parts[0]), comment);
            case ScriptAction::Else:
                end();
                return begin("else", comment);
            case ScriptAction::Until:
                return begin("while not " + expression(parts[0]), comment);
            case ScriptAction::While:
                return begin("while " + expression(parts[0]), comment);
            case ScriptAction::ForEach:
                return begin("for " + parts[0].text + " in " + expression(parts[1]), comment);
            case ScriptAction::For:
                return begin("for " + parts[0].text + " in range(" + expression(parts[1]) + ", " +
                                 expression(parts[2]) + " + 1)",
                             comment);
            case ScriptAction::Try:
                trying_ = true;
                return begin("try", {});
            case ScriptAction::End:
                end();
                return;
            case ScriptAction::EndTry:
                end();
                trying_ = false;
                return;
        }
    }

    std::string assigned(const ScriptExpression& target, const ScriptExpression& value) {
        if (target.part == ScriptPart::Name && references_.contains(target.text)) {
            const bool known = !known_.insert(target.text).second;
            return known ? target.text + ".value = " + expression(value)
                         : target.text + " = kaputil.Ref(" + expression(value) + ")";
        }
        if (target.part == ScriptPart::Call) {  // an element
            return expression(target.parts[0]) + "[" + list(target.parts, 1, false) +
                   "] = " + expression(value);
        }
        return expression(target) + " = " + expression(value);
    }

    // `handedOver`: they are the arguments of a call, in which a variable by itself is handed to
    // the member; anywhere else its value is meant.
    std::string list(const std::vector<ScriptExpression>& parts, std::size_t from,
                     bool handedOver) const {
        std::string made;
        for (std::size_t i = from; i < parts.size(); ++i) {
            const bool whole = handedOver && parts[i].part == ScriptPart::Name;
            made += i == from ? "" : ", ";
            made += whole ? pythonWord(parts[i].text) : expression(parts[i]);
        }
        return made;
    }

    std::string expression(const ScriptExpression& value) const {
        switch (value.part) {
            case ScriptPart::Number:
                return value.text;
            case ScriptPart::Text:
                return pythonText(value.text);
            case ScriptPart::Name:
                return references_.contains(value.text) ? value.text + ".value"
                                                        : pythonWord(value.text);
            case ScriptPart::Member:
                return member(value);
            case ScriptPart::Call:
                return expression(value.parts[0]) + "(" +
                       list(value.parts, 1, value.parts[0].part == ScriptPart::Member) + ")";
            case ScriptPart::List:
                return "[" + list(value.parts, 0, false) + "]";
            case ScriptPart::Group:
                return "(" + expression(value.parts[0]) + ")";
            case ScriptPart::Not:
                return "not " + expression(value.parts[0]);
            case ScriptPart::Operation:
                return expression(value.parts[0]) + " " + pythonWord(value.text) + " " +
                       expression(value.parts[1]);
        }
        return {};
    }

    std::string member(const ScriptExpression& value) const {
        if (value.parts[0].isName("Err")) {
            return value.text == "Number" ? "error.number" : "error.description";
        }
        return expression(value.parts[0]) + "." + value.text;
    }

    std::set<std::string> references_;
    std::set<std::string> known_;
    bool trying_ = false;
};

}  // namespace

std::string pythonForm(std::string_view script) {
    return PythonWriter().write(script);
}

}  // namespace kap
