#include "tsql/lexer.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/currency.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

namespace {

constexpr std::size_t kMaxNameLength = 128;

// What a character can be. Every one outside ASCII counts as a letter: names in any language need
// no quotes.
constexpr unsigned kBlank = 1;
constexpr unsigned kDigit = 2;
constexpr unsigned kHexDigit = 4;
constexpr unsigned kStartsName = 8;
constexpr unsigned kInName = 16;

constexpr std::array<std::uint8_t, 256> kClasses = [] {
    std::array<std::uint8_t, 256> classes{};
    const auto add = [&classes](int first, int last, unsigned what) {
        for (int c = first; c <= last; ++c)
            classes.at(static_cast<std::size_t>(c)) |= static_cast<std::uint8_t>(what);
    };
    add(' ', ' ', kBlank);
    add('\t', '\r', kBlank);
    add('0', '9', kDigit | kHexDigit | kInName);
    add('a', 'f', kHexDigit);
    add('A', 'F', kHexDigit);
    add('a', 'z', kStartsName | kInName);
    add('A', 'Z', kStartsName | kInName);
    for (const char c : {'_', '#', '@'})
        add(c, c, kStartsName | kInName);
    add('$', '$', kInName);
    add(0x80, 0xFF, kStartsName | kInName);
    return classes;
}();

bool is(char c, unsigned classes) {
    return (kClasses[static_cast<unsigned char>(c)] & classes) != 0;
}

bool isDigit(char c) {
    return is(c, kDigit);
}

bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

bool isPair(char first, char second) {
    constexpr std::string_view kBeforeEquals = "<>!+-*/%&|^";
    switch (second) {
        case '=':
            return kBeforeEquals.find(first) != std::string_view::npos;
        case '>':
            return first == '<' || first == '!';
        case '<':
            return first == '!';
        default:
            return false;
    }
}

ServerError tooManyTokens(int line) {
    return {Message::BatchTooLarge, {}, line};
}

class Lexer {
public:
    Lexer(std::string_view sql, int firstLine, bool quotedNames)
        : sql_(sql), line_(firstLine), quotedNames_(quotedNames) {}

    std::vector<Token> run() {
        constexpr std::size_t kUsualLength = 5;  // of a token and the blank behind it
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
            const char c = at(0);
            if (is(c, kBlank)) {
                if (c == '\n') ++line_;
                ++position_;
            } else if (c == '-' && at(1) == '-') {
                position_ = std::min(sql_.find('\n', position_), sql_.size());
            } else if (c == '/' && at(1) == '*') {
                skipComment();
            } else if (const std::size_t width = wideBlank(); width > 0) {
                position_ += width;
            } else {
                return;
            }
        }
    }

    // Texts pasted from documents carry no-break spaces and byte-order marks: both are blanks.
    [[nodiscard]] std::size_t wideBlank() const {
        if (isAscii(at(0))) return 0;
        if (looksAt("\xC2\xA0")) return 2;
        if (looksAt("\xEF\xBB\xBF")) return 3;
        return 0;
    }

    // The bytes of a currency sign that begins an amount. In front of a letter it is part of a
    // name: $action.
    [[nodiscard]] std::size_t amountSign() const {
        if (isAscii(at(0)) && at(0) != '$') return 0;
        const std::size_t size = currencySignAt(sql_.substr(position_));
        return is(at(size), kStartsName) ? 0 : size;
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
                throw ServerError(Message::MissingEndOfComment, {}, startLine);
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
            add(TokenKind::Parameter, plain::text(++parameters_), line_);
        } else if (const std::size_t sign = amountSign(); sign > 0) {
            position_ += sign;
            readNumber(TokenKind::Money);
        } else if (is(c, kStartsName)) {
            readName();
        } else if (isDigit(c) || (c == '.' && isDigit(at(1)))) {
            readNumber(TokenKind::Integer);
        } else if (c == '$') {
            readName();  // $action
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
                add(kind, std::move(text), startLine);
                return;
            }
            text += close;
        }
        throw ServerError(Message::UnclosedQuotationMark, {sql_.substr(start)}, startLine);
    }

    void readName() {
        const std::size_t start = position_;
        while (is(at(0), kInName) && wideBlank() == 0)
            ++position_;
        const std::string_view name = sql_.substr(start, position_ - start);
        checkNameLength(name, line_);
        push(name.front() == '@' ? TokenKind::Variable : TokenKind::Word, start);
    }

    static void checkNameLength(std::string_view name, int line) {
        if (name.size() <= kMaxNameLength) return;
        const auto characters =
            static_cast<std::size_t>(std::count_if(name.begin(), name.end(), [](char c) {
                return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
            }));
        if (characters > kMaxNameLength) {
            throw ServerError(Message::IdentifierTooLong, {name}, line);
        }
    }

    void readNumber(TokenKind kind) {
        const std::size_t start = position_;
        if (kind == TokenKind::Integer && at(0) == '0' && (at(1) == 'x' || at(1) == 'X')) {
            position_ += 2;
            const std::size_t digits = position_;
            while (is(at(0), kHexDigit))
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
        if (sign == 0 && !isDigit(at(1)) && is(at(1), kInName)) return false;
        position_ += 1 + sign;
        while (isDigit(at(0)))
            ++position_;
        return true;
    }

    void readOperator() {
        static constexpr std::string_view kSingles = "+-*/%&|^~=<>(),.:;{}";
        const bool pair = isPair(at(0), at(1));
        if (!pair && (at(0) == '\0' || kSingles.find(at(0)) == std::string_view::npos)) {
            throw syntaxError(std::string(1, at(0)), line_);
        }
        const std::size_t start = position_;
        position_ += pair ? 2 : 1;
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
        add(kind, std::string(sql_.substr(start, position_ - start)), line_);
    }

    void add(TokenKind kind, std::string text, int line) {
        if (tokens_.size() == kMostTokens) throw tooManyTokens(line);
        Token& token = tokens_.emplace_back();
        token.kind = kind;
        token.text = std::move(text);
        token.line = line;
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
