#pragma once

#include <cstddef>
#include <string>

namespace kap::tsql {

enum class TokenKind {
    Word,          // a bare word: a keyword or a name, decided by the parser
    QuotedName,    // [name] or "name", already without its quotes
    Variable,      // @name or @@name, with its signs
    Integer,       // digits
    Decimal,       // digits with a point
    Float,         // digits with an exponent
    Money,         // $12.5, text without the currency sign
    Text,          // 'text', already without its quotes
    NationalText,  // N'text'
    Binary,        // 0xHEX, text is the hexadecimal digits
    Parameter,     // ?, text is its number among the marks from 1
    Operator,      // one of + - * / % & | ^ ~ = < > <= >= <> != !< !> += -= *= /= %= &= |= ^=
                   //< ( ) , . : ;
    End,           // after the last token; its text is the last token's, for messages
};

// One word of a script, with the line it starts on and the bytes of the script it takes.
struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;
    int line = 1;
    std::size_t start = 0;
    std::size_t end = 0;
};

}  // namespace kap::tsql
