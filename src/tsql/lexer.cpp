#include "tsql/lexer.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::tsql {

namespace {

constexpr std::size_t kMaxNameLength = 128;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

// Every character outside ASCII counts as a letter: names in any language need no quotes.
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || !isAscii(c);
}

bool startsName(char c) {
    return isLetter(c) || c == '#' || c == '@';
}

bool continuesName(char c) {
    return startsName(c) || isDigit(c) || c == '$';
}

class Lexer {
public:
    Lexer(std::string_view sql, int firstLine, bool quotedNames)
        : sql_(sql), line_(firstLine), quotedNames_(quotedNames) {}

    std::vector<Token> run() {
        constexpr std::size_t kUsualLength = 6;  // of a token and the blank behind it
        tokens_.reserve(sql_.size() / kUsualLength + 2);
        while (skipBlanks(), position_ < sql_.size()) {
            const std::size_t start = position_;
            readToken();
            tokens_.back().start = start;
            tokens_.back().end = position_;
            noteQuotedNames();
        }
        const std::string last = tokens_.empty() ? std::string() : tokens_.back().text;
        tokens_.push_back({TokenKind::End, last, tokens_.empty() ? line_ : tokens_.back().line,
                           sql_.size(), sql_.size()});
        return std::move(tokens_);
    }

private:
    [[nodiscard]] char at(std::size_t offset) const {
        return position_ + offset < sql_.size() ? sql_[position_ + offset] : '\0';
    }

    [[nodiscard]] bool looksAt(std::string_view text) const {
        return sql_.substr(position_, text.size()) == text;
    }

    void skipBlanks() {
        while (position_ < sql_.size()) {
            if (looksAt("--")) {
                position_ = std::min(sql_.find('\n', position_), sql_.size());
            } else if (looksAt("/*")) {
                skipComment();
            } else if (const std::size_t width = blankWidth(); width > 0) {
                if (at(0) == '\n') ++line_;
                position_ += width;
            } else {
                return;
            }
        }
    }

    // Texts pasted from documents carry no-break spaces and byte-order marks: both are blanks.
    [[nodiscard]] std::size_t blankWidth() const {
        const char c = at(0);
        if (c == ' ' || (c >= '\t' && c <= '\r')) return 1;
        if (looksAt("\xC2\xA0")) return 2;
        if (looksAt("\xEF\xBB\xBF")) return 3;
        return 0;
    }

    void skipComment() {
        const int startLine = line_;
        int depth = 0;
        do {
            if (looksAt("/*")) {
                ++depth;
                position_ += 2;
            } else if (looksAt("*/")) {
                --depth;
                position_ += 2;
            } else if (position_ >= sql_.size()) {
                throw ServerError(113, "Missing end comment mark '*/'.", startLine, 15);
            } else {
                if (at(0) == '\n') ++line_;
                ++position_;
            }
        } while (depth > 0);
    }

    void readToken() {
        const char c = at(0);
        if (c == '\'') {
            readQuoted(TokenKind::Text, '\'');
        } else if ((c == 'N' || c == 'n') && at(1) == '\'') {
            ++position_;
            readQuoted(TokenKind::NationalText, '\'');
        } else if (c == '[') {
            readQuoted(TokenKind::QuotedName, ']');
        } else if (c == '"') {
            readQuoted(quotedNames_ ? TokenKind::QuotedName : TokenKind::Text, '"');
        } else if (c == '?') {
            ++position_;
            tokens_.push_back({TokenKind::Parameter, integerText(++parameters_), line_});
        } else if (startsName(c)) {
            readName();
        } else if (isDigit(c) || (c == '.' && isDigit(at(1)))) {
            readNumber(TokenKind::Integer);
        } else if (c == '$') {
            ++position_;
            readNumber(TokenKind::Money);
        } else {
            readOperator();
        }
    }

    // The closing mark is doubled to stand for itself.
    void readQuoted(TokenKind kind, char close) {
        const int startLine = line_;
        const std::size_t start = ++position_;
        std::string text;
        for (std::size_t mark = 0; (mark = sql_.find(close, position_)) != std::string_view::npos;
             position_ = mark + 2) {
            const std::string_view part = sql_.substr(position_, mark - position_);
            line_ += static_cast<int>(std::count(part.begin(), part.end(), '\n'));
            text += part;
            position_ = mark;
            if (at(1) != close) {
                ++position_;
                if (kind == TokenKind::QuotedName) checkNameLength(text, startLine);
                tokens_.push_back({kind, std::move(text), startLine});
                return;
            }
            text += close;
        }
        throw ServerError(105,
                          "Unclosed quotation mark after the character string '" +
                              std::string(sql_.substr(start)) + "'.",
                          startLine, 15);
    }

    void readName() {
        const std::size_t start = position_;
        while (position_ < sql_.size() && continuesName(at(0)) && blankWidth() == 0)
            ++position_;
        std::string text(sql_.substr(start, position_ - start));
        checkNameLength(text, line_);
        const TokenKind kind = text.front() == '@' ? TokenKind::Variable : TokenKind::Word;
        tokens_.push_back({kind, std::move(text), line_});
    }

    static void checkNameLength(const std::string& name, int line) {
        const auto characters =
            static_cast<std::size_t>(std::count_if(name.begin(), name.end(), [](char c) {
                return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
            }));
        if (characters > kMaxNameLength) {
            throw ServerError(103,
                              "The identifier that starts with '" + name +
                                  "' is too long. Maximum length is 128.",
                              line, 15);
        }
    }

    void readNumber(TokenKind kind) {
        const std::size_t start = position_;
        if (kind == TokenKind::Integer && at(0) == '0' && (at(1) == 'x' || at(1) == 'X')) {
            position_ += 2;
            const std::size_t digits = position_;
            while (isHexDigit(at(0)))
                ++position_;
            push(TokenKind::Binary, digits);
            return;
        }
        while (isDigit(at(0)))
            ++position_;
        if (at(0) == '.') {
            ++position_;
            while (isDigit(at(0)))
                ++position_;
            if (kind == TokenKind::Integer) kind = TokenKind::Decimal;
        }
        if (kind != TokenKind::Money && readExponent()) kind = TokenKind::Float;
        push(kind, start);
    }

    bool readExponent() {
        if (at(0) != 'e' && at(0) != 'E') return false;
        const std::size_t sign = at(1) == '+' || at(1) == '-' ? 1 : 0;
        // "1e" and "1e+" are numbers too: an absent exponent is zero.
        if (sign == 0 && !isDigit(at(1)) && continuesName(at(1))) return false;
        position_ += 1 + sign;
        while (isDigit(at(0)))
            ++position_;
        return true;
    }

    void readOperator() {
        static constexpr std::array<std::string_view, 14> kPairs{
            "<>", "!=", "!<", "!>", "<=", ">=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^="};
        static constexpr std::string_view kSingles = "+-*/%&|^~=<>(),.:;";
        for (const std::string_view pair : kPairs) {
            if (!looksAt(pair)) continue;
            tokens_.push_back({TokenKind::Operator, std::string(pair), line_});
            position_ += 2;
            return;
        }
        if (kSingles.find(at(0)) == std::string_view::npos || at(0) == '\0') {
            throw syntaxError(std::string(1, at(0)), line_);
        }
        const std::size_t start = position_++;
        push(TokenKind::Operator, start);
    }

    // The setting is the script's own: it holds from where it stands.
    void noteQuotedNames() {
        if (tokens_.size() < 3) return;
        const auto* last = &tokens_.back();
        if (last->kind != TokenKind::Word || last[-1].kind != TokenKind::Word) return;
        if (!equalsIgnoringCase(last[-1].text, "QUOTED_IDENTIFIER")) return;
        quotedNames_ = !equalsIgnoringCase(last->text, "OFF");
    }

    void push(TokenKind kind, std::size_t start) {
        tokens_.push_back({kind, std::string(sql_.substr(start, position_ - start)), line_});
    }

    std::string_view sql_;
    std::size_t position_ = 0;
    int line_;
    bool quotedNames_;
    int parameters_ = 0;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> tokenize(std::string_view sql, int firstLine, bool quotedNames) {
    return Lexer(sql, firstLine, quotedNames).run();
}

}  // namespace kap::tsql
