#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A script of the documentation, read: its statements and what they are made of. Each language in
// which an example is shown writes this its own way (pythonForm, cppForm).
namespace kap {

enum class ScriptPart : std::uint8_t {
    Number,
    Text,
    Name,       // a variable, or a word of the language (Empty, True, CreateObject)
    Member,     // parts: the object
    Call,       // parts: what is called, the arguments
    List,       // Array(...): the elements
    Group,      // in parentheses: what stands in them
    Not,        // parts: what is denied
    Operation,  // parts: left and right
};

struct ScriptExpression {
    ScriptPart part = ScriptPart::Name;
    std::string text;  // the number, text, name, member's name or operator
    std::vector<ScriptExpression> parts;

    [[nodiscard]] bool isName(std::string_view name) const {
        return part == ScriptPart::Name && text == name;
    }
};

enum class ScriptAction : std::uint8_t {
    Nothing,  // a blank line, or one with a comment alone
    Declare,  // Dim
    Call,     // the call
    Assign,   // the target, the value
    Print,    // what is printed
    If,       // the condition
    Else,
    Until,  // a loop with the condition that ends it
    While,
    ForEach,  // the variable, the collection
    For,      // the variable, the first and the last value
    End,      // of a condition or loop
    Try,      // errors are looked at from here
    EndTry,
};

struct ScriptStatement {
    ScriptAction action = ScriptAction::Nothing;
    std::vector<ScriptExpression> parts;
    std::string comment;  // what stands behind the mark
    bool looksAtError = false;
};

// Raises std::invalid_argument for what examples are not made of.
[[nodiscard]] std::vector<ScriptStatement> readScript(std::string_view script);

// Whether a name occurs in an expression.
[[nodiscard]] bool occursIn(std::string_view name, const ScriptExpression& expression);
[[nodiscard]] bool occursIn(std::string_view name, const ScriptStatement& statement);

}  // namespace kap
